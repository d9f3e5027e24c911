// The layers of XML files, against a copy of the text in memory.
#include "Comparison.h"

#include <QorCore/Base64.h>
#include <QorCore/MemoryStreams.h>
#include <Tivor/DataContainer.h>

#include <cstring>
#include <stdexcept>
#include <vector>

namespace Bench {

namespace {

using Qor::Core::Base64DecoderStream;
using Qor::Core::Base64EncoderStream;
using Qor::Core::MemoryInputStream;
using Qor::Core::MemoryOutputStream;

constexpr std::size_t numSamples = 1024 * 1024;

std::vector<double> MakeSamples() {
    std::vector<double> samples(numSamples);
    for (std::size_t i = 0; i < samples.size(); ++i)
        samples[i] = static_cast<double>(i) * 0.37;
    return samples;
}

void Require(bool condition, const char* what) {
    if (!condition)
        throw std::runtime_error(what);
}

void Encode(const std::vector<double>& samples, MemoryOutputStream& text) {
    text.Clear();
    Base64EncoderStream encoder(text);
    encoder.Write(samples.data(), samples.size() * sizeof(double));
    encoder.Finish();
}

Run LimitOf(const MemoryOutputStream& text) {
    return [&text, copy = std::vector<std::byte>(text.GetSize())](Stopwatch& watch) mutable {
        watch.Start();
        std::memcpy(copy.data(), text.GetBytes().data(), copy.size());
        Keep(copy.front());
        watch.Stop();
    };
}

void CompareBase64Encode(benchmark::State& state) {
    const std::vector<double> samples = MakeSamples();
    MemoryOutputStream text(numSamples * sizeof(double) * 3 / 2);
    Encode(samples, text);
    MemoryOutputStream again(text.GetSize());
    Compare(state, 2.5, LimitOf(text), [&](Stopwatch& watch) {
        watch.Start();
        Encode(samples, again);
        watch.Stop();
    });
}

void CompareBase64Decode(benchmark::State& state) {
    const std::vector<double> samples = MakeSamples();
    MemoryOutputStream text;
    Encode(samples, text);
    std::vector<double> decoded(samples.size());
    Compare(state, 2.5, LimitOf(text), [&](Stopwatch& watch) {
        watch.Start();
        MemoryInputStream source(text.GetBytes());
        Base64DecoderStream decoder(source);
        decoder.Read(decoded.data(), decoded.size() * sizeof(double));
        watch.Stop();
    });
    Require(decoded == samples, "the samples did not come back");
}

using Matrix = Qor::Nalix::Matrix<double, Qor::Nalix::basic_row_major>;

Qor::Tivor::DataContainer MakeSurface() {
    const std::vector<double> samples = MakeSamples();
    Matrix matrix(1024, numSamples / 1024);
    std::copy(samples.begin(), samples.end(), matrix.data());
    Qor::Tivor::DataContainer container;
    container.PutValue("Height", std::move(matrix));
    return container;
}

void CompareEncode(benchmark::State& state) {
    const Qor::Tivor::DataContainer surface = MakeSurface();
    MemoryOutputStream text(numSamples * sizeof(double) * 3 / 2);
    surface.OutputXML(text);
    MemoryOutputStream again(text.GetSize() + 1024);
    Compare(state, 10, LimitOf(text), [&](Stopwatch& watch) {
        again.Clear();
        watch.Start();
        surface.OutputXML(again);
        watch.Stop();
    });
    Require(again.GetSize() == text.GetSize(), "another text came out");
}

void CompareDecode(benchmark::State& state) {
    const Qor::Tivor::DataContainer surface = MakeSurface();
    MemoryOutputStream text;
    surface.OutputXML(text);
    bool isSame = true;
    Compare(state, 3, LimitOf(text), [&](Stopwatch& watch) {
        Qor::Tivor::DataContainer read;
        MemoryInputStream source(text.GetBytes());
        watch.Start();
        read.InputXML(source);
        watch.Stop();
        isSame = isSame && read == surface;
    });
    Require(isSame, "the samples did not come back");
}

} // namespace

} // namespace Bench

void Bench::RegisterRows() {
    Register("W3 Base64 encode alone", 101, CompareBase64Encode);
    Register("W3 Base64 decode alone", 101, CompareBase64Decode);
    Register("W3 encode", 51, CompareEncode);
    Register("W3 decode", 51, CompareDecode);
}
