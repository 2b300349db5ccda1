// The stand-in geometry: vertex storage, index checks, centroids and projection.
#include <gtest/gtest.h>

#include <cmath>

#include "core/Error.h"
#include "gislib/Projection.h"
#include "ogc_sf/Geometries.h"
#include "ogc_sf/WKT.h"

namespace tnw::standins {
namespace {

std::shared_ptr<IPoint> CentroidOf(const std::string& sWKT) {
    return ParseWKT(sWKT)->Centroid();
}

void ExpectPoint(const std::shared_ptr<IPoint>& oPoint, double dX, double dY,
                 double dTolerance = 1e-12) {
    ASSERT_TRUE(oPoint);
    EXPECT_NEAR(oPoint->X(), dX, dTolerance);
    EXPECT_NEAR(oPoint->Y(), dY, dTolerance);
}

template <class Fn>
void ExpectError(std::int32_t lNumber, Fn&& fn) {
    try {
        fn();
        ADD_FAILURE() << "no error " << lNumber;
    } catch (const Error& e) {
        EXPECT_EQ(e.lNumber, lNumber);
    }
}

TEST(Geometry, VerticesAreSharedNotCopied) {
    auto oLine = std::make_shared<LineString>(std::vector<Coordinate>{{0, 0}, {1, 2}, {3, 4}});
    std::shared_ptr<IPoint> oVertex = oLine->Point(1);
    EXPECT_EQ(oLine->Point(1).get(), oVertex.get());
    // A vertex's centroid is the vertex itself: no new point per vertex.
    EXPECT_EQ(oVertex->Centroid().get(), oVertex.get());
    // The vertex keeps its storage alive after the line is gone.
    oLine.reset();
    EXPECT_EQ(oVertex->X(), 1.0);
    EXPECT_EQ(oVertex->Y(), 2.0);
    EXPECT_EQ(oVertex->Centroid()->Y(), 2.0);

    auto oPoint = Point::Create(5, 6);
    EXPECT_EQ(oPoint->Centroid().get(), oPoint.get());
    const Point oLoose(5, 6);  // not owned by a shared_ptr: its centroid is a copy
    ExpectPoint(oLoose.Centroid(), 5, 6, 0);
}

TEST(Geometry, IndexesOutsideRaiseSubscript) {
    auto oPolygon = std::dynamic_pointer_cast<IPolygon>(
        ParseWKT("POLYGON ((0 0,1 0,1 1,0 0),(0.1 0.1,0.2 0.1,0.2 0.2,0.1 0.1))"));
    ASSERT_TRUE(oPolygon);
    auto oRing = oPolygon->ExteriorRing();
    ExpectError(errSubscript, [&] { oRing->Point(-1); });
    ExpectError(errSubscript, [&] { oRing->Point(4); });
    ExpectError(errSubscript, [&] { oPolygon->InteriorRing(1); });
    ExpectError(errSubscript, [&] { oPolygon->InteriorRing(-1); });
    auto oMulti = std::dynamic_pointer_cast<IGeometryCollection>(ParseWKT("MULTIPOINT (1 2)"));
    ExpectError(errSubscript, [&] { oMulti->Geometry(1); });
    EXPECT_EQ(oRing->Point(3)->X(), 0.0);
}

TEST(Geometry, NothingIsRefusedAsARingOrMember) {
    ExpectError(errObjectNotSet, [] { Polygon oPolygon(nullptr); });
    ExpectError(errObjectNotSet,
                [] { Polygon oPolygon(std::make_shared<LineString>(), {nullptr}); });
    ExpectError(errObjectNotSet, [] { MultiPoint oMulti({Point::Create(1, 2), nullptr}); });
    ExpectError(errObjectNotSet, [] { GeometryCollection oAll({nullptr}); });
}

TEST(Geometry, PolygonCentroidTakesOutTheHoles) {
    // 10 x 10 square less a 2 x 2 hole centred on (2, 2): (100 * 5 - 4 * 2) / 96 = 5.125.
    const double d = 492.0 / 96.0;
    ExpectPoint(CentroidOf("POLYGON ((0 0,10 0,10 10,0 10,0 0),(1 1,3 1,3 3,1 3,1 1))"), d, d);
    // Winding doesn't matter, nor whether rings repeat their first vertex.
    ExpectPoint(CentroidOf("POLYGON ((0 0,0 10,10 10,10 0),(1 1,1 3,3 3,3 1))"), d, d);
    // The same polygon built from coordinates.
    const Polygon oBuilt(
        {{{0, 0}, {10, 0}, {10, 10}, {0, 10}, {0, 0}}, {{1, 1}, {3, 1}, {3, 3}, {1, 3}, {1, 1}}});
    EXPECT_EQ(oBuilt.WKT(), "POLYGON ((0 0,10 0,10 10,0 10,0 0),(1 1,3 1,3 3,1 3,1 1))");
    ExpectPoint(oBuilt.Centroid(), d, d);
    // Two holes.
    ExpectPoint(CentroidOf("POLYGON ((0 0,10 0,10 10,0 10,0 0),(1 1,3 1,3 3,1 3,1 1),"
                           "(7 7,9 7,9 9,7 9,7 7))"),
                5.0, 5.0);
}

TEST(Geometry, PolygonCentroidHoldsItsPrecisionFarFromTheOrigin) {
    // A UTM-sized square with a hole, as above shifted by (600000, 5500000).
    const double d = 492.0 / 96.0;
    ExpectPoint(CentroidOf("POLYGON ((600000 5500000,600010 5500000,600010 5500010,600000 5500010,"
                           "600000 5500000),(600001 5500001,600003 5500001,600003 5500003,"
                           "600001 5500003,600001 5500001))"),
                600000 + d, 5500000 + d, 1e-8);
}

TEST(Geometry, ZeroAreaPolygonFallsBackToTheVertexMean) {
    // Vertex mean (0 + 1 + 4) / 3; the closing vertex is not counted twice. A length-weighted
    // centre would be 2.
    ExpectPoint(CentroidOf("POLYGON ((0 0,1 0,4 0,0 0))"), 5.0 / 3.0, 0.0);
    ExpectPoint(CentroidOf("POLYGON ((3 3,3 3,3 3))"), 3, 3);
}

TEST(Geometry, LineCentroidIsLengthWeighted) {
    // Segments of length 2 (middle (1, 0)) and 1 (middle (2, 0.5)).
    ExpectPoint(CentroidOf("LINESTRING (0 0,2 0,2 1)"), 4.0 / 3.0, 0.5 / 3.0);
    ExpectPoint(CentroidOf("LINESTRING (5 5,5 5)"), 5, 5);
    ExpectPoint(CentroidOf("MULTILINESTRING ((0 0,2 0),(10 0,10 1))"), (2.0 + 10.0) / 3.0,
                0.5 / 3.0);
}

TEST(Geometry, CollectionCentroidWeighsTheHighestDimension) {
    // Areas 1 and 4.
    ExpectPoint(CentroidOf("MULTIPOLYGON (((0 0,1 0,1 1,0 1,0 0)),((2 0,4 0,4 2,2 2,2 0)))"),
                (0.5 + 4 * 3.0) / 5.0, (0.5 + 4 * 1.0) / 5.0);
    ExpectPoint(CentroidOf("GEOMETRYCOLLECTION (POINT (100 100),LINESTRING (50 50,60 60),"
                           "POLYGON ((0 0,2 0,2 2,0 2,0 0)))"),
                1, 1);
    ExpectPoint(CentroidOf("GEOMETRYCOLLECTION (POINT (100 100),LINESTRING (0 0,2 0))"), 1, 0);
    ExpectPoint(CentroidOf("MULTIPOINT ((0 0),EMPTY,(3 0),(0 3))"), 1, 1);
}

TEST(Geometry, EmptyGeometryHasTheEmptyPointAsCentroid) {
    for (const char* sText : {"LINESTRING EMPTY", "POLYGON EMPTY", "MULTIPOINT EMPTY",
                              "GEOMETRYCOLLECTION (POINT EMPTY)"}) {
        auto oCentroid = CentroidOf(sText);
        ASSERT_TRUE(oCentroid);
        EXPECT_TRUE(std::dynamic_pointer_cast<Point>(oCentroid)->IsEmpty()) << sText;
        EXPECT_EQ(oCentroid->WKT(), "POINT EMPTY");
    }
}

TEST(Geometry, ProjectSendsEveryVertexThroughTheReference) {
    const auto oZone = SpatialReference::Utm(14, true);
    auto oSource = std::dynamic_pointer_cast<IPolygon>(
        ParseWKT("POLYGON ((-99 38,-98 38,-98 39,-99 38),(-98.8 38.2,-98.6 38.2,-98.6 38.4,"
                 "-98.8 38.2))"));
    auto oProjected = std::dynamic_pointer_cast<IPolygon>(oSource->Project(oZone));
    ASSERT_TRUE(oProjected);
    ASSERT_EQ(oProjected->NumInteriorRings(), 1);
    for (auto [oFrom, oTo] : {std::pair{oSource->ExteriorRing(), oProjected->ExteriorRing()},
                              std::pair{oSource->InteriorRing(0), oProjected->InteriorRing(0)}}) {
        ASSERT_EQ(oTo->NumPoints(), oFrom->NumPoints());
        for (std::int32_t i = 0; i < oFrom->NumPoints(); ++i) {
            const Coordinate t = oZone->Forward({oFrom->Point(i)->X(), oFrom->Point(i)->Y()});
            EXPECT_EQ(oTo->Point(i)->X(), t.dX);
            EXPECT_EQ(oTo->Point(i)->Y(), t.dY);
        }
    }
    // The source is untouched.
    EXPECT_EQ(oSource->ExteriorRing()->Point(0)->X(), -99.0);
}

TEST(Geometry, ProjectKeepsKindsAndCopiesWithoutAReference) {
    const char* aTexts[] = {"POINT (1 2)", "MULTIPOINT ((1 2),EMPTY)",
                            "MULTILINESTRING ((0 0,1 1))", "MULTIPOLYGON (((0 0,0 1,1 1,0 0)))",
                            "GEOMETRYCOLLECTION (POINT (1 2),MULTIPOINT EMPTY)"};
    for (const char* sText : aTexts) {
        auto oSource = ParseWKT(sText);
        auto oCopy = oSource->Project(nullptr);
        ASSERT_TRUE(oCopy);
        EXPECT_NE(oCopy.get(), oSource.get());
        EXPECT_EQ(oCopy->WKT(), sText);
        EXPECT_EQ(oSource->Project(SpatialReference::Wgs84())->WKT(), sText);
        auto oMercator = oSource->Project(SpatialReference::WebMercator());
        EXPECT_EQ(oMercator->GeometryType(), oSource->GeometryType()) << sText;
    }
    auto oMulti =
        ParseWKT("MULTIPOLYGON (((0 0,0 1,1 1,0 0)))")->Project(SpatialReference::WebMercator());
    EXPECT_TRUE(std::dynamic_pointer_cast<IMultiPolygon>(oMulti));
}

TEST(Geometry, ProjectRefusesAForeignReference) {
    class OtherReference final : public ISpatialReference {
    public:
        std::string Name() const override { return "Elsewhere"; }
    };
    ExpectError(errTypeMismatch,
                [] { ParseWKT("POINT (1 2)")->Project(std::make_shared<OtherReference>()); });
}

}  // namespace
}  // namespace tnw::standins
