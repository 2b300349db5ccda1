// The stand-in column list: keys, positions, layout text and XML.
#include <gtest/gtest.h>

#include "core/Error.h"
#include "gislib/Columns.h"

namespace tnw::standins {
namespace {

std::shared_ptr<tnwColumn> AddNumeric(Columns& oColumns, std::string_view sKey) {
    return oColumns.Add(sKey, "", "", 5, 16, 4, 3, 1, 12, "", true, true);
}

TEST(Columns, AddGivesPositionsInOrderAndRefusesKnownKeys) {
    Columns oColumns;
    auto oYield = AddNumeric(oColumns, "Yield");
    ASSERT_TRUE(oYield);
    EXPECT_EQ(oYield->Position(), 1);
    EXPECT_EQ(oYield->Type(), 5);
    EXPECT_EQ(oYield->Size(), 16);
    EXPECT_EQ(oYield->Precision(), 4);
    EXPECT_EQ(oYield->Flags(), 3);
    EXPECT_EQ(oYield->Unit(), 12);
    EXPECT_EQ(AddNumeric(oColumns, "Moisture")->Position(), 2);

    // The same key in another case: nothing, no error, nothing changed.
    EXPECT_EQ(AddNumeric(oColumns, "YIELD"), nullptr);
    EXPECT_EQ(oColumns.Count(), 2);
    EXPECT_EQ(AddNumeric(oColumns, "Speed")->Position(), 3);

    EXPECT_EQ(oColumns.Item("yield"), oYield);
    EXPECT_EQ(oColumns.Item("Nothing"), nullptr);
    ASSERT_EQ(oColumns.Items().size(), 3u);
    EXPECT_EQ(oColumns.Items()[1]->Key(), "Moisture");
    EXPECT_EQ(oColumns.Items()[2]->Key(), "Speed");

    oColumns.Clear();
    EXPECT_EQ(oColumns.Count(), 0);
    EXPECT_TRUE(oColumns.Items().empty());
    EXPECT_EQ(AddNumeric(oColumns, "Yield")->Position(), 1);
}

TEST(Columns, AddColumnKeepsTheColumnAsItIs) {
    Columns oColumns;
    AddNumeric(oColumns, "A");
    auto oOwn = std::make_shared<Column>("B", "", "", 8, 254, 0, 8, 1, 16, "", true, true);
    oOwn->SetPosition(9);
    EXPECT_TRUE(oColumns.AddColumn(oOwn));
    EXPECT_EQ(oColumns.Item("b"), oOwn);
    EXPECT_EQ(oOwn->Position(), 9);
    EXPECT_FALSE(oColumns.AddColumn(
        std::make_shared<Column>("a", "", "", 8, 1, 0, 8, 1, 0, "", true, true)));
    EXPECT_EQ(oColumns.Count(), 2);
    EXPECT_THROW(oColumns.AddColumn(nullptr), Error);
}

TEST(Columns, ValueTextDefaultAndSource) {
    Column oColumn("Rate", "", "", 5, 16, 4, 3, 1, 0, "", true, true);
    EXPECT_TRUE(oColumn.Value().IsEmpty());
    EXPECT_EQ(oColumn.Text(), "");
    oColumn.SetValue(0.25);
    EXPECT_EQ(oColumn.Text(), "0.25");  // plain text: no blank in front, a zero before the mark

    Column oWithDefault("N", "", "", 3, 10, 0, 3, 1, 0, "", true, true, std::int32_t{7});
    EXPECT_EQ(oWithDefault.Value(), Variant(std::int32_t{7}));

    oColumn.SetSource("field 4", 4);
    EXPECT_EQ(oColumn.Position(), 4);
    EXPECT_EQ(oColumn.Source(), "field 4");
}

TEST(Columns, LayoutTextForm) {
    Columns oColumns;
    AddNumeric(oColumns, "Yield");
    oColumns.Add("Name;x\\", "Shown name", "", 8, 254, 0, 8, 1, 16, "", false, true);
    EXPECT_EQ(oColumns.LayoutText("P:"),
              "P:Yield;5;16;4;3;1;12;1;1\r\n"
              "P:Name\\;x\\\\;8;254;0;8;1;16;0;1\r\n");
    EXPECT_EQ(Columns().LayoutText("P:"), "");
}

TEST(Columns, LayoutTextChangesWithEveryLayoutAttribute) {
    struct Spec {
        std::string sKey = "Yield";
        std::int32_t lType = 5;
        std::int16_t iSize = 16, iPrecision = 4;
        std::int32_t lFlags = 3, lKind = 1, lUnit = 12;
        bool bVisible = true, bActive = true;
    };
    auto layout = [](const Spec& t) {
        Columns oColumns;
        oColumns.Add(t.sKey, "", "", t.lType, t.iSize, t.iPrecision, t.lFlags, t.lKind, t.lUnit, "",
                     t.bVisible, t.bActive);
        AddNumeric(oColumns, "Other");
        return oColumns.LayoutText("");
    };
    const std::string sBase = layout(Spec{});
    // Name, description, tag, default and value are no part of the layout.
    {
        Columns oColumns;
        auto oColumn = oColumns.Add("Yield", "Name", "Description", 5, 16, 4, 3, 1, 12, "Tag", true,
                                    true, 1.5);
        oColumn->SetValue(3.0);
        AddNumeric(oColumns, "Other");
        EXPECT_EQ(oColumns.LayoutText(""), sBase);
    }
    std::vector<Spec> aChanged(10);
    aChanged[0].sKey = "yield";
    aChanged[1].lType = 4;
    aChanged[2].iSize = 15;
    aChanged[3].iPrecision = 3;
    aChanged[4].lFlags = 8;
    aChanged[5].lKind = 2;
    aChanged[6].lUnit = 13;
    aChanged[7].bVisible = false;
    aChanged[8].bActive = false;
    aChanged[9].sKey = "Yield;5";  // a key that mimics the separators
    for (std::size_t i = 0; i < aChanged.size(); ++i)
        EXPECT_NE(layout(aChanged[i]), sBase) << i;

    // Order counts.
    Columns oSwapped;
    AddNumeric(oSwapped, "Other");
    AddNumeric(oSwapped, "Yield");
    EXPECT_NE(oSwapped.LayoutText(""), sBase);
}

TEST(Columns, KeysCannotForgeAnotherLayout) {
    // One column whose key holds a whole second line, against two real columns.
    Columns oOne, oTwo;
    oOne.Add("A;5;16;4;3;1;12;1;1\r\nB", "", "", 5, 16, 4, 3, 1, 12, "", true, true);
    AddNumeric(oTwo, "A");
    AddNumeric(oTwo, "B");
    EXPECT_NE(oOne.LayoutText(""), oTwo.LayoutText(""));
}

TEST(Columns, ToXMLFormAndEscaping) {
    Column oColumn("A&B", "<x>", "say \"hi\" it's", 8, 254, 0, 8, 1, 16, "t\r\n", false, true,
                   "d<");
    oColumn.SetPosition(3);
    EXPECT_EQ(oColumn.ToXML("  "),
              "  <Column Key=\"A&amp;B\" Name=\"&lt;x&gt;\" Description=\"say &quot;hi&quot; "
              "it&apos;s\" Type=\"8\" Size=\"254\" Precision=\"0\" Flags=\"8\" Kind=\"1\" "
              "Unit=\"16\" Tag=\"t&#13;&#10;\" Visible=\"False\" Active=\"True\" "
              "Default=\"d&lt;\" Position=\"3\"/>\r\n");
    Column oPlain("Yield", "", "", 5, 16, 4, 3, 1, 12, "", true, true);
    EXPECT_EQ(oPlain.ToXML(""),
              "<Column Key=\"Yield\" Name=\"\" Description=\"\" Type=\"5\" Size=\"16\" "
              "Precision=\"4\" Flags=\"3\" Kind=\"1\" Unit=\"12\" Tag=\"\" Visible=\"True\" "
              "Active=\"True\" Position=\"0\"/>\r\n");
}

}  // namespace
}  // namespace tnw::standins
