#include "BirthDate.h"

#include <gtest/gtest.h>

namespace {

using kelp::patients::readBirthDate;

const QLocale american(QLocale::English, QLocale::UnitedStates);
const QLocale german(QLocale::German, QLocale::Germany);
const QDate today(2026, 11, 21);
const QDate birthDate(1950, 2, 3);

QDate read(const char* text, const QLocale& locale)
{
    return readBirthDate(QString::fromUtf8(text), locale, today);
}

TEST(BirthDate, TheYearFirstMeansTheSameEverywhere)
{
    for (const QLocale& locale : {american, german}) {
        for (const char* const text : {"1950-02-03", "1950/2/3", "1950.02.03", "19500203"}) {
            EXPECT_EQ(read(text, locale), birthDate) << text;
        }
    }
}

TEST(BirthDate, DayAndMonthStandInTheOrderOfTheLocale)
{
    EXPECT_EQ(read("3.2.1950", german), birthDate);
    EXPECT_EQ(read("03/02/1950", german), birthDate);
    EXPECT_EQ(read("2/3/1950", american), birthDate);
    EXPECT_EQ(read("23/2/1950", american), QDate(1950, 2, 23));
    EXPECT_EQ(read("2/23/1950", german), QDate(1950, 2, 23));
}

TEST(BirthDate, AMonthMayBeAWord)
{
    EXPECT_EQ(read("3 February 1950", german), birthDate);
    EXPECT_EQ(read("Feb 3, 1950", american), birthDate);
    EXPECT_EQ(read("3. feb 1950", german), birthDate);
}

TEST(BirthDate, WhatIsNoBirthDateIsRefused)
{
    for (const char* const text :
         {"", "1950", "3.2.50", "31.2.1950", "0.1.1950", "32.1.1950", "1.13.1950x", "tomorrow",
          "22.11.2026", "1.1.1876", "1.2.3.1950", "3 xyz 1950", "-1950-02-03-1"}) {
        EXPECT_FALSE(read(text, german).isValid()) << text;
    }
    EXPECT_EQ(read("21.11.2026", german), today);
}

} // namespace
