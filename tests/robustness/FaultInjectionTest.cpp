// Failures of the file layer under the encoders and readers: each system call of a run made to
// fail in turn, a disk that fills up, and files that disappear between calls. Whatever fails,
// the failure is reported (error path or box), no descriptor is left open, CloseFiles and
// destruction stay safe, and no set on disk claims records it does not hold.
#include <gtest/gtest.h>

#include <cerrno>
#include <functional>
#include <string>
#include <vector>

#include "FaultInjection.h"
#include "core/Error.h"
#include "decoders/tnwDBFDecoder.h"
#include "ogc_sf/Geometries.h"
#include "shapefile/tnwShapeEncoder.h"
#include "support/TestSupport.h"

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

// The records of a table as the library's own reader gives them back.

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
    ASSERT_EQ(CheckShapeSet(sBase, "--no-peers").iStatus, 0);
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
        if (CheckShapeSet(sBase, "--no-peers").iStatus == 0) {
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
        }
    }
};

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

}  // namespace
}  // namespace tnw::test
