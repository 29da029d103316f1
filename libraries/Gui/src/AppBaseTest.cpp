#include "DialogDriver.h"
#include "FrameTestSupport.h"
#include "MainForm.h"
#include "Waiting.h"
#include "kelpException.h"
#include "kelpSettings.h"

#include <QApplication>
#include <QDir>
#include <QFile>
#include <QIcon>
#include <QMessageBox>
#include <QPushButton>
#include <QStatusBar>
#include <QTabBar>
#include <QTabWidget>
#include <QTest>
#include <QTimer>

#include <csignal>

using frametest::RecordingModule;

namespace {

const QString savingFailed = QStringLiteral("Saving Failed");

class Application : public frametest::FrameFixture
{
protected:
    void SetUp() override
    {
        FrameFixture::SetUp();
        kelp::Settings::set(QStringLiteral("Gui/lastModule"), QString());
        m_app->setApplicationIdentification(QStringLiteral("Title"), QIcon(),
                                            QStringLiteral("name"));
        m_app->setModuleSelector(new QtModuleTabSelector(2, true, false, true, true));
        m_form = qobject_cast<kelp::MainForm*>(AppBase::getMainForm());
        ASSERT_TRUE(m_form);
    }

    void addModules(const QStringList& names)
    {
        for (const QString& name : names) {
            ASSERT_TRUE(m_app->addModule(new RecordingModule(name, m_record)));
        }
    }

    /// Runs the application; the user acts as soon as the event loop is free.
    template <typename Act>
    int runWith(Act&& act)
    {
        QTimer::singleShot(0, m_app.get(), std::forward<Act>(act));
        return m_app->run();
    }

    /// What the user can no longer write to: a file stands where the folder was.
    void breakStore() const
    {
        ASSERT_TRUE(QDir(m_folder + QStringLiteral("/patients")).removeRecursively());
        QFile file(m_folder + QStringLiteral("/patients"));
        ASSERT_TRUE(file.open(QIODevice::WriteOnly));
    }
    void repairStore() const
    {
        ASSERT_TRUE(QFile::remove(m_folder + QStringLiteral("/patients")));
        ASSERT_TRUE(QDir().mkpath(m_folder + QStringLiteral("/patients")));
    }

    void pressKey(int key, Qt::KeyboardModifiers modifiers = Qt::ControlModifier) const
    {
        QApplication::setActiveWindow(m_form);
        QTest::keyClick(m_form, static_cast<Qt::Key>(key), modifiers);
    }

