#include "MainForm.h"

#include "Appearance.h"
#include "DialogDriver.h"
#include "ElidedLabel.h"
#include "Waiting.h"
#include "kelpSettings.h"

#include <QAction>
#include <QApplication>
#include <QDesktopServices>
#include <QMenu>
#include <QMenuBar>
#include <QScreen>
#include <QSignalSpy>
#include <QStatusBar>
#include <QTest>

#include <gtest/gtest.h>

using kelp::ElidedLabel;
using kelp::MainForm;

namespace {

QStringList plainTexts(const QList<QAction*>& actions)
{
    QStringList texts;
    for (const QAction* const action : actions) {
        texts.append(action->text().remove(QLatin1Char('&')));
    }
    texts.removeAll(QString());
    return texts;
}

class Form : public ::testing::Test
{
protected:
    void SetUp() override
    {
        kelp::Settings::set(QStringLiteral("Gui/mainForm/geometry"), QVariant(QByteArray()));
        m_form.setApplicationTitle(QStringLiteral("Title"));
        m_form.setModuleNames({QStringLiteral("First"), QStringLiteral("Second")});
        m_form.show();
        ASSERT_TRUE(waiting::untilExposed(m_form));
        ASSERT_TRUE(waiting::untilActivated(m_form));
    }

    QMenu* menu(const QString& title) const
    {
        for (QAction* const action : m_form.menuBar()->actions()) {
            if (action->text().remove(QLatin1Char('&')) == title) {
                return action->menu();
            }
        }
        return nullptr;
    }

    const ElidedLabel* label(const char* name) const
    {
        return m_form.findChild<ElidedLabel*>(QString::fromLatin1(name));
    }

