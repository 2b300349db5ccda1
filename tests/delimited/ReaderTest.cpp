// The delimited text reader: the quoting rules, fixed widths, columns from header cells, and
// the record cursor with its failure table. (The line length limit is in tests/robustness.)
#include <gtest/gtest.h>

#include <array>
#include <filesystem>
#include <memory>
#include <string>
#include <tuple>
#include <vector>

#include "core/Error.h"
#include "core/Services.h"
#include "delimited/tnwASCIIDecoder.h"
#include "support/TestSupport.h"
#include "uom/UnitLookup.h"

namespace tnw::test {
namespace {

using Strings = std::vector<std::string>;

class ReaderTest : public ::testing::Test {
protected:
    ReaderTest() { standins::RegisterUnitLookup(); }

    // Points the reader at a new file holding sBytes.
    void Open(const std::string& sBytes) {
        WriteFile(oDir.Path("data.csv"), sBytes);
        oReader->SetFilename(oDir.Path("data.csv"));
    }
    Strings Parse(const std::string& sLine, const std::string& sDelimiter = ",") {
        Open(sLine + "\r\n");
        oReader->SetDelimiter(sDelimiter);
        const FieldArray aFields = oReader->ReadHeaders();
        Strings vFields;
        for (std::int32_t i = 0; i <= aFields.UBound(); ++i)
            vFields.push_back(aFields.Item(i));
        return vFields;
    }
    std::shared_ptr<tnwColumn> Add(const std::string& sKey, std::int32_t lType, std::int16_t iSize,
                                   std::int16_t iPrecision = 0) {
        return oReader->Columns()->Add(sKey, "", "", lType, iSize, iPrecision, 0, 1, 16, "", true,
                                       true);
    }
    Strings Keys() const {
        Strings vKeys;
        for (const auto& oColumn : oReader->Columns()->Items())
            vKeys.push_back(oColumn->Key());
        return vKeys;
    }
    // Every record's current line, from MoveFirst to the end.
    Strings Walk() {
        Strings vLines;
        for (bool b = oReader->MoveFirst() == Variant(true); b; b = oReader->MoveNext())
            vLines.push_back(oReader->CurrentLine());
        return vLines;
    }
    void ExpectReport(std::size_t i, const std::string& sSource, std::int32_t lNumber) {
        ASSERT_LT(i, oCapture.vReports.size());
        EXPECT_EQ(oCapture.vReports[i].sSource, sSource);
        EXPECT_EQ(oCapture.vReports[i].lNumber, lNumber);
    }

