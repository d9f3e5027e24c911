#include "XMLText.h"

#include <QorCore/Alert.h>
#include <QorCore/Message.h>

#include <array>

namespace Qor::Tivor {

void AppendSection(std::string& text, Core::BinaryInputStream& section) {
    std::array<char, 4096> piece;
    while (const std::uint64_t size = section.Read(piece.data(), piece.size()))
        text.append(piece.data(), static_cast<std::size_t>(size));
}

void RaiseEntityReference(const std::string& entity, const char* source, const char* category) {
    Core::Error::RaiseError(
        Core::IOError(Core::FormatText("Expected text, found a reference to the unknown entity \"%1%\"", {entity})),
        QOR_CODE_CONTEXT(source), category);
}

} // namespace Qor::Tivor
