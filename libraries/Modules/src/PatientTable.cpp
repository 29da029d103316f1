#include "PatientTable.h"

#include "PatientFilterModel.h"
#include "PatientIdentity.h"

#include <QHeaderView>
#include <QTreeView>

namespace kelp::patients {

void setUpPatientTable(QTreeView& view, PatientFilterModel* patients)
{
    view.setModel(patients);
    view.setRootIsDecorated(false);
    view.setUniformRowHeights(true);
    view.setAllColumnsShowFocus(true);
    view.setSortingEnabled(true);
    view.sortByColumn(PatientListModel::NameColumn, Qt::AscendingOrder);
    // Widths of samples: measuring all lines of a large store would take long.
    QHeaderView* const header = view.header();
    header->setStretchLastSection(false);
    header->setSectionResizeMode(PatientListModel::NameColumn, QHeaderView::Stretch);
    const QFontMetrics metrics = view.fontMetrics();
    // Room for the sort mark beside the caption.
    const int padding = 5 * metrics.averageCharWidth();
    const auto widthFor = [&](int column, const QString& sample) {
        const QString caption =
            patients->headerData(column, Qt::Horizontal, Qt::DisplayRole).toString();
        return padding +
               qMax(metrics.horizontalAdvance(caption), metrics.horizontalAdvance(sample));
    };
    header->resizeSection(
        PatientListModel::BirthDateColumn,
        widthFor(PatientListModel::BirthDateColumn, displayDate(QDate(2000, 12, 28))));
    header->resizeSection(PatientListModel::NumberColumn,
                          widthFor(PatientListModel::NumberColumn, QStringLiteral("DDDDDDDD")));
}

} // namespace kelp::patients
