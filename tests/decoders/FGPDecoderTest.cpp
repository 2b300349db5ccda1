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
using test::DbfField;
using test::DbfTable;
using Vertices = std::vector<PointData>;

constexpr std::int32_t kApril15th2006 = 1145059200;  // 2006-04-15 00:00:00 in seconds since 1970

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
    std::vector<Vertices> vRegions;
    std::vector<Vertices> vLines;
    Vertices vPoints;
};

// 2 regions, 3 lines of 4 vertices and 5 points; every vertex and point numbered by its
// longitude, 1 to 17, with its own sample row and attribute row 1.
SetSpec FieldSet() {
    SetSpec t;
    t.vRegions = {{P(-96.5, 40.25), P(-96.25, 40.25), P(-96.25, 40.5)}, {P(1, 1)}};
    double dLon = 0;
    for (int iLine = 0; iLine < 3; ++iLine) {
        t.vLines.emplace_back();
        for (int i = 0; i < 4; ++i, ++dLon)
            t.vLines.back().push_back(P(dLon + 1, 2, static_cast<std::int32_t>(dLon + 1), 1));
    }
    for (int i = 0; i < 5; ++i, ++dLon)
        t.vPoints.push_back(P(dLon + 1, 3, static_cast<std::int32_t>(dLon + 1), 1));
    return t;
}

class FGPDecoderTest : public ::testing::Test {
protected:
    // Writes the main file "<sBase>.fgp" and gives its path.
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
        return sPath;
    }
    void WriteTable(const std::string& sName, const DbfTable& oTable) {
        test::WriteFile(oDir.Path(sName), oTable.Bytes());
    }
    // Sets the file's modification time to midnight of 15 April 2006, local time.
    void DateTheFile(const std::string& sPath) {
        std::tm tLocal{};
        tLocal.tm_year = 106;
        tLocal.tm_mon = 3;
        tLocal.tm_mday = 15;
        tLocal.tm_isdst = -1;
        const std::time_t tWhen = std::mktime(&tLocal);
        const timeval aTimes[2] = {{tWhen, 0}, {tWhen, 0}};
        ASSERT_EQ(::utimes(sPath.c_str(), aTimes), 0);
    }
    // Walks from MoveFirst to the end, calling fnEach on every record.
    template <class Fn>
    int Walk(Fn&& fnEach) {
        int nRecords = 0;
        for (bool bOn = oReader.MoveFirst().ToBool(); bOn; bOn = oReader.MoveNext()) {
            ++nRecords;
            fnEach();
        }
        return nRecords;
    }
    std::vector<std::string> ReportSources() const {
        std::vector<std::string> v;
        for (const auto& r : oCapture.vReports)
            v.push_back(r.sSource + " " + std::to_string(r.lNumber));
        return v;
    }

    test::ScopedCapture oCapture;
    test::TempDir oDir;
    tnwFGPDecoder oReader;
};

