#include "SegmentationQuality.h"

#include "LayerName.h"

#include <algorithm>
#include <utility>

namespace kelp::oct {

namespace {

enum class Finding
{
    WithoutRow,
    WithoutRoom,
    AtTop,
    AtBottom
};

/// The worst first.
constexpr Finding findings[] = {Finding::WithoutRow, Finding::WithoutRoom, Finding::AtTop,
                                Finding::AtBottom};

// From which share of its A-scans at one end of the search range on a surface is told of. An end
// alone is no fault, since ranges end near where surfaces are to be. On synthetic eyes, whose
// surfaces are known, with the chain made for them: at most 15 % over a whole surface, with errors
// as everywhere; in single B-scans up to 44 % with errors below 1.5 rows and up to 75 % with errors
// of at most 2. On real scans that were segmented well: at most 25 % of a surface, 54 % of a
// B-scan. On scans that the chain cannot follow (retinas squeezed, stretched or darkened): 56 to
// 98 % of a surface.
constexpr double shareOfSurface = 0.5;
constexpr double shareOfBScan = 0.8;

int countOf(const QualityCounts& counts, Finding finding)
{
    switch (finding) {
    case Finding::WithoutRow:
        return counts.withoutRow;
    case Finding::WithoutRoom:
        return counts.withoutRoom;
    case Finding::AtTop:
        return counts.atTop;
    case Finding::AtBottom:
        return counts.atBottom;
    }
    return 0;
}

/// The range of the inner border of the RPE ends where it lies over a healthy Bruch's membrane.
bool mayEndThere(const QString& surface, Finding finding)
{
    return finding == Finding::AtBottom && surface == LayerNameIRPE::create()->getIdentifier();
}

bool reaches(const QualityCounts& counts, Finding finding, double share)
{
    return countOf(counts, finding) > 0 && countOf(counts, finding) >= share * counts.aScans;
}

/// Indices of the B-scans that the finding is to be told of.
QList<int> concernedBScans(const SurfaceQuality& surface, Finding finding)
{
    // A surface without row or without room is never as it should be.
    double leastShare = 0.0;
    if (finding == Finding::AtTop || finding == Finding::AtBottom) {
        leastShare = reaches(surface.all(), finding, shareOfSurface) ? 0.0 : shareOfBScan;
    }
    QList<int> concerned;
    for (std::size_t i = 0; i < surface.bScans.size(); ++i) {
        if (reaches(surface.bScans[i], finding, leastShare)) {
            concerned.append(static_cast<int>(i));
        }
    }
    return concerned;
}

/// "100 %" is kept for what is all.
QString percentage(int part, int whole)
{
    constexpr int hundred = 100;
    if (part == whole) {
        return "100 %";
    }
    const int rounded = qRound(100.0 * part / whole);
    return rounded == 0 ? QString("less than 1 %")
                        : QString("%1 %").arg(std::min(rounded, hundred - 1));
}

/// "3", "1 to 6", "1 to 6, 48, 49"; the indices count from 0 and rise.
QString numbersFromOne(const QList<int>& indices)
{
    QStringList runs;
    for (int i = 0; i < indices.size();) {
        int last = i;
        while (last + 1 < indices.size() && indices[last + 1] == indices[last] + 1) {
            ++last;
        }
        const bool isPair = last == i + 1;
        runs.append(QString::number(indices[i] + 1));
        if (last > i) {
            const QString end = QString::number(indices[last] + 1);
            if (isPair) {
                runs.append(end);
            } else {
                runs.last() += " to " + end;
            }
        }
        i = last + 1;
    }
    return runs.join(", ");
}

/// " of B-scan 3", " of B-scans 1 to 6, 48, 49"; empty if it is all of them.
QString placeWords(const QList<int>& concerned, int nrUnmasked)
{
    if (concerned.size() == nrUnmasked) {
        return {};
    }
    return QString(concerned.size() == 1 ? " of B-scan %1" : " of B-scans %1")
        .arg(numbersFromOne(concerned));
}

QString sentence(Finding finding, const QString& names, int nrNames, const QString& where,
                 bool isEverywhere)
{
    switch (finding) {
    case Finding::WithoutRow:
        return QString("%1: no surface found in %2, the result %3is not a segmentation")
            .arg(names, where, isEverywhere ? QString() : QString("there "));
    case Finding::WithoutRoom:
        return QString(
                   "%1: the distances that are allowed between the surfaces leave no room in %2")
            .arg(names, where);
    case Finding::AtTop:
    case Finding::AtBottom:
        return QString(nrNames == 1
                           ? "%1: at the %2 end of its search range in %3, the surface may "
                             "lie %4 it"
                           : "%1: at the %2 ends of their search ranges in %3, the "
                             "surfaces may lie %4 them")
            .arg(names, finding == Finding::AtTop ? "upper" : "lower", where,
                 finding == Finding::AtTop ? "above" : "below");
    }
    return {};
}

/// A finding on surfaces of one step, which it concerns alike.
struct Warning
{
    Finding finding = Finding::WithoutRow;
    QStringList names;
    QString where; ///< "52 % of the A-scans of B-scans 1 to 3"
    bool isEverywhere = false;
    double share = 0.0; ///< of all A-scans of the surface

