#include "OCTScanLoadingUtils.h"

#include "CaProgressMonitor.h"
#include "ExportDocument.h"
#include "kelpCheck.h"
#include "kelpLog.h"
#include "kelpTrace.h"

#include <QDateTime>
#include <QDir>
#include <QFile>
#include <QFileInfo>

using namespace kelp::oct::exportDocument;

namespace {

constexpr char sourcePath[] = "libraries/OCTScan/src/data/OCTScanLoadingUtils";

OCTScanLoadingUtils::Interaction* currentInteraction = nullptr;

/// The text of the first of these elements. The texts of the failures call it as the parameter.
QString requiredName(const QDomNodeList& elements, const char* calledInFailure)
{
    const QString text = elements.at(0).toElement().text();
    if (text.isEmpty()) {
        throw kelp::ParsingError(
            QString("Got no %1 name from XML, the XML might not be an HRA export.")
                .arg(calledInFailure));
    }
    return text;
}

QDate birthDateFrom(const QDomNodeList& elements)
{
    if (elements.isEmpty()) {
        throw kelp::ParsingError("Got no birthdate from XML, the XML might not be an HRA export.");
    }
    const QDomElement date = elements.at(0).firstChildElement("Date");
    if (date.isNull()) {
        throw kelp::ParsingError(
            "Got empty birthdate from XML, the XML might not be an HRA export.");
    }
    return QDate(date.firstChildElement("Year").text().toInt(),
                 date.firstChildElement("Month").text().toInt(),
                 date.firstChildElement("Day").text().toInt());
}

/// How trouble while copying reaches the user: shown with the input list as the result, or thrown.
class CopyReport
{
public:
    CopyReport(bool interactive, const QStringList& input)
        : m_interactive(interactive), m_input(input)
    {
    }

    QStringList give(const QString& title, const QString& shown, const QString& thrown) const
    {
        if (!m_interactive) {
            throw kelp::IOFailure(thrown);
        }
        if (currentInteraction) {
            currentInteraction->showProblem(title, shown);
        } else {
            kelp::Log::getInstance(sourcePath, "OCTScanLoadingUtils::AutoCopyFiles", __LINE__)
                << title << ": " << shown;
        }
        return m_input;
    }

private:
    bool m_interactive;
    const QStringList& m_input;
};

/// Shows that copying is under way for as long as it lives. Without interaction it shows nothing.
class CopyProgress
{
public:
    CopyProgress(bool interactive, int files) : m_interactive(interactive)
    {
        if (m_interactive) {
            setBusy(true);
            CaProgressMonitor::getInstance().open("Copying data files...", files);
        }
    }
    CopyProgress(const CopyProgress&) = delete;
    CopyProgress& operator=(const CopyProgress&) = delete;
    ~CopyProgress()
    {
        if (m_interactive) {
            CaProgressMonitor::getInstance().close();
            setBusy(false);
        }
    }

    void step() const
    {
        if (m_interactive) {
            CaProgressMonitor::getInstance().step();
        }
    }

private:
    static void setBusy(bool busy)
    {
        if (currentInteraction) {
            currentInteraction->setBusy(busy);
        }
    }

    bool m_interactive;
};

/// A folder that does not exist yet. After 999 tries the bare base, which may exist.
QString freeTarget(const QString& base)
{
    for (int n = 1; n <= 999; ++n) {
        const QString candidate = QString("%1_%2").arg(base).arg(n);
        if (!QFileInfo::exists(candidate)) {
            return candidate + "/";
        }
    }
    return base;
}

/// Copies until the first failure, whose source and target are then told.
struct CopyResult
{
    QStringList newPaths;
    QString failedSource;
    QString failedTarget;
};

CopyResult copyAll(const QStringList& files, const QString& target, const CopyProgress& progress)
{
    CopyResult result;
    for (const QString& file : files) {
        const QString newPath = target + QFileInfo(file).fileName();
        if (QFileInfo::exists(newPath)) {
            kelp::Trace() << "file exists: " << newPath;
        } else if (!QFile::copy(file, newPath)) {
            result.failedSource = file;
            result.failedTarget = newPath;
            return result;
        }
        kelp::Trace() << "new file location: " << newPath;
        result.newPaths.append(newPath);
        progress.step();
    }
    return result;
}

} // namespace

