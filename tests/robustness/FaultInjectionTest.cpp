// Failures of the file layer under the encoders and readers: each system call of a run made to
// fail in turn, a disk that fills up, and files that disappear between calls. Whatever fails,
// the failure is reported (error path or box), no descriptor is left open, CloseFiles and
// destruction stay safe, and no set on disk claims records it does not hold.
#include <gtest/gtest.h>

#include <cerrno>
#include <filesystem>
#include <functional>
#include <string>
#include <vector>

#include "FaultInjection.h"
#include "RobustnessSupport.h"
#include "core/Error.h"
#include "delimited/tnwASCIIDecoder.h"
#include "encoders/tnwASCIIEncoder.h"
#include "ogc_sf/Geometries.h"
#include "shapefile/tnwShapeEncoder.h"

namespace tnw::test {
namespace {

// Enough records that every file of a set fills its 64 KiB buffer more than once.
constexpr int kRecords = 10000;

using Plan = std::function<void(ScopedSystemCalls&)>;
using Counts = std::array<int, kAllSysCalls.size()>;

int& At(Counts& a, SysCall e) {
    return a[static_cast<std::size_t>(e)];
}

// The system calls fnRun makes when nothing fails.
Counts CountCalls(const std::function<void()>& fnRun) {
    ScopedSystemCalls oCalls;
    fnRun();
    Counts aCounts{};
    for (SysCall e : kAllSysCalls)
        At(aCounts, e) = oCalls.Count(e);
    return aCounts;
}

// fnRun once for each call of the kinds in vCalls, that call failing (a write with a full disk).
void EachFailingCall(Counts aCounts, std::initializer_list<SysCall> vCalls,
                     const std::function<void(const Plan&)>& fnRun) {
    for (SysCall e : vCalls)
        for (int n = 1; n <= At(aCounts, e); ++n) {
            SCOPED_TRACE(std::string(SysCallName(e)) + " call " + std::to_string(n));
            fnRun(
                [=](ScopedSystemCalls& o) { o.FailAt(e, n, e == SysCall::Write ? ENOSPC : EIO); });
        }
}

// A number that names the record and a text, the columns of every record written here.
class FileFaults : public ::testing::Test {
protected:
    FileFaults() {
        oId = AddColumn(*oColumns, "ID", vtDouble, 8);
        oName = AddColumn(*oColumns, "NAME", vtString, 12);
    }
    void Set(int i) {
        oId->SetValue(static_cast<double>(i));
        oName->SetValue("Point " + std::to_string(i));
    }
    void ClearReports() {
        oCapture.vReports.clear();
        oCapture.vBoxes.clear();
    }
    bool Reported() const { return !oCapture.vReports.empty() || !oCapture.vBoxes.empty(); }
    // Writes kRecords points (or a table without geometry) and closes the set; gives the
    // numbers of the records Update took.
    std::vector<std::int32_t> WritePoints(tnwShapeEncoder& oEncoder,
                                          tnwGeometryType eType = tnwGeometryPoint) {
        std::vector<std::int32_t> vWritten;
        if (!oEncoder.Initialize(sBase, oColumns, eType)) return vWritten;
        for (int i = 1; i <= kRecords; ++i) {
            Set(i);
            oEncoder.SetGeometry(standins::Point::Create(i * 0.001, -i * 0.002));
            if (oEncoder.Update()) vWritten.push_back(i);
        }
        oEncoder.CloseFiles();
        return vWritten;
    }

