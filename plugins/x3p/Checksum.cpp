#include "Checksum.h"

#include <boost/uuid/detail/md5.hpp>

namespace Qor::Tivor::Measurements {

std::string ChecksumOf(const void* bytes, std::size_t size) {
    boost::uuids::detail::md5 sum;
    sum.process_bytes(bytes, size);
    boost::uuids::detail::md5::digest_type digest;
    sum.get_digest(digest);
    std::string text;
    for (const auto part : digest) // numbers or bytes, the first digit highest
        for (std::size_t digits = 2 * sizeof part; digits-- > 0;)
            text += "0123456789abcdef"[part >> (4 * digits) & 15];
    return text;
}

} // namespace Qor::Tivor::Measurements