    MainForm m_form;
};

TEST_F(Form, HasTheMenusFileViewAndHelp)
{
    EXPECT_EQ(
        plainTexts(m_form.menuBar()->actions()),
        (QStringList{QStringLiteral("File"), QStringLiteral("View"), QStringLiteral("Help")}));
    EXPECT_EQ(plainTexts(menu(QStringLiteral("File"))->actions()),
              (QStringList{QStringLiteral("Save"), QStringLiteral("Open Store Folder"),
                           QStringLiteral("Quit")}));
    EXPECT_EQ(plainTexts(menu(QStringLiteral("View"))->actions()),
              (QStringList{QStringLiteral("First"), QStringLiteral("Second"),
                           QStringLiteral("Appearance"), QStringLiteral("Full Screen")}));
    EXPECT_EQ(plainTexts(menu(QStringLiteral("Help"))->actions()),
              (QStringList{QStringLiteral("Help"), QStringLiteral("About")}));
}

TEST_F(Form, ControlSAsksForASave)
{
    QSignalSpy asked(&m_form, SIGNAL(saveRequested()));
    QTest::keyClick(&m_form, Qt::Key_S, Qt::ControlModifier);
    EXPECT_EQ(asked.count(), 1);
}

TEST_F(Form, ControlAndADigitAskForThatTab)
{
    QSignalSpy asked(&m_form, SIGNAL(moduleRequested(int)));
    QTest::keyClick(&m_form, Qt::Key_2, Qt::ControlModifier);
    QTest::keyClick(&m_form, Qt::Key_1, Qt::ControlModifier);
    QTest::keyClick(&m_form, Qt::Key_3, Qt::ControlModifier);
    ASSERT_EQ(asked.count(), 2);
    EXPECT_EQ(asked.at(0).at(0).toInt(), 1);
    EXPECT_EQ(asked.at(1).at(0).toInt(), 0);
}

TEST_F(Form, F1AsksForTheHelpTabOnceThereIsOne)
{
    QSignalSpy asked(&m_form, SIGNAL(moduleRequested(int)));
    QTest::keyClick(&m_form, Qt::Key_F1);
    EXPECT_EQ(asked.count(), 0);
    m_form.setHelpModule(1);
    QTest::keyClick(&m_form, Qt::Key_F1);
    ASSERT_EQ(asked.count(), 1);
    EXPECT_EQ(asked.at(0).at(0).toInt(), 1);
}

TEST_F(Form, TheViewMenuMarksTheOpenTab)
{
    m_form.setCurrentModule(1);
    const QList<QAction*> entries = menu(QStringLiteral("View"))->actions();
    EXPECT_FALSE(entries.at(0)->isChecked());
    EXPECT_TRUE(entries.at(1)->isChecked());
}

TEST_F(Form, ControlQClosesItUnlessTheQuestionSaysNo)
{
    bool mayClose = false;
    int questions = 0;
    m_form.setCloseQuestion([&] {
        ++questions;
        return mayClose;
    });
    QTest::keyClick(&m_form, Qt::Key_Q, Qt::ControlModifier);
    EXPECT_TRUE(m_form.isVisible());
    mayClose = true;
    QTest::keyClick(&m_form, Qt::Key_Q, Qt::ControlModifier);
    EXPECT_FALSE(m_form.isVisible());
    EXPECT_EQ(questions, 2);
}

TEST_F(Form, TheTitleMarksUnsavedChangesAndTellsThatTheyCouldNotBeSaved)
{
    EXPECT_EQ(m_form.windowTitle(), QStringLiteral("Title[*]"));
    EXPECT_FALSE(m_form.isWindowModified());
    m_form.setSaveState(true, QString());
    EXPECT_TRUE(m_form.isWindowModified());
    EXPECT_FALSE(label("saveFailureLabel")->isVisible());
    m_form.setSaveState(true, QStringLiteral("A: The disk is full."));
    EXPECT_EQ(m_form.windowTitle(), QStringLiteral("Title[*] (changes could not be saved)"));
    EXPECT_TRUE(label("saveFailureLabel")->isVisible());
    EXPECT_EQ(label("saveFailureLabel")->text(), QStringLiteral("Not saved: A: The disk is full."));
    m_form.setSaveState(false, QString());
    EXPECT_EQ(m_form.windowTitle(), QStringLiteral("Title[*]"));
    EXPECT_FALSE(label("saveFailureLabel")->isVisible());
}

TEST_F(Form, TheStatusBarShowsPatientStudyAndScan)
{
    EXPECT_EQ(label("patientLabel")->text(), QStringLiteral("No patient selected"));
    EXPECT_FALSE(label("studyLabel")->isVisible());
    EXPECT_FALSE(label("scanLabel")->isVisible());
    m_form.setSelection(QStringLiteral("Ada"), QStringLiteral("First visit"));
    m_form.setScan(QStringLiteral("OD, 49 B-scans"));
    EXPECT_EQ(label("patientLabel")->text(), QStringLiteral("Patient: Ada"));
    EXPECT_EQ(label("studyLabel")->text(), QStringLiteral("Study: First visit"));
    EXPECT_EQ(label("scanLabel")->text(), QStringLiteral("Scan: OD, 49 B-scans"));
    EXPECT_TRUE(label("scanLabel")->isVisible());
}

TEST_F(Form, LongNamesDoNotWidenIt)
{
    const int before = m_form.minimumSizeHint().width();
    m_form.setSelection(QString(400, QLatin1Char('W')), QString(400, QLatin1Char('W')));
    m_form.setScan(QString(400, QLatin1Char('W')));
    m_form.setSaveState(true, QString(400, QLatin1Char('W')));
    m_form.setNotice(QString(400, QLatin1Char('W')));
    EXPECT_LT(m_form.minimumSizeHint().width(), before + 400);
    EXPECT_LT(m_form.minimumSizeHint().width(), 1280);
}

TEST_F(Form, ANoticeStaysInTheStatusBarAndPassingMessagesGoBeforeIt)
{
    EXPECT_FALSE(label("noticeLabel")->isVisible());
    m_form.statusBar()->showMessage(QStringLiteral("Saved."));
    m_form.setNotice(QStringLiteral("Two warnings:\nfirst;\nsecond"));
    EXPECT_TRUE(m_form.statusBar()->currentMessage().isEmpty()) << "painted below the notice";
    EXPECT_TRUE(label("noticeLabel")->isVisible());
    EXPECT_EQ(label("noticeLabel")->text(), QStringLiteral("Two warnings: first; second"));
    EXPECT_EQ(label("noticeLabel")->toolTip(), QStringLiteral("Two warnings:\nfirst;\nsecond"));

    constexpr int shortMs = 50;
    m_form.statusBar()->showMessage(QStringLiteral("Saved."), shortMs);
    EXPECT_FALSE(label("noticeLabel")->isVisible());
    // Told again, it lets the message pass.
    m_form.setNotice(label("noticeLabel")->toolTip());
    EXPECT_EQ(m_form.statusBar()->currentMessage(), QStringLiteral("Saved."));
    EXPECT_TRUE(waiting::until([this] { return label("noticeLabel")->isVisible(); }));

    m_form.statusBar()->showMessage(QStringLiteral("Saved."), shortMs);
    m_form.setNotice(QString());
    EXPECT_TRUE(waiting::until([this] { return m_form.statusBar()->currentMessage().isEmpty(); }));
    EXPECT_FALSE(label("noticeLabel")->isVisible());
}

TEST_F(Form, ALongNoticeIsCutShortBeforeTheSelectionIs)
{
    m_form.resize(1280, 700);
    m_form.setSelection(QStringLiteral("Ada Example (2/3/1960)"), QStringLiteral("First visit"));
    m_form.setNotice(QString(1000, QLatin1Char('W')));
    QCoreApplication::processEvents();
    EXPECT_EQ(m_form.width(), 1280);
    EXPECT_EQ(label("patientLabel")->width(), label("patientLabel")->sizeHint().width());
    EXPECT_GT(label("noticeLabel")->width(), 600);
}

TEST_F(Form, F11FillsTheScreenAndGivesItBack)
{
    QTest::keyClick(&m_form, Qt::Key_F11);
    EXPECT_TRUE(m_form.isFullScreen());
    EXPECT_TRUE(m_form.findChild<QAction*>(QStringLiteral("fullScreenAction"))->isChecked());
    QTest::keyClick(&m_form, Qt::Key_F11);
    EXPECT_FALSE(m_form.isFullScreen());
    EXPECT_FALSE(m_form.findChild<QAction*>(QStringLiteral("fullScreenAction"))->isChecked());
}

TEST_F(Form, SizeAndPlaceComeBackOnAScreenThatIsThere)
{
    m_form.setGeometry(130, 90, 800, 600);
    ASSERT_TRUE(m_form.close());
    MainForm again;
    again.restorePlace();
    EXPECT_EQ(again.geometry(), QRect(130, 90, 800, 600));

    m_form.show();
    m_form.setGeometry(5000, 4000, 800, 600);
    ASSERT_TRUE(m_form.close());
    MainForm moved;
    moved.restorePlace();
    EXPECT_EQ(moved.size(), QSize(800, 600));
    EXPECT_TRUE(QApplication::primaryScreen()->availableGeometry().contains(moved.geometry()))
        << moved.x() << ", " << moved.y();
}

TEST_F(Form, TheFirstTimeItHasASizeOfItsOwn)
{
    MainForm first;
    first.restorePlace();
    EXPECT_EQ(first.size(), QSize(1200, 760));
}

TEST_F(Form, ADarkAppearanceIsChosenWithTheKeyboard)
{
    QTest::keyClick(&m_form, Qt::Key_V, Qt::AltModifier);
    auto* const view = menu(QStringLiteral("View"));
    ASSERT_TRUE(view->isVisible());
    QTest::keyClick(view, Qt::Key_A);
    QWidget* const appearance = QApplication::activePopupWidget();
    ASSERT_TRUE(appearance);
    QTest::keyClick(appearance, Qt::Key_D);
    EXPECT_EQ(kelp::storedAppearance(), kelp::Appearance::Dark);
    EXPECT_EQ(m_form.palette().color(QPalette::Window),
              kelp::darkPalette().color(QPalette::Window));
    kelp::chooseAppearance(kelp::Appearance::System);
}

/// Takes what would be opened by the desktop.
class FolderOpener : public QObject
{
    Q_OBJECT

public:
    FolderOpener() { QDesktopServices::setUrlHandler(QStringLiteral("file"), this, "open"); }
    ~FolderOpener() override { QDesktopServices::unsetUrlHandler(QStringLiteral("file")); }
    QList<QUrl> opened;

public slots:
    void open(const QUrl& url) { opened.append(url); }
};

TEST_F(Form, OpenStoreFolderOpensTheFolderThatHoldsTheData)
{
    FolderOpener opener;
    m_form.findChild<QAction*>(QStringLiteral("openStoreFolderAction"))->trigger();
    ASSERT_EQ(opener.opened.size(), 1);
    EXPECT_EQ(opener.opened.first().toLocalFile(), qEnvironmentVariable("TESSERA_STORE"));
}

TEST_F(Form, AboutTellsTheVersion)
{
    DialogDriver dialogs;
    dialogs.expectMessageContaining(QStringLiteral("About"),
                                    QStringLiteral("Version " TESSERA_VERSION));
    m_form.findChild<QAction*>(QStringLiteral("aboutAction"))->trigger();
}

} // namespace

#include "MainFormTest.moc"
