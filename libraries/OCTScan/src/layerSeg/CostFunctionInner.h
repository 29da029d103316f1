#pragma once

#include "CostFunction.h"

namespace kelp::oct {

/// The lower border of the nerve fibre layer: bright above, dark below.
class CostFunctionGCL : public CostFunction
{
public:
    CostFunctionGCL();

    void setBalance(float newBalance) override;
    void computeCost(const Values& in, Values& out) const override;

protected:
    float balance = 0.03F;
    /// Held like that of the other inner surfaces; this surface has no such term.
    bool useRowTerm = true;
};

/// The border of the inner plexiform to the inner nuclear layer: bright above, dark below.
class CostFunctionINL : public CostFunction
{
public:
    CostFunctionINL();

    void setBalance(float newBalance) override;
    void computeCost(const Values& in, Values& out) const override;

protected:
    float balance = 0.03F;
    /// Favours deeper rows. Off in all steps.
    bool useRowTerm = false;
};

/// The border of the outer plexiform to the outer nuclear layer: bright above, dark below.
class CostFunctionONL : public CostFunction
{
public:
    CostFunctionONL();

    void setBalance(float newBalance) override;
    void computeCost(const Values& in, Values& out) const override;

protected:
    float balance = 0.03F;
    /// Favours deeper rows. Off in all steps.
    bool useRowTerm = false;
};

} // namespace kelp::oct
