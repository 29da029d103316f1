#include "ElidedLabel.h"

#include <QPainter>

#include <algorithm>

namespace kelp {

ElidedLabel::ElidedLabel(QWidget* parent) : QLabel(parent)
{
    setTextFormat(Qt::PlainText);
    setSizePolicy(QSizePolicy::Maximum, QSizePolicy::Fixed);
}

void ElidedLabel::setWidestCharacters(int count)
{
    m_widestCharacters = count;
    updateGeometry();
}

void ElidedLabel::setFullText(const QString& text)
{
    setText(text.simplified());
    setToolTip(text);
    updateGeometry();
}

QSize ElidedLabel::sizeHint() const
{
    const int margins = 2 * margin();
    const int widest = fontMetrics().averageCharWidth() * m_widestCharacters;
    return {std::min(fontMetrics().horizontalAdvance(text()) + 1, widest) + margins,
            fontMetrics().height() + margins};
}

QSize ElidedLabel::minimumSizeHint() const
{
    constexpr int fewCharacters = 6;
    const int narrowest = fontMetrics().averageCharWidth() * fewCharacters;
    return {std::min(narrowest, sizeHint().width()), sizeHint().height()};
}

void ElidedLabel::paintEvent(QPaintEvent*)
{
    QPainter painter(this);
    painter.setPen(palette().color(foregroundRole()));
    const QRect room = contentsRect().adjusted(margin(), 0, -margin(), 0);
    painter.drawText(room, Qt::AlignVCenter | Qt::AlignLeft,
                     fontMetrics().elidedText(text(), Qt::ElideRight, room.width()));
}

} // namespace kelp

#include "moc_ElidedLabel.cpp"
