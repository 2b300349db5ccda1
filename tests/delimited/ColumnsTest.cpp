// Columns from header cells: units, position cells, duplicate names, AutoGenColumns.
#include <filesystem>
#include <memory>
#include <string>
#include <vector>

#include "DelimitedFixture.h"
#include "core/Error.h"
#include "core/Services.h"

namespace tnw::test {
namespace {

// Knows "bu/ac" as 101 and nothing else; records what it was asked.
class RecordingUnits final : public tnwUOMFactory {
public:
    explicit RecordingUnits(std::vector<std::string>& vAsked) : m_vAsked(vAsked) {}
    std::int32_t FindUnit(std::string_view sUnitText, std::int32_t lClass) override {
        m_vAsked.push_back(std::string(sUnitText) + "#" + std::to_string(lClass));
        return sUnitText == "bu/ac" ? 101 : 0;
    }

private:
    std::vector<std::string>& m_vAsked;
};

class ColumnsTest : public DelimitedTest {
protected:
    ColumnsTest() {
        m_fnOldUnits = tnwObjectFactory::Register(
            kProgIdUOMFactory, [this] { return std::make_shared<RecordingUnits>(vAsked); });
    }
    ~ColumnsTest() override { tnwObjectFactory::Register(kProgIdUOMFactory, m_fnOldUnits); }

    std::vector<std::string> Keys() const {
        std::vector<std::string> vKeys;
        for (const auto& oColumn : oReader->Columns()->Items())
            vKeys.push_back(oColumn->Key());
        return vKeys;
    }

