#pragma once

#include <QString>
#include <QVariant>

namespace kelp {

/// Values that outlive a run, kept in the user's configuration folder. Each get() answers with its
/// default where the key was never set. User-interface thread only.
class Settings
{
public:
    static int get(const QString& key, int defaultValue);
    static double get(const QString& key, double defaultValue);
    static QString get(const QString& key, const QString& defaultValue);
    static QVariant get(const QString& key, const QVariant& defaultValue);

    static void set(const QString& key, int value);
    static void set(const QString& key, double value);
    static void set(const QString& key, const QString& value);
    static void set(const QString& key, const QVariant& value);
};

} // namespace kelp
