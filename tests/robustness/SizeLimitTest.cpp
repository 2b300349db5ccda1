// The named size limits, at the last size that fits and the first that does not: a .dbf header
// length past its signed field, record numbers whose file offsets pass 32 bits, and a delimited
// line of 32,766 characters. Crossing a limit is a reported failure, never a wrapped number nor
// a file that looks whole. (The .dbf writer's limits are in tests/shapefile; the .shp offset
// limit of 2^31 - 1 words is crossed by scripts/stress.sh, which writes 4 GiB of records to a
// file layer that drops them.)
#include <gtest/gtest.h>

#include <cstdint>
#include <string>

#include "RobustnessSupport.h"
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
    // A .dbf-only set of text fields of the given widths, with two records whose fields hold
    // their own field number and record number.
    bool WriteTable(const std::vector<std::int16_t>& vWidths) {
        auto oColumns = NewColumns();
        for (std::size_t i = 0; i < vWidths.size(); ++i)
            AddColumn(*oColumns, "F" + std::to_string(i), vtString, vWidths[i]);
        tnwShapeEncoder oEncoder;
        if (!oEncoder.Initialize(sBase, oColumns, kTableOnly)) return false;
        for (int iRecord = 1; iRecord <= 2; ++iRecord) {
            for (const auto& oColumn : oColumns->Items())
                oColumn->SetValue(oColumn->Key() + "/" + std::to_string(iRecord));
            EXPECT_TRUE(oEncoder.Update());
        }
        oEncoder.CloseFiles();
        return true;
    }

    ScopedCapture oCapture;
    TempDir oDir;
    std::string sBase = oDir.Path("limits");
};

// A header length past 32,767 reads as the negative number of its signed field: the reader
// takes no fields and MoveFirst fails, rather than reading records from a wrapped offset.
// Header lengths are unsigned 16-bit: 40,000 is a long header, and one the file does not hold
// is refused at SetFilename with "Input past end of file".
TEST_F(SizeLimits, DBFHeaderLengthPastTheFileIsRefused) {
    ASSERT_TRUE(WriteTable({9, 9}));
    std::string sDbf = ReadFile(sBase + ".dbf");
    sDbf[8] = '\x40';  // 40,000 = 0x9C40
    sDbf[9] = '\x9C';
    WriteFile(sBase + ".dbf", sDbf);
    tnwDBFDecoder oReader;
    EXPECT_EQ(ErrorNumberOf([&] { oReader.SetFilename(sBase + ".dbf"); }), 62);
    EXPECT_FALSE(oReader.IsValidFile());
    EXPECT_TRUE(oReader.MoveFirst().IsEmpty());
}

// Record offsets are 64-bit: with 32-byte records, record 2^27 + 1 lies at 4 GiB past the
// header, which 32 bits would wrap onto record 1.
TEST_F(SizeLimits, DBFRecordOffsetsPast4GiBNeverWrap) {
    ASSERT_TRUE(WriteTable({31}));
    std::string sDbf = ReadFile(sBase + ".dbf");
    ASSERT_EQ(sDbf[10], 32);
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
    EXPECT_EQ(ReadFile(sPath).find("\r\n"), 32766u);
    EXPECT_TRUE(oCapture.vReports.empty());

    EXPECT_FALSE(oReader.MoveNext());
    EXPECT_FALSE(oReader.Eof()) << "a bad row is not the end of the file";
    ASSERT_EQ(oCapture.vReports.size(), 2u);
    EXPECT_EQ(oCapture.vReports[0].sSource, "tnwASCIIDecoder.ParseLine");
    EXPECT_EQ(oCapture.vReports[0].lNumber, errOverflow);
    EXPECT_EQ(oCapture.vReports[1].sSource, "tnwASCIIDecoder.MoveNext");
    EXPECT_EQ(oCapture.vReports[1].lNumber, errSubscript);
    EXPECT_TRUE(oNote->Value() == Variant(sLongest)) << "no value from the long line";

    EXPECT_TRUE(oReader.MoveNext());
    EXPECT_EQ(oNote->Value(), Variant("after"));
    EXPECT_FALSE(oReader.MoveNext());
    EXPECT_TRUE(oReader.Eof());
}

// A header line past the limit gives no columns, reported, rather than columns cut short.
// Fixed-width lines have no limit.
TEST_F(SizeLimits, DelimitedHeaderPastTheLimitAndFixedWidthLines) {
    std::string sHeader = "A";
    while (sHeader.size() < 32767)
        sHeader += ",A";
    const std::string sPath = oDir.Path("header.csv");
    WriteFile(sPath, sHeader + "\r\n1\r\n");
    tnwASCIIDecoder oReader;
    oReader.SetFilename(sPath);
    oReader.SetHeaderRows(1);
    EXPECT_EQ(oReader.AutoGenColumns(), Variant(false));
    EXPECT_EQ(oReader.Columns()->Count(), 0);
    ASSERT_EQ(oCapture.vReports.size(), 2u);
    EXPECT_EQ(oCapture.vReports[0].sSource, "tnwASCIIDecoder.ParseLine");
    EXPECT_EQ(oCapture.vReports[1].sSource, "tnwASCIIDecoder.BuildColumns");

    // Widths 32,767 and 5 take the first 32,772 characters of a line of 102,772.
    oCapture.vReports.clear();
    WriteFile(sPath, std::string(32767, 'x') + "12345" + std::string(70000, 'y') + "\r\n");
    oReader.SetFilename(sPath);
    oReader.SetHeaderRows(0);
    oReader.SetDelimiter("");
    oReader.Columns()->Add("SKIP", "", "", vtString, 32767, 0, 0, 1, 16, "", true, false);
    auto oValue = oReader.Columns()->Add("VALUE", "", "", vtDouble, 5, 2, 0, 1, 16, "", true, true);
    ASSERT_TRUE(oValue);
    EXPECT_EQ(oReader.MoveFirst(), Variant(true));
    EXPECT_EQ(oValue->Value(), Variant(123.45));
    EXPECT_TRUE(oCapture.vReports.empty());
}

}  // namespace
}  // namespace tnw::test
