#include "IndicatorStyle.h"

#include <QPainter>
#include <QStyleOption>

namespace kelp {

namespace {

bool isDark(const QPalette& palette)
{
    return palette.color(QPalette::Window).lightness() <
           palette.color(QPalette::WindowText).lightness();
}

void drawRim(const QStyleOption& option, QPainter& painter, bool isRound)
{
    constexpr int rimOpacity = 150;
    constexpr double halfPen = 0.5;
    const QPalette::ColorGroup group =
        option.state.testFlag(QStyle::State_Enabled) ? QPalette::Active : QPalette::Disabled;
    QColor rim = option.palette.color(group, QPalette::WindowText);
    rim.setAlpha(rimOpacity);
    const QRectF outline = QRectF(option.rect).adjusted(halfPen, halfPen, -halfPen, -halfPen);
    painter.save();
    painter.setRenderHint(QPainter::Antialiasing, isRound);
    painter.setPen(rim);
    painter.setBrush(Qt::NoBrush);
    if (isRound) {
        painter.drawEllipse(outline);
    } else {
        painter.drawRect(outline);
    }
    painter.restore();
}

} // namespace

void IndicatorStyle::drawPrimitive(PrimitiveElement element, const QStyleOption* option,
                                   QPainter* painter, const QWidget* widget) const
{
    QProxyStyle::drawPrimitive(element, option, painter, widget);
    const bool isBox = element == PE_IndicatorCheckBox || element == PE_IndicatorItemViewItemCheck;
    const bool isRound = element == PE_IndicatorRadioButton;
    if ((isBox || isRound) && isDark(option->palette)) {
        drawRim(*option, *painter, isRound);
    }
}

} // namespace kelp

#include "moc_IndicatorStyle.cpp"
