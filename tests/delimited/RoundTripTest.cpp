// Files written by other programs read back: the delimited text encoder of this library, and
// GDAL's CSV driver.
#include <cstdlib>
#include <string>
#include <vector>

#include "DelimitedFixture.h"
#include "core/NumberText.h"
#include "encoders/tnwASCIIEncoder.h"

namespace tnw::test {
namespace {

struct Record {
    std::string sCrop;
    double dYield;
    double dMoisture;
    double dX;
    double dY;
};

const std::vector<Record> kRecords = {
    {"Corn", 180.5, 15.25, -93.25, 42.5},
    {"Field 7, Pass 2", 0.5, 0.0, -96.123456789, 40.000000051},
    {"Soy; late", -12.75, 9.125, 0.0, -0.25},
};

class RoundTripTest : public DelimitedTest {
protected:
    // Writes kRecords with longitude and latitude in front, keys with units in the header.
    std::string WriteWithEncoder(const std::string& sDelimiter) {
        auto oColumns = CreateAs<tnwColumns>(kProgIdColumns, "Missing Component");
        auto oCrop = oColumns->Add("Crop", "", "", vtString, 20, 0, 8, 1, 16, "", true, true);
        auto oYield =
            oColumns->Add("Yield (bu/ac)", "", "", vtDouble, 16, 4, 3, 1, 101, "", true, true);
        auto oMoisture =
            oColumns->Add("Moisture (%)", "", "", vtDouble, 16, 4, 3, 1, 801, "", true, true);
        auto oFactory = CreateAs<tnwGISFactory>(kProgIdGISFactory, "Missing Component");
        tnwASCIIEncoder oEncoder;
        oEncoder.SetIncludeLonLat(true);
        const std::string sPath = oDir.Path("encoded.csv");
        EXPECT_TRUE(oEncoder.Initialize(sPath, oColumns, true, sDelimiter));
        for (const Record& tRecord : kRecords) {
            oCrop->SetValue(Variant(tRecord.sCrop));
            oYield->SetValue(Variant(tRecord.dYield));
            oMoisture->SetValue(Variant(tRecord.dMoisture));
            oEncoder.SetGeometry(oFactory->CreatePoint(tRecord.dX, tRecord.dY, nullptr));
            EXPECT_TRUE(oEncoder.Update());
        }
        oEncoder.CloseFiles();
        return sPath;
    }

    void ExpectRecords() {
        oReader->SetHeaderRows(1);
        ASSERT_EQ(oReader->AutoGenColumns(), Variant(true));
        const auto oColumns = oReader->Columns();
        ASSERT_EQ(oColumns->Count(), 3);
        EXPECT_EQ(oColumns->Item("Crop")->Type(), vtString);
        EXPECT_EQ(oColumns->Item("Yield")->Type(), vtDouble);
        EXPECT_EQ(oColumns->Item("Moisture")->Unit(), 801);
        EXPECT_EQ(oReader->LonCol(), 1);
        EXPECT_EQ(oReader->LatCol(), 2);
        bool bMore = oReader->MoveFirst() == Variant(true);
        for (const Record& tRecord : kRecords) {
            ASSERT_TRUE(bMore);
            EXPECT_EQ(oColumns->Item("Crop")->Value(), Variant(tRecord.sCrop));
            EXPECT_EQ(oColumns->Item("Yield")->Value(), Variant(tRecord.dYield));
            EXPECT_EQ(oColumns->Item("Moisture")->Value(), Variant(tRecord.dMoisture));
            // The encoder rounds positions to 7 decimals.
            EXPECT_EQ(oReader->Longitude(), RoundHalfEven(tRecord.dX, 7));
            EXPECT_EQ(oReader->Latitude(), RoundHalfEven(tRecord.dY, 7));
            bMore = oReader->MoveNext();
        }
        EXPECT_FALSE(bMore);
        EXPECT_TRUE(oReader->Eof());
        EXPECT_DOUBLE_EQ(oReader->PercentComplete(), 100.0);
        EXPECT_TRUE(oCapture.vReports.empty());
    }
};

TEST_F(RoundTripTest, CommaDelimitedFromTheEncoder) {
    oReader->SetFilename(WriteWithEncoder(","));
    ExpectRecords();
}

TEST_F(RoundTripTest, SemicolonDelimitedFromTheEncoder) {
    oReader->SetFilename(WriteWithEncoder(";"));
    oReader->SetDelimiter(";");
    ExpectRecords();
}

// A small point layer as GeoJSON, turned into CSV by ogr2ogr.
class GdalCsvTest : public DelimitedTest {
protected:
    std::string Convert(const std::string& sLineFormat) {
        const std::string sSource = Write(
            "points.geojson",
            R"({"type":"FeatureCollection","features":[)"
            R"({"type":"Feature","properties":{"name":"North, 40","yield":181.25,"passes":3},)"
            R"("geometry":{"type":"Point","coordinates":[-96.5,40.25]}},)"
            R"({"type":"Feature","properties":{"name":"South","yield":0.125,"passes":12},)"
            R"("geometry":{"type":"Point","coordinates":[-95.123456,39.000001]}}]})");
        const std::string sTarget = oDir.Path("points.csv");
        const std::string sCommand =
            "ogr2ogr -f CSV -lco GEOMETRY=AS_XY -lco LINEFORMAT=" + sLineFormat + " '" + sTarget +
            "' '" + sSource + "' > /dev/null 2>&1";
        if (std::system(sCommand.c_str()) != 0) return std::string();
        return sTarget;
    }

    void ExpectPoints() {
        oReader->SetHeaderRows(1);
        ASSERT_EQ(oReader->AutoGenColumns(), Variant(true));
        const auto oColumns = oReader->Columns();
        ASSERT_EQ(oColumns->Count(), 3);
        const auto oName = oColumns->Item("name");
        const auto oYield = oColumns->Item("yield");
        const auto oPasses = oColumns->Item("passes");
        ASSERT_TRUE(oName && oYield && oPasses);

        ASSERT_EQ(oReader->MoveFirst(), Variant(true));
        EXPECT_EQ(oReader->Longitude(), -96.5);
        EXPECT_EQ(oReader->Latitude(), 40.25);
        EXPECT_EQ(oName->Value(), Variant("North, 40"));
        EXPECT_EQ(TextToNumber(oYield->Text()), 181.25);
        EXPECT_EQ(TextToNumber(oPasses->Text()), 3.0);

        ASSERT_TRUE(oReader->MoveNext());
        EXPECT_EQ(oReader->Longitude(), -95.123456);
        EXPECT_EQ(oReader->Latitude(), 39.000001);
        EXPECT_EQ(oName->Value(), Variant("South"));
        EXPECT_EQ(TextToNumber(oYield->Text()), 0.125);
        EXPECT_EQ(TextToNumber(oPasses->Text()), 12.0);
        EXPECT_FALSE(oReader->MoveNext());
        EXPECT_TRUE(oCapture.vReports.empty());
    }
};

TEST_F(GdalCsvTest, CarriageReturnLineFeed) {
    const std::string sPath = Convert("CRLF");
    if (sPath.empty()) GTEST_SKIP() << "ogr2ogr is not available";
    oReader->SetFilename(sPath);
    ExpectPoints();
}

TEST_F(GdalCsvTest, LineFeedWithTheExtension) {
    const std::string sPath = Convert("LF");
    if (sPath.empty()) GTEST_SKIP() << "ogr2ogr is not available";
    oReader->SetFilename(sPath);
    oReader->SetLineFeedEndsLine(true);
    ExpectPoints();
}

}  // namespace
}  // namespace tnw::test
