#include "GuiBench.h"

#include "HeidelbergExport.h"
#include "MeasurementWidget.h"
#include "OCTMeasurementViewer.h"
#include "OCTSegmentationEditorWidget.h"
#include "Phantom.h"
#include "kelpCheck.h"
#include "kelpGISliceSegmentationEditor.h"

#include <QElapsedTimer>
#include <QMouseEvent>
#include <QSignalSpy>
#include <QTest>

#include <cmath>

namespace kelp::bench {

namespace {

using oct::VolumeLayer;
using oct::VolumeLayerPtr;

constexpr char sourcePath[] = "src/bench/GuiBench";

/// Shows the widget as large as the tab of a small screen.
void showLarge(QWidget& widget)
{
    constexpr QSize tab(1280, 720);
    widget.resize(tab);
    widget.show();
    widget.activateWindow();
    check(QTest::qWaitForWindowActive(&widget, longestWaitMs),
          {sourcePath, "kelp::bench::showLarge"}, "The window does not come up.");
}

/// Everything that is waiting, painting included.
void finishEvents()
{
    QCoreApplication::sendPostedEvents();
    QCoreApplication::processEvents();
}

template <typename Action>
double millisecondsOf(Action&& action)
{
    QElapsedTimer timer;
    timer.start();
    action();
    finishEvents();
    return static_cast<double>(timer.nsecsElapsed()) / 1e6;
}

void sendMove(QGraphicsView& view, const QPoint& place)
{
    QMouseEvent event(QEvent::MouseMove, place, view.viewport()->mapToGlobal(place), Qt::NoButton,
                      Qt::LeftButton, Qt::NoModifier);
    QCoreApplication::sendEvent(view.viewport(), &event);
}

VolumeLayerPtr toLayer(const phantom::Surface& surface)
{
    const auto bScans = static_cast<unsigned>(surface.rows.size());
    const auto aScans = static_cast<unsigned>(surface.rows.front().size());
    auto layer = VolumeLayerPtr::create(bScans, aScans);
    for (unsigned bScan = 0; bScan < bScans; ++bScan) {
        std::copy(surface.rows[bScan].begin(), surface.rows[bScan].end(),
                  layer->data + static_cast<std::size_t>(bScan) * aScans);
    }
    return layer;
}

} // namespace

OCTScanSegPtr makeSegmentedScan(const QString& folder, const Sizes& sizes)
{
    phantom::Options options;
    options.aScans = sizes.aScans;
    options.rows = sizes.rows;
    options.bScans = sizes.bScans;
    const phantom::Export written = phantom::writeExport(folder, options);
    const OCTScanPtr scan = oct::makeScan(written.xmlPath, written.seriesId, {});
    scan->ensureLoaded();
    const OCTScanSegPtr segmentation(new oct::OCTScanSegmentation(scan));
    for (const phantom::Surface& surface : written.surfaces) {
        segmentation->setVolumeLayer(toLayer(surface),
                                     oct::LayerName::fromIdentifier(surface.identifier));
    }
    // What a healthy phantom does not have takes the place of its neighbour.
    for (const auto& [identifier, source] :
         {std::pair("IRPE", "ISe"), std::pair("ILMcoarse", "ILM"), std::pair("ISeCoarse", "ISe")}) {
        segmentation->setVolumeLayer(
            segmentation->getVolumeLayer(oct::LayerName::fromIdentifier(source)),
            oct::LayerName::fromIdentifier(identifier));
    }
    return segmentation;
}

Figure measurePaging(const OCTScanSegPtr& segmentation)
{
    Figure figure{QStringLiteral("a page of a scan with nine layers"), 30.0};
    oct::OCTSegmentationEditorWidget widget;
    widget.initViewer();
    widget.setOCTScan(segmentation->getOCT());
    widget.setSegmentation(segmentation);
    showLarge(widget);
    finishEvents();
    for (int i = 0; i < segmentation->getNrOfBScans(); ++i) {
        figure.milliseconds.append(millisecondsOf([&] { emit widget.setActiveSlice(i); }));
    }
    return figure;
}

Figure measureEditing(const OCTScanSegPtr& segmentation)
{
    Figure figure{QStringLiteral("a mouse move that redraws a layer"), 8.0};
    oct::OCTSegmentationEditorWidget widget;
    widget.initViewer();
    widget.setOCTScan(segmentation->getOCT());
    widget.setSegmentation(segmentation);
    showLarge(widget);
    emit widget.setActiveSlice(segmentation->getNrOfBScans() / 2);
    auto& view = *widget.getViewer();
    check(QTest::qWaitFor([&view] { return view.cursor().shape() == Qt::CrossCursor; },
                          longestWaitMs),
          {sourcePath, "kelp::bench::measureEditing"}, "The editor does not start.");
    const QRect image = view.mapFromScene(view.getImageRect()).boundingRect();
    const int middle = image.center().y();

    // Picks the layer at the mouse, as Shift does.
    sendMove(view, {image.center().x(), middle});
    QTest::keyPress(&view, Qt::Key_Shift);
    QTest::mouseMove(view.viewport(), {image.center().x(), middle});
    finishEvents();
    QTest::keyRelease(&view, Qt::Key_Shift);
    finishEvents();
    QSignalSpy edited(&widget, SIGNAL(segmentationEdited()));
    QTest::mousePress(view.viewport(), Qt::LeftButton, {}, {image.left() + 5, middle});
    constexpr int step = 4;
    constexpr double swing = 20.0;
    for (int x = image.left() + 5; x < image.right() - 5; x += step) {
        const int y = middle + static_cast<int>(swing * std::sin(x / swing));
        figure.milliseconds.append(millisecondsOf([&] { sendMove(view, {x, y}); }));
    }
    QTest::mouseRelease(view.viewport(), Qt::LeftButton, {}, {image.right() - 5, middle});
    check(edited.count() == 1, {sourcePath, "kelp::bench::measureEditing"},
          "The mouse did not change a layer.");
    return figure;
}

Figure measureFoveaDrop(const OCTScanSegPtr& segmentation)
{
    Figure figure{QStringLiteral("map and table after the fovea is dropped"), 200.0};
    oct::MeasurementWidget widget;
    widget.setOCT(segmentation->getOCT());
    widget.setSegmentation(segmentation);
    showLarge(widget);
    auto& view = *widget.getViewer();
    QSignalSpy moved(&view, SIGNAL(foveaMoved(CoordOnLocalizer)));
    const QPoint fovea = view.mapFromScene(view.getFovea().x, view.getFovea().y);
    constexpr int drops = 15;
    for (int i = 0; i < drops; ++i) {
        const QPoint place = fovea + QPoint(4 * (i % 5) + 3, 3 * (i % 7) + 2);
        QTest::mousePress(view.viewport(), Qt::LeftButton, {}, fovea);
        sendMove(view, place);
        finishEvents();
        figure.milliseconds.append(millisecondsOf(
            [&] { QTest::mouseRelease(view.viewport(), Qt::LeftButton, {}, place); }));
    }
    check(moved.count() == drops, {sourcePath, "kelp::bench::measureFoveaDrop"},
          "The mouse did not move the fovea.");
    return figure;
}

} // namespace kelp::bench
