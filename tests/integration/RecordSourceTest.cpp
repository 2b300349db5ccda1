// tnwDecoderRecordSource: decoders handed to the encoders' ImportRS, rows the decoder refuses,
// geometry from longitude/latitude and from well-known text, counts and progress.
#include <gtest/gtest.h>

#include "bridge/tnwDecoderRecordSource.h"
#include "core/Error.h"
#include "encoders/tnwASCIIEncoder.h"
#include "fgp/FGPWriter.h"
#include "ogc_sf/WKT.h"
#include "platform/ByteOrder.h"
#include "shapefile/tnwShapeEncoder.h"
#include "support/TestSupport.h"

namespace tnw {
namespace {

using test::ReadFile;
using test::WriteFile;

std::shared_ptr<IGeometry> Parse(std::string_view sWKT) {
    return standins::ParseWKT(sWKT);
}

// Keeps every SetBarValue.
class Recorder final : public tnwGISCallback {
public:
    void SetBarCount(std::int32_t) override {}
    void SetBarText(std::int32_t, const std::string&) override {}
    void SetBarRange(std::int32_t, double dMin, double dMax) override {
        vRanges.emplace_back(dMin, dMax);
    }
    void SetBarValue(std::int32_t, double dValue) override { vValues.push_back(dValue); }
    void ClearBarText(std::int32_t) override {}
    void ResetBar(std::int32_t) override {}

    std::vector<std::pair<double, double>> vRanges;
    std::vector<double> vValues;
};

class RecordSourceTest : public ::testing::Test {
protected:
    std::shared_ptr<tnwASCIIDecoder> Text(const std::string& sName, const std::string& sContent) {
        WriteFile(m_oDir.Path(sName), sContent);
        auto oDecoder = std::make_shared<tnwASCIIDecoder>();
        oDecoder->SetLineFeedEndsLine(true);
        oDecoder->SetFilename(m_oDir.Path(sName));
        oDecoder->SetHeaderRows(1);
        oDecoder->AutoGenColumns();
        return oDecoder;
    }

