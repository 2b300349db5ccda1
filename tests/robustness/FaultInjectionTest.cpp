// Failures of the file layer under the encoders and readers: each system call of a run made to
// fail in turn, a disk that fills up, and files that disappear between calls. Whatever fails,
// the failure is reported (error path or box), no descriptor is left open, CloseFiles and
// destruction stay safe, and no set on disk claims records it does not hold.
#include <gtest/gtest.h>

#include <cerrno>
#include <filesystem>
#include <string>
#include <vector>

#include "FaultInjection.h"
#include "RobustnessSupport.h"
#include "core/Error.h"
#include "delimited/tnwASCIIDecoder.h"
#include "encoders/tnwASCIIEncoder.h"
#include "ogc_sf/Geometries.h"
#include "shapefile/tnwShapeEncoder.h"
#include "support/TestSupport.h"

namespace tnw::test {
namespace {

// Enough records that every file of a set fills its 64 KiB buffer more than once.
constexpr int kRecords = 10000;

std::string Describe(SysCall eCall, int n) {
    return std::string(SysCallName(eCall)) + " call " + std::to_string(n);
}

// The columns of the test records: a number that names the record and a text.
struct TestRecord {
    TestRecord() : oColumns(EmptyColumns()) {
        oId = AddColumn(*oColumns, "ID", vtDouble, 8);
        oName = AddColumn(*oColumns, "NAME", vtString, 12);
    }
    void Set(int i) {
        oId->SetValue(static_cast<double>(i));
        oName->SetValue("Point " + std::to_string(i));
    }
    std::shared_ptr<tnwColumns> oColumns;
    std::shared_ptr<tnwColumn> oId;
    std::shared_ptr<tnwColumn> oName;
};

class FileFaults : public ::testing::Test {
protected:
    ScopedCapture oCapture;
    TempDir oDir;
};

// ---- tnwShapeEncoder ----

class ShapeEncoderFaults : public FileFaults {
protected:
    // Writes kRecords points and closes the set; gives the numbers of the records Update took.
    std::vector<std::int32_t> WritePoints(tnwShapeEncoder& oEncoder) {
        std::vector<std::int32_t> vWritten;
        if (!oEncoder.Initialize(sBase, oRecord.oColumns, tnwGeometryPoint)) return vWritten;
        for (int i = 1; i <= kRecords; ++i) {
            oRecord.Set(i);
            oEncoder.SetGeometry(standins::Point::Create(i * 0.001, -i * 0.002));
            if (oEncoder.Update()) vWritten.push_back(i);
        }
        oEncoder.CloseFiles();
        return vWritten;
    }

    // A set that the checker takes as whole holds exactly the records Update took.
    void ExpectNoFalseWholeSet(const std::vector<std::int32_t>& vWritten) {
        if (CheckShapeSetBytes(sBase) != 0) return;
        EXPECT_EQ(ReadNumbers(sBase + ".dbf", "ID"), vWritten)
            << "a set that looks whole lost or gained records";
    }

    // Existing files of the same name, so that the run deletes them first.
    void PutOldSet() {
        for (const char* sExtension : {".dbf", ".shp", ".shx"})
            WriteFile(sBase + sExtension, "old");
    }

    // One run with a fault planned by fnPlan: reported, no descriptor left, a safe close-out.
    void RunWithFault(const std::function<void(ScopedSystemCalls&)>& fnPlan) {
        oCapture.vReports.clear();
        oCapture.vBoxes.clear();
        PutOldSet();
        const int nDescriptors = OpenDescriptorCount();
        std::vector<std::int32_t> vWritten;
        bool bFired = false;
        {
            ScopedSystemCalls oCalls;
            fnPlan(oCalls);
            tnwShapeEncoder oEncoder;
            vWritten = WritePoints(oEncoder);
            oEncoder.CloseFiles();
            bFired = oCalls.Fired();
        }
        ASSERT_TRUE(bFired) << "the planned fault never came";
        EXPECT_FALSE(oCapture.vReports.empty() && oCapture.vBoxes.empty()) << "nothing reported";
        EXPECT_EQ(OpenDescriptorCount(), nDescriptors) << "a descriptor was left open";
        ExpectNoFalseWholeSet(vWritten);
    }

