#include "ReferenceTable.h"

#include "kelpException.h"

#include <QSet>

#include <algorithm>
#include <cmath>
#include <limits>

namespace kelp::compare {

namespace {

constexpr char separator = '\t';
/// No image is larger.
constexpr int highestAScan = 65535;
constexpr double highestRow = 65535.0;
/// Longer ones are cut in messages.
constexpr int shownCharacters = 40;

[[noreturn]] void refuse(int line, const QString& text)
{
    throw ParsingError(QString("Line %1: %2").arg(line).arg(text));
}

QString shown(const QString& field)
{
    return field.left(shownCharacters);
}

QStringList readHeader(const QString& text)
{
    QStringList names;
    for (const QString& name : text.split(separator)) {
        names.append(name.trimmed());
    }
    if (names.size() < 2) {
        refuse(1, text.contains(',')
                      ? QString("The columns are separated by commas, not by tabs.")
                      : QString("It names no surface; the first line holds the columns' names, "
                                "separated by tabs."));
    }
    for (int i = 1; i < names.size(); ++i) {
        bool isNumber = false;
        names[i].toDouble(&isNumber);
        if (isNumber || (i == 1 && names[i].isEmpty())) {
            refuse(1, "The columns' names are missing.");
        }
        if (!names[i].isEmpty() && names.indexOf(names[i], 1) != i) {
            refuse(1, QString("Two columns have the name \"%1\".").arg(shown(names[i])));
        }
    }
    names.removeFirst();
    return names;
}

int readAScan(const QString& field, int line)
{
    bool isNumber = false;
    const int aScan = field.trimmed().toInt(&isNumber);
    if (!isNumber || aScan < 0 || aScan > highestAScan) {
        refuse(line, QString("\"%1\" is not the number of an A-scan.").arg(shown(field)));
    }
    return aScan;
}

double readRow(const QString& field, int line)
{
    const QString text = field.trimmed();
    if (text.isEmpty() || text.compare("nan", Qt::CaseInsensitive) == 0) {
        return std::numeric_limits<double>::quiet_NaN();
    }
    bool isNumber = false;
    const double row = text.toDouble(&isNumber);
    if (!isNumber || !std::isfinite(row)) {
        refuse(line, QString("\"%1\" is not an image row.").arg(shown(text)));
    }
    if (row < 0.0) {
        refuse(line, QString("The row %1 lies above the image; a field without a row is empty.")
                         .arg(shown(text)));
    }
    if (row > highestRow) {
        refuse(line, QString("The row %1 lies below every image.").arg(shown(text)));
    }
    return row;
}

} // namespace

int ReferenceTable::nrAScans() const
{
    int highest = -1;
    for (const Line& line : lines) {
        highest = std::max(highest, line.aScan);
    }
    return highest + 1;
}

ReferenceTable ReferenceTable::parse(const QByteArray& content)
{
    QString text = QString::fromUtf8(content);
    text.replace("\r\n", "\n");
    const QStringList lines = text.split('\n');

    ReferenceTable table;
    table.columns = readHeader(lines.first());
    QSet<int> seen;
    for (int i = 1; i < lines.size(); ++i) {
        const int number = i + 1;
        if (lines[i].trimmed().isEmpty()) {
            continue;
        }
        const QStringList fields = lines[i].split(separator);
        if (fields.size() != table.columns.size() + 1) {
            refuse(number, QString("It has %1 fields where the first line has %2.")
                               .arg(fields.size())
                               .arg(table.columns.size() + 1));
        }
        Line line;
        line.aScan = readAScan(fields.first(), number);
        if (seen.contains(line.aScan)) {
            refuse(number, QString("A-scan %1 is there twice.").arg(line.aScan));
        }
        seen.insert(line.aScan);
        for (int column = 1; column < fields.size(); ++column) {
            line.rows.push_back(readRow(fields[column], number));
        }
        table.lines.push_back(line);
    }
    if (table.lines.empty()) {
        throw ParsingError("It holds no A-scan.");
    }
    return table;
}

bool naturallyBefore(const QString& a, const QString& b)
{
    int i = 0;
    int j = 0;
    const auto digitsEnd = [](const QString& text, int start) {
        int end = start;
        while (end < text.size() && text[end].isDigit()) {
            ++end;
        }
        return end;
    };
    while (i < a.size() && j < b.size()) {
        if (a[i].isDigit() && b[j].isDigit()) {
            const int endA = digitsEnd(a, i);
            const int endB = digitsEnd(b, j);
            QString numberA = a.mid(i, endA - i);
            QString numberB = b.mid(j, endB - j);
            const int width = std::max(numberA.size(), numberB.size());
            numberA = numberA.rightJustified(width, '0');
            numberB = numberB.rightJustified(width, '0');
            if (numberA != numberB) {
                return numberA < numberB;
            }
            i = endA;
            j = endB;
        } else if (a[i] != b[j]) {
            return a[i] < b[j];
        } else {
            ++i;
            ++j;
        }
    }
    const int leftA = a.size() - i;
    const int leftB = b.size() - j;
    // "b01" and "b1" name the same number; some order must stand between them all the same.
    return leftA == leftB ? a < b : leftA < leftB;
}

} // namespace kelp::compare
