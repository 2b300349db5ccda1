// The delimited text encoder: file bytes for the option combinations, record-source import,
// column swaps and the failure paths.
#include <gtest/gtest.h>

#include <filesystem>

#include "core/Enums.h"
#include "core/Error.h"
#include "core/GISLib.h"
#include "encoders/tnwASCIIEncoder.h"
#include "ogc_sf/Geometries.h"
#include "ogc_sf/WKT.h"
#include "support/TestSupport.h"

namespace tnw {
namespace {

using standins::ParseWKT;
using standins::Point;
using test::AddColumn;
using test::NewColumns;

struct Column {
    std::string sKey;
    std::int32_t lType;
    bool bVisible = true;
};
struct Line {
    std::vector<Variant> vValues;
    const char* sWKT = nullptr;  // nullptr: no SetGeometry before this Update
};

const std::vector<Column> kCropYield = {{"Crop", vtString}, {"Yield", vtDouble}};
const std::vector<Column> kWithHidden = {
    {"A", vtDouble}, {"Hidden", vtString, false}, {"B", vtDouble}};

class ASCIIEncoderTest : public ::testing::Test {
protected:
    std::shared_ptr<tnwColumns> CropYield() {
        auto oList = NewColumns();
        oCrop = AddColumn(*oList, "Crop", vtString, 16);
        oYield = AddColumn(*oList, "Yield", vtDouble, 16, 4);
        return oList;
    }
    // The bytes of a file written with the options in sOptions ('H' header, 'G' geometry,
    // 'L' longitude and latitude, 'I' invisible columns), one Update per line.
    std::string Write(const std::vector<Column>& vColumns, const std::string& sOptions,
                      const std::string& sDelimiter, const std::vector<Line>& vLines) {
        auto oList = NewColumns();
        for (const Column& c : vColumns)
            AddColumn(*oList, c.sKey, c.lType, 16, 4, c.bVisible);
        auto bHas = [&](char c) { return sOptions.find(c) != std::string::npos; };
        tnwASCIIEncoder enc;
        enc.SetIncludeLonLat(bHas('L'));
        enc.SetIncludeInvisible(bHas('I'));
        const std::string sBase = dir.Path(std::string("w").append(std::to_string(++m_nFiles)));
        EXPECT_TRUE(enc.Initialize(sBase, oList, bHas('H'), sDelimiter, bHas('G')));
        EXPECT_EQ(enc.Filename(), sBase + ".txt");
        for (const Line& tLine : vLines) {
            for (std::size_t i = 0; i < tLine.vValues.size(); ++i)
                oList->Items()[i]->SetValue(tLine.vValues[i]);
            if (tLine.sWKT) enc.SetGeometry(ParseWKT(tLine.sWKT));
            EXPECT_TRUE(enc.Update());
        }
        enc.CloseFiles();
        return test::ReadFile(sBase + ".txt");
    }

