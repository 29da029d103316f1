#include "BatchTab.h"

#include <QApplication>
#include <QCheckBox>
#include <QLabel>
#include <QProgressDialog>
#include <QTableWidget>
#include <QTest>
#include <QTextEdit>

#include <gtest/gtest.h>

namespace batchtab {

namespace {

constexpr int patientColumn = 1;
constexpr int seriesColumn = 4;

QTableWidget& table(const ApplicationDriver& user)
{
    return user.find<QTableWidget>("batchTable");
}

QString cell(const ApplicationDriver& user, int row, int column)
{
    const auto* const label = qobject_cast<QLabel*>(table(user).cellWidget(row, column));
    return label ? label->text() : QString();
}

/// Looks at each change of the log before anything else that has happened meanwhile: on a busy
/// machine a whole scan may be done before the user interface gets its turn.
class BatchCanceller : public QObject
{
public:
    BatchCanceller(const QTextEdit& log, int scan) : m_log(log), m_scan(scan)
    {
        connect(&log, &QTextEdit::textChanged, this, [this] {
            QCoreApplication::postEvent(this, new QEvent(QEvent::User), Qt::HighEventPriority);
        });
    }

protected:
    void customEvent(QEvent* /*event*/) override
    {
        auto* const dialog = qobject_cast<QProgressDialog*>(QApplication::activeModalWidget());
        const bool isRunning = m_log.toPlainText().endsWith(QLatin1Char('.'));
        if (isRunning && dialog && dialog->isVisible() && dialog->value() == m_scan) {
            DialogDriver::click(*dialog, QStringLiteral("Cancel"));
        }
    }

private:
    const QTextEdit& m_log;
    int m_scan;
};

} // namespace

void importFolder(ApplicationDriver& user, const QString& folder)
{
    user.dialogs.expectFileDialog(folder);
    user.click(QStringLiteral("Import OCTs"));
}

QStringList rows(const ApplicationDriver& user)
{
    QStringList texts;
    for (int row = 0; row < table(user).rowCount(); ++row) {
        texts.append(cell(user, row, patientColumn) + QLatin1Char(' ') +
                     cell(user, row, seriesColumn));
    }
    return texts;
}

void check(ApplicationDriver& user, int row)
{
    QCoreApplication::processEvents(); // lays new rows out
    auto* const box = qobject_cast<QCheckBox*>(table(user).cellWidget(row, 0));
    ASSERT_TRUE(box) << row;
    QTest::mouseClick(box, Qt::LeftButton, {}, box->rect().center());
    EXPECT_TRUE(box->isChecked());
}

void checkAll(ApplicationDriver& user)
{
    user.press(table(user), Qt::Key_A, Qt::ControlModifier | Qt::ShiftModifier);
}

void start(ApplicationDriver& user)
{
    user.click(QStringLiteral("Start Segmentation"));
}

std::unique_ptr<QObject> cancelInScan(const ApplicationDriver& user, int scan)
{
    return std::make_unique<BatchCanceller>(user.find<QTextEdit>("batchLog"), scan);
}

void waitForTheEnd(ApplicationDriver& user)
{
    constexpr int longestMs = 400000;
    const auto isRunning = [] {
        return qobject_cast<QProgressDialog*>(QApplication::activeModalWidget()) != nullptr;
    };
    EXPECT_TRUE(user.waitFor([&] { return !isRunning(); }, longestMs))
        << log(user).join(QLatin1Char('\n')).toStdString();
}

QStringList log(const ApplicationDriver& user)
{
    QStringList lines;
    const QStringList all =
        user.find<QTextEdit>("batchLog").toPlainText().split(QLatin1Char('\n'), Qt::SkipEmptyParts);
    for (QString line : all) {
        while (line.startsWith(QLatin1Char('.'))) {
            line.remove(0, 1);
        }
        if (!line.isEmpty()) {
            lines.append(line);
        }
    }
    return lines;
}

int countInLog(const ApplicationDriver& user, const QString& text)
{
    return log(user).filter(text).size();
}

} // namespace batchtab
