#pragma once

#include <QDate>
#include <QLocale>
#include <QString>

namespace kelp::patients {

/// Reads a birth date as people type it: year first, or day and month in the order of the locale
/// (but a number above 12 is a day wherever it stands), apart by points, slashes, hyphens or
/// blanks; the month also as a word. The year has four digits. Invalid for anything else, for days
/// that do not exist, for the future and for more than 150 years ago.
QDate readBirthDate(const QString& text, const QLocale& locale = QLocale(),
                    const QDate& today = QDate::currentDate());

} // namespace kelp::patients