TEST_F(FGPDecoderTest, WalksRegionsThenLinesThenPoints) {
    const std::string sPath = WriteSet(FieldSet());
    struct Case {
        bool bAsSites;
        int nRecords;
        // Per record: the first characters of WKT and the longitude.
        std::vector<std::string> vWKT;
        std::vector<double> vLongitude;
    };
    const std::string kPolygon = "POLYGON((-96.5  40.25,-96.25  40.25,-96.25  40.5))";
    const std::string kLine2 = "LineString(( 5  2, 6  2, 7  2, 8  2))";
    const Case aCases[] = {
        {true,
         19,
         {kPolygon, "POLYGON(( 1  1))", "LineString(( 1  2,", "LineString(( 1  2,",
          "LineString(( 1  2,", "LineString(( 1  2,", kLine2, kLine2, kLine2, kLine2,
          "LineString(( 9", "LineString(( 9", "LineString(( 9", "LineString(( 9", "POINT( 13  3)",
          "POINT( 14  3)", "POINT( 15  3)", "POINT( 16  3)", "POINT( 17  3)"},
         {0, 0, 1, 2, 3, 4, 5, 6, 7, 8, 9, 10, 11, 12, 13, 14, 15, 16, 17}},
        // Whole lines show the values of the last point read: none until the points.
        {false,
         10,
         {kPolygon, "POLYGON(( 1  1))", "LineString(( 1  2,", kLine2, "LineString(( 9",
          "POINT( 13  3)", "POINT( 14  3)", "POINT( 15  3)", "POINT( 16  3)", "POINT( 17  3)"},
         {0, 0, 0, 0, 0, 13, 14, 15, 16, 17}},
    };
    for (const Case& t : aCases) {
        SCOPED_TRACE(t.bAsSites);
        tnwFGPDecoder oSet;
        oSet.SetAsSites(t.bAsSites);
        oSet.SetFilename(sPath);
        ASSERT_TRUE(oSet.IsValidFile());
        std::vector<double> vPercent;
        int i = 0;
        for (bool bOn = oSet.MoveFirst().ToBool(); bOn; bOn = oSet.MoveNext(), ++i) {
            ASSERT_LT(i, t.nRecords);
            EXPECT_EQ(oSet.WKT().substr(0, t.vWKT[i].size()), t.vWKT[i]) << i;
            EXPECT_EQ(oSet.Longitude(), t.vLongitude[i]) << i;
            EXPECT_FALSE(oSet.Eof());
            vPercent.push_back(oSet.PercentComplete());
        }
        EXPECT_EQ(i, t.nRecords);
        EXPECT_TRUE(oSet.Eof());
        EXPECT_DOUBLE_EQ(vPercent.front(), 100.0 / t.nRecords);  // the first record counts
        EXPECT_EQ(vPercent.back(), 100.0);
        // After the end the last point stays current.
        EXPECT_EQ(oSet.WKT(), "POINT( 17  3)");
        EXPECT_FALSE(oSet.MoveNext());
        EXPECT_TRUE(oSet.Eof());
    }
    EXPECT_TRUE(oCapture.vReports.empty());
}

TEST_F(FGPDecoderTest, EmptyPhasesAndEmptyLinesArePassedOver) {
    struct Case {
        const char* sName;
        SetSpec tSet;
        std::vector<std::string> vWKT;  // every record's
    };
    const Case aCases[] = {
        {"nothing", {}, {}},
        {"empty lines between",
         {{}, {{}, {P(1, 1), P(2, 2)}, {}, {}, {P(3, 3)}, {}}, {}},
         {"LineString(( 1  1, 2  2))", "LineString(( 1  1, 2  2))", "LineString(( 3  3))"}},
        {"an empty region and an empty line",
         {{{}}, {{}}, {P(0, 0)}},
         {"POLYGON(())", "POINT( 0  0)"}},
        {"points only", {{}, {}, {P(-1.5, .75)}}, {"POINT(-1.5  .75)"}},
    };
    for (const Case& t : aCases) {
        SCOPED_TRACE(t.sName);
        oReader.SetFilename(WriteSet(t.tSet));
        std::vector<std::string> vWKT;
        const int nRecords = Walk([&] { vWKT.push_back(oReader.WKT()); });
        EXPECT_EQ(vWKT, t.vWKT);
        EXPECT_EQ(nRecords, static_cast<int>(t.vWKT.size()));
        EXPECT_TRUE(oReader.Eof());
        EXPECT_EQ(oReader.PercentComplete(), 100.0);
    }
    // Without sites an empty line is a record of its own.
    oReader.SetAsSites(false);
    oReader.SetFilename(WriteSet({{}, {{}}, {}}));
    std::vector<std::string> vWKT;
    Walk([&] { vWKT.push_back(oReader.WKT()); });
    EXPECT_EQ(vWKT, std::vector<std::string>{"LineString(())"});
}

