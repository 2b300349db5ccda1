// Reading geometry through the interfaces, shared by the stand-in geometry's own code: a
// checked dereference and a vertex walk that reads the stand-in's own lines directly.
#pragma once

#include <cmath>
#include <memory>

#include "core/Error.h"
#include "ogc_sf/Geometries.h"

namespace tnw::standins::detail {

inline constexpr const char* kSource = "OGC_SF";

// Error 91 for a member or ring that is nothing.
template <class T>
const T& Deref(const std::shared_ptr<T>& oObject) {
    if (!oObject) Raise(errObjectNotSet, kSource);
    return *oObject;
}

[[noreturn]] inline void RaiseUnknownKind() {
    throw Error(errTypeMismatch, kSource, "The geometry is of no known simple-features kind");
}

// The empty point is the one whose X and Y are both NaN.
inline bool IsEmptyPoint(const IPoint& oPoint) {
    return std::isnan(oPoint.X()) && std::isnan(oPoint.Y());
}

// Calls fn(x, y) for each vertex, reading the stand-in's own lines without reference counting.
template <class Fn>
void ForEachVertex(const ILineString& oLine, Fn&& fn) {
    if (const auto* pOwn = dynamic_cast<const LineString*>(&oLine)) {
        for (const Point& oPoint : pOwn->Points())
            fn(oPoint.X(), oPoint.Y());
        return;
    }
    const std::int32_t lCount = oLine.NumPoints();
    for (std::int32_t i = 0; i < lCount; ++i) {
        // Another library's line may hand out a fresh point: hold it while it is read.
        const std::shared_ptr<IPoint> oPoint = oLine.Point(i);
        const IPoint& tPoint = Deref(oPoint);
        fn(tPoint.X(), tPoint.Y());
    }
}

}  // namespace tnw::standins::detail
