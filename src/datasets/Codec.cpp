#include "CodecRegistry.h"

#include <QorCore/Message.h>
#include <Tivor/Codec.h>

namespace Qor::Tivor {

NoCodecFound::~NoCodecFound() = default;

const std::string Codec::sDECODER = "__Decoder__";

Codec::Codec() = default;
Codec::Codec(const Codec&) = default;
Codec& Codec::operator=(const Codec&) = default;
Codec::~Codec() = default;
Codec::Factory::Factory() = default;
Codec::Factory::Factory(const Factory&) = default;
Codec::Factory& Codec::Factory::operator=(const Factory&) = default;
Codec::Factory::~Factory() = default;

namespace {

std::shared_ptr<Codec> RequireCodec(const std::string& format, const Core::CodeContext& context) {
    if (auto codec = CreateCodec(format))
        return codec;
    Core::Error::RaiseError(NoCodecFound(Core::FormatText("No codec was found for data format: %1%", {format})),
                            context, "Qor.Tivor." + context.function);
}

std::string FormatOf(const DataContainer& container) {
    const auto format = container.GetPtr<std::string>(sDATA_FORMAT);
    return format ? *format : std::string();
}

// At its top, or in its metadata.
std::string FindFormat(const DataContainer& container) {
    const std::string format = FormatOf(container);
    const auto metaData = format.empty() ? container.GetPtr<DataContainer>(sMETA_DATA) : nullptr;
    return metaData ? FormatOf(*metaData) : format;
}

} // namespace

void RegisterCodecs(std::shared_ptr<Codec::Factory> factory) {
    if (factory)
        CodecRegistry::Get().Register(factory);
}

void UnregisterCodecs(Codec::Factory& factory) { CodecRegistry::Get().Unregister(factory); }

void EnumCodecFormats(std::unordered_set<std::string>& formats) { CodecRegistry::Get().EnumFormats(formats); }

std::shared_ptr<Codec> CreateCodec(const std::string& format) {
    const std::shared_ptr<Codec::Factory> factory = CodecRegistry::Get().Find(format);
    return factory ? factory->CreateCodec(format) : nullptr;
}

std::shared_ptr<IDataSet> Decode(std::shared_ptr<DataContainer> source, const std::string& format) {
    if (!source)
        Core::Error::RaiseError(Core::NullPointerError("Expected a container to decode, found none"),
                                QOR_CODE_CONTEXT("Codec"), "Qor.Tivor.Decode");
    const std::string found = format.empty() ? FindFormat(*source) : format;
    if (found.empty())
        return DefaultDecode(*source);
    if (found == DataSet::sFORMAT)
        return DataSet::Create(*source);
    return RequireCodec(found, QOR_CODE_CONTEXT("Codec"))->Decode(std::move(source));
}

bool Encode(IDataSet& dataSet, DataContainer& target, const std::string& format) {
    return RequireCodec(format, QOR_CODE_CONTEXT("Codec"))->Encode(dataSet, target);
}

bool Transcode(std::shared_ptr<DataContainer> source, const std::string& sourceFormat, DataContainer& target,
               const std::string& targetFormat) {
    const std::shared_ptr<Codec> codec = RequireCodec(targetFormat, QOR_CODE_CONTEXT("Codec"));
    const std::shared_ptr<IDataSet> dataSet = Decode(std::move(source), sourceFormat);
    return dataSet && codec->Encode(*dataSet, target);
}

} // namespace Qor::Tivor
