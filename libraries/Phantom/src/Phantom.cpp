#include "Phantom.h"

#include "BScanRenderer.h"
#include "DeviceFrame.h"
#include "ExportXml.h"
#include "GreyImage.h"
#include "LocalizerRenderer.h"
#include "PhantomRandom.h"
#include "RetinaSurfaces.h"

#include "kelpCheck.h"
#include "kelpFileWriter.h"

#include <QDir>
#include <QFile>

#include <algorithm>
#include <atomic>
#include <cmath>
#include <exception>
#include <filesystem>
#include <system_error>
#include <thread>

namespace kelp::phantom {

namespace {

constexpr int largestSize = 4096;
constexpr int largestNrBScans = 1024;
constexpr double strongestNoise = 10.0;

void makeFolder(const QDir& folder)
{
    std::error_code error;
    const QString path = folder.absolutePath();
    std::filesystem::create_directories(QFile::encodeName(path).toStdString(), error);
    if (error) {
        throw IOFailure(QString("Could not create the folder %1: %2")
                            .arg(path, QString::fromStdString(error.message())));
    }
}

/// One B-scan where the pattern has no more.
Options completed(Options options)
{
    if (options.pattern == Pattern::Section || options.pattern == Pattern::Circle) {
        options.bScans = 1;
    }
    return options;
}

QString sizeProblem(const char* name, int value, int largest)
{
    return value >= 1 && value <= largest
               ? QString()
               : QString("The %1 must be from 1 to %2, not %3.").arg(name).arg(largest).arg(value);
}

/// Names as a device gives them: a number of the series and one of the image.
QStringList imageFileNames(const Options& options)
{
    const std::uint64_t series = streamSeed(options.seed, Stream::Identity) & 0xFFFFFU;
    QStringList names;
    for (int image = 0; image <= options.bScans; ++image) {
        names += QString("%1%2.%3")
                     .arg(QString("%1").arg(series, 5, 16, QChar('0')).toUpper())
                     .arg(image, 4, 10, QChar('0'))
                     .arg(options.imageFormat);
    }
    return names;
}

unsigned short rowOf(double depth, int rows)
{
    return static_cast<unsigned short>(std::clamp(std::floor(depth), 0.0, rows - 1.0));
}

QList<Surface> truthOf(const Options& options, const std::vector<SurfaceSlice>& slices)
{
    static const char* const identifiers[nrSurfaces] = {"ILM", "GCL",  "INL", "ONL",
                                                        "ISe", "IRPE", "BM"};
    QList<Surface> surfaces;
    for (int index = 0; index < nrSurfaces; ++index) {
        if (index == IRPE && options.kind != Kind::Drusen) {
            continue;
        }
        Surface surface{identifiers[index], {}};
        for (const SurfaceSlice& slice : slices) {
            std::vector<unsigned short>& rows = surface.rows.emplace_back();
            rows.reserve(slice.size());
            for (const SurfaceColumn& column : slice) {
                rows.push_back(rowOf(column.depth[static_cast<std::size_t>(index)], options.rows));
            }
        }
        surfaces += surface;
    }
    return surfaces;
}

QByteArray asText(const Surface& surface)
{
    QByteArray text;
    for (const std::vector<unsigned short>& row : surface.rows) {
        for (const unsigned short position : row) {
            text += QByteArray::number(position);
            text += '\t';
        }
        text += '\n';
    }
    return text;
}

/// Calls work(i) for every i below count on all cores; the first failure is thrown on.
template <typename Work>
void forAll(std::size_t count, const Work& work)
{
    const std::size_t nrThreads =
        std::clamp<std::size_t>(std::thread::hardware_concurrency(), 1, count);
    std::atomic<std::size_t> next{0};
    std::vector<std::exception_ptr> failures(nrThreads);
    const auto run = [&](std::size_t thread) {
        try {
            for (std::size_t i = next++; i < count; i = next++) {
                work(i);
            }
        } catch (...) {
            failures[thread] = std::current_exception();
            next = count;
        }
    };
    std::vector<std::thread> threads;
    for (std::size_t thread = 1; thread < nrThreads; ++thread) {
        threads.emplace_back(run, thread);
    }
    run(0);
    for (std::thread& thread : threads) {
        thread.join();
    }
    for (const std::exception_ptr& failure : failures) {
        if (failure) {
            std::rethrow_exception(failure);
        }
    }
}

/// One synthetic eye and the scan that is made of it.
class Phantom
{
public:
    explicit Phantom(const Options& options)
        : m_options(completed(checked(options))), m_geometry(makeGeometry(m_options)),
          m_anatomy(m_options.kind, m_options.seed), m_vessels(m_options.seed),
          m_slices(placeSurfaces(m_options, m_geometry, m_anatomy, m_vessels))
    {
    }

