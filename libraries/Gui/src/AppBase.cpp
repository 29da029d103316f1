#include "AppBase.h"

#include "Appearance.h"
#include "FailureBox.h"
#include "GuardedApplication.h"
#include "IndicatorStyle.h"
#include "MainForm.h"
#include "ModuleSwitcher.h"
#include "PatientSaver.h"
#include "ProgressDisplay.h"
#include "QtAppModule.h"
#include "QtModuleSelector.h"
#include "StoreOpening.h"
#include "kelpCheck.h"
#include "kelpLog.h"
#include "kelpSettings.h"
#include "kelpSignalWatch.h"

#include <QLocale>
#include <QMessageBox>
#include <QPushButton>
#include <QStatusBar>

namespace {

constexpr const char* sourcePath = "libraries/Gui/src/AppBase";
const QString lastModuleKey = QStringLiteral("Gui/lastModule");

AppBase* theInstance = nullptr;

/// What is selected in the patient manager, and the scan that the open tab shows.
struct Selection
{
    DataPointer<Patient> patient;
    DataPointer<Study> study;
    QString scan;
    CaSubject listeners;
};

Selection& selection()
{
    static Selection current;
    return current;
}

QString describe(const DataPointer<Patient>& patient)
{
    if (!patient) {
        return {};
    }
    const QString birthDate =
        QLocale::system().toString(patient->getBirthDate(), QLocale::ShortFormat);
    return birthDate.isEmpty() ? patient->getName()
                               : QStringLiteral("%1 (%2)").arg(patient->getName(), birthDate);
}

void showSelection(kelp::MainForm& form)
{
    const Selection& current = selection();
    form.setSelection(describe(current.patient),
                      current.study ? current.study->getId() : QString());
    form.setScan(current.scan);
}

enum class EndWish
{
    Retry,
    QuitWithoutSaving,
    Stay
};

EndWish askAfterFailedSave(QWidget* parent, const QString& reason)
{
    QMessageBox box(QMessageBox::Critical, QStringLiteral("Saving Failed"),
                    QStringLiteral("The changes could not be saved."), QMessageBox::NoButton,
                    parent);
    box.setInformativeText(reason);
    auto* const retry = box.addButton(QStringLiteral("&Retry"), QMessageBox::AcceptRole);
    auto* const quit =
        box.addButton(QStringLiteral("&Quit without saving"), QMessageBox::DestructiveRole);
    auto* const cancel = box.addButton(QStringLiteral("&Cancel"), QMessageBox::RejectRole);
    box.setDefaultButton(retry);
    box.setEscapeButton(cancel);
    box.exec();
    if (box.clickedButton() == retry) {
        return EndWish::Retry;
    }
    return box.clickedButton() == quit ? EndWish::QuitWithoutSaving : EndWish::Stay;
}

} // namespace

AppBase::AppBase(int& argumentCount, char** arguments, AppBaseImpl*, bool, bool)
{
    kelp::check(!theInstance, {sourcePath, "AppBase::AppBase"}, "There is an application already");
    if (!QCoreApplication::instance()) {
        QCoreApplication::setAttribute(Qt::AA_EnableHighDpiScaling);
        QCoreApplication::setAttribute(Qt::AA_UseHighDpiPixmaps);
        m_application = std::make_unique<kelp::GuardedApplication>(argumentCount, arguments);
    }
    theInstance = this;
    QApplication::setStyle(new kelp::IndicatorStyle);
    kelp::applyAppearance(kelp::storedAppearance());
    m_saver = std::make_unique<kelp::PatientSaver>(&DataIOManager::storePatient);
    m_form = std::make_unique<kelp::MainForm>();
    m_modules = std::make_unique<kelp::ModuleSwitcher>();
    m_progress = std::make_unique<kelp::ProgressDisplay>();
    m_form->setCloseQuestion([this] { return prepareToClose(); });

    KELP_CONNECT(sourcePath,
                 connect(m_saver.get(), SIGNAL(stateChanged()), this, SLOT(showSaveState())));
    KELP_CONNECT(sourcePath, connect(m_saver.get(), SIGNAL(saveFailed(const QString&)), this,
                                     SLOT(tellSaveFailure(const QString&))));
    KELP_CONNECT(sourcePath,
                 connect(m_form.get(), SIGNAL(saveRequested()), this, SLOT(saveAtRequest())));
    KELP_CONNECT(sourcePath, connect(m_form.get(), SIGNAL(moduleRequested(int)), m_modules.get(),
                                     SLOT(enter(int))));
    KELP_CONNECT(sourcePath,
                 connect(m_modules.get(), SIGNAL(left()), this, SLOT(saveBetweenModules())));
    KELP_CONNECT(sourcePath,
                 connect(m_modules.get(), SIGNAL(entered(int)), this, SLOT(rememberModule(int))));
    showSelection(*m_form);
}

AppBase::~AppBase()
{
    // The modules delete their widgets, which stand in the form, so they go before it.
    m_modules.reset();
    m_progress.reset();
    m_form.reset();
    m_saver.reset();
    selection().patient = nullptr;
    selection().study = nullptr;
    selection().scan.clear();
    theInstance = nullptr;
}

AppBase* AppBase::getInstance()
{
    return theInstance;
}

void AppBase::setApplicationIdentification(const QString& title, const QIcon& icon,
                                           const QString& name)
{
    QApplication::setApplicationName(name);
    QApplication::setApplicationDisplayName(title);
    QApplication::setApplicationVersion(QStringLiteral(TESSERA_VERSION));
    QApplication::setWindowIcon(icon);
    m_form->setApplicationTitle(title);
}

