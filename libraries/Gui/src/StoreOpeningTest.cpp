#include "StoreOpening.h"

#include "DialogDriver.h"
#include "FrameTestSupport.h"

#include <QDir>
#include <QFile>
#include <QMessageBox>
#include <QPushButton>

namespace {

class StoreOpening : public ::testing::Test
{
protected:
    void SetUp() override
    {
        createFileIOFactory();
        createXMLDataTreeIOFactory();
        DataIOManager::closeStore();
        m_former = qgetenv("TESSERA_STORE");
        m_default = m_directory.path() + QStringLiteral("/store");
        qputenv("TESSERA_STORE", QFile::encodeName(m_default));
    }
    void TearDown() override
    {
        DataIOManager::closeStore();
        qputenv("TESSERA_STORE", m_former);
    }

    void putAFileInItsPlace() const
    {
        QFile file(m_default);
        ASSERT_TRUE(file.open(QIODevice::WriteOnly));
        file.write("not a folder");
    }

    static void expectFailure(DialogDriver& dialogs, const QString& reason, const QString& button)
    {
        dialogs.expect([reason, button](QDialog& dialog) {
            const auto* const box = qobject_cast<QMessageBox*>(&dialog);
            ASSERT_TRUE(box);
            EXPECT_EQ(box->windowTitle(), QStringLiteral("Patient Store"));
            EXPECT_TRUE(box->informativeText().contains(reason))
                << box->informativeText().toStdString();
            DialogDriver::click(dialog, button);
        });
    }

    QTemporaryDir m_directory;
    QByteArray m_former;
    QString m_default;
};

TEST_F(StoreOpening, OpensTheDefaultStoreWithoutAWord)
{
    DialogDriver dialogs;
    EXPECT_TRUE(kelp::openStoreOrAsk(nullptr));
    EXPECT_EQ(DataIOManager::storeFolder(), m_default);
}

TEST_F(StoreOpening, AFileInPlaceOfTheFolderIsToldAndTheUserMayQuit)
{
    putAFileInItsPlace();
    DialogDriver dialogs;
    expectFailure(dialogs, m_default, QStringLiteral("Quit"));
    EXPECT_FALSE(kelp::openStoreOrAsk(nullptr));
    EXPECT_FALSE(DataIOManager::isStoreOpen());
}

TEST_F(StoreOpening, EscapeQuits)
{
    putAFileInItsPlace();
    DialogDriver dialogs;
    dialogs.expect([](QDialog& dialog) { dialog.reject(); });
    EXPECT_FALSE(kelp::openStoreOrAsk(nullptr));
}

TEST_F(StoreOpening, TriesAgainWhenTheReasonMayBeGone)
{
    putAFileInItsPlace();
    DialogDriver dialogs;
    expectFailure(dialogs, m_default, QStringLiteral("Try Again"));
    dialogs.expect([this](QDialog& dialog) {
        QFile::remove(m_default);
        DialogDriver::click(dialog, QStringLiteral("Try Again"));
    });
    EXPECT_TRUE(kelp::openStoreOrAsk(nullptr));
    EXPECT_EQ(DataIOManager::storeFolder(), m_default);
}

TEST_F(StoreOpening, AnotherFolderServesInstead)
{
    putAFileInItsPlace();
    const QString other = m_directory.path() + QStringLiteral("/other");
    ASSERT_TRUE(QDir().mkpath(other));
    DialogDriver dialogs;
    expectFailure(dialogs, m_default, QStringLiteral("Choose Another Folder"));
    dialogs.expectFileDialog(QString());
    expectFailure(dialogs, m_default, QStringLiteral("Choose Another Folder"));
    dialogs.expectFileDialog(other);
    EXPECT_TRUE(kelp::openStoreOrAsk(nullptr));
    EXPECT_EQ(DataIOManager::storeFolder(), other);
}

TEST_F(StoreOpening, AStoreThatAnotherProgramHoldsIsNamedWithItsHolder)
{
    const auto holder = std::unique_ptr<DataTreeIO>(DataTreeIO::getFactory().create("xml"));
    ASSERT_EQ(holder->open(m_default).toString(), QString());
    DialogDriver dialogs;
    expectFailure(dialogs, QStringLiteral("is in use by"), QStringLiteral("Quit"));
    EXPECT_FALSE(kelp::openStoreOrAsk(nullptr));
}

TEST_F(StoreOpening, DamagedPatientFilesAreToldOnceInOneBox)
{
    DialogDriver dialogs;
    kelp::showStoreProblems(nullptr, {});
    const QList<CaError> problems = {
        CaError(QStringLiteral("X"), QStringLiteral("a.xml is damaged"), QString()),
        CaError(QStringLiteral("X"), QStringLiteral("b.xml is damaged"), QString())};
    dialogs.expect([](QDialog& dialog) {
        const auto* const box = qobject_cast<QMessageBox*>(&dialog);
        ASSERT_TRUE(box);
        EXPECT_EQ(box->text(), QStringLiteral("2 patient files could not be read."));
        EXPECT_EQ(box->detailedText(), QStringLiteral("a.xml is damaged\n\nb.xml is damaged"));
        DialogDriver::click(dialog, QStringLiteral("OK"));
    });
    kelp::showStoreProblems(nullptr, problems);
}

} // namespace
