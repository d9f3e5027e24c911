// Files compared and hashed by what was measured.
#include "ToolFixture.h"

#include <Tivor/Data2D.h>
#include <Tivor/DataFile.h>

#include <cmath>
#include <functional>

namespace Qor::Tivor::Testing {

namespace {

/// Half a micrometre from sample to sample, one of them missing, and 2.5 um apart; in other units and types, too.
struct Sample {
    template <class Matrix>
    std::shared_ptr<DataObject> MakeHeights() const {
        std::vector<double> numbers(4 * rows);
        for (std::size_t i = 0; i < numbers.size(); ++i)
            numbers[i] = static_cast<double>(i) * step;
        numbers[6] = NAN;
        if (change)
            change(numbers[1], numbers[11]);
        Matrix heights(rows, 4);
        for (std::size_t i = 0; i < numbers.size(); ++i)
            heights(i / 4, i % 4) = static_cast<typename Matrix::value_type>(numbers[i]);
        return MakeData(heights);
    }
    std::shared_ptr<DataObject> Make() const {
        auto surface =
            Data2D::Create(isFloat ? MakeHeights<ColumnMajorMatrix<float>>() : MakeHeights<RowMajorMatrix<double>>());
        surface->SetDataKind(kind);
        surface->SetDataScale(scale);
        surface->SetFixedSpacing(spacing, spacing);
        return ValueTraits<Data2D>::MakeData(surface);
    }

