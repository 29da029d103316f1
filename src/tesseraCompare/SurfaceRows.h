#pragma once

#include <cmath>
#include <cstddef>
#include <limits>
#include <vector>

namespace kelp::compare {

/// One surface over a scan in image rows from the top, perhaps between two rows, for each A-scan of
/// each B-scan; not-a-number where the surface is masked or was not drawn.
class SurfaceRows
{
public:
    SurfaceRows() = default;
    SurfaceRows(int nrBScans, int nrAScans)
        : m_nrBScans(nrBScans), m_nrAScans(nrAScans),
          m_rows(static_cast<std::size_t>(nrBScans) * static_cast<std::size_t>(nrAScans),
                 std::numeric_limits<double>::quiet_NaN())
    {
    }

    int getNrBScans() const { return m_nrBScans; }
    int getNrAScans() const { return m_nrAScans; }

    double at(int bScan, int aScan) const { return m_rows[indexOf(bScan, aScan)]; }
    void set(int bScan, int aScan, double row) { m_rows[indexOf(bScan, aScan)] = row; }
    bool has(int bScan, int aScan) const { return !std::isnan(at(bScan, aScan)); }

private:
    std::size_t indexOf(int bScan, int aScan) const
    {
        return static_cast<std::size_t>(bScan) * static_cast<std::size_t>(m_nrAScans) +
               static_cast<std::size_t>(aScan);
    }

    int m_nrBScans = 0;
    int m_nrAScans = 0;
    std::vector<double> m_rows;
};

} // namespace kelp::compare
