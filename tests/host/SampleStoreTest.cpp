#include <algorithm>
#include <functional>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <map>
#include <memory>
#include <set>
#include <string>

#include "host/SampleStore.h"
#include "host/StoreWriter.h"
#include "model/ExtensionMessage.h"
#include "model/ExtensionUtilities.h"
#include "platform/foundation/FileManager.h"
#include "platform/foundation/PropertyList.h"
#include "tests/support/EnvironmentVariable.h"
#include "tests/support/TemporaryFolder.h"

namespace quillet::host {
namespace {

namespace FileManager = platform::FileManager;
using platform::PropertyListDocument;
using test::EnvironmentVariable;
using test::TemporaryFolder;

constexpr double kDay = 86400;                            // seconds
constexpr SampleTime kMorning{1'795'000'000, 10 * 3600};  // ten hours of the day are over
constexpr SampleTime kJustAfterMidnight{1'795'000'000, 30};

// The records of a sample store that was written to disk, read as the widget reads them.
class WrittenStore : public testing::Test {
protected:
    using Messages = std::vector<std::shared_ptr<ExtensionMessage>>;

    void write(const SampleTime& time) {
        const auto error = writeStore(dataFolder(container_.path()), sampleStore(time));
        ASSERT_FALSE(error) << error->description();
    }

    // Messages of the account, by the name of their file.
    std::map<std::string, Messages> messagesOf(const std::string& account) {
        std::map<std::string, Messages> files;
        const std::string folder = dataFolder(container_.path()) + "/Today/" + account + "/";
        const auto names = FileManager::contentsOfFolder(folder);
        EXPECT_TRUE(names);
        for (const std::string& name : names.value()) {
            SCOPED_TRACE(name);
            files[name] = messagesIn(folder + name, account);
        }
        return files;
    }

    static Messages messagesIn(const std::string& path, const std::string& account) {
        PropertyListDocument document;
        EXPECT_FALSE(
            FileManager::readFile(path, document.bytes(), PropertyListDocument::kMaximumFileSize));
        EXPECT_FALSE(document.parse());
        EXPECT_TRUE(document.root().valueForKey("folder"));
        EXPECT_EQ(document.root().valueForKey("account").stringValue(), account);
        Messages messages;
        for (const auto dictionary : document.root().valueForKey("data")) {
            messages.push_back(ExtensionMessage::initWithDictonary(dictionary));
        }
        return messages;
    }

    Messages enabledMessages() {
        Messages all;
        for (const auto& account : ExtensionUtilities::Accounts()) {
            for (const auto& [name, messages] : messagesOf(*account->mail())) {
                if (account->enabled()) {
                    all.insert(all.end(), messages.begin(), messages.end());
                }
            }
        }
        return all;
    }

    TemporaryFolder container_;
    TemporaryFolder runtime_;
    EnvironmentVariable containerVariable_{"QUILLET_CONTAINER", container_.path()};
    EnvironmentVariable runtimeVariable_{"XDG_RUNTIME_DIR", runtime_.path()};
    EnvironmentVariable identifierVariable_{"QUILLET_BUNDLE_IDENTIFIER", std::nullopt};
};

TEST_F(WrittenStore, EveryAccountFolderAndMessageIsReadBack) {
    write(kMorning);
    std::vector<bool> enabled;
    for (const auto& account : ExtensionUtilities::Accounts()) {
        enabled.push_back(account->enabled());
        EXPECT_FALSE(messagesOf(*account->mail()).empty()) << *account->mail();
    }
    EXPECT_THAT(enabled, testing::ElementsAre(true, true, false));

    std::map<std::uint64_t, int> countOfFolder;
    std::set<std::string> identities;
    const Messages messages = enabledMessages();
    for (const auto& message : messages) {
        countOfFolder[message->folderStandardId()->unsignedIntegerValue()]++;
        identities.insert(*message->account() + " " + *message->messageId());
        EXPECT_FALSE(message->from()->empty());
        EXPECT_FALSE(message->subject()->empty());
    }
    EXPECT_GE(countOfFolder[1], 14);
    EXPECT_GT(countOfFolder[11], 0);
    EXPECT_GT(countOfFolder[12], 0);
    EXPECT_EQ(countOfFolder[13], 1);
    EXPECT_EQ(identities.size(), messages.size() - 1) << "one message stands in two files";
}

TEST_F(WrittenStore, TheNewestMessageOfAllIsInTheDisabledAccount) {
    write(kMorning);
    double newestShown = 0;
    for (const auto& message : enabledMessages()) {
        newestShown = std::max(newestShown, *message->date());
    }
    const auto hidden = messagesOf(*ExtensionUtilities::Accounts().back()->mail());
    EXPECT_GT(*hidden.begin()->second.front()->date(), newestShown);
}

TEST_F(WrittenStore, WritingAgainReplacesEveryFile) {
    write(kMorning);
    const auto before = enabledMessages();
    write({kMorning.now + kDay, kMorning.sinceMidnight});
    const auto after = enabledMessages();
    ASSERT_EQ(after.size(), before.size());
    double newestBefore = 0;
    double newestAfter = 0;
    for (std::size_t index = 0; index < after.size(); ++index) {
        newestBefore = std::max(newestBefore, *before[index]->date());
        newestAfter = std::max(newestAfter, *after[index]->date());
    }
    EXPECT_NEAR(newestAfter, newestBefore + kDay, 128) << "dates are kept in steps of 128 seconds";
}

TEST_F(WrittenStore, BetaWidgetHasItsOwnDataFolder) {
    const EnvironmentVariable beta{"QUILLET_BUNDLE_IDENTIFIER", "it.tarno.quillet.beta10"};
    write(kMorning);
    EXPECT_TRUE(FileManager::folderExists(container_.path("SharedDataBeta/Today")));
    EXPECT_FALSE(FileManager::folderExists(container_.path("SharedData")));
}

TEST_F(WrittenStore, FolderThatCannotBeMadeIsAnError) {
    const std::string file = container_.writeFile("file", "");
    const auto error = writeStore(file + "/SharedData", sampleStore(kMorning));
    ASSERT_TRUE(error);
    EXPECT_THAT(error->text, testing::HasSubstr(file));
}

TEST(SampleStore, BothFormatsAreUsed) {
    const auto files = sampleStore(kMorning);
    for (const auto format : {PropertyListFormat::Xml, PropertyListFormat::Binary}) {
        EXPECT_TRUE(std::any_of(files.begin(), files.end(), [&](const StoreFile& file) {
            return file.format == format;
        }));
    }
}

std::vector<double> datesIn(const std::vector<StoreFile>& files) {
    std::vector<double> dates;
    for (const StoreFile& file : files) {
        PropertyListDocument document;
        EXPECT_FALSE(document.parse(writePropertyList(file.root, file.format))) << file.path;
        if (file.path.starts_with("Today/")) {
            for (const auto message : document.root().valueForKey("data")) {
                dates.push_back(message.valueForKey("date").floatValue());
            }
        }
    }
    return dates;
}

// Also in the first seconds of a day, when nothing can be hours old and of today.
TEST(SampleStore, SomeMessagesAreOfTodayAndNoneOfTomorrow) {
    constexpr double kStep = 128;  // of single-precision dates
    for (const SampleTime& time : {kMorning, kJustAfterMidnight}) {
        SCOPED_TRACE(time.sinceMidnight);
        const auto dates = datesIn(sampleStore(time));
        const double midnight = time.now - time.sinceMidnight;
        const auto ofToday = std::count_if(
            dates.begin(), dates.end(), [&](double date) { return date >= midnight - kStep; });
        EXPECT_GE(ofToday, 5);
        EXPECT_LT(static_cast<std::size_t>(ofToday), dates.size() - 5);
        EXPECT_LE(*std::max_element(dates.begin(), dates.end()), time.now + kStep);
    }
}

}  // namespace
}  // namespace quillet::host
