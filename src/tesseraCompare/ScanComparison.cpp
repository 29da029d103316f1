#include "ScanComparison.h"

#include "SamePlaces.h"
#include "Units.h"
#include "kelpException.h"

#include <algorithm>
#include <cmath>

namespace kelp::compare {

namespace {

using kelp::oct::EtdrsTable;

/// Spacings of one device are written with so many digits that more than this is another device.
constexpr double spacingTolerance = 1e-6;
/// A grid that is moved further has other sectors.
constexpr double foveaTolerance = 0.05;

bool differ(double a, double b)
{
    return std::abs(a - b) > spacingTolerance * std::max(std::abs(a), std::abs(b));
}

QString placeText(const CoordOnLocalizer& place)
{
    return QString("(%1, %2)").arg(place.x, 0, 'f', 3).arg(place.y, 0, 'f', 3);
}

double distance(const CoordOnLocalizer& a, const CoordOnLocalizer& b)
{
    return std::hypot(a.x - b.x, a.y - b.y);
}

/// Fills a comparison step by step.
class ScanComparer
{
public:
    ScanComparer(ScanComparison& result, const ComparisonChoices& choices)
        : m_result(result), m_a(result.a), m_b(result.b), m_choices(choices)
    {
    }

    void run()
    {
        m_result.notes += m_a.notes + m_b.notes;
        const QString reason = reasonForSectorMeans(m_a, m_b, m_choices.samePlaces);
        m_result.byPlace = reason.isEmpty();
        noteRuns();
        noteNotFound();
        noteMissingSurfaces();
        if (m_result.byPlace) {
            m_result.axialMicrometres = commonAxialMicrometres();
            comparePositions();
            compareSectorsByPlace();
        } else {
            m_result.notes.append(reason);
            compareSectorsByMeans();
        }
        if (m_result.surfaces.isEmpty() && m_result.sectors.isEmpty()) {
            throw RuntimeException("There is nothing to compare. " + m_result.notes.join(' '));
        }
    }

private:
    void noteRuns()
    {
        if (m_a.facts && m_b.facts && m_a.facts->version != m_b.facts->version) {
            m_result.notes.append(
                QString("A was made by version %1 of tessera-segment and B by %2.")
                    .arg(m_a.facts->version, m_b.facts->version));
        }
        if (m_a.facts && m_b.facts && m_a.facts->chain != m_b.facts->chain) {
            m_result.notes.append(QString("A was segmented with the chain %1 and B with %2.")
                                      .arg(m_a.facts->chain, m_b.facts->chain));
        }
        noteWarnings();
    }

    void noteWarnings()
    {
        const QStringList ofA = m_a.facts ? m_a.facts->warnings : QStringList();
        const QStringList ofB = m_b.facts ? m_b.facts->warnings : QStringList();
        for (const QString& warning : ofA) {
            const char* runs =
                ofB.contains(warning) ? "The runs of A and B warn: %1" : "The run of A warns: %1";
            m_result.notes.append(QString(runs).arg(warning));
        }
        for (const QString& warning : ofB) {
            if (!ofA.contains(warning)) {
                m_result.notes.append(QString("The run of B warns: %1").arg(warning));
            }
        }
    }

    static QStringList notFoundIn(const ScanSurfaces& scan)
    {
        return scan.facts ? scan.facts->notFound : QStringList();
    }

    bool isNotFound(const QString& identifier) const
    {
        return notFoundIn(m_a).contains(identifier) || notFoundIn(m_b).contains(identifier);
    }

    void noteNotFound()
    {
        if (notFoundIn(m_a) == notFoundIn(m_b)) {
            noteNotFound("The runs of A and B", notFoundIn(m_a));
            return;
        }
        noteNotFound("The run of A", notFoundIn(m_a));
        noteNotFound("The run of B", notFoundIn(m_b));
    }

    void noteNotFound(const char* runs, const QStringList& identifiers)
    {
        if (!identifiers.isEmpty()) {
            m_result.notes.append(
                QString(
                    "%1 found no surface for %2, so %3 and the layers that need %4 are left out.")
                    .arg(runs, identifiers.join(", "), identifiers.size() == 1 ? "it" : "they",
                         identifiers.size() == 1 ? "it" : "them"));
        }
    }

