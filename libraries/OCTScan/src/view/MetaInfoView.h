#pragma once

#include "MetaInfoText.h"

#include <QTextEdit>

namespace kelp::oct {

/// Lines that belong together. The heading may be empty.
struct MetaInfoSection
{
    QString heading;
    QList<MetaInfoLine> lines;
};

/// Captions and values below each other, for reading and copying. As high as its text needs.
class MetaInfoView : public QTextEdit
{
    Q_OBJECT

public:
    explicit MetaInfoView(QWidget* parent = nullptr);

    void setSections(const QList<MetaInfoSection>& sections);

protected:
    void resizeEvent(QResizeEvent* event) override;
    void wheelEvent(QWheelEvent* event) override;

private:
    void fitHeight();
};

} // namespace kelp::oct
