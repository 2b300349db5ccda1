// tnwFGPDecoder on sets written by the stand-in writer, with hand-built side tables: the walk
// through regions, lines and points, the side tables, times, geometry text and failures.
#include <gtest/gtest.h>
#include <sys/time.h>

#include <cstdio>
#include <ctime>
#include <limits>
#include <vector>

#include "DbfBytes.h"
#include "core/Error.h"
#include "decoders/tnwFGPDecoder.h"
#include "fgp/FGPWriter.h"
#include "support/TestSupport.h"

namespace tnw {
namespace {

using standins::fgp::PointData;
using test::DbfTable;
using Vertices = std::vector<PointData>;

constexpr double kApril15th2006 = 1145059200;  // 2006-04-15 00:00:00 in seconds since 1970

PointData P(double dLon, double dLat, std::int32_t lFSN = 0, std::int32_t lAttribute = 0,
            double dTime = 0.0) {
    PointData t;
    t.dLongitude = dLon;
    t.dLatitude = dLat;
    t.lFSNRecord = lFSN;
    t.lAttributeID = lAttribute;
    t.dTime = dTime;
    return t;
}

struct SetSpec {
    std::vector<Vertices> vRegions, vLines;
    Vertices vPoints;
};

// 2 regions, 3 lines of 4 vertices and 5 points; the vertices and points have longitudes 1 to
// 17, sample rows of the same number and attribute row 1.
SetSpec FieldSet() {
    SetSpec t{{{P(-96.5, 40.25), P(-96.25, 40.25), P(-96.25, 40.5)}, {P(1, 1)}}, {}, {}};
    for (int n = 1; n <= 17; ++n) {
        if (n % 4 == 1 && n < 13) t.vLines.emplace_back();
        (n < 13 ? t.vLines.back() : t.vPoints).push_back(P(n, n < 13 ? 2 : 3, n, 1));
    }
    return t;
}

class FGPDecoderTest : public ::testing::Test {
protected:
    std::string WriteSet(const SetSpec& t, const std::string& sBase = "field") {
        const std::string sPath = oDir.Path(sBase + ".fgp");
        standins::FGPWriter oWriter(sPath);
        for (const auto& v : t.vRegions)
            oWriter.AddRegion(v);
        for (const auto& v : t.vLines)
            oWriter.AddLine(v);
        for (const auto& p : t.vPoints)
            oWriter.AddPoint(p);
        oWriter.Close();
        // Dated midnight of 15 April 2006, local time: the day base of times of day.
        std::tm tLocal{0, 0, 0, 15, 3, 106, 0, 0, -1, 0, nullptr};
        const std::time_t tWhen = std::mktime(&tLocal);
        const timeval aTimes[2] = {{tWhen, 0}, {tWhen, 0}};
        EXPECT_EQ(::utimes(sPath.c_str(), aTimes), 0);
        return sPath;
    }
    void WriteTable(const std::string& sName, const DbfTable& oTable) {
        test::WriteFile(oDir.Path(sName), oTable.Bytes());
    }
    // fnEach's text of every record from MoveFirst to the end, joined by blanks.
    template <class Fn>
    std::string Walk(tnwFGPDecoder& oSet, Fn&& fnEach) {
        std::string sTrace;
        for (bool bOn = oSet.MoveFirst().ToBool(); bOn; bOn = oSet.MoveNext())
            sTrace += (sTrace.empty() ? "" : " ") + std::string(fnEach());
        return sTrace;
    }
    std::string Reports() const {
        std::string s;
        for (const auto& r : oCapture.vReports)
            s += r.sSource + " " + std::to_string(r.lNumber) + "; ";
        return s;
    }

