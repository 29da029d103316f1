#include "PatientSearch.h"

#include "PatientIdentity.h"

#include <QLocale>

#include <algorithm>

namespace kelp::patients {

namespace {

/// Letters that Unicode does not take apart into a plain letter and an accent.
QString withoutJoinedLetters(QString text)
{
    static const QList<QPair<QChar, QString>> joined{
        {QChar(0x00df), QStringLiteral("ss")}, {QChar(0x00e6), QStringLiteral("ae")},
        {QChar(0x0153), QStringLiteral("oe")}, {QChar(0x00f8), QStringLiteral("o")},
        {QChar(0x0111), QStringLiteral("d")},  {QChar(0x0142), QStringLiteral("l")},
        {QChar(0x0131), QStringLiteral("i")}};
    for (const auto& [letter, plain] : joined) {
        text.replace(letter, plain);
    }
    return text;
}

QString twoDigits(int number)
{
    return QString::number(number).rightJustified(2, QLatin1Char('0'));
}

/// Put together by hand: formatting by pattern would take noticeable time for a large store.
QStringList dateForms(const QDate& date)
{
    if (!date.isValid()) {
        return {};
    }
    const QString d = QString::number(date.day());
    const QString dd = twoDigits(date.day());
    const QString m = QString::number(date.month());
    const QString mm = twoDigits(date.month());
    const QString yyyy = QString::number(date.year());
    const QString yy = twoDigits(date.year() % 100);
    QStringList forms{yyyy + mm + dd, dd + mm + yyyy};
    for (const QChar separator : {QLatin1Char('-'), QLatin1Char('.'), QLatin1Char('/')}) {
        forms << yyyy + separator + mm + separator + dd << dd + separator + mm + separator + yyyy
              << d + separator + m + separator + yyyy << mm + separator + dd + separator + yyyy
              << m + separator + d + separator + yyyy << dd + separator + mm + separator + yy
              << d + separator + m + separator + yy;
    }
    static const QLocale english(QLocale::English);
    const QLocale own;
    forms << d << english.monthName(date.month()) << own.monthName(date.month()) << yyyy;
    return forms;
}

bool isFound(const QString& word, const QString& text)
{
    const bool startsWithDigit = word.front().isDigit();
    for (int at = text.indexOf(word); at >= 0; at = text.indexOf(word, at + 1)) {
        if (!startsWithDigit || at == 0 || !text[at - 1].isDigit()) {
            return true;
        }
    }
    return false;
}

} // namespace

QString plainText(const QString& text)
{
    const bool isAscii = std::all_of(text.begin(), text.end(),
                                     [](QChar character) { return character.unicode() < 128; });
    if (isAscii) {
        return text.toLower();
    }
    QString plain;
    for (const QChar character : text.normalized(QString::NormalizationForm_KD)) {
        if (!character.isMark()) {
            plain.append(character);
        }
    }
    return withoutJoinedLetters(plain.toCaseFolded());
}

Searchable searchableOf(const Patient& patient)
{
    const QStringList texts = QStringList{patient.getName()} + dateForms(patient.getBirthDate());
    return {plainText(texts.join(QLatin1Char('\n'))), plainText(patientNumber(patient))};
}

PatientSearch::PatientSearch(const QString& text)
{
    for (QString word : plainText(text).simplified().split(QLatin1Char(' '), Qt::SkipEmptyParts)) {
        while (word.endsWith(QLatin1Char(',')) || word.endsWith(QLatin1Char(';'))) {
            word.chop(1);
        }
        if (!word.isEmpty()) {
            m_words.append(word);
        }
    }
}

bool PatientSearch::matches(const Searchable& searchable) const
{
    return std::all_of(m_words.begin(), m_words.end(), [&](const QString& word) {
        return searchable.patientNumber.startsWith(word) || isFound(word, searchable.text);
    });
}

} // namespace kelp::patients
