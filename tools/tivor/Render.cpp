#include "Commands.h"
#include "Elements.h"
#include "Files.h"
#include "HeightMap.h"
#include "LinePlot.h"
#include "MeasuredEntries.h"
#include "PngWriter.h"

#include <QorCore/Message.h>
#include <QorCore/NumberText.h>
#include <QorCore/PathName.h>
#include <QorCore/SafeFileWriter.h>

#include <algorithm>

namespace Qor::Tivor::Tool {

namespace {

int ReadWidth(const std::string& text) {
    constexpr int least = 100;
    constexpr int most = 8000;
    const auto width = text.empty() ? std::optional<int>(1000) : Core::ParseNumber<int>(text);
    if (!width || *width < least || *width > most)
        Fail(Core::FormatText("Expected a width from %1% to %2%, found %3%",
                              {std::to_string(least), std::to_string(most), Show(text)}));
    return *width;
}

/// The primary one, else the first surface, else the first profile.
const MeasuredEntry& Choose(const std::vector<MeasuredEntry>& all, const Path& primary, const Arguments& arguments) {
    if (all.empty())
        Fail(Core::FormatText(
            "%1%: expected a surface or a profile%2%, found none",
            {Show(arguments.file), arguments.words.empty() ? "" : " at " + ShowPath(arguments.words)}));
    for (const MeasuredEntry& entry : all)
        if (entry.path == primary)
            return entry;
    const auto surface =
        std::find_if(all.begin(), all.end(), [](const MeasuredEntry& entry) { return entry.surface != nullptr; });
    return surface != all.end() ? *surface : all.front();
}

Picture Draw(const MeasuredEntry& entry, bool asProfile, int width) {
    if (entry.profile)
        return DrawProfile(*entry.profile, TitleOf(entry), width);
    if (!asProfile)
        return DrawHeightMap(*entry.surface, TitleOf(entry), width);
    const std::string row = ", row " + std::to_string(entry.surface->GetNumDimension1Points() / 2);
    return DrawMiddleRow(*entry.surface, TitleOf(entry) + row, width);
}

Json HeightsJson(const ShownHeights& heights) {
    Json json = {{"points", heights.numPoints}, {"missing", heights.numMissing}};
    if (heights.HasAny())
        json.update({{"unit", TextJson(heights.unit.symbol)},
                     {"minimum", FloatJson(heights.minimum)},
                     {"maximum", FloatJson(heights.maximum)},
                     {"from", FloatJson(heights.from)},
                     {"to", FloatJson(heights.to)}});
    return json;
}

} // namespace

EStatus Render(const Arguments& arguments, Console& console) {
    const int width = ReadWidth(arguments.number);
    RequireFile(arguments.file);
    RequireTarget(arguments.file, arguments.target, arguments.overwrites);
    const auto file = OpenFile(arguments.file, DataFile::eREAD_ONLY);
    const auto all = FindMeasured(*file, arguments.words);
    const MeasuredEntry& entry = Choose(all, FindPrimary(*file), arguments);
    const Picture picture = Draw(entry, arguments.drawsProfile, width);
    const std::string png = MakePng(picture.canvas);
    Core::SafeFileWriter::Save(Core::PathName(arguments.target),
                               [&](Core::BinaryOutputStream& stream) { stream.Write(png.data(), png.size()); });
    const char* const form = entry.profile || arguments.drawsProfile ? "profile" : "height map";
    const Canvas& canvas = picture.canvas;
    if (arguments.asJson)
        Print(console.out, {{"file", TextJson(arguments.target)},
                            {"fileBytes", png.size()},
                            {"path", PathJson(entry.path)},
                            {"form", form},
                            {"width", canvas.GetWidth()},
                            {"height", canvas.GetHeight()},
                            {"heights", HeightsJson(picture.heights)}});
    else
        console.out << ShowPath(entry.path) << ": " << form << ", " << canvas.GetWidth() << " x " << canvas.GetHeight()
                    << " pixels; " << DescribeExtremes(picture.heights) << ", " << DescribeMissing(picture.heights)
                    << "\nWritten: " << Show(arguments.target) << ", " << Count(png.size(), "byte", "bytes") << '\n';
    return eFINE;
}

} // namespace Qor::Tivor::Tool
