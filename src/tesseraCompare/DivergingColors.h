#pragma once

#include <QColor>

namespace kelp::compare {

/// Blue below nothing, near white at it, red above.
class DivergingColors
{
public:
    /// The colours end at -limit and limit, which is above 0.
    explicit DivergingColors(double limit) : m_limit(limit) {}

    double getLimit() const { return m_limit; }
    QColor of(double value) const;

    /// For what has no value.
    static QColor none() { return QColor(150, 150, 150); }

private:
    double m_limit;
};

} // namespace kelp::compare
