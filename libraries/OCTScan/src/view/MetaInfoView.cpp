#include "MetaInfoView.h"

#include <QTextDocument>
#include <QWheelEvent>

#include <cmath>

namespace kelp::oct {

namespace {

QString sectionToHtml(const MetaInfoSection& section)
{
    QString html;
    if (!section.heading.isEmpty()) {
        html += QStringLiteral("<p><b>%1</b></p>").arg(section.heading.toHtmlEscaped());
    }
    html += QStringLiteral("<table cellspacing=\"0\" cellpadding=\"1\" width=\"100%\">");
    for (const MetaInfoLine& line : section.lines) {
        // In one step: a value may contain what looks like another placeholder.
        html += QStringLiteral(
                    "<tr><td width=\"45%\" style=\"padding-right: 6px\">%1:</td><td>%2</td></tr>")
                    .arg(line.caption.toHtmlEscaped(), line.value.toHtmlEscaped());
    }
    return html + QStringLiteral("</table>");
}

} // namespace

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

void MetaInfoView::setSections(const QList<MetaInfoSection>& sections)
{
    QString html;
    for (const MetaInfoSection& section : sections) {
        html += sectionToHtml(section);
    }
    setHtml(html);
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