    TestRecord oRecord;
    std::string sBase = oDir.Path("set");
};

TEST_F(ShapeEncoderFaults, EachFailingCallOfARunIsReported) {
    std::array<int, kAllSysCalls.size()> aCounts{};
    {
        PutOldSet();
        ScopedSystemCalls oCalls;
        tnwShapeEncoder oEncoder;
        ASSERT_EQ(WritePoints(oEncoder).size(), static_cast<std::size_t>(kRecords));
        for (SysCall eCall : kAllSysCalls)
            aCounts[static_cast<std::size_t>(eCall)] = oCalls.Count(eCall);
    }
    ASSERT_EQ(CheckShapeSetBytes(sBase), 0);
    // Five files opened, each closed, each old one deleted; three headers patched by seek.
    EXPECT_EQ(aCounts[static_cast<std::size_t>(SysCall::Open)], 5);
    EXPECT_EQ(aCounts[static_cast<std::size_t>(SysCall::Lseek)], 3);
    EXPECT_GE(aCounts[static_cast<std::size_t>(SysCall::Write)], 12);
    for (SysCall eCall :
         {SysCall::Open, SysCall::Write, SysCall::Lseek, SysCall::Close, SysCall::Unlink}) {
        const int iErrno = eCall == SysCall::Write ? ENOSPC : EIO;
        for (int n = 1; n <= aCounts[static_cast<std::size_t>(eCall)]; ++n) {
            SCOPED_TRACE(Describe(eCall, n));
            RunWithFault([&](ScopedSystemCalls& oCalls) { oCalls.FailAt(eCall, n, iErrno); });
        }
    }
}

TEST_F(ShapeEncoderFaults, FullDiskAtAnyPointIsReported) {
    // Budgets inside each file's header, inside the first buffers, and near the end.
    for (std::int64_t nFree : {0, 20, 150, 65536, 100000, 300000, 500000, 565000}) {
        SCOPED_TRACE("free bytes " + std::to_string(nFree));
        RunWithFault([&](ScopedSystemCalls& oCalls) { oCalls.LimitDiskSpace(nFree); });
    }
}

// After any failure the same object writes a whole set again.
TEST_F(ShapeEncoderFaults, TheEncoderRecoversForTheNextSet) {
    tnwShapeEncoder oEncoder;
    {
        ScopedSystemCalls oCalls;
        oCalls.FailAt(SysCall::Write, 3, EIO);
        WritePoints(oEncoder);
    }
    ASSERT_FALSE(oCapture.vReports.empty());
    {
        ScopedSystemCalls oCalls;
        oCalls.FailAt(SysCall::Lseek, 2, EIO);
        WritePoints(oEncoder);
    }
    std::vector<std::int32_t> vAll(kRecords);
    for (int i = 0; i < kRecords; ++i)
        vAll[static_cast<std::size_t>(i)] = i + 1;
    EXPECT_EQ(WritePoints(oEncoder), vAll);
    EXPECT_EQ(CheckShapeSetBytes(sBase), 0);
    EXPECT_EQ(ReadNumbers(sBase + ".dbf", "ID"), vAll);
}

// A file of the set removed while the set is under way: the set must not close as whole.
TEST_F(ShapeEncoderFaults, AFileRemovedBeforeCloseIsReported) {
    for (const char* sExtension : {".dbf", ".shp", ".shx"}) {
        SCOPED_TRACE(sExtension);
        oCapture.vReports.clear();
        tnwShapeEncoder oEncoder;
        ASSERT_TRUE(oEncoder.Initialize(sBase, oRecord.oColumns, tnwGeometryPoint));
        for (int i = 1; i <= 3; ++i) {
            oRecord.Set(i);
            oEncoder.SetGeometry(standins::Point::Create(i, i));
            ASSERT_TRUE(oEncoder.Update());
        }
        std::filesystem::remove(sBase + sExtension);
        oEncoder.CloseFiles();
        ASSERT_EQ(oCapture.vReports.size(), 1u);
        EXPECT_EQ(oCapture.vReports[0].sSource, "tnwShapeEncoder.CloseFiles");
        EXPECT_EQ(oCapture.vReports[0].lNumber, errPathFileAccess);
        EXPECT_NE(CheckShapeSetBytes(sBase), 0);
        oEncoder.CloseFiles();
        EXPECT_EQ(oCapture.vReports.size(), 1u) << "a second CloseFiles has nothing to report";
    }
}

// ---- tnwASCIIEncoder ----

class ASCIIEncoderFaults : public FileFaults {
protected:
    struct Run {
        bool bInitialized = false;
        std::vector<int> vWritten;
    };

