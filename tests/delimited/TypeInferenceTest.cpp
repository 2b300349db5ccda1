// The reader's extensions for files as they come from the field: column types and widths from
// the values, types asked by column, the decimal comma, rows without a position, quoted line
// breaks, the line length kept in memory and names for empty header cells.
#include <gtest/gtest.h>

#include <memory>
#include <string>
#include <vector>

#include "core/SerialDate.h"
#include "delimited/tnwASCIIDecoder.h"
#include "support/TestSupport.h"
#include "uom/UnitLookup.h"

namespace tnw::test {
namespace {

struct Field {
    std::string sKey;
    std::int32_t lType;
    std::int16_t iSize;
    std::int16_t iPrecision;
};

bool operator==(const Field& a, const Field& b) {
    return a.sKey == b.sKey && a.lType == b.lType && a.iSize == b.iSize &&
           a.iPrecision == b.iPrecision;
}

void PrintTo(const Field& t, std::ostream* os) {
    *os << t.sKey << " type " << t.lType << " " << t.iSize << "." << t.iPrecision;
}

class FieldFileTest : public ::testing::Test {
protected:
    FieldFileTest() { standins::RegisterUnitLookup(); }

    void Open(const std::string& sBytes, const std::string& sDelimiter = ",") {
        WriteFile(oDir.Path("log.csv"), sBytes);
        oReader.SetFilename(oDir.Path("log.csv"));
        oReader.SetDelimiter(sDelimiter);
        oReader.SetHeaderRows(1);
    }
    std::vector<Field> Fields() const {
        std::vector<Field> vFields;
        for (const auto& oColumn : oReader.Columns()->Items())
            vFields.push_back(
                {oColumn->Key(), oColumn->Type(), oColumn->Size(), oColumn->Precision()});
        return vFields;
    }
    // The values of column sKey over the whole walk.
    std::vector<Variant> Values(const std::string& sKey) {
        std::vector<Variant> vValues;
        const auto oColumn = oReader.Columns()->Item(sKey);
        for (bool b = oReader.MoveFirst() == Variant(true); b; b = oReader.MoveNext())
            vValues.push_back(oColumn->Value());
        return vValues;
    }

