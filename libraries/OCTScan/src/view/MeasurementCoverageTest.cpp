#include "MeasurementWidget.h"

#include "MeasurementTestTools.h"
#include "MeasurementWidgetFixture.h"

#include <QGroupBox>

using namespace kelp::oct;
using namespace kelp::oct::test;

namespace {

/// About the middle of the scan, which is hardly larger than the grid.
const CoordOnLocalizer middle(4.137, 4.053);

/// The table says on how many A-scans its means stand.
class MeasurementCoverage : public Measurement
{
protected:
    void showAt(const CoordOnLocalizer& fovea)
    {
        m_measured.segmentation->setFoveaPosition({fovea, true});
        show(m_measured);
    }

    QStringList markedHeaders() const
    {
        QStringList labels;
        for (int column = 0; column < table().columnCount(); ++column) {
            const QTableWidgetItem& header = *table().horizontalHeaderItem(column);
            if (!header.icon().isNull()) {
                labels.append(header.text());
            }
        }
        return labels;
    }
    QString headerTip(int column) const { return table().horizontalHeaderItem(column)->toolTip(); }
    QString cellTip(int row, int column) const { return table().item(row, column)->toolTip(); }

    MeasuredScan m_measured = [] {
        MeasuredScan measured;
        measured.addLayers();
        return measured;
    }();
};

TEST_F(MeasurementCoverage, TellsAtEveryCellAndHeaderOnHowManyAScansItStands)
{
    showAt(middle);
    const EtdrsTable table = measureEtdrs(m_measured.segmentation, middle);
    // Forty A-scans stand on a square millimetre.
    EXPECT_EQ(headerTip(0), QStringLiteral("%1 of %1 A-scans").arg(table.coverage[0].counted));
    EXPECT_NEAR(table.coverage[0].counted, M_PI * 0.25 * 40, 4);
    for (int column = 0; column < EtdrsTable::nrColumns; ++column) {
        const SectorCoverage& sector = table.coverage[static_cast<std::size_t>(column)];
        EXPECT_THAT(headerTip(column).toStdString(),
                    testing::StartsWith(QStringLiteral("%1 of %2 A-scans")
                                            .arg(sector.counted)
                                            .arg(sector.expected)
                                            .toStdString()));
        for (int row = 0; row < EtdrsTable::nrRows; ++row) {
            EXPECT_EQ(cellTip(row, column), headerTip(column));
        }
    }
    EXPECT_TRUE(markedHeaders().isEmpty());
    EXPECT_EQ(coverageNote(), QString());
}

TEST_F(MeasurementCoverage, MarksTheSectorsThatTheBorderCutsAndNamesThem)
{
    showAt({2.137, 4.053});
    EXPECT_EQ(markedHeaders(), QStringList({"S2", "T1", "T2", "I2"}));
    EXPECT_EQ(coverageNote(),
              QStringLiteral("Sectors S2, T1, T2, I2 are cut by the border of the scan."));
    EXPECT_THAT(headerTip(6).toStdString(), testing::ContainsRegex("\n[0-9]+ beyond the border"));
    EXPECT_EQ(headerTip(0).count(QLatin1Char('\n')), 0);
    m_widget.clearOCT();
    EXPECT_TRUE(markedHeaders().isEmpty());
    EXPECT_EQ(coverageNote(), QString());
    EXPECT_EQ(headerTip(0), QString());
    EXPECT_EQ(cellTip(0, 0), QString());
}

TEST_F(MeasurementCoverage, FollowsTheFoveaThatTheMouseDrops)
{
    showAt(middle);
    QCoreApplication::processEvents();
    const QSize map = viewer().size();
    mouse().drag({middle.x, middle.y}, {middle.x, 2.81});
    EXPECT_EQ(markedHeaders(), QStringList({"S2"}));
    EXPECT_EQ(coverageNote(), QStringLiteral("Sector S2 is cut by the border of the scan."));
    QCoreApplication::processEvents();
    EXPECT_EQ(viewer().size(), map) << "the line pushes the map";
    mouse().drag({middle.x, 2.81}, {middle.x, middle.y});
    EXPECT_EQ(coverageNote(), QString());
}

TEST_F(MeasurementCoverage, TellsMaskedAScansFromThoseBeyondTheBorder)
{
    m_measured.segmentation->getMask()->addPolygon(makeRectangle(0.0, 0.0, 9.0, 2.8));
    showAt(middle);
    const EtdrsTable table = measureEtdrs(m_measured.segmentation, middle);
    const SectorCoverage& superior = table.coverage[4];
    ASSERT_LT(superior.counted, superior.inside);
    EXPECT_THAT(
        headerTip(4).toStdString(),
        testing::HasSubstr(
            QStringLiteral("\n%1 masked").arg(superior.inside - superior.counted).toStdString()));
    EXPECT_TRUE(markedHeaders().isEmpty()) << "a mask is no border";
}

TEST_F(MeasurementCoverage, SaysWhichSectorsALineDoesNotPass)
{
    MeasuredScan line(true, OCTScanPatternSingleBScan().toString());
    line.addLayers();
    line.segmentation->setFoveaPosition({CoordOnLocalizer(4.137, 1.0), true});
    show(line);
    EXPECT_EQ(headerTip(4), QStringLiteral("The scan does not pass this sector."));
    EXPECT_THAT(headerTip(2).toStdString(), testing::HasSubstr(" A-scans"));
    EXPECT_TRUE(markedHeaders().isEmpty());
}

TEST_F(MeasurementCoverage, SeparatesThousands)
{
    TestScan contents = lineScan(768, 4, 97, 0.008, 0.0625);
    contents.localizer = kelp::Image::create(kelp::MonoUInt8, {4, 4, 1}, {2.0, 2.0, 1.0});
    contents.localizerSpacing = {2.0, 2.0};
    m_measured.scan = makeTestScan(contents);
    m_measured.segmentation = new OCTScanSegmentation(m_measured.scan);
    for (const QString& identifier : MeasuredScan::layerNames()) {
        m_measured.segmentation->setVolumeLayer(makeFlatSurface(97, 768, 2),
                                                LayerName::fromIdentifier(identifier));
    }
    showAt({3.071, 3.031});
    EXPECT_THAT(headerTip(2).toStdString(),
                testing::ContainsRegex("^10,[0-9]{3} of 10,[0-9]{3} A-scans"));
}

TEST_F(MeasurementCoverage, FitsBelowTheTableInTheGroup)
{
    showAt({2.137, 4.053});
    QCoreApplication::processEvents();
    const auto& group = find<QGroupBox>("measurementResults");
    const auto& label = find<QLabel>("coverageNote");
    EXPECT_TRUE(group.rect().contains(label.geometry()));
    EXPECT_GE(label.height(), label.sizeHint().height());
    EXPECT_GE(label.width(), label.sizeHint().width());
    EXPECT_FALSE(table().verticalScrollBar()->isVisible());
    EXPECT_GE(table().rowHeight(0), table().fontMetrics().height() + 4);
}

} // namespace