void AppBase::setModuleSelector(QtModuleSelector* selector)
{
    m_modules->setSelector(std::unique_ptr<QtModuleSelector>(selector));
    if (selector) {
        m_form->setSelectorWidget(selector->getWidget());
    }
}

bool AppBase::addModule(QtAppModule* module)
{
    const bool isAdded = m_modules->add(module);
    m_form->setModuleNames(m_modules->names());
    return isAdded;
}

void AppBase::setHelpModule(const QString& name)
{
    m_form->setHelpModule(m_modules->indexOf(name));
}

int AppBase::run()
{
    // An end of the session, or Ctrl+C in the console, loses nothing.
    const kelp::SignalWatch signalWatch([] { QCoreApplication::quit(); });
    if (!kelp::openStoreOrAsk(nullptr)) {
        return 1;
    }
    m_form->restorePlace();
    m_form->show();
    enterFirstModule();
    m_isRunning = true;
    m_isClosed = false;
    // From inside the event loop, so that the program can be ended while its box is open.
    QMetaObject::invokeMethod(this, "tellStoreProblems", Qt::QueuedConnection);
    const int exitCode = QApplication::exec();
    m_isRunning = false;
    if (!m_isClosed) {
        saveAfterForcedEnd();
    }
    return exitCode;
}

void AppBase::tellStoreProblems()
{
    kelp::showStoreProblems(m_form.get(), DataIOManager::getProblems());
}

void AppBase::enterFirstModule()
{
    const int last = m_modules->indexOf(kelp::Settings::get(lastModuleKey, QString()));
    // The first tab brings back what was selected, which the others show.
    m_modules->enter(0);
    if (last > 0) {
        m_modules->enter(last);
    }
}

CaError AppBase::getPatientList(QList<Patient*>& patients)
{
    return DataIOManager::getPatientList(patients);
}

DataPointer<Patient> AppBase::getCurrentPatient()
{
    return selection().patient;
}

DataPointer<Study> AppBase::getCurrentStudy()
{
    return selection().study;
}

void AppBase::setCurrent(const DataPointer<Patient>& patient, const DataPointer<Study>& study)
{
    if (theInstance) {
        theInstance->m_saver->save(kelp::PatientSaver::InPassing);
    }
    if (selection().study != study) {
        setStatusNotice({});
    }
    selection().patient = patient;
    selection().study = study;
    if (theInstance) {
        showSelection(*theInstance->m_form);
    }
    currentSelection().notify(study.data(), "currentStudy");
}

CaSubject& AppBase::currentSelection()
{
    return selection().listeners;
}

void AppBase::markChanged(const DataPointer<Patient>& patient)
{
    if (theInstance) {
        theInstance->m_saver->mark(patient);
        // The change may be one of the name that is shown.
        showSelection(*theInstance->m_form);
    }
}

void AppBase::markCurrentChanged()
{
    markChanged(getCurrentPatient());
}

void AppBase::forgetChanges(const DataPointer<Patient>& patient)
{
    if (theInstance) {
        theInstance->m_saver->forget(patient);
    }
}

bool AppBase::saveChanges()
{
    return !theInstance || theInstance->m_saver->save(kelp::PatientSaver::AtRequest);
}

bool AppBase::hasUnsavedChanges()
{
    return theInstance && theInstance->m_saver->hasUnsaved();
}

void AppBase::setScanDescription(const QString& description)
{
    selection().scan = description;
    if (theInstance) {
        theInstance->m_form->setScan(description);
    }
}

void AppBase::setStatusNotice(const QString& notice)
{
    if (theInstance) {
        theInstance->m_form->setNotice(notice);
    }
}

void AppBase::showStatusMessage(const QString& message)
{
    constexpr int shownMs = 8000;
    if (theInstance) {
        theInstance->m_form->statusBar()->showMessage(message, shownMs);
    }
}

QWidget* AppBase::getMainForm()
{
    return theInstance ? theInstance->m_form.get() : nullptr;
}

void AppBase::saveBetweenModules()
{
    m_saver->save(kelp::PatientSaver::InPassing);
}

void AppBase::saveAtRequest()
{
    if (saveChanges()) {
        showStatusMessage(QStringLiteral("All changes are saved."));
    }
}

void AppBase::showSaveState()
{
    m_form->setSaveState(m_saver->hasUnsaved(), m_saver->failure());
}

void AppBase::tellSaveFailure(const QString& reason)
{
    kelp::showFailure(m_form.get(), QStringLiteral("Saving Failed"),
                      QStringLiteral("The changes could not be saved. They are kept in memory and "
                                     "saved at the next try.\n\n") +
                          reason);
}

void AppBase::rememberModule(int index)
{
    kelp::Settings::set(lastModuleKey, m_modules->names().value(index));
    m_form->setCurrentModule(index);
}

bool AppBase::prepareToClose()
{
    const int open = m_modules->current();
    m_modules->leave();
    if (!saveAtEnd()) {
        m_modules->enter(open);
        return false;
    }
    m_isClosed = true;
    if (m_isRunning) {
        // Whatever other windows are still there.
        QCoreApplication::quit();
    }
    return true;
}

bool AppBase::saveAtEnd()
{
    while (!m_saver->save(kelp::PatientSaver::CallerTells)) {
        const EndWish wish = askAfterFailedSave(m_form.get(), m_saver->failure());
        if (wish != EndWish::Retry) {
            return wish == EndWish::QuitWithoutSaving;
        }
    }
    return true;
}

void AppBase::saveAfterForcedEnd()
{
    m_modules->leave();
    m_form->storePlace();
    if (!m_saver->save(kelp::PatientSaver::CallerTells)) {
        kelp::Log::getInstance(sourcePath, "AppBase::run", __LINE__)
            << "Changes could not be saved: " << m_saver->failure();
    }
}

#include "moc_AppBase.cpp"
