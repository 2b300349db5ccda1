// Reading and writing well-known text.
#include <gtest/gtest.h>

#include <cfloat>
#include <cmath>

#include "core/Error.h"
#include "ogc_sf/Geometries.h"
#include "ogc_sf/WKT.h"

namespace tnw::standins {
namespace {

TEST(WKT, CanonicalTextRoundTripsWithItsKind) {
    struct Case {
        const char* sText;
        std::int32_t lType;
    } aCases[] = {
        {"POINT (1 2)", 1},
        {"POINT (-0.5 1e+20)", 1},
        {"POINT (2.5e-07 123456789012)", 1},
        {"POINT EMPTY", 1},
        {"LINESTRING (0 0,1 1,2 0.5)", 2},
        {"LINESTRING EMPTY", 2},
        {"POLYGON ((0 0,10 0,10 10,0 10,0 0),(1 1,1 3,3 3,1 1),(5 5,5 6,6 6,5 5))", 3},
        {"POLYGON EMPTY", 3},
        {"POLYGON ((0 0,1 0,1 1,0 0),EMPTY)", 3},
        {"MULTIPOINT ((1 2),(3 4))", 4},
        {"MULTIPOINT (EMPTY,(3 4))", 4},
        {"MULTIPOINT EMPTY", 4},
        {"MULTILINESTRING (EMPTY,(2 2,3 3))", 5},
        {"MULTIPOLYGON (((0 0,0 1,1 1,0 0)),((5 5,5 6,6 6,5 5),(5.1 5.1,5.2 5.2,5.1 5.2,5.1 5.1)))",
         6},
        {"MULTIPOLYGON (EMPTY,((0 0,0 1,1 1,0 0)))", 6},
        {"GEOMETRYCOLLECTION (POINT (1 2),LINESTRING (0 0,1 1),POLYGON ((0 0,0 1,1 1,0 0)))", 7},
        {"GEOMETRYCOLLECTION (MULTIPOINT ((1 2)),GEOMETRYCOLLECTION (POINT EMPTY),"
         "GEOMETRYCOLLECTION EMPTY)",
         7},
    };
    for (const Case& t : aCases) {
        const auto oGeometry = ParseWKT(t.sText);
        EXPECT_EQ(oGeometry->WKT(), t.sText);
        EXPECT_EQ(oGeometry->GeometryType(), t.lType) << t.sText;
    }
}

TEST(WKT, NumbersRoundTripExactly) {
    for (double d : {0.1 + 0.2, 1.0 / 3.0, -1e-300, DBL_MIN, DBL_MAX, 5e-324, 1e15 + 0.3,
                     397145.90123456789, -0.0}) {
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
        {" \t\r\nPoInT\n(\t1\r\n2 )  ", "POINT (1 2)"},
        {"POINT (+1 -.5)", "POINT (1 -0.5)"},
        {"POINT (1.5E3 2e-1)", "POINT (1500 0.2)"},
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

std::string Nested(int iDepth) {
    std::string s;
    for (int i = 0; i < iDepth; ++i)
        s += "GEOMETRYCOLLECTION (";
    return s + "POINT (1 2)" + std::string(static_cast<std::size_t>(iDepth), ')');
}

TEST(WKT, MalformedTextRaisesTypeMismatch) {
    const std::string aTexts[] = {
        "", "   ", "POINT", "POINT (1)", "POINT (1 2", "POINT (1 2) x", "POINT (1 2),",
        "POINT (1 2 3 4 5)", "POINT (1,2)", "POINT ((1 2))", "POINT (12.5.3 4)", "POINT (1-2 3)",
        "POINT (1 2x)", "POINT (- 2)", "POINT (+-1 2)", "POINT (1e999 0)", "POINT (nan 0)",
        "POINT (inf 0)", "POINT (0x10 0)", "POINTZ (1 2 3)", "POINT Z (1 2)", "POINT M (1 2 3 4)",
        "POINT ZM (1 2 3)", "POINT EMPTY EMPTY", "LINESTRING ()", "LINESTRING (1 2,)",
        "LINESTRING (1 2 3 4,5)", "POLYGON (1 2,3 4)", "POLYGON ((0 0,1 1,0 0)", "MULTIPOINT ()",
        "MULTIPOLYGON ((0 0,1 1,0 0))", "GEOMETRYCOLLECTION (1 2)",
        "GEOMETRYCOLLECTION (POINT (1 2),)", "CIRCLE (1 2)", std::string("POINT (1 2)\0", 12),
        "POINT (1 2)\xff",
        // Nesting is bounded, without recursing that deep.
        Nested(33), Nested(200000)};
    for (const std::string& sText : aTexts) {
        try {
            ParseWKT(sText);
            ADD_FAILURE() << "accepted: " << sText.substr(0, 80);
        } catch (const Error& e) {
            EXPECT_EQ(e.lNumber, errTypeMismatch) << sText.substr(0, 80);
            EXPECT_EQ(e.sSource, "OGC_SF.ParseWKT");
            EXPECT_EQ(e.sDescription.rfind("Malformed WKT at offset ", 0), 0u);
        }
    }
    EXPECT_EQ(ParseWKT(Nested(32))->WKT(), Nested(32));
}

TEST(WKT, DescriptionNamesOffsetAndExpectation) {
    const std::pair<const char*, const char*> aCases[] = {
        {"POINT (1 2", "Malformed WKT at offset 10: expected \")\", found the end of the text"},
        {"LINESTRING (0 0;1 1)",
         "Malformed WKT at offset 15: expected \",\" or \")\", found \";1 1)\""}};
    for (const auto& [sText, sDescription] : aCases) {
        try {
            ParseWKT(sText);
            ADD_FAILURE() << sText;
        } catch (const Error& e) {
            EXPECT_EQ(e.sDescription, sDescription);
        }
    }
}

}  // namespace
}  // namespace tnw::standins
