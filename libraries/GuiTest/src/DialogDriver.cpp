#include "DialogDriver.h"

#include "Waiting.h"
#include "kelpCheck.h"

#include <QAbstractButton>
#include <QApplication>
#include <QFileDialog>
#include <QLineEdit>
#include <QMenu>
#include <QMessageBox>
#include <QTest>
#include <QWindow>

#include <gtest/gtest.h>

namespace {

constexpr int lookIntervalMs = 10;

QString withoutMnemonic(QString text)
{
    return text.remove(QLatin1Char('&'));
}

std::string plain(const QString& text)
{
    return text.toStdString();
}

QMessageBox* asMessageBox(QDialog& dialog, const QString& title)
{
    auto* const box = qobject_cast<QMessageBox*>(&dialog);
    if (!box) {
        ADD_FAILURE() << "expected the message box \"" << plain(title)
                      << "\", but got the dialog \"" << plain(dialog.windowTitle()) << "\"";
        dialog.reject();
        return nullptr;
    }
    EXPECT_EQ(plain(box->windowTitle()), plain(title)) << plain(box->text());
    return box;
}

} // namespace

DialogDriver::DialogDriver()
{
    KELP_CONNECT("libraries/GuiTest/src/DialogDriver",
                 connect(&m_timer, SIGNAL(timeout()), this, SLOT(look())));
    m_timer.start(lookIntervalMs);
}

DialogDriver::~DialogDriver()
{
    EXPECT_EQ(pending(), 0) << "expected dialogs that never came up";
}

void DialogDriver::expect(const Answer& answer)
{
    m_answers.append(answer);
}

void DialogDriver::expectMessage(const QString& title, const QString& text, const QString& button)
{
    expect([title, text, button](QDialog& dialog) {
        if (auto* const box = asMessageBox(dialog, title)) {
            EXPECT_EQ(plain(box->text()), plain(text));
            click(*box, button);
        }
    });
}

void DialogDriver::expectMessageContaining(const QString& title, const QString& part,
                                           const QString& button)
{
    expect([title, part, button](QDialog& dialog) {
        if (auto* const box = asMessageBox(dialog, title)) {
            EXPECT_TRUE(box->text().contains(part))
                << plain(part) << " is not in: " << plain(box->text());
            click(*box, button);
        }
    });
}

void DialogDriver::expectFileDialog(const QString& path)
{
    expect([path](QDialog& dialog) {
        auto* const files = qobject_cast<QFileDialog*>(&dialog);
        if (!files || path.isEmpty()) {
            EXPECT_TRUE(files) << "expected a file dialog, but got \""
                               << plain(dialog.windowTitle()) << "\"";
            dialog.reject();
            return;
        }
        auto* const edit = files->findChild<QLineEdit*>(QStringLiteral("fileNameEdit"));
        ASSERT_TRUE(edit);
        edit->setText(path);
        QTest::keyClick(edit, Qt::Key_Return);
        if (files->isVisible()) {
            // The completer's list took the key.
            QTest::keyClick(edit, Qt::Key_Return);
        }
        if (files->isVisible()) {
            ADD_FAILURE() << "the file dialog refuses " << plain(path);
            files->reject();
        }
    });
}

void DialogDriver::expectMenu(const QString& entry)
{
    m_menuEntries.append(entry);
}

void DialogDriver::rightClick(QWidget& widget, const QPoint& place)
{
    ASSERT_TRUE(waiting::untilActivated(widget));
    QWidget* const window = widget.window();
    QTest::mouseClick(window->windowHandle(), Qt::RightButton, Qt::NoModifier,
                      widget.mapTo(window, place));
    // The events come back through the window system.
    EXPECT_TRUE(waiting::until([this] { return pending() == 0; }));
    QCoreApplication::processEvents();
}

QAbstractButton* DialogDriver::findButton(QWidget& parent, const QString& text)
{
    for (auto* const button : parent.findChildren<QAbstractButton*>()) {
        if (withoutMnemonic(button->text()) == text) {
            return button;
        }
    }
    return nullptr;
}

void DialogDriver::click(QWidget& parent, const QString& buttonText)
{
    auto* const button = findButton(parent, buttonText);
    if (!button || !button->isVisible() || !button->isEnabled()) {
        ADD_FAILURE() << "no button \"" << plain(buttonText) << "\" to click in \""
                      << plain(parent.windowTitle()) << "\"";
        if (auto* const dialog = qobject_cast<QDialog*>(&parent)) {
            dialog->reject();
        }
        return;
    }
    QTest::mouseClick(button, Qt::LeftButton);
}

void DialogDriver::chooseMenuEntry()
{
    auto* const menu = qobject_cast<QMenu*>(QApplication::activePopupWidget());
    if (!menu || !menu->isVisible() || m_menuEntries.isEmpty()) {
        return;
    }
    const QString wanted = m_menuEntries.takeFirst();
    QStringList texts;
    for (QAction* const action : menu->actions()) {
        if (withoutMnemonic(action->text()) == wanted) {
            EXPECT_TRUE(action->isEnabled()) << plain(wanted);
            QTest::mouseClick(menu, Qt::LeftButton, Qt::NoModifier,
                              menu->actionGeometry(action).center());
            return;
        }
        texts.append(action->text());
    }
    ADD_FAILURE() << "no menu entry \"" << plain(wanted)
                  << "\" among: " << plain(texts.join(QStringLiteral(", ")));
    menu->close();
}

void DialogDriver::look()
{
    // A timer does not fire again while its slot runs, and an answer may wait in a further dialog.
    m_timer.start(lookIntervalMs);
    chooseMenuEntry();
    auto* const dialog = qobject_cast<QDialog*>(QApplication::activeModalWidget());
    if (!dialog || !dialog->isVisible() || m_answered.contains(dialog) ||
        m_leftAlone.contains(dialog->metaObject()->className())) {
        return;
    }
    m_answered.insert(dialog);
    // The next one may stand at the same address, and this one may come up again.
    disconnect(dialog, nullptr, this, nullptr);
    constexpr const char* sourcePath = "libraries/GuiTest/src/DialogDriver";
    KELP_CONNECT(sourcePath, connect(dialog, SIGNAL(finished(int)), this, SLOT(forget())));
    KELP_CONNECT(sourcePath, connect(dialog, SIGNAL(destroyed(QObject*)), this, SLOT(forget())));
    if (const auto* const box = qobject_cast<QMessageBox*>(dialog)) {
        m_messages.append(box->windowTitle() + QStringLiteral(": ") + box->text());
    }
    if (m_answers.isEmpty()) {
        answerUnexpected(*dialog);
        return;
    }
    // The answer may open further dialogs, which want further answers meanwhile.
    const Answer answer = m_answers.takeFirst();
    answer(*dialog);
}

void DialogDriver::forget()
{
    m_answered.remove(sender());
}

void DialogDriver::answerUnexpected(QDialog& dialog)
{
    const auto* const box = qobject_cast<QMessageBox*>(&dialog);
    ADD_FAILURE() << "unexpected dialog \"" << plain(dialog.windowTitle())
                  << "\": " << (box ? plain(box->text()) : std::string());
    dialog.reject();
}

#include "moc_DialogDriver.cpp"
