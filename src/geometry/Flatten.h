// Geometry preparation for polyline and polygon records: a geometry is flattened into one
// record's accumulators (the output points, where each part starts, the record's box), with
// polygon rings turned to the shapefile winding (exterior clockwise, holes counter-clockwise).
//
// These are operations of the shapefile encoder; they live here as free functions over the
// encoder's settings so that the winding and flattening rules have one home. Each reports its
// own failures through the error path under its encoder source text
// ("tnwShapeEncoder.PolygonToPoints" and so on) and never raises.
#pragma once

#include <cstdint>
#include <memory>
#include <vector>

#include "core/GISLib.h"
#include "core/ShapeBox.h"

namespace tnw::detail {

// The encoder settings that act on coordinates, read at the moment of each call.
struct FlattenSettings {
    std::shared_ptr<tnwProjection> oProjection;  // may be nothing
    double dXOffset = 0.0;
    double dYOffset = 0.0;
    std::shared_ptr<tnwGISFactory> oFactory;  // the encoder's point factory
};

// A ring vertex as the fast polygon path reads it, once, with its coordinates.
struct RingVertex {
    double dX = 0.0;
    double dY = 0.0;
    std::shared_ptr<IPoint> oVertex;

    double X() const { return dX; }
    double Y() const { return dY; }
};

// One record's accumulators. A writer keeps one set and starts it afresh for each record; the
// vectors keep their storage, so that steady writing allocates nothing for them.
struct PartAccumulators {
    ShapeBox tBox;                          // ResetBox at the start
    std::shared_ptr<tnwPointList> oPoints;  // a new, empty list
    std::vector<std::int32_t> vParts;       // index in oPoints where each part starts
    std::int32_t lPartIndex = 0;            // next free slot of vParts
    std::vector<double> vXY;                // X and Y of each point added to oPoints, in order
    std::vector<RingVertex> vRing;          // FastPolygonToPoints' reads of the ring at hand

    // Starts a record: a new, empty point list (error 429 when none can be created), the box
    // reset, no parts and no points.
    void Start();
    // Lets go of the record's points, so that nothing of a geometry stays between records.
    void Release();
};

// True when the ring runs clockwise (X right, Y up), judged at its lowest-then-leftmost vertex.
// Any failure is reported under "tnwShapeEncoder.IsClockwise" and gives false.
bool IsClockwise(const std::shared_ptr<ILineString>& oRing);

// Appends one polygon's rings; vParts must already have room for them. PolygonToPoints takes
// the fast path when there is no projection and both offsets are exactly 0.
void PolygonToPoints(const FlattenSettings& tSettings, PartAccumulators& tAcc,
                     std::shared_ptr<IPolygon> oPolygon);
void FastPolygonToPoints(PartAccumulators& tAcc, const std::shared_ptr<IPolygon>& oPolygon);
// Appends one line; vParts must already have room for it.
void LineToPoints(const FlattenSettings& tSettings, PartAccumulators& tAcc,
                  const std::shared_ptr<ILineString>& oLine);

// The gathering rules of the two record writers: which polygons or lines of a geometry make up
// one record. They give the number of parts the record has to write, with vParts and oPoints
// in agreement with it; 0 means write nothing: nothing was gathered, or a conversion stopped
// part-way (a record is written whole or not at all). Failures of the geometry's own
// operations while gathering (NumGeometries, a multi-polygon member that is no polygon...)
// pass up to the writer's handler.
std::int32_t GatherPolygons(const FlattenSettings& tSettings, PartAccumulators& tAcc,
                            const std::shared_ptr<IGeometry>& oGeometry);
std::int32_t GatherLines(const FlattenSettings& tSettings, PartAccumulators& tAcc,
                         const std::shared_ptr<IGeometry>& oGeometry);

}  // namespace tnw::detail
