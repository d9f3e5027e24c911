#pragma once

#include "ValueOperations.h"

#include <QorCore/DataStreams.h>

/// The stored form of one element of a vector or a collection: numbers at their own width, strings with their length in
/// front (wide ones as UTF-8), unitized values as number and unit.
namespace Qor::Tivor::Details {

/// Elements that are stored as they lie in memory.
template <class T>
inline constexpr bool isStoredRaw = std::is_trivially_copyable_v<T> && !std::is_same_v<T, bool>;
template <class T>
inline constexpr bool isStoredRaw<std::complex<T>> = isStoredRaw<T>;

/// The fewest bytes of an element.
template <class T>
std::uint64_t GetLeastSize() {
    if constexpr (std::is_trivially_copyable_v<T> || isStoredRaw<T>)
        return sizeof(T);
    else if constexpr (IsText<T>)
        return Core::GetSerializedStringSize({});
    else
        return T().GetSerializedSize();
}

template <class T>
std::uint64_t GetStoredSize(const T& element) {
    if constexpr (std::is_same_v<T, std::string>)
        return Core::GetSerializedStringSize(element);
    else if constexpr (std::is_same_v<T, std::wstring>)
        return sizeof(std::uint32_t) + Core::GetUtf8Size(element);
    else
        return element.GetSerializedSize();
}

template <class T>
[[nodiscard]] bool ReadElement(Core::DataInputStream& stream, T& element) {
    if constexpr (isStoredRaw<T>)
        return stream.GetStream().Read(&element, sizeof element) == sizeof element;
    else
        return stream.Read(element);
}

template <class T>
void WriteElement(Core::DataOutputStream& stream, const T& element) {
    if constexpr (isStoredRaw<T>)
        stream.GetStream().Write(&element, sizeof element);
    else
        stream.Write(element);
}

} // namespace Qor::Tivor::Details
