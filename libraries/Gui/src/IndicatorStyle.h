#pragma once

#include <QProxyStyle>

namespace kelp {

/// The platform's style, with a rim around check boxes and radio buttons in dark palettes: styles
/// derive the rim from the window's colour, and on dark ground it cannot be seen.
class IndicatorStyle : public QProxyStyle
{
    Q_OBJECT

public:
    void drawPrimitive(PrimitiveElement element, const QStyleOption* option, QPainter* painter,
                       const QWidget* widget) const override;
};

} // namespace kelp
