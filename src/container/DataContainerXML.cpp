#include "../serialization/FramedWrite.h"
#include "../serialization/ReadOperation.h"
#include "../serialization/XMLAttributes.h"
#include "../serialization/XMLElement.h"
#include "DataContainerXMLHandler.h"

#include <QorCore/BinaryFileStream.h>
#include <QorCore/MemoryStreams.h>
#include <QorCore/Message.h>
#include <QorCore/PathName.h>
#include <QorCore/SafeFileWriter.h>
#include <QorCore/StandardOutputStream.h>
#include <QorCore/XMLWriter.h>
#include <Tivor/XMLHandler.h>

namespace Qor::Tivor {

OpenDataFileFailed::~OpenDataFileFailed() = default;

namespace {

[[noreturn]] void RaiseOpenFailed(const std::string& fileName) {
    OpenDataFileFailed error(Core::FormatText("Failed to open data file named %1%", {fileName}));
    error.AddVariable("File", fileName);
    Core::Error::RaiseError(std::move(error), QOR_CODE_CONTEXT("DataContainer"), "Qor.Tivor.DataContainer");
}

} // namespace

void DataContainer::OutputData(std::ostream& stream, Core::XMLWriter& writer, bool lock) const {
    const NestingLevel level;
    const LockedWrite locked(*this, lock);
    for (const Entry& entry : *this)
        OutputXMLIfSerializable(stream, writer, entry.key, *entry.object);
}

void DataContainer::Output(std::ostream& stream, Core::XMLWriter& writer, const std::string& name) const {
    if (name.empty())
        SerializationManager::OutputDataContainerXMLHeader(stream, writer, {});
    else
        writer.StartTag(stream, name);
    OutputData(stream, writer, true);
    writer.EndTag(stream);
}

void DataContainer::OutputXML(Core::BinaryOutputStream& binaryStream) const {
    Core::StandardOutputStream stream(binaryStream);
    Core::XMLWriter writer;
    writer.StartDocument(stream);
    Output(stream, writer, {});
    writer.EndDocument(stream);
}

void DataContainer::InputXML(Core::BinaryInputStream& stream) {
    const ReadOperation reading;
    const std::shared_ptr<DataContainer> read = Create(DefaultsToLockableData());
    {
        XMLHandler handler(std::make_shared<DataContainerWrapper>(read));
        const Core::Lock lock = handler.AcquireParseLock();
        XMLDataParser().Parse(stream, handler);
        if (!handler.GetRoot())
            RaiseInvalidDataTag(handler.GetRootTag(), "the element of a container was expected");
    }
    Atomically([&] { PutAll(read->begin()); });
}

void DataContainer::ToXMLFile(const std::string& fileName) const {
    bool isOpen = false;
    try {
        Core::SafeFileWriter::Save(Core::PathName(fileName), [&](Core::BinaryOutputStream& stream) {
            isOpen = true;
            OutputXML(stream);
        });
    } catch (const Core::IOError& error) {
        if (isOpen)
            throw;
        RaiseOpenFailed(fileName);
    }
}

std::shared_ptr<DataContainer> DataContainer::FromXMLFile(const std::string& fileName) {
    Core::BinaryFileStream stream;
    if (!stream.Open(fileName, true, 0))
        RaiseOpenFailed(fileName);
    try {
        auto container = Create();
        container->InputXML(stream);
        return container;
    } catch (Core::Error& error) {
        error.SetVariable("File", fileName);
        throw;
    }
}

std::shared_ptr<DataContainer> DataContainer::FromXMLString(const std::string& text) {
    Core::MemoryInputStream stream(text.data(), text.size());
    auto container = Create();
    container->InputXML(stream);
    return container;
}

} // namespace Qor::Tivor
