// The writers' faithful options: an empty value as a blank field, and the columns whose value
// was cut to its field.
#include <gtest/gtest.h>

#include "core/SerialDate.h"
#include "encoders/tnwASCIIEncoder.h"
#include "ogc_sf/Geometries.h"
#include "shapefile/DbfWriter.h"
#include "shapefile/tnwShapeEncoder.h"
#include "support/TestSupport.h"

namespace tnw::test {
namespace {

struct BlankValuesTest : ::testing::Test {
    ScopedCapture oCapture;
    TempDir oDir;
    std::shared_ptr<tnwColumns> oColumns = NewColumns();
};

// Each field's bytes for a value, with and without blank empty values, and whether it fit.
TEST_F(BlankValuesTest, DbfFields) {
    struct Case {
        std::int32_t lType;
        std::int16_t iSize;
        Variant vValue;
        const char* sDefault;  // nullptr: an error
        const char* sBlank;
        bool bWhole;
    };
    const Case aCases[] = {
        {vtDouble, 5, Variant(), "    0", "     ", true},
        {vtString, 3, Variant(), "   ", "   ", true},
        {vtBoolean, 1, Variant(), "N", " ", true},
        {vtDate, 8, Variant(), "18991230", "        ", true},
        {vtDouble, 4, Variant(3.5), " 3.5", " 3.5", true},
        {vtDouble, 3, Variant(-3.5), "3.5", "3.5", false},
        {vtDouble, 3, Variant(123.0), "123", "123", true},
        {vtString, 2, Variant("abc"), "ab", "ab", false},
        {vtDate, 6, Variant(DateSerial(2004, 3, 9)), "040309", "040309", false},
        {vtBoolean, 0, Variant(true), "", "", false},
    };
    for (const Case& c : aCases) {
        for (bool bBlank : {false, true}) {
            SCOPED_TRACE(std::to_string(c.lType) + " " + c.vValue.ToText() +
                         (bBlank ? " blank" : ""));
            auto oColumn = AddColumn(*NewColumns(), "F", c.lType, c.iSize);
            oColumn->SetValue(c.vValue);
            std::string sRecord;
            const bool bWhole = detail::WriteFieldValue(sRecord, *oColumn, bBlank);
            EXPECT_EQ(sRecord, bBlank ? c.sBlank : c.sDefault);
            EXPECT_EQ(bWhole, c.bWhole || (bBlank && c.vValue.IsEmpty()));
        }
    }
}

// The encoder names the columns cut in the record it staged last.
TEST_F(BlankValuesTest, CutColumnsOfTheLastRecord) {
    auto oName = AddColumn(*oColumns, "Name", vtString, 3);
    auto oRate = AddColumn(*oColumns, "Rate", vtDouble, 4);
    tnwShapeEncoder oEncoder;
    oEncoder.SetBlankEmptyValues(true);
    ASSERT_TRUE(oEncoder.Initialize(oDir.Path("t"), oColumns, static_cast<tnwGeometryType>(0)));
    const std::vector<std::pair<Variant, Variant>> vRecords = {
        {"abcd", 12345.0}, {"abc", Variant()}, {Variant(), -1.25}};
    const std::vector<std::vector<std::string>> vCut = {{"Name", "Rate"}, {}, {"Rate"}};
    for (std::size_t i = 0; i < vRecords.size(); ++i) {
        oName->SetValue(vRecords[i].first);
        oRate->SetValue(vRecords[i].second);
        ASSERT_TRUE(oEncoder.Update());
        EXPECT_EQ(oEncoder.CutColumns(), vCut[i]) << i;
    }
    oEncoder.CloseFiles();
    const std::string sTable = ReadFile(oDir.Path("t.dbf"));
    EXPECT_EQ(sTable.substr(sTable.size() - 25), " abc2345 abc        1.25\x1A");
}

// The text writer: an empty value is an empty cell, with no quotes, and a point keeps all its
// digits, only when asked.
TEST_F(BlankValuesTest, TextCells) {
    auto oName = AddColumn(*oColumns, "Name", vtString, 10);
    auto oRate = AddColumn(*oColumns, "Rate", vtDouble, 4);
    auto oPoint = std::make_shared<standins::Point>(-93.1234567890123, 42.00000005);
    for (bool bFaithful : {false, true}) {
        tnwASCIIEncoder oEncoder;
        oEncoder.SetBlankEmptyValues(bFaithful);
        oEncoder.SetExactLonLat(bFaithful);
        oEncoder.SetIncludeLonLat(true);
        ASSERT_TRUE(oEncoder.Initialize(oDir.Path("t.csv"), oColumns, false));
        oName->SetValue(Variant());
        oRate->SetValue(Variant());
        oEncoder.SetGeometry(oPoint);
        ASSERT_TRUE(oEncoder.Update());
        oName->SetValue("a");
        oRate->SetValue(0.5);
        ASSERT_TRUE(oEncoder.Update());
        oEncoder.CloseFiles();
        EXPECT_EQ(ReadFile(oDir.Path("t.csv")),
                  bFaithful ? "-93.1234567890123, 42.00000005,,\r\n,,\"a\", .5\r\n"
                            : "-93.1234568, 42,\"\", 0\r\n,,\"a\", .5\r\n");
    }
}

}  // namespace
}  // namespace tnw::test
