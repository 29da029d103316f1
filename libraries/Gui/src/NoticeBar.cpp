#include "NoticeBar.h"

#include "kelpCheck.h"

#include <QAccessible>
#include <QEvent>
#include <QHBoxLayout>
#include <QLabel>
#include <QPushButton>
#include <QResizeEvent>
#include <QScrollArea>
#include <QShortcut>
#include <QStyle>

#include <algorithm>

namespace kelp {

namespace {

constexpr const char* sourcePath = "libraries/Gui/src/NoticeBar";

/// As high as the text needs at the width that there is, up to a limit beyond which it scrolls.
/// Does so by its size hints: a height for the width would pass through all layouts around it, and
/// a scroll area around those would then give everything in it the height that it likes best.
class ScrollingText : public QScrollArea
{
public:
    explicit ScrollingText(QLabel* text) : m_text(text)
    {
        setFrameShape(QFrame::NoFrame);
        setHorizontalScrollBarPolicy(Qt::ScrollBarAlwaysOff);
        setFocusPolicy(Qt::NoFocus); // the text has it, and scrolls with its cursor
        setSizePolicy(QSizePolicy::Expanding, QSizePolicy::Fixed);
        setWidgetResizable(true);
        setWidget(text);
        // Both have a ground of their own by now.
        text->setAutoFillBackground(false);
        viewport()->setAutoFillBackground(false);
    }
    QSize sizeHint() const override { return {QScrollArea::sizeHint().width(), neededHeight()}; }
    QSize minimumSizeHint() const override
    {
        return {QScrollArea::minimumSizeHint().width(), neededHeight()};
    }

protected:
    void resizeEvent(QResizeEvent* event) override
    {
        QScrollArea::resizeEvent(event);
        if (event->oldSize().width() != event->size().width()) {
            updateGeometry();
        }
    }
    bool viewportEvent(QEvent* event) override
    {
        if (event->type() == QEvent::LayoutRequest) {
            // Another text, or another font.
            updateGeometry();
        }
        return QScrollArea::viewportEvent(event);
    }

private:
    int neededHeight() const
    {
        constexpr int mostLines = 8;
        return std::min(m_text->heightForWidth(width()),
                        mostLines * m_text->fontMetrics().lineSpacing());
    }

    QLabel* m_text;
};

QString asMarkup(const Notice& notice)
{
    QString points;
    for (const QString& point : notice.points) {
        points += QStringLiteral("<li>%1</li>").arg(point.toHtmlEscaped());
    }
    // The advice before the points, so that it is seen however many they are. Lists have wide
    // margins by themselves.
    return QStringLiteral("<b>%1</b><br>%2<ul style=\"margin: 2px 0px 0px 14px; "
                          "-qt-list-indent: 0;\">%3</ul>")
        .arg(notice.title.toHtmlEscaped(), notice.advice.toHtmlEscaped(), points);
}

} // namespace

NoticeBar::NoticeBar(QWidget* parent) : QFrame(parent), m_icon(new QLabel), m_text(new QLabel)
{
    setObjectName(QStringLiteral("noticeBar"));
    setFrameShape(QFrame::StyledPanel);
    // Stands out against window and views, light and dark, and always with a text to be read on it.
    setBackgroundRole(QPalette::ToolTipBase);
    setAutoFillBackground(true);

    m_text->setObjectName(QStringLiteral("noticeText"));
    m_text->setForegroundRole(QPalette::ToolTipText);
    m_text->setTextFormat(Qt::RichText);
    m_text->setWordWrap(true);
    m_text->setAlignment(Qt::AlignTop | Qt::AlignLeft);
    m_text->setTextInteractionFlags(Qt::TextSelectableByMouse | Qt::TextSelectableByKeyboard);

    auto* const row = new QHBoxLayout(this);
    constexpr int margin = 6;
    row->setContentsMargins(margin, margin, margin, margin);
    row->addWidget(m_icon, 0, Qt::AlignTop);
    row->addWidget(new ScrollingText(m_text), 1);
    makeCloseButton();
    showIcon();
    hide();
}

void NoticeBar::makeCloseButton()
{
    auto* const button = new QPushButton(QStringLiteral("Close"));
    button->setObjectName(QStringLiteral("closeNotice"));
    button->setToolTip(QStringLiteral("Close this notice (Esc)"));
    button->setAccessibleDescription(button->toolTip());
    button->setAutoDefault(false);
    KELP_CONNECT(sourcePath, connect(button, SIGNAL(clicked()), this, SLOT(hide())));
    layout()->addWidget(button);
    layout()->setAlignment(button, Qt::AlignTop);
    // From anywhere in the window, since the focus is where the user works. Qt leaves the key alone
    // while the bar is hidden.
    auto* const escape = new QShortcut(QKeySequence(Qt::Key_Escape), this);
    KELP_CONNECT(sourcePath, connect(escape, SIGNAL(activated()), this, SLOT(hide())));
}

void NoticeBar::showIcon()
{
    const int size = style()->pixelMetric(QStyle::PM_LargeIconSize, nullptr, this);
    const QIcon icon = style()->standardIcon(QStyle::SP_MessageBoxWarning, nullptr, this);
    m_icon->setPixmap(icon.pixmap(window()->windowHandle(), QSize(size, size)));
}

void NoticeBar::showNotice(const Notice& notice)
{
    setAccessibleName(notice.title);
    setAccessibleDescription((QStringList{notice.advice} + notice.points).join(QLatin1Char('\n')));
    m_text->setText(asMarkup(notice));
    show();
    QAccessibleEvent alert(this, QAccessible::Alert);
    QAccessible::updateAccessibility(&alert);
}

void NoticeBar::changeEvent(QEvent* event)
{
    QFrame::changeEvent(event);
    if (event->type() == QEvent::StyleChange) {
        showIcon();
    }
}

} // namespace kelp

#include "moc_NoticeBar.cpp"
