#include "DeviceFill.h"

#include "BScanLine.h"

#include <cstdint>
#include <vector>

namespace kelp::oct {

namespace {

constexpr std::uint8_t fillValue = 255;
constexpr std::size_t smallestFill = 50;

/// Walks the areas of an image's fill value, each once.
class FillFinder
{
public:
    explicit FillFinder(const kelp::Image& image)
        : m_pixels(image.pixels<std::uint8_t>()), m_width(image.getWidth()),
          m_height(image.getHeight())
    {
    }

    /// The pixels of all areas that are the device's fill.
    std::vector<std::size_t> find()
    {
        for (std::size_t x = 0; x < m_width; ++x) {
            collectFrom(x);
            collectFrom((m_height - 1) * m_width + x);
        }
        for (std::size_t y = 0; y < m_height; ++y) {
            collectFrom(y * m_width);
            collectFrom(y * m_width + m_width - 1);
        }
        return std::move(m_fill);
    }

private:
    bool isNew(std::size_t index) const
    {
        return m_pixels[index] == fillValue && (m_visited.empty() || !m_visited[index]);
    }

    void visit(std::size_t index)
    {
        if (isNew(index)) {
            m_visited[index] = true;
            m_fill.push_back(index);
        }
    }

    /// Adds the area around a border pixel to the fill if it is large enough.
    void collectFrom(std::size_t seed)
    {
        if (!isNew(seed)) {
            return;
        }
        m_visited.resize(m_width * m_height);
        const std::size_t start = m_fill.size();
        visit(seed);
        for (std::size_t next = start; next < m_fill.size(); ++next) {
            const std::size_t index = m_fill[next];
            const std::size_t x = index % m_width;
            if (x > 0) {
                visit(index - 1);
            }
            if (x + 1 < m_width) {
                visit(index + 1);
            }
            if (index >= m_width) {
                visit(index - m_width);
            }
            if (index + m_width < m_width * m_height) {
                visit(index + m_width);
            }
        }
        if (m_fill.size() - start < smallestFill) {
            m_fill.resize(start);
        }
    }

    const std::uint8_t* m_pixels;
    std::size_t m_width;
    std::size_t m_height;
    std::vector<bool> m_visited; ///< empty until a border pixel has the fill value
    std::vector<std::size_t> m_fill;
};

} // namespace

kelp::ImagePtr withoutDeviceFill(const kelp::ImagePtr& image)
{
    if (!image || image->getPixelTypeId() != kelp::MonoUInt8 || image->getNumberOfPixels() == 0) {
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
        // The B-scan itself does the scaling in both cases, so that there is one rule for it.
        coarse.append(mended == image ? bScan->getScaledImage(xScale, yScale)
                                      : BScanLine(bScan->getAScanPositions(),
                                                  bScan->getAxialResolution(), mended)
                                            .getScaledImage(xScale, yScale));
    }
    return coarse;
}

} // namespace kelp::oct
