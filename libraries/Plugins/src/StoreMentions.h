#pragma once

#include "CaError.h"

#include <QSet>
#include <QStringList>

/// Which of the words stand somewhere in the files of this folder, as whole words: no letter,
/// digit, '_', '-' or '.' beside them. Searches the bytes, so that files that cannot be read as a
/// tree count too, and none has to be loaded. Words must consist of such characters only.
///
/// An error for a file that cannot be searched.
CaError findMentions(const QString& folder, const QStringList& words, QSet<QString>& found);
