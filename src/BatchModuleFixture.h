#pragma once

#include "BatchTestSupport.h"
#include "DialogDriver.h"
#include "OCTBatchProcessModule.h"
#include "Phantom.h"
#include "Waiting.h"

#include <QCheckBox>
#include <QElapsedTimer>
#include <QLabel>
#include <QLineEdit>
#include <QProgressDialog>
#include <QPushButton>
#include <QSettings>
#include <QTableWidget>
#include <QTest>
#include <QTextBlock>
#include <QTextEdit>

#include <functional>
#include <memory>

namespace kelp::oct::test {

/// Clicks "Cancel" of the progress dialog as soon as a condition holds.
class ProgressCanceller : public QObject
{
public:
    using Condition = std::function<bool(QProgressDialog&)>;

    ProgressCanceller(QWidget& window, const Condition& condition)
        : m_window(window), m_condition(condition)
    {
        constexpr int lookIntervalMs = 1;
        startTimer(lookIntervalMs);
        // On a busy machine a whole scan may be done before a timer fires. So each change of the
        // log is looked at before anything else that has happened meanwhile.
        connect(window.findChild<QTextEdit*>(QStringLiteral("batchLog")), &QTextEdit::textChanged,
                this, [this] {
                    QCoreApplication::postEvent(this, new QEvent(QEvent::User),
                                                Qt::HighEventPriority);
                });
    }
    bool hasCancelled() const { return m_cancelled; }

protected:
    void timerEvent(QTimerEvent* /*event*/) override { look(); }
    void customEvent(QEvent* /*event*/) override { look(); }

private:
    void look()
    {
        for (auto* const dialog : m_window.findChildren<QProgressDialog*>()) {
            if (!m_cancelled && dialog->isVisible() && m_condition(*dialog)) {
                m_cancelled = true;
                QTest::mouseClick(dialog->findChild<QPushButton*>(), Qt::LeftButton);
            }
        }
    }

    QWidget& m_window;
    Condition m_condition;
    bool m_cancelled = false;
};

/// The tab in a window of its own, on a store of its own.
class BatchModuleFixture : public BatchStoreFixture
{
protected:
    void SetUp() override
    {
        BatchStoreFixture::SetUp();
        QSettings(QSettings::IniFormat, QSettings::UserScope, "Tessera", "Tessera").clear();
        m_dialogs = std::make_unique<DialogDriver>();
        m_dialogs->leaveAlone("QProgressDialog");
        makeModule();
    }
    void TearDown() override
    {
        m_module.reset();
        m_dialogs.reset();
        BatchStoreFixture::TearDown();
    }

    void makeModule()
    {
        m_module.reset();
        m_module = std::make_unique<OCTBatchProcessModule>(QStringLiteral("OCT Batch Processing"));
        window().resize(1280, 720);
        window().show();
        ASSERT_TRUE(waiting::untilExposed(window()));
        m_module->activate();
    }

    QWidget& window() const { return *m_module->getMainWidget(); }
    template <typename Widget>
    Widget& child(const char* name) const
    {
        auto* const found = window().findChild<Widget*>(QLatin1String(name));
        EXPECT_TRUE(found) << name;
        return *found;
    }
    QTableWidget& table() const { return child<QTableWidget>("batchTable"); }
    QTextEdit& log() const { return child<QTextEdit>("batchLog"); }
    void click(const char* caption) const { DialogDriver::click(window(), QLatin1String(caption)); }
    /// A check box or radio button, which takes clicks on its indicator and text only.
    void clickOption(const char* caption) const
    {
        auto* const button = DialogDriver::findButton(window(), QLatin1String(caption));
        ASSERT_TRUE(button) << caption;
        const bool before = button->isChecked();
        QTest::mouseClick(button, Qt::LeftButton, {}, QPoint(10, button->height() / 2));
        EXPECT_NE(button->isChecked(), before) << caption;
    }
    QString cell(int row, int column) const
    {
        const auto* const label = qobject_cast<QLabel*>(table().cellWidget(row, column));
        return label ? label->text() : QString();
    }
    QCheckBox* box(int row) const { return qobject_cast<QCheckBox*>(table().cellWidget(row, 0)); }
    void check(int row) const
    {
        QCoreApplication::processEvents(); // lays new rows out
        QCheckBox* const wanted = box(row);
        ASSERT_TRUE(wanted);
        QTest::mouseClick(wanted, Qt::LeftButton, {}, wanted->rect().center());
        EXPECT_TRUE(wanted->isChecked());
    }
    QProgressDialog* progress() const
    {
        for (auto* const dialog : window().findChildren<QProgressDialog*>()) {
            if (dialog->isVisible()) {
                return dialog;
            }
        }
        return nullptr;
    }

