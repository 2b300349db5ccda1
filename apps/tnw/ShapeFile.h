// A small reader of the records of a .shp file, for drawing them. Every length and count in the
// file is checked against the bytes that are really there before anything is read or sized
// from it, so a damaged file gives a clear failure, never a crash or a huge allocation.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

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

}  // namespace tnw::cli
