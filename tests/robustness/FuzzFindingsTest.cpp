// Every input with which a fuzz target found a fault, fed again through the public API of the
// reader it broke. The inputs live in data/findings/<target>/, where scripts/fuzz.sh also starts
// from them; each test says what was wrong.
#include <gtest/gtest.h>

#include <string>

#include "core/Error.h"
#include "decoders/tnwDBFDecoder.h"
#include "support/TestSupport.h"

namespace tnw::test {
namespace {

std::string Finding(const std::string& sTarget, const std::string& sName) {
    return std::string(TNW_TEST_DATA) + "/findings/" + sTarget + "/" + sName;
}

// A numeric field of blanks trimmed to a text with no data, and TextToNumber stepped a null
// pointer over it (undefined behaviour, found by fuzz_dbf). Record 2 of this table starts with
// 32 blanks in its numeric field and ends past the end of the file.
TEST(FuzzFindings, BlankNumericFieldReadsAsZero) {
    ScopedCapture oCapture;
    tnwDBFDecoder oReader;
    oReader.SetFilename(Finding("dbf", "blank_numeric_field.dbf"));
    ASSERT_TRUE(oReader.IsValidFile());
    const auto oLongitude = oReader.Columns()->Item("Longitude");
    ASSERT_TRUE(oLongitude);
    oReader.SetLonCol(1);
    oReader.SetLatCol(2);

    // Record 1 ends past the end of the file: its first field arrives whole, then the read fails.
    try {
        (void)oReader.MoveToRecord(1);
        ADD_FAILURE() << "record 1 is cut short";
    } catch (const Error& e) {
        EXPECT_EQ(e.lNumber, errInputPastEnd);
    }
    EXPECT_EQ(oLongitude->Value(), Variant(180.5)) << "\"00     180.500\\x03~...\"";

    try {
        (void)oReader.MoveToRecord(2);
        ADD_FAILURE() << "record 2 is cut short";
    } catch (const Error& e) {
        EXPECT_EQ(e.lNumber, errInputPastEnd);
    }
    EXPECT_EQ(oLongitude->Value(), Variant(0.0)) << "a blank numeric field gives 0";
    EXPECT_EQ(oReader.FindColumnValue("Longitude", "0"), 0) << "record 1 cannot be read";
}

}  // namespace
}  // namespace tnw::test
