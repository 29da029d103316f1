#include "Figure.h"

#include <algorithm>

namespace kelp::bench {

double Figure::median() const
{
    if (milliseconds.isEmpty()) {
        return 0.0;
    }
    QList<double> sorted = milliseconds;
    std::sort(sorted.begin(), sorted.end());
    return sorted.at(sorted.size() / 2);
}

double Figure::worst() const
{
    return milliseconds.isEmpty() ? 0.0
                                  : *std::max_element(milliseconds.begin(), milliseconds.end());
}

bool Figure::isMissed() const
{
    return milliseconds.isEmpty() || worst() > limit;
}

QString toTable(const QList<Figure>& figures)
{
    constexpr int whatWidth = -58;
    constexpr int numberWidth = 10;
    const auto line = [](const QString& what, const QString& limit, const QString& median,
                         const QString& worst, const QString& verdict) {
        return QStringLiteral("%1%2%3%4  %5\n")
            .arg(what, whatWidth)
            .arg(limit, numberWidth)
            .arg(median, numberWidth)
            .arg(worst, numberWidth)
            .arg(verdict);
    };
    QString table = line(QStringLiteral("milliseconds"), QStringLiteral("limit"),
                         QStringLiteral("median"), QStringLiteral("worst"), QString());
    for (const Figure& figure : figures) {
        const auto number = [](double value) { return QString::number(value, 'f', 1); };
        table +=
            line(figure.what, number(figure.limit), number(figure.median()), number(figure.worst()),
                 figure.isMissed() ? QStringLiteral("MISSED") : QStringLiteral("ok"));
    }
    return table;
}

} // namespace kelp::bench
