#pragma once

#include "AppBase.h"
#include "BatchReport.h"
#include "DataIOManager.h"
#include "OCTDecoderHeidelbergXML.h"
#include "OCTScan.h"
#include "OCTScanSegmentation.h"
#include "StorePlugins.h"
#include "TestExport.h"

#include <QDir>
#include <QFile>
#include <QList>
#include <QTemporaryDir>

#include <gtest/gtest.h>

namespace kelp::oct::test {

/// A line of a batch's log.
struct ReportedLine
{
    QString text;
    BatchLine kind = BatchLine::Plain;
    friend bool operator==(const ReportedLine&, const ReportedLine&) = default;
};

inline std::ostream& operator<<(std::ostream& stream, const ReportedLine& line)
{
    return stream << line.text << " [" << static_cast<int>(line.kind) << "]";
}

/// A store of its own, and a folder for exports.
class BatchStoreFixture : public testing::Test
{
protected:
    void SetUp() override
    {
        createFileIOFactory();
        createXMLDataTreeIOFactory();
        createOCTDecoderHeidelbergXMLFactory();
        createOCTScanFactory();
        createOCTScanSegmentationFactory();
        openStore();
    }
    void TearDown() override
    {
        AppBase::setCurrent(nullptr, nullptr);
        DataIOManager::closeStore();
    }

    void openStore()
    {
        ASSERT_EQ(DataIOManager::openStore(m_store.filePath("store")).toString(), QString());
    }
    /// What is on disk from now on, in new objects.
    void reopenStore()
    {
        DataIOManager::closeStore();
        openStore();
    }
    static QList<Patient*> patients()
    {
        QList<Patient*> list;
        EXPECT_EQ(DataIOManager::getPatientList(list).toString(), QString());
        return list;
    }
    static QList<Data*> scansOf(const Patient& patient,
                                const QString& study = QStringLiteral("DefaultStudy"))
    {
        QList<Data*> items;
        if (Study* const found = patient.getStudy(study)) {
            found->getAllData(items);
        }
        return items;
    }
    static QList<Data*> segmentationsOf(const Patient& patient,
                                        const QString& study = QStringLiteral("DefaultStudy"))
    {
        QList<Data*> items;
        if (Study* const found = patient.getStudy(study)) {
            found->getAllProcessData(items);
        }
        return items;
    }

    /// The XML of a small export in this folder below the exports, changed by replacing texts.
    QString writeSmallExport(const QString& folder,
                             const QList<QPair<QString, QString>>& replaced = {},
                             const TestExportOptions& options = {}) const
    {
        const QString path = m_exports.filePath(folder);
        EXPECT_TRUE(QDir().mkpath(path));
        const QString xmlPath = writeTestExport(path, options);
        replaceIn(xmlPath, replaced);
        return xmlPath;
    }
    static void replaceIn(const QString& xmlPath, const QList<QPair<QString, QString>>& replaced)
    {
        QFile file(xmlPath);
        EXPECT_TRUE(file.open(QIODevice::ReadOnly));
        QString xml = QString::fromLatin1(file.readAll());
        file.close();
        for (const auto& [before, after] : replaced) {
            EXPECT_TRUE(xml.contains(before)) << before.toStdString();
            xml.replace(before, after);
        }
        EXPECT_TRUE(file.open(QIODevice::WriteOnly));
        file.write(xml.toLatin1());
    }
    static QStringList importFolders()
    {
        return QDir(DataTreeIO::binaryDataDirUri().path())
            .entryList({QStringLiteral("HRA_XML_*")}, QDir::Dirs);
    }

    QTemporaryDir m_store;
    QTemporaryDir m_exports;
};

} // namespace kelp::oct::test
