#include "PictureFile.h"

#include "kelpException.h"

#include <QFontDatabase>
#include <QGuiApplication>
#include <QImageWriter>

namespace kelp::command {

namespace {

/// Of Qt's 0 to 100 for PNG: close to the smallest files at a fraction of the time.
constexpr int pngCompression = 30;

} // namespace

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

bool canDrawText()
{
    static const bool hasFont =
        qobject_cast<QGuiApplication*>(QCoreApplication::instance()) != nullptr &&
        !QFontDatabase().families().isEmpty();
    return hasFont;
}

} // namespace kelp::command
