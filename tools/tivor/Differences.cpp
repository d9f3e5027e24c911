#include "Differences.h"

#include "SameEntries.h"
#include "Values.h"

#include <algorithm>

namespace Qor::Tivor::Tool {

namespace {

class Finder {
public:
    Finder(const DataContainer& a, const DataContainer& b) : m_contentA(a), m_contentB(b) {}

    void CompareMeasured(const Tolerance* tolerance) {
        const std::vector<Measurement> listA = m_contentA.List();
        std::vector<Measurement> listB = m_contentB.List();
        bool fits = false;
        for (const Measurement& a : listA) {
            const auto b = FindPartner(a, listA, listB);
            if (b == listB.end()) {
                m_found.onlyInA.push_back({a.path, "a " + a.className});
                continue;
            }
            Compare(a, *b, tolerance != nullptr ? *tolerance : Tolerance());
            fits |= tolerance != nullptr && tolerance->exponents == a.samples.exponents;
            listB.erase(b);
        }
        for (const Measurement& b : listB)
            m_found.onlyInB.push_back({b.path, "a " + b.className});
        if (tolerance != nullptr && !fits)
            m_found.notes.push_back({{}, "no samples are of the dimension of the tolerance"});
    }

    void CompareEntries() {
        Path path;
        Compare(m_contentA.GetEntries(), m_contentB.GetEntries(), path);
    }

    void AddUnread(const DataFile& file) {
        for (const UnreadEntry& entry : file.GetUnreadEntries())
            m_found.unread.push_back({entry.path, entry.reason});
    }

    Differences Take() { return std::move(m_found); }

private:
    using List = std::vector<Measurement>;

    /// The array under the same keys, or the only one of its class where the other file has one of these, too.
    static List::iterator FindPartner(const Measurement& a, const List& listA, List& listB) {
        const auto isLike = [&](const Measurement& one) { return one.className == a.className; };
        const auto found = std::find_if(listB.begin(), listB.end(),
                                        [&](const Measurement& b) { return isLike(b) && b.path == a.path; });
        const bool isByOrder = found == listB.end() && std::count_if(listA.begin(), listA.end(), isLike) == 1 &&
                               std::count_if(listB.begin(), listB.end(), isLike) == 1;
        return isByOrder ? std::find_if(listB.begin(), listB.end(), isLike) : found;
    }

    void Compare(const Measurement& a, const Measurement& b, const Tolerance& tolerance) {
        if (a.path != b.path)
            m_found.notes.push_back({a.path, "compared with " + ShowPath(b.path) + " in B"});
        if (a.sampleType != b.sampleType)
            m_found.notes.push_back({a.path, "the samples are of types " + a.sampleType + ", " + b.sampleType});
        if (auto found = CompareMeasurements(a, b, tolerance); !found.empty())
            m_found.measured.push_back({a.path, b.path, std::move(found)});
        Path path = a.path;
        Compare(*a.properties, *b.properties, path);
    }

    void Compare(const DataContainer& a, const DataContainer& b, Path& path) {
        for (const auto& [key, object] : a) {
            path.push_back(key);
            if (const auto other = b.Get(key))
                Compare(*object, const_cast<DataObject&>(*other), path);
            else if (!IsMeasured(*object))
                m_found.onlyInA.push_back({path, BriefText(*object)});
            path.pop_back();
        }
        for (const auto& [key, object] : b)
            if (!a.Exists(key) && !IsMeasured(*object)) {
                path.push_back(key);
                m_found.onlyInB.push_back({path, BriefText(*object)});
                path.pop_back();
            }
    }

    void Compare(DataObject& a, DataObject& b, Path& path) {
        if (IsMeasured(a) || IsMeasured(b)) {
            if (!IsMeasured(a))
                m_found.onlyInA.push_back({path, BriefText(a)});
            if (!IsMeasured(b))
                m_found.onlyInB.push_back({path, BriefText(b)});
            return;
        }
        const auto belowA = EntriesIn(a), belowB = EntriesIn(b);
        if (belowA && belowB)
            return Compare(*belowA, *belowB, path);
        if (a.GetTypeName() == b.GetTypeName() && AreStoredAlike(a, b))
            return;
        const std::string textA = BriefText(a), textB = BriefText(b);
        const bool areTold = textA != textB || a.GetTypeName() == b.GetTypeName();
        if (areTold)
            m_found.values.push_back({path, textA, textB});
        else
            m_found.notes.push_back(
                {path, "the values are of types " + Show(a.GetTypeName()) + ", " + Show(b.GetTypeName())});
    }

    const MeasuredContent m_contentA;
    const MeasuredContent m_contentB;
    Differences m_found;
};

} // namespace

Differences FindDifferences(const DataFile& a, const DataFile& b, const Tolerance* tolerance, bool onlyMeasured) {
    Finder finder(a, b);
    finder.CompareMeasured(tolerance);
    if (!onlyMeasured)
        finder.CompareEntries();
    finder.AddUnread(a);
    finder.AddUnread(b);
    return finder.Take();
}

} // namespace Qor::Tivor::Tool
