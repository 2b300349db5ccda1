#include "ogc_sf/Geometries.h"

#include <cmath>
#include <limits>

#include "core/Error.h"
#include "gislib/Projection.h"
#include "ogc_sf/VertexAccess.h"
#include "ogc_sf/WKT.h"

namespace tnw::standins {

namespace {

using detail::Deref;
using detail::ForEachVertex;
using detail::IsEmptyPoint;
using detail::kSource;
using detail::RaiseUnknownKind;

// Geometry counts are 32-bit in the interfaces.
void CheckCount(std::size_t nCount) {
    if (nCount > static_cast<std::size_t>(std::numeric_limits<std::int32_t>::max()))
        Raise(errOverflow, kSource);
}

void CheckIndex(std::int32_t lIndex, std::size_t nCount) {
    if (lIndex < 0 || static_cast<std::size_t>(lIndex) >= nCount) Raise(errSubscript, kSource);
}

// Sums for a centroid by dimension: signed areas (holes negative) with their first moments,
// lengths with theirs, and plain vertex sums. Coordinates are taken relative to the first
// vertex seen, which keeps the area products small for projected coordinates.
class CentroidSums {
public:
    void Add(const IGeometry& oGeometry) {
        if (const auto* pPoint = dynamic_cast<const IPoint*>(&oGeometry)) {
            if (!IsEmptyPoint(*pPoint)) AddVertex(Relative(pPoint->X(), pPoint->Y()));
        } else if (const auto* pLine = dynamic_cast<const ILineString*>(&oGeometry)) {
            AddLine(*pLine);
        } else if (const auto* pPolygon = dynamic_cast<const IPolygon*>(&oGeometry)) {
            AddRing(Deref(pPolygon->ExteriorRing()), false);
            const std::int32_t lHoles = pPolygon->NumInteriorRings();
            for (std::int32_t i = 0; i < lHoles; ++i)
                AddRing(Deref(pPolygon->InteriorRing(i)), true);
        } else if (const auto* pCollection = dynamic_cast<const IGeometryCollection*>(&oGeometry)) {
            const std::int32_t lCount = pCollection->NumGeometries();
            for (std::int32_t i = 0; i < lCount; ++i)
                Add(Deref(pCollection->Geometry(i)));
        } else {
            RaiseUnknownKind();
        }
    }

    std::shared_ptr<IPoint> Result() const {
        Coordinate t;
        if (m_dArea != 0.0) {
            t = {m_dAreaMomentX / m_dArea, m_dAreaMomentY / m_dArea};
        } else if (m_dLength > 0.0) {
            t = {m_dLengthMomentX / m_dLength, m_dLengthMomentY / m_dLength};
        } else if (m_dVertices > 0.0) {
            t = {m_dVertexSumX / m_dVertices, m_dVertexSumY / m_dVertices};
        } else {
            return Point::CreateEmpty();
        }
        return Point::Create(t.dX + m_tOrigin.dX, t.dY + m_tOrigin.dY);
    }

private:
    Coordinate Relative(double dX, double dY) {
        if (!m_bOrigin) {
            m_tOrigin = {dX, dY};
            m_bOrigin = true;
        }
        return {dX - m_tOrigin.dX, dY - m_tOrigin.dY};
    }

    void AddVertex(Coordinate t, double dWeight = 1.0) {
        m_dVertices += dWeight;
        m_dVertexSumX += dWeight * t.dX;
        m_dVertexSumY += dWeight * t.dY;
    }

    void AddLine(const ILineString& oLine) {
        bool bFirst = true;
        Coordinate tPrevious;
        ForEachVertex(oLine, [&](double dX, double dY) {
            const Coordinate t = Relative(dX, dY);
            AddVertex(t);
            if (!bFirst) {
                const double dLength = std::hypot(t.dX - tPrevious.dX, t.dY - tPrevious.dY);
                m_dLength += dLength;
                m_dLengthMomentX += dLength * (t.dX + tPrevious.dX) / 2.0;
                m_dLengthMomentY += dLength * (t.dY + tPrevious.dY) / 2.0;
            }
            tPrevious = t;
            bFirst = false;
        });
    }

