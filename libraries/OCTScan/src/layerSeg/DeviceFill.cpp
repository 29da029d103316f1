#include "DeviceFill.h"

#include "BScanLine.h"

#include <cstdint>
#include <vector>

namespace kelp::oct {

namespace {

constexpr std::uint8_t fillValue = 255;
constexpr std::size_t smallestFill = 50;

// JPEG smears the edge of the fill. Next to it 66 to 83 of 100 pixels are at 240 or above in JPEG
// files, and none in lossless ones.
constexpr std::uint8_t fringeValue = 240;
constexpr double fringeShare = 1.0 / 3.0;
constexpr int fringeRings = 2;

/// Collects the pixels of the device's fill in one image.
class FillFinder
{
public:
    explicit FillFinder(const kelp::Image& image)
        : m_pixels(image.pixels<std::uint8_t>()),
          m_width(static_cast<std::size_t>(image.getWidth())), m_size(image.getNumberOfPixels())
    {
    }

    std::vector<std::size_t> find()
    {
        const std::size_t lastRow = m_size - m_width;
        for (std::size_t x = 0; x < m_width; ++x) {
            collectFrom(x);
            collectFrom(lastRow + x);
        }
        for (std::size_t row = 0; row < m_size; row += m_width) {
            collectFrom(row);
            collectFrom(row + m_width - 1);
        }
        if (hasFringe()) {
            addFringe();
        }
        return m_fill;
    }

private:
    bool isTaken(std::size_t index) const { return !m_taken.empty() && m_taken[index]; }

    void take(std::size_t index)
    {
        m_taken[index] = true;
        m_fill.push_back(index);
    }

    template <typename Function>
    void forNeighbours(std::size_t index, Function&& function) const
    {
        const std::size_t x = index % m_width;
        if (x > 0) {
            function(index - 1);
        }
        if (x + 1 < m_width) {
            function(index + 1);
        }
        if (index >= m_width) {
            function(index - m_width);
        }
        if (index + m_width < m_size) {
            function(index + m_width);
        }
    }

    /// Adds everything of at least this value that hangs together with the fill from `start` on.
    void spread(std::size_t start, std::uint8_t lowest)
    {
        for (std::size_t next = start; next < m_fill.size(); ++next) {
            forNeighbours(m_fill[next], [&](std::size_t neighbour) {
                if (m_pixels[neighbour] >= lowest && !isTaken(neighbour)) {
                    take(neighbour);
                }
            });
        }
    }

    /// Adds the area around a border pixel if it is large enough.
    void collectFrom(std::size_t seed)
    {
        if (m_pixels[seed] != fillValue || isTaken(seed)) {
            return;
        }
        m_taken.resize(m_size);
        const std::size_t start = m_fill.size();
        take(seed);
        spread(start, fillValue);
        if (m_fill.size() - start < smallestFill) {
            while (m_fill.size() > start) {
                m_taken[m_fill.back()] = false;
                m_fill.pop_back();
            }
        }
    }

    bool hasFringe() const
    {
        std::size_t neighbours = 0;
        std::size_t bright = 0;
        for (const std::size_t index : m_fill) {
            forNeighbours(index, [&](std::size_t neighbour) {
                if (m_pixels[neighbour] != fillValue) {
                    ++neighbours;
                    bright += m_pixels[neighbour] >= fringeValue ? 1 : 0;
                }
            });
        }
        return static_cast<double>(bright) > fringeShare * static_cast<double>(neighbours);
    }

    void addFringe()
    {
        spread(0, fringeValue);
        for (int ring = 0; ring < fringeRings; ++ring) {
            const std::size_t end = m_fill.size();
            for (std::size_t next = 0; next < end; ++next) {
                forNeighbours(m_fill[next], [&](std::size_t neighbour) {
                    if (!isTaken(neighbour)) {
                        take(neighbour);
                    }
                });
            }
        }
    }

    const std::uint8_t* m_pixels;
    std::size_t m_width;
    std::size_t m_size;
    std::vector<bool> m_taken; ///< empty until a border pixel has the fill value
    std::vector<std::size_t> m_fill;
};

} // namespace

kelp::ImagePtr withoutDeviceFill(const kelp::ImagePtr& image)
{
    if (!image || image->getPixelTypeId() != kelp::MonoUInt8 || image->getNumberOfPixels() == 0 ||
        image->getDimensions().z != 1) {
        return image;
    }
    const std::vector<std::size_t> fill = FillFinder(*image).find();
    if (fill.empty()) {
        return image;
    }
    const kelp::ImagePtr mended = image->copy();
    auto* const pixels = mended->pixels<std::uint8_t>();
    for (const std::size_t index : fill) {
        pixels[index] = 0;
    }
    return mended;
}

QList<kelp::ImagePtr> segmentationImages(const OCTScan& scan)
{
    QList<kelp::ImagePtr> images = scan.getBScanImages();
    for (kelp::ImagePtr& image : images) {
        image = withoutDeviceFill(image);
    }
    return images;
}

QList<kelp::ImagePtr> segmentationImagesCoarse(const OCTScan& scan, double xScale, double yScale)
{
    QList<kelp::ImagePtr> coarse;
    for (int index = 0; index < scan.getBScanCount(); ++index) {
        const auto bScan = scan.getBScan(static_cast<unsigned>(index));
        const kelp::ImagePtr image = bScan->getImage();
        const kelp::ImagePtr mended = withoutDeviceFill(image);
        // A B-scan does the scaling in both cases, so that there is one rule for it.
        coarse.append(mended == image ? bScan->getScaledImage(xScale, yScale)
                                      : BScanLine(bScan->getAScanPositions(),
                                                  bScan->getAxialResolution(), mended)
                                            .getScaledImage(xScale, yScale));
    }
    return coarse;
}

} // namespace kelp::oct
