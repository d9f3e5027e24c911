#include "NativePath.h"

namespace Qor::Core {

namespace fs = std::filesystem;

std::string PathName::GetExtension() const {
    const std::string withDot = FromNative(ToNative(*this).extension()).ToString();
    return withDot.empty() ? withDot : withDot.substr(1);
}

std::string PathName::GetFileName() const { return FromNative(ToNative(*this).filename()).ToString(); }

PathName PathName::GetDirectory() const { return FromNative(ToNative(*this).parent_path()); }

PathName PathName::GetAbsolute() const {
    std::error_code error;
    const fs::path absolute = fs::absolute(ToNative(*this), error);
    return error ? *this : FromNative(absolute);
}

bool PathName::Exists() const {
    std::error_code error;
    return fs::exists(ToNative(*this), error);
}

bool PathName::IsFile() const {
    std::error_code error;
    return fs::is_regular_file(ToNative(*this), error);
}

PathName PathName::operator/(const PathName& below) const { return FromNative(ToNative(*this) / ToNative(below)); }

} // namespace Qor::Core
