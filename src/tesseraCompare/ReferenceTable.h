#pragma once

#include <QByteArray>
#include <QString>
#include <QStringList>

#include <vector>

namespace kelp::compare {

/// The surfaces of one B-scan as drawn by a grader or another program: a line of column names, then
/// per A-scan its number, counted from 0, and a row for each surface. Fields are separated by tabs;
/// a field that is empty or holds "nan" has no row.
struct ReferenceTable
{
    struct Line
    {
        int aScan = 0;
        std::vector<double> rows; ///< one a column; not-a-number where there is none
    };

    QStringList columns; ///< without the first, which numbers the A-scans
    std::vector<Line> lines;

    /// One more than the highest A-scan.
    int nrAScans() const;

    /// Throws ParsingError that names the line and says what is wrong with it.
    static ReferenceTable parse(const QByteArray& content);
};

/// Whether a comes before b if the digits in them are read as numbers: "b2" before "b10".
bool naturallyBefore(const QString& a, const QString& b);

} // namespace kelp::compare
