#include "MetaInfoText.h"

#include <QDate>
#include <QTime>

#include <gtest/gtest.h>

using namespace kelp::oct;

namespace {

/// As "caption: value", in order.
QStringList linesOf(const MetaInfo& metaInfo, const QLocale& locale = QLocale::c())
{
    QStringList texts;
    for (const MetaInfoLine& line : metaInfoLines(metaInfo, locale)) {
        texts.append(line.caption + QStringLiteral(": ") + line.value);
    }
    return texts;
}

QString lineOf(const char* key, const QVariant& value, const QLocale& locale = QLocale::c())
{
    return linesOf({{QString::fromLatin1(key), value}}, locale).join(QLatin1Char('|'));
}

QString line(const char* text)
{
    return QString::fromUtf8(text);
}

const QLocale german(QLocale::German, QLocale::Germany);
const QLocale american(QLocale::English, QLocale::UnitedStates);

} // namespace

TEST(MetaInfoText, TellsNumbersWithTheirUnits)
{
    EXPECT_EQ(lineOf(metaKey::bScanSpacingX, "0.011606"), line("Spacing x: 0.011606 mm"));
    EXPECT_EQ(lineOf(metaKey::localizerSpacingY, "0.0116"), line("Spacing y: 0.0116 mm"));
    EXPECT_EQ(lineOf(metaKey::startX, 1.5), line("Start x: 1.5 mm"));
    EXPECT_EQ(lineOf(metaKey::centerY, -2.25), line("Center y: -2.25 mm"));
    EXPECT_EQ(lineOf(metaKey::width, "512"), line("Width: 512 pixels"));
    EXPECT_EQ(lineOf(metaKey::angle, "30"), line("Angle: 30\u00b0"));
    EXPECT_EQ(lineOf(metaKey::focus, "-0.53"), line("Focus: -0.53 D"));
    EXPECT_EQ(lineOf(metaKey::numberAveraged, "15"), line("Number averaged: 15 frames"));
    EXPECT_EQ(lineOf(metaKey::quality, "32"), line("Quality: 32"));
}

TEST(MetaInfoText, WritesNumbersInTheUsersForm)
{
    EXPECT_EQ(lineOf(metaKey::bScanSpacingX, "0.0125", german), line("Spacing x: 0,0125 mm"));
    EXPECT_EQ(lineOf(metaKey::startY, 2.5, german), line("Start y: 2,5 mm"));
}

TEST(MetaInfoText, KeepsWhatIsNoNumberAsItIs)
{
    EXPECT_EQ(lineOf(metaKey::bScanSpacingX, "about 0.01"), line("Spacing x: about 0.01"));
    EXPECT_EQ(lineOf(metaKey::patientId, "007"), line("Patient id: 007"));
}

TEST(MetaInfoText, WritesDatesInTheUsersFormWithTheWholeYear)
{
    const QDate date(1938, 3, 7);
    EXPECT_EQ(lineOf(metaKey::patientBirthDate, date, german),
              line("Patient birth date: 07.03.1938"));
    EXPECT_EQ(lineOf(metaKey::patientBirthDate, date, american),
              line("Patient birth date: 3/7/1938"));
}

TEST(MetaInfoText, WritesTimesInTheUsersFormWithSeconds)
{
    const QTime time(14, 5, 9, 400);
    EXPECT_EQ(lineOf(metaKey::acquisitionTime, time, german), line("Acquisition time: 14:05:09"));
    EXPECT_EQ(lineOf(metaKey::acquisitionTime, time, american),
              line("Acquisition time: 2:05:09 PM"));
}

TEST(MetaInfoText, SpellsOutWhatTheExportAbbreviates)
{
    EXPECT_EQ(lineOf(metaKey::laterality, "R"), line("Eye: Right (OD)"));
    EXPECT_EQ(lineOf(metaKey::laterality, "L"), line("Eye: Left (OS)"));
    EXPECT_EQ(lineOf(metaKey::patientSex, "F"), line("Patient sex: Female"));
    EXPECT_EQ(lineOf(metaKey::scanPattern, "Section"), line("Scan pattern: Single B-scan"));
    EXPECT_EQ(lineOf(metaKey::direction, "CCW"), line("Direction: Counter-clockwise"));
    EXPECT_EQ(lineOf(metaKey::autoSensorGain, "1"), line("Auto sensor gain: Yes"));
    EXPECT_EQ(lineOf(metaKey::resolutionType, "HS"), line("Resolution type: High speed"));
    EXPECT_EQ(lineOf(metaKey::resolutionType, "HIGH_RESOLUTION"),
              line("Resolution type: High resolution"));
}

TEST(MetaInfoText, KeepsWordsThatItDoesNotKnow)
{
    EXPECT_EQ(lineOf(metaKey::laterality, "X"), line("Eye: X"));
    EXPECT_EQ(lineOf(metaKey::scanPattern, "Spiral"), line("Scan pattern: Spiral"));
}

TEST(MetaInfoText, SaysWhatIsNotGiven)
{
    EXPECT_EQ(lineOf(metaKey::patientLastName, ""), line("Patient last name: Not given"));
    EXPECT_EQ(lineOf(metaKey::acquisitionTime, QTime()), line("Acquisition time: Not given"));
}

TEST(MetaInfoText, ShowsEveryKeyOnceKnownOnesFirst)
{
    EXPECT_EQ(
        linesOf({{"Zeta", "1"},
                 {"Alpha", 2},
                 {metaKey::width, "8"},
                 {metaKey::id, "3"},
                 {metaKey::scanPattern, "Star"}}),
        QStringList({"Scan pattern: Star", "Id: 3", "Width: 8 pixels", "Alpha: 2", "Zeta: 1"}));
}
