// Coordinate systems the stand-in geometry can be projected into, and the projection object
// that carries one. Geometry coordinates are WGS 84 longitude and latitude in degrees.
#pragma once

#include <cstdint>
#include <memory>
#include <string>

#include "core/GISLib.h"
#include "ogc_sf/Coordinate.h"

namespace tnw::standins {

// One of three systems on the WGS 84 ellipsoid: geographic (EPSG:4326, the identity), Web
// Mercator (EPSG:3857) or a UTM zone (EPSG:326zz north, 327zz south). Immutable.
class SpatialReference final : public ISpatialReference {
public:
    enum class Kind { Geographic, WebMercator, UTM };

    static std::shared_ptr<SpatialReference> Wgs84();
    static std::shared_ptr<SpatialReference> WebMercator();
    // Error 5 for a zone outside 1..60.
    static std::shared_ptr<SpatialReference> Utm(std::int32_t lZone, bool bNorth);
    // 4326, 3857, 32601..32660 or 32701..32760; error 5 for any other code.
    static std::shared_ptr<SpatialReference> FromEPSG(std::int32_t lCode);

    // "WGS 84", "WGS 84 / Pseudo-Mercator", "WGS 84 / UTM zone 33N".
    std::string Name() const override;
    // The system in the words of a .prj file.
    std::string PrjText() const override;
    std::int32_t EPSG() const;
    Kind GetKind() const { return m_eKind; }

    // WGS 84 longitude/latitude in degrees to this system's x/y (metres for the projected
    // kinds). The empty coordinate (NaN, NaN) stays empty; a place where the projection has no
    // finite value (a pole in Web Mercator, 90 degrees or more off a UTM zone's meridian)
    // raises error 6.
    Coordinate Forward(Coordinate tLonLat) const;
    // This system's x/y back to longitude/latitude; the same rules.
    Coordinate Inverse(Coordinate tXY) const;

private:
    SpatialReference(Kind eKind, std::int32_t lZone, bool bNorth)
        : m_eKind(eKind), m_lZone(lZone), m_bNorth(bNorth) {}

    Kind m_eKind;
    std::int32_t m_lZone;  // UTM only
    bool m_bNorth;         // UTM only
};

// The tnwProjection handed to encoders: it holds one spatial reference.
class Projection final : public tnwProjection {
public:
    explicit Projection(std::shared_ptr<standins::SpatialReference> oSpatialReference)
        : m_oSpatialReference(std::move(oSpatialReference)) {}

    std::shared_ptr<ISpatialReference> SpatialReference() const override {
        return m_oSpatialReference;
    }

private:
    std::shared_ptr<standins::SpatialReference> m_oSpatialReference;
};

}  // namespace tnw::standins
