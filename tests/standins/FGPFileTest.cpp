// The FGP main file stand-ins: hostile files are refused at Open, an unfinished file is removed.
// (What the writer writes the reader gives back: tests/decoders.)
#include <gtest/gtest.h>

#include <functional>
#include <string>

#include "core/Error.h"
#include "fgp/FGPFile.h"
#include "fgp/FGPWriter.h"
#include "platform/File.h"
#include "support/TestSupport.h"

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
    FGPFile oWhole;
    oWhole.Open(sPath);
    EXPECT_EQ(test::ErrorNumberOf([&] { oWhole.Points()->Item(3); }), errSubscript);
    EXPECT_FALSE(platform::FileExists(sPath + ".points~"));
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

}  // namespace
}  // namespace tnw::standins
