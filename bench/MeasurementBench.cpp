// A measurement file that is opened, converted and saved in this process, against what unpacks it and makes a matrix of
// its points: the largest X3P file in the directory TIVOR_SAMPLES of the environment, else the one in data/. It is in
// the page cache; what is saved is synchronised, as always.
//
//     unzip less start, numpy    unzip -p of the points, less unzip -p of main.xml, which is little but its start; and
//                                the script's parsing, as it times itself in a python3 that runs on
//     zipfile and numpy          the script's unpacking and parsing, as it times them
//     zipfile, numpy, saved      the same, and the matrix is saved and synchronised too
//     libzip and memcpy          unpacking and copying the points in this process
//     libzip, opened only        the same, against opening alone
//     programs, started          unzip -p | python3, which imports numpy and parses, against tivor convert
//
// Rows are left out where unzip, or a python3 with numpy, is missing.
#include "Comparison.h"
#include "Dialogue.h"
#include "ScratchFile.h"

#include <QorCore/NumberText.h>
#include <Tivor/BinaryDataFile.h>
#include <Tivor/Codec.h>

#include <cstdlib>
#include <cstring>
#include <filesystem>
#include <iostream>
#include <memory>
#include <string>
#include <zip.h>

namespace Bench {

namespace {

using namespace Qor::Tivor;

constexpr int runs = 51;
constexpr double goal = 1.3;

std::string Quote(const std::string& text) {
    std::string quoted = "'";
    for (const char c : text)
        quoted += c == '\'' ? std::string("'\\''") : std::string(1, c);
    return quoted + '\'';
}

bool Succeeds(const std::string& command) { return std::system(command.c_str()) == 0; }

std::string FindSample() {
    const char* const folder = std::getenv("TIVOR_SAMPLES");
    std::filesystem::path largest;
    if (folder != nullptr)
        for (const auto& entry : std::filesystem::directory_iterator(folder))
            if (entry.path().extension() == ".x3p" &&
                (largest.empty() || entry.file_size() > std::filesystem::file_size(largest)))
                largest = entry.path();
    return largest.empty() ? std::string(TIVOR_BENCH_SAMPLE) : largest.string();
}

/// A python3 that has numpy; empty when there is none.
std::string FindPython() {
    for (const char* const name : {"python3", "/usr/bin/python3"})
        if (Succeeds(std::string(name) + " -c 'import numpy' 2>/dev/null"))
            return name;
    return {};
}

/// The script, which works on the sample as often as it is asked to.
struct Script {
    Script(const std::string& python, const std::string& sample)
        : command(python + ' ' + Quote(TIVOR_BENCH_SCRIPT)),
          dialogue(command + " --serve " + Quote(sample) + ' ' + Quote(target.name)), mainEntry(dialogue.Hear()),
          pointsEntry(dialogue.Hear()) {}

    double Time(const std::string& steps) {
        dialogue.Say(steps);
        return Qor::Core::ParseNumber<double>(dialogue.Hear()).value();
    }

