#include "ScanSurfaces.h"

#include "LayerName.h"
#include "kelpException.h"

#include <QFile>
#include <QFileInfo>

namespace kelp::compare {

namespace {

constexpr qint64 maximumBytes = 256LL * 1024 * 1024;

} // namespace

QString sizeText(const ScanSurfaces& scan)
{
    return QString(scan.nrBScans == 1 ? "%1 B-scan of %2 A-scans" : "%1 B-scans of %2 A-scans")
        .arg(scan.nrBScans)
        .arg(scan.nrAScans);
}

QStringList knownSurfaces()
{
    using namespace kelp::oct;
    QStringList identifiers;
    for (const LayerNamePtr& name :
         {LayerNameILM::create(), LayerNameGCL::create(), LayerNameINL::create(),
          LayerNameONL::create(), LayerNameISe::create(), LayerNameIRPE::create(),
          LayerNameBM::create()}) {
        identifiers.append(name->getIdentifier());
    }
    return identifiers;
}

QByteArray readWholeFile(const QString& path)
{
    QFile file(path);
    if (QFileInfo(path).isDir()) {
        throw IOFailure(QString("%1: This is a folder, not a file.").arg(path));
    }
    if (!file.open(QIODevice::ReadOnly)) {
        throw IOFailure(QString("%1: %2.").arg(path, file.errorString()));
    }
    const QByteArray content = file.read(maximumBytes + 1);
    if (content.size() > maximumBytes) {
        throw IOFailure(QString("%1: The file is too large.").arg(path));
    }
    if (file.error() != QFileDevice::NoError) {
        throw IOFailure(QString("%1: %2.").arg(path, file.errorString()));
    }
    return content;
}

void refuseFile(const QString& path, const QString& text)
{
    throw ParsingError(QString("%1: %2").arg(path, text));
}

} // namespace kelp::compare
