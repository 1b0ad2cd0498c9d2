#include <gmock/gmock.h>
#include <random>
#include <thread>

#include "model/CentralDateCache.h"
#include "model/ExtensionDate.h"
#include "model/ExtensionMessage.h"
#include "model/ExtensionMessageReader.h"
#include "platform/base/Exception.h"
#include "tests/support/EnvironmentVariable.h"
#include "tests/support/LogCapture.h"
#include "tests/support/PropertyLists.h"

namespace quillet::test {
namespace {

using platform::Number;
using Text = ExtensionMessage::Text;

std::shared_ptr<ExtensionMessage> messageOf(std::string_view entries) {
    const auto document = documentOf("<dict>" + std::string(entries) + "</dict>");
    return ExtensionMessage::initWithDictonary(document.root());
}

class ExtensionMessageTest : public ::testing::Test {
protected:
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
    EXPECT_EQ(message->unread().value().kind(), Number::Kind::Boolean);
    EXPECT_EQ(message->date(), 1763163904.0);
    EXPECT_EQ(message->description(), "ExtensionMessage Fish & chips");
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
        {"<true/>", 1.0},
        {"<real>nan</real>", 0.0},
        {"<real>inf</real>", std::numeric_limits<float>::max()},
        {"<real>-1e300</real>", -std::numeric_limits<float>::max()},
    };
    for (const auto& [value, date] : cases) {
        const auto message = messageOf("<key>date</key>" + std::string(value));
        EXPECT_EQ(message->date(), date) << value;
        EXPECT_NE(message->dateString().value_or(""), "") << value;
    }
}

TEST_F(ExtensionMessageTest, ValueOfAWrongTypeStopsTheReadingWhereItStands) {
    const std::pair<const char*, const char*> cases[] = {
        // The entry; what is read of subject and folder.
        {"<key>idx</key><string>7</string>", ""},
        {"<key>flip</key><data></data>", ""},
        {"<key>messageId</key><integer>1</integer>", "s"},
        {"<key>folderStid</key><string>1</string>", "sf"},
        {"<key>date</key><date>2026-01-01T00:00:00Z</date>", "sf"},
    };
    for (const auto& [entry, read] : cases) {
        const LogCapture lines;
        const auto message = messageOf(entry);
        EXPECT_EQ(std::string(message->subject() ? "s" : "") + (message->folderPath() ? "f" : ""),
                  read);
        EXPECT_FALSE(message->date() || message->dateString()) << entry;
        EXPECT_THAT(lines.lines(), ::testing::SizeIs(1)) << entry;
    }
}

// One reader keeps what dictionaries have in common; a record must not inherit from the one before.
TEST_F(ExtensionMessageTest, EveryElementIsARecordOfItsOwnThatOutlivesTheReader) {
    auto reader = std::make_unique<ExtensionMessageReader>();
    const auto document = documentOf(
        "<array><dict><key>from</key><string>A</string><key>account</key><string>a@x</string>"
        "<key>subject</key><string>one</string></dict>"
        "<dict><key>subject</key><string>two</string></dict><string>x</string>"
        "<dict><key>account</key><string>a@x</string><key>subject</key><string>three</string>"
        "<key>from</key><string>C</string></dict></array>");
    reader->readAll(document.root());
    EXPECT_THROW(reader->readAll(documentOf("<integer>1</integer>").root()), platform::Exception);
    std::string texts;
    ExtensionMessage* last = nullptr;
    reader->records()->forEach([&](ExtensionMessage& record) {
        for (const Text& text : {record.from(), record.account(), record.subject()}) {
            texts += text.value_or("none") + ",";
        }
        last = &record;
    });
    EXPECT_EQ(texts, "A,a@x,one,,,two,none,none,none,C,a@x,three,");
    EXPECT_THAT(log.lines(), ::testing::SizeIs(1));
    const auto handle = RecordBlock::handle(reader->records(), *last);
    reader.reset();
    EXPECT_EQ(handle->subject(), "three");
}

TEST_F(ExtensionMessageTest, IdentityIsMessageIdAndAccountAlone) {
    const auto identified = [](const Text& messageId, const Text& account) {
        auto message = ExtensionMessage::init();
        message->setMessageId(messageId);
        message->setAccount(account);
        return message;
    };
    const auto one = identified("1", "a");
    EXPECT_TRUE(one->isEqual(identified("1", "a").get()));
    EXPECT_FALSE(one->isEqual(identified("1", "b").get()));
    EXPECT_FALSE(one->isEqual(identified("2", "a").get()));
    EXPECT_FALSE(one->isEqual(nullptr));
    for (const auto& lacking : {identified(std::nullopt, "a"), identified("1", std::nullopt)}) {
        EXPECT_TRUE(lacking->isEqual(lacking.get()));
        EXPECT_FALSE(lacking->isEqual(identified(lacking->messageId(), lacking->account()).get()));
        EXPECT_FALSE(one->isEqual(lacking.get()) || lacking->isEqual(one.get()));
    }
}

TEST_F(ExtensionMessageTest, FieldsMayBeSetAndReadOnSeveralThreads) {
    const auto message = ExtensionMessage::init();
    std::jthread writer([&] {
        for (std::int64_t round = 0; round < 1000; ++round) {
            message->setSubject(std::string(static_cast<std::size_t>(round % 50), 'x'));
            message->setFolderStandardId(Number(round));
        }
    });
    for (int round = 0; round < 1000; ++round) {
        EXPECT_EQ(message->subject().value_or("").find_first_not_of('x'), std::string::npos);
        static_cast<void>(message->folderStandardId());
    }
    writer.join();
    EXPECT_EQ(message->folderStandardId(), Number(std::int64_t{999}));
}

// The shared formatters and texts keep the region of their first use, so it is set before any test
// runs.
class Region : public ::testing::Environment {
public:
    void SetUp() override {
        setenv("LC_ALL", "", 1);
        setenv("LC_MESSAGES", "C", 1);
        setenv("LC_TIME", "it_IT.UTF-8", 1);
        setenv("TZ", "Europe/Rome", 1);
        ExtensionDate::shared();
    }
};

[[maybe_unused]] const auto* const kRegion = ::testing::AddGlobalTestEnvironment(new Region);

constexpr double kNow = 1794697200;  // 2026-11-15 00:00:00 in Rome

TEST(ExtensionDate, TodayShowsATimeAndAnyOtherDayADate) {
    const ExtensionDate& dates = ExtensionDate::shared();
    const std::tuple<std::optional<double>, const char*, int> cases[] = {
        {kNow - 1, "14/11/26", 20261114},
        {kNow + 1, "00:00", 20261115},
        {kNow + 24 * 3600 - 1, "23:59", 20261115},
        {kNow + 24 * 3600, "16/11/26", 20261116},
        {std::nullopt, "", 0},
    };
    for (const auto& [date, text, day] : cases) {
        EXPECT_EQ(dates.centralDate(date, kNow + 3600), text);
        EXPECT_EQ(dates.IntDate(date), day);
    }
    EXPECT_EQ(dates.exchangeDate("2026-11-14T23:44:49Z"), 1794699889.0);
    EXPECT_EQ(dates.exchangeDate(std::nullopt), std::nullopt);
}

TEST(CentralDateCache, GivesTheTextsThatTheFormattersGive) {
    std::mt19937_64 random(20261115);
    std::uniform_real_distribution<double> days(-400, 400);
    std::vector<double> dates{0, -1e300, 1e300, -62135596800.0, kNow, kNow - 1, kNow + 86400};
    for (int count = 0; count < 500; ++count) {
        const double near = kNow + days(random) * 100;                         // around today
        dates.insert(dates.end(), {kNow + days(random) * 86400, near, near});  // twice: cached
    }
    const auto texts = RecordBlock::make();
    // The system's zone changes between two reads, and back.
    for (const auto& [zone, evening] :
         {std::pair("Pacific/Auckland", "11:59"), std::pair("Europe/Rome", "14/11/26")}) {
        const EnvironmentVariable timeZone("TZ", zone);
        CentralDateCache cache(kNow + 3600, *texts);
        EXPECT_EQ(cache.text(kNow - 1).view(), evening);
        for (const double date : dates) {
            ASSERT_EQ(cache.text(date).view(),
                      ExtensionDate::shared().centralDate(date, kNow + 3600))
                << date;
        }
    }
}

}  // namespace
}  // namespace quillet::test
