#include "Commands.h"
#include "Files.h"
#include "Measured.h"
#include "Values.h"

#include <QorCore/Message.h>
#include <Tivor/Data2DOperation.h>

#include <charconv>
#include <map>
#include <set>

namespace Qor::Tivor::Tool {

namespace {

using Operation = std::function<std::shared_ptr<Data2D>(const Data2D&)>;

/// One surface, and what the operation left out of it.
struct Turned {
    Path path;
    MeasuredFacts before;
    MeasuredFacts after;
    std::vector<std::string> left;
};

/// The properties that are gone, or have another value; those that tell the positions only where none are told any
/// more.
std::vector<std::string> FindLeftOut(const Data2D& before, const Data2D& after) {
    static const std::set<std::string> ofSamples{"Matrix", "Dimension1Points", "Dimension2Points"};
    static const std::set<std::string> ofPositions{"PositionFunction",  "Dimension1Extent",  "Dimension2Extent",
                                                   "Dim1PositionArray", "Dim2PositionArray", "Dim1PositionUnits",
                                                   "Dim2PositionUnits"};
    const bool hasPositions = after.GetPositionFunction() != nullptr;
    std::vector<std::string> keys;
    for (const auto& [key, value] : *before.GetContent()) {
        const auto found = after.GetContent()->Get(key);
        const bool isKept = ofSamples.contains(key) || (ofPositions.contains(key) && hasPositions) ||
                            (found && BriefText(*found) == BriefText(*value));
        if (!isKept)
            keys.push_back(key);
    }
    return keys;
}

/// Makes new entries of those of a file, with other surfaces where the keys lead, or below.
class Turning {
public:
    Turning(const Path& keys, Operation operation) : m_keys(keys), m_operation(std::move(operation)) {}

    std::shared_ptr<DataContainer> Turn(const DataContainer& source) { return Turn(source, {}); }
    const std::vector<Turned>& GetTurned() const { return m_turned; }

private:
    bool IsOnTheWay(const Path& path) const { return StartsWith(path, m_keys) || StartsWith(m_keys, path); }

    std::shared_ptr<DataContainer> Turn(const DataContainer& source, const Path& above) {
        auto result = DataContainer::Create();
        for (const auto& [key, object] : source) {
            Path path = above;
            path.push_back(key);
            if (const auto inner = source.GetPtr<const DataContainer>(key); inner && IsOnTheWay(path))
                result->Put(key, Turn(*inner, path));
            else if (source.GetPtr<const Data2D>(key) && StartsWith(path, m_keys))
                result->Put(key, Turn(*object, *source.GetPtr<const Data2D>(key), std::move(path)));
            else
                result->Put(key, object);
        }
        return result;
    }

    std::shared_ptr<DataObject> Turn(const DataObject& object, const Data2D& surface, Path path) {
        const auto result = Operate(surface, path);
        auto turned = ValueTraits<Data2D>::MakeData(result);
        m_turned.push_back({std::move(path), *FindMeasuredFacts(object), *FindMeasuredFacts(*turned),
                            FindLeftOut(surface, std::as_const(*result))});
        return turned;
    }

    std::shared_ptr<Data2D> Operate(const Data2D& surface, const Path& path) const {
        try {
            if (auto result = m_operation(surface))
                return result;
        } catch (Core::Error& error) {
            error.AddVariable("Surface", ShowPath(path));
            throw;
        }
        Fail(Core::FormatText("%1%: expected samples that are real numbers, found a %2%; keys behind TO choose other "
                              "surfaces",
                              {ShowPath(path), surface.ToString()}));
    }

