#pragma once

#include "OCTScanSegmentation.h"

#include <QGroupBox>

class QHBoxLayout;

namespace kelp::oct {

/// One box per layer of a segmentation that shows and hides it, from the inner to the outer retina.
class LayerSelectionWidget : public QGroupBox
{
    Q_OBJECT

public:
    explicit LayerSelectionWidget(QWidget* parent = nullptr);

    /// New boxes for this segmentation's layers, each as visible as its name is by default, which
    /// is emitted; none for null.
    void updateLayers(const OCTScanSegPtr& segmentation);

signals:
    void visibilityChanged(LayerNamePtr layerName, bool visible);

private:
    void removeBoxes();

    QHBoxLayout* m_layout;
};

} // namespace kelp::oct
