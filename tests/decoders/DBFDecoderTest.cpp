// tnwDBFDecoder on hand-built tables: field list, values, cursor, search, failures and
// hostile headers.
#include <gtest/gtest.h>

#include <bit>
#include <cerrno>
#include <climits>
#include <random>

#include "DbfBytes.h"
#include "core/Error.h"
#include "core/NumberText.h"
#include "decoders/tnwDBFDecoder.h"
#include "support/TestSupport.h"

namespace tnw {
namespace {

using test::DbfField;
using test::DbfTable;

constexpr double kMarch9th2004 = 38055.0;  // serial day of 2004-03-09
constexpr double kMarch10th2004 = 38056.0;

class DBFDecoderTest : public ::testing::Test {
protected:
    std::string Write(const DbfTable& oTable, const std::string& sName = "t.dbf") {
        const std::string sPath = oDir.Path(sName);
        test::WriteFile(sPath, oTable.Bytes());
        return sPath;
    }
    const Variant& Value(tnwDBFDecoder& oReader, const std::string& sKey) {
        return oReader.Columns()->Item(sKey)->Value();
    }

    test::ScopedCapture oCapture;
    test::TempDir oDir;
};

TEST_F(DBFDecoderTest, FieldListGivesColumnsKeysAndSchema) {
    DbfTable oTable({{"NAME", 'C', 20},
                     {"RATE", 'N', 10, 3},
                     {"DAY", 'D', 8, 2},
                     {"FLAG", 'L', 1},
                     {"MEMO", 'M', 10},
                     {"FLT", 'F', 8, 2},
                     {"name", 'N', 4},  // same key in another case: a duplicate
                     {"Swath_Width", 'N', 6, 1},
                     {"\\\\A", 'C', 3},
                     {std::string(" X\0Y", 4), 'C', 2},
                     {std::string(11, '\0'), 'C', 1}});
    tnwDBFDecoder oReader;
    oReader.SetFilename(Write(oTable));
    ASSERT_TRUE(oReader.IsValidFile());
    EXPECT_EQ(oReader.Schema(),
              "NAME~C~20~0~|RATE~N~10~3~|DAY~D~8~2~|FLAG~L~1~0~|MEMO~M~10~0~|FLT~F~8~2~|"
              "Dummy_7~N~4~0~|Swath_Width~N~6~1~|\\A~C~3~0~|X Y~C~2~0~|~C~1~0~");

    struct Expected {
        const char* sKey;
        std::int32_t lType;
        std::int16_t iSize, iPrecision;
        std::int32_t lFlags;
        bool bActive;
    };
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
        SCOPED_TRACE(aExpected[i].sKey);
        const auto& oColumn = *vColumns[i];
        EXPECT_EQ(oColumn.Key(), aExpected[i].sKey);
        EXPECT_EQ(oColumn.Name(), "");
        EXPECT_EQ(oColumn.Type(), aExpected[i].lType);
        EXPECT_EQ(oColumn.Size(), aExpected[i].iSize);
        EXPECT_EQ(oColumn.Precision(), aExpected[i].iPrecision);
        EXPECT_EQ(oColumn.Flags(), aExpected[i].lFlags);
        EXPECT_EQ(oColumn.Active(), aExpected[i].bActive);
        EXPECT_EQ(oColumn.Kind(), 1);
        EXPECT_EQ(oColumn.Unit(), 16);
        EXPECT_TRUE(oColumn.Visible());
        EXPECT_EQ(oColumn.Position(), static_cast<std::int32_t>(i + 1));
    }
    // Before the first move.
    EXPECT_FALSE(oReader.Eof());
    EXPECT_EQ(oReader.CurrentRow(), "0");
}

// A duplicate whose "Dummy_" key is taken already gets no column, yet its bytes are skipped;
// Active is looked at for each record, so a host may switch a column on or off.
TEST_F(DBFDecoderTest, DuplicatesAndActiveColumns) {
    DbfTable oTable({{"A", 'C', 2}, {"Dummy_3", 'C', 2}, {"a", 'C', 2}, {"B", 'C', 2}});
    oTable.Row({"a1", "d1", "x1", "b1"}).Row({"a2", "d2", "x2", "b2"});
    tnwDBFDecoder oReader;
    oReader.SetFilename(Write(oTable));
    EXPECT_EQ(oReader.Schema(), "A~C~2~0~|Dummy_3~C~2~0~|Dummy_3~C~2~0~|B~C~2~0~");
    EXPECT_EQ(oReader.Columns()->Count(), 3);
    ASSERT_EQ(oReader.MoveFirst(), Variant(true));
    EXPECT_EQ(Value(oReader, "Dummy_3"), Variant("d1"));
    EXPECT_EQ(Value(oReader, "B"), Variant("b1"));

    oReader.Columns()->Item("A")->SetActive(false);
    ASSERT_TRUE(oReader.MoveNext());
    EXPECT_EQ(Value(oReader, "A"), Variant("a1"));
    EXPECT_EQ(Value(oReader, "B"), Variant("b2"));
}

TEST_F(DBFDecoderTest, ValuesFollowTheRulesOfEachType) {
    DbfTable oTable({{"NAME", 'C', 10},
                     {"RATE", 'N', 8, 2},
                     {"DAY", 'D', 10},
                     {"FLAG", 'L', 2},
                     {"MEMO", 'M', 4},
                     {"NAME", 'C', 3}});
    oTable.Row({"  a b  ", "   3.5", "20040309", "N", "memo", "dup"})
        .Row({"\xE9t\xE9", "", "", "Y", "", "x"}, '*')  // deleted rows are delivered too
        .Row({"", "12abc", "2004-03-10", "n", "", ""})
        .Row({"last", "-1.5E2", "  ", "?", "", ""});
    tnwDBFDecoder oReader;
    oReader.SetFilename(Write(oTable));

    ASSERT_EQ(oReader.MoveFirst(), Variant(true));
    EXPECT_EQ(Value(oReader, "NAME"), Variant("a b"));
    EXPECT_EQ(Value(oReader, "RATE"), Variant(3.5));
    EXPECT_EQ(Value(oReader, "DAY"), Variant(SerialDate{kMarch9th2004}));
    EXPECT_TRUE(Value(oReader, "FLAG").IsEmpty()) << "a false text never assigns";
    EXPECT_TRUE(Value(oReader, "MEMO").IsEmpty());
    EXPECT_TRUE(Value(oReader, "Dummy_6").IsEmpty());

    ASSERT_TRUE(oReader.MoveNext());
    EXPECT_EQ(Value(oReader, "NAME"), Variant("\xC3\xA9t\xC3\xA9")) << "Windows-1252 to UTF-8";
    EXPECT_EQ(Value(oReader, "RATE"), Variant(0.0)) << "a blank number is 0";
    EXPECT_EQ(Value(oReader, "DAY"), Variant(SerialDate{kMarch9th2004})) << "blank keeps the date";
    EXPECT_EQ(Value(oReader, "FLAG"), Variant(true));

    ASSERT_TRUE(oReader.MoveNext());
    EXPECT_EQ(Value(oReader, "NAME"), Variant(""));
    EXPECT_EQ(Value(oReader, "RATE"), Variant(12.0));
    EXPECT_EQ(Value(oReader, "DAY"), Variant(SerialDate{kMarch10th2004}));
    EXPECT_EQ(Value(oReader, "FLAG"), Variant(true)) << "N after Y still shows true";

    ASSERT_TRUE(oReader.MoveNext());
    EXPECT_EQ(Value(oReader, "NAME"), Variant("last"));
    EXPECT_EQ(Value(oReader, "RATE"), Variant(-150.0));
    EXPECT_EQ(Value(oReader, "DAY"), Variant(SerialDate{kMarch10th2004}));
    EXPECT_TRUE(Value(oReader, "Dummy_6").IsEmpty());

    EXPECT_FALSE(oReader.MoveNext());
}

// Numeric fields, and the longitude and latitude fields, read exactly what the text-to-number
// rule reads, down to the sign of zero, also where the reader takes a short way for plain
// decimals.
TEST_F(DBFDecoderTest, NumbersReadAsTheTextToNumberRuleReadsThem) {
    const std::vector<std::string> vTexts = {"0",
                                             "-0",
                                             ".5",
                                             "5.",
                                             "-.25",
                                             "0.1",
                                             "2.675",
                                             "123456789012345",
                                             "1234567890123456",
                                             "9007199254740993",
                                             "-999999999999999",
                                             "1.00000000000001",
                                             "0.000000000000001",
                                             "12345678.1234567",
                                             "1E+20",
                                             "-1.5E-3",
                                             "+7",
                                             "1,5",
                                             "- 3",
                                             "&H1F",
                                             "-",
                                             ".",
                                             "1.2.3",
                                             "**********"};
    DbfTable oTable({{"N", 'N', 17, 4}, {"T", 'C', 17}});
    for (const std::string& sText : vTexts)
        oTable.Row({sText, sText});
    tnwDBFDecoder oReader;
    oReader.SetFilename(Write(oTable));
    oReader.SetLonCol(1);
    oReader.SetLatCol(2);
    auto bits = [](double d) { return std::bit_cast<std::uint64_t>(d); };
    ASSERT_EQ(oReader.MoveFirst(), Variant(true));
    for (const std::string& sText : vTexts) {
        SCOPED_TRACE(sText);
        const double dExpected = TextToNumber(sText);
        const double* pValue = Value(oReader, "N").As<double>();
        ASSERT_NE(pValue, nullptr);
        EXPECT_EQ(bits(*pValue), bits(dExpected));
        EXPECT_EQ(bits(oReader.Longitude()), bits(dExpected));
        EXPECT_EQ(bits(oReader.Latitude()), bits(dExpected));
        oReader.MoveNext();
    }
}

TEST_F(DBFDecoderTest, LogicalTextsThatMeanTrue) {
    DbfTable oTable({{"A", 'L', 2}, {"B", 'L', 2}, {"C", 'L', 2}, {"D", 'L', 2}, {"E", 'L', 2}});
    oTable.Row({"t", "T", "y", "-1", "F"});
    tnwDBFDecoder oReader;
    oReader.SetFilename(Write(oTable));
    ASSERT_EQ(oReader.MoveFirst(), Variant(true));
    for (const char* sKey : {"A", "B", "C", "D"})
        EXPECT_EQ(Value(oReader, sKey), Variant(true));
    EXPECT_TRUE(Value(oReader, "E").IsEmpty());
}

TEST_F(DBFDecoderTest, ShortNumericDateIsAnErrorOfMoveNext) {
    DbfTable oTable({{"DAY", 'D', 8}});
    oTable.Row({"20040309"}).Row({"200403"});
    tnwDBFDecoder oReader;
    oReader.SetFilename(Write(oTable));
    ASSERT_EQ(oReader.MoveFirst(), Variant(true));
    try {
        oReader.MoveNext();
        FAIL() << "no error";
    } catch (const Error& e) {
        EXPECT_EQ(e.lNumber, errTypeMismatch);
    }
    // MoveFirst ends such a failure silently.
    DbfTable oBad({{"DAY", 'D', 8}});
    oBad.Row({"2004"});
    oReader.SetFilename(Write(oBad, "bad.dbf"));
    EXPECT_TRUE(oReader.MoveFirst().IsEmpty());
}

TEST_F(DBFDecoderTest, CursorWalksAndStopsPastTheEnd) {
    DbfTable oTable({{"N", 'N', 3}});
    oTable.Row({"1"}).Row({"2"}).Row({"3"});
    tnwDBFDecoder oReader;
    oReader.SetFilename(Write(oTable));

    ASSERT_EQ(oReader.MoveFirst(), Variant(true));
    EXPECT_EQ(oReader.CurrentRow(), "1");
    EXPECT_TRUE(oReader.MoveNext());
    EXPECT_TRUE(oReader.MoveNext());
    EXPECT_FALSE(oReader.Eof()) << "the last record is current";
    EXPECT_EQ(Value(oReader, "N"), Variant(3.0));
    for (int i = 0; i < 3; ++i) {
        EXPECT_FALSE(oReader.MoveNext());
        EXPECT_TRUE(oReader.Eof());
        EXPECT_EQ(oReader.CurrentRow(), "4");
    }

    EXPECT_FALSE(oReader.MoveToRecord(4));
    EXPECT_EQ(oReader.CurrentRow(), "4");
    EXPECT_EQ(Value(oReader, "N"), Variant(3.0)) << "values stay";
    EXPECT_TRUE(oReader.MoveToRecord(2));
    EXPECT_EQ(Value(oReader, "N"), Variant(2.0));
    EXPECT_TRUE(oReader.MoveToRecord(3));
    EXPECT_FALSE(oReader.Eof());
    EXPECT_TRUE(oReader.MoveToRecord(1));
    EXPECT_TRUE(oReader.MoveNext()) << "sequential reading goes on from a jump";
    EXPECT_EQ(Value(oReader, "N"), Variant(2.0));

    // Row numbers run from 1: 0 and below neither move nor read.
    EXPECT_FALSE(oReader.MoveToRecord(0));
    EXPECT_FALSE(oReader.MoveToRecord(-5));
    EXPECT_EQ(oReader.CurrentRow(), "2");
    EXPECT_EQ(Value(oReader, "N"), Variant(2.0));

    // MoveFirst starts over from any place.
    EXPECT_EQ(oReader.MoveFirst(), Variant(true));
    EXPECT_EQ(Value(oReader, "N"), Variant(1.0));
}

TEST_F(DBFDecoderTest, EmptyTable) {
    tnwDBFDecoder oReader;
    oReader.SetFilename(Write(DbfTable({{"N", 'N', 3}})));
    EXPECT_FALSE(oReader.Eof());
    EXPECT_EQ(oReader.CurrentRow(), "0");
    EXPECT_EQ(oReader.MoveFirst(), Variant(false));
    EXPECT_TRUE(oReader.Eof());
    EXPECT_EQ(oReader.CurrentRow(), "1");
}

// Jumps go by the header's record length, sequential reading by the field widths: a table
// whose records carry two bytes more than their fields shows the difference.
TEST_F(DBFDecoderTest, JumpsUseTheRecordLengthAndSteppingTheWidths) {
    DbfTable oTable({{"A", 'C', 3}});
    oTable.Raw(" one..").Raw(" two..").Raw(" six..");
    oTable.iRecordLength = 6;
    tnwDBFDecoder oReader;
    oReader.SetFilename(Write(oTable));
    EXPECT_TRUE(oReader.MoveToRecord(3));
    EXPECT_EQ(Value(oReader, "A"), Variant("six"));
    EXPECT_TRUE(oReader.MoveToRecord(2));
    EXPECT_EQ(Value(oReader, "A"), Variant("two"));
    EXPECT_TRUE(oReader.MoveNext());
    // Four bytes on from record 2 lie its padding, then record 3: out of step.
    EXPECT_EQ(Value(oReader, "A"), Variant(". s"));
}

TEST_F(DBFDecoderTest, FindColumnValueScansFromTheTop) {
    DbfTable oTable({{"NAME", 'C', 8}, {"RATE", 'N', 6, 2}});
    oTable.Row({"Alpha", "1.25"}).Row({"Beta", "3.5"}).Row({"GAMMA", "3.5"});
    tnwDBFDecoder oReader;
    oReader.SetFilename(Write(oTable));

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

TEST_F(DBFDecoderTest, FindColumnValueReportsReadErrors) {
    DbfTable oTable({{"NAME", 'C', 8}});
    oTable.Row({"Alpha"}).Row({"Beta"});
    oTable.lRecordCount = 5;  // more than the file holds
    tnwDBFDecoder oReader;
    oReader.SetFilename(Write(oTable));
    EXPECT_EQ(oReader.FindColumnValue("NAME", "nowhere"), 0);
    ASSERT_EQ(oCapture.vReports.size(), 1u);
    EXPECT_EQ(oCapture.vReports[0].sSource, "tnwDBFDecoder.FindColumnValue");
    EXPECT_EQ(oCapture.vReports[0].lNumber, errInputPastEnd);
    // Found before the error: still found.
    EXPECT_EQ(oReader.FindColumnValue("NAME", "beta"), 2);
}

TEST_F(DBFDecoderTest, MissingFileChangesNothing) {
    DbfTable oTable({{"NAME", 'C', 8}});
    oTable.Row({"Alpha"});
    tnwDBFDecoder oReader;
    oReader.SetFilename(Write(oTable));
    ASSERT_TRUE(oReader.IsValidFile());
    oReader.SetFilename(oDir.Path("absent.dbf"));
    EXPECT_EQ(oReader.Filename(), oDir.Path("absent.dbf"));
    EXPECT_TRUE(oReader.IsValidFile());
    EXPECT_EQ(oReader.Schema(), "NAME~C~8~0~");
    EXPECT_TRUE(oCapture.vBoxes.empty());
    // The old file was closed: the cursor has nothing to read.
    EXPECT_TRUE(oReader.MoveFirst().IsEmpty());
    EXPECT_THROW(oReader.MoveToRecord(1), Error);
}

TEST_F(DBFDecoderTest, UnreadableHeaderShowsTheBoxAndPassesTheError) {
    DbfTable oGood({{"NAME", 'C', 8}});
    tnwDBFDecoder oReader;
    oReader.SetFilename(Write(oGood));
    ASSERT_TRUE(oReader.IsValidFile());

    const std::string sPath = oDir.Path("short.dbf");
    test::WriteFile(sPath, std::string("\x03\x5F\x03\x1F\x00\x00", 6));
    try {
        oReader.SetFilename(sPath);
        FAIL() << "no error";
    } catch (const Error& e) {
        EXPECT_EQ(e.lNumber, errInputPastEnd);
        EXPECT_EQ(e.sDescription, "Input past end of file");
    }
    EXPECT_FALSE(oReader.IsValidFile());
    ASSERT_EQ(oCapture.vBoxes.size(), 1u);
    EXPECT_EQ(oCapture.vBoxes[0].sText, sPath + " Not Found\r\nInput past end of file");
    EXPECT_EQ(oCapture.vBoxes[0].eIcon, platform::MsgIcon::None);
    EXPECT_TRUE(oCapture.vReports.empty()) << "this failure does not use the error path";
}

TEST_F(DBFDecoderTest, FileThatCannotBeOpenedRaisesUnderOpenFile) {
    DbfTable oTable({{"NAME", 'C', 8}});
    const std::string sPath = Write(oTable);
    auto& oCalls = platform::Sys();
    const auto fnOpen = oCalls.open;
    oCalls.open = [](const char*, int, int) {
        errno = EACCES;
        return -1;
    };
    tnwDBFDecoder oReader;
    try {
        oReader.SetFilename(sPath);
        ADD_FAILURE() << "no error";
    } catch (const Error& e) {
        EXPECT_EQ(e.lNumber, errPathFileAccess);
        EXPECT_EQ(e.sSource, "tnwDelimAscii.OpenFile");
    }
    oCalls.open = fnOpen;
    ASSERT_EQ(oCapture.vBoxes.size(), 1u);
    EXPECT_EQ(oCapture.vBoxes[0].sText.rfind(sPath + " Not Found\r\nPath/File access error", 0),
              0u);
    EXPECT_FALSE(oReader.IsValidFile());
}

TEST_F(DBFDecoderTest, CloseFileKeepsTheFieldList) {
    DbfTable oTable({{"NAME", 'C', 8}});
    oTable.Row({"Alpha"}).Row({"Beta"});
    tnwDBFDecoder oReader;
    oReader.SetFilename(Write(oTable));
    ASSERT_TRUE(oReader.MoveToRecord(2));
    oReader.CloseFile();
    EXPECT_EQ(oReader.CurrentRow(), "0");
    EXPECT_TRUE(oReader.IsValidFile());
    EXPECT_EQ(oReader.Columns()->Count(), 1);
    EXPECT_EQ(oReader.Schema(), "NAME~C~8~0~");
    try {
        oReader.MoveNext();
        FAIL() << "no error";
    } catch (const Error& e) {
        EXPECT_EQ(e.lNumber, errBadFileNumber);
    }
    EXPECT_TRUE(oReader.MoveFirst().IsEmpty());
    oReader.CloseFile();  // twice is harmless
}

TEST_F(DBFDecoderTest, GeometryFromFieldNumbers) {
    DbfTable oTable({{"ID", 'N', 3}, {"X", 'N', 8, 2}, {"Y", 'N', 8, 2}, {"G", 'C', 30}});
    oTable.Row({"1", "-96.5", "40.25", "POINT (1 2)"}).Row({"2", "", "0.5", ""});
    tnwDBFDecoder oReader;
    oReader.SetFilename(Write(oTable));

    EXPECT_EQ(oReader.GeometryFormat(), TNW_GeometryFormat_None);
    EXPECT_EQ(oReader.WKT(), "");
    try {
        (void)oReader.Longitude();
        FAIL() << "no error";
    } catch (const Error& e) {
        EXPECT_EQ(e.lNumber, errNotLonLat);
        EXPECT_EQ(e.sSource, "tnwDelimAscii.Longitude");
        EXPECT_EQ(e.sDescription, "Geometry Format is not Lon/Lat");
    }
    try {
        (void)oReader.Latitude();
        FAIL() << "no error";
    } catch (const Error& e) {
        EXPECT_EQ(e.sSource, "tnwDelimAscii.Latitude");
    }

    oReader.SetLonCol(2);
    EXPECT_EQ(oReader.GeometryFormat(), TNW_GeometryFormat_LonLat);
    oReader.SetLatCol(3);
    oReader.SetWKTCol(0);
    EXPECT_EQ(oReader.GeometryFormat(), TNW_GeometryFormat_LonLat) << "0 changes nothing";
    ASSERT_EQ(oReader.MoveFirst(), Variant(true));
    EXPECT_EQ(oReader.Longitude(), -96.5);
    EXPECT_EQ(oReader.Latitude(), 40.25);
    EXPECT_EQ(oReader.WKT(), "POINT(-96.5  40.25)");
    ASSERT_TRUE(oReader.MoveNext());
    EXPECT_EQ(oReader.WKT(), "POINT( 0  .5)");

    oReader.SetWKTCol(4);
    EXPECT_EQ(oReader.GeometryFormat(), TNW_GeometryFormat_WKT);
    ASSERT_TRUE(oReader.MoveToRecord(1));
    EXPECT_EQ(oReader.WKT(), "POINT (1 2)");
    EXPECT_THROW((void)oReader.Longitude(), Error);

    oReader.SetWKTCol(5);  // past the last field
    try {
        oReader.MoveToRecord(1);
        FAIL() << "no error";
    } catch (const Error& e) {
        EXPECT_EQ(e.lNumber, errSubscript);
    }
}

// Header numbers that lie: the reader gives what the bytes say or a named error, and never
// trusts the numbers for memory or loop bounds.
TEST_F(DBFDecoderTest, LyingHeaders) {
    tnwDBFDecoder oReader;
    {
        SCOPED_TRACE("record count far beyond the file");
        DbfTable oTable({{"A", 'C', 2}});
        oTable.Row({"ab"}).Row({"cd"});
        oTable.lRecordCount = INT_MAX;
        oReader.SetFilename(Write(oTable));
        ASSERT_EQ(oReader.MoveFirst(), Variant(true));
        ASSERT_TRUE(oReader.MoveNext());
        // The third record would start at the 0x1A: one byte, then the file ends.
        EXPECT_THROW(oReader.MoveNext(), Error);
        EXPECT_THROW(oReader.MoveToRecord(INT_MAX), Error);
        EXPECT_EQ(oReader.CurrentRow(), "2147483647");
        EXPECT_FALSE(oReader.MoveNext()) << "stepping past 2^31 - 1 ends the table";
        EXPECT_EQ(oReader.CurrentRow(), "2147483648");
    }
    {
        SCOPED_TRACE("negative lengths");
        DbfTable oTable({{"A", 'C', 2}});
        oTable.Row({"ab"}).Row({"cd"});
        oTable.iHeaderLength = -100;
        oTable.iRecordLength = -3;
        oReader.SetFilename(Write(oTable));
        EXPECT_TRUE(oReader.IsValidFile());
        EXPECT_EQ(oReader.Columns()->Count(), 0) << "no descriptor is read";
        EXPECT_TRUE(oReader.MoveFirst().IsEmpty());
        EXPECT_THROW(oReader.MoveToRecord(2), Error);
    }
    {
        SCOPED_TRACE("header length smaller than the descriptors");
        DbfTable oTable({{"A", 'C', 2}, {"B", 'C', 2}, {"C", 'C', 2}});
        oTable.iHeaderLength = 32 + 32 + 1;
        oReader.SetFilename(Write(oTable));
        EXPECT_EQ(oReader.Schema(), "A~C~2~0~");
    }
    {
        SCOPED_TRACE("header length past the end of the file");
        DbfTable oTable({{"A", 'C', 2}});
        oTable.iHeaderLength = 32767;
        EXPECT_THROW(oReader.SetFilename(Write(oTable)), Error);
        EXPECT_FALSE(oReader.IsValidFile());
    }
    {
        SCOPED_TRACE("widths summing past the record length");
        DbfTable oTable({{"A", 'C', 200}, {"B", 'C', 200}});
        oTable.Row({"x", "y"}).Row({"z", "w"});
        oTable.iRecordLength = 10;
        oReader.SetFilename(Write(oTable));
        ASSERT_TRUE(oReader.MoveToRecord(2));  // reads 401 bytes from byte 97 + 10
        EXPECT_EQ(oReader.MoveFirst(), Variant(true));
        EXPECT_EQ(Value(oReader, "B"), Variant("y"));
    }
}

TEST_F(DBFDecoderTest, ArbitraryBytesNeverBreakTheReader) {
    std::mt19937 rng(20240601);
    std::uniform_int_distribution<int> byte(0, 255);
    std::uniform_int_distribution<int> length(0, 700);
    const std::string sPath = oDir.Path("noise.dbf");
    int nOpened = 0;
    for (int iRound = 0; iRound < 400; ++iRound) {
        std::string sBytes(static_cast<std::size_t>(length(rng)), '\0');
        for (auto& c : sBytes)
            c = static_cast<char>(byte(rng));
        // Every other round a header length that keeps the descriptor loop short, so that
        // records get read as well.
        if (iRound % 2 == 0 && sBytes.size() >= 12) {
            sBytes[8] = static_cast<char>(32 * (1 + iRound % 5) + 1);
            sBytes[9] = 0;
        }
        test::WriteFile(sPath, sBytes);
        tnwDBFDecoder oReader;
        try {
            oReader.SetFilename(sPath);
        } catch (const Error&) {
            EXPECT_FALSE(oReader.IsValidFile());
            continue;
        }
        ++nOpened;
        EXPECT_LE(oReader.Columns()->Count(), 1023);
        (void)oReader.MoveFirst();
        for (int i = 0; i < 50; ++i) {
            try {
                if (!oReader.MoveNext()) break;
            } catch (const Error& e) {
                EXPECT_TRUE(e.lNumber == errInputPastEnd || e.lNumber == errTypeMismatch ||
                            e.lNumber == errOverflow)
                    << e.lNumber << " " << e.sDescription;
            }
        }
        try {
            (void)oReader.MoveToRecord(1 + iRound);
        } catch (const Error&) {
        }
        if (oReader.Columns()->Count() > 0) {
            (void)oReader.FindColumnValue(oReader.Columns()->Items()[0]->Key(), "zz");
        }
    }
    EXPECT_GT(nOpened, 100);
}

}  // namespace
}  // namespace tnw
