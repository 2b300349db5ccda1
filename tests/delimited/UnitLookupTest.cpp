// The unit lookup stand-in: forgiving spellings, distinct ids, the class mask and the table
// in docs/units.md.
#include <gtest/gtest.h>

#include <fstream>
#include <map>
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

class UnitLookupTest : public ::testing::Test {
protected:
    UnitLookupTest() {
        standins::RegisterUnitLookup();
        oUnits = CreateAs<tnwUOMFactory>(kProgIdUOMFactory, "Missing Component");
    }
    std::int32_t Find(const std::string& sText) { return oUnits->FindUnit(sText, 15); }

    std::shared_ptr<tnwUOMFactory> oUnits;
};

TEST_F(UnitLookupTest, SpellingsOfOneUnitShareItsId) {
    const std::vector<std::vector<std::string>> vGroups = {
        {"bu/ac", "BU/AC", "bu / ac", "Bu/Acre", "bushels per acre", "bpa", "bu./ac.", "bu/a"},
        {"t/ha", "T/ha", "tonnes/hectare", "Mt/Ha", "tonne per ha"},
        {"kg/ha", "KG / HA", "kilograms per hectare", "kgs/ha"},
        {"lb/ac", "lbs/ac", "Lb/A", "pounds per acre", "LBS/ACRE"},
        {"gal/ac", "GPA", "gal/acre", "gallons per acre", "Gal / Ac"},
        {"l/ha", "L/ha", "litres/hectare", "liters per hectare", "lt/ha"},
        {"seeds/ac", "Seeds/Acre", "sds/ac", "seed per acre"},
        {"kseeds/ac", "ksds/ac", "Kseeds/Acre"},
        {"%", "pct", "Percent", " % "},
        {"deg", "\xC2\xB0", "degrees", "Deg"},
        {"s", "sec", "Seconds", "secs"},
        {"mph", "mi/h", "MPH", "miles per hour", "mi/hr"},
        {"km/h", "kph", "km/hr", "KMH"},
        {"m", "meters", "Metre", "M"},
        {"ft", "feet", "Foot"},
        {"in", "inches", "Inch"},
        {"m2", "m^2", "m\xC2\xB2", "sqm"},
        {"degc",
         "\xC2\xB0"
         "C",
         "celsius"},
    };
    std::set<std::int32_t> vIds;
    for (const auto& vGroup : vGroups) {
        const std::int32_t lId = Find(vGroup[0]);
        EXPECT_NE(lId, 0) << vGroup[0];
        EXPECT_NE(lId, 16) << vGroup[0];  // 16 is the unit of text columns
        for (const std::string& sText : vGroup)
            EXPECT_EQ(Find(sText), lId) << sText;
        EXPECT_TRUE(vIds.insert(lId).second) << vGroup[0] << " shares an id";
    }
}

TEST_F(UnitLookupTest, UnknownTextsGiveZero) {
    for (const char* sText : {"", "furlongs", "bu/ac/ha", "wet", "bu/", "/ac", "per"}) {
        EXPECT_EQ(Find(sText), 0) << sText;
    }
}

TEST_F(UnitLookupTest, ClassIsAMaskOfFamilies) {
    EXPECT_NE(oUnits->FindUnit("bu/ac", 1), 0);
    EXPECT_EQ(oUnits->FindUnit("bu/ac", 2 | 4 | 8), 0);
    EXPECT_NE(oUnits->FindUnit("ft", 2), 0);
    EXPECT_EQ(oUnits->FindUnit("ft", 1), 0);
    EXPECT_NE(oUnits->FindUnit("%", 4), 0);
    EXPECT_NE(oUnits->FindUnit("s", 8), 0);
    EXPECT_EQ(oUnits->FindUnit("s", 7), 0);
}

// Every row of the table in docs/units.md ("| id | text | ...") is what the lookup gives.
TEST_F(UnitLookupTest, DocumentedTableMatches) {
    std::ifstream in(std::string(TNW_SOURCE_DIR) + "/docs/units.md");
    ASSERT_TRUE(in) << "docs/units.md";
    const std::regex rRow(R"(^\| (\d+) \| `([^`]+)` \|)");
    std::map<std::int32_t, std::string> mRows;
    std::string sLine;
    while (std::getline(in, sLine)) {
        std::smatch m;
        if (!std::regex_search(sLine, m, rRow)) continue;
        const std::int32_t lId = std::stoi(m[1]);
        EXPECT_TRUE(mRows.emplace(lId, m[2]).second) << "id " << lId << " listed twice";
        EXPECT_EQ(Find(m[2]), lId) << m[2];
    }
    EXPECT_GT(mRows.size(), 80u);
}

}  // namespace
}  // namespace tnw::test
