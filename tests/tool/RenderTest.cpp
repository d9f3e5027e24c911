// Pictures and reports of what was measured.
#include "ToolFixture.h"

#include <QorCore/Base64.h>
#include <Tivor/BinaryDataFile.h>
#include <Tivor/Data1D.h>
#include <Tivor/Data2D.h>

#include <Canvas.h>
#include <ColourMap.h>
#include <HeightMap.h>
#include <Html.h>
#include <LinePlot.h>
#include <SampleAxis.h>
#include <cmath>
#include <png.h>
#include <set>

namespace Qor::Tivor::Testing {

namespace {

/// A picture as another program has it.
Tool::Canvas Decode(const std::string& png) {
    png_image image{};
    image.version = PNG_IMAGE_VERSION;
    EXPECT_NE(png_image_begin_read_from_memory(&image, png.data(), png.size()), 0) << image.message;
    image.format = PNG_FORMAT_RGB;
    std::vector<unsigned char> bytes(PNG_IMAGE_SIZE(image));
    EXPECT_NE(png_image_finish_read(&image, nullptr, bytes.data(), 0, nullptr), 0) << image.message;
    Tool::Canvas canvas(static_cast<int>(image.width), static_cast<int>(image.height));
    for (int i = 0; i < canvas.GetWidth() * canvas.GetHeight(); ++i) {
        const unsigned char* const pixel = &bytes[3 * static_cast<std::size_t>(i)];
        canvas.Set(i % canvas.GetWidth(), i / canvas.GetWidth(),
                   static_cast<Tool::Colour>(pixel[0] << 16 | pixel[1] << 8 | pixel[2]));
    }
    return canvas;
}

/// 0 to 5 um in two rows of three, the fourth of which is missing.
std::shared_ptr<Data2D> MakeSurface() {
    RowMajorMatrix<float> heights(2, 3);
    for (std::size_t i = 0; i < 6; ++i)
        heights.data()[i] = i == 3 ? NAN : static_cast<float>(i);
    auto surface = Data2D::Create(MakeData(heights));
    surface->SetDataScale(UnitizedDouble(1.0, "Micrometer"));
    surface->SetDataKind("<b>&'\"");
    return surface;
}

} // namespace

TEST_F(ToolTest, DrawsHeightMaps) {
    const auto surface = MakeSurface();
    const struct {
        double dy, dx;
        int longSide, width, height;
    } rows[] = {{1, 1, 300, 300, 200}, {1, 1, 299, 297, 198}, {4, 1, 300, 111, 296}, {1, 100, 100, 100, 1}};
    for (const auto& row : rows) {
        surface->SetFixedSpacing(UnitizedDouble(1000 * row.dy, "Nanometer"), UnitizedDouble(row.dx, "Micrometer"));
        const Tool::Picture picture = Tool::DrawHeightMap(*surface, "", row.longSide);
        EXPECT_EQ(picture.plot.width, row.width);
        EXPECT_EQ(picture.plot.height, row.height);
    }
    surface->SetFixedSpacing(UnitizedDouble(1.0, "Meter"), UnitizedDouble(1.0, "Meter"));
    const Tool::Picture picture = Tool::DrawHeightMap(*surface, "title", 300);
    const auto at = [&](int x, int y) { return picture.canvas.Get(picture.plot.x + x, picture.plot.y + y); };
    EXPECT_EQ(at(0, 0), 0x440154u);
    EXPECT_EQ(at(299, 199), 0xFDE725u);
    EXPECT_EQ(at(150, 50), Tool::MapColour(0.2));
    std::set<Tool::Colour> missing;
    for (int i = 4; i < 90; i += 4) { // squares of four pixels, no stripes
        missing.insert(at(i, 150));
        EXPECT_NE(at(i, 150), at(i + 4, 150));
        EXPECT_NE(at(i, 150), at(i, 154));
    }
    EXPECT_EQ(missing, std::set<Tool::Colour>(std::begin(Tool::missingColours), std::end(Tool::missingColours)));
    EXPECT_EQ(Tool::DescribeExtremes(picture.heights), "min 0 \xC2\xB5m, max 5 \xC2\xB5m");
}

TEST_F(ToolTest, GivesColoursToMostPointsWhereFewLieFarAway) {
    RowMajorMatrix<double> heights(100, 100);
    for (std::size_t i = 0; i < 10000; ++i)
        heights.data()[i] = static_cast<double>(i % 100);
    for (const double outlier : {900.0, 1100.0}) {
        heights.data()[0] = outlier;
        const auto shown = Tool::DrawHeightMap(Data2D(MakeData(heights)), "", 100).heights;
        EXPECT_EQ(shown.isClipped, outlier > 1000);
        EXPECT_EQ(shown.to, outlier > 1000 ? 99 : outlier);
    }
}

TEST_F(ToolTest, FindsTheNearestOfUnevenPositions) {
    const auto positions = AllocateArray<double>(4);
    for (const bool isReversed : {false, true}) {
        for (std::size_t i = 0; i < 4; ++i)
            positions.get()[isReversed ? 3 - i : i] = std::vector<double>{0, 1, 2, 9}[i];
        Data1D profile;
        profile.SetArrayDataObject(std::make_shared<Array<double>>(AllocateArray<double>(4), 4));
        profile.SetPositionFunction(std::make_shared<ArrayPosition1D>(positions, 4, nullptr));
        const auto axis = Tool::SampleAxis::Of(profile);
        EXPECT_EQ(axis.GetLength(), 12);
        // The length is from -1.5 to 10.5.
        for (const auto& [place, index] :
             std::vector<std::pair<double, std::size_t>>{{-1.4, 0}, {1.4, 1}, {5.4, 2}, {5.6, 3}, {10, 3}})
            EXPECT_EQ(axis.FindIndex((isReversed ? 10.5 - place : place + 1.5) / 12), isReversed ? 3 - index : index);
    }
}

TEST_F(ToolTest, DrawsProfilesWithGaps) {
    RowMajorMatrix<double> row(1, 5);
    for (std::size_t i = 0; i < 5; ++i)
        row.data()[i] = i == 2 ? NAN : 1;
    const Tool::Picture middle = Tool::DrawMiddleRow(Data2D(MakeData(row)), "", 400);
    std::set<int> columns; // with the line
    for (int x = 0; x < middle.plot.width; ++x)
        for (int y = 0; y < middle.plot.height; ++y)
            if (middle.canvas.Get(middle.plot.x + x, middle.plot.y + y) == 0x1F4E9C)
                columns.insert(x);
    EXPECT_EQ(*columns.begin(), 0);
    EXPECT_EQ(*columns.rbegin(), middle.plot.width - 1);
    EXPECT_EQ(*columns.lower_bound(middle.plot.width / 2), std::lround((middle.plot.width - 1) * 0.75));
    EXPECT_EQ(middle.canvas.GetWidth(), 400);
}

TEST_F(ToolTest, WritesPicturesAndReports) {
    {
        BinaryDataFile made(file, DataFile::eREAD_WRITE, DataFile::eCREATE_NEW, nullptr);
        made.GetSubData({"a"}, true)->Put("</pre><script>", ValueTraits<Data2D>::MakeData(MakeSurface()));
        made.Put("c",
                 ValueTraits<Data2D>::MakeData(Data2D::Create(MakeData(RowMajorMatrix<std::complex<double>>(1, 1)))));
        made.Put("none", ValueTraits<Data1D>::MakeData(Data1D::Create()));
        made.Put("note", MakeData(std::string("<i>\x01 & \xFF")));
        made.Flush();
    }
    const std::string png = Name("picture.png");
    const std::string html = Name("report.html");
    const Json told = SayJson("render", {png, "--width", "100"});
    const Tool::Canvas canvas = Decode(ReadFileText(Core::PathName(png)));
    EXPECT_EQ(told["width"], canvas.GetWidth());
    EXPECT_EQ(told["heights"]["missing"], 1);
    EXPECT_EQ(told["path"], Json({"a", "</pre><script>"}));
    EXPECT_EQ(canvas.GetBytes(),
              Tool::DrawHeightMap(*MakeSurface(), "<b>&'\": a/\"</pre><script>\"", 100).canvas.GetBytes());
    EXPECT_EQ(Say("render", {png, "--force", "--profile"}).find("a/\"</pre><script>\": profile, 1000 x "), 0u);
    ExpectError({"render", file, png}, "found one of that name");
    ExpectError({"render", file, Name("x"), "--width", "99"}, "Expected a width from 100 to 8000, found 99");
    for (const auto& [key, said] : std::vector<std::pair<std::string, std::string>>{
             {"c", "real numbers"}, {"none", "with samples"}, {"note", "at note, found none"}, {"no", "no such key"}})
        ExpectError({"render", file, Name("x"), key}, said);

    Say("report", {html});
    const std::string page = ReadFileText(Core::PathName(html));
    EXPECT_EQ(page.find("<script"), std::string::npos);
    EXPECT_EQ(page.find("<i>"), std::string::npos);
    EXPECT_EQ(page.find("://"), std::string::npos);
    EXPECT_NE(page.find("&lt;i&gt;\\x01 &amp; \\xff"), std::string::npos);
    const std::string begin = "src=\"data:image/png;base64,";
    const std::size_t from = page.find(begin) + begin.size();
    const auto bytes = Core::DecodeBase64(page.substr(from, page.find('"', from) - from));
    EXPECT_GT(Decode(bytes.value_or("")).GetWidth(), 900);
    EXPECT_EQ(directory.GetNames(), Words({"data.dataset", "picture.png", "report.html"}));
}

} // namespace Qor::Tivor::Testing
