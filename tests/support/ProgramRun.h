#pragma once

#include <QProcess>
#include <string>
#include <vector>

#include "tests/support/WaitUntil.h"

namespace quillet::test {

// How a program has ended, and what it has printed.
struct Outcome {
    int status = -1;  // -1: it did not end, or not by itself
    std::string output;
    std::string errors;
};

inline QStringList wordsOf(const std::vector<std::string>& arguments) {
    QStringList words;
    for (const std::string& argument : arguments) {
        words.append(QString::fromStdString(argument));
    }
    return words;
}

// Runs a program of the build to its end. The event loop runs meanwhile, since the host may be in
// this process.
inline Outcome runProgram(const std::string& name,
                          const std::vector<std::string>& arguments,
                          const std::string& input = {}) {
    constexpr int kLimit = 30'000;  // milliseconds
    QProcess process;
    process.start(QStringLiteral(QUILLET_BIN "/") + QString::fromStdString(name),
                  wordsOf(arguments));
    process.write(QByteArray::fromStdString(input));
    process.closeWriteChannel();
    if (!waitUntil([&] { return process.state() == QProcess::NotRunning; }, kLimit) ||
        process.exitStatus() != QProcess::NormalExit) {
        return {};
    }
    return {process.exitCode(),
            process.readAllStandardOutput().toStdString(),
            process.readAllStandardError().toStdString()};
}

}  // namespace quillet::test
