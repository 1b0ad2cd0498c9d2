#pragma once

#include <cerrno>
#include <functional>
#include <memory>
#include <string>
#include <string_view>
#include <utility>
#include <variant>

#include "platform/base/Result.h"
#include "platform/extension/Bitmap.h"
#include "platform/url/URL.h"

namespace quillet::platform {

// Type identifiers of items.
inline constexpr std::string_view kUTTypeURL = "public.url";
inline constexpr std::string_view kUTTypeImage = "public.image";

// The item of an attachment: a URL, the bytes of an image file, or an image object.
using Item = std::variant<URL, std::string, std::shared_ptr<const Bitmap>>;

// One attachment of an extension's input, loaded on request.
class ItemProvider {
public:
    using Completion = std::function<void(const Result<Item>&)>;

    virtual ~ItemProvider() = default;

    virtual bool hasItemConformingToTypeIdentifier(std::string_view type) const = 0;
    // Calls `completion` once with the item of that type or an error, inside this call or later, on
    // any thread. The provider may be destroyed during the load, so the load must own what it
    // needs.
    virtual void loadItem(std::string_view type, Completion completion) = 0;
};

// A provider of an item that exists already; it calls `completion` inside loadItem.
class ReadyItemProvider final : public ItemProvider {
public:
    // A URL has the type kUTTypeURL, any other item kUTTypeImage.
    explicit ReadyItemProvider(Item item) : item_(std::move(item)) {}

    bool hasItemConformingToTypeIdentifier(std::string_view type) const override {
        return type == (std::holds_alternative<URL>(item_) ? kUTTypeURL : kUTTypeImage);
    }
    // EINVAL for any type but the item's.
    void loadItem(std::string_view type, Completion completion) override {
        completion(hasItemConformingToTypeIdentifier(type)
                       ? Result<Item>(item_)
                       : posixError(EINVAL, "there is no item of the type " + std::string(type)));
    }

private:
    Item item_;
};

}  // namespace quillet::platform
