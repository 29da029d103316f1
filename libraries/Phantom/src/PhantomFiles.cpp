#include "PhantomFiles.h"

#include "kelpException.h"

#include <QSaveFile>

namespace kelp::phantom {

void writeWholeFile(const QString& path, const QByteArray& content)
{
    QSaveFile file(path);
    if (!file.open(QIODevice::WriteOnly) || file.write(content) != content.size() ||
        !file.commit()) {
        throw IOFailure(QString("Could not write %1: %2").arg(path, file.errorString()));
    }
}

} // namespace kelp::phantom
