#include "kelpImageConverters.h"

#include <cstring>

namespace kelp {

namespace {

QImage::Format qtFormat(int pixelTypeId)
{
    switch (pixelTypeId) {
    case MonoUInt8:
        return QImage::Format_Grayscale8;
    case MonoUInt16:
        return QImage::Format_Grayscale16;
    case ColorRGBA8:
        return QImage::Format_RGBA8888;
    default:
        throw NotImplemented(QString("No picture of pixel type %1.").arg(pixelTypeId));
    }
}

} // namespace

QImage ImageConverters::makeQImage(const ConstImagePtr& image)
{
    if (!image) {
        return QImage();
    }
    QImage result(image->getWidth(), image->getHeight(), qtFormat(image->getPixelTypeId()));
    if (result.isNull() || image->getNumberOfPixels() == 0) {
        return QImage();
    }
    const std::size_t bytesPerRow =
        bytesPerPixel(image->getPixelTypeId()) * static_cast<std::size_t>(image->getWidth());
    for (int row = 0; row < image->getHeight(); ++row) {
        std::memcpy(result.scanLine(row),
                    image->pixels<unsigned char>() + bytesPerRow * static_cast<std::size_t>(row),
                    bytesPerRow);
    }
    return result;
}

} // namespace kelp
