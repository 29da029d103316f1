#pragma once

#include "CaError.h"
#include "DataTreeNode.h"

#include <QByteArray>

/// The tree as XML text, and back. Any text survives: characters that XML cannot hold stand as
/// "\uXXXX", and a backslash is doubled.
namespace XMLDataTree {

QByteArray write(const DataTreeNode& root);

/// Reads into an empty root. The error's text gives the reason and the line. Refuses document type
/// declarations, a form newer than this program's, and trees deeper than any of the system's.
CaError read(const QByteArray& text, DataTreeNode& root);

} // namespace XMLDataTree
