#pragma once

#include <QorCore/BinaryFileStream.h>
#include <Tivor/DataFile.h>

#include <functional>
#include <string>
#include <utility>
#include <vector>

namespace Qor::Tivor::Testing {

/// A format for tests: files begin with a mark of its own, then come the entries as binary data files have them.
class MarkedFile final : public StreamedDataFile {
public:
    MarkedFile(std::string fileType, std::string mark)
        : StreamedDataFile("Test.MarkedFile"), m_fileType(std::move(fileType)), m_mark(std::move(mark)) {}
    ~MarkedFile() override { StopChanges(); }

    std::string GetFileType() const override { return m_fileType; }
    std::string DescribeFileType() const override { return "begins with " + m_mark; }

protected:
    void ReadContent(Core::BinaryInputStream& stream, const std::string&, DataContainer& content) override {
        std::string mark(m_mark.size(), ' ');
        if (stream.Read(mark.data(), mark.size()) != mark.size() || mark != m_mark)
            Core::Error::RaiseError(Core::IOError("no " + m_mark), QOR_CODE_CONTEXT("MarkedFile"), "Test.MarkedFile");
        content.InputData(stream);
    }
    void WriteContent(Core::BinaryOutputStream& stream) const override {
        stream.Write(m_mark.data(), m_mark.size());
        OutputData(stream, true);
    }

private:
    std::string m_fileType;
    std::string m_mark;
};

class MarkedFileFactory : public DataFile::Factory {
public:
    MarkedFileFactory(std::string fileType, std::string mark, std::vector<std::string> extensions = {})
        : m_fileType(std::move(fileType)), m_mark(std::move(mark)), m_extensions(std::move(extensions)) {}

    std::shared_ptr<DataFile> OpenFile(const std::string& fileName, DataFile::EAccess access,
                                       DataFile::EOpenBehavior behavior,
                                       std::shared_ptr<DataContainer> container) override {
        onOpen();
        auto file = std::make_shared<MarkedFile>(m_fileType, m_mark);
        file->Open(fileName, access, behavior, std::move(container));
        return file;
    }
    std::string GetFileType() const override { return m_fileType; }
    std::string DescribeFileType() const override { return "begins with " + m_mark; }
    void EnumExtensions(std::vector<std::string>& extensions) const override {
        extensions.insert(extensions.end(), m_extensions.begin(), m_extensions.end());
    }
    bool IsOfThisType(const std::string& fileName) const override {
        onTest();
        Core::BinaryFileStream stream;
        std::string mark(m_mark.size(), ' ');
        return stream.Open(fileName, true, DataFile::eOPEN_EXISTING) &&
               stream.Read(mark.data(), mark.size()) == mark.size() && mark == m_mark;
    }
    std::shared_ptr<DataFile> OpenContent(std::span<const std::byte> content, DataFile::EAccess access,
                                          std::shared_ptr<DataContainer> container) override {
        auto file = std::make_shared<MarkedFile>(m_fileType, m_mark);
        file->OpenMemory(content, access, std::move(container));
        return file;
    }
    bool HoldsThisType(std::span<const std::byte> content) const override {
        onTest();
        return std::string(reinterpret_cast<const char*>(content.data()), content.size()).starts_with(m_mark);
    }

    std::function<void()> onTest = [] {};
    std::function<void()> onOpen = [] {};

private:
    std::string m_fileType;
    std::string m_mark;
    std::vector<std::string> m_extensions;
};

} // namespace Qor::Tivor::Testing
