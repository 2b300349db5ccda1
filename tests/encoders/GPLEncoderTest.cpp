// The GPL log writer: a line's bytes from the columns, the line count over files, the name,
// the failure paths and the extensions the tool turns on.
#include <gtest/gtest.h>

#include <filesystem>

#include "core/Enums.h"
#include "encoders/tnwGPLEncoder.h"
#include "ogc_sf/Geometries.h"
#include "support/TestSupport.h"

namespace tnw {
namespace {

const std::string kHeader =
    "GPL11\r\nTime , Latitude, Longitude, Elevation, SampleID, GPSQuality, Hoffset, HOffsetDir, "
    "RecordID, GPSSpeed, GPSHeading, Rate(RX), Rate(Actual), Swath(Actual)\r\n\r\n";

// Each case is a file of its own from one encoder, so SampleID (field 5) goes on counting. A
// line that fails leaves nothing; the count moves all the same.
TEST(GPLEncoderTest, LinesFromTheColumns) {
    test::ScopedCapture capture;
    test::TempDir dir;
    using Values = std::vector<std::pair<std::string, Variant>>;
    const std::vector<std::pair<Values, std::string>> vCases = {
        {{{"UTC", 86461.0},
          {"Latitude", 42.5},
          {"Longitude", -93.25},
          {"Elevation", 300.0},
          {"Heading", 90.0}},
         "61, 42.5,-93.25, 300,1,2,0,x,1,0, 90,0,0,0"},
        {{{"UTC", 86400.0}, {"Latitude", -42.5}}, "0,-42.5,0,0,2,2,0,x,1,0,0,0,0,0"},
        // Half to even, keys in any case, days cut toward zero, the most days that fit.
        {{{"utc", 86400 + 10.5}, {"heading", "1E20"}}, "10,0,0,0,3,2,0,x,1,0, 1E+20,0,0,0"},
        {{{"UTC", -90000.0}}, "-3600,0,0,0,4,2,0,x,1,0,0,0,0,0"},
        {{{"UTC", 24855.0 * 86400 + 5.5}}, "6,0,0,0,5,2,0,x,1,0,0,0,0,0"},
        {{{"UTC", 24856.0 * 86400}}, ""},
        {{{"UTC", "noon"}}, ""},
        {{{"UTC", 1.0}, {"Latitude", "north"}}, ""},
    };
    tnwGPLEncoder enc;
    for (std::size_t i = 0; i < vCases.size(); ++i) {
        auto oList = test::NewColumns();
        for (const auto& [sKey, vValue] : vCases[i].first)
            test::AddColumn(*oList, sKey, vValue.Type(), 16)->SetValue(vValue);
        ASSERT_TRUE(enc.InitializeFile(dir.Path(std::to_string(i)), oList));
        EXPECT_EQ(enc.Update(), !vCases[i].second.empty());
        enc.CloseFiles();
        const std::string& sLine = vCases[i].second;
        EXPECT_EQ(test::ReadFile(dir.Path(std::to_string(i))),
                  kHeader + sLine + (sLine.empty() ? "" : "\r\n"));
    }
    EXPECT_FALSE(enc.Update());  // closed
    EXPECT_EQ(capture.vReports.size(), 4u);

    // An extension is dropped and none put in its place, a bare name stays where it is; the
    // tool's extensions keep the name, take the position from a held point and put the records
    // in one start/stop stretch. A failed open shows the box alone.
    const auto oCurrent = std::filesystem::current_path();
    std::filesystem::current_path(dir.Root());
    auto oList = test::NewColumns();
    test::AddColumn(*oList, "Latitude", vtDouble, 16)->SetValue(1.0);
    for (const auto& [sGiven, sOpened, bTool] :
         {std::tuple{"a.b.gpl", "a.b", false}, {"sub", "sub", false}, {"t.gpl", "t.gpl", true}}) {
        tnwGPLEncoder oNamed;
        oNamed.SetKeepExtension(bTool);
        oNamed.SetPositionFromPoint(bTool);
        oNamed.SetWriteStartStop(bTool);
        ASSERT_TRUE(oNamed.Initialize(sGiven, oList) && oNamed.Filename() == sOpened);
        oNamed.SetGeometry(standins::Point::Create(-93.25, 42.5));
        EXPECT_TRUE(oNamed.Update());
        EXPECT_FALSE(oNamed.Initialize("no/folder/log.gpl", oList));
        EXPECT_EQ(test::ReadFile(sOpened),
                  kHeader + (bTool ? "STAR\r\n0, 42.5,-93.25,0,1,2,0,x,1,0,0,0,0,0\r\nSTOP\r\n"
                                   : "0, 1,0,0,1,2,0,x,1,0,0,0,0,0\r\n"));
    }
    std::filesystem::current_path(oCurrent);
    ASSERT_EQ(capture.vBoxes.size(), 3u);
    EXPECT_EQ(capture.vBoxes[0].sTitle + capture.vBoxes[0].sText.substr(0, 21),
              "Ascii ErrorError: File not found");
}

}  // namespace
}  // namespace tnw
