#include "GreyImage.h"

#include "kelpException.h"
#include "kelpFileWriter.h"

#include <QBuffer>
#include <QByteArray>
#include <QImageWriter>

#include <algorithm>
#include <cmath>

namespace kelp::phantom {

QImage toGrey(const std::vector<float>& values, int columns, int rows)
{
    QImage image(columns, rows, QImage::Format_Grayscale8);
    for (int row = 0; row < rows; ++row) {
        const float* source =
            values.data() + static_cast<std::size_t>(row) * static_cast<std::size_t>(columns);
        uchar* target = image.scanLine(row);
        for (int column = 0; column < columns; ++column) {
            target[column] =
                static_cast<uchar>(std::floor(std::clamp(source[column], 0.0F, 255.0F) + 0.5F));
        }
    }
    return image;
}

void prepareImageWriting(const QString& format)
{
    // Qt's loader of image plug-ins belongs to the thread that asks for it first, and that must not
    // be one that ends soon.
    if (!QImageWriter::supportedImageFormats().contains(format.toLatin1())) {
        throw IOFailure(QString("Could not find Qt's plug-in that writes %1 images.").arg(format));
    }
}

void writeImage(const QString& path, QImage image, const QString& format)
{
    // Without this the resolution would be that of the screen, and the bytes would depend on it.
    constexpr int dotsPerMetre = 2835;
    image.setDotsPerMeterX(dotsPerMetre);
    image.setDotsPerMeterY(dotsPerMetre);
    QByteArray content;
    QBuffer buffer(&content);
    buffer.open(QIODevice::WriteOnly);
    QImageWriter writer(&buffer, format.toLatin1());
    if (format == "jpg") {
        writer.setQuality(92);
    }
    if (!writer.write(image)) {
        throw IOFailure(
            QString("Could not write the image %1: %2").arg(path, writer.errorString()));
    }
    writeFileAtomically(path, content);
}

} // namespace kelp::phantom
