#include "OCTScanSelectionWidget.h"

#include "OCTScan.h"

namespace kelp::oct {

OCTScanSelectionWidget::OCTScanSelectionWidget(QWidget* parent) : QtDataSelectionList(parent)
{
    addFilter(OCTScan::classId().toQString(), Include);
}

} // namespace kelp::oct

#include "moc_OCTScanSelectionWidget.cpp"
