#include "Pictures.h"

#include "PictureFile.h"
#include "kelpImageConverters.h"

#include <QPainter>

#include <algorithm>
#include <cmath>

namespace kelp::command {

namespace {

using kelp::oct::BScanSegmentationLayer;
using kelp::oct::LayerNamePtr;

/// Longer pictures are scaled down; no usual scan reaches it.
constexpr double longestSide = 6000.0;
constexpr double surfaceWidth = 1.6;
constexpr int legendPixels = 13;

/// Pixels of the picture for one A-scan and one row.
struct Stretch
{
    double x = 1.0;
    double y = 1.0;
};

Stretch stretchFor(const QImage& image, double aScanSpacing, double rowSpacing)
{
    const double finest = std::min(aScanSpacing, rowSpacing);
    Stretch stretch{aScanSpacing / finest, rowSpacing / finest};
    const double longest = std::max(image.width() * stretch.x, image.height() * stretch.y);
    if (longest > longestSide) {
        stretch.x *= longestSide / longest;
        stretch.y *= longestSide / longest;
    }
    return stretch;
}

/// One surface as the lines between masked stretches, through the centres of its pixels.
QList<QPolygonF> surfaceLines(const BScanSegmentationLayer& layer, const QList<bool>& mask,
                              const Stretch& stretch)
{
    QList<QPolygonF> lines;
    QPolygonF line;
    const auto& rows = layer.layerData();
    const int count = std::min(static_cast<int>(rows.size()), mask.size());
    for (int aScan = 0; aScan < count; ++aScan) {
        if (!mask.at(aScan)) {
            line.append({(aScan + 0.5) * stretch.x, (rows[aScan] + 0.5) * stretch.y});
        } else if (!line.isEmpty()) {
            lines.append(line);
            line.clear();
        }
    }
    if (!line.isEmpty()) {
        lines.append(line);
    }
    return lines;
}

void drawLine(QPainter& painter, const QPolygonF& line)
{
    if (line.size() == 1) {
        painter.drawPoint(line.first());
    } else {
        painter.drawPolyline(line);
    }
}

void darkenMasked(QPainter& painter, const QList<bool>& mask, const Stretch& stretch, int height)
{
    for (int first = 0; first < mask.size(); ++first) {
        if (!mask.at(first)) {
            continue;
        }
        int last = first;
        while (last + 1 < mask.size() && mask.at(last + 1)) {
            ++last;
        }
        painter.fillRect(QRectF(first * stretch.x, 0.0, (last + 1 - first) * stretch.x, height),
                         QColor(0, 0, 0, 140));
        first = last;
    }
}

void drawLegend(QPainter& painter, const QList<LayerNamePtr>& layers, const QStringList& notFound)
{
    if (!canDrawText()) {
        return;
    }
    QFont font = painter.font();
    font.setPixelSize(legendPixels);
    font.setBold(true);
    painter.setFont(font);
    const QFontMetricsF metrics(font);
    double x = 8.0;
    for (const LayerNamePtr& layer : layers) {
        const bool isFound = !notFound.contains(layer->getIdentifier());
        const QString text = layer->getShortName() + (isFound ? "" : ": no surface found");
        const double width = metrics.horizontalAdvance(text);
        painter.fillRect(QRectF(x - 3.0, 4.0, width + 6.0, legendPixels + 6.0),
                         QColor(0, 0, 0, 150));
        painter.setPen(layer->getColor());
        painter.drawText(QPointF(x, 4.0 + legendPixels + 1.0), text);
        x += width + 12.0;
    }
}

} // namespace

QImage renderBScan(const OCTScanSegPtr& segmentation, int bScan, const QList<LayerNamePtr>& layers,
                   const QStringList& notFound)
{
    const OCTScanPtr scan = segmentation->getOCT();
    const Vector2d spacing = scan->getSliceSpacing();
    const QImage image =
        kelp::ImageConverters::makeQImage(scan->getBScan(static_cast<unsigned>(bScan))->getImage());
    const Stretch stretch = stretchFor(image, spacing.x, spacing.y);
    const QSize size(std::max(1, static_cast<int>(std::lround(image.width() * stretch.x))),
                     std::max(1, static_cast<int>(std::lround(image.height() * stretch.y))));
    QImage picture = image.scaled(size, Qt::IgnoreAspectRatio, Qt::SmoothTransformation)
                         .convertToFormat(QImage::Format_RGB32);

    QPainter painter(&picture);
    painter.setRenderHint(QPainter::Antialiasing);
    const auto mask = segmentation->getMask()->getMaskRow(static_cast<unsigned>(bScan));
    darkenMasked(painter, *mask, stretch, picture.height());
    const auto surfaces = segmentation->getBScanSegmentation(bScan);
    for (const LayerNamePtr& layer : layers) {
        if (notFound.contains(layer->getIdentifier())) {
            continue;
        }
        painter.setPen(
            QPen(layer->getColor(), surfaceWidth, Qt::SolidLine, Qt::RoundCap, Qt::RoundJoin));
        for (const QPolygonF& line : surfaceLines(*surfaces->getLayer(layer), *mask, stretch)) {
            drawLine(painter, line);
        }
    }
    drawLegend(painter, layers, notFound);
    return picture;
}

} // namespace kelp::command
