#include "HintOverlay.h"

#include <QAbstractScrollArea>
#include <QEvent>

namespace kelp {

namespace {

constexpr int hintMargin = 8;

} // namespace

HintOverlay::HintOverlay(QWidget* target) : QLabel(target)
{
    setObjectName(QStringLiteral("hintOverlay"));
    setAlignment(Qt::AlignCenter);
    setWordWrap(true);
    setMargin(hintMargin);
    setTextFormat(Qt::PlainText);
    setAttribute(Qt::WA_TransparentForMouseEvents);
    setFocusPolicy(Qt::NoFocus);
    // Opaque, so that it can be read over a viewer's own background. Not in the role of
    // placeholder texts: default palettes give it a brush that draws nothing.
    const auto* const area = qobject_cast<QAbstractScrollArea*>(target);
    setBackgroundRole((area ? area->viewport() : target)->backgroundRole());
    setForegroundRole(backgroundRole() == QPalette::Base ? QPalette::Text : QPalette::WindowText);
    setAutoFillBackground(true);
    target->installEventFilter(this);
    setGeometry(target->contentsRect());
    hide();
}

void HintOverlay::setHint(const QString& hint)
{
    setText(hint);
    setVisible(!hint.isEmpty());
    raise();
}

bool HintOverlay::eventFilter(QObject* watched, QEvent* event)
{
    if (watched == parent() && event->type() == QEvent::Resize) {
        setGeometry(parentWidget()->contentsRect());
    } else if (watched == parent() && event->type() == QEvent::ChildAdded) {
        // A child that came later must not cover the hint.
        raise();
    }
    return QLabel::eventFilter(watched, event);
}

} // namespace kelp

#include "moc_HintOverlay.cpp"
