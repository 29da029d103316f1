#include "LayerDistributionUtils.h"

#include "LayerDistributionDocument.h"
#include "kelpCheck.h"
#include "kelpTrace.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QResource>

#include <utility>

// Static libraries lose the registration of their resources unless someone asks for it, which must
// happen outside of any namespace.
static void registerModel()
{
    Q_INIT_RESOURCE(layerDistribution);
}

namespace kelp::oct {

namespace {

/// One row's means from micrometres to millimetres, and its three standard deviations in
/// micrometres to variances in square millimetres.
void toMillimetres(std::vector<double>& means, std::vector<double>& variances)
{
    for (double& mean : means) {
        mean /= 1000.0;
    }
    for (double& variance : variances) {
        const double deviation = variance / 3.0;
        variance = deviation * deviation / 1000000.0;
    }
}

LayerDistributionPtr makeDistribution(LayerDistributionDocument::Entry& entry, int foveaX,
                                      int foveaY)
{
    constexpr Place place{"libraries/OCTScan/src/layerSeg/LayerDistributionUtils",
                          "kelp::oct::LayerDistributionUtils::loadFromXML"};
    check(entry.means.size() == entry.variances.size(), place,
          "Mismatch between mean row length and var row length.");
    check(entry.rows >= 0 && entry.means.size() == static_cast<std::size_t>(entry.rows), place,
          "Mismatch between mean row length and y-dimension.");
    for (std::size_t row = 0; row < entry.means.size(); ++row) {
        std::vector<double>& means = entry.means[row];
        std::vector<double>& variances = entry.variances[row];
        check(means.size() == variances.size(), place,
              "Mismatch between parsed mean row and parsed var row length.");
        // The check is of the row's entries against the columns; its text says otherwise.
        check(entry.columns >= 0 && means.size() == static_cast<std::size_t>(entry.columns), place,
              "Mismatch between parsed mean row length and y-dimension.");
        toMillimetres(means, variances);
    }
    const double spacingX = entry.spacingX / 1000.0;
    const double spacingY = entry.spacingY / 1000.0;
    return LayerDistributionPtr(new LayerDistribution(
        std::move(entry.means), std::move(entry.variances), {spacingX, spacingY, spacingY},
        {foveaY * spacingY, foveaX * spacingX}, entry.upperLayerName, entry.lowerLayerName));
}

QString accessibleResources()
{
    return "The following are accessible resources:\n" + QDir(":/").entryList().join('\n');
}

} // namespace

QString LayerDistributionUtils::modelPath()
{
    return ":/layerDistribution/distributionsXML.xml";
}

QByteArray LayerDistributionUtils::modelXML()
{
    registerModel();
    QFile file(modelPath());
    file.open(QIODevice::ReadOnly);
    return file.readAll();
}

void LayerDistributionUtils::loadFromXML(QList<LayerDistributionPtr>& distributions)
{
    registerModel();
    loadFromXMLResource(modelPath(), distributions);
}

void LayerDistributionUtils::loadFromXMLResource(const QString& path,
                                                 QList<LayerDistributionPtr>& distributions)
{
    if (!QResource(path).isValid()) {
        throw Exception(QString("Resource %1 is not valid.").arg(path));
    }
    QFile file(path);
    Trace() << "loading XML distribution file " << path;
    // Qt opens a folder of the resources as an empty file.
    if (QFileInfo(path).isDir() || !file.open(QIODevice::ReadOnly)) {
        Trace() << "Error opening file: " << path << "!";
        throw Exception(QString("Error opening file %1 from resource system. ").arg(path) +
                        accessibleResources());
    }
    // Mapped, since reading would keep the text twice.
    uchar* const text = file.map(0, file.size());
    const QByteArray content = text ? QByteArray::fromRawData(reinterpret_cast<const char*>(text),
                                                              static_cast<int>(file.size()))
                                    : file.readAll();
    loadFromXMLContent(content, path, distributions);
}

void LayerDistributionUtils::loadFromXMLContent(const QByteArray& content, const QString& path,
                                                QList<LayerDistributionPtr>& distributions)
{
    // Read as a stream: a document tree of the model takes seconds and hundreds of megabytes. The
    // whole text is read before the first check, as with a tree, so that a text which is not
    // well-formed fails as such whatever else is wrong with it.
    LayerDistributionDocument document;
    if (!document.read(content)) {
        Trace() << "Error setting doc content from file: " << path << "!";
        throw Exception(QString("Error setting doc content from file %1").arg(path));
    }
    const QString expectedRoot = "Model";
    if (document.rootName != expectedRoot) {
        Trace() << "XML main node is not '" << expectedRoot << "', but " << document.rootName;
        throw Exception(QString("XML main node is not %1").arg(expectedRoot));
    }
    distributions.clear();
    for (LayerDistributionDocument::Entry& entry : document.entries) {
        distributions << makeDistribution(entry, document.foveaX, document.foveaY);
    }
}

} // namespace kelp::oct
