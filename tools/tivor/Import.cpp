#include "Commands.h"
#include "Files.h"
#include "Imported.h"
#include "Measured.h"

namespace Qor::Tivor::Tool {

namespace {

/// Returns what the measured array is.
MeasuredFacts Write(const MeasuredText& text, const std::string& fileName, const std::string& fileType) {
    FileBeside beside(fileName);
    MeasuredFacts facts;
    {
        const auto file = beside.Make(fileType);
        PutImported(*file, text);
        facts = FindMeasuredFacts(*file->Get(GetMeasuredKey(text))).value();
        file->Flush();
    }
    beside.TakePlace();
    return facts;
}

void WarnOfUnits(const MeasuredText& text, Console& console) {
    for (const std::string& unit : FindUnknownUnits(text))
        console.err << "tivor: warning: The unit " << Show(unit) << " is not known; its numbers stay plain numbers\n";
}

EStatus Make(const MeasuredText& text, const Arguments& arguments, Console& console) {
    RequireNewFile(arguments.file, arguments.overwrites);
    const std::string fileType = ChooseFileType(arguments.file);
    WarnOfUnits(text, console);
    const MeasuredFacts facts = Write(text, arguments.file, fileType);
    const std::uint64_t size = GetFileSize(arguments.file);
    if (arguments.asJson)
        Print(console.out, {{"file", TextJson(arguments.file)},
                            {"fileType", TextJson(fileType)},
                            {"fileBytes", size},
                            {"measured", ToJson(facts)}});
    else
        console.out << GetMeasuredKey(text) << ": " << Describe(facts) << '\n'
                    << DescribeStatistics(facts) << "Written: " << Show(arguments.file) << ", "
                    << Count(size, "byte", "bytes") << '\n';
    return eFINE;
}

EStatus Check(const MeasuredText& text, const Arguments& arguments, Console& console) {
    static constexpr std::size_t mostShown = 10;
    const auto file = OpenFile(arguments.file, DataFile::eREAD_ONLY);
    std::vector<std::string> deviations;
    std::size_t numDeviations = 0;
    CompareImported(*file, text, [&](const std::string& deviation) {
        if (numDeviations++ < mostShown)
            deviations.push_back(deviation);
    });
    const std::size_t numSamples = text.isProfile ? text.numbers.size1() : text.numbers.size();
    if (arguments.asJson) {
        Json list = Json::array();
        for (const std::string& deviation : deviations)
            list.push_back(TextJson(deviation));
        Print(console.out,
              {{"samples", numSamples}, {"numDeviations", numDeviations}, {"firstDeviations", std::move(list)}});
    } else if (numDeviations == 0) {
        console.out << "All " << numSamples << " samples are those of the text, bit by bit\n";
    } else {
        for (const std::string& deviation : deviations)
            console.out << deviation << '\n';
        console.out << Count(numDeviations, "deviation", "deviations") << '\n';
    }
    return numDeviations == 0 ? eFINE : eDEVIATES;
}

} // namespace

EStatus Import(const Arguments& arguments, Console& console) {
    const MeasuredText text = ReadMeasuredText(arguments.text, [&](std::size_t lines) {
        console.progress.Tell(Show(arguments.text) + ": " + std::to_string(lines) + " lines read");
    });
    console.progress.Wipe();
    return arguments.checks ? Check(text, arguments, console) : Make(text, arguments, console);
}

} // namespace Qor::Tivor::Tool
