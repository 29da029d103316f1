#include "BatchLog.h"

#include <QPalette>

namespace kelp::oct {

namespace {

Qt::GlobalColor colorOf(BatchLine kind)
{
    switch (kind) {
    case BatchLine::Problem:
        return Qt::red;
    case BatchLine::Success:
        return Qt::darkGreen;
    case BatchLine::Plain:
        break;
    }
    return Qt::black;
}

} // namespace

BatchLog::BatchLog(QWidget* parent) : QTextEdit(parent)
{
    setReadOnly(true);
    QPalette paper = palette();
    paper.setColor(QPalette::Base, Qt::white);
    paper.setColor(QPalette::Text, Qt::black);
    setPalette(paper);
}

void BatchLog::appendLine(const QString& text, BatchLine kind)
{
    // Not QTextEdit::append, which would take a name such as "<b>" for markup.
    moveCursor(QTextCursor::End);
    setTextColor(colorOf(kind));
    insertPlainText(document()->isEmpty() ? text : QStringLiteral("\n") + text);
    ensureCursorVisible();
}

void BatchLog::insertDot()
{
    setTextColor(Qt::black);
    insertPlainText(QStringLiteral("."));
    ensureCursorVisible();
}

} // namespace kelp::oct

#include "moc_BatchLog.cpp"
