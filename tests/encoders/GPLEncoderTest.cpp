// The GPL log writer: the bytes of a line for the values it takes from columns, the line count
// over several files, the naming rule, and the failure paths.
#include <gtest/gtest.h>

#include <filesystem>
#include <limits>

#include "core/Enums.h"
#include "core/Error.h"
#include "encoders/tnwGPLEncoder.h"
#include "gislib/MemoryRecordSource.h"
#include "ogc_sf/Geometries.h"
#include "ogc_sf/WKT.h"
#include "support/TestSupport.h"

namespace tnw {
namespace {

using test::NewColumns;

const std::string kHeader =
    "GPL11\r\nTime , Latitude, Longitude, Elevation, SampleID, GPSQuality, Hoffset, HOffsetDir, "
    "RecordID, GPSSpeed, GPSHeading, Rate(RX), Rate(Actual), Swath(Actual)\r\n\r\n";

using Values = std::vector<std::pair<std::string, Variant>>;

class GPLEncoderTest : public ::testing::Test {
protected:
    static std::shared_ptr<tnwColumns> ColumnsOf(const Values& vValues) {
        auto oList = NewColumns();
        for (const auto& [sKey, vValue] : vValues) {
            const std::int32_t lType = vValue.Type() == vtString ? vtString : vtDouble;
            test::AddColumn(*oList, sKey, lType, 16, 4)->SetValue(vValue);
        }
        return oList;
    }
    std::vector<std::int32_t> ReportedNumbers() const {
        std::vector<std::int32_t> vNumbers;
        for (const auto& r : capture.vReports) {
            EXPECT_EQ(r.sSource, "tnwGPLEncoder.Update");
            vNumbers.push_back(r.lNumber);
        }
        return vNumbers;
    }