    // The shoelace sums over the ring's edges, the closing edge included whether or not the
    // ring repeats its first vertex. A repeated closing vertex counts once in the vertex mean.
    void AddRing(const ILineString& oRing, bool bHole) {
        double dTwiceArea = 0.0, dMomentX = 0.0, dMomentY = 0.0;
        std::size_t nVertices = 0;
        Coordinate tFirst, tPrevious;
        auto addEdge = [&](Coordinate a, Coordinate b) {
            const double dCross = a.dX * b.dY - b.dX * a.dY;
            dTwiceArea += dCross;
            dMomentX += (a.dX + b.dX) * dCross;
            dMomentY += (a.dY + b.dY) * dCross;
        };
        ForEachVertex(oRing, [&](double dX, double dY) {
            const Coordinate t = Relative(dX, dY);
            AddVertex(t);
            if (nVertices == 0) {
                tFirst = t;
            } else {
                addEdge(tPrevious, t);
            }
            tPrevious = t;
            ++nVertices;
        });
        if (nVertices == 0) return;
        addEdge(tPrevious, tFirst);
        if (nVertices > 1 && tPrevious == tFirst) AddVertex(tPrevious, -1.0);

        // Each ring adds its own area with its sign set by its role, whatever its winding.
        const double dSign = (bHole ? -1.0 : 1.0) * (dTwiceArea < 0.0 ? -1.0 : 1.0);
        m_dArea += dSign * dTwiceArea / 2.0;
        m_dAreaMomentX += dSign * dMomentX / 6.0;
        m_dAreaMomentY += dSign * dMomentY / 6.0;
    }

    bool m_bOrigin = false;
    Coordinate m_tOrigin;
    double m_dArea = 0.0, m_dAreaMomentX = 0.0, m_dAreaMomentY = 0.0;
    double m_dLength = 0.0, m_dLengthMomentX = 0.0, m_dLengthMomentY = 0.0;
    double m_dVertices = 0.0, m_dVertexSumX = 0.0, m_dVertexSumY = 0.0;
};

std::shared_ptr<IPoint> CentroidOf(const IGeometry& oGeometry) {
    CentroidSums sums;
    sums.Add(oGeometry);
    return sums.Result();
}

// Copies a geometry into the stand-in's classes with every vertex sent through the spatial
// reference's forward projection (none: a plain copy).
class Projector {
public:
    explicit Projector(const std::shared_ptr<ISpatialReference>& oReference) {
        if (!oReference) return;
        m_pReference = dynamic_cast<const SpatialReference*>(oReference.get());
        if (!m_pReference)
            throw Error(errTypeMismatch, kSource,
                        "The spatial reference is not one the stand-in geometry can project to");
    }

    std::shared_ptr<IGeometry> Any(const IGeometry& oGeometry) const {
        if (const auto* pPoint = dynamic_cast<const IPoint*>(&oGeometry)) return OnePoint(*pPoint);
        if (const auto* pLine = dynamic_cast<const ILineString*>(&oGeometry)) return Line(*pLine);
        if (const auto* pPolygon = dynamic_cast<const IPolygon*>(&oGeometry))
            return OnePolygon(*pPolygon);
        if (const auto* pMulti = dynamic_cast<const IMultiPoint*>(&oGeometry))
            return Members<MultiPoint, IPoint>(*pMulti);
        if (const auto* pMulti = dynamic_cast<const IMultiLineString*>(&oGeometry))
            return Members<MultiLineString, ILineString>(*pMulti);
        if (const auto* pMulti = dynamic_cast<const IMultiPolygon*>(&oGeometry))
            return Members<MultiPolygon, IPolygon>(*pMulti);
        if (const auto* pCollection = dynamic_cast<const IGeometryCollection*>(&oGeometry))
            return Members<GeometryCollection, IGeometry>(*pCollection);
        RaiseUnknownKind();
    }

private:
    Coordinate Map(double dX, double dY) const {
        return m_pReference ? m_pReference->Forward({dX, dY}) : Coordinate{dX, dY};
    }

