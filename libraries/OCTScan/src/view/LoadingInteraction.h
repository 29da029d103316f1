#pragma once

#include "OCTScanLoadingUtils.h"

namespace kelp::oct {

/// Shows the trouble of interactive copying in boxes, and the waiting cursor meanwhile. In use as
/// long as it lives.
class LoadingInteraction : public OCTScanLoadingUtils::Interaction
{
public:
    LoadingInteraction();
    LoadingInteraction(const LoadingInteraction&) = delete;
    LoadingInteraction& operator=(const LoadingInteraction&) = delete;
    ~LoadingInteraction() override;

    void showProblem(const QString& title, const QString& text) override;
    void setBusy(bool busy) override;
};

} // namespace kelp::oct
