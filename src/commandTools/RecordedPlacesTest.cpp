#include "AScanPlaces.h"
#include "HeidelbergExport.h"
#include "JsonWriter.h"
#include "OCTDecoderHeidelbergXML.h"
#include "Phantom.h"
#include "SectorGrid.h"
#include "kelpException.h"

#include <QJsonDocument>
#include <QTemporaryDir>

#include <gtest/gtest.h>

using kelp::command::AScanPlaces;
using kelp::command::JsonWriter;
using kelp::command::SectorGrid;

namespace {

/// What run.json tells of the places leads back to where the measurements take them to be.
class RecordedPlaces : public testing::TestWithParam<kelp::phantom::Pattern>
{
protected:
    static QJsonObject recordOf(const OCTScan& scan)
    {
        JsonWriter json;
        json.beginObject();
        AScanPlaces::of(scan).write(json);
        SectorGrid::of(scan, CoordOnLocalizer(1.25, -2.5)).write(json);
        json.endObject();
        return QJsonDocument::fromJson(json.text()).object();
    }

    OCTScanPtr phantom(bool rightEye) const
    {
        createOCTDecoderHeidelbergXMLFactory();
        kelp::phantom::Options options;
        options.pattern = GetParam();
        options.aScans = 64;
        options.rows = 200;
        options.bScans = 5;
        options.localizerSize = 128;
        options.rightEye = rightEye;
        const auto written = kelp::phantom::writeExport(m_folder.path(), options);
        OCTScanPtr scan = kelp::oct::makeScan(written.xmlPath, written.seriesId, {});
        scan->ensureLoaded();
        return scan;
    }

private:
    QTemporaryDir m_folder;
};

TEST_P(RecordedPlaces, AreThoseOfTheScan)
{
    for (const bool rightEye : {true, false}) {
        SCOPED_TRACE(rightEye);
        const OCTScanPtr scan = phantom(rightEye);
        const QJsonObject record = recordOf(*scan);
        const int nrBScans = scan->getBScanCount();
        const int nrAScans = scan->getVolumeSize().x;
        const auto places = AScanPlaces::read(record, nrBScans, nrAScans);
        const auto grid = SectorGrid::read(record);
        ASSERT_TRUE(places && grid);
        EXPECT_EQ(grid->center, CoordOnLocalizer(1.25, -2.5));
        EXPECT_EQ(grid->rightEye, rightEye);
        for (int bScan = 0; bScan < nrBScans; ++bScan) {
            for (int aScan = 0; aScan < nrAScans; ++aScan) {
                const CoordOnLocalizer expected(scan->volumeIndexToLocalizerCoords(bScan, aScan));
                const CoordOnLocalizer found = places->at(bScan, aScan);
                ASSERT_NEAR(found.x, expected.x, 1e-9) << bScan << ' ' << aScan;
                ASSERT_NEAR(found.y, expected.y, 1e-9) << bScan << ' ' << aScan;
            }
        }
    }
}

TEST_P(RecordedPlaces, MustGoWithTheNumberOfBScans)
{
    const OCTScanPtr scan = phantom(true);
    const int nrBScans = scan->getBScanCount();
    EXPECT_THROW(AScanPlaces::read(recordOf(*scan), nrBScans + 1, 64), kelp::ParsingError);
    EXPECT_FALSE(AScanPlaces::read({}, nrBScans, 64)) << "older records hold none";
    EXPECT_FALSE(SectorGrid::read({}));
}

INSTANTIATE_TEST_SUITE_P(Patterns, RecordedPlaces,
                         testing::Values(kelp::phantom::Pattern::Volume,
                                         kelp::phantom::Pattern::Section,
                                         kelp::phantom::Pattern::Circle));

} // namespace
