// The delimited text encoder: file bytes for the option combinations, record-source import,
// column swaps, the interface's forwarding and the failure paths.
#include <gtest/gtest.h>

#include <errno.h>

#include <filesystem>
#include <memory>
#include <stdexcept>
#include <string>

#include "core/Component.h"
#include "core/Enums.h"
#include "core/Error.h"
#include "core/GISLib.h"
#include "encoders/tnwASCIIEncoder.h"
#include "gislib/MemoryRecordSource.h"
#include "ogc_sf/Geometries.h"
#include "ogc_sf/WKT.h"
#include "platform/File.h"
#include "support/TestSupport.h"

namespace tnw {
namespace {

using standins::ParseWKT;
using standins::Point;

class ASCIIEncoderTest : public ::testing::Test {
protected:
    std::shared_ptr<tnwColumns> NewColumns() {
        return CreateAs<tnwColumns>(kProgIdColumns, "Missing Component");
    }
    // A column of the given type, visible unless told otherwise.
    std::shared_ptr<tnwColumn> Add(tnwColumns& oList, const std::string& sKey, std::int32_t lType,
                                   bool bVisible = true) {
        return oList.Add(sKey, "", "", lType, 16, 4, lType == vtString ? 8 : 3, 1, 0, "", bVisible,
                         true);
    }
    // The columns of the example: text Crop, double Yield.
    void MakeCropYield() {
        oColumns = NewColumns();
        oCrop = Add(*oColumns, "Crop", vtString);
        oYield = Add(*oColumns, "Yield", vtDouble);
    }
    std::string Contents(const tnwASCIIEncoder& oEncoder) {
        return test::ReadFile(oEncoder.Filename());
    }
    bool FolderIsEmpty() { return std::filesystem::is_empty(dir.Root()); }

