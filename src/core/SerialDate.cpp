#include "core/SerialDate.h"

#include <charconv>
#include <cmath>
#include <cstdio>

#include "core/Error.h"

namespace tnw {

namespace {

// Days since 1970-01-01 of a proleptic Gregorian date (H. Hinnant's algorithm).
std::int64_t DaysFromCivil(std::int64_t y, unsigned m, unsigned d) {
    y -= m <= 2;
    const std::int64_t era = (y >= 0 ? y : y - 399) / 400;
    const unsigned yoe = static_cast<unsigned>(y - era * 400);
    const unsigned doy = (153 * (m + (m > 2 ? -3 : 9)) + 2) / 5 + d - 1;
    const unsigned doe = yoe * 365 + yoe / 4 - yoe / 100 + doy;
    return era * 146097 + static_cast<std::int64_t>(doe) - 719468;
}

YearMonthDay CivilFromDays(std::int64_t z) {
    z += 719468;
    const std::int64_t era = (z >= 0 ? z : z - 146096) / 146097;
    const unsigned doe = static_cast<unsigned>(z - era * 146097);
    const unsigned yoe = (doe - doe / 1460 + doe / 36524 - doe / 146096) / 365;
    const std::int64_t y = static_cast<std::int64_t>(yoe) + era * 400;
    const unsigned doy = doe - (365 * yoe + yoe / 4 - yoe / 100);
    const unsigned mp = (5 * doy + 2) / 153;
    const unsigned d = doy - (153 * mp + 2) / 5 + 1;
    const unsigned m = mp < 10 ? mp + 3 : mp - 9;
    return {static_cast<int>(y + (m <= 2)), static_cast<int>(m), static_cast<int>(d)};
}

constexpr std::int64_t kSerialEpoch = -25569;  // 1899-12-30 in days since 1970-01-01

int DaysInMonth(int iYear, int iMonth) {
    static constexpr int aDays[] = {31, 28, 31, 30, 31, 30, 31, 31, 30, 31, 30, 31};
    bool bLeap = (iYear % 4 == 0 && iYear % 100 != 0) || iYear % 400 == 0;
    return iMonth == 2 && bLeap ? 29 : aDays[iMonth - 1];
}

// Reads an unsigned number of 1 to nMaxDigits digits at p.
bool ReadNumber(std::string_view& s, int nMaxDigits, int& iValue) {
    std::size_t n = 0;
    while (n < s.size() && n < static_cast<std::size_t>(nMaxDigits) && s[n] >= '0' && s[n] <= '9')
        ++n;
    if (n == 0) return false;
    std::from_chars(s.data(), s.data() + n, iValue);
    s.remove_prefix(n);
    return true;
}

bool ReadChar(std::string_view& s, char c) {
    if (s.empty() || s.front() != c) return false;
    s.remove_prefix(1);
    return true;
}

}  // namespace

SerialDate DateSerial(int iYear, int iMonth, int iDay) {
    std::int64_t lMonths = static_cast<std::int64_t>(iYear) * 12 + (iMonth - 1);
    std::int64_t y = lMonths >= 0 ? lMonths / 12 : (lMonths - 11) / 12;
    unsigned m = static_cast<unsigned>(lMonths - y * 12) + 1;
    std::int64_t lDays = DaysFromCivil(y, m, 1) + (iDay - 1);
    return SerialDate{static_cast<double>(lDays - kSerialEpoch)};
}

bool IsRealDate(int iYear, int iMonth, int iDay) {
    return iYear >= 100 && iYear <= 9999 && iMonth >= 1 && iMonth <= 12 && iDay >= 1 &&
           iDay <= DaysInMonth(iYear, iMonth);
}

YearMonthDay ToYearMonthDay(SerialDate tDate) {
    // Dates run from the year 100 to 9999, as the tagged value allows.
    if (!(tDate.dSerial >= -657434.0 && tDate.dSerial < 2958466.0)) Raise(errOverflow);
    double dDay = std::trunc(tDate.dSerial);
    return CivilFromDays(static_cast<std::int64_t>(dDay) + kSerialEpoch);
}

std::string FormatYYYYMMDD(SerialDate tDate) {
    YearMonthDay t = ToYearMonthDay(tDate);
    char aText[32];
    std::snprintf(aText, sizeof aText, "%04d%02d%02d", t.iYear, t.iMonth, t.iDay);
    return aText;
}

SerialDate FromUnixSeconds(double dSeconds) {
    return SerialDate{static_cast<double>(-kSerialEpoch) + dSeconds / 86400.0};
}

double ToUnixSeconds(SerialDate tDate) {
    return (tDate.dSerial + static_cast<double>(kSerialEpoch)) * 86400.0;
}

std::optional<SerialDate> ParseDateText(std::string_view sText) {
    while (!sText.empty() && sText.front() == ' ')
        sText.remove_prefix(1);
    while (!sText.empty() && sText.back() == ' ')
        sText.remove_suffix(1);
    std::string_view s = sText;
    int a = 0, b = 0, c = 0;
    int iYear = 0, iMonth = 0, iDay = 0;
    if (!ReadNumber(s, 4, a) || s.empty()) return std::nullopt;
    const bool bYearFirst = sText.size() - s.size() == 4;
    char cSep = s.front();
    if (cSep != '-' && cSep != '/' && cSep != '.') return std::nullopt;
    s.remove_prefix(1);
    if (!ReadNumber(s, 2, b) || !ReadChar(s, cSep) || !ReadNumber(s, 4, c)) return std::nullopt;
    if (bYearFirst && cSep != '.') {
        iYear = a, iMonth = b, iDay = c;  // yyyy-mm-dd, yyyy/mm/dd
    } else if (cSep == '/') {
        iMonth = a, iDay = b, iYear = c;  // m/d/yyyy
    } else if (cSep == '.') {
        iDay = a, iMonth = b, iYear = c;  // d.m.yyyy
    } else {
        return std::nullopt;
    }
    if (!IsRealDate(iYear, iMonth, iDay)) return std::nullopt;
    double dTime = 0.0;
    if (!s.empty()) {
        int h = 0, m = 0, sec = 0;
        if (!ReadChar(s, ' ')) return std::nullopt;
        while (ReadChar(s, ' ')) {
        }
        if (!ReadNumber(s, 2, h) || !ReadChar(s, ':') || !ReadNumber(s, 2, m)) return std::nullopt;
        if (ReadChar(s, ':') && !ReadNumber(s, 2, sec)) return std::nullopt;
        if (!s.empty() || h > 23 || m > 59 || sec > 59) return std::nullopt;
        dTime = (h * 3600 + m * 60 + sec) / 86400.0;
    }
    SerialDate t = DateSerial(iYear, iMonth, iDay);
    t.dSerial += t.dSerial < 0 ? -dTime : dTime;
    return t;
}

std::string DateText(SerialDate tDate) {
    YearMonthDay t = ToYearMonthDay(tDate);
    double dFraction = std::fabs(tDate.dSerial - std::trunc(tDate.dSerial));
    long lSeconds = std::lround(dFraction * 86400.0);
    char aText[48];
    if (lSeconds == 0 || lSeconds >= 86400) {
        std::snprintf(aText, sizeof aText, "%04d-%02d-%02d", t.iYear, t.iMonth, t.iDay);
    } else {
        std::snprintf(aText, sizeof aText, "%04d-%02d-%02d %02ld:%02ld:%02ld", t.iYear, t.iMonth,
                      t.iDay, lSeconds / 3600, lSeconds / 60 % 60, lSeconds % 60);
    }
    return aText;
}

}  // namespace tnw
