#pragma once

#include "OCTScan.h"

#include <QImage>
#include <QString>
#include <QStringList>

#include <functional>

/// Small scans for tests: as an export on disk, or in memory without any file.
namespace kelp::oct::test {

/// Grey value by B-scan, row and column.
using Pixel = std::function<int(int bScan, int row, int column)>;
/// Grows by 1 along each axis, modulo 256, so that every shift of an image shows.
int rampPixel(int bScan, int row, int column);

struct TestExportOptions
{
    QString type = "Volume"; ///< the export's word: "Volume", "Section", "Circle", "Star"
    QString seriesId = "1";
    QString modality = "OCT";
    QString laterality = "R";
    int aScans = 8;
    int rows = 8;
    int bScans = 3;
    QString scaleX = "0.0125"; ///< as written; the positions do not depend on it
    QString scaleY = "0.003872";
    Vector2d start{1.0, 2.0};
    Vector2d end{1.0875, 2.0};
    Vector2d bScanStep{0.0, 0.1};
    Vector2d center{1.5, 2.0}; ///< of a circle
    QString direction;         ///< of a circle; left out when empty
    bool localizer = true;     ///< an image of 8 by 8 pixels of 0.5 mm
    QString imageFormat = "png";
    Pixel pixel = rampPixel;
};

/// The XML text in the true nesting of an export, with the elements that share a name with those
/// that are read.
QString testExportXml(const TestExportOptions& options = {});
/// "b0.png" for B-scan 0, as the XML names it.
QString testImageName(const TestExportOptions& options, int bScan);
QImage testImage(const TestExportOptions& options, int bScan);
/// Writes "export.xml" and its images into this folder. Returns the XML's absolute path.
QString writeTestExport(const QString& folder, const TestExportOptions& options = {});
/// The scan of an export, not yet loaded. Registers the decoder that it needs.
OCTScanPtr makeTestExportScan(const QString& xmlPath, const QString& seriesId = "1");

/// What a scan in memory consists of.
struct TestScan
{
    QString pattern = "Volume"; ///< the text of an OCTScanPattern
    QString target = "OD";      ///< the text of an AnatomicalTarget
    QList<QSharedPointer<kelp::Image>> images;
    QList<QList<Vector2d>> positions;
    double axialResolution = 0.003872;
    QList<QMap<QString, QVariant>> metaInfos; ///< may be shorter than images
    QMap<QString, QVariant> metaInfo;
    QSharedPointer<kelp::Image> localizer; ///< may be null
    Vector2d localizerSpacing;
};

/// Straight B-scans on a regular grid: A-scans along x from (0, 0), B-scans along y.
TestScan lineScan(int aScans, int rows, int bScans, double aScanStep = 0.0125,
                  double bScanStep = 0.1, const Pixel& pixel = rampPixel);
/// A loaded scan with these contents, read through a decoder of its own scheme "test".
OCTScanPtr makeTestScan(const TestScan& contents);
/// The same, but not yet loaded.
OCTScanPtr makeUnloadedTestScan(const TestScan& contents);

} // namespace kelp::oct::test