    test::ScopedCapture capture{0};
    test::TempDir dir;
    std::shared_ptr<tnwColumn> oCrop, oYield;
    int m_nFiles = 0;
};

TEST_F(ASCIIEncoderTest, BytesOfEachOptionCombination) {
    EXPECT_EQ(Write(kCropYield, "HL", ",", {{{"Corn", 180.5}, "POINT (-93.25 42.5)"}}),
              "\"Longitude\",\"Latitude\",\"Crop\",\"Yield\"\r\n-93.25, 42.5,\"Corn\", 180.5\r\n");
    // Another delimiter quotes only text cells.
    EXPECT_EQ(Write(kCropYield, "HGL", ";", {{{"Soy", 0.5}, "POINT (1 -2)"}}),
              "Longitude;Latitude;Crop;Yield;Geometry\r\n 1;-2;\"Soy\"; .5;POINT (1 -2)\r\n");
    // Numbers as number text; without a header the first line is a record.
    EXPECT_EQ(Write({{"D", vtDouble},
                     {"N", vtDouble},
                     {"L", vtInt32},
                     {"S", vtInt16},
                     {"F", vtFloat},
                     {"B", vtDouble}},
                    "", ",", {{{0.5, -0.25, std::int32_t{7}, std::int16_t{-3}, 0.1f, 1e20}}}),
              " .5,-.25, 7,-3, .1, 1E+20\r\n");
    EXPECT_EQ(Write(kWithHidden, "H", ",", {{{1.0, "h", 2.0}}}), "\"A\",\"B\"\r\n 1, 2\r\n");
    EXPECT_EQ(Write(kWithHidden, "HI", ",", {{{1.0, "h", 2.0}}}),
              "\"A\",\"Hidden\",\"B\"\r\n 1,\"h\", 2\r\n");
    // No point, or not a point: two empty fields. Update lets the point go.
    EXPECT_EQ(
        Write(kCropYield, "L", ",",
              {{{"Corn", 3.0}}, {{}, "POLYGON ((0 0,1 0,1 1,0 0))"}, {{}, "POINT (5 6)"}, {{}}}),
        ",,\"Corn\", 3\r\n,,\"Corn\", 3\r\n 5, 6,\"Corn\", 3\r\n,,\"Corn\", 3\r\n");
    // Seven places, ties to the even digit: ...00005 down to 1, ...00015 up to ...0002.
    EXPECT_EQ(Write({}, "HL", ",",
                    {{{}, "POINT (-93.123456749 42.00000015)"},
                     {{}, "POINT (1.00000005 -0.00000015)"},
                     {}}),
              "\"Longitude\",\"Latitude\"\r\n-93.1234567, 42.0000002\r\n 1,-2E-07\r\n,\r\n");
    // "Área", "§" and "café € Ω" in Windows-1252; an inner quote is not doubled.
    EXPECT_EQ(Write({{"\xC3\x81rea", vtString}, {"N", vtDouble}}, "H", "\xC2\xA7",
                    {{{"5\" pipe", 1.0}}, {{"caf\xC3\xA9 \xE2\x82\xAC \xCE\xA9"}}}),
              "\xC1rea\xA7N\r\n\"5\" pipe\"\xA7 1\r\n\"caf\xE9 \x80 ?\"\xA7 1\r\n");
    EXPECT_TRUE(capture.vReports.empty());
}

TEST_F(ASCIIEncoderTest, FailedLinesWriteNothingAndAreReported) {
    auto oList = CropYield();
    tnwASCIIEncoder enc;
    EXPECT_FALSE(enc.Update());  // nothing open
    ASSERT_TRUE(enc.Initialize(dir.Path("f.csv"), oList, false, ",", true));
    EXPECT_EQ(enc.Filename(), dir.Path("f.csv"));
    oCrop->SetValue("Rye");
    EXPECT_FALSE(enc.Update());  // geometry asked for, none set
    oYield->SetValue("not a number");
    enc.SetGeometry(Point::Create(1, 2));
    EXPECT_FALSE(enc.Update());
    oYield->SetValue(4.0);
    EXPECT_TRUE(enc.Update());  // a failed line keeps the geometry
    enc.CloseFiles();
    EXPECT_FALSE(enc.Update());
    EXPECT_EQ(test::ReadFile(enc.Filename()), "\"Rye\", 4,\"POINT (1 2)\"\r\n");
    std::vector<std::int32_t> vNumbers;
    for (const auto& r : capture.vReports) {
        EXPECT_EQ(r.sSource, "tnwASCIIEncoder.Update");
        vNumbers.push_back(r.lNumber);
    }
    EXPECT_EQ(vNumbers, (std::vector<std::int32_t>{errBadFileNumber, errObjectNotSet,
                                                   errTypeMismatch, errBadFileNumber}));
    EXPECT_TRUE(capture.vBoxes.empty());
}

// A failed open is reported by the box alone, whatever the debug mode; the file stays closed.
TEST_F(ASCIIEncoderTest, OpenFailuresShowTheAsciiErrorBox) {
    capture.mUser["Tarnwick/Common/ConDebug"] = Variant(std::int32_t{1});
    auto oList = CropYield();
    tnwASCIIEncoder enc;
    EXPECT_FALSE(enc.Initialize(dir.Path("nocols"), nullptr));  // the header cannot be made
    EXPECT_EQ(enc.Filename(), "");
    ASSERT_TRUE(enc.Initialize(dir.Path("first"), oList));
    const std::string sBad = dir.Path("no/such/folder/out.txt");
    EXPECT_FALSE(enc.Initialize(sBad, oList));
    EXPECT_FALSE(enc.InitializeFile(sBad, oList));
    EXPECT_EQ(enc.Filename(), dir.Path("first.txt"));
    EXPECT_TRUE(capture.vReports.empty());
    ASSERT_EQ(capture.vBoxes.size(), 3u);
    EXPECT_EQ(capture.vBoxes[0].sText, "Error: " + StandardDescription(errObjectNotSet));
    for (const auto& tBox : capture.vBoxes) {
        EXPECT_EQ(tBox.sTitle, "Ascii Error");
        EXPECT_EQ(tBox.eIcon, platform::MsgIcon::Exclamation);
    }
    EXPECT_FALSE(enc.Update());  // nothing is open
}

TEST_F(ASCIIEncoderTest, FailureBeforeOpeningReachesTheErrorPathThroughInitialize) {
    auto oList = CropYield();
    auto fnFileUtility = tnwObjectFactory::Register(kProgIdFileUtility, nullptr);
    tnwASCIIEncoder enc;
    const bool bResult = enc.Initialize(dir.Path("x"), oList);
    const auto lRaised = test::ErrorNumberOf([&] { enc.InitializeFile(dir.Path("x"), oList); });
    tnwObjectFactory::Register(kProgIdFileUtility, fnFileUtility);
    EXPECT_FALSE(bResult);
    EXPECT_EQ(lRaised, errCantCreateObject);
    ASSERT_EQ(capture.vReports.size(), 1u);
    EXPECT_EQ(capture.vReports[0].sSource, "tnwASCIIEncoder.Initialize");
    EXPECT_EQ(capture.vReports[0].lNumber, errCantCreateObject);
    EXPECT_TRUE(capture.vBoxes.empty());
    EXPECT_TRUE(std::filesystem::is_empty(dir.Root()));
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
    auto oRS = std::make_shared<BrokenSource>(CropYield());
    tnwASCIIEncoder enc;
    EXPECT_EQ(test::ErrorNumberOf([&] { enc.ImportRS(dir.Path("broken"), oRS); }), 3021);
    EXPECT_TRUE(capture.vReports.empty());
    // A failed open ends the import with False before the source is read.
    EXPECT_FALSE(enc.ImportRS(dir.Path("no/folder/x"), oRS));
}

TEST_F(ASCIIEncoderTest, ChangeColumnsAcceptsOnlyTheSameLayout) {
    auto oList = CropYield();
    tnwASCIIEncoder enc;
    EXPECT_FALSE(enc.ChangeColumns(oList));  // before initialisation
    ASSERT_TRUE(enc.Initialize(dir.Path("cc"), oList, false));
    EXPECT_FALSE(enc.ChangeColumns(nullptr));
    auto fnList = [](const char* sYield, bool bVisible) {
        auto oOther = NewColumns();
        AddColumn(*oOther, "Crop", vtString, 16)->SetValue("new");
        AddColumn(*oOther, sYield, vtDouble, 16, 4, bVisible)->SetValue(2.0);
        return oOther;
    };
    EXPECT_FALSE(enc.ChangeColumns(fnList("yield", true)));
    EXPECT_FALSE(enc.ChangeColumns(fnList("Yield", false)));
    oCrop->SetValue("old");
    oYield->SetValue(1.0);
    EXPECT_TRUE(enc.Update());
    EXPECT_TRUE(enc.ChangeColumns(fnList("Yield", true)));
    EXPECT_TRUE(enc.Update());
    enc.CloseFiles();
    EXPECT_EQ(test::ReadFile(enc.Filename()), "\"old\", 1\r\n\"new\", 2\r\n");
}

}  // namespace
}  // namespace tnw
