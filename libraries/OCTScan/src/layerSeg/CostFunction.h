#pragma once

#include "kelpDynamicVector.h"

#include <QSharedPointer>

namespace kelp::oct {

/// How unlikely a surface is at each row of an A-scan: a filter along the depth, a mix of the first
/// and second derivative of a Gaussian. Lower is better. Stateless after construction and safe to
/// use from several threads at once.
class CostFunction
{
public:
    using Values = kelp::DynamicVector<float>;

    CostFunction();
    virtual ~CostFunction() = default;

    virtual float getIntensityScale() const { return intensityScale; }
    /// Weight of the second derivative against the first, clamped to [-1, 1].
    virtual void setBalance(float) {}
    virtual bool isValid() const { return true; }
    /// in and out of equal length.
    virtual void computeCost(const Values& in, Values& out) const = 0;
    virtual void convolve(const Values& in, const Values& kernel, Values& out) const;

    /// The costs of rows top to bottom - 1 of one A-scan (out[0] belongs to row top). Rows outside
    /// the column repeat its ends.
    void computeColumnCost(const kelp::DynamicVector<unsigned short>& column, int top, int bottom,
                           Values& out) const;

    /// The largest steps of the surface between neighbouring A-scans and B-scans, in rows.
    int maxDeltaX = 2;
    int maxDeltaZ = 15;

protected:
    void computeKernels();
    /// m of every row: (1 - |balance|) times the first derivative plus balance times the second.
    void computeMixedDerivative(const Values& in, float balance,
                                kelp::DynamicVector<double>& out) const;

    Values firstDerivativeKernel;
    Values secondDerivativeKernel;
    int kernelSize = 9;
    float intensityScale = 1.0F / 255.0F;
    float scale = 1.0F;
};

using CostFunctionPtr = QSharedPointer<CostFunction>;

} // namespace kelp::oct