    void noteMissingSurfaces()
    {
        QStringList onlyA;
        QStringList onlyB;
        int nrCommon = 0;
        for (const QString& identifier : knownSurfaces()) {
            const bool inA = m_a.surfaces.contains(identifier);
            const bool inB = m_b.surfaces.contains(identifier);
            nrCommon += inA && inB ? 1 : 0;
            if (inA != inB && !isNotFound(identifier)) {
                (inA ? onlyA : onlyB).append(identifier);
            }
        }
        if (nrCommon == 0) {
            throw RuntimeException(
                QString("A and B have no surface in common: A has %1, B has %2.")
                    .arg(describe(m_a.surfaces.keys()), describe(m_b.surfaces.keys())));
        }
        noteOnly("A", onlyA);
        noteOnly("B", onlyB);
    }

    static QString describe(const QStringList& names)
    {
        return names.isEmpty() ? QString("none that is known") : names.join(", ");
    }

    void noteOnly(const char* side, const QStringList& identifiers)
    {
        if (!identifiers.isEmpty()) {
            m_result.notes.append(QString("Only %1 has %2.").arg(side, identifiers.join(", ")));
        }
    }

    std::optional<double> commonAxialMicrometres() const
    {
        std::optional<double> common = m_choices.axialMicrometres;
        const char* origin = "--axial-micrometres";
        for (const auto& [side, facts] : {std::pair("A", &m_a.facts), std::pair("B", &m_b.facts)}) {
            if (!*facts) {
                continue;
            }
            const double axial = (*facts)->axialMillimetres * micrometresPerMillimetre;
            if (common && differ(*common, axial)) {
                throw RuntimeException(
                    QString("A row is %1 micrometres high by %2, but %3 by %4; these positions "
                            "cannot be compared.")
                        .arg(*common)
                        .arg(origin)
                        .arg(axial)
                        .arg(side));
            }
            common = axial;
            origin = side;
        }
        return common;
    }

    void comparePositions()
    {
        for (const QString& identifier : knownSurfaces()) {
            if (m_a.surfaces.contains(identifier) && m_b.surfaces.contains(identifier)) {
                m_result.surfaces.append({identifier, compareSurfaces(m_a.surfaces[identifier],
                                                                      m_b.surfaces[identifier])});
            }
        }
        if (!m_result.axialMicrometres) {
            m_result.notes.append("Nothing tells the height of a row (--axial-micrometres does), "
                                  "so there are rows only, and no thicknesses.");
            return;
        }
        for (int row = 0; row < EtdrsTable::nrRows; ++row) {
            m_result.thicknesses[static_cast<std::size_t>(row)] =
                thicknessPairs(m_a, m_b, row, *m_result.axialMicrometres);
        }
    }

    /// Null where the record does not tell enough to lay sectors.
    static const ScanFacts* placesOf(const ScanSurfaces& scan)
    {
        return scan.facts && scan.facts->places && scan.facts->grid ? &*scan.facts : nullptr;
    }

    void compareSectorsByPlace()
    {
        const ScanFacts* inA = placesOf(m_a);
        const ScanFacts* inB = placesOf(m_b);
        if (!m_result.axialMicrometres || (!inA && !inB)) {
            m_result.notes.append(noPlacesNote());
            return;
        }
        const ScanFacts& facts = inA ? *inA : *inB;
        noteFovea(inA, inB);
        SectorGrid grid = *facts.grid;
        grid.center = m_choices.fovea.value_or(grid.center);
        m_result.sectors =
            compareSectors(m_a, m_b, *m_result.axialMicrometres, *facts.places, grid);
        noteLayers();
        if (distance(grid.center, facts.grid->center) <= foveaTolerance) {
            markCutSectors(facts, facts);
            noteCutSectorsOfBoth();
        } else {
            m_result.notes.append("Whether the border of the scan cuts the sectors around --fovea "
                                  "is not known.");
        }
    }

