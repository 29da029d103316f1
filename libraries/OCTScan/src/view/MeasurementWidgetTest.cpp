#include "MeasurementWidget.h"

#include "DialogDriver.h"
#include "ExpectFailure.h"
#include "MeasurementTestTools.h"
#include "MeasurementWidgetFixture.h"

#include <QClipboard>
#include <QGroupBox>
#include <QSignalSpy>

#include <array>
#include <map>

using namespace kelp::oct;
using namespace kelp::oct::test;

namespace {

/// The column of a place by its angle, 0 to 8, or -1 outside the grid.
int columnOf(double dx, double dz, bool rightEye)
{
    const double radius = std::hypot(dx, dz);
    if (radius <= 0.5) {
        return 0;
    }
    if (radius > 3.0) {
        return -1;
    }
    const double degrees = std::atan2(dz, rightEye ? dx : -dx) * 180.0 / M_PI;
    const int outer = radius > 1.5 ? 1 : 0;
    if (std::abs(degrees) <= 45.0) {
        return 1 + outer; // nasal
    }
    if (std::abs(degrees) >= 135.0) {
        return 5 + outer; // temporal
    }
    return (degrees < 0.0 ? 3 : 7) + outer; // superior above the fovea
}

/// The whole table as texts, from the formula of the surfaces alone.
QStringList expectedCells(const QPointF& fovea, bool rightEye,
                          const std::function<bool(const QPointF&)>& isMasked)
{
    const int surfaces[][2] = {{0, 1}, {1, 2}, {2, 3}, {3, 4}, {4, 5}, {0, 5}};
    QStringList cells;
    for (const auto& [top, bottom] : surfaces) {
        std::array<double, 9> sums{};
        std::array<int, 9> counts{};
        for (int bScan = 0; bScan < MeasuredScan::bScans; ++bScan) {
            for (int aScan = 0; aScan < MeasuredScan::aScans; ++aScan) {
                const QPointF place = MeasuredScan::position(bScan, aScan);
                const int column = columnOf(place.x() - fovea.x(), place.y() - fovea.y(), rightEye);
                if (column < 0 || isMasked(place)) {
                    continue;
                }
                const auto index = static_cast<std::size_t>(column);
                sums[index] +=
                    MeasuredScan::row(bottom, bScan, aScan) - MeasuredScan::row(top, bScan, aScan);
                ++counts[index];
            }
        }
        for (std::size_t column = 0; column < sums.size(); ++column) {
            cells.append(counts[column] == 0
                             ? QStringLiteral("-")
                             : QString::number(sums[column] / counts[column] * 4.0, 'f', 2));
        }
    }
    return cells;
}

bool nothingMasked(const QPointF&)
{
    return false;
}

TEST_F(Measurement, ShowsTheMeanOfEverySectorForBothEyes)
{
    // Away from any A-scan's diagonal.
    const QPointF fovea(4.137, 3.953);
    for (const bool rightEye : {true, false}) {
        MeasuredScan measured(rightEye);
        measured.addLayers();
        measured.segmentation->setFoveaPosition({CoordOnLocalizer(fovea.x(), fovea.y()), true});
        show(measured);
        EXPECT_EQ(cells(), expectedCells(fovea, rightEye, nothingMasked));
        EXPECT_NE(cells(), expectedCells(fovea, !rightEye, nothingMasked));
    }
}

TEST_F(Measurement, LeavesMaskedAScansOutOfTheMeans)
{
    const QPointF fovea(4.137, 3.953);
    MeasuredScan measured;
    measured.addLayers();
    measured.segmentation->setFoveaPosition({CoordOnLocalizer(fovea.x(), fovea.y()), true});
    measured.segmentation->getMask()->addPolygon(makeRectangle(0.0, 0.0, 4.56, 4.1));
    show(measured);
    EXPECT_EQ(cells(), expectedCells(fovea, true, [](const QPointF& place) {
                  return place.x() < 4.56 && place.y() < 4.1;
              }));
}

TEST_F(Measurement, ShowsADashForASectorWhollyOutsideTheScan)
{
    MeasuredScan measured;
    measured.addLayers();
    const QPointF corner(1.03, 1.02);
    measured.segmentation->setFoveaPosition({CoordOnLocalizer(corner.x(), corner.y()), true});
    show(measured);
    EXPECT_EQ(cells(), expectedCells(corner, true, nothingMasked));
    EXPECT_EQ(cell(0, 4), QStringLiteral("-"));
    EXPECT_EQ(cell(0, 6), QStringLiteral("-"));
    EXPECT_NE(cell(0, 8), QStringLiteral("-"));
}

TEST_F(Measurement, FollowsTheFoveaThatTheMouseDrops)
{
    MeasuredScan measured;
    measured.addLayers();
    measured.segmentation->setFoveaPosition({CoordOnLocalizer(4.137, 3.953), true});
    show(measured);
    const QStringList before = cells();
    mouse().press({4.137, 3.953});
    mouse().move({5.21, 3.02}, Qt::LeftButton);
    EXPECT_EQ(cells(), before) << "changed before the mouse was released";
    mouse().release({5.21, 3.02});
    const CoordOnLocalizer moved = viewer().getFovea();
    EXPECT_NEAR(moved.x, 5.21, 0.05);
    EXPECT_EQ(cells(), expectedCells({moved.x, moved.y}, true, nothingMasked));
    EXPECT_NE(cells(), before);
}

TEST_F(Measurement, DoesNotMeasureAgainForAClickThatMovesNothing)
{
    MeasuredScan measured;
    measured.addLayers();
    show(measured);
    const QString before = cell(0, 0);
    // A change behind the widget's back would show if it measured.
    measured.segmentation->setVolumeLayer(
        makeFlatSurface(MeasuredScan::bScans, MeasuredScan::aScans, 0), LayerNameILM::create());
    const QPointF fovea(viewer().getFovea().x, viewer().getFovea().y);
    mouse().press(fovea);
    mouse().release(fovea);
    EXPECT_EQ(cell(0, 0), before);
    m_widget.updateView();
    EXPECT_NE(cell(0, 0), before);
}

TEST_F(Measurement, WritesMeansWithTwoDecimals)
{
    MeasuredScan measured;
    measured.addLayers();
    // 5 micrometres are 1.25 rows: three A-scans of four with one row, one with two.
    measured.segmentation->setVolumeLayer(
        makeFlatSurface(MeasuredScan::bScans, MeasuredScan::aScans, 10), LayerNameILM::create());
    measured.segmentation->setVolumeLayer(makeSurface(MeasuredScan::bScans, MeasuredScan::aScans,
                                                      [](unsigned, unsigned) { return 11; }),
                                          LayerNameGCL::create());
    show(measured);
    EXPECT_EQ(cell(0, 0), QStringLiteral("4.00"));
}

TEST_F(Measurement, LabelsItsGroupsRowsAndColumns)
{
    QStringList titles;
    for (const QGroupBox* const group : m_widget.findChildren<QGroupBox*>()) {
        titles.append(group->title());
    }
    EXPECT_THAT(titles, testing::UnorderedElementsAre(QString("Rendering Options"),
                                                      QString("Results (Thickness in \u00b5m)")));
    QStringList rows;
    for (int row = 0; row < table().rowCount(); ++row) {
        rows.append(table().verticalHeaderItem(row)->text());
    }
    EXPECT_EQ(rows, (QStringList{"NFL", "GCL + IPL", "INL + OPL", "ONL", "RPE-OS Complex",
                                 "Complete Retina"}));
    QStringList columns;
    for (int column = 0; column < table().columnCount(); ++column) {
        columns.append(table().horizontalHeaderItem(column)->text());
        EXPECT_EQ(table().columnWidth(column), 70);
    }
    EXPECT_EQ(columns, (QStringList{"C", "N1", "N2", "S1", "S2", "T1", "T2", "I1", "I2"}));
    EXPECT_EQ(cells(), QStringList(QVector<QString>(54, QStringLiteral("-")).toList()));
    EXPECT_EQ(find<QGroupBox>("measurementResults").height(), 260);
}

TEST_F(Measurement, ShowsEveryRowWithoutScrolling)
{
    EXPECT_FALSE(table().verticalScrollBar()->isVisible());
}

TEST_F(Measurement, CopiesSelectedCellsWithCtrlCAndNothingWithoutASelection)
{
    MeasuredScan measured;
    measured.addLayers();
    show(measured);
    QTest::mouseClick(table().viewport(), Qt::LeftButton, Qt::NoModifier, middleOf(0, 0));
    QTest::mouseClick(table().viewport(), Qt::LeftButton, Qt::ShiftModifier, middleOf(1, 1));
    QTest::keyClick(&table(), Qt::Key_C, Qt::ControlModifier);
    EXPECT_EQ(QApplication::clipboard()->text(),
              QStringLiteral("%1\t%2\n%3\t%4").arg(cell(0, 0), cell(0, 1), cell(1, 0), cell(1, 1)));
    table().clearSelection();
    QTest::keyClick(&table(), Qt::Key_C, Qt::ControlModifier);
    EXPECT_EQ(QApplication::clipboard()->text(), QString());
}

TEST_F(Measurement, CopiesTheWholeTableWithItsLabels)
{
    MeasuredScan measured;
    measured.addLayers();
    show(measured);
    const auto expectWholeTable = [this] {
        const QStringList lines = QApplication::clipboard()->text().split(QLatin1Char('\n'));
        ASSERT_EQ(lines.size(), 10);
        EXPECT_EQ(lines[0], QStringLiteral("\tC\tN1\tN2\tS1\tS2\tT1\tT2\tI1\tI2"));
        EXPECT_EQ(lines[6], QStringLiteral("Complete Retina\t") +
                                QStringList(cells().mid(45)).join(QLatin1Char('\t')));
        EXPECT_THAT(lines[7].toStdString(), testing::StartsWith("A-scans\t"));
        EXPECT_THAT(lines[8].toStdString(), testing::StartsWith("A-scans expected\t"));
    };
    DialogDriver dialogs;
    dialogs.expectMenu(QStringLiteral("Copy Table"));
    dialogs.rightClick(*table().viewport(), middleOf(2, 2));
    expectWholeTable();
    QApplication::clipboard()->clear();
    focus(table());
    QTest::keyClick(&table(), Qt::Key_C, Qt::ControlModifier | Qt::ShiftModifier);
    expectWholeTable();
}

TEST_F(Measurement, DoesNotLetTheUserTypeOverTheResults)
{
    QTest::mouseDClick(table().viewport(), Qt::LeftButton, Qt::NoModifier, middleOf(0, 0));
    QTest::keyClicks(&table(), QStringLiteral("7"));
    EXPECT_EQ(cell(0, 0), QStringLiteral("-"));
}

TEST_F(Measurement, CannotFillTheTableWithoutGclAndTellsSoButShowsTheRest)
{
    MeasuredScan measured;
    measured.addLayers({QStringLiteral("ILM"), QStringLiteral("BM")});
    m_widget.setOCT(measured.scan);
    EXPECT_THAT(failure<kelp::Assertion>([&] { m_widget.setSegmentation(measured.segmentation); }),
                testing::HasSubstr("Coult not find layer with name GCL"));
    EXPECT_EQ(cell(5, 0), QStringLiteral("-"));
    EXPECT_TRUE(note().contains(QStringLiteral("GCL, INL, ONL, ISe."))) << note().toStdString();
    EXPECT_EQ(visibleItems<QGraphicsPixmapItem>(viewer()).size(), 2) << "no map";
    EXPECT_EQ(ellipsesOf(viewer(), Qt::blue).size(), 3);
    // No box at each drag.
    DialogDriver dialogs;
    mouse().drag({4.0, 4.0}, {5.0, 3.0});
    EXPECT_EQ(cell(5, 0), QStringLiteral("-"));
    EXPECT_TRUE(dialogs.messages().isEmpty());
}

TEST_F(Measurement, ShowsGridAndNoteForASegmentationWithoutLayers)
{
    MeasuredScan full;
    full.addLayers();
    show(full);
    ASSERT_NE(cell(0, 0), QStringLiteral("-"));
    const OCTScanSegPtr fresh(new OCTScanSegmentation(full.scan));
    EXPECT_THROW(m_widget.setSegmentation(fresh), kelp::Assertion);
    EXPECT_EQ(cell(0, 0), QStringLiteral("-")) << "figures of another segmentation";
    EXPECT_EQ(find<QComboBox>("topLayerBox").count(), 0);
    EXPECT_EQ(visibleItems<QGraphicsPixmapItem>(viewer()).size(), 1) << "a map of another one";
    EXPECT_EQ(ellipsesOf(viewer(), Qt::blue).size(), 3);
    EXPECT_TRUE(note().contains(QStringLiteral("ILM, GCL, INL, ONL, ISe, BM")));
    show(full);
    EXPECT_NE(cell(0, 0), QStringLiteral("-"));
    EXPECT_TRUE(note().isEmpty());
}

TEST_F(Measurement, AsksForASegmentationAndSaysWhichScansHaveNoMap)
{
    MeasuredScan star(true, QStringLiteral("Star"));
    star.addLayers();
    m_widget.setOCT(star.scan);
    EXPECT_TRUE(note().startsWith(QStringLiteral("Select a segmentation"))) << note().toStdString();
    m_widget.setSegmentation(star.segmentation);
    EXPECT_TRUE(note().contains(QStringLiteral("volume scans only"))) << note().toStdString();
    EXPECT_NE(cell(5, 0), QStringLiteral("-"));
}

TEST_F(Measurement, IsEmptyAfterClearing)
{
    MeasuredScan measured;
    measured.addLayers();
    show(measured);
    m_widget.clearOCT();
    EXPECT_EQ(cells(), QStringList(QVector<QString>(54, QStringLiteral("-")).toList()));
    EXPECT_EQ(find<QComboBox>("topLayerBox").count(), 0);
    EXPECT_TRUE(viewer().scene()->items().isEmpty());
    EXPECT_TRUE(note().isEmpty());
}

TEST_F(Measurement, RefusesNullObjects)
{
    const auto text = [](const char* function, const char* words) {
        return std::string("OCTScan/src/view/MeasurementWidget::kelp::oct::MeasurementWidget::") +
               function + ": " + words;
    };
    EXPECT_EQ(failure<kelp::Assertion>([&] { m_widget.setOCT(nullptr); }),
              text("setOCT", "OCT scan is null."));
    EXPECT_EQ(failure<kelp::Assertion>([&] { m_widget.setSegmentation(nullptr); }),
              text("setSegmentation", "OCT scan segmentation is null."));
    EXPECT_EQ(failure<kelp::Assertion>([&] { m_widget.updateLayerSelection(nullptr); }),
              text("updateLayerSelection", "OCT scan segmentation is null."));
}

} // namespace
