#pragma once

#include "Patient.h"

#include <QSet>

namespace kelp::patients {

/// The paths that an item's URIs name, whatever scheme and separators they use.
QStringList pathsOf(const Data& item);

/// The files below the store's binary folder that removed items leave behind. Files elsewhere are
/// the user's own and are never touched.
class CopiedFiles
{
public:
    /// To be called while the item still has its place, for each one that goes.
    void addItem(const Data& item);
    void addStudy(Study& study);
    void add(const CopiedFiles& others) { m_paths += others.m_paths; }

    bool isEmpty() const { return m_paths.isEmpty(); }
    /// Deletes what nothing in the store mentions any more, and folders that are empty then. To be
    /// called when the removal is stored. Keeps a file in doubt. Returns the number of files
    /// deleted.
    int remove() const;

private:
    QSet<QString> m_paths;
};

} // namespace kelp::patients
