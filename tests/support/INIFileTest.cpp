// The INI document: keyed lists, open modes, the saved text and reading a file back.
#include <gtest/gtest.h>

#include <filesystem>
#include <tuple>

#include "core/Error.h"
#include "support/TestSupport.h"
#include "support/tnwINIFile.h"

namespace tnw {
namespace {

class INIFileTest : public ::testing::Test {
protected:
    std::string Saved(tnwINIFile& oFile) {
        const std::string sPath = dir.Path("saved" + std::to_string(++m_nFiles) + ".ini");
        oFile.Save(sPath);
        return test::ReadFile(sPath);
    }

    test::ScopedCapture capture{0};
    test::TempDir dir;
    int m_nFiles = 0;
};

TEST_F(INIFileTest, KeyedListsAndSavedText) {
    tnwINIFile oFile;
    EXPECT_EQ(Saved(oFile), "");                               // a list from the start
    EXPECT_NE(test::ErrorNumberOf([&] { oFile.Save(); }), 0);  // no stored name yet
    auto oA = oFile.Create("A");
    EXPECT_FALSE(oFile.Create("a"));  // refused, no error; the first spelling stays
    oA->Create("x", "1");
    EXPECT_FALSE(oA->Create("X", "2"));
    auto oB = oFile.Create("B");
    EXPECT_EQ(Saved(oFile), "\r\n[A]\r\nx=1\r\n\r\n[B]\r\n");
    EXPECT_EQ(oFile.Item("a"), oFile.Item(1));
    // Item fails where Remove gives false.
    EXPECT_EQ(test::ErrorNumberOf([&] { oFile.Item("C"); }), errInvalidCall);
    EXPECT_EQ(test::ErrorNumberOf([&] { oFile.Item(3); }), errSubscript);
    for (const Variant& vKey : {Variant("C"), Variant(3), Variant(-1e300), Variant()})
        EXPECT_FALSE(oFile.Remove(vKey)) << vKey.ToText();
    // Nothing escaped; the narrow code page.
    oA->Item("x")->SetValue("two\r\nlines ");
    oFile.Create("Caf\xC3\xA9");
    EXPECT_TRUE(oFile.Remove(2));
    EXPECT_EQ(Saved(oFile), "\r\n[A]\r\nx=two\r\nlines \r\n\r\n[Caf\xE9]\r\n");
}

TEST_F(INIFileTest, OpenModesDecideTheList) {
    const std::string sExisting = dir.Path("existing.ini");
    test::WriteFile(sExisting, "\r\n[A]\r\nx=1\r\n");
    for (const auto& [bExists, eMode, bList] : {std::tuple{false, 2, false},
                                                {false, 3, true},
                                                {false, 1, true},
                                                {false, 0, false},
                                                {true, 2, true},
                                                {true, 0, false}}) {
        tnwINIFile oFile;
        oFile.Create("Kept");
        oFile.OpenINI(bExists ? sExisting : dir.Path("missing.ini"),
                      static_cast<TNW_Encoders_OpenModes>(eMode));
        EXPECT_FALSE(std::filesystem::exists(dir.Path("missing.ini")));
        EXPECT_EQ(test::ErrorNumberOf([&] { EXPECT_EQ(oFile.Count(), 0); }),
                  bList ? 0 : errObjectNotSet);  // a file's content is not kept
        if (bList) continue;
        EXPECT_FALSE(oFile.Create("New") || oFile.Remove(1));
        oFile.Clear();
        oFile.Create("S")->Create("v", "w");
        if (bExists) oFile.Save();  // to the stored name
    }
    EXPECT_EQ(test::ReadFile(sExisting), "\r\n[S]\r\nv=w\r\n");
}

TEST_F(INIFileTest, LoadContentReadsSectionsBack) {
    const std::string sPath = dir.Path("load.ini");
    test::WriteFile(sPath,
                    "before=section\r\n[Field]\r\nName=North=40\n; note=skipped\r\n\r\n"
                    "no equals sign\r\nname=second spelling\r\n[FIELD]\r\nAcres= 40 \r\n"
                    "[Caf\xE9]\r\n=empty key\r\n");
    tnwINIFile oFile;
    oFile.SetLoadContent(true);
    oFile.OpenINI(sPath, TNW_OpenMode_Open);
    const std::string sSaved = Saved(oFile);
    EXPECT_EQ(sSaved,
              "\r\n[Field]\r\nName=North=40\r\nAcres= 40 \r\n\r\n[Caf\xE9]\r\n=empty key\r\n");
    oFile.OpenINI(dir.Path("saved1.ini"), TNW_OpenMode_Open);  // what Save wrote reads back
    EXPECT_EQ(Saved(oFile), sSaved);
}

}  // namespace
}  // namespace tnw
