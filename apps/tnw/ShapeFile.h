// A small reader of the records of a .shp file, and the geometry of each record as the
// simple-features objects a record source gives. Every length and count in the file is checked
// against the bytes that are really there before anything is read or sized from it, so a damaged
// file gives a clear failure, never a crash or a huge allocation.
#pragma once

#include <cstdint>
#include <memory>
#include <string>
#include <vector>

#include "core/Geometry.h"
#include "platform/File.h"

namespace tnw::cli {

struct XY {
    double dX = 0.0;
    double dY = 0.0;
};

// One record's geometry in drawing terms. Points: one part per point. Lines and polygons: one
// part per ring or line. A null shape has no parts.
struct Shape {
    enum class Kind { None, Point, Line, Polygon };
    Kind eKind = Kind::None;
    std::vector<std::vector<XY>> vParts;
};

class ShapeFileReader {
public:
    // Opens the file and reads its header. Failure kExitInput when it is missing, too short or
    // not a shapefile.
    explicit ShapeFileReader(const std::string& sPath);

    std::int32_t ShapeType() const { return m_lShapeType; }
    // The next record into tShape; false at the end of the file. Failure kExitInput for a
    // record that does not fit its file.
    bool Next(Shape& tShape);
    // Share of the file read so far, 0 to 100.
    double PercentRead() const;

private:
    void Parse(std::int32_t lRecord, Shape& tShape) const;

    std::string m_sPath;
    platform::InputFile m_oFile;
    std::int64_t m_lLength = 0;
    std::int64_t m_lPosition = 0;
    std::int32_t m_lShapeType = 0;
    std::int32_t m_lRecord = 0;
    std::vector<unsigned char> m_vContent;
};

// The geometry of each record of a .shp, by 1-based record number, as stored: a point, a
// multipoint, a line string or multi-line string of the parts, a polygon or multi-polygon. The
// rings of a polygon record are sorted as the format means them: a clockwise ring is an outer
// ring, a counter-clockwise one a hole of the smallest outer ring that holds its first vertex
// (an outer ring itself when none does); a record of one ring is a polygon of that ring. Null
// shapes give nothing. The whole file is read through once when it is opened, so that damage
// shows before anything is written from it. Records are then read forward; asking for an
// earlier one reads the file again from the top.
class ShapeGeometryReader {
public:
    // Failure kExitInput for a file that is not a shapefile or has a damaged record.
    explicit ShapeGeometryReader(std::string sPath);
    std::int64_t RecordCount() const { return m_lCount; }
    // Nothing past the last record. Failure kExitInput when the file changed since it was
    // opened and no longer reads.
    std::shared_ptr<IGeometry> Record(std::int64_t lRecord);
    // The tnwGeometryType of the file's shape type; 0 for null shapes only.
    std::int32_t GeometryType() const;

private:
    std::string m_sPath;
    std::unique_ptr<ShapeFileReader> m_pReader;
    std::int64_t m_lRead = 0;  // records read by m_pReader
    std::int64_t m_lCount = 0;
};

std::shared_ptr<IGeometry> GeometryOf(const Shape& tShape, std::int32_t lShapeType);

}  // namespace tnw::cli
