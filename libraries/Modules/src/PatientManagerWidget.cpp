#include "PatientManagerWidget.h"

#include "ActionButton.h"
#include "AppBase.h"
#include "DetailsText.h"
#include "HintOverlay.h"
#include "PatientActions.h"
#include "PatientListPane.h"
#include "PatientTransfer.h"
#include "SavedState.h"
#include "StudyTree.h"
#include "kelpCheck.h"
#include "kelpSettings.h"

#include <QAction>
#include <QHBoxLayout>
#include <QMenu>
#include <QScrollBar>
#include <QShortcut>
#include <QSplitter>
#include <QTextBrowser>
#include <QTreeView>
#include <QVBoxLayout>

namespace kelp::patients {

namespace {

constexpr const char* sourcePath = "libraries/Modules/src/PatientManagerWidget";
const QString patientKey = QStringLiteral("Gui/patientManager/patient");
const QString studyKey = QStringLiteral("Gui/patientManager/study");

QLayout* makeButtonRow(const QList<QAction*>& actions)
{
    auto* const row = new QHBoxLayout;
    for (QAction* const action : actions) {
        row->addWidget(new ActionButton(action));
    }
    row->addStretch();
    return row;
}

} // namespace

PatientManagerWidget::PatientManagerWidget(QWidget* parent)
    : QWidget(parent), m_list(new PatientListPane), m_tree(new StudyTree),
      m_details(new QTextBrowser), m_treeHint(new HintOverlay(m_tree->viewport())),
      m_actions(new PatientActions(m_list, m_tree, this)),
      m_transfer(new PatientTransfer(m_list, this))
{
    auto* const splitter = new QSplitter;
    splitter->setObjectName(QStringLiteral("patientSplitter"));
    splitter->setChildrenCollapsible(false);
    splitter->addWidget(makeListSide());
    splitter->addWidget(makeTreeSide());
    splitter->setStretchFactor(0, 2);
    splitter->setStretchFactor(1, 3);
    // A list that shows common names in full.
    constexpr int listCharacters = 70;
    const int listWidth = listCharacters * fontMetrics().averageCharWidth();
    splitter->setSizes({listWidth, 2 * listWidth});
    rememberSplitter(splitter, QStringLiteral("patientManager/patientSplitter"));
    auto* const box = new QVBoxLayout(this);
    box->addWidget(splitter);
    makeShortcuts();
    KELP_CONNECT(sourcePath, connect(m_list, SIGNAL(selectionChanged()), this,
                                     SLOT(patientSelectionChanged())));
    KELP_CONNECT(sourcePath, connect(m_tree, SIGNAL(itemSelectionChanged()), this,
                                     SLOT(nodeSelectionChanged())));
    KELP_CONNECT(sourcePath,
                 connect(m_transfer, SIGNAL(imported()), this, SLOT(refreshAfterImport())));
    m_actions->updateEnabled();
    showHints();
}

QWidget* PatientManagerWidget::makeListSide()
{
    auto* const side = new QWidget;
    auto* const box = new QVBoxLayout(side);
    box->setContentsMargins(0, 0, 0, 0);
    box->addWidget(m_list);
    box->addLayout(makeButtonRow({m_actions->newPatientAction, m_actions->editPatientAction,
                                  m_actions->deletePatientsAction}));
    box->addLayout(makeButtonRow({m_transfer->importAction, m_transfer->exportAction}));
    return side;
}

QWidget* PatientManagerWidget::makeTreeSide()
{
    m_details->setObjectName(QStringLiteral("details"));
    m_details->setOpenLinks(false);
    m_details->setFocusPolicy(Qt::ClickFocus);
    auto* const splitter = new QSplitter;
    splitter->setObjectName(QStringLiteral("detailsSplitter"));
    splitter->setChildrenCollapsible(false);
    splitter->addWidget(m_tree);
    splitter->addWidget(m_details);
    splitter->setStretchFactor(0, 1);
    splitter->setStretchFactor(1, 1);
    rememberSplitter(splitter, QStringLiteral("patientManager/detailsSplitter"));
    auto* const side = new QWidget;
    auto* const box = new QVBoxLayout(side);
    box->setContentsMargins(0, 0, 0, 0);
    box->addWidget(splitter, 1);
    box->addLayout(makeButtonRow({m_actions->newStudyAction, m_actions->addDataAction,
                                  m_actions->renameAction, m_actions->deleteNodesAction}));
    return side;
}

void PatientManagerWidget::makeShortcuts()
{
    const auto addShortcut = [](QWidget* where, const QKeySequence& keys, Qt::ShortcutContext when,
                                QObject* receiver, const char* slot) {
        auto* const shortcut = new QShortcut(keys, where, nullptr, nullptr, when);
        KELP_CONNECT(sourcePath, connect(shortcut, SIGNAL(activated()), receiver, slot));
    };
    addShortcut(this, QKeySequence::New, Qt::WidgetWithChildrenShortcut,
                m_actions->newPatientAction, SLOT(trigger()));
    addShortcut(this, QKeySequence(QStringLiteral("Ctrl+Shift+N")), Qt::WidgetWithChildrenShortcut,
                m_actions->newStudyAction, SLOT(trigger()));
    addShortcut(this, QKeySequence(QStringLiteral("Ctrl+D")), Qt::WidgetWithChildrenShortcut,
                m_actions->addDataAction, SLOT(trigger()));
    addShortcut(this, QKeySequence::Find, Qt::WidgetWithChildrenShortcut, m_list,
                SLOT(focusSearch()));
    addShortcut(m_list->view(), QKeySequence::Delete, Qt::WidgetShortcut,
                m_actions->deletePatientsAction, SLOT(trigger()));
    addShortcut(m_list->view(), Qt::Key_F2, Qt::WidgetShortcut, m_actions->editPatientAction,
                SLOT(trigger()));
    addShortcut(m_tree, QKeySequence::Delete, Qt::WidgetShortcut, m_actions->deleteNodesAction,
                SLOT(trigger()));
    addShortcut(m_tree, Qt::Key_F2, Qt::WidgetShortcut, m_actions->renameAction, SLOT(trigger()));
    KELP_CONNECT(sourcePath, connect(m_list->view(), SIGNAL(customContextMenuRequested(QPoint)),
                                     this, SLOT(showListMenu(QPoint))));
    KELP_CONNECT(sourcePath, connect(m_tree, SIGNAL(customContextMenuRequested(QPoint)), this,
                                     SLOT(showTreeMenu(QPoint))));
    KELP_CONNECT(sourcePath,
                 connect(m_list->view(), SIGNAL(activated(QModelIndex)), this, SLOT(enterTree())));
}

void PatientManagerWidget::refresh()
{
    m_list->refresh();
    m_tree->refresh();
    if (!m_isRestored) {
        m_isRestored = true;
        m_list->select(Settings::get(patientKey, QString()));
    }
    showHints();
}

void PatientManagerWidget::refreshAfterImport()
{
    // A replaced patient is another object, with studies of its own.
    m_shownPatient = nullptr;
    refresh();
}

void PatientManagerWidget::patientSelectionChanged()
{
    const DataPointer<Patient> patient = m_list->currentPatient();
    if (patient != m_shownPatient) {
        m_shownPatient = patient;
        const DataPointer<Study> current = AppBase::getCurrentStudy();
        m_tree->setPatient(patient,
                           current ? current->getGUID() : Settings::get(studyKey, QString()));
    }
    announceSelection();
    m_actions->updateEnabled();
    showDetails();
    showHints();
}

void PatientManagerWidget::nodeSelectionChanged()
{
    announceSelection();
    m_actions->updateEnabled();
    showDetails();
    showHints();
}

void PatientManagerWidget::announceSelection()
{
    const DataPointer<Study> study = m_tree->currentStudy();
    if (AppBase::getCurrentPatient() == m_shownPatient && AppBase::getCurrentStudy() == study) {
        return;
    }
    AppBase::setCurrent(m_shownPatient, study);
    if (m_shownPatient) {
        Settings::set(patientKey, m_shownPatient->getGUID());
    }
    if (study) {
        Settings::set(studyKey, study->getGUID());
    }
}

void PatientManagerWidget::showDetails()
{
    QList<DetailsSection> sections;
    const TreeNode node = m_tree->currentNode();
    if (m_shownPatient) {
        sections.append(patientDetails(*m_shownPatient));
    }
    if (!node.isNull()) {
        sections.prepend(studyDetails(*node.study));
    }
    if (node.item) {
        sections.prepend(itemDetails(*node.item));
    } else if (node.isUnreadable()) {
        sections.prepend(unreadableDetails(*node.study, node.unreadableId));
    }
    const QString html = toHtml(sections);
    m_details->setHtml(html);
}

void PatientManagerWidget::showHints()
{
    const int selected = m_list->selectedPatients().size();
    QString hint;
    if (!m_shownPatient) {
        hint = selected > 1 ? QStringLiteral("%1 patients are selected.").arg(selected)
                            : QStringLiteral("Select a patient to see its studies and data.");
    } else if (m_tree->topLevelItemCount() == 0) {
        hint = QStringLiteral("This patient has no study yet.\nPress \"New Study\" to make one.");
    }
    m_treeHint->setHint(hint);
}

void PatientManagerWidget::enterTree()
{
    m_tree->setFocus(Qt::OtherFocusReason);
}

void PatientManagerWidget::showListMenu(const QPoint& position)
{
    QMenu menu(this);
    menu.addActions({m_actions->newPatientAction, m_actions->newStudyAction});
    menu.addSeparator();
    menu.addActions({m_actions->editPatientAction, m_actions->deletePatientsAction});
    menu.addSeparator();
    menu.addActions({m_transfer->exportAction, m_transfer->importAction});
    menu.exec(m_list->view()->viewport()->mapToGlobal(position));
}

void PatientManagerWidget::showTreeMenu(const QPoint& position)
{
    QMenu menu(this);
    menu.addActions({m_actions->newStudyAction, m_actions->addDataAction});
    menu.addSeparator();
    menu.addActions({m_actions->renameAction, m_actions->deleteNodesAction});
    menu.exec(m_tree->viewport()->mapToGlobal(position));
}

} // namespace kelp::patients

#include "moc_PatientManagerWidget.cpp"
