#include "kelpImage.h"

#include "kelpCheck.h"
#include "kelpImageTools.h"

#include <QColor>

#include <algorithm>
#include <cmath>
#include <cstring>
#include <limits>

namespace kelp {

namespace {

constexpr char sourcePath[] = "libraries/Core/src/ImageLib/kelpImage";

template <typename Target, typename Source>
Target clampTo(Source value)
{
    if constexpr (std::is_floating_point_v<Target>) {
        return static_cast<Target>(value);
    } else {
        const double wanted = std::is_floating_point_v<Source>
                                  ? std::round(static_cast<double>(value))
                                  : static_cast<double>(value);
        const double low = std::numeric_limits<Target>::min();
        const double high = std::numeric_limits<Target>::max();
        // Written such that not-a-number becomes the lowest value.
        return wanted > low ? static_cast<Target>(std::min(wanted, high))
                            : std::numeric_limits<Target>::min();
    }
}

std::size_t checkedBytes(int pixelTypeId, const Vector3<int>& dimensions)
{
    constexpr Place place{sourcePath, "kelp::Image::create"};
    check(dimensions.x >= 0 && dimensions.y >= 0 && dimensions.z >= 0, place,
          "Image dimension is negative.");
    const std::size_t pixel = bytesPerPixel(pixelTypeId);
    const double wanted = static_cast<double>(dimensions.x) * dimensions.y * dimensions.z *
                          static_cast<double>(pixel);
    check(wanted <= 1e15, place, "Image does not fit into memory.");
    return pixel * static_cast<std::size_t>(dimensions.x) * static_cast<std::size_t>(dimensions.y) *
           static_cast<std::size_t>(dimensions.z);
}

} // namespace

std::size_t bytesPerPixel(int pixelTypeId)
{
    if (pixelTypeId == ColorRGBA8) {
        return 4;
    }
    return monoImageSwitch(pixelTypeId, [](auto pixel) { return sizeof(pixel); });
}

ImageBase::ImageBase(int pixelTypeId, const Vector3<int>& dimensions,
                     const Vector3<double>& spacing)
    : m_pixelTypeId(pixelTypeId), m_dimensions(dimensions), m_spacing(spacing)
{
}

std::size_t ImageBase::getNumberOfPixels() const
{
    return static_cast<std::size_t>(m_dimensions.x) * static_cast<std::size_t>(m_dimensions.y) *
           static_cast<std::size_t>(m_dimensions.z);
}

Image::Image(int pixelTypeId, const Vector3<int>& dimensions, const Vector3<double>& spacing)
    : ImageBase(pixelTypeId, dimensions, spacing), m_bytes(checkedBytes(pixelTypeId, dimensions)),
      m_data(new unsigned char[m_bytes]())
{
}

ImagePtr Image::create(int pixelTypeId, const Vector3<int>& dimensions)
{
    return create(pixelTypeId, dimensions, {1.0, 1.0, 1.0});
}

ImagePtr Image::create(int pixelTypeId, const Vector3<int>& dimensions,
                       const Vector3<double>& spacing)
{
    return ImagePtr(new Image(pixelTypeId, dimensions, spacing));
}

ImagePtr Image::copy() const
{
    ImagePtr result = create(getPixelTypeId(), getDimensions(), getSpacing());
    std::memcpy(result->m_data.get(), m_data.get(), m_bytes);
    return result;
}

ImagePtr Image::convertTo(int pixelTypeId) const
{
    if (pixelTypeId == getPixelTypeId()) {
        return copy();
    }
    ImagePtr result = create(pixelTypeId, getDimensions(), getSpacing());
    const std::size_t count = getNumberOfPixels();
    if (getPixelTypeId() == ColorRGBA8) {
        monoImageSwitch(pixelTypeId, [&](auto targetPixel) {
            using Target = decltype(targetPixel);
            const auto* const source = pixels<unsigned char>();
            Target* const target = result->pixels<Target>();
            for (std::size_t i = 0; i < count; ++i) {
                const unsigned char* const rgba = source + 4 * i;
                target[i] = clampTo<Target>(qGray(rgba[0], rgba[1], rgba[2]));
            }
        });
        return result;
    }
    monoImageSwitch(getPixelTypeId(), [&](auto sourcePixel) {
        using Source = decltype(sourcePixel);
        const Source* const source = pixels<Source>();
        if (pixelTypeId == ColorRGBA8) {
            auto* const target = result->pixels<unsigned char>();
            for (std::size_t i = 0; i < count; ++i) {
                std::fill_n(target + 4 * i, 3, clampTo<unsigned char>(source[i]));
                target[4 * i + 3] = 255;
            }
            return;
        }
        monoImageSwitch(pixelTypeId, [&](auto targetPixel) {
            using Target = decltype(targetPixel);
            std::transform(source, source + count, result->pixels<Target>(),
                           [](Source value) { return clampTo<Target>(value); });
        });
    });
    return result;
}

} // namespace kelp
