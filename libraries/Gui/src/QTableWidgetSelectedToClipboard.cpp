#include "QTableWidgetSelectedToClipboard.h"

#include "kelpTrace.h"

#include <QClipboard>
#include <QGuiApplication>
#include <QKeyEvent>

QString QTableWidgetSelectedToClipboard::selectedText() const
{
    QString text;
    bool isNothingYet = true;
    for (int row = 0; row < rowCount(); ++row) {
        bool rowHasSelected = false;
        for (int column = 0; column < columnCount(); ++column) {
            const QTableWidgetItem* const cell = item(row, column);
            if (!cell || !cell->isSelected()) {
                continue;
            }
            if (!isNothingYet) {
                text += rowHasSelected ? QLatin1Char('\t') : QLatin1Char('\n');
            }
            text += cell->text();
            isNothingYet = false;
            rowHasSelected = true;
        }
    }
    return text;
}

void QTableWidgetSelectedToClipboard::keyPressEvent(QKeyEvent* event)
{
    if (event->modifiers() == Qt::ControlModifier && event->key() == Qt::Key_C) {
        copySelected();
    } else {
        QAbstractItemView::keyPressEvent(event);
    }
}

void QTableWidgetSelectedToClipboard::copySelected()
{
    kelp::Trace() << "C O P Y";
    QGuiApplication::clipboard()->setText(selectedText());
}

#include "moc_QTableWidgetSelectedToClipboard.cpp"
