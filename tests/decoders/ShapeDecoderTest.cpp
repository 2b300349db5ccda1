// tnwShapeDecoder on hand-built main headers.
#include <gtest/gtest.h>

#include <array>
#include <bit>
#include <tuple>

#include "core/Error.h"
#include "decoders/tnwShapeDecoder.h"
#include "support/TestSupport.h"

namespace tnw {
namespace {

// What GetShapeDetails gives; the defaults are the caller's values it may leave alone.
struct Details {
    bool bResult = false;
    std::int32_t eType = -7;
    std::string sType = "untouched";
    bool bCartesian = true;
    double dLeft = -1, dRight = -1, dTop = -1, dBottom = -1;

    auto Tuple() const {
        return std::tie(bResult, eType, sType, bCartesian, dLeft, dRight, dTop, dBottom);
    }
};

Details Read(const std::string& sPath) {
    Details t;
    t.bResult = tnwShapeDecoder().GetShapeDetails(sPath, t.eType, t.sType, t.bCartesian, t.dLeft,
                                                  t.dRight, t.dTop, t.dBottom);
    return t;
}

// A 100-byte main header as the format lays it out: big-endian file code 9994 and length in
// 16-bit words, then little-endian version 1000, shape type and box.
std::string MainHeader(std::int32_t lShapeType, double dXmin, double dYmin, double dXmax,
                       double dYmax) {
    std::string s(100, '\0');
    auto putBE = [&](std::size_t n, std::uint32_t u) {
        for (int i = 0; i < 4; ++i)
            s[n + i] = static_cast<char>(u >> (24 - 8 * i));
    };
    auto putLE = [&](std::size_t n, std::uint64_t u, int nBytes) {
        for (int i = 0; i < nBytes; ++i)
            s[n + i] = static_cast<char>(u >> (8 * i));
    };
    putBE(0, 9994);
    putBE(24, 50);
    putLE(28, 1000, 4);
    putLE(32, static_cast<std::uint32_t>(lShapeType), 4);
    const double aBox[] = {dXmin, dYmin, dXmax, dYmax};
    for (int i = 0; i < 4; ++i)
        putLE(36 + 8 * i, std::bit_cast<std::uint64_t>(aBox[i]), 8);
    return s;
}

class ShapeDecoderTest : public ::testing::Test {
protected:
    std::string Hand(const std::string& sName, const std::string& sBytes) {
        const std::string sPath = oDir.Path(sName);
        test::WriteFile(sPath, sBytes);
        return sPath;
    }

    test::ScopedCapture oCapture;
    test::TempDir oDir;
};

// Each shape type, plain and with Z or M, gives its kind; types without a kind leave the
// caller's values.
TEST_F(ShapeDecoderTest, KindOfEachShapeType) {
    const std::tuple<std::int32_t, std::int32_t, const char*> aKinds[] = {
        {1, 1, "Point"}, {3, 2, "Line"}, {5, 3, "Region"}, {8, 1, "Point"}};
    const std::string sFolder = oDir.Root().string() + "/";
    for (const auto& [lShapeType, eType, sType] : aKinds) {
        for (std::int32_t lOffset : {0, 10, 20}) {
            SCOPED_TRACE(lShapeType + lOffset);
            const std::string sShp =
                Hand("k.shp", MainHeader(lShapeType + lOffset, -96, 40, -95, 41));
            EXPECT_EQ(Read(sShp).Tuple(),
                      Details(true, eType, sType, false, -96, -95, 41, 40).Tuple());
            EXPECT_EQ(tnwShapeDecoder().GetESRIShapeType(sFolder, "k.shp"), lShapeType + lOffset);
        }
    }
    for (std::int32_t lType : {0, 31, 2, 99, -1})
        EXPECT_EQ(Read(Hand("odd.shp", MainHeader(lType, 1, 2, 3, 4))).Tuple(),
                  Details(true, -7, "untouched", false, 1, 3, 4, 2).Tuple());
}

TEST_F(ShapeDecoderTest, CartesianIsDecidedByFourComparisons) {
    // xmin, ymin, xmax, ymax, Cartesian: the bounds count as inside, and a left edge above 180
    // is not looked at.
    const std::array<double, 5> aCases[] = {
        {-180, -90, 180, 90, 0},   {-180, -90, 180.5, 90, 1}, {-180.5, -90, 180, 90, 1},
        {-180, -90.5, 180, 90, 1}, {-180, -90, 180, 90.5, 1}, {190, -10, 170, 10, 0},
        {-96, 40, -95, 41, 0},
    };
    for (const auto& c : aCases) {
        SCOPED_TRACE(testing::Message() << c[0] << " " << c[1] << " " << c[2] << " " << c[3]);
        EXPECT_EQ(Read(Hand("box.shp", MainHeader(5, c[0], c[1], c[2], c[3]))).bCartesian,
                  c[4] != 0);
    }
}

TEST_F(ShapeDecoderTest, MissingAndShortFiles) {
    EXPECT_EQ(Read(oDir.Path("absent.shp")).Tuple(), Details().Tuple());
    // What a short file lacks reads as zero.
    const std::string sHeader = MainHeader(3, -96, 40, -95, 41);
    EXPECT_EQ(Read(Hand("short.shp", sHeader.substr(0, 52))).Tuple(),
              Details(true, 2, "Line", false, -96, 0, 0, 40).Tuple());

    const std::string sFolder = oDir.Root().string() + "/";
    Hand("tiny.shp", sHeader.substr(0, 34));
    EXPECT_EQ(tnwShapeDecoder().GetESRIShapeType(sFolder, "tiny.shp"), 0);
    EXPECT_EQ(
        test::ErrorNumberOf([&] { tnwShapeDecoder().GetESRIShapeType(sFolder, "absent.shp"); }),
        errFileNotFound);
}

}  // namespace
}  // namespace tnw
