#include "EnfaceMap.h"

#include <QPolygonF>

#include <algorithm>

namespace kelp::oct {

namespace {

QPointF toPoint(const Vector2d& position)
{
    return {position.x, position.y};
}

} // namespace

bool isVolumeScan(const OCTScan& scan)
{
    return *scan.getScanPattern() == OCTScanPatternVolume();
}

std::optional<QTransform> mapToLocalizer(const OCTScan& scan)
{
    const auto first = scan.getBScan(0);
    const auto last = scan.getBScan(static_cast<unsigned>(scan.getBScanCount() - 1));
    const auto lastAScan = static_cast<unsigned>(first->getNrAScans() - 1);
    const double right = first->getNrAScans() - 0.5;
    const double bottom = scan.getBScanCount() - 0.5;
    const QPolygonF corners{{{0.5, 0.5}, {right, 0.5}, {right, bottom}, {0.5, bottom}}};
    const QPolygonF places{
        {toPoint(first->getAScanPosition(0)), toPoint(first->getAScanPosition(lastAScan)),
         toPoint(last->getAScanPosition(lastAScan)), toPoint(last->getAScanPosition(0))}};
    QTransform transform;
    if (!QTransform::quadToQuad(corners, places, transform)) {
        return std::nullopt;
    }
    return transform;
}

PredefinedTransferfunctions thicknessColors(ColorMaps map, double low, double high,
                                            double axialSpacing)
{
    constexpr double micrometresPerMillimetre = 1000.0;
    PredefinedTransferfunctions colors(map);
    colors.setInputRange(low / micrometresPerMillimetre / axialSpacing,
                         high / micrometresPerMillimetre / axialSpacing);
    return colors;
}

bool hasLayer(const OCTScanSegmentation& segmentation, const LayerNamePtr& wanted)
{
    const QList<LayerNamePtr> names = segmentation.getAllLayerNames();
    return wanted && std::any_of(names.begin(), names.end(),
                                 [&](const LayerNamePtr& name) { return *name == *wanted; });
}

} // namespace kelp::oct
