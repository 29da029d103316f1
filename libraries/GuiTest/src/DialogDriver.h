#pragma once

#include <QByteArray>
#include <QDialog>
#include <QList>
#include <QObject>
#include <QPoint>
#include <QSet>
#include <QString>
#include <QStringList>
#include <QTimer>

#include <functional>

class QAbstractButton;

/// Answers modal dialogs as a user would, while the code under test waits in them: each expectation
/// is for the next modal dialog that comes up, in order. One that comes up unexpectedly is
/// cancelled and fails the test, and so does an expectation that was never met when the driver
/// goes.
class DialogDriver : public QObject
{
    Q_OBJECT

public:
    /// Does to the dialog what a user would, with mouse and key events; should end by closing it.
    using Answer = std::function<void(QDialog&)>;

    DialogDriver();
    ~DialogDriver() override;

    void expect(const Answer& answer);
    /// A message box with exactly these texts, answered with the button of this text ("OK", "Yes";
    /// without the mnemonic's "&").
    void expectMessage(const QString& title, const QString& text,
                       const QString& button = QStringLiteral("OK"));
    /// A message box with this title and a text that contains this part.
    void expectMessageContaining(const QString& title, const QString& part,
                                 const QString& button = QStringLiteral("OK"));
    /// A file dialog: types the path and accepts; an empty path cancels.
    void expectFileDialog(const QString& path);

    /// The next menu that pops up: clicks the entry of this text.
    void expectMenu(const QString& entry);
    /// A click of the right button as the window system sends it, so that context menus come up.
    /// Returns when all that is expected has been met.
    void rightClick(QWidget& widget, const QPoint& place);

    /// Dialogs of this class are nobody's to answer: they show progress and go by themselves.
    void leaveAlone(const QByteArray& className) { m_leftAlone.insert(className); }
    /// They are to be answered from now on.
    void attendAgain(const QByteArray& className) { m_leftAlone.remove(className); }

    /// Expectations not met yet.
    int pending() const { return m_answers.size() + m_menuEntries.size(); }
    /// "title: text" of all message boxes seen.
    const QStringList& messages() const { return m_messages; }

    /// The button of this text below the widget, without the mnemonic's "&"; null if there is none.
    static QAbstractButton* findButton(QWidget& parent, const QString& text);
    /// Clicks it with the mouse; fails the test when it is missing, hidden or disabled.
    static void click(QWidget& parent, const QString& buttonText);

private slots:
    void look();
    void forget();

private:
    void answerUnexpected(QDialog& dialog);
    void chooseMenuEntry();

    QTimer m_timer;
    QList<Answer> m_answers;
    QStringList m_menuEntries;
    QSet<QObject*> m_answered;
    QSet<QByteArray> m_leftAlone;
    QStringList m_messages;
};
