// Tables written by the library's own dBase writer (a table-only tnwShapeEncoder set) read
// back: every column type, the writer's fitting rules, and names it does not make unique.
#include <gtest/gtest.h>

#include "core/GISLib.h"
#include "core/SerialDate.h"
#include "decoders/tnwDBFDecoder.h"
#include "shapefile/tnwShapeEncoder.h"
#include "support/TestSupport.h"

namespace tnw {
namespace {

constexpr double kMarch9th2004 = 38055.0;  // serial day of 2004-03-09
constexpr double kDecember31st1999 = 36525.0;

class DBFRoundTripTest : public ::testing::Test {
protected:
    std::shared_ptr<tnwColumn> Add(const std::string& sKey, std::int32_t lType, std::int16_t iSize,
                                   std::int16_t iPrecision = 0, bool bVisible = true) {
        return oColumns->Add(sKey, "", "", lType, iSize, iPrecision, 0, 1, 0, "", bVisible, true);
    }
    const Variant& Value(const std::string& sKey) { return oReader.Columns()->Item(sKey)->Value(); }

    test::ScopedCapture oCapture;
    test::TempDir oDir;
    std::shared_ptr<tnwColumns> oColumns = CreateAs<tnwColumns>(kProgIdColumns, "");
    tnwDBFDecoder oReader;
};

TEST_F(DBFRoundTripTest, EveryFieldTypeComesBack) {
    auto oName = Add("Name", vtString, 8);
    auto oRate = Add("Rate", vtDouble, 12, 4);
    auto oCount = Add("Count", vtInt32, 6);
    auto oSmall = Add("Small", vtInt16, 4);
    auto oRatio = Add("Ratio", vtFloat, 10, 2);
    auto oDay = Add("Day", vtDate, 8);
    auto oFlag = Add("Flag", vtBoolean, 1);
    auto oWidth = Add("Swath_Width", vtDouble, 6, 1);
    auto oCut = Add("Cut", vtDouble, 4, 2);
    Add("Hidden", vtString, 5, 0, false);
    Add("Empty", vtString, 0);

    tnwShapeEncoder oWriter;
    const std::string sBase = oDir.Path("rt");
    ASSERT_TRUE(oWriter.InitializeFile(sBase, oColumns));
    oName->SetValue("Alpha");
    oRate->SetValue(3.1415926535);
    oCount->SetValue(std::int32_t{-12345});
    oSmall->SetValue(std::int16_t{42});
    oRatio->SetValue(0.5f);
    oDay->SetValue(DateSerial(2004, 3, 9));
    oFlag->SetValue(false);
    oWidth->SetValue(12.5);
    oCut->SetValue(123.25);  // " 123.25" keeps its last 4 characters: "3.25"
    ASSERT_TRUE(oWriter.Update());
    oName->SetValue("\xC3\xA9t\xC3\xA9 longer than eight");
    oRate->SetValue(-0.0625);
    oCount->SetValue(std::int32_t{0});
    oSmall->SetValue(std::int16_t{-7});
    oRatio->SetValue(-2.25f);
    oDay->SetValue(DateSerial(1999, 12, 31));
    oFlag->SetValue(true);
    oWidth->SetValue(0.25);
    oCut->SetValue(-1.0);
    ASSERT_TRUE(oWriter.Update());
    oFlag->SetValue(false);
    ASSERT_TRUE(oWriter.Update());
    oWriter.CloseFiles();
    ASSERT_TRUE(oCapture.vReports.empty());

    oReader.SetFilename(sBase + ".dbf");
    ASSERT_TRUE(oReader.IsValidFile());
    EXPECT_EQ(oReader.Schema(),
              "Name~C~8~0~|Rate~N~12~4~|Count~N~6~0~|Small~N~4~0~|Ratio~N~10~2~|Day~D~8~0~|"
              "Flag~L~1~0~|Swath_Width~N~6~1~|Cut~N~4~2~|Empty~C~0~0~");

    ASSERT_EQ(oReader.MoveFirst(), Variant(true));
    EXPECT_EQ(Value("Name"), Variant("Alpha"));
    EXPECT_EQ(Value("Rate"), Variant(3.1415926535));
    EXPECT_EQ(Value("Count"), Variant(-12345.0));
    EXPECT_EQ(Value("Small"), Variant(42.0));
    EXPECT_EQ(Value("Ratio"), Variant(0.5));
    EXPECT_EQ(Value("Day"), Variant(SerialDate{kMarch9th2004}));
    EXPECT_TRUE(Value("Flag").IsEmpty()) << "\"N\" assigns nothing";
    EXPECT_EQ(Value("Swath_Width"), Variant(12.5));
    EXPECT_EQ(Value("Cut"), Variant(3.25));
    EXPECT_EQ(Value("Empty"), Variant(""));

    ASSERT_TRUE(oReader.MoveNext());
    EXPECT_EQ(Value("Name"), Variant("\xC3\xA9t\xC3\xA9 long"));
    EXPECT_EQ(Value("Rate"), Variant(-0.0625));
    EXPECT_EQ(Value("Count"), Variant(0.0));
    EXPECT_EQ(Value("Small"), Variant(-7.0));
    EXPECT_EQ(Value("Ratio"), Variant(-2.25));
    EXPECT_EQ(Value("Day"), Variant(SerialDate{kDecember31st1999}));
    EXPECT_EQ(Value("Flag"), Variant(true));
    EXPECT_EQ(Value("Swath_Width"), Variant(0.25));
    EXPECT_EQ(Value("Cut"), Variant(-1.0));

    ASSERT_TRUE(oReader.MoveNext());
    EXPECT_EQ(Value("Flag"), Variant(true)) << "false after true reads as true";
    EXPECT_FALSE(oReader.MoveNext());

    ASSERT_TRUE(oReader.MoveToRecord(1));
    EXPECT_EQ(Value("Name"), Variant("Alpha"));
    EXPECT_EQ(oReader.FindColumnValue("name", "ALPHA"), 1);
    EXPECT_EQ(oReader.FindColumnValue("Small", "-7"), 2);
}

// The writer keeps the first 11 characters of a key and does not make names unique.
TEST_F(DBFRoundTripTest, LongKeysAndDuplicates) {
    auto oFirst = Add("Application1", vtDouble, 5);
    auto oSecond = Add("Application2", vtDouble, 5);
    auto oThird = Add("Rate", vtString, 3);
    tnwShapeEncoder oWriter;
    const std::string sBase = oDir.Path("dup");
    ASSERT_TRUE(oWriter.InitializeFile(sBase, oColumns));
    oFirst->SetValue(1.0);
    oSecond->SetValue(2.0);
    oThird->SetValue("abc");
    ASSERT_TRUE(oWriter.Update());
    oWriter.CloseFiles();

    oReader.SetFilename(sBase + ".dbf");
    EXPECT_EQ(oReader.Schema(), "Application~N~5~0~|Dummy_2~N~5~0~|Rate~C~3~0~");
    ASSERT_EQ(oReader.MoveFirst(), Variant(true));
    EXPECT_EQ(Value("Application"), Variant(1.0));
    EXPECT_TRUE(Value("Dummy_2").IsEmpty());
    EXPECT_EQ(Value("Rate"), Variant("abc"));
}

}  // namespace
}  // namespace tnw