    ScopedCapture oCapture;
    TempDir oDir;
    std::string sBase = oDir.Path("set");
    std::shared_ptr<tnwColumns> oColumns = NewColumns();
    std::shared_ptr<tnwColumn> oId, oName;
};

// ---- Encoders ----

// Each failing call and a disk filling at any point: reported, no descriptor left, and a set
// the checker takes as whole holds exactly the records Update took.
TEST_F(FileFaults, ShapeEncoderRunsWithAFault) {
    const auto fnOldSet = [&] {
        for (const char* sExtension : {".dbf", ".shp", ".shx"})
            WriteFile(sBase + sExtension, "old");  // so that the run deletes them first
    };
    fnOldSet();
    Counts aCounts = CountCalls([&] {
        tnwShapeEncoder oEncoder;
        ASSERT_EQ(WritePoints(oEncoder).size(), static_cast<std::size_t>(kRecords));
    });
    ASSERT_EQ(CheckShapeSetBytes(sBase), 0);
    // Five files opened, each closed, each old one deleted; three headers patched by seek.
    EXPECT_EQ(At(aCounts, SysCall::Open), 5);
    EXPECT_EQ(At(aCounts, SysCall::Lseek), 3);
    EXPECT_GE(At(aCounts, SysCall::Write), 12);
    const auto fnRun = [&](const Plan& fnPlan) {
        ClearReports();
        fnOldSet();
        const int nDescriptors = OpenDescriptorCount();
        std::vector<std::int32_t> vWritten;
        {
            ScopedSystemCalls oCalls;
            fnPlan(oCalls);
            tnwShapeEncoder oEncoder;
            vWritten = WritePoints(oEncoder);
            oEncoder.CloseFiles();
            ASSERT_TRUE(oCalls.Fired()) << "the planned fault never came";
        }
        EXPECT_TRUE(Reported());
        EXPECT_EQ(OpenDescriptorCount(), nDescriptors) << "a descriptor was left open";
        if (CheckShapeSetBytes(sBase) == 0) {
            EXPECT_EQ(ReadNumbers(sBase + ".dbf", "ID"), vWritten) << "a whole-looking set lies";
        }
    };
    EachFailingCall(
        aCounts, {SysCall::Open, SysCall::Write, SysCall::Lseek, SysCall::Close, SysCall::Unlink},
        fnRun);
    // Budgets inside each file's header, inside the first buffers, and near the end.
    for (std::int64_t nFree : {0, 20, 150, 65536, 100000, 300000, 500000, 565000}) {
        SCOPED_TRACE("free bytes " + std::to_string(nFree));
        fnRun([&](ScopedSystemCalls& o) { o.LimitDiskSpace(nFree); });
    }
}

// After any failure the same object writes a whole set again.
TEST_F(FileFaults, ShapeEncoderRecoversForTheNextSet) {
    tnwShapeEncoder oEncoder;
    for (SysCall e : {SysCall::Write, SysCall::Lseek}) {
        ScopedSystemCalls oCalls;
        oCalls.FailAt(e, 3, EIO);
        WritePoints(oEncoder);
        ASSERT_TRUE(oCalls.Fired());
    }
    ASSERT_TRUE(Reported());
    EXPECT_EQ(WritePoints(oEncoder).size(), static_cast<std::size_t>(kRecords));
    EXPECT_EQ(CheckShapeSetBytes(sBase), 0);
    EXPECT_EQ(ReadNumbers(sBase + ".dbf", "ID").back(), kRecords);
}

// A file of the set removed while the set is under way: the set must not close as whole.
TEST_F(FileFaults, ShapeEncoderFileRemovedBeforeClose) {
    for (const char* sExtension : {".dbf", ".shp", ".shx"}) {
        SCOPED_TRACE(sExtension);
        ClearReports();
        tnwShapeEncoder oEncoder;
        ASSERT_TRUE(oEncoder.Initialize(sBase, oColumns, tnwGeometryPoint));
        oEncoder.SetGeometry(standins::Point::Create(1, 1));
        ASSERT_TRUE(oEncoder.Update());
        std::filesystem::remove(sBase + sExtension);
        oEncoder.CloseFiles();
        oEncoder.CloseFiles();  // the second has nothing to report
        ASSERT_EQ(oCapture.vReports.size(), 1u);
        EXPECT_EQ(oCapture.vReports[0].sSource, "tnwShapeEncoder.CloseFiles");
        EXPECT_EQ(oCapture.vReports[0].lNumber, errPathFileAccess);
        EXPECT_NE(CheckShapeSetBytes(sBase), 0);
    }
}

// The text file holds whole lines only, those Update took, and every fault is reported: also
// one that only CloseFiles meets, so that lines Update took and the disk then lost are no
// silent loss.
TEST_F(FileFaults, ASCIIEncoderRunsWithAFault) {
    const std::string sPath = oDir.Path("lines.csv");
    struct Run {
        bool bInitialized = false;
        std::string sExpected;
    };
    const auto fnWrite = [&] {
        Run tRun;
        tnwASCIIEncoder oEncoder;
        tRun.bInitialized = oEncoder.Initialize(sPath, oColumns);
        if (tRun.bInitialized) tRun.sExpected = "\"ID\",\"NAME\"\r\n";
        for (int i = 1; i <= kRecords; ++i) {
            Set(i);
            if (oEncoder.Update())
                tRun.sExpected +=
                    " " + std::to_string(i) + ",\"Point " + std::to_string(i) + "\"\r\n";
        }
        oEncoder.CloseFiles();
        return tRun;
    };
    const Counts aCounts = CountCalls([&] {
        const Run tRun = fnWrite();
        ASSERT_TRUE(ReadFile(sPath) == tRun.sExpected);
    });
    const auto fnRun = [&](const Plan& fnPlan) {
        ClearReports();
        std::filesystem::remove(sPath);
        const int nDescriptors = OpenDescriptorCount();
        Run tRun;
        {
            ScopedSystemCalls oCalls;
            fnPlan(oCalls);
            tRun = fnWrite();
            ASSERT_TRUE(oCalls.Fired()) << "the planned fault never came";
        }
        EXPECT_EQ(OpenDescriptorCount(), nDescriptors) << "a descriptor was left open";
        const std::string sText = ReadFile(sPath);
        EXPECT_TRUE(tRun.sExpected.compare(0, sText.size(), sText) == 0)
            << "the file (" << sText.size() << " bytes) is not the start of the lines written";
        EXPECT_TRUE(Reported());
    };
    EachFailingCall(aCounts, {SysCall::Open, SysCall::Write, SysCall::Close}, fnRun);
    for (std::int64_t nFree : {0, 10, 65536, 100000, 190000}) {
        SCOPED_TRACE("free bytes " + std::to_string(nFree));
        fnRun([&](ScopedSystemCalls& o) { o.LimitDiskSpace(nFree); });
    }
}

// ---- Readers ----

class ReaderFaults : public FileFaults {
protected:
    // A table of kRecords records written by the library, one record 21 bytes long, so that
    // records straddle the reader's 64 KiB buffer.
    std::string WriteTable() {
        tnwShapeEncoder oEncoder;
        EXPECT_EQ(WritePoints(oEncoder, static_cast<tnwGeometryType>(0)).size(),
                  static_cast<std::size_t>(kRecords));
        return sBase + ".dbf";
    }

