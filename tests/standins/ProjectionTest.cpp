// Projection maths against coordinates computed independently with PROJ (cs2cs 9.x, EPSG:4326
// to the EPSG code named in each case).
#include <gtest/gtest.h>

#include <cmath>

#include "core/Error.h"
#include "gislib/Projection.h"
#include "support/TestSupport.h"

namespace tnw::standins {
namespace {

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
}

TEST(Projection, NamesAndCodes) {
    EXPECT_EQ(SpatialReference::Wgs84()->Name(), "WGS 84");
    EXPECT_EQ(SpatialReference::WebMercator()->Name(), "WGS 84 / Pseudo-Mercator");
    EXPECT_EQ(SpatialReference::Utm(33, true)->Name(), "WGS 84 / UTM zone 33N");
    EXPECT_EQ(SpatialReference::Utm(7, false)->Name(), "WGS 84 / UTM zone 7S");
    EXPECT_EQ(SpatialReference::Utm(7, false)->EPSG(), 32707);
    EXPECT_EQ(SpatialReference::FromEPSG(32660)->Name(), "WGS 84 / UTM zone 60N");
}

TEST(Projection, BadArgumentsAndPlacesOutsideTheDomain) {
    using test::ErrorNumberOf;
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

}  // namespace
}  // namespace tnw::standins
