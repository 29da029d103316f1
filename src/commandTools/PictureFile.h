#pragma once

#include <QImage>
#include <QString>

namespace kelp::command {

/// Writes a PNG. Throws IOFailure with path and reason.
void writePicture(const QImage& picture, const QString& path);

/// Whether this machine has a font to label pictures with.
bool canDrawText();

} // namespace kelp::command
