#pragma once

#include "CostFunction.h"

namespace kelp::oct {

/// The inner limiting membrane: dark above, bright below.
class CostFunctionILM : public CostFunction
{
public:
    CostFunctionILM();

    void setBalance(float newBalance) override;
    void computeCost(const Values& in, Values& out) const override;

protected:
    float gradientWeight = 1.0F;
    float accumulationWeight = 0.002F;
    float balance = 0.0F;
    /// Adds what lies above a row to its cost. Off in all steps.
    bool useAccumulation = false;
};

/// The inner border of the pigment epithelium, which may bend more than the ILM.
class CostFunctionIRPE : public CostFunctionILM
{
public:
    CostFunctionIRPE();
};

} // namespace kelp::oct
