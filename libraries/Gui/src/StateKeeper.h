#pragma once

#include <QObject>
#include <QString>

namespace kelp {

/// Stores the changes of one widget, its parent, under a key. Made by the functions of SavedState.
class StateKeeper : public QObject
{
    Q_OBJECT

public:
    StateKeeper(const QString& key, QObject* parent);

public slots:
    void keepChecked(bool checked);
    void keepText(const QString& text);
    void keepSplitter();

private:
    QString m_key;
};

} // namespace kelp
