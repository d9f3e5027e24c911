#pragma once

#include <Tivor/SerializationManager.h>

#include <optional>

namespace Qor::Tivor {

/// Lets the serializer write into exactly `header.dataSize` bytes: too much is refused, too little is padded with zeros
/// and a warning under `category`.
void OutputPadded(Core::BinaryOutputStream& stream, Serializer& serializer, const DataObjectHeader& header,
                  const char* category);

/// Lets the serializer read at most `header.dataSize` bytes; what it leaves is skipped, with a warning under
/// `category`.
void InputBounded(Core::BinaryInputStream& stream, Serializer& serializer, const DataObjectHeader& header,
                  const char* category);

/// `SerializationManager::OutputDataBlock`, but an object without a serializer writes nothing and gives nothing.
std::optional<std::uint64_t> OutputBlockIfSerializable(Core::BinaryOutputStream& stream, const std::string& dataName,
                                                       DataObject& object);

} // namespace Qor::Tivor