    test::ScopedCapture capture{0};
    test::TempDir dir;
    std::shared_ptr<tnwColumns> oColumns;
    std::shared_ptr<tnwColumn> oCrop, oYield;
};

TEST_F(ASCIIEncoderTest, LonLatHeaderAndPointAsInTheExample) {
    MakeCropYield();
    tnwASCIIEncoder enc;
    enc.SetIncludeLonLat(true);
    ASSERT_TRUE(enc.Initialize(dir.Path("yield"), oColumns));
    EXPECT_EQ(enc.Filename(), dir.Path("yield.txt"));
    oCrop->SetValue("Corn");
    oYield->SetValue(180.5);
    enc.SetGeometry(Point::Create(-93.25, 42.5));
    EXPECT_TRUE(enc.Update());
    enc.CloseFiles();
    EXPECT_EQ(Contents(enc),
              "\"Longitude\",\"Latitude\",\"Crop\",\"Yield\"\r\n"
              "-93.25, 42.5,\"Corn\", 180.5\r\n");
}

TEST_F(ASCIIEncoderTest, OtherDelimiterQuotesOnlyTextCells) {
    MakeCropYield();
    tnwASCIIEncoder enc;
    enc.SetIncludeLonLat(true);
    ASSERT_TRUE(enc.Initialize(dir.Path("semi.csv"), oColumns, true, ";", true));
    EXPECT_EQ(enc.Filename(), dir.Path("semi.csv"));
    oCrop->SetValue("Soy");
    oYield->SetValue(0.5);
    enc.SetGeometry(Point::Create(1, -2));
    EXPECT_TRUE(enc.Update());
    enc.CloseFiles();
    EXPECT_EQ(Contents(enc),
              "Longitude;Latitude;Crop;Yield;Geometry\r\n"
              " 1;-2;\"Soy\"; .5;POINT (1 -2)\r\n");
}

TEST_F(ASCIIEncoderTest, NumbersAsNumberText) {
    oColumns = NewColumns();
    auto oDouble = Add(*oColumns, "D", vtDouble);
    auto oNegative = Add(*oColumns, "N", vtDouble);
    auto oLong = Add(*oColumns, "L", vtInt32);
    auto oShort = Add(*oColumns, "S", vtInt16);
    auto oSingle = Add(*oColumns, "F", vtFloat);
    auto oBig = Add(*oColumns, "B", vtDouble);
    tnwASCIIEncoder enc;
    ASSERT_TRUE(enc.Initialize(dir.Path("n"), oColumns, false));
    oDouble->SetValue(0.5);
    oNegative->SetValue(-0.25);
    oLong->SetValue(std::int32_t{7});
    oShort->SetValue(std::int16_t{-3});
    oSingle->SetValue(0.1f);
    oBig->SetValue(1e20);
    EXPECT_TRUE(enc.Update());
    enc.CloseFiles();
    EXPECT_EQ(Contents(enc), " .5,-.25, 7,-3, .1, 1E+20\r\n");
}

TEST_F(ASCIIEncoderTest, WithoutHeaderTheFirstLineIsARecord) {
    MakeCropYield();
    tnwASCIIEncoder enc;
    ASSERT_TRUE(enc.Initialize(dir.Path("h.txt"), oColumns, false));
    for (double d : {1.0, 2.5}) {
        oCrop->SetValue("Wheat");
        oYield->SetValue(d);
        EXPECT_TRUE(enc.Update());
    }
    enc.CloseFiles();
    EXPECT_EQ(Contents(enc), "\"Wheat\", 1\r\n\"Wheat\", 2.5\r\n");
}

TEST_F(ASCIIEncoderTest, InvisibleColumnsOnlyWhenAsked) {
    oColumns = NewColumns();
    auto oA = Add(*oColumns, "A", vtDouble);
    auto oHidden = Add(*oColumns, "Hidden", vtString, false);
    auto oB = Add(*oColumns, "B", vtDouble);
    oA->SetValue(1.0);
    oHidden->SetValue("h");
    oB->SetValue(2.0);
    tnwASCIIEncoder visible, all;
    all.SetIncludeInvisible(true);
    ASSERT_TRUE(visible.Initialize(dir.Path("visible"), oColumns));
    ASSERT_TRUE(all.Initialize(dir.Path("all"), oColumns));
    EXPECT_TRUE(visible.Update());
    EXPECT_TRUE(all.Update());
    visible.CloseFiles();
    all.CloseFiles();
    EXPECT_EQ(Contents(visible), "\"A\",\"B\"\r\n 1, 2\r\n");
    EXPECT_EQ(Contents(all), "\"A\",\"Hidden\",\"B\"\r\n 1,\"h\", 2\r\n");
}

TEST_F(ASCIIEncoderTest, LonLatWithoutAPointLeavesTwoEmptyFields) {
    MakeCropYield();
    oCrop->SetValue("Corn");
    oYield->SetValue(3.0);
    tnwASCIIEncoder enc;
    enc.SetIncludeLonLat(true);
    ASSERT_TRUE(enc.Initialize(dir.Path("ll"), oColumns, false));
    EXPECT_TRUE(enc.Update());  // no geometry
    enc.SetGeometry(ParseWKT("POLYGON ((0 0,1 0,1 1,0 0))"));
    EXPECT_TRUE(enc.Update());  // not a point
    enc.SetGeometry(Point::Create(5, 6));
    EXPECT_TRUE(enc.Update());
    EXPECT_TRUE(enc.Update());  // the point was let go by the Update before
    enc.CloseFiles();
    EXPECT_EQ(Contents(enc),
              ",,\"Corn\", 3\r\n"
              ",,\"Corn\", 3\r\n"
              " 5, 6,\"Corn\", 3\r\n"
              ",,\"Corn\", 3\r\n");
}

TEST_F(ASCIIEncoderTest, LonLatAloneAndRoundingToSevenPlaces) {
    oColumns = NewColumns();
    tnwASCIIEncoder enc;
    enc.SetIncludeLonLat(true);
    ASSERT_TRUE(enc.Initialize(dir.Path("r"), oColumns));
    enc.SetGeometry(Point::Create(-93.123456749, 42.00000015));
    EXPECT_TRUE(enc.Update());
    // Ties go to the even digit: ...00005 down to 1, ...00015 up to ...0002.
    enc.SetGeometry(Point::Create(1.00000005, -0.00000015));
    EXPECT_TRUE(enc.Update());
    EXPECT_TRUE(enc.Update());  // no point, no columns: one delimiter
    enc.CloseFiles();
    EXPECT_EQ(Contents(enc),
              "\"Longitude\",\"Latitude\"\r\n"
              "-93.1234567, 42.0000002\r\n"
              " 1,-2E-07\r\n"
              ",\r\n");
}

TEST_F(ASCIIEncoderTest, GeometryAsQuotedWellKnownText) {
    MakeCropYield();
    oCrop->SetValue("Oats");
    oYield->SetValue(-1.5);
    tnwASCIIEncoder enc;
    ASSERT_TRUE(enc.Initialize(dir.Path("g"), oColumns, true, ",", true));
    enc.SetGeometry(ParseWKT("LINESTRING (0 0,1.5 2)"));
    EXPECT_TRUE(enc.Update());
    enc.CloseFiles();
    EXPECT_EQ(Contents(enc),
              "\"Crop\",\"Yield\",Geometry\r\n"
              "\"Oats\",-1.5,\"LINESTRING (0 0,1.5 2)\"\r\n");
}

TEST_F(ASCIIEncoderTest, NoVisibleColumnsGiveEmptyLines) {
    oColumns = NewColumns();
    Add(*oColumns, "Hidden", vtDouble, false);
    tnwASCIIEncoder enc;
    ASSERT_TRUE(enc.Initialize(dir.Path("empty"), oColumns));
    EXPECT_TRUE(enc.Update());
    EXPECT_TRUE(enc.Update());
    enc.CloseFiles();
    EXPECT_EQ(Contents(enc), "\r\n\r\n\r\n");
}

TEST_F(ASCIIEncoderTest, TextIsWrittenUnchangedInTheNarrowCodePage) {
    oColumns = NewColumns();
    auto oNote = Add(*oColumns, "\xC3\x81rea", vtString);  // "Área"
    Add(*oColumns, "N", vtDouble)->SetValue(1.0);
    tnwASCIIEncoder enc;
    ASSERT_TRUE(enc.Initialize(dir.Path("t"), oColumns, true, "\xC2\xA7"));  // "§"
    oNote->SetValue("5\" pipe");
    EXPECT_TRUE(enc.Update());
    oNote->SetValue("caf\xC3\xA9 \xE2\x82\xAC \xCE\xA9");  // "café € Ω"
    EXPECT_TRUE(enc.Update());
    enc.CloseFiles();
    EXPECT_EQ(Contents(enc),
              "\xC1rea\xA7N\r\n"
              "\"5\" pipe\"\xA7 1\r\n"
              "\"caf\xE9 \x80 ?\"\xA7 1\r\n");
}

TEST_F(ASCIIEncoderTest, AFailedLineWritesNothing) {
    MakeCropYield();
    oCrop->SetValue("Rye");
    oYield->SetValue(2.0);
    tnwASCIIEncoder enc;
    ASSERT_TRUE(enc.Initialize(dir.Path("f"), oColumns, false, ",", true));
    EXPECT_FALSE(enc.Update());  // geometry asked for, none set
    oYield->SetValue("not a number");
    enc.SetGeometry(Point::Create(1, 2));
    EXPECT_FALSE(enc.Update());
    oYield->SetValue(4.0);
    EXPECT_TRUE(enc.Update());  // a failed line keeps the geometry
    enc.CloseFiles();
    EXPECT_EQ(Contents(enc), "\"Rye\", 4,\"POINT (1 2)\"\r\n");
    ASSERT_EQ(capture.vReports.size(), 2u);
    EXPECT_EQ(capture.vReports[0].sSource, "tnwASCIIEncoder.Update");
    EXPECT_EQ(capture.vReports[0].lNumber, errObjectNotSet);
    EXPECT_EQ(capture.vReports[1].lNumber, errTypeMismatch);
    EXPECT_TRUE(capture.vBoxes.empty());
}

TEST_F(ASCIIEncoderTest, UpdateWithoutAnOpenFileFails) {
    MakeCropYield();
    tnwASCIIEncoder enc;
    EXPECT_FALSE(enc.Update());
    ASSERT_TRUE(enc.Initialize(dir.Path("c"), oColumns));
    enc.CloseFiles();
    enc.CloseFiles();  // twice does no harm
    EXPECT_FALSE(enc.Update());
    ASSERT_EQ(capture.vReports.size(), 2u);
    EXPECT_EQ(capture.vReports[0].sSource, "tnwASCIIEncoder.Update");
    EXPECT_EQ(capture.vReports[0].lNumber, errBadFileNumber);
    EXPECT_EQ(capture.vReports[1].lNumber, errBadFileNumber);
    EXPECT_EQ(Contents(enc), "\"Crop\",\"Yield\"\r\n");
}

TEST_F(ASCIIEncoderTest, AWriteFailureIsReportedByUpdate) {
    oColumns = NewColumns();
    auto oNote = Add(*oColumns, "Note", vtString);
    tnwASCIIEncoder enc;
    ASSERT_TRUE(enc.Initialize(dir.Path("full"), oColumns, false));
    auto& calls = platform::Sys();
    auto fnWrite = calls.write;
    calls.write = [](int, const void*, std::size_t) -> ssize_t {
        errno = ENOSPC;
        return -1;
    };
    oNote->SetValue(std::string(platform::OutputFile::kBufferSize, 'x'));  // flushes at once
    const bool bResult = enc.Update();
    calls.write = fnWrite;
    EXPECT_FALSE(bResult);
    ASSERT_EQ(capture.vReports.size(), 1u);
    EXPECT_EQ(capture.vReports[0].sSource, "tnwASCIIEncoder.Update");
    EXPECT_EQ(capture.vReports[0].lNumber, errDiskFull);
    oNote->SetValue("ok");
    EXPECT_TRUE(enc.Update());
    enc.CloseFiles();
    EXPECT_EQ(Contents(enc), "\"ok\"\r\n");
}

TEST_F(ASCIIEncoderTest, FileThatCannotBeCreatedShowsTheAsciiErrorBox) {
    capture.mUser["Tarnwick/Common/ConDebug"] = Variant(std::int32_t{1});
    MakeCropYield();
    tnwASCIIEncoder enc;
    ASSERT_TRUE(enc.Initialize(dir.Path("first"), oColumns));
    enc.CloseFiles();
    const std::string sBad = dir.Path("no/such/folder/out.txt");
    std::string sDescription;
    try {
        platform::OutputFile probe;
        probe.Open(sBad);
    } catch (const Error& e) {
        sDescription = e.sDescription;
    }
    ASSERT_FALSE(sDescription.empty());

    EXPECT_FALSE(enc.Initialize(sBad, oColumns));
    EXPECT_FALSE(enc.InitializeFile(sBad, oColumns));
    EXPECT_EQ(enc.Filename(), dir.Path("first.txt"));  // keeps the old name
    EXPECT_FALSE(enc.Update());                        // nothing is open
    ASSERT_GE(capture.vBoxes.size(), 2u);
    for (int i = 0; i < 2; ++i) {
        EXPECT_EQ(capture.vBoxes[i].sTitle, "Ascii Error");
        EXPECT_EQ(capture.vBoxes[i].sText, "Error: " + sDescription);
        EXPECT_EQ(capture.vBoxes[i].eIcon, platform::MsgIcon::Exclamation);
    }
    // The box is the whole report of a failed open: the error path hears only of the Update.
    ASSERT_EQ(capture.vReports.size(), 1u);
    EXPECT_EQ(capture.vReports[0].sSource, "tnwASCIIEncoder.Update");
}

TEST_F(ASCIIEncoderTest, HeaderFailureShowsTheBoxWhateverTheDebugMode) {
    tnwASCIIEncoder enc;
    EXPECT_FALSE(enc.Initialize(dir.Path("nocols"), nullptr));
    ASSERT_EQ(capture.vBoxes.size(), 1u);
    EXPECT_EQ(capture.vBoxes[0].sTitle, "Ascii Error");
    EXPECT_EQ(capture.vBoxes[0].sText, "Error: " + StandardDescription(errObjectNotSet));
    EXPECT_TRUE(capture.vReports.empty());
    EXPECT_EQ(enc.Filename(), "");
    EXPECT_FALSE(enc.Update());  // closed after the failure
}

TEST_F(ASCIIEncoderTest, FailureBeforeOpeningReachesTheErrorPathThroughInitialize) {
    MakeCropYield();
    auto fnFileUtility = tnwObjectFactory::Register(kProgIdFileUtility, nullptr);
    tnwASCIIEncoder enc;
    const bool bResult = enc.Initialize(dir.Path("x"), oColumns);
    bool bRaised = false;
    try {
        enc.InitializeFile(dir.Path("x"), oColumns);
    } catch (const Error& e) {
        bRaised = e.lNumber == errCantCreateObject;
    }
    tnwObjectFactory::Register(kProgIdFileUtility, fnFileUtility);
    EXPECT_FALSE(bResult);
    EXPECT_TRUE(bRaised);
    ASSERT_EQ(capture.vReports.size(), 1u);
    EXPECT_EQ(capture.vReports[0].sSource, "tnwASCIIEncoder.Initialize");
    EXPECT_EQ(capture.vReports[0].lNumber, errCantCreateObject);
    EXPECT_TRUE(capture.vBoxes.empty());
    EXPECT_TRUE(FolderIsEmpty());
}

TEST_F(ASCIIEncoderTest, InitializeFileUsesTheOptionsAsTheyStand) {
    MakeCropYield();
    tnwASCIIEncoder enc;
    EXPECT_TRUE(enc.Header());
    EXPECT_EQ(enc.Delimiter(), ",");
    EXPECT_FALSE(enc.IncludeGeometry());
    EXPECT_FALSE(enc.IncludeLonLat());
    EXPECT_FALSE(enc.IncludeInvisible());
    enc.SetDelimiter("\t");
    enc.SetIncludeGeometry(true);
    ASSERT_TRUE(enc.InitializeFile(dir.Path("tab"), oColumns));
    enc.CloseFiles();
    EXPECT_EQ(Contents(enc), "Crop\tYield\tGeometry\r\n");
    // Initialize stores its arguments, defaults included.
    ASSERT_TRUE(enc.Initialize(dir.Path("def"), oColumns));
    EXPECT_EQ(enc.Delimiter(), ",");
    EXPECT_FALSE(enc.IncludeGeometry());
    EXPECT_TRUE(enc.Header());
}

TEST_F(ASCIIEncoderTest, DestructionFinishesTheFileAndReinitialisingStartsANewOne) {
    MakeCropYield();
    oCrop->SetValue("Corn");
    oYield->SetValue(1.0);
    {
        tnwASCIIEncoder enc;
        ASSERT_TRUE(enc.Initialize(dir.Path("one"), oColumns, false));
        EXPECT_TRUE(enc.Update());
        ASSERT_TRUE(enc.Initialize(dir.Path("two"), oColumns, false));
        oYield->SetValue(2.0);
        EXPECT_TRUE(enc.Update());
    }
    EXPECT_EQ(test::ReadFile(dir.Path("one.txt")), "\"Corn\", 1\r\n");
    EXPECT_EQ(test::ReadFile(dir.Path("two.txt")), "\"Corn\", 2\r\n");
}

TEST_F(ASCIIEncoderTest, ImportRSWithNoSourceDoesNothing) {
    tnwASCIIEncoder enc;
    EXPECT_FALSE(enc.ImportRS(dir.Path("none"), nullptr, false, ";"));
    EXPECT_TRUE(FolderIsEmpty());
    EXPECT_TRUE(enc.Header());
    EXPECT_EQ(enc.Delimiter(), ",");
}

TEST_F(ASCIIEncoderTest, ImportRSWritesEachRecordOnTheSourcesOwnColumns) {
    MakeCropYield();
    auto oRS = std::make_shared<standins::MemoryRecordSource>(oColumns, tnwGeometryPoint);
    oRS->AddRow({Variant("Corn"), Variant(180.5)}, Point::Create(-93.25, 42.5));
    oRS->AddRow({Variant("Soy"), Variant(0.5)}, nullptr);
    tnwASCIIEncoder enc;
    enc.SetIncludeLonLat(true);
    EXPECT_TRUE(enc.ImportRS(dir.Path("rs"), oRS, true, ";"));
    ItnwEncoder& oInterface = enc;
    EXPECT_EQ(oInterface.Columns(), oColumns);
    enc.CloseFiles();  // the caller closes
    EXPECT_EQ(Contents(enc),
              "Longitude;Latitude;Crop;Yield\r\n"
              "-93.25; 42.5;\"Corn\"; 180.5\r\n"
              ";;\"Soy\"; .5\r\n");
}

TEST_F(ASCIIEncoderTest, ImportRSOfAnEmptySourceMakesTheFile) {
    MakeCropYield();
    auto oRS = std::make_shared<standins::MemoryRecordSource>(oColumns, tnwGeometryPoint);
    tnwASCIIEncoder enc;
    EXPECT_TRUE(enc.ImportRS(dir.Path("empty"), oRS));
    enc.CloseFiles();
    EXPECT_EQ(Contents(enc), "\"Crop\",\"Yield\"\r\n");
}

// A source whose cursor fails after the first record.
class BrokenSource final : public tnwRecordSource {
public:
    explicit BrokenSource(std::shared_ptr<tnwColumns> oColumns) : m_oColumns(std::move(oColumns)) {}
    void MoveFirst() override {}
    void MoveNext() override { throw Error(3021, "BrokenSource", "No current record"); }
    bool Eof() const override { return false; }
    std::int32_t RecordCount() const override { return 2; }
    std::int32_t GeometryType() const override { return tnwGeometryPoint; }
    std::shared_ptr<IGeometry> Geometry() const override { return nullptr; }
    std::shared_ptr<tnwColumns> Columns() const override { return m_oColumns; }

private:
    std::shared_ptr<tnwColumns> m_oColumns;
};

TEST_F(ASCIIEncoderTest, ImportRSPassesFailuresOfTheSourceUp) {
    MakeCropYield();
    tnwASCIIEncoder enc;
    try {
        enc.ImportRS(dir.Path("broken"), std::make_shared<BrokenSource>(oColumns));
        FAIL() << "the source's failure did not reach the caller";
    } catch (const Error& e) {
        EXPECT_EQ(e.lNumber, 3021);
    }
    EXPECT_TRUE(capture.vReports.empty());
    // A failed open ends the import with False before the source is read.
    EXPECT_FALSE(enc.ImportRS(dir.Path("no/folder/x"), std::make_shared<BrokenSource>(oColumns)));
}

TEST_F(ASCIIEncoderTest, ChangeColumnsAcceptsOnlyTheSameLayout) {
    MakeCropYield();
    tnwASCIIEncoder enc;
    EXPECT_FALSE(enc.ChangeColumns(oColumns));  // before initialisation

    ASSERT_TRUE(enc.Initialize(dir.Path("cc"), oColumns, false));
    EXPECT_FALSE(enc.ChangeColumns(nullptr));
    auto oSame = NewColumns();
    auto oSameCrop = Add(*oSame, "Crop", vtString);
    auto oSameYield = Add(*oSame, "Yield", vtDouble);
    auto oCase = NewColumns();
    Add(*oCase, "Crop", vtString);
    Add(*oCase, "yield", vtDouble);
    auto oHidden = NewColumns();
    Add(*oHidden, "Crop", vtString);
    Add(*oHidden, "Yield", vtDouble, false);

    oCrop->SetValue("old");
    oYield->SetValue(1.0);
    EXPECT_FALSE(enc.ChangeColumns(oCase));
    EXPECT_FALSE(enc.ChangeColumns(oHidden));
    EXPECT_EQ(static_cast<ItnwEncoder&>(enc).Columns(), oColumns);
    EXPECT_TRUE(enc.Update());

    oSameCrop->SetValue("new");
    oSameYield->SetValue(2.0);
    EXPECT_TRUE(enc.ChangeColumns(oSame));
    EXPECT_EQ(static_cast<ItnwEncoder&>(enc).Columns(), oSame);
    EXPECT_TRUE(enc.Update());
    enc.CloseFiles();
    EXPECT_EQ(Contents(enc), "\"old\", 1\r\n\"new\", 2\r\n");
}

TEST_F(ASCIIEncoderTest, TheInterfaceForwardsWithTheCurrentOptions) {
    MakeCropYield();
    oCrop->SetValue("Corn");
    oYield->SetValue(9.0);
    tnwASCIIEncoder enc;
    enc.SetHeader(false);
    enc.SetDelimiter(";");
    enc.SetIncludeGeometry(true);
    ItnwEncoder& oInterface = enc;
    ASSERT_TRUE(oInterface.Initialize(dir.Path("i"), oColumns));
    EXPECT_EQ(oInterface.Filename(), dir.Path("i.txt"));
    EXPECT_EQ(oInterface.Columns(), oColumns);
    oInterface.SetGeometry(Point::Create(3, 4));
    oInterface.Update();
    oInterface.Update();  // no geometry: fails, and the interface tells nothing
    auto oOther = NewColumns();
    Add(*oOther, "Crop", vtString)->SetValue("Rice");
    Add(*oOther, "Yield", vtDouble)->SetValue(1.0);
    EXPECT_TRUE(oInterface.ChangeColumns(oOther));
    oInterface.SetGeometry(Point::Create(5, 6));
    oInterface.Update();
    oInterface.CloseFiles();
    EXPECT_EQ(Contents(enc), "\"Corn\"; 9;POINT (3 4)\r\n\"Rice\"; 1;POINT (5 6)\r\n");
    EXPECT_EQ(capture.vReports.size(), 1u);

    auto oRS = std::make_shared<standins::MemoryRecordSource>(oColumns, tnwGeometryPoint);
    oRS->AddRow({Variant("Oats"), Variant(2.0)}, Point::Create(7, 8));
    EXPECT_FALSE(oInterface.ImportRS(dir.Path("none"), nullptr));
    ASSERT_TRUE(oInterface.ImportRS(dir.Path("rs"), oRS));
    oInterface.CloseFiles();
    EXPECT_EQ(Contents(enc), "\"Oats\"; 2;POINT (7 8)\r\n");
}

TEST(ItnwEncoder, OnItsOwnDoesNothing) {
    auto oEncoder = std::make_shared<ItnwEncoder>();
    EXPECT_EQ(oEncoder->Columns(), nullptr);
    EXPECT_EQ(oEncoder->Filename(), "");
    EXPECT_FALSE(oEncoder->Initialize("x", nullptr));
    EXPECT_FALSE(oEncoder->ImportRS("x", nullptr));
    EXPECT_FALSE(oEncoder->ChangeColumns(nullptr));
    oEncoder->SetGeometry(nullptr);
    oEncoder->Update();
    oEncoder->CloseFiles();
}

}  // namespace
}  // namespace tnw
