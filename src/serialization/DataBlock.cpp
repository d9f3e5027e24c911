#include "DataBlock.h"

#include "KeptXML.h"

#include <QorCore/BoundedStreams.h>
#include <QorCore/Context.h>
#include <QorCore/Message.h>

namespace Qor::Tivor {

SkippingData::~SkippingData() = default;

namespace {

void WarnOfMismatch(const DataObjectHeader& header, const char* direction, std::uint64_t done, const char* repair,
                    const char* category) {
    Core::Warning::RaiseWarning(
        SkippingData(Core::FormatText(
            "A %1% version %2% from module %3% %4% %5% bytes but the serialized data size was "
            "%6% bytes, %7% remaining bytes...",
            {header.typeName, header.version, header.module, direction, done, header.dataSize, repair})),
        QOR_CODE_CONTEXT("SerializationManager"), category);
}

// Only classes that somebody did not know can have been kept.
bool MayBeKept(const Serializer& serializer, const DataObjectHeader& header) {
    const std::uint16_t code = WithoutFlag(header.typeCode);
    return (code == eNO_TYPE || code == eSCALAR_ARRAY || code == eSCALAR_CONTAINER) &&
           header.dataSize >= keptXMLPrefix.size() && dynamic_cast<const KeptXML*>(&serializer) == nullptr;
}

} // namespace

void OutputPadded(Core::BinaryOutputStream& stream, Serializer& serializer, const DataObjectHeader& header,
                  const char* category) {
    Core::BoundedOutputStream block(stream, header.dataSize);
    serializer.DataToBinary(block);
    const std::uint64_t missing = block.Remaining();
    if (missing == 0)
        return;
    WarnOfMismatch(header, "output", header.dataSize - missing, "padding", category);
    if (const std::uint64_t limit = Core::Context::Current().limits.paddingBytes; missing > limit)
        Core::Error::RaiseError(
            LimitExceeded(Core::FormatText("A %1% announced %2% bytes and wrote %3%: padding is limited to %4% bytes",
                                           {header.typeName, header.dataSize, header.dataSize - missing, limit})),
            QOR_CODE_CONTEXT("SerializationManager"), category);
    block.WriteZeros(missing);
}

void InputBounded(Core::BinaryInputStream& stream, Serializer& serializer, const DataObjectHeader& header,
                  const char* category) {
    Core::BoundedInputStream block(stream, header.dataSize);
    std::uint64_t takenInVain = 0;
    if (MayBeKept(serializer, header))
        takenInVain = InputPossiblyKept(block, serializer, header);
    else
        serializer.DataFromBinary(header.dataSize, block);
    const std::uint64_t left = block.Remaining();
    if (left + takenInVain == 0)
        return;
    WarnOfMismatch(header, "input", header.dataSize - left - takenInVain, "skipping", category);
    if (block.Skip(left) != left)
        Core::Error::RaiseError(
            EndOfStreamOnInput(Core::FormatText("The stream ended within the %1% bytes of data of a %2%",
                                                {header.dataSize, header.typeName})),
            QOR_CODE_CONTEXT("SerializationManager"), category);
}

} // namespace Qor::Tivor
