#pragma once

#include "LayerName.h"

#include <QWidget>

class QCheckBox;

namespace kelp::oct {

/// Shows or hides one layer, in the layer's colour.
class LayerVisibilityCheckBox : public QWidget
{
    Q_OBJECT

public:
    /// Throws kelp::Assertion for null.
    explicit LayerVisibilityCheckBox(const LayerNamePtr& layerName, QWidget* parent = nullptr);

    const LayerNamePtr& getLayerName() const { return m_layerName; }

signals:
    void visibilityChanged(LayerNamePtr layerName, bool visible);

private slots:
    void stateChanged(int state);

private:
    LayerNamePtr m_layerName;
    QCheckBox* m_checkBox;
};

} // namespace kelp::oct
