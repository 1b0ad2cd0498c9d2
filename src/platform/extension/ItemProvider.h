#pragma once

#include <functional>
#include <memory>
#include <string>
#include <string_view>
#include <variant>

#include "platform/base/Result.h"
#include "platform/extension/Bitmap.h"
#include "platform/url/URL.h"

namespace quillet::platform {

// Type identifiers that a provider can be asked for.
inline constexpr std::string_view kUTTypeURL = "public.url";
inline constexpr std::string_view kUTTypeImage = "public.image";

// What an attachment turns out to be: a URL, the bytes of an image file, or an image object.
using Item = std::variant<URL, std::string, std::shared_ptr<const Bitmap>>;

// One attachment of an extension's input, loaded when it is wanted.
class ItemProvider {
public:
    using Completion = std::function<void(const Result<Item>&)>;

    virtual ~ItemProvider() = default;
    ItemProvider(const ItemProvider&) = delete;
    ItemProvider& operator=(const ItemProvider&) = delete;

    virtual bool hasItemConformingToTypeIdentifier(std::string_view type) const = 0;
    // Hands the item of that type, or why there is none, to `completion`: once, inside this call or
    // later, on any thread. The provider may be let go of while it loads: what a load needs has to
    // outlive it.
    virtual void loadItem(std::string_view type, Completion completion) = 0;

protected:
    ItemProvider() = default;
};

// A provider of an item that is there already; it answers inside the call.
class ReadyItemProvider final : public ItemProvider {
public:
    // A URL is of the type kUTTypeURL, all else of the type kUTTypeImage.
    explicit ReadyItemProvider(Item item);

    bool hasItemConformingToTypeIdentifier(std::string_view type) const override;
    // An error (EINVAL) for a type that the item is not of.
    void loadItem(std::string_view type, Completion completion) override;

private:
    Item item_;
};

}  // namespace quillet::platform
