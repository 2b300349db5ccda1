// The FGP main file stand-ins: what the writer writes the reader gives back, hostile files are
// refused at Open, and the text builder.
#include <gtest/gtest.h>

#include <functional>

#include "core/Error.h"
#include "fgp/FGPFile.h"
#include "fgp/FGPWriter.h"
#include "platform/File.h"
#include "support/TestSupport.h"
#include "text/StringBuilder.h"

namespace tnw::standins {
namespace {

using fgp::PointData;

PointData Numbered(std::int32_t n) {
    return {n, n + 1, n + 2, n + .5, n + .25, -n - .75, n * 10.0, n * 100.0};
}

std::vector<PointData> Numbers(std::int32_t nFirst, std::int32_t nCount) {
    std::vector<PointData> v;
    for (std::int32_t n = nFirst; n < nFirst + nCount; ++n)
        v.push_back(Numbered(n));
    return v;
}

void ExpectPoint(const tnwFGPPoint& o, std::int32_t n) {
    const PointData t = Numbered(n);
    EXPECT_EQ(std::tuple(o.FSNRecord(), o.AttributeID(), o.RegionID(), o.Time(), o.Longitude(),
                         o.Latitude(), o.Altitude(), o.Heading()),
              std::tuple(t.lFSNRecord, t.lAttributeID, t.lRegionID, t.dTime, t.dLongitude,
                         t.dLatitude, t.dAltitude, t.dHeading));
}

class FGPFileTest : public ::testing::Test {
protected:
    // Loose points 100 and 101 around region 1..3, line 10..11, an empty line, region 20.
    void WriteSample() {
        FGPWriter oWriter(sPath);
        oWriter.AddPoint(Numbered(100));
        oWriter.AddRegion(Numbers(1, 3));
        oWriter.AddLine(Numbers(10, 2));
        oWriter.AddPoint(Numbered(101));
        oWriter.AddLine({});
        oWriter.AddRegion(Numbers(20, 1));
        oWriter.Close();
    }

    test::TempDir oDir;
    std::string sPath = oDir.Path("set.fgp");
};

TEST_F(FGPFileTest, ReadsBackWhatWasWrittenInAnyOrder) {
    WriteSample();
    EXPECT_FALSE(platform::FileExists(sPath + ".points~"));
    FGPFile oFile;
    oFile.Open(sPath);
    const std::vector<std::vector<std::int32_t>> vRegions = {{1, 2, 3}, {20}},
                                                 vLines = {{10, 11}, {}};
    for (const auto& [oParts, vExpected] :
         {std::pair(oFile.Regions(), vRegions), std::pair(oFile.Lines(), vLines)}) {
        ASSERT_EQ(oParts->Count(), static_cast<std::int32_t>(vExpected.size()));
        for (std::int32_t lPart = 1; lPart <= oParts->Count(); ++lPart) {
            const auto oList = oParts->Item(lPart);
            ASSERT_EQ(oList->Count(), static_cast<std::int32_t>(vExpected[lPart - 1].size()));
            for (std::int32_t i = 1; i <= oList->Count(); ++i)
                ExpectPoint(*oList->Item(i), vExpected[lPart - 1][i - 1]);
            EXPECT_EQ(test::ErrorNumberOf([&] { oList->Item(oList->Count() + 1); }), errSubscript);
        }
        EXPECT_EQ(test::ErrorNumberOf([&] { oParts->Item(0); }), errSubscript);
    }
    ASSERT_EQ(oFile.Points()->Count(), 2);
    ExpectPoint(*oFile.Points()->Item(2), 101);
    EXPECT_EQ(oFile.Regions(), oFile.Regions());  // the same list at every call
}

TEST_F(FGPFileTest, HostileFilesAreRefusedAtOpen) {
    WriteSample();
    const std::string sGood = test::ReadFile(sPath);
    const std::size_t nTable = 32 + 52 * (6 + 2);  // the part entries follow 6 vertices, 2 points
    const auto Put32 = [](std::string& s, std::size_t nAt, std::uint32_t u) {
        for (int i = 0; i < 4; ++i)
            s[nAt + i] = static_cast<char>(u >> (8 * i));
    };
    struct Case {
        const char* sName;
        std::function<void(std::string&)> fnBreak;
    } aCases[] = {
        {"shorter than a header", [](std::string& s) { s.resize(31); }},
        {"another magic", [](std::string& s) { s[1] = 'X'; }},
        {"an unknown version", [&](std::string& s) { Put32(s, 8, 2); }},
        {"a negative count", [&](std::string& s) { Put32(s, 16, 0xFFFFFFFF); }},
        {"a count past the end", [&](std::string& s) { Put32(s, 20, 3); }},
        {"a huge vertex count", [&](std::string& s) { Put32(s, 28, 0x40000000); }},
        {"a negative vertex count", [&](std::string& s) { Put32(s, 28, 0x80000000); }},
        {"a byte more", [](std::string& s) { s += '\0'; }},
        {"a byte less", [](std::string& s) { s.pop_back(); }},
        {"a part starting before the vertices",
         [&](std::string& s) { Put32(s, nTable + 4, 0xFFFFFFFF); }},
        {"a part ending past the vertices", [&](std::string& s) { Put32(s, nTable + 8, 7); }},
        {"a negative vertex count of a part",
         [&](std::string& s) { Put32(s, nTable + 44, 0xFFFFFFFF); }},
    };
    for (const Case& t : aCases) {
        SCOPED_TRACE(t.sName);
        std::string sBytes = sGood;
        t.fnBreak(sBytes);
        test::WriteFile(sPath, sBytes);
        FGPFile oFile;
        EXPECT_EQ(test::ErrorNumberOf([&] { oFile.Open(sPath); }), errInvalidFileFormat);
        EXPECT_EQ(test::ErrorNumberOf([&] { oFile.Lines(); }), errObjectNotSet);
    }
}

TEST_F(FGPFileTest, AnUnfinishedFileIsRemoved) {
    {
        FGPWriter oWriter(sPath);
        oWriter.AddPoint(Numbered(1));
    }
    EXPECT_FALSE(platform::FileExists(sPath));
    EXPECT_FALSE(platform::FileExists(sPath + ".points~"));
}

TEST(StringBuilder, SeparatorGoesBetweenAppends) {
    StringBuilder oBuilder;
    oBuilder.Append("a");
    oBuilder.SetSeparator(",");
    oBuilder.Append("b");
    oBuilder.AppendLine("c");
    oBuilder.SetSeparator("");
    oBuilder.AppendLine("");
    oBuilder.Append("d");
    EXPECT_EQ(oBuilder.Text(), "a,b,c\r\n\r\nd");
}

}  // namespace
}  // namespace tnw::standins
