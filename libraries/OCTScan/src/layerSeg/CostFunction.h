#pragma once

#include "kelpDynamicVector.h"

#include <QSharedPointer>

#include <cstddef>

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
    /// out becomes as long as in; the two must be different vectors.
    virtual void computeCost(const Values& in, Values& out) const = 0;
    /// The kernel is not flipped; rows that it does not cover wholly are 0.
    virtual void convolve(const Values& in, const Values& kernel, Values& out) const;

    /// The costs of rows top to bottom - 1 of one A-scan (out[0] belongs to row top). Rows outside
    /// the column repeat its ends. An empty column or range gives an empty out.
    void computeColumnCost(const kelp::DynamicVector<unsigned short>& column, int top, int bottom,
                           Values& out) const;

protected:
    static float clampBalance(float value);
    void computeKernels();
    /// The two derivatives of one column, mixed: m of row i is (1 - |balance|) times the first plus
    /// balance times the second. Valid until the same thread makes the next.
    class MixedDerivative
    {
    public:
        MixedDerivative(const CostFunction& function, const Values& in, float balance);
        double operator[](std::size_t row) const
        {
            return m_firstWeight * static_cast<double>(m_first[row]) +
                   static_cast<double>(m_balance * m_second[row]);
        }

    private:
        const float* m_first;
        const float* m_second;
        double m_firstWeight;
        float m_balance;
    };

    Values firstDerivativeKernel;
    Values secondDerivativeKernel;

public:
    /// The largest steps of the surface between neighbouring A-scans and B-scans, in rows.
    int maxDeltaX = 2;
    int maxDeltaZ = 15;

protected:
    int kernelSize = 9;
    float intensityScale = 1.0F / 255.0F;
    float scale = 1.0F;
};

using CostFunctionPtr = QSharedPointer<CostFunction>;

} // namespace kelp::oct
