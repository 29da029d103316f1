#include "DeviceFill.h"

#include "BScanLine.h"

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <vector>

namespace kelp::oct {

namespace {

constexpr std::uint8_t fillValue = 255;
constexpr std::size_t smallestFill = 50;

// JPEG makes 240 to 255 of the fill, always more than half of it still 255. Of the pixels next to
// those of 255 that are not 255 themselves, 14 to 90 of 100 are at 240 or above in JPEG files of
// every quality, and at most 1 of 100 in lossless ones.
constexpr std::uint8_t fringeValue = 240;
constexpr double leastWhite = 0.5;
constexpr double fringeShare = 0.1;
constexpr int fringeRings = 2;

/// Neighbouring pixels of one row, as indices into the image.
struct Run
{
    std::size_t begin;
    std::size_t end;

    std::size_t size() const { return end - begin; }
};

/// Collects the pixels of the device's fill in one image. Every area is run through once for each
/// of the two values that it may have to reach, whatever the image holds.
class FillFinder
{
public:
    explicit FillFinder(const kelp::Image& image)
        : m_pixels(image.pixels<std::uint8_t>()),
          m_width(static_cast<std::size_t>(image.getWidth())), m_size(image.getNumberOfPixels())
    {
    }

    std::vector<Run> find()
    {
        collect(fringeValue);
        if (isSmeared()) {
            for (int ring = 0; ring < fringeRings; ++ring) {
                addRing();
            }
        } else {
            startAnew();
            collect(fillValue);
        }
        return m_fill;
    }

private:
    enum class State : std::uint8_t
    {
        Free,
        Taken,
        Rejected ///< of an area that was run through and is no fill
    };

    void mark(const Run& run, State state)
    {
        std::fill(m_states.begin() + std::ptrdiff_t(run.begin),
                  m_states.begin() + std::ptrdiff_t(run.end), state);
    }

    void take(const Run& run)
    {
        mark(run, State::Taken);
        m_fill.push_back(run);
    }

    /// Gives back everything from `start` on. It stays marked, since such an area may hold most of
    /// the image, and each pixel that it has on the border would lead through all of it again.
    void reject(std::size_t start)
    {
        while (m_fill.size() > start) {
            mark(m_fill.back(), State::Rejected);
            m_fill.pop_back();
        }
    }

    void startAnew()
    {
        std::fill(m_states.begin(), m_states.end(), State::Free);
        m_fill.clear();
    }

    Run rowOf(std::size_t index) const
    {
        const std::size_t begin = index / m_width * m_width;
        return {begin, begin + m_width};
    }

    /// The parts of the rows above and below that touch the run.
    template <typename Function>
    void forRowsBeside(const Run& run, Function&& function) const
    {
        if (run.begin >= m_width) {
            function(Run{run.begin - m_width, run.end - m_width});
        }
        if (run.begin + m_width < m_size) {
            function(Run{run.begin + m_width, run.end + m_width});
        }
    }

    /// Takes the areas of at least this value that touch the border.
    void collect(std::uint8_t lowest)
    {
        const std::size_t lastRow = m_size - m_width;
        for (std::size_t x = 0; x < m_width; ++x) {
            collectFrom(x, lowest);
            collectFrom(lastRow + x, lowest);
        }
        for (std::size_t row = 0; row < m_size; row += m_width) {
            collectFrom(row, lowest);
            collectFrom(row + m_width - 1, lowest);
        }
    }

    /// Takes the area around a border pixel if it is large and white enough.
    void collectFrom(std::size_t seed, std::uint8_t lowest)
    {
        if (m_pixels[seed] < lowest) {
            return;
        }
        m_states.resize(m_size);
        if (m_states[seed] != State::Free) {
            return;
        }
        const std::size_t start = m_fill.size();
        m_seeds.assign(1, seed);
        while (!m_seeds.empty()) {
            const std::size_t next = m_seeds.back();
            m_seeds.pop_back();
            if (m_states[next] == State::Free) {
                takeRunAround(next, lowest);
            }
        }
        std::size_t size = 0;
        std::ptrdiff_t white = 0;
        for (std::size_t i = start; i < m_fill.size(); ++i) {
            size += m_fill[i].size();
            white += std::count(m_pixels + m_fill[i].begin, m_pixels + m_fill[i].end, fillValue);
        }
        if (size < smallestFill ||
            static_cast<double>(white) < leastWhite * static_cast<double>(size)) {
            reject(start);
        }
    }

    /// Takes all of the row that hangs together with the seed, and seeds the rows beside it.
    void takeRunAround(std::size_t seed, std::uint8_t lowest)
    {
        const Run row = rowOf(seed);
        Run run{seed, seed + 1};
        while (run.begin > row.begin && m_pixels[run.begin - 1] >= lowest) {
            --run.begin;
        }
        while (run.end < row.end && m_pixels[run.end] >= lowest) {
            ++run.end;
        }
        take(run);
        forRowsBeside(run, [&](const Run& beside) {
            bool inside = false;
            for (std::size_t index = beside.begin; index < beside.end; ++index) {
                const bool belongs = m_pixels[index] >= lowest && m_states[index] == State::Free;
                if (belongs && !inside) {
                    m_seeds.push_back(index);
                }
                inside = belongs;
            }
        });
    }

