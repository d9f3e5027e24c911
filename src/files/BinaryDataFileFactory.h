#pragma once

#include "StreamedFileFactory.h"

#include <Tivor/BinaryDataFile.h>

namespace Qor::Tivor {

class BinaryDataFileFactory final : public StreamedFileFactory<BinaryDataFile> {
public:
    void EnumExtensions(std::vector<std::string>& extensions) const override;
    bool IsOfThisType(const std::string& fileName) const override;
    bool HoldsThisType(std::span<const std::byte> content) const override;
    void VisitHeaders(const std::string& fileName, const DataContainer::HeaderVisitor& visit) override;

protected:
    std::string ExplainRefusalOf(const Core::BinaryFileStream& file) const override;
};

} // namespace Qor::Tivor
