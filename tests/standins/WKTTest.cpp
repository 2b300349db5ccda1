// Reading and writing well-known text.
#include <gtest/gtest.h>

#include <cfloat>
#include <cmath>

#include "core/Error.h"
#include "ogc_sf/Geometries.h"
#include "ogc_sf/WKT.h"

namespace tnw::standins {
namespace {

TEST(WKT, CanonicalTextRoundTrips) {
    const char* aTexts[] = {
        "POINT (1 2)",
        "POINT (-0.5 1e+20)",
        "POINT (2.5e-07 123456789012)",
        "POINT EMPTY",
        "LINESTRING (0 0,1 1,2 0.5)",
        "LINESTRING EMPTY",
        "POLYGON ((0 0,0 1,1 1,0 0))",
        "POLYGON ((0 0,10 0,10 10,0 10,0 0),(1 1,1 3,3 3,1 1),(5 5,5 6,6 6,5 5))",
        "POLYGON EMPTY",
        "POLYGON ((0 0,1 0,1 1,0 0),EMPTY)",
        "MULTIPOINT ((1 2),(3 4))",
        "MULTIPOINT (EMPTY,(3 4))",
        "MULTIPOINT EMPTY",
        "MULTILINESTRING ((0 0,1 1),(2 2,3 3))",
        "MULTILINESTRING (EMPTY,(2 2,3 3))",
        "MULTIPOLYGON (((0 0,0 1,1 1,0 0)),((5 5,5 6,6 6,5 5),(5.1 5.1,5.2 5.2,5.1 5.2,5.1 5.1)))",
        "MULTIPOLYGON (EMPTY,((0 0,0 1,1 1,0 0)))",
        "MULTIPOLYGON EMPTY",
        "GEOMETRYCOLLECTION (POINT (1 2),LINESTRING (0 0,1 1),POLYGON ((0 0,0 1,1 1,0 0)))",
        "GEOMETRYCOLLECTION (MULTIPOINT ((1 2)),GEOMETRYCOLLECTION (POINT EMPTY),"
        "GEOMETRYCOLLECTION EMPTY)",
        "GEOMETRYCOLLECTION EMPTY",
    };
    for (const char* sText : aTexts)
        EXPECT_EQ(ParseWKT(sText)->WKT(), sText);
}

TEST(WKT, KindsAndStructure) {
    struct Case {
        const char* sText;
        std::int32_t lType;
    } aCases[] = {{"POINT (1 2)", 1},
                  {"LINESTRING (1 2,3 4)", 2},
                  {"POLYGON EMPTY", 3},
                  {"MULTIPOINT EMPTY", 4},
                  {"MULTILINESTRING EMPTY", 5},
                  {"MULTIPOLYGON EMPTY", 6},
                  {"GEOMETRYCOLLECTION EMPTY", 7}};
    for (const Case& t : aCases)
        EXPECT_EQ(ParseWKT(t.sText)->GeometryType(), t.lType) << t.sText;

    auto oMulti = std::dynamic_pointer_cast<IMultiPolygon>(
        ParseWKT("MULTIPOLYGON (((0 0,0 1,1 1,0 0)),((5 5,5 6,6 6,5 5),(1 1,2 2,1 2,1 1)))"));
    ASSERT_TRUE(oMulti);
    ASSERT_EQ(oMulti->NumGeometries(), 2);
    auto oSecond = std::dynamic_pointer_cast<IPolygon>(oMulti->Geometry(1));
    ASSERT_TRUE(oSecond);
    EXPECT_EQ(oSecond->NumInteriorRings(), 1);
    EXPECT_EQ(oSecond->ExteriorRing()->NumPoints(), 4);
    EXPECT_EQ(oSecond->InteriorRing(0)->Point(2)->X(), 1.0);
    EXPECT_EQ(oSecond->InteriorRing(0)->Point(2)->Y(), 2.0);
}

TEST(WKT, NumbersRoundTripExactly) {
    const double aValues[] = {
        0.1 + 0.2,  1.0 / 3.0,          -1e-300, DBL_MIN, DBL_MAX, -DBL_MAX, 5e-324,
        1e15 + 0.3, 397145.90123456789, -0.0};
    for (double d : aValues) {
        const Point oPoint(d, -d);
        auto oBack = std::dynamic_pointer_cast<IPoint>(ParseWKT(oPoint.WKT()));
        ASSERT_TRUE(oBack) << oPoint.WKT();
        EXPECT_EQ(std::signbit(oBack->X()), std::signbit(d));
        EXPECT_EQ(oBack->X(), d) << oPoint.WKT();
        EXPECT_EQ(oBack->Y(), -d) << oPoint.WKT();
    }
}

TEST(WKT, LenientReading) {
    struct Case {
        const char* sIn;
        const char* sOut;
    } aCases[] = {
        {"point(1 2)", "POINT (1 2)"},
        {" \t\r\nPoInT\n(\t1\r\n2 )  ", "POINT (1 2)"},
        {"POINT (+1 -.5)", "POINT (1 -0.5)"},
        {"POINT (1.5E3 2e-1)", "POINT (1500 0.2)"},
        {"MULTIPOINT (1 2, 3 4)", "MULTIPOINT ((1 2),(3 4))"},
        {"MULTIPOINT ((1 2), 3 4, EMPTY)", "MULTIPOINT ((1 2),(3 4),EMPTY)"},
        {"POINT Z (1 2 3)", "POINT (1 2)"},
        {"POINT M (1 2 3)", "POINT (1 2)"},
        {"POINT ZM (1 2 3 4)", "POINT (1 2)"},
        {"point z empty", "POINT EMPTY"},
        {"LINESTRING (1 2 3, 4 5 6 7, 8 9)", "LINESTRING (1 2,4 5,8 9)"},
        {"GEOMETRYCOLLECTION Z (POINT Z (1 2 3),POINT (4 5))",
         "GEOMETRYCOLLECTION (POINT (1 2),POINT (4 5))"},
        {"POLYGON((0 0,1 0,1 1))", "POLYGON ((0 0,1 0,1 1))"},  // open rings stay open
    };
    for (const Case& t : aCases)
        EXPECT_EQ(ParseWKT(t.sIn)->WKT(), t.sOut) << t.sIn;
}

TEST(WKT, MalformedTextRaisesTypeMismatch) {
    const std::string aTexts[] = {
        "",
        "   ",
        "POINT",
        "POINT (1)",
        "POINT (1 2",
        "POINT (1 2) x",
        "POINT (1 2),",
        "POINT (1 2 3 4 5)",
        "POINT (1,2)",
        "POINT ((1 2))",
        "POINT (12.5.3 4)",
        "POINT (1-2 3)",
        "POINT (1 2x)",
        "POINT (- 2)",
        "POINT (+-1 2)",
        "POINT (1e999 0)",
        "POINT (nan 0)",
        "POINT (inf 0)",
        "POINT (0x10 0)",
        "POINTZ (1 2 3)",
        "POINT Z (1 2)",
        "POINT M (1 2 3 4)",
        "POINT ZM (1 2 3)",
        "POINT EMPTY EMPTY",
        "LINESTRING ()",
        "LINESTRING (1 2,)",
        "LINESTRING (1 2 3 4,5)",
        "POLYGON (1 2,3 4)",
        "POLYGON ((0 0,1 1,0 0)",
        "MULTIPOINT ()",
        "MULTIPOLYGON ((0 0,1 1,0 0))",
        "GEOMETRYCOLLECTION (1 2)",
        "GEOMETRYCOLLECTION (POINT (1 2),)",
        "CIRCLE (1 2)",
        std::string("POINT (1 2)\0", 12),
        "POINT (1 2)\xff",
    };
    for (const std::string& sText : aTexts) {
        try {
            ParseWKT(sText);
            ADD_FAILURE() << "accepted: " << sText;
        } catch (const Error& e) {
            EXPECT_EQ(e.lNumber, errTypeMismatch) << sText;
            EXPECT_NE(e.sDescription.find("Malformed WKT at offset "), std::string::npos);
        }
    }
}

TEST(WKT, DescriptionNamesOffsetAndExpectation) {
    try {
        ParseWKT("POINT (1 2");
        FAIL();
    } catch (const Error& e) {
        EXPECT_EQ(e.sSource, "OGC_SF.ParseWKT");
        EXPECT_EQ(e.sDescription,
                  "Malformed WKT at offset 10: expected \")\", found the end of the text");
    }
    try {
        ParseWKT("LINESTRING (0 0;1 1)");
        FAIL();
    } catch (const Error& e) {
        EXPECT_EQ(e.sDescription,
                  "Malformed WKT at offset 15: expected \",\" or \")\", found \";1 1)\"");
    }
}

std::string Nested(int iDepth) {
    std::string s;
    for (int i = 0; i < iDepth; ++i)
        s += "GEOMETRYCOLLECTION (";
    s += "POINT (1 2)";
    s.append(static_cast<std::size_t>(iDepth), ')');
    return s;
}

TEST(WKT, NestingIsBounded) {
    EXPECT_EQ(ParseWKT(Nested(32))->WKT(), Nested(32));
    EXPECT_THROW(ParseWKT(Nested(33)), Error);
    // Far deeper than any stack would take: refused without recursing that deep.
    EXPECT_THROW(ParseWKT(Nested(200000)), Error);
}

TEST(WKT, WritesForeignImplementationsThroughTheInterfaces) {
    // A point of someone else's making inside the stand-in's collection.
    class HostPoint final : public IPoint {
    public:
        double X() const override { return 7.0; }
        double Y() const override { return 8.0; }
        std::int32_t GeometryType() const override { return ogcPoint; }
        std::shared_ptr<IPoint> Centroid() const override { return nullptr; }
        std::string WKT() const override { return {}; }
        std::shared_ptr<IGeometry> Project(
            const std::shared_ptr<ISpatialReference>&) const override {
            return nullptr;
        }
    };
    const MultiPoint oMulti({std::make_shared<HostPoint>(), Point::Create(1, 2)});
    EXPECT_EQ(oMulti.WKT(), "MULTIPOINT ((7 8),(1 2))");
}

}  // namespace
}  // namespace tnw::standins
