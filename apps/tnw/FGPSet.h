// FGP sets in the tool: the opener and the writer of the kind's row.
#pragma once

#include <memory>

#include "Input.h"
#include "Writers.h"

namespace tnw::cli {

// Opens the set with its side tables: regions, lines (whole, or each vertex a point with
// --as-sites) and loose points, or only the kind --phase names. A point's own values
// (longitude, latitude, altitude, time, heading, region and attribute row) are columns, and a
// point without its side-table rows gets empty values, not another point's.
void OpenFGP(const InputOptions& tOptions, Input& tInput);

// Writes records as an FGP set: points as loose points, lines as lines, each ring of a polygon
// as a region. The input's sample columns (Rate or Rate_Act, Rx_Rate or Rate_Rx, Swath_Width or
// Swath, P_PARAM, V_PARAM, NDVI, VI_2ND) go to the .fsn table, its other visible columns to the
// .fdt table, one row per record.
std::unique_ptr<RecordWriter> NewFGPSetWriter();

}  // namespace tnw::cli
