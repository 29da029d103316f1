#pragma once

#include "OCTScanSegmentation.h"
#include "Patient.h"

#include <QString>

namespace kelp::command {

/// Keeps scans and their segmentations in a patient store: the patient by name and birth date, one
/// study for all imports, each scan under its id with its files copied into the store. The only
/// one in the program that touches the store.
class StoreKeeper
{
public:
    /// Opens or makes the store. Throws IOFailure with the folder and the reason.
    explicit StoreKeeper(const QString& folder);
    ~StoreKeeper();
    StoreKeeper(const StoreKeeper&) = delete;
    StoreKeeper& operator=(const StoreKeeper&) = delete;

    enum class Segmentations
    {
        Add,         ///< a further one beside those that the scan has
        OnlyTheFirst ///< only if the scan has none
    };

    /// Adds what is missing of the patient, the study and the scan, and the segmentation of the
    /// results folder, and stores the patient. Throws kelp::Exception with the reason.
    void keep(const QString& xmlPath, const QString& seriesId, const QString& resultsFolder,
              Segmentations segmentations);
};

} // namespace kelp::command
