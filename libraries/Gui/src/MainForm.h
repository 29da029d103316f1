#pragma once

#include "QtModuleSelector.h"

#include <QMainWindow>
#include <QStringList>

#include <functional>

class QAction;
class QActionGroup;
class QMenu;

namespace kelp {

class ElidedLabel;

/// The window of the application: menus, the modules, the status bar. Knows no module and no data;
/// tells by signals what the user asks for.
class MainForm : public QMainWindow
{
    Q_OBJECT

public:
    /// Asked before the form closes; false keeps it open.
    using CloseQuestion = std::function<bool()>;

    MainForm();

    void setCloseQuestion(const CloseQuestion& question) { m_closeQuestion = question; }
    void setApplicationTitle(const QString& title);
    /// Takes the selector's control with the modules in it.
    void setSelectorWidget(QWidget* widget);
    /// One entry of the View menu for each.
    void setModuleNames(const QStringList& names);
    void setCurrentModule(int index);
    /// What F1 asks for; -1 for nothing.
    void setHelpModule(int index);

    void setSelection(const QString& patient, const QString& study);
    void setScan(const QString& scan);
    /// A line that stays until the next one; empty for none. Passing messages go before it.
    void setNotice(const QString& notice);
    /// The failure is the reason why the last save failed; empty if it did not.
    void setSaveState(bool isUnsaved, const QString& failure);

    /// Size, place and state of the last run, moved onto a screen that is there.
    void restorePlace();
    void storePlace() const;

signals:
    void saveRequested();
    void moduleRequested(int index);

protected:
    void closeEvent(QCloseEvent* event) override;
    void changeEvent(QEvent* event) override;

private slots:
    void requestModule(QAction* action);
    void requestHelp();
    void chooseAppearance(QAction* action);
    void setFullScreen(bool fullScreen);
    void openStoreFolder();
    void showAbout();

private:
    void makeFileMenu();
    void makeViewMenu();
    void makeHelpMenu();
    void makeStatusBar();
    void showTitle();

    CloseQuestion m_closeQuestion;
    QString m_title;
    bool m_saveFailed = false;
    QMenu* m_viewMenu = nullptr;
    QAction* m_behindModules = nullptr;
    QAction* m_saveAction = nullptr;
    QAction* m_fullScreenAction = nullptr;
    QAction* m_helpAction = nullptr;
    QActionGroup* m_moduleActions = nullptr;
    int m_helpModule = -1;
    ElidedLabel* m_noticeLabel = nullptr;
    ElidedLabel* m_patientLabel = nullptr;
    ElidedLabel* m_studyLabel = nullptr;
    ElidedLabel* m_scanLabel = nullptr;
    ElidedLabel* m_failureLabel = nullptr;
};

} // namespace kelp
