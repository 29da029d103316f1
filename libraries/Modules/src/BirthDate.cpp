#include "BirthDate.h"

#include <QRegularExpression>

namespace kelp::patients {

namespace {

constexpr int yearDigits = 4;

/// 0 for a text that is no name of a month in this locale.
int monthNamed(const QString& text, const QLocale& locale)
{
    constexpr int shortest = 3;
    for (int month = 1; month <= 12 && text.size() >= shortest; ++month) {
        if (locale.monthName(month).startsWith(text, Qt::CaseInsensitive)) {
            return month;
        }
    }
    return 0;
}

int monthNamed(const QString& text)
{
    const int own = monthNamed(text, QLocale());
    return own > 0 ? own : monthNamed(text, QLocale(QLocale::English));
}

bool writesMonthFirst(const QLocale& locale)
{
    const QString format = locale.dateFormat(QLocale::ShortFormat);
    return format.indexOf(QLatin1Char('M')) < format.indexOf(QLatin1Char('d'));
}

struct DayAndMonth
{
    int day = 0;
    int month = 0;
};

DayAndMonth dayAndMonth(const QString& first, const QString& second, bool monthFirst)
{
    constexpr int months = 12;
    const int firstNumber = first.toInt();
    const int secondNumber = second.toInt();
    if (firstNumber == 0) {
        return {secondNumber, monthNamed(first)};
    }
    if (secondNumber == 0) {
        return {firstNumber, monthNamed(second)};
    }
    const bool isMonthFirst = secondNumber > months || (monthFirst && firstNumber <= months);
    return isMonthFirst ? DayAndMonth{secondNumber, firstNumber}
                        : DayAndMonth{firstNumber, secondNumber};
}

} // namespace

QDate readBirthDate(const QString& text, const QLocale& locale, const QDate& today)
{
    constexpr int oldestYears = 150;
    const QStringList parts =
        text.split(QRegularExpression(QStringLiteral("[\\s.,/-]+")), Qt::SkipEmptyParts);
    QDate date;
    if (parts.size() == 1) {
        date = QDate::fromString(parts[0], QStringLiteral("yyyyMMdd"));
    } else if (parts.size() == 3 && parts[0].size() == yearDigits && parts[0].toInt() > 0) {
        const DayAndMonth rest = dayAndMonth(parts[1], parts[2], true);
        date = QDate(parts[0].toInt(), rest.month, rest.day);
    } else if (parts.size() == 3 && parts[2].size() == yearDigits) {
        const DayAndMonth rest = dayAndMonth(parts[0], parts[1], writesMonthFirst(locale));
        date = QDate(parts[2].toInt(), rest.month, rest.day);
    }
    const bool isPlausible = date.isValid() && date <= today && date > today.addYears(-oldestYears);
    return isPlausible ? date : QDate();
}

} // namespace kelp::patients
