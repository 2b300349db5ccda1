// Helpers for the shapefile tests: columns, geometry, byte reading, and the two outside oracles
// (the shapefile checker and a GDAL read-back).
#pragma once

#include <bit>
#include <cstdint>
#include <cstdio>
#include <cstring>
#include <memory>
#include <string>
#include <vector>

#include "core/Component.h"
#include "core/GISLib.h"
#include "ogc_sf/Geometries.h"
#include "support/TestSupport.h"

namespace tnw::test {

inline std::shared_ptr<tnwColumns> NewColumns() {
    return CreateAs<tnwColumns>(kProgIdColumns, "Missing Component");
}

// A column as hosts add them: empty texts, kind 1.
inline std::shared_ptr<tnwColumn> AddColumn(tnwColumns& oColumns, const std::string& sKey,
                                            std::int32_t lType, std::int16_t iSize,
                                            std::int16_t iPrecision = 0, bool bVisible = true,
                                            const std::string& sName = "") {
    return oColumns.Add(sKey, sName, "", lType, iSize, iPrecision, 0, 1, 0, "", bVisible, true);
}

inline std::shared_ptr<IGeometry> MakePoint(double x, double y) {
    return standins::Point::Create(x, y);
}

inline std::shared_ptr<IGeometry> MakeMultiPoint(const std::vector<standins::Coordinate>& vXY) {
    std::vector<std::shared_ptr<IPoint>> vPoints;
    for (const auto& t : vXY)
        vPoints.push_back(standins::Point::Create(t.dX, t.dY));
    return std::make_shared<standins::MultiPoint>(std::move(vPoints));
}

inline std::shared_ptr<IGeometry> MakePolygon(
    const std::vector<std::vector<standins::Coordinate>>& vRings) {
    return std::make_shared<standins::Polygon>(vRings);
}

// Fields of a file read back.
inline std::int32_t BigLong(const std::string& s, std::size_t n) {
    const auto* p = reinterpret_cast<const unsigned char*>(s.data() + n);
    return static_cast<std::int32_t>(std::uint32_t{p[0]} << 24 | std::uint32_t{p[1]} << 16 |
                                     std::uint32_t{p[2]} << 8 | std::uint32_t{p[3]});
}
inline std::int32_t LittleLong(const std::string& s, std::size_t n) {
    const auto* p = reinterpret_cast<const unsigned char*>(s.data() + n);
    return static_cast<std::int32_t>(std::uint32_t{p[3]} << 24 | std::uint32_t{p[2]} << 16 |
                                     std::uint32_t{p[1]} << 8 | std::uint32_t{p[0]});
}
inline std::int32_t LittleShort(const std::string& s, std::size_t n) {
    const auto* p = reinterpret_cast<const unsigned char*>(s.data() + n);
    return static_cast<std::int16_t>(p[0] | p[1] << 8);
}
inline double LittleDouble(const std::string& s, std::size_t n) {
    std::uint64_t u = 0;
    for (int i = 7; i >= 0; --i)
        u = u << 8 | static_cast<unsigned char>(s[n + i]);
    return std::bit_cast<double>(u);
}

// Runs a command; gives its exit status and what it printed.
struct CommandResult {
    int iStatus = -1;
    std::string sOutput;
};
inline CommandResult RunCommand(const std::string& sCommand) {
    CommandResult tResult;
    FILE* pPipe = ::popen((sCommand + " 2>&1").c_str(), "r");
    if (!pPipe) return tResult;
    char aBuffer[4096];
    std::size_t n;
    while ((n = std::fread(aBuffer, 1, sizeof aBuffer, pPipe)) > 0)
        tResult.sOutput.append(aBuffer, n);
    const int iStatus = ::pclose(pPipe);
    tResult.iStatus = WIFEXITED(iStatus) ? WEXITSTATUS(iStatus) : -1;
    return tResult;
}

// The strict shapefile checker on base paths (it runs on the system Python); extra options go
// before the paths.
inline CommandResult CheckShapeSets(const std::vector<std::string>& vBases,
                                    const std::string& sOptions = "") {
    std::string sCommand = TNW_CHECK_SHAPESET " --quiet " + sOptions;
    for (const std::string& sBase : vBases)
        sCommand += " '" + sBase + "'";
    return RunCommand(sCommand);
}
inline CommandResult CheckShapeSet(const std::string& sBase, const std::string& sOptions = "") {
    return CheckShapeSets({sBase}, sOptions);
}

// GDAL's reading of a set (with the system Python, which has the GDAL bindings): a line of field
// definitions, then a line per feature with its geometry and the Python repr of each field, then
// any message GDAL gave.
inline CommandResult GdalDump(const std::string& sPath) {
    return RunCommand("/usr/bin/python3 " TNW_OGR_DUMP " '" + sPath + "'");
}

}  // namespace tnw::test