    test::ScopedCapture capture{0};
    test::TempDir dir;
};

// Each case is a file of its own from one encoder, so the SampleID field (5th) goes on counting
// from file to file.
TEST_F(GPLEncoderTest, LinesFromTheColumns) {
    struct Case {
        Values vValues;
        std::string sLine;
    };
    const std::vector<Case> vCases = {
        {{{"UTC", 86461.0},
          {"Latitude", 42.5},
          {"Longitude", -93.25},
          {"Elevation", 300.0},
          {"Heading", 90.0}},
         "61, 42.5,-93.25, 300,1,2,0,x,1,0, 90,0,0,0"},
        {{{"UTC", 86400.0}}, "0,0,0,0,2,2,0,x,1,0,0,0,0,0"},
        {{{"UTC", 86399.0}}, "86399,0,0,0,3,2,0,x,1,0,0,0,0,0"},
        {{{"Latitude", -42.5}, {"Longitude", 0.5}}, "0,-42.5, .5,0,4,2,0,x,1,0,0,0,0,0"},
        {{{"Yield", 180.0}, {"Crop", "Corn"}}, "0,0,0,0,5,2,0,x,1,0,0,0,0,0"},
        // The seconds of the day round half to even; the days are cut toward zero.
        {{{"UTC", 3 * 86400 + 10.5}}, "10,0,0,0,6,2,0,x,1,0,0,0,0,0"},
        {{{"UTC", 3 * 86400 + 11.5}}, "12,0,0,0,7,2,0,x,1,0,0,0,0,0"},
        {{{"UTC", -90000.0}}, "-3600,0,0,0,8,2,0,x,1,0,0,0,0,0"},
        // The largest number of days whose seconds fit 32 bits.
        {{{"UTC", 24855.0 * 86400 + 5}}, "5,0,0,0,9,2,0,x,1,0,0,0,0,0"},
        // Keys are found whatever their case; a number in text is written as that number.
        {{{"utc", "86401"}, {"LATITUDE", "42.25"}, {"heading", 1e20}},
         "1, 42.25,0,0,10,2,0,x,1,0, 1E+20,0,0,0"},
    };
    tnwGPLEncoder enc;
    for (std::size_t i = 0; i < vCases.size(); ++i) {
        SCOPED_TRACE(vCases[i].sLine);
        const std::string sName = dir.Path("log" + std::to_string(i));
        ASSERT_TRUE(enc.InitializeFile(sName, ColumnsOf(vCases[i].vValues)));
        EXPECT_TRUE(enc.Update());
        enc.CloseFiles();
        EXPECT_EQ(test::ReadFile(sName), kHeader + vCases[i].sLine + "\r\n");
    }
    EXPECT_TRUE(capture.vReports.empty());
}

// A failing line leaves nothing in the file, the counter moves all the same.
TEST_F(GPLEncoderTest, FailedLinesWriteNothingAndAreReported) {
    auto oList = ColumnsOf({{"UTC", 0.0}, {"Latitude", 1.0}});
    auto oUTC = oList->Item("UTC");
    auto oLatitude = oList->Item("Latitude");
    tnwGPLEncoder enc;
    EXPECT_FALSE(enc.Update());  // nothing open
    ASSERT_TRUE(enc.Initialize(dir.Path("bad.gpl"), oList));
    oUTC->SetValue(24856.0 * 86400);  // the days overflow 32 bits
    EXPECT_FALSE(enc.Update());
    oUTC->SetValue(std::numeric_limits<double>::quiet_NaN());
    EXPECT_FALSE(enc.Update());
    oUTC->SetValue("noon");
    EXPECT_FALSE(enc.Update());
    oUTC->SetValue(-24855.0 * 86400 - 7);
    oLatitude->SetValue("north");  // a later field fails after the earlier ones were built
    EXPECT_FALSE(enc.Update());
    oLatitude->SetValue(2.0);
    EXPECT_TRUE(enc.Update());
    enc.CloseFiles();
    EXPECT_FALSE(enc.Update());
    ASSERT_TRUE(enc.InitializeFile(dir.Path("nocols"), nullptr));
    EXPECT_FALSE(enc.Update());
    EXPECT_EQ(test::ReadFile(dir.Path("bad")), kHeader + "-7, 2,0,0,6,2,0,x,1,0,0,0,0,0\r\n");
    EXPECT_EQ(ReportedNumbers(),
              (std::vector<std::int32_t>{errObjectNotSet, errOverflow, errOverflow, errTypeMismatch,
                                         errTypeMismatch, errBadFileNumber, errObjectNotSet}));
    EXPECT_TRUE(capture.vBoxes.empty());
}

TEST_F(GPLEncoderTest, AnExtensionIsDroppedAndNoneAdded) {
    struct Case {
        std::string sGiven, sOpened;
        bool bKeepExtension = false;
    };
    const std::string sDir = dir.Path("");
    const std::vector<Case> vCases = {
        {sDir + "field.gpl", sDir + "field"},
        {sDir + "field", sDir + "field"},
        {sDir + "a.b.txt", sDir + "a.b"},
        {sDir + "kept.gpl", sDir + "kept.gpl", true},
        // A bare name stays in the current folder.
        {"bare.GPL", "bare"},
    };
    const auto oCurrent = std::filesystem::current_path();
    std::filesystem::current_path(dir.Root());
    for (const Case& c : vCases) {
        tnwGPLEncoder enc;
        enc.SetKeepExtension(c.bKeepExtension);
        EXPECT_TRUE(enc.Initialize(c.sGiven, NewColumns()));
        EXPECT_EQ(enc.Filename(), c.sOpened);
        enc.CloseFiles();
        EXPECT_EQ(test::ReadFile(c.sOpened), kHeader) << c.sOpened;
    }
    std::filesystem::current_path(oCurrent);
}

// A failed open is told by the box alone, also outside debug mode; the old name stays.
TEST_F(GPLEncoderTest, OpenFailuresShowTheAsciiErrorBox) {
    tnwGPLEncoder enc;
    ASSERT_TRUE(enc.Initialize(dir.Path("first"), NewColumns()));
    EXPECT_FALSE(enc.Initialize(dir.Path("no/such/folder/log.gpl"), NewColumns()));
    EXPECT_EQ(enc.Filename(), dir.Path("first"));
    EXPECT_FALSE(enc.Update());
    ASSERT_EQ(capture.vBoxes.size(), 1u);
    EXPECT_EQ(capture.vBoxes[0].sTitle, "Ascii Error");
    EXPECT_EQ(capture.vBoxes[0].sText, "Error: " + StandardDescription(errFileNotFound) + ": " +
                                           dir.Path("no/such/folder/log"));
    EXPECT_EQ(capture.vBoxes[0].eIcon, platform::MsgIcon::Exclamation);
    EXPECT_EQ(ReportedNumbers(), std::vector<std::int32_t>{errBadFileNumber});

    // Without a file utility the name can't be settled: the error path of Initialize.
    auto fnFileUtility = tnwObjectFactory::Register(kProgIdFileUtility, nullptr);
    const bool bResult = enc.Initialize(dir.Path("x.gpl"), NewColumns());
    tnwObjectFactory::Register(kProgIdFileUtility, fnFileUtility);
    EXPECT_FALSE(bResult);
    ASSERT_EQ(capture.vReports.size(), 2u);
    EXPECT_EQ(capture.vReports[1].sSource, "tnwGPLEncoder.Initialize");
    EXPECT_EQ(capture.vReports[1].lNumber, errCantCreateObject);
}

// The same records through the interface, by ImportRS and by hand give the same file; the
// geometry plays no part and stays held after Update.
TEST_F(GPLEncoderTest, InterfaceAndImportRS) {
    auto oList = ColumnsOf({{"UTC", 0.0}, {"Latitude", 0.0}});
    auto oRS = std::make_shared<standins::MemoryRecordSource>(oList, tnwGeometryPoint);
    oRS->AddRow({86401.0, 42.5}, standins::Point::Create(1, 2));
    oRS->AddRow({86402.0, -1.0}, nullptr);
    const std::string sLines =
        kHeader + "1, 42.5,0,0,1,2,0,x,1,0,0,0,0,0\r\n2,-1,0,0,2,2,0,x,1,0,0,0,0,0\r\n";

    tnwGPLEncoder oDirect;
    EXPECT_FALSE(oDirect.ImportRS(dir.Path("none"), nullptr));
    ASSERT_TRUE(oDirect.ImportRS(dir.Path("direct"), oRS, false));
    oDirect.CloseFiles();

    tnwGPLEncoder oThroughInterface;
    ItnwEncoder& oInterface = oThroughInterface;
    ASSERT_TRUE(oInterface.Initialize(dir.Path("interface"), oList));
    for (oRS->MoveFirst(); !oRS->Eof(); oRS->MoveNext()) {
        oInterface.SetGeometry(oRS->Geometry());
        oInterface.Update();
    }
    EXPECT_EQ(oInterface.Columns(), oList);
    EXPECT_EQ(oInterface.Filename(), dir.Path("interface"));
    oInterface.CloseFiles();
    EXPECT_EQ(test::ReadFile(dir.Path("direct")), sLines);
    EXPECT_EQ(test::ReadFile(dir.Path("interface")), sLines);
}

// What the tool turns on: the position from a held point (the columns without one), and one
// start/stop stretch around the records.
TEST_F(GPLEncoderTest, PositionFromPointAndStartStopLines) {
    auto oList = ColumnsOf({{"Latitude", 1.0}, {"Longitude", 2.0}});
    tnwGPLEncoder enc;
    enc.SetPositionFromPoint(true);
    enc.SetWriteStartStop(true);
    ASSERT_TRUE(enc.Initialize(dir.Path("p"), oList));
    EXPECT_TRUE(enc.Update());  // no geometry: the columns
    enc.SetGeometry(standins::Point::Create(-93.25, 42.5));
    EXPECT_TRUE(enc.Update());
    EXPECT_TRUE(enc.Update());  // the point stays held
    enc.SetGeometry(standins::ParseWKT("LINESTRING (5 6,7 8)"));
    EXPECT_TRUE(enc.Update());
    enc.CloseFiles();
    enc.CloseFiles();
    EXPECT_EQ(test::ReadFile(dir.Path("p")), kHeader +
                                                 "STAR\r\n"
                                                 "0, 1, 2,0,1,2,0,x,1,0,0,0,0,0\r\n"
                                                 "0, 42.5,-93.25,0,2,2,0,x,1,0,0,0,0,0\r\n"
                                                 "0, 42.5,-93.25,0,3,2,0,x,1,0,0,0,0,0\r\n"
                                                 "0, 1, 2,0,4,2,0,x,1,0,0,0,0,0\r\n"
                                                 "STOP\r\n");
}

}  // namespace
}  // namespace tnw