    test::ScopedCapture oCapture;
    test::TempDir oDir;
    tnwFGPDecoder oReader;
};

// Each record as the first letter of its WKT and its longitude.
std::string KindAndLongitude(tnwFGPDecoder& o) {
    return o.WKT().substr(0, 1) + Variant(o.Longitude()).ToText();
}

TEST_F(FGPDecoderTest, WalksRegionsThenLinesThenPointsThroughEmptyPhases) {
    const std::string kSites = "P0 P0 L1 L2 L3 L4 L5 L6 L7 L8 L9 L10 L11 L12 P13 P14 P15 P16 P17";
    const std::string kWhole = "P0 P0 L0 L0 L0 P13 P14 P15 P16 P17";  // lines show no point
    struct Case {
        SetSpec tSet;
        bool bSitesAtFilename, bSitesWalking;
        std::string sTrace;
        double dLastPercent;
    } aCases[] = {
        {FieldSet(), true, true, kSites, 100},
        {FieldSet(), false, false, kWhole, 100},
        // The count is fixed at Filename; the cursor follows AsSites at once.
        {FieldSet(), true, false, kWhole, 1000.0 / 19},
        {FieldSet(), false, true, kSites, 190},
        {{}, true, true, "", 100},
        {{{}, {{}, {P(1, 1), P(2, 2)}, {}, {}, {P(3, 3)}, {}}, {}}, true, true, "L1 L2 L3", 100},
        {{{{}}, {{}}, {P(5, 0)}}, true, true, "P0 P5", 100},
        {{{}, {{}}, {}}, false, false, "L0", 100},
    };
    for (const Case& t : aCases) {
        SCOPED_TRACE(t.sTrace);
        tnwFGPDecoder oSet;
        oSet.SetAsSites(t.bSitesAtFilename);
        oSet.SetFilename(WriteSet(t.tSet));
        oSet.SetAsSites(t.bSitesWalking);
        std::vector<double> vPercent;
        EXPECT_EQ(Walk(oSet,
                       [&] {
                           vPercent.push_back(oSet.PercentComplete());
                           EXPECT_FALSE(oSet.Eof());
                           return KindAndLongitude(oSet);
                       }),
                  t.sTrace);
        if (!vPercent.empty()) {
            EXPECT_DOUBLE_EQ(vPercent.front() * vPercent.size(), t.dLastPercent);
        }
        EXPECT_DOUBLE_EQ(oSet.PercentComplete(), t.dLastPercent);
        EXPECT_TRUE(oSet.Eof());
        EXPECT_FALSE(oSet.MoveNext());
        EXPECT_TRUE(oSet.Eof());
    }
    EXPECT_EQ(Reports(), "");
}

TEST_F(FGPDecoderTest, CursorEdgesAndTheCachedAttributeRow) {
    WriteTable("field.fdt", DbfTable({{"Crop", 'C', 8}}).Row({"corn"}));
    oReader.SetFilename(WriteSet(FieldSet()));
    EXPECT_FALSE(oReader.MoveNext());  // before MoveFirst: nothing, and not the end
    EXPECT_FALSE(oReader.Eof());
    EXPECT_EQ(oReader.WKT(), "");
    EXPECT_EQ(oReader.UTCTime(), 0.0);
    EXPECT_EQ(oReader.AttributeID(), 0);
    EXPECT_EQ(Reports(), "tnwFGPDecoder.ConvertToPoint 91; ");

    Walk(oReader, [] { return ""; });
    EXPECT_EQ(oReader.FDTString(), "corn");
    EXPECT_EQ(oReader.WKT(), "POINT( 17  3)");  // the last point stays current
    // The attribute row of the last point is still loaded: the first point with the same row
    // does not read it again.
    oReader.Columns()->Item("Crop")->SetValue(Variant("changed"));
    std::string sExpected = "changed";
    for (int i = 1; i < 19; ++i)
        sExpected += " changed";
    EXPECT_EQ(Walk(oReader, [&] { return oReader.Columns()->Item("Crop")->Value().ToText(); }),
              sExpected);
}

TEST_F(FGPDecoderTest, SideTables) {
    std::vector<test::DbfField> vSampleFields;
    for (const char* sName :
         {"Rate", "Rx_Rate", "Swath_Width", "P_PARAM", "V_PARAM", "NDVI", "VI_2ND", "Other"})
        vSampleFields.push_back({sName, 'N', 6, 2});
    const DbfTable oAllSamples = DbfTable(vSampleFields)
                                     .Row({"1", "2", "3", "4", "5", ".6", ".7", "8"})
                                     .Row({"10", "20", "30", "40", "50", ".61", ".71", "80"});
    const DbfTable oDated = DbfTable({{"Date", 'D', 8}, {"Crop", 'C', 6}})
                                .Row({"20060415", "corn"})
                                .Row({"20060416", ""});
    struct Case {
        const char* sFSN;
        const char* sFDT;
        const DbfTable* pTable;
        std::string sSchema, sRow2;
        std::string sValues;  // Rate_Act, Rate_Rx, Swath, P_PARAM, V_PARAM, NDVI, VI_2ND
    } aCases[] = {
        {nullptr, nullptr, nullptr, "", "", "0 0 0 0 0 0 0"},
        {"field.fsn", nullptr, &oAllSamples, "", "", "10 20 30 40 50 0.61 0.71"},
        {nullptr, "field.fdt", &oDated, "Date~D~8~0~|Crop~C~6~0~", "2006-04-16|", "0 0 0 0 0 0 0"},
    };
    // One line of two vertices: sample and attribute rows 1 and 2.
    const std::string sPath = WriteSet({{}, {{P(0, 0, 1, 1), P(1, 1, 2, 2)}}, {}});
    for (const Case& t : aCases) {
        SCOPED_TRACE(t.sValues);
        std::remove(oDir.Path("field.fsn").c_str());
        std::remove(oDir.Path("field.fdt").c_str());
        if (t.pTable) WriteTable(t.sFSN ? t.sFSN : t.sFDT, *t.pTable);
        tnwFGPDecoder oSet;
        oSet.SetFilename(sPath);
        EXPECT_EQ(oSet.HasFSN(), t.sFSN != nullptr);
        EXPECT_EQ(oSet.HasFDT(), t.sFDT != nullptr);
        EXPECT_EQ(oSet.FDTSchema(), t.sSchema);
        EXPECT_EQ(oSet.Columns()->Count(), t.sFDT ? 18 : 16);
        oSet.MoveFirst();
        ASSERT_TRUE(oSet.MoveNext());
        EXPECT_EQ(oSet.FDTString(), t.sRow2);
        std::string sValues;
        for (double d : {oSet.Rate_Act(), oSet.Rate_Rx(), oSet.Swath(), oSet.P_PARAM(),
                         oSet.V_PARAM(), oSet.NDVI(), oSet.VI_2ND()})
            sValues += (sValues.empty() ? "" : " ") + Variant(d).ToText();
        EXPECT_EQ(sValues, t.sValues);
        EXPECT_EQ(oSet.Columns()->Item("VI_2ND")->Value().ToText(), t.sFSN ? "0.71" : "");
    }
}

TEST_F(FGPDecoderTest, RowsATableLacksAndASetWithoutSamplesAfterOneWithThem) {
    // Rows 1, past the end, 0: the last row's values stay unless EmptyMissingRows is on.
    WriteTable("field.fsn", DbfTable({{"Rate", 'N', 6, 1}}).Row({"1.5"}));
    WriteTable("field.fdt", DbfTable({{"Crop", 'C', 6}}).Row({"corn"}));
    const std::string sPath = WriteSet({{}, {}, {P(0, 0, 1, 1), P(0, 0, 9, 9), P(0, 0, 0, 0)}});
    for (bool bEmpty : {false, true}) {
        tnwFGPDecoder oSet;
        oSet.SetEmptyMissingRows(bEmpty);
        oSet.SetFilename(sPath);
        EXPECT_EQ(Walk(oSet,
                       [&] {
                           return Variant(oSet.Rate_Act()).ToText() + "/" + oSet.FDTString() + "/" +
                                  oSet.Columns()->Item("Crop")->Value().ToText();
                       }),
                  bEmpty ? "1.5/corn/corn 0// 0//" : "1.5/corn/corn 1.5/corn/corn 1.5/corn/corn");
    }
    oReader.SetFilename(sPath);
    oReader.MoveFirst();
    oReader.SetFilename(WriteSet({{}, {}, {P(0, 0, 1)}}, "other"));
    EXPECT_FALSE(oReader.HasFSN());
    EXPECT_EQ(oReader.Rate_Act(), 1.5);  // the earlier table's field, as it was left
}

TEST_F(FGPDecoderTest, UTCTimeOfTimesOfDayAndFullTimes) {
    const double kNextDay = kApril15th2006 + 86400;
    struct Case {
        std::vector<test::DbfField> vFields;  // of the .fdt, none for no table
        std::vector<std::string> vDates;      // of rows 1 and 2, taken in turn by the points
        std::vector<double> vTimes, vExpected;
    } aCases[] = {
        // No table: the file's day; 86400 is a time of day, 86400.5 a full time.
        {{}, {}, {3600, 86400, 86400.5}, {kApril15th2006 + 3600, kNextDay, 86400.5}},
        // A row without a date keeps the day before.
        {{{"Date", 'D', 8}}, {"20060416", ""}, {3600, 7200}, {kNextDay + 3600, kNextDay + 7200}},
        {{{"Logged", 'D', 8}}, {"20060416", "20060417"}, {0, 1}, {kNextDay, kNextDay + 86401}},
        {{{"DATE", 'C', 10}}, {"2006-04-16", "soon"}, {5, 6}, {kNextDay + 5, kNextDay + 6}},
        {{{"Date", 'D', 8}}, {"20060415"}, {3600}, {1145062800}},
    };
    for (const Case& t : aCases) {
        Vertices vPoints;
        for (std::size_t i = 0; i < t.vTimes.size(); ++i)
            vPoints.push_back(P(0, 0, 0, static_cast<std::int32_t>(i % 2 + 1), t.vTimes[i]));
        std::remove(oDir.Path("field.fdt").c_str());
        if (!t.vFields.empty()) {
            DbfTable oTable(t.vFields);
            for (const auto& s : t.vDates)
                oTable.Row({s});
            WriteTable("field.fdt", oTable);
        }
        tnwFGPDecoder oSet;
        oSet.SetFilename(WriteSet({{}, {}, vPoints}));
        std::vector<double> vTimes;
        Walk(oSet, [&] {
            vTimes.push_back(oSet.UTCTime());
            return "";
        });
        EXPECT_EQ(vTimes, t.vExpected);
    }
}

TEST_F(FGPDecoderTest, GeometryText) {
    const std::pair<SetSpec, std::string> aCases[] = {
        {{{{P(-96.5, 40.25), P(-96.25, 40.25), P(-96.25, 40.5)}}, {}, {}},
         "POLYGON((-96.5  40.25,-96.25  40.25,-96.25  40.5))"},
        {{{{P(2, -3)}}, {}, {}}, "POLYGON(( 2 -3))"},
        {{{{}}, {}, {}}, "POLYGON(())"},
        {{{}, {{P(.5, 1E+20)}}, {}}, "LineString(( .5  1E+20))"},
        {{{}, {}, {P(12.5, .75)}}, "POINT( 12.5  .75)"},
        {{{}, {}, {P(0, 0)}}, "POINT( 0  0)"},
    };
    for (const auto& [tSet, sWKT] : aCases) {
        oReader.SetFilename(WriteSet(tSet));
        ASSERT_EQ(oReader.MoveFirst(), Variant(true));
        EXPECT_EQ(oReader.WKT(), sWKT);
    }
    // A site reports the whole line.
    oReader.SetFilename(WriteSet({{}, {{P(1, 2), P(3, 4)}}, {}}));
    EXPECT_EQ(Walk(oReader, [&] { return oReader.WKT(); }),
              "LineString(( 1  2, 3  4)) LineString(( 1  2, 3  4))");
}

TEST_F(FGPDecoderTest, PointColumnsHoldEachPointsOwnValues) {
    PointData tSite = P(-93.5, 42.25, 0, 0, 1145062800.0);
    tSite.dAltitude = 301.5;
    tSite.dHeading = 87.25;
    tSite.lRegionID = 4;
    WriteTable("field.fdt", DbfTable({{"Crop", 'C', 6}}).Row({"corn"}));
    oReader.SetPointColumns(true);
    oReader.SetFilename(WriteSet({{{P(1, 1)}}, {{tSite}}, {P(5, 6, 0, 1, 7.5)}}));
    std::string sKeys;
    for (const auto& oColumn : oReader.Columns()->Items())
        sKeys += oColumn->Key() + " ";
    EXPECT_EQ(sKeys.substr(sKeys.find("Crop")),
              "Crop Longitude Latitude UTCTime Heading RegionID AttributeID ");
    EXPECT_EQ(Walk(oReader,
                   [&] {
                       std::string s;
                       for (const char* sKey : {"Longitude", "Latitude", "Altitude", "UTCTime",
                                                "Heading", "RegionID", "AttributeID"})
                           s += oReader.Columns()->Item(sKey)->Value().ToText() + ";";
                       return s;
                   }),
              ";;;;;;; -93.5;42.25;301.5;1145062800;87.25;4;0; 5;6;0;" +
                  Variant(kApril15th2006 + 7.5).ToText() + ";0;0;1;");
}

TEST_F(FGPDecoderTest, FailuresGoToTheErrorPath) {
    SetSpec tSet = FieldSet();
    tSet.vRegions[1][0].dLongitude = std::numeric_limits<double>::infinity();
    tSet.vPoints[0].lAttributeID = 2;
    const std::string sPath = WriteSet(tSet);
    WriteTable("field.fdt", DbfTable({{"Day", 'D', 8}}).Row({"20060415"}).Row({"21000101"}));
    WriteTable("field.fsn", DbfTable({{"Rate", 'C', 6}, {"NDVI", 'N', 4, 2}}).Row({"high", ".5"}));
    oReader.SetFilename(sPath);
    ASSERT_TRUE(oReader.IsValidFile());

    oReader.MoveFirst();
    oReader.MoveNext();
    EXPECT_EQ(oReader.WKT(), "");  // a number that has no text
    oReader.MoveNext();
    EXPECT_EQ(test::ErrorNumberOf([&] { (void)oReader.Rate_Act(); }), errTypeMismatch);
    EXPECT_EQ(oReader.NDVI(), .5);
    // The host dropped the columns: the rows can't be copied, the cursor goes on.
    oReader.Columns()->Clear();
    for (int i = 0; i < 12; ++i)
        ASSERT_TRUE(oReader.MoveNext());
    EXPECT_EQ(oReader.UTCTime(), 0.0);  // a day past what 32-bit seconds hold
    // Closed: the samples stay, the next move fails where it stands.
    oReader.CloseFile();
    EXPECT_FALSE(oReader.HasFDT());
    EXPECT_TRUE(oReader.HasFSN());
    EXPECT_FALSE(oReader.MoveNext());
    EXPECT_FALSE(oReader.Eof());
    EXPECT_TRUE(oReader.IsValidFile());
    EXPECT_EQ(oReader.MoveFirst(), Variant(false));
    // Main files that are missing or not whole.
    test::WriteFile(oDir.Path("cut.fgp"), test::ReadFile(sPath).substr(0, 100));
    for (const char* sName : {"missing.fgp", "cut.fgp"}) {
        oReader.SetFilename(oDir.Path(sName));
        EXPECT_FALSE(oReader.IsValidFile());
    }
    std::string sExpected = "tnwFGPDecoder.ConvertToPolygon 6; ";
    for (int i = 0; i < 12; ++i)
        sExpected += "tnwFGPDecoder.ReadFSNData 91; ";
    EXPECT_EQ(Reports(), sExpected +
                             "tnwFGPDecoder.ReadFDTData 91; tnwFGPDecoder.UTCTime Get 6; "
                             "tnwFGPDecoder.MoveNext 91; tnwFGPDecoder.MoveNext 91; "
                             "tnwFGPDecoder.Filename Let 53; tnwFGPDecoder.Filename Let 321; ");
}

}  // namespace
}  // namespace tnw
