// A file of any type in memory, with and without the type's name. What opens is changed, saved and opened again.

#include "Agreement.h"

#include <Tivor/DataFile.h>

using namespace Qor::Tivor;

namespace {

std::shared_ptr<DataFile> Open(std::span<const std::byte> content, const std::string& fileType) {
    try {
        return DataFile::OpenMemory(content, DataFile::eREAD_WRITE, fileType, nullptr);
    } catch (const Qor::Core::Error&) {
        return nullptr;
    }
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    const std::span content(reinterpret_cast<const std::byte*>(data), size);
    const BareModules limits;
    const std::string fileType = "QOR XML Data File";
    const auto file = Open(content, fileType);
    const auto found = Open(content, "");
    if (!file)
        return 0;
    // A root element "Data" is only read by those who know the type.
    Require(!found || size == 0 || (found->GetFileType() == fileType && *found == *file),
            "what is found is another file");
    Require(size == 0 || std::ranges::equal(file->GetContent(), content), "the content is another one");
    RequireAgreement(*file);
    const std::size_t numUnread = file->NumUnreadEntries();
    file->PutValue("added", 1);
    file->Flush();
    const auto saved = Open(file->GetContent(), "");
    Require(saved && *saved == *file && saved->NumUnreadEntries() == 0, "what was saved is another file");
    Require(file->NumUnreadEntries() == 0 && (!found || numUnread == 0 || found->NumUnreadEntries() == numUnread),
            "unread entries are not counted");
    return 0;
}
