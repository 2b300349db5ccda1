// Serial day numbers: days since 30 December 1899, as the tagged value carries dates.
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

#include "core/Variant.h"

namespace tnw {

struct YearMonthDay {
    int iYear = 1899;
    int iMonth = 12;
    int iDay = 30;
};

// The serial of a calendar date; month and day out of range roll over as dates do
// (month 13 is January of the next year, day 0 the last day of the month before).
SerialDate DateSerial(int iYear, int iMonth, int iDay);
// True for a calendar date the tagged value holds: years 100 to 9999, a month of the year and a
// day of that month.
bool IsRealDate(int iYear, int iMonth, int iDay);
// Error 6 for a serial outside the years 100 to 9999.
YearMonthDay ToYearMonthDay(SerialDate tDate);

// "yyyymmdd" of the date part.
std::string FormatYYYYMMDD(SerialDate tDate);

// Seconds since 1970-01-01 00:00:00 UTC and back.
SerialDate FromUnixSeconds(double dSeconds);
double ToUnixSeconds(SerialDate tDate);

// A date text in one of the common forms: "yyyy-mm-dd", "yyyy/mm/dd", "m/d/yyyy", "d.m.yyyy",
// each with an optional " hh:mm[:ss]"; nothing when the text is not a valid date.
std::optional<SerialDate> ParseDateText(std::string_view sText);

// The date as text, "yyyy-mm-dd", with " hh:mm:ss" when it has a time of day.
std::string DateText(SerialDate tDate);

}  // namespace tnw
