#pragma once

#include <QDate>
#include <QString>

#include <functional>

namespace kelp::patients {

using IsTaken = std::function<bool(const QString& id)>;

/// What the user typed as an id that can be stored; empty where nothing of it can.
QString idOf(const QString& typed);
/// This id, or with "_2", "_3", ... behind it while it is taken.
QString uniqueId(const QString& id, const IsTaken& isTaken);
/// "Study_2026-11-21", unique.
QString suggestedStudyId(const QDate& date, const IsTaken& isTaken);

} // namespace kelp::patients