    std::vector<std::string> vAsked;

private:
    ComponentCreator m_fnOldUnits;
};

void ExpectNumeric(const tnwColumn& oColumn, std::int32_t lUnit) {
    EXPECT_EQ(oColumn.Type(), vtDouble);
    EXPECT_EQ(oColumn.Size(), 16);
    EXPECT_EQ(oColumn.Precision(), 4);
    EXPECT_EQ(oColumn.Flags(), 3);
    EXPECT_EQ(oColumn.Kind(), 1);
    EXPECT_EQ(oColumn.Unit(), lUnit);
    EXPECT_TRUE(oColumn.Visible());
    EXPECT_TRUE(oColumn.Active());
}

void ExpectText(const tnwColumn& oColumn) {
    EXPECT_EQ(oColumn.Type(), vtString);
    EXPECT_EQ(oColumn.Size(), 254);
    EXPECT_EQ(oColumn.Precision(), 0);
    EXPECT_EQ(oColumn.Flags(), 0);
    EXPECT_EQ(oColumn.Kind(), 1);
    EXPECT_EQ(oColumn.Unit(), 16);
    EXPECT_TRUE(oColumn.Visible());
    EXPECT_TRUE(oColumn.Active());
}

TEST_F(ColumnsTest, HeaderCellTable) {
    struct Case {
        std::string sCell;
        std::string sKey;  // empty: no column
        bool bNumeric;
        std::vector<std::string> vAsked;
    };
    const std::vector<Case> vCases = {
        {"Yield (bu/ac)", "Yield", true, {"bu/ac#15"}},
        {"Yield ( bu/ac )", "Yield", true, {"bu/ac#15"}},
        {"Yield (furlongs)", "Yield", false, {"furlongs#15"}},
        {"Yield", "Yield", false, {}},
        {"Yield ()", "Yield", false, {}},
        {"Yield (bu/ac) wet", "Yield", false, {}},
        {"(kg)", "", false, {"kg#15"}},
        {"Lat", "Lat", false, {}},
        {"", "", false, {}},
        {"    ", "", false, {}},
    };
    for (const Case& tCase : vCases) {
        vAsked.clear();
        EXPECT_TRUE(oReader->ColumnsFromString(tCase.sCell, ",")) << tCase.sCell;
        EXPECT_EQ(vAsked, tCase.vAsked) << tCase.sCell;
        if (tCase.sKey.empty()) {
            EXPECT_EQ(oReader->Columns()->Count(), 0) << tCase.sCell;
            continue;
        }
        ASSERT_EQ(Keys(), std::vector<std::string>{tCase.sKey}) << tCase.sCell;
        const auto& oColumn = *oReader->Columns()->Items()[0];
        EXPECT_EQ(oColumn.Position(), 1);
        if (tCase.bNumeric) {
            ExpectNumeric(oColumn, 101);
        } else {
            ExpectText(oColumn);
        }
    }
    EXPECT_EQ(oReader->GeometryFormat(), TNW_GeometryFormat_None);
}

TEST_F(ColumnsTest, PositionCells) {
    for (const char* sCell : {"LONGITUDE", "X (deg)", "x", "longitude"}) {
        oReader->SetLonCol(0);
        oReader->SetGeometryFormat(TNW_GeometryFormat_None);
        EXPECT_TRUE(oReader->ColumnsFromString(std::string("a,") + sCell, ","));
        EXPECT_EQ(oReader->LonCol(), 2) << sCell;
        EXPECT_EQ(oReader->GeometryFormat(), TNW_GeometryFormat_LonLat);
        EXPECT_EQ(Keys(), std::vector<std::string>{"a"});
    }
    for (const char* sCell : {"LATITUDE", "Y", "y (deg)"}) {
        EXPECT_TRUE(oReader->ColumnsFromString(std::string(sCell) + ",b", ","));
        EXPECT_EQ(oReader->LatCol(), 1) << sCell;
        EXPECT_EQ(Keys(), std::vector<std::string>{"b"});
    }
    // The last match wins; columns are cleared but the position fields stay.
    EXPECT_TRUE(oReader->ColumnsFromString("Longitude,x,Lon", ","));
    EXPECT_EQ(oReader->LonCol(), 2);
    EXPECT_TRUE(oReader->ColumnsFromString("Name", ","));
    EXPECT_EQ(oReader->LonCol(), 2);
    EXPECT_EQ(oReader->LatCol(), 1);
}

TEST_F(ColumnsTest, DuplicateNamesAndPositions) {
    EXPECT_TRUE(oReader->ColumnsFromString("Rate,,Rate (bu/ac),  ,rate,Rate_1", ","));
    EXPECT_EQ(Keys(), (std::vector<std::string>{"Rate", "Rate_1", "rate_2", "Rate_1_1"}));
    std::vector<std::int32_t> vPositions;
    for (const auto& oColumn : oReader->Columns()->Items()) {
        vPositions.push_back(oColumn->Position());
    }
    EXPECT_EQ(vPositions, (std::vector<std::int32_t>{1, 3, 5, 6}));
    ExpectNumeric(*oReader->Columns()->Item("Rate_1"), 101);
}

TEST_F(ColumnsTest, EmptyHeaderAndEmptyDelimiter) {
    AddColumn("Old", vtString, 10);
    EXPECT_TRUE(oReader->ColumnsFromString("", ","));
    EXPECT_EQ(oReader->Columns()->Count(), 0);

    // Without a delimiter the header is cut by the widths of the columns there are.
    AddColumn("A", vtString, 6);
    AddColumn("B", vtString, 6);
    EXPECT_TRUE(oReader->ColumnsFromString("Name  Rate  Ignored", ""));
    EXPECT_EQ(Keys(), (std::vector<std::string>{"Name", "Rate"}));
}

TEST_F(ColumnsTest, AutoGenColumns) {
    Open("Field log\r\nName,Yield (bu/ac),Longitude,Latitude\r\nNorth 40,181.5,-96.5,40.25\r\n");
    AddColumn("Host", vtString, 4);
    EXPECT_TRUE(oReader->AutoGenColumns().IsEmpty());
    EXPECT_EQ(Keys(), std::vector<std::string>{"Host"});

    oReader->SetHeaderRows(2);
    EXPECT_EQ(oReader->AutoGenColumns(), Variant(true));
    EXPECT_EQ(Keys(), (std::vector<std::string>{"Name", "Yield"}));
    EXPECT_EQ(oReader->CurrentLine(), "Name,Yield (bu/ac),Longitude,Latitude");
    EXPECT_TRUE(oReader->Eof());

    EXPECT_EQ(oReader->MoveFirst(), Variant(true));
    EXPECT_EQ(oReader->Columns()->Item("Name")->Value(), Variant("North 40"));
    EXPECT_EQ(oReader->Columns()->Item("Yield")->Value(), Variant(181.5));
    EXPECT_EQ(oReader->WKT(), "POINT(-96.5  40.25)");
    EXPECT_TRUE(oCapture.vReports.empty());
}

TEST_F(ColumnsTest, AutoGenColumnsFailures) {
    Open("a,b\r\n");
    AddColumn("Host", vtString, 4);
    oReader->SetHeaderRows(2);
    EXPECT_EQ(oReader->AutoGenColumns(), Variant(false));
    EXPECT_EQ(oReader->Columns()->Count(), 0);
    ASSERT_EQ(oCapture.vReports.size(), 1u);
    EXPECT_EQ(oCapture.vReports[0].sSource, "tnwASCIIDecoder.BuildColumns");
    EXPECT_EQ(oCapture.vReports[0].lNumber, errSubscript);

    std::filesystem::remove(oDir.Path("data.csv"));
    try {
        oReader->AutoGenColumns();
        ADD_FAILURE() << "a header that can't be read reaches the caller";
    } catch (const Error& e) {
        EXPECT_EQ(e.sSource, "tnwDelimAscii.ReadHeaders");
    }
}

TEST_F(ColumnsTest, MissingUnitLookup) {
    const ComponentCreator fnOld = tnwObjectFactory::Register(kProgIdUOMFactory, {});
    AddColumn("Host", vtString, 4);
    EXPECT_FALSE(oReader->ColumnsFromString("Name", ","));
    tnwObjectFactory::Register(kProgIdUOMFactory, fnOld);
    EXPECT_EQ(oReader->Columns()->Count(), 0);
    ASSERT_EQ(oCapture.vReports.size(), 1u);
    EXPECT_EQ(oCapture.vReports[0].sSource, "tnwASCIIDecoder.BuildColumns");
    EXPECT_EQ(oCapture.vReports[0].lNumber, errCantCreateObject);
    EXPECT_EQ(oCapture.vReports[0].sDescription.rfind("Missing Component", 0), 0u);
}

}  // namespace
}  // namespace tnw::test
