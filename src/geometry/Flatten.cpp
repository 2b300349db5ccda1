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

// Appends a polygon's rings in the shapefile winding: the exterior ring clockwise, each
// interior ring counter-clockwise. fnCopyVertex(ring, i) appends vertex i of a ring; the two
// polygon paths differ only there.
template <class CopyVertex>
void AppendPolygon(PartAccumulators& tAcc, const IPolygon& tPolygon, CopyVertex&& fnCopyVertex) {
    const auto copyRing = [&](const std::shared_ptr<ILineString>& oRing, bool bForward) {
        const std::int32_t lCount = Need(oRing).NumPoints();
        if (bForward) {
            for (std::int32_t i = 0; i < lCount; ++i)
                fnCopyVertex(*oRing, i);
        } else {
            for (std::int32_t i = lCount - 1; i >= 0; --i)
                fnCopyVertex(*oRing, i);
        }
        ++tAcc.lPartIndex;
    };

    StartPart(tAcc);
    const auto oExterior = tPolygon.ExteriorRing();
    copyRing(oExterior, IsClockwise(oExterior));
    const std::int32_t lInteriors = tPolygon.NumInteriorRings();
    for (std::int32_t j = 0; j < lInteriors; ++j) {
        StartPart(tAcc);
        const auto oInterior = tPolygon.InteriorRing(j);
        copyRing(oInterior, !IsClockwise(oInterior));
    }
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
}

void PartAccumulators::Release() {
    oPoints.reset();
    vXY.clear();
}

bool IsClockwise(const std::shared_ptr<ILineString>& oRing) {
    bool bClockwise = false;
    Guard(kSourceIsClockwise, [&] {
        const ILineString& tRing = Need(oRing);

        // Copies of the first vertex at the end close the ring; they are no vertices of their own.
        const auto oFirst = tRing.Point(0);
        const double dFirstX = Need(oFirst).X();
        const double dFirstY = oFirst->Y();
        std::int32_t lLast = tRing.NumPoints();
        if (lLast < 1) Raise(errSubscript);
        for (;;) {
            --lLast;
            const auto oVertex = tRing.Point(lLast);
            if (Need(oVertex).X() != dFirstX || oVertex->Y() != dFirstY || lLast <= 2) break;
        }

        // The pivot: the lowest vertex, the leftmost of these, the first in ring order.
        double dMinX = 999999999.0;
        double dMinY = 999999999.0;
        std::int32_t lMinIndex = 0;
        for (std::int32_t i = 0; i <= lLast; ++i) {
            const auto oVertex = tRing.Point(i);
            const double dY = Need(oVertex).Y();
            if (dY > dMinY) continue;
            if (dY < dMinY || oVertex->X() < dMinX) {
                dMinX = oVertex->X();
                lMinIndex = i;
            }
            dMinY = dY;
        }

        // The arc angle to the first vertex, stepping round the ring from the pivot, that is
        // not at the pivot's place. When every vertex is there, no direction exists: the ring
        // has no neighbour, which fails like a subscript past its end.
        const auto angleToNeighbour = [&](bool bNext) {
            std::int32_t lIndex = lMinIndex;
            for (std::int32_t lStep = 0; lStep < lLast; ++lStep) {
                if (bNext) {
                    lIndex = lIndex == lLast ? 0 : lIndex + 1;
                } else {
                    lIndex = lIndex == 0 ? lLast : lIndex - 1;
                }
                const auto oVertex = tRing.Point(lIndex);
                const double dX = Need(oVertex).X();
                const double dY = oVertex->Y();
                if (dX != dMinX || dY != dMinY) return CallArcAngle(dMinX, dMinY, dX, dY);
            }
            Raise(errSubscript);
        };
        const double dAngleNext = angleToNeighbour(true);
        const double dAnglePrev = angleToNeighbour(false);
        bClockwise = dAnglePrev < dAngleNext;
    });
    return bClockwise;
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
        AppendPolygon(tAcc, Need(oPolygon), [&](const ILineString& tRing, std::int32_t i) {
            // X and Y each through their own read of the vertex.
            const double dX = Need(tRing.Point(i)).X();
            const double dY = Need(tRing.Point(i)).Y();
            AddFactoryPoint(tSettings, tAcc, dX, dY);
        });
    });
}

void FastPolygonToPoints(PartAccumulators& tAcc, const std::shared_ptr<IPolygon>& oPolygon) {
    Guard(kSourceFastPolygonToPoints, [&] {
        AppendPolygon(tAcc, Need(oPolygon), [&](const ILineString& tRing, std::int32_t i) {
            AddPoint(tAcc, Need(tRing.Point(i)).Centroid());
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
