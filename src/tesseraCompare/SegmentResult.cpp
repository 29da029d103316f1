#include "SegmentResult.h"

#include "kelpException.h"

#include <QDir>
#include <QFileInfo>
#include <QJsonArray>
#include <QJsonDocument>

#include <limits>

namespace kelp::compare {

namespace {

using kelp::oct::EtdrsTable;

constexpr int maskedPosition = -1;
constexpr int highestPosition = std::numeric_limits<unsigned short>::max();

/// No eye is larger.
constexpr double longestSpacing = 100.0;

const QString recordName = "run.json";

QString layerFile(const QString& identifier)
{
    return QString("layer_%1.csv").arg(identifier);
}

QJsonObject readRecord(const QString& path)
{
    QJsonParseError error;
    const QJsonDocument document = QJsonDocument::fromJson(readWholeFile(path), &error);
    if (error.error != QJsonParseError::NoError || !document.isObject()) {
        refuseFile(path, QString("This is no readable record of a run: %1.")
                             .arg(document.isNull() ? error.errorString() : "no object"));
    }
    return document.object();
}

double readSpacing(const QJsonObject& record, const QString& key, const QString& path)
{
    const double spacing = record.value("spacingMillimetres").toObject().value(key).toDouble();
    if (!(spacing > 0.0 && spacing < longestSpacing)) {
        refuseFile(path, QString("Its spacing of %1 is missing or not from 0 to %2 mm.")
                             .arg(key)
                             .arg(longestSpacing));
    }
    return spacing;
}

int readSize(const QJsonObject& record, const QString& key, const QString& path)
{
    const int size = record.value("size").toObject().value(key).toInt();
    if (size < 1) {
        refuseFile(path, QString("Its number of %1 is missing or below 1.").arg(key));
    }
    return size;
}

std::array<bool, EtdrsTable::nrColumns> readCutSectors(const QJsonObject& record)
{
    const QJsonObject coverage = record.value("etdrsCoverage").toObject();
    std::array<bool, EtdrsTable::nrColumns> cut{};
    for (int column = 0; column < EtdrsTable::nrColumns; ++column) {
        const QJsonObject sector = coverage.value(EtdrsTable::columnLabel(column)).toObject();
        cut[static_cast<std::size_t>(column)] = sector.value("cut").toBool();
    }
    return cut;
}

QStringList readTexts(const QJsonObject& record, const QString& key)
{
    QStringList texts;
    for (const QJsonValue text : record.value(key).toArray()) {
        texts.append(text.toString());
    }
    return texts;
}

ScanFacts readFacts(const QJsonObject& record, const ScanSurfaces& scan, const QString& path)
{
    ScanFacts facts;
    facts.version = record.value("version").toString();
    facts.chain = record.value("chain").toString();
    facts.warnings = readTexts(record, "warnings");
    facts.axialMillimetres = readSpacing(record, "rows", path);
    facts.aScanMillimetres = readSpacing(record, "aScans", path);
    facts.bScanMillimetres = readSpacing(record, "bScans", path);
    try {
        facts.places = AScanPlaces::read(record, scan.nrBScans, scan.nrAScans);
    } catch (const ParsingError& error) {
        refuseFile(path, error.getMessage());
    }
    facts.grid = SectorGrid::read(record);
    facts.cutSectors = readCutSectors(record);
    facts.pixelDigest = record.value("pixelDigest").toString();
    facts.notFound = readTexts(record, "notFound");
    return facts;
}

SurfaceRows readLayer(const QString& path)
{
    try {
        return parseLayerPositions(readWholeFile(path));
    } catch (const ParsingError& error) {
        refuseFile(path, error.getMessage());
    }
}

/// The first surface sets the size where there is no record.
void addLayer(ScanSurfaces& scan, const QString& identifier)
{
    const QString path = QDir(scan.path).filePath(layerFile(identifier));
    const SurfaceRows layer = readLayer(path);
    if (scan.nrBScans == 0) {
        scan.nrBScans = layer.getNrBScans();
        scan.nrAScans = layer.getNrAScans();
    }
    if (layer.getNrBScans() != scan.nrBScans || layer.getNrAScans() != scan.nrAScans) {
        refuseFile(path, QString("It holds %1 B-scans of %2 A-scans where the scan has %3 of %4.")
                             .arg(layer.getNrBScans())
                             .arg(layer.getNrAScans())
                             .arg(scan.nrBScans)
                             .arg(scan.nrAScans));
    }
    scan.surfaces.insert(identifier, layer);
}

} // namespace

bool isSegmentResult(const QString& folder)
{
    return QFileInfo(QDir(folder).filePath(recordName)).exists() ||
           !QDir(folder).entryList({layerFile("*")}, QDir::Files).isEmpty();
}

SurfaceRows parseLayerPositions(const QByteArray& content)
{
    QList<QByteArray> lines = QByteArray(content).replace("\r\n", "\n").split('\n');
    if (lines.last().isEmpty()) {
        lines.removeLast();
    }
    if (lines.isEmpty()) {
        throw ParsingError("It holds no positions.");
    }
    SurfaceRows surface;
    for (int bScan = 0; bScan < lines.size(); ++bScan) {
        QList<QByteArray> fields = lines[bScan].split('\t');
        if (fields.last().isEmpty()) {
            fields.removeLast();
        }
        if (bScan == 0) {
            surface = SurfaceRows(lines.size(), fields.size());
        }
        if (fields.size() != surface.getNrAScans() || fields.isEmpty()) {
            throw ParsingError(QString("Line %1: It has %2 positions where the first line has %3.")
                                   .arg(bScan + 1)
                                   .arg(fields.size())
                                   .arg(surface.getNrAScans()));
        }
        for (int aScan = 0; aScan < fields.size(); ++aScan) {
            bool isNumber = false;
            const int row = fields[aScan].toInt(&isNumber);
            if (!isNumber || row < maskedPosition || row > highestPosition) {
                throw ParsingError(QString("Line %1: \"%2\" is not a position.")
                                       .arg(bScan + 1)
                                       .arg(QString::fromUtf8(fields[aScan].left(40))));
            }
            if (row != maskedPosition) {
                surface.set(bScan, aScan, row);
            }
        }
    }
    return surface;
}

ScanSurfaces readSegmentResult(const QString& folder)
{
    ScanSurfaces scan;
    scan.path = folder;
    const QString recordPath = QDir(folder).filePath(recordName);
    if (QFileInfo(recordPath).exists()) {
        const QJsonObject record = readRecord(recordPath);
        if (record.value("outcome").toString() != "segmented") {
            refuseFile(recordPath, "This is no record of a scan that was segmented.");
        }
        scan.nrBScans = readSize(record, "bScans", recordPath);
        scan.nrAScans = readSize(record, "aScans", recordPath);
        scan.facts = readFacts(record, scan, recordPath);
        for (const QJsonValue layer : record.value("layers").toArray()) {
            if (!QFileInfo(QDir(folder).filePath(layerFile(layer.toString()))).exists()) {
                refuseFile(QDir(folder).filePath(layerFile(layer.toString())),
                           "The file is missing; tessera-segment writes it with the format "
                           "positions.");
            }
        }
    }
    const QStringList notFound = scan.facts ? scan.facts->notFound : QStringList();
    for (const QString& identifier : knownSurfaces()) {
        if (!notFound.contains(identifier) &&
            QFileInfo(QDir(folder).filePath(layerFile(identifier))).exists()) {
            addLayer(scan, identifier);
        }
    }
    if (scan.surfaces.isEmpty()) {
        throw ParsingError(QString(notFound.isEmpty() ? "%1: The result holds no surface."
                                                      : "%1: The run found no surface.")
                               .arg(folder));
    }
    return scan;
}

} // namespace kelp::compare
