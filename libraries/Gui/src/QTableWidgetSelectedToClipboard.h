#pragma once

#include <QTableWidget>

/// A table whose selected cells Ctrl+C copies: cells of a row apart by tabulators, rows by line
/// feeds.
class QTableWidgetSelectedToClipboard : public QTableWidget
{
    Q_OBJECT

public:
    using QTableWidget::QTableWidget;

    /// What a copy puts on the clipboard.
    QString selectedText() const;

protected:
    void keyPressEvent(QKeyEvent* event) override;
    virtual void copySelected();
};
