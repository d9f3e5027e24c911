#pragma once

#include <Tivor/DataSet.h>

#include <memory>
#include <string>
#include <unordered_set>
#include <vector>

namespace Qor::Tivor {

/// There is no codec for a data format.
QOR_DECLARE_ALERT(TIVOR_API, NoCodecFound, Core::LogicError);

/// Converts between data sets and containers that are laid out in one data format.
class TIVOR_API Codec {
public:
    class Factory;

    static const std::string sDECODER;

    Codec();
    Codec(const Codec&);
    Codec& operator=(const Codec&);
    virtual ~Codec();

    virtual std::string GetFormatName() const = 0;
    /// What people call the format.
    virtual std::string GetDescription() const = 0;
    /// Whether the container is in the format.
    virtual bool CanDecode(const DataContainer& container) const = 0;
    /// Or an empty pointer.
    virtual std::shared_ptr<IDataSet> Decode(std::shared_ptr<DataContainer> container) = 0;
    virtual bool Encode(IDataSet& dataSet, DataContainer& target) = 0;
};

/// Makes the codecs of some formats.
class TIVOR_API Codec::Factory {
public:
    Factory();
    Factory(const Factory&);
    Factory& operator=(const Factory&);
    virtual ~Factory();

    /// Appends the names of the formats.
    virtual void GetFormats(std::vector<std::string>& formats) const = 0;
    virtual std::shared_ptr<Codec> CreateCodec(const std::string& format) = 0;
};

// Thread rule: these may be called by any number of threads at once. Factories and codecs are called by the caller's
// thread, with no lock held.

/// Lets the factory serve its formats, in the place of those that served them. Without effect for null.
TIVOR_API void RegisterCodecs(std::shared_ptr<Codec::Factory> factory);
/// Removes the formats that this very factory serves; who served them before does not come back.
TIVOR_API void UnregisterCodecs(Codec::Factory& factory);
/// Adds the names of the formats that are served to the set. In the beginning that is `DataSet::sFORMAT`.
TIVOR_API void EnumCodecFormats(std::unordered_set<std::string>& formats);
/// What the factory of the format makes; an empty pointer when there is none.
TIVOR_API std::shared_ptr<Codec> CreateCodec(const std::string& format);

/// The data set that a container holds. An empty format is the one that the container names, at its top or in its
/// metadata ("DataFormat"); where it names none either, `DefaultDecode`. A container in the format of `DataSet` is
/// shared with the set (`DataSet::LoadDataSet`). Raises `NullPointerError` and `NoCodecFound`.
TIVOR_API std::shared_ptr<IDataSet> Decode(std::shared_ptr<DataContainer> source, const std::string& format);
/// Lays a data set out in a container; says whether that was possible. Raises `NoCodecFound`.
///
/// In the format of `DataSet` the entries that a set has beside those of the layout stand in a container "Additional
/// Data".
TIVOR_API bool Encode(IDataSet& dataSet, DataContainer& target, const std::string& format);
/// `Decode`, then `Encode`; false when one of them is not possible. Raises `NoCodecFound`, for the target before
/// anything is decoded.
TIVOR_API bool Transcode(std::shared_ptr<DataContainer> source, const std::string& sourceFormat, DataContainer& target,
                         const std::string& targetFormat);
/// Makes a data set of a container that names no format, whose items it shares: surfaces, bare matrices, which become
/// surfaces, and profiles are items under their keys; "Primary2D" is the primary surface. A container "MetaData" is
/// copied as the metadata, and all other entries are added to these, unless they have the key already.
TIVOR_API std::shared_ptr<IDataSet> DefaultDecode(DataContainer& source);

} // namespace Qor::Tivor
