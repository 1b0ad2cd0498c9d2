#pragma once

#include <gmock/gmock.h>
#include <string>
#include <utility>
#include <variant>
#include <vector>

#include "platform/base/ProgramArguments.h"

namespace quillet::test {

using Words = std::vector<std::string>;

// What `read` makes of a command line of these words after the program's name.
template <typename Read>
auto readWords(Read read, Words words) {
    words.insert(words.begin(), "program");
    std::vector<char*> arguments;
    for (std::string& word : words) {
        arguments.push_back(word.data());
    }
    return read(arguments);
}

// Expects `read` to refuse each command line with status 2 and a text that holds the complaint.
template <typename Read>
void expectWrongUsage(Read read, const std::vector<std::pair<Words, const char*>>& cases) {
    for (const auto& [words, complaint] : cases) {
        SCOPED_TRACE(complaint);
        const auto exit = std::get<platform::EarlyExit>(readWords(read, words));
        EXPECT_EQ(exit.status, 2);
        EXPECT_THAT(exit.text, testing::HasSubstr(complaint));
    }
}

}  // namespace quillet::test
