#include "MeasuredText.h"

#include <algorithm>
#include <charconv>
#include <cmath>
#include <fstream>
#include <stdexcept>
#include <string_view>

namespace {

constexpr const char* blanks = " \t\r";

std::string_view Trim(std::string_view text) {
    const auto begin = std::min(text.find_first_not_of(blanks), text.size());
    return text.substr(begin, text.find_last_not_of(blanks) + 1 - begin);
}

/// What a one stands for in the place of the last digit of a number: 0.001 in "2.500".
double LastDigitOf(std::string_view number) {
    const std::size_t end = std::min(number.find_first_of("eE"), number.size());
    const std::size_t point = std::min(number.find('.'), end);
    int exponent = 0;
    if (end < number.size()) {
        const std::size_t begin = end + (number.substr(end + 1).starts_with('+') ? 2 : 1);
        std::from_chars(number.data() + begin, number.data() + number.size(), exponent);
    }
    return std::pow(10.0, exponent - static_cast<int>(end - std::min(point + 1, end)));
}

/// Takes the lines one by one and knows where it stands, for the errors.
class Parser {
public:
    explicit Parser(const std::string& fileName) : m_fileName(fileName) {}

    MeasuredText Parse(const std::function<void(std::size_t lines)>& tell) {
        std::ifstream file(m_fileName);
        if (!file)
            throw std::runtime_error(m_fileName + ": expected a readable file, found none");
        for (std::string line; std::getline(file, line);) {
            if (++m_line % 1024 == 0 && tell)
                tell(m_line);
            ParseLine(Trim(line));
        }
        if (file.bad())
            Fail("more lines", "an error of the medium");
        Complete();
        return std::move(m_text);
    }

private:
    [[noreturn]] void Fail(const std::string& expected, std::string_view found) const {
        throw std::runtime_error(m_fileName + ", line " + std::to_string(m_line) + ": expected " + expected +
                                 ", found " + std::string(found));
    }

    void ParseLine(std::string_view line) {
        if (line.empty())
            return;
        if (line.front() == '#')
            ParseHeader(Trim(line.substr(1)));
        else
            ParseRow(line);
    }

    void ParseHeader(std::string_view line) {
        const std::size_t colon = line.find(':');
        if (colon == std::string_view::npos)
            Fail("a header line \"# Name: text\"", "no colon");
        const std::string_view name = Trim(line.substr(0, colon));
        const std::string_view text = Trim(line.substr(colon + 1));
        if (name == "Width")
            m_text.width = ParseLength(text);
        else if (name == "Height")
            m_text.height = ParseLength(text);
        m_text.header.emplace_back(name, text);
    }

    Length ParseLength(std::string_view text) const {
        const std::size_t end = std::min(text.find(' '), text.size());
        return {ParseNumber(text.substr(0, end), "length as a "), std::string(Trim(text.substr(end)))};
    }

    void ParseRow(std::string_view line) {
        const char* const separators = line.find('\t') != std::string_view::npos ? "\t" : blanks;
        std::size_t count = 0;
        for (bool more = true; more; ++count) {
            const std::size_t end = std::min(line.find_first_of(separators), line.size());
            const std::string_view number = Trim(line.substr(0, end));
            m_numbers.push_back(ParseNumber(number, ""));
            if (count == 0)
                m_text.lastDigits.push_back(LastDigitOf(number));
            more = end < line.size();
            line.remove_prefix(std::min(end + 1, line.size()));
            if (separators == blanks)
                line = Trim(line);
        }
        if (m_rows++ == 0)
            m_columns = count;
        else if (count != m_columns)
            Fail(Count(m_columns) + " as in the first row", std::to_string(count));
    }

    static std::string Count(std::size_t count) {
        return std::to_string(count) + (count == 1 ? " number" : " numbers");
    }

    double ParseNumber(std::string_view text, const char* kind) const {
        double number = 0;
        const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), number);
        if (error != std::errc() || end != text.data() + text.size())
            Fail(std::string("a ") + kind + "number", '"' + std::string(text) + '"');
        return number;
    }

    void Complete() {
        if (m_rows == 0)
            Fail("rows of numbers", "none up to the end of the file");
        if (m_text.header.empty() && m_columns != 2)
            Fail("the header lines of a surface, or lines of two numbers as those of a profile",
                 "no header, and lines of " + Count(m_columns));
        m_text.isProfile = m_text.header.empty();
        if (!m_text.isProfile)
            for (const char* const name : {"Channel", "Width", "Height", "Value units"})
                m_text.GetHeader(name);
        m_text.numbers.resize(m_rows, m_columns);
        std::copy(m_numbers.begin(), m_numbers.end(), m_text.numbers.data());
    }

    const std::string m_fileName;
    std::size_t m_line = 0;
    std::size_t m_rows = 0;
    std::size_t m_columns = 0;
    std::vector<double> m_numbers;
    MeasuredText m_text;
};

} // namespace

const std::string& MeasuredText::GetHeader(const std::string& name) const {
    const auto found = std::find_if(header.begin(), header.end(), [&](const auto& line) { return line.first == name; });
    if (found == header.end())
        throw std::runtime_error("expected a header line \"# " + name + ": ...\", found none");
    return found->second;
}

MeasuredText ReadMeasuredText(const std::string& fileName, const std::function<void(std::size_t lines)>& tell) {
    return Parser(fileName).Parse(tell);
}
