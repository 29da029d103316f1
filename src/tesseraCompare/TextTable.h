#pragma once

#include <QList>
#include <QString>
#include <QStringList>

#include <optional>

namespace kelp::compare {

/// Columns of text with blanks between them, for the eye.
class TextTable
{
public:
    /// The first columns are words and lie left, the others numbers and lie right.
    TextTable(const QStringList& header, int nrWordColumns);

    void addRow(const QStringList& cells);
    void addGap() { m_rows.append(QStringList()); }

    QString text() const;
    /// Characters of a line at full length.
    int width() const;

private:
    QList<int> columnWidths() const;

    QList<QStringList> m_rows;
    int m_nrWordColumns;
};

/// With so many decimals; "-" for none.
QString decimalText(const std::optional<double>& number, int decimals = 2);

} // namespace kelp::compare
