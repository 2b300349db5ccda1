// Splitting lines into fields: the quoting rules, the line length limit, fixed widths and the
// reading of numbers, seen through ReadHeaders and the record cursor.
#include <string>
#include <vector>

#include "DelimitedFixture.h"
#include "core/Error.h"

namespace tnw::test {
namespace {

using Strings = std::vector<std::string>;

class ParseLineTest : public DelimitedTest {
protected:
    Strings ParseWith(const std::string& sLine, const std::string& sDelimiter = ",") {
        Open(sLine + "\r\n");
        oReader->SetDelimiter(sDelimiter);
        return Fields(oReader->ReadHeaders());
    }
};

TEST_F(ParseLineTest, QuotingTable) {
    struct Case {
        std::string sLine;
        Strings vFields;
    };
    const std::vector<Case> vCases = {
        {"a, b ,c", {"a", "b", "c"}},
        {"a,,c", {"a", "", "c"}},
        {",,", {"", "", ""}},
        {"1,2,", {"1", "2", ""}},
        {"     ", {""}},
        {"one word", {"one word"}},
        {R"("a,b",c)", {"a,b", "c"}},
        {R"("  a  " , b)", {"  a  ", "b"}},
        {R"("say ""hi""",2)", {R"(say ""hi"")", "2"}},
        {R"(abc")", {"abc"}},
        {R"("abc)", {"abc"}},
        {R"("")", {""}},
        {R"(5" pipe,7,8)", {R"(5" pipe,7,8)"}},
        {R"(a"b",c"d,e)", {R"(a"b)", R"(c"d,e)"}},
        // Only blanks are trimmed, not tabs.
        {"\ta\t, b", {"\ta\t", "b"}},
        // Code 1 ends a field wherever it stands, inside quotes too.
        {"\"a\x01"
         "b\",c",
         {"a", "b", "c"}},
    };
    for (const Case& tCase : vCases) {
        EXPECT_EQ(ParseWith(tCase.sLine), tCase.vFields) << tCase.sLine;
    }
    EXPECT_TRUE(oCapture.vReports.empty());
}

TEST_F(ParseLineTest, OtherDelimiters) {
    EXPECT_EQ(ParseWith("a;b,c", ";"), (Strings{"a", "b,c"}));
    EXPECT_EQ(ParseWith("a\tb", "\t"), (Strings{"a", "b"}));
    // A delimiter of two characters never matches.
    EXPECT_EQ(ParseWith("a::b", "::"), (Strings{"a::b"}));
    // A delimiter outside ASCII is compared in the file's code page (0xA7 in Windows-1252).
    EXPECT_EQ(ParseWith("a\xA7"
                        "b",
                        "\xC2\xA7"),
              (Strings{"a", "b"}));
}

TEST_F(ParseLineTest, EmptyLineGivesNoElementsButHasASize) {
    Open("\r\nx\r\n");
    const FieldArray aFields = oReader->ReadHeaders(1);
    ASSERT_TRUE(aFields.HasSize());
    EXPECT_EQ(aFields.UBound(), -1);
    EXPECT_THROW(aFields.Item(0), Error);
}

TEST_F(ParseLineTest, LineLengthLimit) {
    Open(std::string(32766, 'x') + "\r\n" + std::string(32767, 'y') + "\r\n");
    const FieldArray aLongest = oReader->ReadHeaders(1);
    ASSERT_EQ(aLongest.UBound(), 0);
    EXPECT_EQ(aLongest.Item(0).size(), 32766u);
    EXPECT_TRUE(oCapture.vReports.empty());

    const FieldArray aTooLong = oReader->ReadHeaders(2);
    EXPECT_FALSE(aTooLong.HasSize());
    try {
        aTooLong.UBound();
        ADD_FAILURE() << "an array with no size has no bound";
    } catch (const Error& e) {
        EXPECT_EQ(e.lNumber, errSubscript);
    }
    ASSERT_EQ(oCapture.vReports.size(), 1u);
    EXPECT_EQ(oCapture.vReports[0].sSource, "tnwASCIIDecoder.ParseLine");
    EXPECT_EQ(oCapture.vReports[0].lNumber, errOverflow);
}

TEST_F(ParseLineTest, TooLongRowStopsMoveNextAndTheWalkGoesOn) {
    Open("1\r\n" + std::string(40000, '7') + "\r\n3\r\n");
    auto oValue = AddColumn("Value", vtDouble, 8);
    EXPECT_EQ(oReader->MoveFirst(), Variant(true));
    EXPECT_FALSE(oReader->MoveNext());
    EXPECT_FALSE(oReader->Eof());
    ASSERT_EQ(oCapture.vReports.size(), 2u);
    EXPECT_EQ(oCapture.vReports[0].sSource, "tnwASCIIDecoder.ParseLine");
    EXPECT_EQ(oCapture.vReports[1].sSource, "tnwASCIIDecoder.MoveNext");
    EXPECT_EQ(oCapture.vReports[1].lNumber, errSubscript);
    EXPECT_EQ(oValue->Value(), Variant(1.0));
    EXPECT_TRUE(oReader->MoveNext());
    EXPECT_EQ(oValue->Value(), Variant(3.0));
}

TEST_F(ParseLineTest, FixedWidthInsertsTheDecimalMark) {
    AddColumn("Id", vtString, 5, 0);
    AddColumn("Rate", vtDouble, 7, 2);
    EXPECT_EQ(ParseWith("00012  12345", ""), (Strings{"00012", "123.45"}));
    EXPECT_EQ(ParseWith("00012 1234.5", ""), (Strings{"00012", "1234.5"}));
    // A short line gives short or empty fields; the mark still goes in.
    EXPECT_EQ(ParseWith("000", ""), (Strings{"000", "."}));
    // No length limit applies to fixed widths.
    EXPECT_EQ(ParseWith("abcde" + std::string(40000, '9'), ""), (Strings{"abcde", "99999.99"}));
    EXPECT_TRUE(oCapture.vReports.empty());
}

TEST_F(ParseLineTest, FixedWidthPrecisionAboveSizeKeepsTheFieldsBefore) {
    AddColumn("A", vtString, 3);
    AddColumn("B", vtDouble, 2, 3);
    AddColumn("C", vtString, 2);
    EXPECT_EQ(ParseWith("abc12xy", ""), (Strings{"abc", "", ""}));
    ASSERT_EQ(oCapture.vReports.size(), 1u);
    EXPECT_EQ(oCapture.vReports[0].sSource, "tnwASCIIDecoder.ParseLine");
    EXPECT_EQ(oCapture.vReports[0].lNumber, 5);
}

TEST_F(ParseLineTest, FixedWidthRecordsFollowTheColumnList) {
    Open("00012  12345\r\n00007 1234.5\r\n");
    oReader->SetDelimiter("");
    auto oId = AddColumn("Id", vtString, 5);
    auto oRate = AddColumn("Rate", vtDouble, 7, 2);
    EXPECT_EQ(oReader->MoveFirst(), Variant(true));
    EXPECT_EQ(oId->Value(), Variant("00012"));
    EXPECT_EQ(oRate->Value(), Variant(123.45));
    EXPECT_TRUE(oReader->MoveNext());
    EXPECT_EQ(oId->Value(), Variant("00007"));
    EXPECT_EQ(oRate->Value(), Variant(1234.5));
}

TEST_F(ParseLineTest, NumbersFollowTheTextToNumberRule) {
    Open("-12.5e2x;1 2 3;&H10;abc;;1,5\r\n");
    oReader->SetDelimiter(";");
    std::vector<std::shared_ptr<tnwColumn>> vColumns;
    for (const char* sKey : {"A", "B", "C", "D", "E", "F"}) {
        vColumns.push_back(AddColumn(sKey, vtDouble, 16, 4));
    }
    EXPECT_EQ(oReader->MoveFirst(), Variant(true));
    const std::vector<double> vExpected = {-1250.0, 123.0, 16.0, 0.0, 0.0, 1.0};
    for (std::size_t i = 0; i < vColumns.size(); ++i) {
        EXPECT_EQ(vColumns[i]->Value(), Variant(vExpected[i])) << vColumns[i]->Key();
    }
}

}  // namespace
}  // namespace tnw::test
