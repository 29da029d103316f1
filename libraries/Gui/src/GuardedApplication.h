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
    /// A failing paint event comes back as soon as its box is closed; the user must get past it. So
    /// what was shown is not shown again for this long.
    static constexpr qint64 usualRepetitionMs = 2000;

    GuardedApplication(int& argumentCount, char** arguments,
                       qint64 repetitionMs = usualRepetitionMs);

    bool notify(QObject* receiver, QEvent* event) override;

private slots:
    void showPending();

private:
    void report(const char* reason);

    const qint64 m_repetitionMs;
    /// What waits to be shown; empty for nothing.
    QString m_pending;
    QString m_shown;
    QElapsedTimer m_sinceShown;
};

} // namespace kelp
