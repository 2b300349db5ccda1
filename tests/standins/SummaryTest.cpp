// The stand-in summary: unit conversion and the series' keys.
#include <gtest/gtest.h>

#include "support/TestSupport.h"
#include "veld/Summary.h"

namespace tnw::standins {
namespace {

std::shared_ptr<tnwUnit> U(std::int32_t lId) {
    return std::make_shared<Unit>(lId);
}

TEST(SummaryStandIn, ConvertsWithinAKindOnly) {
    const std::tuple<std::int32_t, std::int32_t, double, double> aCases[] = {
        {401, 257, 9.144, 360.0},       {405, 513, 1021.8, 1021.8},
        {913, 277, 0.5, 1800.0},        {452, 451, 1.0, 2.4710538146716536},
        {603, 602, 2000.0, 0.90718474}, {652, 651, 1.0, 3.785411784},
        {101, 101, 7.0, 7.0},  // a unit with no kind, to itself
    };
    for (const auto& [lFrom, lTo, dValue, dExpected] : aCases)
        EXPECT_DOUBLE_EQ(Converted({dValue}, lFrom, lTo)[0], dExpected) << lFrom << " " << lTo;
    for (auto [lFrom, lTo] : {std::pair{401, 277}, std::pair{101, 102}, std::pair{16, 401}})
        EXPECT_EQ(test::ErrorNumberOf([&] { Converted({1.0}, lFrom, lTo); }), errInvalidCall);
}

// The track region's own reads are in the tool's summary test, end to end.
TEST(SummaryStandIn, TwoUnitValuesAndUniqueKeys) {
    TrackRegion oTrack;
    // Kilograms per hectare read as tonnes per acre; keys are unique without regard to case.
    auto oDef = std::make_shared<QuantityDef>("r", "Rate", 601);
    auto oRatio = std::make_shared<RatioSeries>("r", oDef, 452);
    oRatio->Add(1000.0);
    EXPECT_DOUBLE_EQ(oRatio->Values(U(602), U(451), true)[0], 0.40468564224);
    EXPECT_EQ(oRatio->Values(U(602), U(451), false)[0], 1000.0);  // as recorded
    EXPECT_TRUE(oTrack.AddRatioSeries(oRatio));
    EXPECT_FALSE(oTrack.AddRatioSeries(std::make_shared<RatioSeries>("R", oDef, 452)));
    EXPECT_EQ(oTrack.RatioSeries()->Item("R"), oRatio);
    EXPECT_EQ(oTrack.Series()->Item("r"), nullptr);
}

}  // namespace
}  // namespace tnw::standins
