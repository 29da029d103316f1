#pragma once

#include "ExchangeManifest.h"
#include "PatientExchange.h"
#include "StoreTestSupport.h"
#include "XMLDataTree.h"
#include "kelpException.h"

#include <QDir>
#include <QDirIterator>
#include <QFileInfo>
#include <QMap>
#include <QTemporaryDir>

namespace exchangetest {

using kelp::exchange::exportPatients;
using kelp::exchange::importPatients;
using kelp::exchange::Manifest;
using kelp::exchange::Present;
using kelp::exchange::Report;

/// Content of all files below a folder by their paths in it.
inline QMap<QString, QByteArray> contentOf(const QString& folder)
{
    QMap<QString, QByteArray> content;
    QDirIterator files(folder, QDir::Files | QDir::Hidden, QDirIterator::Subdirectories);
    while (files.hasNext()) {
        const QString path = files.next();
        content.insert(QDir(folder).relativeFilePath(path), storetest::readFile(path));
    }
    return content;
}

inline QStringList entriesOf(const QString& folder)
{
    return QDir(folder).entryList(QDir::AllEntries | QDir::Hidden | QDir::NoDotAndDotDot);
}

/// Two stores in one temporary folder, "here" and "there", of which one is open; and "stick", the
/// folder that exports go to.
class ExchangeFixture : public ::testing::Test
{
protected:
    void SetUp() override
    {
        storetest::registerItems();
        ASSERT_TRUE(m_directory.isValid());
        m_root = QDir(m_directory.path()).canonicalPath();
        ASSERT_TRUE(QDir(m_root).mkpath(QStringLiteral("stick")));
        open(QStringLiteral("here"));
    }
    void TearDown() override { DataIOManager::closeStore(); }

    QString path(const QString& name) const { return m_root + '/' + name; }
    QString stick() const { return path(QStringLiteral("stick")); }
    QString binary() const { return DataIOManager::storeFolder() + QStringLiteral("/binary"); }

    void open(const QString& store)
    {
        DataIOManager::closeStore();
        ASSERT_EQ(DataIOManager::openStore(path(store)).toString(), QString());
    }

    static QList<DataPointer<Patient>> allPatients()
    {
        QList<Patient*> patients;
        EXPECT_EQ(DataIOManager::getPatientList(patients), CaError::nullError);
        QList<DataPointer<Patient>> held;
        for (Patient* const patient : qAsConst(patients)) {
            held.append(patient);
        }
        return held;
    }

    static Data& onlyScanOf(Patient& patient)
    {
        QList<Data*> items;
        patient.getStudy(QStringLiteral("DefaultStudy"))->getAllData(items);
        EXPECT_EQ(items.size(), 1);
        return *items.front();
    }

    /// A stored patient whose scan names an XML file and two images in a folder of the store.
    DataPointer<Patient> storePatient(const QString& name)
    {
        return storePatientWithFiles(name, binary() + QStringLiteral("/HRA_XML_") + name);
    }

    DataPointer<Patient> storePatientWithFiles(const QString& name, const QString& folder)
    {
        QDir().mkpath(folder);
        for (const char* const file : {"e.xml", "b0.png", "b1.png"}) {
            storetest::writeFile(folder + '/' + QLatin1String(file),
                                 name.toUtf8() + " has " + file);
        }
        const DataPointer<Patient> patient = storetest::makePatient(name);
        Data& scan = onlyScanOf(*patient);
        scan.setUri(QStringLiteral("OCTScanURI"),
                    kelp::URI(QStringLiteral("file++hra:%1/e.xml?seriesId=5").arg(folder)));
        for (int i = 0; i < 2; ++i) {
            QString image = QStringLiteral("%1/b%2.png").arg(folder).arg(i);
            scan.setUri(QStringLiteral("SliceImage%1").arg(i),
                        kelp::URI(QStringLiteral("file++dummy:") + image.replace('/', '\\')));
        }
        EXPECT_EQ(DataIOManager::storePatient(patient), CaError::nullError);
        return patient;
    }

    /// All patients of the open store; gives the folder.
    QString exportAll()
    {
        const Report report = exportPatients(allPatients(), stick(), {});
        EXPECT_EQ(report.problems, QStringList());
        return report.folder;
    }

    /// The files that the item's URIs name, by key.
    static QMap<QString, QString> filesOf(const Data& item)
    {
        QMap<QString, QString> files;
        for (const QString& key : item.getUriKeys()) {
            files.insert(key, item.getUri(key).path().replace('\\', '/'));
        }
        return files;
    }

    /// The other store holds neither patients nor files.
    static void expectEmpty(const QString& store)
    {
        for (const char* const part : {"patients", "studies", "binary"}) {
            EXPECT_EQ(entriesOf(store + '/' + QLatin1String(part)), QStringList()) << part;
        }
    }

    QTemporaryDir m_directory;
    QString m_root;
};

} // namespace exchangetest
