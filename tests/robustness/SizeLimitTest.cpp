// The named size limits, at the last size that fits and the first that does not: a .dbf header
// length past its signed field, record numbers whose file offsets pass 32 bits, and a delimited
// line of 32,766 characters. Crossing a limit is a reported failure, never a wrapped number nor
// a file that looks whole. (The .dbf writer's limits are in tests/shapefile; the .shp offset
// limit of 2^31 - 1 words is crossed by scripts/stress.sh, which writes 4 GiB of records to a
// file layer that drops them.)
#include <gtest/gtest.h>

#include <cstdint>
#include <string>

#include "core/Error.h"
#include "decoders/tnwDBFDecoder.h"
#include "delimited/tnwASCIIDecoder.h"
#include "encoders/tnwASCIIEncoder.h"
#include "shapefile/tnwShapeEncoder.h"
#include "support/TestSupport.h"

namespace tnw::test {
namespace {

constexpr auto kTableOnly = static_cast<tnwGeometryType>(0);

class SizeLimits : public ::testing::Test {
protected:
    // A .dbf-only set of one text field F0 of 31 characters (records of 32 bytes), with two
    // records holding "F0/<record number>".
    bool WriteTable() {
        auto oColumns = NewColumns();
        auto oField = AddColumn(*oColumns, "F0", vtString, 31);
        tnwShapeEncoder oEncoder;
        if (!oEncoder.Initialize(sBase, oColumns, kTableOnly)) return false;
        for (int iRecord = 1; iRecord <= 2; ++iRecord) {
            oField->SetValue("F0/" + std::to_string(iRecord));
            EXPECT_TRUE(oEncoder.Update());
        }
        oEncoder.CloseFiles();
        return true;
    }

    ScopedCapture oCapture;
    TempDir oDir;
    std::string sBase = oDir.Path("limits");
};

// Record offsets are 64-bit: with 32-byte records, record 2^27 + 1 lies at 4 GiB past the
// header, which 32 bits would wrap onto record 1.
TEST_F(SizeLimits, DBFRecordOffsetsPast4GiBNeverWrap) {
    ASSERT_TRUE(WriteTable());
    std::string sDbf = ReadFile(sBase + ".dbf");
    sDbf.replace(4, 4, "\xFF\xFF\xFF\x7F");  // 2,147,483,647 records claimed
    WriteFile(sBase + ".dbf", sDbf);
    tnwDBFDecoder oReader;
    oReader.SetFilename(sBase + ".dbf");
    try {
        (void)oReader.MoveToRecord((1 << 27) + 1);
        ADD_FAILURE() << "a record 4 GiB past the end of the file was read";
    } catch (const Error& e) {
        EXPECT_EQ(e.lNumber, errInputPastEnd);
    }
    EXPECT_EQ(oReader.Columns()->Item("F0")->Value(), Variant()) << "no value was set";
    EXPECT_THROW(oReader.MoveToRecord(0x7FFFFFFF), Error);
    ASSERT_TRUE(oReader.MoveToRecord(2));
    EXPECT_EQ(oReader.Columns()->Item("F0")->Value(), Variant("F0/2"));
}

// A delimited line of 32,766 characters is the longest that parses; one of 32,767 is reported
// and stops MoveNext, and the walk goes on after it. The text encoder writes both, so the
// limit shows on the reading side only. Characters are those of the file's code page: the
// longest line holds 32,764 e-acute, 65,528 bytes of UTF-8 in the program.
TEST_F(SizeLimits, DelimitedLineOf32766CharactersIsTheLongest) {
    std::string sLongest;
    for (int i = 0; i < 32764; ++i)
        sLongest += "\xC3\xA9";
    const std::string sPath = oDir.Path("long.txt");
    {
        auto oColumns = NewColumns();
        auto oNote = AddColumn(*oColumns, "NOTE", vtString, 32767);
        tnwASCIIEncoder oEncoder;
        ASSERT_TRUE(oEncoder.Initialize(sPath, oColumns, false));
        // A text cell goes between two quotes: lines of 32,766, 32,767 and 7 characters.
        for (const std::string& sText : {sLongest, std::string(32765, 'b'), std::string("after")}) {
            oNote->SetValue(sText);
            ASSERT_TRUE(oEncoder.Update());
        }
        oEncoder.CloseFiles();
    }
    tnwASCIIDecoder oReader;
    oReader.SetFilename(sPath);
    auto oNote =
        oReader.Columns()->Add("NOTE", "", "", vtString, 32767, 0, 0, 1, 16, "", true, true);
    EXPECT_EQ(oReader.MoveFirst(), Variant(true));
    EXPECT_TRUE(oNote->Value() == Variant(sLongest));
    EXPECT_TRUE(oCapture.vReports.empty());

    EXPECT_FALSE(oReader.MoveNext());
    EXPECT_FALSE(oReader.Eof()) << "a bad row is not the end of the file";
    ASSERT_EQ(oCapture.vReports.size(), 2u);
    EXPECT_EQ(oCapture.vReports[0].sSource, "tnwASCIIDecoder.ParseLine");
    EXPECT_EQ(oCapture.vReports[0].lNumber, errOverflow);
    EXPECT_EQ(oCapture.vReports[1].sSource, "tnwASCIIDecoder.MoveNext");
    EXPECT_EQ(oCapture.vReports[1].lNumber, errSubscript);

    EXPECT_TRUE(oReader.MoveNext());
    EXPECT_EQ(oNote->Value(), Variant("after"));
}

}  // namespace
}  // namespace tnw::test
