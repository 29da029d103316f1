#include "ModelPicture.h"

#include "EtdrsCircles.h"
#include "SurfaceDistance.h"
#include "ValueScale.h"

#include <QPainter>
#include <QPainterPath>

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <iterator>

namespace macula {

namespace {

using kelp::oct::etdrsRadii;

// Pixels.
constexpr int width = 1320;
constexpr int headerHeight = 64;
constexpr int rowHeight = 290;
constexpr int panelTop = 34;
constexpr double mapScale = 28.0; ///< per mm
constexpr int firstMapLeft = 50;
constexpr int secondMapLeft = 420;
constexpr int firstProfileLeft = 800;
constexpr int secondProfileLeft = 1072;
constexpr int profileWidth = 232;
constexpr int barGap = 8;
constexpr int barWidth = 14;
constexpr int tickLength = 4;
constexpr int fontSize = 13;
constexpr double letterInset = 11.0;

/// The spread outside of the measured disc says that nothing is known; it would drown the rest.
constexpr double knownRadius = 3.0;

const QColor ink(40, 40, 40);
const QColor faint(205, 205, 205);
const QColor bandColour(190, 210, 235);
const QColor lineColour(25, 75, 140);

/// The scale of a picture's axis: mm of the eye against pixels.
struct Axis
{
    double first; ///< mm
    double last;
    double firstPixel;
    double lastPixel;

    double pixelOf(double mm) const
    {
        return firstPixel + (mm - first) / (last - first) * (lastPixel - firstPixel);
    }
};

/// Paints one row of the figure.
class DistanceRow
{
public:
    DistanceRow(QPainter& painter, const QString& title, const SurfaceDistance& distance, int top)
        : m_painter(painter), m_title(title), m_distance(distance), m_top(top + panelTop)
    {
    }

    void draw()
    {
        drawTitle();
        const auto [lowest, highest] = rangeOf(m_distance.means());
        drawMap(m_distance.means(), firstMapLeft,
                ValueScale(ValueScale::Colours::BlueToYellow, roundSteps(lowest, highest, 14)));
        const double mostKnown = rangeWithin(m_distance.deviations(), knownRadius).second;
        drawMap(m_distance.deviations(), secondMapLeft,
                ValueScale(ValueScale::Colours::BlackToPink, roundSteps(0.0, mostKnown, 14)));
        drawProfiles();
    }

private:
    static int mapWidth()
    {
        return static_cast<int>(std::lround(columns * stepX / 1000.0 * mapScale));
    }
    static int mapHeight()
    {
        return static_cast<int>(std::lround(rows * stepY / 1000.0 * mapScale));
    }

    void text(double x, double y, int flags, const QString& words)
    {
        constexpr double reach = 400.0;
        QRectF box(x - reach, y - reach, 2.0 * reach, 2.0 * reach);
        if ((flags & Qt::AlignLeft) != 0) {
            box.setLeft(x);
        }
        if ((flags & Qt::AlignRight) != 0) {
            box.setRight(x);
        }
        if ((flags & Qt::AlignTop) != 0) {
            box.setTop(y);
        }
        if ((flags & Qt::AlignBottom) != 0) {
            box.setBottom(y);
        }
        m_painter.drawText(box, flags, words);
    }

    void drawTitle()
    {
        QFont bold = m_painter.font();
        bold.setBold(true);
        const QFont plain = m_painter.font();
        m_painter.setFont(bold);
        m_painter.setPen(ink);
        text(firstMapLeft, m_top - 10, Qt::AlignLeft | Qt::AlignBottom, m_title);
        m_painter.setFont(plain);
        text(firstProfileLeft + 2.0 * profileWidth + (secondProfileLeft - firstProfileLeft) -
                 profileWidth,
             m_top - 10, Qt::AlignRight | Qt::AlignBottom,
             QString("at the fovea %1 \u00b1 %2 \u00b5m")
                 .arg(valueAtFovea(m_distance.means()), 0, 'f', 1)
                 .arg(valueAtFovea(m_distance.deviations()), 0, 'f', 1));
    }

