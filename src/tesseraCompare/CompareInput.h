#pragma once

#include "ReferenceFolder.h"
#include "ScanSurfaces.h"

#include <QList>
#include <QPair>
#include <QString>
#include <QStringList>

namespace kelp::compare {

/// Where one side's surfaces of one scan are read from.
struct ScanSource
{
    QString name;       ///< of the folder or table
    QString path;       ///< with the pattern of the tables
    QStringList tables; ///< empty: a result of tessera-segment
};

/// The scans that A or B holds. Throws IOFailure if there are none, saying what was looked for.
QList<ScanSource> listScans(const QString& path, const QString& tablePattern);

struct ScanPairing
{
    QList<QPair<ScanSource, ScanSource>> pairs;
    QStringList notes; ///< sentences that name the scans without a partner
};

/// By name; one scan alone on both sides is a pair whatever the names. Throws RuntimeException if
/// nothing can be paired.
ScanPairing pairScans(const QList<ScanSource>& a, const QList<ScanSource>& b);

/// Reads both sides of a pair, of which tables must go with the size of the other. Throws
/// RuntimeException.
QPair<ScanSurfaces, ScanSurfaces> readPair(const QPair<ScanSource, ScanSource>& pair,
                                           const ColumnNames& names);

} // namespace kelp::compare