    const Path& m_keys;
    const Operation m_operation;
    std::vector<Turned> m_turned;
};

void PrintText(const std::string& fileName, std::uint64_t size, const std::vector<Turned>& all, std::ostream& out) {
    for (const Turned& turned : all) {
        out << ShowPath(turned.path) << ": " << Describe(turned.before) << "\n  -> " << Describe(turned.after) << '\n';
        for (const std::string& key : turned.left)
            out << (&key == &turned.left.front() ? "  left out: " : ", ") << Show(key);
        out << (turned.left.empty() ? "" : "\n");
    }
    out << "Written: " << Show(fileName) << ", " << Count(size, "byte", "bytes") << '\n';
}

void PrintJson(const std::string& fileName, std::uint64_t size, const std::vector<Turned>& all, std::ostream& out) {
    Json surfaces = Json::array();
    for (const Turned& turned : all)
        surfaces.push_back({{"path", PathJson(turned.path)},
                            {"before", ToJson(turned.before)},
                            {"after", ToJson(turned.after)},
                            {"leftOut", PathJson(turned.left)}});
    Print(out, {{"file", TextJson(fileName)}, {"fileBytes", size}, {"surfaces", std::move(surfaces)}});
}

/// A range "BEGIN:END", either of which may be left out.
std::pair<std::uint64_t, std::uint64_t> ReadRange(const std::string& text, std::uint64_t count) {
    std::pair<std::uint64_t, std::uint64_t> range{0, count};
    const std::size_t colon = text.find(':');
    const auto read = [&](std::size_t begin, std::size_t end, std::uint64_t& number) {
        if (begin == end)
            return true;
        const auto parsed = std::from_chars(text.data() + begin, text.data() + end, number);
        return parsed.ec == std::errc() && parsed.ptr == text.data() + end;
    };
    if (!text.empty() &&
        (colon == std::string::npos || !read(0, colon, range.first) || !read(colon + 1, text.size(), range.second)))
        Fail("Expected a range as 10:20, 10: or :20, found " + Show(text));
    return range;
}

EStatus Write(const Arguments& arguments, Console& console, Operation operation) {
    const Path& keys = arguments.words;
    RequireFile(arguments.file);
    RequireTarget(arguments.file, arguments.target, arguments.overwrites);
    const auto source = OpenFile(arguments.file, DataFile::eREAD_ONLY);
    RequireNothingUnread(*source, arguments.file, arguments.dropsUnread);
    if (!keys.empty())
        FindObject(*source, keys); // tells which keys are there
    Turning turning(keys, std::move(operation));
    const auto entries = turning.Turn(*source);
    const auto& turned = turning.GetTurned();
    if (turned.empty())
        Fail(Core::FormatText("%1%: expected a surface%2%, found none",
                              {Show(arguments.file), keys.empty() ? "" : " at " + ShowPath(keys) + " or below"}));
    const std::uint64_t size = SaveAs(*entries, arguments.target, ChooseFileType(arguments.target), console);
    arguments.asJson ? PrintJson(arguments.target, size, turned, console.out)
                     : PrintText(arguments.target, size, turned, console.out);
    return eFINE;
}

/// The operation behind what was said, or an error that says what was expected.
Operation Choose(const std::map<std::string, Operation>& operations, const std::string& said, const char* expected) {
    const auto found = operations.find(said);
    if (found == operations.end())
        Fail(Core::FormatText("Expected %1%, found %2%", {expected, Show(said)}));
    return found->second;
}

} // namespace

EStatus Rotate(const Arguments& arguments, Console& console) {
    const std::map<std::string, Operation> byDegrees{{"90", &Data2DOperation<Data2DOp::Rotate90>::Execute},
                                                     {"180", &Data2DOperation<Data2DOp::Rotate180>::Execute},
                                                     {"270", &Data2DOperation<Data2DOp::Rotate270>::Execute}};
    const std::string degrees = arguments.number.empty() ? "90" : arguments.number;
    return Write(arguments, console, Choose(byDegrees, degrees, "90, 180 or 270 behind --by"));
}

EStatus Flip(const Arguments& arguments, Console& console) {
    const std::map<std::string, Operation> byDimension{{"1", &Data2DOperation<Data2DOp::FlipDim1>::Execute},
                                                       {"2", &Data2DOperation<Data2DOp::FlipDim2>::Execute}};
    return Write(arguments, console, Choose(byDimension, arguments.number, "dimension 1 or 2 behind --along"));
}

EStatus Transpose(const Arguments& arguments, Console& console) {
    return Write(arguments, console, &Data2DOperation<Data2DOp::Transpose>::Execute);
}

EStatus Crop(const Arguments& arguments, Console& console) {
    if (arguments.ranges[0].empty() && arguments.ranges[1].empty())
        Fail("Expected a range behind --dim1, --dim2 or both, found neither");
    return Write(arguments, console, [&](const Data2D& surface) {
        const auto [begin1, end1] = ReadRange(arguments.ranges[0], surface.GetNumDimension1Points());
        const auto [begin2, end2] = ReadRange(arguments.ranges[1], surface.GetNumDimension2Points());
        return CreateSubregion(surface, begin1, end1, begin2, end2);
    });
}

} // namespace Qor::Tivor::Tool
