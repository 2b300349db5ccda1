// The reader's GPL dialect: the name, the command lines, the join with the companion table,
// damaged companions and the fixed fields. The tool's tests read back a log from the writer.
#include <gtest/gtest.h>

#include <filesystem>

#include "core/NumberText.h"
#include "decoders/DbfBytes.h"
#include "delimited/tnwASCIIDecoder.h"
#include "support/TestSupport.h"

namespace tnw::test {
namespace {

class GPLDialectTest : public ::testing::Test {
protected:
    // Walks a log twice (the table starts over with it); per step "row:+command" or
    // "row:-command", "row:time|table values" for a record, "row:!" for a failed row.
    std::string Walk(const std::string& sName, const std::string& sLog,
                     const std::string& sTable = "", const std::string& sTableName = "log.gpd") {
        WriteFile(oDir.Path(sName), sLog);
        std::filesystem::remove(oDir.Path("log.gpd"));
        if (!sTable.empty()) WriteFile(oDir.Path(sTableName), sTable);
        oReader = std::make_unique<tnwASCIIDecoder>();
        oReader->SetFilename(oDir.Path(sName));
        std::string sSteps[2];
        for (std::string& s : sSteps) {
            for (bool b = oReader->MoveFirst() == Variant(true); !oReader->Eof();
                 b = oReader->MoveNext()) {
                const bool bCommand = oReader->GPLStart() || oReader->GPLEnd();
                s += " " + oReader->CurrentRow() + ":" +
                     (!b         ? "!"
                      : bCommand ? (oReader->GPLStart() ? "+" : "-") + oReader->GPLCommand()
                      : oReader->GPL()
                          ? oReader->Columns()->Item("Time")->Text() + "|" + oReader->GPDString()
                          : oReader->CurrentLine());
            }
        }
        EXPECT_EQ(sSteps[0], sSteps[1]);
        return sSteps[0];
    }
    ScopedCapture oCapture;
    TempDir oDir;
    std::unique_ptr<tnwASCIIDecoder> oReader;
};

// Lines of time (and record number) n.
std::string L(std::initializer_list<int> vTimes) {
    std::string s;
    for (int n : vTimes)
        s += std::to_string(n) + ",1,2,,,,,," + std::to_string(n) + "\r\n";
    return s;
}

TEST_F(GPLDialectTest, Walks) {
    DbfTable tTable({{"NAME", 'C', 6}, {"Swath", 'N', 4}});
    const std::string sTable = tTable.Row({"one", "10"}).Row({"two", "20"}).Bytes();
    tTable.lRecordCount = 1000;
    const std::string sCut = sTable.substr(0, sTable.size() - 4);
    const std::string g = "GPL11\r\nSTAR\r\n", sJoin = g + L({0, 2, 1, 3, 9});
    const std::string sJoined = " 1:+STAR 2:0|one|10 3:2|two|20 4:1|two|20 5:3|two|20 6:9|two|20";
    const std::vector<std::tuple<std::string, std::string, std::string, std::string>> vCases = {
        {"log.gpl", g + L({61}) + "STOP here\r\n", "", " 1:+STAR 2:61| 3:-STOP here"},
        {"log.gpl", L({1, 2}), "", ""},  // no start, no records
        // Upper case only; a stop before any start is a step; lines after a stop are records;
        // an empty line is passed over; a row without field 9 fails alone.
        {"log.GPL",
         "star\r\nSTOP\r\n" + L({1}) + "STARTED\r\n" + L({2}) + "STOPPED\r\n\r\n" + L({3}) +
             "star\r\n1,2,3\r\n" + L({4}),
         "", " 1:-STOP 2:+STARTED 3:2| 4:-STOPPED 5:3| 6:! 7:! 8:4|"},
        {"log.gpl.txt", "STAR\r\n1,2\r\n", "", " 1:STAR 2:1,2"},
        // Forward only, to the record's number; past the end the last row stays.
        {"log.gpl", sJoin, sTable, sJoined},
        {"log.gpl", g + L({2}), "log.GPD", " 1:+STAR 2:2|two|20"},
        {"log.gpl", g + L({2}), "not a table", " 1:+STAR 2:2|"},
        {"log.gpl", g + L({2}), std::string(32, '\xFF'), " 1:+STAR 2:2|"},
        // A table that ends early is reported once per walk and keeps what it last read.
        {"log.gpl", sJoin, tTable.Bytes(), sJoined},
        {"log.gpl", sJoin, sCut, " 1:+STAR 2:0|one|10 3:2|two|10 4:1|two|10 5:3|two|10 6:9|two|10"},
    };
    std::vector<std::size_t> vReports;
    for (const auto& [sName, sLog, sTableBytes, sSteps] : vCases) {
        const bool bUpper = sTableBytes == "log.GPD";
        EXPECT_EQ(Walk(sName, sLog, bUpper ? sTable : sTableBytes, bUpper ? "log.GPD" : "log.gpd"),
                  sSteps);
        vReports.push_back(oCapture.vReports.size());
    }
    EXPECT_EQ(vReports, (std::vector<std::size_t>{0, 0, 4, 4, 4, 4, 4, 4, 6, 8}));
    EXPECT_EQ(oCapture.vBoxes.size(), 2u);  // "not a table", and the header past its end
    EXPECT_EQ(oReader->GPDSchema(), "NAME~C~6~0~|Swath~N~4~0~");
    EXPECT_EQ(oReader->Columns()->Count(), 13);  // "Swath" feeds the fixed column
}

// Every field in its column.
TEST_F(GPLDialectTest, FixedFields) {
    Walk("log.gpl",
         "GPL11\r\nSTAR\r\n61, 42.5,-93.25, 300.5,7,2,1.5,xyz,3,4.25, 90,10.5,11.5,12.5");
    std::string s = NumberText(oReader->Latitude()) + NumberText(oReader->Longitude());
    for (const auto& oColumn : oReader->Columns()->Items())
        s += " " + oColumn->Key() + "=" + oColumn->Text();
    EXPECT_EQ(s,
              " 42.5-93.25 Time=61 Altitude=300.5 SampleID=7 GPSQuality=2 HOffset=1.5 "
              "HOffsetDir=x RecordID=3 GPSSpeed=4.25 GPSHeading=90 Rate_Rx=10.5 Rate_Act=11.5 "
              "Swath=12.5");
}

}  // namespace
}  // namespace tnw::test
