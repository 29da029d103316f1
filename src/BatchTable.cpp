#include "BatchTable.h"

#include "kelpCheck.h"

#include <QAction>
#include <QCheckBox>
#include <QFont>
#include <QHeaderView>
#include <QLabel>

#include <algorithm>

namespace kelp::oct {

namespace {

constexpr char sourcePath[] = "src/BatchTable";

enum Column
{
    CheckColumn,
    NameColumn,
    BirthDateColumn,
    StudyColumn,
    SeriesColumn,
    NrColumns
};
constexpr int columnWidths[NrColumns] = {20, 150, 150, 100, 100};

} // namespace

BatchTable::BatchTable(QWidget* parent) : QTableWidget(0, NrColumns, parent)
{
    setHorizontalHeaderLabels({QString(), QStringLiteral("Patient Name"),
                               QStringLiteral("Patient Birth Date"), QStringLiteral("Study"),
                               QStringLiteral("Series Identifier")});
    // The style asks for more room than a check box without a text takes.
    horizontalHeader()->setMinimumSectionSize(columnWidths[CheckColumn]);
    // The longest caption has to fit into its column.
    QFont captionFont = horizontalHeader()->font();
    captionFont.setPointSizeF(captionFont.pointSizeF() - 1.0);
    horizontalHeader()->setFont(captionFont);
    for (int column = 0; column < NrColumns; ++column) {
        setColumnWidth(column, columnWidths[column]);
    }
    setSortingEnabled(false);
    setSelectionBehavior(SelectRows);
    setEditTriggers(NoEditTriggers);
    setTabKeyNavigation(false);
    setContextMenuPolicy(Qt::ActionsContextMenu);
    addMenuEntry(QStringLiteral("Check All"), Qt::CTRL | Qt::SHIFT | Qt::Key_A, SLOT(checkAll()));
    addMenuEntry(QStringLiteral("Uncheck All"), Qt::CTRL | Qt::SHIFT | Qt::Key_N,
                 SLOT(uncheckAll()));
    addMenuEntry(QStringLiteral("Check Selected Rows"), Qt::Key_Plus, SLOT(checkSelected()));
    addMenuEntry(QStringLiteral("Uncheck Selected Rows"), Qt::Key_Minus, SLOT(uncheckSelected()));
    addMenuEntry(QStringLiteral("Toggle Selected Rows"), Qt::Key_Space, SLOT(toggleSelected()));
}

void BatchTable::addMenuEntry(const QString& text, const QKeySequence& key, const char* slot)
{
    auto* const action = new QAction(text, this);
    action->setShortcut(key);
    action->setShortcutContext(Qt::WidgetWithChildrenShortcut);
    KELP_CONNECT(sourcePath, connect(action, SIGNAL(triggered()), this, slot));
    addAction(action);
}

void BatchTable::setScans(const QList<BatchScan>& scans)
{
    // Thousands of cells would each be painted by itself at its first show.
    viewport()->hide();
    m_scans = scans;
    if (m_scans.isEmpty()) {
        clearContents();
    } else {
        // Cells that are there stay: making thousands anew at each visit would take seconds.
        setRowCount(m_scans.size());
        selectionModel()->reset();
    }
    for (int row = 0; row < m_scans.size(); ++row) {
        setRow(row, m_scans[row]);
    }
    m_firstPlacedRow = 0;
    m_lastPlacedRow = rowCount() - 1;
    placeCells();
    viewport()->show();
}

void BatchTable::updateEditorGeometries()
{
    placeCells();
}

void BatchTable::scrollContentsBy(int dx, int dy)
{
    QTableWidget::scrollContentsBy(dx, dy);
    placeCells();
}

void BatchTable::placeCells()
{
    const int first = std::max(rowAt(0), 0);
    const int lastSeen = rowAt(viewport()->height() - 1);
    const int last = lastSeen < 0 ? rowCount() - 1 : lastSeen;
    for (int row = m_firstPlacedRow; row <= m_lastPlacedRow; ++row) {
        for (int column = 0; column < NrColumns && (row < first || row > last); ++column) {
            if (QWidget* const cell = cellWidget(row, column)) {
                cell->hide();
            }
        }
    }
    for (int row = first; row <= last; ++row) {
        for (int column = 0; column < NrColumns; ++column) {
            if (QWidget* const cell = cellWidget(row, column)) {
                cell->setGeometry(visualRect(model()->index(row, column)));
                cell->show();
            }
        }
    }
    m_firstPlacedRow = first;
    m_lastPlacedRow = last;
}

void BatchTable::setRow(int row, const BatchScan& scan)
{
    if (QCheckBox* const former = checkBox(row)) {
        former->setChecked(false);
    } else {
        auto* const box = new QCheckBox;
        // The keys stay with the table, which checks whole selections.
        box->setFocusPolicy(Qt::NoFocus);
        setCellWidget(row, CheckColumn, box);
    }
    setText(row, NameColumn, scan.patient->getName());
    setText(row, BirthDateColumn, scan.patient->getBirthDate().toString(Qt::TextDate));
    setText(row, StudyColumn, scan.study->getId());
    setText(row, SeriesColumn, seriesIdOf(*scan.scan));
}

void BatchTable::setText(int row, int column, const QString& text)
{
    auto* label = qobject_cast<QLabel*>(cellWidget(row, column));
    if (!label) {
        label = new QLabel;
        label->setTextFormat(Qt::PlainText);
        setCellWidget(row, column, label);
    }
    if (label->text() != text) {
        label->setText(text);
        label->setToolTip(text.toHtmlEscaped());
    }
}

QCheckBox* BatchTable::checkBox(int row) const
{
    return qobject_cast<QCheckBox*>(cellWidget(row, CheckColumn));
}

QSet<QString> BatchTable::checkedGUIDs() const
{
    QSet<QString> guids;
    for (int row = 0; row < m_scans.size(); ++row) {
        const QCheckBox* const box = checkBox(row);
        if (box && box->isChecked() && m_scans[row].scan) {
            guids.insert(m_scans[row].scan->getGUID());
        }
    }
    return guids;
}

void BatchTable::check(const QSet<QString>& guids)
{
    for (int row = 0; row < m_scans.size(); ++row) {
        checkBox(row)->setChecked(guids.contains(m_scans[row].scan->getGUID()));
    }
}

QList<int> BatchTable::allRows() const
{
    QList<int> rows;
    for (int row = 0; row < rowCount(); ++row) {
        rows.append(row);
    }
    return rows;
}

QList<int> BatchTable::selectedRows() const
{
    QList<int> rows;
    for (const QModelIndex& index : selectionModel()->selectedRows()) {
        rows.append(index.row());
    }
    return rows;
}

void BatchTable::setChecked(const QList<int>& rows, bool checked)
{
    for (const int row : rows) {
        if (QCheckBox* const box = checkBox(row)) {
            box->setChecked(checked);
        }
    }
}

void BatchTable::checkAll()
{
    setChecked(allRows(), true);
}

void BatchTable::uncheckAll()
{
    setChecked(allRows(), false);
}

void BatchTable::checkSelected()
{
    setChecked(selectedRows(), true);
}

void BatchTable::uncheckSelected()
{
    setChecked(selectedRows(), false);
}

void BatchTable::toggleSelected()
{
    const QList<int> rows = selectedRows();
    const bool allChecked = std::all_of(rows.begin(), rows.end(), [this](int row) {
        const QCheckBox* const box = checkBox(row);
        return box && box->isChecked();
    });
    setChecked(rows, !allChecked);
}

} // namespace kelp::oct

#include "moc_BatchTable.cpp"
