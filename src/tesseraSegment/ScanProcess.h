#pragma once

#include "Protocol.h"

#include <QObject>
#include <QProcess>

namespace kelp::command {

/// Hears of one process that segments.
class ScanProcessListener
{
public:
    virtual ~ScanProcessListener() = default;
    virtual void scanTold(int job, const ScanMessage& message) = 0;
    /// The process is gone. The failure is empty when the results are whole.
    virtual void scanEnded(int job, const QString& failure) = 0;
};

/// One process of this program that segments one scan.
class ScanProcess : public QObject
{
    Q_OBJECT

public:
    /// The listener must outlive this; job is what it knows the scan by.
    ScanProcess(int job, ScanProcessListener& listener);
    /// Kills the process if it still runs.
    ~ScanProcess() override;

    void start(const ScanRequest& request);

private slots:
    void readMessages();
    void processFinished(int exitCode, QProcess::ExitStatus status);
    void processFailed(QProcess::ProcessError error);

private:
    QString failureOf(int exitCode, QProcess::ExitStatus status) const;
    void printLastWords();
    void end(const QString& failure);

    int m_job;
    ScanProcessListener& m_listener;
    QProcess m_process;
    QString m_failure;
    bool m_isWhole = false;
    bool m_hasEnded = false;
};

} // namespace kelp::command