TEST_F(FGPDecoderTest, AsSitesChangedAfterFilenameKeepsTheCount) {
    const std::string sPath = WriteSet(FieldSet());
    struct Case {
        bool bAtFilename, bWhileWalking;
        int nRecords;
        double dLastPercent;
    } aCases[] = {{true, false, 10, 1000.0 / 19}, {false, true, 19, 190.0}};
    for (const Case& t : aCases) {
        tnwFGPDecoder oSet;
        oSet.SetAsSites(t.bAtFilename);
        oSet.SetFilename(sPath);
        oSet.SetAsSites(t.bWhileWalking);
        int nRecords = 0;
        for (bool bOn = oSet.MoveFirst().ToBool(); bOn; bOn = oSet.MoveNext())
            ++nRecords;
        EXPECT_EQ(nRecords, t.nRecords);
        EXPECT_DOUBLE_EQ(oSet.PercentComplete(), t.dLastPercent);
    }
}

TEST_F(FGPDecoderTest, CursorEdges) {
    WriteTable("field.fdt", DbfTable({{"Crop", 'C', 8}}).Row({"corn"}));
    oReader.SetFilename(WriteSet(FieldSet()));
    // Before MoveFirst: no record, nothing current.
    EXPECT_FALSE(oReader.MoveNext());
    EXPECT_FALSE(oReader.Eof());
    EXPECT_EQ(oReader.WKT(), "");
    EXPECT_EQ(oReader.UTCTime(), 0.0);
    EXPECT_EQ(oReader.AttributeID(), 0);
    EXPECT_EQ(ReportSources(), std::vector<std::string>{"tnwFGPDecoder.ConvertToPoint 91"});

    EXPECT_EQ(Walk([] {}), 19);
    EXPECT_EQ(oReader.FDTString(), "corn");
    // A second pass starts at the first region; the attribute row of the last point is still
    // loaded, so the first point with the same row does not read it again.
    oReader.Columns()->Item("Crop")->SetValue(Variant("changed"));
    ASSERT_EQ(oReader.MoveFirst(), Variant(true));
    EXPECT_EQ(oReader.WKT().substr(0, 9), "POLYGON((");
    for (int i = 0; i < 2; ++i)
        oReader.MoveNext();
    EXPECT_EQ(oReader.Longitude(), 1.0);
    EXPECT_EQ(oReader.Columns()->Item("Crop")->Value(), Variant("changed"));
}

