#include "ApplicationDriver.h"

#include "AppBase.h"
#include "ApplicationAssembly.h"
#include "SegUpdateDialog.h"
#include "Waiting.h"

#include <QAbstractButton>
#include <QAbstractItemView>
#include <QApplication>
#include <QElapsedTimer>
#include <QLineEdit>
#include <QListWidget>
#include <QProgressDialog>
#include <QTabWidget>
#include <QTest>
#include <QTimerEvent>

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

/// The last window's closing asks for another quit, which is on its way when the event loop has
/// ended. It would end the next run's first dialog.
void takeInLateQuits()
{
    QCoreApplication::processEvents();
    QMetaObject::invokeMethod(qApp, "quit", Qt::QueuedConnection);
    QApplication::exec();
}

std::string described(const QObject* object)
{
    if (!object) {
        return "none";
    }
    return std::string(object->metaObject()->className()) + " \"" +
           object->objectName().toStdString() + '"';
}

std::string whereTheFocusIs()
{
    return "active window: " + described(QApplication::activeWindow()) +
           ", focus window: " + described(QGuiApplication::focusWindow()) +
           ", focus widget: " + described(QApplication::focusWidget()) +
           ", modal: " + described(QApplication::activeModalWidget()) +
           ", popup: " + described(QApplication::activePopupWidget());
}

/// Whether one of the dialogs has come up, be it for an instant.
class ShowWatch : public QObject
{
public:
    explicit ShowWatch(const QList<kelp::oct::SegUpdateDialog*>& dialogs)
    {
        for (auto* const dialog : dialogs) {
            dialog->installEventFilter(this);
        }
    }
    bool hasSeenShow() const { return m_hasSeenShow; }

protected:
    bool eventFilter(QObject* watched, QEvent* event) override
    {
        m_hasSeenShow = m_hasSeenShow || event->type() == QEvent::Show;
        return QObject::eventFilter(watched, event);
    }

private:
    bool m_hasSeenShow = false;
};

/// Looks at every turn of the event loop.
class ProgressCanceller : public QObject
{
public:
    explicit ProgressCanceller(int value) : m_value(value) { startTimer(0); }

protected:
    void timerEvent(QTimerEvent* event) override
    {
        auto* const dialog = qobject_cast<QProgressDialog*>(QApplication::activeModalWidget());
        if (dialog && dialog->isVisible() && dialog->value() >= m_value) {
            killTimer(event->timerId());
            DialogDriver::click(*dialog, QStringLiteral("Cancel"));
        }
    }

private:
    int m_value;
};

} // namespace

ApplicationDriver::ApplicationDriver()
{
    dialogs.leaveAlone("kelp::oct::SegUpdateDialog");
    dialogs.leaveAlone("QProgressDialog");
}

/// Begins the script as soon as the main form is there and nothing stands before it.
class ScriptStarter : public QObject
{
public:
    ScriptStarter(ApplicationDriver& driver, const ApplicationDriver::Script& script)
        : m_driver(driver), m_script(script)
    {
        constexpr int lookIntervalMs = 5;
        startTimer(lookIntervalMs);
    }

protected:
    void timerEvent(QTimerEvent* event) override
    {
        const QWidget* const form = AppBase::getMainForm();
        if (form && form->isVisible() && !QApplication::activeModalWidget()) {
            killTimer(event->timerId());
            m_driver.perform(m_script);
        }
    }

private:
    ApplicationDriver& m_driver;
    const ApplicationDriver::Script& m_script;
};

int ApplicationDriver::run(const Script& script, const Script& prepare)
{
    kelp::oct::registerFactories();
    int argumentCount = 1;
    char program[] = "tessera";
    char* arguments[] = {program, nullptr};
    auto* const application = new AppBase(argumentCount, arguments, nullptr, false, false);
    kelp::oct::assembleApplication(*application);
    int exitCode = 0;
    {
        ApplicationDriver driver;
        if (prepare) {
            prepare(driver);
        }
        const ScriptStarter starter(driver, script);
        exitCode = application->run();
    }
    delete application;
    DataIOManager::closeStore();
    takeInLateQuits();
    return exitCode;
}

