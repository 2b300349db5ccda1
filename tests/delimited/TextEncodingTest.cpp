// The delimited reader on text as spreadsheet programs save it: a byte-order mark, UTF-8,
// header names repeated thousands of times; and the last line read after the end.
#include <gtest/gtest.h>

#include <chrono>
#include <string>
#include <vector>

#include "core/NumberText.h"
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

// With the mark skipped the first header cell is found as a position field, and the first
// value of a file without header keeps its number; PercentComplete counts the mark's bytes.
TEST_F(TextEncodingTest, ByteOrderMark) {
    const std::string sFile = "\xEF\xBB\xBFLongitude,Latitude,Name\r\n-93.1234567890123,42.5,a\r\n";
    for (bool bSkip : {false, true}) {
        SCOPED_TRACE(bSkip ? "skipped" : "default");
        Open(sFile);
        oReader.SetSkipByteOrderMark(bSkip);
        oReader.SetHeaderRows(1);
        oReader.SetLonCol(0);
        ASSERT_EQ(oReader.AutoGenColumns(), Variant(true));
        EXPECT_EQ(oReader.LonCol(), bSkip ? 1 : 0);
        ASSERT_EQ(oReader.MoveFirst(), Variant(true));
        EXPECT_EQ(oReader.Longitude(), bSkip ? -93.1234567890123 : 0.0);
        EXPECT_FALSE(oReader.MoveNext());
        EXPECT_EQ(oReader.PercentComplete(), 100.0);
    }
    Open(
        "\xEF\xBB\xBF"
        "12,3\r\n");
    oReader.SetHeaderRows(0);
    oReader.SetLonCol(1);
    for (bool bSkip : {false, true}) {
        oReader.SetSkipByteOrderMark(bSkip);
        ASSERT_EQ(oReader.MoveFirst(), Variant(true));
        EXPECT_EQ(oReader.Longitude(), bSkip ? 12.0 : 0.0);
    }
}

// In UTF-8 the text passes whole, a column's Size counts characters, and a byte that starts no
// UTF-8 sequence still reads as a character.
TEST_F(TextEncodingTest, Utf8Text) {
    Open(
        "R\xC3\xA9gion;Nom\r\n\xC3\x89t\xC3\xA9;\xE2\x82\xAC\xE2\x82\xAC\xE2\x82\xAC\r\n\xE9;"
        "x\r\n");
    oReader.SetTextCodePage(platform::CodePage::Utf8);
    oReader.SetDelimiter(";");
    oReader.SetHeaderRows(1);
    EXPECT_EQ(oReader.ReadHeaders(1).Item(0), "R\xC3\xA9gion");
    oReader.Columns()->Add("R\xC3\xA9gion", "", "", vtString, 254, 0, 0, 1, 16, "", true, true);
    oReader.Columns()->Add("Nom", "", "", vtString, 2, 0, 0, 1, 16, "", true, true);
    ASSERT_EQ(oReader.MoveFirst(), Variant(true));
    EXPECT_EQ(oReader.Columns()->Item("R\xC3\xA9gion")->Value(), Variant("\xC3\x89t\xC3\xA9"));
    EXPECT_EQ(oReader.Columns()->Item("Nom")->Value(), Variant("\xE2\x82\xAC\xE2\x82\xAC"));
    ASSERT_TRUE(oReader.MoveNext());
    EXPECT_EQ(oReader.Columns()->Item("R\xC3\xA9gion")->Value(), Variant("\xC3\xA9"));
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
    EXPECT_EQ(vColumns[1]->Key(), "A_1");
    EXPECT_EQ(vColumns[2]->Key(), "a_2");
    EXPECT_EQ(vColumns[3]->Key(), "a_3");
    EXPECT_EQ(vColumns.back()->Key(), "a_15002");
    EXPECT_EQ(vColumns.back()->Position(), 15003);
}

// The line a walk ended on, and the line a header read ended on, stay current after the end.
TEST_F(TextEncodingTest, LastLineStaysAfterTheEnd) {
    Open("h\r\n1\r\n2");
    oReader.SetHeaderRows(1);
    ASSERT_EQ(oReader.MoveFirst(), Variant(true));
    ASSERT_TRUE(oReader.MoveNext());
    EXPECT_FALSE(oReader.MoveNext());
    EXPECT_EQ(oReader.CurrentLine(), "2");
    oReader.ReadHeaders(1);
    oReader.ReadHeaders(9);
    EXPECT_EQ(oReader.CurrentLine(), "h");
    EXPECT_EQ(TextToNumber("& H10"), 16.0);
    EXPECT_EQ(TextToNumber("& o 17"), 15.0);
    EXPECT_EQ(TextToNumber("& "), 0.0);
}

}  // namespace
}  // namespace tnw::test
