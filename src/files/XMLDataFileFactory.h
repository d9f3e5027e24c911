#pragma once

#include "StreamedFileFactory.h"

#include <Tivor/XMLDataFile.h>

namespace Qor::Tivor {

class XMLDataFileFactory final : public StreamedFileFactory<XMLDataFile> {
public:
    void EnumExtensions(std::vector<std::string>& extensions) const override;
    bool IsOfThisType(const std::string& fileName) const override;
    bool HoldsThisType(std::span<const std::byte> content) const override;

protected:
    std::string ExplainRefusalOf(const Core::BinaryFileStream& file) const override;
};

} // namespace Qor::Tivor