    test::ScopedCapture m_oCapture;
    test::TempDir m_oDir;
};

TEST_F(RecordSourceTest, TextPointsGoThroughShapeImport) {
    std::string sContent = "Longitude,Latitude,Yield (bu/ac),Crop\n";
    for (int i = 0; i < 2500; ++i) {
        sContent += std::to_string(-93 - i / 10000.0) + "," + std::to_string(42 + i / 10000.0) +
                    "," + std::to_string(100 + i % 50) + ",Corn\n";
    }
    auto oSource = std::make_shared<tnwDecoderRecordSource>(Text("log.csv", sContent), Parse);
    EXPECT_TRUE(oSource->Eof());
    EXPECT_EQ(oSource->GeometryType(), tnwGeometryPoint);
    EXPECT_EQ(oSource->RecordCount(), 2500);
    tnwShapeEncoder oEncoder;
    ASSERT_TRUE(oEncoder.ImportRS(m_oDir.Path("log.shp"), oSource));
    oEncoder.CloseFiles();
    EXPECT_EQ(oSource->RecordsRead(), 2500);
    EXPECT_TRUE(oSource->Eof());
    const std::string sShp = ReadFile(m_oDir.Path("log.shp"));
    ASSERT_EQ(sShp.size(), 100u + 2500u * 28u);
    const auto At = [&](std::size_t n) { return reinterpret_cast<const unsigned char*>(&sShp[n]); };
    EXPECT_EQ(platform::GetLE32(At(32)), 1u);
    // Record 2 starts at 100 + 28: its point follows the record header and the shape type.
    EXPECT_DOUBLE_EQ(platform::GetLEDouble(At(128 + 12)), -93.0001);
    EXPECT_DOUBLE_EQ(platform::GetLEDouble(At(128 + 20)), 42.0001);
    EXPECT_TRUE(m_oCapture.vReports.empty());
}

TEST_F(RecordSourceTest, RefusedRowsArePassedOverAndCounted) {
    auto oDecoder = Text("bad.csv", "Longitude,Latitude,Name\n1,2,a\n3\n\n5,6,c\n7\n");
    tnwDecoderRecordSource oSource(oDecoder);
    EXPECT_EQ(oSource.RecordCount(), 4);  // read or refused, the blank line not

    std::vector<std::string> vNames;
    std::vector<double> vX;
    for (oSource.MoveFirst(); !oSource.Eof(); oSource.MoveNext()) {
        vNames.push_back(oSource.Columns()->Item("Name")->Text());
        vX.push_back(std::dynamic_pointer_cast<IPoint>(oSource.Geometry())->X());
    }
    EXPECT_EQ(vNames, (std::vector<std::string>{"a", "c"}));
    EXPECT_EQ(vX, (std::vector<double>{1.0, 5.0}));
    EXPECT_EQ(oSource.RecordsRead(), 2);
    EXPECT_EQ(oSource.RowsSkipped(), 2);
    // Each refused row was reported by the decoder itself.
    ASSERT_EQ(m_oCapture.vReports.size(), 2u);
    EXPECT_EQ(m_oCapture.vReports[0].sSource, "tnwASCIIDecoder.MoveNext");

    // A new walk starts the counts over.
    oSource.MoveFirst();
    EXPECT_EQ(oSource.RecordsRead(), 1);
    EXPECT_EQ(oSource.RowsSkipped(), 0);
}

// The command rows of a GPL log are steps of the decoder, not records.
TEST_F(RecordSourceTest, GPLCommandRowsArePassedOverAndCounted) {
    WriteFile(m_oDir.Path("log.gpl"),
              "GPL11\r\nSTAR\r\n1,,,,,,,,1\r\nSTOP\r\nSTAR\r\n2,,,,,,,,1\r\n");
    auto oDecoder = std::make_shared<tnwASCIIDecoder>();
    oDecoder->SetFilename(m_oDir.Path("log.gpl"));
    tnwDecoderRecordSource oSource(oDecoder);
    std::string sSeen = std::to_string(oSource.RecordCount());
    for (oSource.MoveFirst(); !oSource.Eof(); oSource.MoveNext())
        sSeen += oSource.Columns()->Item("Time")->Text();
    EXPECT_EQ(sSeen + std::to_string(oSource.StartRows()) + std::to_string(oSource.StopRows()),
              "21221");
}

TEST_F(RecordSourceTest, TableGoesThroughTextImportWithItsHeaderCount) {
    // A table written by the shapefile encoder, read back as a source.
    {
        auto oText = Text("in.csv", "Name,Rate (gal/ac)\nnorth,12.5\nsouth,7\nwest,3\n");
        tnwShapeEncoder oTable;
        ASSERT_TRUE(
            oTable.ImportRS(m_oDir.Path("t.dbf"), std::make_shared<tnwDecoderRecordSource>(oText)));
        oTable.CloseFiles();
    }
    auto oDecoder = std::make_shared<tnwDBFDecoder>();
    oDecoder->SetFilename(m_oDir.Path("t.dbf"));
    auto oSource = std::make_shared<tnwDecoderRecordSource>(oDecoder);
    EXPECT_EQ(oSource->RecordCount(), 3);
    EXPECT_EQ(oSource->GeometryType(), 0);

    auto oCallback = std::make_shared<Recorder>();
    oSource->SetCallback(oCallback);
    tnwASCIIEncoder oEncoder;
    ASSERT_TRUE(oEncoder.ImportRS(m_oDir.Path("t.csv"), oSource));
    oEncoder.CloseFiles();
    EXPECT_EQ(ReadFile(m_oDir.Path("t.csv")),
              "\"Name\",\"Rate\"\r\n\"north\", 12.5\r\n\"south\", 7\r\n\"west\", 3\r\n");
    // A third of the table per record, then the end.
    EXPECT_EQ(oCallback->vRanges, (std::vector<std::pair<double, double>>{{0.0, 100.0}}));
    EXPECT_EQ(oCallback->vValues, (std::vector<double>{33.0, 66.0, 100.0}));

    // Geometry kept beside the table, asked for by row; a failure there is reported.
    oDecoder->SetLonCol(2);  // a format the row geometry takes the place of
    std::vector<std::int64_t> vRows;
    oSource->SetRowGeometry([&](std::int64_t lRow) -> std::shared_ptr<IGeometry> {
        vRows.push_back(lRow);
        if (lRow == 3) Raise(errInputPastEnd);
        return lRow == 2 ? Parse("POINT (1 2)") : nullptr;
    });
    std::vector<std::string> vWKT;
    for (oSource->MoveFirst(); !oSource->Eof(); oSource->MoveNext())
        vWKT.push_back(oSource->Geometry() ? oSource->Geometry()->WKT() : "");
    EXPECT_EQ(vRows, (std::vector<std::int64_t>{1, 2, 3}));
    EXPECT_EQ(vWKT, (std::vector<std::string>{"", "POINT (1 2)", ""}));
    ASSERT_EQ(m_oCapture.vReports.size(), 1u);
    EXPECT_EQ(m_oCapture.vReports[0].sSource, "tnwDecoderRecordSource.Geometry");
}

TEST_F(RecordSourceTest, WellKnownTextGivesTheKindOfTheFirstGeometryAndFailuresAreReported) {
    auto oDecoder = Text("w.csv",
                         "Name,Shape\n"
                         "empty,\n"
                         "broken,\"POLYGON((0 0,1\"\n"
                         "two,\"MULTIPOLYGON(((0 0,1 0,1 1,0 0)),((5 5,6 5,6 6,5 5)))\"\n"
                         "line,\"LINESTRING(0 0,3 4)\"\n");
    oDecoder->SetWKTCol(2);
    tnwDecoderRecordSource oSource(oDecoder, Parse);
    EXPECT_EQ(oSource.GeometryType(), tnwGeometryRegion);
    EXPECT_TRUE(m_oCapture.vReports.empty());  // looking ahead reports nothing
    oSource.SetGeometryType(tnwGeometryLine);
    EXPECT_EQ(oSource.GeometryType(), tnwGeometryLine);

    std::vector<std::int32_t> vTypes;
    for (oSource.MoveFirst(); !oSource.Eof(); oSource.MoveNext()) {
        const auto oGeometry = oSource.Geometry();
        EXPECT_EQ(oGeometry, oSource.Geometry());  // made once per record
        vTypes.push_back(oGeometry ? oGeometry->GeometryType() : 0);
    }
    EXPECT_EQ(vTypes, (std::vector<std::int32_t>{0, 0, ogcMultiPolygon, ogcLineString}));
    ASSERT_EQ(m_oCapture.vReports.size(), 1u);
    EXPECT_EQ(m_oCapture.vReports[0].sSource, "tnwDecoderRecordSource.Geometry");

    // Without a parser there is no geometry and no kind.
    tnwDecoderRecordSource oBare(oDecoder);
    EXPECT_EQ(oBare.GeometryType(), 0);
    oBare.MoveFirst();
    oBare.MoveNext();
    EXPECT_EQ(oBare.Geometry(), nullptr);
}

TEST_F(RecordSourceTest, FilesWithoutRecords) {
    tnwDecoderRecordSource oHeaderOnly(Text("h.csv", "Longitude,Latitude\n"));
    EXPECT_EQ(oHeaderOnly.RecordCount(), 0);
    oHeaderOnly.MoveFirst();
    EXPECT_TRUE(oHeaderOnly.Eof());
    EXPECT_EQ(oHeaderOnly.Geometry(), nullptr);

    // More header rows than lines: the decoder stops in the header.
    auto oShort = Text("s.csv", "a\n");
    oShort->SetHeaderRows(3);
    tnwDecoderRecordSource oSource(oShort);
    oSource.MoveFirst();
    EXPECT_TRUE(oSource.Eof());
    EXPECT_EQ(oSource.RecordCount(), 0);

    tnwShapeEncoder oEncoder;
    ASSERT_TRUE(oEncoder.ImportRS(
        m_oDir.Path("none.shp"), std::make_shared<tnwDecoderRecordSource>(Text("n.csv", "X,Y\n"))));
    oEncoder.CloseFiles();
    EXPECT_EQ(ReadFile(m_oDir.Path("none.shp")).size(), 100u);
}

// An FGP set of one closed and one open region, an empty region, two lines (3 and 0 vertices)
// and two points, walked by phase and kind.
TEST_F(RecordSourceTest, FGPSetsByPhase) {
    using standins::fgp::PointData;
    const auto P = [](double dX, double dY) {
        PointData t;
        t.dLongitude = dX;
        t.dLatitude = dY;
        return t;
    };
    const std::string sPath = m_oDir.Path("set.fgp");
    {
        standins::FGPWriter oWriter(sPath);
        oWriter.AddRegion(std::vector{P(0, 0), P(1, 0), P(1, 1), P(0, 0)});
        oWriter.AddRegion(std::vector{P(5, 5), P(6, 5), P(6, 6)});
        oWriter.AddRegion({});
        oWriter.AddLine(std::vector{P(0.1, 0.2), P(0.3, 0.4), P(1e-17, 1.0 / 3)});
        oWriter.AddLine({});
        oWriter.AddPoint(P(7, 8));
        oWriter.AddPoint(P(9, 10));
        oWriter.Close();
    }
    struct Case {
        std::int16_t iPhase;
        bool bAsSites;
        std::int32_t eType;
        std::vector<std::string> vWKT;  // of each record, "" for none
    } aCases[] = {
        {1,
         false,
         tnwGeometryRegion,
         {"POLYGON ((0 0,1 0,1 1,0 0))", "POLYGON ((5 5,6 5,6 6,5 5))", ""}},
        {2, false, tnwGeometryLine, {"LINESTRING (0.1 0.2,0.3 0.4,1e-17 0.3333333333333333)", ""}},
        {2,
         true,
         tnwGeometryPoint,
         {"POINT (0.1 0.2)", "POINT (0.3 0.4)", "POINT (1e-17 0.3333333333333333)"}},
        {3, true, tnwGeometryPoint, {"POINT (7 8)", "POINT (9 10)"}},
        {0,
         true,
         tnwGeometryRegion,
         {"POLYGON ((0 0,1 0,1 1,0 0))", "POLYGON ((5 5,6 5,6 6,5 5))", "", "POINT (0.1 0.2)",
          "POINT (0.3 0.4)", "POINT (1e-17 0.3333333333333333)", "POINT (7 8)", "POINT (9 10)"}},
    };
    for (const Case& t : aCases) {
        SCOPED_TRACE(std::to_string(t.iPhase) + (t.bAsSites ? " sites" : ""));
        auto oSet = std::make_shared<tnwFGPDecoder>();
        oSet->SetAsSites(t.bAsSites);
        oSet->SetFilename(sPath);
        tnwDecoderRecordSource oSource(oSet, Parse, t.iPhase);
        const auto oProgress = std::make_shared<Recorder>();
        oSource.SetCallback(oProgress);
        EXPECT_EQ(oSource.GeometryType(), t.eType);
        EXPECT_EQ(oSource.RecordCount(), static_cast<std::int32_t>(t.vWKT.size()));
        std::vector<std::string> vWKT;
        for (oSource.MoveFirst(); !oSource.Eof(); oSource.MoveNext()) {
            const auto oGeometry = oSource.Geometry();
            vWKT.push_back(oGeometry ? oGeometry->WKT() : "");
        }
        EXPECT_EQ(vWKT, t.vWKT);
        EXPECT_EQ(oSource.RowsSkipped(), 0);
        EXPECT_EQ(oProgress->vValues.back(), 100.0);
    }
    // Without a parser regions and lines have no geometry; an empty set has no kind.
    auto oSet = std::make_shared<tnwFGPDecoder>();
    oSet->SetFilename(sPath);
    tnwDecoderRecordSource oNoParser(oSet);
    oNoParser.MoveFirst();
    EXPECT_EQ(oNoParser.Geometry(), nullptr);
    standins::FGPWriter(m_oDir.Path("empty.fgp")).Close();
    auto oEmpty = std::make_shared<tnwFGPDecoder>();
    oEmpty->SetFilename(m_oDir.Path("empty.fgp"));
    EXPECT_EQ(tnwDecoderRecordSource(oEmpty).GeometryType(), 0);
}

}  // namespace
}  // namespace tnw
