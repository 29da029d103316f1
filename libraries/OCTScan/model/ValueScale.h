#pragma once

#include <QColor>
#include <QVector>

#include <vector>

namespace macula {

/// Even steps of a round width that cover a range of values.
struct RoundSteps
{
    double first = 0.0;
    double step = 1.0;
    int count = 1;

    double last() const { return first + step * count; }
    double at(int index) const { return first + step * index; }
};

RoundSteps roundSteps(double lowest, double highest, int most);

/// Values as colours, one a step, so that their borders read as contour lines. What lies outside
/// has the colour of the nearest step.
class ValueScale
{
public:
    /// Two sets of colours whose brightness grows evenly: one for means, one for spreads.
    enum class Colours
    {
        BlueToYellow,
        BlackToPink
    };

    ValueScale(Colours colours, const RoundSteps& steps);

    const RoundSteps& steps() const { return m_steps; }
    QColor colourOf(double value) const;

private:
    RoundSteps m_steps;
    QVector<QColor> m_colours;
};

} // namespace macula
