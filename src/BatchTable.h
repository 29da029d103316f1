#pragma once

#include "BatchScans.h"

#include <QSet>
#include <QTableWidget>

class QCheckBox;

namespace kelp::oct {

/// The scans of the store, one a row, each with a check box. A context menu and its keys check many
/// at once.
class BatchTable : public QTableWidget
{
    Q_OBJECT

public:
    explicit BatchTable(QWidget* parent = nullptr);

    /// There are as many rows as scans, but never none again: when there is no scan, the former
    /// rows stay, without cells.
    void setScans(const QList<BatchScan>& scans);
    /// Parallel to the rows that have cells.
    const QList<BatchScan>& scans() const { return m_scans; }
    /// Null for a row without cells.
    QCheckBox* checkBox(int row) const;
    /// Of the scans that are checked.
    QSet<QString> checkedGUIDs() const;
    void check(const QSet<QString>& guids);

protected:
    /// Cells out of sight are hidden: a repaint asks every visible one about all its siblings.
    void updateEditorGeometries() override;
    void scrollContentsBy(int dx, int dy) override;

private slots:
    void checkAll();
    void uncheckAll();
    void checkSelected();
    void uncheckSelected();
    void toggleSelected();

private:
    void addMenuEntry(const QString& text, const QKeySequence& key, const char* slot);
    void setRow(int row, const BatchScan& scan);
    void setText(int row, int column, const QString& text);
    void placeCells();
    void setChecked(const QList<int>& rows, bool checked);
    QList<int> allRows() const;
    QList<int> selectedRows() const;

    QList<BatchScan> m_scans;
    int m_firstPlacedRow = 0;
    int m_lastPlacedRow = -1;
};

} // namespace kelp::oct