TEST_F(FGPDecoderTest, SideTablesGiveColumnsValuesAndRows) {
    struct Case {
        const char* sName;
        std::vector<std::pair<std::string, DbfTable>> vTables;
        std::string sSchema, sRow2;
        std::vector<double> vValues;  // Rate_Act, Rate_Rx, Swath, P_PARAM, V_PARAM, NDVI, VI_2ND
        std::vector<std::string> vExtraKeys;
    };
    const DbfTable oAllSamples = DbfTable({{"Rate", 'N', 6, 1},
                                           {"Rx_Rate", 'N', 6, 1},
                                           {"Swath_Width", 'N', 6, 1},
                                           {"P_PARAM", 'N', 6, 1},
                                           {"V_PARAM", 'N', 6, 1},
                                           {"NDVI", 'N', 6, 3},
                                           {"VI_2ND", 'N', 6, 3},
                                           {"Other", 'N', 6, 1}})
                                     .Row({"1", "2", "3", "4", "5", ".6", ".7", "8"})
                                     .Row({"10", "20", "30", "40", "50", ".61", ".71", "80"});
    const Case aCases[] = {
        {"none", {}, "", "", {0, 0, 0, 0, 0, 0, 0}, {}},
        {"all samples", {{"field.fsn", oAllSamples}}, "", "", {10, 20, 30, 40, 50, .61, .71}, {}},
        {"rate only",
         {{"field.fsn", DbfTable({{"Rate", 'N', 6, 1}}).Row({"1.5"}).Row({"2.5"})}},
         "",
         "",
         {2.5, 0, 0, 0, 0, 0, 0},
         {}},
        {"attributes with a date",
         {{"field.fdt", DbfTable({{"Date", 'D', 8}, {"Crop", 'C', 6}})
                            .Row({"20060415", "corn"})
                            .Row({"20060416", ""})}},
         "Date~D~8~0~|Crop~C~6~0~",
         "2006-04-16|",
         {0, 0, 0, 0, 0, 0, 0},
         {"Date", "Crop"}},
    };
    // One line of two vertices: sample and attribute rows 1 and 2.
    const std::string sPath = WriteSet({{}, {{P(0, 0, 1, 1), P(1, 1, 2, 2)}}, {}});
    for (const Case& t : aCases) {
        SCOPED_TRACE(t.sName);
        for (const auto& [sName, oTable] : t.vTables)
            WriteTable(sName, oTable);
        tnwFGPDecoder oSet;
        oSet.SetFilename(sPath);
        EXPECT_EQ(oSet.HasFSN(), t.vValues[0] != 0);
        EXPECT_EQ(oSet.HasFDT(), !t.vExtraKeys.empty());
        EXPECT_EQ(oSet.FDTSchema(), t.sSchema);
        EXPECT_EQ(oSet.Columns()->Count(), static_cast<std::int32_t>(16 + t.vExtraKeys.size()));
        for (std::size_t i = 0; i < t.vExtraKeys.size(); ++i)
            EXPECT_EQ(oSet.Columns()->Items()[16 + i]->Key(), t.vExtraKeys[i]);
        ASSERT_EQ(oSet.MoveFirst(), Variant(true));
        ASSERT_TRUE(oSet.MoveNext());
        EXPECT_EQ(oSet.FDTString(), t.sRow2);
        EXPECT_EQ(std::vector<double>({oSet.Rate_Act(), oSet.Rate_Rx(), oSet.Swath(),
                                       oSet.P_PARAM(), oSet.V_PARAM(), oSet.NDVI(), oSet.VI_2ND()}),
                  t.vValues);
        // The columns of the sample fields follow the row.
        if (oSet.HasFSN()) {
            EXPECT_EQ(oSet.Columns()->Item("Rate_Act")->Value(), Variant(t.vValues[0]));
        }
        for (const auto& [sName, oTable] : t.vTables)
            std::remove(oDir.Path(sName).c_str());
    }
}

TEST_F(FGPDecoderTest, ASetWithoutSamplesAfterOneWithThem) {
    const std::string sFirst = WriteSet({{}, {}, {P(0, 0, 2)}}, "first");
    WriteTable("first.fsn", DbfTable({{"Rate", 'N', 6, 1}}).Row({"1.5"}).Row({"2.5"}));
    const std::string sSecond = WriteSet({{}, {}, {P(0, 0, 1)}}, "second");
    oReader.SetFilename(sFirst);
    ASSERT_EQ(oReader.MoveFirst(), Variant(true));
    oReader.SetFilename(sSecond);
    EXPECT_FALSE(oReader.HasFSN());
    ASSERT_EQ(oReader.MoveFirst(), Variant(true));
    EXPECT_EQ(oReader.Rate_Act(), 2.5);  // the earlier table's field, as it was left
}

