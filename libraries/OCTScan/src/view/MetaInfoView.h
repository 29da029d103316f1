#pragma once

#include "MetaInfoText.h"

#include <QTextEdit>

namespace kelp::oct {

/// Captions and values below each other, for reading and copying. As high as its text needs.
class MetaInfoView : public QTextEdit
{
    Q_OBJECT

public:
    explicit MetaInfoView(QWidget* parent = nullptr);

    /// The heading stands above the lines; may be empty.
    void addLines(const QString& heading, const QList<MetaInfoLine>& lines);

protected:
    void resizeEvent(QResizeEvent* event) override;
    void wheelEvent(QWheelEvent* event) override;

private:
    void fitHeight();
};

} // namespace kelp::oct
