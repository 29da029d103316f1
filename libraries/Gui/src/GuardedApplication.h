#pragma once

#include <QApplication>
#include <QElapsedTimer>
#include <QString>

namespace kelp {

/// An application that an exception from a slot or an event handler does not end: it is written to
/// the log and shown in a box.
class GuardedApplication : public QApplication
{
    Q_OBJECT

public:
    GuardedApplication(int& argumentCount, char** arguments);

    bool notify(QObject* receiver, QEvent* event) override;

private slots:
    void showPending();

private:
    void report(const char* reason);

    /// What waits to be shown; empty for nothing.
    QString m_pending;
    QString m_shown;
    QElapsedTimer m_sinceShown;
};

} // namespace kelp
