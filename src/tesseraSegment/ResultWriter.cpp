#include "ResultWriter.h"

#include "OCTScanUtils.h"
#include "Pictures.h"
#include "kelpException.h"
#include "kelpFileWriter.h"

#include <QFile>
#include <QStorageInfo>

namespace kelp::command {

namespace {

namespace utils = kelp::oct::OCTScanUtils;

/// A writer of the scan library that passes over files which cannot be written whole, telling
/// their paths.
using DirectoryWriter = void (*)(const OCTScanSegPtr&, const QString&, QStringList*);

void requireWhole(DirectoryWriter write, const OCTScanSegPtr& segmentation, const QString& folder)
{
    QStringList failedFiles;
    write(segmentation, folder, &failedFiles);
    if (failedFiles.isEmpty()) {
        return;
    }
    constexpr qint64 nextToNothing = 4096;
    const bool isFull = QStorageInfo(folder).bytesAvailable() < nextToNothing;
    throw IOFailure(QString("%1 cannot be written: %2.")
                        .arg(failedFiles.first(),
                             isFull ? "no space is left on the device" : "the system refused it"));
}

/// The table, and the surfaces whose positions, and so the means of the layers above and below
/// them, are no measurement.
QString etdrsText(const RunRecord& record)
{
    QString text = record.etdrs.toTabSeparated();
    if (!record.notFound.isEmpty()) {
        text += "no surface found\t" + record.notFound.join('\t') + '\n';
    }
    return text;
}

} // namespace

void writeResults(const OCTScanSegPtr& segmentation, const RunRecord& record, const QString& folder,
                  const std::function<void(const QString&, int)>& progress)
{
    const Formats& formats = record.settings.formats;
    progress("writing files", 0);
    kelp::writeFileAtomically(folder + "/segmentation.b64",
                              segmentation->toBase64String().toLatin1() + '\n');
    if (formats.positions) {
        requireWhole(utils::writeLayersCSV, segmentation, folder);
    }
    if (formats.thickness) {
        requireWhole(utils::writeThicknessCSV, segmentation, folder);
    }
    if (formats.raw) {
        requireWhole(utils::writeLayersRawUInt16, segmentation, folder);
    }
    if (formats.etdrs) {
        kelp::writeFileAtomically(folder + "/etdrs.csv", etdrsText(record).toUtf8());
    }
    if (formats.metaimage) {
        utils::writeMetaImage(segmentation->getOCT(), folder + "/oct.mha");
        utils::writeMetaImage(segmentation, folder + "/segmentation.mha");
    }
    if (formats.pictures) {
        writePictures(segmentation, record.notFound, folder, [&progress](int written, int all) {
            progress("drawing pictures", 100 * written / all);
        });
    }
}

} // namespace kelp::command
