// The delimited text reader: the quoting rules, fixed widths, columns from header cells, and
// the record cursor with its failure table. (The line length limit is in tests/robustness.)
#include <gtest/gtest.h>

#include <array>
#include <filesystem>
#include <memory>
#include <string>
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
        {"\ta\t, b", {"\ta\t", "b"}},  // only blanks are trimmed, not tabs
        {"\"a\x01"                     // code 1 ends a field wherever it stands, inside quotes too
         "b\",c",
         {"a", "b", "c"}},
        {"a;b,c", {"a", "b,c"}, ";"},
        {"a\tb", {"a", "b"}, "\t"},
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
                                                            {"Yield ( bu/ac )", "Yield", kNumeric},
                                                            {"Yield (furlongs)", "Yield", kText},
                                                            {"Yield", "Yield", kText},
                                                            {"Yield ()", "Yield", kText},
                                                            {"Yield (bu/ac) wet", "Yield", kText},
                                                            {"Lat", "Lat", kText},
                                                            {"(kg)", "", ""},
                                                            {"", "", ""},
                                                            {"    ", "", ""}};
    for (const auto& [sCell, sKey, sLayout] : vCases) {
        EXPECT_TRUE(oReader->ColumnsFromString(sCell, ",")) << sCell;
        EXPECT_EQ(Keys(), sKey.empty() ? Strings{} : Strings{sKey}) << sCell;
        const auto& vItems = oReader->Columns()->Items();
        EXPECT_EQ(vItems.empty() ? "" : Layout(*vItems[0]), sLayout) << sCell;
    }
    EXPECT_EQ(oReader->GeometryFormat(), TNW_GeometryFormat_None);

    // Position cells set the position fields and make no column; the last match wins.
    for (const char* sCell : {"LONGITUDE", "X (deg)", "x", "longitude"}) {
        oReader->SetLonCol(0);
        EXPECT_TRUE(oReader->ColumnsFromString(std::string("a,") + sCell, ","));
        EXPECT_EQ(oReader->LonCol(), 2) << sCell;
        EXPECT_EQ(Keys(), Strings{"a"});
    }
    EXPECT_EQ(oReader->GeometryFormat(), TNW_GeometryFormat_LonLat);
    for (const char* sCell : {"LATITUDE", "Y", "y (deg)"}) {
        EXPECT_TRUE(oReader->ColumnsFromString(std::string(sCell) + ",b", ","));
        EXPECT_EQ(oReader->LatCol(), 1) << sCell;
    }
    EXPECT_TRUE(oReader->ColumnsFromString("Longitude,x,Lon", ","));
    EXPECT_EQ(oReader->LonCol(), 2);
    EXPECT_TRUE(oReader->ColumnsFromString("Name", ","));  // the position fields stay
    EXPECT_EQ(oReader->LonCol(), 2);
}

TEST_F(ReaderTest, DuplicateNamesAndEmptyDelimiter) {
    EXPECT_TRUE(oReader->ColumnsFromString("Rate,,Rate (bu/ac),  ,rate,Rate_1", ","));
    EXPECT_EQ(Keys(), (Strings{"Rate", "Rate_1", "rate_2", "Rate_1_1"}));
    EXPECT_EQ(Layout(*oReader->Columns()->Item("Rate_1")), "5/16/4/3/1/101/1/1/3/");
    EXPECT_EQ(oReader->Columns()->Item("Rate_1_1")->Position(), 6);

    // Without a delimiter the header is cut by the widths of the columns there are.
    oReader->Columns()->Clear();
    Add("A", vtString, 6);
    Add("B", vtString, 6);
    EXPECT_TRUE(oReader->ColumnsFromString("Name  Rate  Ignored", ""));
    EXPECT_EQ(Keys(), (Strings{"Name", "Rate"}));
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
    EXPECT_EQ(oReader->CurrentRow(), "0");
    EXPECT_EQ(Walk(), (Strings{"1", "  ", "2"}));  // a line of blanks is a record
    EXPECT_EQ(oReader->CurrentRow(), "0");
    EXPECT_EQ(oReader->CurrentLine(), "");  // the last line read: the empty one at the end
    EXPECT_FALSE(oReader->MoveNext());
    oReader->MoveFirst();
    oReader->MoveNext();
    oReader->MoveNext();
    EXPECT_EQ(oReader->CurrentRow(), "3");
    EXPECT_FALSE(oReader->Eof());  // the last record is current: not at the end yet
}

