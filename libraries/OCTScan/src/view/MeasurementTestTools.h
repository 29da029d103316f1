#pragma once

#include "EtdrsGrid.h"
#include "MouseEvents.h"
#include "OCTMeasurementViewer.h"
#include "SegmentationTestTools.h"

#include <QGraphicsItem>
#include <QGraphicsView>
#include <QTest>

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>

/// A small volume whose surfaces differ at every A-scan, and eyes for what the viewer draws.
namespace kelp::oct::test {

struct MeasuredScan
{
    static constexpr int aScans = 64;
    static constexpr int bScans = 25;
    static constexpr double aScanStep = 0.1;
    static constexpr double bScanStep = 0.25;
    static constexpr double corner = 1.0; ///< of A-scan 0 of B-scan 0, both axes
    static constexpr double axialSpacing = 0.004;
    static constexpr int localizerPixels = 80;
    static constexpr double localizerSpacing = 0.1;

    explicit MeasuredScan(bool rightEye = true, const QString& pattern = QStringLiteral("Volume"))
    {
        TestScan contents = lineScan(aScans, 160, bScans, aScanStep, bScanStep);
        contents.pattern = pattern;
        contents.axialResolution = axialSpacing;
        for (QList<Vector2d>& line : contents.positions) {
            for (Vector2d& position : line) {
                position = position + Vector2d{corner, corner};
            }
        }
        contents.localizer = Image::create(MonoUInt8, {localizerPixels, localizerPixels, 1},
                                           {localizerSpacing, localizerSpacing, 1.0});
        contents.localizerSpacing = {localizerSpacing, localizerSpacing};
        scan = makeTestScan(contents);
        scan->getLocalizer()->setMetaInfo(
            {{QStringLiteral("Laterality"), rightEye ? QStringLiteral("R") : QStringLiteral("L")}});
        segmentation = new OCTScanSegmentation(scan);
    }

    /// The row of the surface with this number in the order of layerNames.
    static int row(int surface, int bScan, int aScan)
    {
        int result = 10 + (3 * bScan + 5 * aScan) % 7;
        for (int above = 1; above <= surface; ++above) {
            result += 5 + (7 * bScan + 3 * aScan + 11 * above) % 13;
        }
        return result;
    }

    static QStringList layerNames()
    {
        return {QStringLiteral("ILM"), QStringLiteral("GCL"), QStringLiteral("INL"),
                QStringLiteral("ONL"), QStringLiteral("ISe"), QStringLiteral("BM")};
    }

    void addLayers(const QStringList& identifiers = layerNames())
    {
        for (const QString& identifier : identifiers) {
            const int surface = layerNames().indexOf(identifier);
            const auto rowAt = [surface](unsigned bScan, unsigned aScan) {
                return row(surface, static_cast<int>(bScan), static_cast<int>(aScan));
            };
            segmentation->setVolumeLayer(makeSurface(bScans, aScans, rowAt),
                                         LayerName::fromIdentifier(identifier));
        }
    }

    static QPointF position(int bScan, int aScan)
    {
        return {corner + aScan * aScanStep, corner + bScan * bScanStep};
    }

    OCTScanPtr scan;
    OCTScanSegPtr segmentation;
};

/// The items of this class that are shown, those further down first.
template <typename Item>
QList<Item*> visibleItems(const QGraphicsView& viewer)
{
    QList<Item*> result;
    for (QGraphicsItem* const item : viewer.scene()->items(Qt::AscendingOrder)) {
        auto* const wanted = dynamic_cast<Item*>(item);
        if (wanted && wanted->isVisible()) {
            result.append(wanted);
        }
    }
    return result;
}

inline QList<QGraphicsEllipseItem*> ellipsesOf(const QGraphicsView& viewer, const QColor& color)
{
    QList<QGraphicsEllipseItem*> result = visibleItems<QGraphicsEllipseItem>(viewer);
    result.erase(std::remove_if(result.begin(), result.end(),
                                [&](const auto* item) { return item->pen().color() != color; }),
                 result.end());
    return result;
}

/// The middle of the sector's label in millimetres.
inline QPointF labelPlace(const QGraphicsView& viewer, const QString& text)
{
    for (const auto* const label : visibleItems<QGraphicsSimpleTextItem>(viewer)) {
        if (label->text() == text && !label->parentItem()) {
            return label->mapToScene(label->boundingRect().center());
        }
    }
    ADD_FAILURE() << "no label " << text.toStdString();
    return {};
}

/// The mouse over the viewer, in millimetres on the localizer.
struct ViewerMouse
{
    QGraphicsView& viewer;

    QPoint pixel(const QPointF& place) const { return viewer.mapFromScene(place); }
    void move(const QPointF& place, Qt::MouseButtons buttons = Qt::NoButton) const
    {
        mouseevents::move(viewer, pixel(place), buttons);
    }
    void press(const QPointF& place, Qt::MouseButton button = Qt::LeftButton) const
    {
        QTest::mousePress(viewer.viewport(), button, Qt::NoModifier, pixel(place));
    }
    void release(const QPointF& place, Qt::MouseButton button = Qt::LeftButton) const
    {
        QTest::mouseRelease(viewer.viewport(), button, Qt::NoModifier, pixel(place));
    }
    void drag(const QPointF& from, const QPointF& to) const
    {
        press(from);
        move((from + to) / 2.0, Qt::LeftButton);
        move(to, Qt::LeftButton);
        release(to);
    }
};

} // namespace kelp::oct::test
