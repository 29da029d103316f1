#include "QtModuleTabSelector.h"

#include "QtAppModule.h"
#include "kelpCheck.h"

#include <QScrollArea>
#include <QSignalBlocker>
#include <QTabBar>
#include <QTabWidget>

namespace {

QTabWidget::TabPosition tabPosition(QtModuleSelector::Position position)
{
    switch (position) {
    case QtModuleSelector::Left:
        return QTabWidget::West;
    case QtModuleSelector::Right:
        return QTabWidget::East;
    case QtModuleSelector::Bottom:
        return QTabWidget::South;
    case QtModuleSelector::Top:
        break;
    }
    return QTabWidget::North;
}

} // namespace

QtModuleTabSelector::QtModuleTabSelector(int position, bool selectable, bool closable,
                                         bool showDisabled, bool scrolls)
    : QtModuleSelector(static_cast<Position>(position)), m_tabs(new QTabWidget),
      m_showDisabled(showDisabled)
{
    m_tabs->setObjectName(QStringLiteral("moduleTabs"));
    m_tabs->setDocumentMode(true);
    m_tabs->setTabPosition(tabPosition(getPosition()));
    m_tabs->setTabsClosable(closable);
    m_tabs->setUsesScrollButtons(scrolls);
    if (!selectable) {
        m_tabs->tabBar()->setAttribute(Qt::WA_TransparentForMouseEvents);
        m_tabs->tabBar()->setFocusPolicy(Qt::NoFocus);
    }
    KELP_CONNECT("libraries/Gui/src/QtModuleTabSelector",
                 connect(m_tabs, SIGNAL(currentChanged(int)), this, SLOT(tabChosen(int))));
    KELP_CONNECT("libraries/Gui/src/QtModuleTabSelector",
                 connect(m_tabs, SIGNAL(tabCloseRequested(int)), this, SLOT(closeTab(int))));
}

QtModuleTabSelector::~QtModuleTabSelector()
{
    if (m_tabs && !m_tabs->parent()) {
        delete m_tabs;
    }
}

QWidget* QtModuleTabSelector::getWidget()
{
    return m_tabs;
}

void QtModuleTabSelector::setModule(int index, QtAppModule* module)
{
    // Pages come and go here without the user's asking for a module.
    const QSignalBlocker quiet(m_tabs);
    // On a screen that is too small for a module it scrolls, instead of losing its last buttons.
    auto* const page = new QScrollArea;
    page->setFrameShape(QFrame::NoFrame);
    page->setWidgetResizable(true);
    page->setFocusPolicy(Qt::NoFocus);
    if (QWidget* const widget = module->getWidget()) {
        page->setWidget(widget);
    }
    m_tabs->insertTab(index, page, QString());
}

void QtModuleTabSelector::addModule(const QString& name, int index)
{
    m_tabs->setTabText(index, name);
}

void QtModuleTabSelector::moduleActivated(const QString& name, int index)
{
    const QSignalBlocker quiet(m_tabs);
    m_tabs->setTabText(index, name);
    m_tabs->setTabVisible(index, true);
    m_tabs->setCurrentIndex(index);
}

void QtModuleTabSelector::moduleDeactivated(const QString&, int) {}

void QtModuleTabSelector::moduleEnabled(const QString&, int index)
{
    const QSignalBlocker quiet(m_tabs);
    m_tabs->setTabEnabled(index, true);
    m_tabs->setTabVisible(index, true);
}

void QtModuleTabSelector::moduleDisabled(const QString&, int index)
{
    const QSignalBlocker quiet(m_tabs);
    m_tabs->setTabEnabled(index, false);
    m_tabs->setTabVisible(index, m_showDisabled);
}

void QtModuleTabSelector::tabChosen(int index)
{
    if (index >= 0) {
        emit moduleSelected(index);
    }
}

void QtModuleTabSelector::closeTab(int index)
{
    // The module stays: the menu brings its tab back.
    m_tabs->setTabVisible(index, false);
}

#include "moc_QtModuleTabSelector.cpp"