TEST_F(ReaderTest, HeaderRows) {
    Open("h1\r\nh2\r\n");
    oReader->SetHeaderRows(2);
    EXPECT_EQ(oReader->MoveFirst(), Variant(false));
    EXPECT_TRUE(oReader->Eof());
    // One more header row than lines: the file ends in the header, stays open, no result.
    oReader->SetHeaderRows(3);
    EXPECT_TRUE(oReader->MoveFirst().IsEmpty());
    EXPECT_FALSE(oReader->Eof());
    EXPECT_FALSE(oReader->MoveNext());
    EXPECT_TRUE(oReader->Eof());

    // Header rows count every line, empty ones too; fewer than none is none.
    Open("h1\r\n\r\nr1\r\n");
    oReader->SetHeaderRows(2);
    EXPECT_EQ(Walk(), Strings{"r1"});
    oReader->SetHeaderRows(-4);
    EXPECT_EQ(Walk(), (Strings{"h1", "r1"}));
    EXPECT_TRUE(oCapture.vReports.empty());
}

TEST_F(ReaderTest, PercentCompleteCountsTwoBytesPerLineEnd) {
    EXPECT_EQ(oReader->PercentComplete(), 100.0);
    Open("h\r\nab\r\ncd\r\n");  // 11 bytes
    oReader->SetHeaderRows(1);
    oReader->MoveFirst();
    EXPECT_DOUBLE_EQ(oReader->PercentComplete(), 700.0 / 11);
    oReader->MoveNext();
    oReader->MoveNext();
    EXPECT_DOUBLE_EQ(oReader->PercentComplete(), 100.0);

    // Lines ended by one byte, and a last line without an end, pass 100; the value stays after
    // the file is closed, and ReadHeaders leaves it alone.
    Open("ab\rcd");  // 5 bytes, counted as 4 + 4
    oReader->SetHeaderRows(0);
    oReader->MoveFirst();
    EXPECT_DOUBLE_EQ(oReader->PercentComplete(), 80.0);
    oReader->MoveNext();
    oReader->MoveNext();
    oReader->ReadHeaders(1);
    EXPECT_DOUBLE_EQ(oReader->PercentComplete(), 160.0);

    Open("ab\ncd\r\nef");  // 9 bytes; a line feed inside a line is read with it
    oReader->MoveFirst();
    EXPECT_DOUBLE_EQ(oReader->PercentComplete(), 700.0 / 9);
    oReader->SetLineFeedEndsLine(true);
    oReader->MoveFirst();
    EXPECT_DOUBLE_EQ(oReader->PercentComplete(), 300.0 / 9);
}

