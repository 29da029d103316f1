#include "OCTScanLoadingWidget.h"

#include "DataTreeIO.h"
#include "FailureBox.h"
#include "HeidelbergExport.h"
#include "OCTScanLoadingUtils.h"
#include "QtDataPathModel.h"
#include "SeriesDialog.h"
#include "kelpLog.h"
#include "kelpTrace.h"

#include <QDir>
#include <QFileInfo>
#include <QHash>
#include <QListView>

namespace {

using kelp::oct::ExportSeries;

constexpr char sourcePath[] = "libraries/OCTScan/src/view/OCTScanLoadingWidget";
constexpr int singleFile = 0;

const QString scanUriKey = QStringLiteral("OCTScanURI");

void logProblem(int line, const char* text)
{
    kelp::Log::getInstance(sourcePath, "OCTScanLoadingWidget::apply", line) << text;
}

/// A file that cannot be read, or is no export, simply has none.
QList<ExportSeries> readSeries(const QString& xmlPath)
{
    try {
        return kelp::oct::readExportSeries(xmlPath);
    } catch (const kelp::Exception&) {
        return {};
    }
}

/// What an export has to offer.
struct Choices
{
    explicit Choices(const QList<ExportSeries>& allSeries)
    {
        for (const ExportSeries& series : allSeries) {
            imageFileNames.append(series.imageFileNames);
            kelp::Trace() << "got file list with " << imageFileNames.size();
            if (series.isOCT() && (series.type == QStringLiteral("Volume") ||
                                   series.type == QStringLiteral("Section"))) {
                const QString label =
                    series.type + QStringLiteral(" taken at ") + series.acquisitionTime;
                labels.append(label);
                // The later of two series of the same second stands behind both lines.
                idsByLabel.insert(label, series.id);
            }
        }
    }

    QStringList imageFileNames; ///< of all series alike
    QStringList labels;
    QHash<QString, QString> idsByLabel;
};

[[maybe_unused]] const int registeredAtStart = createOCTScanLoadingWidgetFactory();

} // namespace

OCTScanLoadingWidget::OCTScanLoadingWidget(Data* item, const QString& name, QWidget* parent,
                                           Qt::WindowFlags flags)
    : QtDataLoadingWidget(item, name, parent, flags, true)
{
    setSelectionMode(singleFile);
}

QString OCTScanLoadingWidget::getFileFilter() const
{
    return QStringLiteral("XML files (*.xml)");
}

bool OCTScanLoadingWidget::apply()
{
    const DataPointer<Data> item(getData()); // until the end, whatever happens to other holders
    const std::optional<QString> xmlPath = chosenXmlPath();
    if (!xmlPath) {
        return false;
    }
    const Choices choices(readSeries(*xmlPath));
    const std::optional<QString> seriesId = askForSeries(choices.labels, choices.idsByLabel);
    if (!seriesId) {
        return false;
    }
    const QString folder = QFileInfo(*xmlPath).absolutePath() + QDir::separator();
    kelp::Trace() << "binary file folder: " << folder;
    QStringList files;
    for (const QString& name : choices.imageFileNames) {
        files.append(folder + name);
    }
    files.append(QFileInfo(*xmlPath).absoluteFilePath());
    return setUris(copyFiles(files), *seriesId);
}

std::optional<QString> OCTScanLoadingWidget::chosenXmlPath()
{
    const auto* const model = qobject_cast<QtDataPathModel*>(getView()->model());
    if (!model) {
        logProblem(__LINE__, "Cannot cast model to QtDataPathModel.");
        return std::nullopt;
    }
    if (!getData()) {
        logProblem(__LINE__, "cdata is not defined.");
        showMessage(QStringLiteral("The item that was to be added is gone."));
        return std::nullopt;
    }
    if (model->rowCount() != 1) {
        logProblem(__LINE__, "Selected items in file list != 1");
        showMessage(QStringLiteral("Choose one XML file of an export with the + button."));
        return std::nullopt;
    }
    return model->path(0);
}

std::optional<QString> OCTScanLoadingWidget::askForSeries(const QStringList& labels,
                                                          const QHash<QString, QString>& idsByLabel)
{
    kelp::oct::SeriesDialog dialog(labels, this);
    if (dialog.exec() != QDialog::Accepted) {
        return std::nullopt;
    }
    const QString label = dialog.chosen();
    if (label.isEmpty()) {
        showMessage(labels.isEmpty()
                        ? QStringLiteral("This file holds no volume and no section to add.")
                        : QStringLiteral("Select a series to add it."));
        return std::nullopt;
    }
    const QString id = idsByLabel.value(label);
    if (id.isEmpty()) {
        kelp::Trace() << "series id not found from key \"" << label << "\"";
        showMessage(QStringLiteral("This series has no identifier and cannot be added."));
        return std::nullopt;
    }
    return id;
}

QStringList OCTScanLoadingWidget::copyFiles(const QStringList& files)
{
    try {
        return OCTScanLoadingUtils::AutoCopyFiles(files, DataTreeIO::binaryDataDirUri().path(),
                                                  true, QStringLiteral("HRA_XML_"));
    } catch (const kelp::Exception& exception) {
        kelp::showFailure(this, QStringLiteral("Error copying files"),
                          QStringLiteral("Could not copy files. Reason: %1")
                              .arg(QString::fromUtf8(exception.what())));
        return files;
    }
}

bool OCTScanLoadingWidget::setUris(const QStringList& files, const QString& seriesId)
{
    const QString xmlPath = OCTScanLoadingUtils::FindXMLFile(files);
    kelp::Trace() << "new xml file location: " << xmlPath;
    if (!setUri(scanUriKey, kelp::URI::compose(QStringLiteral("hra"), xmlPath,
                                               QStringLiteral("seriesId"), seriesId))) {
        return false;
    }
    int number = 0;
    for (QString path : files) {
        if (path == xmlPath) {
            continue;
        }
        // Never decoded, they only list the files.
        path.replace(QLatin1Char('/'), QLatin1Char('\\'));
        if (!setUri(QStringLiteral("SliceImage%1").arg(number),
                    kelp::URI::compose(QStringLiteral("dummy"), path))) {
            return false;
        }
        ++number;
    }
    return true;
}

bool OCTScanLoadingWidget::setUri(const QString& key, const kelp::URI& uri)
{
    kelp::Trace() << "calling setURI with: " << key << " - " << uri.toString();
    const CaError error = getData()->setUri(key, uri);
    if (error == CaError::nullError) {
        return true;
    }
    kelp::showFailure(
        this, QStringLiteral("Error setting URI files"),
        QStringLiteral("Could not set URI %1. Reason: %2").arg(key, error.toString()));
    return false;
}

QString OCTScanLoadingWidgetDataFactoryRegistration::name() const
{
    return QStringLiteral("OCTScanLoadingWidget");
}

QtDataConfigurationWidget*
OCTScanLoadingWidgetDataFactoryRegistration::configurationWidget(Data* item, const QString& name,
                                                                 QWidget* parent) const
{
    return new OCTScanLoadingWidget(item, name, parent, {});
}

int createOCTScanLoadingWidgetFactory()
{
    static const bool isRegistered = [] {
        DataFactory::Registration::registerWidget(new OCTScanLoadingWidgetDataFactoryRegistration);
        return true;
    }();
    return isRegistered ? 1 : 0;
}

#include "moc_OCTScanLoadingWidget.cpp"