TEST_F(FGPDecoderTest, RowsATableLacks) {
    // Rows 1, past the end, 0: the last row's values stay unless EmptyMissingRows is on.
    WriteTable("field.fsn", DbfTable({{"Rate", 'N', 6, 1}}).Row({"1.5"}));
    WriteTable("field.fdt", DbfTable({{"Crop", 'C', 6}}).Row({"corn"}));
    const std::string sPath = WriteSet({{}, {}, {P(0, 0, 1, 1), P(0, 0, 9, 9), P(0, 0, 0, 0)}});
    struct Case {
        bool bEmpty;
        std::vector<std::string> vSeen;  // Rate_Act, FDTString and the column "Crop"
    } aCases[] = {
        {false, {"1.5 corn corn", "1.5 corn corn", "1.5 corn corn"}},
        {true, {"1.5 corn corn", "0  ", "0  "}},
    };
    for (const Case& t : aCases) {
        tnwFGPDecoder oSet;
        oSet.SetEmptyMissingRows(t.bEmpty);
        oSet.SetFilename(sPath);
        std::vector<std::string> vSeen;
        for (bool bOn = oSet.MoveFirst().ToBool(); bOn; bOn = oSet.MoveNext()) {
            vSeen.push_back(Variant(oSet.Rate_Act()).ToText() + " " + oSet.FDTString() + " " +
                            oSet.Columns()->Item("Crop")->Value().ToText());
        }
        EXPECT_EQ(vSeen, t.vSeen);
    }
}

TEST_F(FGPDecoderTest, UTCTimeOfTimesOfDayAndFullTimes) {
    struct Case {
        const char* sName;
        std::vector<DbfField> vFields;
        std::vector<std::string> vRows;  // the date field's text of rows 1 and 2
        std::vector<double> vTimes;      // of the points, rows 1, 2, 1, ...
        std::vector<double> vExpected;
    };

    const std::int32_t kNextDay = kApril15th2006 + 86400;
    const Case aCases[] = {
        {"no attribute table: the file's day",
         {},
         {},
         {3600, 86400, 86400.5},
         {kApril15th2006 + 3600.0, kApril15th2006 + 86400.0, 86400.5}},
        {"a Date field; a row without a date keeps the day before",
         {{"Date", 'D', 8}},
         {"20060416", ""},
         {3600, 7200},
         {kNextDay + 3600.0, kNextDay + 7200.0}},
        {"a date field of another name",
         {{"Logged", 'D', 8}},
         {"20060416", "20060417"},
         {0, 1},
         {kNextDay + 0.0, kNextDay + 86401.0}},
        {"a text field date must read as a date",
         {{"DATE", 'C', 10}},
         {"2006-04-16", "soon"},
         {5, 6},
         {kNextDay + 5.0, kNextDay + 6.0}},
    };
    for (const Case& t : aCases) {
        SCOPED_TRACE(t.sName);
        Vertices vPoints;
        for (std::size_t i = 0; i < t.vTimes.size(); ++i)
            vPoints.push_back(P(0, 0, 0, static_cast<std::int32_t>(i % 2 + 1), t.vTimes[i]));
        const std::string sPath = WriteSet({{}, {}, vPoints});
        DateTheFile(sPath);
        std::remove(oDir.Path("field.fdt").c_str());
        if (!t.vFields.empty()) {
            DbfTable oTable(t.vFields);
            for (const auto& s : t.vRows)
                oTable.Row({s});
            WriteTable("field.fdt", oTable);
        }
        tnwFGPDecoder oSet;
        oSet.SetFilename(sPath);
        std::vector<double> vTimes;
        for (bool bOn = oSet.MoveFirst().ToBool(); bOn; bOn = oSet.MoveNext())
            vTimes.push_back(oSet.UTCTime());
        EXPECT_EQ(vTimes, t.vExpected);
    }
    // The example of a time of day on a row's date.
    WriteTable("field.fdt", DbfTable({{"Date", 'D', 8}}).Row({"20060415"}));
    oReader.SetFilename(WriteSet({{}, {}, {P(0, 0, 0, 1, 3600)}}));
    oReader.MoveFirst();
    EXPECT_EQ(oReader.UTCTime(), 1145062800.0);
}

