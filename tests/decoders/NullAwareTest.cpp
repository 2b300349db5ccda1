// tnwDBFDecoder's faithful reading: dates that name no day, NULL-aware values, deleted
// records, code pages, and tables past the signed 16-bit lengths.
#include <gtest/gtest.h>

#include "DbfBytes.h"
#include "core/Error.h"
#include "core/SerialDate.h"
#include "decoders/tnwDBFDecoder.h"
#include "support/TestSupport.h"

namespace tnw {
namespace {

using test::DbfTable;

class FaithfulDbfTest : public ::testing::Test {
protected:
    void Open(const DbfTable& oTable) {
        test::WriteFile(oDir.Path("t.dbf"), oTable.Bytes());
        oReader.SetFilename(oDir.Path("t.dbf"));
    }
    const Variant& Value(const std::string& sKey) { return oReader.Columns()->Item(sKey)->Value(); }
    // Each record's value of one column, walking from the top.
    std::vector<Variant> Walk(const std::string& sKey) {
        std::vector<Variant> vValues;
        for (bool b = oReader.MoveFirst() == Variant(true); b; b = oReader.MoveNext())
            vValues.push_back(Value(sKey));
        return vValues;
    }

    test::ScopedCapture oCapture;
    test::TempDir oDir;
    tnwDBFDecoder oReader;
};

const Variant kMarch9th{DateSerial(2004, 3, 9)};

// A numeric date that names no real day is a blank date: by default the date before stays,
// NULL-aware it is empty. Never a date out of the tagged value's range.
TEST_F(FaithfulDbfTest, DatesThatNameNoDay) {
    const char* aTexts[] = {"00000000", "20040000", "20040230", "20041301", "00010101"};
    for (bool bNullAware : {false, true}) {
        DbfTable oTable({{"DAY", 'D', 8}});
        oTable.Row({"20040309"});
        for (const char* sText : aTexts)
            oTable.Row({sText});
        Open(oTable);
        oReader.SetNullAware(bNullAware);
        const std::vector<Variant> vValues = Walk("DAY");
        ASSERT_EQ(vValues.size(), std::size(aTexts) + 1);
        for (std::size_t i = 1; i < vValues.size(); ++i) {
            EXPECT_EQ(vValues[i], bNullAware ? Variant() : kMarch9th)
                << aTexts[i - 1] << (bNullAware ? " NULL-aware" : "");
        }
        // NULL-aware, every such text but the blank and "00000000" is named as lost.
        std::vector<std::string> vLost;
        for (bool b = oReader.MoveFirst() == Variant(true); b; b = oReader.MoveNext()) {
            for (const std::string& sKey : oReader.UnreadableColumns())
                vLost.push_back(oReader.CurrentRow() + sKey);
        }
        const std::vector<std::string> vExpected = {"3DAY", "4DAY", "5DAY", "6DAY"};
        EXPECT_EQ(vLost, bNullAware ? vExpected : std::vector<std::string>());
    }
}

// NULL-aware reading gives the empty value for a blank, a NULL mark or a text that is no value
// of the field's type, and false for "F" and "N"; nothing sticks from the record before.
TEST_F(FaithfulDbfTest, NullAwareValues) {
    const Variant vNull;
    struct Case {
        const char* sName;
        char cType;
        std::vector<std::string> vTexts;
        std::vector<Variant> vDefault;
        std::vector<Variant> vNullAware;
    };
    // clang-format off
    const Case aCases[] = {
        {"N", 'N', {"3.5", "", "*****", "?", "-", "12abc"},
         {3.5, 0.0, 0.0, 0.0, 0.0, 12.0},
         {3.5, vNull, vNull, vNull, vNull, 12.0}},
        {"L", 'L', {"T", "F", "?", "", "n", "y"},
         {true, true, true, true, true, true},
         {true, false, vNull, vNull, false, true}},
        {"D", 'D', {"20040309", "", "2004", "2004-03-10", "*", "x"},
         {kMarch9th, kMarch9th, vNull, Variant(DateSerial(2004, 3, 10)), vNull, vNull},
         {kMarch9th, vNull, vNull, Variant(DateSerial(2004, 3, 10)), vNull, vNull}},
        {"C", 'C', {"a", "", "b", " ", "", "c"},
         {"a", "", "b", "", "", "c"},
         {"a", vNull, "b", vNull, vNull, "c"}},
    };
    // clang-format on
    for (const Case& c : aCases) {
        for (bool bNullAware : {false, true}) {
            SCOPED_TRACE(std::string(c.sName) + (bNullAware ? " NULL-aware" : ""));
            DbfTable oTable({{c.sName, c.cType, 10}});
            for (const std::string& sText : c.vTexts)
                oTable.Row({sText});
            Open(oTable);
            oReader.SetNullAware(bNullAware);
            if (!bNullAware && c.cType == 'D') {
                // "2004" is a short numeric date: an error of MoveNext by default.
                ASSERT_EQ(oReader.MoveFirst(), Variant(true));
                ASSERT_TRUE(oReader.MoveNext());
                EXPECT_THROW(oReader.MoveNext(), Error);
                continue;
            }
            EXPECT_EQ(Walk(c.sName), bNullAware ? c.vNullAware : c.vDefault);
        }
    }
}

// Deleted records: delivered and flagged by default, passed over on request; a jump reads the
// record it names either way.
TEST_F(FaithfulDbfTest, DeletedRecords) {
    DbfTable oTable({{"A", 'C', 3}});
    oTable.Row({"x1"}, '*')
        .Row({"a"})
        .Row({"x2"}, '*')
        .Row({"x3"}, '*')
        .Row({"b"})
        .Row({"x4"}, '*');
    Open(oTable);
    std::vector<bool> vFlags;
    for (bool b = oReader.MoveFirst() == Variant(true); b; b = oReader.MoveNext())
        vFlags.push_back(oReader.Deleted());
    EXPECT_EQ(vFlags, (std::vector<bool>{true, false, true, true, false, true}));

    oReader.SetSkipDeleted(true);
    EXPECT_EQ(Walk("A"), (std::vector<Variant>{"a", "b"}));
    EXPECT_TRUE(oReader.Eof());
    EXPECT_EQ(oReader.FindColumnValue("A", "b"), 5);
    ASSERT_TRUE(oReader.MoveToRecord(3));
    EXPECT_EQ(Value("A"), Variant("x2"));
    EXPECT_TRUE(oReader.Deleted());
}

// FindColumnValue reports what goes wrong instead of giving 0 in silence.
TEST_F(FaithfulDbfTest, FindColumnValueReportsAClosedTable) {
    Open(DbfTable({{"A", 'C', 3}}).Row({"a"}));
    oReader.CloseFile();
    EXPECT_EQ(oReader.FindColumnValue("A", "a"), 0);
    ASSERT_EQ(oCapture.vReports.size(), 1u);
    EXPECT_EQ(oCapture.vReports[0].sSource, "tnwDBFDecoder.FindColumnValue");
    EXPECT_EQ(oCapture.vReports[0].lNumber, errBadFileNumber);
}

// Names and text in the table's own code page; a UTF-8 table keeps every character, and a
// stray byte in it still reads as a character.
TEST_F(FaithfulDbfTest, TextCodePage) {
    Open(DbfTable({{"R\xC3\xA9gion", 'C', 12}})
             .Row({"\xC3\xA9t\xC3\xA9 \xE2\x82\xAC"})
             .Row({"\xE9"}));
    EXPECT_EQ(oReader.LanguageDriver(), 0);
    oReader.SetTextCodePage(platform::CodePage::Utf8);
    oReader.SetFilename(oDir.Path("t.dbf"));
    EXPECT_EQ(oReader.Schema(), "R\xC3\xA9gion~C~12~0~");
    EXPECT_EQ(Walk("R\xC3\xA9gion"),
              (std::vector<Variant>{"\xC3\xA9t\xC3\xA9 \xE2\x82\xAC", "\xC3\xA9"}));
    oReader.SetTextCodePage(platform::CodePage::Latin1);
    oReader.SetFilename(oDir.Path("t.dbf"));
    EXPECT_EQ(oReader.Schema(), "R\xC3\x83\xC2\xA9gion~C~12~0~");
}

// Lengths past 32,767: 1,500 fields (a header of 48,033 bytes) and records of 40,000 bytes
// read whole, by stepping and by jumping.
TEST_F(FaithfulDbfTest, HeadersAndRecordsPastSigned16Bits) {
    std::vector<test::DbfField> vFields;
    for (int i = 0; i < 1500; ++i)
        vFields.push_back({"F" + std::to_string(i), 'C', 1});
    std::vector<std::string> vTexts(1500, "x");
    vTexts.back() = "z";
    Open(DbfTable(vFields).Row(vTexts));
    EXPECT_EQ(oReader.Columns()->Count(), 1500);
    ASSERT_EQ(oReader.MoveFirst(), Variant(true));
    EXPECT_EQ(Value("F1499"), Variant("z"));

    vFields.clear();
    for (int i = 0; i < 160; ++i)
        vFields.push_back({"F" + std::to_string(i), 'C', 250});
    DbfTable oWide(vFields);  // 40,001 bytes a record
    for (const std::string sRow : {"one", "two", "three"}) {
        std::vector<std::string> vRow(160, sRow);
        oWide.Row(vRow);
    }
    Open(oWide);
    EXPECT_EQ(Walk("F159"), (std::vector<Variant>{"one", "two", "three"}));
    ASSERT_TRUE(oReader.MoveToRecord(3));
    EXPECT_EQ(Value("F0"), Variant("three"));
    ASSERT_TRUE(oReader.MoveToRecord(2));
    EXPECT_EQ(Value("F159"), Variant("two"));
}

}  // namespace
}  // namespace tnw
