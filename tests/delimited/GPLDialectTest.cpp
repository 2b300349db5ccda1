// The reader's GPL dialect: a ".gpl" name, the command lines, the twelve fixed fields, the
// join with the companion table, damaged companions, and logs from the writer read back.
#include <gtest/gtest.h>

#include <memory>
#include <string>
#include <vector>

#include "core/Error.h"
#include "decoders/DbfBytes.h"
#include "delimited/tnwASCIIDecoder.h"
#include "encoders/tnwGPLEncoder.h"
#include "support/TestSupport.h"

namespace tnw::test {
namespace {

using Strings = std::vector<std::string>;

const std::string kTop =
    "GPL11\r\nTime , Latitude, Longitude, Elevation, SampleID, GPSQuality, Hoffset, HOffsetDir, "
    "RecordID, GPSSpeed, GPSHeading, Rate(RX), Rate(Actual), Swath(Actual)\r\n\r\n";

// A data line of time lTime with record number sRecord (field 9).
std::string Line(int lTime, const std::string& sRecord = "1") {
    return std::to_string(lTime) + ", 42.5,-93.25, 300,1,2,0,x," + sRecord + ",0, 90,0,0,0\r\n";
}

// The companion of the join cases: a text, a number, and a field keyed like a fixed column.
DbfTable Companion() {
    DbfTable t({{"NAME", 'C', 6}, {"RATE", 'N', 6, 1}, {"Swath", 'N', 4}});
    t.Row({"one", "1.5", "10"}).Row({"two", "2.5", "20"}).Row({"three", "3.5", "30"});
    return t;
}

class GPLDialectTest : public ::testing::Test {
protected:
    // Writes the log (and its companion when given) and points the reader at it.
    void Open(const std::string& sLog, const std::string& sName = "log.gpl",
              const std::string& sCompanion = "", const std::string& sCompanionName = "log.gpd") {
        WriteFile(oDir.Path(sName), sLog);
        if (!sCompanion.empty()) WriteFile(oDir.Path(sCompanionName), sCompanion);
        oReader->SetFilename(oDir.Path(sName));
    }
    double Value(const std::string& sKey) const {
        return oReader->Columns()->Item(sKey)->Value().ToDouble();
    }
    // One text per step of the whole walk: "STAR..."/"STOP..." for a command (its line), the
    // Time value for a record, "false" for a step that failed without ending the file.
    Strings Walk() {
        Strings vSteps;
        bool bMore = oReader->MoveFirst() == Variant(true);
        for (int i = 0; i < 50 && !oReader->Eof(); ++i) {
            if (!bMore) {
                vSteps.push_back("false");
            } else if (oReader->GPLStart() || oReader->GPLEnd()) {
                vSteps.push_back(oReader->GPLCommand());
            } else {
                vSteps.push_back(oReader->Columns()->Item("Time")->Text());
            }
            bMore = oReader->MoveNext();
        }
        return vSteps;
    }

