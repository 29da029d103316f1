#pragma once

#include <QMetaType>

namespace kelp::oct {

/// Distances of the inner surfaces where no trained model fits. Distances in micrometres, weights
/// without unit. Passed by value through a queued call.
struct InnerDistProps
{
    float ilm2gclDistMean = 0.0F;
    float ilm2gclDistVarWeight = 0.0F;
    float gcl2inlDistMean = 0.0F;
    float gcl2inlDistVarWeight = 0.0F;
    float inl2onlDistMean = 0.0F;
    float inl2onlDistVarWeight = 0.0F;
    float onl2isosDistMean = 0.0F;
    float onl2isosDistVarWeight = 0.0F;
    float gcl2inlDistMin = 0.0F;
    float gcl2inlDistMax = 0.0F;
    float inl2onlDistMin = 0.0F;
    float inl2onlDistMax = 0.0F;
};

} // namespace kelp::oct

using InnerDistProps = kelp::oct::InnerDistProps;
Q_DECLARE_METATYPE(InnerDistProps)
