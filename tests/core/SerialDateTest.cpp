// Serial day numbers: calendar dates, "yyyymmdd", Unix seconds and date texts.
#include <gtest/gtest.h>

#include <tuple>

#include "core/SerialDate.h"

namespace tnw {
namespace {

TEST(SerialDate, CalendarDays) {
    // 1900 is no leap year: 2 + 31 + 28 days to March; out-of-range months and days roll over.
    const std::tuple<int, int, int, double> aDays[] = {
        {1899, 12, 30, 0},    {1899, 12, 29, -1},    {1900, 1, 1, 2},
        {1900, 3, 1, 61},     {1970, 1, 1, 25569},   {2000, 1, 1, 36526},
        {2024, 13, 1, 45658}, {2025, 1, 1, 45658},   {2024, 0, 1, 45261},
        {2023, 12, 1, 45261}, {2024, -11, 1, 44927}, {2023, 1, 1, 44927},
        {2024, 3, 0, 45351},  {2024, 2, 29, 45351},  {2023, 2, 29, 45351 - 365},
        {2024, 1, 366, 45657}};
    for (const auto& [iYear, iMonth, iDay, dSerial] : aDays)
        EXPECT_EQ(DateSerial(iYear, iMonth, iDay).dSerial, dSerial)
            << iYear << "-" << iMonth << "-" << iDay;

    // Every day from 1800 to 2100 walks the calendar forward by one and back.
    const double dLast = DateSerial(2100, 12, 31).dSerial;
    YearMonthDay tPrev = ToYearMonthDay(DateSerial(1800, 1, 1));
    for (double d = DateSerial(1800, 1, 1).dSerial + 1; d <= dLast; ++d) {
        const YearMonthDay t = ToYearMonthDay(SerialDate{d});
        ASSERT_EQ(DateSerial(t.iYear, t.iMonth, t.iDay).dSerial, d);
        const bool bNextDay = t.iDay == tPrev.iDay + 1 && t.iMonth == tPrev.iMonth;
        const bool bNextMonth = t.iDay == 1 && (t.iMonth == tPrev.iMonth + 1 ||
                                                (t.iMonth == 1 && t.iYear == tPrev.iYear + 1));
        ASSERT_TRUE(bNextDay || bNextMonth) << d;
        tPrev = t;
    }
    // The time of day never changes the day, before the epoch too.
    for (const auto& [dSerial, sDay] :
         {std::pair(0.75, "18991230"), std::pair(-1.25, "18991229"), std::pair(-0.5, "18991230")})
        EXPECT_EQ(FormatYYYYMMDD(SerialDate{dSerial}), sDay) << dSerial;
    EXPECT_EQ(FormatYYYYMMDD(DateSerial(987, 6, 5)), "09870605");
}

TEST(SerialDate, UnixSeconds) {
    EXPECT_EQ(FromUnixSeconds(86400 * 1.5).dSerial, 25570.5);
    // 2001-09-09 01:46:40 UTC.
    SerialDate t{DateSerial(2001, 9, 9).dSerial + (1 * 3600 + 46 * 60 + 40) / 86400.0};
    EXPECT_NEAR(ToUnixSeconds(t), 1e9, 1e-4);
    EXPECT_NEAR(ToUnixSeconds(FromUnixSeconds(-86400.0 * 40000)), -86400.0 * 40000, 1e-3);
}

TEST(SerialDate, DateTexts) {
    const double dLeapDay = DateSerial(2024, 2, 29).dSerial;
    // Before the epoch the time moves away from zero, so the day stays the same.
    const std::pair<const char*, double> aTexts[] = {
        {"2024-02-29", dLeapDay},
        {"2024/02/29", dLeapDay},
        {"2/29/2024", dLeapDay},
        {"29.2.2024", dLeapDay},
        {"  2024-2-29  ", dLeapDay},
        {"2024-02-29 13:45", dLeapDay + 13.75 / 24},
        {"2/29/2024 06:00:36", dLeapDay + (6 * 3600 + 36) / 86400.0},
        {"1899-12-29 06:00", -1.25}};
    for (const auto& [sText, dSerial] : aTexts) {
        ASSERT_TRUE(ParseDateText(sText)) << sText;
        EXPECT_DOUBLE_EQ(ParseDateText(sText)->dSerial, dSerial) << sText;
    }
    for (const char* sText :
         {"2023-02-29", "2024-13-01", "2024-00-10", "31.4.2024", "2024-01-05 24:00",
          "2024-01-05 10:60", "2024-01-05x", "2024-01/05", "abc", "", "20240105"})
        EXPECT_FALSE(ParseDateText(sText)) << sText;
    EXPECT_EQ(DateText(SerialDate{dLeapDay}), "2024-02-29");
    EXPECT_EQ(DateText(SerialDate{dLeapDay + 0.5}), "2024-02-29 12:00:00");
    EXPECT_EQ(DateText(SerialDate{-1.25}), "1899-12-29 06:00:00");
}

}  // namespace
}  // namespace tnw
