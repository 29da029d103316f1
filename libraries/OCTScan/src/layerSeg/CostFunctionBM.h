#pragma once

#include "CostFunction.h"

namespace kelp::oct {

/// Bruch's membrane: bright above, dark below, and very smooth.
class CostFunctionBM : public CostFunction
{
public:
    CostFunctionBM();

    void setBalance(float newBalance) override;
    /// Both ends repeat the nearest computed costs; a column too short for that costs nothing.
    void computeCost(const Values& in, Values& out) const override;

protected:
    float balance = 0.03F;
};

} // namespace kelp::oct
