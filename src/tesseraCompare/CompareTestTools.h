#pragma once

#include "ScanSurfaces.h"

#include <QDir>
#include <QFile>
#include <QTemporaryDir>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <functional>

namespace kelp::compare::test {

/// A row by B-scan and A-scan.
using Row = std::function<double(int bScan, int aScan)>;

inline SurfaceRows surfaceOf(int nrBScans, int nrAScans, const Row& row)
{
    SurfaceRows surface(nrBScans, nrAScans);
    for (int bScan = 0; bScan < nrBScans; ++bScan) {
        for (int aScan = 0; aScan < nrAScans; ++aScan) {
            surface.set(bScan, aScan, row(bScan, aScan));
        }
    }
    return surface;
}

/// Lines along x from (0, 0), in mm.
inline AScanPlaces gridPlaces(int nrBScans, int nrAScans, double aScanStep, double bScanStep)
{
    QList<AScanPlaces::Ends> ends;
    for (int bScan = 0; bScan < nrBScans; ++bScan) {
        ends.append({{0.0, bScan * bScanStep}, {(nrAScans - 1) * aScanStep, bScan * bScanStep}});
    }
    return AScanPlaces(ends, nrAScans);
}

/// A scan whose run.json tells all: A-scans 0.1 mm and B-scans 0.2 mm apart, rows of 4 micrometres,
/// a right eye with its fovea in the middle.
inline ScanSurfaces scanWithFacts(int nrBScans, int nrAScans)
{
    constexpr double aScanStep = 0.1;
    constexpr double bScanStep = 0.2;
    ScanSurfaces scan;
    scan.path = "result";
    scan.nrBScans = nrBScans;
    scan.nrAScans = nrAScans;
    ScanFacts facts;
    facts.version = "1";
    facts.chain = "normal";
    facts.axialMillimetres = 0.004;
    facts.aScanMillimetres = aScanStep;
    facts.bScanMillimetres = bScanStep;
    facts.places = gridPlaces(nrBScans, nrAScans, aScanStep, bScanStep);
    facts.grid =
        SectorGrid{{(nrAScans - 1) * aScanStep / 2.0, (nrBScans - 1) * bScanStep / 2.0}, true};
    scan.facts = facts;
    return scan;
}

/// A folder of its own.
class FolderFixture : public ::testing::Test
{
protected:
    QString path(const QString& name) const { return m_folder.filePath(name); }

    void write(const QString& name, const QByteArray& content) const
    {
        ASSERT_TRUE(QDir().mkpath(QFileInfo(path(name)).path()));
        QFile file(path(name));
        ASSERT_TRUE(file.open(QIODevice::WriteOnly)) << name.toStdString();
        ASSERT_EQ(file.write(content), content.size());
    }

    QByteArray read(const QString& name) const
    {
        QFile file(path(name));
        EXPECT_TRUE(file.open(QIODevice::ReadOnly)) << name.toStdString();
        return file.readAll();
    }

private:
    QTemporaryDir m_folder;
};

/// What the call throws says so.
template <typename Call>
void expectFailure(const Call& call, const std::string& words)
{
    try {
        call();
        ADD_FAILURE() << "Nothing was thrown; expected: " << words;
    } catch (const std::exception& failure) {
        EXPECT_THAT(failure.what(), testing::HasSubstr(words));
    }
}

} // namespace kelp::compare::test
