#pragma once

#include "OCTSegmentationViewerWidget.h"

class QLabel;
class QLayout;

namespace kelp::oct {

/// The viewer widget with an editor in place of the viewer.
class OCTSegmentationEditorWidget : public OCTSegmentationViewerWidget
{
    Q_OBJECT

public:
    explicit OCTSegmentationEditorWidget(QWidget* parent = nullptr);
    void initViewer() override;

signals:
    /// The mouse was released after it had changed a layer: the moment to save.
    void segmentationEdited();

private slots:
    void showSelectedLayer(QString longName);

private:
    QLayout* makeHintLine();

    QLabel* m_selectedLayer = nullptr;
};

} // namespace kelp::oct
