// Number text, the text-to-number rule and half-even rounding.
#include <gtest/gtest.h>

#include <array>
#include <cmath>
#include <cstdint>
#include <cstdio>
#include <cstring>
#include <limits>
#include <random>
#include <string>

#include "core/Error.h"
#include "core/NumberText.h"
#include "support/TestSupport.h"

namespace tnw {
namespace {

using test::ErrorNumberOf;
constexpr double kNaN = std::numeric_limits<double>::quiet_NaN();

// C's %.15G, with the blank in front and the zero before the decimal mark dropped.
std::string PrintfNumberText(double d) {
    char aText[64];
    std::snprintf(aText, sizeof aText, "%.15G", d);
    std::string s = aText;
    if (s == "-0") s = "0";
    if (s[0] != '-') s.insert(0, 1, ' ');
    if (s.size() > 2 && s[1] == '0' && s[2] == '.') s.erase(1, 1);
    return s;
}

TEST(NumberText, AgreesWithPrintfOverManyDoubles) {
    // The few-decimals path, the shortest-digits path and the formatted path all meet here:
    // sensor-like decimals, scaled integers, raw bit patterns (subnormals included), and the
    // places where the form changes.
    for (double d : {0.5, -0.25, 0.0, -0.0, 1.0 / 3.0, 0.1 + 0.2, 999999999999999.0, 1e15, -1.5e15,
                     123456789012345678.0, 1e100, 0.0001, 0.00001, -2.5e-7, 1e-300})
        EXPECT_EQ(NumberText(d), PrintfNumberText(d));
    std::mt19937_64 rng(20261122);
    for (int i = 0; i < 200000; ++i) {
        double d = 0.0;
        switch (i % 4) {
            case 0:
                d = static_cast<double>(static_cast<std::int64_t>(rng() % 2000000000) -
                                        1000000000) /
                    std::pow(10.0, static_cast<int>(rng() % 12));
                break;
            case 1:
                d = static_cast<double>(rng() % 1000000) * 1e-6 - 0.5;
                break;
            case 2:
                d = static_cast<double>(rng() % 1000000000000000ULL) /
                    std::pow(10.0, static_cast<int>(rng() % 18));
                break;
            default: {
                const std::uint64_t u = rng();
                std::memcpy(&d, &u, sizeof d);
                if (!std::isfinite(d)) continue;
            }
        }
        ASSERT_EQ(NumberText(d), PrintfNumberText(d)) << "bits of " << d;
    }
}

TEST(NumberText, FloatsAndTaggedValues) {
    const std::pair<Variant, std::string> aCases[] = {{0.1f, " .1"},
                                                      {1.0f / 3.0f, " .3333333"},
                                                      {16777216.0f, " 1.677722E+07"},
                                                      {-2.5f, "-2.5"},
                                                      {std::int16_t{-7}, "-7"},
                                                      {std::int32_t{42}, " 42"},
                                                      {Variant(), " 0"},
                                                      {true, "True"},
                                                      {" 2.5 ", " 2.5"}};
    for (const auto& [vValue, sText] : aCases)
        EXPECT_EQ(NumberText(vValue), sText);
    for (double d : {std::numeric_limits<double>::infinity(), kNaN})
        EXPECT_EQ(ErrorNumberOf([&] { NumberText(d); }), errOverflow);
    EXPECT_EQ(ErrorNumberOf([] { NumberText(Variant("abc")); }), errTypeMismatch);
}

TEST(TextToNumber, Table) {
    // Blanks skipped anywhere; as far as the number goes; exponents with E or D; &H and &O;
    // nothing readable is 0; an underflow is 0.
    const std::pair<std::string, double> aCases[] = {
        {"-12.5e2x", -1250},
        {"1 2 3", 123},
        {" \t-\n4 2", -42},
        {"1,5", 1},
        {"1.2.3", 1.2},
        {".5", 0.5},
        {"+7", 7},
        {"1e", 1},
        {"2e+", 2},
        {"5 e 1", 50},
        {"1.5D3", 1500},
        {"1.5d-1", 0.15},
        {"2E-3", 0.002},
        {"&H10", 16},
        {"&hFf", 255},
        {"&O17", 15},
        {"&o19", 1},
        {"&H", 0},
        {"&X1", 0},
        {"abc", 0},
        {"", 0},
        {"-", 0},
        {".", 0},
        {"e5", 0},
        {"1e-400", 0},
        {"0." + std::string(400, '0') + "1", 0},
        {std::string(300, '1') + "e-299", 1.11111111111111111}};
    for (const auto& [sText, dValue] : aCases)
        EXPECT_EQ(TextToNumber(sText), dValue) << sText.substr(0, 20);
    // A number too large for a double is an overflow, however it is spelled.
    for (const std::string& sText : {std::string("1e400"), std::string(400, '9')})
        EXPECT_EQ(ErrorNumberOf([&] { TextToNumber(sText); }), errOverflow);
}

TEST(RoundHalfEven, TiesGoToTheEvenDigitOfTheShortestText) {
    const std::array<double, 3> aCases[] = {// value, places, rounded
                                            {2.5, 0, 2},
                                            {3.5, 0, 4},
                                            {-2.5, 0, -2},
                                            {0.125, 2, 0.12},
                                            {0.375, 2, 0.38},
                                            {1.23456785, 7, 1.2345678},
                                            {1.23456775, 7, 1.2345678},
                                            {-1.23456775, 7, -1.2345678},
                                            {0.00000005, 7, 0},
                                            {0.00000015, 7, 0.0000002},
                                            {1.23456786, 7, 1.2345679},
                                            {9.99999995, 7, 10},
                                            {-93.25, 7, -93.25},
                                            {1e20, 7, 1e20},
                                            {0.000000004, 7, 0},
                                            {0.00000006, 7, 0.0000001},
                                            {-122.123456789, 7, -122.1234568}};
    for (const auto& [dValue, dPlaces, dRounded] : aCases)
        EXPECT_EQ(RoundHalfEven(dValue, static_cast<int>(dPlaces)), dRounded) << dValue;
}

TEST(RoundToLong, TiesToEvenAndOverflow) {
    constexpr std::int32_t kMin = std::numeric_limits<std::int32_t>::min();
    // The tie at the bottom goes to the even neighbour, which fits.
    const std::pair<double, std::int32_t> aCases[] = {{2.5, 2},
                                                      {3.5, 4},
                                                      {-2.5, -2},
                                                      {-2.6, -3},
                                                      {2147483647.4, 2147483647},
                                                      {-2147483648.4, kMin},
                                                      {-2147483648.5, kMin}};
    for (const auto& [dValue, lRounded] : aCases)
        EXPECT_EQ(RoundToLong(dValue), lRounded) << dValue;
    for (double d : {2147483647.5, -2147483649.0, kNaN})
        EXPECT_EQ(ErrorNumberOf([&] { RoundToLong(d); }), errOverflow) << d;
}

}  // namespace
}  // namespace tnw
