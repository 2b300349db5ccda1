// tnwDBFDecoder on hand-built tables: field list, values, cursor, search, failures and
// hostile headers.
#include <gtest/gtest.h>

#include <bit>
#include <climits>
#include <tuple>

#include "DbfBytes.h"
#include "core/Error.h"
#include "core/NumberText.h"
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
        EXPECT_EQ(std::tuple(c.Name(), c.Kind(), c.Unit(), c.Visible(), c.Position()),
                  std::tuple(std::string(), 1, 16, true, static_cast<std::int32_t>(i + 1)));
    }
    EXPECT_FALSE(oReader.Eof());  // before the first move
    EXPECT_EQ(oReader.CurrentRow(), "0");
}

// A duplicate whose "Dummy_" key is taken already gets no column, yet its bytes are skipped;
// Active is looked at for each record, so a host may switch a column on or off.
TEST_F(DBFDecoderTest, DuplicatesAndActiveColumns) {
    Open(DbfTable({{"A", 'C', 2}, {"Dummy_3", 'C', 2}, {"a", 'C', 2}, {"B", 'C', 2}})
             .Row({"a1", "d1", "x1", "b1"})
             .Row({"a2", "d2", "x2", "b2"}));
    EXPECT_EQ(oReader.Schema(), "A~C~2~0~|Dummy_3~C~2~0~|Dummy_3~C~2~0~|B~C~2~0~");
    EXPECT_EQ(oReader.Columns()->Count(), 3);
    ASSERT_EQ(oReader.MoveFirst(), Variant(true));
    EXPECT_EQ(std::tuple(Value("Dummy_3"), Value("B")), std::tuple(Variant("d1"), Variant("b1")));
    oReader.Columns()->Item("A")->SetActive(false);
    ASSERT_TRUE(oReader.MoveNext());
    EXPECT_EQ(std::tuple(Value("A"), Value("B")), std::tuple(Variant("a1"), Variant("b2")));
}

