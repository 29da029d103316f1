#include "QtDataSelectionList.h"

#include "AppBase.h"
#include "HintOverlay.h"
#include "kelpCheck.h"

#include <QKeyEvent>
#include <QListWidget>
#include <QSignalBlocker>
#include <QVBoxLayout>

#include <algorithm>

namespace {

constexpr char sourcePath[] = "libraries/Gui/src/QtDataSelectionList";

} // namespace

QtDataSelectionList::QtDataSelectionList(QWidget* parent)
    : QWidget(parent), m_list(new QListWidget), m_hint(new kelp::HintOverlay(m_list))
{
    m_list->setObjectName(QStringLiteral("dataSelectionList"));
    m_list->setTextElideMode(Qt::ElideMiddle);
    m_list->installEventFilter(this);
    auto* const layout = new QVBoxLayout(this);
    layout->setContentsMargins(0, 0, 0, 0);
    layout->addWidget(m_list);
    setFocusProxy(m_list);
    KELP_CONNECT(sourcePath, connect(m_list, SIGNAL(itemSelectionChanged()), this,
                                     SLOT(itemSelectionChanged())));
    KELP_CONNECT(sourcePath, connect(m_list, SIGNAL(itemDoubleClicked(QListWidgetItem*)), this,
                                     SLOT(itemDoubleClicked())));
    AppBase::currentSelection().attach(&updateCurrentStudy, this);
    setStudy(AppBase::getCurrentStudy());
}

QtDataSelectionList::~QtDataSelectionList()
{
    AppBase::currentSelection().detach(&updateCurrentStudy, this);
    if (m_study) {
        m_study->detach(&updateList, this);
    }
}

void QtDataSelectionList::addFilter(const QString& className, FilterType type)
{
    m_filters.insert(className, type);
    refill();
}

void QtDataSelectionList::removeFilter(const QString& className)
{
    m_filters.remove(className);
    refill();
}

bool QtDataSelectionList::filterPass(Data* item) const
{
    bool onlySome = false;
    bool included = false;
    for (auto filter = m_filters.begin(); filter != m_filters.end(); ++filter) {
        const bool matches = item->isA(filter.key());
        if (filter.value() == Exclude && matches) {
            return false;
        }
        if (filter.value() == Include) {
            onlySome = true;
            included = included || matches;
        }
    }
    return !onlySome || included;
}

void QtDataSelectionList::includeProcessData(bool include)
{
    m_includeProcessData = include;
    refill();
}

void QtDataSelectionList::setSelectionMode(SelectionMode mode)
{
    m_list->setSelectionMode(mode == Single ? QAbstractItemView::SingleSelection
                                            : QAbstractItemView::ExtendedSelection);
}

void QtDataSelectionList::setSelected(Data* item)
{
    selectGUIDs(item ? QStringList{item->getGUID()} : QStringList());
}

QList<Data*> QtDataSelectionList::getSelection() const
{
    QList<Data*> selection;
    for (int row = 0; row < m_items.size(); ++row) {
        if (m_items[row] && m_list->item(row)->isSelected()) {
            selection.append(m_items[row].data());
        }
    }
    return selection;
}

void QtDataSelectionList::updateList(CaSubject* /*subject*/, void* /*argument*/,
                                     char const* /*name*/, void* listener)
{
    static_cast<QtDataSelectionList*>(listener)->refill();
}

void QtDataSelectionList::updateCurrentStudy(CaSubject* /*subject*/, void* /*argument*/,
                                             char const* /*name*/, void* listener)
{
    static_cast<QtDataSelectionList*>(listener)->setStudy(AppBase::getCurrentStudy());
}

void QtDataSelectionList::setStudy(const DataPointer<Study>& study)
{
    if (study != m_study) {
        if (m_study) {
            m_study->detach(&updateList, this);
        }
        m_study = study;
        if (m_study) {
            m_study->attach(&updateList, this);
        }
    }
    // The same study again may have lost or gained items meanwhile.
    refill();
}

void QtDataSelectionList::refill()
{
    QList<Data*> all;
    if (m_study) {
        m_study->getAllData(all);
        if (m_includeProcessData) {
            QList<Data*> processData;
            m_study->getAllProcessData(processData);
            all.append(processData);
        }
    }
    const QStringList selected = getSelectedGUIDs();
    {
        const QSignalBlocker silent(m_list);
        m_list->clear();
        m_items.clear();
        for (Data* const item : all) {
            // Null if someone deleted it behind the study's back.
            if (item && filterPass(item)) {
                m_items.append(item);
                m_list->addItem(item->getId());
                m_list->item(m_list->count() - 1)->setToolTip(item->getId());
            }
        }
    }
    selectGUIDs(selected);
    showHint();
    if (getSelectedGUIDs() != selected) {
        emit selectionChanged(chosenItem());
    }
}

QStringList QtDataSelectionList::getSelectedGUIDs() const
{
    QStringList guids;
    for (const Data* const item : getSelection()) {
        guids.append(item->getGUID());
    }
    return guids;
}

void QtDataSelectionList::selectGUIDs(const QStringList& guids)
{
    const QSignalBlocker silent(m_list);
    m_list->setCurrentItem(nullptr);
    m_list->clearSelection();
    for (int row = 0; row < m_items.size(); ++row) {
        if (m_items[row] && guids.contains(m_items[row]->getGUID())) {
            m_list->setCurrentRow(row, QItemSelectionModel::Select);
        }
    }
}

void QtDataSelectionList::showHint()
{
    QString hint;
    if (!m_study) {
        hint = QStringLiteral("No study is selected.\nSelect one in the patient manager.");
    } else if (m_items.isEmpty()) {
        hint = QStringLiteral("Nothing to show in this study.\nAdd data in the patient manager.");
    }
    m_hint->setHint(hint);
}

Data* QtDataSelectionList::chosenItem() const
{
    const int row = m_list->currentRow();
    if (row >= 0 && m_list->item(row)->isSelected()) {
        return m_items[row].data();
    }
    return getSelection().value(0);
}

void QtDataSelectionList::itemSelectionChanged()
{
    emit selectionChanged(chosenItem());
}

void QtDataSelectionList::itemDoubleClicked()
{
    // Held, since a listener may remove it.
    const DataPointer<Data> item(chosenItem());
    if (item) {
        emit selectionDoubleClicked(item.data());
    }
}

bool QtDataSelectionList::eventFilter(QObject* watched, QEvent* event)
{
    if (event->type() == QEvent::KeyPress) {
        const int key = static_cast<QKeyEvent*>(event)->key();
        if (key == Qt::Key_Return || key == Qt::Key_Enter) {
            itemDoubleClicked();
            return true;
        }
    }
    return QWidget::eventFilter(watched, event);
}

#include "moc_QtDataSelectionList.cpp"
