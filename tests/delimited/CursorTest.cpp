// The record cursor: line ends, empty lines, header rows, row counting, the end of the file,
// percent complete, positions and the failure table.
#include <filesystem>
#include <string>
#include <vector>

#include "DelimitedFixture.h"
#include "core/Error.h"

namespace tnw::test {
namespace {

using CursorTest = DelimitedTest;

// Every record's current line, from MoveFirst to the end.
std::vector<std::string> Walk(tnwASCIIDecoder& oReader) {
    std::vector<std::string> vLines;
    for (bool bMore = oReader.MoveFirst() == Variant(true); bMore; bMore = oReader.MoveNext()) {
        vLines.push_back(oReader.CurrentLine());
    }
    return vLines;
}

TEST_F(CursorTest, LinesEndAtCarriageReturnOnly) {
    Open("a\r\nb\rc\nd\r\ne");
    EXPECT_EQ(Walk(*oReader), (std::vector<std::string>{"a", "b", "c\nd", "e"}));
}

TEST_F(CursorTest, LineFeedEndsLineExtension) {
    Open("a\r\nb\rc\nd\r\ne");
    EXPECT_FALSE(oReader->LineFeedEndsLine());
    oReader->SetLineFeedEndsLine(true);
    EXPECT_EQ(Walk(*oReader), (std::vector<std::string>{"a", "b", "c", "d", "e"}));
}

TEST_F(CursorTest, EmptyLinesAreSkippedAndRowsCountCalls) {
    Open("1\r\n\r\n\r\n  \r\n2\r\n\r\n");
    EXPECT_EQ(oReader->CurrentRow(), "0");
    EXPECT_TRUE(oReader->Eof());
    EXPECT_EQ(oReader->MoveFirst(), Variant(true));
    EXPECT_EQ(oReader->CurrentLine(), "1");
    EXPECT_EQ(oReader->CurrentRow(), "1");
    // A line of blanks is a record.
    EXPECT_TRUE(oReader->MoveNext());
    EXPECT_EQ(oReader->CurrentLine(), "  ");
    EXPECT_EQ(oReader->CurrentRow(), "2");
    EXPECT_TRUE(oReader->MoveNext());
    EXPECT_EQ(oReader->CurrentLine(), "2");
    EXPECT_EQ(oReader->CurrentRow(), "3");
    // The last record is current: not at the end yet.
    EXPECT_FALSE(oReader->Eof());
    EXPECT_FALSE(oReader->MoveNext());
    EXPECT_TRUE(oReader->Eof());
    EXPECT_EQ(oReader->CurrentRow(), "0");
    // CurrentLine keeps the last line read, here the empty one at the end.
    EXPECT_EQ(oReader->CurrentLine(), "");
    EXPECT_FALSE(oReader->MoveNext());
    EXPECT_EQ(oReader->CurrentRow(), "0");
    // MoveFirst starts over.
    EXPECT_EQ(oReader->MoveFirst(), Variant(true));
    EXPECT_EQ(oReader->CurrentLine(), "1");
    EXPECT_EQ(oReader->CurrentRow(), "1");
}

TEST_F(CursorTest, HeaderRows) {
    Open("h1\r\nh2\r\n");
    oReader->SetHeaderRows(2);
    EXPECT_EQ(oReader->MoveFirst(), Variant(false));
    EXPECT_TRUE(oReader->Eof());

    // One more header row than lines: the file ends in the header, stays open, no result.
    oReader->SetHeaderRows(3);
    EXPECT_TRUE(oReader->MoveFirst().IsEmpty());
    EXPECT_FALSE(oReader->Eof());
    EXPECT_EQ(oReader->CurrentLine(), "");
    EXPECT_FALSE(oReader->MoveNext());
    EXPECT_TRUE(oReader->Eof());

    // Header rows count every line, empty ones too.
    Open("h1\r\n\r\nr1\r\n");
    oReader->SetHeaderRows(2);
    EXPECT_EQ(Walk(*oReader), std::vector<std::string>{"r1"});
    oReader->SetHeaderRows(-4);
    EXPECT_EQ(Walk(*oReader), (std::vector<std::string>{"h1", "r1"}));
    EXPECT_TRUE(oCapture.vReports.empty());
}

TEST_F(CursorTest, PercentCompleteCountsTwoBytesPerLineEnd) {
    EXPECT_EQ(oReader->PercentComplete(), 100.0);
    Open("h\r\nab\r\ncd\r\n");  // 11 bytes
    oReader->SetHeaderRows(1);
    EXPECT_EQ(oReader->PercentComplete(), 100.0);
    oReader->MoveFirst();
    EXPECT_DOUBLE_EQ(oReader->PercentComplete(), 700.0 / 11);
    oReader->MoveNext();
    EXPECT_DOUBLE_EQ(oReader->PercentComplete(), 100.0);
    oReader->MoveNext();
    EXPECT_TRUE(oReader->Eof());
    EXPECT_DOUBLE_EQ(oReader->PercentComplete(), 100.0);

    // Lines ended by one byte, and a last line without an end, pass 100.
    Open("ab\rcd");  // 5 bytes, counted as 4 + 4
    oReader->SetHeaderRows(0);
    oReader->MoveFirst();
    EXPECT_DOUBLE_EQ(oReader->PercentComplete(), 80.0);
    oReader->MoveNext();
    EXPECT_DOUBLE_EQ(oReader->PercentComplete(), 160.0);
    // The value stays after the file is closed, and ReadHeaders leaves it alone.
    oReader->MoveNext();
    oReader->ReadHeaders(1);
    EXPECT_DOUBLE_EQ(oReader->PercentComplete(), 160.0);

    Open("");
    oReader->MoveFirst();
    EXPECT_EQ(oReader->PercentComplete(), 100.0);
}

TEST_F(CursorTest, PercentCompleteWithLineFeedsCountsBytesRead) {
    Open("ab\ncd\r\nef");  // 9 bytes
    EXPECT_EQ(oReader->MoveFirst(), Variant(true));
    EXPECT_DOUBLE_EQ(oReader->PercentComplete(), 700.0 / 9);  // "ab\ncd" + 2
    oReader->SetLineFeedEndsLine(true);
    oReader->MoveFirst();
    EXPECT_DOUBLE_EQ(oReader->PercentComplete(), 300.0 / 9);
    oReader->MoveNext();
    EXPECT_DOUBLE_EQ(oReader->PercentComplete(), 700.0 / 9);
    oReader->MoveNext();
    EXPECT_DOUBLE_EQ(oReader->PercentComplete(), 100.0);
}

TEST_F(CursorTest, ColumnValues) {
    Open("Corn Silage,181.25,x,abc\r\nSoy,52,y,9\r\nRye\r\n");
    auto oCrop = AddColumn("Crop", vtString, 4);
    auto oYield = AddColumn("Yield", vtDouble, 16, 4);
    auto oOther =
        oReader->Columns()->Add("Other", "", "", vtString, 10, 0, 0, 2, 16, "", true, true);
    auto oIdle = AddColumn("Idle", vtString, 10);
    auto oBad = AddColumn("Bad", vtDouble, 8);
    auto oBeyond = AddColumn("Beyond", vtString, 10);
    oOther->SetPosition(3);
    oIdle->SetPosition(3);
    oIdle->SetActive(false);
    oBad->SetPosition(4);
    oBeyond->SetPosition(9);
    oBeyond->SetValue(Variant("kept"));

    EXPECT_EQ(oReader->MoveFirst(), Variant(true));
    EXPECT_EQ(oCrop->Value(), Variant("Corn"));  // cut to Size
    EXPECT_EQ(oYield->Value(), Variant(181.25));
    EXPECT_TRUE(oOther->Value().IsEmpty());  // Kind 2 never gets a value
    EXPECT_TRUE(oIdle->Value().IsEmpty());   // nor does an inactive column
    EXPECT_EQ(oBad->Value(), Variant(0.0));  // "abc" reads as 0
    EXPECT_EQ(oBeyond->Value(), Variant("kept"));

    EXPECT_TRUE(oReader->MoveNext());
    EXPECT_EQ(oCrop->Value(), Variant("Soy"));
    EXPECT_EQ(oBad->Value(), Variant(9.0));
    // A short row leaves the columns past its end as the row before set them.
    EXPECT_TRUE(oReader->MoveNext());
    EXPECT_EQ(oCrop->Value(), Variant("Rye"));
    EXPECT_EQ(oYield->Value(), Variant(52.0));
    EXPECT_EQ(oBad->Value(), Variant(9.0));
}

TEST_F(CursorTest, NarrowTextBecomesUtf8) {
    Open("Caf\xE9,1\r\n");
    auto oName = AddColumn("Name", vtString, 10);
    EXPECT_EQ(oReader->MoveFirst(), Variant(true));
    EXPECT_EQ(oName->Value(), Variant("Caf\xC3\xA9"));
    EXPECT_EQ(oReader->CurrentLine(), "Caf\xC3\xA9,1");
}

TEST_F(CursorTest, LongitudeLatitudeAndWKT) {
    Open("-96.5,40.25,POINT (1 2)\r\n .5,1,x\r\n");
    EXPECT_EQ(oReader->GeometryFormat(), TNW_GeometryFormat_None);
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
    try {
        oReader->Latitude();
        ADD_FAILURE() << "Latitude needs the lon/lat format";
    } catch (const Error& e) {
        EXPECT_EQ(e.lNumber, errNotLonLat);
        EXPECT_EQ(e.sSource, "tnwDelimAscii.Latitude");
    }

    oReader->SetLonCol(1);
    EXPECT_EQ(oReader->GeometryFormat(), TNW_GeometryFormat_LonLat);
    oReader->SetLatCol(2);
    oReader->MoveFirst();
    EXPECT_EQ(oReader->Longitude(), -96.5);
    EXPECT_EQ(oReader->Latitude(), 40.25);
    EXPECT_EQ(oReader->WKT(), "POINT(-96.5  40.25)");
    oReader->MoveNext();
    EXPECT_EQ(oReader->WKT(), "POINT( .5  1)");

    oReader->SetWKTCol(3);
    EXPECT_EQ(oReader->GeometryFormat(), TNW_GeometryFormat_WKT);
    oReader->MoveFirst();
    EXPECT_EQ(oReader->WKT(), "POINT (1 2)");
    EXPECT_THROW(oReader->Longitude(), Error);
    // 0 leaves the format alone.
    oReader->SetLonCol(0);
    EXPECT_EQ(oReader->GeometryFormat(), TNW_GeometryFormat_WKT);
    EXPECT_EQ(oReader->LonCol(), 0);
}

TEST_F(CursorTest, RowWithoutThePositionFieldStopsMoveNextWithTheFileOpen) {
    Open("1,2,3\r\n4,5\r\n6,7,8\r\n");
    oReader->SetLonCol(3);
    EXPECT_EQ(oReader->MoveFirst(), Variant(true));
    EXPECT_FALSE(oReader->MoveNext());
    EXPECT_FALSE(oReader->Eof());
    ASSERT_EQ(oCapture.vReports.size(), 1u);
    EXPECT_EQ(oCapture.vReports[0].sSource, "tnwASCIIDecoder.MoveNext");
    EXPECT_EQ(oCapture.vReports[0].lNumber, errSubscript);
    EXPECT_TRUE(oReader->MoveNext());
    EXPECT_EQ(oReader->Longitude(), 8.0);
    EXPECT_EQ(oReader->CurrentRow(), "3");
}

TEST_F(CursorTest, FilesThatCantBeOpened) {
    try {
        oReader->SetFilename(oDir.Path("missing.csv"));
        ADD_FAILURE() << "a missing file is an error";
    } catch (const Error& e) {
        EXPECT_EQ(e.lNumber, errFileNotFound);
    }
    EXPECT_EQ(oReader->Filename(), oDir.Path("missing.csv"));
    EXPECT_FALSE(oReader->IsValidFile());

    Open("1\r\n");
    EXPECT_TRUE(oReader->IsValidFile());
    EXPECT_THROW(oReader->SetFilename(oDir.Path("missing.csv")), Error);
    EXPECT_TRUE(oReader->IsValidFile());

    // The file goes away between Filename and MoveFirst.
    Open("1\r\n");
    std::filesystem::remove(oDir.Path("data.csv"));
    EXPECT_TRUE(oReader->MoveFirst().IsEmpty());
    EXPECT_TRUE(oReader->Eof());
    ASSERT_EQ(oCapture.vReports.size(), 1u);
    const CapturedReport& tReport = oCapture.vReports[0];
    EXPECT_EQ(tReport.sSource, "tnwASCIIDecoder.MoveFirst");
    EXPECT_EQ(tReport.lNumber, errCantAccessSource);
    EXPECT_EQ(tReport.sErrSource, "tnwDelimAscii.OpenFile");
    EXPECT_EQ(tReport.sDescription, "Can't access source file");

    try {
        oReader->ReadHeaders();
        ADD_FAILURE() << "ReadHeaders passes the open failure on";
    } catch (const Error& e) {
        EXPECT_EQ(e.lNumber, errFileNotFound);
        EXPECT_EQ(e.sSource, "tnwDelimAscii.ReadHeaders");
    }
}

TEST_F(CursorTest, ReadHeaders) {
    Open("a,b\r\nc,d\r\n");
    EXPECT_EQ(Fields(oReader->ReadHeaders()), (std::vector<std::string>{"a", "b"}));
    EXPECT_EQ(Fields(oReader->ReadHeaders(0)), (std::vector<std::string>{"a", "b"}));
    EXPECT_EQ(Fields(oReader->ReadHeaders(2)), (std::vector<std::string>{"c", "d"}));
    EXPECT_EQ(oReader->CurrentLine(), "c,d");
    const FieldArray aPast = oReader->ReadHeaders(3);
    EXPECT_FALSE(aPast.HasSize());
    EXPECT_THROW(aPast.Item(0), Error);

    // ReadHeaders ends a walk under way.
    EXPECT_EQ(oReader->MoveFirst(), Variant(true));
    oReader->ReadHeaders(2);
    EXPECT_TRUE(oReader->Eof());
    EXPECT_EQ(oReader->CurrentRow(), "0");
    EXPECT_FALSE(oReader->MoveNext());
    EXPECT_TRUE(oCapture.vReports.empty());
}

}  // namespace
}  // namespace tnw::test
