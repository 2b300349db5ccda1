// The plan-grid encoder: text forms, whole files, the rate column's rules, the encoder
// interface and the failure paths.
#include <gtest/gtest.h>

#include <cerrno>
#include <limits>

#include "core/Error.h"
#include "encoders/tnwFSEncoder.h"
#include "gislib/MemoryRecordSource.h"
#include "ogc_sf/Geometries.h"
#include "ogc_sf/WKT.h"
#include "platform/File.h"
#include "support/TestSupport.h"

namespace tnw {
namespace {

using standins::ParseWKT;

// The whole file from header lines 5 to 10 ("lon|lat|polygons|rate min|rate max|points") and
// the data lines.
std::string Plan(std::string sTotals, const std::string& sData) {
    std::string sHeader =
        "[HEADER]\r\nFileType=PlanGridData\r\nVersion=01.00.00\r\nFormat="
        "Sequencenumber; P; Polygon number; Point number; Longitude; Latitude; "
        "Application rate\r\n";
    for (const char* sName : {"GpsLongitudeMin=", "GpsLatitudeMin=", "NumberOfPolygons=",
                              "RateMin=", "RateMax=", "NumberOfPoints="}) {
        const std::size_t nBar = sTotals.find('|');
        sHeader.append(sName).append(sTotals.substr(0, nBar)).append("\r\n");
        sTotals.erase(0, nBar == std::string::npos ? nBar : nBar + 1);
    }
    return sHeader + "UnitCode=102\r\nUnitText=kg/ha\r\n[DATA]\r\n" + sData + "[END]\r\n";
}

const std::string kEmptyPlan = Plan("180. 0|90. 0|0| 999999999999|-99999999999|0", "\r\n");

class FSEncoderTest : public ::testing::Test {
protected:
    FSEncoderTest() {
        oRate =
            oColumns->Add("Rate", "", "", vtDouble, 12, 3, tnwFlagNumeric, 1, 0, "", true, true);
        oName = oColumns->Add("Name", "", "", vtString, 20, 0, tnwFlagText, 1, 0, "", true, true);
    }

    // One Update per record of (rate, geometry), each giving true; the file's text.
    std::string Write(const std::vector<std::pair<Variant, std::shared_ptr<IGeometry>>>& vRecords,
                      bool bSigned = false) {
        tnwFSEncoder enc;
        enc.SetSignedZeroDegrees(bSigned);
        const std::string sName = dir.Path("p" + std::to_string(++m_nFiles));
        EXPECT_TRUE(enc.Initialize(sName, oColumns, "Rate"));
        for (const auto& [vRate, oGeometry] : vRecords) {
            oRate->SetValue(vRate);
            if (oGeometry) enc.SetGeometry(oGeometry);
            EXPECT_TRUE(enc.Update());
        }
        enc.CloseFiles();
        return test::ReadFile(sName + ".fpd");
    }

    std::vector<std::string> Reports() const {
        std::vector<std::string> v;
        for (const auto& r : capture.vReports)
            v.push_back(r.sSource + " " + std::to_string(r.lNumber));
        return v;
    }

