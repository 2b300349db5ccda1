// The tagged value, the keyed list and the narrow code page.
#include <gtest/gtest.h>

#include <cstdint>
#include <string>

#include "core/Error.h"
#include "core/KeyedList.h"
#include "core/SerialDate.h"
#include "core/Variant.h"
#include "platform/CodePage.h"
#include "support/TestSupport.h"

namespace tnw {
namespace {

using test::ErrorNumberOf;

TEST(Variant, TypeNumbers) {
    EXPECT_EQ(Variant().Type(), vtEmpty);
    EXPECT_EQ(Variant::Absent().Type(), vtAbsent);
    EXPECT_EQ(Variant(std::int16_t{1}).Type(), 2);
    EXPECT_EQ(Variant(std::int32_t{1}).Type(), 3);
    EXPECT_EQ(Variant(1.0f).Type(), 4);
    EXPECT_EQ(Variant(1.0).Type(), 5);
    EXPECT_EQ(Variant(SerialDate{1.0}).Type(), 7);
    EXPECT_EQ(Variant("x").Type(), 8);
    EXPECT_EQ(Variant(true).Type(), 11);
    EXPECT_TRUE(Variant().IsEmpty());
    EXPECT_FALSE(Variant::Absent().IsEmpty());
    EXPECT_TRUE(Variant(2.0f).IsNumeric());
    EXPECT_FALSE(Variant("2").IsNumeric());
    EXPECT_FALSE(Variant(true).IsNumeric());
}

TEST(Variant, ToDouble) {
    EXPECT_EQ(Variant().ToDouble(), 0.0);
    EXPECT_EQ(Variant(true).ToDouble(), -1.0);
    EXPECT_EQ(Variant(false).ToDouble(), 0.0);
    EXPECT_EQ(Variant(SerialDate{36526.5}).ToDouble(), 36526.5);
    EXPECT_EQ(Variant("  2.5 ").ToDouble(), 2.5);
    EXPECT_EQ(Variant("-1e3").ToDouble(), -1000.0);
    EXPECT_EQ(ErrorNumberOf([] { Variant("abc").ToDouble(); }), errTypeMismatch);
    EXPECT_EQ(ErrorNumberOf([] { Variant("1,5").ToDouble(); }), errTypeMismatch);
    EXPECT_EQ(ErrorNumberOf([] { Variant("").ToDouble(); }), errTypeMismatch);
    EXPECT_EQ(ErrorNumberOf([] { Variant::Absent().ToDouble(); }), errTypeMismatch);
    // Words that a C parser takes for numbers are not numbers here.
    EXPECT_EQ(ErrorNumberOf([] { Variant("inf").ToDouble(); }), errTypeMismatch);
    EXPECT_EQ(ErrorNumberOf([] { Variant("nan").ToDouble(); }), errTypeMismatch);
    EXPECT_EQ(ErrorNumberOf([] { Variant("+-5").ToDouble(); }), errTypeMismatch);
}

TEST(Variant, ToLongRoundsHalfToEven) {
    EXPECT_EQ(Variant(2.5).ToLong(), 2);
    EXPECT_EQ(Variant(3.5f).ToLong(), 4);
    EXPECT_EQ(Variant(std::int16_t{-7}).ToLong(), -7);
    EXPECT_EQ(Variant(true).ToLong(), -1);
    EXPECT_EQ(Variant(" 12 ").ToLong(), 12);
    EXPECT_EQ(ErrorNumberOf([] { Variant(3e9).ToLong(); }), errOverflow);
}

TEST(Variant, ToBoolAndEqualsTrue) {
    EXPECT_TRUE(Variant("TRUE").ToBool());
    EXPECT_FALSE(Variant("false").ToBool());
    EXPECT_TRUE(Variant("0.5").ToBool());
    EXPECT_FALSE(Variant(0.0).ToBool());
    EXPECT_TRUE(Variant(std::int32_t{2}).ToBool());
    EXPECT_EQ(ErrorNumberOf([] { Variant("yes").ToBool(); }), errTypeMismatch);
    EXPECT_TRUE(Variant(true).EqualsTrue());
    EXPECT_TRUE(Variant(std::int16_t{-1}).EqualsTrue());
    EXPECT_FALSE(Variant(std::int32_t{1}).EqualsTrue());
    EXPECT_FALSE(Variant("-1").EqualsTrue());
}

TEST(Variant, ToDateAndToText) {
    EXPECT_EQ(Variant("2024-02-29").ToDate(), DateSerial(2024, 2, 29));
    EXPECT_EQ(Variant(36526.0).ToDate(), DateSerial(2000, 1, 1));
    EXPECT_EQ(ErrorNumberOf([] { Variant("2024-02-30").ToDate(); }), errTypeMismatch);
    EXPECT_EQ(Variant().ToText(), "");
    EXPECT_EQ(Variant(0.5).ToText(), "0.5");
    EXPECT_EQ(Variant(-0.25).ToText(), "-0.25");
    EXPECT_EQ(Variant(std::int32_t{7}).ToText(), "7");
    EXPECT_EQ(Variant(1e20).ToText(), "1E+20");
    EXPECT_EQ(Variant(false).ToText(), "False");
    EXPECT_EQ(Variant(DateSerial(2024, 2, 29)).ToText(), "2024-02-29");
    EXPECT_EQ(Variant("as is ").ToText(), "as is ");
}

TEST(Variant, EqualityComparesTypeAndValue) {
    EXPECT_EQ(Variant(1.0), Variant(1.0));
    EXPECT_NE(Variant(1.0), Variant(1.0f));
    EXPECT_NE(Variant(std::int32_t{1}), Variant(std::int16_t{1}));
    EXPECT_NE(Variant(), Variant::Absent());
    EXPECT_EQ(Variant("a"), Variant(std::string("a")));
}

TEST(KeyedList, KeepsOrderAndFindsByKeyOrPlace) {
    KeyedList<int> list;
    EXPECT_TRUE(list.Add("Yield", 1));
    EXPECT_TRUE(list.Add("Crop", 2));
    EXPECT_TRUE(list.Add("Moisture", 3));
    EXPECT_FALSE(list.Add("yIELD", 9));  // keys compare without regard to case
    ASSERT_EQ(list.Count(), 3);
    EXPECT_EQ(list.At(1), 1);
    EXPECT_EQ(list.At(3), 3);
    EXPECT_EQ(list.KeyAt(1), "Yield");
    ASSERT_NE(list.Find("CROP"), nullptr);
    EXPECT_EQ(*list.Find("CROP"), 2);
    EXPECT_EQ(list.Find("Rate"), nullptr);
    EXPECT_TRUE(list.Contains("moisture"));
    EXPECT_EQ(ErrorNumberOf([&] { list.At(0); }), errSubscript);
    EXPECT_EQ(ErrorNumberOf([&] { list.At(4); }), errSubscript);
}

TEST(KeyedList, RemoveKeepsTheRestFindable) {
    KeyedList<std::string> list;
    list.Add("a", "first");
    list.Add("b", "second");
    list.Add("c", "third");
    EXPECT_TRUE(list.Remove("A"));
    EXPECT_FALSE(list.Remove("a"));
    ASSERT_EQ(list.Count(), 2);
    EXPECT_EQ(list.At(1), "second");
    EXPECT_EQ(*list.Find("c"), "third");
    EXPECT_TRUE(list.Add("a", "again"));
    EXPECT_EQ(list.At(3), "again");
    list.Clear();
    EXPECT_EQ(list.Count(), 0);
    EXPECT_FALSE(list.Contains("b"));
}

TEST(CodePage, Windows1252) {
    using namespace platform;
    ASSERT_EQ(NarrowCodePage(), CodePage::Windows1252);
    EXPECT_EQ(ToNarrow("\xE2\x82\xAC"), "\x80");  // euro sign
    EXPECT_EQ(FromNarrow("\x80"), "\xE2\x82\xAC");
    EXPECT_EQ(ToNarrow("caf\xC3\xA9"), "caf\xE9");
    EXPECT_EQ(FromNarrow("caf\xE9"), "caf\xC3\xA9");
    EXPECT_EQ(ToNarrow("\xE2\x80\x9Cq\xE2\x80\x9D"), "\x93q\x94");
    EXPECT_EQ(ToNarrow("plain"), "plain");
    std::string s = "x";
    AppendNarrow(s, "\xC3\xBF");
    EXPECT_EQ(s, "x\xFF");
}

TEST(CodePage, UnmappableAndMalformedBecomeQuestionMarks) {
    using namespace platform;
    EXPECT_EQ(ToNarrow("\xCE\xA9"), "?");              // Greek capital omega
    EXPECT_EQ(ToNarrow("a\xF0\x9F\x98\x80z"), "a?z");  // one character outside the BMP
    EXPECT_EQ(ToNarrow("a\xFF"
                       "b"),
              "a?b");
    EXPECT_EQ(ToNarrow("a\xC3"), "a?");  // cut short at the end
}

TEST(CodePage, EveryByteRoundTrips) {
    using namespace platform;
    for (int i = 0; i < 256; ++i) {
        const std::string sByte(1, static_cast<char>(i));
        EXPECT_EQ(ToNarrow(FromNarrow(sByte)), sByte) << i;
    }
}

TEST(CodePage, Latin1) {
    using namespace platform;
    SetNarrowCodePage(CodePage::Latin1);
    EXPECT_EQ(ToNarrow("\xE2\x82\xAC"), "?");
    EXPECT_EQ(FromNarrow("\x80"), "\xC2\x80");
    EXPECT_EQ(ToNarrow("\xC3\xA9"), "\xE9");
    SetNarrowCodePage(CodePage::Windows1252);
}

}  // namespace
}  // namespace tnw
