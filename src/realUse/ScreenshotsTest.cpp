#include "ApplicationDriver.h"

#include "Appearance.h"
#include "MouseEvents.h"
#include "Phantom.h"
#include "PictureBook.h"

#include <QAbstractButton>
#include <QAbstractItemView>
#include <QAction>
#include <QApplication>
#include <QCheckBox>
#include <QDir>
#include <QGraphicsView>
#include <QScreen>
#include <QTableWidget>
#include <QTemporaryDir>
#include <QTest>
#include <QTextBrowser>
#include <QTextEdit>
#include <QTimer>

#include <gtest/gtest.h>

// Makes the pictures of the documentation. As a test it takes them of a small scan into a folder of
// its own, so that the script that makes the real ones cannot rot.

namespace {

using kelp::phantom::Pattern;

class Screenshots : public testing::Test
{
protected:
    Screenshots() : m_book(m_folder.filePath(QStringLiteral("pictures")))
    {
        qputenv("TESSERA_STORE", m_folder.filePath(QStringLiteral("store")).toUtf8());
        const bool dark = qEnvironmentVariable("TESSERA_PALETTE") == QStringLiteral("dark");
        kelp::chooseAppearance(dark ? kelp::Appearance::Dark : kelp::Appearance::Light);
    }

    QString writeExport(const QString& name, Pattern pattern, std::uint64_t seed = 1) const
    {
        kelp::phantom::Options options;
        options.pattern = pattern;
        options.seed = seed;
        if (!qEnvironmentVariableIsSet("TESSERA_PICTURES")) {
            options.aScans = 128;
            options.rows = 240;
            options.bScans = 7;
            options.localizerSize = 256;
        }
        return kelp::phantom::writeExport(m_folder.filePath(name), options).xmlPath;
    }

    void takeForm(ApplicationDriver& user, const QString& name) const
    {
        m_book.take(user.form(), name);
    }
    /// The next dialog: takes its picture and presses the button.
    void expectPicture(ApplicationDriver& user, const QString& name, const QString& button) const
    {
        user.dialogs.expect([this, name, button](QDialog& dialog) {
            m_book.take(dialog, name);
            DialogDriver::click(dialog, button);
        });
    }
    /// The next modal window that nobody answers, once it has stood for a while.
    void takeProgress(const QString& name) const
    {
        QTimer::singleShot(progressMs, QCoreApplication::instance(), [this, name] {
            if (auto* const dialog = QApplication::activeModalWidget()) {
                m_book.take(*dialog, name);
            }
        });
    }

    void showPatients(ApplicationDriver& user) const;
    void showPatientDialogs(ApplicationDriver& user) const;
    void showAutomatic(ApplicationDriver& user) const;
    void showManual(ApplicationDriver& user) const;
    void showMask(ApplicationDriver& user) const;
    void showMeasurement(ApplicationDriver& user) const;
    void showBatch(ApplicationDriver& user) const;
    void showHelp(ApplicationDriver& user) const;

    static constexpr int progressMs = 400;

