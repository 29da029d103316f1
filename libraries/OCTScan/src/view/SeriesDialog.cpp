#include "SeriesDialog.h"

#include "kelpCheck.h"

#include <QDialogButtonBox>
#include <QLabel>
#include <QListWidget>
#include <QVBoxLayout>

namespace kelp::oct {

namespace {

constexpr char sourcePath[] = "libraries/OCTScan/src/view/SeriesDialog";
constexpr QSize smallestDialog(200, 300);
constexpr QSize smallestList(150, 80);

} // namespace

SeriesDialog::SeriesDialog(const QStringList& choices, QWidget* parent)
    : QDialog(parent), m_list(new QListWidget)
{
    setObjectName(QStringLiteral("seriesDialog"));
    setWindowTitle(QStringLiteral("Select a Series"));
    setModal(true);
    setMinimumSize(smallestDialog);
    m_list->setObjectName(QStringLiteral("seriesList"));
    m_list->setMinimumSize(smallestList);
    m_list->setSelectionMode(QAbstractItemView::SingleSelection);
    m_list->addItems(choices);
    m_list->setCurrentRow(0);
    auto* const buttons = new QDialogButtonBox(QDialogButtonBox::Ok | QDialogButtonBox::Cancel);
    auto* const column = new QVBoxLayout(this);
    column->addWidget(new QLabel(
        QStringLiteral("There are multiple series stored in the file.\nPlease select one:")));
    column->addWidget(m_list);
    column->addWidget(buttons);
    KELP_CONNECT(sourcePath, connect(buttons, SIGNAL(accepted()), this, SLOT(accept())));
    KELP_CONNECT(sourcePath, connect(buttons, SIGNAL(rejected()), this, SLOT(reject())));
    KELP_CONNECT(sourcePath, connect(m_list, SIGNAL(itemDoubleClicked(QListWidgetItem*)), this,
                                     SLOT(accept())));
    m_list->setFocus();
}

QString SeriesDialog::chosen() const
{
    const QList<QListWidgetItem*> selected = m_list->selectedItems();
    return selected.isEmpty() ? QString() : selected.first()->text();
}

} // namespace kelp::oct

#include "moc_SeriesDialog.cpp"