    ScopedCapture oCapture;
    TempDir oDir;
    std::unique_ptr<tnwASCIIDecoder> oReader = std::make_unique<tnwASCIIDecoder>();
};

TEST_F(GPLDialectTest, FiveLineLogStepByStep) {
    Open("GPL11\r\nTime , Latitude\r\nSTAR\r\n" + Line(61) + "STOP here\r\n");
    struct Step {
        bool bResult, bStart, bEnd, bEof;
        const char* sRow;
        const char* sCommand;
    };
    const std::vector<Step> vSteps = {
        {true, true, false, false, "1", "STAR"},
        {true, false, false, false, "2", "STAR"},
        {true, false, true, false, "3", "STOP here"},
        {false, false, false, true, "0", "STOP here"},
    };
    for (std::size_t i = 0; i < vSteps.size(); ++i) {
        SCOPED_TRACE(i);
        const bool bResult = i == 0 ? oReader->MoveFirst() == Variant(true) : oReader->MoveNext();
        EXPECT_EQ(bResult, vSteps[i].bResult);
        EXPECT_EQ(oReader->GPLStart(), vSteps[i].bStart);
        EXPECT_EQ(oReader->GPLEnd(), vSteps[i].bEnd);
        EXPECT_EQ(oReader->Eof(), vSteps[i].bEof);
        EXPECT_EQ(oReader->CurrentRow(), vSteps[i].sRow);
        EXPECT_EQ(oReader->GPLCommand(), vSteps[i].sCommand);
        // A command step keeps the record before it.
        if (i > 0) {
            EXPECT_EQ(Value("Time"), 61);
        }
    }
    EXPECT_TRUE(oCapture.vReports.empty());
}

TEST_F(GPLDialectTest, CommandLines) {
    struct Case {
        std::string sBody;  // after the three top lines
        Strings vSteps;
    };
    const std::vector<Case> vCases = {
        // The writer's own output has no start: no records at all.
        {Line(1) + Line(2), {}},
        {"STARTED 10:00\r\n" + Line(1) + "STOPPED\r\n", {"STARTED 10:00", "1", "STOPPED"}},
        // Lower case is no command: passed over before the first start, a row after it (one
        // that lacks the position fields).
        {"star\r\n" + Line(1) + "STAR\r\nstar\r\n", {"STAR", "false"}},
        // A stop before any start is a step; records after a stop are read; a second start is
        // one more step.
        {"STOP\r\n" + Line(1) + "STAR\r\n" + Line(2) + "STOP\r\n" + Line(3) + "STAR\r\n" + Line(4),
         {"STOP", "STAR", "2", "STOP", "3", "STAR", "4"}},
        // Empty lines are passed over; blank ones are rows.
        {"STAR\r\n\r\n" + Line(5) + "  \r\n", {"STAR", "5", "false"}},
    };
    for (const Case& c : vCases) {
        SCOPED_TRACE(c.sBody);
        Open(kTop + c.sBody);
        EXPECT_EQ(Walk(), c.vSteps);
    }
}

TEST_F(GPLDialectTest, TheNameAloneChoosesTheDialect) {
    const std::string sLog = kTop + "STAR\r\n" + Line(7);
    Open(sLog, "plot.GPL");
    EXPECT_TRUE(oReader->GPL());
    EXPECT_EQ(oReader->HeaderRows(), 1);
    EXPECT_EQ(Walk(), (Strings{"STAR", "7"}));
    // A host's change after the name stands: four rows skipped take the start line with them.
    oReader->SetHeaderRows(4);
    EXPECT_EQ(Walk(), Strings{});

    oReader = std::make_unique<tnwASCIIDecoder>();
    Open(sLog, "plot.gpl.txt");
    EXPECT_FALSE(oReader->GPL());
    oReader->SetHeaderRows(3);
    EXPECT_EQ(oReader->MoveFirst(), Variant(true));
    EXPECT_FALSE(oReader->GPLStart());
    EXPECT_EQ(oReader->CurrentLine(), "STAR");
}

// Each field lands in its own column; latitude and longitude are the position.
TEST_F(GPLDialectTest, FixedFields) {
    Open(kTop + "STAR\r\n61, 42.5,-93.25, 300.5,7,2,1.5,xyz,3,4.25, 90,10.5,11.5,12.5\r\n");
    ASSERT_EQ(oReader->MoveFirst(), Variant(true));
    ASSERT_TRUE(oReader->MoveNext());
    const std::vector<std::pair<std::string, double>> vNumbers = {
        {"Time", 61},      {"Altitude", 300.5}, {"SampleID", 7},    {"GPSQuality", 2},
        {"HOffset", 1.5},  {"RecordID", 3},     {"GPSSpeed", 4.25}, {"GPSHeading", 90},
        {"Rate_Rx", 10.5}, {"Rate_Act", 11.5},  {"Swath", 12.5},
    };
    Strings vKeys;
    for (const auto& oColumn : oReader->Columns()->Items())
        vKeys.push_back(oColumn->Key());
    EXPECT_EQ(vKeys,
              (Strings{"Time", "Altitude", "SampleID", "GPSQuality", "HOffset", "HOffsetDir",
                       "RecordID", "GPSSpeed", "GPSHeading", "Rate_Rx", "Rate_Act", "Swath"}));
    for (const auto& [sKey, dValue] : vNumbers)
        EXPECT_EQ(oReader->Columns()->Item(sKey)->Value(), Variant(dValue)) << sKey;
    EXPECT_EQ(oReader->Columns()->Item("HOffsetDir")->Value(), Variant("x"));
    EXPECT_EQ(oReader->Latitude(), 42.5);
    EXPECT_EQ(oReader->Longitude(), -93.25);
    EXPECT_EQ(oReader->WKT(), "POINT(-93.25  42.5)");
    EXPECT_EQ(oReader->GPDSchema(), "");
    EXPECT_EQ(oReader->GPDString(), "");
}

// The table moves forward only, to the record's number; past its end it holds its last row.
TEST_F(GPLDialectTest, JoinByRecordNumber) {
    std::string sBody = "STAR\r\n";
    for (const char* sRecord : {"0", "2", "2", "1", "3", "4", "9", "1e9"})
        sBody += Line(1, sRecord);
    Open(kTop + sBody, "log.gpl", Companion().Bytes());
    EXPECT_EQ(oReader->GPDSchema(), "NAME~C~6~0~|RATE~N~6~1~|Swath~N~4~0~");
    EXPECT_EQ(oReader->Columns()->Count(), 14);  // "Swath" feeds the fixed column
    const Strings vExpected = {"one|1.5|10",   "two|2.5|20",   "two|2.5|20",   "two|2.5|20",
                               "three|3.5|30", "three|3.5|30", "three|3.5|30", "three|3.5|30"};
    for (int iPass = 0; iPass < 2; ++iPass) {  // MoveFirst starts the table over as well
        ASSERT_EQ(oReader->MoveFirst(), Variant(true));
        for (const std::string& sJoined : vExpected) {
            ASSERT_TRUE(oReader->MoveNext());
            EXPECT_EQ(oReader->GPDString(), sJoined);
            EXPECT_EQ(oReader->Columns()->Item("NAME")->Text() + "|" +
                          oReader->Columns()->Item("RATE")->Text() + "|" +
                          oReader->Columns()->Item("Swath")->Text(),
                      sJoined);
        }
        EXPECT_FALSE(oReader->MoveNext());
    }
    EXPECT_TRUE(oCapture.vReports.empty());
}

// A companion that is missing or damaged never stops the log; one that ends before its header
// says is reported once per walk and holds its last row.
TEST_F(GPLDialectTest, DamagedCompanions) {
    DbfTable tTruncated = Companion();
    tTruncated.lRecordCount = 1000;
    std::string sCut = Companion().Bytes();
    sCut.resize(sCut.size() - 8);  // the last record loses its end
    struct Case {
        std::string sName, sBytes;
        std::string sLast;  // GPDString of the last record
        std::size_t nBoxes, nReports;
    };
    const std::vector<Case> vCases = {
        {"", "", "", 0, 0},
        {"log.GPD", Companion().Bytes(), "three|3.5|30", 0, 0},
        {"log.gpd", "not a table", "", 1, 0},
        {"log.gpd", tTruncated.Bytes(), "three|3.5|30", 0, 1},
        // The fields of the cut record that arrived whole are taken.
        {"log.gpd", sCut, "three|2.5|20", 0, 1},
        {"log.gpd", std::string(32, '\xFF'), "", 0, 0},
    };
    std::string sBody = "STAR\r\n";
    for (int i = 1; i <= 5; ++i)
        sBody += Line(i, std::to_string(i));
    for (const Case& c : vCases) {
        SCOPED_TRACE(c.sName + ": " + c.sBytes.substr(0, 12));
        oCapture.vBoxes.clear();
        oCapture.vReports.clear();
        oReader = std::make_unique<tnwASCIIDecoder>();
        TempDir oFresh;
        WriteFile(oFresh.Path("log.gpl"), kTop + sBody);
        if (!c.sName.empty()) WriteFile(oFresh.Path(c.sName), c.sBytes);
        oReader->SetFilename(oFresh.Path("log.gpl"));
        EXPECT_EQ(Walk(), (Strings{"STAR", "1", "2", "3", "4", "5"}));
        EXPECT_EQ(oReader->GPDString(), c.sLast);
        EXPECT_EQ(oCapture.vBoxes.size(), c.nBoxes);
        ASSERT_EQ(oCapture.vReports.size(), c.nReports);
        for (const auto& r : oCapture.vReports) {
            EXPECT_EQ(r.sSource, "tnwASCIIDecoder.MoveNext");
            EXPECT_EQ(r.lNumber, errInputPastEnd);
        }
    }
}

// A row that lacks field 9, or a table column the host took out of the list, fails that step
// on the error path; the walk goes on after it.
TEST_F(GPLDialectTest, FailingRows) {
    Open(kTop + "STAR\r\n1,2,3\r\n" + Line(5), "log.gpl", Companion().Bytes());
    EXPECT_EQ(Walk(), (Strings{"STAR", "false", "5"}));
    Open(kTop + "STAR\r\n" + Line(6), "log.gpl", Companion().Bytes());
    oReader->Columns()->Clear();
    oReader->Columns()->Add("Time", "", "", vtInt32, 6, 0, 24, 1, 16, "", false, true);
    EXPECT_EQ(Walk(), (Strings{"STAR", "false"}));
    ASSERT_EQ(oCapture.vReports.size(), 2u);
    EXPECT_EQ(oCapture.vReports[0].lNumber, errSubscript);
    EXPECT_EQ(oCapture.vReports[1].lNumber, errObjectNotSet);
    for (const auto& r : oCapture.vReports)
        EXPECT_EQ(r.sSource, "tnwASCIIDecoder.MoveNext");
}

// A log from the writer, named ".gpl" and given a start line, reads back value for value.
TEST_F(GPLDialectTest, WriterRoundTrip) {
    struct Record {
        double dUTC, dLatitude, dLongitude, dElevation, dHeading;
    };
    const std::vector<Record> vRecords = {
        {86461, 42.5, -93.25, 300, 90},
        {172799, -0.125, 179.999999, -12.5, 359},
        {5, 1e-7, -1e-7, 0, 0.5},
    };
    auto oColumns = NewColumns();
    for (const char* sKey : {"UTC", "Latitude", "Longitude", "Elevation", "Heading"})
        AddColumn(*oColumns, sKey, vtDouble, 16, 6);
    tnwGPLEncoder oWriter;
    ASSERT_TRUE(oWriter.Initialize(oDir.Path("written.gpl"), oColumns));
    for (const Record& r : vRecords) {
        const double aValues[] = {r.dUTC, r.dLatitude, r.dLongitude, r.dElevation, r.dHeading};
        for (std::size_t i = 0; i < 5; ++i)
            oColumns->Items()[i]->SetValue(aValues[i]);
        ASSERT_TRUE(oWriter.Update());
    }
    oWriter.CloseFiles();
    std::string sLog = ReadFile(oWriter.Filename());
    sLog.insert(kTop.size(), "STAR\r\n");
    Open(sLog, "written.gpl");
    ASSERT_EQ(oReader->MoveFirst(), Variant(true));
    for (std::size_t i = 0; i < vRecords.size(); ++i) {
        SCOPED_TRACE(i);
        ASSERT_TRUE(oReader->MoveNext());
        const Record& r = vRecords[i];
        EXPECT_EQ(Value("Time"), static_cast<int>(r.dUTC) % 86400);
        EXPECT_EQ(oReader->Latitude(), r.dLatitude);
        EXPECT_EQ(oReader->Longitude(), r.dLongitude);
        EXPECT_EQ(Value("Altitude"), r.dElevation);
        EXPECT_EQ(Value("GPSHeading"), r.dHeading);
        EXPECT_EQ(Value("SampleID"), static_cast<double>(i + 1));
        EXPECT_EQ(Value("RecordID"), 1);
    }
    EXPECT_FALSE(oReader->MoveNext());
}

}  // namespace
}  // namespace tnw::test
