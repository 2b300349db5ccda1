// The INI document: keyed lists, open modes, the saved text and reading a file back.
#include <gtest/gtest.h>

#include <cerrno>
#include <filesystem>

#include "core/Error.h"
#include "platform/File.h"
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

TEST_F(INIFileTest, KeyedListsOfSectionsAndValues) {
    tnwINIFile oFile;
    EXPECT_EQ(oFile.Count(), 0);  // a list from the start
    auto oField = oFile.Create("Field");
    ASSERT_TRUE(oField);
    EXPECT_FALSE(oFile.Create("FIELD"));  // refused, no error; the first spelling stays
    auto oCrop = oFile.Create("Crop");
    EXPECT_EQ(oFile.Count(), 2);
    EXPECT_EQ(oFile.Item("field"), oField);
    EXPECT_EQ(oFile.Item(1), oField);
    EXPECT_EQ(oFile.Item(2.0), oCrop);
    // Item fails where Remove gives false.
    EXPECT_EQ(test::ErrorNumberOf([&] { oFile.Item("Soil"); }), errInvalidCall);
    EXPECT_EQ(test::ErrorNumberOf([&] { oFile.Item(3); }), errSubscript);
    EXPECT_EQ(test::ErrorNumberOf([&] { oFile.Item(Variant()); }), errSubscript);
    for (const Variant& vKey :
         {Variant("Soil"), Variant(0), Variant(3), Variant(-1e300), Variant(true), Variant()})
        EXPECT_FALSE(oFile.Remove(vKey)) << vKey.ToText();

    ASSERT_TRUE(oField->Create("Name", "North 40"));
    EXPECT_FALSE(oField->Create("NAME", "other"));
    oField->Create("Acres", "40");
    EXPECT_EQ(oField->Item("name")->value(), "North 40");
    EXPECT_TRUE(oField->Remove(1));
    EXPECT_EQ(oField->Item(1)->Key(), "Acres");  // the former second
    EXPECT_TRUE(oField->Remove("ACRES"));
    EXPECT_EQ(oField->Count(), 0);

    EXPECT_TRUE(oFile.Remove(1));
    EXPECT_EQ(oFile.Item(1), oCrop);
    std::vector<std::string> vKeys;
    oFile.Create("Soil");
    for (const auto& oSection : oFile.NewEnum())
        vKeys.push_back(oSection->Key());
    EXPECT_EQ(vKeys, (std::vector<std::string>{"Crop", "Soil"}));
    oFile.Clear();
    EXPECT_EQ(oFile.Count(), 0);
    EXPECT_EQ(oField->Key(), "Field");  // a removed section lives on while held
}

TEST_F(INIFileTest, OpenModesDecideTheList) {
    const std::string sExisting = dir.Path("existing.ini");
    test::WriteFile(sExisting, "\r\n[A]\r\nx=1\r\n");
    struct Case {
        bool bExists;
        TNW_Encoders_OpenModes eMode;
        bool bList;
    };
    const Case aCases[] = {
        {false, TNW_OpenMode_Open, false},       {false, TNW_OpenMode_OpenCreate, true},
        {false, TNW_OpenMode_Create, true},      {false, TNW_Encoders_OpenModes{}, false},
        {true, TNW_OpenMode_Open, true},         {true, TNW_OpenMode_Create, true},
        {true, TNW_Encoders_OpenModes{}, false},
    };
    for (const Case& c : aCases) {
        SCOPED_TRACE(std::to_string(c.bExists) + " " + std::to_string(c.eMode));
        const std::string sName = c.bExists ? sExisting : dir.Path("missing.ini");
        tnwINIFile oFile;
        oFile.Create("Kept");
        EXPECT_EQ(oFile.OpenINI(sName, c.eMode), 0);
        EXPECT_EQ(oFile.ModeOpened(), 0);
        EXPECT_EQ(oFile.Filename(), sName);
        EXPECT_FALSE(std::filesystem::exists(dir.Path("missing.ini")));  // no file made
        if (c.bList) {
            EXPECT_EQ(oFile.Count(), 0);  // a file's content is not kept
            continue;
        }
        EXPECT_EQ(test::ErrorNumberOf([&] { oFile.Count(); }), errObjectNotSet);
        EXPECT_EQ(test::ErrorNumberOf([&] { oFile.Item(1); }), errObjectNotSet);
        EXPECT_EQ(test::ErrorNumberOf([&] { oFile.NewEnum(); }), errObjectNotSet);
        EXPECT_EQ(test::ErrorNumberOf([&] { oFile.Save(); }), errObjectNotSet);
        EXPECT_FALSE(oFile.Create("New"));
        EXPECT_FALSE(oFile.Remove(1));
        oFile.Clear();
        EXPECT_EQ(oFile.Count(), 0);
    }
    EXPECT_EQ(test::ReadFile(sExisting), "\r\n[A]\r\nx=1\r\n");
    // A file that can't be read raises the platform's error.
    const auto tSaved = platform::Sys().open;
    platform::Sys().open = [](const char*, int, int) {
        errno = EACCES;
        return -1;
    };
    tnwINIFile oFile;
    EXPECT_EQ(test::ErrorNumberOf([&] { oFile.OpenINI(sExisting, TNW_OpenMode_Open); }),
              errPathFileAccess);
    platform::Sys().open = tSaved;
}

