#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <optional>
#include <thread>
#include <vector>

#include "model/ExtensionMessage.h"
#include "model/ExtensionMessageReader.h"
#include "platform/base/Exception.h"
#include "tests/support/EnvironmentVariable.h"
#include "tests/support/LogCapture.h"
#include "tests/support/PropertyLists.h"

namespace quillet::test {

using platform::Number;
using ::testing::ElementsAre;
using ::testing::IsEmpty;
using ::testing::StartsWith;

namespace {

std::shared_ptr<ExtensionMessage> messageOf(std::string_view entries) {
    const auto document = documentOf("<dict>" + std::string(entries) + "</dict>");
    return ExtensionMessage::initWithDictonary(document.root());
}

std::shared_ptr<ExtensionMessage> identified(const ExtensionMessage::Text& messageId,
                                             const ExtensionMessage::Text& account) {
    auto message = ExtensionMessage::init();
    message->setMessageId(messageId);
    message->setAccount(account);
    return message;
}

}  // namespace

class ExtensionMessageTest : public ::testing::Test {
protected:
    EnvironmentVariable language{"LC_ALL", "C"};
    LogCapture log;
};

TEST_F(ExtensionMessageTest, EveryKeyLandsInItsField) {
    const auto message = messageOf(
        "<key>idx</key><integer>7</integer><key>acc_idx</key><integer>-1</integer>"
        "<key>icon_fetch</key><string> 12x</string><key>flip</key><real>2.9</real>"
        "<key>subject</key><string>Fish &amp; chips</string><key>messageId</key><string>id</string>"
        "<key>from</key><string>Zo\xC3\xAB</string><key>account</key><string>a@x</string>"
        "<key>folder</key><string>INBOX</string><key>folderStid</key><integer>11</integer>"
        "<key>isUnread</key><true/><key>date</key><integer>1763163889</integer>"
        "<key>unknown</key><array/>");
    EXPECT_EQ(message->idx(), 7U);
    EXPECT_EQ(message->acc_idx(), UINT64_MAX);
    EXPECT_EQ(message->icon_fetch(), 12U);
    EXPECT_EQ(message->flip(), 2U);
    EXPECT_EQ(message->subject(), "Fish & chips");
    EXPECT_EQ(message->messageId(), "id");
    EXPECT_EQ(message->from(), "Zo\xC3\xAB");
    EXPECT_EQ(message->account(), "a@x");
    EXPECT_EQ(message->folderPath(), "INBOX");
    EXPECT_EQ(message->folderStandardId(), Number(std::int64_t{11}));
    ASSERT_TRUE(message->unread());
    EXPECT_EQ(message->unread()->kind(), Number::Kind::Boolean);
    EXPECT_EQ(message->date(), 1763163904.0);
    EXPECT_EQ(message->description(), "ExtensionMessage Fish & chips");
    EXPECT_THAT(log.lines(), IsEmpty());
}

TEST_F(ExtensionMessageTest, MissingKeysGetTheirDefaultsAndADraftHasItsOwn) {
    const auto message = messageOf("");
    EXPECT_EQ(message->subject(), "No subject");
    EXPECT_EQ(message->from(), "");
    EXPECT_EQ(message->folderStandardId(), Number());
    EXPECT_EQ(message->date(), 0.0);
    EXPECT_EQ(message->plainBody(), std::nullopt);
    EXPECT_FALSE(message->to());
    const auto draft = ExtensionMessage::init();
    EXPECT_EQ(draft->plainBody(), "");
    EXPECT_TRUE(draft->to() && draft->cc() && draft->bcc() && draft->attachments());
    EXPECT_EQ(draft->date(), std::nullopt);
}

TEST_F(ExtensionMessageTest, DatesAreNarrowedToSinglePrecisionAndHeldFinite) {
    const std::pair<const char*, double> cases[] = {
        {"<real>1700000050</real>", 1700000000.0},
        {"<string> 1700000050 or so</string>", 1700000000.0},
        {"<real>nan</real>", 0.0},
        {"<real>inf</real>", std::numeric_limits<float>::max()},
        {"<real>-1e300</real>", -std::numeric_limits<float>::max()},
    };
    for (const auto& [value, date] : cases) {
        SCOPED_TRACE(value);
        const auto message = messageOf("<key>date</key>" + std::string(value));
        EXPECT_EQ(message->date(), date);
        EXPECT_NE(message->dateString().value_or(""), "");
    }
    EXPECT_THAT(log.lines(), IsEmpty());
}

TEST_F(ExtensionMessageTest, ValueOfAWrongTypeStopsTheReadingWhereItStands) {
    const struct {
        const char* entry;
        const char* read;  // of subject, folder and date
    } cases[] = {
        {"<key>idx</key><string>7</string>", ""},
        {"<key>flip</key><data></data>", ""},
        {"<key>messageId</key><integer>1</integer>", "s"},
        {"<key>folderStid</key><string>1</string>", "sf"},
        {"<key>date</key><date>2026-01-01T00:00:00Z</date>", "sf"},
        {"<key>date</key><true/>", "sfd"},
    };
    for (const auto& row : cases) {
        SCOPED_TRACE(row.entry);
        const LogCapture lines;
        const auto message = messageOf(row.entry);
        const bool isDated = message->date().has_value();
        EXPECT_EQ(std::string(message->subject() ? "s" : "") + (message->folderPath() ? "f" : "") +
                      (isDated ? "d" : ""),
                  row.read);
        EXPECT_EQ(message->dateString().has_value(), isDated);
        EXPECT_EQ(lines.lines().size(), isDated ? 0U : 1U);
    }
}

// One reader keeps what dictionaries have in common; a record must not inherit from the one before.
TEST_F(ExtensionMessageTest, EveryElementIsARecordOfItsOwnThatOutlivesTheReader) {
    std::optional<ExtensionMessageReader> reader(std::in_place);
    const auto document = documentOf(
        "<array>"
        "<dict><key>from</key><string>A</string><key>account</key><string>a@x</string>"
        "<key>subject</key><string>one</string></dict>"
        "<dict><key>subject</key><string>two</string></dict>"
        "<string>x</string>"
        "<dict><key>account</key><string>a@x</string><key>subject</key><string>three</string>"
        "<key>from</key><string>C</string></dict>"
        "</array>");
    reader->readAll(document.root());
    const auto number = documentOf("<integer>1</integer>");
    EXPECT_THROW(reader->readAll(number.root()), platform::Exception);
    std::vector<ExtensionMessage*> messages;
    reader->records()->forEach([&](ExtensionMessage& record) { messages.push_back(&record); });
    ASSERT_EQ(messages.size(), 4U);
    EXPECT_EQ(messages[1]->from(), "");
    EXPECT_EQ(messages[1]->account(), "");
    EXPECT_EQ(messages[1]->subject(), "two");
    EXPECT_EQ(messages[2]->subject(), std::nullopt);
    EXPECT_EQ(messages[3]->from(), "C");
    EXPECT_EQ(messages[3]->account(), "a@x");
    EXPECT_EQ(log.lines().size(), 1U);

    const auto last = RecordBlock::handle(reader->records(), *messages.back());
    reader.reset();
    EXPECT_EQ(last->subject(), "three");
}

TEST_F(ExtensionMessageTest, IdentityIsMessageIdAndAccountAlone) {
    const auto none = identified(std::nullopt, "a");
    const struct {
        const char* name;
        std::shared_ptr<ExtensionMessage> left;
        std::shared_ptr<ExtensionMessage> right;
        bool equal;
    } cases[] = {
        {"same fields", identified("1", "a"), identified("1", "a"), true},
        {"other account", identified("1", "a"), identified("1", "b"), false},
        {"other identifier", identified("1", "a"), identified("2", "a"), false},
        {"no identifier", none, identified(std::nullopt, "a"), false},
        {"no account", identified("1", std::nullopt), identified("1", std::nullopt), false},
        {"the same object", none, none, true},
    };
    for (const auto& testCase : cases) {
        SCOPED_TRACE(testCase.name);
        EXPECT_EQ(testCase.left->isEqual(testCase.right.get()), testCase.equal);
        EXPECT_EQ(testCase.right->isEqual(testCase.left.get()), testCase.equal);
    }
    EXPECT_FALSE(none->isEqual(nullptr));
}

TEST_F(ExtensionMessageTest, FieldsMayBeSetAndReadOnSeveralThreads) {
    const auto message = ExtensionMessage::init();
    std::thread writer([&] {
        for (int round = 0; round < 1000; ++round) {
            message->setSubject(std::string(static_cast<std::size_t>(round % 50), 'x'));
            message->setFolderStandardId(Number(std::int64_t{round}));
        }
    });
    for (int round = 0; round < 1000; ++round) {
        const std::string subject = message->subject().value_or("");
        EXPECT_EQ(subject.find_first_not_of('x'), std::string::npos);
        static_cast<void>(message->folderStandardId());
    }
    writer.join();
    EXPECT_EQ(message->folderStandardId(), Number(std::int64_t{999}));
}

}  // namespace quillet::test
