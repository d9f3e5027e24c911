#include "SurfaceText.h"

#include <algorithm>
#include <charconv>
#include <fstream>
#include <stdexcept>
#include <string_view>

namespace {

constexpr const char* blanks = " \t\r";

std::string_view Trim(std::string_view text) {
    const auto begin = std::min(text.find_first_not_of(blanks), text.size());
    return text.substr(begin, text.find_last_not_of(blanks) + 1 - begin);
}

/// Takes the lines one by one and knows where it stands, for the errors.
class Parser {
public:
    explicit Parser(const std::string& fileName) : m_fileName(fileName) {}

    SurfaceText Parse() {
        std::ifstream file(m_fileName);
        if (!file)
            throw std::runtime_error(m_fileName + ": expected a readable file, found none");
        for (std::string line; std::getline(file, line);) {
            ++m_line;
            ParseLine(Trim(line));
        }
        if (file.bad())
            Fail("more lines", "an error of the medium");
        Complete();
        return std::move(m_surface);
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
            m_surface.width = ParseLength(text);
        else if (name == "Height")
            m_surface.height = ParseLength(text);
        m_surface.header.emplace_back(name, text);
    }

    Length ParseLength(std::string_view text) const {
        const std::size_t end = std::min(text.find(' '), text.size());
        return {ParseNumber(text.substr(0, end), "a length"), std::string(Trim(text.substr(end)))};
    }

    void ParseRow(std::string_view line) {
        std::size_t count = 0;
        for (bool more = true; more; ++count) {
            const std::size_t end = std::min(line.find('\t'), line.size());
            m_heights.push_back(ParseNumber(Trim(line.substr(0, end)), "a height"));
            more = end < line.size();
            line.remove_prefix(std::min(end + 1, line.size()));
        }
        if (m_rows++ == 0)
            m_columns = count;
        else if (count != m_columns)
            Fail(std::to_string(m_columns) + " heights as in the first row", std::to_string(count));
    }

    double ParseNumber(std::string_view text, const char* what) const {
        double number = 0;
        const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), number);
        if (error != std::errc() || end != text.data() + text.size())
            Fail(what + std::string(" as a number"), '"' + std::string(text) + '"');
        return number;
    }

    void Complete() {
        if (m_rows == 0)
            Fail("rows of heights", "none up to the end of the file");
        for (const char* const name : {"Channel", "Width", "Height", "Value units"})
            m_surface.GetHeader(name);
        m_surface.heights.resize(m_rows, m_columns);
        std::copy(m_heights.begin(), m_heights.end(), m_surface.heights.data());
    }

    const std::string m_fileName;
    std::size_t m_line = 0;
    std::size_t m_rows = 0;
    std::size_t m_columns = 0;
    std::vector<double> m_heights;
    SurfaceText m_surface;
};

} // namespace

const std::string& SurfaceText::GetHeader(const std::string& name) const {
    const auto found = std::find_if(header.begin(), header.end(), [&](const auto& line) { return line.first == name; });
    if (found == header.end())
        throw std::runtime_error("expected a header line \"# " + name + ": ...\", found none");
    return found->second;
}

SurfaceText ReadSurfaceText(const std::string& fileName) { return Parser(fileName).Parse(); }
