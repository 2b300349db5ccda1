// Text written by GDAL's CSV driver read back. (Text of the library's own encoder is read back
// end to end by the tool's tests.)
#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "core/NumberText.h"
#include "delimited/tnwASCIIDecoder.h"
#include "support/TestSupport.h"
#include "uom/UnitLookup.h"

namespace tnw::test {
namespace {

class RoundTripTest : public ::testing::Test {
protected:
    RoundTripTest() { standins::RegisterUnitLookup(); }

    // Reads sPath with columns from its header row, as a host would.
    std::shared_ptr<tnwColumns> Read(const std::string& sPath, const std::string& sDelimiter,
                                     bool bLineFeedEndsLine) {
        oReader = std::make_unique<tnwASCIIDecoder>();
        oReader->SetFilename(sPath);
        oReader->SetDelimiter(sDelimiter);
        oReader->SetLineFeedEndsLine(bLineFeedEndsLine);
        oReader->SetHeaderRows(1);
        EXPECT_EQ(oReader->AutoGenColumns(), Variant(true));
        EXPECT_EQ(oReader->LonCol(), 1);
        EXPECT_EQ(oReader->LatCol(), 2);
        EXPECT_EQ(oReader->Columns()->Count(), 3);
        EXPECT_EQ(oReader->MoveFirst(), Variant(true));
        return oReader->Columns();
    }

    ScopedCapture oCapture;
    TempDir oDir;
    std::unique_ptr<tnwASCIIDecoder> oReader;
};

// A small point layer as GeoJSON, turned into CSV by ogr2ogr with either line end.
TEST_F(RoundTripTest, FromGdal) {
    const std::string sSource = oDir.Path("points.geojson");
    WriteFile(sSource,
              R"({"type":"FeatureCollection","features":[)"
              R"({"type":"Feature","properties":{"name":"North, 40","yield":181.25,"passes":3},)"
              R"("geometry":{"type":"Point","coordinates":[-96.5,40.25]}},)"
              R"({"type":"Feature","properties":{"name":"South","yield":0.125,"passes":12},)"
              R"("geometry":{"type":"Point","coordinates":[-95.123456,39.000001]}}]})");
    for (const std::string sLineFormat : {"CRLF", "LF"}) {
        SCOPED_TRACE(sLineFormat);
        const std::string sTarget = oDir.Path(sLineFormat + ".csv");
        const CommandResult tRun =
            RunCommand("ogr2ogr -f CSV -lco GEOMETRY=AS_XY -lco LINEFORMAT=" + sLineFormat + " '" +
                       sTarget + "' '" + sSource + "'");
        if (tRun.iStatus != 0) GTEST_SKIP() << "ogr2ogr failed: " << tRun.sOutput;

        const auto oColumns = Read(sTarget, ",", sLineFormat == "LF");
        ASSERT_TRUE(oColumns->Item("name") && oColumns->Item("yield") && oColumns->Item("passes"));
        EXPECT_EQ(oReader->Longitude(), -96.5);
        EXPECT_EQ(oReader->Latitude(), 40.25);
        EXPECT_EQ(oColumns->Item("name")->Value(), Variant("North, 40"));
        EXPECT_EQ(TextToNumber(oColumns->Item("yield")->Text()), 181.25);
        ASSERT_TRUE(oReader->MoveNext());
        EXPECT_EQ(oReader->Longitude(), -95.123456);
        EXPECT_EQ(oReader->Latitude(), 39.000001);
        EXPECT_EQ(oColumns->Item("name")->Value(), Variant("South"));
        EXPECT_EQ(TextToNumber(oColumns->Item("passes")->Text()), 12.0);
        EXPECT_FALSE(oReader->MoveNext());
    }
    EXPECT_TRUE(oCapture.vReports.empty());
}

}  // namespace
}  // namespace tnw::test
