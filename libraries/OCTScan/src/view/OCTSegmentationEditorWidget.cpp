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
        m_viewer = new GISliceSegmentationEditor(this);
        configureViewer();
        KELP_CONNECT(sourcePath, connect(m_viewer, SIGNAL(segmentationEdited()), this,
                                         SIGNAL(segmentationEdited())));
        KELP_CONNECT(sourcePath, connect(m_viewer, SIGNAL(selectedLayerChanged(QString)), this,
                                         SLOT(showSelectedLayer(QString))));
    }
    OCTSegmentationViewerWidget::initViewer();
    static_cast<QVBoxLayout*>(layout())->addLayout(makeHintLine());
}

QLayout* OCTSegmentationEditorWidget::makeHintLine()
{
    auto* const hint =
        new QLabel(QStringLiteral("Shift: pick a layer; drag: redraw it; Ctrl: pan; wheel: zoom; "
                                  "Ctrl+wheel or arrow keys: next B-scan"));
    hint->setObjectName(QStringLiteral("editorHint"));
    hint->setWordWrap(true);
    m_selectedLayer = new QLabel;
    m_selectedLayer->setObjectName(QStringLiteral("selectedLayer"));
    m_selectedLayer->setToolTip(
        QStringLiteral("The layer that the mouse redraws, drawn in white on the B-scan"));
    QFont bold = m_selectedLayer->font();
    bold.setBold(true);
    m_selectedLayer->setFont(bold);
    showSelectedLayer(QString());

    auto* const line = new QHBoxLayout;
    line->addWidget(hint, 1);
    line->addWidget(m_selectedLayer);
    return line;
}

void OCTSegmentationEditorWidget::showSelectedLayer(QString longName)
{
    m_selectedLayer->setText(longName.isEmpty() ? QStringLiteral("No layer picked") : longName);
}

} // namespace kelp::oct

#include "moc_OCTSegmentationEditorWidget.cpp"