    void drawMap(const Map& map, int left, const ValueScale& scale)
    {
        QImage image(mapWidth(), mapHeight(), QImage::Format_RGB32);
        for (int y = 0; y < image.height(); ++y) {
            const int row = y * rows / image.height();
            for (int x = 0; x < image.width(); ++x) {
                const int column = x * columns / image.width();
                image.setPixelColor(x, y, scale.colourOf(valueAt(map, row, column)));
            }
        }
        m_painter.drawImage(left, m_top, image);
        const Axis x{xOfColumn(-0.5), xOfColumn(columns - 0.5), static_cast<double>(left),
                     static_cast<double>(left + mapWidth())};
        const Axis y{yOfRow(-0.5), yOfRow(rows - 0.5), static_cast<double>(m_top),
                     static_cast<double>(m_top + mapHeight())};
        drawGrid(x, y);
        drawMapAxes(x, y);
        drawBar(left + mapWidth() + barGap, scale, map);
    }

    /// The ETDRS circles and the fovea, with a dark rim so that they show on every colour.
    void drawGrid(const Axis& x, const Axis& y)
    {
        m_painter.setBrush(Qt::NoBrush);
        const QPointF fovea(x.pixelOf(0.0), y.pixelOf(0.0));
        for (const QPen& pen : {QPen(QColor(0, 0, 0, 120), 2.4), QPen(Qt::white, 1.0)}) {
            m_painter.setPen(pen);
            for (const double radius : etdrsRadii) {
                m_painter.drawEllipse(fovea, radius * mapScale, radius * mapScale);
            }
            m_painter.drawLine(fovea - QPointF(4, 0), fovea + QPointF(4, 0));
            m_painter.drawLine(fovea - QPointF(0, 4), fovea + QPointF(0, 4));
        }
    }

    void drawMapAxes(const Axis& x, const Axis& y)
    {
        m_painter.setPen(ink);
        m_painter.drawRect(QRectF(x.firstPixel, y.firstPixel, mapWidth(), mapHeight()));
        for (int mm = -4; mm <= 4; mm += 2) {
            if (mm < x.last) {
                drawTickBelow(x.pixelOf(mm), y.lastPixel, QString::number(mm));
            }
            if (mm > y.last && mm < y.first) {
                m_painter.drawLine(QPointF(x.firstPixel - tickLength, y.pixelOf(mm)),
                                   QPointF(x.firstPixel, y.pixelOf(mm)));
                text(x.firstPixel - tickLength - 3, y.pixelOf(mm),
                     Qt::AlignRight | Qt::AlignVCenter, QString::number(mm));
            }
        }
        const QPointF fovea(x.pixelOf(0.0), y.pixelOf(0.0));
        drawDirection({x.firstPixel + letterInset, fovea.y()}, "T");
        drawDirection({x.lastPixel - letterInset, fovea.y()}, "N");
        drawDirection({fovea.x(), y.firstPixel + letterInset}, "S");
        drawDirection({fovea.x(), y.lastPixel - letterInset}, "I");
    }

    /// White with a dark rim, as the circles.
    void drawDirection(const QPointF& middle, const QString& letter)
    {
        QPainterPath path;
        path.addText({0.0, 0.0}, m_painter.font(), letter);
        path.translate(middle - path.boundingRect().center());
        m_painter.strokePath(path, QPen(QColor(0, 0, 0, 170), 3.0));
        m_painter.fillPath(path, Qt::white);
    }

    void drawTickBelow(double x, double y, const QString& label)
    {
        m_painter.setPen(ink);
        m_painter.drawLine(QPointF(x, y), QPointF(x, y + tickLength));
        text(x, y + tickLength + 1, Qt::AlignHCenter | Qt::AlignTop, label);
    }

