#include "Pictures.h"

#include "EnfaceMap.h"
#include "EtdrsGrid.h"
#include "LayerUtils.h"
#include "PictureFile.h"
#include "kelpImageConverters.h"

#include <QPainter>
#include <QPainterPath>

#include <algorithm>
#include <cmath>

namespace kelp::command {

namespace {

using kelp::oct::etdrsRadii;
using kelp::oct::hasLayer;
using kelp::oct::isVolumeScan;
using kelp::oct::LayerNameBM;
using kelp::oct::LayerNameILM;
using kelp::oct::LayerNamePtr;

/// Small localizers are enlarged to this, so that the grid's labels can be read.
constexpr double shortestSide = 768.0;
constexpr double longestSide = 4096.0;
/// Round the scan where there is no localizer to show.
constexpr double marginMillimetres = 0.5;

constexpr double mapLowMicrometres = 200.0;
constexpr double mapHighMicrometres = 400.0;
constexpr double mapOpacity = 0.5;
constexpr auto mapColors = kelp::ColorMaps::Rainbow;

constexpr double gridPenMillimetres = 0.02;
constexpr double gridPenLargestPixels = 3.0;
constexpr double labelMillimetres = 0.38;
constexpr int labelLargestPixels = 40;

/// Millimetres on the localizer to pixels of the picture.
struct Projection
{
    double scale = 1.0; ///< pixels per millimetre
    Vector2d origin;    ///< what lies at the picture's corner, mm

