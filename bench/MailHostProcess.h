#pragma once

#include <QProcess>
#include <string>
#include <vector>

#include "bench/MaildirMaker.h"

namespace quillet::bench {

// What a process has used since it started.
struct ProcessUse {
    double processor = 0;  // milliseconds
    long switches = 0;     // of the context, of all kinds and threads
};

// Where a mail host works: the folder that everything of it lies below.
struct MailHostPlace {
    std::string program;
    std::string folder;
    std::string container;
    std::string configuration;

    // `folders`: "inbox = …" and so on.
    static MailHostPlace make(const std::string& program,
                              const std::string& folder,
                              const std::string& folders);
    std::vector<std::string> arguments() const;
    // The file of the container that lists the messages of the folder INBOX.
    std::string inboxFile() const;
    // What the file holds. Empty if it is not there. Throws std::runtime_error if it is no message
    // file.
    std::vector<ExpectedRow> publishedRows() const;
};

// What `quillet-mail-host --once` took.
struct OnceCost {
    double clock = 0;  // milliseconds
    double peak = 0;   // MiB
};
// Call it while the own process is small: the system counts it in until the other program runs.
OnceCost runOnce(const MailHostPlace& place);

// A running host. Main thread only. The destructor ends it.
class MailHostProcess {
public:
    explicit MailHostProcess(const MailHostPlace& place);
    ~MailHostProcess();

    ProcessUse use() const;
    double residentMemory() const;  // MiB
    // Runs the event loop until the host has done nothing for a second.
    void waitUntilQuiet() const;

private:
    std::string proc() const;

    QProcess process_;
};

}  // namespace quillet::bench
