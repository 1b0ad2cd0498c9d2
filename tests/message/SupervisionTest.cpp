#include <QCoreApplication>
#include <csignal>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <gtest/gtest.h>
#include <sys/mman.h>
#include <vector>

#include "message/Confinement.h"
#include "message/Requests.h"
#include "message/Supervision.h"

#include "tests/support/TemporaryFolder.h"

namespace quillet::message {
namespace {

[[noreturn]] void workForEver() {
    int argc = 0;
    const QCoreApplication application(argc, nullptr);
    const TurnLimit limit;
    for (volatile int turn = 0;;) {
        turn = turn ^ 1;
    }
}

// Each process of a window ends in its own way; the status is the form that was shown.
TEST(Supervision, WhatEndsTheWindowLeadsToTheNextForm) {
    const struct {
        const char* name;
        std::function<int(ShownForm)> show;
        std::optional<int> status;
    } rows[] = {
        {"closed", [](ShownForm form) { return static_cast<int>(form); }, 0},
        {"failed", [](ShownForm) { return 1; }, 1},
        {"asked to end", [](ShownForm) { return std::raise(SIGTERM); }, 0},
        {"too much work",
         [](ShownForm form) {
             if (form == ShownForm::Whole) {
                 workForEver();
             }
             return static_cast<int>(form);
         },
         1},
        {"faults",
         [](ShownForm form) {
             return form == ShownForm::Source ? static_cast<int>(form) : std::raise(SIGABRT);
         },
         2},
        {"no form", [](ShownForm) { return std::raise(SIGABRT); }, std::nullopt},
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(row.name);
        EXPECT_EQ(runSupervised([&row](ShownForm form, const platform::FileDescriptor&) {
                      return row.show(form);
                  }),
                  row.status);
    }
}

// The process of the window can read files and change none; "Save as" goes through the other one.
TEST(Supervision, OnlyRequestsMakeFiles) {
    constexpr int kNoGuard = 77;
    const test::TemporaryFolder folder;
    const std::string old = folder.writeFile("old", "old");
    const auto status = runSupervised([&](ShownForm, platform::FileDescriptor socket) {
        if (!confineProcess()) {
            return kNoGuard;
        }
        const Requests requests(std::move(socket));
        std::error_code refused;
        int faults = 0;
        faults += std::ofstream(folder.path("new")) ? 1 : 0;
        faults += std::ofstream(old) ? 1 : 0;
        faults += std::filesystem::create_directory(folder.path("folder"), refused) ? 1 : 0;
        faults += std::filesystem::remove(old, refused) ? 1 : 0;
        faults += std::system("true") == 0 ? 1 : 0;
        faults += std::ifstream(old) && std::ofstream("/dev/null") ? 0 : 1;
        faults += requests.save(folder.path("saved"), std::string(300'000, 'x')) ? 1 : 0;
        faults += requests.save(folder.path("none/saved"), "x") ? 0 : 1;
        faults += requests.open("file:///etc/passwd") ? 0 : 1;
#ifndef QUILLET_SANITIZED
        constexpr std::size_t kTooMuch = std::size_t{600} << 20U;
        faults +=
            ::mmap(nullptr, kTooMuch, PROT_READ | PROT_WRITE, MAP_PRIVATE | MAP_ANONYMOUS, -1, 0) ==
                    MAP_FAILED
                ? 0
                : 1;
#endif
        return faults;
    });
    if (status == kNoGuard) {
        GTEST_SKIP() << "the kernel cannot guard files";
    }
    EXPECT_EQ(status, 0);
    EXPECT_EQ(std::filesystem::file_size(folder.path("saved")), 300'000U);
}

}  // namespace
}  // namespace quillet::message
