#include "SegmentationNames.h"

#include "DataTreeNode.h"

namespace kelp::oct {

QString newSegmentationId(const Study& study, const QDateTime& time)
{
    constexpr int lastNumber = 999;
    const QString base = DataTreeNode::makeIdValid(
        QStringLiteral("Segment_") + time.toString(QStringLiteral("yyyy.MM.dd-hh:mm")));
    QString candidate;
    for (int number = 1; number <= lastNumber; ++number) {
        candidate = DataTreeNode::makeIdValid(base + QStringLiteral("_%1").arg(number));
        if (!study.hasChild(candidate)) {
            break;
        }
    }
    return candidate;
}

} // namespace kelp::oct
