#pragma once

#include <QString>

class QAbstractButton;
class QLineEdit;
class QSplitter;
class QWidget;

/// Where the user left things, brought back at the next start. Keys are those of kelp::Settings,
/// below "Gui/". Each remember function restores at once and stores every later change.
namespace kelp {

void rememberChecked(QAbstractButton* button, const QString& key);
void rememberSplitter(QSplitter* splitter, const QString& key);
void rememberText(QLineEdit* edit, const QString& key);

/// The folder that was last used for this purpose, or the user's documents or home if that is gone.
QString lastFolder(const QString& key);
/// Also takes the path of a file and keeps its folder. An empty path changes nothing.
void setLastFolder(const QString& key, const QString& path);

} // namespace kelp
