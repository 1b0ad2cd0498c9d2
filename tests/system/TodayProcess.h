#pragma once

#include <QProcess>
#include <cstddef>
#include <gtest/gtest.h>
#include <nlohmann/json.hpp>
#include <string>
#include <vector>

namespace quillet::test {

// The panel of quillet-today in a process of its own, offscreen, in the environment of this one.
class TodayProcess {
public:
    TodayProcess() {
        QProcessEnvironment environment = QProcessEnvironment::systemEnvironment();
        environment.insert(QStringLiteral("QT_PLUGIN_PATH"), QStringLiteral(QUILLET_TEST_PLUGINS));
        environment.insert(QStringLiteral("QT_QPA_GENERIC_PLUGINS"),
                           QStringLiteral("windowdriver"));
        process_.setProcessEnvironment(environment);
        process_.start(QStringLiteral(QUILLET_BIN "/quillet-today"), QStringList());
    }
    // Asks the program to end, and expects status 0.
    ~TodayProcess() {
        process_.terminate();
        EXPECT_TRUE(ends());
        EXPECT_TRUE(process_.exitStatus() == QProcess::NormalExit && process_.exitCode() == 0)
            << process_.exitCode() << "\n"
            << (errors_ + process_.readAllStandardError()).constData();
    }
    TodayProcess(const TodayProcess&) = delete;
    TodayProcess& operator=(const TodayProcess&) = delete;

    // Ends the program as the tray's "Quit" does.
    void quit() { process_.closeWriteChannel(); }
    // Waits for the program to end; returns whether it did.
    bool ends() {
        return process_.state() == QProcess::NotRunning || process_.waitForFinished(kLimit);
    }
    pid_t process() const { return static_cast<pid_t>(process_.processId()); }

    // The window driver's answer to one of its commands.
    nlohmann::json ask(const std::string& command) {
        process_.write((command + "\n").c_str());
        while (!process_.canReadLine() && process_.waitForReadyRead(kLimit)) {
        }
        auto answer = nlohmann::json::parse(process_.readLine().constData(), nullptr, false);
        EXPECT_TRUE(answer.is_object() && !answer.contains("error")) << command << answer;
        return answer;
    }
    // The first text of each row that is shown, from the top. Empty before the panel is up.
    std::vector<std::string> rows() {
        std::vector<std::string> texts;
        for (const std::string name : ask("state").value("rows", nlohmann::json::array())) {
            texts.push_back(name.substr(0, name.find(", ")));
        }
        return texts;
    }
    int height() { return ask("state").value("height", 0); }  // of the table, points
    // How often the program has logged the text so far.
    std::size_t logged(const char* text) {
        errors_ += process_.readAllStandardError();
        return static_cast<std::size_t>(errors_.count(text));
    }

private:
    static constexpr int kLimit = 30'000;  // milliseconds

    QProcess process_;
    QByteArray errors_;
};

}  // namespace quillet::test
