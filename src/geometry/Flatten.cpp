#include "geometry/Flatten.h"

#include <cmath>
#include <limits>
#include <string>

#include "core/Error.h"
#include "core/Services.h"
#include "support/mLog.h"

namespace tnw::detail {

namespace {

const std::string kSourceIsClockwise = "tnwShapeEncoder.IsClockwise";
const std::string kSourcePolygonToPoints = "tnwShapeEncoder.PolygonToPoints";
const std::string kSourceFastPolygonToPoints = "tnwShapeEncoder.FastPolygonToPoints";
const std::string kSourceLineToPoints = "tnwShapeEncoder.LineToPoints";

// Calling an operation on nothing is error 91, as for any unset object reference.
template <class T>
T& Need(const std::shared_ptr<T>& oObject) {
    if (!oObject) Raise(errObjectNotSet);
    return *oObject;
}

// dValue + dOffset; a floating-point fault (overflow, invalid operation) is error 6.
double AddOffset(double dValue, double dOffset) {
    const double dSum = dValue + dOffset;
    const bool bOverflow = std::isinf(dSum) && std::isfinite(dValue) && std::isfinite(dOffset);
    const bool bInvalid = std::isnan(dSum) && !std::isnan(dValue) && !std::isnan(dOffset);
    if (bOverflow || bInvalid) Raise(errOverflow);
    return dSum;
}

// Notes where the next part starts: the slot lPartIndex of vParts takes the point count.
void StartPart(PartAccumulators& tAcc) {
    if (tAcc.lPartIndex < 0 || static_cast<std::size_t>(tAcc.lPartIndex) >= tAcc.vParts.size()) {
        Raise(errSubscript);
    }
    tAcc.vParts[static_cast<std::size_t>(tAcc.lPartIndex)] = Need(tAcc.oPoints).Count();
}

void AddPoint(PartAccumulators& tAcc, std::shared_ptr<IPoint> oPoint) {
    const double dX = Need(oPoint).X();
    const double dY = oPoint->Y();
    tAcc.oPoints->Add(std::move(oPoint));
    GrowBox(tAcc.tBox, dX, dY);
    // The record writer takes the coordinates from here rather than asking each point again.
    tAcc.vXY.push_back(dX);
    tAcc.vXY.push_back(dY);
}

// The output point of the general path and of lines: made by the factory at the vertex plus
// the offsets, with the projection handed along as it stands.
void AddFactoryPoint(const FlattenSettings& tSettings, PartAccumulators& tAcc, double dX,
                     double dY) {
    AddPoint(tAcc, Need(tSettings.oFactory)
                       .CreatePoint(AddOffset(dX, tSettings.dXOffset),
                                    AddOffset(dY, tSettings.dYOffset), tSettings.oProjection));
}

// Copies the lCount vertices of a ring, forward or in reverse, with fnCopyVertex(i), then
// counts the ring as finished.
template <class CopyVertex>
void CopyRing(PartAccumulators& tAcc, std::int32_t lCount, bool bForward,
              CopyVertex&& fnCopyVertex) {
    if (bForward) {
        for (std::int32_t i = 0; i < lCount; ++i)
            fnCopyVertex(i);
    } else {
        for (std::int32_t i = lCount - 1; i >= 0; --i)
            fnCopyVertex(i);
    }
    ++tAcc.lPartIndex;
}

// Appends a polygon's rings in the shapefile winding: the exterior ring clockwise, each
// interior ring counter-clockwise. fnAppendRing(ring, bExterior) judges and copies one ring;
// the two polygon paths differ only there.
template <class AppendRing>
void AppendPolygon(PartAccumulators& tAcc, const IPolygon& tPolygon, AppendRing&& fnAppendRing) {
    StartPart(tAcc);
    fnAppendRing(tPolygon.ExteriorRing(), true);
    const std::int32_t lInteriors = tPolygon.NumInteriorRings();
    for (std::int32_t j = 0; j < lInteriors; ++j) {
        StartPart(tAcc);
        fnAppendRing(tPolygon.InteriorRing(j), false);
    }
}

// The winding rule, over a ring read through Count() and Vertex(i), whose X() and Y() give the
// vertex's coordinates. Vertex 0 is read before the count, so an empty ring fails there.
template <class Ring>
bool JudgeClockwise(const Ring& tRing) {
    // Copies of the first vertex at the end close the ring; they are no vertices of their own.
    const auto oFirst = tRing.Vertex(0);
    const double dFirstX = oFirst->X();
    const double dFirstY = oFirst->Y();
    std::int32_t lLast = tRing.Count();
    if (lLast < 1) Raise(errSubscript);
    for (;;) {
        --lLast;
        const auto oVertex = tRing.Vertex(lLast);
        if (oVertex->X() != dFirstX || oVertex->Y() != dFirstY || lLast <= 2) break;
    }

    // The pivot: the lowest vertex, the leftmost of these, the first in ring order.
    double dMinX = 999999999.0;
    double dMinY = 999999999.0;
    std::int32_t lMinIndex = 0;
    for (std::int32_t i = 0; i <= lLast; ++i) {
        const auto oVertex = tRing.Vertex(i);
        const double dY = oVertex->Y();
        if (dY > dMinY) continue;
        if (dY < dMinY || oVertex->X() < dMinX) {
            dMinX = oVertex->X();
            lMinIndex = i;
        }
        dMinY = dY;
    }

    // The arc angle to the first vertex, stepping round the ring from the pivot, that is not
    // at the pivot's place. When every vertex is there, no direction exists: the ring has no
    // neighbour, which fails like a subscript past its end.
    const auto angleToNeighbour = [&](bool bNext) {
        std::int32_t lIndex = lMinIndex;
        for (std::int32_t lStep = 0; lStep < lLast; ++lStep) {
            if (bNext) {
                lIndex = lIndex == lLast ? 0 : lIndex + 1;
            } else {
                lIndex = lIndex == 0 ? lLast : lIndex - 1;
            }
            const auto oVertex = tRing.Vertex(lIndex);
            const double dX = oVertex->X();
            const double dY = oVertex->Y();
            if (dX != dMinX || dY != dMinY) return CallArcAngle(dMinX, dMinY, dX, dY);
        }
        Raise(errSubscript);
    };
    const double dAngleNext = angleToNeighbour(true);
    const double dAnglePrev = angleToNeighbour(false);
    return dAnglePrev < dAngleNext;
}

// A ring as its ILineString gives it: each vertex read anew.
struct LineStringRing {
    const std::shared_ptr<ILineString>& oLine;
    std::int32_t Count() const { return oLine->NumPoints(); }
    std::shared_ptr<IPoint> Vertex(std::int32_t lIndex) const {
        auto oVertex = Need(oLine).Point(lIndex);
        Need(oVertex);
        return oVertex;
    }
};

// A ring as the fast path has read it; never empty.
struct BufferedRing {
    const std::vector<RingVertex>& vVertices;
    std::int32_t Count() const { return static_cast<std::int32_t>(vVertices.size()); }
    const RingVertex* Vertex(std::int32_t lIndex) const {
        return &vVertices[static_cast<std::size_t>(lIndex)];
    }
};

// The winding rule under the error path: a failure is reported and gives false.
template <class Ring>
bool IsClockwiseRing(const Ring& tRing) {
    bool bClockwise = false;
    Guard(kSourceIsClockwise, [&] { bClockwise = JudgeClockwise(tRing); });
    return bClockwise;
}

// Reads every vertex of the ring once, with its coordinates, into vRing. False when the ring
// is missing or empty or a read fails: the caller then takes the path that reads vertex by
// vertex, so that the failure is reported where it arises.
bool ReadRing(std::vector<RingVertex>& vRing, const std::shared_ptr<ILineString>& oRing) {
    vRing.clear();
    try {
        if (!oRing) return false;
        const std::int32_t lCount = oRing->NumPoints();
        if (lCount < 1) return false;
        for (std::int32_t i = 0; i < lCount; ++i) {
            auto oVertex = oRing->Point(i);
            if (!oVertex) return false;
            const double dX = oVertex->X();
            const double dY = oVertex->Y();
            vRing.push_back({dX, dY, std::move(oVertex)});
        }
        return true;
    } catch (...) {
        return false;
    }
}

// A ring of the fast path: the vertices' own centroids go into the list.
void FastAppendRing(PartAccumulators& tAcc, const std::shared_ptr<ILineString>& oRing,
                    bool bExterior) {
    if (ReadRing(tAcc.vRing, oRing)) {
        const bool bForward = IsClockwiseRing(BufferedRing{tAcc.vRing}) == bExterior;
        CopyRing(tAcc, BufferedRing{tAcc.vRing}.Count(), bForward, [&](std::int32_t i) {
            AddPoint(tAcc, tAcc.vRing[static_cast<std::size_t>(i)].oVertex->Centroid());
        });
        tAcc.vRing.clear();
        return;
    }
    const bool bForward = IsClockwise(oRing) == bExterior;
    CopyRing(tAcc, Need(oRing).NumPoints(), bForward,
             [&](std::int32_t i) { AddPoint(tAcc, Need(oRing->Point(i)).Centroid()); });
}

// Widens the running part total by lMore and gives vParts room for it.
void AddParts(PartAccumulators& tAcc, std::int64_t& lTotal, std::int64_t lMore) {
    if (lMore < 1) Raise(errSubscript);
    lTotal += lMore;
    if (lTotal > std::numeric_limits<std::int32_t>::max()) Raise(errOverflow);
    tAcc.vParts.resize(static_cast<std::size_t>(lTotal));
}

}  // namespace

void PartAccumulators::Start() {
    oPoints = CreateAs<tnwPointList>(kProgIdPointList, "Missing Component");
    ResetBox(tBox);
    vParts.clear();
    lPartIndex = 0;
    vXY.clear();
    vRing.clear();
}

void PartAccumulators::Release() {
    oPoints.reset();
    vXY.clear();
    vRing.clear();
}

bool IsClockwise(const std::shared_ptr<ILineString>& oRing) {
    return IsClockwiseRing(LineStringRing{oRing});
}

void PolygonToPoints(const FlattenSettings& tSettings, PartAccumulators& tAcc,
                     std::shared_ptr<IPolygon> oPolygon) {
    if (!tSettings.oProjection && tSettings.dXOffset == 0.0 && tSettings.dYOffset == 0.0) {
        FastPolygonToPoints(tAcc, oPolygon);
        return;
    }
    Guard(kSourcePolygonToPoints, [&] {
        if (tSettings.oProjection) {
            const auto oProjected =
                Need(oPolygon).Project(tSettings.oProjection->SpatialReference());
            oPolygon = std::dynamic_pointer_cast<IPolygon>(oProjected);
            if (oProjected && !oPolygon) Raise(errTypeMismatch);
        }
        AppendPolygon(tAcc, Need(oPolygon), [&](const auto& oRing, bool bExterior) {
            const bool bForward = IsClockwise(oRing) == bExterior;
            CopyRing(tAcc, Need(oRing).NumPoints(), bForward, [&](std::int32_t i) {
                // X and Y each through their own read of the vertex.
                const double dX = Need(oRing->Point(i)).X();
                const double dY = Need(oRing->Point(i)).Y();
                AddFactoryPoint(tSettings, tAcc, dX, dY);
            });
        });
    });
}

void FastPolygonToPoints(PartAccumulators& tAcc, const std::shared_ptr<IPolygon>& oPolygon) {
    Guard(kSourceFastPolygonToPoints, [&] {
        AppendPolygon(tAcc, Need(oPolygon), [&](const auto& oRing, bool bExterior) {
            FastAppendRing(tAcc, oRing, bExterior);
        });
    });
}

void LineToPoints(const FlattenSettings& tSettings, PartAccumulators& tAcc,
                  const std::shared_ptr<ILineString>& oLine) {
    Guard(kSourceLineToPoints, [&] {
        StartPart(tAcc);
        const ILineString& tLine = Need(oLine);
        const std::int32_t lCount = tLine.NumPoints();
        for (std::int32_t i = 0; i < lCount; ++i) {
            const auto oVertex = tLine.Point(i);
            // In this order: arguments of one call may be evaluated in any order.
            const double dX = Need(oVertex).X();
            const double dY = oVertex->Y();
            AddFactoryPoint(tSettings, tAcc, dX, dY);
        }
        ++tAcc.lPartIndex;
    });
}

std::int32_t GatherPolygons(const FlattenSettings& tSettings, PartAccumulators& tAcc,
                            const std::shared_ptr<IGeometry>& oGeometry) {
    std::int64_t lTotal = 0;
    // Gives false when the polygon could not be finished: the record is then not written.
    const auto gather = [&](const std::shared_ptr<IPolygon>& oPolygon) {
        AddParts(tAcc, lTotal, static_cast<std::int64_t>(Need(oPolygon).NumInteriorRings()) + 1);
        PolygonToPoints(tSettings, tAcc, oPolygon);
        return tAcc.lPartIndex == lTotal;
    };

    if (const auto oMulti = std::dynamic_pointer_cast<IMultiPolygon>(oGeometry)) {
        const std::int32_t lCount = oMulti->NumGeometries();
        for (std::int32_t i = 0; i < lCount; ++i) {
            const auto oMember = oMulti->Geometry(i);
            const auto oPolygon = std::dynamic_pointer_cast<IPolygon>(oMember);
            if (oMember && !oPolygon) Raise(errTypeMismatch);
            if (!gather(oPolygon)) return 0;
        }
    } else if (const auto oCollection = std::dynamic_pointer_cast<IGeometryCollection>(oGeometry)) {
        const std::int32_t lCount = oCollection->NumGeometries();
        for (std::int32_t i = 0; i < lCount; ++i) {
            const auto oPolygon = std::dynamic_pointer_cast<IPolygon>(oCollection->Geometry(i));
            if (oPolygon && !gather(oPolygon)) return 0;
        }
    } else if (const auto oPolygon = std::dynamic_pointer_cast<IPolygon>(oGeometry)) {
        if (!gather(oPolygon)) return 0;
    }
    return static_cast<std::int32_t>(lTotal);
}

std::int32_t GatherLines(const FlattenSettings& tSettings, PartAccumulators& tAcc,
                         const std::shared_ptr<IGeometry>& oGeometry) {
    std::int64_t lTotal = 0;
    // Gives false when the line could not be finished: the record is then not written.
    const auto gather = [&](const std::shared_ptr<ILineString>& oLine) {
        AddParts(tAcc, lTotal, 1);
        LineToPoints(tSettings, tAcc, oLine);
        return tAcc.lPartIndex == lTotal;
    };

    if (const auto oCollection = std::dynamic_pointer_cast<IGeometryCollection>(oGeometry)) {
        const std::int32_t lCount = oCollection->NumGeometries();
        for (std::int32_t i = 0; i < lCount; ++i) {
            const auto oLine = std::dynamic_pointer_cast<ILineString>(oCollection->Geometry(i));
            if (oLine && !gather(oLine)) return 0;
        }
    } else if (const auto oLine = std::dynamic_pointer_cast<ILineString>(oGeometry)) {
        if (!gather(oLine)) return 0;
    }
    return static_cast<std::int32_t>(lTotal);
}

}  // namespace tnw::detail
