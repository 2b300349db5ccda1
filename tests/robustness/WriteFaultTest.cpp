// Write faults that buffering could hide: a record whose write fails half-way, and a set begun
// again while one is open.
#include <gtest/gtest.h>

#include <cerrno>
#include <cmath>
#include <filesystem>
#include <string>
#include <utility>
#include <vector>

#include "RobustnessSupport.h"
#include "ogc_sf/Geometries.h"
#include "shapefile/tnwShapeEncoder.h"

namespace tnw::test {
namespace {

class WriteFaultTest : public ::testing::Test {
protected:
    ScopedCapture oCapture;
    TempDir oDir;
    std::shared_ptr<tnwColumns> oColumns = CreateAs<tnwColumns>(kProgIdColumns, "x");
    std::shared_ptr<tnwColumn> oId = AddColumn(*oColumns, "ID", vtInt32, 6);
};

TEST_F(WriteFaultTest, RecordThatFailsHalfWrittenIsCutOut) {
    // Polygons of 5000 points: 80 KiB records that go out past the buffer. Half of the third
    // one reaches the disk, then its write fails.
    std::vector<standins::Coordinate> vRing;
    for (int k = 0; k <= 5000; ++k)
        vRing.push_back({std::cos(-k * 0.0012566), std::sin(-k * 0.0012566)});
    const auto oPolygon =
        std::make_shared<standins::Polygon>(std::vector<std::vector<standins::Coordinate>>{vRing});
    const std::string sBase = oDir.Path("big");
    std::vector<std::int32_t> vTaken;
    {
        tnwShapeEncoder oEncoder;
        ASSERT_TRUE(oEncoder.Initialize(sBase, oColumns, tnwGeometryRegion));
        const auto fnWrite = platform::Sys().write;
        int nLarge = 0;
        bool bFailNext = false;
        platform::Sys().write = [&](int iFd, const void* p, std::size_t n) -> ssize_t {
            if (std::exchange(bFailNext, false)) {
                errno = ENOSPC;
                return -1;
            }
            bFailNext = n >= platform::OutputFile::kBufferSize && ++nLarge == 3;
            return fnWrite(iFd, p, bFailNext ? n / 2 : n);
        };
        for (std::int32_t i = 1; i <= 5; ++i) {
            oId->SetValue(i);
            oEncoder.SetGeometry(oPolygon);
            if (oEncoder.Update()) vTaken.push_back(i);
        }
        platform::Sys().write = fnWrite;
    }
    EXPECT_EQ(vTaken, (std::vector<std::int32_t>{1, 2, 4, 5}));
    ASSERT_EQ(oCapture.vReports.size(), 1u);
    EXPECT_EQ(oCapture.vReports[0].lNumber, errDiskFull);
    EXPECT_EQ(CheckShapeSetBytes(sBase), 0);
    EXPECT_EQ(ReadNumbers(sBase + ".dbf", "ID"), vTaken);
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
    // The first set's headers were never patched, but its records reached the disk.
    EXPECT_EQ(std::filesystem::file_size(oDir.Path("first.shp")), 100u + 3 * 28);
    EXPECT_EQ(std::filesystem::file_size(oDir.Path("first.dbf")), 32u + 32 + 1 + 3 * 7);
}

}  // namespace
}  // namespace tnw::test
