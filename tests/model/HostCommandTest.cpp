#include <gtest/gtest.h>
#include <string>

#include "model/HostCommand.h"

namespace quillet {
namespace {

TEST(HostCommand, UrlIsReadAsTheWidgetWritesItAndAnythingElseIsRefused) {
    const std::string good;
    const std::string id = std::string(100'000, 'x');
    const struct {
        std::string url;
        std::string word;
        std::string mail;
        std::string messageId;
        std::string problem;  // a part of it; empty: the command can be followed
    } rows[] = {
        {"quillet://open?mail=a%2Bb%40x.org&messageid=1@x&folderstandardid=1",
         "open",
         "a+b@x.org",
         "1@x",
         good},
        {"quillet://delete?mail=%C3%A5&messageid=a+b%41&c=d=&mail=e?f#g&folderstandardid=12",
         "delete",
         "å",
         "a+b%41&c=d=&mail=e?f#g",
         good},
        {"quillet://reply?mail=&messageid=&folderstandardid=1&folderstandardid=2",
         "reply",
         "",
         "&folderstandardid=1",
         good},
        {"quillet://archive?mail=a&messageid=" + id + "&folderstandardid=1",
         "archive",
         "a",
         id,
         good},
        {"quillet://archive?folderstandardid=1&messageid=1&mail=a", "archive", "a", "", "message"},
        {"quillet://open", "open", "", "", "names no message"},
        {"quillet://compose?to=%ff", "compose", "", "", good},  // a draft, which is read later
        {"quillet://send?mail=a&messageid=1&folderstandardid=1", "send", "", "", good},
        {"quillet://Compose?to=a", "Compose", "", "", "no command"},
        {"quillet://?mail=a&messageid=1&folderstandardid=1", "", "a", "1", "no command"},
        {"quillet:open?mail=a&messageid=1&folderstandardid=1", "", "a", "1", "no command"},
        {"mailto:a@b", "", "", "", "another scheme"},
        {"quillet://open?mail=%ff&messageid=1&folderstandardid=1", "open", "", "1", "decode"},
        {"quillet://open?mail=a&messageid=1 2&folderstandardid=1", "", "", "", "no valid URL"},
        {"", "", "", "", "no valid URL"},
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(row.url.substr(0, 80));
        const HostCommand command = readHostCommand(row.url);
        EXPECT_EQ(command.word, row.word);
        EXPECT_EQ(command.account, row.mail);
        EXPECT_EQ(command.identifier, row.messageId);
        EXPECT_EQ(command.problem.empty(), row.problem.empty()) << command.problem;
        EXPECT_NE(command.problem.find(row.problem), std::string::npos) << command.problem;
    }
}

}  // namespace
}  // namespace quillet
