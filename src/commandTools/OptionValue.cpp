#include "OptionValue.h"

#include "UsageError.h"

#include <QCommandLineParser>

namespace kelp::command {

void refuse(const QString& text)
{
    throw UsageError(text.toStdString());
}

QString optionValue(const QCommandLineParser& parser, const QString& option,
                    const QString& defaultValue)
{
    if (!parser.isSet(option)) {
        return defaultValue;
    }
    const QString value = parser.value(option);
    if (value.isEmpty()) {
        refuse(QString("--%1 needs a value.").arg(option));
    }
    return value;
}

} // namespace kelp::command
