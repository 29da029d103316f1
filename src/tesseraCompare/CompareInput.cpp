#include "CompareInput.h"

#include "SegmentResult.h"
#include "kelpException.h"

#include <QDir>
#include <QFileInfo>

namespace kelp::compare {

namespace {

QString nameOf(const QString& path)
{
    return QFileInfo(QDir::cleanPath(QFileInfo(path).absoluteFilePath())).fileName();
}

QStringList namesOf(const QList<ScanSource>& sources)
{
    QStringList names;
    for (const ScanSource& source : sources) {
        names.append(source.name);
    }
    return names;
}

const ScanSource* findByName(const QList<ScanSource>& sources, const QString& name)
{
    for (const ScanSource& source : sources) {
        if (source.name == name) {
            return &source;
        }
    }
    return nullptr;
}

void noteUnpaired(const QStringList& names, const char* side, QStringList& notes)
{
    if (names.size() == 1) {
        notes.append(QString("Only %1 has the scan %2.").arg(side, names.first()));
    } else if (names.size() > 1) {
        notes.append(QString("Only %1 has the scans %2.").arg(side, names.join(", ")));
    }
}

ScanSurfaces readOne(const ScanSource& source, const ColumnNames& names,
                     const std::optional<ScanSize>& expected)
{
    return source.tables.isEmpty()
               ? readSegmentResult(source.path)
               : readReferenceTables(source.path, source.tables, names, expected);
}

ScanSize sizeOf(const ScanSurfaces& scan)
{
    return {scan.nrBScans, scan.mayEndEarly ? std::nullopt : std::optional(scan.nrAScans)};
}

} // namespace

QList<ScanSource> listScans(const QString& path, const QString& tablePattern)
{
    const QFileInfo info(path);
    if (!info.exists()) {
        throw IOFailure(QString("%1: There is no such folder.").arg(path));
    }
    if (info.isFile()) {
        return {{nameOf(path), path, {path}}};
    }
    if (isSegmentResult(path)) {
        return {{nameOf(path), path, {}}};
    }
    const QStringList tables = tableFiles(path, tablePattern);
    if (!tables.isEmpty()) {
        return {{nameOf(path), QDir(path).filePath(tablePattern), tables}};
    }
    QList<ScanSource> sources;
    for (const QString& name :
         QDir(path).entryList(QDir::Dirs | QDir::NoDotAndDotDot, QDir::Name)) {
        const QString folder = QDir(path).filePath(name);
        if (isSegmentResult(folder)) {
            sources.append({name, folder, {}});
        }
    }
    if (sources.isEmpty()) {
        throw IOFailure(QString("%1: The folder holds no result of tessera-segment (run.json or "
                                "layer_*.csv), no folders of such results, and no tables (%2).")
                            .arg(path, tablePattern));
    }
    return sources;
}

ScanPairing pairScans(const QList<ScanSource>& a, const QList<ScanSource>& b)
{
    ScanPairing pairing;
    if (a.size() == 1 && b.size() == 1) {
        pairing.pairs.append({a.first(), b.first()});
        return pairing;
    }
    QStringList onlyA;
    QStringList onlyB;
    for (const ScanSource& source : a) {
        if (const ScanSource* partner = findByName(b, source.name)) {
            pairing.pairs.append({source, *partner});
        } else {
            onlyA.append(source.name);
        }
    }
    for (const ScanSource& source : b) {
        if (findByName(a, source.name) == nullptr) {
            onlyB.append(source.name);
        }
    }
    if (pairing.pairs.isEmpty()) {
        throw RuntimeException(QString("No scan of A (%1) has the name of one of B (%2).")
                                   .arg(namesOf(a).join(", "), namesOf(b).join(", ")));
    }
    noteUnpaired(onlyA, "A", pairing.notes);
    noteUnpaired(onlyB, "B", pairing.notes);
    return pairing;
}

QPair<ScanSurfaces, ScanSurfaces> readPair(const QPair<ScanSource, ScanSource>& pair,
                                           const ColumnNames& names)
{
    const bool tablesInA = !pair.first.tables.isEmpty();
    const bool tablesInB = !pair.second.tables.isEmpty();
    if (tablesInA && !tablesInB) {
        const ScanSurfaces b = readOne(pair.second, names, std::nullopt);
        return {readOne(pair.first, names, sizeOf(b)), b};
    }
    const ScanSurfaces a = readOne(pair.first, names, std::nullopt);
    const auto expected = tablesInB ? std::optional(sizeOf(a)) : std::nullopt;
    return {a, readOne(pair.second, names, expected)};
}

} // namespace kelp::compare
