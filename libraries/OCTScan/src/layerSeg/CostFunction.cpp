#include "CostFunction.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <numbers>

namespace kelp::oct {

namespace {

constexpr std::size_t rowsAtOnce = 8;

void divideByLargest(CostFunction::Values& kernel)
{
    float largest = 0.0F;
    for (std::size_t tap = 0; tap < kernel.size(); ++tap) {
        largest = std::max(largest, std::fabs(kernel[tap]));
    }
    for (std::size_t tap = 0; tap < kernel.size(); ++tap) {
        kernel[tap] /= largest;
    }
}

/// Count neighbouring rows. The order of the taps within a row is part of the result, so rows run
/// side by side and taps one after the other.
template <std::size_t Count>
void convolveRows(const float* in, const float* kernel, std::size_t taps, double divisor,
                  float* out)
{
    std::array<float, Count> sums{};
    for (std::size_t tap = 0; tap < taps; ++tap) {
        for (std::size_t row = 0; row < Count; ++row) {
            sums[row] += kernel[tap] * in[tap + row];
        }
    }
    for (std::size_t row = 0; row < Count; ++row) {
        out[row] = static_cast<float>(static_cast<double>(sums[row]) / divisor);
    }
}

} // namespace

CostFunction::CostFunction()
{
    computeKernels();
}

float CostFunction::clampBalance(float value)
{
    return std::clamp(value, -1.0F, 1.0F);
}

void CostFunction::computeKernels()
{
    const auto taps = static_cast<std::size_t>(kernelSize);
    firstDerivativeKernel.assign(taps, 0.0F);
    secondDerivativeKernel.assign(taps, 0.0F);
    const double sigma = 1.0;
    const double root = std::sqrt(2.0 * std::numbers::pi);
    const double firstDivisor = sigma * sigma * sigma * root;
    const double secondDivisor = sigma * sigma * sigma * sigma * sigma * root;
    for (std::size_t tap = 0; tap < taps; ++tap) {
        const int offset = static_cast<int>(tap) - kernelSize / 2;
        const auto x = static_cast<float>(offset);
        const double wideX = x;
        const double e = std::exp(-0.5 * static_cast<double>(x * x));
        firstDerivativeKernel[tap] = static_cast<float>(-(wideX * e) / firstDivisor);
        secondDerivativeKernel[tap] =
            static_cast<float>(((wideX - 1.0) * (wideX + 1.0) * e) / secondDivisor);
    }
    divideByLargest(firstDerivativeKernel);
    divideByLargest(secondDerivativeKernel);
}

void CostFunction::convolve(const Values& in, const Values& kernel, Values& out) const
{
    const std::size_t rows = in.size();
    const std::size_t taps = kernel.size();
    const std::size_t half = taps / 2;
    out.resize(rows);
    if (rows < 2 * half + 1) {
        std::fill_n(out.data(), rows, 0.0F);
        return;
    }
    std::fill_n(out.data(), half, 0.0F);
    std::fill_n(out.data() + (rows - half), half, 0.0F);
    const double divisor = static_cast<double>(taps) * -1.0;
    const std::size_t end = rows - half;
    std::size_t row = half;
    for (; row + rowsAtOnce <= end; row += rowsAtOnce) {
        convolveRows<rowsAtOnce>(in.data() + (row - half), kernel.data(), taps, divisor,
                                 out.data() + row);
    }
    for (; row < end; ++row) {
        convolveRows<1>(in.data() + (row - half), kernel.data(), taps, divisor, out.data() + row);
    }
}

void CostFunction::computeColumnCost(const kelp::DynamicVector<unsigned short>& column, int top,
                                     int bottom, Values& out) const
{
    if (column.size() == 0 || bottom <= top) {
        out.resize(0);
        return;
    }
    // This runs for every column of every surface: the buffers of a thread serve all its columns.
    thread_local Values padded;
    thread_local Values costs;
    const int half = kernelSize / 2;
    const int lastRow = static_cast<int>(column.size()) - 1;
    const auto rows = static_cast<std::size_t>(bottom - top);
    padded.resize(rows + 2 * static_cast<std::size_t>(half));
    float* next = padded.data();
    for (int row = top - half; row < bottom + half; ++row) {
        *next++ = column[static_cast<std::size_t>(std::clamp(row, 0, lastRow))];
    }
    computeCost(padded, costs);
    out.resize(rows);
    std::copy_n(costs.data() + half, rows, out.data());
}

CostFunction::MixedDerivative::MixedDerivative(const CostFunction& function, const Values& in,
                                               float balance)
    : m_firstWeight(1.0 - std::fabs(static_cast<double>(balance))), m_balance(balance)
{
    thread_local Values first;
    thread_local Values second;
    function.convolve(in, function.firstDerivativeKernel, first);
    function.convolve(in, function.secondDerivativeKernel, second);
    m_first = first.data();
    m_second = second.data();
}

} // namespace kelp::oct