    // Header 97 bytes, records of 21: record 3117 runs from byte 65,533 to 65,554, so a reader
    // that arrives from record 3116 needs a second fill of its 64 KiB buffer in mid-record.
    static constexpr std::int32_t kStraddling = (65536 - 97) / 21 + 1;

    static void ExpectRecords(tnwDBFDecoder& oReader,
                              std::initializer_list<std::int32_t> vRecords) {
        for (std::int32_t lRecord : vRecords) {
            ASSERT_TRUE(oReader.MoveToRecord(lRecord));
            EXPECT_EQ(oReader.Columns()->Item("ID")->Value(),
                      Variant(static_cast<double>(lRecord)));
            EXPECT_EQ(oReader.Columns()->Item("NAME")->Value(),
                      Variant("Point " + std::to_string(lRecord)));
        }
    }
};

// A read that fails inside a record that straddles the buffer, then the host asks for that
// record again: it must get that record, not bytes from further on.
TEST_F(ReaderFaults, DBFRecordReadAgainAfterAFailedRead) {
    tnwDBFDecoder oReader;
    oReader.SetFilename(WriteTable());
    ExpectRecords(oReader, {kStraddling - 1});
    {
        ScopedSystemCalls oCalls;
        oCalls.FailAt(SysCall::Read, 1, EIO);
        EXPECT_THROW(oReader.MoveNext(), Error);
        ASSERT_TRUE(oCalls.Fired());
    }
    ExpectRecords(oReader, {kStraddling, 1, kRecords});
}

// Every open, read and seek of a walk, a search and random moves made to fail in turn: the
// failure comes out as the reader's behaviour says, and the reader reads right afterwards.
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
    const Counts aCounts = CountCalls([&] {
        tnwDBFDecoder oReader;
        ASSERT_EQ(fnUse(oReader), 6000);
    });
    EachFailingCall(aCounts, {SysCall::Open, SysCall::Read, SysCall::Lseek},
                    [&](const Plan& fnPlan) {
                        tnwDBFDecoder oReader;
                        {
                            ScopedSystemCalls oCalls;
                            fnPlan(oCalls);
                            try {
                                (void)fnUse(oReader);
                            } catch (const Error&) {
                                // Opening and moves pass read errors to the caller.
                            }
                            ASSERT_TRUE(oCalls.Fired());
                        }
                        // The same object, the fault gone: the table reads as written.
                        if (!oReader.IsValidFile()) oReader.SetFilename(sTable);
                        ExpectRecords(oReader, {kStraddling, kRecords, 1, kStraddling - 1});
                    });
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
        ExpectRecords(oReader, {kRecords});
        std::filesystem::rename(sTable + ".bak", sTable);
    }
    // Cut past the reader's first 64 KiB, which it holds already.
    tnwDBFDecoder oReader;
    oReader.SetFilename(sTable);
    std::filesystem::resize_file(sTable, 97 + 21 * 5000);
    ExpectRecords(oReader, {5000});
    EXPECT_THROW(oReader.MoveToRecord(5001), Error);
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
    const Counts aCounts = CountCalls([&] {
        tnwASCIIDecoder oReader;
        ASSERT_EQ(fnWalk(oReader), kRecords);
    });
    const int nDescriptors = OpenDescriptorCount();
    EachFailingCall(aCounts, {SysCall::Read}, [&](const Plan& fnPlan) {
        ClearReports();
        tnwASCIIDecoder oReader;
        int nRows = 0;
        {
            ScopedSystemCalls oCalls;
            fnPlan(oCalls);
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
    });
    EXPECT_EQ(OpenDescriptorCount(), nDescriptors);
}

}  // namespace
}  // namespace tnw::test
