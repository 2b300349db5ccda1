#include "geometry/Summary.h"

#include <string>
#include <utility>

#include "core/Error.h"

namespace tnw::detail {

namespace {

// Set on the unit of a two-unit quantity before its values are read.
constexpr std::int32_t kRatioUnitOption = 4;

template <class T>
T& Need(const std::shared_ptr<T>& oObject) {
    if (!oObject) Raise(errObjectNotSet);
    return *oObject;
}

template <class T>
T ElementAt(const std::vector<T>& aValues, std::size_t i) {
    if (i >= aValues.size()) Raise(errSubscript);
    return aValues[i];
}

std::shared_ptr<tnwColumn> AddSummaryColumn(tnwColumns& oColumns, const std::string& sKey,
                                            std::int32_t lType, std::int16_t iSize,
                                            std::int16_t iPrecision, std::int32_t lFlags,
                                            std::int32_t lUnit) {
    return oColumns.Add(sKey, "", "", lType, iSize, iPrecision, lFlags, 1, lUnit, "", true, true);
}

// A column for each definition that some region carries, at the first region that does.
template <class TDef, class TListOf>
void AddCarriedColumns(tnwColumns& oColumns, const std::vector<std::shared_ptr<TDef>>& vDefs,
                       const VELDRegionList& oRegions, TListOf fnListOf, std::int16_t iSize) {
    for (const auto& oDef : vDefs) {
        const std::string& sKey = Need(oDef).Key();
        for (const auto& oRegion : oRegions.Items()) {
            if (!Need(fnListOf(Need(oRegion))).Item(sKey)) continue;
            AddSummaryColumn(oColumns, oDef->Name(), vtDouble, iSize, 4, tnwFlagNumeric, 16);
            break;
        }
    }
}

void AddValues(KeyedList<std::vector<double>>& cValues, const std::string& sKey,
               std::vector<double> aValues) {
    if (!cValues.Add(sKey, std::move(aValues))) Raise(errKeyExists);
}

// Sets the columns of a region's series to element i of their arrays.
template <class TSeries>
void SetSeriesValues(const VELDList<TSeries>& oList, const KeyedList<std::vector<double>>& cValues,
                     const tnwColumns& oColumns, std::size_t i) {
    for (const auto& oSeries : oList.Items()) {
        const auto oColumn = oColumns.Item(Need(Need(oSeries).Definition()).Name());
        const std::vector<double>* pValues = cValues.Find(oSeries->Key());
        if (!pValues) Raise(errSubscript);
        Need(oColumn).SetValue(ElementAt(*pValues, i));
    }
}

}  // namespace

SummaryColumns BuildSummaryColumns(const VELDSummary& oSummary) {
    SummaryColumns tColumns;
    tColumns.oColumns = CreateAs<tnwColumns>(kProgIdColumns, "Missing Component");
    tnwColumns& oColumns = Need(tColumns.oColumns);
    tColumns.oElevation = AddSummaryColumn(oColumns, "Elevation", vtDouble, 6, 1, 3, 513);
    tColumns.oWidth = AddSummaryColumn(oColumns, "Width", vtDouble, 4, 0, 3, 257);
    tColumns.oDistance = AddSummaryColumn(oColumns, "Distance", vtDouble, 4, 0, 3, 257);
    tColumns.oDuration = AddSummaryColumn(oColumns, "Duration", vtDouble, 3, 0, 3, 277);
    tColumns.oUTC = AddSummaryColumn(oColumns, "UTC", vtDouble, 10, 0, 3, 16);
    tColumns.oEngaged = AddSummaryColumn(oColumns, "Engaged", vtBoolean, 6, 0, 4, 16);
    tColumns.oMappable = AddSummaryColumn(oColumns, "Mappable", vtInt32, 4, 0, 4, 16);

    const auto oRegions = oSummary.Regions();
    const auto vSeriesDefs = oSummary.SeriesDefs();
    AddCarriedColumns(
        oColumns, vSeriesDefs, Need(oRegions),
        [](const VELDRegion& oRegion) { return oRegion.Series(); }, 12);
    const auto vRatioSeriesDefs = oSummary.RatioSeriesDefs();
    AddCarriedColumns(
        oColumns, vRatioSeriesDefs, *oRegions,
        [](const VELDRegion& oRegion) { return oRegion.RatioSeries(); }, 10);
    return tColumns;
}

void ClearSummaryValues(const SummaryColumns& tColumns) {
    for (const auto& oColumn : Need(tColumns.oColumns).Items())
        if (Need(oColumn).Flags() == tnwFlagNumeric) oColumn->SetValue(std::int32_t{0});
}

RegionArrays ReadRegion(const VELDRegion& oRegion, VELDTrackRegion& oTrack,
                        const SummaryColumns& tColumns) {
    RegionArrays tArrays;
    const bool bSwitch = oTrack.ExportSwitch();
    oTrack.SetExportSwitch(false);
    tArrays.aPositions = oTrack.Positions(0.0, 0.0, 0, 0);
    tArrays.aElevations = oTrack.Elevations(Need(tColumns.oElevation).UnitObject(), true);
    tArrays.aWidths = oTrack.Widths(Need(tColumns.oWidth).UnitObject(), true);
    tArrays.aDistances = oTrack.Distances(Need(tColumns.oDistance).UnitObject(), true);
    tArrays.aDurations = oTrack.Durations(Need(tColumns.oDuration).UnitObject());
    tArrays.aUTC = oTrack.UTCTimes();
    tArrays.aEngaged = oTrack.Engaged();
    tArrays.aMappable = oTrack.Mappable();
    for (const auto& oSeries : Need(oRegion.RatioSeries()).Items()) {
        const auto oUnit = Need(Need(oSeries).Definition()).Unit();
        Need(oUnit).SetUnitOption(kRatioUnitOption);
        auto& oValues = Need(std::dynamic_pointer_cast<VELDRatioValues>(oSeries));
        AddValues(tArrays.cRatioValues, oSeries->Key(),
                  oValues.Values(oUnit, oValues.SecondUnit(), true));
    }
    for (const auto& oSeries : Need(oRegion.Series()).Items()) {
        AddValues(tArrays.cSeriesValues, Need(oSeries).Key(),
                  oSeries->Values(Need(oSeries->Definition()).Unit(), true));
    }
    oTrack.SetExportSwitch(bSwitch);
    return tArrays;
}

void SetRecordValues(const VELDRegion& oRegion, const RegionArrays& tArrays,
                     const SummaryColumns& tColumns, std::size_t i) {
    Need(tColumns.oElevation).SetValue(ElementAt(tArrays.aElevations, i));
    Need(tColumns.oWidth).SetValue(ElementAt(tArrays.aWidths, i));
    Need(tColumns.oDistance).SetValue(ElementAt(tArrays.aDistances, i));
    Need(tColumns.oDuration).SetValue(ElementAt(tArrays.aDurations, i));
    Need(tColumns.oUTC).SetValue(ElementAt(tArrays.aUTC, i));
    Need(tColumns.oEngaged).SetValue(ElementAt(tArrays.aEngaged, i));
    Need(tColumns.oMappable).SetValue(ElementAt(tArrays.aMappable, i));
    const tnwColumns& oColumns = *tColumns.oColumns;
    SetSeriesValues(Need(oRegion.Series()), tArrays.cSeriesValues, oColumns, i);
    SetSeriesValues(Need(oRegion.RatioSeries()), tArrays.cRatioValues, oColumns, i);
}

}  // namespace tnw::detail
