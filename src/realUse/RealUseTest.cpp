#include "ApplicationDriver.h"

#include "AppBase.h"
#include "Phantom.h"
#include "kelpSettings.h"

#include <QAbstractItemView>
#include <QTemporaryDir>
#include <QTest>

#include <gtest/gtest.h>

namespace {

/// A folder with a store of its own, and exports to import.
class RealUse : public testing::Test
{
protected:
    RealUse() { qputenv("TESSERA_STORE", m_folder.filePath(QStringLiteral("store")).toUtf8()); }

    QString writeExport(const QString& name, kelp::phantom::Pattern pattern) const
    {
        kelp::phantom::Options options;
        options.pattern = pattern;
        options.aScans = 128;
        options.rows = 240;
        options.bScans = 7;
        options.localizerSize = 256;
        return kelp::phantom::writeExport(m_folder.filePath(name), options).xmlPath;
    }

    QTemporaryDir m_folder;
};

TEST_F(RealUse, APatientAStudyAndAScanAreThereAfterTheNextStart)
{
    const QString xml = writeExport(QStringLiteral("volume"), kelp::phantom::Pattern::Volume);
    EXPECT_EQ(ApplicationDriver::run([&](ApplicationDriver& user) {
                  user.newPatient(QStringLiteral("Lindqvist"), QStringLiteral("Ada"),
                                  QStringLiteral("1960-12-31"));
                  user.newStudy(QStringLiteral("Baseline"));
                  user.addScan(xml);
                  user.selectTab(QStringLiteral("OCT Auto-Segmentation"));
                  user.openScan();
                  user.newSegmentation();
                  user.segment(QStringLiteral("Segment Normal"));
                  EXPECT_GE(user.layerCount(), 6);
              }),
              0);
    EXPECT_EQ(ApplicationDriver::run([&](ApplicationDriver& user) {
                  EXPECT_EQ(user.currentTab(), QStringLiteral("OCT Auto-Segmentation"));
                  ASSERT_TRUE(AppBase::getCurrentPatient());
                  EXPECT_EQ(AppBase::getCurrentPatient()->getName(),
                            QStringLiteral("Ada Lindqvist"));
                  ASSERT_TRUE(AppBase::getCurrentStudy());
                  EXPECT_EQ(AppBase::getCurrentStudy()->getId(), QStringLiteral("Baseline"));
                  user.openScan();
              }),
              0);
}

} // namespace
