#include "veld/Summary.h"

#include <limits>

#include "core/Error.h"

namespace tnw::standins {

namespace {

std::vector<double> InUnit(const std::vector<double>& aValues, std::int32_t lRecorded,
                           const std::shared_ptr<tnwUnit>& oUnit, bool bOption) {
    if (!bOption) return aValues;
    return Converted(aValues, lRecorded, UnitId(oUnit));
}

template <class TDef>
std::vector<std::shared_ptr<TDef>> DefsOf(const KeyedList<std::shared_ptr<QuantityDef>>& oDefs) {
    std::vector<std::shared_ptr<TDef>> vDefs;
    for (const auto& entry : oDefs)
        vDefs.push_back(entry.second);
    return vDefs;
}

bool AddDef(KeyedList<std::shared_ptr<QuantityDef>>& oDefs, std::shared_ptr<QuantityDef> oDef) {
    if (!oDef) Raise(errObjectNotSet, "VELDLib");
    const std::string sKey = oDef->Key();
    return oDefs.Add(sKey, std::move(oDef));
}

}  // namespace

std::vector<double> Series::Values(const std::shared_ptr<tnwUnit>& oUnit, bool bOption) {
    return InUnit(m_aValues, UnitId(m_oDefinition->Unit()), oUnit, bOption);
}

std::vector<double> RatioSeries::Values(const std::shared_ptr<tnwUnit>& oUnit,
                                        const std::shared_ptr<tnwUnit>& oSecondUnit, bool bOption) {
    if (!bOption) return m_aValues;
    // An amount per second unit: the amount converts forward, the per-unit backward.
    return Converted(Converted(m_aValues, UnitId(m_oDefinition->Unit()), UnitId(oUnit)),
                     UnitId(oSecondUnit), m_oSecondUnit->Id());
}

void TrackRegion::AddRecord(const TrackRecord& tRecord) {
    if (m_aEngaged.size() == static_cast<std::size_t>(std::numeric_limits<std::int32_t>::max()))
        Raise(errOverflow, "VELDLib");
    m_aPositions.push_back(tRecord.dX);
    m_aPositions.push_back(tRecord.dY);
    m_aElevations.push_back(tRecord.dElevation);
    m_aWidths.push_back(tRecord.dWidth);
    m_aDistances.push_back(tRecord.dDistance);
    m_aDurations.push_back(tRecord.dDuration);
    m_aUTC.push_back(tRecord.dUTC);
    m_aEngaged.push_back(tRecord.bEngaged);
    m_aMappable.push_back(tRecord.lMappable);
}

std::int32_t TrackRegion::RecordCount() const {
    return static_cast<std::int32_t>(m_aEngaged.size());
}

std::vector<double> TrackRegion::Durations(const std::shared_ptr<tnwUnit>& oUnit) {
    return InUnit(m_aDurations, m_tUnits.lDuration, oUnit, true);
}

std::vector<double> TrackRegion::Elevations(const std::shared_ptr<tnwUnit>& oUnit, bool bOption) {
    return InUnit(m_aElevations, m_tUnits.lElevation, oUnit, bOption);
}

std::vector<double> TrackRegion::Distances(const std::shared_ptr<tnwUnit>& oUnit, bool bOption) {
    return InUnit(m_aDistances, m_tUnits.lDistance, oUnit, bOption);
}

std::vector<double> TrackRegion::Widths(const std::shared_ptr<tnwUnit>& oUnit, bool bOption) {
    return InUnit(m_aWidths, m_tUnits.lWidth, oUnit, bOption);
}

void RegionList::Add(std::shared_ptr<VELDRegion> oRegion) {
    if (!oRegion) Raise(errObjectNotSet, "VELDLib");
    m_aItems.push_back(std::move(oRegion));
}

std::vector<std::shared_ptr<VELDRatioSeriesDef>> Summary::RatioSeriesDefs() const {
    return DefsOf<VELDRatioSeriesDef>(m_oRatioSeriesDefs);
}

std::vector<std::shared_ptr<VELDSeriesDef>> Summary::SeriesDefs() const {
    return DefsOf<VELDSeriesDef>(m_oSeriesDefs);
}

bool Summary::AddSeriesDef(std::shared_ptr<QuantityDef> oDef) {
    return AddDef(m_oSeriesDefs, std::move(oDef));
}

bool Summary::AddRatioSeriesDef(std::shared_ptr<QuantityDef> oDef) {
    return AddDef(m_oRatioSeriesDefs, std::move(oDef));
}

}  // namespace tnw::standins
