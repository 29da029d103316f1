#include "AppBase.h"
#include "EtdrsGrid.h"
#include "RealUseFixture.h"
#include "ScanTabs.h"

#include <QAbstractItemView>
#include <QCheckBox>
#include <QClipboard>
#include <QDir>
#include <QFile>
#include <QGuiApplication>
#include <QImage>
#include <QTableWidget>
#include <QTest>

#include <gtest/gtest.h>

#include <cmath>

// One volume scan on its whole road through the application.

using namespace scantabs;
using kelp::phantom::Export;

namespace {

const QStringList normalLayers{QStringLiteral("BM"),  QStringLiteral("GCL"), QStringLiteral("ILM"),
                               QStringLiteral("INL"), QStringLiteral("ISe"), QStringLiteral("ONL")};

/// The corners of a square on the localizer.
QPolygonF square(const CoordOnLocalizer& middle, double side)
{
    const QPointF corner(middle.x - side / 2, middle.y - side / 2);
    const QRectF area(corner, QSizeF(side, side));
    return QPolygonF({area.topLeft(), area.topRight(), area.bottomRight(), area.bottomLeft()});
}

class RealUse : public RealUseFixture
{
protected:
    RealUse() : m_export(writeExport(QStringLiteral("volume"))) {}

    /// Mean distance in rows from the phantom's surface on the B-scan that is shown.
    double errorOf(const ApplicationDriver& user, const QString& layer) const
    {
        for (const auto& surface : m_export.surfaces) {
            if (surface.identifier != layer) {
                continue;
            }
            const auto& truth = surface.rows[static_cast<std::size_t>(user.activeSlice())];
            double sum = 0.0;
            for (std::size_t i = 0; i < truth.size(); ++i) {
                sum += std::abs(rowOf(user, layer, static_cast<int>(i)) - int{truth[i]});
            }
            return sum / static_cast<double>(truth.size());
        }
        ADD_FAILURE() << "the phantom has no " << layer.toStdString();
        return 0.0;
    }

