#pragma once

#include "ComparisonPool.h"

#include <QByteArray>

namespace kelp::compare {

// Comma-separated tables with units in their first line and four decimals. Each begins with its
// header; the lines of a scan are given by themselves, so that no scan need be kept for them.

QByteArray surfacesHeader();
/// name: of the scan, or of what is together.
QByteArray surfaceLines(const QString& name, const QList<SurfaceSummary>& surfaces);

/// B-scans count from 1.
QByteArray bScansHeader();
QByteArray bScanLines(const ScanComparison& scan);

QByteArray sectorsHeader();
QByteArray sectorLines(const ScanComparison& scan);

/// Of the sector means over the scans.
QByteArray agreementCsv(const QList<Agreement>& agreements);

} // namespace kelp::compare
