#pragma once

#include <QDialog>

namespace kelp::oct {

class LocalizerGraphicsViewer;

/// A copy of the localizer on which polygons are drawn. Keeps its size from one time to the next.
class EditMaskDialog : public QDialog
{
    Q_OBJECT

public:
    explicit EditMaskDialog(QWidget* parent = nullptr);
    LocalizerGraphicsViewer* getViewer() const { return m_viewer; }

public slots:
    void done(int result) override;

signals:
    void btnClearClicked();

private:
    LocalizerGraphicsViewer* m_viewer = nullptr;
};

} // namespace kelp::oct
