#include <gtest/gtest.h>
#include <string>

#include "host/MailStore.h"
#include "host/PropertyListWriter.h"
#include "tests/support/DocumentExample.h"
#include "tests/support/OwnContainer.h"

namespace quillet::host {
namespace {

using test::contentsOf;
using test::EnvironmentVariable;

Value message(const char* account, const char* identifier) {
    return Dictionary{{"messageId", identifier}, {"account", account}, {"date", 1.5e9}};
}

class MailStore : public testing::TestWithParam<PropertyListFormat>, protected test::OwnContainer {
protected:
    // A file with all that the widget does not know, around these messages.
    static Value fileOf(Array messages) {
        Dictionary file{{"z", Array{Dictionary{{"nested", Array{true, Dictionary{}, Array{}}}}}},
                        {"folder", "<INBOX> & 李娜"},
                        {"bytes", Data{std::string("\0\xFF", 2)}},
                        {"when", Date{-86400}},
                        {"third", 1.0 / 3},
                        {"huge", 0xFFFFFFFFFFFFFFFFU},
                        {"low", -9000000000},
                        {"data", std::move(messages)},
                        {"account", "a"}};
        if (GetParam() == PropertyListFormat::Binary) {  // what only this format has
            const Dictionary more{{"uid", Uid{70000}}, {"null", Null{}}, {"fraction", Date{0.25}}};
            file.insert(file.end(), more.begin(), more.end());
        }
        return file;
    }
    std::string put(const std::string& file, const Value& root) {
        return container.writeFile("Today/" + file, writePropertyList(root, GetParam()));
    }
};

INSTANTIATE_TEST_SUITE_P(,
                         MailStore,
                         testing::Values(PropertyListFormat::Xml, PropertyListFormat::Binary),
                         [](const auto& format) {
                             return format.param == PropertyListFormat::Xml ? "Xml" : "Binary";
                         });

TEST_P(MailStore, EveryCopyOfAMessageGoesAndEverythingElseStaysAsItWas) {
    const Value same = message("a", "2");
    const Value odd[] = {"text", Dictionary{{"messageId", 1}}, message("b", "1")};
    const std::string inbox = put("a/INBOX", fileOf({message("a", "1"), same, odd[0], odd[1]}));
    const std::string other = put("b/INBOX", fileOf({odd[2], message("a", "1"), same}));
    const std::string broken = container.writeFile("Today/a/broken", "bplist00");
    const std::string hidden = put("a/.INBOX", fileOf({message("a", "1")}));
    const std::string before = contentsOf(hidden);

    const auto removed = removeMessage(container.path(), {"a", "1"});
    ASSERT_TRUE(removed) << removed.error().description();
    EXPECT_EQ(removed.value(), 2U);
    EXPECT_EQ(contentsOf(inbox), writePropertyList(fileOf({same, odd[0], odd[1]}), GetParam()));
    EXPECT_EQ(contentsOf(other), writePropertyList(fileOf({odd[2], same}), GetParam()));
    EXPECT_EQ(contentsOf(broken), "bplist00");
    EXPECT_EQ(contentsOf(hidden), before);
    EXPECT_EQ(removeMessage(container.path(), {"a", "1"}).value(), 0U);
}

TEST_P(MailStore, MessageIsFoundByAccountAndIdentifierTogether) {
    put("a/INBOX", fileOf({message("a", "1"), message("b", "2")}));
    EXPECT_EQ(findMessage(container.path(), {"b", "1"}).value(), nullptr);
    const auto found = findMessage(container.path(), {"b", "2"}).value();
    ASSERT_NE(found, nullptr);
    EXPECT_EQ(found->account(), "b");
}

TEST_P(MailStore, WithoutALockTheFileStaysAsItIs) {
    const std::string file = put("a/INBOX", fileOf({message("a", "1")}));
    const std::string before = contentsOf(file);
    const EnvironmentVariable noRuntime{"XDG_RUNTIME_DIR", file};
    const EnvironmentVariable noTemporary{"TMPDIR", file};
    EXPECT_FALSE(removeMessage(container.path(), {"a", "1"}));
    EXPECT_FALSE(findMessage(container.path(), {"a", "1"}));
    EXPECT_EQ(contentsOf(file), before);
}

}  // namespace
}  // namespace quillet::host
