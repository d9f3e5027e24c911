#include "SdfSamples.h"

#include "SdfFields.h"

#include <algorithm>

namespace Qor::Tivor::Measurements {

namespace {

constexpr std::string_view blanks = " \t\r";

/// How many words are something, and where the first one is.
class Finds {
public:
    void Add(const SdfWords& words) {
        if (m_count++ == 0)
            m_place = words.GetPlace();
    }
    bool IsEmpty() const { return m_count == 0; }
    void Tell(const Report& report, const std::string& expected, const std::string& what) const {
        if (!IsEmpty())
            report.Deviates(m_place, expected, std::to_string(m_count) + what);
    }

private:
    std::uint64_t m_count = 0;
    std::string m_place;
};

/// Reads samples that are announced as T. They are gathered as Element, which has NaN for missing points: a number that
/// is no T is only accepted where Element is double.
template <class T, class Element>
class Pass {
public:
    Pass(const SdfWords& begin, const SdfGrid& grid, const Report& report)
        : m_words(begin), m_grid(grid), m_report(report) {}

    /// False as soon as a number is neither T nor Element.
    bool Run() {
        const std::uint64_t count = m_grid.numX * m_grid.numY;
        m_samples.reserve(static_cast<std::size_t>(count));
        while (m_samples.size() < count)
            if (!ReadSample())
                return false;
        m_misfits.Tell(m_report, "samples of DataType " + std::to_string(m_grid.dataType),
                       " samples that are no such numbers; all are read as doubles");
        m_infinite.Tell(m_report, std::string(sdfMissing) + " for missing points",
                        " samples that are no finite numbers, which count as missing");
        return true;
    }

    /// As doubles where numbers were no T, as T where it can hold all that was read.
    std::shared_ptr<DataObject> MakeObject() const {
        return std::is_integral_v<T> && !m_isMissing && m_misfits.IsEmpty() ? MakeObjectOf<T>()
                                                                            : MakeObjectOf<Element>();
    }
    const SdfWords& GetEnd() const { return m_words; }

private:
    bool ReadSample() {
        const std::string_view word = m_words.Next();
        if (word.empty() || word == sdfEnd)
            m_report.Fail(m_words.GetPlace(), Core::FormatText("%1% x %2% samples", {m_grid.numX, m_grid.numY}),
                          "the end of the samples after " + std::to_string(m_samples.size()));
        if (IsSameSdfWord(word, sdfMissing))
            return AddMissing();
        const auto number = FindNumber<T>(word);
        if (number && !isWidened)
            return Add(*number);
        const auto exact = FindNumber<double>(word);
        if (!exact)
            m_report.Fail(m_words.GetPlace(), "a sample", Quote(word));
        return number || !std::isfinite(*exact) ? Add(*exact) : AddMisfit(*exact);
    }

    template <class Number>
    bool Add(Number number) {
        if constexpr (std::is_floating_point_v<Number>)
            if (!std::isfinite(number)) {
                m_infinite.Add(m_words);
                return AddMissing();
            }
        m_samples.push_back(static_cast<Element>(number));
        return true;
    }
    bool AddMissing() {
        m_isMissing = true;
        m_samples.push_back(std::numeric_limits<Element>::quiet_NaN());
        return true;
    }
    bool AddMisfit(double number) {
        if constexpr (std::is_same_v<Element, double>) {
            m_misfits.Add(m_words);
            return Add(number);
        }
        return false;
    }

    static constexpr bool isWidened = std::is_same_v<T, float> && std::is_same_v<Element, double>;

    template <class To>
    std::shared_ptr<DataObject> MakeObjectOf() const {
        const auto fill = [this](To* to) {
            std::transform(m_samples.begin(), m_samples.end(), to, [](Element e) { return static_cast<To>(e); });
        };
        if (m_grid.numY == 1) {
            const auto elements = AllocateArray<To>(m_samples.size());
            fill(elements.get());
            return std::make_shared<Array<To>>(elements, m_samples.size());
        }
        RowMajorMatrix<To> matrix(static_cast<std::size_t>(m_grid.numY), static_cast<std::size_t>(m_grid.numX));
        fill(matrix.data());
        return MakeData(std::move(matrix));
    }

    SdfWords m_words;
    const SdfGrid& m_grid;
    const Report& m_report;
    std::vector<Element> m_samples;
    Finds m_misfits;
    Finds m_infinite;
    bool m_isMissing = false;
};

/// Holds each integer of the type exactly, and NaN.
template <class T>
using Holder = std::conditional_t<std::is_same_v<T, float> || sizeof(T) <= 2, float, double>;

template <class T>
std::shared_ptr<DataObject> ReadSamplesAs(SdfWords& words, const SdfGrid& grid, const Report& report) {
    if (Pass<T, Holder<T>> pass(words, grid, report); pass.Run()) {
        words = pass.GetEnd();
        return pass.MakeObject();
    }
    Pass<T, double> pass(words, grid, report);
    pass.Run();
    words = pass.GetEnd();
    return pass.MakeObject();
}

void PassOverSurplus(SdfWords& words, const SdfGrid& grid, const Report& report) {
    Finds surplus;
    std::string_view word = words.Next();
    for (; !word.empty() && word != sdfEnd; word = words.Next())
        surplus.Add(words);
    surplus.Tell(report, Core::FormatText("%1% x %2% samples", {grid.numX, grid.numY}), " more, which are passed over");
    if (word.empty())
        report.Deviates(words.GetPlace(), "a line * behind the samples", "the end of the file");
}

} // namespace

std::string_view SdfWords::Next() {
    m_line.remove_prefix(std::min(m_line.find_first_not_of(blanks), m_line.size()));
    while (m_line.empty() && !m_lines.IsAtEnd()) {
        m_line = m_lines.Next();
        m_line.remove_prefix(std::min(m_line.find_first_not_of(blanks), m_line.size()));
    }
    const std::string_view word = m_line.substr(0, m_line.find_first_of(blanks));
    m_line.remove_prefix(word.size());
    return word;
}

std::string_view SdfWords::GetRest() const {
    const std::string_view rest = m_lines.GetRest();
    return {m_line.data(), static_cast<std::size_t>(rest.data() + rest.size() - m_line.data())};
}

std::shared_ptr<DataObject> ReadSdfSamples(SdfWords& words, const SdfGrid& grid, const Report& report) {
    std::shared_ptr<DataObject> samples;
    const auto read = [&]<std::size_t... types>(std::index_sequence<types...>) {
        ((types == grid.dataType
              ? void(samples = ReadSamplesAs<std::tuple_element_t<types, SdfTypes>>(words, grid, report))
              : void()),
         ...);
    };
    read(std::make_index_sequence<std::tuple_size_v<SdfTypes>>());
    PassOverSurplus(words, grid, report);
    return samples;
}

} // namespace Qor::Tivor::Measurements
