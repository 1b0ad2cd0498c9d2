#include <gmock/gmock.h>
#include <map>
#include <set>
#include <string>

#include "host/SampleStore.h"
#include "host/StoreWriter.h"
#include "model/Accounts.h"
#include "model/ExtensionMessageReader.h"
#include "platform/files/FileManager.h"
#include "platform/plist/PropertyList.h"
#include "tests/support/DocumentExample.h"
#include "tests/support/OwnContainer.h"

namespace quillet::host {
namespace {

constexpr SampleTime kMorning{1'795'000'000, 10 * 3600};  // ten hours of the day are over

class WrittenStore : public testing::Test, protected test::OwnContainer {};

TEST_F(WrittenStore, EveryAccountFolderAndMessageIsReadBack) {
    ASSERT_FALSE(writeStore(dataFolder(container.path()), sampleStore(kMorning)));
    std::vector<bool> enabled;
    ExtensionMessageReader reader;
    for (const auto& account : ExtensionUtilities::Accounts()) {
        SCOPED_TRACE(*account->mail());
        enabled.push_back(account->enabled());
        const std::string folder =
            dataFolder(container.path()) + "/Today/" + *account->mail() + "/";
        const auto names = platform::FileManager::contentsOfFolder(folder).value();
        EXPECT_FALSE(names.empty());
        for (const std::string& name : names) {
            platform::PropertyListDocument document;
            ASSERT_FALSE(document.parse(test::contentsOf(folder + name)));
            EXPECT_EQ(document.root().valueForKey("account").stringValue(), *account->mail());
            if (account->enabled()) {
                reader.readAll(document.root().valueForKey("data"));
            }
        }
    }
    EXPECT_THAT(enabled, testing::ElementsAre(true, true, false));

    std::map<std::uint64_t, std::size_t> countOfFolder;
    std::set<std::string> identities;
    reader.records()->forEach([&](const ExtensionMessage& message) {
        countOfFolder[message.folderStandardId()->unsignedIntegerValue()]++;
        identities.insert(*message.account() + " " + *message.messageId());
    });
    EXPECT_GE(countOfFolder[1], 14U);
    EXPECT_GT(countOfFolder[11], 0U);
    EXPECT_GT(countOfFolder[12], 0U);
    EXPECT_EQ(countOfFolder[13], 1U);
    EXPECT_EQ(identities.size(), reader.records()->count() - 1)
        << "one message stands in two files";
}

}  // namespace
}  // namespace quillet::host
