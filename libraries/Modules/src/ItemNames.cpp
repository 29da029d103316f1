#include "ItemNames.h"

#include "DataTreeNode.h"

namespace kelp::patients {

QString idOf(const QString& typed)
{
    return DataTreeNode::makeIdValid(typed.simplified());
}

QString uniqueId(const QString& id, const IsTaken& isTaken)
{
    QString unique = id;
    for (int number = 2; isTaken(unique); ++number) {
        unique = QStringLiteral("%1_%2").arg(id).arg(number);
    }
    return unique;
}

QString suggestedStudyId(const QDate& date, const IsTaken& isTaken)
{
    return uniqueId(QStringLiteral("Study_") + date.toString(Qt::ISODate), isTaken);
}

} // namespace kelp::patients
