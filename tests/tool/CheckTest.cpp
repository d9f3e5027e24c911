// What the tool finds implausible in files of any type.
#include "ToolFixture.h"

#include <Tivor/BinaryDataFile.h>
#include <Tivor/Data2D.h>

#include <cmath>

namespace Qor::Tivor::Testing {

TEST_F(ToolTest, ChecksWhatCannotBeMeant) {
    const UnitizedDouble metre(1, "Meter"), micrometre(1, "Micrometer");
    const double even[] = {1, 2, 4}, turning[] = {0, 2, 1}, unknown[] = {0, 1, NAN};
    const struct {
        double highest;
        UnitizedDouble scale;
        UnitizedDouble spacing;
        const double* positions; // along dimension 2, instead of the spacing
        std::string said;
    } rows[] = {
        {5, micrometre, micrometre, nullptr, ""},
        {5, micrometre, micrometre, even, ""},
        {5, micrometre, {0, "Meter"}, nullptr, "S, dimension 1: expected a finite spacing above 0, found 0 m\n"},
        {5, micrometre, {-1, "Meter"}, nullptr, "S, dimension 1: expected a finite spacing above 0, found -1 m\n"},
        {5, micrometre, {NAN, "Meter"}, nullptr, "S, dimension 1: expected a finite spacing above 0, found nan m\n"},
        {5, micrometre, {1}, nullptr, "S, dimension 1: expected positions with a unit, found none\n"},
        {5, micrometre, metre, nullptr, "S: expected samples along x 1e-12 m to 0.001 m apart, found 1 m, which is"},
        {5, micrometre, micrometre, turning, "S, dimension 2: expected positions in one direction, found some that "},
        {5, micrometre, micrometre, unknown, "S, dimension 2: expected finite positions, found others\n"},
        {5, {0, "Meter"}, micrometre, nullptr, "S, scale: expected a finite scale other than 0, found 0 m\n"},
        {5, metre, micrometre, nullptr, "S: expected lowest and highest point 0 m to 0.1 m apart, found 5 m, which"},
        {5, {1}, micrometre, nullptr, "S, scale: expected a unit, found none\n"},
        {NAN, micrometre, micrometre, nullptr,
         "S: expected points that were measured, found none: all 6 are missing\n"},
    };
    for (const auto& [highest, scale, spacing, positions, said] : rows) {
        RowMajorMatrix<double> heights(2, 3);
        for (std::size_t i = 0; i < 6; ++i)
            heights.data()[i] = static_cast<double>(i) / 5 * highest;
        const auto surface = Data2D::Create(MakeData(heights));
        surface->SetDataScale(scale);
        surface->SetFixedSpacing(spacing, spacing);
        if (positions != nullptr) {
            const auto list = AllocateArray<double>(3);
            std::copy(positions, positions + 3, list.get());
            const auto unit = micrometre.GetUnits()->Clone();
            surface->SetPositionFunction(std::make_shared<ArrayPosition2D>(list, list, 2, 3, unit, unit));
        }
        BinaryDataFile made(file, DataFile::eREAD_WRITE, DataFile::eCREATE_ALWAYS, nullptr);
        made.Put("S", ValueTraits<Data2D>::MakeData(surface));
        made.Flush();
        made.Close();
        const Outcome outcome = Run("check");
        EXPECT_EQ(outcome.status, said.empty() ? 0 : 1) << said << outcome.err;
        EXPECT_TRUE(said.empty() ? outcome.out.empty() : outcome.out.starts_with(said)) << outcome.out << said;
    }
    WriteStored("01000000 'u' 7C 05000000 'Gizmo' 01 02 'xy'");
    const Outcome unread = Run("check");
    EXPECT_EQ(unread.status, 1);
    EXPECT_EQ(unread.err, "");
    EXPECT_NE(unread.out.find("named u failed"), std::string::npos) << unread.out;
    ExpectError({"check", Name("none")}, "found no file of that name");
}

} // namespace Qor::Tivor::Testing
