#include "veld/Unit.h"

#include <array>
#include <string>

#include "core/Error.h"

namespace tnw::standins {

namespace {

enum class Kind { Length, Time, Area, Mass, Volume };

struct Scale {
    std::int32_t lId;
    Kind eKind;
    double dInBase;  // metres, seconds, square metres, kilograms, cubic metres
};

constexpr std::array kScales{
    Scale{257, Kind::Length, 0.0254},
    Scale{513, Kind::Length, 0.3048},
    Scale{401, Kind::Length, 1.0},
    Scale{402, Kind::Length, 0.01},
    Scale{403, Kind::Length, 0.001},
    Scale{404, Kind::Length, 1000.0},
    Scale{405, Kind::Length, 0.3048},
    Scale{406, Kind::Length, 0.0254},
    Scale{407, Kind::Length, 0.9144},
    Scale{408, Kind::Length, 1609.344},
    Scale{277, Kind::Time, 1.0},
    Scale{911, Kind::Time, 1.0},
    Scale{912, Kind::Time, 60.0},
    Scale{913, Kind::Time, 3600.0},
    Scale{451, Kind::Area, 4046.8564224},
    Scale{452, Kind::Area, 10000.0},
    Scale{453, Kind::Area, 1.0},
    Scale{454, Kind::Area, 0.09290304},
    Scale{601, Kind::Mass, 1.0},
    Scale{602, Kind::Mass, 1000.0},
    Scale{603, Kind::Mass, 0.45359237},
    Scale{605, Kind::Mass, 0.001},
    Scale{606, Kind::Mass, 907.18474},
    Scale{607, Kind::Mass, 0.028349523125},
    Scale{651, Kind::Volume, 0.001},
    Scale{652, Kind::Volume, 0.003785411784},
    Scale{653, Kind::Volume, 1.0},
    Scale{654, Kind::Volume, 1e-6},
    Scale{655, Kind::Volume, 2.95735295625e-5},
    Scale{656, Kind::Volume, 4.73176473e-4},
    Scale{657, Kind::Volume, 9.46352946e-4},
};

const Scale* ScaleOf(std::int32_t lId) {
    for (const Scale& tScale : kScales)
        if (tScale.lId == lId) return &tScale;
    return nullptr;
}

}  // namespace

std::int32_t UnitId(const std::shared_ptr<tnwUnit>& oUnit) {
    if (!oUnit) Raise(errObjectNotSet, "VELDLib");
    const auto* pUnit = dynamic_cast<const Unit*>(oUnit.get());
    if (!pUnit) Raise(errTypeMismatch, "VELDLib");
    return pUnit->Id();
}

std::vector<double> Converted(std::vector<double> aValues, std::int32_t lFrom, std::int32_t lTo) {
    if (lFrom == lTo) return aValues;
    const Scale* pFrom = ScaleOf(lFrom);
    const Scale* pTo = ScaleOf(lTo);
    if (!pFrom || !pTo || pFrom->eKind != pTo->eKind)
        throw Error(
            errInvalidCall, "VELDLib",
            "No conversion from unit " + std::to_string(lFrom) + " to unit " + std::to_string(lTo));
    // Through the base unit, in this order, so that a value that is whole in both stays whole.
    for (double& dValue : aValues)
        dValue = dValue * pFrom->dInBase / pTo->dInBase;
    return aValues;
}

}  // namespace tnw::standins
