#include "ReferenceFolder.h"

#include "ReferenceTable.h"
#include "UsageError.h"
#include "kelpException.h"

#include <QDir>
#include <QFileInfo>
#include <QSet>

#include <algorithm>
#include <cmath>

namespace kelp::compare {

namespace {

using command::UsageError;

ReferenceTable readTable(const QString& path)
{
    try {
        return ReferenceTable::parse(readWholeFile(path));
    } catch (const ParsingError& error) {
        refuseFile(path, error.getMessage());
    }
}

/// Reads tables into the surfaces of a scan.
class TableCollector
{
public:
    TableCollector(const ColumnNames& names, ScanSurfaces& scan) : m_names(names), m_scan(scan) {}

    void add(int bScan, const QString& path, const ReferenceTable& table)
    {
        QSet<QString> seen;
        for (int column = 0; column < table.columns.size(); ++column) {
            const QString& name = table.columns[column];
            m_columns.insert(name);
            const QString identifier = m_names.identifierOf(name);
            if (identifier.isEmpty()) {
                continue;
            }
            if (seen.contains(identifier)) {
                refuseFile(path, QString("Two columns stand for the surface %1.").arg(identifier));
            }
            seen.insert(identifier);
            addColumn(bScan, table, column, identifier);
        }
    }

    void describe() const
    {
        QStringList unknown;
        for (const QString& name : m_columns) {
            if (!name.isEmpty() && m_names.identifierOf(name).isEmpty()) {
                unknown.append(name);
            }
        }
        unknown.sort();
        if (!unknown.isEmpty()) {
            m_scan.notes.append(
                QString("%1: the columns %2 stand for no surface and are left aside (--map "
                        "NAME=IDENTIFIER names it).")
                    .arg(m_scan.path, unknown.join(", ")));
        }
        for (const QString& name : m_names.givenNames()) {
            if (!m_columns.contains(name)) {
                m_scan.notes.append(
                    QString("%1: no table has a column \"%2\".").arg(m_scan.path, name));
            }
        }
    }

private:
    void addColumn(int bScan, const ReferenceTable& table, int column, const QString& identifier)
    {
        if (!m_scan.surfaces.contains(identifier)) {
            m_scan.surfaces.insert(identifier, SurfaceRows(m_scan.nrBScans, m_scan.nrAScans));
        }
        SurfaceRows& surface = m_scan.surfaces[identifier];
        for (const ReferenceTable::Line& line : table.lines) {
            surface.set(bScan, line.aScan, line.rows[static_cast<std::size_t>(column)]);
        }
    }

    const ColumnNames& m_names;
    ScanSurfaces& m_scan;
    QSet<QString> m_columns;
};

void checkCount(const QString& source, int nrTables, const std::optional<ScanSize>& expected)
{
    if (expected && expected->nrBScans != nrTables) {
        throw ParsingError(
            QString("%1: There are %2 tables for the %3 B-scans of the other side; there must be "
                    "one table a B-scan (--tables-a and --tables-b choose among them).")
                .arg(source)
                .arg(nrTables)
                .arg(expected->nrBScans));
    }
}

} // namespace

ColumnNames ColumnNames::fromTexts(const QStringList& texts)
{
    ColumnNames names;
    for (const QString& text : texts) {
        const int place = text.lastIndexOf('=');
        const QString name = text.left(std::max(place, 0)).trimmed();
        const QString identifier = text.mid(place + 1).trimmed();
        if (name.isEmpty() || !knownSurfaces().contains(identifier)) {
            throw UsageError(QString("--map takes NAME=IDENTIFIER with an identifier of %1, not "
                                     "\"%2\".")
                                 .arg(knownSurfaces().join(", "), text)
                                 .toStdString());
        }
        if (names.m_identifiers.contains(name) && names.m_identifiers[name] != identifier) {
            throw UsageError(
                QString("--map gives the column \"%1\" two surfaces.").arg(name).toStdString());
        }
        names.m_identifiers[name] = identifier;
    }
    return names;
}

QString ColumnNames::identifierOf(const QString& column) const
{
    const auto given = m_identifiers.find(column);
    if (given != m_identifiers.end()) {
        return *given;
    }
    return knownSurfaces().contains(column) ? column : QString();
}

QStringList tableFiles(const QString& folder, const QString& pattern)
{
    QStringList names = QDir(folder).entryList({pattern}, QDir::Files);
    std::sort(names.begin(), names.end(), naturallyBefore);
    for (QString& name : names) {
        name = QDir(folder).filePath(name);
    }
    return names;
}

ScanSurfaces readReferenceTables(const QString& source, const QStringList& files,
                                 const ColumnNames& names, const std::optional<ScanSize>& expected)
{
    checkCount(source, files.size(), expected);
    ScanSurfaces scan;
    scan.path = source;
    scan.nrBScans = files.size();
    scan.mayEndEarly = true;
    QList<ReferenceTable> tables;
    for (const QString& file : files) {
        tables.append(readTable(file));
        const int nrAScans = tables.last().nrAScans();
        if (expected && expected->nrAScans && nrAScans > *expected->nrAScans) {
            refuseFile(file, QString("It names A-scan %1, but the B-scan has only %2, counted from "
                                     "0.")
                                 .arg(nrAScans - 1)
                                 .arg(*expected->nrAScans));
        }
        scan.nrAScans = std::max(scan.nrAScans, nrAScans);
    }
    if (expected && expected->nrAScans) {
        scan.nrAScans = *expected->nrAScans;
    }
    TableCollector collector(names, scan);
    for (int bScan = 0; bScan < files.size(); ++bScan) {
        collector.add(bScan, files[bScan], tables[bScan]);
    }
    collector.describe();
    return scan;
}

} // namespace kelp::compare