void ApplicationDriver::perform(const Script& script)
{
    try {
        EXPECT_TRUE(waiting::untilActivated(form())) << whereTheFocusIs();
        script(*this);
    } catch (const Stop&) {
        // Reported where it was thrown.
    }
    if (form().isVisible()) {
        EXPECT_TRUE(waiting::untilActivated(form())) << whereTheFocusIs();
        QTest::keyClick(&form(), Qt::Key_Q, Qt::ControlModifier);
        waitFor([this] { return !form().isVisible(); });
    }
    QApplication::quit();
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

bool ApplicationDriver::waitFor(const std::function<bool()>& condition, int timeoutMs,
                                const char* file, int line)
{
    QElapsedTimer timer;
    timer.start();
    while (!condition()) {
        if (timer.elapsed() > timeoutMs) {
            ADD_FAILURE_AT(file, line)
                << "waited in vain for " << timeoutMs << " ms; " << whereTheFocusIs();
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

QAbstractButton* ApplicationDriver::findButton(const QString& text) const
{
    for (auto* const button : form().findChildren<QAbstractButton*>()) {
        if (withoutMnemonic(button->text()) == text && button->isVisible()) {
            return button;
        }
    }
    return nullptr;
}

void ApplicationDriver::click(const QString& text)
{
    auto* const button = checked(findButton(text), text.toUtf8().constData());
    EXPECT_TRUE(button->isEnabled()) << text.toStdString();
    QTest::mouseClick(button, Qt::LeftButton);
}

bool ApplicationDriver::isEnabled(const QString& buttonText) const
{
    const auto* const button = findButton(buttonText);
    return button && button->isEnabled();
}

void ApplicationDriver::tick(const QString& text)
{
    constexpr int intoIndicator = 10;
    auto* const button = checked(findButton(text), text.toUtf8().constData());
    const bool before = button->isChecked();
    QTest::mouseClick(button, Qt::LeftButton, {}, QPoint(intoIndicator, button->height() / 2));
    EXPECT_NE(button->isChecked(), before) << text.toStdString();
}

void ApplicationDriver::press(QWidget& widget, Qt::Key key, Qt::KeyboardModifiers modifiers)
{
    EXPECT_TRUE(waiting::untilFocused(widget)) << whereTheFocusIs();
    QTest::keyClick(&widget, key, modifiers);
}

void ApplicationDriver::cancelProgressAt(int value)
{
    m_canceller = std::make_unique<ProgressCanceller>(value);
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

void ApplicationDriver::chooseText(QAbstractItemView& view, const QString& text)
{
    const QModelIndexList found = view.model()->match(
        view.model()->index(0, 0), Qt::DisplayRole, text, 1, Qt::MatchExactly | Qt::MatchRecursive);
    if (found.isEmpty()) {
        stop(text.toUtf8().constData());
    }
    view.scrollTo(found.front());
    QTest::mouseClick(view.viewport(), Qt::LeftButton, Qt::NoModifier,
                      view.visualRect(found.front()).center());
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

void ApplicationDriver::newStudy(const QString& name, const std::function<void()>& expectMore)
{
    dialogs.expect([&](QDialog& dialog) {
        EXPECT_EQ(dialog.windowTitle(), QStringLiteral("New Study"));
        type(dialog, "itemName", name);
        if (expectMore) {
            expectMore();
        }
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

void ApplicationDriver::chooseLine(const QString& text)
{
    chooseText(find<QAbstractItemView>("studyTree"), text);
}

void ApplicationDriver::choosePatient(const QString& name)
{
    chooseText(find<QAbstractItemView>("patientList"), name);
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
    ShowWatch watch(form().findChildren<kelp::oct::SegUpdateDialog*>());
    click(buttonText);
    waitFor([&watch] { return watch.hasSeenShow(); });
    // On some scans the dialog goes before the last step has begun; the layers are drawn when the
    // run is over.
    waitFor([this] { return !QApplication::activeModalWidget() && layerCount() > 0; },
            runTimeoutMs);
}

kelp::oct::GISliceSegmentationViewer& ApplicationDriver::sliceViewer() const
{
    return find<kelp::oct::GISliceSegmentationViewer>("segmentationViewer");
}

OCTScanSegPtr ApplicationDriver::shownSegmentation() const
{
    return sliceViewer().getSegmentation();
}

int ApplicationDriver::activeSlice() const
{
    return sliceViewer().getActiveSlice();
}

int ApplicationDriver::layerCount() const
{
    return sliceViewer().getSliceObjects(activeSlice()).size();
}
