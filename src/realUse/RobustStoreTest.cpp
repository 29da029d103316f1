#include "AppBase.h"
#include "RealUseFixture.h"
#include "ScanTabs.h"

#include <QAbstractItemView>
#include <QDir>
#include <QFile>
#include <QMessageBox>
#include <QProcess>
#include <QTest>

#include <gtest/gtest.h>

#include <csignal>

// A store that is changed, removed, claimed or left behind by a program that was killed.

using namespace scantabs;

namespace {

const QString saveFailure = QStringLiteral("Saving Failed");

class RobustStore : public RealUseFixture
{
protected:
    /// Draws a piece of the upper layer in the manual tab.
    static void correctLayer(ApplicationDriver& user, int aScan)
    {
        const QString ilm = QStringLiteral("ILM");
        const double row = rowOf(user, ilm, aScan) - 7.5;
        pickLayer(user, ilm, aScan);
        drawStroke(user, {QPointF(aScan - 4, row), QPointF(aScan + 4, row)});
    }
    static bool waitForSaving()
    {
        return ApplicationDriver::waitFor([] { return !AppBase::hasUnsavedChanges(); });
    }
    QString patientFile() const
    {
        const QDir folder(store() + QStringLiteral("/patients"));
        const QStringList files = folder.entryList(QDir::Files);
        EXPECT_EQ(files.size(), 1);
        return folder.filePath(files.value(0));
    }
    static void save(ApplicationDriver& user)
    {
        user.press(user.form(), Qt::Key_S, Qt::ControlModifier);
    }

