// Public enumerations shared across the library.
#pragma once

#include <cstdint>

namespace tnw {

// The GIS object library's geometry kinds.
enum tnwGeometryType : std::int32_t {
    tnwGeometryPoint = 1,
    tnwGeometryLine = 2,
    tnwGeometryRegion = 3,
    tnwGeometryMultiPoint = 4,
};

// Where a row's geometry comes from in the table readers.
enum TNW_Encoders_GeometryFormats : std::int32_t {
    TNW_GeometryFormat_None = 0,
    TNW_GeometryFormat_WKT = 1,
    TNW_GeometryFormat_LonLat = 2,
};

enum TNW_Encoders_AutoGenFlags : std::int32_t {
    TNW_AutoGenFlags_Default = 0,
};

}  // namespace tnw
