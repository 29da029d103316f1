#include "OCTScanChecks.h"

#include "ExportMetaInfo.h"
#include "HeidelbergExport.h"
#include "kelpException.h"

#include <QFileInfo>

#include <algorithm>
#include <cmath>

namespace kelp::oct {

namespace {

/// Far outside of any device's range; beyond them distances in rows or pixels leave their types.
constexpr double finestRow = 1e-5;
constexpr double coarsestRow = 0.1;
constexpr double farthestPosition = 1000.0;
/// Cells of the grid of equal steps on which the fovea is searched. A real scan has a million.
constexpr double largestIsometricGrid = 1e8;

QString sizeText(int columns, int rows)
{
    return QString("%1 by %2 pixels").arg(columns).arg(rows);
}

/// The path of the image file, where the scan comes from an export that can still be read.
QString bScanFile(const OCTScan& scan, int index)
{
    const URI uri = scan.getUri("OCTScanURI");
    try {
        for (const ExportSeries& series : readExportSeries(uri.path())) {
            if (series.decodable && series.id == uri.queryItem("seriesId")) {
                const QString name = series.bScanFileNames.value(index);
                return name.isEmpty() ? QString()
                                      : QFileInfo(uri.path()).absolutePath() + "/" + name;
            }
        }
    } catch (const Exception&) {
        // The name is a help to the user only; the problem told is another one.
    }
    return QString();
}

[[noreturn]] void refuseBScan(const OCTScan& scan, int index, const QString& reason)
{
    const QString file = bScanFile(scan, index);
    const QString place = file.isEmpty() ? QString() : QString(" (%1)").arg(file);
    throw Exception(QString("B-scan %1%2 %3.").arg(index + 1).arg(place, reason));
}

[[noreturn]] void refuseScan(const QString& reason)
{
    throw Exception(QString("The scan cannot be segmented: %1.").arg(reason));
}

/// The size that the export states, where it states one.
void checkStatedSize(const OCTScan& scan, int index, const MetaInfo& metaInfo, const char* key,
                     int actual, const QString& what)
{
    bool isNumber = false;
    const int stated = metaInfo.value(key).toString().toInt(&isNumber);
    if (isNumber && stated != actual) {
        refuseBScan(scan, index,
                    QString("has %1 %2, but its export says %3").arg(actual).arg(what).arg(stated));
    }
}

void checkStatedSpacing(const OCTScan& scan, int index, const MetaInfo& metaInfo, const char* key)
{
    if (!metaInfo.contains(key)) {
        return;
    }
    const double spacing = metaInfo.value(key).toDouble();
    if (!(spacing > 0.0) || !std::isfinite(spacing)) {
        refuseBScan(scan, index,
                    QString("has \"%1\" as its %2, which is no positive number")
                        .arg(metaInfo.value(key).toString(), key));
    }
}

void checkPositions(const OCTScan& scan, int index, const BScan& bScan)
{
    const QList<Vector2d> positions = bScan.getAScanPositions();
    const bool onEye = std::all_of(positions.begin(), positions.end(), [](const Vector2d& p) {
        return std::abs(p.x) <= farthestPosition && std::abs(p.y) <= farthestPosition;
    });
    if (!onEye) {
        refuseBScan(scan, index, "has coordinates that lie on no eye");
    }
    if (positions.at(0) == positions.at(1)) {
        refuseBScan(scan, index, "has all its A-scans at one place");
    }
}

void checkBScan(const OCTScan& scan, int index)
{
    const QSharedPointer<BScan> bScan = scan.getBScan(static_cast<unsigned>(index));
    const QSharedPointer<Image> image = bScan->getImage();
    const QSharedPointer<Image> first = scan.getBScan(0)->getImage();
    const MetaInfo metaInfo = bScan->getMetaInfo();
    const int columns = image->getColumns();
    const int rows = image->getRows();
    if (columns < 2 || rows < 2) {
        refuseBScan(scan, index,
                    QString("has %1, but at least 2 by 2 are needed").arg(sizeText(columns, rows)));
    }
    checkStatedSize(scan, index, metaInfo, metaKey::width, columns, "columns");
    checkStatedSize(scan, index, metaInfo, metaKey::height, rows, "rows");
    if (columns != first->getColumns() || rows != first->getRows()) {
        refuseBScan(
            scan, index,
            QString("has %1, but B-scan 1 has %2")
                .arg(sizeText(columns, rows), sizeText(first->getColumns(), first->getRows())));
    }
    checkStatedSpacing(scan, index, metaInfo, metaKey::bScanSpacingX);
    checkStatedSpacing(scan, index, metaInfo, metaKey::bScanSpacingY);
    const double row = bScan->getAxialResolution();
    if (!(row >= finestRow && row <= coarsestRow)) {
        refuseBScan(scan, index, QString("has rows of %1 mm, which shows no retina").arg(row));
    }
    checkPositions(scan, index, *bScan);
}

void checkVolumeGrid(const OCTScan& scan)
{
    const int bScans = scan.getBScanCount();
    if (bScans < 2) {
        refuseScan("it is a volume of one B-scan, but at least two are needed");
    }
    const Vector3d spacing = scan.getVolumeSpacing();
    if (!(spacing.z > 0.0)) {
        refuseScan("its first two B-scans lie at one place");
    }
    const Vector2d origin = scan.getBScan(0)->getAScanPosition(0);
    const Vector2d a = scan.getBScan(0)->getAScanPosition(1) - origin;
    const Vector2d b = scan.getBScan(1)->getAScanPosition(0) - origin;
    if (std::abs(a.x * b.y - a.y * b.x) <= 1e-9 * spacing.x * spacing.z) {
        refuseScan("its first two B-scans lie on one line");
    }
    const double finest = std::min(spacing.x, spacing.z);
    const double cells =
        scan.getBScan(0)->getNrAScans() * (spacing.x / finest) * bScans * (spacing.z / finest);
    if (cells > largestIsometricGrid) {
        refuseScan(
            QString("its A-scans are %1 mm apart and its B-scans %2 mm, which no device does")
                .arg(spacing.x)
                .arg(spacing.z));
    }
}

} // namespace

void loadScan(OCTScan& scan)
{
    try {
        scan.ensureLoaded();
    } catch (const Exception& exception) {
        throw IOFailure(scan.getLoadProblem().isEmpty() ? exception.getMessage()
                                                        : scan.getLoadProblem());
    }
}

void checkReadyForSegmentation(const OCTScan& scan)
{
    if (!scan.isLoaded()) {
        refuseScan("it is not loaded");
    }
    if (!canBeSegmented(*scan.getScanPattern())) {
        refuseScan(QString("scans of the pattern \"%1\" are not segmented")
                       .arg(scan.getScanPattern()->toString()));
    }
    if (scan.getBScanCount() == 0) {
        refuseScan("it has no B-scans");
    }
    for (int i = 0; i < scan.getBScanCount(); ++i) {
        checkBScan(scan, i);
    }
    if (*scan.getScanPattern() == OCTScanPatternVolume()) {
        checkVolumeGrid(scan);
    }
}

} // namespace kelp::oct
