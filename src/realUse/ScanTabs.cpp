#include "ScanTabs.h"

#include "EtdrsGrid.h"
#include "MouseEvents.h"
#include "OCTMeasurementViewer.h"
#include "Waiting.h"
#include "kelpException.h"
#include "kelpLayerSegmentationGI.h"

#include <QDialog>
#include <QGraphicsView>
#include <QTableWidget>
#include <QTest>

#include <gtest/gtest.h>

namespace scantabs {

using kelp::oct::BScanSegmentationLayerPtr;
using kelp::oct::EtdrsTable;
using kelp::oct::GISliceSegmentationViewer;
using kelp::oct::OCTMeasurementViewer;

namespace {

QPoint placeOf(const GISliceSegmentationViewer& viewer, const QPointF& aScanAndRow)
{
    const auto spacing = viewer.getSegmentation()->getOCT()->getSliceSpacing();
    return viewer.mapFromScene(aScanAndRow.x() * spacing.x, aScanAndRow.y() * spacing.y);
}

OCTMeasurementViewer& measurementViewer(const ApplicationDriver& user)
{
    return user.find<OCTMeasurementViewer>("measurementViewer");
}

QStringList cellTexts(const EtdrsTable& table)
{
    QStringList texts;
    for (const auto& row : table.means) {
        for (const auto& mean : row) {
            texts.append(EtdrsTable::cellText(mean));
        }
    }
    return texts;
}

} // namespace

QStringList drawnLayers(const ApplicationDriver& user)
{
    const GISliceSegmentationViewer& viewer = user.sliceViewer();
    const int slice = viewer.getActiveSlice();
    QStringList layers;
    for (int i = 0; i < viewer.getSliceObjects(slice).size(); ++i) {
        const auto overlay = viewer.getOverlay(slice, i);
        if (overlay && overlay->isVisible()) {
            layers.append(overlay->getLayer()->getLayerName()->getIdentifier());
        }
    }
    layers.removeDuplicates();
    layers.sort();
    return layers;
}

int rowOf(const ApplicationDriver& user, const QString& layer, int aScan)
{
    const auto bScan = user.shownSegmentation()->getBScanSegmentation(user.activeSlice());
    const QList<BScanSegmentationLayerPtr> layers = bScan->getAllLayers();
    for (const BScanSegmentationLayerPtr& candidate : layers) {
        if (candidate->getLayerName()->getIdentifier() == layer) {
            return candidate->layerData()[static_cast<unsigned>(aScan)];
        }
    }
    ADD_FAILURE() << "there is no layer " << layer.toStdString();
    return -1;
}

void pickLayer(ApplicationDriver& user, const QString& layer, int aScan)
{
    GISliceSegmentationViewer& viewer = user.sliceViewer();
    ASSERT_TRUE(waiting::untilFocused(viewer));
    const double row = rowOf(user, layer, aScan);
    QTest::keyPress(&viewer, Qt::Key_Shift);
    mouseevents::move(*viewer.viewport(), placeOf(viewer, QPointF(aScan, row)));
    QTest::keyRelease(&viewer, Qt::Key_Shift);
}

void drawStroke(ApplicationDriver& user, const QList<QPointF>& places)
{
    const GISliceSegmentationViewer& viewer = user.sliceViewer();
    QList<QPoint> points;
    for (const QPointF& place : places) {
        points.append(placeOf(viewer, place));
    }
    mouseevents::drag(*viewer.viewport(), points);
}

void drawMask(ApplicationDriver& user, const QPolygonF& corners)
{
    user.dialogs.expect([&corners](QDialog& dialog) {
        EXPECT_EQ(dialog.windowTitle(), QStringLiteral("Edit Mask"));
        auto* const view = dialog.findChild<QGraphicsView*>(QStringLiteral("editMaskViewer"));
        ASSERT_TRUE(view);
        for (const QPointF& corner : corners) {
            const QPoint place = view->mapFromScene(corner);
            mouseevents::move(*view->viewport(), place);
            QTest::mouseClick(view->viewport(), Qt::LeftButton, Qt::NoModifier, place);
        }
        QTest::mouseClick(view->viewport(), Qt::RightButton, Qt::NoModifier,
                          view->mapFromScene(corners.last()));
        DialogDriver::click(dialog, QStringLiteral("Close"));
    });
    user.click(QStringLiteral("Edit Mask"));
}

void deleteAllMasks(ApplicationDriver& user)
{
    user.dialogs.expect([](QDialog& dialog) {
        DialogDriver::click(dialog, QStringLiteral("Delete All Masks"));
        DialogDriver::click(dialog, QStringLiteral("Close"));
    });
    user.click(QStringLiteral("Edit Mask"));
}

QStringList shownThicknesses(const ApplicationDriver& user)
{
    const auto& table = user.find<QTableWidget>("thicknessTable");
    QStringList texts;
    for (int row = 0; row < table.rowCount(); ++row) {
        for (int column = 0; column < table.columnCount(); ++column) {
            texts.append(table.item(row, column)->text());
        }
    }
    return texts;
}

QStringList expectedThicknesses(const OCTScanPtr& scan, const QString& storedText,
                                const CoordOnLocalizer& fovea)
{
    const OCTScanSegPtr segmentation(new kelp::oct::OCTScanSegmentation(scan));
    segmentation->setStoredData(storedText);
    segmentation->ensureDecoded();
    return cellTexts(kelp::oct::measureEtdrs(segmentation, fovea));
}

CoordOnLocalizer shownFovea(const ApplicationDriver& user)
{
    return measurementViewer(user).getFovea();
}

void dragFovea(ApplicationDriver& user, double dx, double dy)
{
    const OCTMeasurementViewer& viewer = measurementViewer(user);
    const CoordOnLocalizer from = viewer.getFovea();
    const auto at = [&](double share) {
        return viewer.mapFromScene(from.x + share * dx, from.y + share * dy);
    };
    constexpr double half = 0.5;
    mouseevents::drag(*viewer.viewport(), {at(0.0), at(half), at(1.0)});
}

void savePicture(ApplicationDriver& user, const QString& entry, const QString& path)
{
    OCTMeasurementViewer& viewer = measurementViewer(user);
    user.dialogs.expectMenu(entry);
    user.dialogs.expectFileDialog(path);
    const CoordOnLocalizer fovea = viewer.getFovea();
    user.dialogs.rightClick(*viewer.viewport(), viewer.mapFromScene(fovea.x, fovea.y));
}

void exportAllFormats(ApplicationDriver& user, const QString& folder)
{
    for (const char* const option : {"MetaImage", "Layer Positions as CSV",
                                     "Layer Thickness as CSV", "Layers as Raw (16bit uint)"}) {
        user.tick(QString::fromLatin1(option));
    }
    user.dialogs.expectFileDialog(folder);
    user.click(QStringLiteral("Export"));
}

} // namespace scantabs
