#include "kelpImageTools.h"

#include <QBuffer>
#include <QFile>
#include <QImage>
#include <QImageReader>
#include <QtEndian>

#include <cstring>

namespace kelp {

namespace {

/// Far above what a device writes; a damaged header must not ask for all memory.
constexpr qint64 mostPixels = 64 * 1024 * 1024;
constexpr qint64 mostBytes = 1024 * 1024 * 1024;

unsigned readBigEndian16(const QByteArray& bytes, int at)
{
    return qFromBigEndian<quint16>(bytes.constData() + at);
}

/// Qt's JPEG reader pads a file that ends early with grey; whole files hold the end mark behind
/// the start of their first scan.
bool isWholeJpeg(const QByteArray& bytes)
{
    constexpr unsigned startOfScan = 0xffda;
    int at = 2;
    while (at + 4 <= bytes.size()) {
        const unsigned marker = readBigEndian16(bytes, at);
        if ((marker & 0xff00u) != 0xff00u) {
            return false;
        }
        if (marker == startOfScan) {
            return bytes.indexOf(QByteArray("\xff\xd9", 2), at) >= 0;
        }
        const bool isFill = marker == 0xffffu;
        at += isFill ? 1 : 2 + static_cast<int>(readBigEndian16(bytes, at + 2));
    }
    return false;
}

/// Qt's BMP reader leaves the rows that are missing black.
bool isWholeBmp(const QByteArray& bytes)
{
    constexpr int headerBytes = 38;
    if (bytes.size() < headerBytes) {
        return false;
    }
    const auto field = [&bytes](int at) {
        return static_cast<qint64>(qFromLittleEndian<qint32>(bytes.constData() + at));
    };
    const qint64 bitsPerPixel = qFromLittleEndian<quint16>(bytes.constData() + 28);
    const qint64 compression = field(30);
    constexpr qint64 uncompressed = 0;
    constexpr qint64 bitFields = 3;
    const qint64 bytesPerRow = (field(18) * bitsPerPixel + 31) / 32 * 4;
    const bool isPlain = compression == uncompressed || compression == bitFields;
    const qint64 pixelBytes = isPlain ? bytesPerRow * qAbs(field(22)) : field(34);
    return field(10) + pixelBytes <= bytes.size();
}

bool isWhole(const QByteArray& format, const QByteArray& bytes)
{
    if (format == "jpeg" || format == "jpg") {
        return isWholeJpeg(bytes);
    }
    if (format == "bmp") {
        return isWholeBmp(bytes);
    }
    // The readers of the others notice by themselves.
    return format == "tiff" || format == "tif" || format == "png";
}

QImage readImage(const QString& path)
{
    QFile file(path);
    if (!file.open(QIODevice::ReadOnly) || file.size() > mostBytes) {
        return QImage();
    }
    QByteArray bytes = file.readAll();
    QBuffer buffer(&bytes);
    buffer.open(QIODevice::ReadOnly);
    QImageReader reader(&buffer);
    reader.setDecideFormatFromContent(true);
    if (!isWhole(reader.format(), bytes)) {
        return QImage();
    }
    const QSize size = reader.size();
    if (size.isEmpty() || static_cast<qint64>(size.width()) * size.height() > mostPixels) {
        return QImage();
    }
    return reader.read();
}

ImagePtr copied(const QImage& source, int pixelTypeId)
{
    const ImagePtr image = Image::create(pixelTypeId, {source.width(), source.height(), 1});
    const std::size_t bytesPerRow =
        bytesPerPixel(pixelTypeId) * static_cast<std::size_t>(source.width());
    for (int row = 0; row < source.height(); ++row) {
        std::memcpy(image->pixels<unsigned char>() + bytesPerRow * static_cast<std::size_t>(row),
                    source.constScanLine(row), bytesPerRow);
    }
    return image;
}

} // namespace

ImagePtr ImageTools::loadImage(const QString& path)
{
    QImage source = readImage(path);
    if (source.isNull()) {
        return ImagePtr();
    }
    if (source.format() == QImage::Format_Indexed8 && !source.hasAlphaChannel()) {
        // Entries of the color table that no pixel uses may hold anything.
        source = source.convertToFormat(QImage::Format_RGB32);
    }
    if (source.format() == QImage::Format_Grayscale16) {
        return copied(source, MonoUInt16);
    }
    // Devices write grey pictures with color tables or three equal channels too.
    if (!source.hasAlphaChannel() && source.allGray()) {
        return copied(source.convertToFormat(QImage::Format_Grayscale8), MonoUInt8);
    }
    return copied(source.convertToFormat(QImage::Format_RGBA8888), ColorRGBA8);
}

} // namespace kelp
