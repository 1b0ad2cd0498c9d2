#pragma once

#include <chrono>
#include <string>

namespace quillet {

// A service word that no other share has, so that one share never takes the files of another away
// before the mail application has read them. Its staging folder is made. The folders of shares that
// are more than a day old are removed.
std::string newStagingWord(std::chrono::system_clock::time_point now);

}  // namespace quillet
