#pragma once

#include "OCTScan.h"

#include <QDate>
#include <QList>
#include <QString>
#include <QStringList>

#include <functional>

namespace kelp::oct {

/// What an export says of one of its series, before any image is read. Shared by the loading
/// widget, the batch import and the command line.
struct ExportSeries
{
    QString id;
    QString modality;
    QString type;               ///< the export's own word: "Volume", "Fast Volume", "Section", ...
    QString patternText;        ///< the text of the OCTScanPattern that the type stands for
    QString acquisitionTime;    ///< "H:M:S" of the first image, as written there
    QStringList imageFileNames; ///< bare names in file order, localizer included
    QStringList bScanFileNames; ///< bare names of the B-scans alone, in order; empty where none
    bool complete = false;      ///< has ID, Modality and Type
    /// Whether a scan of this id can be read: only the series of the patient's first study are
    /// found, and of those with the same id the first.
    bool decodable = false;
    bool isOCT() const { return complete && modality == "OCT"; }
    /// An OCT series of a pattern that the segmentation chains accept.
    bool canBeSegmented() const;
};

/// All series of the whole document, in order. Throws kelp::IOFailure or kelp::ParsingError, each
/// naming the file and the reason, for a file that cannot be opened, is empty or is not XML.
QList<ExportSeries> readExportSeries(const QString& xmlPath);

/// What is wrong with the image files of the series, which are expected beside the XML file: one
/// plain sentence for each that is missing or cannot be read, naming it and the reason.
QStringList findImageProblems(const QString& xmlPath, const ExportSeries& series);

/// Whether the segmentation chains accept scans of this pattern: all but stars and unknown ones.
bool canBeSegmented(const OCTScanPattern& pattern);

/// A scan, not yet loaded, of this series of this XML file. The image files are listed on it.
OCTScanPtr makeScan(const QString& xmlPath, const QString& seriesId, const QStringList& imagePaths);

/// How a batch import reports what goes wrong with one series while it goes on with the next.
using ImportProblem = std::function<void(const QString& text)>;

/// The scans of every OCT series of an XML file, each with its files copied into a folder of its
/// own below targetFolder. A file that cannot be read or parsed gives no scans.
QList<OCTScanPtr> importScans(const QString& xmlPath, const QString& targetFolder,
                              const ImportProblem& reportProblem);

} // namespace kelp::oct