    const Export m_export;
};

TEST_F(RealUse, SegmentsAScanAndDrawsItsLayersInEveryTab)
{
    use([&](ApplicationDriver& user) {
        makeSegmentedScan(user, m_export.xmlPath);
        EXPECT_EQ(drawnLayers(user), normalLayers);
        constexpr double toleratedRows = 2.0;
        EXPECT_LT(errorOf(user, QStringLiteral("ILM")), toleratedRows);
        EXPECT_LT(errorOf(user, QStringLiteral("BM")), toleratedRows);
        const OCTScanSegPtr segmentation = user.shownSegmentation();
        EXPECT_TRUE(ApplicationDriver::waitFor([&] { return isStored(segmentation); }));

        QTest::mouseClick(&user.find<QAbstractButton>("nextBScan"), Qt::LeftButton);
        const int slice = user.activeSlice();
        user.selectTab(manualTab);
        EXPECT_EQ(user.shownSegmentation(), segmentation);
        EXPECT_EQ(user.activeSlice(), slice);
        EXPECT_EQ(drawnLayers(user), normalLayers);
        user.selectTab(measurementTab);
        EXPECT_FALSE(shownThicknesses(user).contains(QStringLiteral("nan")));
        user.selectTab(QStringLiteral("Patient Manager"));
        user.selectTab(QStringLiteral("OCT Help"));
        user.selectTab(automaticTab);
        EXPECT_EQ(user.shownSegmentation(), segmentation);
        EXPECT_EQ(user.activeSlice(), slice);
    });
}

TEST_F(RealUse, ACorrectedLayerIsOnDiskAsSoonAsTheMouseIsReleased)
{
    use([&](ApplicationDriver& user) {
        makeSegmentedScan(user, m_export.xmlPath);
        user.selectTab(manualTab);
        const QString ilm = QStringLiteral("ILM");
        constexpr int from = 40;
        constexpr int to = 60;
        constexpr int middle = 50;
        const int before = rowOf(user, ilm, middle);
        const int belowBefore = rowOf(user, QStringLiteral("GCL"), middle);
        const int wanted = before - 12;
        pickLayer(user, ilm, middle);
        drawStroke(user, {QPointF(from, wanted + 0.5), QPointF(middle, wanted + 0.5),
                          QPointF(to, wanted + 0.5)});
        // A mouse has no finer steps than the pixels of the screen.
        EXPECT_NEAR(rowOf(user, ilm, middle), wanted, 1);
        EXPECT_NEAR(rowOf(user, ilm, from + 1), wanted, 1);
        EXPECT_EQ(rowOf(user, QStringLiteral("GCL"), middle), belowBefore);
        const OCTScanSegPtr segmentation = user.shownSegmentation();
        EXPECT_TRUE(ApplicationDriver::waitFor([&] { return isStored(segmentation); }));
        EXPECT_TRUE(ApplicationDriver::waitFor([] { return !AppBase::hasUnsavedChanges(); }));
    });
}

TEST_F(RealUse, MasksAreDrawnAndDeletedAndStoredAtOnce)
{
    use([&](ApplicationDriver& user) {
        makeSegmentedScan(user, m_export.xmlPath);
        const OCTScanSegPtr segmentation = user.shownSegmentation();
        const CoordOnLocalizer fovea = kelp::oct::foveaOrCenter(segmentation);
        const int automatic = segmentation->getMask()->getPolygons().size();
        drawMask(user, square(fovea, 1.0));
        EXPECT_EQ(segmentation->getMask()->getPolygons().size(), automatic + 1);
        const auto masked = [&segmentation] {
            const auto matrix = segmentation->getMask()->getMaskMatrix();
            return std::count_if(matrix->begin(), matrix->end(), [](auto byte) { return byte; });
        };
        EXPECT_GT(masked(), 0);
        EXPECT_TRUE(ApplicationDriver::waitFor([&] { return isStored(segmentation); }));

        deleteAllMasks(user);
        EXPECT_TRUE(segmentation->getMask()->getPolygons().isEmpty());
        EXPECT_EQ(masked(), 0);
        EXPECT_TRUE(ApplicationDriver::waitFor([&] { return isStored(segmentation); }));
    });
}

TEST_F(RealUse, TheTableShowsWhatTheStoredDataMeasureAndFollowsTheFovea)
{
    use([&](ApplicationDriver& user) {
        makeSegmentedScan(user, m_export.xmlPath);
        const OCTScanSegPtr segmentation = user.shownSegmentation();
        const OCTScanPtr scan = segmentation->getOCT();
        const QString stored = segmentation->toBase64String();
        ASSERT_TRUE(ApplicationDriver::waitFor([&] { return isStored(segmentation); }));
        user.selectTab(measurementTab);
        const QStringList shown = shownThicknesses(user);
        EXPECT_EQ(shown, expectedThicknesses(scan, stored, kelp::oct::foveaOrCenter(segmentation)));
        EXPECT_NE(shown.front(), QStringLiteral("-"));

        const CoordOnLocalizer before = shownFovea(user);
        dragFovea(user, 0.6, -0.4);
        const CoordOnLocalizer after = shownFovea(user);
        constexpr double pixel = 0.05;
        EXPECT_NEAR(after.x, before.x + 0.6, pixel);
        EXPECT_NEAR(after.y, before.y - 0.4, pixel);
        EXPECT_EQ(shownThicknesses(user), expectedThicknesses(scan, stored, after));
        EXPECT_NE(shownThicknesses(user), shown);
        // The dragged fovea belongs to the view alone.
        EXPECT_EQ(segmentation->toBase64String(), stored);

        auto& table = user.find<QTableWidget>("thicknessTable");
        user.press(table, Qt::Key_A, Qt::ControlModifier);
        user.press(table, Qt::Key_C, Qt::ControlModifier);
        QStringList lines;
        const QStringList cells = shownThicknesses(user);
        for (int row = 0; row < table.rowCount(); ++row) {
            lines.append(QStringList(cells.mid(row * table.columnCount(), table.columnCount()))
                             .join(QLatin1Char('\t')));
        }
        EXPECT_EQ(QGuiApplication::clipboard()->text(), lines.join(QLatin1Char('\n')));
    });
}

TEST_F(RealUse, PicturesOfTheMapAreSavedWithAndWithoutTheGrid)
{
    const QString with = path(QStringLiteral("with.png"));
    const QString without = path(QStringLiteral("without.png"));
    use([&](ApplicationDriver& user) {
        makeSegmentedScan(user, m_export.xmlPath);
        user.selectTab(measurementTab);
        savePicture(user, QStringLiteral("Save image with ETDRS"), with);
        savePicture(user, QStringLiteral("Save image without ETDRS"), without);
    });
    const QImage withGrid(with);
    const QImage withoutGrid(without);
    ASSERT_FALSE(withGrid.isNull());
    ASSERT_FALSE(withoutGrid.isNull());
    EXPECT_EQ(withGrid.size(), withoutGrid.size());
    EXPECT_NE(withGrid, withoutGrid);
}

TEST_F(RealUse, ExportsAllFourFormats)
{
    const QString folder = path(QStringLiteral("results"));
    ASSERT_TRUE(QDir().mkpath(folder));
    int row = -1;
    bool isMasked = false;
    constexpr int bScan = 3;
    constexpr int aScan = 50;
    use([&](ApplicationDriver& user) {
        makeSegmentedScan(user, m_export.xmlPath);
        exportAllFormats(user, folder);
        const OCTScanSegPtr segmentation = user.shownSegmentation();
        row = (*segmentation->getVolumeLayer(kelp::oct::LayerNameILM::create()))(bScan, aScan);
        isMasked = (*segmentation->getMask()->getMaskMatrix())(bScan, aScan) != 0;
    });
    const QStringList files = QDir(folder).entryList(QDir::Files);
    EXPECT_EQ(files.filter(QStringLiteral(".mha")),
              QStringList({QStringLiteral("oct.mha"), QStringLiteral("segmentation.mha")}));
    EXPECT_EQ(files.filter(QStringLiteral("layer_")).size(), 2 * normalLayers.size());
    EXPECT_EQ(files.filter(QStringLiteral("thickness_")).size(), normalLayers.size() - 1);

    QFile positions(folder + QStringLiteral("/layer_ILM.csv"));
    ASSERT_TRUE(positions.open(QIODevice::ReadOnly));
    const QList<QByteArray> lines = positions.readAll().trimmed().split('\n');
    ASSERT_EQ(lines.size(), 7);
    EXPECT_EQ(lines[bScan].split('\t').at(aScan).toInt(), isMasked ? -1 : row);
    EXPECT_EQ(QFile(folder + QStringLiteral("/layer_ILM.raw")).size(), 7 * 96);
    QFile volume(folder + QStringLiteral("/oct.mha"));
    ASSERT_TRUE(volume.open(QIODevice::ReadOnly));
    const QByteArray content = volume.readAll();
    EXPECT_TRUE(content.contains("DimSize = 96 240 7"));
    EXPECT_GT(content.size(), 96 * 240 * 7);
}

TEST_F(RealUse, EverythingIsAsItWasAfterTheNextStart)
{
    const QSize size(1300, 820);
    QString payload;
    use([&](ApplicationDriver& user) {
        user.form().resize(size);
        makeSegmentedScan(user, m_export.xmlPath);
        drawMask(user, square(CoordOnLocalizer(3.0, 3.0), 0.8));
        user.tick(QStringLiteral("MetaImage"));
        user.tick(QStringLiteral("Use Center Mask (ONH)"));
        user.selectTab(manualTab);
        pickLayer(user, QStringLiteral("ISe"), 30);
        const double row = rowOf(user, QStringLiteral("ISe"), 30) - 4.5;
        drawStroke(user, {QPointF(25, row), QPointF(35, row)});
        payload = user.shownSegmentation()->toBase64String();
        user.selectTab(measurementTab);
    });
    const QMap<QString, QByteArray> trees = storedTrees();
    EXPECT_EQ(trees.size(), 2);

    use([&](ApplicationDriver& user) {
        EXPECT_EQ(user.currentTab(), measurementTab);
        EXPECT_EQ(user.form().size(), size);
        ASSERT_TRUE(AppBase::getCurrentPatient());
        EXPECT_EQ(AppBase::getCurrentPatient()->getName(), QStringLiteral("Ada Lindqvist"));
        EXPECT_EQ(AppBase::getCurrentPatient()->getBirthDate(), QDate(1960, 12, 31));
        ASSERT_TRUE(AppBase::getCurrentStudy());
        EXPECT_EQ(AppBase::getCurrentStudy()->getId(), QStringLiteral("Baseline"));

        user.selectTab(automaticTab);
        user.openScan();
        auto& list = user.find<QAbstractItemView>("segmentationList");
        ASSERT_EQ(user.texts(list).size(), 1);
        user.choose(list, 0);
        EXPECT_EQ(drawnLayers(user), normalLayers);
        EXPECT_EQ(user.shownSegmentation()->toBase64String(), payload);
        EXPECT_TRUE(user.shownSegmentation()->getFoveaPosition().isSet);
        EXPECT_TRUE(user.find<QCheckBox>("exportMetaImage").isChecked());
        EXPECT_FALSE(user.find<QCheckBox>("exportRaw").isChecked());
        EXPECT_TRUE(user.find<QCheckBox>("useCenterMask").isChecked());
    });
    EXPECT_EQ(storedTrees(), trees);
}

} // namespace
