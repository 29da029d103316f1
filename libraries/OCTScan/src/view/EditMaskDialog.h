#pragma once

#include <QDialog>

namespace kelp::oct {

class LocalizerGraphicsViewer;

/// A copy of the localizer on which polygons are drawn.
class EditMaskDialog : public QDialog
{
    Q_OBJECT

public:
    explicit EditMaskDialog(QWidget* parent = nullptr);
    LocalizerGraphicsViewer* getViewer() const { return m_viewer; }

signals:
    void btnClearClicked();

private:
    LocalizerGraphicsViewer* m_viewer = nullptr;
};

} // namespace kelp::oct
