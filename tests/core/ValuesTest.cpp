// The tagged value, the keyed list and the narrow code page.
#include <gtest/gtest.h>

#include <cmath>
#include <cstdint>
#include <limits>
#include <string>
#include <tuple>

#include "core/Error.h"
#include "core/KeyedList.h"
#include "core/SerialDate.h"
#include "core/Variant.h"
#include "platform/CodePage.h"
#include "support/TestSupport.h"

namespace tnw {
namespace {

using test::ErrorNumberOf;
constexpr double kNaN = std::numeric_limits<double>::quiet_NaN();  // "raises error 13"

TEST(Variant, Conversions) {
    // Words a C parser takes for numbers are no numbers here.
    const std::pair<Variant, double> aDoubles[] = {{Variant(), 0},  {true, -1},
                                                   {false, 0},      {SerialDate{36526.5}, 36526.5},
                                                   {"  2.5 ", 2.5}, {"-1e3", -1000},
                                                   {"abc", kNaN},   {"1,5", kNaN},
                                                   {"", kNaN},      {Variant::Absent(), kNaN},
                                                   {"inf", kNaN},   {"nan", kNaN},
                                                   {"+-5", kNaN}};
    for (std::size_t i = 0; i < std::size(aDoubles); ++i) {
        const auto& [vValue, dExpected] = aDoubles[i];
        SCOPED_TRACE(i);
        if (std::isnan(dExpected))
            EXPECT_EQ(ErrorNumberOf([&] { vValue.ToDouble(); }), errTypeMismatch);
        else
            EXPECT_EQ(vValue.ToDouble(), dExpected);
    }
    const std::pair<Variant, std::int32_t> aLongs[] = {
        {2.5, 2}, {3.5f, 4}, {std::int16_t{-7}, -7}, {true, -1}, {" 12 ", 12}};
    for (const auto& [vValue, lExpected] : aLongs)
        EXPECT_EQ(vValue.ToLong(), lExpected) << lExpected;
    EXPECT_EQ(ErrorNumberOf([] { Variant(3e9).ToLong(); }), errOverflow);

    // ToBool, and EqualsTrue: only True or a number of -1.
    const std::tuple<Variant, bool, bool> aBools[] = {{"TRUE", true, false},
                                                      {"false", false, false},
                                                      {"0.5", true, false},
                                                      {0.0, false, false},
                                                      {std::int32_t{2}, true, false},
                                                      {true, true, true},
                                                      {std::int16_t{-1}, true, true},
                                                      {std::int32_t{1}, true, false},
                                                      {"-1", true, false}};
    for (std::size_t i = 0; i < std::size(aBools); ++i) {
        const auto& [vValue, bBool, bTrue] = aBools[i];
        EXPECT_EQ(std::pair(vValue.ToBool(), vValue.EqualsTrue()), std::pair(bBool, bTrue)) << i;
    }
    EXPECT_EQ(ErrorNumberOf([] { Variant("yes").ToBool(); }), errTypeMismatch);

    const std::pair<Variant, std::string> aTexts[] = {{Variant(), ""},
                                                      {0.5, "0.5"},
                                                      {-0.25, "-0.25"},
                                                      {std::int32_t{7}, "7"},
                                                      {1e20, "1E+20"},
                                                      {false, "False"},
                                                      {DateSerial(2024, 2, 29), "2024-02-29"},
                                                      {"as is ", "as is "}};
    for (const auto& [vValue, sText] : aTexts)
        EXPECT_EQ(vValue.ToText(), sText);
    EXPECT_EQ(Variant("2024-02-29").ToDate(), DateSerial(2024, 2, 29));
    EXPECT_EQ(Variant(36526.0).ToDate(), DateSerial(2000, 1, 1));
    EXPECT_EQ(ErrorNumberOf([] { Variant("2024-02-30").ToDate(); }), errTypeMismatch);
    // Equal values are of the same type.
    EXPECT_NE(Variant(1.0), Variant(1.0f));
    EXPECT_NE(Variant(std::int32_t{1}), Variant(std::int16_t{1}));
    EXPECT_NE(Variant(), Variant::Absent());
}

TEST(KeyedList, KeysWithoutRegardToCaseInTheirOrder) {
    KeyedList<std::string> list;
    for (const char* sKey : {"Yield", "Crop", "Moisture"})
        EXPECT_TRUE(list.Add(sKey, sKey));
    EXPECT_FALSE(list.Add("yIELD", "again"));
    EXPECT_EQ(std::tuple(list.Count(), list.At(3), list.KeyAt(1)),
              std::tuple(3, "Moisture", "Yield"));
    ASSERT_NE(list.Find("CROP"), nullptr);
    EXPECT_EQ(*list.Find("CROP"), "Crop");
    EXPECT_EQ(list.Find("Rate"), nullptr);
    for (std::int32_t lPlace : {0, 4})
        EXPECT_EQ(ErrorNumberOf([&] { list.At(lPlace); }), errSubscript);
    EXPECT_TRUE(list.Remove("YIELD"));
    EXPECT_FALSE(list.Remove("yield"));
    EXPECT_EQ(std::tuple(list.Count(), list.At(1), *list.Find("moisture")),
              std::tuple(2, "Crop", "Moisture"));
    EXPECT_TRUE(list.Add("yield", "back"));
    EXPECT_EQ(list.At(3), "back");
    list.Clear();
    EXPECT_FALSE(list.Contains("Crop"));
}

TEST(CodePage, Windows1252AndLatin1) {
    using namespace platform;
    ASSERT_EQ(NarrowCodePage(), CodePage::Windows1252);
    // Euro sign, e-acute, curly quotes; omega, a character outside the BMP, a stray byte and a
    // cut sequence are not in the code page.
    const std::pair<std::string, std::string> aCases[] = {
        {"\xE2\x82\xAC", "\x80"},
        {"caf\xC3\xA9", "caf\xE9"},
        {"\xE2\x80\x9Cq\xE2\x80\x9D", "\x93q\x94"},
        {"\xCE\xA9", "?"},
        {"a\xF0\x9F\x98\x80z", "a?z"},
        {"a\xFF"
         "b",
         "a?b"},
        {"a\xC3", "a?"}};
    for (const auto& [sUtf8, sNarrow] : aCases)
        EXPECT_EQ(ToNarrow(sUtf8), sNarrow);
    std::string s = "x";
    AppendNarrow(s, "\xC3\xBF");
    EXPECT_EQ(s, "x\xFF");
    for (CodePage ePage : {CodePage::Latin1, CodePage::Windows1252}) {
        SetNarrowCodePage(ePage);
        for (int i = 0; i < 256; ++i) {
            const std::string sByte(1, static_cast<char>(i));
            EXPECT_EQ(ToNarrow(FromNarrow(sByte)), sByte) << i;
        }
        EXPECT_EQ(FromNarrow("\x80"), ePage == CodePage::Latin1 ? "\xC2\x80" : "\xE2\x82\xAC");
        EXPECT_EQ(ToNarrow("\xE2\x82\xAC"), ePage == CodePage::Latin1 ? "?" : "\x80");
    }
}

}  // namespace
}  // namespace tnw
