// The stand-ins of the outside components: the column list, the file utility, geometry and
// well-known text, projections (against coordinates computed independently with PROJ), the
// registry, the point list, the error handler and the arc angle.
#include <gtest/gtest.h>

#include <array>
#include <cfloat>
#include <cmath>
#include <cstdlib>
#include <functional>
#include <numbers>
#include <regex>
#include <tuple>

#include "RegisterStandIns.h"
#include "core/Error.h"
#include "core/Services.h"
#include "core/StringBuilder.h"
#include "gislib/Columns.h"
#include "gislib/FileUtility.h"
#include "gislib/GISFactory.h"
#include "gislib/Projection.h"
#include "log/ErrorReports.h"
#include "ogc_sf/Geometries.h"
#include "ogc_sf/WKT.h"
#include "support/TestSupport.h"

namespace tnw::standins {
namespace {

using test::ErrorNumberOf;

std::shared_ptr<tnwColumn> AddNumeric(Columns& oColumns, std::string_view sKey) {
    return oColumns.Add(sKey, "", "", 5, 16, 4, 3, 1, 12, "", true, true);
}

TEST(Columns, KeysPositionsAndText) {
    Columns oColumns;
    auto oYield = AddNumeric(oColumns, "Yield");
    EXPECT_EQ(AddNumeric(oColumns, "YIELD"), nullptr);  // a known key in another case: nothing
    EXPECT_EQ(AddNumeric(oColumns, "Speed")->Position(), 2);
    EXPECT_EQ(oColumns.Item("yield"), oYield);
    // AddColumn keeps the column as it is, position included.
    auto oOwn = std::make_shared<Column>("B", "", "", 8, 254, 0, 8, 1, 16, "", true, true);
    oOwn->SetPosition(9);
    EXPECT_TRUE(oColumns.AddColumn(oOwn));
    EXPECT_EQ(oColumns.Item("b"), oOwn);
    EXPECT_EQ(oOwn->Position(), 9);
    EXPECT_FALSE(oColumns.AddColumn(
        std::make_shared<Column>("yield", "", "", 8, 1, 0, 8, 1, 0, "", true, true)));
    EXPECT_THROW(oColumns.AddColumn(nullptr), Error);
    EXPECT_EQ(oColumns.Count(), 3);
    oYield->SetValue(0.25);
    EXPECT_EQ(oYield->Text(), "0.25");  // plain text: no blank in front, a zero before the mark
    oColumns.Clear();
    EXPECT_EQ(AddNumeric(oColumns, "Yield")->Position(), 1);

    Column oColumn("A&B", "<x>", "say \"hi\" it's", 8, 254, 0, 8, 1, 16, "t\r\n", false, true,
                   "d<");
    oColumn.SetSource("field 3", 3);
    EXPECT_EQ(oColumn.ToXML("  "),
              "  <Column Key=\"A&amp;B\" Name=\"&lt;x&gt;\" Description=\"say &quot;hi&quot; "
              "it&apos;s\" Type=\"8\" Size=\"254\" Precision=\"0\" Flags=\"8\" Kind=\"1\" "
              "Unit=\"16\" Tag=\"t&#13;&#10;\" Visible=\"False\" Active=\"True\" "
              "Default=\"d&lt;\" Position=\"3\"/>\r\n");
}

// The layout text is how the encoders tell whether a new column list has the same layout.
TEST(Columns, LayoutTextChangesWithEveryLayoutAttributeOnly) {
    struct Spec {
        std::string sKey = "Yield";
        std::int32_t lType = 5;
        std::int16_t iSize = 16, iPrecision = 4;
        std::int32_t lFlags = 3, lKind = 1, lUnit = 12;
        bool bVisible = true, bActive = true;
    };
    auto layout = [](const Spec& t, bool bSwapped = false) {
        Columns oColumns;
        if (bSwapped) AddNumeric(oColumns, "Other");
        oColumns.Add(t.sKey, "", "", t.lType, t.iSize, t.iPrecision, t.lFlags, t.lKind, t.lUnit, "",
                     t.bVisible, t.bActive);
        if (!bSwapped) AddNumeric(oColumns, "Other");
        return oColumns.LayoutText("P:");
    };
    const std::string sBase = layout(Spec{});
    EXPECT_EQ(sBase, "P:Yield;5;16;4;3;1;12;1;1\r\nP:Other;5;16;4;3;1;12;1;1\r\n");
    // Name, description, tag, default and value are no part of the layout.
    Columns oOthers;
    oOthers.Add("Yield", "Name", "Description", 5, 16, 4, 3, 1, 12, "Tag", true, true, 1.5)
        ->SetValue(3.0);
    AddNumeric(oOthers, "Other");
    EXPECT_EQ(oOthers.LayoutText("P:"), sBase);
    // A key mimicking the separators, or holding a whole second line, forges nothing.
    const Spec aChanged[] = {{.sKey = "yield"},
                             {.lType = 4},
                             {.iSize = 15},
                             {.iPrecision = 3},
                             {.lFlags = 8},
                             {.lKind = 2},
                             {.lUnit = 13},
                             {.bVisible = false},
                             {.bActive = false},
                             {.sKey = "Yield;5"},
                             {.sKey = "Yield;5;16;4;3;1;12;1;1\r\nP:Other"}};
    for (const Spec& t : aChanged)
        EXPECT_NE(layout(t), sBase) << t.sKey;
    EXPECT_NE(layout(Spec{}, true), sBase);  // order counts
    EXPECT_EQ(Columns().LayoutText("P:"), "");
}

TEST(FileUtility, PathsAndFileCalls) {
    struct Case {
        const char *sPath, *sFolder, *sBase, *sExtension;
    } aCases[] = {
        {"C:\\data\\field.shp", "C:/data", "field", "shp"},
        {"/tmp/a.b/c", "/tmp/a.b", "c", ""},
        {"dir/sub\\name.tar.gz", "dir/sub", "name.tar", "gz"},
        {"name", "", "name", ""},
        {"name.", "", "name", ""},
        {"/x.txt", "/", "x", "txt"},
        {"a//b.txt", "a", "b", "txt"},
        {"a\\\\b.txt", "a", "b", "txt"},
        {"logs/.hidden", "logs", "", "hidden"},
        {"folder/", "folder", "", ""},
        {"", "", "", ""},
    };
    const FileUtility oUtility;
    for (const Case& t : aCases)
        EXPECT_EQ(std::tuple(oUtility.Folder(t.sPath), oUtility.BaseName(t.sPath),
                             oUtility.Extension(t.sPath)),
                  std::tuple(t.sFolder, t.sBase, t.sExtension))
            << t.sPath;

    test::TempDir oDir;
    const std::string sPath = oDir.Path("out.mcd");
    using namespace std::string_literals;
    const std::string sText = "<Columns>\r\n\xE9\x00x\n"s;  // written as given, NUL included
    oUtility.SaveTextFile(sText, sPath);
    EXPECT_EQ(test::ReadFile(sPath), sText);
    oUtility.SaveTextFile("ab", oDir.Root().string() + "\\out.mcd");  // replaced, not appended
    EXPECT_EQ(test::ReadFile(sPath), "ab");
    EXPECT_TRUE(oUtility.FileExists(sPath));
    EXPECT_FALSE(oUtility.FileExists(oDir.Root().string()));  // a folder is no file
    const std::string sMissing = oDir.Path("none.txt");
    EXPECT_FALSE(oUtility.FileExists(sMissing));
    EXPECT_EQ(ErrorNumberOf([&] { oUtility.SaveTextFile("x", sMissing + "/in.txt"); }),
              errFileNotFound);
}

TEST(Geometry, BadIndexesAndMissingParts) {
    auto oPolygon = std::dynamic_pointer_cast<IPolygon>(
        ParseWKT("POLYGON ((0 0,1 0,1 1,0 0),(0.1 0.1,0.2 0.1,0.2 0.2,0.1 0.1))"));
    ASSERT_TRUE(oPolygon);
    auto oRing = oPolygon->ExteriorRing();
    auto oMulti = std::dynamic_pointer_cast<IGeometryCollection>(ParseWKT("MULTIPOINT (1 2)"));
    PointList oList;
    oList.Add(GISFactory().CreatePoint(1, 2, nullptr));
    EXPECT_EQ(oList.Item(0)->Y(), 2.0);
    for (const auto& fnBad : std::vector<std::function<void()>>{
             [&] { oRing->Point(-1); }, [&] { oRing->Point(4); },
             [&] { oPolygon->InteriorRing(1); }, [&] { oPolygon->InteriorRing(-1); },
             [&] { oMulti->Geometry(1); }, [&] { oList.Item(1); }, [&] { oList.Item(-1); }})
        EXPECT_EQ(ErrorNumberOf(fnBad), errSubscript);
    for (const auto& fnBad : std::vector<std::function<void()>>{
             [] { Polygon oNone(nullptr); },
             [] { Polygon oP(std::make_shared<LineString>(), {nullptr}); },
             [] {
                 MultiPoint oNone({Point::Create(1, 2), nullptr});
             },
             [] { GeometryCollection oAll({nullptr}); }, [&] { oList.Add(nullptr); }})
        EXPECT_EQ(ErrorNumberOf(fnBad), errObjectNotSet);
}

TEST(Geometry, CentroidTable) {
    // 10 x 10 square less a 2 x 2 hole centred on (2, 2): (100 * 5 - 4 * 2) / 96 = 5.125.
    const double d = 492.0 / 96.0;
    struct Case {
        const char* sText;
        double dX, dY;  // NAN: the empty point
    } aCases[] = {
        {"POLYGON ((0 0,10 0,10 10,0 10,0 0),(1 1,3 1,3 3,1 3,1 1))", d, d},
        // Winding doesn't matter, nor whether rings repeat their first vertex.
        {"POLYGON ((0 0,0 10,10 10,10 0),(1 1,1 3,3 3,3 1))", d, d},
        {"POLYGON ((0 0,10 0,10 10,0 10,0 0),(1 1,3 1,3 3,1 3,1 1),(7 7,9 7,9 9,7 9,7 7))", 5, 5},
        // Precision holds far from the origin.
        {"POLYGON ((600000 5500000,600010 5500000,600010 5500010,600000 5500010,600000 5500000),"
         "(600001 5500001,600003 5500001,600003 5500003,600001 5500003,600001 5500001))",
         600000 + d, 5500000 + d},
        // No area: the vertex mean, the closing vertex counted once (length-weighted gives 2).
        {"POLYGON ((0 0,1 0,4 0,0 0))", 5.0 / 3.0, 0},
        {"POLYGON ((3 3,3 3,3 3))", 3, 3},
        // Lines weigh segments by length: 2 around (1, 0) and 1 around (2, 0.5).
        {"LINESTRING (0 0,2 0,2 1)", 4.0 / 3.0, 0.5 / 3.0},
        {"LINESTRING (5 5,5 5)", 5, 5},
        {"MULTILINESTRING ((0 0,2 0),(10 0,10 1))", 12.0 / 3.0, 0.5 / 3.0},
        // Collections weigh the members of the highest dimension only; areas 1 and 4 here.
        {"MULTIPOLYGON (((0 0,1 0,1 1,0 1,0 0)),((2 0,4 0,4 2,2 2,2 0)))", 12.5 / 5, 4.5 / 5},
        {"GEOMETRYCOLLECTION (POINT (100 100),LINESTRING (50 50,60 60),"
         "POLYGON ((0 0,2 0,2 2,0 2,0 0)))",
         1, 1},
        {"GEOMETRYCOLLECTION (POINT (100 100),LINESTRING (0 0,2 0))", 1, 0},
        {"MULTIPOINT ((0 0),EMPTY,(3 0),(0 3))", 1, 1},
        {"LINESTRING EMPTY", NAN, NAN},
        {"POLYGON EMPTY", NAN, NAN},
        {"MULTIPOINT EMPTY", NAN, NAN},
        {"GEOMETRYCOLLECTION (POINT EMPTY)", NAN, NAN},
    };
    for (const Case& t : aCases) {
        SCOPED_TRACE(t.sText);
        const auto oCentroid = ParseWKT(t.sText)->Centroid();
        ASSERT_TRUE(oCentroid);
        if (std::isnan(t.dX)) {
            EXPECT_EQ(oCentroid->WKT(), "POINT EMPTY");
            continue;
        }
        EXPECT_NEAR(oCentroid->X(), t.dX, 1e-8);
        EXPECT_NEAR(oCentroid->Y(), t.dY, 1e-8);
    }
    const Polygon oBuilt(
        {{{0, 0}, {10, 0}, {10, 10}, {0, 10}, {0, 0}}, {{1, 1}, {3, 1}, {3, 3}, {1, 3}, {1, 1}}});
    EXPECT_EQ(oBuilt.WKT(), aCases[0].sText);
}

TEST(Projection, MatchesKnownCoordinatesBothWays) {
    struct KnownPlace {
        std::int32_t lEPSG;
        double dLon, dLat, dX, dY;
    };
    // Within a zone, at its edge and well beyond it, both hemispheres, high latitudes.
    const KnownPlace aPlaces[] = {
        {32633, 12.5, 55.7, 342892.997130, 6175523.442822},
        {32617, -80.5, 43.5, 540422.191656, 4816462.791297},
        {32756, 151.2, -33.9, 333568.941012, 6247473.336844},
        {32631, 12.0, 60.0, 1000961.404521, 6685590.893532},  // 9 degrees east of the meridian
        {32631, 3.0, 0.0, 500000.0, 0.0},
        {32631, 4.0, 0.0, 611280.650891, 0.0},
        {32601, -177.0, 84.0, 500000.0, 9328093.830561},
        {32760, 177.0, -80.0, 500000.0, 1118414.184012},
        {3857, -122.4194, 37.7749, -13627665.271218, 4547675.354341},
        {3857, 179.9, -85.0, 20026376.393710, -19971868.880409},
        {3857, 0.0, 0.0, 0.0, 0.0},
    };
    for (const KnownPlace& t : aPlaces) {
        SCOPED_TRACE(t.lEPSG);
        const auto oReference = SpatialReference::FromEPSG(t.lEPSG);
        const Coordinate tXY = oReference->Forward({t.dLon, t.dLat});
        EXPECT_NEAR(tXY.dX, t.dX, 1e-3);
        EXPECT_NEAR(tXY.dY, t.dY, 1e-3);
        const Coordinate tLonLat = oReference->Inverse({t.dX, t.dY});
        EXPECT_NEAR(tLonLat.dX, t.dLon, 1e-8);  // 1e-8 degrees is about a millimetre
        EXPECT_NEAR(tLonLat.dY, t.dLat, 1e-8);
    }
    // On the meridian the pole lies at the scaled WGS 84 quarter meridian, 10001965.7293 m.
    const Coordinate tPole = SpatialReference::Utm(31, true)->Forward({3.0, 90.0});
    EXPECT_NEAR(tPole.dY, 0.9996 * 10001965.7293, 1e-3);
    EXPECT_NEAR(tPole.dX, 500000.0, 1e-6);
    EXPECT_EQ(SpatialReference::Utm(7, false)->Name(), "WGS 84 / UTM zone 7S");
    EXPECT_EQ(SpatialReference::Utm(7, false)->EPSG(), 32707);
    EXPECT_EQ(SpatialReference::FromEPSG(32660)->Name(), "WGS 84 / UTM zone 60N");
}

TEST(Projection, BadArgumentsAndPlacesOutsideTheDomain) {
    for (std::int32_t lZone : {0, 61, -1})
        EXPECT_EQ(ErrorNumberOf([&] { SpatialReference::Utm(lZone, true); }), 5) << lZone;
    for (std::int32_t lCode : {0, 4269, 32600, 32661, 32700, 32761})
        EXPECT_EQ(ErrorNumberOf([&] { SpatialReference::FromEPSG(lCode); }), 5) << lCode;
    const auto oMercator = SpatialReference::WebMercator();
    const auto oZone = SpatialReference::Utm(31, true);
    const std::pair<std::shared_ptr<SpatialReference>, Coordinate> aOutside[] = {
        {oMercator, {0.0, 90.0}},
        {oMercator, {0.0, -91.0}},
        {oZone, {93.0, 10.0}},
        {oZone, {3.0, 90.5}},
        {oZone, {NAN, 10.0}}};
    for (const auto& [oReference, t] : aOutside)
        EXPECT_EQ(ErrorNumberOf([&] { oReference->Forward(t); }), errOverflow)
            << t.dX << " " << t.dY;
    // The empty coordinate stays empty.
    const Coordinate tEmpty = oZone->Forward({NAN, NAN});
    EXPECT_TRUE(std::isnan(tEmpty.dX) && std::isnan(tEmpty.dY));
}

TEST(WKT, CanonicalAndLenientTextWithItsKind) {
    struct Case {
        const char* sIn;
        std::int32_t lType;
        const char* sOut = nullptr;  // nullptr: the text itself
    } aCases[] = {
        {"POINT (1 2)", 1},
        {"POINT (-0.5 1e+20)", 1},
        {"POINT (2.5e-07 123456789012)", 1},
        {"POINT EMPTY", 1},
        {"LINESTRING (0 0,1 1,2 0.5)", 2},
        {"LINESTRING EMPTY", 2},
        {"POLYGON ((0 0,10 0,10 10,0 10,0 0),(1 1,1 3,3 3,1 1),(5 5,5 6,6 6,5 5))", 3},
        {"POLYGON ((0 0,1 0,1 1,0 0),EMPTY)", 3},
        {"MULTIPOINT (EMPTY,(3 4))", 4},
        {"MULTILINESTRING (EMPTY,(2 2,3 3))", 5},
        {"MULTIPOLYGON (EMPTY,((0 0,0 1,1 1,0 0)),((5 5,5 6,6 6,5 5),(5.1 5.1,5.2 5.2,5.1 5.1)))",
         6},
        {"GEOMETRYCOLLECTION (MULTIPOINT ((1 2)),GEOMETRYCOLLECTION (POINT EMPTY),"
         "GEOMETRYCOLLECTION EMPTY,LINESTRING (0 0,1 1),POLYGON ((0 0,0 1,1 1,0 0)))",
         7},
        {" \t\r\nPoInT\n(\t1\r\n2 )  ", 1, "POINT (1 2)"},
        {"POINT (+1 -.5)", 1, "POINT (1 -0.5)"},
        {"POINT (1.5E3 2e-1)", 1, "POINT (1500 0.2)"},
        {"MULTIPOINT ((1 2), 3 4, EMPTY)", 4, "MULTIPOINT ((1 2),(3 4),EMPTY)"},
        {"POINT Z (1 2 3)", 1, "POINT (1 2)"},
        {"POINT M (1 2 3)", 1, "POINT (1 2)"},
        {"POINT ZM (1 2 3 4)", 1, "POINT (1 2)"},
        {"point z empty", 1, "POINT EMPTY"},
        {"LINESTRING (1 2 3, 4 5 6 7, 8 9)", 2, "LINESTRING (1 2,4 5,8 9)"},
        {"GEOMETRYCOLLECTION Z (POINT Z (1 2 3),POINT (4 5))", 7,
         "GEOMETRYCOLLECTION (POINT (1 2),POINT (4 5))"},
        {"POLYGON((0 0,1 0,1 1))", 3, "POLYGON ((0 0,1 0,1 1))"},  // open rings stay open
    };
    for (const Case& t : aCases) {
        const auto oGeometry = ParseWKT(t.sIn);
        EXPECT_EQ(oGeometry->WKT(), t.sOut ? t.sOut : t.sIn);
        EXPECT_EQ(oGeometry->GeometryType(), t.lType) << t.sIn;
    }
    for (double d : {0.1 + 0.2, 1.0 / 3.0, -1e-300, DBL_MIN, DBL_MAX, 5e-324, 1e15 + 0.3,
                     397145.90123456789, -0.0}) {
        auto oBack = std::dynamic_pointer_cast<IPoint>(ParseWKT(Point(d, -d).WKT()));
        ASSERT_TRUE(oBack);
        EXPECT_EQ(std::signbit(oBack->X()), std::signbit(d));
        EXPECT_EQ(std::pair(oBack->X(), oBack->Y()), std::pair(d, -d));
    }
}

std::string Nested(int iDepth) {
    std::string s;
    for (int i = 0; i < iDepth; ++i)
        s += "GEOMETRYCOLLECTION (";
    return s + "POINT (1 2)" + std::string(static_cast<std::size_t>(iDepth), ')');
}

TEST(WKT, MalformedTextRaisesTypeMismatchNamingOffsetAndExpectation) {
    const std::string aTexts[] = {
        "", "   ", "POINT", "POINT (1)", "POINT (1 2", "POINT (1 2) x", "POINT (1 2),",
        "POINT (1 2 3 4 5)", "POINT (1,2)", "POINT ((1 2))", "POINT (12.5.3 4)", "POINT (1-2 3)",
        "POINT (1 2x)", "POINT (- 2)", "POINT (+-1 2)", "POINT (1e999 0)", "POINT (nan 0)",
        "POINT (inf 0)", "POINT (0x10 0)", "POINTZ (1 2 3)", "POINT Z (1 2)", "POINT M (1 2 3 4)",
        "POINT ZM (1 2 3)", "POINT EMPTY EMPTY", "LINESTRING ()", "LINESTRING (1 2,)",
        "LINESTRING (1 2 3 4,5)", "POLYGON (1 2,3 4)", "POLYGON ((0 0,1 1,0 0)", "MULTIPOINT ()",
        "MULTIPOLYGON ((0 0,1 1,0 0))", "GEOMETRYCOLLECTION (1 2)",
        "GEOMETRYCOLLECTION (POINT (1 2),)", "CIRCLE (1 2)", std::string("POINT (1 2)\0", 12),
        "POINT (1 2)\xff", "LINESTRING (0 0;1 1)",
        // Nesting is bounded, without recursing that deep.
        Nested(33), Nested(200000)};
    for (const std::string& sText : aTexts) {
        try {
            ParseWKT(sText);
            ADD_FAILURE() << "accepted: " << sText.substr(0, 80);
        } catch (const Error& e) {
            EXPECT_EQ(std::tuple(e.lNumber, e.sSource),
                      std::tuple(errTypeMismatch, "OGC_SF.ParseWKT"))
                << sText.substr(0, 80);
            EXPECT_EQ(e.sDescription.rfind("Malformed WKT at offset ", 0), 0u);
            if (sText == "POINT (1 2") {
                EXPECT_EQ(e.sDescription,
                          "Malformed WKT at offset 10: expected \")\", found the end of the text");
            } else if (sText == "LINESTRING (0 0;1 1)") {
                EXPECT_EQ(e.sDescription,
                          "Malformed WKT at offset 15: expected \",\" or \")\", found \";1 1)\"");
            }
        }
    }
    EXPECT_EQ(ParseWKT(Nested(32))->WKT(), Nested(32));
}

// Pieces of every size, some longer than a block, come out whole and in order.
TEST(StandIns, TextBuilderKeepsEveryPieceInOrder) {
    RegisterStandIns();
    auto oBuilder = CreateAs<tnwStringBuilder>("tnwlib.tnwStringBuilder", "x");
    std::string sExpected;
    for (std::size_t nSize : {0, 255, 257, 70000, (1 << 20) + 3, 5, 2 << 20, 0}) {
        const std::string sPiece(nSize, static_cast<char>('a' + sExpected.size() % 26));
        oBuilder->AppendLine(sPiece);
        oBuilder->Append(sPiece);
        sExpected += sPiece + "\r\n" + sPiece;
    }
    EXPECT_EQ(oBuilder->Text(), sExpected);
    // A separator goes in front of each further piece until it is taken away.
    oBuilder = CreateAs<tnwStringBuilder>("tnwlib.tnwStringBuilder", "x");
    oBuilder->Append("a");
    oBuilder->SetSeparator(",");
    oBuilder->Append("b");
    oBuilder->AppendLine("c");
    oBuilder->SetSeparator("");
    oBuilder->Append("d");
    EXPECT_EQ(oBuilder->Text(), "a,b,c\r\nd");
}

TEST(StandIns, RegistryArcAngleAndErrorHandler) {
    RegisterStandIns();
    RegisterStandIns();  // twice does no harm
    EXPECT_TRUE(CreateAs<tnwGISFactory>("tnwGIS.tnwGISFactory", "x"));
    EXPECT_TRUE(CreateAs<tnwColumns>("TNWGIS.TNWCOLUMNS", "x"));  // ids ignore case
    EXPECT_NE(CreateAs<tnwPointList>("tnwGIS.tnwPointList", "x"),
              CreateAs<tnwPointList>("tnwGIS.tnwPointList", "x"));
    EXPECT_EQ(CreateAs<tnwFileUtility>("tnwGIS.tnwFileUtility", "x"),
              tnw::FileUtility());  // shared
    EXPECT_TRUE(CreateAs<ItnwErrorHandler>("tnwLog.tnwHandler", "x"));
    EXPECT_TRUE(CreateAs<tnwStringBuilder>("tnwlib.tnwStringBuilder", "x"));
    // The arc angle is counter-clockwise from the x axis, in (-pi, pi].
    const double dPi = std::numbers::pi;
    const std::array<double, 5> aAngles[] = {{1, 1, 2, 2, dPi / 4},
                                             {0, 0, 0, 1, dPi / 2},
                                             {5, 5, 4, 5, dPi},
                                             {1, 1, 1, 0, -dPi / 2},
                                             {0, 0, -1, -1, -3 * dPi / 4}};
    for (const auto& [dX1, dY1, dX2, dY2, dAngle] : aAngles)
        EXPECT_DOUBLE_EQ(CallArcAngle(dX1, dY1, dX2, dY2), dAngle);

    test::TempDir oDir;
    const std::string sLog = oDir.Path("errors.log");
    ::setenv("TNW_ERROR_LOG", sLog.c_str(), 1);
    ClearErrorReports();
    ErrorHandler oHandler;
    oHandler.errorMessage("app", "1.2.3", "tnwShapeEncoder.Update", 53, "tnwEncoders",
                          "File not found", "");
    oHandler.errorMessage("app", "1.2.3", "tnwFGPDecoder.MoveNext",
                          static_cast<std::int32_t>(0x80040005u), "", "two\tlines\r\nhere", "more");
    ::unsetenv("TNW_ERROR_LOG");
    oHandler.errorMessage("app", "1.2.3", "tnwINIFile.Save", 75, "", "not logged to file", "");
    const auto aReports = ErrorReports();
    ASSERT_EQ(aReports.size(), 3u);
    EXPECT_EQ(aReports[1].sDescription, "two\tlines\r\nhere");  // kept as given
    EXPECT_EQ(aReports[2].sSource, "tnwINIFile.Save");
    const std::string sTime = "\\d{4}-\\d\\d-\\d\\dT\\d\\d:\\d\\d:\\d\\dZ";
    const std::regex oExpected(
        sTime + "\tapp 1.2.3\ttnwShapeEncoder.Update\t53\ttnwEncoders\tFile not found\t\n" + sTime +
        "\tapp 1.2.3\ttnwFGPDecoder.MoveNext\t80040005\t\ttwo lines  here\tmore\n");
    const std::string sWritten = test::ReadFile(sLog);
    EXPECT_TRUE(std::regex_match(sWritten, oExpected)) << sWritten;
    ClearErrorReports();
    EXPECT_TRUE(ErrorReports().empty());
}

}  // namespace
}  // namespace tnw::standins
