#include "CostFunctionISe.h"

namespace kelp::oct {

namespace {

constexpr std::size_t windowRows = 10;
constexpr double plateauWeight = 0.05;
constexpr float noPlateau = 100000.0F;
constexpr float leastStep = 20.0F;

float meanOf(const float* rows)
{
    float sum = 0.0F;
    for (std::size_t row = 0; row < windowRows; ++row) {
        sum += rows[row];
    }
    return sum / static_cast<float>(windowRows);
}

float squaredDeviations(const float* rows, float mean)
{
    float sum = 0.0F;
    for (std::size_t row = 0; row < windowRows; ++row) {
        sum += (rows[row] - mean) * (rows[row] - mean);
    }
    return sum;
}

/// The ten rows above a row and the ten below it.
float plateauCost(const float* row)
{
    const float* above = row - windowRows;
    const float* below = row + 1;
    const float meanAbove = meanOf(above);
    const float meanBelow = meanOf(below);
    if (meanBelow - meanAbove > leastStep) {
        return squaredDeviations(above, meanAbove) + squaredDeviations(below, meanBelow);
    }
    return noPlateau;
}

} // namespace

CostFunctionISe::CostFunctionISe()
{
    maxDeltaX = 1;
    maxDeltaZ = 2;
}

void CostFunctionISe::setBalance(float newBalance)
{
    balance = clampBalance(newBalance);
}

void CostFunctionISe::computeCost(const Values& in, Values& out) const
{
    const MixedDerivative mixed(*this, in, balance);
    const std::size_t rows = in.size();
    out.resize(rows);
    for (std::size_t row = 0; row < rows; ++row) {
        double plateau = 0.0;
        if (usePlateauTerm && row >= windowRows && row + windowRows + 2 <= rows) {
            plateau = plateauWeight * plateauCost(in.data() + row);
        }
        out[row] = static_cast<float>(plateau - mixed[row]);
    }
}

CostFunctionISePatho::CostFunctionISePatho()
{
    maxDeltaX = 3;
    maxDeltaZ = 15;
}

} // namespace kelp::oct
