#pragma once

#include <Tivor/SerializationManager.h>

#include <optional>
#include <string_view>

/// XML content of classes that nobody here knows. In memory and in binary data it stands behind a prefix: its elements
/// with their attributes in order and in double quotes, text, CDATA sections and comments; empty elements as `<a></a>`.
namespace Qor::Tivor {

inline constexpr std::string_view keptXMLPrefix = "\x1B<tivor-xml-v1>\n";

/// Implemented by the serializers that keep data instead of reading it.
class KeptXML {
public:
    /// Whether the kept data is XML; then the size that its element declared, if it did.
    virtual bool KeepsXML(std::optional<std::uint64_t>& declaredSize) const = 0;

protected:
    ~KeptXML() = default;
};

/// Whether data is the prefix and content that is recorded as it stands.
bool IsKeptXML(std::string_view data);

/// Lets a serializer read kept XML, the prefix included, as the content of its element; raises what that raises.
void ReplayKeptXML(std::string_view data, Serializer& serializer, const DataObjectHeader& header);

/// Fills an object from its block, which may be XML that somebody kept who did not know the class. Returns the bytes of
/// the block that neither the object nor this took from it, and which stand in the stream no more.
std::uint64_t InputPossiblyKept(Core::BinaryInputStream& block, Serializer& serializer, const DataObjectHeader& header);

} // namespace Qor::Tivor
