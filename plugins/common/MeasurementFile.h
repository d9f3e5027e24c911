#pragma once

#include "Report.h"

#include <QorCore/BinaryFileStream.h>
#include <QorCore/BufferedStreams.h>
#include <QorCore/MemoryStreams.h>
#include <Tivor/DataFile.h>
#include <Tivor/DataFileTypeManager.h>

namespace Qor::Tivor::Measurements {

/// The data file of a measurement format. Its entries are a data set in the common layout: the surfaces and profiles of
/// the file, and what else it tells as metadata. A `Format` is a class of these static members:
///
///     fileType, description, category, extensions   texts, the last a list of them
///     Refusal(stream, size)     why a file of so many bytes is not of the format; empty when it is
///     Read(stream, report, content)                 reads a file into an empty container
///     Write(container, report, stream)              writes what a container holds
template <class Format>
class MeasurementFile final : public StreamedDataFile {
public:
    MeasurementFile() : StreamedDataFile(Format::category) {}
    ~MeasurementFile() override { StopChanges(); }

    std::string GetFileType() const override { return Format::fileType; }
    std::string DescribeFileType() const override { return Format::description; }

protected:
    void ReadContent(Core::BinaryInputStream& stream, const std::string& fileName, DataContainer& content) override {
        Format::Read(stream, Report(fileName, Format::category), content);
    }
    void WriteContent(Core::BinaryOutputStream& stream) const override {
        const std::string fileName = GetFileName();
        Format::Write(*this, Report(fileName.empty() ? "(in memory)" : fileName, Format::category), stream);
    }
};

template <class Format>
class MeasurementFileFactory final : public DataFile::Factory {
public:
    using File = MeasurementFile<Format>;

    std::shared_ptr<DataFile> OpenFile(const std::string& fileName, DataFile::EAccess access,
                                       DataFile::EOpenBehavior behavior,
                                       std::shared_ptr<DataContainer> container) override {
        const auto file = std::make_shared<File>();
        return file->Open(fileName, access, behavior, std::move(container)) ? file : nullptr;
    }
    std::shared_ptr<DataFile> OpenContent(std::span<const std::byte> content, DataFile::EAccess access,
                                          std::shared_ptr<DataContainer> container) override {
        const auto file = std::make_shared<File>();
        return file->OpenMemory(content, access, std::move(container)) ? file : nullptr;
    }
    std::string GetFileType() const override { return Format::fileType; }
    std::string DescribeFileType() const override { return Format::description; }
    void EnumExtensions(std::vector<std::string>& extensions) const override {
        extensions.insert(extensions.end(), std::begin(Format::extensions), std::end(Format::extensions));
    }
    bool IsOfThisType(const std::string& fileName) const override { return ExplainRefusal(fileName).empty(); }
    bool HoldsThisType(std::span<const std::byte> content) const override {
        Core::MemoryInputStream stream(content);
        return Format::Refusal(stream, content.size()).empty();
    }
    std::string ExplainRefusal(const std::string& fileName) const override {
        Core::BinaryFileStream file;
        if (!file.Open(fileName, true, DataFile::eOPEN_EXISTING))
            return "it cannot be opened";
        return Format::Refusal(file, file.GetSize());
    }
};

} // namespace Qor::Tivor::Measurements
