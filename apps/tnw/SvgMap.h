// An SVG map of records: one mark per record with a shape (a circle for a point, a path for a
// multipoint, line or polygon), coloured by a column's value with a legend.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "ShapeFile.h"

namespace tnw::cli {

struct MapValue {
    enum class Kind { None, Number, Text };
    Kind eKind = Kind::None;
    double dNumber = 0.0;
    std::string sText;
};

struct MapData {
    std::string sTitle;   // the heading, e.g. the input's name
    std::string sColumn;  // the colouring column; "" for one colour and no legend
    std::vector<Shape> vShapes;
    std::vector<MapValue> vValues;  // one per shape, when a column is given
};

// What was drawn.
struct MapStats {
    std::int64_t lMarks = 0;
    bool bScale = false;  // numbers on a colour scale, else a colour per text
    double dMin = 0.0;
    double dMax = 0.0;
    std::int64_t lCategories = 0;
};

// Makes the whole SVG text. Degrees (an extent inside -180..180, -90..90) are drawn with the
// x axis shrunk by the cosine of the middle latitude, so that the field keeps its shape.
std::string MakeSvgMap(const MapData& tMap, std::int32_t lWidth, MapStats& tStats);

}  // namespace tnw::cli
