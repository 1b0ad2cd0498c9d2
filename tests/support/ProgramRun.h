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

constexpr int kProgramTime = 30'000;  // milliseconds that a program may take

// Starts a program of the build.
inline void startProgram(QProcess& process,
                         const std::string& name,
                         const std::vector<std::string>& arguments = {}) {
    QStringList words;
    for (const std::string& argument : arguments) {
        words.append(QString::fromStdString(argument));
    }
    process.start(QStringLiteral(QUILLET_BIN "/") + QString::fromStdString(name), words);
}

// Runs a program to its end. The event loop runs meanwhile, since the host may be in this process.
inline Outcome runProgram(const std::string& name,
                          const std::vector<std::string>& arguments,
                          const std::string& input = {}) {
    QProcess process;
    startProgram(process, name, arguments);
    process.write(QByteArray::fromStdString(input));
    process.closeWriteChannel();
    const bool ends =
        waitUntil([&] { return process.state() == process.NotRunning; }, kProgramTime);
    return {ends && process.exitStatus() == process.NormalExit ? process.exitCode() : -1,
            process.readAllStandardOutput().toStdString(),
            process.readAllStandardError().toStdString()};
}

}  // namespace quillet::test