    QString text() const
    {
        return sentence(finding, names.join(", "), names.size(), where, isEverywhere);
    }
};

/// Adds what the finding says of the surface, if anything.
void addWarning(QList<Warning>& warnings, const SurfaceQuality& surface, Finding finding)
{
    const QList<int> concerned = concernedBScans(surface, finding);
    if (concerned.isEmpty() || mayEndThere(surface.surface, finding)) {
        return;
    }
    QualityCounts sum;
    for (const int index : concerned) {
        sum += surface.bScans[static_cast<std::size_t>(index)];
    }
    const auto nrUnmasked =
        std::count_if(surface.bScans.begin(), surface.bScans.end(),
                      [](const QualityCounts& counts) { return counts.aScans > 0; });
    const QString where = percentage(countOf(sum, finding), sum.aScans) + " of the A-scans" +
                          placeWords(concerned, static_cast<int>(nrUnmasked));
    const QString name = LayerName::fromIdentifier(surface.surface)->getShortName();
    for (Warning& other : warnings) {
        if (other.finding == finding && other.where == where) {
            other.names.append(name);
            return;
        }
    }
    const int all = surface.all().aScans;
    warnings.append({finding,
                     {name},
                     where,
                     countOf(sum, finding) == all,
                     static_cast<double>(countOf(sum, finding)) / all});
}

} // namespace

QStringList qualityWarnings(const std::vector<StepStatistics>& steps)
{
    QList<Warning> warnings;
    for (const StepStatistics& step : steps) {
        QList<Warning> ofStep;
        for (const SurfaceQuality& surface : step.surfaces) {
            for (const Finding finding : findings) {
                addWarning(ofStep, surface, finding);
            }
        }
        warnings += ofStep;
    }
    std::stable_sort(warnings.begin(), warnings.end(), [](const Warning& a, const Warning& b) {
        // The two ends rank alike.
        const auto rank = [](const Warning& warning) {
            return std::pair(std::min(warning.finding, Finding::AtTop), -warning.share);
        };
        return rank(a) < rank(b);
    });
    QStringList sentences;
    for (const Warning& warning : warnings) {
        sentences.append(warning.text());
    }
    return sentences;
}

QStringList surfacesNotFound(const std::vector<StepStatistics>& steps)
{
    QStringList identifiers;
    for (const StepStatistics& step : steps) {
        for (const SurfaceQuality& surface : step.surfaces) {
            identifiers.removeAll(surface.surface);
            if (LayerName::fromIdentifier(surface.surface)->isFinal() &&
                reaches(surface.all(), Finding::WithoutRow, shareOfSurface)) {
                identifiers.append(surface.surface);
            }
        }
    }
    return identifiers;
}

} // namespace kelp::oct
