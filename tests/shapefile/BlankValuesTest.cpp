// The writers' faithful options: an empty value as a blank field, a point with all its digits,
// and the columns whose value was cut to its field.
#include <gtest/gtest.h>

#include "core/SerialDate.h"
#include "encoders/tnwASCIIEncoder.h"
#include "ogc_sf/Geometries.h"
#include "shapefile/tnwShapeEncoder.h"
#include "support/TestSupport.h"

namespace tnw::test {
namespace {

struct BlankValuesTest : ::testing::Test {
    ScopedCapture oCapture;
    TempDir oDir;
    std::shared_ptr<tnwColumns> oColumns = NewColumns();
};

// One record of every field type, empty and then set, through the table and the text writer;
// CutColumns names the fields whose text did not fit.
TEST_F(BlankValuesTest, EmptyValuesAndCutFields) {
    const std::vector<std::tuple<std::int32_t, std::int16_t, Variant>> vFields = {
        {vtDouble, 3, -3.5},
        {vtString, 2, "abc"},
        {vtBoolean, 1, true},
        {vtDate, 8, DateSerial(2004, 3, 9)}};
    for (const auto& [lType, iSize, vValue] : vFields)
        AddColumn(*oColumns, "F" + std::to_string(lType), lType, iSize);
    auto oPoint = std::make_shared<standins::Point>(-93.1234567890123, 42.00000005);
    for (bool bFaithful : {false, true}) {
        tnwShapeEncoder oTable;
        tnwASCIIEncoder oText;
        oTable.SetBlankEmptyValues(bFaithful);
        oText.SetBlankEmptyValues(bFaithful);
        oText.SetExactLonLat(bFaithful);
        oText.SetIncludeLonLat(true);
        ASSERT_TRUE(oTable.Initialize(oDir.Path("t"), oColumns, static_cast<tnwGeometryType>(0)));
        ASSERT_TRUE(oText.Initialize(oDir.Path("t.csv"), oColumns, false));
        for (bool bSet : {false, true}) {
            for (std::size_t i = 0; i < vFields.size(); ++i)
                oColumns->Items()[i]->SetValue(bSet ? std::get<2>(vFields[i]) : Variant());
            oText.SetGeometry(oPoint);
            ASSERT_TRUE(oTable.Update() && oText.Update());
            const std::vector<std::string> vCut = {"F5", "F8"};
            EXPECT_EQ(oTable.CutColumns(), bSet ? vCut : std::vector<std::string>());
        }
        oTable.CloseFiles();
        oText.CloseFiles();
        const std::string sTable = ReadFile(oDir.Path("t.dbf"));
        EXPECT_EQ(
            sTable.substr(sTable.size() - 30),
            (bFaithful ? "              " : "  0  N18991230") + std::string(" 3.5abY20040309\x1A"));
        EXPECT_EQ(ReadFile(oDir.Path("t.csv")),
                  bFaithful ? "-93.1234567890123, 42.00000005,,,,\r\n"
                              "-93.1234567890123, 42.00000005,-3.5,\"abc\",True,2004-03-09\r\n"
                            : "-93.1234568, 42, 0,\"\", 0, 0\r\n"
                              "-93.1234568, 42,-3.5,\"abc\",True,2004-03-09\r\n");
    }
}

}  // namespace
}  // namespace tnw::test