    void drawBar(int left, const ValueScale& scale, const Map& map)
    {
        const RoundSteps& steps = scale.steps();
        const double stepHeight = static_cast<double>(mapHeight()) / steps.count;
        const auto yAt = [&](int index) { return m_top + mapHeight() - index * stepHeight; };
        for (int index = 0; index < steps.count; ++index) {
            const double middle = steps.at(index) + 0.5 * steps.step;
            m_painter.fillRect(QRectF(left, yAt(index + 1), barWidth, stepHeight),
                               scale.colourOf(middle));
        }
        m_painter.setPen(ink);
        m_painter.setBrush(Qt::NoBrush);
        m_painter.drawRect(QRectF(left, m_top, barWidth, mapHeight()));
        const bool goesOn = rangeOf(map).second > steps.last() + 1e-9;
        const int labelEach = steps.count > 8 ? 2 : 1;
        for (int index = 0; index <= steps.count; ++index) {
            const bool isLast = index == steps.count;
            if (index % labelEach == 0 || (isLast && goesOn)) {
                const QString more = isLast && goesOn ? QString(" +") : QString();
                text(left + barWidth + 4, yAt(index), Qt::AlignLeft | Qt::AlignVCenter,
                     QString::number(steps.at(index)) + more);
            }
        }
        text(left + 0.5 * barWidth, m_top + mapHeight() + tickLength + 1,
             Qt::AlignHCenter | Qt::AlignTop, "\u00b5m");
    }

    void drawProfiles()
    {
        const Profile across = m_distance.horizontalProfile();
        const Profile upwards = m_distance.verticalProfile();
        double lowest = across.means.front();
        double highest = lowest;
        for (const Profile* profile : {&across, &upwards}) {
            for (std::size_t i = 0; i < profile->places.size(); ++i) {
                lowest = std::min(lowest, profile->means[i] - profile->deviations[i]);
                highest = std::max(highest, profile->means[i] + profile->deviations[i]);
            }
        }
        const RoundSteps values = roundSteps(std::max(lowest, 0.0), highest, 6);
        drawProfile(across, values, firstProfileLeft, "temporal", "nasal");
        drawProfile(upwards, values, secondProfileLeft, "inferior", "superior");
    }

    void drawProfile(const Profile& profile, const RoundSteps& values, int left,
                     const QString& firstEnd, const QString& lastEnd)
    {
        const double bottom = m_top + mapHeight();
        const Axis x{profile.places.front(), profile.places.back(), static_cast<double>(left),
                     static_cast<double>(left + profileWidth)};
        const Axis y{values.first, values.last(), bottom, static_cast<double>(m_top)};
        const QRectF frame(left, m_top, profileWidth, mapHeight());
        drawProfileAxes(x, y, values, frame);
        m_painter.save();
        m_painter.setClipRect(frame);
        drawBandAndLine(profile, x, y);
        m_painter.restore();
        m_painter.setPen(ink);
        m_painter.setBrush(Qt::NoBrush);
        m_painter.drawRect(frame);
        text(left + 5, m_top + 3, Qt::AlignLeft | Qt::AlignTop, firstEnd);
        text(left + profileWidth - 5, m_top + 3, Qt::AlignRight | Qt::AlignTop, lastEnd);
    }

    void drawProfileAxes(const Axis& x, const Axis& y, const RoundSteps& values,
                         const QRectF& frame)
    {
        for (const double radius : etdrsRadii) {
            for (const double place : {-radius, radius}) {
                m_painter.setPen(QPen(faint, 1.0, Qt::DashLine));
                m_painter.drawLine(QPointF(x.pixelOf(place), frame.top()),
                                   QPointF(x.pixelOf(place), frame.bottom()));
            }
        }
        for (int mm = -4; mm <= 4; mm += 2) {
            if (mm > x.first && mm < x.last) {
                drawTickBelow(x.pixelOf(mm), frame.bottom(), QString::number(mm));
            }
        }
        m_painter.setPen(ink);
        for (int index = 0; index <= values.count; ++index) {
            const double height = y.pixelOf(values.at(index));
            m_painter.drawLine(QPointF(frame.left() - tickLength, height),
                               QPointF(frame.left(), height));
            text(frame.left() - tickLength - 3, height, Qt::AlignRight | Qt::AlignVCenter,
                 QString::number(values.at(index)));
        }
    }

