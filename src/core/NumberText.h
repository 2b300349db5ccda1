// Numbers to text and text to numbers, whatever the locale.
#pragma once

#include <cstdint>
#include <string>
#include <string_view>

#include "core/Variant.h"

namespace tnw {

// Number text: "." as decimal mark, 15 significant digits for a double (7 for a float), an
// exponent form where the digits don't fit, a blank in front of a number that is not negative,
// no zero before the decimal mark: 0.5 gives " .5", -0.25 "-.25", 1E+20 " 1E+20".
// Appends to sOut so that hot paths can reuse one buffer. Non-finite numbers raise error 6.
void AppendNumberText(std::string& sOut, double dValue);
void AppendNumberText(std::string& sOut, float fValue);
void AppendNumberText(std::string& sOut, std::int32_t lValue);
std::string NumberText(double dValue);

// Number text of a tagged value: numbers as above, booleans "True"/"False", dates as their
// text, text that holds a number as that number; other text raises error 13, empty gives " 0".
void AppendNumberText(std::string& sOut, const Variant& vValue);
std::string NumberText(const Variant& vValue);

// The text-to-number rule: blanks, tabs and line feeds are skipped anywhere; a sign, digits with
// at most one ".", an optional exponent ("E" or "D", either case); "&H" and "&O" prefixes for
// hexadecimal and octal; reading stops at the first character that can't go on; 0 when nothing
// can be read. Never fails, but for a number beyond the range of a double (error 6).
double TextToNumber(std::string_view sText);

// Half-to-even rounding to nDecimals places.
double RoundHalfEven(double dValue, int nDecimals);

// Half-to-even rounding to a 32-bit whole number; error 6 when it does not fit.
std::int32_t RoundToLong(double dValue);

}  // namespace tnw