    std::size_t rows = 3;
    double step = 0.5;
    UnitizedDouble scale{1, "Micrometer"};
    UnitizedDouble spacing{2.5, "Micrometer"};
    std::string kind = "Height";
    bool isFloat = false;
    std::function<void(double&, double&)> change = {};
    std::string key = "Surface";
};

class CompareTest : public ToolTest {
protected:
    std::string Save(const std::string& name, const Sample& sample, std::function<void(DataContainer&)> add = {}) {
        const auto made = DataFile::Open(Name(name), DataFile::eREAD_WRITE, DataFile::eCREATE_ALWAYS, "", nullptr);
        made->Put(sample.key, sample.Make());
        if (add)
            add(*made);
        made->Flush();
        return Name(name);
    }
    std::string HashOf(const Sample& sample, const std::string& name = "hashed.qordml") {
        const Outcome outcome = RunWords({"hash", Save(name, sample)});
        EXPECT_EQ(outcome.status, 0) << outcome.err;
        return outcome.out;
    }
};

} // namespace

TEST_F(CompareTest, TellsWhatMeansSomethingElse) {
    const auto raise = [](double& first, double&) { first += 0.0002; };
    const auto drop = [](double& first, double&) { first = INFINITY; };
    const struct {
        Sample b;
        Words options;
        std::string said;
    } rows[] = {
        {{.isFloat = true}, {}, "note: Surface: the samples are of types double, float\n"},
        {{.step = 0.5e-6, .scale{1, "Meter"}, .spacing{0.0025, "Millimeter"}}, {}, ""},
        {{.key = "S"}, {}, "note: Surface: compared with S in B\n"},
        {{.change = raise},
         {},
         "Surface: samples: 1 of 12 points differ, most by 2.0000000000001503e-10 m at [0,1]: 5e-07 m, 5.002e-07 m\n"},
        {{.change = raise}, {"--tol", "0.0003 \xC2\xB5m"}, ""},
        {{.change = raise}, {"--tol=1e-9Meter", "--data"}, ""},
        {{.change = raise}, {"--tol", "1s"}, "Surface: samples: 1 of 12"},
        {{.change = drop}, {}, "Surface: missing points: 0 only in A, 1 only in B, the first at [0,1]\n"},
        {{.spacing{2.6, "Micrometer"}}, {"--tol", "1mm"}, "Surface: positions along dimension 1: 2 of 3 differ, most "},
        {{.scale{1, "Second"}}, {}, "Surface: unit of samples: m, s\n"},
        {{.kind = "Phase"}, {}, "Surface: kind: Height, Phase\n"},
        {{.rows = 4}, {}, "Surface: points: 3 x 4, 4 x 4\n"},
    };
    const std::string a = Save("a.dataset", {});
    for (const auto& [b, options, said] : rows) {
        Words words{"diff", a, Save("b.qordml", b)};
        words.insert(words.end(), options.begin(), options.end());
        const Outcome outcome = RunWords(words);
        EXPECT_EQ(outcome.status, said.empty() || said.starts_with("note") ? 0 : 1) << said << outcome.err;
        EXPECT_TRUE(said.empty() ? outcome.out.empty() : outcome.out.starts_with(said)) << outcome.out << said;
    }
}

TEST_F(CompareTest, TellsWhichEntriesDiffer) {
    const auto fill = [](int count, const char* only) {
        return [=](DataContainer& entries) {
            entries.GetSubData({"Notes", "Deep"}, true)->PutValue("Count", count);
            entries.PutValue(only, std::string("text"));
            only[0] == 'a' ? entries.PutValue("Number", 7) : entries.PutValue("Number", std::int64_t{7});
            entries.Put("List", std::make_shared<Array<double>>(static_cast<std::size_t>(count)));
        };
    };
    const std::string a = Save("a.dataset", {}, fill(1, "a")), b = Save("b.dataset", {}, fill(2, "b"));
    const Outcome outcome = RunWords({"diff", a, b});
    EXPECT_EQ(outcome.status, 1) << outcome.err;
    EXPECT_EQ(outcome.out, "Notes/Deep/Count: 1, 2\nList: a Array_double, of another value\nonly in A: a: text\n"
                           "only in B: b: text\nnote: Number: the values are of types int32, int64\n");
    EXPECT_EQ(RunWords({"diff", a, b, "--data"}).out, "");
    const Json json = Json::parse(RunWords({"diff", "--json", a, b}).out);
    EXPECT_EQ(json["values"][0].dump(), R"({"path":["Notes","Deep","Count"],"a":"1","b":"2"})");
    EXPECT_EQ(json["same"], false);
    ExpectError({"diff", a, b, "--tol", "5 parsec"},
                "Expected a tolerance as 0.1nm or \"5 um\" behind --tol, found 5 p");
}

TEST_F(CompareTest, HashesWhatIsMeantInWhateverForm) {
    const std::string expected = HashOf({});
    EXPECT_EQ(expected, "b0bb924eaf3ad04449106ef92ec3a388  Surface\n3a01492857febc51f607ff0df80c862a  all\n");
    const auto setFirst = [](double to) { return [=](double& first, double&) { first = to; }; };
    EXPECT_EQ(HashOf({}, "hashed.dataset"), expected);
    EXPECT_EQ(HashOf({.scale{1e-6, "Meter"}, .spacing{2.5e-6, "Meter"}, .kind = "Phase", .isFloat = true}), expected);
    EXPECT_EQ(HashOf({.change = setFirst(-0.0)}), HashOf({.change = setFirst(0)}));
    for (const Sample& other : {Sample{.rows = 4}, Sample{.scale{1e-6, "Second"}}, Sample{.spacing{2.5, "Second"}},
                                Sample{.spacing{2.6, "Micrometer"}}, Sample{.change = setFirst(1)}})
        EXPECT_NE(HashOf(other), expected);
    // Names and their order do not count for all of them.
    const auto hashBoth = [&](const char* first, const char* second) {
        const auto add = [&](DataContainer& entries) { entries.Put(second, Sample{.rows = 4}.Make()); };
        return Json::parse(RunWords({"hash", "--json", Save("both.dataset", {.key = first}, add)}).out);
    };
    EXPECT_EQ(hashBoth("x", "y")["all"], hashBoth("y", "x")["all"]);
    EXPECT_EQ(hashBoth("x", "y")["measured"][0]["hash"], expected.substr(0, 32));
    WriteStored("01000000 'g' 06 05000000");
    ExpectError({"hash", file}, "Expected a surface or a profile, found none");
}

} // namespace Qor::Tivor::Testing
