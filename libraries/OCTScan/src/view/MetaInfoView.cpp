#include "MetaInfoView.h"

#include <QTextDocument>
#include <QWheelEvent>

#include <cmath>

namespace kelp::oct {

MetaInfoView::MetaInfoView(QWidget* parent) : QTextEdit(parent)
{
    setReadOnly(true);
    setTabChangesFocus(true);
    setFrameShape(QFrame::NoFrame);
    setWordWrapMode(QTextOption::WrapAtWordBoundaryOrAnywhere);
    setVerticalScrollBarPolicy(Qt::ScrollBarAlwaysOff);
    setHorizontalScrollBarPolicy(Qt::ScrollBarAlwaysOff);
    // It reads as part of the panel, not as something to type into.
    viewport()->setAutoFillBackground(false);
    document()->setDocumentMargin(0.0);
    fitHeight();
}

void MetaInfoView::addLines(const QString& heading, const QList<MetaInfoLine>& lines)
{
    QString html;
    if (!heading.isEmpty()) {
        html += QStringLiteral("<p><b>%1</b></p>").arg(heading.toHtmlEscaped());
    }
    html += QStringLiteral("<table cellspacing=\"0\" cellpadding=\"1\" width=\"100%\">");
    for (const MetaInfoLine& line : lines) {
        html += QStringLiteral("<tr><td width=\"45%\">%1:</td><td>%2</td></tr>")
                    .arg(line.caption.toHtmlEscaped(), line.value.toHtmlEscaped());
    }
    append(html + QStringLiteral("</table>"));
    fitHeight();
}

void MetaInfoView::resizeEvent(QResizeEvent* event)
{
    QTextEdit::resizeEvent(event);
    fitHeight();
}

void MetaInfoView::wheelEvent(QWheelEvent* event)
{
    // There is nothing to scroll here; the panel scrolls instead.
    event->ignore();
}

void MetaInfoView::fitHeight()
{
    setFixedHeight(static_cast<int>(std::ceil(document()->size().height())) + 2 * frameWidth());
}

} // namespace kelp::oct

#include "moc_MetaInfoView.cpp"
