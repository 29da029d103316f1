#pragma once

#include "Phantom.h"
#include "ScanGeometry.h"

#include <QByteArray>
#include <QString>
#include <QStringList>

namespace kelp::phantom {

/// The series id of the phantom of this seed.
QString seriesIdOf(const Options& options);

/// The device's XML of one series: who, when, where, and which image shows what. The first file
/// name is the localizer's, the others are those of the B-scans in order. All dates come from the
/// seed.
QByteArray exportXml(const Options& options, const ScanGeometry& geometry,
                     const QStringList& imageFileNames, const QList<Surface>& surfaces);

} // namespace kelp::phantom
