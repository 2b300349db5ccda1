// The stand-in summary: unit conversion, the track region's reads and the series' keys.
#include <gtest/gtest.h>

#include "support/TestSupport.h"
#include "veld/Summary.h"

namespace tnw::standins {
namespace {

std::shared_ptr<tnwUnit> U(std::int32_t lId) {
    return std::make_shared<Unit>(lId);
}

TEST(SummaryStandIn, ConvertsWithinAKindAndRefusesAcrossKinds) {
    struct Case {
        std::int32_t lFrom, lTo;
        double dValue, dExpected;
    };
    const Case aCases[] = {
        {401, 257, 9.144, 360.0},    // metres to inches, whole in both
        {405, 513, 1021.8, 1021.8},  // feet to feet: as recorded
        {913, 277, 0.5, 1800.0},     // hours to seconds
        {452, 451, 1.0, 2.4710538146716536},
        {603, 602, 2000.0, 0.90718474},
        {652, 651, 1.0, 3.785411784},
    };
    for (const Case& t : aCases)
        EXPECT_DOUBLE_EQ(Converted({t.dValue}, t.lFrom, t.lTo)[0], t.dExpected)
            << t.lFrom << " to " << t.lTo;
    for (auto [lFrom, lTo] : {std::pair{401, 277}, std::pair{101, 102}, std::pair{16, 401}})
        EXPECT_EQ(test::ErrorNumberOf([&] { Converted({1.0}, lFrom, lTo); }), errInvalidCall);
    EXPECT_EQ(Converted({7.0}, 101, 101)[0], 7.0);  // units without a kind, when equal
    EXPECT_EQ(test::ErrorNumberOf([] { UnitId(nullptr); }), errObjectNotSet);
}

TEST(SummaryStandIn, TrackRegionGivesItsRecordsInTheUnitAskedFor) {
    TrackRegion oTrack(TrackUnits{401, 401, 405, 912});
    oTrack.AddRecord({.dX = 1,
                      .dY = 2,
                      .dElevation = 0.3048,
                      .dWidth = 9.144,
                      .dDistance = 3,
                      .dDuration = 0.5});
    oTrack.AddRecord({.dX = 3, .dY = 4, .bEngaged = false, .lMappable = 0});
    EXPECT_EQ(oTrack.RecordCount(), 2);
    EXPECT_EQ(oTrack.Positions(0, 0, 0, 0), (std::vector<double>{1, 2, 3, 4}));
    EXPECT_EQ(oTrack.Positions(10, -1, 1, 1), (std::vector<double>{13, 3}));
    EXPECT_EQ(test::ErrorNumberOf([&] { oTrack.Positions(0, 0, 1, 2); }), errSubscript);
    EXPECT_DOUBLE_EQ(oTrack.Elevations(U(513), true)[0], 1.0);
    EXPECT_DOUBLE_EQ(oTrack.Elevations(U(513), false)[0], 0.3048);  // as recorded
    EXPECT_DOUBLE_EQ(oTrack.Widths(U(257), true)[0], 360.0);
    EXPECT_DOUBLE_EQ(oTrack.Distances(U(257), true)[0], 36.0);
    EXPECT_DOUBLE_EQ(oTrack.Durations(U(277))[0], 30.0);
    EXPECT_EQ(oTrack.Engaged(), (std::vector<bool>{true, false}));
    EXPECT_EQ(oTrack.Mappable(), (std::vector<std::int32_t>{1, 0}));
}

TEST(SummaryStandIn, SeriesConvertAndKeysAreUnique) {
    auto oDef = std::make_shared<QuantityDef>("r", "Rate", 601);  // kg per hectare
    auto oRatio = std::make_shared<RatioSeries>("r", oDef, 452);
    oRatio->Add(1000.0);
    EXPECT_DOUBLE_EQ(oRatio->Values(U(602), U(451), true)[0], 0.40468564224);  // t per acre
    EXPECT_EQ(oRatio->Values(U(602), U(451), false)[0], 1000.0);

    Region oRegion;
    EXPECT_TRUE(oRegion.AddRatioSeries(oRatio));
    EXPECT_FALSE(oRegion.AddRatioSeries(std::make_shared<RatioSeries>("R", oDef, 452)));
    EXPECT_EQ(oRegion.RatioSeries()->Item("R"), oRatio);
    EXPECT_EQ(oRegion.Series()->Item("r"), nullptr);

    Summary oSummary;
    EXPECT_TRUE(oSummary.AddSeriesDef(oDef));
    EXPECT_FALSE(oSummary.AddSeriesDef(std::make_shared<QuantityDef>("R", "Other", 16)));
    EXPECT_EQ(test::ErrorNumberOf([&] { oSummary.AddRegion(nullptr); }), errObjectNotSet);
}

}  // namespace
}  // namespace tnw::standins
