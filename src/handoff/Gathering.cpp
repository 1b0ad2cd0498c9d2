#include "handoff/Gathering.h"

#include <atomic>
#include <cerrno>
#include <chrono>
#include <cstdint>
#include <thread>
#include <utility>

#include "handoff/GatherItems.h"
#include "handoff/Staging.h"
#include "platform/base/Log.h"
#include "platform/base/TextFormat.h"
#include "platform/desktop/PngEncoding.h"
#include "platform/desktop/Queues.h"

namespace quillet {

using platform::Error;
using platform::ExtensionContext;
using platform::ExtensionItem;
using platform::Item;
using platform::ItemProvider;
using platform::Result;
using platform::StyledText;
using platform::URL;

namespace {

// Hosts expect a pause that was stored in single precision.
constexpr double kPause = 0.1F;  // seconds
constexpr int kMostPauses = 101;

std::int64_t numberOfAttachments(const ExtensionContext& context) {
    std::size_t number = 0;
    for (const ExtensionItem& item : context.inputItems) {
        number += item.attachments.size();
    }
    return static_cast<std::int64_t>(number);
}

Result<std::string> pngOfItem(const Item& item) {
    if (const auto* data = std::get_if<std::string>(&item)) {
        return platform::pngOfImageData(*data);
    }
    const auto* bitmap = std::get_if<std::shared_ptr<const platform::Bitmap>>(&item);
    if (bitmap == nullptr || *bitmap == nullptr) {
        return platform::posixError(EINVAL, "an item that is no image");
    }
    return platform::pngOfBitmap(**bitmap);
}

// The draft of one gathering, and how many attachments are still loading. Every load owns it, since
// a provider may answer long after everything else has ended.
class Gathering : public std::enable_shared_from_this<Gathering> {
public:
    Gathering(std::string service, std::int64_t attachments)
        : service_(std::move(service)), loading_(attachments) {}

    const std::shared_ptr<ExtensionMessage>& message() const { return message_; }
    bool isLoading() const { return loading_ != 0; }

    void add(const ExtensionItem& item) {
        if (const auto& text = item.attributedContentText; text && !text->isEmpty()) {
            message_->appendHtmlBody(platform::formatText("%@<br/>", {text->htmlRepresentation()}));
        }
        for (const std::shared_ptr<ItemProvider>& provider : item.attachments) {
            if (provider != nullptr) {
                load(*provider, item.attributedTitle);
            }
        }
    }

private:
    // A provider that offers neither type never counts as loaded, so the wait runs to its limit.
    void load(ItemProvider& provider, const std::optional<StyledText>& title) {
        if (provider.hasItemConformingToTypeIdentifier(platform::kUTTypeURL)) {
            provider.loadItem(platform::kUTTypeURL, once([this, title](const Result<Item>& item) {
                                  addUrl(item, title);
                              }));
        } else if (provider.hasItemConformingToTypeIdentifier(platform::kUTTypeImage)) {
            provider.loadItem(platform::kUTTypeImage,
                              once([this](const Result<Item>& item) { addImage(item); }));
        }
    }

    // Takes and counts the first answer of a load. Another one must not be added again, nor end the
    // wait for other loads.
    ItemProvider::Completion once(ItemProvider::Completion take) {
        return [self = shared_from_this(),
                isTaken = std::make_shared<std::atomic<bool>>(false),
                take = std::move(take)](const Result<Item>& item) {
            if (!isTaken->exchange(true)) {
                take(item);
                --self->loading_;
            }
        };
    }

    void addUrl(const Result<Item>& item, const std::optional<StyledText>& title) {
        const URL* url = item ? std::get_if<URL>(&item.value()) : nullptr;
        if (url == nullptr) {
            const Error error =
                item ? platform::posixError(EINVAL, "an item that is no URL") : item.error();
            platform::Log::write("GetItemForExtension kUTTypeURL %@", {error.description()});
        } else if (url->isFileURL()) {
            message_->appendAttachments(ExtensionUtilities::ShareFiles(service_, {url->path()}));
        } else {
            message_->setSubject(title ? std::optional(title->plainString()) : std::nullopt);
            message_->appendHtmlBody(platform::formatText(
                "<a href=\"%@\">%@</a>", {url->absoluteString(), url->absoluteString()}));
        }
    }

    void addImage(const Result<Item>& item) {
        const Result<std::string> png = item ? pngOfItem(item.value()) : item.error();
        if (!png) {
            platform::Log::write("GetItemForExtension kUTTypeImage %@",
                                 {png.error().description()});
            return;
        }
        message_->appendAttachments(ExtensionUtilities::ShareDatas(service_, {png.value()}));
    }

    const std::shared_ptr<ExtensionMessage> message_ = ExtensionMessage::init();
    const std::string service_;
    std::atomic<std::int64_t> loading_;
};

void gather(const ExtensionContext& context,
            const std::string& service,
            const ExtensionUtilities::ShareCompletion& completion,
            const std::function<void(double seconds)>& sleep) {
    const auto gathering = std::make_shared<Gathering>(service, numberOfAttachments(context));
    for (const ExtensionItem& item : context.inputItems) {
        gathering->add(item);
    }
    int pauses = 0;
    do {
        sleep(kPause);
    } while (++pauses < kMostPauses && gathering->isLoading());
    completion(gathering->message(), 0);
}

}  // namespace

void gatherItems(ExtensionContext context,
                 std::string service,
                 ExtensionUtilities::ShareCompletion completion,
                 platform::Queue& queue,
                 std::function<void(double seconds)> sleep) {
    queue.async([context = std::move(context),
                 service = std::move(service),
                 completion = std::move(completion),
                 sleep = std::move(sleep)] { gather(context, service, completion, sleep); });
}

void ExtensionUtilities::GetItemForExtension(ExtensionContext context,
                                             std::string service,
                                             ShareCompletion completion) {
    gatherItems(std::move(context),
                std::move(service),
                std::move(completion),
                platform::backgroundQueue(),
                [](double seconds) {
                    std::this_thread::sleep_for(std::chrono::duration<double>(seconds));
                });
}

}  // namespace quillet