    QPointF operator()(const Vector2d& position) const
    {
        return {(position.x - origin.x) * scale, (position.y - origin.y) * scale};
    }
    QTransform toTransform() const
    {
        return QTransform::fromTranslate(-origin.x, -origin.y) *
               QTransform::fromScale(scale, scale);
    }
};

QRectF scanBounds(const OCTScan& scan)
{
    QPolygonF positions;
    for (int i = 0; i < scan.getBScanCount(); ++i) {
        for (const Vector2d& position :
             scan.getBScan(static_cast<unsigned>(i))->getAScanPositions()) {
            positions.append({position.x, position.y});
        }
    }
    return positions.boundingRect();
}

double fittingScale(double scale, double width, double height)
{
    const double enlarged = std::max(scale, shortestSide / std::max(width, height));
    return std::min(enlarged, longestSide / std::max(width, height));
}

QSize pixelSize(double width, double height, double scale)
{
    return {std::max(1, static_cast<int>(std::lround(width * scale))),
            std::max(1, static_cast<int>(std::lround(height * scale)))};
}

QImage drawLocalizer(const kelp::oct::Localizer& localizer, Projection& projection)
{
    const QImage image = kelp::ImageConverters::makeQImage(localizer.getImage());
    const Vector2d spacing = localizer.getSpacing();
    const double width = image.width() * spacing.x;
    const double height = image.height() * spacing.y;
    projection.origin = {};
    projection.scale = fittingScale(1.0 / std::min(spacing.x, spacing.y), width, height);
    return image
        .scaled(pixelSize(width, height, projection.scale), Qt::IgnoreAspectRatio,
                Qt::SmoothTransformation)
        .convertToFormat(QImage::Format_RGB32);
}

QImage drawEmptyGround(const OCTScan& scan, Projection& projection)
{
    const QRectF bounds = scanBounds(scan).adjusted(-marginMillimetres, -marginMillimetres,
                                                    marginMillimetres, marginMillimetres);
    projection.origin = {bounds.x(), bounds.y()};
    projection.scale = fittingScale(0.0, bounds.width(), bounds.height());
    QImage picture(pixelSize(bounds.width(), bounds.height(), projection.scale),
                   QImage::Format_RGB32);
    picture.fill(Qt::black);
    return picture;
}

/// For thicknesses in units of the axial spacing.
kelp::PredefinedTransferfunctions mapFunction(double axialSpacing)
{
    return kelp::oct::thicknessColors(mapColors, mapLowMicrometres, mapHighMicrometres,
                                      axialSpacing);
}

/// Those of the two surfaces of the thickness map that were not found.
QStringList mapSurfacesIn(const QStringList& notFound)
{
    QStringList names;
    for (const LayerNamePtr& layer : {LayerNameILM::create(), LayerNameBM::create()}) {
        if (notFound.contains(layer->getIdentifier())) {
            names.append(layer->getShortName());
        }
    }
    return names;
}

bool drawThicknessMap(QPainter& painter, const OCTScanSegPtr& segmentation,
                      const Projection& projection)
{
    const auto top = LayerNameILM::create();
    const auto bottom = LayerNameBM::create();
    const OCTScanPtr scan = segmentation->getOCT();
    if (!hasLayer(*segmentation, top) || !hasLayer(*segmentation, bottom)) {
        return false;
    }
    const QImage map =
        kelp::ImageConverters::makeQImage(kelp::oct::LayerUtils::RenderThicknessImage(
            segmentation->getVolumeLayer(top), segmentation->getVolumeLayer(bottom),
            mapFunction(scan->getVolumeSpacing().y), segmentation->getMask()->getMaskMatrix(),
            mapOpacity));
    const auto transform = kelp::oct::mapToLocalizer(*scan);
    if (!transform) {
        return false;
    }
    painter.save();
    painter.setRenderHint(QPainter::SmoothPixmapTransform);
    painter.setTransform(*transform * projection.toTransform());
    painter.drawImage(0, 0, map);
    painter.restore();
    return true;
}

void drawScanLines(QPainter& painter, const OCTScan& scan, const Projection& projection)
{
    const bool many = isVolumeScan(scan);
    painter.setPen(QPen(many ? QColor(255, 255, 255, 70) : QColor(0, 255, 0), many ? 1.0 : 2.0));
    for (int i = 0; i < scan.getBScanCount(); ++i) {
        const auto bScan = scan.getBScan(static_cast<unsigned>(i));
        QPolygonF line;
        for (const Vector2d& position : bScan->getAScanPositions()) {
            line.append(projection(position));
        }
        painter.drawPolyline(line);
    }
}

/// A sector that the scan's border cuts has a mean of its rest only, which the star tells.
void drawLabel(QPainter& painter, const QPointF& center, const QString& label, bool isCut)
{
    const QString text = isCut ? label + "*" : label;
    QPainterPath path;
    path.addText(0.0, 0.0, painter.font(), text);
    path.translate(center - path.boundingRect().center());
    // A light rim keeps the blue letters readable on dark grounds.
    painter.strokePath(
        path, QPen(QColor(255, 255, 255, 180), 3.0, Qt::SolidLine, Qt::RoundCap, Qt::RoundJoin));
    painter.fillPath(path, isCut ? QColor(60, 60, 60) : QColor(Qt::blue));
}

/// What the picture does not say by itself, in its lower left corner.
void drawNotes(QPainter& painter, const QStringList& notes)
{
    if (!canDrawText()) {
        return;
    }
    QFont font = painter.font();
    font.setPixelSize(14);
    font.setBold(false);
    painter.setFont(font);
    constexpr double height = 24.0;
    double top = painter.viewport().height() - notes.size() * height;
    for (const QString& note : notes) {
        const double width = painter.fontMetrics().horizontalAdvance(note) + 16.0;
        const QRectF place(0.0, top, width, height);
        painter.fillRect(place, QColor(0, 0, 0, 170));
        painter.setPen(Qt::white);
        painter.drawText(place, Qt::AlignCenter, note);
        top += height;
    }
}

void drawGridLabels(QPainter& painter, const Vector2d& fovea, bool rightEye,
                    const QStringList& cutSectors, const Projection& projection)
{
    if (!canDrawText()) {
        return;
    }
    QFont font = painter.font();
    font.setPixelSize(
        std::clamp(static_cast<int>(labelMillimetres * projection.scale), 8, labelLargestPixels));
    font.setBold(true);
    painter.setFont(font);
    const double nasal = rightEye ? 1.0 : -1.0;
    const struct
    {
        const char* letter;
        Vector2d direction;
    } quadrants[] = {
        {"N", {nasal, 0.0}}, {"T", {-nasal, 0.0}}, {"S", {0.0, -1.0}}, {"I", {0.0, 1.0}}};
    drawLabel(painter, projection(fovea), "C", cutSectors.contains("C"));
    for (const auto& quadrant : quadrants) {
        for (int ring = 1; ring <= 2; ++ring) {
            const double radius = (etdrsRadii[ring - 1] + etdrsRadii[ring]) / 2.0;
            const QString label = QString(quadrant.letter) + QString::number(ring);
            drawLabel(painter, projection(fovea + radius * quadrant.direction), label,
                      cutSectors.contains(label));
        }
    }
}

/// Whether the scan's border cuts a sector, whose label then has a star.
bool drawGrid(QPainter& painter, const OCTScanSegPtr& segmentation, const Projection& projection)
{
    const CoordOnLocalizer place = kelp::oct::foveaOrCenter(segmentation);
    const Vector2d fovea = place.toVector();
    painter.setPen(QPen(
        Qt::blue, std::clamp(gridPenMillimetres * projection.scale, 1.0, gridPenLargestPixels)));
    for (const double radius : etdrsRadii) {
        painter.drawEllipse(projection(fovea), radius * projection.scale,
                            radius * projection.scale);
    }
    for (const double x : {-M_SQRT1_2, M_SQRT1_2}) {
        for (const double y : {-M_SQRT1_2, M_SQRT1_2}) {
            const Vector2d direction{x, y};
            painter.drawLine(projection(fovea + etdrsRadii[0] * direction),
                             projection(fovea + etdrsRadii[2] * direction));
        }
    }
    const QStringList cutSectors = kelp::oct::measureEtdrs(segmentation, place, false).cutSectors();
    drawGridLabels(painter, fovea, kelp::oct::isRightEye(*segmentation->getOCT()), cutSectors,
                   projection);
    return !cutSectors.isEmpty();
}

/// A bar of the map's colours with the thicknesses that they stand for.
void drawColorBar(QPainter& painter, const QSize& picture)
{
    const QRectF bar(picture.width() - 40.0, picture.height() - 220.0, 16.0, 200.0);
    painter.fillRect(bar.adjusted(-62.0, -14.0, 8.0, 14.0), QColor(0, 0, 0, 170));
    const auto colors = mapFunction(1.0);
    const auto [low, high] = colors.getInputRange();
    for (int y = 0; y < static_cast<int>(bar.height()); ++y) {
        const double value = high - (high - low) * y / bar.height();
        painter.fillRect(QRectF(bar.x(), bar.y() + y, bar.width(), 1.0),
                         QColor::fromRgbF(colors.getChannel(0)(value), colors.getChannel(1)(value),
                                          colors.getChannel(2)(value)));
    }
    if (!canDrawText()) {
        return;
    }
    QFont font = painter.font();
    font.setPixelSize(12);
    font.setBold(false);
    painter.setFont(font);
    painter.setPen(Qt::white);
    constexpr int nrTicks = 3;
    for (int tick = 0; tick < nrTicks; ++tick) {
        const double part = static_cast<double>(tick) / (nrTicks - 1);
        const double value = mapHighMicrometres - part * (mapHighMicrometres - mapLowMicrometres);
        const QRectF place(bar.x() - 60.0, bar.y() + part * bar.height() - 8.0, 56.0, 16.0);
        painter.drawText(place, Qt::AlignRight | Qt::AlignVCenter,
                         QString::number(value) + (tick == 0 ? QString(" \u00b5m") : QString()));
    }
}

} // namespace

QImage renderEnface(const OCTScanSegPtr& segmentation, const QStringList& notFound)
{
    const OCTScanPtr scan = segmentation->getOCT();
    const auto localizer = scan->getLocalizer();
    Projection projection;
    QImage picture = localizer.isNull() ? drawEmptyGround(*scan, projection)
                                        : drawLocalizer(*localizer, projection);
    QPainter painter(&picture);
    painter.setRenderHint(QPainter::Antialiasing);
    const QStringList missing = mapSurfacesIn(notFound);
    const bool hasMap = isVolumeScan(*scan) && missing.isEmpty() &&
                        drawThicknessMap(painter, segmentation, projection);
    drawScanLines(painter, *scan, projection);
    QStringList notes;
    if (isVolumeScan(*scan) && !missing.isEmpty()) {
        notes.append(missing.join(", ") + ": no surface found, so no thickness map");
    }
    if (isVolumeScan(*scan) && drawGrid(painter, segmentation, projection)) {
        notes.append("* cut by the border of the scan");
    }
    drawNotes(painter, notes);
    if (hasMap) {
        drawColorBar(painter, picture.size());
    }
    return picture;
}

} // namespace kelp::command
