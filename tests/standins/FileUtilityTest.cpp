// The stand-in file utility: path splitting with both separators, and the file calls.
#include <gtest/gtest.h>
#include <sys/time.h>

#include <ctime>

#include "core/Error.h"
#include "core/SerialDate.h"
#include "gislib/FileUtility.h"
#include "support/TestSupport.h"

namespace tnw::standins {
namespace {

TEST(FileUtility, SplitsPathsAtEitherSeparator) {
    struct Case {
        const char* sPath;
        const char* sFolder;
        const char* sBase;
        const char* sExtension;
    } aCases[] = {
        {"C:\\data\\field.shp", "C:/data", "field", "shp"},
        {"/tmp/a.b/c", "/tmp/a.b", "c", ""},
        {"dir/sub\\name.tar.gz", "dir/sub", "name.tar", "gz"},
        {"name", "", "name", ""},
        {"name.", "", "name", ""},
        {"/x.txt", "/", "x", "txt"},
        {"a//b.txt", "a", "b", "txt"},
        {"a\\\\b.txt", "a", "b", "txt"},
        {"logs/.hidden", "logs", "", "hidden"},
        {"folder/", "folder", "", ""},
        {"", "", "", ""},
    };
    const FileUtility oUtility;
    for (const Case& t : aCases) {
        SCOPED_TRACE(t.sPath);
        EXPECT_EQ(oUtility.Folder(t.sPath), t.sFolder);
        EXPECT_EQ(oUtility.BaseName(t.sPath), t.sBase);
        EXPECT_EQ(oUtility.Extension(t.sPath), t.sExtension);
    }
}

TEST(FileUtility, SaveTextFileWritesTheBytesAsGiven) {
    test::TempDir oDir;
    const FileUtility oUtility;
    const std::string sPath = oDir.Path("out.mcd");
    using namespace std::string_literals;
    const std::string sText = "<Columns>\r\n\xE9\x00x\n"s;  // with a NUL byte
    EXPECT_FALSE(oUtility.FileExists(sPath));
    oUtility.SaveTextFile(sText, sPath);
    EXPECT_TRUE(oUtility.FileExists(sPath));
    EXPECT_EQ(test::ReadFile(sPath), sText);
    EXPECT_EQ(oUtility.FileLength(sPath), static_cast<std::int64_t>(sText.size()));

    // Replaced, not appended to.
    oUtility.SaveTextFile("ab", sPath);
    EXPECT_EQ(test::ReadFile(sPath), "ab");
    EXPECT_EQ(oUtility.FileLength(sPath), 2);

    // A backslash path reaches the same file.
    const std::string sBackslashed = oDir.Root().string() + "\\out.mcd";
    EXPECT_TRUE(oUtility.FileExists(sBackslashed));
    EXPECT_EQ(oUtility.FileLength(sBackslashed), 2);
    oUtility.SaveTextFile("xyz", oDir.Root().string() + "\\second.prj");
    EXPECT_EQ(test::ReadFile(oDir.Path("second.prj")), "xyz");

    EXPECT_FALSE(oUtility.FileExists(oDir.Root().string()));  // a folder is no file
}

TEST(FileUtility, MissingFilesAndFolders) {
    test::TempDir oDir;
    const FileUtility oUtility;
    const std::string sMissing = oDir.Path("none.txt");
    for (auto fn : {+[](const FileUtility&o, const std::string&s) { o.FileLength(s); },
                    +[](const FileUtility&o, const std::string&s) { o.FileDate(s); },
                    +[](const FileUtility&o, const std::string&s) {
                        o.SaveTextFile("x", s + "/inside.txt");
                    }}) {
        try {
            fn(oUtility, sMissing);
            ADD_FAILURE();
        } catch (const Error& e) {
            EXPECT_EQ(e.lNumber, errFileNotFound);
        }
    }
}

TEST(FileUtility, FileDateIsTheModificationInLocalTime) {
    test::TempDir oDir;
    const FileUtility oUtility;
    const std::string sPath = oDir.Path("dated.txt");
    oUtility.SaveTextFile("x", sPath);

    std::tm tLocal{};
    tLocal.tm_year = 2021 - 1900;
    tLocal.tm_mon = 2;
    tLocal.tm_mday = 4;
    tLocal.tm_hour = 5;
    tLocal.tm_min = 6;
    tLocal.tm_sec = 7;
    tLocal.tm_isdst = -1;
    const std::time_t tWhen = std::mktime(&tLocal);
    const timeval aTimes[2] = {{tWhen, 0}, {tWhen, 0}};
    ASSERT_EQ(::utimes(sPath.c_str(), aTimes), 0);

    const double dExpected = DateSerial(2021, 3, 4).dSerial + (5 * 3600 + 6 * 60 + 7) / 86400.0;
    EXPECT_NEAR(oUtility.FileDate(sPath).dSerial, dExpected, 1e-9);
}

}  // namespace
}  // namespace tnw::standins
