#pragma once

#include "kelpVector.h"

#include <QSharedPointer>

#include <cstddef>
#include <memory>

namespace kelp {

/// Pixel types by the numbers that callers use. Mono types have one channel.
enum PixelTypeId
{
    MonoUInt8 = 0,
    MonoInt8 = 1,
    MonoUInt32 = 2,
    MonoInt32 = 3,
    MonoFloat = 4,
    ColorRGBA8 = 8, ///< four bytes a pixel: red, green, blue, alpha
    MonoUInt16 = 15
};

/// Bytes of one pixel. Throws NotImplemented for a number that names no type.
std::size_t bytesPerPixel(int pixelTypeId);

/// The geometry of a three-dimensional raster: x (columns) runs fastest, then y (rows), then z.
class ImageBase
{
public:
    virtual ~ImageBase() = default;

    int getPixelTypeId() const { return m_pixelTypeId; }
    const Vector3<int>& getDimensions() const { return m_dimensions; }
    int getWidth() const { return m_dimensions.x; }
    int getHeight() const { return m_dimensions.y; }
    int getColumns() const { return m_dimensions.x; }
    int getRows() const { return m_dimensions.y; }
    std::size_t getNumberOfPixels() const;
    /// Millimetres per pixel along x, y, z.
    const Vector3<double>& getSpacing() const { return m_spacing; }
    void setSpacing(const Vector3<double>& spacing) { m_spacing = spacing; }

protected:
    ImageBase(int pixelTypeId, const Vector3<int>& dimensions, const Vector3<double>& spacing);

private:
    int m_pixelTypeId;
    Vector3<int> m_dimensions;
    Vector3<double> m_spacing;
};

class Image;
using ImagePtr = QSharedPointer<Image>;
using ConstImagePtr = QSharedPointer<const Image>;

class Image : public ImageBase
{
public:
    /// All pixels zero, spacing 1. Throws Assertion for a negative dimension and for a size that
    /// does not fit into memory's addresses.
    static ImagePtr create(int pixelTypeId, const Vector3<int>& dimensions);
    static ImagePtr create(int pixelTypeId, const Vector3<int>& dimensions,
                           const Vector3<double>& spacing);

    /// Deep.
    ImagePtr copy() const;
    /// Values are kept (0 to 255 stay 0 to 255 in 16 bits), clamped to what the new type can hold,
    /// floats rounded to nearest. Colour becomes grey by Qt's weights; grey becomes opaque colour.
    ImagePtr convertTo(int pixelTypeId) const;

    /// The first pixel. T must be of the pixel's size; colour is four unsigned chars a pixel.
    template <typename T>
    T* pixels()
    {
        return reinterpret_cast<T*>(m_data.get());
    }
    template <typename T>
    const T* pixels() const
    {
        return reinterpret_cast<const T*>(m_data.get());
    }

private:
    Image(int pixelTypeId, const Vector3<int>& dimensions, const Vector3<double>& spacing);

    std::size_t m_bytes;
    std::unique_ptr<unsigned char[]> m_data;
};

} // namespace kelp
