// Projection maths against coordinates computed independently with PROJ (cs2cs 9.x, EPSG:4326
// to the EPSG code named in each case).
#include <gtest/gtest.h>

#include <cmath>

#include "core/Error.h"
#include "gislib/Projection.h"

namespace tnw::standins {
namespace {

struct KnownPlace {
    std::int32_t lEPSG;
    double dLon, dLat;
    double dX, dY;
};

// Within a zone, at its edge and well beyond it, both hemispheres, high latitudes.
const KnownPlace kPlaces[] = {
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

TEST(Projection, ForwardMatchesKnownCoordinatesToTheMillimetre) {
    for (const KnownPlace& t : kPlaces) {
        SCOPED_TRACE(t.lEPSG);
        const Coordinate tXY = SpatialReference::FromEPSG(t.lEPSG)->Forward({t.dLon, t.dLat});
        EXPECT_NEAR(tXY.dX, t.dX, 1e-3);
        EXPECT_NEAR(tXY.dY, t.dY, 1e-3);
    }
}

TEST(Projection, InverseMatchesKnownCoordinates) {
    for (const KnownPlace& t : kPlaces) {
        SCOPED_TRACE(t.lEPSG);
        const Coordinate tLonLat = SpatialReference::FromEPSG(t.lEPSG)->Inverse({t.dX, t.dY});
        // 1e-8 degrees is about a millimetre.
        EXPECT_NEAR(tLonLat.dX, t.dLon, 1e-8);
        EXPECT_NEAR(tLonLat.dY, t.dLat, 1e-8);
    }
}

TEST(Projection, RoundTripsAcrossAZone) {
    const auto oZone = SpatialReference::Utm(32, true);
    for (double dLat = -80.0; dLat <= 84.0; dLat += 7.3) {
        for (double dLon = 3.0; dLon <= 15.0; dLon += 1.7) {
            const Coordinate tBack = oZone->Inverse(oZone->Forward({dLon, dLat}));
            EXPECT_NEAR(tBack.dX, dLon, 1e-10);
            EXPECT_NEAR(tBack.dY, dLat, 1e-10);
        }
    }
}

TEST(Projection, NorthPoleOnTheMeridianIsTheScaledQuarterMeridian) {
    // The WGS 84 quarter meridian is 10001965.7293 m.
    const Coordinate t = SpatialReference::Utm(31, true)->Forward({3.0, 90.0});
    EXPECT_NEAR(t.dY, 0.9996 * 10001965.7293, 1e-3);
    EXPECT_NEAR(t.dX, 500000.0, 1e-6);
}

TEST(Projection, SouthernZonesUseTheFalseNorthing) {
    const Coordinate tNorth = SpatialReference::Utm(31, true)->Forward({4.0, -1.0});
    const Coordinate tSouth = SpatialReference::Utm(31, false)->Forward({4.0, -1.0});
    EXPECT_DOUBLE_EQ(tSouth.dX, tNorth.dX);
    EXPECT_NEAR(tSouth.dY - tNorth.dY, 10000000.0, 1e-6);
}

TEST(Projection, NamesAndCodes) {
    EXPECT_EQ(SpatialReference::Wgs84()->Name(), "WGS 84");
    EXPECT_EQ(SpatialReference::WebMercator()->Name(), "WGS 84 / Pseudo-Mercator");
    EXPECT_EQ(SpatialReference::Utm(33, true)->Name(), "WGS 84 / UTM zone 33N");
    EXPECT_EQ(SpatialReference::Utm(7, false)->Name(), "WGS 84 / UTM zone 7S");
    EXPECT_EQ(SpatialReference::Utm(7, false)->EPSG(), 32707);
    EXPECT_EQ(SpatialReference::FromEPSG(32660)->Name(), "WGS 84 / UTM zone 60N");
    EXPECT_EQ(SpatialReference::FromEPSG(3857)->GetKind(), SpatialReference::Kind::WebMercator);
}

TEST(Projection, BadArgumentsAndPlacesOutsideTheDomain) {
    for (std::int32_t lZone : {0, 61, -1}) {
        try {
            SpatialReference::Utm(lZone, true);
            ADD_FAILURE() << lZone;
        } catch (const Error& e) {
            EXPECT_EQ(e.lNumber, 5);
        }
    }
    for (std::int32_t lCode : {0, 4269, 32600, 32661, 32700, 32761}) {
        try {
            SpatialReference::FromEPSG(lCode);
            ADD_FAILURE() << lCode;
        } catch (const Error& e) {
            EXPECT_EQ(e.lNumber, 5);
        }
    }
    auto expectOverflow = [](const SpatialReference& o, Coordinate t) {
        try {
            o.Forward(t);
            ADD_FAILURE() << t.dX << " " << t.dY;
        } catch (const Error& e) {
            EXPECT_EQ(e.lNumber, errOverflow);
        }
    };
    expectOverflow(*SpatialReference::WebMercator(), {0.0, 90.0});
    expectOverflow(*SpatialReference::WebMercator(), {0.0, -91.0});
    expectOverflow(*SpatialReference::Utm(31, true), {93.0, 10.0});  // 90 degrees off
    expectOverflow(*SpatialReference::Utm(31, true), {3.0, 90.5});
    expectOverflow(*SpatialReference::Utm(31, true), {NAN, 10.0});
}

TEST(Projection, TheEmptyCoordinateStaysEmpty) {
    const Coordinate tEmpty = SpatialReference::Utm(31, true)->Forward({NAN, NAN});
    EXPECT_TRUE(std::isnan(tEmpty.dX) && std::isnan(tEmpty.dY));
}

}  // namespace
}  // namespace tnw::standins
