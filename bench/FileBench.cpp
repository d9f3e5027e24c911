// A matrix of 128 MiB to and from a file against one call of the system. The files stand in the directory
// TIVOR_BENCH_DIRECTORY of the environment, else in that of the build; they are in the page cache when they are read.
#include "Comparison.h"
#include "ScratchFile.h"

#include <QorCore/BufferedStreams.h>
#include <Tivor/BinaryDataFile.h>

#include <fcntl.h>
#include <memory>
#include <string>
#include <sys/mman.h>
#include <unistd.h>

namespace Bench {

namespace {

using Qor::Tivor::BinaryDataFile;
using Matrix = Qor::Tivor::RowMajorMatrix<double>;

constexpr std::size_t extent = 4096;
constexpr std::size_t blockSize = extent * extent * sizeof(double);

Matrix MakeMatrix() {
    Matrix matrix(extent, extent);
    for (std::size_t i = 0; i < matrix.size(); ++i)
        matrix.data()[i] = static_cast<double>(i);
    return matrix;
}

/// Looks at each page.
void Touch(const double* samples) {
    double sum = 0;
    for (std::size_t i = 0; i < blockSize / sizeof(double); i += 512)
        sum += samples[i];
    Keep(sum);
}

void WriteBySystem(const std::string& name, const void* data, bool sync) {
    const int file = open(name.c_str(), O_WRONLY | O_CREAT | O_EXCL, 0644);
    Require(file >= 0, "the limit's file cannot be created");
    const ssize_t written = write(file, data, blockSize);
    Require(written == static_cast<ssize_t>(blockSize), "the limit's file was not written by one call");
    Require(!sync || fsync(file) == 0, "the limit's file cannot be synchronised");
    close(file);
}

Run LimitOfWriting(const ScratchFile& file, const Matrix& matrix, bool sync) {
    return [&file, &matrix, sync](Stopwatch& watch) {
        file.Remove();
        watch.Start();
        WriteBySystem(file.name, matrix.data(), sync);
        watch.Stop();
    };
}

void CompareWrite(benchmark::State& state) {
    const ScratchFile limitFile("limit");
    const ScratchFile file("ours");
    const Matrix matrix = MakeMatrix();
    Qor::Tivor::DataContainer container;
    container.PutValue("samples", matrix);
    Compare(state, 1.05, LimitOfWriting(limitFile, matrix, false), [&](Stopwatch& watch) {
        file.Remove();
        watch.Start();
        Qor::Core::BinaryFileStream stream;
        Require(stream.Open(file.name, false, BinaryDataFile::eCREATE_NEW), "our file cannot be created");
        Qor::Core::BufferedOutputStream buffered(stream, 64 * 1024);
        container.OutputData(buffered, true);
        buffered.Flush();
        stream.Close();
        watch.Stop();
    });
}

void CompareSave(benchmark::State& state) {
    const ScratchFile limitFile("limit");
    const ScratchFile file("ours.dataset");
    const Matrix matrix = MakeMatrix();
    BinaryDataFile dataFile(file.name, BinaryDataFile::eREAD_WRITE, BinaryDataFile::eCREATE_NEW, nullptr);
    Require(dataFile.IsOpen(), "our file cannot be created");
    dataFile.PutValue("samples", matrix);
    Compare(state, 1.15, LimitOfWriting(limitFile, matrix, true), [&](Stopwatch& watch) {
        dataFile.PutValue("samples", matrix);
        watch.Start();
        dataFile.Flush();
        watch.Stop();
        Require(!dataFile.IsModified(), "our file was not saved");
    });
}

struct Unmap {
    void operator()(void* memory) const { munmap(memory, blockSize); }
};

void CompareRead(benchmark::State& state) {
    const ScratchFile file("ours.dataset");
    {
        BinaryDataFile dataFile(file.name, BinaryDataFile::eREAD_WRITE, BinaryDataFile::eCREATE_NEW, nullptr);
        dataFile.PutValue("samples", MakeMatrix());
        dataFile.Flush();
    }
    const auto limit = [&](Stopwatch& watch) {
        watch.Start();
        const std::unique_ptr<void, Unmap> memory(
            mmap(nullptr, blockSize, PROT_READ | PROT_WRITE, MAP_PRIVATE | MAP_ANONYMOUS, -1, 0));
        const int descriptor = open(file.name.c_str(), O_RDONLY);
        const ssize_t got = read(descriptor, memory.get(), blockSize);
        Touch(static_cast<const double*>(memory.get()));
        close(descriptor);
        watch.Stop();
        Require(got == static_cast<ssize_t>(blockSize), "the file was not read by one call");
    };
    Compare(state, 0.25, limit, [&](Stopwatch& watch) {
        auto dataFile = std::make_unique<BinaryDataFile>();
        watch.Start();
        const bool opened =
            dataFile->Open(file.name, BinaryDataFile::eREAD_ONLY, BinaryDataFile::eOPEN_EXISTING, nullptr);
        const auto samples = dataFile->GetPtr<Matrix>("samples");
        Require(opened && samples && samples->size() == extent * extent, "our file was not read");
        Touch(samples->data());
        watch.Stop();
    });
}

} // namespace

} // namespace Bench

void Bench::RegisterRows() {
    Register("file write", 21, CompareWrite);
    Register("file save", 21, CompareSave);
    Register("file read", 21, CompareRead);
}
