// The one function of the flat helper library that the encoders call.
#pragma once

namespace tnw::standins {

// The angle of the direction from (dX1, dY1) to (dX2, dY2) in radians, counter-clockwise from
// the x axis, in (-pi, pi]: atan2(dY2 - dY1, dX2 - dX1).
double TNWL_ArcAngle(double dX1, double dY1, double dX2, double dY2);

}  // namespace tnw::standins
