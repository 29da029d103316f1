#include "CostFunctionILM.h"

namespace kelp::oct {

CostFunctionILM::CostFunctionILM()
{
    kernelSize = 7;
    computeKernels();
}

void CostFunctionILM::setBalance(float newBalance)
{
    balance = clampBalance(newBalance);
}

void CostFunctionILM::computeCost(const Values& in, Values& out) const
{
    const MixedDerivative mixed(*this, in, balance);
    const std::size_t rows = in.size();
    const auto margin = static_cast<std::size_t>(kernelSize);
    float sum = 0.0F;
    if (useAccumulation) {
        for (std::size_t row = margin; row + margin < rows; ++row) {
            sum += in[row];
        }
    }
    out.resize(rows);
    for (std::size_t row = 0; row < rows; ++row) {
        float accumulated = 0.0F;
        if (useAccumulation) {
            // Goes on from the first pass, so that it starts with the whole column's sum.
            sum += in[row];
            accumulated = sum * accumulationWeight;
        }
        out[row] = static_cast<float>(scale * (accumulated - gradientWeight * mixed[row]));
    }
}

CostFunctionIRPE::CostFunctionIRPE()
{
    maxDeltaX = 3;
    scale = 0.5F;
}

} // namespace kelp::oct
