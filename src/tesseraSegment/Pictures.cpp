#include "Pictures.h"

#include "ParallelFor.h"
#include "PictureFile.h"
#include "kelpException.h"

#include <QDir>

#include <algorithm>
#include <mutex>

namespace kelp::command {

namespace {

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

void writePictures(const OCTScanSegPtr& segmentation, const QStringList& notFound,
                   const QString& folder, const std::function<void(int, int)>& progress)
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
        writePicture(renderBScan(segmentation, i, layers, notFound),
                     QString("%1/bscan_%2.png").arg(pictures).arg(i + 1, 3, 10, QChar('0')));
        const std::lock_guard lock(mutex);
        progress(++written, nrBScans + 1);
    });
    writePicture(renderEnface(segmentation, notFound), pictures + "/enface.png");
    progress(nrBScans + 1, nrBScans + 1);
}

} // namespace kelp::command
