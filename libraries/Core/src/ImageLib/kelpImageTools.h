#pragma once

#include "kelpException.h"
#include "kelpImage.h"

#include <QList>
#include <QString>

#include <cstdint>

namespace kelp {

enum class InterpolationModes
{
    NearestNeighbour = 0,
    /// Along an axis that shrinks the area-weighted mean: target pixel t of T covers the source
    /// interval [t S/T, (t+1) S/T). Along an axis that grows linear interpolation at
    /// (t + 0.5) S/T - 0.5, clamped.
    AreaOrLinear = 1
};

class ImageTools
{
public:
    /// Reads TIFF (8 and 16 bit), BMP, PNG and JPEG, grey or colour. Grey of 8 or 16 bits becomes
    /// the mono type of that depth, everything else colour. Null on failure.
    static ImagePtr loadImage(const QString& path);

    /// Mono types only. Separable, in double, one rounding at the end: half up, clamped to the
    /// pixel type. The result's spacing is the source's times S/T per axis. Throws NotImplemented
    /// for colour, Assertion for a null image or a dimension below 1.
    static ImagePtr resize(const ConstImagePtr& image, const Vector3<int>& dimensions,
                           InterpolationModes mode);

    /// The z slices as images of depth 1.
    static QList<ConstImagePtr> slice(const ConstImagePtr& image);

    /// One file of text header and raw little-endian pixels (MetaIO's local form). Throws Assertion
    /// for a null image, IOFailure when the file cannot be written whole.
    static void storeMetaImage(const ConstImagePtr& image, const QString& path);
};

/// Runs function(T{}) with T the C++ type of a mono pixel type. The system's name for it is
/// KELP_MONO_IMAGE_SWITCH, which its failure quotes; a template serves where a macro stood.
[[noreturn]] void throwUnsupportedMonoPixelType();

template <typename Function>
decltype(auto) monoImageSwitch(int pixelTypeId, Function&& function)
{
    switch (pixelTypeId) {
    case MonoUInt8:
        return function(std::uint8_t{});
    case MonoInt8:
        return function(std::int8_t{});
    case MonoUInt32:
        return function(std::uint32_t{});
    case MonoInt32:
        return function(std::int32_t{});
    case MonoFloat:
        return function(float{});
    case MonoUInt16:
        return function(std::uint16_t{});
    default:
        throwUnsupportedMonoPixelType();
    }
}

} // namespace kelp
