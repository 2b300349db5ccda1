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
using test::NewColumns;

constexpr const char* kHeadStart =
    "[HEADER]\r\nFileType=PlanGridData\r\nVersion=01.00.00\r\n"
    "Format=Sequencenumber; P; Polygon number; Point number; Longitude; Latitude; "
    "Application rate\r\n";
constexpr const char* kUnits = "UnitCode=102\r\nUnitText=kg/ha\r\n[DATA]\r\n";

// The whole file from its changing header values and its data lines.
std::string PlanText(const std::string& sLonMin, const std::string& sLatMin, int nPolygons,
                     const std::string& sRateMin, const std::string& sRateMax, int nPoints,
                     const std::string& sData) {
    return std::string(kHeadStart) + "GpsLongitudeMin=" + sLonMin +
           "\r\nGpsLatitudeMin=" + sLatMin + "\r\nNumberOfPolygons=" + std::to_string(nPolygons) +
           "\r\nRateMin=" + sRateMin + "\r\nRateMax=" + sRateMax +
           "\r\nNumberOfPoints=" + std::to_string(nPoints) + "\r\n" + kUnits + sData + "[END]\r\n";
}

const std::string kEmptyPlan =
    PlanText("180. 0", "90. 0", 0, " 999999999999", "-99999999999", 0, "\r\n");

struct Record {
    Variant vRate;
    std::shared_ptr<IGeometry> oGeometry;  // nothing: no SetGeometry before this Update
    Record(Variant vRateIn, const char* sWKT)
        : vRate(std::move(vRateIn)), oGeometry(*sWKT ? ParseWKT(sWKT) : nullptr) {}
    Record(Variant vRateIn, std::shared_ptr<IGeometry> oGeometryIn)
        : vRate(std::move(vRateIn)), oGeometry(std::move(oGeometryIn)) {}
};

class FSEncoderTest : public ::testing::Test {
protected:
    FSEncoderTest() {
        oColumns = NewColumns();
        oRate =
            oColumns->Add("Rate", "", "", vtDouble, 12, 3, tnwFlagNumeric, 1, 0, "", true, true);
        oName = oColumns->Add("Name", "", "", vtString, 20, 0, tnwFlagText, 1, 0, "", true, true);
    }

    std::string Path(const std::string& sName) { return dir.Path(sName); }

    // Feeds the records, one Update each, each expected to give true; gives the file's text.
    std::string Write(const std::vector<Record>& vRecords, bool bSigned = false) {
        tnwFSEncoder enc;
        enc.SetSignedZeroDegrees(bSigned);
        const std::string sName = Path("p" + std::to_string(++m_nFiles));
        EXPECT_TRUE(enc.Initialize(sName, oColumns, "Rate"));
        for (const Record& r : vRecords) {
            oRate->SetValue(r.vRate);
            if (r.oGeometry) enc.SetGeometry(r.oGeometry);
            EXPECT_TRUE(enc.Update());
        }
        enc.CloseFiles();
        return test::ReadFile(sName + ".fpd");
    }

    // The one data line of a one-point ring at (dX, dY).
    std::string Line(double dX, double dY, Variant vRate, bool bSigned = false) {
        auto oRing = std::make_shared<standins::Polygon>(
            std::vector<std::vector<standins::Coordinate>>{{{dX, dY}, {dX, dY}}});
        const std::string sText = Write({{std::move(vRate), oRing}}, bSigned);
        const std::size_t nStart = sText.find("[DATA]\r\n") + 8;
        return sText.substr(nStart, sText.find("\r\n", nStart) - nStart);
    }

    std::vector<std::string> Sources() const {
        std::vector<std::string> v;
        for (const auto& r : capture.vReports)
            v.push_back(r.sSource + " " + std::to_string(r.lNumber));
        return v;
    }

    test::ScopedCapture capture{0};
    test::TempDir dir;
    std::shared_ptr<tnwColumns> oColumns;
    std::shared_ptr<tnwColumn> oRate, oName;
    int m_nFiles = 0;
};

TEST_F(FSEncoderTest, DataLineTextForms) {
    struct Case {
        double dX, dY;
        Variant vRate;
        bool bSigned;
        const char* sLine;
    };
    const Case aCases[] = {
        {-96.5, 40.25, 120.125, false, "1; P; 1; -96. 30; 40. 15;  120.12"},
        {12.3456, 7.0025, 0.5, false, "1; P; 1; 12. 20.736; 7. .15;  .5"},
        {0, 0, -3.255, false, "1; P; 1; 0. 0; 0. 0; -3.26"},
        {179.999999999, -89.75, std::int32_t{7}, false, "1; P; 1; 179. 60; -89. 45;  7"},
        {-0.5, -0.25, 1e20, false, "1; P; 1; 0. 30; 0. 15;  1E+20"},
        {-0.5, -0.25, "2.5", true, "1; P; 1; -0. 30; -0. 15;  2.5"},
        {-1.5, 0.5, Variant(), true, "1; P; 1; -1. 30; 0. 30;  0"},
    };
    for (const Case& c : aCases)
        EXPECT_EQ(Line(c.dX, c.dY, c.vRate, c.bSigned), c.sLine) << c.dX << " " << c.dY;
    EXPECT_TRUE(capture.vReports.empty());
}