TEST_F(INIFileTest, SavedText) {
    tnwINIFile oFile;
    EXPECT_EQ(Saved(oFile), "");
    // Before any OpenINI the stored name is empty: a file error.
    EXPECT_NE(test::ErrorNumberOf([&] { oFile.Save(); }), 0);
    auto oA = oFile.Create("A");
    oA->Create("x", "1");
    oFile.Create("B");
    EXPECT_EQ(Saved(oFile), "\r\n[A]\r\nx=1\r\n\r\n[B]\r\n");
    // Text as it stands, no blanks added, nothing escaped, in the narrow code page.
    oA->Item("x")->SetValue(" two\r\nlines ");
    oFile.Create("Caf\xC3\xA9")->Create("k=", "");
    EXPECT_EQ(Saved(oFile), "\r\n[A]\r\nx= two\r\nlines \r\n\r\n[B]\r\n\r\n[Caf\xE9]\r\nk==\r\n");
    // Save with a name writes there and keeps the stored one.
    const std::string sStored = dir.Path("stored.ini");
    oFile.OpenINI(sStored, TNW_OpenMode_Create);
    oFile.Create("S")->Create("v", "w");
    EXPECT_EQ(Saved(oFile), "\r\n[S]\r\nv=w\r\n");
    EXPECT_EQ(oFile.Filename(), sStored);
    EXPECT_FALSE(oFile.Save());
    EXPECT_EQ(test::ReadFile(sStored), "\r\n[S]\r\nv=w\r\n");
}

TEST_F(INIFileTest, LoadContentReadsSectionsBack) {
    const std::string sPath = dir.Path("load.ini");
    test::WriteFile(sPath,
                    "before=section\r\n[Field]\r\nName=North=40\n; note=skipped\r\n\r\n"
                    "no equals sign\r\nname=second spelling\r\n[Empty]\r\n[FIELD]\r\n"
                    "Acres= 40 \r\n[Caf\xE9]\r\n=empty key\r\n");
    tnwINIFile oFile;
    oFile.SetLoadContent(true);
    oFile.OpenINI(sPath, TNW_OpenMode_Open);
    EXPECT_EQ(Saved(oFile),
              "\r\n[Field]\r\nName=North=40\r\nAcres= 40 \r\n\r\n[Empty]\r\n\r\n[Caf\xE9]\r\n"
              "=empty key\r\n");
    EXPECT_EQ(oFile.Item("Caf\xC3\xA9")->Item(1)->value(), "empty key");
    // What Save writes reads back as the same document.
    tnwINIFile oAgain;
    oAgain.SetLoadContent(true);
    oAgain.OpenINI(dir.Path("saved1.ini"), TNW_OpenMode_OpenCreate);
    EXPECT_EQ(Saved(oAgain), test::ReadFile(dir.Path("saved1.ini")));
}

}  // namespace
}  // namespace tnw
