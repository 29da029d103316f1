#include "OCTSegmentationEditorWidget.h"

#include "kelpCheck.h"
#include "kelpGISliceSegmentationEditor.h"

#include <QLabel>
#include <QVBoxLayout>

namespace kelp::oct {

namespace {

constexpr const char* sourcePath = "libraries/OCTScan/src/view/OCTSegmentationEditorWidget";

} // namespace

OCTSegmentationEditorWidget::OCTSegmentationEditorWidget(QWidget* parent)
    : OCTSegmentationViewerWidget(parent)
{
}

void OCTSegmentationEditorWidget::initViewer()
{
    if (!m_viewer) {
        auto* const editor = new GISliceSegmentationEditor(this);
        m_viewer = editor;
        configureViewer();
        KELP_CONNECT(sourcePath, connect(editor, SIGNAL(segmentationEdited()), this,
                                         SIGNAL(segmentationEdited())));
    }
    OCTSegmentationViewerWidget::initViewer();

    auto* const hint =
        new QLabel(QStringLiteral("Shift: pick a layer; drag: redraw it; Ctrl: pan; wheel: zoom; "
                                  "Ctrl+wheel or arrow keys: next B-scan"),
                   this);
    hint->setObjectName(QStringLiteral("editorHint"));
    hint->setWordWrap(true);
    layout()->addWidget(hint);
}

} // namespace kelp::oct

#include "moc_OCTSegmentationEditorWidget.cpp"