TEST_F(DBFDecoderTest, ValuesFollowTheRulesOfEachType) {
    // clang-format off
    const DbfTable oTable = DbfTable({{"NAME", 'C', 10}, {"RATE", 'N', 8, 2}, {"DAY", 'D', 10}, {"FLAG", 'L', 2},
                   {"MEMO", 'M', 4}, {"NAME", 'C', 3}})
             .Row({"  a b  ", "   3.5", "20040309", "N", "memo", "dup"})
             .Row({"\xE9t\xE9", "", "", "Y", "", "x"}, '*')  // deleted rows are delivered too
             .Row({"", "12abc", "2004-03-10", "n", "", ""})
             .Row({"last", "-1.5E2", "  ", "?", "", ""})
             .Row({"", "", "", "t"}).Row({"", "", "", "T"}).Row({"", "", "", "y"})
             .Row({"", "", "", "-1"}).Row({"", "", "", "F"});
    // clang-format on
    Open(oTable);
    // Per record: NAME, RATE, DAY, FLAG; a blank number is 0, a blank date and a false text
    // assign nothing, so the value before stays; memo fields and duplicates get nothing.
    const SerialDate tMarch9th{kMarch9th2004}, tMarch10th{kMarch9th2004 + 1};
    const Variant aExpected[][4] = {
        {"a b", 3.5, tMarch9th, Variant()}, {"\xC3\xA9t\xC3\xA9", 0.0, tMarch9th, true},
        {"", 12.0, tMarch10th, true},       {"last", -150.0, tMarch10th, true},
        {"", 0.0, tMarch10th, true},        {"", 0.0, tMarch10th, true},
        {"", 0.0, tMarch10th, true},        {"", 0.0, tMarch10th, true},
        {"", 0.0, tMarch10th, true},
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
    // With EveryFieldSets each record has its own RATE, DAY and FLAG.
    oReader.SetEveryFieldSets(true);
    Open(oTable);
    const Variant aEvery[][3] = {{3.5, tMarch9th, false},
                                 {Variant(), Variant(), true},
                                 {12.0, tMarch10th, false},
                                 {-150.0, Variant(), Variant()}};
    for (bMore = oReader.MoveFirst() == Variant(true); const auto& aRecord : aEvery) {
        ASSERT_TRUE(bMore);
        EXPECT_EQ(std::tuple(Value("RATE"), Value("DAY"), Value("FLAG")),
                  std::tuple(aRecord[0], aRecord[1], aRecord[2]));
        bMore = oReader.MoveNext();
    }
    oReader.SetEveryFieldSets(false);
    // A short numeric date is an error of MoveNext; MoveFirst ends such a failure silently.
    Open(DbfTable({{"DAY", 'D', 8}}).Row({"20040309"}).Row({"200403"}));
    ASSERT_EQ(oReader.MoveFirst(), Variant(true));
    EXPECT_EQ(ErrorNumberOf([&] { oReader.MoveNext(); }), errTypeMismatch);
    Open(DbfTable({{"DAY", 'D', 8}}).Row({"2004"}), "bad.dbf");
    EXPECT_TRUE(oReader.MoveFirst().IsEmpty());
}

// Numeric fields, and the longitude and latitude fields, read exactly what the text-to-number
// rule reads, down to the sign of zero, also where the reader takes a short way for plain
// decimals.
TEST_F(DBFDecoderTest, NumbersReadAsTheTextToNumberRuleReadsThem) {
    // clang-format off
    const char* aTexts[] = {"0", "-0", ".5", "5.", "-.25", "0.1", "2.675", "123456789012345",
        "1234567890123456", "9007199254740993", "-999999999999999", "1.00000000000001",
        "0.000000000000001", "12345678.1234567", "1E+20", "-1.5E-3", "+7", "1,5", "- 3", "&H1F",
        "-", ".", "1.2.3", "**********"};
    // clang-format on
    DbfTable oTable({{"N", 'N', 17, 4}, {"T", 'C', 17}});
    for (const char* sText : aTexts)
        oTable.Row({sText, sText});
    Open(oTable);
    oReader.SetLonCol(1);
    oReader.SetLatCol(2);
    auto bits = [](double d) { return std::bit_cast<std::uint64_t>(d); };
    ASSERT_EQ(oReader.MoveFirst(), Variant(true));
    for (const char* sText : aTexts) {
        SCOPED_TRACE(sText);
        const auto uExpected = bits(TextToNumber(sText));
        const double* pValue = Value("N").As<double>();
        ASSERT_NE(pValue, nullptr);
        EXPECT_EQ(std::tuple(bits(*pValue), bits(oReader.Longitude()), bits(oReader.Latitude())),
                  std::tuple(uExpected, uExpected, uExpected));
        oReader.MoveNext();
    }
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
    EXPECT_FALSE(oReader.MoveNext());
    EXPECT_EQ(std::tuple(oReader.Eof(), oReader.CurrentRow()), std::tuple(true, "4"));
    EXPECT_FALSE(oReader.MoveToRecord(4));
    EXPECT_EQ(Value("N"), Variant(3.0)) << "values stay";
    EXPECT_TRUE(oReader.MoveToRecord(3));
    EXPECT_FALSE(oReader.Eof());
    EXPECT_TRUE(oReader.MoveToRecord(1));
    EXPECT_TRUE(oReader.MoveNext()) << "sequential reading goes on from a jump";
    // Row numbers run from 1: 0 and below neither move nor read.
    EXPECT_FALSE(oReader.MoveToRecord(0));
    EXPECT_FALSE(oReader.MoveToRecord(-5));
    EXPECT_EQ(std::tuple(oReader.CurrentRow(), Value("N")), std::tuple("2", Variant(2.0)));

    // Jumps go by the header's record length, sequential reading by the field widths: a table
    // whose records carry two bytes more than their fields shows the difference.
    DbfTable oTable({{"A", 'C', 3}});
    oTable.Raw(" one..").Raw(" two..").Raw(" six..").iRecordLength = 6;
    Open(oTable, "padded.dbf");
    EXPECT_TRUE(oReader.MoveToRecord(3));
    EXPECT_EQ(Value("A"), Variant("six"));
    EXPECT_TRUE(oReader.MoveToRecord(2));
    EXPECT_TRUE(oReader.MoveNext());
    EXPECT_EQ(Value("A"), Variant(". s"));  // record 2's padding, then record 3: out of step
}

TEST_F(DBFDecoderTest, FindColumnValueScansFromTheTop) {
    Open(DbfTable({{"NAME", 'C', 8}, {"RATE", 'N', 6, 2}})
             .Row({"Alpha", "1.25"})
             .Row({"Beta", "3.5"})
             .Row({"GAMMA", "3.5"}));
    EXPECT_EQ(oReader.FindColumnValue("name", "gamma"), 3);
    EXPECT_EQ(oReader.CurrentRow(), "3") << "the cursor stays on the match";
    EXPECT_EQ(oReader.FindColumnValue("RATE", "3.5"), 2) << "numbers compare as their text";
    EXPECT_EQ(oReader.FindColumnValue("NAME", "Delta"), 0);
    EXPECT_TRUE(oReader.Eof());
    ASSERT_TRUE(oReader.MoveToRecord(2));
    EXPECT_EQ(oReader.FindColumnValue("NOPE", "Beta"), 0);
    EXPECT_EQ(oReader.CurrentRow(), "2") << "an unknown key leaves the cursor";
    EXPECT_TRUE(oCapture.vReports.empty());
}

// Closing, or naming a missing file, keeps the field list and leaves the cursor nothing to
// read; an unreadable header shows the box and passes the error on, not through the error path.
TEST_F(DBFDecoderTest, ClosedMissingAndUnreadableFiles) {
    Open(DbfTable({{"NAME", 'C', 8}}).Row({"Alpha"}).Row({"Beta"}));
    ASSERT_TRUE(oReader.MoveToRecord(2));
    oReader.CloseFile();
    oReader.CloseFile();  // twice is harmless
    EXPECT_EQ(oReader.CurrentRow(), "0");
    EXPECT_EQ(ErrorNumberOf([&] { oReader.MoveNext(); }), errBadFileNumber);
    EXPECT_TRUE(oReader.MoveFirst().IsEmpty());

    Open(DbfTable({{"NAME", 'C', 8}}).Row({"Alpha"}));
    oReader.SetFilename(oDir.Path("absent.dbf"));
    EXPECT_EQ(oReader.Filename(), oDir.Path("absent.dbf"));
    EXPECT_TRUE(oReader.IsValidFile());
    EXPECT_EQ(oReader.Schema(), "NAME~C~8~0~");
    EXPECT_TRUE(oCapture.vBoxes.empty());
    EXPECT_TRUE(oReader.MoveFirst().IsEmpty());
    EXPECT_THROW(oReader.MoveToRecord(1), Error);

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
    EXPECT_EQ(oCapture.vBoxes[0].eIcon, platform::MsgIcon::None);
    EXPECT_TRUE(oCapture.vReports.empty());
}

TEST_F(DBFDecoderTest, GeometryFromFieldNumbers) {
    Open(DbfTable({{"ID", 'N', 3}, {"X", 'N', 8, 2}, {"Y", 'N', 8, 2}, {"G", 'C', 30}})
             .Row({"1", "-96.5", "40.25", "POINT (1 2)"})
             .Row({"2", "", "0.5", ""}));
    EXPECT_EQ(oReader.GeometryFormat(), TNW_GeometryFormat_None);
    EXPECT_EQ(ErrorNumberOf([&] { (void)oReader.Longitude(); }), errNotLonLat);
    oReader.SetLonCol(2);
    oReader.SetLatCol(3);
    oReader.SetWKTCol(0);
    EXPECT_EQ(oReader.GeometryFormat(), TNW_GeometryFormat_LonLat) << "0 changes nothing";
    ASSERT_EQ(oReader.MoveFirst(), Variant(true));
    EXPECT_EQ(std::tuple(oReader.Longitude(), oReader.Latitude(), oReader.WKT()),
              std::tuple(-96.5, 40.25, "POINT(-96.5  40.25)"));
    ASSERT_TRUE(oReader.MoveNext());
    EXPECT_EQ(oReader.WKT(), "POINT( 0  .5)");

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
    {
        SCOPED_TRACE("widths summing past the record length");
        DbfTable oTable({{"A", 'C', 200}, {"B", 'C', 200}});
        oTable.Row({"x", "y"}).Row({"z", "w"}).iRecordLength = 10;
        Open(oTable);
        ASSERT_TRUE(oReader.MoveToRecord(2));  // reads 401 bytes from byte 97 + 10
        EXPECT_EQ(oReader.MoveFirst(), Variant(true));
        EXPECT_EQ(Value("B"), Variant("y"));
    }
    {
        SCOPED_TRACE("records wider than the reader's 64 KiB buffer");
        std::vector<test::DbfField> vFields;
        for (int i = 0; i < 300; ++i)
            vFields.push_back({std::string("F").append(std::to_string(i)), 'C', 255});
        DbfTable oTable(vFields);  // 76,501 bytes a record
        std::vector<std::string> vTexts(300, "x");
        for (const std::string sRow : {"first", "second"}) {
            vTexts.front() = sRow;
            vTexts.back() = sRow + " last";
            oTable.Row(vTexts);
        }
        oTable.lRecordCount = 3;
        Open(oTable);
        for (const std::string sRow : {"first", "second"}) {
            ASSERT_TRUE(sRow == "first" ? oReader.MoveFirst().EqualsTrue() : oReader.MoveNext());
            EXPECT_EQ(std::tuple(Value("F0"), Value("F299")),
                      std::tuple(Variant(sRow), Variant(sRow + " last")));
        }
        EXPECT_EQ(ErrorNumberOf([&] { oReader.MoveNext(); }), errInputPastEnd);
    }
}

}  // namespace
}  // namespace tnw
