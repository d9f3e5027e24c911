#pragma once

#include <string>

namespace Qor::Tivor::Measurements {

/// The MD5 checksum of some bytes, in 32 small hexadecimal digits.
std::string ChecksumOf(const void* bytes, std::size_t size);

} // namespace Qor::Tivor::Measurements
