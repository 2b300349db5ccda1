// Write faults that buffering could hide: a failure in the middle of a large record, and a
// set begun again while one is open.
#include <gtest/gtest.h>

#include <cerrno>
#include <cmath>
#include <filesystem>
#include <string>
#include <vector>

#include "RobustnessSupport.h"
#include "ogc_sf/Geometries.h"
#include "shapefile/tnwShapeEncoder.h"

namespace tnw::test {
namespace {

class WriteFaultTest : public ::testing::Test {
protected:
    WriteFaultTest() : oColumns(EmptyColumns()) { oId = AddColumn(*oColumns, "ID", vtInt32, 6); }

    // A square ring of n points around (i, i): large enough for a record of its own.
    static std::shared_ptr<IGeometry> BigPolygon(int i, int n) {
        std::vector<standins::Coordinate> vRing;
        for (int k = 0; k < n; ++k) {
            const double a = -6.283185307179586 * k / n;  // clockwise
            vRing.push_back({i + std::cos(a), i + std::sin(a)});
        }
        vRing.push_back(vRing.front());
        return std::make_shared<standins::Polygon>(
            std::vector<std::vector<standins::Coordinate>>{vRing});
    }

    ScopedCapture oCapture;
    TempDir oDir;
    std::shared_ptr<tnwColumns> oColumns;
    std::shared_ptr<tnwColumn> oId;
};

TEST_F(WriteFaultTest, RecordThatFailsHalfWrittenIsCutOut) {
    // Records of 80 KiB go out past the buffer: the third one's write stops half-way.
    const std::string sBase = oDir.Path("big");
    struct Case {
        const char* sName;
        int iFailingWrite;  // of the large writes, counted from 1
        bool bPartial;      // it puts half its bytes on disk before the failure
    };
    for (const Case& c : {Case{"clean failure", 3, false}, Case{"half written", 3, true}}) {
        SCOPED_TRACE(c.sName);
        oCapture.vReports.clear();
        std::vector<std::int32_t> vTaken;
        {
            tnwShapeEncoder oEncoder;
            ASSERT_TRUE(oEncoder.Initialize(sBase, oColumns, tnwGeometryRegion));
            const auto fnWrite = platform::Sys().write;
            int nLarge = 0;
            bool bFailNext = false;
            platform::Sys().write = [&](int iFd, const void* p, std::size_t n) -> ssize_t {
                if (bFailNext || (n >= platform::OutputFile::kBufferSize &&
                                  ++nLarge == c.iFailingWrite && !c.bPartial)) {
                    bFailNext = false;
                    errno = ENOSPC;
                    return -1;
                }
                if (n >= platform::OutputFile::kBufferSize && nLarge == c.iFailingWrite) {
                    // Half goes to disk, and the write of the rest fails.
                    bFailNext = true;
                    ++nLarge;
                    return fnWrite(iFd, p, n / 2);
                }
                return fnWrite(iFd, p, n);
            };
            for (std::int32_t i = 1; i <= 5; ++i) {
                oId->SetValue(i);
                oEncoder.SetGeometry(BigPolygon(i, 5000));
                if (oEncoder.Update()) vTaken.push_back(i);
            }
            platform::Sys().write = fnWrite;
            oEncoder.CloseFiles();
        }
        EXPECT_EQ(vTaken, (std::vector<std::int32_t>{1, 2, 4, 5}));
        ASSERT_EQ(oCapture.vReports.size(), 1u);
        EXPECT_EQ(oCapture.vReports[0].lNumber, errDiskFull);
        EXPECT_EQ(CheckShapeSetBytes(sBase), 0);
        EXPECT_EQ(ReadNumbers(sBase + ".dbf", "ID"), vTaken);
    }
}

TEST_F(WriteFaultTest, InitializeOnAnOpenSetKeepsWhatItWasGiven) {
    tnwShapeEncoder oEncoder;
    ASSERT_TRUE(oEncoder.Initialize(oDir.Path("first"), oColumns, tnwGeometryPoint));
    for (std::int32_t i = 1; i <= 3; ++i) {
        oId->SetValue(i);
        oEncoder.SetGeometry(standins::Point::Create(i, i));
        ASSERT_TRUE(oEncoder.Update());
    }
    ASSERT_TRUE(oEncoder.Initialize(oDir.Path("second"), oColumns, tnwGeometryPoint));
    oEncoder.CloseFiles();
    // The first set's headers were never patched, but its records reached the disk.
    EXPECT_EQ(std::filesystem::file_size(oDir.Path("first.shp")), 100u + 3 * 28);
    EXPECT_EQ(std::filesystem::file_size(oDir.Path("first.shx")), 100u + 3 * 8);
    EXPECT_EQ(std::filesystem::file_size(oDir.Path("first.dbf")), 32u + 32 + 1 + 3 * 7);
}

}  // namespace
}  // namespace tnw::test
