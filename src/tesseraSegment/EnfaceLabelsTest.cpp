#include "CommandFixture.h"
#include "HeidelbergExport.h"
#include "OCTDecoderHeidelbergXML.h"

#include <QImage>
#include <QJsonDocument>
#include <QJsonObject>

namespace {

/// Labels need fonts, which only the command's own process has.
class EnfaceLabels : public kelp::command::test::CommandFixture
{
protected:
    void SetUp() override
    {
        const QString xml = writeExport("in");
        ASSERT_EQ(segment({"--formats", "pictures", xml}).status, 0);
        m_picture = QImage(results("export_100001/pictures/enface.png"));
        ASSERT_FALSE(m_picture.isNull());
        createOCTDecoderHeidelbergXMLFactory();
        const OCTScanPtr scan = kelp::oct::makeScan(xml, "100001", {});
        scan->doBinLoad();
        const auto localizer = scan->getLocalizer();
        m_scale =
            m_picture.width() / (localizer->getImage()->getColumns() * localizer->getSpacing().x);
        const QJsonObject grid =
            QJsonDocument::fromJson(read(results("export_100001/run.json")))["etdrsGrid"]
                .toObject();
        m_center = m_scale * QPointF(grid["xMillimetres"].toDouble(-1.0),
                                     grid["yMillimetres"].toDouble(-1.0));
    }

    /// How many pixels at most 12 pixels from the place are so.
    template <typename Predicate>
    int countNear(const QPointF& place, Predicate&& isSo) const
    {
        const QRect square = QRect(-12, -12, 25, 25).translated(place.toPoint());
        const QRect visible = square & m_picture.rect();
        int pixels = 0;
        for (int y = visible.top(); y <= visible.bottom(); ++y) {
            for (int x = visible.left(); x <= visible.right(); ++x) {
                pixels += isSo(m_picture.pixelColor(x, y)) ? 1 : 0;
            }
        }
        return pixels;
    }

    QImage m_picture;
    double m_scale = 0.0; ///< pixels per millimetre
    QPointF m_center;     ///< of the grid, in pixels
};

TEST_F(EnfaceLabels, AreGreyForSectorsThatTheBorderCuts)
{
    const auto isBlue = [](const QColor& color) { return color == Qt::blue; };
    const auto isGrey = [](const QColor& color) { return color == QColor(60, 60, 60); };
    // A mouse's scan is hardly larger than the centre of the grid.
    EXPECT_GT(countNear(m_center, isBlue), 20);
    EXPECT_EQ(countNear(m_center, isGrey), 0);
    const QPointF inferior = m_center + QPointF(0.0, m_scale);
    EXPECT_EQ(countNear(inferior, isBlue), 0);
    EXPECT_GT(countNear(inferior, isGrey), 20);
}

TEST_F(EnfaceLabels, HaveTheirStarExplainedInADarkenedCorner)
{
    const auto isDark = [](const QColor& color) { return color.value() < 80; };
    const QPointF corner(100.0, m_picture.height() - 12.0);
    EXPECT_GT(countNear(corner, isDark), 200);
    EXPECT_LT(countNear(corner - QPointF(0.0, 40.0), isDark), 20);
}

} // namespace
