// Geometry for the flattening tests: builders of stand-in geometry, and small doubles that
// count the reads and projections the code under test makes and can fail at a chosen step.
#pragma once

#include <cstdint>
#include <functional>
#include <memory>
#include <ostream>
#include <utility>
#include <vector>

#include "core/Error.h"
#include "core/GISLib.h"
#include "ogc_sf/Coordinate.h"
#include "ogc_sf/Geometries.h"

namespace tnw::standins {
inline void PrintTo(const Coordinate& t, std::ostream* pOut) {
    *pOut << "(" << t.dX << ", " << t.dY << ")";
}
}  // namespace tnw::standins

namespace tnw::test {

using XY = standins::Coordinate;

inline std::shared_ptr<standins::LineString> Line(const std::vector<XY>& vCoords) {
    return std::make_shared<standins::LineString>(vCoords);
}

// Rings as coordinates, the exterior first.
inline std::shared_ptr<standins::Polygon> Poly(const std::vector<std::vector<XY>>& vRings) {
    return std::make_shared<standins::Polygon>(vRings);
}

inline std::shared_ptr<standins::Point> Pt(double dX, double dY) {
    return standins::Point::Create(dX, dY);
}

inline std::shared_ptr<standins::MultiPolygon> Multi(
    std::vector<std::shared_ptr<IPolygon>> vPolygons) {
    return std::make_shared<standins::MultiPolygon>(std::move(vPolygons));
}

inline std::shared_ptr<standins::GeometryCollection> Collection(
    std::vector<std::shared_ptr<IGeometry>> vMembers) {
    return std::make_shared<standins::GeometryCollection>(std::move(vMembers));
}

[[noreturn]] inline void Fail(const char* sWhat) {
    throw Error(5, sWhat, "Invalid procedure call");
}

// Maps a coordinate into the projected system.
class FakeSpatialReference : public ISpatialReference {
public:
    explicit FakeSpatialReference(std::function<XY(XY)> fnMap) : m_fnMap(std::move(fnMap)) {}
    std::string Name() const override { return "fake"; }
    XY Map(XY tIn) const { return m_fnMap(tIn); }

private:
    std::function<XY(XY)> m_fnMap;
};

class FakeProjection : public tnwProjection {
public:
    explicit FakeProjection(std::function<XY(XY)> fnMap)
        : m_oReference(std::make_shared<FakeSpatialReference>(std::move(fnMap))) {}
    std::shared_ptr<ISpatialReference> SpatialReference() const override { return m_oReference; }

private:
    std::shared_ptr<FakeSpatialReference> m_oReference;
};

// Applies the map of a FakeSpatialReference; nothing given keeps the coordinates.
inline XY Projected(const std::shared_ptr<ISpatialReference>& oReference, XY tIn) {
    const auto oFake = std::dynamic_pointer_cast<FakeSpatialReference>(oReference);
    return oFake ? oFake->Map(tIn) : tIn;
}

class FakePoint : public IPoint, public std::enable_shared_from_this<FakePoint> {
public:
    FakePoint(double dX, double dY) : m_dX(dX), m_dY(dY) {}
    double X() const override { return m_dX; }
    double Y() const override { return m_dY; }
    std::int32_t GeometryType() const override { return ogcPoint; }
    std::shared_ptr<IPoint> Centroid() const override {
        if (bFailCentroid) Fail("FakePoint.Centroid");
        return std::const_pointer_cast<FakePoint>(shared_from_this());
    }
    std::string WKT() const override { return {}; }
    std::shared_ptr<IGeometry> Project(
        const std::shared_ptr<ISpatialReference>& oRef) const override {
        const XY t = Projected(oRef, {m_dX, m_dY});
        return std::make_shared<FakePoint>(t.dX, t.dY);
    }

    bool bFailCentroid = false;

private:
    double m_dX;
    double m_dY;
};

class FakeLine : public ILineString {
public:
    explicit FakeLine(const std::vector<XY>& vCoords) {
        for (const XY& t : vCoords)
            vPoints.push_back(std::make_shared<FakePoint>(t.dX, t.dY));
    }
    std::int32_t NumPoints() const override { return static_cast<std::int32_t>(vPoints.size()); }
    std::shared_ptr<IPoint> Point(std::int32_t lIndex) const override {
        ++nReads;
        if (lIndex < 0 || lIndex >= NumPoints())
            throw Error(errSubscript, "FakeLine", "Subscript out of range");
        return vPoints[static_cast<std::size_t>(lIndex)];
    }
    std::int32_t GeometryType() const override { return ogcLineString; }
    std::shared_ptr<IPoint> Centroid() const override { return nullptr; }
    std::string WKT() const override { return {}; }
    std::shared_ptr<IGeometry> Project(
        const std::shared_ptr<ISpatialReference>& oRef) const override {
        ++nProjects;
        std::vector<XY> vOut;
        for (const auto& oPoint : vPoints)
            vOut.push_back(Projected(oRef, {oPoint->X(), oPoint->Y()}));
        return std::make_shared<FakeLine>(vOut);
    }

