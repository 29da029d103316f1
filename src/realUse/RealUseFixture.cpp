#include "RealUseFixture.h"

#include "AppBase.h"
#include "OCTScanUtils.h"
#include "ScanTabs.h"

#include <QDir>
#include <QDirIterator>
#include <QFile>
#include <QSettings>

#include <algorithm>

namespace {

QByteArray readFile(const QString& path)
{
    QFile file(path);
    EXPECT_TRUE(file.open(QIODevice::ReadOnly)) << path.toStdString();
    return file.readAll();
}

void writeFile(const QString& path, const QByteArray& content)
{
    QFile file(path);
    ASSERT_TRUE(file.open(QIODevice::WriteOnly)) << path.toStdString();
    ASSERT_EQ(file.write(content), content.size());
}

/// The file of the application's settings.
class Settings : public QSettings
{
public:
    Settings()
        : QSettings(IniFormat, UserScope, QStringLiteral("Tessera"), QStringLiteral("Tessera"))
    {
    }
};

} // namespace

RealUseFixture::RealUseFixture()
{
    qputenv("TESSERA_STORE", store().toUtf8());
    Settings().clear();
}

void RealUseFixture::readSettingsAnew()
{
    Settings().sync();
}

kelp::phantom::Export RealUseFixture::writeExport(const QString& name,
                                                  kelp::phantom::Pattern pattern,
                                                  std::uint64_t seed) const
{
    kelp::phantom::Options options;
    options.pattern = pattern;
    options.seed = seed;
    options.aScans = 96;
    options.rows = 240;
    options.bScans = 7;
    options.localizerSize = 192;
    return writeExportOf(name, options);
}

kelp::phantom::Export RealUseFixture::writeLargerExport(const QString& name) const
{
    kelp::phantom::Options options;
    options.aScans = 384;
    options.rows = 496;
    options.bScans = 25;
    options.localizerSize = 192;
    return writeExportOf(name, options);
}

kelp::phantom::Export RealUseFixture::writeExportOf(const QString& name,
                                                    const kelp::phantom::Options& options) const
{
    kelp::phantom::Export written =
        kelp::phantom::writeExport(exports() + QLatin1Char('/') + name, options);
    QByteArray xml = readFile(written.xmlPath);
    const QByteArray lastName = "Phantom</LastName>";
    EXPECT_TRUE(xml.contains(lastName));
    writeFile(written.xmlPath,
              xml.replace(lastName, QByteArray::number(qulonglong(options.seed)) + "</LastName>"));
    return written;
}

QMap<QString, QByteArray> RealUseFixture::storedTrees() const
{
    QMap<QString, QByteArray> trees;
    for (const QString& part : {QStringLiteral("/patients"), QStringLiteral("/studies")}) {
        QDirIterator files(store() + part, QDir::Files);
        while (files.hasNext()) {
            const QString file = files.next();
            trees.insert(file, readFile(file));
        }
    }
    return trees;
}

bool RealUseFixture::isStored(const OCTScanSegPtr& segmentation) const
{
    const QByteArray payload = segmentation->toBase64String().toLatin1();
    const QList<QByteArray> trees = storedTrees().values();
    return std::any_of(trees.begin(), trees.end(),
                       [&payload](const QByteArray& tree) { return tree.contains(payload); });
}

void RealUseFixture::makePatientWithScans(ApplicationDriver& user, const QStringList& xmlPaths)
{
    user.newPatient(QStringLiteral("Lindqvist"), QStringLiteral("Ada"),
                    QStringLiteral("1960-12-31"));
    user.newStudy(QStringLiteral("Baseline"));
    for (const QString& xmlPath : xmlPaths) {
        user.addScan(xmlPath);
    }
}

void RealUseFixture::makeSegmentedScan(ApplicationDriver& user, const QString& xmlPath)
{
    makePatientWithScans(user, {xmlPath});
    user.selectTab(scantabs::automaticTab);
    user.openScan();
    user.newSegmentation();
    user.segment(QStringLiteral("Segment Normal"));
    ApplicationDriver::waitFor([] { return !AppBase::hasUnsavedChanges(); });
}

QList<OCTScanSegPtr> RealUseFixture::segmentations()
{
    return kelp::oct::OCTScanUtils::getAllSegmentationsOf(AppBase::getCurrentStudy(), nullptr);
}
