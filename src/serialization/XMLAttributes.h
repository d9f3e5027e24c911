#pragma once

#include <Tivor/SerializationManager.h>

#include <optional>
#include <string>
#include <unordered_map>

namespace Qor::Tivor {

using XMLAttributes = std::unordered_map<std::string, std::string>;

inline constexpr const char* dataTag = "Data";
inline constexpr const char* containerTag = "DataContainer";

/// The value of an attribute, or null.
const std::string* FindXMLAttribute(const XMLAttributes& attributes, const std::string& name);

/// Where an attribute "xencoding" says "def/base64", decodes the attribute "x" and takes "xencoding" away. Raises
/// `IOError` for another encoding, and for a value that is no Base64.
void DecodeXMLAttributes(XMLAttributes& attributes);

/// The number that the attribute "size" tells, if it is there. Raises `IOError` for anything but a decimal number.
std::optional<std::uint64_t> GetXMLSize(const XMLAttributes& attributes);

/// What the attributes of a data element say of its object. Raises `InvalidDataTag` when the type identifier, which
/// only the container's own element can do without, is missing or no decimal number, or contradicts that element.
DataObjectHeader GetXMLHeader(const std::string& tag, const XMLAttributes& attributes);

[[noreturn]] void RaiseInvalidDataTag(const std::string& tag, const char* reason);

/// "with key = ...", as the messages name an element.
std::string DescribeXMLKey(const XMLAttributes& attributes);

} // namespace Qor::Tivor
