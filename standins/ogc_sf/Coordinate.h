// A plain x/y pair: the value form of a vertex, shared by the geometry and the projections.
#pragma once

namespace tnw::standins {

struct Coordinate {
    double dX = 0.0;
    double dY = 0.0;
    friend bool operator==(const Coordinate&, const Coordinate&) = default;
};

}  // namespace tnw::standins
