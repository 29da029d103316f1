#pragma once

#include "OCTScanSegmentation.h"
#include "TestExport.h"
#include "kelpTrace.h"

#include <QStringList>

#include <algorithm>
#include <sstream>

namespace kelp::oct::test {

/// Collects what is traced while it lives.
class TraceCatcher
{
public:
    TraceCatcher() { kelp::Trace::redirect(&m_stream); }
    ~TraceCatcher() { kelp::Trace::redirect(nullptr); }
    TraceCatcher(const TraceCatcher&) = delete;
    TraceCatcher& operator=(const TraceCatcher&) = delete;

    QStringList lines() const
    {
        return QString::fromStdString(m_stream.str()).split(QLatin1Char('\n'), Qt::SkipEmptyParts);
    }
    int count(const QString& line) const { return lines().count(line); }

private:
    std::ostringstream m_stream;
};

/// A small scan of 40 A-scans, 60 rows and 5 B-scans of 0.125 mm by 0.0625 mm pixels, and a
/// segmentation of it with level layers.
struct SegmentationScene
{
    static constexpr int aScans = 40;
    static constexpr int rows = 60;
    static constexpr int bScans = 5;
    static constexpr double lateral = 0.125;
    static constexpr double axial = 0.0625;

    OCTScanPtr scan = makeScan();
    OCTScanSegPtr segmentation{new OCTScanSegmentation(scan)};

    static OCTScanPtr makeScan(int count = bScans, int width = aScans)
    {
        TestScan contents = lineScan(width, rows, count, lateral, 0.25);
        contents.axialResolution = axial;
        for (const QSharedPointer<Image>& image : qAsConst(contents.images)) {
            image->setSpacing({lateral, axial, 1.0});
        }
        return makeTestScan(contents);
    }

    /// The registry's instance, as a stored segmentation has it.
    static LayerNamePtr name(const char* identifier)
    {
        return LayerName::fromIdentifier(QString::fromLatin1(identifier));
    }

    BScanSegmentationLayerPtr layer(int bScan, const char* identifier) const
    {
        return segmentation->getBScanSegmentation(bScan)->getLayer(name(identifier));
    }
    int position(int bScan, const char* identifier, int aScan) const
    {
        return layer(bScan, identifier)->layerData()[static_cast<std::size_t>(aScan)];
    }

    void addLevelLayer(const LayerNamePtr& layerName, unsigned short row)
    {
        const auto layer = QSharedPointer<VolumeLayer>::create(static_cast<unsigned>(bScans),
                                                               static_cast<unsigned>(aScans));
        std::fill(layer->begin(), layer->end(), row);
        segmentation->setVolumeLayer(layer, layerName);
    }

    /// Excludes these A-scans of this B-scan.
    void mask(int bScan, int from, int to)
    {
        const CoordOnLocalizer first = scan->volumeIndexToLocalizerCoords(bScan, from);
        const CoordOnLocalizer last = scan->volumeIndexToLocalizerCoords(bScan, to);
        const QPointF margin(lateral / 4, 0.05);
        segmentation->getMask()->addPolygon(
            QRectF(QPointF(first.x, first.y) - margin, QPointF(last.x, last.y) + margin));
    }
};

} // namespace kelp::oct::test
