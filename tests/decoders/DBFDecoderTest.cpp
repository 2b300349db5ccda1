// tnwDBFDecoder on hand-built tables: field list, values, cursor, search, failures and
// hostile headers.
#include <gtest/gtest.h>

#include <climits>
#include <tuple>

#include "DbfBytes.h"
#include "core/Error.h"
#include "decoders/tnwDBFDecoder.h"
#include "support/TestSupport.h"

namespace tnw {
namespace {

using test::DbfTable;
using test::ErrorNumberOf;

constexpr double kMarch9th2004 = 38055.0;  // serial day of 2004-03-09

class DBFDecoderTest : public ::testing::Test {
protected:
    // Opens the table in oReader.
    void Open(const DbfTable& oTable, const std::string& sName = "t.dbf") {
        test::WriteFile(oDir.Path(sName), oTable.Bytes());
        oReader.SetFilename(oDir.Path(sName));
    }
    const Variant& Value(const std::string& sKey) { return oReader.Columns()->Item(sKey)->Value(); }

    test::ScopedCapture oCapture;
    test::TempDir oDir;
    tnwDBFDecoder oReader;
};

TEST_F(DBFDecoderTest, FieldListGivesColumnsKeysAndSchema) {
    // clang-format off
    Open(DbfTable({{"NAME", 'C', 20}, {"RATE", 'N', 10, 3}, {"DAY", 'D', 8, 2}, {"FLAG", 'L', 1},
                   {"MEMO", 'M', 10}, {"FLT", 'F', 8, 2},
                   {"name", 'N', 4},  // same key in another case: a duplicate
                   {"Swath_Width", 'N', 6, 1}, {"\\\\A", 'C', 3},
                   {std::string(" X\0Y", 4), 'C', 2}, {std::string(11, '\0'), 'C', 1}}));
    // clang-format on
    ASSERT_TRUE(oReader.IsValidFile());
    EXPECT_EQ(oReader.Schema(),
              "NAME~C~20~0~|RATE~N~10~3~|DAY~D~8~2~|FLAG~L~1~0~|MEMO~M~10~0~|FLT~F~8~2~|"
              "Dummy_7~N~4~0~|Swath_Width~N~6~1~|\\A~C~3~0~|X Y~C~2~0~|~C~1~0~");
    using Expected = std::tuple<std::string, std::int32_t, int, int, std::int32_t, bool>;
    const Expected aExpected[] = {
        {"NAME", vtString, 20, 0, 8, true},    {"RATE", vtDouble, 10, 3, 3, true},
        {"DAY", vtDate, 8, 0, 4096, true},     {"FLAG", vtBoolean, 1, 0, 256, true},
        {"MEMO", vtString, 10, 0, 8, false},   {"FLT", vtString, 8, 0, 8, false},
        {"Dummy_7", vtDouble, 4, 0, 3, false}, {"Swath_Width", vtDouble, 6, 1, 3, true},
        {"\\A", vtString, 3, 0, 8, true},      {"X Y", vtString, 2, 0, 8, true},
        {"", vtString, 1, 0, 8, true},
    };
    const auto& vColumns = oReader.Columns()->Items();
    ASSERT_EQ(vColumns.size(), std::size(aExpected));
    for (std::size_t i = 0; i < vColumns.size(); ++i) {
        const auto& c = *vColumns[i];
        EXPECT_EQ(Expected(c.Key(), c.Type(), c.Size(), c.Precision(), c.Flags(), c.Active()),
                  aExpected[i]);
    }
}

TEST_F(DBFDecoderTest, ValuesFollowTheRulesOfEachType) {
    // clang-format off
    const DbfTable oTable = DbfTable({{"NAME", 'C', 10}, {"RATE", 'N', 8, 2}, {"DAY", 'D', 10}, {"FLAG", 'L', 2},
                   {"MEMO", 'M', 4}, {"NAME", 'C', 3}})
             .Row({"  a b  ", "   3.5", "20040309", "N", "memo", "dup"})
             .Row({"\xE9t\xE9", "", "", "Y", "", "x"}, '*')  // deleted rows are delivered too
             .Row({"", "12abc", "2004-03-10", "n", "", ""})
             .Row({"last", "-1.5E2", "  ", "?", "", ""});

    // clang-format on
    Open(oTable);
    // Per record: NAME, RATE, DAY, FLAG; a blank number is 0, a blank date and a false text
    // assign nothing, so the value before stays; memo fields and duplicates get nothing.
    const SerialDate tMarch9th{kMarch9th2004}, tMarch10th{kMarch9th2004 + 1};
    const Variant aExpected[][4] = {
        {"a b", 3.5, tMarch9th, Variant()},
        {"\xC3\xA9t\xC3\xA9", 0.0, tMarch9th, true},
        {"", 12.0, tMarch10th, true},
        {"last", -150.0, tMarch10th, true},
    };
    bool bMore = oReader.MoveFirst() == Variant(true);
    for (const auto& aRecord : aExpected) {
        ASSERT_TRUE(bMore);
        EXPECT_EQ(std::tuple(Value("NAME"), Value("RATE"), Value("DAY"), Value("FLAG")),
                  std::tuple(aRecord[0], aRecord[1], aRecord[2], aRecord[3]))
            << oReader.CurrentRow();
        EXPECT_TRUE(Value("MEMO").IsEmpty() && Value("Dummy_6").IsEmpty());
        bMore = oReader.MoveNext();
    }
    EXPECT_FALSE(bMore);
    // A short numeric date is an error of MoveNext; MoveFirst ends such a failure silently.
    Open(DbfTable({{"DAY", 'D', 8}}).Row({"20040309"}).Row({"200403"}));
    ASSERT_EQ(oReader.MoveFirst(), Variant(true));
    EXPECT_EQ(ErrorNumberOf([&] { oReader.MoveNext(); }), errTypeMismatch);
    Open(DbfTable({{"DAY", 'D', 8}}).Row({"2004"}), "bad.dbf");
    EXPECT_TRUE(oReader.MoveFirst().IsEmpty());
}

TEST_F(DBFDecoderTest, CursorWalksJumpsAndStopsPastTheEnd) {
    Open(DbfTable({{"N", 'N', 3}}), "empty.dbf");
    EXPECT_EQ(oReader.MoveFirst(), Variant(false));
    EXPECT_TRUE(oReader.Eof());
    EXPECT_EQ(oReader.CurrentRow(), "1");

    Open(DbfTable({{"N", 'N', 3}}).Row({"1"}).Row({"2"}).Row({"3"}));
    ASSERT_EQ(oReader.MoveFirst(), Variant(true));
    EXPECT_TRUE(oReader.MoveNext() && oReader.MoveNext());
    EXPECT_FALSE(oReader.Eof()) << "the last record is current";
    EXPECT_FALSE(oReader.MoveNext());
    EXPECT_EQ(std::tuple(oReader.Eof(), oReader.CurrentRow()), std::tuple(true, "4"));
    EXPECT_FALSE(oReader.MoveToRecord(4));
    EXPECT_EQ(Value("N"), Variant(3.0)) << "values stay";
    EXPECT_TRUE(oReader.MoveToRecord(1));
    EXPECT_TRUE(oReader.MoveNext()) << "sequential reading goes on from a jump";
    // Row numbers run from 1: 0 and below neither move nor read.
    EXPECT_FALSE(oReader.MoveToRecord(0));
    EXPECT_EQ(std::tuple(oReader.CurrentRow(), Value("N")), std::tuple("2", Variant(2.0)));
}

// Closing, or naming a missing file, keeps the field list and leaves the cursor nothing to
// read; an unreadable header shows the box and passes the error on, not through the error path.
TEST_F(DBFDecoderTest, ClosedMissingAndUnreadableFiles) {
    Open(DbfTable({{"NAME", 'C', 8}}).Row({"Alpha"}).Row({"Beta"}));
    ASSERT_TRUE(oReader.MoveToRecord(2));
    oReader.CloseFile();
    EXPECT_EQ(oReader.CurrentRow(), "0");
    EXPECT_EQ(ErrorNumberOf([&] { oReader.MoveNext(); }), errBadFileNumber);
    EXPECT_TRUE(oReader.MoveFirst().IsEmpty());

    const std::string sPath = oDir.Path("short.dbf");
    test::WriteFile(sPath, std::string("\x03\x5F\x03\x1F\x00\x00", 6));
    try {
        oReader.SetFilename(sPath);
        FAIL() << "no error";
    } catch (const Error& e) {
        EXPECT_EQ(std::tuple(e.lNumber, e.sDescription),
                  std::tuple(errInputPastEnd, "Input past end of file"));
    }
    EXPECT_FALSE(oReader.IsValidFile());
    ASSERT_EQ(oCapture.vBoxes.size(), 1u);
    EXPECT_EQ(oCapture.vBoxes[0].sText, sPath + " Not Found\r\nInput past end of file");
    EXPECT_TRUE(oCapture.vReports.empty());
}

TEST_F(DBFDecoderTest, GeometryFromFieldNumbers) {
    Open(DbfTable({{"ID", 'N', 3}, {"X", 'N', 8, 2}, {"Y", 'N', 8, 2}, {"G", 'C', 30}})
             .Row({"1", "-96.5", "40.25", "POINT (1 2)"}));
    EXPECT_EQ(oReader.GeometryFormat(), TNW_GeometryFormat_None);
    EXPECT_EQ(ErrorNumberOf([&] { (void)oReader.Longitude(); }), errNotLonLat);
    oReader.SetLonCol(2);
    oReader.SetLatCol(3);
    oReader.SetWKTCol(0);
    EXPECT_EQ(oReader.GeometryFormat(), TNW_GeometryFormat_LonLat) << "0 changes nothing";
    ASSERT_EQ(oReader.MoveFirst(), Variant(true));
    EXPECT_EQ(std::tuple(oReader.Longitude(), oReader.Latitude(), oReader.WKT()),
              std::tuple(-96.5, 40.25, "POINT(-96.5  40.25)"));

    oReader.SetWKTCol(4);
    EXPECT_EQ(oReader.GeometryFormat(), TNW_GeometryFormat_WKT);
    ASSERT_TRUE(oReader.MoveToRecord(1));
    EXPECT_EQ(oReader.WKT(), "POINT (1 2)");
    EXPECT_EQ(ErrorNumberOf([&] { (void)oReader.Longitude(); }), errNotLonLat);
    oReader.SetWKTCol(5);  // past the last field
    EXPECT_EQ(ErrorNumberOf([&] { oReader.MoveToRecord(1); }), errSubscript);
}

// Header numbers that lie: the reader gives what the bytes say or a named error, and never
// trusts the numbers for memory or loop bounds.
TEST_F(DBFDecoderTest, LyingHeaders) {
    {
        SCOPED_TRACE("record count far beyond the file");
        DbfTable oTable({{"A", 'C', 2}});
        oTable.Row({"ab"}).Row({"cd"}).lRecordCount = INT_MAX;
        Open(oTable);
        ASSERT_EQ(oReader.MoveFirst(), Variant(true));
        ASSERT_TRUE(oReader.MoveNext());
        // The third record would start at the 0x1A: one byte, then the file ends.
        EXPECT_EQ(ErrorNumberOf([&] { oReader.MoveNext(); }), errInputPastEnd);
        EXPECT_THROW(oReader.MoveToRecord(INT_MAX), Error);
        EXPECT_EQ(oReader.CurrentRow(), "2147483647");
        EXPECT_FALSE(oReader.MoveNext()) << "stepping past 2^31 - 1 ends the table";
        EXPECT_EQ(oReader.CurrentRow(), "2147483648");
    }
    {
        SCOPED_TRACE("header length smaller than the descriptors, or past the end of the file");
        DbfTable oTable({{"A", 'C', 2}, {"B", 'C', 2}, {"C", 'C', 2}});
        oTable.iHeaderLength = 32 + 32 + 1;
        Open(oTable);
        EXPECT_EQ(oReader.Schema(), "A~C~2~0~");
        oTable.iHeaderLength = 32767;
        EXPECT_THROW(Open(oTable), Error);
        EXPECT_FALSE(oReader.IsValidFile());
    }
}

}  // namespace
}  // namespace tnw
