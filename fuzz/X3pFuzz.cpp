// An X3P container as it stands; or, for input that is no zip container, one whose main.xml is the input up to the
// first zero byte, and whose points are what follows. What is written again holds the same data.

#include "MeasurementAgreement.h"
#include "x3p/Archive.h"
#include "x3p/X3p.h"

#include <QorCore/MemoryStreams.h>
#include <Tivor/DataSet.h>

using namespace Qor::Tivor;

namespace {

using Bytes = std::span<const std::byte>;

void Compare(const DataContainer& first, const DataContainer& again) {
    for (const std::string& key : {DataSet::s2D_DATA, DataSet::s1D_DATA})
        Require(*first.GetPtr<DataContainer>(key) == *again.GetPtr<DataContainer>(key), "other data are read again");
}

bool IsContainer(Bytes input) { return input.size() > 2 && input[0] == std::byte{'P'} && input[1] == std::byte{'K'}; }

std::vector<std::byte> Pack(Bytes input) {
    const auto end = std::find(input.begin(), input.end(), std::byte{0}) - input.begin();
    const Bytes xml = input.first(static_cast<std::size_t>(end));
    const Bytes points = input.subspan(std::min(static_cast<std::size_t>(end) + 1, input.size()));
    const Measurements::Report report("fuzzed", Measurements::X3p::category);
    Measurements::ArchiveWriter writer(report);
    writer.Add("main.xml", xml);
    writer.Add("bindata/data.bin", points);
    writer.Add("bindata/valid.bin", points);
    Qor::Core::MemoryOutputStream stream;
    writer.WriteTo(stream);
    return {stream.GetBytes().begin(), stream.GetBytes().end()};
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    const Bytes input(reinterpret_cast<const std::byte*>(data), size);
    MeasurementAgreement<Measurements::X3p>::Check(
        IsContainer(input) ? std::vector<std::byte>(input.begin(), input.end()) : Pack(input), Compare);
    return 0;
}
