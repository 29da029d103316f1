#include "OCTScanUtils.h"

#include "LayerUtils.h"
#include "kelpCheck.h"
#include "kelpImageTools.h"
#include "kelpTrace.h"

#include <QDataStream>
#include <QDir>
#include <QFile>
#include <QTextStream>

#include <algorithm>
#include <vector>

namespace kelp::oct::OCTScanUtils {

namespace {

constexpr const char* sourcePath = "libraries/OCTScan/src/data/OCTScanUtils";
constexpr Place imageVolumePlace{sourcePath, "kelp::oct::OCTScanUtils::getImageVolume"};
constexpr Place labelVolumePlace{sourcePath, "kelp::oct::OCTScanUtils::getLabelVolume"};
constexpr Place metaImagePlace{sourcePath, "kelp::oct::OCTScanUtils::writeMetaImage"};
constexpr Place layersCSVPlace{sourcePath, "kelp::oct::OCTScanUtils::writeLayersCSV"};
constexpr Place thicknessCSVPlace{sourcePath, "kelp::oct::OCTScanUtils::writeThicknessCSV"};
constexpr Place layersRawPlace{sourcePath, "kelp::oct::OCTScanUtils::writeLayersRawUInt16"};

/// The size and spacing of a scan's volume.
struct VolumeGeometry
{
    Vector3<int> size;
    Vector3<double> spacing;
};

VolumeGeometry geometryOf(const OCTScan& scan, const Place& place)
{
    const Vector3d spacing = scan.getVolumeSpacing();
    const VolumeGeometry geometry{scan.getVolumeSize(), {spacing.x, spacing.y, spacing.z}};
    const bool hasVoxels = geometry.size.x > 0 && geometry.size.y > 0 && geometry.size.z > 0;
    check(hasVoxels, place, "No voxels in oct volume.");
    return geometry;
}

/// The final layers in the order in which the segmentation has them.
QList<LayerNamePtr> finalLayerNames(const OCTScanSegmentation& segmentation)
{
    QList<LayerNamePtr> names = segmentation.getAllLayerNames();
    const auto isLeftOut = [](const LayerNamePtr& name) { return !name || !name->isFinal(); };
    names.erase(std::remove_if(names.begin(), names.end(), isLeftOut), names.end());
    return names;
}

/// A mask is as wide as the last B-scan, a surface as the first one.
void checkFits(const MaskMatrix& mask, unsigned rows, unsigned columns, const Place& place)
{
    check(mask.rows == rows && mask.columns == columns, place,
          QString("Mismatch between mask (%1 x %2) and scan (%3 x %4).")
              .arg(mask.rows)
              .arg(mask.columns)
              .arg(rows)
              .arg(columns));
}

/// One slice of the label volume: adds 1 to every voxel at or below a surface.
void addLabels(unsigned char* slice, const Vector3<int>& size, const std::vector<int>& firstRows)
{
    for (int y = 0; y < size.y; ++y) {
        unsigned char* const line = slice + static_cast<std::size_t>(y) * firstRows.size();
        for (std::size_t x = 0; x < firstRows.size(); ++x) {
            line[x] = static_cast<unsigned char>(line[x] + (firstRows[x] <= y ? 1 : 0));
        }
    }
}

void addLabels(Image& labels, const VolumeLayer& surface, const MaskMatrix& mask)
{
    const Vector3<int>& size = labels.getDimensions();
    const std::size_t sliceSize =
        static_cast<std::size_t>(size.x) * static_cast<std::size_t>(size.y);
    std::vector<int> firstRows(surface.columns);
    for (unsigned z = 0; z < surface.rows; ++z) {
        for (unsigned x = 0; x < surface.columns; ++x) {
            firstRows[x] = mask(z, x) != 0 ? size.y : static_cast<int>(surface(z, x));
        }
        addLabels(labels.pixels<unsigned char>() + z * sliceSize, size, firstRows);
    }
}

/// The label of every voxel before the surfaces are counted: 0 in masked columns, else 1.
void fillWithVitreous(Image& labels, const MaskMatrix& mask)
{
    const Vector3<int>& size = labels.getDimensions();
    monoImageSwitch(labels.getPixelTypeId(), [&](auto pixel) {
        using Pixel = decltype(pixel);
        Pixel* line = labels.pixels<Pixel>();
        for (unsigned z = 0; z < mask.rows; ++z) {
            const unsigned char* const excluded = &mask(z, 0);
            for (int y = 0; y < size.y; ++y, line += size.x) {
                std::transform(excluded, excluded + mask.columns, line, [](unsigned char byte) {
                    return static_cast<Pixel>(byte != 0 ? 0 : 1);
                });
            }
        }
    });
}

/// What the exporters into a directory share: their arguments, once they are checked, and the way
/// they open files and look whether these came to stand whole.
class DirectoryExport
{
public:
    DirectoryExport(const OCTScanSegPtr& segmentation, const QString& directory,
                    QStringList* failedFiles, const Place& place)
        : m_failedFiles(failedFiles)
    {
        check(!segmentation.isNull(), place, "OCT scan segmentation is null.");
        m_scan = segmentation->getOCT();
        check(!m_scan.isNull(), place, "OCT scan is null.");
        const SegmentationMaskPtr mask = segmentation->getMask();
        check(!mask.isNull(), place, "Segmentation mask is null.");
        m_mask = mask->getMaskMatrix();
        checkFits(*m_mask, static_cast<unsigned>(m_scan->getBScanCount()),
                  static_cast<unsigned>(m_scan->getBScan(0)->getNrAScans()), place);
        m_directory.setPath(directory);
        // An empty path would mean the current folder to QDir.
        if (directory.isEmpty() || !m_directory.exists()) {
            throw IOFailure("Directory does not exist.");
        }
    }

