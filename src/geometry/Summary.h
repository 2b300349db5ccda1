// The region work of the summary export: the output columns a summary needs, one region's
// per-record arrays read once, and the column values of one record. tnwShapeEncoder's
// ExportVELDSummary drives these and writes the records; they raise on failure and leave the
// reporting to it.
#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>
#include <vector>

#include "core/GISLib.h"
#include "core/KeyedList.h"
#include "core/VELDLib.h"

namespace tnw::detail {

// The output columns, with the seven fixed ones kept by name.
struct SummaryColumns {
    std::shared_ptr<tnwColumns> oColumns;
    std::shared_ptr<tnwColumn> oElevation, oWidth, oDistance, oDuration, oUTC, oEngaged, oMappable;
};

// A new column list from "tnwGIS.tnwColumns": the seven fixed columns, then a column for each
// one-unit quantity that some region carries, then one for each such two-unit quantity, each
// group in definition order.
SummaryColumns BuildSummaryColumns(const VELDSummary& oSummary);

// Sets every numeric column (Flags 3) to the whole number 0, so that no value of a region
// carries over into the next.
void ClearSummaryValues(const SummaryColumns& tColumns);

// One region's arrays, in the units of the columns; the series' arrays under their keys.
struct RegionArrays {
    std::vector<double> aPositions, aElevations, aWidths, aDistances, aDurations, aUTC;
    std::vector<bool> aEngaged;
    std::vector<std::int32_t> aMappable;
    KeyedList<std::vector<double>> cRatioValues, cSeriesValues;
};

// Reads every array of the region once, with its ExportSwitch False during the reads and put
// back after them. A failure leaves the switch False. Two series of one key: error 457.
RegionArrays ReadRegion(const VELDRegion& oRegion, VELDTrackRegion& oTrack,
                        const SummaryColumns& tColumns);

// Sets the columns to record i's values: the fixed columns, then the region's one-unit and
// two-unit series, each found by its quantity's name. An array too short for i: error 9; a
// quantity with no column: error 91.
void SetRecordValues(const VELDRegion& oRegion, const RegionArrays& tArrays,
                     const SummaryColumns& tColumns, std::size_t i);

}  // namespace tnw::detail
