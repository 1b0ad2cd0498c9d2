#include <gmock/gmock.h>
#include <map>
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

constexpr SampleTime kMorning{1'795'000'000, 10 * 3600};  // ten hours of the day are over

using Messages = std::vector<std::shared_ptr<ExtensionMessage>>;

// A sample store that was written to disk, read as the widget reads it.
class WrittenStore : public testing::Test {
protected:
    // The messages in the files of one account.
    Messages messagesOf(const std::string& account) {
        Messages messages;
        const std::string folder = dataFolder(container_.path()) + "/Today/" + account + "/";
        const auto names = FileManager::contentsOfFolder(folder);
        for (const std::string& name : names.value()) {
            SCOPED_TRACE(name);
            PropertyListDocument document;
            EXPECT_FALSE(FileManager::readFile(
                folder + name, document.bytes(), PropertyListDocument::kMaximumFileSize));
            EXPECT_FALSE(document.parse());
            EXPECT_TRUE(document.root().valueForKey("folder"));
            EXPECT_EQ(document.root().valueForKey("account").stringValue(), account);
            for (const auto dictionary : document.root().valueForKey("data")) {
                messages.push_back(ExtensionMessage::initWithDictonary(dictionary));
            }
        }
        return messages;
    }

    TemporaryFolder container_;
    TemporaryFolder runtime_;
    EnvironmentVariable containerVariable_{"QUILLET_CONTAINER", container_.path()};
    EnvironmentVariable runtimeVariable_{"XDG_RUNTIME_DIR", runtime_.path()};
    EnvironmentVariable identifierVariable_{"QUILLET_BUNDLE_IDENTIFIER", std::nullopt};
};

TEST_F(WrittenStore, EveryAccountFolderAndMessageIsReadBack) {
    ASSERT_FALSE(writeStore(dataFolder(container_.path()), sampleStore(kMorning)));
    std::vector<bool> enabled;
    Messages shown;
    for (const auto& account : ExtensionUtilities::Accounts()) {
        enabled.push_back(account->enabled());
        const Messages messages = messagesOf(*account->mail());
        EXPECT_FALSE(messages.empty()) << *account->mail();
        if (account->enabled()) {
            shown.insert(shown.end(), messages.begin(), messages.end());
        }
    }
    EXPECT_THAT(enabled, testing::ElementsAre(true, true, false));

    std::map<std::uint64_t, int> countOfFolder;
    std::set<std::string> identities;
    for (const auto& message : shown) {
        countOfFolder[message->folderStandardId()->unsignedIntegerValue()]++;
        identities.insert(*message->account() + " " + *message->messageId());
    }
    EXPECT_GE(countOfFolder[1], 14);
    EXPECT_GT(countOfFolder[11], 0);
    EXPECT_GT(countOfFolder[12], 0);
    EXPECT_EQ(countOfFolder[13], 1);
    EXPECT_EQ(identities.size(), shown.size() - 1) << "one message stands in two files";
}

}  // namespace
}  // namespace quillet::host
