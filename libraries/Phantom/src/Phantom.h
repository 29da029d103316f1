#pragma once

#include <QList>
#include <QPair>
#include <QString>
#include <QStringList>

#include <cstdint>
#include <vector>

/// Synthetic exports with known surfaces, for tests, benchmarks and demonstrations.
namespace kelp::phantom {

enum class Pattern
{
    Volume,
    Section,
    Circle,
    Star
};
enum class Kind
{
    Normal,
    Drusen,
    Mouse
};

struct Options
{
    Pattern pattern = Pattern::Volume;
    Kind kind = Kind::Normal;
    int aScans = 512;
    int rows = 496;
    int bScans = 49; ///< Section and Circle have one all the same
    bool rightEye = true;
    std::uint64_t seed = 1;
    QString imageFormat = "tif"; ///< tif, bmp, png, jpg
    double noise = 1.0;          ///< 0 = none, 1 = as a real device
    int localizerSize = 768;
    /// The device paints what it has no data for white, after it moved and tilted a B-scan.
    bool fill = false;
};

/// One surface over the scan: rows[bScan][aScan] of the first pixel at or below it. A surface that
/// leaves the image keeps to its first or last row.
struct Surface
{
    QString identifier; ///< "ILM", "GCL", "INL", "ONL", "ISe", "IRPE" (drusen only), "BM"
    std::vector<std::vector<unsigned short>> rows;
};

struct Export
{
    QString xmlPath;
    QString seriesId;
    QStringList imagePaths; ///< the localizer's first, then those of the B-scans
    QList<Surface> surfaces;
    std::vector<int> fillPixels; ///< one a B-scan
    double foveaX = 0.0;         ///< mm on the localizer
    double foveaY = 0.0;
};

/// The endings of the image files that can be written.
QStringList imageFormats();

/// What keeps these options from being made, in one sentence; empty if nothing does.
QString problemWith(const Options& options);

/// What writeExport gives for these arguments, without writing anything. Throws kelp::Assertion for
/// options outside what can be made.
Export describeExport(const QString& folder, const Options& options);

/// Writes the XML file, its images and truth_<identifier>.csv into the folder, which is made if
/// need be. The same options give the same bytes. Throws kelp::IOFailure with path and reason, and
/// kelp::Assertion for options outside what can be made.
Export writeExport(const QString& folder, const Options& options);

} // namespace kelp::phantom