    std::shared_ptr<Point> OnePoint(const IPoint& oPoint) const {
        const Coordinate t = Map(oPoint.X(), oPoint.Y());
        return Point::Create(t.dX, t.dY);
    }

    std::shared_ptr<LineString> Line(const ILineString& oLine) const {
        std::vector<Coordinate> aCoordinates;
        aCoordinates.reserve(static_cast<std::size_t>(oLine.NumPoints()));
        ForEachVertex(oLine, [&](double dX, double dY) { aCoordinates.push_back(Map(dX, dY)); });
        return std::make_shared<LineString>(aCoordinates);
    }

    std::shared_ptr<Polygon> OnePolygon(const IPolygon& oPolygon) const {
        std::vector<std::shared_ptr<ILineString>> aHoles;
        const std::int32_t lHoles = oPolygon.NumInteriorRings();
        aHoles.reserve(static_cast<std::size_t>(lHoles));
        for (std::int32_t i = 0; i < lHoles; ++i)
            aHoles.push_back(Line(Deref(oPolygon.InteriorRing(i))));
        return std::make_shared<Polygon>(Line(Deref(oPolygon.ExteriorRing())), std::move(aHoles));
    }

    template <class Result, class Member>
    std::shared_ptr<Result> Members(const IGeometryCollection& oCollection) const {
        std::vector<std::shared_ptr<Member>> aMembers;
        const std::int32_t lCount = oCollection.NumGeometries();
        aMembers.reserve(static_cast<std::size_t>(lCount));
        for (std::int32_t i = 0; i < lCount; ++i) {
            auto oMember = std::dynamic_pointer_cast<Member>(Any(Deref(oCollection.Geometry(i))));
            if (!oMember) RaiseUnknownKind();  // a member of the wrong kind for its collection
            aMembers.push_back(std::move(oMember));
        }
        return std::make_shared<Result>(std::move(aMembers));
    }

