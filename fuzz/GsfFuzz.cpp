// A Gwyddion Simple Field. Where its units are base units, all that was read is the same when it is written again.

#include "MeasurementAgreement.h"
#include "common/Text.h"
#include "gsf/Gsf.h"

using namespace Qor::Tivor;

namespace {

bool IsInBaseUnits(const DataContainer& container) {
    const std::shared_ptr<const Data2D> surface = Decode(container.Clone(), "")->GetPrimaryData2D();
    const auto isBase = [](const Measurements::Unit& unit) { return *Measurements::BaseUnitOf(unit) == *unit; };
    return isBase(surface->GetDataScale().GetUnits()) && isBase(surface->GetDim1PositionUnits());
}

void Compare(const DataContainer& first, const DataContainer& again) {
    Require(!IsInBaseUnits(first) || first == again, "what was read again differs");
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    MeasurementAgreement<Measurements::Gsf>::Check({reinterpret_cast<const std::byte*>(data), size}, Compare);
    return 0;
}
