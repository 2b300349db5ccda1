// The delimited reader on text as spreadsheet programs save it: a byte-order mark, UTF-8,
// header names repeated thousands of times; and the last line read after the end.
#include <gtest/gtest.h>

#include <chrono>
#include <string>

#include "delimited/tnwASCIIDecoder.h"
#include "support/TestSupport.h"
#include "uom/UnitLookup.h"

namespace tnw::test {
namespace {

class TextEncodingTest : public ::testing::Test {
protected:
    TextEncodingTest() { standins::RegisterUnitLookup(); }
    void Open(const std::string& sBytes) {
        WriteFile(oDir.Path("data.csv"), sBytes);
        oReader.SetFilename(oDir.Path("data.csv"));
    }

    ScopedCapture oCapture;
    TempDir oDir;
    tnwASCIIDecoder oReader;
};

// With the mark skipped the first header cell is found as the longitude, whose value keeps its
// digits; in UTF-8 a text column's Size counts characters and a stray byte still reads.
TEST_F(TextEncodingTest, ByteOrderMarkAndUtf8) {
    for (bool bFaithful : {false, true}) {
        Open(
            "\xEF\xBB\xBFLongitude,Latitude,Name\r\n-93.1234567890123,42.5,\xE2\x82\xAC\xE2\x82\xAC"
            "\xE9\r\n");
        oReader.SetSkipByteOrderMark(bFaithful);
        if (bFaithful) oReader.SetTextCodePage(platform::CodePage::Utf8);
        oReader.SetHeaderRows(1);
        oReader.SetLonCol(0);
        ASSERT_EQ(oReader.AutoGenColumns(), Variant(true));
        oReader.Columns()->Clear();
        oReader.Columns()->Add("Name", "", "", vtString, 3, 0, 0, 1, 16, "", true, true);
        oReader.Columns()->Item("Name")->SetPosition(3);
        ASSERT_EQ(oReader.MoveFirst(), Variant(true));
        EXPECT_EQ(oReader.Longitude(), bFaithful ? -93.1234567890123 : 0.0);
        EXPECT_EQ(oReader.Columns()->Item("Name")->Value(),
                  Variant(bFaithful ? "\xE2\x82\xAC\xE2\x82\xAC\xC3\xA9"
                                    : "\xC3\xA2\xE2\x80\x9A\xC2\xAC"));
        EXPECT_FALSE(oReader.MoveNext());
        EXPECT_EQ(oReader.PercentComplete(), 100.0);
    }
}

// A name repeated 15,000 times is numbered name, name_1, ... in linear time; a cell that
// already holds a numbered name pushes the count on.
TEST_F(TextEncodingTest, RepeatedHeaderNames) {
    std::string sHeader = "a,A,a_2";
    for (int i = 0; i < 15000; ++i)
        sHeader += ",a";
    const auto tStart = std::chrono::steady_clock::now();
    ASSERT_TRUE(oReader.ColumnsFromString(sHeader, ","));
    EXPECT_LT(std::chrono::steady_clock::now() - tStart, std::chrono::seconds(5));
    const auto& vColumns = oReader.Columns()->Items();
    ASSERT_EQ(vColumns.size(), 15003u);
    EXPECT_EQ(vColumns[1]->Key() + vColumns[2]->Key() + vColumns[3]->Key(), "A_1a_2a_3");
    EXPECT_EQ(vColumns.back()->Key(), "a_15002");
}

}  // namespace
}  // namespace tnw::test
