#pragma once

#include "ActiveDataItems.h"
#include "FailureBox.h"
#include "QtAppModule.h"

#include <QPointer>

class QLabel;
namespace kelp {
class HintOverlay;
}

namespace kelp::oct {

class OCTScanControlWidget;

/// Base of the tabs that work on one scan and one segmentation: owns the control panel, keeps the
/// current selection and hands it on when the user changes the tab. No kelp::Exception leaves its
/// slots; each failed step shows a box and the next one runs.
class OCTModule : public QtAppModule
{
    Q_OBJECT

public:
    /// Throws kelp::WatchdogException without a control panel to connect to.
    OCTModule(const QString& name, ActiveDataItems* activeDataItems);
    /// Deletes the control panel unless the main widget of the subclass has done so.
    ~OCTModule() override;

    void activate() override;
    void deactivate() override;

    /// The views of a subclass: show this scan, this segmentation, nothing.
    virtual void setOCTScan(OCTScanPtr scan) = 0;
    virtual void setOCTScanSegmentation(OCTScanSegPtr segmentation) = 0;
    virtual void clearOCT() = 0;

public slots:
    /// The user chose a scan: no segmentation is current until one is chosen.
    void setOCTScanPrivate(OCTScanPtr scan);
    void deselectOCT();
    void setOCTScanSegmentationPrivate(OCTScanSegPtr segmentation);
    void createNewSegmentation();
    void deleteSegment(OCTScanSegPtr segmentation);

protected slots:
    /// The user changed the current segmentation: saves it as soon as the event loop is free.
    void segmentationChanged();
    /// The same for its mask, which cuts what the views show.
    void maskChanged();
    /// The view shows another B-scan: the control panel follows. Nothing for an invalid index.
    void followActiveSlice(int index);

protected:
    /// The view over which a hint stands while there is nothing to show. To be called once.
    void setHintTarget(QWidget* view);
    /// What the user should do while no scan is shown; empty with one.
    virtual QString hint() const;
    /// A line for the tab's layout, hidden while nextStep is empty. To be called once.
    QLabel* makeNextStepLabel();
    /// What the user should do with the scan that is shown; empty if that is clear.
    virtual QString nextStep() const;

    RunWarnings& runWarnings() { return m_activeDataItems->runWarnings(); }
    /// Shows what the last run said against the segmentation that is shown, in the status line.
    virtual void tellRunWarnings();

    /// kelp::guarded with the main widget as parent.
    template <typename Action>
    bool step(const char* firstLine, const char* title, Action&& action)
    {
        return guarded(getMainWidget(), QString::fromUtf8(firstLine), QString::fromUtf8(title),
                       std::forward<Action>(action));
    }

    DataPointer<OCTScan> m_octScan;
    DataPointer<OCTScanSegmentation> m_octScanSegmentation;
    QPointer<OCTScanControlWidget> m_controlWidget;

private:
    void clearViews(const char* firstLine, const char* title);
    void restoreSelection();
    void showScan(const OCTScanPtr& scan);
    /// In the panel and in the views; nothing for an index that the scan does not have.
    void showBScan(int index);
    void showSegmentation(const OCTScanSegPtr& segmentation);
    void addToCurrentStudy(const OCTScanSegPtr& segmentation);
    /// Hint, status bar and warnings, at the end of whatever changed the selection.
    void tellSelection();

    ActiveDataItems* m_activeDataItems = nullptr;
    DataPointer<Study> m_currentStudy;
    QPointer<HintOverlay> m_hint;
    QPointer<QLabel> m_nextStep;
};

} // namespace kelp::oct
