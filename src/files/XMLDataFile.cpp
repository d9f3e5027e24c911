#include <QorCore/BoundedStreams.h>
#include <QorCore/MemoryStreams.h>
#include <QorCore/XMLParser.h>
#include <Tivor/XMLDataFile.h>

namespace Qor::Tivor {

namespace {

const char* const category = "Qor.Tivor.XMLDataFile";

constexpr std::uint64_t examinedBytes = 64 * 1024;

/// Sees the first element, and needs no more.
class FirstElement final : public Core::XMLParseHandler {
public:
    struct Seen {};

    void OnStartTag(const std::string& tag) override {
        m_isContainer = tag == "DataContainer";
        throw Seen();
    }

    bool IsContainer() const { return m_isContainer; }

private:
    bool m_isContainer = false;
};

bool BeginsWithContainer(Core::BinaryInputStream& stream) {
    FirstElement element;
    try {
        Core::BoundedInputStream beginning(stream, examinedBytes);
        Core::XMLParser<FirstElement>().Parse(beginning, element);
    } catch (const FirstElement::Seen&) {
    } catch (const std::exception&) { // no document
    }
    return element.IsContainer();
}

} // namespace

const std::string XMLDataFile::sFILE_TYPE = "QOR XML Data File";
const std::string XMLDataFile::sFILE_DESCRIPTION = "Stores data serialized as XML by the QOR XML Data File";

XMLDataFile::XMLDataFile() : StreamedDataFile(category, EDiscard::whenSaved) {}

XMLDataFile::XMLDataFile(const std::string& fileName, EAccess access, EOpenBehavior behavior,
                         std::shared_ptr<DataContainer> container)
    : XMLDataFile() {
    Open(fileName, access, behavior, std::move(container));
}

XMLDataFile::~XMLDataFile() { StopChanges(); }

std::string XMLDataFile::GetFileType() const { return sFILE_TYPE; }

std::string XMLDataFile::DescribeFileType() const { return sFILE_DESCRIPTION; }

bool XMLDataFile::IsXMLDataFile(const std::string& fileName) {
    Core::BinaryFileStream stream;
    return stream.Open(fileName, true, eOPEN_EXISTING) && BeginsWithContainer(stream);
}

bool XMLDataFile::IsXMLDataFile(std::span<const std::byte> content) {
    Core::MemoryInputStream stream(content);
    return BeginsWithContainer(stream);
}

void XMLDataFile::ReadContent(Core::BinaryInputStream& stream, const std::string&, DataContainer& content) {
    content.InputXML(stream);
}

void XMLDataFile::WriteContent(Core::BinaryOutputStream& stream) const { OutputXML(stream); }

} // namespace Qor::Tivor
