#pragma once

#include "ScanSurfaces.h"

#include <QMap>
#include <QString>
#include <QStringList>

#include <optional>

namespace kelp::compare {

/// Which columns of reference tables are which surfaces.
class ColumnNames
{
public:
    /// From texts NAME=IDENTIFIER. Throws UsageError.
    static ColumnNames fromTexts(const QStringList& texts);

    /// The surface's identifier; empty if the column is none that is known.
    QString identifierOf(const QString& column) const;
    /// The names that were given.
    QStringList givenNames() const { return m_identifiers.keys(); }

private:
    QMap<QString, QString> m_identifiers;
};

/// The size that tables must have to go with a scan.
struct ScanSize
{
    int nrBScans = 0;
    std::optional<int> nrAScans; ///< any where nothing tells it
};

/// The tables of a folder whose names match the pattern, in natural order.
QStringList tableFiles(const QString& folder, const QString& pattern);

/// Reads one table a B-scan. Throws RuntimeException that names the file and says what is wrong,
/// and if the tables do not go with the expected size.
ScanSurfaces readReferenceTables(const QString& source, const QStringList& files,
                                 const ColumnNames& names,
                                 const std::optional<ScanSize>& expected = std::nullopt);

} // namespace kelp::compare
