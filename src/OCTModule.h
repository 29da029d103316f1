#pragma once

#include "ActiveDataItems.h"
#include "QtAppModule.h"

namespace kelp::oct {

class OCTScanControlWidget;

/// Base of the tabs that work on one scan and one segmentation: owns the control panel, keeps the
/// current selection and hands it on when the user changes the tab. No kelp::Exception leaves its
/// slots; each failed step shows a box and the next one runs.
class OCTModule : public QtAppModule
{
    Q_OBJECT

public:
    OCTModule(const QString& name, ActiveDataItems* activeDataItems);
    ~OCTModule() override;

    void activate() override;
    void deactivate() override;

    /// The views of a subclass: show this scan, this segmentation, nothing.
    virtual void setOCTScan(OCTScanPtr scan) = 0;
    virtual void setOCTScanSegmentation(OCTScanSegPtr segmentation) = 0;
    virtual void clearOCT() = 0;

public slots:
    void setOCTScanPrivate(OCTScanPtr scan);
    void deselectOCT();
    void setOCTScanSegmentationPrivate(OCTScanSegPtr segmentation);
    void createNewSegmentation();
    void deleteSegment(OCTScanSegPtr segmentation);

protected:
    DataPointer<OCTScan> m_octScan;
    DataPointer<OCTScanSegmentation> m_octScanSegmentation;
    OCTScanControlWidget* m_controlWidget = nullptr;

private:
    ActiveDataItems* m_activeDataItems = nullptr;
    DataPointer<Study> m_currentStudy;
};

} // namespace kelp::oct