    Export describe(const QDir& folder) const
    {
        Export result;
        result.xmlPath = folder.absoluteFilePath("export.xml");
        result.seriesId = seriesIdOf(m_options);
        result.surfaces = truthOf(m_options, m_slices);
        for (std::size_t bScan = 0; bScan < m_slices.size(); ++bScan) {
            result.fillPixels.push_back(
                m_options.fill ? DeviceFrame(m_options, bScan, m_slices[bScan]).uncoveredPixels()
                               : 0);
        }
        result.foveaX = m_geometry.fovea.x;
        result.foveaY = m_geometry.fovea.y;
        for (const QString& name : imageFileNames(m_options)) {
            result.imagePaths += folder.absoluteFilePath(name);
        }
        return result;
    }

    Export write(const QDir& folder) const
    {
        makeFolder(folder);
        const Export result = describe(folder);
        writeImages(result.imagePaths);
        for (const Surface& surface : result.surfaces) {
            writeFileAtomically(
                folder.absoluteFilePath(QString("truth_%1.csv").arg(surface.identifier)),
                asText(surface));
        }
        // Last, so that an export that can be opened is a whole one.
        writeFileAtomically(result.xmlPath, exportXml(m_options, m_geometry,
                                                      imageFileNames(m_options), result.surfaces));
        return result;
    }

private:
    static const Options& checked(const Options& options)
    {
        constexpr Place place{"libraries/Phantom/src/Phantom", "kelp::phantom::writeExport"};
        const QString problem = problemWith(options);
        check(problem.isEmpty(), place, problem);
        return options;
    }

    void writeImages(const QStringList& paths) const
    {
        prepareImageWriting(m_options.imageFormat);
        const BScanRenderer renderer(m_options, m_geometry);
        forAll(m_slices.size() + 1, [&](std::size_t image) {
            writeImage(paths[static_cast<int>(image)],
                       image == 0 ? renderLocalizer(m_options, m_geometry, m_anatomy, m_vessels)
                                  : renderer.render(image - 1, m_slices[image - 1]),
                       m_options.imageFormat);
        });
    }

    Options m_options;
    ScanGeometry m_geometry;
    RetinaAnatomy m_anatomy;
    VesselMap m_vessels;
    std::vector<SurfaceSlice> m_slices;
};

} // namespace

QStringList imageFormats()
{
    return {"tif", "bmp", "png", "jpg"};
}

QString problemWith(const Options& options)
{
    for (const QString& problem :
         {sizeProblem("number of A-scans", options.aScans, largestSize),
          sizeProblem("number of rows", options.rows, largestSize),
          sizeProblem("number of B-scans", options.bScans, largestNrBScans),
          sizeProblem("size of the localizer", options.localizerSize, largestSize)}) {
        if (!problem.isEmpty()) {
            return problem;
        }
    }
    if (!(options.noise >= 0.0 && options.noise <= strongestNoise)) {
        return QString("The noise must be from 0 to %1, not %2.")
            .arg(strongestNoise)
            .arg(options.noise);
    }
    if (options.fill && options.rows < DeviceFrame::leastRows) {
        return QString("The device's fill needs at least %1 rows, not %2.")
            .arg(DeviceFrame::leastRows)
            .arg(options.rows);
    }
    if (!imageFormats().contains(options.imageFormat)) {
        return QString("The image format must be one of %1, not \"%2\".")
            .arg(imageFormats().join(", "), options.imageFormat);
    }
    return {};
}

Export describeExport(const QString& folder, const Options& options)
{
    return Phantom(options).describe(folder);
}

Export writeExport(const QString& folder, const Options& options)
{
    return Phantom(options).write(folder);
}

} // namespace kelp::phantom