    void drawBandAndLine(const Profile& profile, const Axis& x, const Axis& y)
    {
        QPolygonF band;
        QPolygonF line;
        const std::size_t count = profile.places.size();
        for (std::size_t i = 0; i < count; ++i) {
            const double place = x.pixelOf(profile.places[i]);
            line += QPointF(place, y.pixelOf(profile.means[i]));
            band += QPointF(place, y.pixelOf(profile.means[i] + profile.deviations[i]));
        }
        for (std::size_t i = count; i-- > 0;) {
            band += QPointF(x.pixelOf(profile.places[i]),
                            y.pixelOf(profile.means[i] - profile.deviations[i]));
        }
        m_painter.setRenderHint(QPainter::Antialiasing);
        m_painter.setCompositionMode(QPainter::CompositionMode_Multiply);
        m_painter.setPen(Qt::NoPen);
        m_painter.setBrush(bandColour);
        m_painter.drawPolygon(band);
        m_painter.setCompositionMode(QPainter::CompositionMode_SourceOver);
        m_painter.setPen(QPen(lineColour, 1.6));
        m_painter.drawPolyline(line);
    }

    QPainter& m_painter;
    const QString m_title;
    const SurfaceDistance& m_distance;
    int m_top;
};

struct Pair
{
    std::size_t upper;
    std::size_t lower;
    const char* tissue;
};

QString titleOf(const Pair& pair)
{
    return QString("%1 to %2: %3")
        .arg(surfaceNames[pair.upper])
        .arg(surfaceNames[pair.lower])
        .arg(pair.tissue);
}

void drawHeader(QPainter& painter)
{
    painter.setPen(ink);
    const auto head = [&](int left, int columnWidth, const QString& words) {
        painter.drawText(QRectF(left, 0, columnWidth, headerHeight - 6),
                         Qt::AlignLeft | Qt::AlignBottom | Qt::TextWordWrap, words);
    };
    head(firstMapLeft, 340,
         "Mean distance\nmm from the fovea of a right eye; circles: ETDRS, 1, 3 and 6 mm");
    head(secondMapLeft, 330,
         "Standard deviation\n+: larger beyond the outer circle, where nothing "
         "was measured");
    head(firstProfileLeft, profileWidth, "Horizontal meridian: mean \u00b1 1 SD, \u00b5m over mm");
    head(secondProfileLeft, profileWidth, "Vertical meridian: mean \u00b1 1 SD, \u00b5m over mm");
}

} // namespace

QImage drawModel(const MacularModel& model)
{
    const Pair pairs[] = {{0, 1, "nerve fibre layer"},
                          {1, 2, "ganglion cells and inner plexiform layer"},
                          {2, 3, "inner nuclear and outer plexiform layer"},
                          {3, 4, "outer nuclear layer and inner segments"},
                          {4, 5, "ellipsoid to Bruch's membrane"},
                          {0, 5, "whole retina"}};
    QImage picture(width, headerHeight + static_cast<int>(std::size(pairs)) * rowHeight,
                   QImage::Format_RGB32);
    picture.fill(Qt::white);
    QPainter painter(&picture);
    QFont font("DejaVu Sans");
    font.setPixelSize(fontSize);
    painter.setFont(font);
    painter.setRenderHint(QPainter::Antialiasing);
    drawHeader(painter);
    int top = headerHeight;
    for (const Pair& pair : pairs) {
        const SurfaceDistance distance(model, pair.upper, pair.lower);
        DistanceRow(painter, titleOf(pair), distance, top).draw();
        top += rowHeight;
    }
    return picture;
}

} // namespace macula