TEST_F(FSEncoderTest, WholeFiles) {
    struct Case {
        std::vector<Record> vRecords;
        std::string sFile;
    };
    const Case aCases[] = {
        {{}, kEmptyPlan},
        {{{120.125, "POLYGON ((-96.5 40.25,-96.25 40.25,-96.25 40.5,-96.5 40.25))"}},
         PlanText("-96. 30", "40. 15", 1, " 120.12", " 120.12", 3,
                  "1; P; 1; -96. 30; 40. 15;  120.12\r\n2; P; 1; -96. 15; 40. 15;  120.12\r\n"
                  "3; P; 1; -96. 15; 40. 30;  120.12\r\n")},
        // Parts numbered one by one with one rate; the hole and the closing points left out.
        {{{10.5,
           "MULTIPOLYGON (((1 1,2 1,2 2,1 2,1 1),(1.2 1.2,1.4 1.2,1.4 1.4,1.2 1.2)),"
           "((5 5,6 5,6 6,5 5)))"}},
         PlanText("1. 0", "1. 0", 2, " 10.5", " 10.5", 7,
                  "1; P; 1; 1. 0; 1. 0;  10.5\r\n2; P; 1; 2. 0; 1. 0;  10.5\r\n"
                  "3; P; 1; 2. 0; 2. 0;  10.5\r\n4; P; 1; 1. 0; 2. 0;  10.5\r\n"
                  "5; P; 2; 5. 0; 5. 0;  10.5\r\n6; P; 2; 6. 0; 5. 0;  10.5\r\n"
                  "7; P; 2; 6. 0; 6. 0;  10.5\r\n")},
        // A point and a line write nothing but count their rates; an empty rate is 0; a ring
        // of one point is a polygon with no lines; no geometry counts the rate.
        {{{-4.0, "POINT (1 1)"},
          {300.0, "LINESTRING (0 0,1 1)"},
          {Variant(), "POLYGON ((3 4))"},
          {50.0, ""}},
         PlanText("180. 0", "90. 0", 1, "-4", " 300", 0, "\r\n")},
    };
    for (const Case& c : aCases)
        EXPECT_EQ(Write(c.vRecords), c.sFile);
    EXPECT_TRUE(capture.vReports.empty());
}

// Only a numeric rate column lets Update work; until then the geometry stays held.
TEST_F(FSEncoderTest, RateColumnRules) {
    tnwFSEncoder enc;
    EXPECT_EQ(test::ErrorNumberOf([&] { enc.SetRateColumnKey("rate"); }), errObjectNotSet);
    EXPECT_EQ(enc.RateColumnKey(), "rate");  // stored though the let failed
    ASSERT_TRUE(enc.Initialize(Path("rules"), oColumns, "Missing"));
    EXPECT_EQ(enc.RateColumnKey(), "Missing");
    enc.SetGeometry(ParseWKT("POLYGON ((1 1,2 1,2 2,1 1))"));
    oRate->SetValue(9.0);
    EXPECT_FALSE(enc.Update());
    enc.SetRateColumnKey("NAME");
    EXPECT_EQ(enc.RateColumnKey(), "Name");  // the column's own spelling
    oName->SetValue("20");
    EXPECT_FALSE(enc.Update());
    enc.SetRateColumnKey("rate");
    EXPECT_TRUE(enc.Update());  // the geometry held since the first call
    EXPECT_TRUE(enc.Update());  // now let go: the rate counts, nothing is written
    oRate->SetValue("not a number");
    EXPECT_FALSE(enc.Update());
    // An empty key keeps the one set before.
    enc.CloseFiles();
    ASSERT_TRUE(enc.Initialize(Path("rules2"), oColumns));
    EXPECT_EQ(enc.RateColumnKey(), "Rate");
    enc.CloseFiles();
    EXPECT_EQ(test::ReadFile(Path("rules.fpd")),
              PlanText("1. 0", "1. 0", 1, " 9", " 9", 3,
                       "1; P; 1; 1. 0; 1. 0;  9\r\n2; P; 1; 2. 0; 1. 0;  9\r\n"
                       "3; P; 1; 2. 0; 2. 0;  9\r\n"));
    EXPECT_EQ(Sources(), std::vector<std::string>{"tnwFSEncoder.Update 13"});
}