    const QString m_xml = writeExport(QStringLiteral("volume")).xmlPath;
};

void replaceFile(const QString& path, const QByteArray& content)
{
    QFile file(path);
    ASSERT_TRUE(file.open(QIODevice::WriteOnly));
    ASSERT_EQ(file.write(content), content.size());
}

QByteArray contentOf(const QString& path)
{
    QFile file(path);
    EXPECT_TRUE(file.open(QIODevice::ReadOnly)) << path.toStdString();
    return file.readAll();
}

TEST_F(RobustStore, WhatWasChangedWhileTheStoreWasAwayIsSavedWhenItIsBack)
{
    const QString away = path(QStringLiteral("away"));
    QString payload;
    use([&](ApplicationDriver& user) {
        makeSegmentedScan(user, m_xml);
        user.selectTab(manualTab);
        ASSERT_TRUE(QDir().rename(store(), away));
        user.dialogs.expectMessageContaining(saveFailure, QStringLiteral("kept in memory"));
        correctLayer(user, 50);
        ASSERT_TRUE(ApplicationDriver::waitFor([&] { return user.dialogs.pending() == 0; }));
        EXPECT_TRUE(AppBase::hasUnsavedChanges());
        EXPECT_TRUE(user.form().windowTitle().contains(QStringLiteral("could not be saved")));

        // What the store made meanwhile, if anything, gives way to what it was.
        QDir(store()).removeRecursively();
        ASSERT_TRUE(QDir().rename(away, store()));
        save(user);
        EXPECT_TRUE(waitForSaving());
        EXPECT_TRUE(isStored(user.shownSegmentation()));
        payload = user.shownSegmentation()->toBase64String();
    });
    use([&](ApplicationDriver& user) {
        user.selectTab(automaticTab);
        user.openScan();
        user.choose(user.find<QAbstractItemView>("segmentationList"), 0);
        EXPECT_EQ(user.shownSegmentation()->toBase64String(), payload);
    });
}

TEST_F(RobustStore, APatientFileThatSomebodyElseDamagedIsLeftAloneAndTheChangesAreKept)
{
    use([&](ApplicationDriver& user) {
        makePatientWithScans(user, {});
        ASSERT_TRUE(waitForSaving());
        const QString file = patientFile();
        const QByteArray before = contentOf(file);
        replaceFile(file, "no patient");
        user.newStudy(QStringLiteral("Second"),
                      [&] { user.dialogs.expectMessageContaining(saveFailure, file); });
        ASSERT_TRUE(ApplicationDriver::waitFor([&] { return user.dialogs.pending() == 0; }));
        EXPECT_EQ(contentOf(file), "no patient");
        replaceFile(file, before);
        save(user);
        EXPECT_TRUE(waitForSaving());
        EXPECT_TRUE(contentOf(file).contains("Second"));
    });
}

TEST_F(RobustStore, APatientFileThatSomebodyElseRemovedIsWrittenAnewWithTheNextChange)
{
    use([&](ApplicationDriver& user) {
        makePatientWithScans(user, {m_xml});
        ASSERT_TRUE(waitForSaving());
        const QString file = patientFile();
        ASSERT_TRUE(QFile::remove(file));
        user.newStudy(QStringLiteral("Second"));
        ASSERT_TRUE(waitForSaving());
        const QByteArray content = contentOf(file);
        EXPECT_TRUE(content.contains("Baseline"));
        EXPECT_TRUE(content.contains("Second"));
    });
    EXPECT_EQ(storedTrees().size(), 3);
}

TEST_F(RobustStore, AnUnsavableChangeMayBeGivenUpAtTheEnd)
{
    use([&](ApplicationDriver& user) {
        makePatientWithScans(user, {});
        ASSERT_TRUE(waitForSaving());
        const QString file = patientFile();
        replaceFile(file, "no patient");
        user.newStudy(QStringLiteral("Second"), [&] {
            user.dialogs.expectMessageContaining(saveFailure, QStringLiteral("kept in memory"));
        });
        ASSERT_TRUE(ApplicationDriver::waitFor([&] { return user.dialogs.pending() == 0; }));
        user.dialogs.expectMessageContaining(saveFailure, QStringLiteral("could not be saved"),
                                             QStringLiteral("Cancel"));
        user.press(user.form(), Qt::Key_Q, Qt::ControlModifier);
        EXPECT_TRUE(user.form().isVisible());
        user.dialogs.expectMessageContaining(saveFailure, QStringLiteral("could not be saved"),
                                             QStringLiteral("Quit without saving"));
    });
    EXPECT_EQ(contentOf(patientFile()), "no patient");
}

TEST_F(RobustStore, APatientDeletedWhileItsScanIsOpenIsGoneFromEveryTab)
{
    use([&](ApplicationDriver& user) {
        makeSegmentedScan(user, m_xml);
        user.selectTab(QStringLiteral("Patient Manager"));
        user.dialogs.expectMessageContaining(QStringLiteral("Delete"), QStringLiteral("Lindqvist"),
                                             QStringLiteral("Delete"));
        user.press(user.find<QAbstractItemView>("patientList"), Qt::Key_Delete);
        EXPECT_EQ(user.dialogs.pending(), 0);
        for (const QString& tab : {manualTab, measurementTab, automaticTab}) {
            user.selectTab(tab);
            EXPECT_FALSE(user.isEnabled(QStringLiteral("New Segmentation")));
            EXPECT_TRUE(user.texts(user.find<QAbstractItemView>("dataSelectionList")).isEmpty());
        }
        EXPECT_TRUE(user.shownSegmentation().isNull());
        EXPECT_FALSE(user.isEnabled(QStringLiteral("Segment Normal")));
    });
    EXPECT_TRUE(storedTrees().isEmpty());
    EXPECT_TRUE(QDir(copiedFiles()).isEmpty());
}

/// The program itself, on the same store.
class OtherProgram
{
public:
    explicit OtherProgram(const QString& store)
    {
        m_process.setProcessChannelMode(QProcess::MergedChannels);
        m_process.start(QStringLiteral(TESSERA_PROGRAM), QStringList());
        EXPECT_TRUE(m_process.waitForStarted());
        const QString lock = store + QStringLiteral("/lock");
        ApplicationDriver::waitFor([&] { return QFileInfo(lock).size() > 0; });
    }
    ~OtherProgram() { end(); }