    QTemporaryDir m_folder;
    PictureBook m_book;
};

/// The place in the viewport of a point given as fractions of the viewport.
QPoint placeIn(const QGraphicsView& view, double x, double y)
{
    const QSize size = view.viewport()->size();
    return {static_cast<int>(x * size.width()), static_cast<int>(y * size.height())};
}

void Screenshots::showPatients(ApplicationDriver& user) const
{
    user.selectTab(QStringLiteral("OCT Auto-Segmentation"));
    takeForm(user, QStringLiteral("hint-no-study"));
    user.selectTab(QStringLiteral("Patient Manager"));
    takeForm(user, QStringLiteral("hint-no-patient"));
    user.newPatient(QStringLiteral("Okafor"), QStringLiteral("Chidi"),
                    QStringLiteral("1948-02-11"));
    user.newPatient(QStringLiteral("Svensson"), QStringLiteral("Britta"),
                    QStringLiteral("1971-07-30"));
    user.newPatient(QStringLiteral("Lindqvist"), QStringLiteral("Ada"),
                    QStringLiteral("1960-12-31"));
    user.newStudy(QStringLiteral("Baseline"));
    user.addScan(writeExport(QStringLiteral("volume"), Pattern::Volume));
    user.addScan(writeExport(QStringLiteral("section"), Pattern::Section));
}

void Screenshots::showPatientDialogs(ApplicationDriver& user) const
{
    const QString cancel = QStringLiteral("Cancel");
    expectPicture(user, QStringLiteral("dialog-new-patient"), cancel);
    user.click(QStringLiteral("New Patient"));
    expectPicture(user, QStringLiteral("dialog-new-study"), cancel);
    user.click(QStringLiteral("New Study"));
    expectPicture(user, QStringLiteral("dialog-export"), cancel);
    user.click(QStringLiteral("Export"));
    const QString xml = m_folder.filePath(QStringLiteral("volume/")) +
                        QDir(m_folder.filePath(QStringLiteral("volume")))
                            .entryList({QStringLiteral("*.xml")})
                            .value(0);
    user.dialogs.expect([&](QDialog& dialog) {
        user.dialogs.expectFileDialog(xml);
        QTest::mouseClick(dialog.findChild<QAbstractButton*>(QStringLiteral("addFileButton")),
                          Qt::LeftButton);
        m_book.take(dialog, QStringLiteral("dialog-loading"));
        expectPicture(user, QStringLiteral("dialog-series"), QStringLiteral("Cancel"));
        DialogDriver::click(dialog, QStringLiteral("OK"));
        DialogDriver::click(dialog, QStringLiteral("Cancel"));
    });
    user.click(QStringLiteral("Add Data"));
    expectPicture(user, QStringLiteral("dialog-delete"), cancel);
    QTest::mouseClick(&user.find<QAbstractButton>("deletePatientsButton"), Qt::LeftButton);
}

void Screenshots::showAutomatic(ApplicationDriver& user) const
{
    user.selectTab(QStringLiteral("OCT Auto-Segmentation"));
    takeForm(user, QStringLiteral("hint-no-scan"));
    user.openScan();
    user.newSegmentation();
    takeProgress(QStringLiteral("dialog-run"));
    user.segment(QStringLiteral("Segment Normal"));
    takeForm(user, QStringLiteral("tab-auto"));
    user.selectTab(QStringLiteral("Patient Manager"));
    takeForm(user, QStringLiteral("tab-patients"));
}

void Screenshots::showManual(ApplicationDriver& user) const
{
    user.selectTab(QStringLiteral("OCT Manual Segmentation"));
    QGraphicsView& editor = user.sliceViewer();
    editor.setFocus();
    QTest::keyPress(&editor, Qt::Key_Shift);
    mouseevents::move(*editor.viewport(), placeIn(editor, 0.4, 0.45));
    takeForm(user, QStringLiteral("manual-picking"));
    QTest::keyRelease(&editor, Qt::Key_Shift);
    takeForm(user, QStringLiteral("tab-manual"));
}

void Screenshots::showMask(ApplicationDriver& user) const
{
    user.dialogs.expect([&](QDialog& dialog) {
        auto* const view = dialog.findChild<QGraphicsView*>(QStringLiteral("editMaskViewer"));
        ASSERT_TRUE(view);
        const auto clickAt = [view](double x, double y, Qt::MouseButton button) {
            mouseevents::move(*view->viewport(), placeIn(*view, x, y));
            QTest::mouseClick(view->viewport(), button, Qt::NoModifier, placeIn(*view, x, y));
        };
        clickAt(0.3, 0.3, Qt::LeftButton);
        clickAt(0.45, 0.28, Qt::LeftButton);
        clickAt(0.42, 0.42, Qt::LeftButton);
        clickAt(0.42, 0.42, Qt::RightButton);
        clickAt(0.6, 0.6, Qt::LeftButton);
        clickAt(0.7, 0.58, Qt::LeftButton);
        mouseevents::move(*view->viewport(), placeIn(*view, 0.68, 0.7));
        m_book.take(dialog, QStringLiteral("dialog-mask"));
        DialogDriver::click(dialog, QStringLiteral("Close"));
    });
    user.click(QStringLiteral("Edit Mask"));
    takeForm(user, QStringLiteral("manual-mask"));
}

void Screenshots::showMeasurement(ApplicationDriver& user) const
{
    user.selectTab(QStringLiteral("OCT Measurement"));
    takeForm(user, QStringLiteral("tab-measurement"));
}

void Screenshots::showBatch(ApplicationDriver& user) const
{
    writeExport(QStringLiteral("exports/circle"), Pattern::Circle);
    writeExport(QStringLiteral("exports/star"), Pattern::Star, 2);
    user.selectTab(QStringLiteral("OCT Batch Processing"));
    user.dialogs.expectFileDialog(m_folder.filePath(QStringLiteral("exports")));
    user.click(QStringLiteral("Import OCTs"));
    auto& table = user.find<QTableWidget>("batchTable");
    for (int row = 0; row < table.rowCount(); ++row) {
        if (auto* const box = qobject_cast<QCheckBox*>(table.cellWidget(row, 0))) {
            QTest::mouseClick(box, Qt::LeftButton, Qt::NoModifier,
                              QPoint(box->height() / 4, box->height() / 2));
        }
    }
    takeProgress(QStringLiteral("dialog-batch"));
    user.click(QStringLiteral("Start Segmentation"));
    constexpr int batchTimeoutMs = 300000;
    const auto& log = user.find<QTextEdit>("batchLog");
    ApplicationDriver::waitFor(
        [&log] {
            return !QApplication::activeModalWidget() &&
                   log.toPlainText().contains(QStringLiteral("Finished batch-segmenting"));
        },
        batchTimeoutMs);
    takeForm(user, QStringLiteral("tab-batch"));
}

void Screenshots::showHelp(ApplicationDriver& user) const
{
    user.selectTab(QStringLiteral("OCT Help"));
    auto& browser = user.find<QTextBrowser>("helpBrowser");
    for (const char* const page :
         {"introduction", "pm", "export", "automatic", "manual", "etdrs", "batch"}) {
        const QString name = QString::fromLatin1(page);
        browser.setSource(QUrl(QStringLiteral("qrc:/help/html/%1.html").arg(name)));
        takeForm(user, QStringLiteral("help-") + name);
    }
    expectPicture(user, QStringLiteral("dialog-about"), QStringLiteral("OK"));
    user.form().findChild<QAction*>(QStringLiteral("aboutAction"))->trigger();
}

/// As large as the screen, up to the size of the pictures.
void resizeForm(ApplicationDriver& user)
{
    const QSize size = QSize(1280, 800).boundedTo(QGuiApplication::primaryScreen()->size());
    user.form().showNormal();
    user.form().move(0, 0);
    user.form().resize(size);
    ApplicationDriver::waitFor([&] { return user.form().size() == size; });
}

TEST_F(Screenshots, ShowEveryTabDialogAndPage)
{
    ApplicationDriver::run([&](ApplicationDriver& user) {
        resizeForm(user);
        showPatients(user);
        showPatientDialogs(user);
        showAutomatic(user);
        showManual(user);
        showMask(user);
        showMeasurement(user);
        showBatch(user);
        showHelp(user);
    });
}

} // namespace
