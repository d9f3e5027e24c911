#pragma once

#include "Description.h"
#include "StoredNumbers.h"

#include <array>
#include <functional>
#include <map>
#include <string>
#include <vector>

namespace Qor::Tivor::Measurements {

/// What main.xml tells.
struct WrittenDocument {
    /// Whether there is a text below that path.
    bool HasBelow(const std::string& path) const {
        const auto place = texts.lower_bound(path);
        return place != texts.end() && place->first.starts_with(path);
    }

    Description::EFeature feature = Description::eSURFACE;
    std::array<StoredAxis, 3> axes;
    std::array<std::uint64_t, 3> size{};
    std::map<std::string, std::string> texts; ///< of `fields`, by their paths
    bool isText = false;                      ///< whether the points stand in the document
    std::string pointsChecksum, validChecksum;
};

/// The points in the order of the file: of each the coordinates along axes that are absolute.
struct PointTable {
    std::string ToBinary() const;
    /// A bit for each point, where it takes them to tell which are missing; else empty.
    std::string ToValid() const;
    void ForEachDatum(const std::function<void(const std::string&)>& visit) const;

    const std::vector<double>& x; ///< empty when that axis is not absolute
    const std::vector<double>& y;
    const StoredNumbers& z;
};

/// main.xml, in the order of the standard's schema.
std::string WriteMain(const WrittenDocument& document, const PointTable& points);

} // namespace Qor::Tivor::Measurements