TEST_F(ReaderTest, ColumnValuesAndShortRows) {
    Open("Caf\xE9 au lait,181.25,x,abc\r\nSoy,&H10,y,1 2 3\r\nRye\r\n");
    auto oCrop = Add("Crop", vtString, 4);
    auto oYield = Add("Yield", vtDouble, 16, 4);
    auto oOther =
        oReader->Columns()->Add("Other", "", "", vtString, 10, 0, 0, 2, 16, "", true, true);
    auto oIdle = Add("Idle", vtString, 10);
    auto oBad = Add("Bad", vtDouble, 8);
    auto oBeyond = Add("Beyond", vtString, 10);
    oOther->SetPosition(3);
    oIdle->SetPosition(3);
    oIdle->SetActive(false);
    oBad->SetPosition(4);
    oBeyond->SetPosition(9);
    oBeyond->SetValue(Variant("kept"));

    EXPECT_EQ(oReader->MoveFirst(), Variant(true));
    EXPECT_EQ(oCrop->Value(), Variant("Caf\xC3\xA9"));  // cut to Size in file bytes, then UTF-8
    EXPECT_EQ(oReader->CurrentLine(), "Caf\xC3\xA9 au lait,181.25,x,abc");
    EXPECT_EQ(oYield->Value(), Variant(181.25));
    EXPECT_TRUE(oOther->Value().IsEmpty());  // Kind 2 never gets a value
    EXPECT_TRUE(oIdle->Value().IsEmpty());   // nor does an inactive column
    EXPECT_EQ(oBad->Value(), Variant(0.0));  // "abc" reads as 0
    EXPECT_EQ(oBeyond->Value(), Variant("kept"));
    EXPECT_TRUE(oReader->MoveNext());  // numbers read as the text-to-number rule says
    EXPECT_EQ(oYield->Value(), Variant(16.0));
    EXPECT_EQ(oBad->Value(), Variant(123.0));
    // A short row leaves the columns past its end as the row before set them.
    EXPECT_TRUE(oReader->MoveNext());
    EXPECT_EQ(oCrop->Value(), Variant("Rye"));
    EXPECT_EQ(oYield->Value(), Variant(16.0));
    EXPECT_EQ(oBad->Value(), Variant(123.0));
}

TEST_F(ReaderTest, LongitudeLatitudeAndWKT) {
    Open("-96.5,40.25,POINT (1 2)\r\n .5,1,x\r\n");
    oReader->MoveFirst();
    EXPECT_EQ(oReader->WKT(), "");
    try {
        oReader->Longitude();
        ADD_FAILURE() << "Longitude needs the lon/lat format";
    } catch (const Error& e) {
        EXPECT_EQ(e.lNumber, errNotLonLat);
        EXPECT_EQ(e.sSource, "tnwDelimAscii.Longitude");
        EXPECT_EQ(e.sDescription, "Geometry Format is not Lon/Lat");
    }
    oReader->SetLonCol(1);
    oReader->SetLatCol(2);
    EXPECT_EQ(oReader->GeometryFormat(), TNW_GeometryFormat_LonLat);
    oReader->MoveFirst();
    EXPECT_EQ(oReader->Latitude(), 40.25);
    EXPECT_EQ(oReader->WKT(), "POINT(-96.5  40.25)");
    oReader->MoveNext();
    EXPECT_EQ(oReader->WKT(), "POINT( .5  1)");
    oReader->SetWKTCol(3);
    oReader->SetLonCol(0);  // 0 leaves the format alone
    EXPECT_EQ(oReader->GeometryFormat(), TNW_GeometryFormat_WKT);
    oReader->MoveFirst();
    EXPECT_EQ(oReader->WKT(), "POINT (1 2)");
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

TEST_F(ReaderTest, ReadHeaders) {
    Open("a,b\r\n\r\nc,d\r\n");
    EXPECT_EQ(oReader->ReadHeaders(0).UBound(), 1);     // row 0 is row 1
    const FieldArray aEmpty = oReader->ReadHeaders(2);  // no elements, but a size
    ASSERT_TRUE(aEmpty.HasSize());
    EXPECT_EQ(aEmpty.UBound(), -1);
    EXPECT_EQ(oReader->ReadHeaders(3).Item(1), "d");
    const FieldArray aPastTheEnd = oReader->ReadHeaders(4);  // no size: bounds are an error
    EXPECT_FALSE(aPastTheEnd.HasSize());
    EXPECT_EQ(ErrorNumberOf([&] { aPastTheEnd.UBound(); }), errSubscript);

    // ReadHeaders ends a walk under way.
    EXPECT_EQ(oReader->MoveFirst(), Variant(true));
    oReader->ReadHeaders(3);
    EXPECT_TRUE(oReader->Eof());
    EXPECT_EQ(oReader->CurrentRow(), "0");
    EXPECT_TRUE(oCapture.vReports.empty());
}

}  // namespace
}  // namespace tnw::test
