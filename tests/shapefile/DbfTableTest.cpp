// The dBase table of a set, byte for byte: expected bytes are built from the dBase III layout
// (32-byte header, 32-byte descriptors, 0x0D, records led by 0x20, 0x1A).
#include <gtest/gtest.h>

#include "ShapeTestSupport.h"
#include "core/SerialDate.h"
#include "shapefile/tnwShapeEncoder.h"

namespace tnw::test {
namespace {

std::string LE32(std::int32_t l) {
    std::string s(4, '\0');
    platform::PutLE32(s.data(), static_cast<std::uint32_t>(l));
    return s;
}

std::string DbfHeader(std::int32_t lRecords, std::int32_t lHeaderLength,
                      std::int32_t lRecordLength) {
    std::string s = "\x03\x5F\x03\x1F" + LE32(lRecords);
    s += LE32(lHeaderLength).substr(0, 2) + LE32(lRecordLength).substr(0, 2);
    return s + std::string(20, '\0');
}

std::string Descriptor(const std::string& sName, char cType, int iSize, int iPrecision) {
    std::string s(32, '\0');
    s.replace(0, sName.size(), sName);
    s[11] = cType;
    s[16] = static_cast<char>(iSize);
    s[17] = static_cast<char>(iPrecision);
    return s;
}

// A table-only set (GeometryType 0) in a temporary folder.
struct DbfFixture : ::testing::Test {
    ScopedCapture capture;
    TempDir dir;
    std::shared_ptr<tnwColumns> oColumns = NewColumns();
    tnwShapeEncoder encoder;
    std::string Base() const { return dir.Path("t"); }
    std::string Dbf() const { return ReadFile(dir.Path("t.dbf")); }
};

TEST_F(DbfFixture, WholeTableByteForByte) {
    auto oName = AddColumn(*oColumns, "Name", vtString, 6);
    auto oRate = AddColumn(*oColumns, "Rate", vtDouble, 6, 3);
    auto oFlag = AddColumn(*oColumns, "Flag", vtBoolean, 1);
    auto oDay = AddColumn(*oColumns, "Day", vtDate, 8);
    ASSERT_TRUE(encoder.InitializeFile(Base(), oColumns));
    oName->SetValue("abc");
    oRate->SetValue(3.5);
    oFlag->SetValue(true);
    oDay->SetValue(DateSerial(2004, 3, 9));
    EXPECT_TRUE(encoder.Update());
    oName->SetValue("abcdefgh");
    oRate->SetValue(123456.75);
    oFlag->SetValue(false);
    oDay->SetValue(DateSerial(1999, 12, 31));
    EXPECT_TRUE(encoder.Update());
    encoder.CloseFiles();

    const std::string sExpected = DbfHeader(2, 33 + 4 * 32, 1 + 6 + 6 + 1 + 8) +
                                  Descriptor("Name", 'C', 6, 0) + Descriptor("Rate", 'N', 6, 3) +
                                  Descriptor("Flag", 'L', 1, 0) + Descriptor("Day", 'D', 8, 0) +
                                  "\x0D" + " abc      3.5Y20040309" + " abcdef456.75N19991231" +
                                  "\x1A";
    EXPECT_EQ(Dbf(), sExpected);
    EXPECT_TRUE(capture.vReports.empty());
}

TEST_F(DbfFixture, ValuesAreFittedToTheirWidth) {
    struct Case {
        std::int32_t lType;
        std::int16_t iSize;
        Variant vValue;
        std::string sField;
    };
    const std::vector<Case> vCases = {
        {vtString, 5, "abcdefgh", "abcde"},               // cut on the right
        {vtString, 3, "\xC3\xA9t\xC3\xA9", "\xE9t\xE9"},  // widths count narrow bytes
        {vtString, 2, "\xCE\xA9", "? "},                  // not in the code page
        {vtString, 4, std::int32_t{42}, "42  "},          // the column's text of a number
        {vtDouble, 3, 0.5, " .5"},                        // no zero before the mark
        {vtDouble, 4, 123456789.0, "6789"},               // cut on the left
        {vtInt16, 3, Variant(), "  0"},                   // empty is 0
        {vtInt32, 5, true, " True"},  // a number field takes any value's number text
        {vtBoolean, 1, std::int32_t{-1}, "Y"},
        {vtBoolean, 1, std::int32_t{1}, "N"},  // only True is "Y"
        {vtDate, 6, DateSerial(2004, 3, 9), "040309"},
        {vtDouble, 0, 1.0, ""},  // a descriptor and no bytes
    };
    for (const Case& tCase : vCases) {
        SCOPED_TRACE(std::to_string(tCase.lType) + " / " + tCase.sField);
        auto oColumns1 = NewColumns();
        AddColumn(*oColumns1, "F", tCase.lType, tCase.iSize)->SetValue(tCase.vValue);
        ASSERT_TRUE(encoder.InitializeFile(Base(), oColumns1));
        EXPECT_TRUE(encoder.Update());
        encoder.CloseFiles();
        const std::string sDbf = Dbf();
        EXPECT_EQ(sDbf.substr(64), "\x0D " + tCase.sField + "\x1A");
    }
    EXPECT_TRUE(capture.vReports.empty());
}

// Sizes and lengths past what the header can hold fail through the "DBF Error" box; the table
// is finished with the fields before the failing one, never left corrupt.
TEST_F(DbfFixture, LimitsFailWithTheDbfErrorBox) {
    using Fields = std::vector<std::pair<std::int16_t, std::int16_t>>;  // Size, Precision
    struct Case {
        const char* sWhat;
        Fields vFields;
        int nWritten;  // fields in the finished table; -1: it fits
    };
    const auto fnWide = [](std::int16_t iLast) {  // 1 + 128 x 255 + iLast bytes a record
        Fields vFields(128, {255, 0});
        vFields.push_back({iLast, 0});
        return vFields;
    };
    const std::vector<Case> vCases = {
        {"size 256", {{1, 0}, {256, 0}}, 1},       {"size -1", {{-1, 0}}, 0},
        {"precision 256", {{5, 256}}, 0},          {"1023 fields", Fields(1023, {1, 0}), 1022},
        {"record of 32768", fnWide(127), 128},     {"255 and 255 fit", {{255, 255}}, -1},
        {"1022 fields", Fields(1022, {1, 0}), -1}, {"record of 32767", fnWide(126), -1},
    };
    std::vector<std::string> vFailed;
    for (const Case& tCase : vCases) {
        SCOPED_TRACE(tCase.sWhat);
        capture.vBoxes.clear();
        const std::string sBase = dir.Path("limit" + std::to_string(vFailed.size()));
        auto oMany = NewColumns();
        for (std::size_t i = 0; i < tCase.vFields.size(); ++i)
            AddColumn(*oMany, std::string("F").append(std::to_string(i)), vtDouble,
                      tCase.vFields[i].first, tCase.vFields[i].second);
        const bool bResult = encoder.InitializeFile(sBase, oMany);
        encoder.CloseFiles();
        EXPECT_EQ(bResult, tCase.nWritten < 0);
        if (bResult) continue;
        ASSERT_EQ(capture.vBoxes.size(), 1u);
        EXPECT_EQ(capture.vBoxes[0].sTitle, "DBF Error");
        EXPECT_EQ(capture.vBoxes[0].sText, "Error: Overflow\n" + sBase);
        const std::string sDbf = ReadFile(sBase + ".dbf");
        EXPECT_EQ(LittleShort(sDbf, 8), 33 + 32 * tCase.nWritten);
        EXPECT_EQ(sDbf.size(), 32u + 32u * tCase.nWritten + 1u);
        vFailed.push_back(sBase);
    }
    const CommandResult tCheck = CheckShapeSets(vFailed);
    EXPECT_EQ(tCheck.iStatus, 0) << tCheck.sOutput;
}

}  // namespace
}  // namespace tnw::test
