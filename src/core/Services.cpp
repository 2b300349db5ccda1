#include "core/Services.h"

#include <atomic>

#include "core/Error.h"

namespace tnw {

namespace {
std::atomic<ArcAngleFunction> g_fnArcAngle{nullptr};
}

void RegisterArcAngle(ArcAngleFunction fnArcAngle) {
    g_fnArcAngle = fnArcAngle;
}

double CallArcAngle(double dX1, double dY1, double dX2, double dY2) {
    ArcAngleFunction fn = g_fnArcAngle.load();
    if (!fn) throw Error(453, "tnw_lib", "Can't find DLL entry point TNWL_ArcAngle in tnw_lib");
    return fn(dX1, dY1, dX2, dY2);
}

}  // namespace tnw
