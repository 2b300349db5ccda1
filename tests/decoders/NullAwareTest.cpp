// tnwDBFDecoder's faithful reading: dates that name no day, NULL-aware values, deleted
// records, and tables past the signed 16-bit lengths.
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
    // Each record's value of the first column, and the columns named unreadable, from the top.
    std::vector<Variant> Walk(const DbfTable& oTable, bool bNullAware,
                              std::vector<std::int32_t>* pLost = nullptr) {
        test::WriteFile(oDir.Path("t.dbf"), oTable.Bytes());
        oReader.SetFilename(oDir.Path("t.dbf"));
        oReader.SetEveryFieldSets(bNullAware);
        std::vector<Variant> vValues;
        for (bool b = oReader.MoveFirst() == Variant(true); b; b = oReader.MoveNext()) {
            vValues.push_back(oReader.Columns()->Items().front()->Value());
            if (pLost && !oReader.UnreadableColumns().empty())
                pLost->push_back(static_cast<std::int32_t>(vValues.size()));
        }
        return vValues;
    }

    test::ScopedCapture oCapture;
    test::TempDir oDir;
    tnwDBFDecoder oReader;
};

// By default a blank or unreadable field leaves the value before (a number gives 0), and a
// date that names no real day is blank, never out of range. NULL-aware, each gives the empty
// value, "F"/"N" give false, and what was neither blank nor a NULL mark is named as lost.
TEST_F(FaithfulDbfTest, ValuesByDefaultAndNullAware) {
    const Variant vNull, vDay(DateSerial(2004, 3, 9));
    struct Case {
        char cType;
        std::vector<std::string> vTexts;
        std::vector<Variant> vDefault, vNullAware;
        std::vector<std::int32_t> vLost;
    };
    // clang-format off
    const Case aCases[] = {
        {'N', {"3.5", "", "*****", "?", "-", "12abc"},
         {3.5, 0.0, 0.0, 0.0, 0.0, 12.0}, {3.5, vNull, vNull, vNull, vNull, 12.0}, {5}},
        {'L', {"T", "F", "?", "", "0", "x"},
         {true, true, true, true, true, true}, {true, false, vNull, vNull, false, vNull}, {6}},
        {'D', {"20040309", "00000000", "20040000", "20040230", "00010101", ""},
         {vDay, vDay, vDay, vDay, vDay, vDay}, {vDay, vNull, vNull, vNull, vNull, vNull}, {3, 4, 5}},
        {'C', {"a", "", "b"}, {"a", "", "b"}, {"a", vNull, "b"}, {}},
    };
    // clang-format on
    for (const Case& c : aCases) {
        SCOPED_TRACE(c.cType);
        DbfTable oTable({{"F", c.cType, 8}});
        for (const std::string& sText : c.vTexts)
            oTable.Row({sText});
        EXPECT_EQ(Walk(oTable, false), c.vDefault);
        std::vector<std::int32_t> vLost;
        EXPECT_EQ(Walk(oTable, true, &vLost), c.vNullAware);
        EXPECT_EQ(vLost, c.vLost);
    }
}

// Deleted records: delivered and flagged by default, passed over on request; a jump reads the
// record it names either way. A closed table is reported by FindColumnValue.
TEST_F(FaithfulDbfTest, DeletedRecordsAndAClosedTable) {
    DbfTable oTable({{"A", 'C', 3}});
    oTable.Row({"x1"}, '*').Row({"a"}).Row({"x2"}, '*').Row({"b"}).Row({"x3"}, '*');
    EXPECT_EQ(Walk(oTable, false).size(), 5u);
    oReader.SetSkipDeleted(true);
    EXPECT_EQ(Walk(oTable, false), (std::vector<Variant>{"a", "b"}));
    EXPECT_EQ(oReader.FindColumnValue("A", "b"), 4);
    ASSERT_TRUE(oReader.MoveToRecord(3));
    EXPECT_TRUE(oReader.Deleted());

    oReader.CloseFile();
    EXPECT_EQ(oReader.FindColumnValue("A", "a"), 0);
    ASSERT_EQ(oCapture.vReports.size(), 1u);
    EXPECT_EQ(oCapture.vReports[0].sSource, "tnwDBFDecoder.FindColumnValue");
}

// 1,500 fields (a header of 48,033 bytes) and records of 77,701 bytes, past the reader's 64 KiB
// buffer, read whole, by stepping
// and by jumping; names and text in a UTF-8 table keep every character.
TEST_F(FaithfulDbfTest, LengthsPastSigned16BitsAndUtf8) {
    std::vector<test::DbfField> vFields;
    for (int i = 0; i < 1500; ++i)
        vFields.push_back({"F" + std::to_string(i), 'C', std::uint8_t(i < 300 ? 255 : 1)});
    std::vector<std::string> vTexts(1500, "one");
    EXPECT_EQ(Walk(DbfTable(vFields).Row(vTexts).Row(std::vector<std::string>(1500, "x")), false),
              (std::vector<Variant>{"one", "x"}));
    ASSERT_TRUE(oReader.MoveToRecord(2));
    EXPECT_EQ(oReader.Columns()->Item("F1499")->Value(), Variant("x"));

    oReader.SetTextCodePage(platform::CodePage::Utf8);
    EXPECT_EQ(Walk(DbfTable({{"\xC3\xA9t\xC3\xA9", 'C', 8}}).Row({"\xE2\x82\xAC\xE9"}), false),
              (std::vector<Variant>{"\xE2\x82\xAC\xC3\xA9"}));
    EXPECT_EQ(oReader.Schema(), "\xC3\xA9t\xC3\xA9~C~8~0~");
}

}  // namespace
}  // namespace tnw
