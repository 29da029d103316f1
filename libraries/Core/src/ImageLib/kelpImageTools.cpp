#include "kelpImageTools.h"

#include "kelpCheck.h"
#include "kelpFileWriter.h"

#include <QtEndian>

#include <charconv>
#include <cstring>

namespace kelp {

namespace {

constexpr char sourcePath[] = "libraries/Core/src/ImageLib/kelpImageTools";

static_assert(Q_BYTE_ORDER == Q_LITTLE_ENDIAN, "pixels are written as they lie in memory");

/// The fewest digits that read back as the same number.
QByteArray exactText(double value)
{
    char text[32];
    const std::to_chars_result result = std::to_chars(text, text + sizeof(text), value);
    return QByteArray(text, static_cast<int>(result.ptr - text));
}

const char* metaElementType(int pixelTypeId)
{
    switch (pixelTypeId) {
    case MonoInt8:
        return "MET_CHAR";
    case MonoUInt32:
        return "MET_UINT";
    case MonoInt32:
        return "MET_INT";
    case MonoFloat:
        return "MET_FLOAT";
    case MonoUInt16:
        return "MET_USHORT";
    default:
        return "MET_UCHAR";
    }
}

QByteArray metaHeader(const Image& image)
{
    const Vector3<double>& spacing = image.getSpacing();
    const Vector3<int>& size = image.getDimensions();
    QByteArray header = "ObjectType = Image\n"
                        "NDims = 3\n"
                        "BinaryData = True\n"
                        "BinaryDataByteOrderMSB = False\n"
                        "CompressedData = False\n";
    header += "ElementSpacing = " + exactText(spacing.x) + ' ' + exactText(spacing.y) + ' ' +
              exactText(spacing.z) + '\n';
    header += "DimSize = " + QByteArray::number(size.x) + ' ' + QByteArray::number(size.y) + ' ' +
              QByteArray::number(size.z) + '\n';
    if (image.getPixelTypeId() == ColorRGBA8) {
        header += "ElementNumberOfChannels = 4\n";
    }
    header += QByteArray("ElementType = ") + metaElementType(image.getPixelTypeId()) + '\n';
    // Readers take this line for the end of the header.
    header += "ElementDataFile = LOCAL\n";
    return header;
}

} // namespace

QList<ConstImagePtr> ImageTools::slice(const ConstImagePtr& image)
{
    check(!image.isNull(), {sourcePath, "kelp::ImageTools::slice"}, "Image is null.");
    const Vector3<int>& size = image->getDimensions();
    const std::size_t bytesPerSlice = bytesPerPixel(image->getPixelTypeId()) *
                                      static_cast<std::size_t>(size.x) *
                                      static_cast<std::size_t>(size.y);
    QList<ConstImagePtr> slices;
    for (int z = 0; z < size.z; ++z) {
        const ImagePtr slice =
            Image::create(image->getPixelTypeId(), {size.x, size.y, 1}, image->getSpacing());
        std::memcpy(slice->pixels<unsigned char>(),
                    image->pixels<unsigned char>() + bytesPerSlice * static_cast<std::size_t>(z),
                    bytesPerSlice);
        slices.append(slice);
    }
    return slices;
}

void ImageTools::storeMetaImage(const ConstImagePtr& image, const QString& path)
{
    check(!image.isNull(), {sourcePath, "kelp::ImageTools::storeMetaImage"}, "Image is null.");
    AtomicFile file(path);
    file.write(metaHeader(*image));
    file.write(image->pixels<unsigned char>(),
               bytesPerPixel(image->getPixelTypeId()) * image->getNumberOfPixels());
    file.commit();
}

void throwUnsupportedMonoPixelType()
{
    throw WatchdogException("KELP_MONO_IMAGE_SWITCH called with unsupported pixel type. in "
                            "libraries/Core/src/ImageLib/kelpImageTools at line 190");
}

} // namespace kelp