TEST_F(FSEncoderTest, ThroughTheEncoderInterface) {
    auto oRS = std::make_shared<standins::MemoryRecordSource>(oColumns, 3);
    oRS->AddRow({2.0, "a"}, ParseWKT("POLYGON ((1 1,2 1,2 2,1 1))"));
    oRS->AddRow({3.0, "b"}, nullptr);

    tnwFSEncoder enc;
    ItnwEncoder& iface = enc;
    EXPECT_FALSE(iface.ImportRS(Path("none"), nullptr));
    EXPECT_FALSE(std::filesystem::exists(Path("none.fpd")));
    // With no key set, the interface's import finds no rate column: a file with no records.
    EXPECT_TRUE(iface.ImportRS(Path("nokey"), oRS));
    EXPECT_EQ(test::ReadFile(Path("nokey.fpd")), kEmptyPlan);
    // A key set before stays in force through the interface, and ImportRS closes the file.
    ASSERT_TRUE(enc.Initialize(Path("first.txt"), oColumns, "rate"));
    EXPECT_EQ(iface.Filename(), Path("first.txt"));
    iface.CloseFiles();
    EXPECT_TRUE(iface.ImportRS(Path("import"), oRS));
    EXPECT_EQ(test::ReadFile(Path("import.fpd")),
              PlanText("1. 0", "1. 0", 1, " 2", " 3", 3,
                       "1; P; 1; 1. 0; 1. 0;  2\r\n2; P; 1; 2. 0; 1. 0;  2\r\n"
                       "3; P; 1; 2. 0; 2. 0;  2\r\n"));
    EXPECT_FALSE(iface.ChangeColumns(oColumns));
    EXPECT_TRUE(iface.Initialize(Path("iface"), oColumns));
    EXPECT_EQ(iface.Columns(), oColumns);
    iface.SetGeometry(ParseWKT("POLYGON ((4 4,5 4,4 4))"));
    iface.Update();
    iface.CloseFiles();
    iface.CloseFiles();  // twice does no harm
    EXPECT_EQ(test::ReadFile(Path("iface.fpd")),
              PlanText("4. 0", "4. 0", 1, " 3", " 3", 2,
                       "1; P; 1; 4. 0; 4. 0;  3\r\n2; P; 1; 5. 0; 4. 0;  3\r\n"));
    EXPECT_TRUE(capture.vReports.empty());
}

TEST_F(FSEncoderTest, FailurePaths) {
    {
        // A file that can't be created: no report then, one at each CloseFiles after.
        tnwFSEncoder enc;
        EXPECT_FALSE(enc.Initialize(Path("no/such/folder/plan"), oColumns, "Rate"));
        EXPECT_TRUE(capture.vReports.empty());
        enc.CloseFiles();
        // A later file works, and its close finishes it.
        ASSERT_TRUE(enc.Initialize(Path("later"), oColumns));
        oRate->SetValue(1.0);
        // A coordinate with no text fails its point alone: no part of a line, no gap.
        enc.SetGeometry(
            std::make_shared<standins::Polygon>(std::vector<std::vector<standins::Coordinate>>{
                {{std::numeric_limits<double>::infinity(), 1}, {2, 2}, {1, 1}}}));
        EXPECT_TRUE(enc.Update());
        // Initialising an open encoder finishes its plan first.
        ASSERT_TRUE(enc.Initialize(Path("again"), oColumns));
        EXPECT_EQ(test::ReadFile(Path("later.fpd")),
                  PlanText("180. 0", "90. 0", 1, " 1", " 1", 0, "\r\n"));
    }  // the destructor closes "again"
    EXPECT_EQ(test::ReadFile(Path("again.fpd")), kEmptyPlan);
    {
        // A write that fails at close leaves the file without "[END]" and is reported; the
        // next close reports again and writes nothing more.
        tnwFSEncoder enc;
        ASSERT_TRUE(enc.Initialize(Path("full"), oColumns, "Rate"));
        const auto tSaved = platform::Sys().write;
        platform::Sys().write = [](int, const void*, std::size_t) -> ssize_t {
            errno = ENOSPC;
            return -1;
        };
        enc.CloseFiles();
        platform::Sys().write = tSaved;
        enc.CloseFiles();
    }
    EXPECT_EQ(test::ReadFile(Path("full.fpd")), "");
    EXPECT_EQ(Sources(),
              (std::vector<std::string>{"tnwFSEncoder.CloseFiles 52", "tnwFSEncoder.WriteOnePoly 6",
                                        "tnwFSEncoder.CloseFiles 61", "tnwFSEncoder.CloseFiles 52",
                                        "tnwFSEncoder.CloseFiles 52"}));
    // No columns: Initialize reports and gives false; a closed encoder's Update writes nothing.
    tnwFSEncoder enc;
    EXPECT_FALSE(enc.Initialize(Path("nocols"), nullptr));
    EXPECT_FALSE(enc.Update());
    EXPECT_EQ(capture.vReports.back().sSource, "tnwFSEncoder.Initialize");
}

}  // namespace
}  // namespace tnw
