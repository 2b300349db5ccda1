// tnwDBFDecoder on tables written by the peer libraries: GDAL (ogr2ogr, ogrinfo) and shapelib
// (dbfcreate, dbfadd).
#include <gtest/gtest.h>

#include "ExternalTools.h"
#include "core/SerialDate.h"
#include "decoders/tnwDBFDecoder.h"
#include "support/TestSupport.h"

namespace tnw {
namespace {

using test::Quoted;
using test::RunTool;

constexpr double kMarch9th2004 = 38055.0;  // serial day of 2004-03-09
constexpr double kMarch10th2004 = 38056.0;

class DBFInteropTest : public ::testing::Test {
protected:
    // Walks the table from the top, checking the given keys of each record; an empty value
    // where nothing is assigned.
    void ExpectRecords(const std::vector<std::string>& vKeys,
                       const std::vector<std::vector<Variant>>& vRecords) {
        bool bMore = oReader.MoveFirst() == Variant(true);
        for (const auto& vValues : vRecords) {
            ASSERT_TRUE(bMore);
            for (std::size_t i = 0; i < vKeys.size(); ++i)
                EXPECT_EQ(oReader.Columns()->Item(vKeys[i])->Value(), vValues[i]) << vKeys[i];
            bMore = oReader.MoveNext();
        }
        EXPECT_FALSE(bMore);
    }

    test::ScopedCapture oCapture;
    test::TempDir oDir;
    tnwDBFDecoder oReader;
};

// GDAL writes ISO-8859-1 text, dates as "yyyymmdd", a missing date as "00000000" and a
// missing number as asterisks; its deleted rows keep their place.
TEST_F(DBFInteropTest, TableWrittenByGdal) {
    TNW_REQUIRE_TOOL("ogr2ogr");
    const std::string sCsv = oDir.Path("g.csv");
    test::WriteFile(sCsv,
                    "name,rate,day,count\r\n"
                    "Alpha,3.5,2004/03/09,7\r\n"
                    "\xC3\xA9t\xC3\xA9,-12.25,,0\r\n"
                    "Gamma,,2004/03/10,\r\n");
    test::WriteFile(oDir.Path("g.csvt"), "\"String(12)\",\"Real(10.3)\",\"Date\",\"Integer(5)\"\n");
    const std::string sDbf = oDir.Path("g.dbf");
    ASSERT_TRUE(RunTool("ogr2ogr -f 'ESRI Shapefile' " + Quoted(sDbf) + " " + Quoted(sCsv)));
    ASSERT_TRUE(RunTool("ogrinfo -oo AUTO_REPACK=NO " + Quoted(sDbf) +
                        " -dialect SQLite -sql \"DELETE FROM g WHERE name='Alpha'\""));

    oReader.SetFilename(sDbf);
    EXPECT_EQ(oReader.Schema(), "name~C~12~0~|rate~N~10~3~|day~D~8~0~|count~N~5~0~");
    // The deleted row comes first; "00000000" names no day, so the date before stays.
    ExpectRecords({"name", "rate", "day", "count"},
                  {{"Alpha", 3.5, SerialDate{kMarch9th2004}, 7.0},
                   {"\xC3\xA9t\xC3\xA9", -12.25, SerialDate{kMarch9th2004}, 0.0},
                   {"Gamma", 0.0, SerialDate{kMarch10th2004}, 0.0}});
    EXPECT_TRUE(oReader.MoveToRecord(2));
    EXPECT_EQ(oReader.Columns()->Item("rate")->Value(), Variant(-12.25));
}

// shapelib keeps duplicate names, cuts names to 10 characters and writes a missing number as
// asterisks.
TEST_F(DBFInteropTest, TableWrittenByShapelib) {
    TNW_REQUIRE_TOOL("dbfcreate");
    const std::string sDbf = Quoted(oDir.Path("s.dbf"));
    ASSERT_TRUE(RunTool("dbfcreate " + sDbf +
                        " -s NAME 10 -n RATE 8 2 -s NAME 5 -s Swath_Width 6 -n COUNT 5 0"));
    ASSERT_TRUE(RunTool("dbfadd " + sDbf + " Alpha 3.5 x ab 7"));
    ASSERT_TRUE(RunTool("dbfadd " + sDbf + " '' '' '' '' ''"));
    ASSERT_TRUE(RunTool("dbfadd " + sDbf + " 'Two Words' -0.25 yz cd 12345"));

    oReader.SetFilename(oDir.Path("s.dbf"));
    EXPECT_EQ(oReader.Schema(),
              "NAME~C~10~0~|RATE~N~8~2~|Dummy_3~C~5~0~|Swath_Widt~C~6~0~|COUNT~N~5~0~");
    // The duplicate is read by no one, but its bytes are skipped.
    ExpectRecords({"NAME", "RATE", "Dummy_3", "Swath_Widt", "COUNT"},
                  {{"Alpha", 3.5, Variant(), "ab", 7.0},
                   {"", 0.0, Variant(), "", 0.0},
                   {"Two Words", -0.25, Variant(), "cd", 12345.0}});
}

}  // namespace
}  // namespace tnw
