#pragma once

#include "ThicknessComparison.h"

#include <QImage>
#include <QList>
#include <QString>
#include <QStringList>

namespace kelp::compare {

/// How many differences lie at each place of the plot of differences over means. A cell is a whole
/// number of rows wide and high, so that positions in whole rows fill every cell alike.
struct AgreementDensity
{
    double cell = 1.0; ///< micrometres
    int nrColumns = 0;
    int nrRows = 0;
    double left = 0.0; ///< of the first cell's edge, micrometres
    double bottom = 0.0;
    std::vector<int> counts; ///< row after row

    int at(int column, int row) const
    {
        return counts[static_cast<std::size_t>(row) * static_cast<std::size_t>(nrColumns) +
                      static_cast<std::size_t>(column)];
    }

    /// Of pairs that are not empty.
    static AgreementDensity of(const Tally<ThicknessPair>& pairs, double axialMicrometres);
};

/// Differences over means of one layer's A-scans as a density, with mean and limits of agreement,
/// which are those of the A-scans.
QImage agreementOfAScans(const QStringList& title, const Tally<ThicknessPair>& pairs,
                         double axialMicrometres);

/// The sector means of one layer, of one scan or of several; at least one.
struct SectorMeans
{
    int row = 0; ///< of the ETDRS table
    std::vector<ThicknessPair> means;
};

/// Differences over means of the sectors in a panel for each layer, with its own mean and its own
/// limits of agreement: layers differ, and the whole retina holds all the others, so that limits
/// over several would be those of none. All panels have the same scale of differences.
QImage agreementOfSectors(const QStringList& title, const QList<SectorMeans>& layers);

} // namespace kelp::compare
