#include "DefaultCodec.h"

namespace Qor::Tivor {

namespace {

const char* const additionalKey = "Additional Data";

bool IsOfTheLayout(const std::string& key) {
    return key == sMETA_DATA || key == DataSet::s2D_DATA || key == DataSet::s1D_DATA || key == sDATA_FORMAT;
}

// What a former encoding gathered is taken out of its container, so that it does not end up in ever deeper ones.
DataContainer GatherAdditional(const DataContainer& content) {
    DataContainer gathered;
    if (const auto former = content.GetPtr<DataContainer>(additionalKey))
        gathered.Append(*former);
    for (const auto& [key, object] : content)
        if (!IsOfTheLayout(key) && (key != additionalKey || !content.GetPtr<DataContainer>(key)))
            gathered.Put(key, object);
    return gathered;
}

} // namespace

std::string DefaultCodec::GetFormatName() const { return DataSet::sFORMAT; }

std::string DefaultCodec::GetDescription() const { return "Common QOR Data Set Format"; }

bool DefaultCodec::CanDecode(const DataContainer& container) const { return DataSet::IsDataSetFormat(container); }

std::shared_ptr<IDataSet> DefaultCodec::Decode(std::shared_ptr<DataContainer> container) {
    return Tivor::Decode(std::move(container), {});
}

bool DefaultCodec::Encode(IDataSet& dataSet, DataContainer& target) {
    DataContainer encoded;
    dataSet.StoreDataSet(encoded);
    const auto* const own = dynamic_cast<const DataSet*>(&dataSet);
    const auto additional =
        std::make_shared<DataContainer>(own != nullptr ? GatherAdditional(*own->GetContent()) : DataContainer());
    if (!additional->IsEmpty())
        encoded.Put(additionalKey, additional);
    if (target.Exists(sDATA_FORMAT)) // it would be believed before the metadata
        encoded.PutValue(sDATA_FORMAT, DataSet::sFORMAT);
    target.Append(encoded);
    if (additional->IsEmpty())
        target.Remove(additionalKey);
    return true;
}

void DefaultCodecFactory::GetFormats(std::vector<std::string>& formats) const { formats.push_back(DataSet::sFORMAT); }

std::shared_ptr<Codec> DefaultCodecFactory::CreateCodec(const std::string&) { return std::make_shared<DefaultCodec>(); }

} // namespace Qor::Tivor
