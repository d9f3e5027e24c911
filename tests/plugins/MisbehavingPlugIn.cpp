#include <QorCore/MemoryStreams.h>
#include <QorCore/XMLWriter.h>
#include <Tivor/DataContainer.h>
#include <Tivor/DataObjectFactory.h>
#include <Tivor/PlugIn.h>
#include <Tivor/XMLContentHandler.h>

#include <stdexcept>

using namespace Qor;
using namespace Qor::Tivor;

namespace {

const char* const moduleName = "MisbehavingPlugIn.dll";

void Reenter() {
    DataContainer container;
    container.Put("k", DataObjectFactory::Instance().CreateExternalDataObject("plain", "1", moduleName, false));
    Core::MemoryOutputStream written;
    container.OutputData(written, true);
    Core::MemoryInputStream stream(written.GetBytes());
    if (DataContainer::Create(stream)->NumDataObjects() != 1)
        throw std::logic_error("re-entry found nothing");
}

/// A class name is "<what> at <when>".
void Misbehave(const std::string& className, const std::string& when) {
    if (className == "error at " + when)
        Core::Error::RaiseError(Core::LogicError("error"), QOR_CODE_CONTEXT("PlugIn"), "Test.PlugIn");
    if (className == "exception at " + when)
        throw std::runtime_error("exception");
    if (className == "int at " + when)
        throw 7;
    if (className == "reentry at " + when)
        Reenter();
}

class Misbehaving final : public MutexLockableDataObject {
public:
    explicit Misbehaving(const std::string& className) : m_className(className) {}

    std::string GetTypeName() const override { return m_className; }
    bool HoldsType(const std::type_info&) const override { return false; }
    bool HoldsSameTypeAs(const DataObject& other) const override { return other.GetTypeName() == m_className; }
    std::shared_ptr<DataObject> Clone() override {
        Misbehave(m_className, "clone");
        return std::make_shared<Misbehaving>(*this);
    }
    std::shared_ptr<Serializer> GetSerializer() override;

    void SetText(const std::string& newText) {
        text = newText;
        NoteChange();
        ReportChange(EDataChange::value);
    }

    std::string text = "text";

private:
    std::string m_className;
};

/// Those that misbehave in XML have an XML form of their own, which is their text.
bool HasOwnXML(const std::string& className) {
    return className.ends_with(" at xml") || className.ends_with(" at handler") || className.ends_with(" at content");
}

class MisbehavingHandler final : public XMLContentHandler {
public:
    explicit MisbehavingHandler(Misbehaving& object) : m_object(object) {}

    void OnTextContent(const std::string& text) override {
        Misbehave(m_object.GetTypeName(), "content");
        m_object.SetText(text);
    }

private:
    Misbehaving& m_object;
};

class MisbehavingSerializer final : public Serializer {
public:
    explicit MisbehavingSerializer(Misbehaving& object) : m_object(object), m_className(object.GetTypeName()) {}

    DataObject& GetDataObject() override { return m_object; }
    std::string GetVersion() override { return "1"; }
    std::string GetModule() override { return moduleName; }
    std::uint64_t GetDataSize_bytes() const override {
        Misbehave(m_className, "size");
        return m_className == "much at size" ? 9 : m_className == "little at size" ? 1 : m_object.text.size();
    }
    bool DataSizeIsConstant() const override { return false; }
    std::uint64_t DataFromBinary(std::uint64_t size, Core::BinaryInputStream& stream) override {
        Misbehave(m_className, "read");
        const std::uint64_t wanted = m_className == "much at read"     ? size + 3
                                     : m_className == "little at read" ? 1
                                                                       : size;
        std::string text(wanted, ' ');
        text.resize(stream.Read(text.data(), wanted));
        m_object.SetText(m_className == "replacement at read" ? "other" : text);
        return wanted;
    }
    std::uint64_t DataToBinary(Core::BinaryOutputStream& stream) override {
        Misbehave(m_className, "write");
        if (m_className == "replacement at write")
            m_object.SetText(m_object.text + "more");
        stream.Write(m_object.text.data(), m_object.text.size());
        return m_object.text.size();
    }
    std::string GetXMLEncoding() override { return HasOwnXML(m_className) ? "" : Serializer::GetXMLEncoding(); }
    std::shared_ptr<XMLContentHandler>
    GetXMLContentHandler(const std::unordered_map<std::string, std::string>& attributes) override {
        Misbehave(m_className, "handler");
        if (m_className == "nothing at handler")
            return nullptr;
        return HasOwnXML(m_className) ? std::make_shared<MisbehavingHandler>(m_object)
                                      : Serializer::GetXMLContentHandler(attributes);
    }
    void DataToXML(std::ostream& stream, Core::XMLWriter& writer) override {
        Misbehave(m_className, "xml");
        if (HasOwnXML(m_className))
            writer.Text(stream, m_object.text);
        else
            Serializer::DataToXML(stream, writer);
    }

private:
    Misbehaving& m_object;
    std::string m_className;
};

std::shared_ptr<Serializer> Misbehaving::GetSerializer() {
    Misbehave(m_className, "serializer");
    return m_className == "nothing at serializer" ? nullptr : std::make_shared<MisbehavingSerializer>(*this);
}

} // namespace

TIVOR_DATA_OBJECT_FACTORY(className, version) {
    Misbehave(className, "create");
    return className == "nothing at create" ? nullptr : std::make_shared<Misbehaving>(className);
}
