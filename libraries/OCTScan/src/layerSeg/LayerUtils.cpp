#include "LayerUtils.h"

#include "LayerSampling.h"
#include "kelpCheck.h"
#include "kelpTrace.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <cstdlib>
#include <limits>

namespace kelp::oct {

namespace {

constexpr const char* sourcePath = "libraries/OCTScan/src/layerSeg/LayerUtils";

/// A spacing that is wrong by orders of magnitude must end in a message, not in all of the memory.
constexpr double mostElements = 268435456.0;

/// Halves go away from zero.
double roundAwayFromZero(double value)
{
    return std::trunc(value < 0.0 ? value - 0.5 : value + 0.5);
}

/// What a layer can hold.
unsigned short toRow(double row)
{
    // The comparison this way round also brings "not a number" to 0.
    if (!(row > 0.0)) {
        return 0;
    }
    constexpr double deepest = std::numeric_limits<unsigned short>::max();
    return static_cast<unsigned short>(std::min(row, deepest));
}

/// The number of elements along an axis after its spacing shrank to the finer one.
unsigned refinedCount(unsigned count, double spacing, double finerSpacing, unsigned otherCount)
{
    const double refined = roundAwayFromZero(count * spacing / finerSpacing);
    if (!(refined * otherCount <= mostElements)) {
        throw Exception("LayerUtils::createIsometric: the spacings differ too much");
    }
    return static_cast<unsigned>(refined);
}

VolumeLayerPtr makeLayer(unsigned rows, unsigned columns)
{
    return VolumeLayerPtr(new VolumeLayer(rows, columns));
}

} // namespace

void LayerUtils::addConstantToLayer(const VolumeLayerPtr& layer, int constant, int maximum,
                                    const VolumeLayerPtr& minimumTop)
{
    constexpr Place place{sourcePath, "kelp::oct::LayerUtils::addConstantToLayer"};
    check(!layer.isNull(), place, "Layer is null.");
    check(!minimumTop.isNull(), place, "Minimum top layer is null.");
    check(minimumTop->columns == layer->columns, place, "Minimum top layer column size mismatch.");
    check(minimumTop->rows == layer->rows, place, "Minimum top layer row size mismatch.");

    for (std::size_t i = 0; i < layer->size(); ++i) {
        const int moved = std::min(layer->data[i] + constant, maximum);
        layer->data[i] = static_cast<unsigned short>(std::max<int>(moved, minimumTop->data[i]));
    }
}

VolumeLayerPtr LayerUtils::createIsometric(const VolumeLayerPtr& source, const double spacing[2],
                                           double* outSpacing)
{
    constexpr Place place{sourcePath, "kelp::oct::LayerUtils::createIsometric"};
    const double x = spacing[0];
    const double z = spacing[1];
    check(!source.isNull(), place, "Source layer is null.");
    check(!(x <= 0.0), place, "Source in-plane-spacing <= 0.");
    check(!(z <= 0.0), place, "Source axial resolution <= 0.");
    check(source->columns > 1, place, "Nr of source colums <= 1.");
    check(source->rows > 1, place, "Nr of source rows <= 1.");
    // Only a spacing that is no number is neither equal nor larger nor smaller.
    check(x == z || x > z || z > x, place, "Tried to resample unknown axis.");

    if (x == z) {
        return source;
    }
    const bool refineRows = z > x;
    const unsigned rows =
        refineRows ? refinedCount(source->rows, z, x, source->columns) : source->rows;
    const unsigned columns =
        refineRows ? source->columns : refinedCount(source->columns, x, z, source->rows);
    *outSpacing = refineRows ? x : z;

    const VolumeLayerPtr target = makeLayer(rows, columns);
    for (unsigned row = 0; row < rows; ++row) {
        for (unsigned column = 0; column < columns; ++column) {
            auto sourceRow = static_cast<float>(row);
            auto sourceColumn = static_cast<float>(column);
            if (refineRows) {
                sourceRow =
                    sourceRow / static_cast<float>(rows - 1) * static_cast<float>(source->rows - 1);
            } else {
                sourceColumn = sourceColumn / static_cast<float>(columns - 1) *
                               static_cast<float>(source->columns - 1);
            }
            (*target)(row, column) =
                toRow(roundAwayFromZero(sampleBilinear(*source, sourceRow, sourceColumn)));
        }
    }
    return target;
}

void LayerUtils::fixMinDistanceTopToBottom(const VolumeLayerPtr& top, const VolumeLayerPtr& bottom,
                                           unsigned minimumDistance, const MaskMatrixPtr& mask)
{
    constexpr Place place{sourcePath, "kelp::oct::LayerUtils::fixMinDistanceTopToBottom"};
    check(!top.isNull(), place, "Null top layer");
    check(!bottom.isNull(), place, "Null bottom layer");
    check(!mask.isNull(), place, "Null mask");
    check(top->columns > 0, place, "Top layer has no columns");
    check(top->rows > 0, place, "Top layer has no rows");
    check(bottom->columns == top->columns, place, "Column mismatch between layers");
    check(bottom->rows == top->rows, place, "Row mismatch between layers");
    check(mask->rows == top->rows, place, "Mask row mismatch");
    check(mask->columns == top->columns, place, "Mask columns mismatch");

    const auto distance = static_cast<int>(minimumDistance);
    const int half = static_cast<int>(minimumDistance >> 1U);
    for (std::size_t i = 0; i < top->size(); ++i) {
        if (mask->data[i] != 0 || bottom->data[i] - top->data[i] > distance) {
            continue;
        }
        const int centre = static_cast<int>((top->data[i] + bottom->data[i]) * 0.5);
        const int newTop = centre - half;
        top->data[i] = static_cast<unsigned short>(newTop < 1 ? 0 : newTop);
        bottom->data[i] = static_cast<unsigned short>(centre + half);
    }
}

void LayerUtils::getSearchRangeLayers(const VolumeLayerPtr& middle, const VolumeLayerPtr& targetTop,
                                      const VolumeLayerPtr& targetBottom, unsigned above,
                                      unsigned below, unsigned maxRow)
{
    constexpr Place place{sourcePath, "kelp::oct::LayerUtils::getSearchRangeLayers"};
    check(!middle.isNull(), place, "Middle layer is null.");
    check(!targetTop.isNull(), place, "Target top layer is null.");
    check(!targetBottom.isNull(), place, "Target bottom layer is null.");
    check(targetTop->columns == middle->columns, place,
          "Mismatch between middle and target top layer columns.");
    check(targetTop->rows == middle->rows, place,
          "Mismatch between middle and target top layer rows.");
    check(targetBottom->columns == middle->columns, place,
          "Mismatch between middle and target bottom layer columns.");
    check(targetBottom->rows == middle->rows, place,
          "Mismatch between middle and target bottom layer rows.");

    for (std::size_t i = 0; i < middle->size(); ++i) {
        const unsigned row = middle->data[i];
        targetTop->data[i] = static_cast<unsigned short>(row < above ? 0 : row - above);
        targetBottom->data[i] = static_cast<unsigned short>(std::min(row + below, maxRow));
    }
}

void LayerUtils::resampleLayer(const VolumeLayerPtr& source, const double spacing[3],
                               const VolumeLayerPtr& target, double targetAxialSpacing)
{
    constexpr Place place{sourcePath, "kelp::oct::LayerUtils::resampleLayer"};
    check(!source.isNull(), place, "source layer is null.");
    check(!target.isNull(), place, "target layer is null.");
    check(spacing[0] > 0.0, place, "Source in-plane spacing is zero.");
    check(spacing[1] > 0.0, place, "Source axial resolution is zero.");
    check(spacing[2] > 0.0, place, "Source out-of-plane spacing is zero.");
    check(target->rows > 0, place, "target layer has no rows.");
    check(target->columns > 0, place, "target layer has no columns.");
    check(source->size() > 0, place, "source layer has no elements.");

    struct Position
    {
        std::size_t index;
        std::size_t next;
        double fraction;
    };
    const auto locate = [](double position, unsigned count) -> Position {
        const double whole = std::min(std::floor(position), count - 1.0);
        const auto index = static_cast<std::size_t>(whole);
        return {index, std::min<std::size_t>(index + 1, count - 1), position - whole};
    };
    const double stepX = source->columns * spacing[0] / target->columns;
    const double stepZ = source->rows * spacing[2] / target->rows;
    const auto height = [&](std::size_t row, std::size_t column) {
        return (*source)(row, column) * spacing[1];
    };
    for (unsigned row = 0; row < target->rows; ++row) {
        const Position z = locate(row * stepZ / spacing[2], source->rows);
        for (unsigned column = 0; column < target->columns; ++column) {
            const Position x = locate(column * stepX / spacing[0], source->columns);
            const double upper = (1.0 - x.fraction) * height(z.index, x.index) +
                                 x.fraction * height(z.index, x.next);
            const double lower =
                (1.0 - x.fraction) * height(z.next, x.index) + x.fraction * height(z.next, x.next);
            const double value = (1.0 - z.fraction) * upper + z.fraction * lower;
            (*target)(row, column) = toRow(roundAwayFromZero(value / targetAxialSpacing));
        }
    }
}

VolumeLayerPtr LayerUtils::subtractLayers(const VolumeLayerPtr& top, const VolumeLayerPtr& bottom)
{
    constexpr Place place{sourcePath, "kelp::oct::LayerUtils::subtractLayers"};
    check(!top.isNull(), place, "Top layer is null.");
    check(!bottom.isNull(), place, "Bottom layer is null.");
    check(top->rows == bottom->rows && top->columns == bottom->columns, place,
          "Mismatch between row sizes of top and bottom layer.");

    const VolumeLayerPtr difference = makeLayer(top->rows, top->columns);
    for (std::size_t i = 0; i < top->size(); ++i) {
        difference->data[i] = static_cast<unsigned short>(std::abs(bottom->data[i] - top->data[i]));
    }
    return difference;
}

kelp::ImagePtr LayerUtils::RenderThicknessImage(const VolumeLayerPtr& top,
                                                const VolumeLayerPtr& bottom,
                                                const kelp::ColorTransferFunction& transferFunction,
                                                const MaskMatrixPtr& mask, double opacity)
{
    constexpr Place place{sourcePath, "kelp::oct::LayerUtils::RenderThicknessImage"};
    Trace() << locatedText(place, QString());
    check(!mask.isNull(), place, "Mask is null.");
    check(!top.isNull(), place, "Top layer is null.");
    check(!bottom.isNull(), place, "Bottom layer is null.");
    check(top->rows == bottom->rows && top->columns == bottom->columns, place,
          "Mismatch between row sizes of top and bottom layer.");
    check(mask->columns == top->columns, place, "Mismatch between columns of mask and top layer.");
    check(mask->rows == top->rows, place, "Mismatch between rows of mask and top layer.");

    constexpr int colours = 3;
    std::array<ColorTransferFunction::Channel, colours> channels;
    for (int channel = 0; channel < colours; ++channel) {
        channels[static_cast<std::size_t>(channel)] = transferFunction.getChannel(channel);
    }
    const VolumeLayerPtr thickness = subtractLayers(top, bottom);
    const ImagePtr image =
        Image::create(ColorRGBA8, {static_cast<int>(top->columns), static_cast<int>(top->rows), 1});
    const auto visible = static_cast<unsigned char>(opacity * 255.0);
    auto* pixel = image->pixels<unsigned char>();
    for (std::size_t i = 0; i < thickness->size(); ++i) {
        for (const ColorTransferFunction::Channel& channel : channels) {
            *pixel++ = static_cast<unsigned char>(channel(thickness->data[i]) * 255.0);
        }
        *pixel++ = mask->data[i] != 0 ? 0 : visible;
    }
    return image;
}

void LayerUtils::ensureTwoRows(const VolumeLayerPtr& top, const VolumeLayerPtr& bottom,
                               const MaskMatrixPtr& mask)
{
    constexpr Place place{sourcePath, "kelp::oct::LayerUtils::ensureTwoRows"};
    check(!top.isNull(), place, "Null top layer");
    check(!bottom.isNull(), place, "Null bottom layer");
    check(!mask.isNull(), place, "Null mask");
    check(bottom->columns == top->columns && mask->columns == top->columns, place,
          "Column mismatch between layers and mask");
    check(bottom->rows == top->rows && mask->rows == top->rows, place,
          "Row mismatch between layers and mask");

    for (std::size_t i = 0; i < top->size(); ++i) {
        if (mask->data[i] != 0 || bottom->data[i] - top->data[i] >= 2) {
            continue;
        }
        bottom->data[i] = std::max<unsigned short>(bottom->data[i], 2);
        top->data[i] = static_cast<unsigned short>(bottom->data[i] - 2);
    }
}

float LayerUtils::sampleBilinear(const VolumeLayer& matrix, float row, float column)
{
    return sampleLayerBilinear(matrix, row, column);
}

} // namespace kelp::oct
