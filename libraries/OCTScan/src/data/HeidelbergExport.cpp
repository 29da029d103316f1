#include "HeidelbergExport.h"

#include "ExportDocument.h"
#include "OCTScanLoadingUtils.h"
#include "kelpException.h"
#include "kelpImageTools.h"
#include "kelpTrace.h"

#include <QDir>
#include <QFileInfo>

namespace kelp::oct {

using namespace exportDocument;

namespace {

const char* const folderPrefix = "HRA_XML_";

bool patternTextCanBeSegmented(const QString& pattern)
{
    return pattern == OCTScanPatternSingleBScan().toString() ||
           pattern == OCTScanPatternCircularBScan().toString() ||
           pattern == OCTScanPatternVolume().toString();
}

QString firstChildText(const QDomElement& element, const QString& name)
{
    return element.firstChildElement(name).text();
}

QStringList readBScanFileNames(const QDomElement& series)
{
    QStringList fileNames;
    for (const QDomElement& image : childElements(series, "Image")) {
        if (descendantText(image, {"ImageType", "Type"}) == QString("OCT")) {
            const auto examUrl = descendantText(image, {"ImageData", "ExamURL"});
            fileNames.append(bareFileName(examUrl.value_or(QString())));
        }
    }
    return fileNames;
}

/// ID is the series' own child, as scans are selected by it. Modality and Type are found as the
/// decoder finds them, so that both tell the same.
ExportSeries readSeries(const QDomElement& element)
{
    const auto modality = descendantText(element, {"Modality"});
    const auto type = descendantText(element, {"Type"});
    ExportSeries series;
    series.id = firstChildText(element, "ID");
    series.modality = modality.value_or(QString());
    series.type = type.value_or(QString());
    series.patternText = patternText(series.type);
    series.acquisitionTime = OCTScanLoadingUtils::GetTimeStringFromSeries(element);
    series.imageFileNames = OCTScanLoadingUtils::GetImageFileNames(element);
    series.bScanFileNames = readBScanFileNames(element);
    series.complete = !element.firstChildElement("ID").isNull() && modality && type;
    return series;
}

/// The XML's folder with a separator behind it.
QString folderOf(const QString& xmlPath)
{
    return QFileInfo(xmlPath).absolutePath() + QDir::separator();
}

QStringList withFolder(const QString& folder, const QStringList& fileNames)
{
    QStringList paths;
    for (const QString& fileName : fileNames) {
        paths.append(folder + fileName);
    }
    return paths;
}

} // namespace

bool ExportSeries::canBeSegmented() const
{
    return isOCT() && patternTextCanBeSegmented(patternText);
}

bool canBeSegmented(const OCTScanPattern& pattern)
{
    return patternTextCanBeSegmented(pattern.toString());
}

QList<ExportSeries> readExportSeries(const QString& xmlPath)
{
    const QDomDocument document = read(xmlPath);
    const QDomElement study = firstDescendant(findPatient(document), QString("Study"));
    QMap<QString, QDomElement> decodedById;
    for (const QDomElement& element : childElements(study, "Series")) {
        for (const QDomElement& id : childElements(element, "ID")) {
            if (!decodedById.contains(id.text())) {
                decodedById.insert(id.text(), element);
            }
        }
    }
    QList<ExportSeries> allSeries;
    const QDomNodeList elements = document.elementsByTagName("Series");
    for (int i = 0; i < elements.size(); ++i) {
        const QDomElement element = elements.at(i).toElement();
        ExportSeries series = readSeries(element);
        series.decodable = series.complete && decodedById.value(series.id) == element;
        allSeries.append(series);
    }
    return allSeries;
}

QStringList findImageProblems(const QString& xmlPath, const ExportSeries& series)
{
    QStringList problems;
    for (const QString& path : withFolder(folderOf(xmlPath), series.imageFileNames)) {
        if (ImageTools::loadImage(path).isNull()) {
            problems.append(unreadableImageText(path));
        }
    }
    return problems;
}

OCTScanPtr makeScan(const QString& xmlPath, const QString& seriesId, const QStringList& imagePaths)
{
    OCTScanPtr scan(new OCTScan);
    scan->setUri("OCTScanURI",
                 URI::compose("hra", QFileInfo(xmlPath).absoluteFilePath(), "seriesId", seriesId));
    scan->setId(seriesId);
    for (int i = 0; i < imagePaths.size(); ++i) {
        scan->setUri(QString("SliceImage%1").arg(i), URI::compose("dummy", imagePaths.at(i)));
    }
    return scan;
}

QList<OCTScanPtr> importScans(const QString& xmlPath, const QString& targetFolder,
                              const ImportProblem& reportProblem)
{
    QList<ExportSeries> allSeries;
    try {
        allSeries = readExportSeries(xmlPath);
    } catch (const IOFailure&) {
        return {};
    } catch (const ParsingError&) {
        // Whatever is no export simply has no series.
    }
    const QString folder = folderOf(xmlPath);
    Trace() << "xml file folder: " << folder;
    QList<OCTScanPtr> scans;
    for (const ExportSeries& series : allSeries) {
        QStringList files = withFolder(folder, series.imageFileNames);
        files.append(QFileInfo(xmlPath).absoluteFilePath());
        Trace() << "got file list with " << files.size();
        try {
            files = OCTScanLoadingUtils::AutoCopyFiles(files, targetFolder, false, folderPrefix);
        } catch (const Exception& exception) {
            reportProblem(QString("Error copying files: %1\n").arg(exception.what()));
        }
        const QString newXmlPath = OCTScanLoadingUtils::FindXMLFile(files);
        Trace() << "new xml file location: " << newXmlPath;
        if (series.isOCT()) {
            files.removeAll(newXmlPath);
            scans.append(makeScan(newXmlPath, series.id, files));
        }
    }
    return scans;
}

} // namespace kelp::oct
