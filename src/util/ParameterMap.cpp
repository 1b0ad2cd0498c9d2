#include "util/ParameterMap.h"

namespace quillet {

ParameterMap::ParameterMap(std::initializer_list<Entry> entries) {
    for (const Entry& entry : entries) {
        tryEmplace(entry.key).first = entry.value;
    }
}

std::pair<ParameterMap::Value&, bool> ParameterMap::tryEmplace(std::string key) {
    const auto [place, isNew] = places_.try_emplace(key, entries_.size());
    if (isNew) {
        entries_.emplace_back().key = std::move(key);
    }
    return {entries_[place->second].value, isNew};
}

const ParameterMap::Value* ParameterMap::find(std::string_view key) const {
    const auto place = places_.find(key);
    return place != places_.end() ? &entries_[place->second].value : nullptr;
}

}  // namespace quillet
