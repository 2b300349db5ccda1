// tnwShapeDecoder on shapefiles written by GDAL and on hand-built main headers.
#include <gtest/gtest.h>

#include <bit>
#include <cstring>

#include "ExternalTools.h"
#include "core/Error.h"
#include "decoders/tnwShapeDecoder.h"
#include "support/TestSupport.h"

namespace tnw {
namespace {

using test::Quoted;
using test::RunTool;

struct Details {
    bool bResult = false;
    std::int32_t eType = -7;
    std::string sType = "untouched";
    bool bCartesian = true;
    double dLeft = -1, dRight = -1, dTop = -1, dBottom = -1;
};

Details Read(const std::string& sPath) {
    Details t;
    t.bResult = tnwShapeDecoder().GetShapeDetails(sPath, t.eType, t.sType, t.bCartesian, t.dLeft,
                                                  t.dRight, t.dTop, t.dBottom);
    return t;
}

// A 100-byte main header as the format lays it out: big-endian file code 9994 and length in
// 16-bit words, then little-endian version 1000, shape type and box.
std::string MainHeader(std::int32_t lShapeType, double dXmin, double dYmin, double dXmax,
                       double dYmax) {
    std::string s(100, '\0');
    auto putBE = [&](std::size_t n, std::uint32_t u) {
        for (int i = 0; i < 4; ++i)
            s[n + i] = static_cast<char>(u >> (24 - 8 * i));
    };
    auto putLE = [&](std::size_t n, std::uint64_t u, int nBytes) {
        for (int i = 0; i < nBytes; ++i)
            s[n + i] = static_cast<char>(u >> (8 * i));
    };
    putBE(0, 9994);
    putBE(24, 50);
    putLE(28, 1000, 4);
    putLE(32, static_cast<std::uint32_t>(lShapeType), 4);
    const double aBox[] = {dXmin, dYmin, dXmax, dYmax};
    for (int i = 0; i < 4; ++i)
        putLE(36 + 8 * i, std::bit_cast<std::uint64_t>(aBox[i]), 8);
    return s;
}

class ShapeDecoderTest : public ::testing::Test {
protected:
    // A set written by ogr2ogr from GeoJSON geometries; sOptions add e.g. "-dim XYM".
    std::string Gdal(const std::string& sName, const std::string& sGeometries,
                     const std::string& sOptions = "") {
        std::string sJson = R"({"type":"FeatureCollection","features":[)";
        for (std::size_t nStart = 0; nStart < sGeometries.size();) {
            std::size_t nEnd = sGeometries.find(';', nStart);
            if (nEnd == std::string::npos) nEnd = sGeometries.size();
            if (nStart > 0) sJson += ',';
            sJson += R"({"type":"Feature","properties":{"id":1},"geometry":)" +
                     sGeometries.substr(nStart, nEnd - nStart) + "}";
            nStart = nEnd + 1;
        }
        sJson += "]}";
        const std::string sSource = oDir.Path(sName + ".geojson");
        test::WriteFile(sSource, sJson);
        const std::string sShp = oDir.Path(sName + ".shp");
        EXPECT_TRUE(RunTool("ogr2ogr -f 'ESRI Shapefile' " + sOptions + " " + Quoted(sShp) + " " +
                            Quoted(sSource)));
        return sShp;
    }
    std::string Hand(const std::string& sName, const std::string& sBytes) {
        const std::string sPath = oDir.Path(sName);
        test::WriteFile(sPath, sBytes);
        return sPath;
    }

