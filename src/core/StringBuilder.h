// The outside text builder: text appended piece by piece and taken whole at the end.
#pragma once

#include <string>
#include <string_view>

#include "core/Component.h"

namespace tnw {

// Made from "tnwlib.tnwStringBuilder", a new one for each text.
class tnwStringBuilder : public virtual IComponent {
public:
    // Adds sText to the end, behind the separator.
    virtual void Append(std::string_view sText) = 0;
    // Adds sText, behind the separator, and ends the line with carriage return and line feed.
    virtual void AppendLine(std::string_view sText) = 0;
    // What goes in front of each further Append and AppendLine; empty (the start) for nothing.
    virtual void SetSeparator(std::string_view sSeparator) = 0;
    // The whole text.
    virtual std::string Text() const = 0;
};

inline constexpr std::string_view kProgIdStringBuilder = "tnwlib.tnwStringBuilder";

}  // namespace tnw
