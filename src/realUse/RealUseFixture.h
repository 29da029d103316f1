#pragma once

#include "ApplicationDriver.h"
#include "Phantom.h"

#include <QMap>
#include <QTemporaryDir>

#include <gtest/gtest.h>

/// A folder with a store of its own and exports to import; settings as at the very first start.
class RealUseFixture : public testing::Test
{
protected:
    RealUseFixture();

    QString path(const QString& name) const { return m_folder.filePath(name); }
    QString store() const { return path(QStringLiteral("store")); }
    /// A small export of its own folder below the folder of exports. Exports of different seeds
    /// belong to different patients: the seed is the last name.
    kelp::phantom::Export
    writeExport(const QString& name,
                kelp::phantom::Pattern pattern = kelp::phantom::Pattern::Volume,
                std::uint64_t seed = 1) const;
    /// A volume whose segmentation takes some seconds.
    kelp::phantom::Export writeLargerExport(const QString& name) const;
    QString exports() const { return path(QStringLiteral("exports")); }

    /// What the store holds of patients and studies, by file.
    QMap<QString, QByteArray> storedTrees() const;
    /// Whether the layers, the mask and the fovea of this segmentation are on disk as they are in
    /// memory.
    bool isStored(const OCTScanSegPtr& segmentation) const;
    /// The folder of the store that imports copy their files to.
    QString copiedFiles() const { return store() + QStringLiteral("/binary"); }

    /// What another process has written into them meanwhile.
    static void readSettingsAnew();
    /// Uses the application from its start to its end.
    static void use(const ApplicationDriver::Script& script,
                    const ApplicationDriver::Script& prepare = {})
    {
        EXPECT_EQ(ApplicationDriver::run(script, prepare), 0);
    }
    /// Makes the patient Ada Lindqvist with a study "Baseline" and adds these scans to it.
    static void makePatientWithScans(ApplicationDriver& user, const QStringList& xmlPaths);
    /// The same with one scan, which is segmented; the tab of automatic segmentation is open.
    static void makeSegmentedScan(ApplicationDriver& user, const QString& xmlPath);
    /// Of the current study.
    static QList<OCTScanSegPtr> segmentations();

    QTemporaryDir m_folder;

private:
    kelp::phantom::Export writeExportOf(const QString& name,
                                        const kelp::phantom::Options& options) const;
};
