#include "Commands.h"
#include "Files.h"
#include "Plausibility.h"

#include <algorithm>

namespace Qor::Tivor::Tool {

namespace {

/// Keeps the warnings of reading.
class WarningCollector final : public Core::AlertHandler {
public:
    void OnWarning(const Core::Warning& warning) override {
        if (warning.GetTypeName() == "NoDefaultDataFile") // which tells nothing of the file
            return;
        Finding finding{warning.GetVariable("Place"), {}, warning.GetText(), Finding::eDEVIATION};
        if (const std::string beginning = finding.place + ": "; finding.text.starts_with(beginning))
            finding.text.erase(0, beginning.size());
        static const std::string expected = "expected ";
        if (const auto end = finding.text.rfind(", found ");
            finding.text.starts_with(expected) && end != std::string::npos)
            finding.expected = finding.text.substr(expected.size(), end - expected.size());
        m_findings.push_back(std::move(finding));
    }

    std::vector<Finding> Take() { return std::move(m_findings); }

private:
    std::vector<Finding> m_findings;
};

/// What a reader told already gets our kind.
void Add(std::vector<Finding>& findings, const Finding& finding) {
    const auto told = std::find_if(findings.begin(), findings.end(), [&](const Finding& other) {
        return other.place == finding.place && other.expected == finding.expected;
    });
    if (told == findings.end())
        findings.push_back(finding);
    else
        told->kind = finding.kind;
}

std::vector<Finding> CheckFile(const std::string& fileName) {
    WarningCollector collector;
    const auto file = OpenFile(fileName, DataFile::eREAD_ONLY);
    const MeasuredContent content(*file);
    std::vector<Finding> findings = collector.Take();
    content.ForEach([&](const Measurement& measurement) {
        for (const Finding& finding : CheckMeasurement(measurement))
            Add(findings, finding);
    });
    return findings;
}

Json ToJson(const std::vector<Finding>& findings) {
    Json json = Json::array();
    for (const Finding& finding : findings) {
        Json& entry = json.emplace_back(Json{{"place", TextJson(finding.place)}});
        if (!finding.expected.empty())
            entry["expected"] = TextJson(finding.expected);
        entry["text"] = TextJson(finding.text);
        entry["kind"] = finding.kind == Finding::eDEVIATION ? "deviation" : "implausible";
    }
    return json;
}

} // namespace

EStatus Check(const Arguments& arguments, Console& console) {
    console.hidesWarnings = true; // they are what is printed
    const std::vector<Finding> findings = CheckFile(arguments.file);
    if (arguments.asJson)
        Print(console.out, ToJson(findings));
    else
        for (const Finding& finding : findings)
            console.out << (finding.place.empty() ? "" : OneLine(finding.place) + ": ") << OneLine(finding.text)
                        << '\n';
    return findings.empty() ? eFINE : eDEVIATES;
}

} // namespace Qor::Tivor::Tool
