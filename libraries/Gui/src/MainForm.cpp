#include "MainForm.h"

#include "Appearance.h"
#include "DataIOManager.h"
#include "ElidedLabel.h"
#include "ScreenPlace.h"
#include "kelpCheck.h"
#include "kelpSettings.h"

#include <QAction>
#include <QActionGroup>
#include <QCloseEvent>
#include <QDesktopServices>
#include <QDir>
#include <QMenuBar>
#include <QMessageBox>
#include <QStatusBar>
#include <QUrl>

namespace kelp {

namespace {

constexpr const char* sourcePath = "libraries/Gui/src/MainForm";
const QString geometryKey = QStringLiteral("Gui/mainForm/geometry");
const QString stateKey = QStringLiteral("Gui/mainForm/state");

QAction* newAction(QMenu* menu, const QString& text, const QKeySequence& shortcut,
                   const QString& name)
{
    QAction* const action = menu->addAction(text);
    action->setShortcut(shortcut);
    action->setObjectName(name);
    return action;
}

} // namespace

MainForm::MainForm()
{
    setObjectName(QStringLiteral("mainForm"));
    makeFileMenu();
    makeViewMenu();
    makeHelpMenu();
    makeStatusBar();
    showTitle();
}

void MainForm::makeFileMenu()
{
    QMenu* const menu = menuBar()->addMenu(QStringLiteral("&File"));
    m_saveAction =
        newAction(menu, QStringLiteral("&Save"), QKeySequence::Save, QStringLiteral("saveAction"));
    KELP_CONNECT(sourcePath,
                 connect(m_saveAction, SIGNAL(triggered()), this, SIGNAL(saveRequested())));
    QAction* const folder = newAction(menu, QStringLiteral("&Open Store Folder"), {},
                                      QStringLiteral("openStoreFolderAction"));
    KELP_CONNECT(sourcePath, connect(folder, SIGNAL(triggered()), this, SLOT(openStoreFolder())));
    menu->addSeparator();
    QAction* const quit =
        newAction(menu, QStringLiteral("&Quit"), QKeySequence(QStringLiteral("Ctrl+Q")),
                  QStringLiteral("quitAction"));
    KELP_CONNECT(sourcePath, connect(quit, SIGNAL(triggered()), this, SLOT(close())));
}

void MainForm::makeViewMenu()
{
    m_viewMenu = menuBar()->addMenu(QStringLiteral("&View"));
    m_moduleActions = new QActionGroup(this);
    KELP_CONNECT(sourcePath, connect(m_moduleActions, SIGNAL(triggered(QAction*)), this,
                                     SLOT(requestModule(QAction*))));
    m_behindModules = m_viewMenu->addSeparator();

    QMenu* const menu = m_viewMenu->addMenu(QStringLiteral("&Appearance"));
    auto* const group = new QActionGroup(this);
    const QList<QPair<Appearance, QString>> entries = {
        {Appearance::System, QStringLiteral("&System")},
        {Appearance::Light, QStringLiteral("&Light")},
        {Appearance::Dark, QStringLiteral("&Dark")}};
    for (const auto& [appearance, text] : entries) {
        QAction* const action = menu->addAction(text);
        action->setCheckable(true);
        action->setChecked(appearance == storedAppearance());
        action->setData(static_cast<int>(appearance));
        group->addAction(action);
    }
    KELP_CONNECT(sourcePath, connect(group, SIGNAL(triggered(QAction*)), this,
                                     SLOT(chooseAppearance(QAction*))));

    m_fullScreenAction = newAction(m_viewMenu, QStringLiteral("&Full Screen"),
                                   QKeySequence(Qt::Key_F11), QStringLiteral("fullScreenAction"));
    m_fullScreenAction->setCheckable(true);
    KELP_CONNECT(sourcePath, connect(m_fullScreenAction, SIGNAL(triggered(bool)), this,
                                     SLOT(setFullScreen(bool))));
}

void MainForm::makeHelpMenu()
{
    QMenu* const menu = menuBar()->addMenu(QStringLiteral("&Help"));
    m_helpAction = newAction(menu, QStringLiteral("&Help"), QKeySequence(Qt::Key_F1),
                             QStringLiteral("helpAction"));
    m_helpAction->setEnabled(false);
    KELP_CONNECT(sourcePath, connect(m_helpAction, SIGNAL(triggered()), this, SLOT(requestHelp())));
    QAction* const about =
        newAction(menu, QStringLiteral("&About"), {}, QStringLiteral("aboutAction"));
    KELP_CONNECT(sourcePath, connect(about, SIGNAL(triggered()), this, SLOT(showAbout())));
}

void MainForm::makeStatusBar()
{
    const auto makeLabel = [this](const char* name, int widestCharacters) {
        auto* const label = new ElidedLabel(this);
        label->setObjectName(QString::fromLatin1(name));
        constexpr int labelMargin = 3;
        label->setMargin(labelMargin);
        label->setWidestCharacters(widestCharacters);
        return label;
    };
    constexpr int fewestCharacters = 20;
    m_noticeLabel = makeLabel("noticeLabel", fewestCharacters);
    m_noticeLabel->setForegroundRole(QPalette::BrightText);
    // As wide as the others leave it room for.
    m_noticeLabel->setSizePolicy(QSizePolicy::Ignored, QSizePolicy::Fixed);
    m_noticeLabel->setMinimumWidth(fewestCharacters * fontMetrics().averageCharWidth());
    statusBar()->addWidget(m_noticeLabel, 1);
    // Together they leave a narrow form room for passing messages.
    const auto addLabel = [this, &makeLabel](const char* name, int widestCharacters) {
        auto* const label = makeLabel(name, widestCharacters);
        statusBar()->addPermanentWidget(label);
        return label;
    };
    m_failureLabel = addLabel("saveFailureLabel", 50);
    m_failureLabel->setForegroundRole(QPalette::BrightText);
    m_patientLabel = addLabel("patientLabel", 60);
    m_studyLabel = addLabel("studyLabel", 40);
    m_scanLabel = addLabel("scanLabel", 40);
    setSelection({}, {});
    setScan({});
    setNotice({});
    setSaveState(false, {});
}

void MainForm::setApplicationTitle(const QString& title)
{
    m_title = title;
    showTitle();
}

void MainForm::showTitle()
{
    setWindowTitle(m_title + QStringLiteral("[*]") +
                   (m_saveFailed ? QStringLiteral(" (changes could not be saved)") : QString()));
}

void MainForm::setSelectorWidget(QWidget* widget)
{
    setCentralWidget(widget);
}

void MainForm::setModuleNames(const QStringList& names)
{
    qDeleteAll(m_moduleActions->actions());
    constexpr int digits = 9;
    for (int index = 0; index < names.size(); ++index) {
        auto* const action = new QAction(names.at(index), m_moduleActions);
        action->setCheckable(true);
        action->setData(index);
        if (index < digits) {
            action->setShortcut(QKeySequence(QStringLiteral("Ctrl+%1").arg(index + 1)));
        }
        m_viewMenu->insertAction(m_behindModules, action);
    }
}

void MainForm::setCurrentModule(int index)
{
    for (QAction* const action : m_moduleActions->actions()) {
        action->setChecked(action->data().toInt() == index);
    }
}

void MainForm::setHelpModule(int index)
{
    m_helpModule = index;
    m_helpAction->setEnabled(index >= 0);
}

void MainForm::setSelection(const QString& patient, const QString& study)
{
    m_patientLabel->setFullText(patient.isEmpty() ? QStringLiteral("No patient selected")
                                                  : QStringLiteral("Patient: ") + patient);
    m_studyLabel->setFullText(QStringLiteral("Study: ") + study);
    m_studyLabel->setVisible(!study.isEmpty());
}

void MainForm::setScan(const QString& scan)
{
    m_scanLabel->setFullText(QStringLiteral("Scan: ") + scan);
    m_scanLabel->setVisible(!scan.isEmpty());
}

void MainForm::setNotice(const QString& notice)
{
    if (notice == m_noticeLabel->toolTip() && !notice.isEmpty()) {
        return;
    }
    m_noticeLabel->setFullText(notice);
    if (!notice.isEmpty()) {
        // A passing message would be painted below it.
        statusBar()->clearMessage();
    }
    m_noticeLabel->setVisible(!notice.isEmpty());
}

void MainForm::setSaveState(bool isUnsaved, const QString& failure)
{
    m_saveFailed = isUnsaved && !failure.isEmpty();
    showTitle();
    setWindowModified(isUnsaved);
    m_failureLabel->setFullText(QStringLiteral("Not saved: ") + failure);
    m_failureLabel->setVisible(m_saveFailed);
}

void MainForm::restorePlace()
{
    const QByteArray geometry = Settings::get(geometryKey, QVariant()).toByteArray();
    if (geometry.isEmpty() || !restoreGeometry(geometry)) {
        constexpr QSize firstSize(1200, 760);
        resize(firstSize);
    }
    if (!isMaximized() && !isFullScreen()) {
        setGeometry(placeOnScreens(this->geometry()));
    }
    restoreState(Settings::get(stateKey, QVariant()).toByteArray());
    m_fullScreenAction->setChecked(isFullScreen());
}

void MainForm::storePlace() const
{
    Settings::set(geometryKey, QVariant(saveGeometry()));
    Settings::set(stateKey, QVariant(saveState()));
}

void MainForm::closeEvent(QCloseEvent* event)
{
    if (m_closeQuestion && !m_closeQuestion()) {
        event->ignore();
        return;
    }
    storePlace();
    event->accept();
}

void MainForm::changeEvent(QEvent* event)
{
    QMainWindow::changeEvent(event);
    if (event->type() == QEvent::WindowStateChange) {
        m_fullScreenAction->setChecked(isFullScreen());
    }
}

void MainForm::requestModule(QAction* action)
{
    emit moduleRequested(action->data().toInt());
}

void MainForm::requestHelp()
{
    emit moduleRequested(m_helpModule);
}

void MainForm::chooseAppearance(QAction* action)
{
    kelp::chooseAppearance(static_cast<Appearance>(action->data().toInt()));
}

void MainForm::setFullScreen(bool fullScreen)
{
    // Not showNormal, so that a maximised form is maximised again afterwards.
    setWindowState(fullScreen ? windowState() | Qt::WindowFullScreen
                              : windowState() & ~Qt::WindowFullScreen);
}

void MainForm::openStoreFolder()
{
    const QString folder = DataIOManager::isStoreOpen() ? DataIOManager::storeFolder()
                                                        : DataIOManager::defaultStoreFolder();
    if (!QDesktopServices::openUrl(QUrl::fromLocalFile(folder))) {
        QMessageBox::information(
            this, QStringLiteral("Store Folder"),
            QStringLiteral("Patients and scans are kept in the folder\n%1").arg(folder));
    }
}

void MainForm::showAbout()
{
    const QString folder = DataIOManager::isStoreOpen()
                               ? QDir::toNativeSeparators(DataIOManager::storeFolder())
                               : QStringLiteral("none open");
    QMessageBox::about(
        this, QStringLiteral("About"),
        QStringLiteral("%1\nVersion %2\n\nSegmentation of retinal layers in optical coherence "
                       "tomography, for research.\n\nPatient store: %3\nQt %4")
            .arg(m_title, QStringLiteral(TESSERA_VERSION), folder,
                 QString::fromLatin1(qVersion())));
}

} // namespace kelp

#include "moc_MainForm.cpp"
