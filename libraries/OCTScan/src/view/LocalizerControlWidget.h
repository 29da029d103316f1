#pragma once

#include "OCTScan.h"
#include "SegmentationMask.h"

#include <QWidget>

class QLCDNumber;
class QSlider;
class QToolButton;

namespace kelp::oct {

class LocalizerGraphicsViewer;

/// The localizer with what pages through the B-scans: arrows, slider, the wheel with Ctrl, and the
/// arrow, page, Home and End keys. Down, Right and Page Down lead to the next B-scan.
///
/// What the user does is told by the signals; the slots tell nothing back.
class LocalizerControlWidget : public QWidget
{
    Q_OBJECT

public:
    explicit LocalizerControlWidget(QWidget* parent = nullptr);

    /// Starts at the middle B-scan. Throws kelp::Assertion for null.
    void setOCT(const OCTScanPtr& scan);
    /// Throws kelp::Assertion for null.
    void setMask(const SegmentationMaskPtr& mask);
    void clearMask();
    void clearOCT();

    /// -1 without a scan.
    int getActiveSlice() const { return m_activeSlice; }
    LocalizerGraphicsViewer* getViewer() const { return m_viewer; }

public slots:
    /// Does nothing for an index outside.
    void setActiveSlice(int index);
    void setActivePosition(int aScanIndex);
    void decreaseSlice();
    void increaseSlice();

signals:
    void aScanSelected(int posIndex);
    void bScanSelected(int sliceIndex);

protected:
    bool eventFilter(QObject* watched, QEvent* event) override;
    void wheelEvent(QWheelEvent* event) override;

private slots:
    void selectSlice(int index);

private:
    void addViewer();
    void addPagingRow();
    void connectSignals();
    bool isSliceValid(int index) const { return index >= 0 && index < m_sliceCount; }
    void showSliceNumber();
    /// Keeps within bounds; emits only on a change.
    void stepBy(int steps);
    bool stepByKey(int key);
    void stepByWheel(QWheelEvent& event);

    LocalizerGraphicsViewer* m_viewer = nullptr;
    QToolButton* m_leftArrow = nullptr;
    QToolButton* m_rightArrow = nullptr;
    QSlider* m_slider = nullptr;
    QLCDNumber* m_sliceNumber = nullptr;
    int m_sliceCount = 0;
    int m_activeSlice = -1;
    int m_wheelRest = 0; ///< of a fine-grained wheel, below one step
};

} // namespace kelp::oct
