#include "kelpSettings.h"

#include "kelpLog.h"

#include <QSettings>

namespace kelp {

namespace {

QSettings& storage()
{
    static QSettings settings(QSettings::IniFormat, QSettings::UserScope, "Tessera", "Tessera");
    return settings;
}

} // namespace

int Settings::get(const QString& key, int defaultValue)
{
    bool isNumber = false;
    const int value = storage().value(key).toInt(&isNumber);
    return isNumber ? value : defaultValue;
}

double Settings::get(const QString& key, double defaultValue)
{
    bool isNumber = false;
    const double value = storage().value(key).toDouble(&isNumber);
    return isNumber ? value : defaultValue;
}

QString Settings::get(const QString& key, const QString& defaultValue)
{
    return storage().value(key, defaultValue).toString();
}

QVariant Settings::get(const QString& key, const QVariant& defaultValue)
{
    return storage().value(key, defaultValue);
}

void Settings::set(const QString& key, int value)
{
    set(key, QVariant(value));
}

void Settings::set(const QString& key, double value)
{
    set(key, QVariant(value));
}

void Settings::set(const QString& key, const QString& value)
{
    set(key, QVariant(value));
}

void Settings::set(const QString& key, const QVariant& value)
{
    storage().setValue(key, value);
    // Written at once: a run may end by a signal.
    storage().sync();
    if (storage().status() != QSettings::NoError) {
        Log::getInstance("libraries/Core/src/kelpSettings", "kelp::Settings::set", __LINE__)
            << "Could not write settings to " << storage().fileName();
    }
}

} // namespace kelp
