#pragma once

#include "AppBase.h"
#include "OCTScanSegmentation.h"
#include "Patient.h"
#include "Phantom.h"
#include "TestExport.h"
#include "Waiting.h"
#include "kelpGIImageViewer.h"

#include <QApplication>
#include <QLayout>
#include <QTemporaryDir>
#include <QTest>

#include <gtest/gtest.h>

/// What the tests of the control panel share.
namespace kelp::oct::test {

/// The loaded scan of a small export that looks like an eye.
inline OCTScanPtr phantomScan(const QTemporaryDir& folder, phantom::Pattern pattern, int bScans)
{
    phantom::Options options;
    options.pattern = pattern;
    options.aScans = 64;
    options.rows = 32;
    options.bScans = bScans;
    options.localizerSize = 128;
    options.imageFormat = QStringLiteral("png");
    const phantom::Export files = phantom::writeExport(folder.path(), options);
    const OCTScanPtr scan = makeTestExportScan(files.xmlPath, files.seriesId);
    scan->ensureLoaded();
    return scan;
}

/// The current study as the patient manager would set it, for as long as this lives.
class CurrentStudy
{
public:
    CurrentStudy() { AppBase::setCurrent(DataPointer<Patient>(), m_study); }
    CurrentStudy(const CurrentStudy&) = delete;
    CurrentStudy& operator=(const CurrentStudy&) = delete;
    ~CurrentStudy() { AppBase::setCurrent(DataPointer<Patient>(), DataPointer<Study>()); }

    Study* operator->() const { return m_study.data(); }

    void addScan(const OCTScanPtr& scan, const char* id)
    {
        ASSERT_EQ(m_study->addData(scan.data(), QString::fromLatin1(id), true), CaError::nullError);
    }
    OCTScanSegPtr addSegmentation(const OCTScanPtr& scan, const char* id)
    {
        const OCTScanSegPtr segmentation(new OCTScanSegmentation(scan));
        EXPECT_EQ(m_study->addProcessData(segmentation.data(), QString::fromLatin1(id), true),
                  CaError::nullError);
        return segmentation;
    }

private:
    DataPointer<Study> m_study{new Study};
};

/// Shows the widget as a window and waits until it is there.
inline void showReady(QWidget& widget)
{
    widget.show();
    ASSERT_TRUE(waiting::untilExposed(widget));
    widget.activateWindow();
    QApplication::processEvents();
}

template <typename Widget>
Widget& childOf(QWidget& parent, const char* name)
{
    auto* const child = parent.findChild<Widget*>(QString::fromLatin1(name));
    if (!child) {
        throw std::runtime_error(std::string("no child ") + name);
    }
    return *child;
}

/// Where a place of the scene (mm) is seen.
inline QPoint seenAt(const GIImageViewer& viewer, const QPointF& place)
{
    return viewer.mapFromScene(place);
}

} // namespace kelp::oct::test
