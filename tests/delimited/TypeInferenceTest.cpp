// The reader's extensions for files as they come from the field: column types and widths from
// the values, the decimal comma, rows without a position, quoted line breaks, the line length
// kept in memory and names for empty header cells.
#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "core/NumberText.h"
#include "core/SerialDate.h"
#include "delimited/tnwASCIIDecoder.h"
#include "support/TestSupport.h"
#include "uom/UnitLookup.h"

namespace tnw::test {
namespace {

class FieldFileTest : public ::testing::Test {
protected:
    FieldFileTest() { standins::RegisterUnitLookup(); }

    void Open(const std::string& sBytes, const std::string& sDelimiter = ",") {
        WriteFile(oDir.Path("log.csv"), sBytes);
        oReader.SetFilename(oDir.Path("log.csv"));
        oReader.SetDelimiter(sDelimiter);
        oReader.SetHeaderRows(1);
        oReader.SetSampleRows(10);
        ASSERT_EQ(oReader.AutoGenColumns(), Variant(true));
    }
    // Each row as "x y|note", with " none" for a row without a position, or "refused <length
    // of the line kept>".
    std::vector<std::string> Rows() {
        std::vector<std::string> vRows;
        bool bRead = oReader.MoveFirst() == Variant(true);
        while (!oReader.Eof()) {
            vRows.push_back(bRead
                                ? NumberText(oReader.Longitude()) + NumberText(oReader.Latitude()) +
                                      (oReader.HasPosition() ? "|" : " none|") +
                                      oReader.Columns()->Item("Note")->Text()
                                : "refused " + std::to_string(oReader.CurrentLine().size()));
            bRead = oReader.MoveNext();
        }
        return vRows;
    }

    ScopedCapture oCapture;
    TempDir oDir;
    tnwASCIIDecoder oReader;
};

TEST_F(FieldFileTest, SampleGivesEachColumnTheTypeAndWidthOfItsValues) {
    oReader.SetNameEmptyHeaders(true);
    oReader.SetColumnType("mixed", vtInt32);
    Open(
        "Yield,,Day,Crop,Mixed,Blank,Big,Small,Moist (%),Exp,Near\r\n"
        "12.5,1,2024-05-01,Corn,1,,12345678901,.5,14,1e3,1e\r\n"
        "7.25,22,2024-05-02,Soybeans,x,,1,0.25,15.5,+5,-\r\n"
        "130,-333,2024-05-03,Corn,2,,7,1E-7,16,-2.5E-1,.\r\n");
    std::vector<std::string> vFields;
    for (const auto& oColumn : oReader.Columns()->Items())
        vFields.push_back(oColumn->Key() + " " + std::to_string(oColumn->Type()) + " " +
                          std::to_string(oColumn->Size()) + "." +
                          std::to_string(oColumn->Precision()));
    // Whole numbers are type 3, numbers 5, dates 7, text 8; a known unit keeps 16.4.
    EXPECT_EQ(vFields,
              (std::vector<std::string>{"Yield 5 4.2", "field_2 3 4.0", "Day 7 8.0", "Crop 8 8.0",
                                        "Mixed 3 11.0", "Blank 8 1.0", "Big 5 11.1", "Small 5 5.2",
                                        "Moist 5 16.4", "Exp 5 4.2", "Near 8 2.0"}));
    const auto oDay = oReader.Columns()->Item("Day");
    for (bool b = oReader.MoveFirst() == Variant(true); b; b = oReader.MoveNext()) {
    }
    EXPECT_EQ(oDay->Value(), Variant(DateSerial(2024, 5, 3)));
}

TEST_F(FieldFileTest, RowsAsRead) {
    // What the tool's run on field files leaves untried: where no decimal comma is found, and
    // the limits of joining lines.
    struct Case {
        const char* sName;
        std::string sDelimiter;
        std::string sBody;
        std::vector<std::string> vRows;
    };
    const std::vector<Case> vCases = {
        {"comma delimiter", ",", "\"50,9\",6,a\r\n", {" 50 6|a"}},
        {"points as well", ";", "50.25;6,5;a\r\n", {" 50.25 6|a"}},
        {"positions", ",", "1,2,a\r\n,2,b\r\n1, ,c\r\n", {" 1 2|a", " 0 2 none|b", " 1 0 none|c"}},
        {"quote never closed", ",", "1,2,\"a\r\n3,4,b\r\n", {" 1 2|a\n3,4,b"}},
        {"overlong",
         ",",
         std::string(200000, 'z') + "\r\n1,2,ok\r\n",
         {"refused 32767", " 1 2|ok"}},
    };
    oReader.SetQuotedLineBreaks(true);
    for (const Case& c : vCases) {
        SCOPED_TRACE(c.sName);
        const std::string sHeader = c.sDelimiter == "," ? "X,Y,Note" : "X;Y;Note";
        Open(sHeader + "\r\n" + c.sBody, c.sDelimiter);
        EXPECT_EQ(Rows(), c.vRows);
    }
}

}  // namespace
}  // namespace tnw::test
