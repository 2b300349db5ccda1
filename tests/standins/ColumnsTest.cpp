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
    EXPECT_EQ(oYield->Position(), 1);
    EXPECT_EQ(AddNumeric(oColumns, "Moisture")->Position(), 2);
    // The same key in another case: nothing, no error, nothing changed.
    EXPECT_EQ(AddNumeric(oColumns, "YIELD"), nullptr);
    EXPECT_EQ(oColumns.Count(), 2);
    EXPECT_EQ(AddNumeric(oColumns, "Speed")->Position(), 3);
    EXPECT_EQ(oColumns.Item("yield"), oYield);
    EXPECT_EQ(oColumns.Item("Nothing"), nullptr);
    EXPECT_EQ(oColumns.Items()[2]->Key(), "Speed");
    oColumns.Clear();
    EXPECT_EQ(AddNumeric(oColumns, "Yield")->Position(), 1);

    // AddColumn keeps the column as it is, position included.
    auto oOwn = std::make_shared<Column>("B", "", "", 8, 254, 0, 8, 1, 16, "", true, true);
    oOwn->SetPosition(9);
    EXPECT_TRUE(oColumns.AddColumn(oOwn));
    EXPECT_EQ(oColumns.Item("b"), oOwn);
    EXPECT_EQ(oOwn->Position(), 9);
    EXPECT_FALSE(oColumns.AddColumn(
        std::make_shared<Column>("yield", "", "", 8, 1, 0, 8, 1, 0, "", true, true)));
    EXPECT_EQ(oColumns.Count(), 2);
    EXPECT_THROW(oColumns.AddColumn(nullptr), Error);

    Column oRate("Rate", "", "", 5, 16, 4, 3, 1, 0, "", true, true);
    oRate.SetValue(0.25);
    EXPECT_EQ(oRate.Text(), "0.25");  // plain text: no blank in front, a zero before the mark
    oRate.SetSource("field 4", 4);
    EXPECT_EQ(oRate.Position(), 4);
}

TEST(Columns, LayoutText) {
    Columns oColumns;
    AddNumeric(oColumns, "Yield");
    oColumns.Add("Name;x\\", "Shown name", "", 8, 254, 0, 8, 1, 16, "", false, true);
    EXPECT_EQ(oColumns.LayoutText("P:"),
              "P:Yield;5;16;4;3;1;12;1;1\r\n"
              "P:Name\\;x\\\\;8;254;0;8;1;16;0;1\r\n");
    EXPECT_EQ(Columns().LayoutText("P:"), "");

    // A key holding a whole second line can't forge two real columns.
    Columns oOne, oTwo;
    oOne.Add("A;5;16;4;3;1;12;1;1\r\nB", "", "", 5, 16, 4, 3, 1, 12, "", true, true);
    AddNumeric(oTwo, "A");
    AddNumeric(oTwo, "B");
    EXPECT_NE(oOne.LayoutText(""), oTwo.LayoutText(""));
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
    Columns oOthers;
    oOthers.Add("Yield", "Name", "Description", 5, 16, 4, 3, 1, 12, "Tag", true, true, 1.5)
        ->SetValue(3.0);
    AddNumeric(oOthers, "Other");
    EXPECT_EQ(oOthers.LayoutText(""), sBase);

    const Spec aChanged[] = {{.sKey = "yield"},  {.lType = 4},        {.iSize = 15},
                             {.iPrecision = 3},  {.lFlags = 8},       {.lKind = 2},
                             {.lUnit = 13},      {.bVisible = false}, {.bActive = false},
                             {.sKey = "Yield;5"}};  // the last mimics the separators
    for (const Spec& t : aChanged)
        EXPECT_NE(layout(t), sBase) << &t - aChanged;

    Columns oSwapped;  // order counts
    AddNumeric(oSwapped, "Other");
    AddNumeric(oSwapped, "Yield");
    EXPECT_NE(oSwapped.LayoutText(""), sBase);
}

TEST(Columns, ToXMLEscapesEveryAttribute) {
    Column oColumn("A&B", "<x>", "say \"hi\" it's", 8, 254, 0, 8, 1, 16, "t\r\n", false, true,
                   "d<");
    oColumn.SetPosition(3);
    EXPECT_EQ(oColumn.ToXML("  "),
              "  <Column Key=\"A&amp;B\" Name=\"&lt;x&gt;\" Description=\"say &quot;hi&quot; "
              "it&apos;s\" Type=\"8\" Size=\"254\" Precision=\"0\" Flags=\"8\" Kind=\"1\" "
              "Unit=\"16\" Tag=\"t&#13;&#10;\" Visible=\"False\" Active=\"True\" "
              "Default=\"d&lt;\" Position=\"3\"/>\r\n");
}

}  // namespace
}  // namespace tnw::standins
