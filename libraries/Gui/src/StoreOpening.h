#pragma once

#include "CaError.h"

#include <QList>
#include <QString>

class QWidget;

namespace kelp {

/// Opens the patient store. When it cannot be opened the reason is shown, and the user may try
/// again or choose another folder for this run. False if the user wants to quit instead.
bool openStoreOrAsk(QWidget* parent);

/// The patient files that could not be read, in one box that can be scrolled; nothing for none.
void showStoreProblems(QWidget* parent, const QList<CaError>& problems);

} // namespace kelp
