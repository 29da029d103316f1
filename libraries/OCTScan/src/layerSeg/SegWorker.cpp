#include "SegWorker.h"

#include "SegWorkerParts.h"

namespace kelp::oct {

SegWorker::SegWorker(const QSharedPointer<SegWatcher>& watcher)
{
    // The arguments of the slots cross threads by these names.
    qRegisterMetaType<OCTScanSegPtr>("OCTScanSegPtr");
    qRegisterMetaType<InnerDistProps>("InnerDistProps");
    check(!watcher.isNull(), workerPlace("kelp::oct::SegWorker::SegWorker"), "SegWatcher is null.");
    m_watcher = watcher;
}

bool SegWorker::stopped()
{
    return abortSeen(*m_watcher);
}

} // namespace kelp::oct