    // Writes kRecords lines and closes the file.
    Run WriteLines(tnwASCIIEncoder& oEncoder) {
        Run tRun;
        tRun.bInitialized = oEncoder.Initialize(sPath, oRecord.oColumns);
        for (int i = 1; i <= kRecords; ++i) {
            oRecord.Set(i);
            if (oEncoder.Update()) tRun.vWritten.push_back(i);
        }
        oEncoder.CloseFiles();
        return tRun;
    }

    // The text a run should leave: the header and the lines of the records Update took.
    std::string Expected(const Run& tRun) const {
        if (!tRun.bInitialized) return {};
        std::string sText = "\"ID\",\"NAME\"\r\n";
        for (int i : tRun.vWritten)
            sText += " " + std::to_string(i) + ",\"Point " + std::to_string(i) + "\"\r\n";
        return sText;
    }

    void RunWithFault(const std::function<void(ScopedSystemCalls&)>& fnPlan) {
        oCapture.vReports.clear();
        oCapture.vBoxes.clear();
        std::filesystem::remove(sPath);
        const int nDescriptors = OpenDescriptorCount();
        Run tRun;
        {
            ScopedSystemCalls oCalls;
            fnPlan(oCalls);
            tnwASCIIEncoder oEncoder;
            tRun = WriteLines(oEncoder);
            oEncoder.CloseFiles();
            ASSERT_TRUE(oCalls.Fired()) << "the planned fault never came";
        }
        EXPECT_EQ(OpenDescriptorCount(), nDescriptors) << "a descriptor was left open";
        const std::string sText = ReadFile(sPath);
        const std::string sExpected = Expected(tRun);
        // A line that failed left nothing; a disk that stayed full cut the end off.
        EXPECT_TRUE(sExpected.compare(0, sText.size(), sText) == 0)
            << "the file (" << sText.size() << " bytes) is not the start of the "
            << sExpected.size() << " bytes of the lines written";
        // Also a fault that only close-out meets is told: lines Update took into the buffer
        // and the disk then lost are no silent loss.
        EXPECT_FALSE(oCapture.vReports.empty() && oCapture.vBoxes.empty());
    }

    TestRecord oRecord;
    std::string sPath = oDir.Path("lines.csv");
};

TEST_F(ASCIIEncoderFaults, EachFailingCallOfARunLeavesWholeLinesOnly) {
    std::array<int, kAllSysCalls.size()> aCounts{};
    {
        ScopedSystemCalls oCalls;
        tnwASCIIEncoder oEncoder;
        const Run tRun = WriteLines(oEncoder);
        ASSERT_TRUE(ReadFile(sPath) == Expected(tRun));
        for (SysCall eCall : kAllSysCalls)
            aCounts[static_cast<std::size_t>(eCall)] = oCalls.Count(eCall);
    }
    EXPECT_EQ(aCounts[static_cast<std::size_t>(SysCall::Open)], 1);
    EXPECT_GE(aCounts[static_cast<std::size_t>(SysCall::Write)], 3);
    for (SysCall eCall : {SysCall::Open, SysCall::Write, SysCall::Close}) {
        for (int n = 1; n <= aCounts[static_cast<std::size_t>(eCall)]; ++n) {
            SCOPED_TRACE(Describe(eCall, n));
            RunWithFault([&](ScopedSystemCalls& oCalls) {
                oCalls.FailAt(eCall, n, eCall == SysCall::Write ? ENOSPC : EIO);
            });
        }
    }
}

TEST_F(ASCIIEncoderFaults, FullDiskCutsTheFileAtALineThatIsReported) {
    for (std::int64_t nFree : {0, 10, 65536, 100000, 190000}) {
        SCOPED_TRACE("free bytes " + std::to_string(nFree));
        RunWithFault([&](ScopedSystemCalls& oCalls) { oCalls.LimitDiskSpace(nFree); });
    }
}

// ---- Readers ----

class ReaderFaults : public FileFaults {
protected:
    // A table of kRecords records written by the library, one record 21 bytes long, so that
    // records straddle the reader's 64 KiB buffer.
    std::string WriteTable() {
        const std::string sBase = oDir.Path("table");
        TestRecord oRecord;
        tnwShapeEncoder oEncoder;
        EXPECT_TRUE(oEncoder.Initialize(sBase, oRecord.oColumns, static_cast<tnwGeometryType>(0)));
        for (int i = 1; i <= kRecords; ++i) {
            oRecord.Set(i);
            EXPECT_TRUE(oEncoder.Update());
        }
        oEncoder.CloseFiles();
        return sBase + ".dbf";
    }