    ScopedCapture oCapture;
    TempDir oDir;
    tnwASCIIDecoder oReader;
};

TEST_F(FieldFileTest, SampleGivesEachColumnTheTypeAndWidthOfItsValues) {
    Open(
        "Yield,Count,Day,Crop,Mixed,Blank,Big,Small,Moist (%),Exp,Near\r\n"
        "12.5,1,2024-05-01,Corn,1,,12345678901,.5,14,1e3,1e\r\n"
        "7.25,22,2024-05-02,Soybeans,x,,1,0.25,15.5,+5,-\r\n"
        "130,-333,2024-05-03,Corn,2,,7,1E-7,16,-2.5E-1,.\r\n");
    oReader.SetSampleRows(10);
    ASSERT_EQ(oReader.AutoGenColumns(), Variant(true));
    const std::vector<Field> vExpected = {
        {"Yield", vtDouble, 4, 2},  {"Count", vtInt32, 4, 0},
        {"Day", vtDate, 8, 0},      {"Crop", vtString, 8, 0},
        {"Mixed", vtString, 1, 0},  {"Blank", vtString, 1, 0},
        {"Big", vtDouble, 11, 0},   {"Small", vtDouble, 5, 2},
        {"Moist", vtDouble, 16, 4},  // a known unit keeps the header's word
        {"Exp", vtDouble, 4, 2},    {"Near", vtString, 2, 0},
    };
    EXPECT_EQ(Fields(), vExpected);
    EXPECT_FALSE(oReader.DecimalComma());

    const std::vector<Variant> vDays = Values("Day");
    ASSERT_EQ(vDays.size(), 3u);
    EXPECT_EQ(vDays[2], Variant(DateSerial(2024, 5, 3)));
    EXPECT_EQ(Values("Count"), (std::vector<Variant>{1.0, 22.0, -333.0}));
}

TEST_F(FieldFileTest, SampleOfSomeRowsAndAskedTypes) {
    struct Case {
        const char* sName;
        std::int32_t lSampleRows;
        std::vector<std::pair<std::string, std::int32_t>> vAsked;
        std::vector<Field> vExpected;
    };
    const std::vector<Case> vCases = {
        // Only the first row is looked at: the text further down is not seen.
        {"one row", 1, {}, {{"Id", vtInt32, 1, 0}, {"Rate", vtDouble, 3, 1}}},
        {"no sample, asked",
         0,
         {{"rate", vtInt32}},
         {{"Id", vtString, 254, 0}, {"Rate", vtInt32, 11, 0}}},
        {"sample, asked text",
         5,
         {{"ID", vtString}},
         {{"Id", vtString, 3, 0}, {"Rate", vtDouble, 4, 2}}},
        {"sample, asked real",
         5,
         {{"Id", vtDouble}},
         {{"Id", vtDouble, 24, 15}, {"Rate", vtDouble, 4, 2}}},
        {"sample, asked date",
         5,
         {{"Rate", vtDate}},
         {{"Id", vtString, 3, 0}, {"Rate", vtDate, 8, 0}}},
    };
    for (const Case& c : vCases) {
        SCOPED_TRACE(c.sName);
        Open("Id,Rate\r\n1,2.5\r\nabc,3.25\r\n");
        oReader.SetSampleRows(c.lSampleRows);
        oReader.SetColumnType("Id", vtEmpty);
        oReader.SetColumnType("Rate", vtEmpty);
        for (const auto& [sKey, lType] : c.vAsked)
            oReader.SetColumnType(sKey, lType);
        ASSERT_EQ(oReader.AutoGenColumns(), Variant(true));
        EXPECT_EQ(Fields(), c.vExpected);
    }
}

TEST_F(FieldFileTest, DecimalComma) {
    struct Case {
        const char* sName;
        std::string sDelimiter;
        std::string sBody;
        bool bAsked;
        bool bExpected;
        double dLongitude;
    };
    const std::vector<Case> vCases = {
        {"semicolon, found", ";", "Lon;Lat;Rate\r\n50,937417;6,96;3,5\r\n", false, true, 50.937417},
        {"comma delimiter never", ",", "Lon,Lat,Rate\r\n\"50,9\",6,3\r\n", false, false, 50.0},
        {"points as well", ";", "Lon;Lat;Rate\r\n50.25;6,5;1\r\n", false, false, 50.25},
        {"asked, tab", "\t", "Lon\tLat\tRate\r\n7,5\t1,25\t2\r\n", true, true, 7.5},
    };
    for (const Case& c : vCases) {
        SCOPED_TRACE(c.sName);
        Open(c.sBody, c.sDelimiter);
        oReader.SetDecimalComma(c.bAsked);
        oReader.SetSampleRows(10);
        ASSERT_EQ(oReader.AutoGenColumns(), Variant(true));
        oReader.SetLonCol(1);
        oReader.SetLatCol(2);
        EXPECT_EQ(oReader.DecimalComma(), c.bExpected);
        ASSERT_EQ(oReader.MoveFirst(), Variant(true));
        EXPECT_DOUBLE_EQ(oReader.Longitude(), c.dLongitude);
    }
}

TEST_F(FieldFileTest, RowsWithoutAPosition) {
    Open("X,Y,Id\r\n1,2,a\r\n,2,b\r\n1, ,c\r\n,,d\r\n3,4,e\r\n");
    ASSERT_EQ(oReader.AutoGenColumns(), Variant(true));
    std::vector<bool> vHasPosition;
    for (bool b = oReader.MoveFirst() == Variant(true); b; b = oReader.MoveNext())
        vHasPosition.push_back(oReader.HasPosition());
    EXPECT_EQ(vHasPosition, (std::vector<bool>{true, false, false, false, true}));
}

TEST_F(FieldFileTest, QuotedLineBreaks) {
    struct Case {
        const char* sName;
        bool bJoin;
        bool bLineFeeds;
        std::string sBody;
        std::vector<std::string> vNotes;
    };
    const std::string sCRLF = "Id,Note\r\n1,\"two\r\nlines\"\r\n2,plain\r\n";
    const std::string sLF = "Id,Note\n1,\"a\nb\nc\"\n2,\"x\"\"y\"\n";
    const std::vector<Case> vCases = {
        {"off", false, false, sCRLF, {"two", "two", "plain"}},
        {"on", true, false, sCRLF, {"two\nlines", "plain"}},
        {"on, line feeds", true, true, sLF, {"a\nb\nc", "x\"\"y"}},
        // A quote that never closes takes the rest of the file, and no more.
        {"never closed", true, false, "Id,Note\r\n1,\"open\r\n2,b\r\n", {"open\n2,b"}},
    };
    for (const Case& c : vCases) {
        SCOPED_TRACE(c.sName);
        Open(c.sBody);
        oReader.SetQuotedLineBreaks(c.bJoin);
        oReader.SetLineFeedEndsLine(c.bLineFeeds);
        ASSERT_EQ(oReader.AutoGenColumns(), Variant(true));
        std::vector<std::string> vNotes;
        for (const Variant& v : Values("Note"))
            vNotes.push_back(*v.AsString());
        EXPECT_EQ(vNotes, c.vNotes);
    }
}

TEST_F(FieldFileTest, AnOverlongLineIsKeptOnlyToTheLimit) {
    // Several buffers' worth without a line end: refused as over the limit, and what is kept
    // of it in memory is no longer than one character past the limit.
    const std::string sLong(3 * 65536 + 17, 'z');
    for (bool bJoin : {false, true}) {
        SCOPED_TRACE(bJoin);
        Open("Id\r\n" + sLong + "\r\n7\r\n");
        oReader.SetQuotedLineBreaks(bJoin);
        oReader.AutoGenColumns();
        oCapture.vReports.clear();
        EXPECT_EQ(oReader.MoveFirst(), Variant(false));
        EXPECT_EQ(oReader.CurrentLine().size(), 32767u);
        ASSERT_FALSE(oCapture.vReports.empty());
        EXPECT_EQ(oCapture.vReports[0].lNumber, errOverflow);
        EXPECT_TRUE(oReader.MoveNext());
        EXPECT_EQ(oReader.CurrentLine(), "7");
    }
}

TEST_F(FieldFileTest, EmptyHeaderCellsGetNames) {
    Open("a,,c, ,(kg)\r\n1,2,3,4,5\r\n");
    oReader.SetNameEmptyHeaders(true);
    ASSERT_EQ(oReader.AutoGenColumns(), Variant(true));
    std::vector<std::pair<std::string, std::int32_t>> vColumns;
    for (const auto& oColumn : oReader.Columns()->Items())
        vColumns.emplace_back(oColumn->Key(), oColumn->Position());
    EXPECT_EQ(vColumns, (std::vector<std::pair<std::string, std::int32_t>>{
                            {"a", 1}, {"field_2", 2}, {"c", 3}, {"field_4", 4}, {"field_5", 5}}));
}

}  // namespace
}  // namespace tnw::test
