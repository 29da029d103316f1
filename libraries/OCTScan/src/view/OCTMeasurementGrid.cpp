#include "OCTMeasurementViewer.h"

#include "EtdrsGrid.h"
#include "kelpCheck.h"

#include <QGraphicsScene>

#include <cmath>

namespace kelp::oct {

namespace {

constexpr char sourcePath[] = "libraries/OCTScan/src/view/OCTMeasurementViewer";

constexpr double penMillimetres = 0.02;
constexpr double gridZ = 5.0;
constexpr double labelScale = 0.05;
// Of the unscaled label; with the scale half a millimetre, so that a label fits into its sector
// whatever the user's font is.
constexpr int labelPixels = 10;
constexpr double rimPixels = 1.5;

void setProperties(QAbstractGraphicsShapeItem* item)
{
    check(item != nullptr, {sourcePath, "kelp::oct::OCTMeasurementViewer::setProperties"},
          "Graphics shape item is null.");
    item->setPen(QPen(QColor(Qt::blue), penMillimetres));
}

constexpr Place setColorPlace{sourcePath, "kelp::oct::OCTMeasurementViewer::setColor"};

void setColor(QGraphicsLineItem* item)
{
    check(item != nullptr, setColorPlace, "Graphics shape item is null.");
    item->setPen(QPen(QColor(Qt::blue), penMillimetres));
}

void setColor(QGraphicsSimpleTextItem* item)
{
    check(item != nullptr, setColorPlace, "Graphics shape item is null.");
    item->setBrush(QColor(Qt::blue));
}

} // namespace

void OCTMeasurementViewer::drawGrid()
{
    clearGrid();
    if (m_segmentation.isNull() || m_scan.isNull()) {
        return;
    }
    for (const double radius : etdrsRadii) {
        addCircle(radius);
    }
    addSpokes();
    addLabels();
}

void OCTMeasurementViewer::clearGrid()
{
    qDeleteAll(m_gridItems);
    m_gridItems.clear();
}

void OCTMeasurementViewer::addToGrid(QGraphicsItem* item)
{
    item->setZValue(gridZ);
    scene()->addItem(item);
    m_gridItems.append(item);
}

void OCTMeasurementViewer::addCircle(double radius)
{
    auto* const circle = new QGraphicsEllipseItem(m_fovea.x - radius, m_fovea.y - radius,
                                                  2.0 * radius, 2.0 * radius);
    setProperties(circle);
    addToGrid(circle);
}

void OCTMeasurementViewer::addSpokes()
{
    const double inner = etdrsRadii[0] / std::sqrt(2.0);
    const double outer = etdrsRadii[2] / std::sqrt(2.0);
    for (const int signX : {-1, 1}) {
        for (const int signZ : {-1, 1}) {
            auto* const spoke =
                new QGraphicsLineItem(m_fovea.x + signX * inner, m_fovea.y + signZ * inner,
                                      m_fovea.x + signX * outer, m_fovea.y + signZ * outer);
            setColor(spoke);
            addToGrid(spoke);
        }
    }
}

void OCTMeasurementViewer::addLabels()
{
    const double inner = (etdrsRadii[0] + etdrsRadii[1]) / 2.0;
    const double outer = (etdrsRadii[1] + etdrsRadii[2]) / 2.0;
    const double nasal = isRightEye(*m_scan) ? 1.0 : -1.0;
    addLabel(QStringLiteral("C"), {});
    addLabel(QStringLiteral("N1"), {nasal * inner, 0.0});
    addLabel(QStringLiteral("N2"), {nasal * outer, 0.0});
    addLabel(QStringLiteral("S1"), {0.0, -inner});
    addLabel(QStringLiteral("S2"), {0.0, -outer});
    addLabel(QStringLiteral("T1"), {-nasal * inner, 0.0});
    addLabel(QStringLiteral("T2"), {-nasal * outer, 0.0});
    addLabel(QStringLiteral("I1"), {0.0, inner});
    addLabel(QStringLiteral("I2"), {0.0, outer});
}

void OCTMeasurementViewer::addLabel(const QString& text, const Vector2d& offset)
{
    auto* const label = new QGraphicsSimpleTextItem(text);
    QFont labelFont = font();
    labelFont.setPixelSize(labelPixels);
    labelFont.setBold(true);
    label->setFont(labelFont);
    setColor(label);
    // A light rim keeps the letters readable on dark grounds and on blue ones.
    auto* const rim = new QGraphicsSimpleTextItem(text, label);
    rim->setFlag(QGraphicsItem::ItemStacksBehindParent);
    rim->setFont(labelFont);
    rim->setBrush(Qt::NoBrush);
    rim->setPen(
        QPen(QColor(255, 255, 255, 180), rimPixels, Qt::SolidLine, Qt::RoundCap, Qt::RoundJoin));
    label->setScale(labelScale);
    const QPointF middle = label->boundingRect().center() * labelScale;
    label->setPos(m_fovea.x + offset.x - middle.x(), m_fovea.y + offset.y - middle.y());
    addToGrid(label);
}

} // namespace kelp::oct
