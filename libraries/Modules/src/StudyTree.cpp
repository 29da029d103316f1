#include "StudyTree.h"

#include "DataDescription.h"
#include "kelpCheck.h"

#include <QHeaderView>
#include <QSet>
#include <QSignalBlocker>
#include <QStyle>
#include <QTreeWidgetItemIterator>

namespace kelp::patients {

namespace {

constexpr const char* sourcePath = "libraries/Modules/src/StudyTree";

class StudyTreeLine : public QTreeWidgetItem
{
public:
    explicit StudyTreeLine(const TreeNode& shown) : node(shown) {}

    QString key() const
    {
        if (node.isUnreadable()) {
            return node.study->getGUID() + QLatin1Char('/') + node.unreadableId;
        }
        return node.item ? node.item->getGUID() : node.study->getGUID();
    }

    TreeNode node;
    bool isFilled = false;
};

StudyTreeLine* lineOf(QTreeWidgetItem* item)
{
    return static_cast<StudyTreeLine*>(item);
}

StudyTreeLine* makeLine(const TreeNode& node, const QString& name, const QString& kind,
                        const QIcon& icon)
{
    auto* const line = new StudyTreeLine(node);
    line->setText(0, name);
    line->setText(1, kind);
    line->setIcon(0, icon);
    line->setToolTip(0, name);
    return line;
}

} // namespace

struct StudyTree::State
{
    QSet<QString> open;
    QSet<QString> selected;
    QString current;
    QString currentStudy;
    int currentRow = -1;
};

StudyTree::StudyTree(QWidget* parent) : QTreeWidget(parent)
{
    setObjectName(QStringLiteral("studyTree"));
    setHeaderLabels({QStringLiteral("Study"), QStringLiteral("Kind")});
    setSelectionMode(QAbstractItemView::ExtendedSelection);
    setUniformRowHeights(true);
    // A double click makes a line current; it must not also close the study under the mouse.
    setExpandsOnDoubleClick(false);
    setContextMenuPolicy(Qt::CustomContextMenu);
    header()->setStretchLastSection(false);
    header()->setSectionResizeMode(0, QHeaderView::Stretch);
    header()->setSectionResizeMode(1, QHeaderView::ResizeToContents);
    KELP_CONNECT(sourcePath, connect(this, SIGNAL(itemExpanded(QTreeWidgetItem*)), this,
                                     SLOT(fillExpanded(QTreeWidgetItem*))));
}

void StudyTree::setPatient(const DataPointer<Patient>& patient, const QString& studyGuid)
{
    {
        const QSignalBlocker blocker(this);
        m_patient = patient;
        rebuild(State());
        QTreeWidgetItem* line = findLine(studyGuid);
        if (!line && topLevelItemCount() > 0) {
            line = topLevelItem(topLevelItemCount() - 1);
        }
        if (line) {
            fill(line);
            line->setExpanded(true);
            setCurrentItem(line);
        }
    }
    emit itemSelectionChanged();
}

StudyTree::State StudyTree::state()
{
    State now;
    for (QTreeWidgetItemIterator line(this); *line; ++line) {
        const QString key = lineOf(*line)->key();
        if ((*line)->isExpanded()) {
            now.open.insert(key);
        }
        if ((*line)->isSelected()) {
            now.selected.insert(key);
        }
    }
    if (QTreeWidgetItem* line = currentItem()) {
        now.current = lineOf(line)->key();
        now.currentStudy = lineOf(line)->node.study->getGUID();
        while (line->parent()) {
            line = line->parent();
        }
        now.currentRow = indexOfTopLevelItem(line);
    }
    return now;
}

void StudyTree::refresh()
{
    {
        const QSignalBlocker blocker(this);
        rebuild(state());
    }
    emit itemSelectionChanged();
}

void StudyTree::rebuild(const State& former)
{
    clear();
    QList<Data*> studies;
    if (m_patient) {
        m_patient->getAllStudies(studies);
    }
    for (Data* const study : studies) {
        TreeNode node;
        node.study = DataPointer<Study>(static_cast<Study*>(study));
        auto* const line = makeLine(node, study->getId(), QStringLiteral("Study"),
                                    style()->standardIcon(QStyle::SP_DirIcon));
        line->setChildIndicatorPolicy(QTreeWidgetItem::ShowIndicator);
        addTopLevelItem(line);
        if (former.open.contains(study->getGUID())) {
            fill(line);
            line->setExpanded(true);
        }
    }
    QTreeWidgetItem* line = findLine(former.current);
    if (!line) {
        line = findLine(former.currentStudy);
    }
    if (!line && former.currentRow >= 0) {
        line = topLevelItem(qMin(former.currentRow, topLevelItemCount() - 1));
    }
    if (line) {
        setCurrentItem(line);
    }
    for (const QString& key : former.selected) {
        if (QTreeWidgetItem* const selected = findLine(key)) {
            selected->setSelected(true);
        }
    }
}

void StudyTree::fillExpanded(QTreeWidgetItem* line)
{
    fill(line);
}

void StudyTree::fill(QTreeWidgetItem* item)
{
    StudyTreeLine* const line = lineOf(item);
    if (line->isFilled || !line->node.isStudy()) {
        return;
    }
    line->isFilled = true;
    const DataPointer<Study> study = line->node.study;
    QList<Data*> scans;
    QList<Data*> results;
    study->getAllData(scans);
    study->getAllProcessData(results);
    QHash<QString, QTreeWidgetItem*> lines;
    for (Data* const member : scans + results) {
        const DataDescription description = describeData(*member);
        const bool isResult = results.contains(member);
        auto* const child = makeLine(
            {study, DataPointer<Data>(member), QString()}, member->getId(), description.kind,
            style()->standardIcon(isResult ? QStyle::SP_FileDialogDetailedView
                                           : QStyle::SP_FileIcon));
        QTreeWidgetItem* const source =
            description.madeFrom ? lines.value(description.madeFrom->getGUID()) : nullptr;
        (source ? source : item)->addChild(child);
        lines.insert(member->getGUID(), child);
    }
    for (const Study::ItemProblem& problem : study->getUnreadableItems()) {
        item->addChild(makeLine({study, nullptr, problem.id}, problem.id,
                                QStringLiteral("Unreadable"),
                                style()->standardIcon(QStyle::SP_MessageBoxWarning)));
    }
    for (QTreeWidgetItem* const child : lines) {
        child->setExpanded(true);
    }
    if (item->childCount() == 0) {
        item->setChildIndicatorPolicy(QTreeWidgetItem::DontShowIndicator);
    }
}

void StudyTree::selectGuid(const QString& guid)
{
    QTreeWidgetItem* line = findLine(guid);
    for (int i = 0; i < topLevelItemCount() && !line; ++i) {
        fill(topLevelItem(i));
        line = findLine(guid);
    }
    if (line) {
        for (QTreeWidgetItem* parent = line->parent(); parent; parent = parent->parent()) {
            parent->setExpanded(true);
        }
        fill(line);
        line->setExpanded(true);
        setCurrentItem(line);
        scrollToItem(line);
    }
}

QTreeWidgetItem* StudyTree::findLine(const QString& guid) const
{
    for (QTreeWidgetItemIterator line(const_cast<StudyTree*>(this)); *line; ++line) {
        if (lineOf(*line)->key() == guid) {
            return *line;
        }
    }
    return nullptr;
}

TreeNode StudyTree::currentNode() const
{
    return currentItem() ? lineOf(currentItem())->node : TreeNode();
}

DataPointer<Study> StudyTree::currentStudy() const
{
    return currentNode().study;
}

QList<TreeNode> StudyTree::selectedNodes() const
{
    QList<TreeNode> nodes;
    for (QTreeWidgetItem* const line : selectedItems()) {
        nodes.append(lineOf(line)->node);
    }
    return nodes;
}

} // namespace kelp::patients

#include "moc_StudyTree.cpp"
