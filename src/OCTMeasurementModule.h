#pragma once

#include "OCTModule.h"

namespace kelp::oct {

class MeasurementWidget;

/// The tab with the thickness map of the current segmentation and its means per ETDRS sector.
class OCTMeasurementModule : public OCTModule
{
    Q_OBJECT

public:
    OCTMeasurementModule(ActiveDataItems* activeDataItems, const QString& name);
    ~OCTMeasurementModule() override;

    QWidget* getMainWidget() override { return m_mainWidget; }

public slots:
    void setOCTScan(OCTScanPtr scan) override;
    void setOCTScanSegmentation(OCTScanSegPtr segmentation) override;
    void clearOCT() override;

private:
    /// Throws kelp::Assertion where it could not be made.
    MeasurementWidget& measurementWidget() const;

    QPointer<QWidget> m_mainWidget;
    QPointer<MeasurementWidget> m_measurementWidget;
};

} // namespace kelp::oct
