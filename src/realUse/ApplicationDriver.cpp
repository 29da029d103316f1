#include "ApplicationDriver.h"

#include "AppBase.h"
#include "ApplicationAssembly.h"
#include "kelpGISliceSegmentationViewer.h"

#include <QAbstractButton>
#include <QAbstractItemView>
#include <QApplication>
#include <QComboBox>
#include <QElapsedTimer>
#include <QLineEdit>
#include <QListWidget>
#include <QPlainTextEdit>
#include <QTabWidget>
#include <QTest>
#include <QTimer>

#include <gtest/gtest.h>

namespace {

QString withoutMnemonic(QString text)
{
    return text.remove(QLatin1Char('&'));
}

void type(QWidget& parent, const char* field, const QString& text)
{
    auto* const edit = parent.findChild<QLineEdit*>(QString::fromLatin1(field));
    ASSERT_TRUE(edit) << field;
    edit->selectAll();
    QTest::keyClicks(edit, text);
}

} // namespace

ApplicationDriver::ApplicationDriver()
{
    dialogs.leaveAlone("kelp::oct::SegUpdateDialog");
    dialogs.leaveAlone("QProgressDialog");
}

int ApplicationDriver::run(const Script& script)
{
    kelp::oct::registerFactories();
    int argumentCount = 1;
    char program[] = "tessera";
    char* arguments[] = {program, nullptr};
    auto* const application = new AppBase(argumentCount, arguments, nullptr, false, false);
    kelp::oct::assembleApplication(*application);
    QTimer::singleShot(0, application, [&script] {
        {
            ApplicationDriver driver;
            try {
                driver.form().activateWindow();
                script(driver);
            } catch (const Stop&) {
                // Reported where it was thrown.
            }
            QTest::keyClick(&driver.form(), Qt::Key_Q, Qt::ControlModifier);
            waitFor([&driver] { return !driver.form().isVisible(); });
        }
        QApplication::quit();
    });
    const int exitCode = application->run();
    delete application;
    DataIOManager::closeStore();
    return exitCode;
}

void ApplicationDriver::stop(const char* missing)
{
    ADD_FAILURE() << "there is no visible " << missing;
    throw Stop();
}

QWidget& ApplicationDriver::form() const
{
    return *checked(AppBase::getMainForm(), "main form");
}

bool ApplicationDriver::waitFor(const std::function<bool()>& condition, int timeoutMs)
{
    QElapsedTimer timer;
    timer.start();
    while (!condition()) {
        if (timer.elapsed() > timeoutMs) {
            ADD_FAILURE() << "waited in vain for " << timeoutMs << " ms";
            return false;
        }
        QTest::qWait(5);
    }
    return true;
}

void ApplicationDriver::selectTab(const QString& name)
{
    auto& tabs = find<QTabWidget>("moduleTabs");
    auto* const bar = tabs.tabBar();
    for (int i = 0; i < bar->count(); ++i) {
        if (withoutMnemonic(bar->tabText(i)) == name) {
            QTest::mouseClick(bar, Qt::LeftButton, Qt::NoModifier, bar->tabRect(i).center());
            QTest::qWait(0);
            EXPECT_EQ(currentTab(), name);
            return;
        }
    }
    stop("tab of that name");
}

QString ApplicationDriver::currentTab() const
{
    const auto& tabs = find<QTabWidget>("moduleTabs");
    return withoutMnemonic(tabs.tabText(tabs.currentIndex()));
}

void ApplicationDriver::click(const QString& text)
{
    for (auto* const button : form().findChildren<QAbstractButton*>()) {
        if (withoutMnemonic(button->text()) == text && button->isVisible()) {
            EXPECT_TRUE(button->isEnabled()) << text.toStdString();
            QTest::mouseClick(button, Qt::LeftButton);
            return;
        }
    }
    stop(text.toUtf8().constData());
}

