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

    /// The rows are counted up while they are filled and never set to none: when there is no scan,
    /// the former rows stay, without cells.
    void setScans(const QList<BatchScan>& scans);
    /// Parallel to the rows that have cells.
    const QList<BatchScan>& scans() const { return m_scans; }
    /// Null for a row without cells.
    QCheckBox* checkBox(int row) const;
    /// Of the scans that are checked.
    QSet<QString> checkedGUIDs() const;
    void check(const QSet<QString>& guids);

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
    void setChecked(const QList<int>& rows, bool checked);
    QList<int> allRows() const;
    QList<int> selectedRows() const;

    QList<BatchScan> m_scans;
};

} // namespace kelp::oct
