#pragma once

#include "CostFunction.h"

namespace kelp::oct {

/// The top of the ellipsoid band: dark above, bright below, and very smooth.
class CostFunctionISe : public CostFunction
{
public:
    CostFunctionISe();

    void setBalance(float newBalance) override;
    void computeCost(const Values& in, Values& out) const override;

protected:
    /// Adds a term that asks for two homogeneous bands around a row. Off in all steps.
    bool usePlateauTerm = false;
    float balance = 0.03F;
};

/// The same border in diseased eyes, where it bends.
class CostFunctionISePatho : public CostFunctionISe
{
public:
    CostFunctionISePatho();
};

} // namespace kelp::oct
