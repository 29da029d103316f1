#pragma once

#include "OCTScanSegmentation.h"

#include <QWidget>

namespace kelp::oct {

class OCTMeasurementViewer;

/// The en-face thickness map, its rendering options, and the table of mean thicknesses per ETDRS
/// sector.
class MeasurementWidget : public QWidget
{
    Q_OBJECT

public:
    explicit MeasurementWidget(QWidget* parent = nullptr);
    ~MeasurementWidget() override;

    OCTMeasurementViewer* getViewer() const;

public slots:
    /// Throw kelp::Assertion for null.
    void setOCT(OCTScanPtr oct);
    void clearOCT();
    void updateView();
    void setSegmentation(OCTScanSegPtr octSeg);
    void layerNameTopSelected(int index);
    void layerNameBottomSelected(int index);
    void transferFunctionSelected(int index);
    void transferLowerChanged(int value);
    void transferUpperChanged(int value);
    void transparencyChanged(int value);
    void transferLowerEditChanged(QString valueStr);
    void transferUpperEditChanged(QString valueStr);
    void updateLayerSelection(OCTScanSegPtr octSeg);
    void foveaMoved(CoordOnLocalizer newPos);
};

} // namespace kelp::oct
