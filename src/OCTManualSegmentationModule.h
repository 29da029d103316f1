#pragma once

#include "OCTModule.h"

namespace kelp::oct {

class OCTSegmentationEditorWidget;

/// The tab in which the user corrects the layers of the current segmentation.
class OCTManualSegmentationModule : public OCTModule
{
    Q_OBJECT

public:
    OCTManualSegmentationModule(ActiveDataItems* activeDataItems, const QString& name);
    ~OCTManualSegmentationModule() override;

    QWidget* getMainWidget() override { return m_mainWidget; }

public slots:
    void setOCTScan(OCTScanPtr scan) override;
    void setOCTScanSegmentation(OCTScanSegPtr segmentation) override;
    void clearOCT() override;

protected:
    QString nextStep() const override;

private:
    QPointer<QWidget> m_mainWidget;
    QPointer<OCTSegmentationEditorWidget> m_segmentationViewer;
};

} // namespace kelp::oct
