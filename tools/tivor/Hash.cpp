#include "Commands.h"
#include "Files.h"
#include "Measurement.h"

#include <QorCore/Message.h>

#define XXH_INLINE_ALL
#include <algorithm>
#include <bit>
#include <cmath>
#include <limits>
#include <xxhash.h>

namespace Qor::Tivor::Tool {

namespace {

/// Hashes texts and numbers by the bytes that they have in the order of the lowest first.
class Hasher {
public:
    Hasher() : m_state(XXH3_createState()) {
        if (m_state == nullptr)
            throw std::bad_alloc();
        XXH3_128bits_reset(m_state);
    }
    Hasher(const Hasher&) = delete;
    Hasher& operator=(const Hasher&) = delete;
    ~Hasher() { XXH3_freeState(m_state); }

    void Add(const std::string& text) { XXH3_128bits_update(m_state, text.data(), text.size()); }
    void Add(std::uint64_t number) {
        unsigned char bytes[sizeof number];
        for (unsigned char& byte : bytes) {
            byte = static_cast<unsigned char>(number & 0xFF);
            number >>= 8;
        }
        XXH3_128bits_update(m_state, bytes, sizeof bytes);
    }
    /// What is not finite is all the same, and so are both zeros.
    void Add(double number) {
        static constexpr std::uint64_t missing = 0x7FF8000000000000;
        const double signless = number == 0 ? 0 : number;
        Add(std::isfinite(number) ? std::bit_cast<std::uint64_t>(signless) : missing);
    }
    void Add(const Quantities& quantities) {
        for (const std::int8_t exponent : quantities.exponents)
            Add(static_cast<std::uint64_t>(exponent));
        Add(std::uint64_t{quantities.numbers.size()});
        for (const double number : quantities.numbers)
            Add(number);
    }

    /// In hexadecimal digits, the highest first.
    std::string GetText() const {
        XXH128_canonical_t bytes;
        XXH128_canonicalFromHash(&bytes, XXH3_128bits_digest(m_state));
        std::string text;
        for (const unsigned char byte : bytes.digest)
            for (const int digit : {byte >> 4, byte & 0xF})
                text += "0123456789abcdef"[digit];
        return text;
    }

private:
    XXH3_state_t* m_state;
};

struct Hashed {
    Path path;
    std::string className;
    std::string hash;
};

Hashed HashOf(const Measurement& measurement) {
    if (!measurement.HasSamples())
        Fail(Core::FormatText("%1%: expected samples that are numbers, found a %2% of %3%",
                              {ShowPath(measurement.path), measurement.className, Show(measurement.sampleType)}));
    Hasher hasher;
    hasher.Add(std::string("measured array 1"));
    hasher.Add(std::uint64_t{measurement.points.size()});
    for (const std::uint64_t count : measurement.points)
        hasher.Add(count);
    hasher.Add(std::uint64_t{measurement.partsPerSample});
    hasher.Add(measurement.samples);
    for (const Positions& positions : measurement.positions)
        hasher.Add(positions);
    return {measurement.path, measurement.className, hasher.GetText()};
}

/// Whatever their names and their order.
std::string HashOf(const std::vector<Hashed>& list) {
    std::vector<std::string> hashes;
    std::transform(list.begin(), list.end(), std::back_inserter(hashes), [](const Hashed& one) { return one.hash; });
    std::sort(hashes.begin(), hashes.end());
    Hasher hasher;
    hasher.Add(std::string("measured arrays 1"));
    for (const std::string& hash : hashes)
        hasher.Add(hash);
    return hasher.GetText();
}

std::vector<Hashed> HashAll(DataFile& file, const Path& keys) {
    std::vector<Hashed> list;
    const MeasuredContent content(file);
    content.ForEach([&](const Measurement& measurement) {
        if (StartsWith(measurement.path, keys))
            list.push_back(HashOf(measurement));
    });
    if (list.empty() && !keys.empty())
        if (const auto measurement = FindMeasurement(*FindObject(file, keys), keys))
            list.push_back(HashOf(*measurement));
    if (list.empty())
        Fail("Expected a surface or a profile" + (keys.empty() ? "" : " at " + ShowPath(keys)) + ", found none");
    return list;
}

} // namespace

EStatus Hash(const Arguments& arguments, Console& console) {
    const auto file = OpenFile(arguments.file, DataFile::eREAD_ONLY);
    const std::vector<Hashed> list = HashAll(*file, arguments.words);
    const std::string all = HashOf(list);
    if (!arguments.asJson) {
        for (const auto& [path, className, hash] : list)
            console.out << hash << "  " << ShowPath(path) << '\n';
        console.out << all << "  all\n";
        return eFINE;
    }
    Json measured = Json::array();
    for (const auto& [path, className, hash] : list)
        measured.push_back({{"path", PathJson(path)}, {"class", className}, {"hash", hash}});
    Print(console.out, {{"file", TextJson(arguments.file)},
                        {"algorithm", "XXH3-128"},
                        {"measured", std::move(measured)},
                        {"all", all}});
    return eFINE;
}

} // namespace Qor::Tivor::Tool
