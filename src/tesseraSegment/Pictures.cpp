#include "Pictures.h"

#include "ParallelFor.h"
#include "kelpException.h"

#include <QDir>
#include <QImageWriter>

#include <algorithm>
#include <mutex>

namespace kelp::command {

namespace {

/// Of Qt's 0 to 100 for PNG: close to the smallest files at a fraction of the time.
constexpr int pngCompression = 30;

void writePicture(const QImage& picture, const QString& path)
{
    QImageWriter writer(path, "png");
    writer.setCompression(pngCompression);
    if (picture.isNull() || !writer.write(picture)) {
        throw IOFailure(QString("%1: %2.").arg(path, picture.isNull()
                                                         ? "the picture is too large for the memory"
                                                         : writer.errorString()));
    }
}

QList<kelp::oct::LayerNamePtr> finalLayers(const OCTScanSegPtr& segmentation)
{
    QList<kelp::oct::LayerNamePtr> layers;
    for (const auto& name : segmentation->getAllLayerNames()) {
        if (name->isFinal()) {
            layers.append(name);
        }
    }
    std::stable_sort(layers.begin(), layers.end(),
                     [](const auto& a, const auto& b) { return *a < *b; });
    return layers;
}

} // namespace

void writePictures(const OCTScanSegPtr& segmentation, const QString& folder,
                   const std::function<void(int, int)>& progress)
{
    const QString pictures = folder + "/pictures";
    if (!QDir().mkpath(pictures)) {
        throw IOFailure(QString("%1: The folder cannot be made.").arg(pictures));
    }
    const auto layers = finalLayers(segmentation);
    const int nrBScans = segmentation->getNrOfBScans();
    // What is made at first use is made here, before several threads ask for it.
    segmentation->getMask();
    canDrawText();

    std::mutex mutex;
    int written = 0;
    kelp::parallelFor(nrBScans, [&](int i) {
        writePicture(renderBScan(segmentation, i, layers),
                     QString("%1/bscan_%2.png").arg(pictures).arg(i, 3, 10, QChar('0')));
        const std::lock_guard lock(mutex);
        progress(++written, nrBScans + 1);
    });
    writePicture(renderEnface(segmentation), pictures + "/enface.png");
    progress(nrBScans + 1, nrBScans + 1);
}

} // namespace kelp::command