    const OCTScan& scan() const { return *m_scan; }

    /// Tab-ended elements, a line per B-scan. Masked ones are -1, the others writeElement writes.
    template <typename WriteElement>
    void writeText(const QString& fileName, const VolumeLayer& matrix,
                   WriteElement&& writeElement) const
    {
        writeFile(fileName, QIODevice::WriteOnly | QIODevice::Text, [&](QFile& file) {
            QTextStream stream(&file);
            for (unsigned row = 0; row < matrix.rows; ++row) {
                for (unsigned column = 0; column < matrix.columns; ++column) {
                    if ((*m_mask)(row, column) != 0) {
                        stream << "-1\t";
                    } else {
                        writeElement(stream, matrix(row, column));
                        stream << '\t';
                    }
                }
                stream << '\n';
            }
            stream.flush();
            return stream.status() == QTextStream::Ok;
        });
    }

    void writeLowBytes(const QString& fileName, const VolumeLayer& matrix) const
    {
        writeFile(fileName, QIODevice::WriteOnly, [&](QFile& file) {
            QByteArray bytes(static_cast<int>(matrix.size()), '\0');
            std::transform(matrix.begin(), matrix.end(), m_mask->begin(), bytes.begin(),
                           [](unsigned short position, unsigned char excluded) {
                               return static_cast<char>(excluded != 0 ? 0xFF : position & 0xFF);
                           });
            QDataStream stream(&file);
            return stream.writeRawData(bytes.constData(), bytes.size()) == bytes.size();
        });
    }

private:
    template <typename WriteContent>
    void writeFile(const QString& fileName, QIODevice::OpenMode mode,
                   WriteContent&& writeContent) const
    {
        QFile file(m_directory.filePath(fileName));
        // Bytes may still wait in the file's buffer, and a full disk shows only when they leave it.
        const bool isWhole = file.open(mode) && writeContent(file) && file.flush();
        if (!isWhole && m_failedFiles) {
            m_failedFiles->append(file.fileName());
        }
    }