    /// The lines of the log with the colour of their first letter.
    QList<QPair<QString, QColor>> logLines() const
    {
        QList<QPair<QString, QColor>> lines;
        for (QTextBlock block = log().document()->begin(); block.isValid(); block = block.next()) {
            QTextCursor cursor(block);
            cursor.movePosition(QTextCursor::NextCharacter);
            lines.append({block.text(), cursor.charFormat().foreground().color()});
        }
        return lines;
    }
    QStringList logTexts() const
    {
        return log().toPlainText().split(QLatin1Char('\n'), Qt::SkipEmptyParts);
    }
    /// How many lines contain this text, with dots of the progress before it or not.
    int countInLog(const QString& text) const { return logTexts().filter(text).size(); }
    QColor colorInLog(const QString& text) const
    {
        for (const auto& [line, color] : logLines()) {
            if (line == text) {
                return color;
            }
        }
        ADD_FAILURE() << text.toStdString() << " is not in: " << log().toPlainText().toStdString();
        return {};
    }

    void importFolder(const QString& folder)
    {
        m_dialogs->expectFileDialog(folder);
        click("Import OCTs");
    }
    /// An export with known surfaces, small enough to be segmented in a second or two.
    phantom::Export writePhantom(const QString& folder, std::uint64_t seed,
                                 phantom::Pattern pattern = phantom::Pattern::Volume,
                                 phantom::Kind kind = phantom::Kind::Normal, int rows = 160) const
    {
        phantom::Options options;
        options.pattern = pattern;
        options.kind = kind;
        options.seed = seed;
        options.aScans = 96;
        options.rows = rows;
        options.bScans = 5;
        options.localizerSize = 64;
        phantom::Export written = phantom::writeExport(m_exports.filePath(folder), options);
        replaceIn(written.xmlPath, {{QStringLiteral("Phantom</LastName>"),
                                     QStringLiteral("%1</LastName>").arg(seed)}});
        return written;
    }
    /// A key of the table.
    void press(Qt::Key key, Qt::KeyboardModifiers modifiers = {}) const
    {
        ASSERT_TRUE(waiting::untilFocused(table()));
        QTest::keyClick(&table(), key, modifiers);
    }
    void checkAll() const { press(Qt::Key_A, Qt::ControlModifier | Qt::ShiftModifier); }
    void waitForTheEnd()
    {
        constexpr int longestMs = 240000;
        QElapsedTimer timer;
        timer.start();
        while (progress() && timer.elapsed() < longestMs) {
            QCoreApplication::processEvents(QEventLoop::WaitForMoreEvents);
        }
        EXPECT_FALSE(progress()) << log().toPlainText().toStdString();
    }
    void segmentChecked()
    {
        click("Start Segmentation");
        waitForTheEnd();
    }
    static QStringList finalLayersOf(Data* segmentation)
    {
        auto* const item = qobject_cast<OCTScanSegmentation*>(segmentation);
        QStringList identifiers;
        if (item) {
            item->ensureDecoded();
            for (const LayerNamePtr& name : item->getAllLayerNames()) {
                if (name->isFinal()) {
                    identifiers.append(name->getIdentifier());
                }
            }
        }
        identifiers.sort();
        return identifiers;
    }

    std::unique_ptr<DialogDriver> m_dialogs;
    std::unique_ptr<OCTBatchProcessModule> m_module;
};

} // namespace kelp::oct::test