bool ApplicationDriver::isEnabled(const QString& buttonText) const
{
    for (auto* const button : form().findChildren<QAbstractButton*>()) {
        if (withoutMnemonic(button->text()) == buttonText && button->isVisible()) {
            return button->isEnabled();
        }
    }
    return false;
}

void ApplicationDriver::choose(QAbstractItemView& view, int row)
{
    const QModelIndex index = view.model()->index(row, 0);
    ASSERT_TRUE(index.isValid()) << "row " << row << " of " << view.objectName().toStdString();
    view.scrollTo(index);
    QTest::mouseClick(view.viewport(), Qt::LeftButton, Qt::NoModifier,
                      view.visualRect(index).center());
}

void ApplicationDriver::doubleClick(QAbstractItemView& view, int row)
{
    choose(view, row);
    QTest::mouseDClick(view.viewport(), Qt::LeftButton, Qt::NoModifier,
                       view.visualRect(view.model()->index(row, 0)).center());
}

QStringList ApplicationDriver::texts(const QAbstractItemView& view) const
{
    QStringList texts;
    for (int row = 0; row < view.model()->rowCount(); ++row) {
        texts.append(view.model()->index(row, 0).data().toString());
    }
    return texts;
}

void ApplicationDriver::newPatient(const QString& lastName, const QString& firstName,
                                   const QString& birthDate)
{
    dialogs.expect([&](QDialog& dialog) {
        EXPECT_EQ(dialog.windowTitle(), QStringLiteral("New Patient"));
        type(dialog, "lastName", lastName);
        type(dialog, "firstNames", firstName);
        type(dialog, "birthDate", birthDate);
        DialogDriver::click(dialog, QStringLiteral("OK"));
    });
    click(QStringLiteral("New Patient"));
}

void ApplicationDriver::newStudy(const QString& name)
{
    dialogs.expect([&](QDialog& dialog) {
        EXPECT_EQ(dialog.windowTitle(), QStringLiteral("New Study"));
        type(dialog, "itemName", name);
        DialogDriver::click(dialog, QStringLiteral("OK"));
    });
    click(QStringLiteral("New Study"));
}

void ApplicationDriver::addScan(const QString& xmlPath, int seriesRow)
{
    dialogs.expect([&](QDialog& dialog) {
        EXPECT_EQ(dialog.windowTitle(), QStringLiteral("Add Data"));
        dialogs.expectFileDialog(xmlPath);
        auto* const plus = dialog.findChild<QAbstractButton*>(QStringLiteral("addFileButton"));
        ASSERT_TRUE(plus);
        QTest::mouseClick(plus, Qt::LeftButton);
        dialogs.expect([&](QDialog& series) {
            auto* const list = series.findChild<QListWidget*>();
            ASSERT_TRUE(list);
            choose(*list, seriesRow);
            DialogDriver::click(series, QStringLiteral("OK"));
        });
        DialogDriver::click(dialog, QStringLiteral("OK"));
    });
    click(QStringLiteral("Add Data"));
}

void ApplicationDriver::openScan(int row)
{
    doubleClick(find<QAbstractItemView>("dataSelectionList"), row);
}

void ApplicationDriver::newSegmentation()
{
    click(QStringLiteral("New Segmentation"));
}

void ApplicationDriver::segment(const QString& buttonText)
{
    constexpr int runTimeoutMs = 300000;
    click(buttonText);
    waitFor([] { return QApplication::activeModalWidget() != nullptr; });
    waitFor([] { return QApplication::activeModalWidget() == nullptr; }, runTimeoutMs);
}

QGraphicsView& ApplicationDriver::sliceViewer() const
{
    return find<QGraphicsView>("segmentationViewer");
}

int ApplicationDriver::activeSlice() const
{
    return dynamic_cast<kelp::GISliceViewer&>(sliceViewer()).getActiveSlice();
}

int ApplicationDriver::layerCount() const
{
    auto& viewer = dynamic_cast<kelp::GISliceViewer&>(sliceViewer());
    return viewer.getSliceObjects(viewer.getActiveSlice()).size();
}