TEST_F(FGPDecoderTest, GeometryText) {
    struct Case {
        SetSpec tSet;
        std::string sWKT;  // of the first record
    } aCases[] = {
        {{{{P(-96.5, 40.25), P(-96.25, 40.25), P(-96.25, 40.5)}}, {}, {}},
         "POLYGON((-96.5  40.25,-96.25  40.25,-96.25  40.5))"},
        {{{{P(2, -3)}}, {}, {}}, "POLYGON(( 2 -3))"},
        {{{}, {{P(.5, 1E+20)}}, {}}, "LineString(( .5  1E+20))"},
        {{{}, {}, {P(12.5, .75)}}, "POINT( 12.5  .75)"},
        {{{}, {}, {P(0, 0)}}, "POINT( 0  0)"},
    };
    for (const Case& t : aCases) {
        oReader.SetFilename(WriteSet(t.tSet));
        ASSERT_EQ(oReader.MoveFirst(), Variant(true));
        EXPECT_EQ(oReader.WKT(), t.sWKT);
    }
}

TEST_F(FGPDecoderTest, PointColumnsHoldEachPointsOwnValues) {
    PointData tSite = P(-93.5, 42.25, 0, 0, 1145062800.0);
    tSite.dAltitude = 301.5;
    tSite.dHeading = 87.25;
    tSite.lRegionID = 4;
    WriteTable("field.fdt", DbfTable({{"Crop", 'C', 6}}).Row({"corn"}));
    oReader.SetPointColumns(true);
    oReader.SetFilename(WriteSet({{{P(1, 1)}}, {{tSite}}, {P(5, 6, 0, 1, 7.5)}}));
    const auto& vColumns = oReader.Columns()->Items();
    std::string sKeys;
    for (std::size_t i = 16; i < vColumns.size(); ++i)
        sKeys += vColumns[i]->Key() + " ";
    EXPECT_EQ(sKeys, "Crop Longitude Latitude UTCTime Heading RegionID AttributeID ");
    const char* kKeys[] = {"Longitude", "Latitude", "Altitude",   "UTCTime",
                           "Heading",   "RegionID", "AttributeID"};
    std::vector<std::string> vRecords;
    Walk([&] {
        std::string sRecord;
        for (const char* sKey : kKeys)
            sRecord += oReader.Columns()->Item(sKey)->Value().ToText() + ";";
        vRecords.push_back(sRecord);
    });
    ASSERT_EQ(vRecords.size(), 3U);
    EXPECT_EQ(vRecords[0], ";;;;;;;");  // a region: no point of its own
    EXPECT_EQ(vRecords[1], "-93.5;42.25;301.5;1145062800;87.25;4;0;");
    EXPECT_EQ(vRecords[2].substr(0, 6), "5;6;0;");
    EXPECT_EQ(vRecords[2].substr(vRecords[2].size() - 7), ";0;0;1;");
    EXPECT_EQ(oReader.Columns()->Item("UTCTime")->Value(), Variant(oReader.UTCTime()));
}

TEST_F(FGPDecoderTest, FailuresGoToTheErrorPath) {
    SetSpec tSet = FieldSet();
    tSet.vRegions[1][0].dLongitude = std::numeric_limits<double>::infinity();
    tSet.vPoints[0].lAttributeID = 2;
    tSet.vPoints[1].dTime = 60;
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
    EXPECT_EQ(oReader.AttributeID(), 2);
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
    std::vector<std::string> vExpected = {"tnwFGPDecoder.ConvertToPolygon 6"};
    vExpected.insert(vExpected.end(), 12, "tnwFGPDecoder.ReadFSNData 91");
    vExpected.insert(
        vExpected.end(),
        {"tnwFGPDecoder.ReadFDTData 91", "tnwFGPDecoder.ReadFSNData 91",
         "tnwFGPDecoder.UTCTime Get 6", "tnwFGPDecoder.MoveNext 91", "tnwFGPDecoder.MoveNext 91",
         "tnwFGPDecoder.Filename Let 53", "tnwFGPDecoder.Filename Let 321"});
    EXPECT_EQ(ReportSources(), vExpected);
}

}  // namespace
}  // namespace tnw
