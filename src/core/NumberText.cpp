#include "core/NumberText.h"

#include <charconv>
#include <cmath>
#include <cstring>
#include <limits>
#include <type_traits>

#include "core/Error.h"
#include "core/SerialDate.h"

namespace tnw {

namespace {

// Significant digits and decimal exponent of a finite, non-zero number: the value is
// 0.d1d2d3... x 10^(lExponent + 1), i.e. d1.d2d3... x 10^lExponent.
struct Decimal {
    char aDigits[32];
    int nDigits = 0;
    int lExponent = 0;
    bool bNegative = false;
};

// Splits the scientific text of std::to_chars ("-d.ddde+XX") into a Decimal.
void SplitScientific(const char* pFirst, const char* pLast, Decimal& tDec) {
    const char* p = pFirst;
    tDec.bNegative = (*p == '-');
    if (tDec.bNegative) ++p;
    tDec.nDigits = 0;
    for (; p < pLast && *p != 'e'; ++p)
        if (*p != '.') tDec.aDigits[tDec.nDigits++] = *p;
    int lExponent = 0;
    if (p < pLast) std::from_chars(p[1] == '+' ? p + 2 : p + 1, pLast, lExponent);
    tDec.lExponent = lExponent;
    while (tDec.nDigits > 1 && tDec.aDigits[tDec.nDigits - 1] == '0')
        --tDec.nDigits;
}

// The digits of the number correctly rounded to at most nSignificant digits. The shortest
// round-trip digits are used when they are few enough: they are then exactly what rounding
// to nSignificant digits gives, since that grid is coarser than the type's own.
template <class T>
void ToDecimal(T value, int nSignificant, Decimal& tDec) {
    char aText[64];
    auto res = std::to_chars(aText, aText + sizeof aText, value, std::chars_format::scientific);
    SplitScientific(aText, res.ptr, tDec);
    // Subnormal numbers are finer than their own precision: their digits must be formatted.
    if (tDec.nDigits <= nSignificant && std::fabs(value) >= std::numeric_limits<T>::min()) return;
    res = std::to_chars(aText, aText + sizeof aText, value, std::chars_format::scientific,
                        nSignificant - 1);
    SplitScientific(aText, res.ptr, tDec);
}

// Writes a Decimal as %G would with nSignificant digits, without the zero before the decimal
// mark and with a blank in front of a non-negative number.
void AppendDecimal(std::string& sOut, const Decimal& tDec, int nSignificant) {
    sOut.push_back(tDec.bNegative ? '-' : ' ');
    const int x = tDec.lExponent;
    if (x < -4 || x >= nSignificant) {
        sOut.push_back(tDec.aDigits[0]);
        if (tDec.nDigits > 1) {
            sOut.push_back('.');
            sOut.append(tDec.aDigits + 1, static_cast<std::size_t>(tDec.nDigits - 1));
        }
        sOut.push_back('E');
        sOut.push_back(x < 0 ? '-' : '+');
        int lAbs = x < 0 ? -x : x;
        if (lAbs < 10) sOut.push_back('0');
        char aExp[8];
        auto res = std::to_chars(aExp, aExp + sizeof aExp, lAbs);
        sOut.append(aExp, res.ptr);
        return;
    }
    if (x >= 0) {
        const int nInt = x + 1;
        for (int i = 0; i < nInt; ++i)
            sOut.push_back(i < tDec.nDigits ? tDec.aDigits[i] : '0');
        if (tDec.nDigits > nInt) {
            sOut.push_back('.');
            sOut.append(tDec.aDigits + nInt, static_cast<std::size_t>(tDec.nDigits - nInt));
        }
        return;
    }
    sOut.push_back('.');
    sOut.append(static_cast<std::size_t>(-x - 1), '0');
    sOut.append(tDec.aDigits, static_cast<std::size_t>(tDec.nDigits));
}

// Values with up to nine decimals and 15 significant digits, the usual case, without the
// general formatting: if m / 10^d gives back the value, that decimal has at most 15 digits and
// no other decimal of 15 digits stands for the same double (the 15-digit grid is coarser than
// the double's), so it is exactly what the general path prints. Below 1E-4 the text takes the
// exponent form, so those values are left to the general path.
bool AppendFewDecimals(std::string& sOut, double dValue) {
    static constexpr double aPowersOfTen[] = {1e0, 1e1, 1e2, 1e3, 1e4, 1e5, 1e6, 1e7, 1e8, 1e9};
    const double dAbs = std::fabs(dValue);
    if (!(dAbs >= 1e-4 && dAbs < 1e15)) return false;
    for (int d = 0; d <= 9; ++d) {
        const double dScaled = dAbs * aPowersOfTen[d];
        if (dScaled >= 1e15) return false;
        const double dWhole = std::nearbyint(dScaled);
        if (dWhole / aPowersOfTen[d] != dAbs) continue;
        char aDigits[24];
        auto res =
            std::to_chars(aDigits, aDigits + sizeof aDigits, static_cast<std::uint64_t>(dWhole));
        int n = static_cast<int>(res.ptr - aDigits);
        int nDecimals = d;
        while (nDecimals > 0 && aDigits[n - 1] == '0')
            --n, --nDecimals;
        sOut.push_back(dValue < 0 ? '-' : ' ');
        if (n > nDecimals) {
            sOut.append(aDigits, static_cast<std::size_t>(n - nDecimals));
            if (nDecimals == 0) return true;
            sOut.push_back('.');
            sOut.append(aDigits + n - nDecimals, static_cast<std::size_t>(nDecimals));
        } else {
            sOut.push_back('.');
            sOut.append(static_cast<std::size_t>(nDecimals - n), '0');
            sOut.append(aDigits, static_cast<std::size_t>(n));
        }
        return true;
    }
    return false;
}

template <class T>
void AppendFloating(std::string& sOut, T value, int nSignificant) {
    if (!std::isfinite(value)) Raise(errOverflow);
    if (value == 0) {
        sOut += " 0";
        return;
    }
    if constexpr (std::is_same_v<T, double>) {
        if (AppendFewDecimals(sOut, value)) return;
    }
    Decimal tDec;
    ToDecimal(value, nSignificant, tDec);
    AppendDecimal(sOut, tDec, nSignificant);
}

bool IsSkipped(char c) {
    return c == ' ' || c == '\t' || c == '\n';
}

int DigitValue(char c) {
    if (c >= '0' && c <= '9') return c - '0';
    if (c >= 'a' && c <= 'f') return c - 'a' + 10;
    if (c >= 'A' && c <= 'F') return c - 'A' + 10;
    return 99;
}

// Plain decimal text of at most 15 digits ("-12.345", "7", ".5"), which nearly every field
// holds: its digits form an exact whole number and its power of ten is exact, so one division
// rounds correctly and gives what the general reading gives. False for anything else.
bool ReadPlainDecimal(const char* p, const char* pEnd, double& dValue) {
    static constexpr double aPowersOfTen[] = {1e0, 1e1, 1e2,  1e3,  1e4,  1e5,  1e6,  1e7,
                                              1e8, 1e9, 1e10, 1e11, 1e12, 1e13, 1e14, 1e15};
    const bool bNegative = p < pEnd && *p == '-';
    if (bNegative) ++p;
    const char* const pDigits = p;
    std::int64_t nValue = 0;
    for (; p < pEnd && *p >= '0' && *p <= '9' && p - pDigits < 16; ++p)
        nValue = nValue * 10 + (*p - '0');
    std::ptrdiff_t nDecimals = 0;
    const bool bPoint = p < pEnd && *p == '.';
    if (bPoint) {
        const char* const pFraction = ++p;
        for (; p < pEnd && *p >= '0' && *p <= '9' && p - pDigits < 17; ++p)
            nValue = nValue * 10 + (*p - '0');
        nDecimals = p - pFraction;
    }
    const std::ptrdiff_t nDigits = p - pDigits - (bPoint ? 1 : 0);
    if (nDigits < 1 || nDigits > 15) return false;
    // The next character must end the number, not continue it in a way only the general
    // reading understands.
    if (p < pEnd && ((*p >= '0' && *p <= '9') || *p == '.' || IsSkipped(*p) || *p == 'E' ||
                     *p == 'e' || *p == 'D' || *p == 'd'))
        return false;
    dValue = static_cast<double>(nValue);
    if (nDecimals > 0) dValue /= aPowersOfTen[nDecimals];
    if (bNegative) dValue = -dValue;
    return true;
}

}  // namespace

void AppendNumberText(std::string& sOut, double dValue) {
    AppendFloating(sOut, dValue, 15);
}

void AppendNumberText(std::string& sOut, float fValue) {
    AppendFloating(sOut, fValue, 7);
}

void AppendNumberText(std::string& sOut, std::int32_t lValue) {
    if (lValue >= 0) sOut.push_back(' ');
    char aText[16];
    auto res = std::to_chars(aText, aText + sizeof aText, lValue);
    sOut.append(aText, res.ptr);
}

std::string NumberText(double dValue) {
    std::string s;
    AppendNumberText(s, dValue);
    return s;
}

void AppendNumberText(std::string& sOut, const Variant& vValue) {
    switch (vValue.Type()) {
        case vtEmpty:
            sOut += " 0";
            return;
        case vtInt16:
            AppendNumberText(sOut, static_cast<std::int32_t>(*vValue.As<std::int16_t>()));
            return;
        case vtInt32:
            AppendNumberText(sOut, *vValue.As<std::int32_t>());
            return;
        case vtFloat:
            AppendNumberText(sOut, *vValue.As<float>());
            return;
        case vtDouble:
            AppendNumberText(sOut, *vValue.As<double>());
            return;
        case vtBoolean:
            sOut += *vValue.As<bool>() ? "True" : "False";
            return;
        case vtDate:
            sOut += DateText(*vValue.As<SerialDate>());
            return;
        case vtString:
            AppendNumberText(sOut, vValue.ToDouble());
            return;
        default:
            Raise(errTypeMismatch);
    }
}

std::string NumberText(const Variant& vValue) {
    std::string s;
    AppendNumberText(s, vValue);
    return s;
}

double TextToNumber(std::string_view sText) {
    if (sText.empty()) return 0.0;  // its data may be null, where no pointer arithmetic is allowed
    const char* p = sText.data();
    const char* const pEnd = p + sText.size();
    auto skip = [&] {
        while (p < pEnd && IsSkipped(*p))
            ++p;
    };

    skip();
    if (p < pEnd && *p == '&') {
        ++p;
        skip();  // blanks are skipped wherever they stand, "& H10" as "&H10"
        if (p == pEnd) return 0.0;
        int nBase = 0;
        if (*p == 'H' || *p == 'h') nBase = 16;
        if (*p == 'O' || *p == 'o') nBase = 8;
        if (nBase == 0) return 0.0;
        ++p;
        double dValue = 0.0;
        for (skip(); p < pEnd; ++p, skip()) {
            int d = DigitValue(*p);
            if (d >= nBase) break;
            dValue = dValue * nBase + d;
        }
        return dValue;
    }

    double dPlain = 0.0;
    if (ReadPlainDecimal(p, pEnd, dPlain)) return dPlain;

    // Gather the number's characters without the skipped ones, in a form from_chars reads.
    char aBuffer[128];
    std::string sLong;  // only for numbers longer than the buffer
    std::size_t n = 0;
    auto put = [&](char c) {
        if (n < sizeof aBuffer) {
            aBuffer[n++] = c;
            return;
        }
        if (sLong.empty()) sLong.assign(aBuffer, n);
        sLong.push_back(c);
        ++n;
    };

    if (p < pEnd && (*p == '-' || *p == '+')) {
        if (*p == '-') put('-');
        ++p;
        skip();
    }
    bool bDigits = false;
    bool bPoint = false;
    for (; p < pEnd; ++p, skip()) {
        if (*p >= '0' && *p <= '9') {
            put(*p);
            bDigits = true;
        } else if (*p == '.' && !bPoint) {
            put('.');
            bPoint = true;
        } else {
            break;
        }
    }
    if (!bDigits) return 0.0;
    if (p < pEnd && (*p == 'E' || *p == 'e' || *p == 'D' || *p == 'd')) {
        const char* pMark = p;
        ++p;
        skip();
        char cSign = '+';
        if (p < pEnd && (*p == '-' || *p == '+')) {
            cSign = *p++;
            skip();
        }
        if (p < pEnd && *p >= '0' && *p <= '9') {
            put('e');
            put(cSign);
            for (; p < pEnd && *p >= '0' && *p <= '9'; ++p, skip())
                put(*p);
        } else {
            p = pMark;
        }
    }

    const char* pFirst = sLong.empty() ? aBuffer : sLong.data();
    double dValue = 0.0;
    auto res = std::from_chars(pFirst, pFirst + n, dValue);
    if (res.ec == std::errc::result_out_of_range) {
        // Too small rounds to zero; too large has no double. The magnitude is the count of
        // significant digits before the decimal mark plus the exponent.
        std::size_t i = pFirst[0] == '-' ? 1 : 0;
        while (i < n && (pFirst[i] == '0' || pFirst[i] == '.')) {
            if (pFirst[i] == '.') break;
            ++i;
        }
        long lMagnitude = 0;
        while (i < n && pFirst[i] >= '0' && pFirst[i] <= '9') {
            ++lMagnitude;
            ++i;
        }
        const char* pExponent = static_cast<const char*>(std::memchr(pFirst, 'e', n));
        if (pExponent) {
            long lExponent = 0;
            const char* pDigits = pExponent[1] == '+' ? pExponent + 2 : pExponent + 1;
            if (std::from_chars(pDigits, pFirst + n, lExponent).ec != std::errc())
                lExponent =
                    pExponent[1] == '-' ? -1000000 : 1000000;  // beyond long: huge either way
            lMagnitude += lExponent;
        }
        if (lMagnitude > 0) Raise(errOverflow);
        return 0.0;
    }
    return dValue;
}

double RoundHalfEven(double dValue, int nDecimals) {
    if (!std::isfinite(dValue) || dValue == 0.0) return dValue;
    Decimal tDec;
    ToDecimal(dValue, 17, tDec);
    // Decimal places the shortest digits carry.
    const int nPlaces = tDec.nDigits - 1 - tDec.lExponent;
    if (nPlaces <= nDecimals) return dValue;
    const int nKeep = tDec.nDigits - (nPlaces - nDecimals);
    if (nKeep < 0) return 0.0;

    // The kept digits as a decimal integer, then the decision on the dropped ones.
    char aText[48];
    int n = 0;
    if (tDec.bNegative) aText[n++] = '-';
    aText[n++] = '0';  // room for a carry
    for (int i = 0; i < nKeep; ++i)
        aText[n++] = tDec.aDigits[i];
    const char cFirstDropped = tDec.aDigits[nKeep];
    bool bRestZero = true;
    for (int i = nKeep + 1; i < tDec.nDigits; ++i)
        if (tDec.aDigits[i] != '0') bRestZero = false;
    const char cLastKept = nKeep > 0 ? tDec.aDigits[nKeep - 1] : '0';
    const bool bUp = cFirstDropped > '5' || (cFirstDropped == '5' && !bRestZero) ||
                     (cFirstDropped == '5' && bRestZero && (cLastKept - '0') % 2 == 1);
    if (bUp) {
        int i = n - 1;
        while (aText[i] == '9')
            aText[i--] = '0';
        ++aText[i];
    }
    aText[n++] = 'e';
    auto res = std::to_chars(aText + n, aText + sizeof aText, -nDecimals);
    double dResult = 0.0;
    std::from_chars(aText, res.ptr, dResult);
    return dResult;
}

std::int32_t RoundToLong(double dValue) {
    if (!(dValue >= -2147483648.5 && dValue <= 2147483647.5)) Raise(errOverflow);
    double dRounded = std::nearbyint(dValue);
    if (dRounded < -2147483648.0 || dRounded > 2147483647.0) Raise(errOverflow);
    return static_cast<std::int32_t>(dRounded);
}

}  // namespace tnw
