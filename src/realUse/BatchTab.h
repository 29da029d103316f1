#pragma once

#include "ApplicationDriver.h"

#include <QObject>
#include <QStringList>

#include <memory>

/// What a user does in the tab of batch processing, with mouse and keys alone.
namespace batchtab {

inline const QString tabName = QStringLiteral("OCT Batch Processing");

/// Answers the dialog with the folder and comes back when the import is over.
void importFolder(ApplicationDriver& user, const QString& folder);
/// The rows of the table: patient and series, in order.
QStringList rows(const ApplicationDriver& user);
/// Clicks the check box of a row.
void check(ApplicationDriver& user, int row);
void checkAll(ApplicationDriver& user);
/// Starts the batch; it runs on while this returns.
void start(ApplicationDriver& user);
/// Cancels the batch, for as long as the result lives, as soon as its scan of this number, from 0,
/// tells that it runs.
[[nodiscard]] std::unique_ptr<QObject> cancelInScan(const ApplicationDriver& user, int scan);
/// Until the batch is over and its dialog gone.
void waitForTheEnd(ApplicationDriver& user);
/// The lines of the log without the dots of the progress before them.
QStringList log(const ApplicationDriver& user);
/// How many of them contain the text.
int countInLog(const ApplicationDriver& user, const QString& text);

} // namespace batchtab
