// A bounding box: Xmin, Ymin, Xmax, Ymax, in the order the shapefile format stores them.
#pragma once

namespace tnw {

struct ShapeBox {
    double Xmin = 0.0;
    double Ymin = 0.0;
    double Xmax = 0.0;
    double Ymax = 0.0;
};

// The empty box: minima 999999999, maxima -999999999, so that any point grows it.
inline void ResetBox(ShapeBox& tBox) {
    tBox.Xmin = 999999999.0;
    tBox.Ymin = 999999999.0;
    tBox.Xmax = -999999999.0;
    tBox.Ymax = -999999999.0;
}

// Lowers the minima and raises the maxima to take in (x, y); each test stands by itself.
inline void GrowBox(ShapeBox& tBox, double x, double y) {
    if (x < tBox.Xmin) tBox.Xmin = x;
    if (y < tBox.Ymin) tBox.Ymin = y;
    if (x > tBox.Xmax) tBox.Xmax = x;
    if (y > tBox.Ymax) tBox.Ymax = y;
}

}  // namespace tnw
