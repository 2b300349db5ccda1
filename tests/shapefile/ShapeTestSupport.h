// Helpers for the shapefile tests: columns, geometry, byte reading, and the two outside oracles
// (the shapefile checker and a GDAL read-back).
#pragma once

#include <cstdint>
#include <memory>
#include <string>
#include <vector>

#include "core/Component.h"
#include "core/GISLib.h"
#include "ogc_sf/Geometries.h"
#include "platform/ByteOrder.h"
#include "support/TestSupport.h"

namespace tnw::test {

inline std::shared_ptr<IGeometry> MakePoint(double x, double y) {
    return standins::Point::Create(x, y);
}

inline std::shared_ptr<IGeometry> MakePolygon(
    const std::vector<std::vector<standins::Coordinate>>& vRings) {
    return std::make_shared<standins::Polygon>(vRings);
}

// Fields of a file read back.
inline const unsigned char* At(const std::string& s, std::size_t n) {
    return reinterpret_cast<const unsigned char*>(s.data() + n);
}
inline std::int32_t BigLong(const std::string& s, std::size_t n) {
    return static_cast<std::int32_t>(platform::GetBE32(At(s, n)));
}
inline std::int32_t LittleLong(const std::string& s, std::size_t n) {
    return static_cast<std::int32_t>(platform::GetLE32(At(s, n)));
}
inline std::int32_t LittleShort(const std::string& s, std::size_t n) {
    return static_cast<std::int16_t>(platform::GetLE16(At(s, n)));
}
inline double LittleDouble(const std::string& s, std::size_t n) {
    return platform::GetLEDouble(At(s, n));
}

// A progress callback that notes each call as "Name(bar,argument)".
class RecordingCallback final : public tnwGISCallback {
public:
    std::vector<std::string> vCalls;
    void SetBarCount(std::int32_t l) override { Note("SetBarCount", l); }
    void SetBarText(std::int32_t l, const std::string& s) override { Note("SetBarText", l, s); }
    void SetBarRange(std::int32_t l, double d0, double d1) override {
        Note("SetBarRange", l, Num(d0) + "," + Num(d1));
    }
    void SetBarValue(std::int32_t l, double d) override { Note("SetBarValue", l, Num(d)); }
    void ClearBarText(std::int32_t l) override { Note("ClearBarText", l); }
    void ResetBar(std::int32_t l) override { Note("ResetBar", l); }

private:
    static std::string Num(double d) { return std::to_string(d); }
    void Note(const char* sCall, std::int32_t l, const std::string& s = "-") {
        vCalls.push_back(std::string(sCall) + "(" + std::to_string(l) + "," + s + ")");
    }
};

// GDAL's reading of a set (with the system Python, which has the GDAL bindings): a line of field
// definitions, then a line per feature with its geometry and the Python repr of each field, then
// any message GDAL gave.
inline CommandResult GdalDump(const std::string& sPath) {
    return RunCommand("/usr/bin/python3 " TNW_OGR_DUMP " '" + sPath + "'");
}

}  // namespace tnw::test
