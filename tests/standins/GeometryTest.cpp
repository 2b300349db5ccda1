// The stand-in geometry: vertex storage, index checks, centroids and projection.
#include <gtest/gtest.h>

#include <cmath>

#include "core/Error.h"
#include "gislib/Projection.h"
#include "ogc_sf/Geometries.h"
#include "ogc_sf/WKT.h"
#include "support/TestSupport.h"

namespace tnw::standins {
namespace {

using test::ErrorNumberOf;

TEST(Geometry, BadIndexesAndMissingParts) {
    auto oPolygon = std::dynamic_pointer_cast<IPolygon>(
        ParseWKT("POLYGON ((0 0,1 0,1 1,0 0),(0.1 0.1,0.2 0.1,0.2 0.2,0.1 0.1))"));
    ASSERT_TRUE(oPolygon);
    auto oRing = oPolygon->ExteriorRing();
    auto oMulti = std::dynamic_pointer_cast<IGeometryCollection>(ParseWKT("MULTIPOINT (1 2)"));
    EXPECT_EQ(oRing->Point(3)->X(), 0.0);
    EXPECT_EQ(ErrorNumberOf([&] { oRing->Point(-1); }), errSubscript);
    EXPECT_EQ(ErrorNumberOf([&] { oRing->Point(4); }), errSubscript);
    EXPECT_EQ(ErrorNumberOf([&] { oPolygon->InteriorRing(1); }), errSubscript);
    EXPECT_EQ(ErrorNumberOf([&] { oPolygon->InteriorRing(-1); }), errSubscript);
    EXPECT_EQ(ErrorNumberOf([&] { oMulti->Geometry(1); }), errSubscript);

    EXPECT_EQ(ErrorNumberOf([] { Polygon oNone(nullptr); }), errObjectNotSet);
    EXPECT_EQ(ErrorNumberOf([] { Polygon oP(std::make_shared<LineString>(), {nullptr}); }),
              errObjectNotSet);
    EXPECT_EQ(ErrorNumberOf([] {
                  MultiPoint oNone({Point::Create(1, 2), nullptr});
              }),
              errObjectNotSet);
    EXPECT_EQ(ErrorNumberOf([] { GeometryCollection oAll({nullptr}); }), errObjectNotSet);
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
    EXPECT_NEAR(oBuilt.Centroid()->X(), d, 1e-12);
}

TEST(Geometry, ProjectSendsEveryVertexThroughTheReference) {
    const auto oZone = SpatialReference::Utm(14, true);
    const std::string sSource =
        "POLYGON ((-99 38,-98 38,-98 39,-99 38),(-98.8 38.2,-98.6 38.2,-98.6 38.4,-98.8 38.2))";
    const auto oSource = ParseWKT(sSource);
    auto oProjected = std::dynamic_pointer_cast<IPolygon>(oSource->Project(oZone));
    ASSERT_TRUE(oProjected && oProjected->NumInteriorRings() == 1);
    const Coordinate tHole = oZone->Forward({-98.6, 38.4});
    EXPECT_EQ(oProjected->InteriorRing(0)->Point(2)->X(), tHole.dX);
    EXPECT_EQ(oProjected->InteriorRing(0)->Point(2)->Y(), tHole.dY);
    EXPECT_EQ(oProjected->ExteriorRing()->Point(1)->X(), oZone->Forward({-98, 38}).dX);
    EXPECT_EQ(oSource->WKT(), sSource);  // the source is untouched

    // Kinds are kept; without a reference, or to WGS 84, it is a copy.
    for (const char* sText : {"POINT (1 2)", "MULTIPOINT ((1 2),EMPTY)",
                              "MULTILINESTRING ((0 0,1 1))", "MULTIPOLYGON (((0 0,0 1,1 1,0 0)))",
                              "GEOMETRYCOLLECTION (POINT (1 2),MULTIPOINT EMPTY)"}) {
        auto oGeometry = ParseWKT(sText);
        auto oCopy = oGeometry->Project(nullptr);
        EXPECT_NE(oCopy.get(), oGeometry.get());
        EXPECT_EQ(oCopy->WKT(), sText);
        EXPECT_EQ(oGeometry->Project(SpatialReference::Wgs84())->WKT(), sText);
        EXPECT_EQ(oGeometry->Project(SpatialReference::WebMercator())->GeometryType(),
                  oGeometry->GeometryType());
    }

    class OtherReference final : public ISpatialReference {
    public:
        std::string Name() const override { return "Elsewhere"; }
    };
    EXPECT_EQ(
        ErrorNumberOf([] { ParseWKT("POINT (1 2)")->Project(std::make_shared<OtherReference>()); }),
        errTypeMismatch);
}

}  // namespace
}  // namespace tnw::standins
