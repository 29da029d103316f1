#include "ScanProcess.h"

#include "ProgramStart.h"
#include "ScanWorker.h"
#include "kelpCheck.h"

#include <QCoreApplication>

#include <csignal>
#include <cstdio>
#include <cstring>

namespace kelp::command {

namespace {

constexpr const char* sourcePath = "src/tesseraSegment/ScanProcess";

QString signalText(int signal)
{
    const QString text = QString("The process was ended by signal %1 (%2)")
                             .arg(signal)
                             .arg(QString::fromLocal8Bit(strsignal(signal)));
    return signal == SIGKILL ? text + ", perhaps for lack of memory." : text + ".";
}

} // namespace

ScanProcess::ScanProcess(int job, ScanProcessListener& listener) : m_job(job), m_listener(listener)
{
    KELP_CONNECT(sourcePath, connect(&m_process, SIGNAL(readyReadStandardOutput()), this,
                                     SLOT(readMessages())));
    KELP_CONNECT(sourcePath, connect(&m_process, SIGNAL(finished(int, QProcess::ExitStatus)), this,
                                     SLOT(processFinished(int, QProcess::ExitStatus))));
    KELP_CONNECT(sourcePath, connect(&m_process, SIGNAL(errorOccurred(QProcess::ProcessError)),
                                     this, SLOT(processFailed(QProcess::ProcessError))));
}

ScanProcess::~ScanProcess()
{
    m_hasEnded = true; // nobody is to hear of a process that is not wanted any more
    if (m_process.state() != QProcess::NotRunning) {
        m_process.kill();
        m_process.waitForFinished(-1);
    }
}

void ScanProcess::start(const ScanRequest& request)
{
    m_process.start(programPath(),
                    {workerArgument, QString::number(QCoreApplication::applicationPid())});
    m_process.write(request.toJson());
    m_process.closeWriteChannel();
}

void ScanProcess::readMessages()
{
    while (m_process.canReadLine()) {
        const auto message = ScanMessage::fromLine(m_process.readLine());
        if (!message || m_hasEnded) {
            continue;
        }
        if (message->kind == ScanMessage::Kind::Failure) {
            m_failure = message->text;
        } else if (message->kind == ScanMessage::Kind::Done) {
            m_isWhole = true;
        } else {
            m_listener.scanTold(m_job, *message);
        }
    }
}

QString ScanProcess::failureOf(int exitCode, QProcess::ExitStatus status) const
{
    if (status == QProcess::CrashExit) {
        return signalText(exitCode); // for a crash Qt gives the signal's number
    }
    if (!m_failure.isEmpty()) {
        return m_failure;
    }
    if (exitCode != 0 || !m_isWhole) {
        return QString("The process ended with status %1 and told no reason.").arg(exitCode);
    }
    return {};
}

void ScanProcess::processFinished(int exitCode, QProcess::ExitStatus status)
{
    readMessages();
    const QString failure = failureOf(exitCode, status);
    if (!failure.isEmpty() && failure != m_failure) {
        printLastWords();
    }
    end(failure);
}

void ScanProcess::printLastWords()
{
    // Libraries that read images complain to standard error of what is told better elsewhere. Of a
    // process that ended unexpectedly it is the only trace.
    const QByteArray words = m_process.readAllStandardError();
    std::fwrite(words.constData(), 1, static_cast<std::size_t>(words.size()), stderr);
}

void ScanProcess::processFailed(QProcess::ProcessError error)
{
    if (error == QProcess::FailedToStart) {
        end(QString("No process could be started: %1.").arg(m_process.errorString()));
    }
}

void ScanProcess::end(const QString& failure)
{
    if (!m_hasEnded) {
        m_hasEnded = true;
        m_listener.scanEnded(m_job, failure);
    }
}

} // namespace kelp::command
