#pragma once

#include <QorCore/MemoryStreams.h>
#include <Tivor/ArrayDataObjects.h>
#include <Tivor/CollectionSerialization.h>
#include <Tivor/Data1D.h>
#include <Tivor/Data2D.h>
#include <Tivor/DataSet.h>
#include <Tivor/Position1D.h>
#include <Tivor/Position2D.h>
#include <Tivor/ScalarData.h>

#include <algorithm>
#include <bit>
#include <functional>
#include <limits>
#include <string>
#include <utility>
#include <vector>

// The values that the files of tests/data/golden hold: a few samples of each element type, and by one rule per family
// all else made of them.
namespace Qor::Tivor::Testing {

template <class T>
using As = std::type_identity<T>;

template <class T>
std::vector<T> SamplesOf(As<T>) {
    using Limits = std::numeric_limits<T>;
    if constexpr (std::is_same_v<T, bool>)
        return {false, true};
    else if constexpr (std::is_integral_v<T>)
        return {0, 1, Limits::lowest(), Limits::max()};
    else if constexpr (std::is_floating_point_v<T>)
        return {T(0),
                T(1),
                Limits::lowest(),
                Limits::max(),
                T(-0.0),
                Limits::denorm_min(),
                Limits::infinity(),
                -Limits::infinity(),
                Limits::quiet_NaN()};
    else if constexpr (std::is_same_v<T, std::string>)
        return {"", "a", "Gr\xC3\xBC\xC3\x9F\x65", std::string("a\0b", 3), "\xFF\xFE"};
    else if constexpr (std::is_same_v<T, std::wstring>)
        return {L"", L"a", L"\u00F6", L"\U0001F600"};
    else
        return {T(0), T(1), T(-1), T(INT64_MIN), T(INT64_MAX), T(116444736000000000)}; // times and durations
}
template <class Integer>
std::vector<Long32Value<Integer>> SamplesOf(As<Long32Value<Integer>>) {
    const auto numbers = SamplesOf(As<Integer>());
    return {numbers.begin(), numbers.end()};
}
template <class T>
std::vector<std::complex<T>> SamplesOf(As<std::complex<T>>) {
    const auto parts = SamplesOf(As<T>());
    std::vector<std::complex<T>> numbers;
    for (std::size_t i = 0; i < parts.size(); ++i)
        numbers.emplace_back(parts[i], parts[parts.size() - 1 - i]);
    return numbers;
}
inline std::vector<Core::UnitDescriptor> SamplesOf(As<Core::UnitDescriptor>) {
    constexpr double infinity = std::numeric_limits<double>::infinity();
    return {{},
            {"Millimeter", "mm", 1e-3, 0, {1}},
            {"Celsius", "degC", 1, 273.15, {0, 0, 0, 0, 1}},
            {"\xC3\x9C\x62", "\xC3\xBC", -0.5, infinity, {-128, 127, 1, -1, 2, -2, 3, -3}}};
}
inline std::vector<UnitizedDouble> SamplesOf(As<UnitizedDouble>) {
    const Core::UnitDescriptor furlong("Furlong", "fur", 201.168, 0, {1});
    return {{0.0}, {2.5, "Millimeter"}, {-0.0, "Celsius"}, {std::numeric_limits<double>::quiet_NaN(), furlong.Clone()}};
}
inline std::vector<Core::Error> SamplesOf(As<Core::Error>) {
    Core::Error diskFull("IOError", "Disk full");
    diskFull.SetOrigin({"void Save()", "Save", "BinaryDataFile", 123}, "Qor.Tivor.BinaryDataFile", 2);
    diskFull.AddToCallStack({"int main()", "main", "Program", 7});
    diskFull.AddToCallStack({"void Store()", "Store", "Store", 0xFFFFFFFF});
    diskFull.AddToUnwindStack({"void Flush()", "Flush", "DataFile", 0});
    diskFull.AddVariable("File", "a.qordata");
    diskFull.AddVariable("Key", "");
    return {Core::Error(), diskFull};
}

inline std::vector<FixedSpacing1D> SamplesOf(As<FixedSpacing1D>) {
    const auto spacings = SamplesOf(As<UnitizedDouble>());
    return {spacings.begin(), spacings.end()};
}
inline std::vector<FixedSpacing2D> SamplesOf(As<FixedSpacing2D>) {
    const auto spacings = SamplesOf(As<UnitizedDouble>());
    std::vector<FixedSpacing2D> pairs;
    for (std::size_t i = 0; i < spacings.size(); ++i)
        pairs.emplace_back(spacings[i], spacings[spacings.size() - 1 - i]);
    pairs.emplace_back(UnitizedDouble(1.0, "Millimeter"), UnitizedDouble(1000.0, "Micrometer"));
    return pairs;
}

inline boost::shared_array<double> ArrayOf(const std::vector<double>& numbers) {
    boost::shared_array<double> array(new double[numbers.size()]);
    std::copy(numbers.begin(), numbers.end(), array.get());
    return array;
}
inline ArrayPosition1D PositionsOf(const std::vector<double>& numbers, const Core::UnitDescriptor& units) {
    return {ArrayOf(numbers), numbers.size(), units.Clone()};
}
inline ArrayPosition2D PositionsOf(const std::vector<double>& dim1, const Core::UnitDescriptor& dim1Units,
                                   const std::vector<double>& dim2, const Core::UnitDescriptor& dim2Units) {
    return {ArrayOf(dim1), ArrayOf(dim2), dim1.size(), dim2.size(), dim1Units.Clone(), dim2Units.Clone()};
}

/// All doubles that there are samples of, and two odd NaNs, which no copy may turn into the usual one.
inline std::vector<double> SamplePositions() {
    std::vector<double> numbers = SamplesOf(As<double>());
    for (const std::uint64_t bits : {0x7FF0000000000001u, 0xFFFFFFFFFFFFFFFFu})
        numbers.push_back(std::bit_cast<double>(bits));
    return numbers;
}
inline std::vector<ArrayPosition1D> SamplesOf(As<ArrayPosition1D>) {
    const auto units = SamplesOf(As<Core::UnitDescriptor>());
    return {{}, PositionsOf({1}, units[3]), PositionsOf(SamplePositions(), {})};
}
inline std::vector<ArrayPosition2D> SamplesOf(As<ArrayPosition2D>) {
    const auto units = SamplesOf(As<Core::UnitDescriptor>());
    const Core::UnitDescriptor furlong("Furlong", "fur", 201.168, 0, {1});
    const std::vector<double> numbers = SamplePositions();
    return {{},
            PositionsOf({1}, units[3], {}, units[1]),
            PositionsOf({numbers.begin(), numbers.begin() + 3}, {}, numbers, furlong)};
}

/// The numbers from 0 on, or their texts.
template <class T>
std::vector<T> FirstOf(std::size_t count) {
    std::vector<T> elements;
    for (std::size_t i = 0; i < count; ++i)
        if constexpr (std::is_same_v<T, std::string>)
            elements.push_back(std::to_string(i));
        else if constexpr (std::is_same_v<T, std::wstring>)
            elements.push_back(std::to_wstring(i));
        else
            elements.push_back(static_cast<T>(static_cast<unsigned short>(i)));
    return elements;
}

/// The type of the elements of a matrix, vector, array or collection; of a map, that of its keys.
template <class T>
struct ElementOf;
template <template <class...> class Family, class Element, class... Rest>
struct ElementOf<Family<Element, Rest...>> {
    using Type = Element;
};

template <class T>
concept AnyMatrix = requires(const T& value) {
    value.size1();
};
template <class T>
concept AnyText = std::is_same_v<T, std::string> || std::is_same_v<T, std::wstring>;
template <class T>
concept AnyPositionArray = std::is_same_v<T, ArrayPosition1D> || std::is_same_v<T, ArrayPosition2D>;
template <class T>
concept AnyCollection = !AnyText<T> && (requires(T & value) { value.begin(); } || std::is_base_of_v<DataObject, T>);

/// A matrix of the elements, over and over; element (i, j) is that of number 3 i + j.
template <AnyMatrix T, class Element>
std::shared_ptr<DataObject> MatrixOf(std::size_t size1, std::size_t size2, const std::vector<Element>& elements) {
    T matrix(size1, size2);
    for (std::size_t i = 0; i < size1; ++i)
        for (std::size_t j = 0; j < size2; ++j)
            matrix(i, j) = elements[(3 * i + j) % elements.size()];
    return MakeData(std::move(matrix));
}

/// A collection of the elements; sets leave NaN out, maps lead from the first to the last.
template <AnyCollection T, class Element>
std::shared_ptr<DataObject> CollectionOf(const std::vector<Element>& elements) {
    if constexpr (std::is_base_of_v<DataObject, T>) {
        const auto array = std::make_shared<T>(elements.size());
        std::copy(elements.begin(), elements.end(), array->GetElements().begin());
        return array;
    } else {
        T collection;
        if constexpr (requires { typename T::mapped_type; }) {
            for (std::size_t i = 0; i < elements.size(); ++i)
                collection.emplace(elements[i], elements[elements.size() - 1 - i]);
        } else if constexpr (requires { typename T::key_type; }) {
            std::copy_if(elements.begin(), elements.end(), std::inserter(collection, collection.end()),
                         [](const auto& element) { return std::equal_to<>()(element, element); });
        } else {
            collection.resize(elements.size());
            std::copy(elements.begin(), elements.end(), collection.begin());
        }
        return MakeData(std::move(collection));
    }
}

/// Objects under the keys that they have in the golden files.
using NamedObjects = std::vector<std::pair<std::string, std::shared_ptr<DataObject>>>;

template <class T>
NamedObjects ObjectsOf() {
    if constexpr (AnyMatrix<T>) {
        const auto samples = SamplesOf(As<typename T::value_type>());
        return {{"empty", MatrixOf<T>(0, 0, samples)},
                {"row", MatrixOf<T>(1, 3, samples)},
                {"many", MatrixOf<T>(2, 3, samples)}};
    } else if constexpr (AnyCollection<T>) {
        const auto samples = SamplesOf(As<typename ElementOf<T>::Type>());
        return {{"empty", CollectionOf<T>(decltype(samples)())},
                {"one", CollectionOf<T>(std::vector(samples.begin() + 1, samples.begin() + 2))},
                {"many", CollectionOf<T>(samples)}};
    } else if constexpr (AnyPositionArray<T>) {
        const auto samples = SamplesOf(As<T>());
        return {{"empty", MakeData(samples[0])}, {"one", MakeData(samples[1])}, {"many", MakeData(samples[2])}};
    } else {
        NamedObjects objects;
        for (auto&& sample : SamplesOf(As<T>()))
            objects.emplace_back(std::to_string(objects.size()), MakeData(T(sample)));
        return objects;
    }
}

/// Objects of 9 and 4097 elements, of types that can have so many.
template <class T>
NamedObjects LargeObjectsOf() {
    NamedObjects objects;
    for (const std::size_t count : {9u, 4097u})
        if constexpr (AnyMatrix<T>)
            objects.emplace_back("large", MatrixOf<T>(3, count, FirstOf<typename T::value_type>(61)));
        else if constexpr (AnyText<T>)
            objects.emplace_back("large", MakeData(T(count, 'x')));
        else if constexpr (AnyCollection<T>)
            objects.emplace_back("large", CollectionOf<T>(FirstOf<typename ElementOf<T>::Type>(count)));
        else if constexpr (std::is_same_v<T, ArrayPosition1D>)
            objects.emplace_back("large", MakeData(PositionsOf(FirstOf<double>(count), {})));
        else if constexpr (std::is_same_v<T, ArrayPosition2D>)
            objects.emplace_back("large", MakeData(PositionsOf(FirstOf<double>(count), {}, FirstOf<double>(5), {})));
    return objects;
}

/// Without samples; with fixed spacings; with positions in arrays.
inline NamedObjects Profiles() {
    const auto units = SamplesOf(As<UnitizedDouble>());
    const auto spaced = Data1D::CreateFrom(CollectionOf<Array<short>>(SamplesOf(As<short>())));
    spaced->SetDataKind("Height");
    spaced->SetDataScale(units[1]);
    spaced->SetFixedSpacing(UnitizedDouble(0.5, "Millimeter"));
    const std::vector<double> numbers = SamplesOf(As<double>());
    const auto uneven = Data1D::CreateFrom(CollectionOf<Array<double>>(numbers));
    uneven->SetPositionFunction(std::make_shared<ArrayPosition1D>(PositionsOf(numbers, *units[3].GetUnits())));
    return {{"empty", MakeData(Data1D())}, {"one", MakeData(*spaced)}, {"many", MakeData(*uneven)}};
}
inline NamedObjects Surfaces() {
    const std::vector<double> numbers = SamplesOf(As<double>());
    const auto spaced = Data2D::Create(MatrixOf<RowMajorMatrix<short>>(2, 3, SamplesOf(As<short>())));
    spaced->SetOrigin(Data2D::eLOWER_RIGHT);
    spaced->SetFixedSpacing(UnitizedDouble(1.0, "Millimeter"), UnitizedDouble(1000.0, "Micrometer"));
    const auto uneven = Data2D::Create(MatrixOf<ColumnMajorMatrix<double>>(2, 3, numbers));
    uneven->SetPositionFunction(std::make_shared<ArrayPosition2D>(
        PositionsOf({numbers.begin(), numbers.begin() + 2}, SamplesOf(As<Core::UnitDescriptor>())[3],
                    {numbers.begin(), numbers.begin() + 3}, {})));
    return {{"empty", MakeData(Data2D())}, {"one", MakeData(*spaced)}, {"many", MakeData(*uneven)}};
}

/// Without items; with items that name no kind; with several kinds, and what a program adds.
inline NamedObjects DataSets() {
    const auto surface = [](const std::string& kind) {
        auto made = Data2D::Create(MatrixOf<RowMajorMatrix<short>>(1, 3, SamplesOf(As<short>())));
        made->SetDataKind(kind);
        return made;
    };
    const auto profile = [](const std::string& kind) {
        auto made = Data1D::CreateFrom(CollectionOf<Array<short>>(SamplesOf(As<short>())));
        made->SetDataKind(kind);
        return made;
    };
    DataSet kindless;
    kindless.StoreData(surface(""), "s");
    kindless.StoreData(profile(""), "p");
    DataSet many(surface("Height"), "b");
    many.StoreData(surface("Intensity"), "image");
    many.StoreData(surface("Height"), "a");
    many.StoreData(profile("Height"), "b");
    many.MetaData().PutValue(sDATASET_NAME, "Name");
    many.GetContent()->PutValue("Note", true);
    return {{"empty", MakeData(DataSet())}, {"one", MakeData(kindless)}, {"many", MakeData(many)}};
}

/// Objects of one type each, to stand where others are expected.
inline std::vector<std::shared_ptr<DataObject>> StrangeObjects() {
    return {MakeData(-1),
            MakeData(std::string("x")),
            MakeData(UnitizedDouble(1, "Second")),
            CollectionOf<Array<double>>(std::vector<double>{1, 2}),
            CollectionOf<std::list<std::string>>(std::vector<std::string>{"x"}),
            MatrixOf<RowMajorMatrix<double>>(1, 2, std::vector<double>{0}),
            MakeData(true),
            MakeData(FixedSpacing1D(UnitizedDouble(1, "Millimeter"))),
            MakeData(FixedSpacing2D()),
            MakeData(1e300),
            std::make_shared<DataContainerWrapper>(),
            MakeData(Data1D()),
            MakeData(Data2D()),
            MakeData(DataSet())};
}

/// An object's data, without what stands in front of it in a file.
inline std::string DataOf(DataObject& object) {
    Core::MemoryOutputStream stream;
    object.GetSerializer()->DataToBinary(stream);
    return {reinterpret_cast<const char*>(stream.GetBytes().data()), stream.GetSize()};
}
/// Fills the object from a block that is said to have `size` bytes; returns how many were taken.
inline std::uint64_t Fill(DataObject& object, const std::string& data, std::uint64_t size) {
    Core::MemoryInputStream stream(data.data(), data.size());
    return object.GetSerializer()->DataFromBinary(size, stream);
}

/// Numbers of one kind in several widths.
template <ETypeID id, class... Widths>
NamedObjects ScalarsOf() {
    NamedObjects objects;
    const auto add = [&]<class T>(As<T>) {
        for (std::size_t i = 0; const T sample : SamplesOf(As<T>())) {
            const auto scalar = std::make_shared<ScalarData>(id == eSIGNED_INTEGRAL_TYPE     ? "Golden::Signed"
                                                             : id == eUNSIGNED_INTEGRAL_TYPE ? "Golden::Unsigned"
                                                                                             : "Golden::Floating",
                                                             id);
            Fill(*scalar, std::string(reinterpret_cast<const char*>(&sample), sizeof sample), sizeof sample);
            objects.emplace_back(std::to_string(sizeof sample) + '-' + std::to_string(i++), scalar);
        }
    };
    (add(As<Widths>()), ...);
    return objects;
}

} // namespace Qor::Tivor::Testing
