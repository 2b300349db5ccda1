// Outside services the library calls by program id or by function: the unit lookup, the
// error handler, and the flat helper library's arc angle.
#pragma once

#include <cstdint>
#include <string>
#include <string_view>

#include "core/Component.h"

namespace tnw {

// Made from "tnwUOMEngine.tnwUOMFactory".
class tnwUOMFactory : public virtual IComponent {
public:
    // The id of a unit text such as "bu/ac", or 0 when the text names no known unit.
    virtual std::int32_t FindUnit(std::string_view sUnitText, std::int32_t lClass) = 0;
};

// The outside error handler, made from the program id in the ErrorLogger setting.
class ItnwErrorHandler : public virtual IComponent {
public:
    virtual void errorMessage(const std::string& sApplication, const std::string& sVersion,
                              const std::string& sSource, std::int32_t lNumber,
                              const std::string& sErrSource, const std::string& sDescription,
                              const std::string& sMoreInfo) = 0;
};

// TNWL_ArcAngle of the flat helper library: the arc angle of the direction from (dX1, dY1) to
// (dX2, dY2), growing counter-clockwise. The library reaches it through this registration, as
// it would load it from a shared library.
using ArcAngleFunction = double (*)(double dX1, double dY1, double dX2, double dY2);
void RegisterArcAngle(ArcAngleFunction fnArcAngle);
// Error 453 "Can't find DLL entry point" when nothing is registered.
double CallArcAngle(double dX1, double dY1, double dX2, double dY2);

}  // namespace tnw
