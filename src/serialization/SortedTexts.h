#pragma once

#include "StoredElement.h"

#include <algorithm>
#include <map>
#include <set>
#include <vector>

namespace Qor::Tivor {

namespace Details {

/// Sets and maps of texts whose own order is not that of their UTF-8 bytes.
template <class T>
inline constexpr bool isWideTextSet = false;
template <>
inline constexpr bool isWideTextSet<std::set<std::wstring>> = true;
template <class T>
concept IsSortedWhenStored = IsMap<T> || IsHashed<T> || isWideTextSet<T>;

} // namespace Details

/// Writes the texts of a set, sorted by their UTF-8 bytes.
template <class T>
void WriteSortedTexts(Core::DataOutputStream& stream, const T& texts) {
    std::vector<std::string> sorted;
    sorted.reserve(texts.size());
    for (const auto& text : texts)
        sorted.push_back(Details::PlainText(text));
    std::sort(sorted.begin(), sorted.end());
    for (const std::string& text : sorted)
        stream.Write(text);
}

/// Writes the pairs of a map of texts, sorted by the UTF-8 bytes of their keys.
template <class T>
void WriteSortedPairs(Core::DataOutputStream& stream, const T& map) {
    std::vector<std::pair<std::string, const typename T::mapped_type*>> sorted;
    sorted.reserve(map.size());
    for (const auto& [key, value] : map)
        sorted.emplace_back(Details::PlainText(key), &value);
    // Wide keys that are not valid may become equal: then the values decide, not where the elements happen to lie.
    std::sort(sorted.begin(), sorted.end(), [](const auto& left, const auto& right) {
        return left.first != right.first ? left.first < right.first : *left.second < *right.second;
    });
    for (const auto& [key, value] : sorted) {
        stream.Write(key);
        Details::WriteElement(stream, *value);
    }
}

} // namespace Qor::Tivor
