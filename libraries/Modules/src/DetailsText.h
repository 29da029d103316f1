#pragma once

#include "TreeNode.h"

#include <QPair>

namespace kelp::patients {

/// A heading with captions and values below it.
struct DetailsSection
{
    QString title;
    QList<QPair<QString, QString>> facts;
};

DetailsSection patientDetails(const Patient& patient);
DetailsSection studyDetails(Study& study);
DetailsSection itemDetails(const Data& item);
/// Why a stored item could not be read.
DetailsSection unreadableDetails(const Study& study, const QString& id);

/// "1.2 MB" in the user's form.
QString displaySize(qint64 bytes);

/// As a table in rich text.
QString toHtml(const QList<DetailsSection>& sections);

} // namespace kelp::patients
