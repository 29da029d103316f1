#include "CostFunctionInner.h"

namespace kelp::oct {

namespace {

/// The cost of one row that makes deeper rows the cheaper.
float rowTerm(bool used, std::size_t row, std::size_t rows)
{
    return used ? static_cast<float>(row + rows) : 0.0F;
}

} // namespace

CostFunctionGCL::CostFunctionGCL()
{
    maxDeltaX = 1;
    maxDeltaZ = 10;
}

void CostFunctionGCL::setBalance(float newBalance)
{
    balance = clampBalance(newBalance);
}

void CostFunctionGCL::computeCost(const Values& in, Values& out) const
{
    const MixedDerivative mixed(*this, in, balance);
    out.resize(in.size());
    for (std::size_t row = 0; row < in.size(); ++row) {
        out[row] = static_cast<float>(1.3 * mixed[row]);
    }
}

CostFunctionINL::CostFunctionINL()
{
    maxDeltaX = 1;
    maxDeltaZ = 10;
}

void CostFunctionINL::setBalance(float newBalance)
{
    balance = clampBalance(newBalance);
}

void CostFunctionINL::computeCost(const Values& in, Values& out) const
{
    const MixedDerivative mixed(*this, in, balance);
    out.resize(in.size());
    for (std::size_t row = 0; row < in.size(); ++row) {
        out[row] = static_cast<float>(2.0 * mixed[row] - rowTerm(useRowTerm, row, in.size()));
    }
}

CostFunctionONL::CostFunctionONL()
{
    maxDeltaX = 1;
    maxDeltaZ = 10;
}

void CostFunctionONL::setBalance(float newBalance)
{
    balance = clampBalance(newBalance);
}

void CostFunctionONL::computeCost(const Values& in, Values& out) const
{
    const MixedDerivative mixed(*this, in, balance);
    out.resize(in.size());
    for (std::size_t row = 0; row < in.size(); ++row) {
        out[row] = static_cast<float>(1.3 * mixed[row] - rowTerm(useRowTerm, row, in.size()));
    }
}

} // namespace kelp::oct
