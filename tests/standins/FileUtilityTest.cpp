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
        const char *sPath, *sFolder, *sBase, *sExtension;
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

TEST(FileUtility, FileCalls) {
    test::TempDir oDir;
    const FileUtility oUtility;
    const std::string sPath = oDir.Path("out.mcd");
    using namespace std::string_literals;
    const std::string sText = "<Columns>\r\n\xE9\x00x\n"s;  // written as given, NUL included
    oUtility.SaveTextFile(sText, sPath);
    EXPECT_EQ(test::ReadFile(sPath), sText);
    oUtility.SaveTextFile("ab", oDir.Root().string() + "\\out.mcd");  // replaced, not appended
    EXPECT_EQ(test::ReadFile(sPath), "ab");
    EXPECT_EQ(oUtility.FileLength(oDir.Root().string() + "\\out.mcd"), 2);
    EXPECT_TRUE(oUtility.FileExists(sPath));
    EXPECT_FALSE(oUtility.FileExists(oDir.Root().string()));  // a folder is no file

    // The modification time in local time.
    std::tm tLocal{};
    ASSERT_TRUE(::strptime("2021-03-04 05:06:07", "%Y-%m-%d %H:%M:%S", &tLocal));
    tLocal.tm_isdst = -1;
    const std::time_t tWhen = std::mktime(&tLocal);
    const timeval aTimes[2] = {{tWhen, 0}, {tWhen, 0}};
    ASSERT_EQ(::utimes(sPath.c_str(), aTimes), 0);
    const double dExpected = DateSerial(2021, 3, 4).dSerial + (5 * 3600 + 6 * 60 + 7) / 86400.0;
    EXPECT_NEAR(oUtility.FileDate(sPath).dSerial, dExpected, 1e-9);

    const std::string sMissing = oDir.Path("none.txt");
    EXPECT_FALSE(oUtility.FileExists(sMissing));
    EXPECT_EQ(test::ErrorNumberOf([&] { oUtility.FileLength(sMissing); }), errFileNotFound);
    EXPECT_EQ(test::ErrorNumberOf([&] { oUtility.FileDate(sMissing); }), errFileNotFound);
    EXPECT_EQ(test::ErrorNumberOf([&] { oUtility.SaveTextFile("x", sMissing + "/in.txt"); }),
              errFileNotFound);
}

}  // namespace
}  // namespace tnw::standins
