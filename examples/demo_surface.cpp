// A measured surface goes from a text file into a data file; another process reads it back, checks every sample, and
// changes one value.
//   demo_surface write TEXT FILE
//   demo_surface check TEXT FILE
#include "support/SurfaceText.h"

#include <QorCore/MemoryStreams.h>
#include <Tivor/BinaryDataFile.h>

#include <algorithm>
#include <cstring>
#include <iomanip>
#include <iostream>
#include <stdexcept>
#include <vector>

namespace {

using namespace Qor::Tivor;
using Samples = RowMajorMatrix<double>;

const std::vector<std::string> pathOfChange{"Comments", "Review", "Checks"};

void Require(bool condition, const std::string& message) {
    if (!condition)
        throw std::runtime_error(message);
}

/// One entry of a file, wherever it stands in the tree; containers have no bytes of their own.
struct Listed {
    std::string path;
    std::string className;
    std::uint64_t size = 0;
    std::string value;
    std::vector<std::byte> bytes;

    bool operator==(const Listed&) const = default;
};

std::vector<std::byte> BytesOf(Serializer& serializer) {
    Qor::Core::MemoryOutputStream stream;
    serializer.ToBinary(stream);
    return {stream.GetBytes().begin(), stream.GetBytes().end()};
}

void List(const DataContainer& container, const std::string& path, std::vector<Listed>& list) {
    for (const auto& [key, object] : container) {
        const auto serializer = object->GetSerializer();
        Require(serializer != nullptr, path + key + " cannot be written");
        Listed entry{path + key, object->GetTypeName(), serializer->GetDataSize_bytes(), "", {}};
        if (const auto below = container.GetPtr<DataContainer>(key)) {
            entry.value = std::to_string(below->NumDataObjects()) + " entries";
            list.push_back(std::move(entry));
            List(*below, path + key + "/", list);
        } else {
            entry.value = object->ToString();
            entry.bytes = BytesOf(*serializer);
            list.push_back(std::move(entry));
        }
    }
}

std::vector<Listed> List(const DataContainer& container) {
    std::vector<Listed> list;
    List(container, "", list);
    return list;
}

void Print(const std::vector<Listed>& list) {
    std::cout << std::left << std::setw(28) << "key" << std::setw(16) << "class" << std::right << std::setw(8)
              << "bytes"
              << "  value\n";
    for (const Listed& entry : list) {
        const auto depth = std::count(entry.path.begin(), entry.path.end(), '/');
        const std::string key = entry.path.substr(entry.path.find_last_of('/') + 1); // npos + 1 is 0
        std::cout << std::left << std::setw(28) << std::string(static_cast<std::size_t>(2 * depth), ' ') + key
                  << std::setw(16) << entry.className << std::right << std::setw(8) << entry.size << "  " << entry.value
                  << '\n';
    }
}

void PrintStatistics(const Samples& samples) {
    const auto [least, greatest] = std::minmax_element(samples.data(), samples.data() + samples.size());
    std::cout << samples.size1() << " rows of " << samples.size2() << " samples from " << *least << " to " << *greatest
              << '\n';
}

void PutAxis(DataContainer& axes, const std::string& name, const Length& length, std::size_t points) {
    const auto axis = axes.GetSubData({name}, true);
    axis->PutValue("Length", length.number);
    axis->PutValue("Unit", length.unit);
    axis->PutValue("Points", static_cast<int>(points));
}

void Write(const std::string& textName, const std::string& fileName) {
    const SurfaceText surface = ReadSurfaceText(textName);
    BinaryDataFile file;
    Require(file.Open(fileName, DataFile::eREAD_WRITE, DataFile::eCREATE_ALWAYS, nullptr), "Cannot create " + fileName);
    file.PutValue("Name", surface.GetHeader("Channel"));
    file.PutValue("Samples", surface.heights);
    const auto axes = file.GetSubData({"Axes"}, true);
    PutAxis(*axes, "X", surface.width, surface.heights.size2());
    PutAxis(*axes, "Y", surface.height, surface.heights.size1());
    axes->GetSubData({"Value"}, true)->PutValue("Unit", surface.GetHeader("Value units"));
    const auto source = file.GetSubData({"Comments", "Source"}, true);
    for (const auto& [name, text] : surface.header)
        source->PutValue(name, text);
    const auto review = file.GetSubData({"Comments", "Review"}, true);
    review->PutValue("State", "as measured, not levelled");
    review->PutValue(pathOfChange.back(), 0);
    file.Flush();

    PrintStatistics(surface.heights);
    std::cout << "Written: " << fileName << ", " << file.GetDataSize_bytes() << " bytes of entries\n";
}

void CheckSamples(const SurfaceText& surface, DataContainer& file) {
    const auto samples = file.GetPtr<Samples>("Samples");
    Require(samples != nullptr, "Samples: expected a row-major matrix of doubles, found none");
    const Samples& expected = surface.heights;
    Require(samples->size1() == expected.size1() && samples->size2() == expected.size2(),
            "Samples: expected " + std::to_string(expected.size1()) + " x " + std::to_string(expected.size2()) +
                ", found " + std::to_string(samples->size1()) + " x " + std::to_string(samples->size2()));
    for (std::size_t y = 0; y < expected.size1(); ++y)
        for (std::size_t x = 0; x < expected.size2(); ++x)
            Require(std::memcmp(&expected(y, x), &(*samples)(y, x), sizeof(double)) == 0,
                    "Samples: row " + std::to_string(y) + ", column " + std::to_string(x) +
                        " is not what the text has");
    PrintStatistics(*samples);
    std::cout << "All " << expected.size() << " samples are those of the text, bit by bit\n";
}

/// Changes one nested value and saves it.
void Change(BinaryDataFile& file) {
    const auto parent = file.GetSubData({pathOfChange.begin(), pathOfChange.end() - 1}, false);
    Require(parent != nullptr, "Comments/Review: expected a container, found none");
    const auto checks = std::dynamic_pointer_cast<Data<int>>(parent->Get(pathOfChange.back()));
    Require(checks != nullptr, "Comments/Review/Checks: expected an int, found none");
    checks->SetValue(checks->GetValue() + 1);
    Require(file.IsModified(), "The file did not notice the change of a nested value");
    file.Flush();
    Require(!file.IsModified(), "The file was not saved");
}

/// Compares two lists entry by entry; what differs must be the one value, and it must differ.
void CompareLists(const std::vector<Listed>& before, const std::vector<Listed>& after) {
    Require(before.size() == after.size(), "Expected " + std::to_string(before.size()) +
                                               " entries after saving, found " + std::to_string(after.size()));
    std::size_t numChanged = 0;
    for (std::size_t i = 0; i < before.size(); ++i) {
        if (before[i] == after[i])
            continue;
        Require(after[i].path == "Comments/Review/Checks" && after[i].path == before[i].path,
                "An entry changed that nobody touched: " + before[i].path);
        std::cout << "Changed: " << after[i].path << " from " << before[i].value << " to " << after[i].value << '\n';
        ++numChanged;
    }
    Require(numChanged == 1, "The changed value was not saved");
    std::cout << "All other " << before.size() - 1 << " entries are as before, byte by byte\n";
}

void Check(const std::string& textName, const std::string& fileName) {
    const SurfaceText surface = ReadSurfaceText(textName);
    std::vector<Listed> before;
    {
        BinaryDataFile file;
        Require(file.Open(fileName, DataFile::eREAD_WRITE, DataFile::eOPEN_EXISTING, nullptr),
                "Cannot open " + fileName);
        before = List(file);
        Print(before);
        CheckSamples(surface, file);
        Change(file);
    }
    BinaryDataFile file;
    Require(file.Open(fileName, DataFile::eREAD_ONLY, DataFile::eOPEN_EXISTING, nullptr),
            "Cannot open again " + fileName);
    CompareLists(before, List(file));
    std::cout << "Success: the surface was written by one process, and read and changed by another\n";
}

} // namespace

int main(int count, char** arguments) {
    const std::string command = count == 4 ? arguments[1] : "";
    try {
        if (command == "write")
            Write(arguments[2], arguments[3]);
        else if (command == "check")
            Check(arguments[2], arguments[3]);
        else
            throw std::runtime_error("expected: write TEXT FILE, or check TEXT FILE");
    } catch (const std::exception& error) {
        std::cerr << "demo_surface: " << error.what() << '\n';
        return 1;
    }
}
