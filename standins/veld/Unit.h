// The stand-in unit object, and conversion between the units of one kind (length, time, area,
// mass, volume). Unit numbers are those of the column library: the unit ids of the lookup
// (docs/units.md) and the numbers of the summary's fixed columns, 257 inch, 513 foot and
// 277 second; 16 is no unit.
#pragma once

#include <cstdint>
#include <memory>
#include <vector>

#include "core/GISLib.h"

namespace tnw::standins {

class Unit final : public tnwUnit {
public:
    explicit Unit(std::int32_t lId) : m_lId(lId) {}
    std::int32_t Id() const { return m_lId; }
    // Kept for whoever set it; it changes no conversion.
    std::int32_t UnitOption() const { return m_lUnitOption; }
    void SetUnitOption(std::int32_t lUnitOption) override { m_lUnitOption = lUnitOption; }

private:
    std::int32_t m_lId;
    std::int32_t m_lUnitOption = 0;
};

// The id of a unit object: error 91 for nothing, 13 for a unit that is not a stand-in Unit.
std::int32_t UnitId(const std::shared_ptr<tnwUnit>& oUnit);

// aValues, recorded in lFrom, in lTo; as they are for equal ids. Error 5 when the two are not
// units of one kind.
std::vector<double> Converted(std::vector<double> aValues, std::int32_t lFrom, std::int32_t lTo);

}  // namespace tnw::standins
