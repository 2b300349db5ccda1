// Serial day numbers: calendar dates, "yyyymmdd", Unix seconds and date texts.
#include <gtest/gtest.h>

#include "core/SerialDate.h"

namespace tnw {
namespace {

void ExpectDay(SerialDate tDate, int iYear, int iMonth, int iDay) {
    YearMonthDay t = ToYearMonthDay(tDate);
    EXPECT_EQ(t.iYear, iYear) << tDate.dSerial;
    EXPECT_EQ(t.iMonth, iMonth) << tDate.dSerial;
    EXPECT_EQ(t.iDay, iDay) << tDate.dSerial;
}

TEST(SerialDate, KnownDays) {
    EXPECT_EQ(DateSerial(1899, 12, 30).dSerial, 0.0);
    EXPECT_EQ(DateSerial(1899, 12, 29).dSerial, -1.0);
    EXPECT_EQ(DateSerial(1900, 1, 1).dSerial, 2.0);
    // 1900 is no leap year: 2 + 31 + 28 days.
    EXPECT_EQ(DateSerial(1900, 3, 1).dSerial, 61.0);
    EXPECT_EQ(DateSerial(1970, 1, 1).dSerial, 25569.0);
    EXPECT_EQ(DateSerial(2000, 1, 1).dSerial, 36526.0);
    EXPECT_EQ(DateSerial(2000, 3, 1).dSerial - DateSerial(2000, 2, 28).dSerial, 2.0);
}

TEST(SerialDate, OutOfRangeMonthsAndDaysRollOver) {
    EXPECT_EQ(DateSerial(2024, 13, 1), DateSerial(2025, 1, 1));
    EXPECT_EQ(DateSerial(2024, 0, 1), DateSerial(2023, 12, 1));
    EXPECT_EQ(DateSerial(2024, -11, 1), DateSerial(2023, 1, 1));
    EXPECT_EQ(DateSerial(2024, 3, 0), DateSerial(2024, 2, 29));
    EXPECT_EQ(DateSerial(2023, 2, 29), DateSerial(2023, 3, 1));
    EXPECT_EQ(DateSerial(2024, 1, 366), DateSerial(2024, 12, 31));
}

TEST(SerialDate, RoundTripsThroughYearMonthDay) {
    // Every day from 1800 to 2100 walks the calendar forward by one.
    const double dFirst = DateSerial(1800, 1, 1).dSerial;
    const double dLast = DateSerial(2100, 12, 31).dSerial;
    YearMonthDay tPrev = ToYearMonthDay(SerialDate{dFirst});
    for (double d = dFirst + 1; d <= dLast; ++d) {
        YearMonthDay t = ToYearMonthDay(SerialDate{d});
        ASSERT_EQ(DateSerial(t.iYear, t.iMonth, t.iDay).dSerial, d);
        const bool bNextDay = t.iDay == tPrev.iDay + 1 && t.iMonth == tPrev.iMonth;
        const bool bNextMonth = t.iDay == 1 && (t.iMonth == tPrev.iMonth + 1 ||
                                                (t.iMonth == 1 && t.iYear == tPrev.iYear + 1));
        ASSERT_TRUE(bNextDay || bNextMonth) << d;
        tPrev = t;
    }
    ExpectDay(SerialDate{DateSerial(2100, 2, 28).dSerial + 1}, 2100, 3, 1);
}

TEST(SerialDate, TimeOfDayDoesNotChangeTheDay) {
    ExpectDay(SerialDate{0.75}, 1899, 12, 30);
    // Before the epoch the fraction is still the time of the day named by the whole part.
    ExpectDay(SerialDate{-1.25}, 1899, 12, 29);
    ExpectDay(SerialDate{-0.5}, 1899, 12, 30);
}

TEST(SerialDate, YYYYMMDD) {
    EXPECT_EQ(FormatYYYYMMDD(DateSerial(2024, 2, 29)), "20240229");
    EXPECT_EQ(FormatYYYYMMDD(SerialDate{0.5}), "18991230");
    EXPECT_EQ(FormatYYYYMMDD(DateSerial(987, 6, 5)), "09870605");
}

TEST(SerialDate, UnixSeconds) {
    EXPECT_EQ(FromUnixSeconds(0).dSerial, 25569.0);
    EXPECT_EQ(FromUnixSeconds(86400 * 1.5).dSerial, 25570.5);
    // 2001-09-09 01:46:40 UTC.
    SerialDate t{DateSerial(2001, 9, 9).dSerial + (1 * 3600 + 46 * 60 + 40) / 86400.0};
    EXPECT_NEAR(ToUnixSeconds(t), 1e9, 1e-4);
    EXPECT_NEAR(ToUnixSeconds(FromUnixSeconds(-86400.0 * 40000)), -86400.0 * 40000, 1e-3);
}

TEST(SerialDate, ParseDateTextForms) {
    const double dLeapDay = DateSerial(2024, 2, 29).dSerial;
    EXPECT_EQ(ParseDateText("2024-02-29")->dSerial, dLeapDay);
    EXPECT_EQ(ParseDateText("2024/02/29")->dSerial, dLeapDay);
    EXPECT_EQ(ParseDateText("2/29/2024")->dSerial, dLeapDay);
    EXPECT_EQ(ParseDateText("29.2.2024")->dSerial, dLeapDay);
    EXPECT_EQ(ParseDateText("  2024-2-29  ")->dSerial, dLeapDay);
    EXPECT_DOUBLE_EQ(ParseDateText("2024-02-29 13:45")->dSerial, dLeapDay + 13.75 / 24);
    EXPECT_DOUBLE_EQ(ParseDateText("2/29/2024 06:00:36")->dSerial,
                     dLeapDay + (6 * 3600 + 36) / 86400.0);
    // Before the epoch the time moves away from zero, so the day stays the same.
    EXPECT_DOUBLE_EQ(ParseDateText("1899-12-29 06:00")->dSerial, -1.25);
}

TEST(SerialDate, ParseDateTextRefusesNonDates) {
    EXPECT_FALSE(ParseDateText("2023-02-29"));
    EXPECT_FALSE(ParseDateText("2024-13-01"));
    EXPECT_FALSE(ParseDateText("2024-00-10"));
    EXPECT_FALSE(ParseDateText("31.4.2024"));
    EXPECT_FALSE(ParseDateText("2024-01-05 24:00"));
    EXPECT_FALSE(ParseDateText("2024-01-05 10:60"));
    EXPECT_FALSE(ParseDateText("2024-01-05x"));
    EXPECT_FALSE(ParseDateText("2024-01/05"));
    EXPECT_FALSE(ParseDateText("abc"));
    EXPECT_FALSE(ParseDateText(""));
    EXPECT_FALSE(ParseDateText("20240105"));
}

TEST(SerialDate, DateText) {
    EXPECT_EQ(DateText(DateSerial(2024, 2, 29)), "2024-02-29");
    EXPECT_EQ(DateText(SerialDate{DateSerial(2024, 2, 29).dSerial + 0.5}), "2024-02-29 12:00:00");
    EXPECT_EQ(DateText(SerialDate{-1.25}), "1899-12-29 06:00:00");
}

}  // namespace
}  // namespace tnw
