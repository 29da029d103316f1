#pragma once

#include "QtDataSelectionList.h"

namespace kelp::oct {

/// The scans of the current study.
class OCTScanSelectionWidget : public QtDataSelectionList
{
    Q_OBJECT

public:
    explicit OCTScanSelectionWidget(QWidget* parent = nullptr);
};

} // namespace kelp::oct
