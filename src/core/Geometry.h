// The OpenGIS simple-features interfaces that the library reads geometry through. A
// geometry's kind is found by asking for an interface (std::dynamic_pointer_cast).
#pragma once

#include <cstdint>
#include <memory>
#include <string>

#include "core/Component.h"

namespace tnw {

class IPoint;

// A coordinate system that geometry can be projected into.
class ISpatialReference : public virtual IComponent {
public:
    virtual std::string Name() const = 0;
    // The system as the text of a shapefile set's .prj; empty when the library has none.
    virtual std::string PrjText() const { return std::string(); }
};

// OpenGIS geometry type numbers as GeometryType gives them.
enum OGCGeometryType : std::int32_t {
    ogcPoint = 1,
    ogcLineString = 2,
    ogcPolygon = 3,
    ogcMultiPoint = 4,
    ogcMultiLineString = 5,
    ogcMultiPolygon = 6,
    ogcGeometryCollection = 7,
};

class IGeometry : public virtual IComponent {
public:
    virtual std::int32_t GeometryType() const = 0;
    // The centre: a point's own place, a line's length-weighted middle, a polygon's
    // area-weighted centroid.
    virtual std::shared_ptr<IPoint> Centroid() const = 0;
    virtual std::string WKT() const = 0;
    // The same geometry in another coordinate system; nothing given means no change.
    virtual std::shared_ptr<IGeometry> Project(
        const std::shared_ptr<ISpatialReference>& oSpatialReference) const = 0;
};

class IPoint : public virtual IGeometry {
public:
    virtual double X() const = 0;
    virtual double Y() const = 0;
};

class ILineString : public virtual IGeometry {
public:
    virtual std::int32_t NumPoints() const = 0;
    // 0-based; error 9 outside the line.
    virtual std::shared_ptr<IPoint> Point(std::int32_t lIndex) const = 0;
};

class IPolygon : public virtual IGeometry {
public:
    virtual std::shared_ptr<ILineString> ExteriorRing() const = 0;
    virtual std::int32_t NumInteriorRings() const = 0;
    virtual std::shared_ptr<ILineString> InteriorRing(std::int32_t lIndex) const = 0;
};

class IGeometryCollection : public virtual IGeometry {
public:
    virtual std::int32_t NumGeometries() const = 0;
    virtual std::shared_ptr<IGeometry> Geometry(std::int32_t lIndex) const = 0;
};

class IMultiPoint : public virtual IGeometryCollection {};
class IMultiLineString : public virtual IGeometryCollection {};
class IMultiPolygon : public virtual IGeometryCollection {};

}  // namespace tnw
