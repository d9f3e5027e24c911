#pragma once

#include <QorCore/PathName.h>

#include <gtest/gtest.h>

#include <StoredBytes.h>
#include <TemporaryDirectory.h>
#include <Tool.h>
#include <nlohmann/json.hpp>
#include <sstream>

namespace Qor::Tivor::Testing {

using namespace Core::Testing;
using Json = nlohmann::ordered_json;
using Words = std::vector<std::string>;

inline const Core::PathName surfaceText(TIVOR_PROJECT "/data/afm_gwyddion_text_export.txt");
inline const Core::PathName profileText(TIVOR_PROJECT "/data/profile_xy-4.txt");
inline const Core::PathName unevenProfileText(TIVOR_PROJECT "/data/profile_nonuniform.asc");

struct Outcome {
    int status;
    std::string out;
    std::string err;
};

class ToolTest : public testing::Test {
protected:
    std::string Name(const std::string& name) const { return (directory / name).ToString(); }

    /// Runs a command on the file; `behind` follows its name.
    Outcome Run(const std::string& command, const Words& behind = {}) const {
        Words words{command, file};
        words.insert(words.end(), behind.begin(), behind.end());
        return RunWords(words);
    }
    static Outcome RunWords(const Words& words) {
        std::ostringstream out, err;
        const int status = Tool::RunTool(words, out, err);
        return {status, out.str(), err.str()};
    }
    /// What is printed when all goes well.
    std::string Say(const std::string& command, const Words& behind = {}) const {
        const Outcome outcome = Run(command, behind);
        EXPECT_EQ(outcome.status, 0) << command << ": " << outcome.err;
        EXPECT_EQ(outcome.err, "") << command;
        return outcome.out;
    }
    Json SayJson(const std::string& command, Words behind = {}) const {
        behind.insert(behind.begin(), "--json");
        return Json::parse(Say(command, behind));
    }
    void ExpectError(const Words& words, const std::string& said) const {
        const Outcome outcome = RunWords(words);
        EXPECT_EQ(outcome.status, 2) << said;
        EXPECT_EQ(outcome.out, "") << said;
        EXPECT_NE(outcome.err.find(said), std::string::npos) << outcome.err << "instead of: " << said;
        EXPECT_EQ(outcome.err.rfind("tivor: ", 0), 0u) << outcome.err;
    }
    /// A file with these bytes behind its header.
    void WriteStored(const std::string& notation) const {
        WriteFileText(Core::PathName(file), Bytes("'QOR DATA' 01 0000 'A'" + notation + "00000000 7F FFFF"));
    }

    TemporaryDirectory directory;
    std::string file = Name("data.dataset");
};

} // namespace Qor::Tivor::Testing