    kelp::MainForm* m_form = nullptr;
};

TEST_F(Application, EntersTheFirstModuleAndLeavesItAtTheEnd)
{
    addModules({QStringLiteral("A"), QStringLiteral("B")});
    EXPECT_EQ(runWith([this] {
                  EXPECT_TRUE(m_form->isVisible());
                  EXPECT_EQ(m_record, QStringList{QStringLiteral("activate A")});
                  pressKey(Qt::Key_Q);
              }),
              0);
    EXPECT_EQ(m_record,
              (QStringList{QStringLiteral("activate A"), QStringLiteral("deactivate A")}));
}

TEST_F(Application, RefusesNullAndANameThatIsTaken)
{
    addModules({QStringLiteral("A")});
    EXPECT_FALSE(m_app->addModule(nullptr));
    EXPECT_FALSE(m_app->addModule(new RecordingModule(QStringLiteral("A"), m_record)));
    EXPECT_TRUE(m_app->addModule(new RecordingModule(QStringLiteral("B"), m_record)));
}

TEST_F(Application, TheTabThatWasOpenAtTheEndIsOpenAtTheNextStart)
{
    addModules({QStringLiteral("A"), QStringLiteral("B")});
    runWith([this] {
        const auto* const tabs = m_form->findChild<QTabWidget*>();
        QTest::mouseClick(tabs->tabBar(), Qt::LeftButton, {}, tabs->tabBar()->tabRect(1).center());
        pressKey(Qt::Key_Q);
    });
    m_record.clear();
    runWith([this] { pressKey(Qt::Key_Q); });
    // The first tab is entered before, since it brings back what was selected.
    EXPECT_EQ(m_record.mid(0, 3),
              (QStringList{QStringLiteral("activate A"), QStringLiteral("deactivate A"),
                           QStringLiteral("activate B")}));
}

TEST_F(Application, KeysSwitchTabsAndF1OpensTheHelp)
{
    addModules({QStringLiteral("A"), QStringLiteral("B"), QStringLiteral("Help")});
    m_app->setHelpModule(QStringLiteral("Help"));
    runWith([this] {
        pressKey(Qt::Key_2);
        pressKey(Qt::Key_F1, Qt::NoModifier);
        const auto* const tabs = m_form->findChild<QTabWidget*>();
        EXPECT_EQ(tabs->currentIndex(), 2);
        pressKey(Qt::Key_Q);
    });
    EXPECT_EQ(m_record,
              (QStringList{QStringLiteral("activate A"), QStringLiteral("deactivate A"),
                           QStringLiteral("activate B"), QStringLiteral("deactivate B"),
                           QStringLiteral("activate Help"), QStringLiteral("deactivate Help")}));
}

/// Notes whether the store had the change when it was entered.
class WatchingModule : public RecordingModule
{
public:
    using RecordingModule::RecordingModule;
    bool wasSavedWhenEntered = false;
    void activate() override { wasSavedWhenEntered = !AppBase::hasUnsavedChanges(); }
};

TEST_F(Application, ChangesOfTheOldTabAreSavedBeforeTheNewOneIsEntered)
{
    const DataPointer<Patient> patient = storedPatient(QStringLiteral("Before"));
    addModules({QStringLiteral("A")});
    auto* const watching = new WatchingModule(QStringLiteral("B"), m_record);
    ASSERT_TRUE(m_app->addModule(watching));
    runWith([&] {
        patient->setName(QStringLiteral("After"));
        AppBase::markChanged(patient);
        EXPECT_TRUE(AppBase::hasUnsavedChanges());
        pressKey(Qt::Key_2);
        pressKey(Qt::Key_Q);
    });
    EXPECT_TRUE(watching->wasSavedWhenEntered);
    EXPECT_EQ(storedNames(), QStringList{QStringLiteral("After")});
}

TEST_F(Application, AChangeIsSavedWithoutBeingAskedForAndTheTitleShowsItUntilThen)
{
    const DataPointer<Patient> patient = storedPatient(QStringLiteral("Before"));
    runWith([&] {
        patient->setName(QStringLiteral("After"));
        AppBase::markChanged(patient);
        EXPECT_TRUE(m_form->isWindowModified());
        EXPECT_TRUE(waiting::until([] { return !AppBase::hasUnsavedChanges(); }));
        EXPECT_FALSE(m_form->isWindowModified());
        pressKey(Qt::Key_Q);
    });
    EXPECT_EQ(storedNames(), QStringList{QStringLiteral("After")});
}

TEST_F(Application, ControlSSavesAndSaysSo)
{
    const DataPointer<Patient> patient = storedPatient(QStringLiteral("Before"));
    runWith([&] {
        patient->setName(QStringLiteral("After"));
        AppBase::markChanged(patient);
        pressKey(Qt::Key_S);
        EXPECT_FALSE(AppBase::hasUnsavedChanges());
        EXPECT_EQ(m_form->statusBar()->currentMessage(), QStringLiteral("All changes are saved."));
        pressKey(Qt::Key_Q);
    });
}

TEST_F(Application, AFailedSaveKeepsTheChangeTellsTheReasonOnceAndAtEverySave)
{
    const DataPointer<Patient> patient = storedPatient(QStringLiteral("Before"));
    breakStore();
    DialogDriver dialogs;
    dialogs.expectMessageContaining(savingFailed, m_folder);
    runWith([&] {
        patient->setName(QStringLiteral("After"));
        AppBase::markChanged(patient);
        EXPECT_TRUE(waiting::until([&dialogs] { return dialogs.pending() == 0; }));
        for (int edit = 0; edit < 3; ++edit) {
            AppBase::markChanged(patient);
            QTest::qWait(0);
        }
        EXPECT_EQ(dialogs.messages().size(), 1);
        EXPECT_TRUE(m_form->isWindowModified());
        EXPECT_TRUE(m_form->windowTitle().contains(QStringLiteral("could not be saved")));

        dialogs.expectMessageContaining(savingFailed, m_folder);
        pressKey(Qt::Key_S);
        EXPECT_EQ(dialogs.messages().size(), 2);

        repairStore();
        AppBase::markChanged(patient);
        EXPECT_TRUE(waiting::until([] { return !AppBase::hasUnsavedChanges(); }));
        EXPECT_EQ(m_form->windowTitle(), QStringLiteral("Title[*]"));
        pressKey(Qt::Key_Q);
    });
    EXPECT_EQ(storedNames(), QStringList{QStringLiteral("After")});
}

TEST_F(Application, AFailedSaveAtTheEndMayBeTriedAgainCancelledOrGivenUp)
{
    const DataPointer<Patient> patient = storedPatient(QStringLiteral("Before"));
    addModules({QStringLiteral("A")});
    DialogDriver dialogs;
    runWith([&] {
        breakStore();
        patient->setName(QStringLiteral("After"));
        AppBase::markChanged(patient);
        dialogs.expectMessage(savingFailed, QStringLiteral("The changes could not be saved."),
                              QStringLiteral("Cancel"));
        pressKey(Qt::Key_Q);
        EXPECT_TRUE(m_form->isVisible());
        EXPECT_EQ(m_record.last(), QStringLiteral("activate A"));

        dialogs.expectMessage(savingFailed, QStringLiteral("The changes could not be saved."),
                              QStringLiteral("Retry"));
        dialogs.expect([this](QDialog& dialog) {
            repairStore();
            DialogDriver::click(dialog, QStringLiteral("Retry"));
        });
        pressKey(Qt::Key_Q);
    });
    EXPECT_FALSE(m_form->isVisible());
    EXPECT_EQ(storedNames(), QStringList{QStringLiteral("After")});
}

TEST_F(Application, QuittingWithoutSavingLeavesTheStoreAsItWas)
{
    const DataPointer<Patient> patient = storedPatient(QStringLiteral("Before"));
    DialogDriver dialogs;
    runWith([&] {
        breakStore();
        AppBase::markChanged(patient);
        dialogs.expectMessage(savingFailed, QStringLiteral("The changes could not be saved."),
                              QStringLiteral("Quit without saving"));
        pressKey(Qt::Key_Q);
    });
    EXPECT_FALSE(m_form->isVisible());
    EXPECT_TRUE(AppBase::hasUnsavedChanges());
}

TEST_F(Application, AStoreThatIsRemovedBehindItsBackLosesNothingOfWhatIsInMemory)
{
    const DataPointer<Patient> patient = storedPatient(QStringLiteral("Before"));
    DialogDriver dialogs;
    runWith([&] {
        ASSERT_TRUE(QDir(m_folder).removeRecursively());
        patient->setName(QStringLiteral("After"));
        AppBase::markChanged(patient);
        dialogs.expectMessageContaining(savingFailed, m_folder);
        EXPECT_FALSE(AppBase::saveChanges());
        EXPECT_TRUE(AppBase::hasUnsavedChanges());
        dialogs.expectMessage(savingFailed, QStringLiteral("The changes could not be saved."),
                              QStringLiteral("Quit without saving"));
        pressKey(Qt::Key_Q);
    });
    EXPECT_EQ(patient->getName(), QStringLiteral("After"));
}

TEST_F(Application, AnEndThatIsForcedFromOutsideLeavesTheTabAndSaves)
{
    const DataPointer<Patient> patient = storedPatient(QStringLiteral("Before"));
    addModules({QStringLiteral("A")});
    EXPECT_EQ(runWith([&] {
                  patient->setName(QStringLiteral("After"));
                  AppBase::markChanged(patient);
                  QCoreApplication::exit(3);
              }),
              3);
    EXPECT_EQ(m_record.last(), QStringLiteral("deactivate A"));
    EXPECT_EQ(storedNames(), QStringList{QStringLiteral("After")});
}

TEST_F(Application, TheEndOfTheSessionLosesNothing)
{
    const DataPointer<Patient> patient = storedPatient(QStringLiteral("Before"));
    EXPECT_EQ(runWith([&patient] {
                  patient->setName(QStringLiteral("After"));
                  AppBase::markChanged(patient);
                  std::raise(SIGTERM);
              }),
              0);
    EXPECT_EQ(storedNames(), QStringList{QStringLiteral("After")});
}

TEST_F(Application, TheStatusBarFollowsTheSelectionAndTheNameOfThePatient)
{
    const DataPointer<Patient> patient = storedPatient(QStringLiteral("Ada"));
    const DataPointer<Study> study(new Study);
    study->setId(QStringLiteral("Visit"));
    const auto text = [this](const char* name) {
        return m_form->findChild<QLabel*>(QString::fromLatin1(name))->text();
    };
    AppBase::setCurrent(patient, study);
    AppBase::setScanDescription(QStringLiteral("OD"));
    EXPECT_EQ(text("patientLabel"), QStringLiteral("Patient: Ada"));
    EXPECT_EQ(text("studyLabel"), QStringLiteral("Study: Visit"));
    EXPECT_EQ(text("scanLabel"), QStringLiteral("Scan: OD"));
    patient->setName(QStringLiteral("Grace"));
    AppBase::markCurrentChanged();
    EXPECT_EQ(text("patientLabel"), QStringLiteral("Patient: Grace"));
    AppBase::setCurrent(nullptr, nullptr);
    EXPECT_EQ(text("patientLabel"), QStringLiteral("No patient selected"));
}

TEST_F(Application, ANoticeInTheStatusBarStaysUntilAnotherStudyIsSelected)
{
    const DataPointer<Patient> patient = storedPatient(QStringLiteral("Ada"));
    const DataPointer<Study> study(new Study);
    const auto shown = [this] {
        return m_form->findChild<QLabel*>(QStringLiteral("noticeLabel"))->text();
    };
    AppBase::setCurrent(patient, study);
    AppBase::setStatusNotice(QStringLiteral("Look at it."));
    AppBase::setCurrent(patient, study);
    EXPECT_EQ(shown(), QStringLiteral("Look at it."));
    AppBase::setCurrent(patient, nullptr);
    EXPECT_EQ(shown(), QString());
}

TEST_F(Application, DamagedPatientFilesAreToldAtTheStart)
{
    QFile damaged(m_folder + QStringLiteral("/patients/damaged.xml"));
    ASSERT_TRUE(damaged.open(QIODevice::WriteOnly));
    damaged.write("no patient");
    damaged.close();
    DataIOManager::closeStore();
    ASSERT_EQ(DataIOManager::openStore(m_folder).toString(), QString());
    DialogDriver dialogs;
    dialogs.expectMessage(QStringLiteral("Patient Store"),
                          QStringLiteral("One patient file could not be read."));
    runWith([this, &dialogs] {
        EXPECT_TRUE(waiting::until([&dialogs] { return dialogs.pending() == 0; }));
        pressKey(Qt::Key_Q);
    });
}

TEST_F(Application, ThereIsOnlyOne)
{
    EXPECT_EQ(AppBase::getInstance(), m_app.get());
    EXPECT_THROW(AppBase(m_argumentCount, nullptr, nullptr, false, false), kelp::Assertion);
    EXPECT_EQ(AppBase::getInstance(), m_app.get());
}

} // namespace
