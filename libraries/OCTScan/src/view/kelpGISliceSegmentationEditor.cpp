#include "kelpGISliceSegmentationEditor.h"

#include "kelpCheck.h"
#include "kelpKeyEventTransition.h"
#include "kelpTrace.h"

#include <QCoreApplication>
#include <QCursor>
#include <QKeyEvent>
#include <QMouseEvent>
#include <QState>

#include <limits>

namespace kelp::oct {

namespace {

constexpr const char* sourcePath = "libraries/OCTScan/src/view/kelpGISliceSegmentationEditor";

} // namespace

GISliceSegmentationEditor::GISliceSegmentationEditor(QWidget* parent)
    : GISliceSegmentationViewer(parent), m_stateMachine(QSharedPointer<QStateMachine>::create())
{
    // The zoom survives paging; the drag mode itself is the states' affair.
    setDragEnabled(true);
    buildStates();
    connectStates();
    m_stateMachine->start();
    setInteractive(true);
}

GISliceSegmentationEditor::~GISliceSegmentationEditor() = default;

QState* GISliceSegmentationEditor::makeState(const char* name, Qt::CursorShape cursor,
                                             DragMode dragMode)
{
    auto* const state = new QState(m_stateMachine.data());
    state->setObjectName(QString::fromLatin1(name));
    state->assignProperty(this, "cursor", QCursor(cursor));
    state->assignProperty(this, "dragMode", static_cast<int>(dragMode));
    return state;
}

void GISliceSegmentationEditor::buildStates()
{
    m_idleState = makeState("idle", Qt::CrossCursor, QGraphicsView::NoDrag);
    m_draggingState = makeState("dragging", Qt::OpenHandCursor, QGraphicsView::ScrollHandDrag);
    m_selectingState = makeState("selecting", Qt::PointingHandCursor, QGraphicsView::NoDrag);
    m_stateMachine->setInitialState(m_idleState);
}

void GISliceSegmentationEditor::connectStates()
{
    // There is no way from dragging to selecting or back: whoever holds both keys stays where the
    // first one led.
    auto* const idleToDragging = new KeyEventTransition(this, QEvent::KeyPress, Qt::Key_Control,
                                                        m_idleState, m_draggingState);
    auto* const draggingToIdle = new KeyEventTransition(this, QEvent::KeyRelease, Qt::Key_Control,
                                                        m_draggingState, m_idleState);
    auto* const idleToSelecting = new KeyEventTransition(this, QEvent::KeyPress, Qt::Key_Shift,
                                                         m_idleState, m_selectingState);
    auto* const selectingToIdle = new KeyEventTransition(this, QEvent::KeyRelease, Qt::Key_Shift,
                                                         m_selectingState, m_idleState);
    KELP_CONNECT(sourcePath,
                 connect(idleToDragging, SIGNAL(triggered()), this, SLOT(stopInteraction())));
    KELP_CONNECT(sourcePath,
                 connect(draggingToIdle, SIGNAL(triggered()), this, SLOT(startInteraction())));
    KELP_CONNECT(sourcePath,
                 connect(idleToSelecting, SIGNAL(triggered()), this, SLOT(deselectCurrentItem())));
    KELP_CONNECT(sourcePath,
                 connect(selectingToIdle, SIGNAL(triggered()), this, SLOT(selectCurrentItem())));
}

void GISliceSegmentationEditor::stopInteraction()
{
    m_stroke = false;
    setInteractive(false);
}

void GISliceSegmentationEditor::startInteraction()
{
    setInteractive(true);
}

bool GISliceSegmentationEditor::isSelectedLayerValid() const
{
    return m_selectedSegLayerIndex >= 0 &&
           m_selectedSegLayerIndex < getSliceObjects(m_currentImgIndex).size();
}

GIObjectPtr GISliceSegmentationEditor::selectedObject() const
{
    return getSliceObjects(m_currentImgIndex).value(m_selectedSegLayerIndex);
}

void GISliceSegmentationEditor::deselectCurrentItem()
{
    if (!isSliceValid(m_currentImgIndex)) {
        kelp::Trace() << "GISliceSegmentationEditor::deselectCurrentItem m_currentImgIndex out of "
                         "bounds";
        return;
    }
    if (isSelectedLayerValid()) {
        selectedObject()->setActive(false);
    } else {
        kelp::Trace() << "GISliceSegmentationEditor::deselectCurrentItem m_selectedSegLayerIndex "
                         "out of bounds";
    }
    m_stroke = false;
    m_selecting = true;
}

void GISliceSegmentationEditor::selectCurrentItem()
{
    if (!isSliceValid(m_currentImgIndex)) {
        kelp::Trace() << "GISliceSegmentationEditor::selectCurrentItem m_currentImgIndex out of "
                         "bounds";
        return;
    }
    if (!isSelectedLayerValid()) {
        kelp::Trace() << "GISliceSegmentationEditor::selectCurrentItem m_selectedSegLayerIndex "
                         "out of bounds";
        return;
    }
    const GIObjectPtr selected = selectedObject();
    if (selected.isNull()) {
        kelp::Trace() << "GISliceSegmentationEditor::selectCurrentItem selected giobject is null";
        return;
    }
    selected->removeHighlight();
    selected->setActive(true);
    m_selecting = false;
}

int GISliceSegmentationEditor::closestVisibleLayer(const QPointF& point) const
{
    const QList<GIObjectPtr> objects = getSliceObjects(m_currentImgIndex);
    double best = static_cast<double>(std::numeric_limits<float>::max());
    int bestIndex = 0;
    for (int i = 0; i < objects.size(); ++i) {
        if (!objects[i]->isVisible()) {
            continue;
        }
        const double distance = objects[i]->distanceTo(point);
        if (best >= distance) {
            bestIndex = i;
            best = distance;
        }
    }
    return bestIndex;
}

void GISliceSegmentationEditor::highlightClosestLayer(const QPointF& point)
{
    if (!isSliceValid(m_currentImgIndex)) {
        kelp::Trace() << "GISliceSegmentationEditor::highlightingClosestLayer with invalid "
                         "m_currentImgIndex: "
                      << m_currentImgIndex;
        return;
    }
    const int closest = closestVisibleLayer(point);
    if (isSelectedLayerValid()) {
        const GIObjectPtr selected = selectedObject();
        if (closest == m_selectedSegLayerIndex && selected->graphicsEffect()) {
            // Another glow in place of the same one would be drawn anew for every mouse move.
            return;
        }
        selected->removeHighlight();
    } else {
        kelp::Trace() << "GISliceSegmentationEditor::highlightingClosestLayer with "
                      << "invalid m_selectedSegLayerIndex: " << m_selectedSegLayerIndex;
    }
    if (closest < getSliceObjects(m_currentImgIndex).size()) {
        m_selectedSegLayerIndex = closest;
        selectedObject()->highlight();
    }
    tellSelectedLayer();
}

void GISliceSegmentationEditor::setSegmentation(const OCTScanSegPtr& segmentation)
{
    // What was changed so far belongs to the segmentation that goes.
    tellEdited();
    m_stroke = false;
    m_selectedSegLayerIndex = -1;
    GISliceSegmentationViewer::setSegmentation(segmentation);
    tellSelectedLayer();
}

void GISliceSegmentationEditor::setActiveSlice(int index)
{
    // A stroke does not go on from one slice to the next, and a highlight does not stay behind.
    m_stroke = false;
    if (m_selecting && isSelectedLayerValid()) {
        selectedObject()->removeHighlight();
    }
    GISliceSegmentationViewer::setActiveSlice(index);
    // While a layer is being picked none is active: the release of the key activates it.
    if (isSliceValid(index) && isSelectedLayerValid() && !m_selecting) {
        selectedObject()->setActive(true);
    }
    tellSelectedLayer();
}

void GISliceSegmentationEditor::overlayMade(LayerSegmentationGI& overlay)
{
    KELP_CONNECT(sourcePath, connect(&overlay, SIGNAL(changedLayerSegmentationGI(int, int)), this,
                                     SLOT(noteEdit())));
}

void GISliceSegmentationEditor::noteEdit()
{
    m_edited = true;
}

void GISliceSegmentationEditor::tellEdited()
{
    if (m_edited) {
        m_edited = false;
        emit segmentationEdited();
    }
}

void GISliceSegmentationEditor::tellSelectedLayer()
{
    const LayerSegmentationGIPtr overlay = getOverlay(m_currentImgIndex, m_selectedSegLayerIndex);
    const QString name = overlay ? overlay->getLayer()->getLayerName()->getLongName() : QString();
    if (name != m_toldLayer) {
        m_toldLayer = name;
        emit selectedLayerChanged(name);
    }
}

void GISliceSegmentationEditor::mousePressEvent(QMouseEvent* event)
{
    // The overlays do not know the buttons; a slip on another one is not to redraw a layer.
    if (event->button() != Qt::LeftButton) {
        event->ignore();
        return;
    }
    m_stroke = isInteractive() && !m_selecting;
    GISliceSegmentationViewer::mousePressEvent(event);
}

void GISliceSegmentationEditor::mouseDoubleClickEvent(QMouseEvent* event)
{
    // Two strokes in quick succession: the second is a stroke as well.
    mousePressEvent(event);
}

void GISliceSegmentationEditor::mouseMoveEvent(QMouseEvent* event)
{
    if (isMousePressed() && !m_stroke) {
        // The button went down elsewhere or for something else, so that an overlay would draw from
        // wherever its last stroke ended: not through the viewers, which pass moves on to them.
        QGraphicsView::mouseMoveEvent(event); // NOLINT(bugprone-parent-virtual-call)
    } else {
        GISliceSegmentationViewer::mouseMoveEvent(event);
    }
    if (m_selecting) {
        highlightClosestLayer(mapToScene(event->pos()));
    }
}

void GISliceSegmentationEditor::mouseReleaseEvent(QMouseEvent* event)
{
    if (event->button() != Qt::LeftButton) {
        event->ignore();
        return;
    }
    GISliceSegmentationViewer::mouseReleaseEvent(event);
    m_stroke = false;
    tellEdited();
}

void GISliceSegmentationEditor::releaseKey(int key)
{
    QKeyEvent release(QEvent::KeyRelease, key, Qt::NoModifier);
    QCoreApplication::sendEvent(this, &release);
}

void GISliceSegmentationEditor::focusOutEvent(QFocusEvent* event)
{
    // The keys' release goes elsewhere from now on; without it the editor would stay in its state.
    if (m_selectingState->active()) {
        releaseKey(Qt::Key_Shift);
    }
    if (m_draggingState->active()) {
        releaseKey(Qt::Key_Control);
    }
    GISliceSegmentationViewer::focusOutEvent(event);
}

void GISliceSegmentationEditor::hideEvent(QHideEvent* event)
{
    // A stroke whose end the editor will not see.
    tellEdited();
    GISliceSegmentationViewer::hideEvent(event);
}

} // namespace kelp::oct

#include "moc_kelpGISliceSegmentationEditor.cpp"
