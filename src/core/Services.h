// Outside services the library calls by program id or by function: the unit lookup, the
// error handler, the text builder, and the flat helper library's arc angle.
#pragma once

#include <cstdint>
#include <memory>
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

// A text builder, made new for each text from "tnwStringBuilder.tnwStringBuilder". Appending
// takes amortised constant time.
class tnwStringBuilder : public virtual IComponent {
public:
    // Adds sText to the end, behind the separator when one is set.
    virtual void Append(std::string_view sText) = 0;
    // Adds sText, behind the separator when one is set, and ends the line with CR LF.
    virtual void AppendLine(std::string_view sText) = 0;
    // What goes in front of each further Append or AppendLine; empty means nothing.
    virtual void SetSeparator(std::string_view sSeparator) = 0;
    virtual const std::string& Text() const = 0;
};

inline constexpr std::string_view kProgIdStringBuilder = "tnwStringBuilder.tnwStringBuilder";

// A new text builder; error 429 when none is registered.
std::shared_ptr<tnwStringBuilder> NewStringBuilder();

// TNWL_ArcAngle of the flat helper library: the arc angle of the direction from (dX1, dY1) to
// (dX2, dY2), growing counter-clockwise. The library reaches it through this registration, as
// it would load it from a shared library.
using ArcAngleFunction = double (*)(double dX1, double dY1, double dX2, double dY2);
void RegisterArcAngle(ArcAngleFunction fnArcAngle);
// Error 453 "Can't find DLL entry point" when nothing is registered.
double CallArcAngle(double dX1, double dY1, double dX2, double dY2);

}  // namespace tnw