void OCTScanLoadingUtils::setInteraction(Interaction* interaction)
{
    currentInteraction = interaction;
}

void OCTScanLoadingUtils::GetPatientInfoFromXML(const QString& xmlPath, QString& name,
                                                QDate& birthDate)
{
    QDomDocument document;
    try {
        document = parse(readText(xmlPath));
    } catch (const kelp::IOFailure&) {
        throw kelp::IOFailure(QString("Error opening path to XML: %1.").arg(xmlPath));
    } catch (const kelp::ParsingError&) {
        throw kelp::ParsingError("Could not set XML as content type.");
    }
    birthDate = birthDateFrom(document.elementsByTagName("Birthdate"));
    name.clear();
    const QDomNodeList firstNames = document.elementsByTagName("FirstNames");
    if (!firstNames.isEmpty()) {
        name = requiredName(firstNames, "first");
    }
    const QDomNodeList lastNames = document.elementsByTagName("LastName");
    if (!lastNames.isEmpty()) {
        name += " " + requiredName(lastNames, "last");
    }
}

QString OCTScanLoadingUtils::GetTimeStringFromSeries(const QDomElement& series)
{
    if (series.tagName() != "Series") {
        throw kelp::ParsingError("Dom element is not Series");
    }
    const QDomElement time = firstDescendant(series, QStringList{"Image", "AcquisitionTime"});
    if (time.isNull()) {
        return QString();
    }
    QStringList parts{"HH", "MM", "SS"};
    const QStringList names{"Hour", "Minute", "Second"};
    for (int i = 0; i < parts.size(); ++i) {
        if (const auto text = descendantText(time, {names.at(i)})) {
            parts[i] = text->left(2);
        }
    }
    return parts.join(":");
}

QStringList OCTScanLoadingUtils::GetImageFileNames(const QDomElement& series)
{
    QStringList fileNames;
    const QDomNodeList images = series.elementsByTagName("Image");
    for (int i = 0; i < images.size(); ++i) {
        const QDomElement examUrl =
            images.at(i).firstChildElement("ImageData").firstChildElement("ExamURL");
        if (!examUrl.isNull()) {
            fileNames.append(bareFileName(examUrl.text()));
        }
    }
    return fileNames;
}

QStringList OCTScanLoadingUtils::AutoCopyFiles(const QStringList& files,
                                               const QString& defaultFolder, bool interactive,
                                               const QString& folderPrefix)
{
    constexpr kelp::Place place{sourcePath, "OCTScanLoadingUtils::AutoCopyFiles"};
    const QString directoryTitle = "Creating Directory";
    kelp::check(!defaultFolder.isEmpty(), place, "Default folder is empty.");
    const CopyReport report(interactive, files);
    if (!QDir(defaultFolder).exists() && !QDir().mkpath(defaultFolder)) {
        return report.give(
            directoryTitle,
            QString("Directory (%1) could not be created! Giving up...").arg(defaultFolder),
            QString("Could not create directory %1").arg(defaultFolder));
    }
    const QString base = QDir(defaultFolder).absolutePath() + "/" + folderPrefix +
                         QDateTime::currentDateTime().toString("yyyy_MM_dd_hh_mm_ss");
    const QString target = freeTarget(base);
    if (!QDir().mkpath(target)) {
        return report.give(directoryTitle,
                           QString("Directory (%1) could not be created!").arg(target),
                           QString("Could not create directory %1 in default folder %2")
                               .arg(target, defaultFolder));
    }
    CopyResult result;
    {
        const CopyProgress progress(interactive, files.size());
        result = copyAll(files, target, progress);
    }
    if (!result.failedTarget.isEmpty()) {
        const QString text = QString("Could not copy file %1 to new location %2")
                                 .arg(result.failedSource, result.failedTarget);
        return report.give("Copying File Error", text, text);
    }
    return result.newPaths;
}

QString OCTScanLoadingUtils::FindXMLFile(const QStringList& files)
{
    for (const QString& file : files) {
        if (file.endsWith(".xml", Qt::CaseInsensitive)) {
            return file;
        }
    }
    return QString();
}
