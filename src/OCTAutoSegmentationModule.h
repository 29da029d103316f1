#pragma once

#include "OCTModule.h"
#include "SegmentationChains.h"

#include <QSharedPointer>

#include <array>

class QCheckBox;
class QGroupBox;
class QLineEdit;
class QPushButton;
namespace kelp {
class NoticeBar;
}

namespace kelp::oct {

class OCTSegmentationViewerWidget;
class SegInterface;
class SegUpdateDialog;

/// The tab that segments the current scan: decides which chain of steps each button runs, shows the
/// result, and exports it.
class OCTAutoSegmentationModule : public OCTModule
{
    Q_OBJECT

public:
    OCTAutoSegmentationModule(ActiveDataItems* activeDataItems, const QString& name);
    ~OCTAutoSegmentationModule() override;

    QWidget* getMainWidget() override { return m_mainWidget; }

public slots:
    void setOCTScan(OCTScanPtr scan) override;
    void setOCTScanSegmentation(OCTScanSegPtr segmentation) override;
    void clearOCT() override;
    void segmentAllNormalHuman();
    void segmentAllDrusenHuman();
    void segmentAllMouse();
    void segmentationSuccess();
    void segmentationFailure(QString message);
    void updateButtons();
    void exportOCT();
    void startSegmentTest();

protected:
    QString nextStep() const override;
    void tellRunWarnings() override;

private:
    void makeViewer(QWidget* parent);
    QPushButton* makeSegmentButton(const char* text, const char* toolTip, const char* slot);
    QGroupBox* makeOptions();
    QGroupBox* makeTestOptions();
    QGroupBox* makeExportOptions();
    void connectRun();

    bool isSegmentable() const;
    bool hasLayers() const;
    void segmentAll(SegmentationChain chain);
    void startTestChain();
    float testValue(int row) const;
    /// Queues nothing yet. The name is that of the last step that will be.
    void startRun(const QString& lastStep);
    /// What the run that is over says against its own result.
    void noticeWarnings();
    /// False after a signal of a run whose last step is still to come.
    bool isRunOver() const;
    void exportInto(const QString& folder);

    QPointer<QWidget> m_mainWidget;
    QPointer<OCTSegmentationViewerWidget> m_segmentationViewer;
    QPushButton* m_btnAutoSegmentNormal = nullptr;
    QPushButton* m_btnAutoSegmentDrusen = nullptr;
    QPushButton* m_btnAutoSegmentMouse = nullptr;
    QCheckBox* m_exportMetaImage = nullptr;
    QCheckBox* m_exportRaw = nullptr;
    QCheckBox* m_exportPositions = nullptr;
    QCheckBox* m_exportThickness = nullptr;
    QPushButton* m_btnExport = nullptr;
    QCheckBox* m_useETDRSMask = nullptr;
    QCheckBox* m_useCenterMask = nullptr;
    QSharedPointer<SegInterface> m_segInterface;
    SegUpdateDialog* m_updateDialog = nullptr;
    std::array<QLineEdit*, 8> m_testFields{};        ///< null while the test options are off
    QString m_lastStep;                              ///< of the chain that was queued last
    QPointer<OCTScanSegmentation> m_runSegmentation; ///< of the run under way
    NoticeBar* m_notice = nullptr;
};

} // namespace kelp::oct
