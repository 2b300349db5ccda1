// The stand-in simple-features geometry: immutable point, line string, polygon and the four
// collections, implementing the OpenGIS interfaces of core/Geometry.h. Coordinates are WGS 84
// longitude/latitude when a geometry is projected.
//
// A line string keeps its vertices as Point objects in one shared block: Point(i) hands out a
// reference into that block without allocating, and a vertex's Centroid is the vertex itself.
#pragma once

#include <cstdint>
#include <memory>
#include <span>
#include <string>
#include <vector>

#include "core/Geometry.h"
#include "ogc_sf/Coordinate.h"

namespace tnw::standins {

// A point; the point whose X and Y are both NaN is the empty point ("POINT EMPTY").
class Point final : public IPoint {
public:
    Point(double dX, double dY) noexcept : m_dX(dX), m_dY(dY) {}
    // A copy takes the coordinates only.
    Point(const Point& oOther) noexcept : m_dX(oOther.m_dX), m_dY(oOther.m_dY) {}
    Point& operator=(const Point&) = delete;

    // A point made this way gives itself as its Centroid; one made otherwise gives a copy.
    static std::shared_ptr<Point> Create(double dX, double dY);
    static std::shared_ptr<Point> CreateEmpty();

    bool IsEmpty() const;

    double X() const override { return m_dX; }
    double Y() const override { return m_dY; }
    std::int32_t GeometryType() const override { return ogcPoint; }
    std::shared_ptr<IPoint> Centroid() const override;
    std::string WKT() const override;
    std::shared_ptr<IGeometry> Project(
        const std::shared_ptr<ISpatialReference>& oSpatialReference) const override;

private:
    friend class LineString;

    double m_dX;
    double m_dY;
    // Whatever owns this point's storage (the point itself or its line's block), so that
    // Centroid can share it.
    std::weak_ptr<const void> m_oOwner;
};

class LineString final : public ILineString {
public:
    LineString();  // the empty line
    explicit LineString(std::span<const Coordinate> aCoordinates);

    // The vertices, for reading without reference counting.
    std::span<const standins::Point> Points() const { return *m_oPoints; }

    std::int32_t NumPoints() const override;
    // 0-based; error 9 outside the line. The point shares the line's storage.
    std::shared_ptr<IPoint> Point(std::int32_t lIndex) const override;

    std::int32_t GeometryType() const override { return ogcLineString; }
    // Length-weighted; the vertex mean for a line of no length; the empty point when empty.
    std::shared_ptr<IPoint> Centroid() const override;
    std::string WKT() const override;
    std::shared_ptr<IGeometry> Project(
        const std::shared_ptr<ISpatialReference>& oSpatialReference) const override;

private:
    std::shared_ptr<std::vector<standins::Point>> m_oPoints;  // never nothing
};

class Polygon final : public IPolygon {
public:
    Polygon();  // the empty polygon: an empty exterior ring, no holes
    // Rings are taken as given: neither closure nor winding is checked. Error 91 when a ring
    // is nothing.
    explicit Polygon(std::shared_ptr<ILineString> oExterior,
                     std::vector<std::shared_ptr<ILineString>> aInterior = {});
    // Rings as coordinates, the exterior first; no rings make the empty polygon.
    explicit Polygon(const std::vector<std::vector<Coordinate>>& aRings);

    std::shared_ptr<ILineString> ExteriorRing() const override { return m_oExterior; }
    std::int32_t NumInteriorRings() const override;
    // 0-based; error 9 outside.
    std::shared_ptr<ILineString> InteriorRing(std::int32_t lIndex) const override;

    std::int32_t GeometryType() const override { return ogcPolygon; }
    // Area-weighted with the holes taken out; the mean of the ring vertices (closing vertices
    // not counted twice) when the area is 0; the empty point when empty.
    std::shared_ptr<IPoint> Centroid() const override;
    std::string WKT() const override;
    std::shared_ptr<IGeometry> Project(
        const std::shared_ptr<ISpatialReference>& oSpatialReference) const override;

private:
    std::shared_ptr<ILineString> m_oExterior;
    std::vector<std::shared_ptr<ILineString>> m_aInterior;
};

// The four collections differ only in their interface, member type and type number.
template <class Interface, class Member, OGCGeometryType eType>
class Collection final : public Interface {
public:
    Collection() = default;
    // Error 91 when a member is nothing.
    explicit Collection(std::vector<std::shared_ptr<Member>> aMembers);

    std::int32_t NumGeometries() const override;
    // 0-based; error 9 outside.
    std::shared_ptr<IGeometry> Geometry(std::int32_t lIndex) const override;

    std::int32_t GeometryType() const override { return eType; }
    // Weighted by the highest dimension present: the area-weighted centroid of the polygons
    // when they have area, else the length-weighted one of the lines, else the mean of all
    // vertices; the empty point when there is nothing.
    std::shared_ptr<IPoint> Centroid() const override;
    std::string WKT() const override;
    std::shared_ptr<IGeometry> Project(
        const std::shared_ptr<ISpatialReference>& oSpatialReference) const override;

private:
    std::vector<std::shared_ptr<Member>> m_aMembers;
};

using MultiPoint = Collection<IMultiPoint, IPoint, ogcMultiPoint>;
using MultiLineString = Collection<IMultiLineString, ILineString, ogcMultiLineString>;
using MultiPolygon = Collection<IMultiPolygon, IPolygon, ogcMultiPolygon>;
using GeometryCollection = Collection<IGeometryCollection, IGeometry, ogcGeometryCollection>;

extern template class Collection<IMultiPoint, IPoint, ogcMultiPoint>;
extern template class Collection<IMultiLineString, ILineString, ogcMultiLineString>;
extern template class Collection<IMultiPolygon, IPolygon, ogcMultiPolygon>;
extern template class Collection<IGeometryCollection, IGeometry, ogcGeometryCollection>;

}  // namespace tnw::standins