    ScopedCapture oCapture;
    TempDir oDir;
    std::unique_ptr<tnwASCIIDecoder> oReader = std::make_unique<tnwASCIIDecoder>();
};

TEST_F(ReaderTest, QuotingTable) {
    struct Case {
        std::string sLine;
        Strings vFields;
        std::string sDelimiter = ",";
    };
    const std::vector<Case> vCases = {
        {"a,,c", {"a", "", "c"}},
        {"     ", {""}},
        {R"("a,b",c)", {"a,b", "c"}},
        {R"("  a  " , b)", {"  a  ", "b"}},
        {R"("say ""hi""",2)", {R"(say ""hi"")", "2"}},
        {R"("abc)", {"abc"}},
        {R"(5" pipe,7,8)", {R"(5" pipe,7,8)"}},
        {R"(a"b",c"d,e)", {R"(a"b)", R"(c"d,e)"}},
        {"\ta\t, b", {"\ta\t", "b"}},  // only blanks are trimmed, not tabs
        {"\"a\x01"                     // code 1 ends a field wherever it stands, inside quotes too
         "b\",c",
         {"a", "b", "c"}},
        {"a::b", {"a::b"}, "::"},  // a delimiter of two characters never matches
        // A delimiter outside ASCII is compared in the file's code page (0xA7 in Windows-1252).
        {"a\xA7"
         "b",
         {"a", "b"},
         "\xC2\xA7"},
    };
    for (const Case& t : vCases)
        EXPECT_EQ(Parse(t.sLine, t.sDelimiter), t.vFields) << t.sLine;
    EXPECT_TRUE(oCapture.vReports.empty());
}

TEST_F(ReaderTest, FixedWidth) {
    auto oId = Add("Id", vtString, 5);
    auto oRate = Add("Rate", vtDouble, 7, 2);
    // The decimal mark goes in unless there is one; short lines give short fields.
    EXPECT_EQ(Parse("00012  12345", ""), (Strings{"00012", "123.45"}));
    EXPECT_EQ(Parse("00012 1234.5", ""), (Strings{"00012", "1234.5"}));
    EXPECT_EQ(Parse("000", ""), (Strings{"000", "."}));
    Open("00012  12345\r\n");
    EXPECT_EQ(oReader->MoveFirst(), Variant(true));
    EXPECT_EQ(oId->Value(), Variant("00012"));
    EXPECT_EQ(oRate->Value(), Variant(123.45));
    EXPECT_TRUE(oCapture.vReports.empty());

    // A precision above the size is error 5; the fields before it are kept.
    oReader->Columns()->Clear();
    Add("A", vtString, 3);
    Add("B", vtDouble, 2, 3);
    Add("C", vtString, 2);
    EXPECT_EQ(Parse("abc12xy", ""), (Strings{"abc", "", ""}));
    ExpectReport(0, "tnwASCIIDecoder.ParseLine", 5);
}

// Type, size, precision, flags, kind, unit, visible, active and position of a column.
std::string Layout(const tnwColumn& o) {
    std::string s;
    for (std::int32_t l :
         {o.Type(), std::int32_t{o.Size()}, std::int32_t{o.Precision()}, o.Flags(), o.Kind(),
          o.Unit(), std::int32_t{o.Visible()}, std::int32_t{o.Active()}, o.Position()})
        s += std::to_string(l) + "/";
    return s;
}

TEST_F(ReaderTest, HeaderCellTable) {
    const std::string kNumeric = "5/16/4/3/1/101/1/1/1/";  // vtDouble in bushels per acre
    const std::string kText = "8/254/0/0/1/16/1/1/1/";
    const std::vector<std::array<std::string, 3>> vCases = {{"Yield (bu/ac)", "Yield", kNumeric},
                                                            {"Yield (furlongs)", "Yield", kText},
                                                            {"Yield", "Yield", kText},
                                                            {"Yield (bu/ac) wet", "Yield", kText},
                                                            {"(kg)", "", ""},
                                                            {"    ", "", ""}};
    for (const auto& [sCell, sKey, sLayout] : vCases) {
        EXPECT_TRUE(oReader->ColumnsFromString(sCell, ",")) << sCell;
        EXPECT_EQ(Keys(), sKey.empty() ? Strings{} : Strings{sKey}) << sCell;
        const auto& vItems = oReader->Columns()->Items();
        EXPECT_EQ(vItems.empty() ? "" : Layout(*vItems[0]), sLayout) << sCell;
    }
    EXPECT_EQ(oReader->GeometryFormat(), TNW_GeometryFormat_None);
    // Position cells set the position fields and make no column.
    EXPECT_TRUE(oReader->ColumnsFromString("a,X (deg),LATITUDE", ","));
    EXPECT_EQ(std::tuple(Keys(), oReader->LonCol(), oReader->LatCol()),
              std::tuple(Strings{"a"}, 2, 3));
    EXPECT_EQ(oReader->GeometryFormat(), TNW_GeometryFormat_LonLat);
}

TEST_F(ReaderTest, AutoGenColumnsAndItsFailures) {
    Open("Field log\r\nName,Yield (bu/ac),Longitude,Latitude\r\nNorth 40,181.5,-96.5,40.25\r\n");
    Add("Host", vtString, 4);
    EXPECT_TRUE(oReader->AutoGenColumns().IsEmpty());  // no header rows: nothing to do
    EXPECT_EQ(Keys(), Strings{"Host"});
    oReader->SetHeaderRows(2);
    EXPECT_EQ(oReader->AutoGenColumns(), Variant(true));
    EXPECT_EQ(Keys(), (Strings{"Name", "Yield"}));
    EXPECT_EQ(oReader->MoveFirst(), Variant(true));
    EXPECT_EQ(oReader->Columns()->Item("Yield")->Value(), Variant(181.5));
    EXPECT_EQ(oReader->WKT(), "POINT(-96.5  40.25)");
    EXPECT_TRUE(oCapture.vReports.empty());

    // A header row past the end clears the columns.
    oReader->SetHeaderRows(4);
    EXPECT_EQ(oReader->AutoGenColumns(), Variant(false));
    EXPECT_EQ(oReader->Columns()->Count(), 0);
    ExpectReport(0, "tnwASCIIDecoder.BuildColumns", errSubscript);

    const ComponentCreator fnOld = tnwObjectFactory::Register(kProgIdUOMFactory, {});
    EXPECT_FALSE(oReader->ColumnsFromString("Name", ","));
    tnwObjectFactory::Register(kProgIdUOMFactory, fnOld);
    ExpectReport(1, "tnwASCIIDecoder.BuildColumns", errCantCreateObject);
    EXPECT_EQ(oCapture.vReports[1].sDescription.rfind("Missing Component", 0), 0u);

    std::filesystem::remove(oDir.Path("data.csv"));  // a header that can't be read is raised
    EXPECT_EQ(ErrorNumberOf([&] { oReader->AutoGenColumns(); }), errFileNotFound);
}

TEST_F(ReaderTest, LineEndsEmptyLinesAndRows) {
    Open("a\r\nb\rc\nd\r\ne");
    EXPECT_EQ(Walk(), (Strings{"a", "b", "c\nd", "e"}));
    oReader->SetLineFeedEndsLine(true);
    EXPECT_EQ(Walk(), (Strings{"a", "b", "c", "d", "e"}));

    oReader->SetLineFeedEndsLine(false);
    Open("1\r\n\r\n\r\n  \r\n2\r\n\r\n");
    EXPECT_EQ(Walk(), (Strings{"1", "  ", "2"}));  // a line of blanks is a record
}

TEST_F(ReaderTest, ColumnValuesAndShortRows) {
    Open("Caf\xE9 au lait,181.25,x,abc\r\nSoy,&H10,y,1 2 3\r\nRye\r\n");
    auto oCrop = Add("Crop", vtString, 4);
    auto oYield = Add("Yield", vtDouble, 16, 4);
    auto oIdle = Add("Idle", vtString, 10);
    auto oBad = Add("Bad", vtDouble, 8);
    oIdle->SetPosition(3);
    oIdle->SetActive(false);
    oBad->SetPosition(4);

    EXPECT_EQ(oReader->MoveFirst(), Variant(true));
    EXPECT_EQ(oCrop->Value(), Variant("Caf\xC3\xA9"));  // cut to Size in file bytes, then UTF-8
    EXPECT_EQ(oReader->CurrentLine(), "Caf\xC3\xA9 au lait,181.25,x,abc");
    EXPECT_EQ(oYield->Value(), Variant(181.25));
    EXPECT_TRUE(oIdle->Value().IsEmpty());   // nor does an inactive column
    EXPECT_EQ(oBad->Value(), Variant(0.0));  // "abc" reads as 0
    EXPECT_TRUE(oReader->MoveNext());        // numbers read as the text-to-number rule says
    EXPECT_EQ(oYield->Value(), Variant(16.0));
    EXPECT_EQ(oBad->Value(), Variant(123.0));
    // A short row leaves the columns past its end as the row before set them.
    EXPECT_TRUE(oReader->MoveNext());
    EXPECT_EQ(oCrop->Value(), Variant("Rye"));
    EXPECT_EQ(oYield->Value(), Variant(16.0));
    EXPECT_EQ(oBad->Value(), Variant(123.0));
}

TEST_F(ReaderTest, FilesThatCantBeOpened) {
    const std::string sMissing = oDir.Path("missing.csv");
    EXPECT_EQ(ErrorNumberOf([&] { oReader->SetFilename(sMissing); }), errFileNotFound);
    EXPECT_FALSE(oReader->IsValidFile());

    Open("1\r\n");  // the file goes away between Filename and MoveFirst
    std::filesystem::remove(oDir.Path("data.csv"));
    EXPECT_TRUE(oReader->MoveFirst().IsEmpty());
    EXPECT_TRUE(oReader->Eof());
    ExpectReport(0, "tnwASCIIDecoder.MoveFirst", errCantAccessSource);
    EXPECT_EQ(oCapture.vReports[0].sErrSource, "tnwDelimAscii.OpenFile");
    EXPECT_EQ(oCapture.vReports[0].sDescription, "Can't access source file");
    EXPECT_EQ(ErrorNumberOf([&] { oReader->ReadHeaders(); }), errFileNotFound);
}

}  // namespace
}  // namespace tnw::test
