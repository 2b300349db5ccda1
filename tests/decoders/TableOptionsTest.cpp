// tnwDBFDecoder's extensions for tables from elsewhere: repeated field names kept and read,
// and tables of another header layout refused by their version byte.
#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "DbfBytes.h"
#include "core/Error.h"
#include "decoders/tnwDBFDecoder.h"
#include "support/TestSupport.h"

namespace tnw {
namespace {

using test::DbfTable;

class TableOptionsTest : public ::testing::Test {
protected:
    void Write(const DbfTable& oTable, char cVersion = '\x03') {
        std::string sBytes = oTable.Bytes();
        sBytes[0] = cVersion;
        test::WriteFile(oDir.Path("t.dbf"), sBytes);
    }

    test::ScopedCapture oCapture;
    test::TempDir oDir;
};

TEST_F(TableOptionsTest, RepeatedNamesAreRenamedAndRead) {
    Write(DbfTable({{"NAME", 'C', 4}, {"name", 'C', 4}, {"NAME_1", 'C', 4}, {"NAME", 'N', 4}})
              .Row({"a", "b", "c", "7"}));
    struct Case {
        bool bRename;
        std::vector<std::string> vKeys;
        std::vector<Variant> vValues;
    };
    const std::vector<Case> vCases = {
        {false, {"NAME", "Dummy_2", "NAME_1", "Dummy_4"}, {"a", Variant(), "c", Variant()}},
        {true, {"NAME", "name_1", "NAME_1_1", "NAME_2"}, {"a", "b", "c", 7.0}},
    };
    for (const Case& c : vCases) {
        SCOPED_TRACE(c.bRename);
        tnwDBFDecoder oReader;
        oReader.SetRenameDuplicates(c.bRename);
        oReader.SetFilename(oDir.Path("t.dbf"));
        ASSERT_EQ(oReader.MoveFirst(), Variant(true));
        std::vector<std::string> vKeys;
        std::vector<Variant> vValues;
        for (const auto& oColumn : oReader.Columns()->Items()) {
            vKeys.push_back(oColumn->Key());
            vValues.push_back(oColumn->Value());
        }
        EXPECT_EQ(vKeys, c.vKeys);
        EXPECT_EQ(vValues, c.vValues);
    }
}

TEST_F(TableOptionsTest, VersionByteDecidesWhatIsRead) {
    const DbfTable oTable = DbfTable({{"ID", 'N', 3}}).Row({"5"});
    struct Case {
        char cVersion;
        bool bCheck;
        std::int32_t lError;
    };
    const std::vector<Case> vCases = {
        {'\x03', true, 0},
        {'\x83', true, 0},
        {'\x8B', true, 0},
        {'\x30', true, errBadFileFormat},
        {'\x31', true, errBadFileFormat},
        {'\x32', true, errBadFileFormat},
        {'\x30', false, 0},
    };
    for (const Case& c : vCases) {
        SCOPED_TRACE(static_cast<int>(static_cast<unsigned char>(c.cVersion)));
        Write(oTable, c.cVersion);
        tnwDBFDecoder oReader;
        oReader.SetCheckVersion(c.bCheck);
        EXPECT_EQ(test::ErrorNumberOf([&] { oReader.SetFilename(oDir.Path("t.dbf")); }), c.lError);
        EXPECT_EQ(oReader.IsValidFile(), c.lError == 0);
    }
}

}  // namespace
}  // namespace tnw
