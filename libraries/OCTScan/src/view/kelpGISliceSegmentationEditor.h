#pragma once

#include "kelpGISliceSegmentationViewer.h"

#include <QSharedPointer>
#include <QStateMachine>

class QState;

namespace kelp::oct {

/// Lets the user pick one layer of the current B-scan (Shift) and redraw it with the left mouse
/// button; with Ctrl the mouse pans.
class GISliceSegmentationEditor : public GISliceSegmentationViewer
{
    Q_OBJECT

public:
    explicit GISliceSegmentationEditor(QWidget* parent = nullptr);
    ~GISliceSegmentationEditor() override;

    void setSegmentation(const OCTScanSegPtr& segmentation) override;

    /// Into the current slice's objects; may lie outside.
    int getSelectedLayerIndex() const { return m_selectedSegLayerIndex; }
    bool isSelecting() const { return m_selecting; }

public slots:
    void setActiveSlice(int index) override;
    void stopInteraction();
    void startInteraction();
    void deselectCurrentItem();
    void selectCurrentItem();
    /// In scene coordinates.
    void highlightClosestLayer(const QPointF& point);

signals:
    /// The mouse was released after it had changed a layer.
    void segmentationEdited();
    /// The long name of the layer that is picked or being picked; empty for none. The same place in
    /// the list can be another layer on another slice.
    void selectedLayerChanged(QString longName);

protected:
    void overlayMade(LayerSegmentationGI& overlay) override;

    void mousePressEvent(QMouseEvent* event) override;
    void mouseMoveEvent(QMouseEvent* event) override;
    void mouseReleaseEvent(QMouseEvent* event) override;
    void mouseDoubleClickEvent(QMouseEvent* event) override;
    void focusOutEvent(QFocusEvent* event) override;
    void hideEvent(QHideEvent* event) override;

private slots:
    void noteEdit();

private:
    QState* makeState(const char* name, Qt::CursorShape cursor, DragMode dragMode);
    void buildStates();
    void connectStates();
    int closestVisibleLayer(const QPointF& point) const;
    bool isSelectedLayerValid() const;
    /// Null unless an object of the current slice is selected.
    GIObjectPtr selectedObject() const;
    void releaseKey(int key);
    void tellEdited();
    void tellSelectedLayer();

    QSharedPointer<QStateMachine> m_stateMachine;
    // Owned by the machine.
    QState* m_idleState = nullptr;
    QState* m_draggingState = nullptr;
    QState* m_selectingState = nullptr;
    int m_selectedSegLayerIndex = 0;
    bool m_selecting = false;
    /// From a press of the left button on an editable slice until something else happens.
    bool m_stroke = false;
    bool m_edited = false;
    QString m_toldLayer;
};

} // namespace kelp::oct