    std::vector<std::shared_ptr<FakePoint>> vPoints;
    mutable int nReads = 0;
    mutable int nProjects = 0;
};

class FakePolygon : public IPolygon {
public:
    FakePolygon(std::shared_ptr<FakeLine> oExterior, std::vector<std::shared_ptr<FakeLine>> vHoles)
        : oExteriorRing(std::move(oExterior)), vInteriorRings(std::move(vHoles)) {}
    std::shared_ptr<ILineString> ExteriorRing() const override { return oExteriorRing; }
    std::int32_t NumInteriorRings() const override {
        return static_cast<std::int32_t>(vInteriorRings.size());
    }
    std::shared_ptr<ILineString> InteriorRing(std::int32_t lIndex) const override {
        return vInteriorRings.at(static_cast<std::size_t>(lIndex));
    }
    std::int32_t GeometryType() const override { return ogcPolygon; }
    std::shared_ptr<IPoint> Centroid() const override { return nullptr; }
    std::string WKT() const override { return {}; }
    std::shared_ptr<IGeometry> Project(
        const std::shared_ptr<ISpatialReference>& oRef) const override {
        ++nProjects;
        const auto projectRing = [&](const std::shared_ptr<FakeLine>& oRing) {
            return std::dynamic_pointer_cast<FakeLine>(oRing->Project(oRef));
        };
        std::vector<std::shared_ptr<FakeLine>> vHoles;
        for (const auto& oHole : vInteriorRings)
            vHoles.push_back(projectRing(oHole));
        return std::make_shared<FakePolygon>(projectRing(oExteriorRing), vHoles);
    }

    std::shared_ptr<FakeLine> oExteriorRing;
    std::vector<std::shared_ptr<FakeLine>> vInteriorRings;
    mutable int nProjects = 0;
};

template <class Interface, std::int32_t lType>
class FakeCollectionOf : public Interface {
public:
    explicit FakeCollectionOf(std::vector<std::shared_ptr<IGeometry>> vMembersIn)
        : vMembers(std::move(vMembersIn)) {}
    std::int32_t NumGeometries() const override {
        return static_cast<std::int32_t>(vMembers.size());
    }
    std::shared_ptr<IGeometry> Geometry(std::int32_t lIndex) const override {
        return vMembers.at(static_cast<std::size_t>(lIndex));
    }
    std::int32_t GeometryType() const override { return lType; }
    std::shared_ptr<IPoint> Centroid() const override { return nullptr; }
    std::string WKT() const override { return {}; }
    std::shared_ptr<IGeometry> Project(const std::shared_ptr<ISpatialReference>&) const override {
        return nullptr;
    }

    std::vector<std::shared_ptr<IGeometry>> vMembers;
};

using FakeCollection = FakeCollectionOf<IGeometryCollection, ogcGeometryCollection>;
using FakeMultiPolygon = FakeCollectionOf<IMultiPolygon, ogcMultiPolygon>;

// Makes points at the given coordinates; counts its calls, keeps the last projection handed
// in, and fails at call number nFailAt (1-based) when that is set.
class FakeFactory : public tnwGISFactory {
public:
    std::shared_ptr<IPoint> CreatePoint(
        double dX, double dY, const std::shared_ptr<tnwProjection>& oProjection) override {
        ++nCalls;
        if (nCalls == nFailAt) Fail("FakeFactory.CreatePoint");
        vProjections.push_back(oProjection);
        return std::make_shared<FakePoint>(dX, dY);
    }

    int nCalls = 0;
    int nFailAt = 0;
    std::vector<std::shared_ptr<tnwProjection>> vProjections;
};

inline std::shared_ptr<FakeLine> FakeRing(const std::vector<XY>& vCoords) {
    return std::make_shared<FakeLine>(vCoords);
}

inline std::shared_ptr<FakePolygon> FakePoly(std::shared_ptr<FakeLine> oExterior,
                                             std::vector<std::shared_ptr<FakeLine>> vHoles = {}) {
    return std::make_shared<FakePolygon>(std::move(oExterior), std::move(vHoles));
}

}  // namespace tnw::test
