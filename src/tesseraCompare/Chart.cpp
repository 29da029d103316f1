#include "Chart.h"

#include "AxisTicks.h"
#include "PictureFile.h"

#include <QFontMetricsF>

#include <algorithm>
#include <cmath>

namespace kelp::compare {

namespace {

constexpr double leftMargin = 84.0;
constexpr double rightMargin = 150.0;
constexpr double titleLine = 20.0;
constexpr double topMargin = 16.0;
constexpr double belowTitle = 10.0;
constexpr double axisMargin = 56.0;
constexpr double footerMargin = 46.0;
/// What a footer needs beside a narrow plot.
constexpr double leastWidth = 520.0;
constexpr double tickLength = 5.0;
constexpr int textPixels = 13;
constexpr int headPixels = 16;
constexpr double pixelsPerXTick = 60.0;
constexpr double pixelsPerYTick = 40.0;
constexpr double axisPadding = 0.05;

QFont chartFont(int pixels, bool bold)
{
    QFont font;
    font.setPixelSize(pixels);
    font.setBold(bold);
    return font;
}

std::vector<double> ticksOf(const Axis& axis, double nrWithRoom)
{
    // Drawn from the top where the axis counts downwards.
    const double low = std::min(axis.low, axis.high);
    const double high = std::max(axis.low, axis.high);
    double atMost = std::max(2.0, nrWithRoom);
    if (!axis.counts) {
        return axisTicks(low, high, static_cast<int>(atMost));
    }
    atMost = std::max(1.0, std::min(atMost, high - low));
    const std::vector<double> ticks = axisTicks(low, high, static_cast<int>(atMost));
    const double first = std::ceil(low);
    const double last = std::floor(high);
    // One number alone does not tell which way they run.
    return ticks.size() < 2 && first < last ? std::vector{first, last} : ticks;
}

/// Moves what is stacked and so high apart, as little as may be around the one in the middle, which
/// stays, and into the room from top to bottom.
void keepApart(std::vector<double>& tops, double height, double top, double bottom)
{
    const std::size_t middle = tops.size() / 2;
    for (std::size_t i = middle; i > 0; --i) {
        tops[i - 1] = std::min(tops[i - 1], tops[i] - height);
    }
    for (std::size_t i = middle + 1; i < tops.size(); ++i) {
        tops[i] = std::max(tops[i], tops[i - 1] + height);
    }
    for (std::size_t i = 0; i < tops.size(); ++i) {
        const double lowest = bottom - height * static_cast<double>(tops.size() - i);
        tops[i] = std::max(std::min(tops[i], lowest), top + height * static_cast<double>(i));
    }
}

} // namespace

Chart::Chart(const QSize& plotSize, const QStringList& title, const Axis& x, const Axis& y,
             Footer footer)
    : m_plot(leftMargin, titleHeight(title), plotSize.width(), plotSize.height()), m_x(x), m_y(y),
      m_picture(static_cast<int>(std::max(leastWidth, m_plot.right() + rightMargin)),
                static_cast<int>(m_plot.bottom() + axisMargin +
                                 (footer == Footer::None ? 0.0 : footerMargin)),
                QImage::Format_RGB32)
{
    m_picture.fill(Qt::white);
    m_painter.begin(&m_picture);
    m_painter.setRenderHint(QPainter::Antialiasing);
    drawTitle(m_painter, title, m_picture.width());
}

void Chart::drawText(const QRectF& place, int flags, const QString& text)
{
    drawPictureText(m_painter, place, flags, text);
}

QPointF Chart::at(double x, double y) const
{
    return {m_plot.left() + (x - m_x.low) / (m_x.high - m_x.low) * m_plot.width(),
            m_plot.bottom() - (y - m_y.low) / (m_y.high - m_y.low) * m_plot.height()};
}

void Chart::drawLevel(double y, const QColor& color, Qt::PenStyle style)
{
    const double height = at(m_x.low, y).y();
    // Square ends would close the gaps between dashes.
    m_painter.setPen(QPen(color, 1.5, style, Qt::FlatCap));
    m_painter.drawLine(QPointF(m_plot.left(), height), QPointF(m_plot.right(), height));
}

void Chart::drawLevelTexts(const QList<QPair<double, QString>>& texts)
{
    if (texts.isEmpty()) {
        return;
    }
    const double textHeight =
        (texts.first().second.count('\n') + 1) * QFontMetricsF(m_painter.font()).lineSpacing() +
        4.0;
    std::vector<double> tops;
    for (const auto& [level, text] : texts) {
        tops.push_back(at(m_x.low, level).y() - textHeight / 2.0);
    }
    keepApart(tops, textHeight, m_plot.top(), m_plot.bottom());
    for (int i = 0; i < texts.size(); ++i) {
        drawText(QRectF(m_plot.right() + 8.0, tops[static_cast<std::size_t>(i)], rightMargin - 12.0,
                        textHeight),
                 Qt::AlignLeft | Qt::AlignVCenter, texts[i].second);
    }
}

void Chart::drawFooter(const QString& text)
{
    drawText(QRectF(leftMargin, m_plot.bottom() + axisMargin,
                    m_picture.width() - leftMargin - topMargin, footerMargin),
             Qt::AlignLeft | Qt::AlignTop | Qt::TextWordWrap, text);
}

void Chart::drawXAxis()
{
    const auto ticks = ticksOf(m_x, m_plot.width() / pixelsPerXTick);
    const double step = ticks.size() > 1 ? ticks[1] - ticks[0] : 1.0;
    for (const double tick : ticks) {
        const double x = at(tick, m_y.low).x();
        m_painter.setPen(Qt::black);
        m_painter.drawLine(QPointF(x, m_plot.bottom()), QPointF(x, m_plot.bottom() + tickLength));
        drawText(QRectF(x - 50.0, m_plot.bottom() + tickLength + 1.0, 100.0, titleLine),
                 Qt::AlignHCenter | Qt::AlignTop, tickText(tick, step));
    }
    drawText(QRectF(m_plot.left(), m_plot.bottom() + 28.0, m_plot.width(), titleLine),
             Qt::AlignCenter, m_x.label);
}

void Chart::drawYAxis()
{
    const auto ticks = ticksOf(m_y, m_plot.height() / pixelsPerYTick);
    const double step = ticks.size() > 1 ? ticks[1] - ticks[0] : 1.0;
    for (const double tick : ticks) {
        const double y = at(m_x.low, tick).y();
        m_painter.setPen(Qt::black);
        m_painter.drawLine(QPointF(m_plot.left() - tickLength, y), QPointF(m_plot.left(), y));
        drawText(QRectF(m_plot.left() - 64.0, y - titleLine / 2.0, 56.0, titleLine),
                 Qt::AlignRight | Qt::AlignVCenter, tickText(tick, step));
    }
    m_painter.save();
    m_painter.translate(18.0, m_plot.center().y());
    m_painter.rotate(-90.0);
    drawText(QRectF(-m_picture.height() / 2.0, -titleLine / 2.0, m_picture.height(), titleLine),
             Qt::AlignCenter, m_y.label);
    m_painter.restore();
}

QImage Chart::finish()
{
    m_painter.setBrush(Qt::NoBrush);
    m_painter.setPen(Qt::black);
    m_painter.drawRect(m_plot);
    drawXAxis();
    drawYAxis();
    m_painter.end();
    return m_picture;
}

double titleHeight(const QStringList& title)
{
    return topMargin + titleLine * title.size() + belowTitle;
}

void drawTitle(QPainter& painter, const QStringList& title, int pictureWidth)
{
    QRectF line(leftMargin, topMargin, pictureWidth - leftMargin - topMargin, titleLine);
    for (int i = 0; i < title.size(); ++i) {
        const QFont font = i == 0 ? chartFont(headPixels, true) : chartFont(textPixels, false);
        painter.setFont(font);
        drawPictureText(painter, line, Qt::AlignLeft | Qt::AlignVCenter,
                        QFontMetricsF(font).elidedText(title[i], Qt::ElideMiddle, line.width()));
        line.translate(0.0, titleLine);
    }
    painter.setFont(chartFont(textPixels, false));
}

void drawPictureText(QPainter& painter, const QRectF& place, int flags, const QString& text)
{
    if (command::canDrawText()) {
        painter.setPen(Qt::black);
        painter.drawText(place, flags, text);
    }
}

Axis paddedAxis(const QString& label, double low, double high)
{
    const double length = high > low ? high - low : 1.0;
    return {label, low - axisPadding * length, high + axisPadding * length};
}

} // namespace kelp::compare
