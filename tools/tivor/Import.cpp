#include "Commands.h"
#include "Elements.h"
#include "Files.h"
#include "Surface.h"

#include <QorCore/Message.h>

#include <algorithm>

namespace Qor::Tivor::Tool {

namespace {

void Write(const SurfaceText& surface, const std::string& fileName, const std::string& fileType) {
    FileBeside beside(fileName);
    {
        const auto file = beside.Make(fileType);
        PutSurface(*file, surface);
        file->Flush();
    }
    beside.TakePlace();
}

std::string Describe(const RowMajorMatrix<double>& samples) {
    const auto [least, greatest] = std::minmax_element(samples.data(), samples.data() + samples.size());
    return Core::FormatText("%1% rows of %2% samples from %3% to %4%",
                            {samples.size1(), samples.size2(), NumberText(*least), NumberText(*greatest)});
}

EStatus Make(const SurfaceText& surface, const Arguments& arguments, Console& console) {
    RequireNewFile(arguments.file, arguments.overwrites);
    const std::string fileType = ChooseFileType(arguments.file);
    Write(surface, arguments.file, fileType);
    const std::uint64_t size = GetFileSize(arguments.file);
    if (arguments.asJson)
        Print(console.out, {{"file", TextJson(arguments.file)},
                            {"fileType", TextJson(fileType)},
                            {"fileBytes", size},
                            {"rows", surface.heights.size1()},
                            {"columns", surface.heights.size2()}});
    else
        console.out << Describe(surface.heights) << "\nWritten: " << Show(arguments.file) << ", "
                    << Count(size, "byte", "bytes") << '\n';
    return eFINE;
}

EStatus Check(const SurfaceText& surface, const Arguments& arguments, Console& console) {
    static constexpr std::size_t mostShown = 10;
    const auto file = OpenFile(arguments.file, DataFile::eREAD_ONLY);
    std::vector<std::string> deviations;
    std::size_t numDeviations = 0;
    CompareSurface(*file, surface, [&](const std::string& deviation) {
        if (numDeviations++ < mostShown)
            deviations.push_back(deviation);
    });
    if (arguments.asJson) {
        Json list = Json::array();
        for (const std::string& deviation : deviations)
            list.push_back(TextJson(deviation));
        Print(console.out, {{"samples", surface.heights.size()},
                            {"numDeviations", numDeviations},
                            {"firstDeviations", std::move(list)}});
    } else if (numDeviations == 0) {
        console.out << Describe(surface.heights) << "\nAll " << surface.heights.size()
                    << " samples are those of the text, bit by bit\n";
    } else {
        for (const std::string& deviation : deviations)
            console.out << deviation << '\n';
        console.out << Count(numDeviations, "deviation", "deviations") << '\n';
    }
    return numDeviations == 0 ? eFINE : eDEVIATES;
}

} // namespace

EStatus Import(const Arguments& arguments, Console& console) {
    const SurfaceText surface = ReadSurfaceText(arguments.text);
    return arguments.checks ? Check(surface, arguments, console) : Make(surface, arguments, console);
}

} // namespace Qor::Tivor::Tool
