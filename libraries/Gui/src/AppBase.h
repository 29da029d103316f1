#pragma once

#include "DataIOManager.h"

#include <QIcon>
#include <QObject>
#include <QString>

#include <memory>

class AppBaseImpl;
class QApplication;
class QtAppModule;
class QtModuleSelector;
class QWidget;

namespace kelp {
class MainForm;
class ModuleSwitcher;
class PatientSaver;
class ProgressDisplay;
} // namespace kelp

/// The application object: the main form with its modules, the current patient and study, and the
/// saving of what the user made. Built before any module, deleted last; one a process.
///
/// The static operations work without an instance too (there is then nothing to save to), so that a
/// widget can be shown by itself.
class AppBase : public QObject, public CaSubject
{
    Q_OBJECT

public:
    /// Makes the QApplication unless there is one. The implementation pointer and the flags are
    /// part of the frame's interface; null and false here.
    AppBase(int& argumentCount, char** arguments, AppBaseImpl* implementation, bool, bool);
    ~AppBase() override;
    static AppBase* getInstance();

    /// What stands in the title bar, in boxes and in the task bar; name is the program's own.
    void setApplicationIdentification(const QString& title, const QIcon& icon, const QString& name);
    /// Takes ownership; modules added so far are handed to it.
    void setModuleSelector(QtModuleSelector* selector);
    /// Takes ownership. False for null or a name that is taken; a module refused is deleted.
    bool addModule(QtAppModule* module);
    /// The module of this name is the one that F1 opens.
    void setHelpModule(const QString& name);
    /// Opens the store, shows the main form, enters the module that was open last or else the
    /// first, and holds the event loop. Returns the exit code.
    int run();

    static CaError getPatientList(QList<Patient*>& patients);
    static DataPointer<Patient> getCurrentPatient();
    static DataPointer<Study> getCurrentStudy();
    /// For the patient manager only: what is selected there. Saves what is unsaved first, then
    /// tells the listeners of currentSelection.
    static void setCurrent(const DataPointer<Patient>& patient, const DataPointer<Study>& study);
    /// Notified with the name "currentStudy" after each setCurrent.
    static CaSubject& currentSelection();

    /// The patient's tree differs from what is stored: the title shows it, and it is saved as soon
    /// as the event loop is free. To be called after every change that the user made.
    static void markChanged(const DataPointer<Patient>& patient);
    /// markChanged of the current patient.
    static void markCurrentChanged();
    /// The patient was deleted from the store: changes of it are not to be saved any more, which
    /// would bring it back.
    static void forgetChanges(const DataPointer<Patient>& patient);
    /// Stores at once all that is marked. A failure is shown with its reason, the data stay in
    /// memory and marked, and the result is false.
    static bool saveChanges();
    static bool hasUnsavedChanges();

    /// The current scan in the words of the status bar; empty for none.
    static void setScanDescription(const QString& description);
    /// A line in the status bar that stays until the next one, or until another study is selected;
    /// empty for none.
    static void setStatusNotice(const QString& notice);
    /// A passing message in the status bar.
    static void showStatusMessage(const QString& message);
    /// The parent of boxes that belong to no module; null before the form is made.
    static QWidget* getMainForm();

private slots:
    void saveBetweenModules();
    void saveAtRequest();
    void showSaveState();
    void tellSaveFailure(const QString& reason);
    void rememberModule(int index);
    void tellStoreProblems();

private:
    bool prepareToClose();
    bool saveAtEnd();
    void saveAfterForcedEnd();
    void enterFirstModule();

    std::unique_ptr<QApplication> m_application;
    std::unique_ptr<kelp::PatientSaver> m_saver;
    std::unique_ptr<kelp::MainForm> m_form;
    std::unique_ptr<kelp::ModuleSwitcher> m_modules;
    std::unique_ptr<kelp::ProgressDisplay> m_progress;
    bool m_isRunning = false;
    bool m_isClosed = false;
};