    const ScratchFile target{"script.matrix"};
    const std::string command;
    Dialogue dialogue;
    const std::string mainEntry;
    const std::string pointsEntry;
};

std::string Unzip(const std::string& sample, const std::string& entry) {
    return "unzip -p " + Quote(sample) + ' ' + Quote(entry);
}

Run Running(const std::string& command) {
    return [command](Stopwatch& watch) {
        watch.Start();
        const bool succeeded = Succeeds(command);
        watch.Stop();
        Require(succeeded, "a command fails");
    };
}

double Time(const std::string& command) {
    Stopwatch watch;
    Running(command)(watch);
    return watch.GetSeconds();
}

/// As a program does that does not know the type of the file.
std::shared_ptr<DataFile> Open(const std::string& sample) {
    auto file = DataFile::Open(sample, DataFile::eREAD_ONLY, DataFile::eOPEN_EXISTING, "", nullptr);
    Require(file != nullptr, "the sample cannot be opened");
    return file;
}

Run Opening(const std::string& sample) {
    return [=](Stopwatch& watch) {
        watch.Start();
        const auto file = Open(sample);
        watch.Stop();
    };
}

Run Converting(const std::string& sample) {
    return [sample, target = std::make_shared<ScratchFile>("converted.dataset")](Stopwatch& watch) {
        target->Remove();
        watch.Start();
        const auto set = Decode(Open(sample), "");
        BinaryDataFile file(target->name, DataFile::eREAD_WRITE, DataFile::eCREATE_NEW, nullptr);
        const bool isEncoded = Encode(*set, file, DataSet::sFORMAT);
        file.Flush();
        watch.Stop();
        Require(isEncoded && !file.IsModified(), "the sample was not converted");
    };
}

/// Unpacks the points, which are the largest entry, and copies them.
void Unpack(const std::string& sample) {
    const std::unique_ptr<zip_t, void (*)(zip_t*)> zip(zip_open(sample.c_str(), ZIP_RDONLY, nullptr), zip_discard);
    zip_stat_t points{};
    zip_stat_t stat;
    for (zip_uint64_t i = 0; zip && zip_stat_index(zip.get(), i, 0, &stat) == 0; ++i)
        if (i == 0 || stat.size > points.size)
            points = stat;
    const std::unique_ptr<zip_file_t, int (*)(zip_file_t*)> file(
        zip ? zip_fopen_index(zip.get(), points.index, 0) : nullptr, zip_fclose);
    Require(file != nullptr, "the points cannot be found");
    const auto unpacked = std::make_unique<char[]>(points.size);
    const auto matrix = std::make_unique<char[]>(points.size);
    const auto size = zip_fread(file.get(), unpacked.get(), points.size);
    Require(size == static_cast<zip_int64_t>(points.size), "the points cannot be unpacked");
    std::memcpy(matrix.get(), unpacked.get(), points.size);
    Keep(matrix);
}

Run Unpacking(const std::string& sample) {
    return [=](Stopwatch& watch) {
        watch.Start();
        Unpack(sample);
        watch.Stop();
    };
}

void Add(const std::string& name, double ratio, const Run& limit, const Run& subject) {
    Register("X3P, " + name, runs, [=](benchmark::State& state) { Compare(state, ratio, limit, subject); });
}

void AddRowsOfUnzip(const std::string& sample, const std::shared_ptr<Script>& script) {
    const std::string unzipMain = Unzip(sample, script->mainEntry);
    const std::string unzipPoints = Unzip(sample, script->pointsEntry);
    const auto work = [=](Stopwatch& watch) {
        const double start = Time(unzipMain + " >/dev/null");
        watch.Take(Time(unzipPoints + " >/dev/null") - start + script->Time("parse"));
    };
    Add("unzip less start, numpy", goal, work, Converting(sample));
    const auto target = std::make_shared<ScratchFile>("converted.dataset");
    const std::string convert = Quote(TIVOR_BENCH_PROGRAMS "/tivor") + " convert --force " + Quote(sample) + ' ' +
                                Quote(target->name) + " >/dev/null 2>&1";
    Add("programs, started", goal, Running(unzipPoints + " | " + script->command + " \"$(" + unzipMain + ")\""),
        [target, run = Running(convert)](Stopwatch& watch) { run(watch); });
}

void AddRowsOfScript(const std::string& sample, const std::shared_ptr<Script>& script) {
    const auto working = [=](const char* steps) { return [=](Stopwatch& watch) { watch.Take(script->Time(steps)); }; };
    Add("zipfile and numpy", goal, working("unpack parse"), Converting(sample));
    Add("zipfile, numpy, saved", 0, working("unpack parse save"), Converting(sample));
    if (Succeeds("unzip -v >/dev/null 2>&1"))
        AddRowsOfUnzip(sample, script);
    else
        std::cout << "Rows left out: unzip is missing\n";
}

} // namespace

} // namespace Bench

void Bench::RegisterRows() {
    const std::string sample = FindSample();
    std::cout << sample << ", " << std::filesystem::file_size(sample) << " bytes\n";
    if (const std::string python = FindPython(); !python.empty())
        AddRowsOfScript(sample, std::make_shared<Script>(python, sample));
    else
        std::cout << "Rows left out: a python3 with numpy is missing\n";
    Add("libzip and memcpy", 0, Unpacking(sample), Converting(sample));
    Add("libzip, opened only", 0, Unpacking(sample), Opening(sample));
}
