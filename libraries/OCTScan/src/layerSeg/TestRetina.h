#pragma once

#include "OCTScanSegmentation.h"
#include "TestExport.h"

#include <array>
#include <cmath>

/// A plain layered retina of the size that tests can afford, with known surfaces.
namespace kelp::oct::test {

struct Retina
{
    QString pattern = "Volume";
    int aScans = 64;
    int rows = 160;
    int bScans = 3;
    /// Rows of ILM, GCL, INL, ONL, ISe and BM at the middle of the scan.
    std::array<int, 6> surfaces{40, 50, 70, 88, 112, 127};
    std::array<int, 7> greys{5, 200, 70, 190, 40, 220, 90};
    /// Rows from the ISe on that are dark again, up to the inner border of the RPE; none if equal.
    std::array<int, 2> darkUnderISe{0, 0};
    double aScanStep = 0.05;

    /// The whole retina is bent by a few rows.
    int shift(int bScan, int column) const
    {
        const double across = (column - 0.5 * aScans) / (0.5 * aScans);
        return static_cast<int>(std::lround(4.0 * across * across)) + bScan;
    }
    int surface(std::size_t index, int bScan, int column) const
    {
        return surfaces[index] + shift(bScan, column);
    }
    int pixel(int bScan, int row, int column) const
    {
        std::size_t layer = 0;
        while (layer < surfaces.size() && row >= surface(layer, bScan, column)) {
            ++layer;
        }
        const int underISe = row - surface(4, bScan, column);
        const bool dark = underISe >= darkUnderISe[0] && underISe < darkUnderISe[1];
        // A little texture, always the same.
        return (dark ? 120 : greys[layer]) + (row * 7 + column * 13 + bScan * 5) % 11;
    }

    OCTScanPtr makeScan() const
    {
        TestScan scan =
            lineScan(aScans, rows, bScans, aScanStep, 0.12,
                     [this](int bScan, int row, int column) { return pixel(bScan, row, column); });
        scan.pattern = pattern;
        if (pattern == "Circular BScan") {
            for (int column = 0; column < aScans; ++column) {
                const double angle = 2.0 * M_PI * column / aScans;
                scan.positions[0][column] = {2.0 + 1.7 * std::cos(angle),
                                             2.0 + 1.7 * std::sin(angle)};
            }
        }
        return makeTestScan(scan);
    }
    OCTScanSegPtr makeSegmentation() const
    {
        return OCTScanSegPtr(new OCTScanSegmentation(makeScan()));
    }
};

/// One B-scan of the pattern.
inline Retina singleBScanRetina(const QString& pattern)
{
    Retina retina;
    retina.pattern = pattern;
    retina.bScans = 1;
    return retina;
}

/// The surface of a segmentation is a constant row everywhere.
inline VolumeLayerPtr constantSurface(const OCTScanSegPtr& segmentation, unsigned short row)
{
    const auto size = segmentation->getOCT()->getVolumeSize();
    const auto layer =
        VolumeLayerPtr::create(static_cast<unsigned>(size.z), static_cast<unsigned>(size.x));
    for (unsigned short& element : *layer) {
        element = row;
    }
    return layer;
}

} // namespace kelp::oct::test