    void compareSectorsByMeans()
    {
        const ScanFacts* inA = placesOf(m_a);
        const ScanFacts* inB = placesOf(m_b);
        if (!inA || !inB) {
            m_result.notes.append(noPlacesNote());
            return;
        }
        if (m_choices.fovea) {
            m_result.notes.append("--fovea is not used: a place on the localizer of one scan says "
                                  "nothing of the other.");
        }
        m_result.sectors = compareSectorMeans(sideOf(m_a, *inA), sideOf(m_b, *inB));
        noteLayers();
        markCutSectors(*inA, *inB);
        noteCutSectors();
    }

    static SectorSide sideOf(const ScanSurfaces& scan, const ScanFacts& facts)
    {
        return {scan, facts.axialMillimetres * micrometresPerMillimetre, *facts.places,
                *facts.grid};
    }

    void markCutSectors(const ScanFacts& inA, const ScanFacts& inB)
    {
        for (SectorComparison& sector : m_result.sectors) {
            const auto column = static_cast<std::size_t>(sector.column);
            sector.cutA = inA.cutSectors[column];
            sector.cutB = inB.cutSectors[column];
        }
    }

    /// Labels of the sectors that are compared and cut on a side.
    QStringList cutSectors(bool SectorComparison::*isCut) const
    {
        QStringList labels;
        for (int column = 0; column < EtdrsTable::nrColumns; ++column) {
            const bool anyCut = std::any_of(
                m_result.sectors.begin(), m_result.sectors.end(),
                [&](const auto& sector) { return sector.column == column && sector.*isCut; });
            if (anyCut) {
                labels.append(EtdrsTable::columnLabel(column));
            }
        }
        return labels;
    }

    void noteCutSectorsOfBoth()
    {
        const QStringList cut = cutSectors(&SectorComparison::cutA);
        if (!cut.isEmpty()) {
            m_result.notes.append(QString("The border of the scan cuts %1; A and B are compared on "
                                          "what is left.")
                                      .arg(sectorWords(cut)));
        }
    }

    void noteCutSectors()
    {
        QStringList parts;
        for (const auto& [side, isCut] :
             {std::pair("A", &SectorComparison::cutA), std::pair("B", &SectorComparison::cutB)}) {
            const QStringList cut = cutSectors(isCut);
            if (!cut.isEmpty()) {
                parts.append(QString("%1 of %2").arg(sectorWords(cut), side));
            }
        }
        if (!parts.isEmpty()) {
            m_result.notes.append(
                QString("The border of the scan cuts %1: these means stand on what is left, and do "
                        "not compare with those of whole sectors.")
                    .arg(parts.join(" and ")));
        }
    }

    static QString sectorWords(const QStringList& labels)
    {
        return QString(labels.size() == 1 ? "the sector %1" : "the sectors %1")
            .arg(labels.join(", "));
    }

    void noteFovea(const ScanFacts* inA, const ScanFacts* inB)
    {
        if (!m_choices.fovea && inA && inB &&
            distance(inA->grid->center, inB->grid->center) > foveaTolerance) {
            m_result.notes.append(
                QString("The fovea of A is at %1 mm, that of B at %2 mm; the sectors lie around "
                        "that of A for both.")
                    .arg(placeText(inA->grid->center), placeText(inB->grid->center)));
        }
    }

    void noteLayers()
    {
        if (m_result.sectors.isEmpty()) {
            m_result.notes.append(
                "No layer has both its surfaces in A and in B inside the sectors, "
                "so there is no table of sectors.");
        }
    }

    QString noPlacesNote() const
    {
        if (!m_a.facts && !m_b.facts) {
            return "Neither A nor B tells where its A-scans lie, so there is no table of sectors.";
        }
        return "run.json does not tell where the A-scans lie on the localizer, as those of older "
               "versions of tessera-segment; there is no table of sectors.";
    }

    ScanComparison& m_result;
    const ScanSurfaces& m_a;
    const ScanSurfaces& m_b;
    const ComparisonChoices& m_choices;
};

} // namespace

const ScanFacts* ScanComparison::facts() const
{
    if (a.facts) {
        return &*a.facts;
    }
    return b.facts ? &*b.facts : nullptr;
}

ScanComparison compareScans(const QString& name, const ScanSurfaces& a, const ScanSurfaces& b,
                            const ComparisonChoices& choices)
{
    ScanComparison result;
    result.name = name;
    result.a = a;
    result.b = b;
    ScanComparer(result, choices).run();
    return result;
}

} // namespace kelp::compare
