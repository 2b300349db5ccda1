// The unit lookup stand-in: the table in docs/units.md, forgiving spellings and the class mask.
#include <gtest/gtest.h>

#include <fstream>
#include <regex>
#include <set>
#include <string>
#include <vector>

#include "core/Component.h"
#include "core/GISLib.h"
#include "core/Services.h"
#include "uom/UnitLookup.h"

namespace tnw::test {
namespace {

TEST(UnitLookup, DocumentedTableSpellingsAndClasses) {
    standins::RegisterUnitLookup();
    const auto oUnits = CreateAs<tnwUOMFactory>(kProgIdUOMFactory, "Missing Component");
    const auto Find = [&](const std::string& sText) { return oUnits->FindUnit(sText, 15); };

    // Every row of the table ("| id | `text` | ...") is what the lookup gives, each id once.
    std::ifstream in(std::string(TNW_SOURCE_DIR) + "/docs/units.md");
    ASSERT_TRUE(in) << "docs/units.md";
    const std::regex rRow(R"(^\| (\d+) \| `([^`]+)` \|)");
    std::set<std::int32_t> vIds;
    for (std::string sLine; std::getline(in, sLine);) {
        std::smatch m;
        if (!std::regex_search(sLine, m, rRow)) continue;
        const std::int32_t lId = std::stoi(m[1]);
        EXPECT_NE(lId, 16) << "16 is the unit of text columns";
        EXPECT_TRUE(vIds.insert(lId).second) << "id " << lId << " listed twice";
        EXPECT_EQ(Find(m[2]), lId) << m[2];
    }
    EXPECT_GT(vIds.size(), 80u);

    const std::vector<std::vector<std::string>> vSpellings = {
        {"bu/ac", "BU/AC", "bu / ac", "Bu/Acre", "bushels per acre", "bpa", "bu./ac.", "bu/a"},
        {"%", "pct", "Percent", " % "},
        {"deg", "\xC2\xB0", "degrees", "Deg"},
        {"m2", "m^2", "m\xC2\xB2", "sqm"}};
    for (const auto& vGroup : vSpellings)
        for (const std::string& sText : vGroup)
            EXPECT_EQ(Find(sText), Find(vGroup[0])) << sText;
    for (const char* sText : {"", "furlongs", "bu/ac/ha", "wet", "bu/", "/ac", "per"})
        EXPECT_EQ(Find(sText), 0) << sText;

    // The class is a mask of families: 1 rates, 2 measures, 4 ratios, 8 the rest.
    EXPECT_NE(oUnits->FindUnit("bu/ac", 1), 0);
    EXPECT_EQ(oUnits->FindUnit("bu/ac", 2 | 4 | 8), 0);
    EXPECT_NE(oUnits->FindUnit("ft", 2), 0);
    EXPECT_EQ(oUnits->FindUnit("s", 7), 0);
}

}  // namespace
}  // namespace tnw::test
