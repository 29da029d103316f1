#pragma once

#include <QColor>
#include <QImage>
#include <QList>
#include <QPainter>
#include <QPair>
#include <QRectF>
#include <QString>
#include <QStringList>

#include <optional>

namespace kelp::compare {

struct Axis
{
    QString label;
    double low = 0.0;
    double high = 1.0;
    bool counts = false; ///< has ticks at whole numbers only
};

/// A picture with a title, two axes with ticks, and a plot between them.
class Chart
{
public:
    enum class Footer
    {
        None,
        TwoLines
    };

    Chart(const QSize& plotSize, const QStringList& title, const Axis& x, const Axis& y,
          Footer footer = Footer::TwoLines);

    QPainter& painter() { return m_painter; }
    /// Where the plot is in the picture.
    const QRectF& plot() const { return m_plot; }
    QPointF at(double x, double y) const;

    /// A line across the plot at this height.
    void drawLevel(double y, const QColor& color, Qt::PenStyle style);
    /// To the right of the plot, as near to their heights as there is room; from the highest to the
    /// lowest. All texts have as many lines.
    void drawLevelTexts(const QList<QPair<double, QString>>& texts);
    /// At the bottom of the picture, which must have been made with one.
    void drawFooter(const QString& text);
    void drawText(const QRectF& place, int flags, const QString& text);

    /// Draws the axes over what is there and ends the picture.
    QImage finish();

private:
    void drawXAxis();
    void drawYAxis();

    QRectF m_plot;
    Axis m_x;
    Axis m_y;
    QImage m_picture;
    QPainter m_painter;
};

/// What a picture shows. The first line stands out; the others are cut in the middle where they are
/// too long. Leaves the painter with the font of the texts below.
void drawTitle(QPainter& painter, const QStringList& title, int pictureWidth);
/// From the top of the picture to what lies below the title.
double titleHeight(const QStringList& title);

/// Nothing on a machine without fonts.
void drawPictureText(QPainter& painter, const QRectF& place, int flags, const QString& text);

/// low to high with room to both sides; a range without length gets one.
Axis paddedAxis(const QString& label, double low, double high);

} // namespace kelp::compare