    const SpatialReference* m_pReference = nullptr;
};

}  // namespace

// ---- Point ----

std::shared_ptr<Point> Point::Create(double dX, double dY) {
    auto oPoint = std::make_shared<Point>(dX, dY);
    oPoint->m_oOwner = oPoint;
    return oPoint;
}

std::shared_ptr<Point> Point::CreateEmpty() {
    const double dNaN = std::numeric_limits<double>::quiet_NaN();
    return Create(dNaN, dNaN);
}

bool Point::IsEmpty() const {
    return IsEmptyPoint(*this);
}

// Points never change, so a point is its own centre.
std::shared_ptr<IPoint> Point::Centroid() const {
    if (auto oOwner = m_oOwner.lock())
        return std::shared_ptr<IPoint>(oOwner, const_cast<Point*>(this));
    return Create(m_dX, m_dY);
}

std::string Point::WKT() const {
    return ToWKT(*this);
}

std::shared_ptr<IGeometry> Point::Project(
    const std::shared_ptr<ISpatialReference>& oSpatialReference) const {
    return Projector(oSpatialReference).Any(*this);
}

// ---- LineString ----

LineString::LineString() : m_oPoints(std::make_shared<std::vector<standins::Point>>()) {}

LineString::LineString(std::span<const Coordinate> aCoordinates) : LineString() {
    CheckCount(aCoordinates.size());
    m_oPoints->reserve(aCoordinates.size());
    for (const Coordinate& t : aCoordinates)
        m_oPoints->emplace_back(t.dX, t.dY);
    const std::weak_ptr<const void> oOwner = m_oPoints;
    for (standins::Point& oPoint : *m_oPoints)
        oPoint.m_oOwner = oOwner;
}

std::int32_t LineString::NumPoints() const {
    return static_cast<std::int32_t>(m_oPoints->size());
}

std::shared_ptr<IPoint> LineString::Point(std::int32_t lIndex) const {
    CheckIndex(lIndex, m_oPoints->size());
    return std::shared_ptr<IPoint>(m_oPoints, &(*m_oPoints)[static_cast<std::size_t>(lIndex)]);
}

std::shared_ptr<IPoint> LineString::Centroid() const {
    return CentroidOf(*this);
}

std::string LineString::WKT() const {
    return ToWKT(*this);
}

std::shared_ptr<IGeometry> LineString::Project(
    const std::shared_ptr<ISpatialReference>& oSpatialReference) const {
    return Projector(oSpatialReference).Any(*this);
}

// ---- Polygon ----

Polygon::Polygon() : m_oExterior(std::make_shared<LineString>()) {}

Polygon::Polygon(std::shared_ptr<ILineString> oExterior,
                 std::vector<std::shared_ptr<ILineString>> aInterior)
    : m_oExterior(std::move(oExterior)), m_aInterior(std::move(aInterior)) {
    Deref(m_oExterior);
    for (const auto& oRing : m_aInterior)
        Deref(oRing);
    CheckCount(m_aInterior.size());
}

Polygon::Polygon(const std::vector<std::vector<Coordinate>>& aRings) : Polygon() {
    if (aRings.empty()) return;
    CheckCount(aRings.size());
    m_oExterior = std::make_shared<LineString>(aRings.front());
    m_aInterior.reserve(aRings.size() - 1);
    for (std::size_t i = 1; i < aRings.size(); ++i)
        m_aInterior.push_back(std::make_shared<LineString>(aRings[i]));
}

std::int32_t Polygon::NumInteriorRings() const {
    return static_cast<std::int32_t>(m_aInterior.size());
}

std::shared_ptr<ILineString> Polygon::InteriorRing(std::int32_t lIndex) const {
    CheckIndex(lIndex, m_aInterior.size());
    return m_aInterior[static_cast<std::size_t>(lIndex)];
}

std::shared_ptr<IPoint> Polygon::Centroid() const {
    return CentroidOf(*this);
}

std::string Polygon::WKT() const {
    return ToWKT(*this);
}

std::shared_ptr<IGeometry> Polygon::Project(
    const std::shared_ptr<ISpatialReference>& oSpatialReference) const {
    return Projector(oSpatialReference).Any(*this);
}

// ---- Collections ----

template <class Interface, class Member, OGCGeometryType eType>
Collection<Interface, Member, eType>::Collection(std::vector<std::shared_ptr<Member>> aMembers)
    : m_aMembers(std::move(aMembers)) {
    for (const auto& oMember : m_aMembers)
        Deref(oMember);
    CheckCount(m_aMembers.size());
}

template <class Interface, class Member, OGCGeometryType eType>
std::int32_t Collection<Interface, Member, eType>::NumGeometries() const {
    return static_cast<std::int32_t>(m_aMembers.size());
}

template <class Interface, class Member, OGCGeometryType eType>
std::shared_ptr<IGeometry> Collection<Interface, Member, eType>::Geometry(
    std::int32_t lIndex) const {
    CheckIndex(lIndex, m_aMembers.size());
    return m_aMembers[static_cast<std::size_t>(lIndex)];
}

template <class Interface, class Member, OGCGeometryType eType>
std::shared_ptr<IPoint> Collection<Interface, Member, eType>::Centroid() const {
    return CentroidOf(*this);
}

template <class Interface, class Member, OGCGeometryType eType>
std::string Collection<Interface, Member, eType>::WKT() const {
    return ToWKT(*this);
}

template <class Interface, class Member, OGCGeometryType eType>
std::shared_ptr<IGeometry> Collection<Interface, Member, eType>::Project(
    const std::shared_ptr<ISpatialReference>& oSpatialReference) const {
    return Projector(oSpatialReference).Any(*this);
}

template class Collection<IMultiPoint, IPoint, ogcMultiPoint>;
template class Collection<IMultiLineString, ILineString, ogcMultiLineString>;
template class Collection<IMultiPolygon, IPolygon, ogcMultiPolygon>;
template class Collection<IGeometryCollection, IGeometry, ogcGeometryCollection>;

}  // namespace tnw::standins
