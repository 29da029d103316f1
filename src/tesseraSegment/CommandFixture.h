#pragma once

#include "Phantom.h"

#include <QProcess>
#include <QTemporaryDir>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <map>

namespace kelp::command::test {

/// How a run of the command ended and what it printed.
struct Finished
{
    int status = -1;
    QString output;
    QString errors;
};

/// A folder of its own with small exports, and the real program.
class CommandFixture : public ::testing::Test
{
protected:
    /// Small scans of mouse retinas, whose chain needs least time.
    static kelp::phantom::Options smallScan();

    QString path(const QString& name) const { return m_folder.filePath(name); }
    QString results(const QString& name = QString()) const;

    /// Writes an export into the folder of this name. Returns the XML's path.
    QString writeExport(const QString& folder, const kelp::phantom::Options& options = smallScan());

    /// Runs the command with the results folder of this test and the mouse chain.
    Finished segment(const QStringList& arguments) const;
    /// Runs the command with nothing added.
    static Finished run(const QStringList& arguments);
    /// A command that still runs.
    std::unique_ptr<QProcess> startSegmenting(const QStringList& arguments) const;

    QByteArray read(const QString& file) const;
    void write(const QString& file, const QByteArray& content) const;
    /// Replaces a text that the file must hold.
    void edit(const QString& file, const QByteArray& before, const QByteArray& after) const;
    /// All files below the folder with their contents; hidden ones too.
    static std::map<QString, QByteArray> filesBelow(const QString& folder);
    /// Names in the results folder, hidden ones too.
    QStringList resultNames() const;
    /// The cells of one line of comma-separated text, without their quotes.
    static QStringList csvCells(const QString& line);

private:
    QTemporaryDir m_folder;
};

/// Waits until the condition holds. False if it takes too long.
bool waitUntil(const std::function<bool()>& condition, int milliseconds = 300000);

} // namespace kelp::command::test

/// So that failed expectations can be read.
inline void PrintTo(const QString& text, std::ostream* stream)
{
    *stream << '"' << text.toStdString() << '"';
}
