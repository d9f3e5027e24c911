#pragma once

#include <Tivor/Codec.h>

namespace Qor::Tivor {

/// The codec of the common layout (`DataSet`).
class DefaultCodec final : public Codec {
public:
    std::string GetFormatName() const override;
    std::string GetDescription() const override;
    bool CanDecode(const DataContainer& container) const override;
    std::shared_ptr<IDataSet> Decode(std::shared_ptr<DataContainer> container) override;
    bool Encode(IDataSet& dataSet, DataContainer& target) override;
};

class DefaultCodecFactory final : public Codec::Factory {
public:
    void GetFormats(std::vector<std::string>& formats) const override;
    std::shared_ptr<Codec> CreateCodec(const std::string& format) override;
};

} // namespace Qor::Tivor
