#pragma once

#include <array>
#include <cstddef>

/// A piecewise cubic through the given points that has no extremum between them (Fritsch and
/// Carlson, SIAM J Numer Anal 1980;17:238). Constant outside.
template <std::size_t Count>
class MonotoneCubic
{
public:
    using Values = std::array<double, Count>;

    /// Positions ascending. The curve runs level at its ends and at the point flatAt.
    MonotoneCubic(const Values& positions, const Values& values, std::size_t flatAt = 0)
        : m_positions(positions), m_values(values)
    {
        // The outer slopes stay 0, as the curve goes on constant there.
        for (std::size_t i = 1; i + 1 < Count; ++i) {
            const double before = width(i - 1);
            const double after = width(i);
            const double slopeBefore = (values[i] - values[i - 1]) / before;
            const double slopeAfter = (values[i + 1] - values[i]) / after;
            if (slopeBefore * slopeAfter > 0.0 && i != flatAt) {
                const double weightBefore = 2.0 * after + before;
                const double weightAfter = after + 2.0 * before;
                m_slopes[i] = (weightBefore + weightAfter) /
                              (weightBefore / slopeBefore + weightAfter / slopeAfter);
            }
        }
    }

    double operator()(double position) const
    {
        if (position <= m_positions.front()) {
            return m_values.front();
        }
        if (position >= m_positions.back()) {
            return m_values.back();
        }
        std::size_t i = 0;
        while (position > m_positions[i + 1]) {
            ++i;
        }
        const double t = (position - m_positions[i]) / width(i);
        const double square = t * t;
        const double cube = square * t;
        return (2.0 * cube - 3.0 * square + 1.0) * m_values[i] +
               (cube - 2.0 * square + t) * width(i) * m_slopes[i] +
               (3.0 * square - 2.0 * cube) * m_values[i + 1] +
               (cube - square) * width(i) * m_slopes[i + 1];
    }

private:
    double width(std::size_t i) const { return m_positions[i + 1] - m_positions[i]; }

    Values m_positions;
    Values m_values;
    Values m_slopes{};
};
