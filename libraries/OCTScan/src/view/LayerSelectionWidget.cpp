#include "LayerSelectionWidget.h"

#include "LayerVisibilityCheckBox.h"
#include "kelpCheck.h"

#include <QHBoxLayout>

#include <algorithm>

namespace kelp::oct {

namespace {

constexpr const char* sourcePath = "libraries/OCTScan/src/view/LayerSelectionWidget";

bool isFurtherIn(const LayerNamePtr& a, const LayerNamePtr& b)
{
    return *a < *b;
}

} // namespace

LayerSelectionWidget::LayerSelectionWidget(QWidget* parent)
    : QGroupBox(QStringLiteral("Segmented Layers"), parent), m_layout(new QHBoxLayout(this))
{
}

void LayerSelectionWidget::removeBoxes()
{
    while (QLayoutItem* const item = m_layout->takeAt(0)) {
        delete item->widget();
        delete item;
    }
}

void LayerSelectionWidget::updateLayers(const OCTScanSegPtr& segmentation)
{
    removeBoxes();
    if (segmentation.isNull()) {
        return;
    }
    QList<LayerNamePtr> names = segmentation->getAllLayerNames();
    // Stable, since some surfaces share their place in the order.
    std::stable_sort(names.begin(), names.end(), isFurtherIn);
    for (const LayerNamePtr& name : qAsConst(names)) {
        auto* const box = new LayerVisibilityCheckBox(name, this);
        m_layout->addWidget(box);
        KELP_CONNECT(sourcePath, connect(box, SIGNAL(visibilityChanged(LayerNamePtr, bool)), this,
                                         SIGNAL(visibilityChanged(LayerNamePtr, bool))));
        emit visibilityChanged(name, name->isVisibleByDefault());
    }
    m_layout->addStretch();
}

} // namespace kelp::oct

#include "moc_LayerSelectionWidget.cpp"