    QStringList* m_failedFiles;
    OCTScanPtr m_scan;
    MaskMatrixPtr m_mask;
    QDir m_directory;
};

} // namespace

QList<OCTScanSegPtr> getAllSegmentationsOf(const DataPointer<Study>& study, const OCTScanPtr& scan)
{
    Trace() << "OCTScanUtils::getAllSegmentationsOf";
    QList<OCTScanSegPtr> segmentations;
    if (study.isNull()) {
        return segmentations;
    }
    study->ensureLoaded();
    QList<Data*> items;
    study->getAllProcessData(items);
    for (Data* const item : items) {
        if (!item->isA(OCTScanSegmentation::typeName())) {
            continue;
        }
        const OCTScanSegPtr segmentation = dynamic_cast<OCTScanSegmentation*>(item);
        if (segmentation.isNull()) {
            continue;
        }
        const OCTScanPtr itsScan = segmentation->getOCT();
        if (scan.isNull() || (!itsScan.isNull() && itsScan->getGUID() == scan->getGUID())) {
            segmentations.append(segmentation);
        }
    }
    return segmentations;
}

ImagePtr getImageVolume(const OCTScanPtr& scan)
{
    check(!scan.isNull(), imageVolumePlace, "OCT scan is null.");
    const auto [size, spacing] = geometryOf(*scan, imageVolumePlace);
    const QList<ImagePtr> images = scan->getBScanImages();
    check(images.size() == size.z, imageVolumePlace, "Dimension mismatch.");

    const ImagePtr volume = Image::create(MonoUInt8, size, spacing);
    const std::size_t sliceSize =
        static_cast<std::size_t>(size.x) * static_cast<std::size_t>(size.y);
    auto* slice = volume->pixels<unsigned char>();
    for (const ImagePtr& image : images) {
        check(!image.isNull(), imageVolumePlace, "BScan is null.");
        check(image->getRows() == size.y, imageVolumePlace, "BScan row dimension mismatch.");
        check(image->getColumns() == size.x, imageVolumePlace, "BScan column dimension mismatch.");
        const ImagePtr bytes =
            image->getPixelTypeId() == MonoUInt8 ? image : image->convertTo(MonoUInt8);
        const auto* const pixels = bytes->pixels<unsigned char>();
        slice = std::copy(pixels, pixels + sliceSize, slice);
    }
    return volume;
}

ImagePtr getLabelVolume(const OCTScanSegPtr& segmentation)
{
    Trace() << "get label volume";
    check(!segmentation.isNull(), labelVolumePlace, "OCT segmentation is null.");
    const OCTScanPtr scan = segmentation->getOCT();
    check(!scan.isNull(), labelVolumePlace, "OCT scan is null.");
    const auto [size, spacing] = geometryOf(*scan, labelVolumePlace);
    const SegmentationMaskPtr mask = segmentation->getMask();
    check(!mask.isNull(), labelVolumePlace, "Segmentation mask is null.");
    const MaskMatrixPtr maskMatrix = mask->getMaskMatrix();
    checkFits(*maskMatrix, static_cast<unsigned>(size.z), static_cast<unsigned>(size.x),
              labelVolumePlace);

    const ImagePtr labels = Image::create(MonoUInt8, size, spacing);
    fillWithVitreous(*labels, *maskMatrix);
    for (const LayerNamePtr& name : finalLayerNames(*segmentation)) {
        addLabels(*labels, *segmentation->getVolumeLayer(name), *maskMatrix);
    }
    Trace() << "get label volume done";
    return labels;
}

void writeMetaImage(const OCTScanPtr& scan, const QString& path)
{
    check(!scan.isNull(), metaImagePlace, "OCT scan is null.");
    ImageTools::storeMetaImage(getImageVolume(scan), path);
}

void writeMetaImage(const OCTScanSegPtr& segmentation, const QString& path)
{
    // The text speaks of the scan although the segmentation is tested.
    check(!segmentation.isNull(), metaImagePlace, "OCT scan is null.");
    ImageTools::storeMetaImage(getLabelVolume(segmentation), path);
}

void writeLayersCSV(const OCTScanSegPtr& segmentation, const QString& directory,
                    QStringList* failedFiles)
{
    const DirectoryExport target(segmentation, directory, failedFiles, layersCSVPlace);
    for (const LayerNamePtr& name : finalLayerNames(*segmentation)) {
        target.writeText("layer_" + name->getIdentifier() + ".csv",
                         *segmentation->getVolumeLayer(name),
                         [](QTextStream& stream, unsigned short position) { stream << position; });
    }
}

void writeThicknessCSV(const OCTScanSegPtr& segmentation, const QString& directory,
                       QStringList* failedFiles)
{
    const DirectoryExport target(segmentation, directory, failedFiles, thicknessCSVPlace);
    QList<LayerNamePtr> names = finalLayerNames(*segmentation);
    // Stable, so that the pairs around ISe and IRPE, which share an order, are always the same.
    std::stable_sort(names.begin(), names.end(),
                     [](const LayerNamePtr& a, const LayerNamePtr& b) { return *a < *b; });
    const auto micrometresPerRow = static_cast<float>(target.scan().getSliceSpacing().y * 1000.0);
    for (int i = 0; i + 1 < names.size(); ++i) {
        const LayerNamePtr& top = names[i];
        const LayerNamePtr& bottom = names[i + 1];
        const VolumeLayerPtr thickness = LayerUtils::subtractLayers(
            segmentation->getVolumeLayer(top), segmentation->getVolumeLayer(bottom));
        target.writeText("thickness_" + top->getIdentifier() + "_" + bottom->getIdentifier() +
                             ".csv",
                         *thickness, [micrometresPerRow](QTextStream& stream, unsigned short rows) {
                             stream << static_cast<float>(rows) * micrometresPerRow;
                         });
    }
}

void writeLayersRawUInt16(const OCTScanSegPtr& segmentation, const QString& directory,
                          QStringList* failedFiles)
{
    const DirectoryExport target(segmentation, directory, failedFiles, layersRawPlace);
    for (const LayerNamePtr& name : finalLayerNames(*segmentation)) {
        target.writeLowBytes("layer_" + name->getIdentifier() + ".raw",
                             *segmentation->getVolumeLayer(name));
    }
}

} // namespace kelp::oct::OCTScanUtils
