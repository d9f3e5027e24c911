#pragma once

#include <Tivor/Serializer.h>

namespace Qor::Tivor {

/// The data as one hexadecimal number in upper case, its first byte the lowest; for data of up to 8 bytes.
void OutputHex64(std::ostream& stream, Core::XMLWriter& writer, Serializer& serializer);

/// The data in Base64, lines of 76 characters with CR LF between them, in one CDATA section. Data of more than 4096
/// bytes is written by a thread "XML Serializer" in the name of the calling one, while that one copies to the stream;
/// what either of them raises reaches the caller.
void OutputBase64(std::ostream& stream, Core::XMLWriter& writer, Serializer& serializer);

} // namespace Qor::Tivor
