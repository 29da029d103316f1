#include "TextTable.h"

#include <algorithm>
#include <numeric>

namespace kelp::compare {

namespace {

const QString columnGap = "  ";

} // namespace

TextTable::TextTable(const QStringList& header, int nrWordColumns)
    : m_rows({header}), m_nrWordColumns(nrWordColumns)
{
}

void TextTable::addRow(const QStringList& cells)
{
    m_rows.append(cells);
}

QList<int> TextTable::columnWidths() const
{
    QList<int> widths;
    for (const QStringList& row : m_rows) {
        for (int column = 0; column < row.size(); ++column) {
            if (column == widths.size()) {
                widths.append(0);
            }
            widths[column] = std::max(widths[column], row[column].size());
        }
    }
    return widths;
}

int TextTable::width() const
{
    const QList<int> widths = columnWidths();
    return std::accumulate(widths.begin(), widths.end(), columnGap.size() * (widths.size() - 1));
}

QString TextTable::text() const
{
    const QList<int> widths = columnWidths();
    QString text;
    for (const QStringList& row : m_rows) {
        QString line;
        for (int column = 0; column < row.size(); ++column) {
            line += column == 0 ? QString() : columnGap;
            line += column < m_nrWordColumns ? row[column].leftJustified(widths[column])
                                             : row[column].rightJustified(widths[column]);
        }
        while (line.endsWith(' ')) {
            line.chop(1);
        }
        text += line + '\n';
    }
    return text;
}

QString decimalText(const std::optional<double>& number, int decimals)
{
    if (!number) {
        return "-";
    }
    const QString text = QString::number(*number, 'f', decimals);
    // A difference that rounds to nothing has no sign.
    return text.toDouble() == 0.0 ? QString::number(0.0, 'f', decimals) : text;
}

} // namespace kelp::compare
