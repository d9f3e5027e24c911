#pragma once

#include <QorCore/Stream.h>

#include <string>

namespace Qor::Tivor {

/// Adds the bytes of a CDATA section to the text of its element.
void AppendSection(std::string& text, Core::BinaryInputStream& section);

/// Nothing says what text the reference stands for: raises `IOError`.
[[noreturn]] void RaiseEntityReference(const std::string& entity, const char* source, const char* category);

} // namespace Qor::Tivor
