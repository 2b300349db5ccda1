#include "tnwlib/tnwlib.h"

#include <cmath>

namespace tnw::standins {

double TNWL_ArcAngle(double dX1, double dY1, double dX2, double dY2) {
    return std::atan2(dY2 - dY1, dX2 - dX1);
}

}  // namespace tnw::standins
