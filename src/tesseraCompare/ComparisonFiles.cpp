#include "ComparisonFiles.h"

#include "AgreementPicture.h"
#include "ComparisonCsv.h"
#include "DifferencePicture.h"

#include <QFileInfo>
#include <QRegularExpression>

namespace kelp::compare {

namespace {

using command::JsonWriter;
using kelp::oct::EtdrsTable;

const QString surfacesFile = "surfaces.csv";
const QString bScansFile = "bscans.csv";
const QString sectorsFile = "sectors.csv";
const QString agreementFile = "agreement.csv";
const QString sectorAgreementFile = "bland_altman_sectors.png";

/// "GCL + IPL" as a part of a file's name.
QString fileLabel(int row)
{
    static const QRegularExpression others("[^A-Za-z0-9]+");
    return EtdrsTable::rowLabel(row).replace(others, "_");
}

QString differenceFile(const QString& identifier)
{
    return QString("difference_%1.png").arg(identifier);
}

QString layerFile(int row)
{
    return QString("bland_altman_%1.png").arg(fileLabel(row));
}

/// One scan alone needs no folder.
QString placeOf(const QString& scan, bool areSeveral)
{
    return areSeveral ? scan + '/' : QString();
}

void writeSide(JsonWriter& json, const QString& key, const ScanSurfaces& scan)
{
    json.beginObject(key);
    json.value("path", QFileInfo(scan.path).absoluteFilePath());
    if (scan.facts) {
        json.value("segmentedByVersion", scan.facts->version);
    }
    json.value("bScans", scan.nrBScans);
    json.value("aScans", scan.nrAScans);
    json.texts("surfaces", scan.surfaces.keys());
    json.endObject();
}

void writeScan(JsonWriter& json, const ScanComparison& scan)
{
    json.beginObject();
    json.value("name", scan.name);
    writeSide(json, "a", scan.a);
    writeSide(json, "b", scan.b);
    if (scan.axialMicrometres) {
        json.value("rowMicrometres", *scan.axialMicrometres);
    } else {
        json.null("rowMicrometres");
    }
    json.texts("notes", scan.notes);
    json.endObject();
}

/// Up to the scans.
JsonWriter beginRecord(const Options& options)
{
    JsonWriter json;
    json.beginObject();
    json.value("program", "tessera-compare");
    json.value("version", TESSERA_VERSION);
    json.value("a", QFileInfo(options.a).absoluteFilePath());
    json.value("b", QFileInfo(options.b).absoluteFilePath());
    json.texts("options", options.words());
    json.beginArray("scans");
    return json;
}

} // namespace

QStringList possibleFiles(const QStringList& scans)
{
    const bool areSeveral = scans.size() > 1;
    QStringList names{surfacesFile, bScansFile, sectorsFile, sectorAgreementFile};
    if (areSeveral) {
        names.append(agreementFile);
    }
    for (int row = 0; row < EtdrsTable::nrRows; ++row) {
        names.append(layerFile(row));
    }
    for (const QString& scan : scans) {
        for (const QString& identifier : knownSurfaces()) {
            names.append(placeOf(scan, areSeveral) + differenceFile(identifier));
        }
    }
    return names;
}

ComparisonFiles::ComparisonFiles(const Options& options, const QStringList& scans)
    : m_folder(options.out, possibleFiles(scans)), m_areSeveral(scans.size() > 1), m_a(options.a),
      m_b(options.b), m_record(beginRecord(options))
{
    m_folder.appendText(surfacesFile, surfacesHeader());
    m_folder.appendText(bScansFile, bScansHeader());
    m_folder.appendText(sectorsFile, sectorsHeader());
}

void ComparisonFiles::add(const ScanComparison& scan)
{
    if (!m_areSeveral) {
        m_a = scan.a.path;
        m_b = scan.b.path;
    }
    m_folder.appendText(surfacesFile, surfaceLines(scan.name, surfacesOf(scan)));
    m_folder.appendText(bScansFile, bScanLines(scan));
    m_folder.appendText(sectorsFile, sectorLines(scan));
    for (const ComparedSurface& surface : scan.surfaces) {
        m_folder.writePicture(placeOf(scan.name, m_areSeveral) + differenceFile(surface.identifier),
                              differencePicture(scan, surface.identifier));
    }
    writeScan(m_record, scan);
}

void ComparisonFiles::addPooled(const ComparisonPool& pool)
{
    const QList<Agreement> agreements = pool.agreements();
    if (pool.getNrScans() > 1) {
        m_folder.appendText(surfacesFile, surfaceLines("all scans", pool.surfaces()));
        m_folder.appendText(agreementFile, agreementCsv(agreements));
    }
    writeAScanAgreement(pool);
    writeSectorAgreement(agreements);
}

void ComparisonFiles::publish()
{
    JsonWriter record = m_record;
    record.endArray();
    record.texts("files", m_folder.writtenFiles());
    record.endObject();
    m_folder.publish(record.text());
}

QStringList ComparisonFiles::titleOf(const QString& what) const
{
    return {what, "A: " + m_a, "B: " + m_b};
}

void ComparisonFiles::writeAScanAgreement(const ComparisonPool& pool)
{
    for (int row = 0; row < EtdrsTable::nrRows; ++row) {
        const Tally<ThicknessPair>& pairs = pool.thicknesses(row);
        if (!pairs.isEmpty()) {
            const QString what =
                QString("%1 (%2 to %3): agreement of the A-scans")
                    .arg(EtdrsTable::rowLabel(row), EtdrsTable::topLayer(row)->getIdentifier(),
                         EtdrsTable::bottomLayer(row)->getIdentifier());
            m_folder.writePicture(layerFile(row), agreementOfAScans(titleOf(what), pairs,
                                                                    pool.getAxialMicrometres()));
        }
    }
}

void ComparisonFiles::writeSectorAgreement(const QList<Agreement>& agreements)
{
    QList<SectorMeans> layers;
    for (const Agreement& agreement : agreements) {
        if (!agreement.column) {
            layers.append({agreement.row, agreement.means});
        }
    }
    if (!layers.isEmpty()) {
        const QString what = "ETDRS sectors: agreement of the mean thicknesses of each layer";
        m_folder.writePicture(sectorAgreementFile, agreementOfSectors(titleOf(what), layers));
    }
}

} // namespace kelp::compare
