#pragma once

#include <QLabel>

namespace kelp {

/// Tells over an otherwise empty widget what to do next. Covers its target, lets the mouse through,
/// and is hidden while its text is empty.
class HintOverlay : public QLabel
{
    Q_OBJECT

public:
    /// A child of the target.
    explicit HintOverlay(QWidget* target);
    void setHint(const QString& hint);

protected:
    bool eventFilter(QObject* watched, QEvent* event) override;
};

} // namespace kelp
