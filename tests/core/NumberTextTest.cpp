// Number text, the text-to-number rule and half-even rounding.
#include <gtest/gtest.h>

#include <cmath>
#include <cstdint>
#include <cstdio>
#include <cstring>
#include <limits>
#include <random>
#include <string>

#include "core/Error.h"
#include "core/NumberText.h"
#include "core/SerialDate.h"
#include "support/TestSupport.h"

namespace tnw {
namespace {

using test::ErrorNumberOf;

std::string FloatText(float f) {
    std::string s;
    AppendNumberText(s, f);
    return s;
}

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
    // sensor-like decimals, scaled integers, raw bit patterns (subnormals included).
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

TEST(NumberText, LeadingBlankOrSignAndNoZeroBeforeTheMark) {
    EXPECT_EQ(NumberText(0.5), " .5");
    EXPECT_EQ(NumberText(-0.25), "-.25");
    EXPECT_EQ(NumberText(180.5), " 180.5");
    EXPECT_EQ(NumberText(-93.25), "-93.25");
    EXPECT_EQ(NumberText(0.0), " 0");
    EXPECT_EQ(NumberText(-0.0), " 0");
    EXPECT_EQ(NumberText(1.0), " 1");
    EXPECT_EQ(NumberText(-3.0), "-3");
}

TEST(NumberText, FifteenSignificantDigits) {
    EXPECT_EQ(NumberText(1.0 / 3.0), " .333333333333333");
    EXPECT_EQ(NumberText(2.0 / 3.0), " .666666666666667");
    EXPECT_EQ(NumberText(0.1 + 0.2), " .3");  // 0.30000000000000004 has 17 digits
    EXPECT_EQ(NumberText(999999999999999.0), " 999999999999999");
    EXPECT_EQ(NumberText(123456.7890123456), " 123456.789012346");
}

TEST(NumberText, ExponentFormWhereDigitsDontFit) {
    EXPECT_EQ(NumberText(1e20), " 1E+20");
    EXPECT_EQ(NumberText(1e15), " 1E+15");
    EXPECT_EQ(NumberText(-1.5e15), "-1.5E+15");
    EXPECT_EQ(NumberText(123456789012345678.0), " 1.23456789012346E+17");
    EXPECT_EQ(NumberText(1e100), " 1E+100");
    EXPECT_EQ(NumberText(0.0001), " .0001");
    EXPECT_EQ(NumberText(0.00001), " 1E-05");
    EXPECT_EQ(NumberText(-2.5e-7), "-2.5E-07");
    EXPECT_EQ(NumberText(1e-300), " 1E-300");
}

TEST(NumberText, FloatsHaveSevenDigits) {
    EXPECT_EQ(FloatText(0.1f), " .1");
    EXPECT_EQ(FloatText(1.0f / 3.0f), " .3333333");
    EXPECT_EQ(FloatText(16777216.0f), " 1.677722E+07");
    EXPECT_EQ(FloatText(-2.5f), "-2.5");
}

TEST(NumberText, TaggedValues) {
    EXPECT_EQ(NumberText(Variant(std::int16_t{-7})), "-7");
    EXPECT_EQ(NumberText(Variant(std::int32_t{42})), " 42");
    EXPECT_EQ(NumberText(Variant(0.5f)), " .5");
    EXPECT_EQ(NumberText(Variant()), " 0");
    EXPECT_EQ(NumberText(Variant(true)), "True");
    EXPECT_EQ(NumberText(Variant(" 2.5 ")), " 2.5");
    EXPECT_EQ(ErrorNumberOf([] { NumberText(Variant("abc")); }), errTypeMismatch);
    EXPECT_EQ(ErrorNumberOf([] { NumberText(std::numeric_limits<double>::infinity()); }),
              errOverflow);
    EXPECT_EQ(ErrorNumberOf([] { NumberText(std::numeric_limits<double>::quiet_NaN()); }),
              errOverflow);
}

TEST(TextToNumber, ReadsAsFarAsTheNumberGoes) {
    EXPECT_EQ(TextToNumber("-12.5e2x"), -1250.0);
    EXPECT_EQ(TextToNumber("1 2 3"), 123.0);
    EXPECT_EQ(TextToNumber(" \t-\n4 2"), -42.0);
    EXPECT_EQ(TextToNumber("1,5"), 1.0);
    EXPECT_EQ(TextToNumber("1.2.3"), 1.2);
    EXPECT_EQ(TextToNumber(".5"), 0.5);
    EXPECT_EQ(TextToNumber("+7"), 7.0);
    EXPECT_EQ(TextToNumber("1e"), 1.0);
    EXPECT_EQ(TextToNumber("2e+"), 2.0);
    EXPECT_EQ(TextToNumber("5 e 1"), 50.0);
}

TEST(TextToNumber, ExponentLettersEAndD) {
    EXPECT_EQ(TextToNumber("1.5D3"), 1500.0);
    EXPECT_EQ(TextToNumber("1.5d-1"), 0.15);
    EXPECT_EQ(TextToNumber("2E-3"), 0.002);
    EXPECT_EQ(TextToNumber("3e+2"), 300.0);
}

TEST(TextToNumber, HexadecimalAndOctalPrefixes) {
    EXPECT_EQ(TextToNumber("&H10"), 16.0);
    EXPECT_EQ(TextToNumber("&hFf"), 255.0);
    EXPECT_EQ(TextToNumber("&O17"), 15.0);
    EXPECT_EQ(TextToNumber("&o19"), 1.0);  // 9 is no octal digit
    EXPECT_EQ(TextToNumber("&H"), 0.0);
    EXPECT_EQ(TextToNumber("&X1"), 0.0);
}

TEST(TextToNumber, NothingReadableIsZero) {
    EXPECT_EQ(TextToNumber("abc"), 0.0);
    EXPECT_EQ(TextToNumber(""), 0.0);
    EXPECT_EQ(TextToNumber("-"), 0.0);
    EXPECT_EQ(TextToNumber("."), 0.0);
    EXPECT_EQ(TextToNumber("e5"), 0.0);
}

TEST(TextToNumber, OutOfRangeNumbers) {
    EXPECT_EQ(TextToNumber("1e-400"), 0.0);
    EXPECT_EQ(TextToNumber("0." + std::string(400, '0') + "1"), 0.0);
    EXPECT_EQ(TextToNumber(std::string(300, '1') + "e-299"), TextToNumber("1.11111111111111111"));
    // A number too large for a double is an overflow, however it is spelled.
    EXPECT_EQ(ErrorNumberOf([] { TextToNumber("1e400"); }), errOverflow);
    EXPECT_EQ(ErrorNumberOf([] { TextToNumber(std::string(400, '9')); }), errOverflow);
}

TEST(RoundHalfEven, TiesGoToTheEvenDigit) {
    EXPECT_EQ(RoundHalfEven(2.5, 0), 2.0);
    EXPECT_EQ(RoundHalfEven(3.5, 0), 4.0);
    EXPECT_EQ(RoundHalfEven(-2.5, 0), -2.0);
    EXPECT_EQ(RoundHalfEven(0.125, 2), 0.12);
    EXPECT_EQ(RoundHalfEven(0.375, 2), 0.38);
    EXPECT_EQ(RoundHalfEven(1.23456785, 7), 1.2345678);
    EXPECT_EQ(RoundHalfEven(1.23456775, 7), 1.2345678);
    EXPECT_EQ(RoundHalfEven(-1.23456775, 7), -1.2345678);
    EXPECT_EQ(RoundHalfEven(0.00000005, 7), 0.0);
    EXPECT_EQ(RoundHalfEven(0.00000015, 7), 0.0000002);
}

TEST(RoundHalfEven, NonTiesAndCarries) {
    EXPECT_EQ(RoundHalfEven(1.23456786, 7), 1.2345679);
    EXPECT_EQ(RoundHalfEven(9.99999995, 7), 10.0);
    EXPECT_EQ(RoundHalfEven(-93.25, 7), -93.25);
    EXPECT_EQ(RoundHalfEven(1e20, 7), 1e20);
    EXPECT_EQ(RoundHalfEven(0.000000004, 7), 0.0);
    EXPECT_EQ(RoundHalfEven(0.00000006, 7), 0.0000001);
    EXPECT_EQ(RoundHalfEven(-122.123456789, 7), -122.1234568);
}

TEST(RoundToLong, TiesToEvenAndOverflow) {
    EXPECT_EQ(RoundToLong(2.5), 2);
    EXPECT_EQ(RoundToLong(3.5), 4);
    EXPECT_EQ(RoundToLong(-2.5), -2);
    EXPECT_EQ(RoundToLong(-2.6), -3);
    EXPECT_EQ(RoundToLong(2147483647.4), 2147483647);
    EXPECT_EQ(RoundToLong(-2147483648.4), std::numeric_limits<std::int32_t>::min());
    // The tie goes to the even neighbour, which fits.
    EXPECT_EQ(RoundToLong(-2147483648.5), std::numeric_limits<std::int32_t>::min());
    EXPECT_EQ(ErrorNumberOf([] { RoundToLong(2147483647.5); }), errOverflow);
    EXPECT_EQ(ErrorNumberOf([] { RoundToLong(-2147483649.0); }), errOverflow);
    EXPECT_EQ(ErrorNumberOf([] { RoundToLong(std::numeric_limits<double>::quiet_NaN()); }),
              errOverflow);
}

}  // namespace
}  // namespace tnw