    qint64 id() const { return m_process.processId(); }
    /// As a session that ends does.
    void end()
    {
        if (m_process.state() == QProcess::NotRunning) {
            return;
        }
        m_process.terminate();
        constexpr int longestMs = 120000;
        EXPECT_TRUE(m_process.waitForFinished(longestMs));
        EXPECT_EQ(m_process.exitStatus(), QProcess::NormalExit);
        EXPECT_EQ(m_process.exitCode(), 0) << m_process.readAll().toStdString();
    }

private:
    QProcess m_process;
};

class TwoPrograms : public RobustStore
{
protected:
    /// The question at the start of the second program, which names the first.
    static void answerWith(ApplicationDriver& user, const OtherProgram& other,
                           const QString& button, const std::function<void()>& before = {})
    {
        const QString holder = QStringLiteral("process %1").arg(other.id());
        user.dialogs.expect([holder, button, before](QDialog& dialog) {
            const auto* const box = qobject_cast<QMessageBox*>(&dialog);
            ASSERT_TRUE(box);
            EXPECT_EQ(box->windowTitle(), QStringLiteral("Patient Store"));
            EXPECT_TRUE(box->informativeText().contains(holder))
                << box->informativeText().toStdString();
            if (before) {
                before();
            }
            DialogDriver::click(dialog, button);
        });
    }
};

TEST_F(TwoPrograms, TheSecondIsToldWhoHasTheStoreAndQuits)
{
    const OtherProgram other(store());
    bool isStarted = false;
    EXPECT_EQ(ApplicationDriver::run([&](ApplicationDriver&) { isStarted = true; },
                                     [&](ApplicationDriver& user) {
                                         answerWith(user, other, QStringLiteral("Quit"));
                                     }),
              1);
    EXPECT_FALSE(isStarted);
}

TEST_F(TwoPrograms, TheSecondStartsWhenTheFirstHasEnded)
{
    OtherProgram other(store());
    bool isStarted = false;
    use(
        [&](ApplicationDriver& user) {
            isStarted = true;
            makePatientWithScans(user, {});
        },
        [&](ApplicationDriver& user) {
            answerWith(user, other, QStringLiteral("Try Again"), [&other] { other.end(); });
        });
    EXPECT_TRUE(isStarted);
    EXPECT_EQ(storedTrees().size(), 2);
}

/// The folder that a killed program and its successor share.
constexpr const char* sharedFolder = "TESSERA_TEST_SHARED_FOLDER";

class KilledProgram : public RobustStore
{
protected:
    KilledProgram()
    {
        // The program that is killed is this one, started anew for the same test.
        ::testing::FLAGS_gtest_death_test_style = "threadsafe";
        if (!qEnvironmentVariableIsSet(sharedFolder)) {
            qputenv(sharedFolder, m_folder.path().toUtf8());
        }
        m_shared = qEnvironmentVariable(sharedFolder);
        qputenv("TESSERA_STORE", (m_shared + QStringLiteral("/store")).toUtf8());
    }
    ~KilledProgram() override { qunsetenv(sharedFolder); }

    QString note(const char* name) const { return m_shared + '/' + QLatin1String(name); }

    void editUntilKilled() const
    {
        ApplicationDriver::run([this](ApplicationDriver& user) {
            makeSegmentedScan(user, m_shared + QStringLiteral("/exports/volume/export.xml"));
            user.selectTab(manualTab);
            correctLayer(user, 30);
            waitForSaving();
            replaceFile(note("before"), user.shownSegmentation()->toBase64String().toLatin1());
            correctLayer(user, 60);
            replaceFile(note("after"), user.shownSegmentation()->toBase64String().toLatin1());
            ::raise(SIGKILL);
        });
    }

    QString m_shared;
};

TEST_F(KilledProgram, LosesNoMoreThanTheLastEdit)
{
    EXPECT_EXIT(editUntilKilled(), testing::KilledBySignal(SIGKILL), "");
    readSettingsAnew();
    const QByteArray before = contentOf(note("before"));
    const QByteArray after = contentOf(note("after"));
    ASSERT_NE(before, after);
    use([&](ApplicationDriver& user) {
        ASSERT_TRUE(AppBase::getCurrentStudy());
        EXPECT_EQ(AppBase::getCurrentStudy()->getId(), QStringLiteral("Baseline"));
        user.selectTab(automaticTab);
        user.openScan();
        user.choose(user.find<QAbstractItemView>("segmentationList"), 0);
        const QByteArray stored = user.shownSegmentation()->toBase64String().toLatin1();
        EXPECT_TRUE(stored == before || stored == after);
        EXPECT_EQ(drawnLayers(user).size(), 6);
    });
}

} // namespace
