#include "SavedState.h"

#include "StateKeeper.h"
#include "kelpCheck.h"
#include "kelpSettings.h"

#include <QAbstractButton>
#include <QDir>
#include <QFileInfo>
#include <QLineEdit>
#include <QSplitter>
#include <QStandardPaths>

namespace kelp {

namespace {

QString settingsKey(const QString& key)
{
    return QStringLiteral("Gui/") + key;
}

} // namespace

StateKeeper::StateKeeper(const QString& key, QObject* parent)
    : QObject(parent), m_key(settingsKey(key))
{
}

void StateKeeper::keepChecked(bool checked)
{
    Settings::set(m_key, QVariant(checked));
}

void StateKeeper::keepText(const QString& text)
{
    Settings::set(m_key, text);
}

void StateKeeper::keepSplitter()
{
    if (const auto* const splitter = qobject_cast<QSplitter*>(parent())) {
        Settings::set(m_key, QVariant(splitter->saveState()));
    }
}

void rememberChecked(QAbstractButton* button, const QString& key)
{
    button->setChecked(Settings::get(settingsKey(key), QVariant(button->isChecked())).toBool());
    auto* const keeper = new StateKeeper(key, button);
    KELP_CONNECT("libraries/Gui/src/SavedState",
                 QObject::connect(button, SIGNAL(toggled(bool)), keeper, SLOT(keepChecked(bool))));
}

void rememberSplitter(QSplitter* splitter, const QString& key)
{
    const QByteArray state = Settings::get(settingsKey(key), QVariant()).toByteArray();
    if (!state.isEmpty()) {
        splitter->restoreState(state);
    }
    auto* const keeper = new StateKeeper(key, splitter);
    KELP_CONNECT(
        "libraries/Gui/src/SavedState",
        QObject::connect(splitter, SIGNAL(splitterMoved(int, int)), keeper, SLOT(keepSplitter())));
}

void rememberText(QLineEdit* edit, const QString& key)
{
    edit->setText(Settings::get(settingsKey(key), edit->text()));
    auto* const keeper = new StateKeeper(key, edit);
    KELP_CONNECT("libraries/Gui/src/SavedState",
                 QObject::connect(edit, SIGNAL(textChanged(const QString&)), keeper,
                                  SLOT(keepText(const QString&))));
}

QString lastFolder(const QString& key)
{
    const QString folder = Settings::get(settingsKey(key), QString());
    if (!folder.isEmpty() && QFileInfo(folder).isDir()) {
        return folder;
    }
    // Not every account has the folder for documents that is meant for it.
    const QString documents = QStandardPaths::writableLocation(QStandardPaths::DocumentsLocation);
    return QFileInfo(documents).isDir() ? documents : QDir::homePath();
}

void setLastFolder(const QString& key, const QString& path)
{
    if (path.isEmpty()) {
        return;
    }
    const QFileInfo info(path);
    Settings::set(settingsKey(key), info.isDir() ? info.absoluteFilePath() : info.absolutePath());
}

} // namespace kelp

#include "moc_StateKeeper.cpp"