    test::ScopedCapture capture{0};
    test::TempDir dir;
    std::shared_ptr<tnwColumns> oColumns = test::NewColumns();
    std::shared_ptr<tnwColumn> oRate, oName;
    int m_nFiles = 0;
};

TEST_F(FSEncoderTest, WholeFiles) {
    const auto G = [](const char* sWKT) { return ParseWKT(sWKT); };
    // A ring of one point and its closing copy: one data line.
    const auto Dot = [](double dX, double dY) {
        return std::make_shared<standins::Polygon>(
            std::vector<std::vector<standins::Coordinate>>{{{dX, dY}, {dX, dY}}});
    };
    EXPECT_EQ(Write({}), kEmptyPlan);
    // Degrees and minutes, count text, rates rounded half to even.
    EXPECT_EQ(Write({{120.125, Dot(-96.5, 40.25)},
                     {0.5, Dot(12.3456, 7.0025)},
                     {-3.255, Dot(-0.5, -0.25)},
                     {std::int32_t{7}, Dot(179.999999999, -89.75)},
                     {"1e20", Dot(0, 0)}}),
              Plan("-96. 30|-89. 45|5|-3.26| 1E+20|5",
                   "1; P; 1; -96. 30; 40. 15;  120.12\r\n2; P; 2; 12. 20.736; 7. .15;  .5\r\n"
                   "3; P; 3; 0. 30; 0. 15; -3.26\r\n4; P; 4; 179. 60; -89. 45;  7\r\n"
                   "5; P; 5; 0. 0; 0. 0;  1E+20\r\n"));
    EXPECT_NE(Write({{1.0, Dot(-0.5, -0.25)}}, true).find("1; P; 1; -0. 30; -0. 15;  1\r\n"),
              std::string::npos);
    // Parts numbered one by one with one rate; holes and closing points left out.
    EXPECT_EQ(Write({{10.5, G("MULTIPOLYGON (((1 1,2 1,2 2,1 2,1 1),(1.2 1.2,1.4 1.2,1.2 1.2)),"
                              "((5 5,6 5,6 6,5 5)))")}}),
              Plan("1. 0|1. 0|2| 10.5| 10.5|7",
                   "1; P; 1; 1. 0; 1. 0;  10.5\r\n2; P; 1; 2. 0; 1. 0;  10.5\r\n"
                   "3; P; 1; 2. 0; 2. 0;  10.5\r\n4; P; 1; 1. 0; 2. 0;  10.5\r\n"
                   "5; P; 2; 5. 0; 5. 0;  10.5\r\n6; P; 2; 6. 0; 5. 0;  10.5\r\n"
                   "7; P; 2; 6. 0; 6. 0;  10.5\r\n"));
    // A point, a line and no geometry count their rates; an empty rate is 0; a ring of one
    // point is a polygon without lines.
    EXPECT_EQ(Write({{-4.0, G("POINT (1 1)")},
                     {300.0, G("LINESTRING (0 0,1 1)")},
                     {Variant(), G("POLYGON ((3 4))")},
                     {50.0, nullptr}}),
              Plan("180. 0|90. 0|1|-4| 300|0", "\r\n"));
    EXPECT_TRUE(capture.vReports.empty());
}

// Only a numeric rate column lets Update work; until then the geometry stays held. The
// interface keeps the key set before and has no ChangeColumns.
TEST_F(FSEncoderTest, RateColumnAndInterface) {
    tnwFSEncoder enc;
    EXPECT_EQ(test::ErrorNumberOf([&] { enc.SetRateColumnKey("rate"); }), errObjectNotSet);
    EXPECT_EQ(enc.RateColumnKey(), "rate");
    ASSERT_TRUE(enc.Initialize(dir.Path("rules"), oColumns, "Missing"));
    enc.SetGeometry(ParseWKT("POLYGON ((1 1,2 1,1 1))"));
    oRate->SetValue(9.0);
    EXPECT_FALSE(enc.Update());
    enc.SetRateColumnKey("NAME");
    EXPECT_EQ(enc.RateColumnKey(), "Name");
    EXPECT_FALSE(enc.Update());
    enc.SetRateColumnKey("rate");
    EXPECT_TRUE(enc.Update());  // the geometry held since the first call
    oRate->SetValue("not a number");
    EXPECT_FALSE(enc.Update());
    enc.CloseFiles();
    oRate->SetValue(1.0);
    enc.SetGeometry(ParseWKT("POLYGON ((1 1,2 1,1 1))"));
    EXPECT_TRUE(enc.Update());  // closed: the polygon has no text to go to
    EXPECT_EQ(
        test::ReadFile(dir.Path("rules.fpd")),
        Plan("1. 0|1. 0|1| 9| 9|2", "1; P; 1; 1. 0; 1. 0;  9\r\n2; P; 1; 2. 0; 1. 0;  9\r\n"));

    auto oRS = std::make_shared<standins::MemoryRecordSource>(oColumns, 3);
    oRS->AddRow({2.0}, ParseWKT("POLYGON ((4 4,5 4,4 4))"));
    ItnwEncoder& iface = enc;
    EXPECT_FALSE(iface.ImportRS(dir.Path("none"), nullptr));
    EXPECT_TRUE(iface.ImportRS(dir.Path("import.txt"), oRS));  // closed by the import
    EXPECT_EQ(
        test::ReadFile(dir.Path("import.txt")),
        Plan("4. 0|4. 0|1| 2| 2|2", "1; P; 1; 4. 0; 4. 0;  2\r\n2; P; 1; 5. 0; 4. 0;  2\r\n"));
    EXPECT_FALSE(std::filesystem::exists(dir.Path("none.fpd")));
    EXPECT_EQ(Reports(),
              (std::vector<std::string>{"tnwFSEncoder.Update 13", "tnwFSEncoder.WriteOnePoly 91"}));
}

TEST_F(FSEncoderTest, FailurePaths) {
    {
        // A file that can't be created: no report then, one at each CloseFiles after.
        tnwFSEncoder enc;
        EXPECT_FALSE(enc.Initialize(dir.Path("no/such/folder/plan"), oColumns, "Rate"));
        EXPECT_TRUE(capture.vReports.empty());
        enc.CloseFiles();
        ASSERT_TRUE(enc.Initialize(dir.Path("later"), oColumns));
        // A coordinate with no text fails its polygon, leaving no part of a line.
        oRate->SetValue(1.0);
        enc.SetGeometry(
            std::make_shared<standins::Polygon>(std::vector<std::vector<standins::Coordinate>>{
                {{2, 2}, {std::numeric_limits<double>::infinity(), 1}, {2, 2}}}));
        EXPECT_TRUE(enc.Update());
        // Initialising an open encoder finishes its plan first.
        ASSERT_TRUE(enc.Initialize(dir.Path("again"), oColumns));
        EXPECT_EQ(test::ReadFile(dir.Path("later.fpd")),
                  Plan("2. 0|2. 0|1| 1| 1|1", "1; P; 1; 2. 0; 2. 0;  1\r\n"));
    }  // the destructor finishes "again"
    EXPECT_EQ(test::ReadFile(dir.Path("again.fpd")), kEmptyPlan);
    {
        // A close whose writes fail leaves the file without "[END]"; later closes report.
        tnwFSEncoder enc;
        ASSERT_TRUE(enc.Initialize(dir.Path("full"), oColumns, "Rate"));
        const auto tSaved = platform::Sys().write;
        platform::Sys().write = [](int, const void*, std::size_t) -> ssize_t {
            errno = ENOSPC;
            return -1;
        };
        enc.CloseFiles();
        platform::Sys().write = tSaved;
        enc.CloseFiles();
        EXPECT_FALSE(enc.Initialize(dir.Path("nocols"), nullptr));
    }
    EXPECT_EQ(test::ReadFile(dir.Path("full.fpd")), "");
    EXPECT_EQ(Reports(), (std::vector<std::string>{
                             "tnwFSEncoder.CloseFiles 52", "tnwFSEncoder.WriteOnePoly 6",
                             "tnwFSEncoder.CloseFiles 61", "tnwFSEncoder.CloseFiles 52",
                             "tnwFSEncoder.Initialize 91", "tnwFSEncoder.CloseFiles 52"}));
}

}  // namespace
}  // namespace tnw
