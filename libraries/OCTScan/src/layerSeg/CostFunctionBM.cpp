#include "CostFunctionBM.h"

#include <algorithm>

namespace kelp::oct {

CostFunctionBM::CostFunctionBM()
{
    maxDeltaX = 1;
    maxDeltaZ = 2;
    // Given as a decimal, a little below the 1/255 of the other surfaces.
    intensityScale = 0.00392156F;
}

void CostFunctionBM::setBalance(float newBalance)
{
    balance = clampBalance(newBalance);
}

void CostFunctionBM::computeCost(const Values& in, Values& out) const
{
    const std::size_t rows = in.size();
    const auto margin = static_cast<std::size_t>(kernelSize);
    out.resize(rows);
    if (rows < 2 * margin + 2) {
        std::fill_n(out.data(), rows, 0.0F);
        return;
    }
    const MixedDerivative mixed(*this, in, balance);
    for (std::size_t row = margin; row < rows - margin; ++row) {
        out[row] = static_cast<float>(scale * mixed[row]);
    }
    // The top repeats the second computed row, the bottom the last.
    std::fill_n(out.data(), margin, out[margin + 1]);
    std::fill_n(out.data() + (rows - margin), margin, out[rows - margin - 1]);
}

} // namespace kelp::oct
