// Well-known text of simple-features geometry, written and read.
//
// Written form: the keyword in capitals, one blank, then the body; coordinates "x y" in the
// shortest text that reads back to the same double, separated by "," with no blank:
//   POINT (1 2)   LINESTRING (0 0,1 1)   POLYGON ((0 0,0 1,1 1,0 0),(...))
//   MULTIPOINT ((1 2),(3 4))   MULTILINESTRING ((0 0,1 1),(2 2,3 3))
//   MULTIPOLYGON (((0 0,0 1,1 1,0 0)),((...)))   GEOMETRYCOLLECTION (POINT (1 2),LINESTRING (...))
// An empty geometry, or an empty member or ring, is written "EMPTY" ("POINT EMPTY",
// "MULTIPOINT (EMPTY,(1 2))").
#pragma once

#include <memory>
#include <string>
#include <string_view>

#include "core/Geometry.h"

namespace tnw::standins {

// The text of any geometry that implements the interfaces; error 13 for an object of no
// known kind, 91 for a member that is nothing.
std::string ToWKT(const IGeometry& oGeometry);

// Reads the seven kinds into the stand-in's classes. Keywords in any case; blanks, tabs and
// line ends between tokens. Both MULTIPOINT forms, "(1 2,3 4)" and "((1 2),(3 4))". A Z, M or
// ZM tag asks for exactly 3, 3 or 4 numbers per coordinate; with no tag a coordinate may have
// 2 to 4 numbers. Only x and y are kept. Numbers must be finite. Collections nest at most 32
// deep. Rings are taken as given (closure is not checked). Anything else raises error 13 whose
// description names the offset and what was expected there.
std::shared_ptr<IGeometry> ParseWKT(std::string_view sText);

}  // namespace tnw::standins
