#pragma once

#include <cstdio>
#include <string>
#include <sys/wait.h>

namespace quillet::test {

// A shell command that runs beside the test; what it writes (errors included) is kept.
class Command {
public:
    explicit Command(const std::string& line) : pipe_(popen((line + " 2>&1").c_str(), "r")) {}
    ~Command() { finish(); }
    Command(const Command&) = delete;
    Command& operator=(const Command&) = delete;

    // Waits for the end; the exit status, or -1 when it was killed.
    int finish() {
        if (pipe_ != nullptr) {
            for (int byte = std::fgetc(pipe_); byte != EOF; byte = std::fgetc(pipe_)) {
                output_ += static_cast<char>(byte);
            }
            const int status = pclose(pipe_);
            pipe_ = nullptr;
            status_ = WIFEXITED(status) ? WEXITSTATUS(status) : -1;
        }
        return status_;
    }

    const std::string& output() const { return output_; }

private:
    std::FILE* pipe_;
    int status_ = -1;
    std::string output_;
};

}  // namespace quillet::test
