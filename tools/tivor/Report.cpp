#include "Commands.h"
#include "Elements.h"
#include "Files.h"
#include "HeightMap.h"
#include "Html.h"
#include "LinePlot.h"
#include "Measured.h"
#include "MeasuredEntries.h"
#include "Measurement.h"
#include "PngWriter.h"
#include "Values.h"

#include <QorCore/PathName.h>
#include <QorCore/SafeFileWriter.h>

#include <cmath>
#include <sstream>

namespace Qor::Tivor::Tool {

namespace {

constexpr std::size_t mostPictures = 8; ///< of surfaces, and of profiles
constexpr std::size_t mostRows = 2000;
constexpr std::size_t longestValue = 4000;
constexpr int pictureWidth = 900;

using Row = HtmlPage::Row;

/// Keeps what was warned of.
class WarningCollector final : public Core::AlertHandler {
public:
    void OnWarning(const Core::Warning& warning) override {
        if (warning.GetTypeName() != "NoDefaultDataFile")
            m_texts.push_back(warning.GetText());
    }
    const std::vector<std::string>& GetTexts() const { return m_texts; }

private:
    std::vector<std::string> m_texts;
};

/// Cut where a character begins.
std::string Shorten(const std::string& text) {
    std::size_t end = longestValue;
    if (text.size() <= end)
        return text;
    while (end > 0 && (text[end] & 0xC0) == 0x80)
        --end;
    return text.substr(0, end) + "... (" + std::to_string(text.size()) + " bytes)";
}

std::string ValueText(DataObject& object) {
    if (const auto* const text = dynamic_cast<const GenericWrapper<std::string>*>(&object); text && text->GetData())
        return Shorten(*text->GetData());
    return Shorten(BriefText(object));
}

/// All values below a container but measured arrays, by their keys.
void AddValues(const DataContainer& container, const Path& above, std::vector<Row>& rows) {
    for (const auto& [key, object] : container) {
        if (rows.size() >= mostRows || IsMeasured(*object))
            continue;
        Path path = above;
        path.push_back(key);
        if (const auto entries = EntriesIn(*object))
            AddValues(*entries, path, rows);
        else
            rows.push_back({ShowPath(path), ValueText(*object)});
    }
}

void AddFacts(HtmlPage& page, const std::string& fileName, const DataFile& file) {
    page.Table({}, {{"File", Show(fileName)},
                    {"Size", Count(GetFileSize(fileName), "byte", "bytes")},
                    {"Type", Show(file.GetFileType())}});
}

void AddDeviations(HtmlPage& page, std::vector<std::string> texts, const DataFile& file) {
    for (const UnreadEntry& entry : file.GetUnreadEntries())
        texts.push_back(ShowPath(entry.path) + " of class " + Show(entry.typeName) +
                        " cannot be read: " + entry.reason);
    if (texts.empty())
        return;
    page.Heading("Deviations");
    page.Paragraph("What reading the file told.");
    page.List(texts);
}

void AddPicture(HtmlPage& page, const MeasuredEntry& entry) {
    page.SubHeading(TitleOf(entry));
    try {
        const auto picture = entry.surface ? DrawHeightMap(*entry.surface, TitleOf(entry), pictureWidth)
                                           : DrawProfile(*entry.profile, TitleOf(entry), pictureWidth);
        page.Picture(MakePng(picture.canvas), picture.canvas.GetWidth(), picture.canvas.GetHeight(),
                     TitleOf(entry) + ", " + DescribeExtremes(picture.heights) + ", " +
                         DescribeMissing(picture.heights));
    } catch (const Core::Error& error) {
        page.Paragraph("There is no picture: " + error.GetText());
    }
}

void AddPictures(HtmlPage& page, const std::vector<MeasuredEntry>& all) {
    page.Heading("Measured");
    std::size_t numSurfaces = 0;
    std::size_t numProfiles = 0;
    for (const MeasuredEntry& entry : all)
        if (++(entry.surface ? numSurfaces : numProfiles) <= mostPictures)
            AddPicture(page, entry);
    const auto more = [](std::size_t count) { return count - std::min(count, mostPictures); };
    if (const std::size_t left = more(numSurfaces) + more(numProfiles); left > 0)
        page.Paragraph(Count(left, "more is", "more are") + " not shown.");
}

std::string ShowValue(const UnitizedDouble& value) {
    const ShownUnit unit = ChooseUnit(*value.GetUnits(), std::abs(value.GetValue()));
    return unit.Show(value.GetValue() * unit.factor);
}

/// Points, positions, and what the samples amount to, multiplied by the scale.
Row StatisticsRow(const MeasuredEntry& entry) {
    const MeasuredFacts facts = *FindMeasuredFacts(*entry.object);
    std::string points, positions;
    for (const MeasuredFacts::Axis& axis : facts.axes) {
        const std::string between = &axis == &facts.axes.front() ? "" : " x ";
        points += between + std::to_string(axis.points);
        positions += between + (axis.spacing ? ShowValue(*axis.spacing)
                                : axis.ends  ? ShowValue(axis.ends->first) + " to " + ShowValue(axis.ends->second)
                                             : "unknown");
    }
    Row row{ShowPath(entry.path), facts.kind, points, facts.valueType, positions, facts.scale.ToString()};
    if (!facts.statistics)
        return row;
    const SampleStatistics& statistics = *facts.statistics;
    row.push_back(std::to_string(statistics.numMissing));
    if (statistics.numMissing == statistics.numPoints)
        return row;
    const double scale = facts.scale.GetValue();
    const double largest = std::max(std::abs(statistics.minimum), std::abs(statistics.maximum)) * std::abs(scale);
    const ShownUnit unit = ChooseUnit(*facts.scale.GetUnits(), largest);
    const double factor = scale * unit.factor;
    const auto ends = std::minmax({statistics.minimum * factor, statistics.maximum * factor});
    for (const double number : {ends.first, ends.second, statistics.mean * factor, statistics.rms * std::abs(factor)})
        row.push_back(unit.Show(number));
    return row;
}

void AddStatistics(HtmlPage& page, const std::vector<MeasuredEntry>& all) {
    page.Heading("Statistics");
    page.Paragraph("Heights are samples times the scale; rms is about the mean. Rows x columns, and under Positions "
                   "their spacing, or the first and the last.");
    const Row names{"Entry",   "Kind",    "Points",  "Type", "Positions", "Scale",
                    "Missing", "Minimum", "Maximum", "Mean", "Rms"};
    std::vector<Row> rows;
    for (const MeasuredEntry& entry : all) {
        rows.push_back(StatisticsRow(entry));
        rows.back().resize(names.size());
    }
    page.Table(names, rows);
}

void AddProperties(HtmlPage& page, const std::vector<MeasuredEntry>& all) {
    page.Heading("Properties");
    for (const MeasuredEntry& entry : all) {
        page.SubHeading(ShowPath(entry.path));
        std::vector<Row> rows;
        AddValues(*EntriesIn(*entry.object), {}, rows);
        page.Table({}, rows);
    }
}

void AddMetadata(HtmlPage& page, const DataFile& file) {
    std::vector<Row> rows;
    AddValues(file, {}, rows);
    if (rows.empty())
        return;
    page.Heading("Metadata");
    page.Table({}, rows);
    if (rows.size() == mostRows)
        page.Paragraph("No more are shown.");
}

void AddTree(HtmlPage& page, const std::string& fileName) {
    Arguments arguments;
    arguments.file = fileName;
    std::ostringstream listing;
    Console console{listing, listing, {}};
    List(arguments, console);
    page.Heading("Entries");
    page.Preformatted(listing.str());
}

std::string MakeReport(const std::string& fileName, bool& deviates) {
    const WarningCollector warnings;
    const auto file = OpenFile(fileName, DataFile::eREAD_ONLY);
    const auto all = FindMeasured(*file, {});
    deviates = !file->GetUnreadEntries().empty();
    HtmlPage page(Show(Core::PathName(fileName).GetFileName()));
    AddFacts(page, fileName, *file);
    AddDeviations(page, warnings.GetTexts(), *file);
    if (!all.empty()) {
        AddPictures(page, all);
        AddStatistics(page, all);
    }
    AddMetadata(page, *file);
    AddTree(page, fileName);
    if (!all.empty())
        AddProperties(page, all);
    return std::move(page).Finish();
}

} // namespace

EStatus Report(const Arguments& arguments, Console& console) {
    RequireFile(arguments.file);
    RequireTarget(arguments.file, arguments.target, arguments.overwrites);
    bool deviates = false;
    console.hidesWarnings = true; // they stand in the report
    const std::string html = MakeReport(arguments.file, deviates);
    console.hidesWarnings = false;
    Core::SafeFileWriter::Save(Core::PathName(arguments.target),
                               [&](Core::BinaryOutputStream& stream) { stream.Write(html.data(), html.size()); });
    if (arguments.asJson)
        Print(console.out, {{"file", TextJson(arguments.target)}, {"fileBytes", html.size()}});
    else
        console.out << "Written: " << Show(arguments.target) << ", " << Count(html.size(), "byte", "bytes") << '\n';
    return deviates ? eDEVIATES : eFINE;
}

} // namespace Qor::Tivor::Tool
