// A surface data file. Samples, positions, scale and trailer of what is written again are the same.

#include "MeasurementAgreement.h"
#include "sdf/Sdf.h"

#include <Tivor/DataSet.h>

using namespace Qor::Tivor;

namespace {

std::string GetTrailer(const DataContainer& container) {
    const auto texts = container.GetPtr<DataContainer>(sMETA_DATA)->GetPtr<DataContainer>(Measurements::sdfKey);
    const auto trailer = texts->GetPtr<std::string>("Trailer");
    return trailer ? *trailer : std::string();
}

void Compare(const DataContainer& first, const DataContainer& again) {
    for (const std::string& key : {DataSet::s2D_DATA, DataSet::s1D_DATA})
        Require(*first.GetPtr<DataContainer>(key) == *again.GetPtr<DataContainer>(key), "other heights are read again");
    Require(GetTrailer(first) == GetTrailer(again), "another trailer is read again");
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    MeasurementAgreement<Measurements::Sdf>::Check({reinterpret_cast<const std::byte*>(data), size}, Compare);
    return 0;
}