    bool isSmeared() const
    {
        std::size_t neighbours = 0;
        std::size_t bright = 0;
        const auto look = [&](std::size_t pixel, std::size_t neighbour) {
            if (m_pixels[pixel] == fillValue && m_pixels[neighbour] != fillValue) {
                ++neighbours;
                bright += m_pixels[neighbour] >= fringeValue ? 1 : 0;
            }
        };
        for (const Run& run : m_fill) {
            const Run row = rowOf(run.begin);
            for (std::size_t index = run.begin; index < run.end; ++index) {
                if (index > row.begin) {
                    look(index, index - 1);
                }
                if (index + 1 < row.end) {
                    look(index, index + 1);
                }
            }
            forRowsBeside(run, [&](const Run& beside) {
                for (std::size_t i = 0; i < run.size(); ++i) {
                    look(run.begin + i, beside.begin + i);
                }
            });
        }
        return static_cast<double>(bright) > fringeShare * static_cast<double>(neighbours);
    }

    /// Takes what touches the fill, bright areas that are none themselves as well.
    void addRing()
    {
        const auto takeFree = [this](std::size_t index) {
            if (m_states[index] != State::Taken) {
                take({index, index + 1});
            }
        };
        const std::size_t end = m_fill.size();
        for (std::size_t next = 0; next < end; ++next) {
            const Run run = m_fill[next];
            const Run row = rowOf(run.begin);
            if (run.begin > row.begin) {
                takeFree(run.begin - 1);
            }
            if (run.end < row.end) {
                takeFree(run.end);
            }
            forRowsBeside(run, [&](const Run& beside) {
                for (std::size_t index = beside.begin; index < beside.end; ++index) {
                    takeFree(index);
                }
            });
        }
    }

    const std::uint8_t* m_pixels;
    std::size_t m_width;
    std::size_t m_size;
    std::vector<State> m_states; ///< empty until a border pixel is bright enough
    std::vector<Run> m_fill;
    std::vector<std::size_t> m_seeds;
};

/// The pixels that are fill, in no order and each once; empty for images that can have none.
std::vector<Run> findFill(const kelp::ImagePtr& image)
{
    if (!image || image->getPixelTypeId() != kelp::MonoUInt8 || image->getNumberOfPixels() == 0 ||
        image->getDimensions().z != 1) {
        return {};
    }
    return FillFinder(*image).find();
}

/// Without the fill, or as it is for a run that is to stop.
kelp::ImagePtr withoutFillUnlessAborted(const kelp::ImagePtr& image,
                                        const std::atomic<bool>* abortFlag)
{
    return abortFlag && abortFlag->load(std::memory_order_relaxed) ? image
                                                                   : withoutDeviceFill(image);
}

} // namespace

kelp::ImagePtr withoutDeviceFill(const kelp::ImagePtr& image)
{
    const std::vector<Run> fill = findFill(image);
    if (fill.empty()) {
        return image;
    }
    const kelp::ImagePtr mended = image->copy();
    auto* const pixels = mended->pixels<std::uint8_t>();
    for (const Run& run : fill) {
        std::fill(pixels + run.begin, pixels + run.end, std::uint8_t(0));
    }
    return mended;
}

FillCount countDeviceFill(const OCTScan& scan)
{
    FillCount count;
    for (const kelp::ImagePtr& image : scan.getBScanImages()) {
        const std::vector<Run> fill = findFill(image);
        for (const Run& run : fill) {
            count.pixels += static_cast<std::int64_t>(run.size());
        }
        count.bScans += fill.empty() ? 0 : 1;
    }
    return count;
}

QList<kelp::ImagePtr> segmentationImages(const OCTScan& scan, const std::atomic<bool>* abortFlag)
{
    QList<kelp::ImagePtr> images = scan.getBScanImages();
    for (kelp::ImagePtr& image : images) {
        image = withoutFillUnlessAborted(image, abortFlag);
    }
    return images;
}

QList<kelp::ImagePtr> segmentationImagesCoarse(const OCTScan& scan, double xScale, double yScale,
                                               const std::atomic<bool>* abortFlag)
{
    QList<kelp::ImagePtr> coarse;
    for (int index = 0; index < scan.getBScanCount(); ++index) {
        const auto bScan = scan.getBScan(static_cast<unsigned>(index));
        const kelp::ImagePtr image = bScan->getImage();
        const kelp::ImagePtr mended = withoutFillUnlessAborted(image, abortFlag);
        // A B-scan does the scaling in both cases, so that there is one rule for it.
        coarse.append(mended == image ? bScan->getScaledImage(xScale, yScale)
                                      : BScanLine(bScan->getAScanPositions(),
                                                  bScan->getAxialResolution(), mended)
                                            .getScaledImage(xScale, yScale));
    }
    return coarse;
}

} // namespace kelp::oct