    test::ScopedCapture oCapture;
    test::TempDir oDir;
};

TEST_F(ShapeDecoderTest, KindsWrittenByGdal) {
    TNW_REQUIRE_TOOL("ogr2ogr");
    const std::string sPoint = R"({"type":"Point","coordinates":[-96,40]};)"
                               R"({"type":"Point","coordinates":[-95,41]})";
    const std::string sLine = R"({"type":"LineString","coordinates":[[-96,40],[-95,41]]})";
    const std::string sPolygon =
        R"({"type":"Polygon","coordinates":[[[-96,40],[-96,41],[-95,41],[-96,40]]]})";
    const std::string sMultiPoint = R"({"type":"MultiPoint","coordinates":[[-96,40],[-95,41]]})";
    struct Case {
        const char* sName;
        std::string sGeometries;
        const char* sOptions;
        std::int32_t lShapeType;
        std::int32_t eType;
        const char* sType;
    };
    const Case aCases[] = {
        {"point", sPoint, "", 1, 1, "Point"},
        {"line", sLine, "", 3, 2, "Line"},
        {"polygon", sPolygon, "", 5, 3, "Region"},
        {"multipoint", sMultiPoint, "", 8, 1, "Point"},
        {"pointz", sPoint, "-dim XYZ", 11, 1, "Point"},
        {"linez", sLine, "-dim XYZ", 13, 2, "Line"},
        {"polygonz", sPolygon, "-dim XYZ", 15, 3, "Region"},
        {"multipointz", sMultiPoint, "-dim XYZ", 18, 1, "Point"},
        {"pointm", sPoint, "-dim XYM", 21, 1, "Point"},
        {"linem", sLine, "-dim XYM", 23, 2, "Line"},
        {"polygonm", sPolygon, "-dim XYM", 25, 3, "Region"},
        {"multipointm", sMultiPoint, "-dim XYM", 28, 1, "Point"},
    };
    for (const Case& c : aCases) {
        SCOPED_TRACE(c.sName);
        const std::string sShp = Gdal(c.sName, c.sGeometries, c.sOptions);
        const Details t = Read(sShp);
        EXPECT_TRUE(t.bResult);
        EXPECT_EQ(t.eType, c.eType);
        EXPECT_EQ(t.sType, c.sType);
        EXPECT_FALSE(t.bCartesian);
        EXPECT_EQ(t.dLeft, -96.0);
        EXPECT_EQ(t.dRight, -95.0);
        EXPECT_EQ(t.dBottom, 40.0);
        EXPECT_EQ(t.dTop, 41.0);
        EXPECT_EQ(tnwShapeDecoder().GetESRIShapeType(oDir.Root().string() + "/",
                                                     std::string(c.sName) + ".shp"),
                  c.lShapeType);
    }
}

TEST_F(ShapeDecoderTest, ProjectedAndEmptySetsWrittenByGdal) {
    TNW_REQUIRE_TOOL("ogr2ogr");
    const Details tProjected = Read(Gdal(
        "utm",
        R"({"type":"Polygon","coordinates":[[[500000,4400000],[500000,4400100],[500100,4400100],[500000,4400000]]]})",
        "-a_srs EPSG:32615"));
    EXPECT_TRUE(tProjected.bResult);
    EXPECT_EQ(tProjected.eType, 3);
    EXPECT_EQ(tProjected.sType, "Region");
    EXPECT_TRUE(tProjected.bCartesian);
    EXPECT_EQ(tProjected.dLeft, 500000.0);
    EXPECT_EQ(tProjected.dTop, 4400100.0);

    // No features: the declared type and an extent of zeros, which lies within degrees.
    const Details tEmpty = Read(Gdal("empty", "", "-nlt POINT"));
    EXPECT_TRUE(tEmpty.bResult);
    EXPECT_EQ(tEmpty.eType, 1);
    EXPECT_EQ(tEmpty.sType, "Point");
    EXPECT_FALSE(tEmpty.bCartesian);
    EXPECT_EQ(tEmpty.dLeft, 0.0);
    EXPECT_EQ(tEmpty.dTop, 0.0);
}

TEST_F(ShapeDecoderTest, TypesWithoutAKindLeaveTheCallersValues) {
    for (std::int32_t lType : {0, 31, 2, 99, -1}) {
        SCOPED_TRACE(lType);
        const Details t = Read(Hand("odd.shp", MainHeader(lType, 1, 2, 3, 4)));
        EXPECT_TRUE(t.bResult);
        EXPECT_EQ(t.eType, -7);
        EXPECT_EQ(t.sType, "untouched");
        EXPECT_FALSE(t.bCartesian);
        EXPECT_EQ(t.dLeft, 1.0);
        EXPECT_EQ(t.dBottom, 2.0);
        EXPECT_EQ(t.dRight, 3.0);
        EXPECT_EQ(t.dTop, 4.0);
    }
}

TEST_F(ShapeDecoderTest, CartesianIsDecidedByFourComparisons) {
    struct Case {
        double dXmin, dYmin, dXmax, dYmax;
        bool bCartesian;
    };
    const Case aCases[] =
        {
            {-180, -90, 180, 90, false},  // the bounds count as inside
            {-180, -90, 180.5, 90, true}, {-180.5, -90, 180, 90, true},
            {-180, -90.5, 180, 90, true}, {-180, -90, 180, 90.5, true},
            {190, -10, 170, 10, false},  // a left edge above 180 is not looked at
            {-96, 40, -95, 41, false},
        };
    for (const Case& c : aCases) {
        SCOPED_TRACE(testing::Message()
                     << c.dXmin << " " << c.dYmin << " " << c.dXmax << " " << c.dYmax);
        const Details t = Read(Hand("box.shp", MainHeader(5, c.dXmin, c.dYmin, c.dXmax, c.dYmax)));
        EXPECT_EQ(t.bCartesian, c.bCartesian);
    }
}

TEST_F(ShapeDecoderTest, MissingAndShortFiles) {
    const Details tMissing = Read(oDir.Path("absent.shp"));
    EXPECT_FALSE(tMissing.bResult);
    EXPECT_EQ(tMissing.eType, -7);
    EXPECT_EQ(tMissing.sType, "untouched");
    EXPECT_TRUE(tMissing.bCartesian);
    EXPECT_EQ(tMissing.dLeft, -1.0);

    // What a short file lacks reads as zero.
    const std::string sHeader = MainHeader(3, -96, 40, -95, 41);
    const Details tShort = Read(Hand("short.shp", sHeader.substr(0, 52)));
    EXPECT_TRUE(tShort.bResult);
    EXPECT_EQ(tShort.eType, 2);
    EXPECT_EQ(tShort.dLeft, -96.0);
    EXPECT_EQ(tShort.dBottom, 40.0);
    EXPECT_EQ(tShort.dRight, 0.0);
    EXPECT_EQ(tShort.dTop, 0.0);

    const std::string sFolder = oDir.Root().string() + "/";
    Hand("tiny.shp", sHeader.substr(0, 34));
    EXPECT_EQ(tnwShapeDecoder().GetESRIShapeType(sFolder, "tiny.shp"), 0);
    try {
        tnwShapeDecoder().GetESRIShapeType(sFolder, "absent.shp");
        FAIL() << "no error";
    } catch (const Error& e) {
        EXPECT_EQ(e.lNumber, errFileNotFound);
    }
}

}  // namespace
}  // namespace tnw