    // Header 97 bytes, records of 21: record 3117 runs from byte 65,533 to 65,554, so a reader
    // that arrives from record 3116 needs a second fill of its 64 KiB buffer in mid-record.
    static constexpr std::int32_t kStraddling = (65536 - 97) / 21 + 1;

    static void ExpectRecord(tnwDBFDecoder& oReader, std::int32_t lRecord) {
        ASSERT_TRUE(oReader.MoveToRecord(lRecord));
        EXPECT_EQ(oReader.Columns()->Item("ID")->Value(), Variant(static_cast<double>(lRecord)));
        EXPECT_EQ(oReader.Columns()->Item("NAME")->Value(),
                  Variant("Point " + std::to_string(lRecord)));
    }
};

// A read that fails inside a record that straddles the buffer, then the host asks for that
// record again: it must get that record, not bytes from further on.
TEST_F(ReaderFaults, DBFRecordReadAgainAfterAFailedRead) {
    const std::string sTable = WriteTable();
    tnwDBFDecoder oReader;
    oReader.SetFilename(sTable);
    ExpectRecord(oReader, kStraddling - 1);
    {
        ScopedSystemCalls oCalls;
        oCalls.FailAt(SysCall::Read, 1, EIO);
        EXPECT_THROW(oReader.MoveNext(), Error);
        ASSERT_TRUE(oCalls.Fired());
    }
    ExpectRecord(oReader, kStraddling);
    ExpectRecord(oReader, 1);
    ExpectRecord(oReader, kRecords);
}

// Every read and seek of a walk, a search and random moves made to fail in turn: the failure
// comes out as the reader's behaviour says, and the reader reads right afterwards.
TEST_F(ReaderFaults, DBFEachFailingCallLeavesTheReaderSound) {
    const std::string sTable = WriteTable();
    const int nDescriptors = OpenDescriptorCount();
    auto fnUse = [&](tnwDBFDecoder& oReader) {
        oReader.SetFilename(sTable);
        for (bool bMore = oReader.MoveFirst().EqualsTrue(); bMore; bMore = oReader.MoveNext()) {
        }
        for (std::int32_t lRecord : {kRecords, 1, 4000, kStraddling})
            (void)oReader.MoveToRecord(lRecord);
        return oReader.FindColumnValue("NAME", "Point 6000");
    };
    std::array<int, kAllSysCalls.size()> aCounts{};
    {
        ScopedSystemCalls oCalls;
        tnwDBFDecoder oReader;
        ASSERT_EQ(fnUse(oReader), 6000);
        for (SysCall eCall : kAllSysCalls)
            aCounts[static_cast<std::size_t>(eCall)] = oCalls.Count(eCall);
    }
    for (SysCall eCall : {SysCall::Open, SysCall::Read, SysCall::Lseek}) {
        for (int n = 1; n <= aCounts[static_cast<std::size_t>(eCall)]; ++n) {
            SCOPED_TRACE(Describe(eCall, n));
            tnwDBFDecoder oReader;
            {
                ScopedSystemCalls oCalls;
                oCalls.FailAt(eCall, n, EIO);
                try {
                    (void)fnUse(oReader);
                } catch (const Error&) {
                    // Opening and moves pass read errors to the caller.
                }
                ASSERT_TRUE(oCalls.Fired());
            }
            // The same object, the fault gone: the table reads as written.
            if (!oReader.IsValidFile()) oReader.SetFilename(sTable);
            for (std::int32_t lRecord : {kStraddling, kRecords, 1, kStraddling - 1})
                ExpectRecord(oReader, lRecord);
        }
    }
    EXPECT_EQ(OpenDescriptorCount(), nDescriptors);
}

// The table opened stays readable when its name goes away: the reader holds it open. One that
// shrinks under the reader fails on the records it lost.
TEST_F(ReaderFaults, DBFTableRemovedOrCutAfterOpening) {
    const std::string sTable = WriteTable();
    {
        tnwDBFDecoder oReader;
        oReader.SetFilename(sTable);
        std::filesystem::copy_file(sTable, sTable + ".bak");
        std::filesystem::remove(sTable);
        EXPECT_EQ(oReader.MoveFirst(), Variant(true));
        ExpectRecord(oReader, kRecords);
        std::filesystem::rename(sTable + ".bak", sTable);
    }
    // Cut past the reader's first 64 KiB, which it holds already.
    tnwDBFDecoder oReader;
    oReader.SetFilename(sTable);
    std::filesystem::resize_file(sTable, 97 + 21 * 5000);
    ExpectRecord(oReader, 5000);
    EXPECT_THROW(oReader.MoveToRecord(5001), Error);
    EXPECT_TRUE(oReader.MoveFirst().EqualsTrue());
    EXPECT_EQ(oReader.FindColumnValue("NAME", "Point 6000"), 0);
    ASSERT_EQ(oCapture.vReports.size(), 1u);
    EXPECT_EQ(oCapture.vReports[0].sSource, "tnwDBFDecoder.FindColumnValue");
    EXPECT_EQ(oCapture.vReports[0].lNumber, errInputPastEnd);
}

TEST_F(ReaderFaults, DelimitedEachFailingReadIsReportedAndTheWalkStartsOver) {
    std::string sText = "ID,NAME\r\n";
    for (int i = 1; i <= kRecords; ++i)
        sText += std::to_string(i) + ",Point " + std::to_string(i) + "\r\n";
    const std::string sPath = oDir.Path("walk.csv");
    WriteFile(sPath, sText);
    auto fnWalk = [&](tnwASCIIDecoder& oReader) {
        oReader.SetFilename(sPath);
        oReader.SetHeaderRows(1);
        (void)oReader.AutoGenColumns();
        int nRows = 0;
        for (bool bMore = oReader.MoveFirst().EqualsTrue(); bMore; bMore = oReader.MoveNext())
            ++nRows;
        return nRows;
    };
    int nReads = 0;
    {
        ScopedSystemCalls oCalls;
        tnwASCIIDecoder oReader;
        ASSERT_EQ(fnWalk(oReader), kRecords);
        nReads = oCalls.Count(SysCall::Read);
    }
    const int nDescriptors = OpenDescriptorCount();
    for (int n = 1; n <= nReads; ++n) {
        SCOPED_TRACE(Describe(SysCall::Read, n));
        oCapture.vReports.clear();
        tnwASCIIDecoder oReader;
        int nRows = 0;
        {
            ScopedSystemCalls oCalls;
            oCalls.FailAt(SysCall::Read, n, EIO);
            try {
                nRows = fnWalk(oReader);
            } catch (const Error& e) {
                EXPECT_EQ(e.sSource, "tnwDelimAscii.ReadHeaders");  // the header row's read
            }
            ASSERT_TRUE(oCalls.Fired());
        }
        if (nRows > 0) {
            EXPECT_LE(nRows, kRecords) << "the last read finds the end of the file";
            ASSERT_EQ(oCapture.vReports.size(), 1u);
            EXPECT_EQ(oCapture.vReports[0].sSource, "tnwASCIIDecoder.MoveNext");
        }
        EXPECT_EQ(fnWalk(oReader), kRecords);
        EXPECT_EQ(oReader.Columns()->Item("NAME")->Value(), Variant("Point 10000"));
    }
    EXPECT_EQ(OpenDescriptorCount(), nDescriptors);
}

// The text reader opens its file anew at MoveFirst: a file gone since Filename is reported.
TEST_F(ReaderFaults, DelimitedFileRemovedAfterFilename) {
    const std::string sPath = oDir.Path("gone.csv");
    WriteFile(sPath, "1,2\r\n");
    tnwASCIIDecoder oReader;
    oReader.SetFilename(sPath);
    std::filesystem::remove(sPath);
    EXPECT_TRUE(oReader.MoveFirst().IsEmpty());
    EXPECT_TRUE(oReader.Eof());
    ASSERT_EQ(oCapture.vReports.size(), 1u);
    EXPECT_EQ(oCapture.vReports[0].sSource, "tnwASCIIDecoder.MoveFirst");
    EXPECT_EQ(oCapture.vReports[0].lNumber, errCantAccessSource);
    EXPECT_EQ(oCapture.vReports[0].sErrSource, "tnwDelimAscii.OpenFile");
    EXPECT_FALSE(oReader.MoveNext());
}

}  // namespace
}  // namespace tnw::test
