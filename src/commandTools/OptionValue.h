#pragma once

#include <QString>

class QCommandLineParser;

namespace kelp::command {

/// Throws UsageError with the text.
[[noreturn]] void refuse(const QString& text);

/// The option's last value, which must not be empty, or the default where it is not given. Throws
/// UsageError.
QString optionValue(const QCommandLineParser& parser, const QString& option,
                    const QString& defaultValue = QString());

} // namespace kelp::command
