#include "AppBase.h"
#include "BatchTab.h"
#include "EtdrsGrid.h"
#include "RealUseFixture.h"
#include "ScanTabs.h"

#include <QAbstractItemView>
#include <QDir>
#include <QLabel>

#include <gtest/gtest.h>

// The road of scans that are no volumes.

using namespace scantabs;
using kelp::phantom::Pattern;

namespace {

class RealUsePatterns : public RealUseFixture
{
protected:
    /// Imports the only export with the batch tab, and opens its scan.
    void importAndOpen(ApplicationDriver& user) const
    {
        user.selectTab(batchtab::tabName);
        batchtab::importFolder(user, exports());
        ASSERT_EQ(batchtab::rows(user).size(), 1);
        user.selectTab(QStringLiteral("Patient Manager"));
        user.choosePatient(QStringLiteral("Normal 1"));
        user.chooseLine(QStringLiteral("DefaultStudy"));
        user.selectTab(automaticTab);
        user.openScan();
    }

    void useAndReopen() const;
    void correctAndMeasure(ApplicationDriver& user) const;
};

/// On the only B-scan that the scan has.
void RealUsePatterns::correctAndMeasure(ApplicationDriver& user) const
{
    const OCTScanSegPtr segmentation = user.shownSegmentation();
    user.selectTab(manualTab);
    EXPECT_EQ(user.shownSegmentation(), segmentation);
    const QString ilm = QStringLiteral("ILM");
    constexpr int aScan = 50;
    const int wanted = rowOf(user, ilm, aScan) - 8;
    pickLayer(user, ilm, aScan);
    drawStroke(user, {QPointF(aScan - 6, wanted + 0.5), QPointF(aScan + 6, wanted + 0.5)});
    EXPECT_NEAR(rowOf(user, ilm, aScan), wanted, 1);

    const int polygons = segmentation->getMask()->getPolygons().size();
    drawMask(user, QPolygonF({QPointF(1, 1), QPointF(2, 1), QPointF(2, 2)}));
    EXPECT_EQ(segmentation->getMask()->getPolygons().size(), polygons + 1);
    EXPECT_TRUE(ApplicationDriver::waitFor([&] { return isStored(segmentation); }));

    user.selectTab(measurementTab);
    EXPECT_EQ(user.find<QLabel>("measurementNote").text(),
              QStringLiteral("Thickness maps are drawn for volume scans only."));
    EXPECT_EQ(shownThicknesses(user),
              expectedThicknesses(segmentation->getOCT(), segmentation->toBase64String(),
                                  kelp::oct::foveaOrCenter(segmentation)));
}

void RealUsePatterns::useAndReopen() const
{
    const QString results = path(QStringLiteral("results"));
    ASSERT_TRUE(QDir().mkpath(results));
    QString payload;
    use([&](ApplicationDriver& user) {
        importAndOpen(user);
        user.newSegmentation();
        user.segment(QStringLiteral("Segment Normal"));
        EXPECT_EQ(drawnLayers(user).size(), 6);
        EXPECT_EQ(user.activeSlice(), 0);
        exportAllFormats(user, results);
        correctAndMeasure(user);
        payload = segmentations().first()->toBase64String();
    });
    EXPECT_EQ(QDir(results).entryList({QStringLiteral("*.mha")}).size(), 2);
    EXPECT_EQ(QDir(results).entryList({QStringLiteral("*.csv")}).size(), 11);

    const QMap<QString, QByteArray> trees = storedTrees();
    use([&](ApplicationDriver& user) {
        user.openScan();
        user.choose(user.find<QAbstractItemView>("segmentationList"), 0);
        user.selectTab(manualTab);
        EXPECT_EQ(user.shownSegmentation()->toBase64String(), payload);
        EXPECT_EQ(drawnLayers(user).size(), 6);
    });
    EXPECT_EQ(storedTrees(), trees);
}

TEST_F(RealUsePatterns, ACircularScanGoesTheWholeRoad)
{
    writeExport(QStringLiteral("circle"), Pattern::Circle);
    useAndReopen();
}

TEST_F(RealUsePatterns, ASingleBScanGoesTheWholeRoad)
{
    writeExport(QStringLiteral("section"), Pattern::Section);
    useAndReopen();
}

TEST_F(RealUsePatterns, ASingleBScanIsAddedByTheLoadingWidgetToo)
{
    const QString xml = writeExport(QStringLiteral("section"), Pattern::Section).xmlPath;
    use([&](ApplicationDriver& user) {
        makePatientWithScans(user, {xml});
        user.selectTab(automaticTab);
        user.openScan();
        user.newSegmentation();
        EXPECT_TRUE(user.isEnabled(QStringLiteral("Segment Normal")));
    });
}

TEST_F(RealUsePatterns, AStarScanIsShownButCannotBeSegmented)
{
    writeExport(QStringLiteral("star"), Pattern::Star);
    use([&](ApplicationDriver& user) {
        importAndOpen(user);
        EXPECT_EQ(user.sliceViewer().getSliceCount(), 7);
        for (const char* const button :
             {"New Segmentation", "Segment Normal", "Segment Drusen", "Segment Mouse", "Export"}) {
            EXPECT_FALSE(user.isEnabled(QString::fromLatin1(button))) << button;
        }
        EXPECT_TRUE(user.find<QLabel>("nextStep")
                        .text()
                        .contains(QStringLiteral("A star scan cannot be segmented")));
        user.selectTab(manualTab);
        EXPECT_FALSE(user.isEnabled(QStringLiteral("New Segmentation")));
        EXPECT_EQ(user.sliceViewer().getSliceCount(), 7);
        user.selectTab(measurementTab);
        EXPECT_EQ(shownThicknesses(user).count(QStringLiteral("-")), 54);
    });
    EXPECT_EQ(storedTrees().size(), 2);
}

} // namespace
