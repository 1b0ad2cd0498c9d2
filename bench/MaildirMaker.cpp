#include "bench/MaildirMaker.h"

#include <algorithm>
#include <array>
#include <cerrno>
#include <chrono>
#include <ctime>
#include <filesystem>
#include <fstream>
#include <iomanip>
#include <locale>
#include <sstream>
#include <string_view>
#include <system_error>
#include <utility>

#include "mailhost/maildir/FolderReader.h"
#include "mailhost/maildir/MaildirName.h"

namespace quillet::bench {

namespace {

constexpr std::int64_t kBetweenMessages = 600;  // seconds
constexpr std::size_t kUnseenEvery = 23;        // messages
constexpr std::size_t kDeletedEvery = 97;
constexpr std::array kFlags{"S", "RS", "FS", "S", "S", "PS", "FRS", "S", "", "S"};
constexpr std::string_view kBase64 =
    "b64x7Qm2ZtV9pLkR0sYwE3uHc5nGfJ8dTaXoIqBvMzNyPrCgW1lKhDjSeUiOFA46";

std::int64_t secondsNow() {
    using namespace std::chrono;
    return duration_cast<seconds>(system_clock::now().time_since_epoch()).count();
}

std::string dateText(std::int64_t seconds) {
    const std::time_t time = seconds;
    std::tm parts{};
    ::gmtime_r(&time, &parts);
    std::ostringstream text;
    text.imbue(std::locale::classic());
    text << std::put_time(&parts, "%a, %d %b %Y %H:%M:%S +0000");
    return text.str();
}

// A header line as signatures have them: several lines of letters without meaning.
std::string longLine(std::string_view name, std::size_t lines) {
    std::string text(name);
    for (std::size_t line = 0; line < lines; ++line) {
        text.append(line == 0 ? " " : "\t").append(kBase64).append("\n");
    }
    return text;
}

std::string received(std::size_t hop, const std::string& date) {
    const std::string number = std::to_string(hop);
    return "Received: from relay" + number + ".example.org (relay" + number +
           ".example.org [192.0.2." + number + "])\n\tby mx" + number +
           ".example.com (Postfix) with ESMTPS id 4TzQ" + number +
           "kV2Wz9\n\tfor <anna@example.com>; " + date + "\n";
}

std::string messageText(std::size_t number, std::int64_t seconds) {
    const std::string date = dateText(seconds);
    std::string text = "Return-Path: <bjorn@example.org>\nDelivered-To: anna@example.com\n";
    for (std::size_t hop = 1; hop <= 4; ++hop) {
        text += received(hop, date);
    }
    text += longLine("DKIM-Signature: v=1; a=rsa-sha256; d=example.org; s=mail; b=", 6);
    text += longLine("ARC-Seal: i=1; a=rsa-sha256; d=example.org; cv=none; b=", 6);
    text +=
        "From: =?UTF-8?B?QmrDtnJuIEVyaWtzZW4=?= <bjorn@example.org>\n"
        "To: Anna Berg <anna@example.com>\n"
        "Subject: =?UTF-8?Q?Notizen_f=C3=BCr_das_Gespr=C3=A4ch_=C3=BCber_den_Entwurf=2C?=\n"
        " Nr. " +
        std::to_string(number) + "\nDate: " + date + "\nMessage-ID: <" + std::to_string(number) +
        ".7F3A2@mail.example.org>\nMIME-Version: 1.0\n"
        "Content-Type: text/plain; charset=utf-8\nContent-Transfer-Encoding: 8bit\n\n";
    for (int line = 0; line < 12; ++line) {
        text += "Liebe Anna, das Gespräch beginnt um elf Uhr und dauert bis zum Abend.\n";
    }
    return text;
}

void writeFile(const std::string& path, const std::string& text) {
    std::ofstream file(path, std::ios::binary);
    file << text;
    if (!file.flush()) {
        throw std::system_error(errno, std::generic_category(), path);
    }
}

}  // namespace

void makeMailFolder(const std::string& folder) {
    for (const char* name : {"/cur", "/new", "/tmp"}) {
        std::filesystem::create_directories(folder + name);
    }
    writeFile(folder + "/.uidvalidity", "1700000000\n1\n");
}

MaildirMaker::MaildirMaker(std::string folder, std::size_t messages)
    : folder_(std::move(folder)), firstSync_(messages), start_(secondsNow()) {
    makeMailFolder(folder_);
}

std::string MaildirMaker::nameOfNext() const {
    return std::to_string(start_) + ".4321_" + std::to_string(made_ + 1) +
           ".desk,U=" + std::to_string(made_ + 1);
}

bool MaildirMaker::isNextUnseen() const {
    return made_ >= firstSync_ || made_ % kUnseenEvery == 0;
}

std::string MaildirMaker::flagsOfNext() const {
    if (isNextUnseen()) {
        return "";
    }
    return std::string(kFlags[made_ % kFlags.size()]) + (made_ % kDeletedEvery == 0 ? "T" : "");
}

void MaildirMaker::prepare() {
    const auto number = static_cast<std::int64_t>(made_);
    const auto last = static_cast<std::int64_t>(firstSync_) - 1;
    // What comes after the first sync has dates of now, one second apart.
    const std::int64_t after = number - last;
    const std::int64_t date = start_ + (after > 0 ? after : after * kBetweenMessages);
    writeFile(folder_ + "/tmp/" + nameOfNext(), messageText(made_, date));
    const std::string flags = flagsOfNext();
    if (flags.find('T') == std::string::npos) {
        newest_.push_front(
            {mailhost::identifierOf(nameOfNext()),
             "Notizen für das Gespräch über den Entwurf, Nr. " + std::to_string(made_),
             date});
        newest_.resize(std::min(newest_.size(), mailhost::kNewestRows + 1));
    }
}

ExpectedRow MaildirMaker::deliver() {
    const std::string name = nameOfNext();
    std::filesystem::rename(
        folder_ + "/tmp/" + name,
        folder_ + (isNextUnseen() ? "/new/" : "/cur/") + name + ":2," + flagsOfNext());
    ++made_;
    return newest_.front();
}

std::vector<ExpectedRow> MaildirMaker::newest() const {
    const std::size_t count = std::min(newest_.size(), mailhost::kNewestRows);
    return {newest_.begin(), newest_.begin() + static_cast<std::ptrdiff_t>(count)};
}

void MaildirMaker::fill() {
    for (std::size_t message = 0; message < firstSync_; ++message) {
        prepare();
        deliver();
    }
}

}  // namespace quillet::bench
