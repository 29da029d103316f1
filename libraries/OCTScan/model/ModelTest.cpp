// The promises of the compiled-in trained model, read from the text that users get.

#include "LayerDistributionDocument.h"
#include "LayerDistributionUtils.h"

#include <QDomDocument>

#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <cmath>
#include <map>
#include <utility>
#include <vector>

namespace {

using kelp::oct::LayerDistributionDocument;
using Entry = LayerDistributionDocument::Entry;
using Matrix = kelp::oct::LayerDistribution::Matrix;

constexpr std::size_t rows = 275;
constexpr std::size_t columns = 236;
constexpr std::size_t foveaRow = 141;
constexpr std::size_t foveaColumn = 126;
constexpr double stepX = 0.0409764;
constexpr double stepY = 0.0282773;

const std::vector<std::pair<QString, QString>> expectedPairs{
    {"ILM", "GCL"}, {"GCL", "INL"}, {"INL", "ONL"}, {"ONL", "ISe"}, {"ISe", "BM"},
    {"ILM", "INL"}, {"GCL", "ONL"}, {"INL", "ISe"}, {"ONL", "BM"},  {"ILM", "ONL"},
    {"GCL", "ISe"}, {"INL", "BM"},  {"ILM", "ISe"}, {"GCL", "BM"},  {"ILM", "BM"}};

class Model : public ::testing::Test
{
protected:
    static void SetUpTestSuite()
    {
        document = new LayerDistributionDocument;
        ASSERT_TRUE(document->read(kelp::oct::LayerDistributionUtils::modelXML()));
        ASSERT_EQ(document->entries.size(), expectedPairs.size());
    }
    static void TearDownTestSuite()
    {
        delete document;
        document = nullptr;
    }

    static const Entry& entry(const QString& upper, const QString& lower)
    {
        const auto found =
            std::find(expectedPairs.begin(), expectedPairs.end(), std::pair(upper, lower));
        return document->entries.at(
            static_cast<std::size_t>(std::distance(expectedPairs.begin(), found)));
    }

    template <typename Function>
    static void forEachPlace(const Function& function)
    {
        for (std::size_t row = 0; row < rows; ++row) {
            for (std::size_t column = 0; column < columns; ++column) {
                function(row, column);
            }
        }
    }

    static std::pair<double, double> extremes(const Matrix& matrix)
    {
        double least = matrix[0][0];
        double most = least;
        forEachPlace([&](std::size_t row, std::size_t column) {
            least = std::min(least, matrix[row][column]);
            most = std::max(most, matrix[row][column]);
        });
        return {least, most};
    }

    static double radius(std::size_t row, std::size_t column)
    {
        const double x = (static_cast<double>(column) - foveaColumn) * stepX;
        const double y = (static_cast<double>(row) - foveaRow) * stepY;
        return std::sqrt(x * x + y * y);
    }

    static LayerDistributionDocument* document;
};

LayerDistributionDocument* Model::document = nullptr;

TEST_F(Model, NamesItsPairsInTheOrderOfTheLayersBetweenThem)
{
    for (std::size_t i = 0; i < expectedPairs.size(); ++i) {
        EXPECT_EQ(document->entries[i].upperLayerName, expectedPairs[i].first);
        EXPECT_EQ(document->entries[i].lowerLayerName, expectedPairs[i].second);
    }
}

TEST_F(Model, HasOneGridForAllPairs)
{
    EXPECT_EQ(document->foveaX, 126);
    EXPECT_EQ(document->foveaY, 141);
    for (const Entry& entry : document->entries) {
        EXPECT_EQ(entry.spacingX, 40.9764);
        EXPECT_EQ(entry.spacingY, 28.2773);
        EXPECT_EQ(entry.columns, 236);
        EXPECT_EQ(entry.rows, 275);
        ASSERT_EQ(entry.means.size(), rows);
        ASSERT_EQ(entry.variances.size(), rows);
        for (std::size_t row = 0; row < rows; ++row) {
            ASSERT_EQ(entry.means[row].size(), columns);
            ASSERT_EQ(entry.variances[row].size(), columns);
        }
    }
}

TEST_F(Model, IsAboutSixteenMegabytesOfText)
{
    const int size = kelp::oct::LayerDistributionUtils::modelXML().size();
    EXPECT_GT(size, 15'000'000);
    EXPECT_LT(size, 17'500'000);
}

TEST_F(Model, GivesTheFibreLayerItsKnownRange)
{
    const Matrix& means = entry("ILM", "GCL").means;
    EXPECT_EQ(extremes(means), std::pair(13.4, 98.7));
    EXPECT_EQ(means[foveaRow][foveaColumn], 16.0);
}

TEST_F(Model, GivesTheRetinaItsKnownRange)
{
    const Matrix& means = entry("ILM", "BM").means;
    // Five layers rounded to four decimals may miss a sum by two units of the last.
    const auto [least, most] = extremes(means);
    EXPECT_NEAR(least, 225.8, 3e-4);
    EXPECT_NEAR(most, 361.7, 3e-4);
    EXPECT_EQ(means[foveaRow][foveaColumn], 228.9);
}

TEST_F(Model, KeepsTheSpreadsInTheirKnownRange)
{
    double least = 1e9;
    double most = 0.0;
    for (const Entry& entry : document->entries) {
        const auto [low, high] = extremes(entry.variances);
        least = std::min(least, low);
        most = std::max(most, high);
    }
    EXPECT_NEAR(least, 16.0, 0.05);
    EXPECT_NEAR(most, 431.0, 0.05);
}

TEST_F(Model, MakesEveryPairTheSumOfItsLayers)
{
    const std::vector<QString> surfaces{"ILM", "GCL", "INL", "ONL", "ISe", "BM"};
    for (std::size_t upper = 0; upper < surfaces.size(); ++upper) {
        for (std::size_t lower = upper + 2; lower < surfaces.size(); ++lower) {
            const Matrix& pair = entry(surfaces[upper], surfaces[lower]).means;
            double worst = 0.0;
            forEachPlace([&](std::size_t row, std::size_t column) {
                double sum = 0.0;
                for (std::size_t layer = upper; layer < lower; ++layer) {
                    sum += entry(surfaces[layer], surfaces[layer + 1]).means[row][column];
                }
                worst = std::max(worst, std::abs(sum - pair[row][column]));
            });
            // The printed digits add up exactly; what is left is the sum in binary.
            EXPECT_LT(worst, 1e-9) << surfaces[upper].toStdString();
        }
    }
}

/// The largest slope between neighbours, and the largest change of slope from one step to the
/// next, in units of the matrix per millimetre.
std::pair<double, double> roughness(const Matrix& matrix)
{
    double steepest = 0.0;
    double sharpest = 0.0;
    const auto look = [&](double a, double b, double c, double step) {
        steepest = std::max(steepest, std::abs(b - a) / step);
        sharpest = std::max(sharpest, std::abs(a - 2.0 * b + c) / step);
    };
    for (std::size_t row = 1; row + 1 < rows; ++row) {
        for (std::size_t column = 1; column + 1 < columns; ++column) {
            look(matrix[row][column - 1], matrix[row][column], matrix[row][column + 1], stepX);
            look(matrix[row - 1][column], matrix[row][column], matrix[row + 1][column], stepY);
        }
    }
    return {steepest, sharpest};
}

TEST_F(Model, HasSmoothMeans)
{
    for (const Entry& entry : document->entries) {
        const auto [steepest, sharpest] = roughness(entry.means);
        const std::string name = (entry.upperLayerName + "-" + entry.lowerLayerName).toStdString();
        // The wall of the pit is the steepest there is, and bends within a tenth of a millimetre.
        EXPECT_LT(steepest, 320.0) << name;
        EXPECT_LT(sharpest, 120.0) << name;
    }
}

TEST_F(Model, HasSmoothSpreads)
{
    for (const Entry& entry : document->entries) {
        const auto [steepest, sharpest] = roughness(entry.variances);
        const std::string name = (entry.upperLayerName + "-" + entry.lowerLayerName).toStdString();
        EXPECT_LT(steepest, 400.0) << name;
        EXPECT_LT(sharpest, 200.0) << name;
    }
}

TEST_F(Model, IsTheSameForBothEyesWithinTheMeasuredSectors)
{
    for (const Entry& entry : document->entries) {
        double worst = 0.0;
        forEachPlace([&](std::size_t row, std::size_t column) {
            const std::size_t mirrored = 2 * foveaColumn - column;
            if (mirrored < columns && radius(row, column) <= 3.0) {
                worst = std::max(worst,
                                 std::abs(entry.means[row][column] - entry.means[row][mirrored]));
            }
        });
        EXPECT_LT(worst, 1e-9);
    }
}

TEST_F(Model, HoldsTheMeanThicknessOfBothEyesWithinTheSearchRanges)
{
    // On the horizontal meridian the published sector of either side, at the middle of each ring,
    // lies within what the narrower search ranges leave (2.7 deviations).
    struct Sides
    {
        const char* upper;
        const char* lower;
        std::array<double, 2> inner; ///< nasal, temporal
        std::array<double, 2> outer;
    };
    for (const Sides& sides : {Sides{"ILM", "GCL", {20.1, 16.8}, {46.1, 19.2}},
                               Sides{"GCL", "INL", {92.5, 87.7}, {71.7, 69.5}},
                               Sides{"INL", "ONL", {70.3, 67.6}, {63.3, 60.3}},
                               Sides{"ONL", "ISe", {100.5, 98.0}, {83.9, 83.8}}}) {
        const Entry& pair = entry(sides.upper, sides.lower);
        for (const auto& [millimetres, ring] :
             {std::pair{1.0, sides.inner}, std::pair{2.25, sides.outer}}) {
            const auto step = static_cast<std::size_t>(std::lround(millimetres / stepX));
            for (const std::size_t column : {foveaColumn - step, foveaColumn + step}) {
                const double mean = pair.means[foveaRow][column];
                const double reach = 2.7 * pair.variances[foveaRow][column] / 3.0;
                for (const double published : ring) {
                    EXPECT_LT(std::abs(mean - published), reach) << sides.upper << " " << column;
                }
            }
        }
    }
}

/// What the spread of a distance is made of at one place, but for the side of the eye: the error of
/// a found fovea, from the means around, and the published deviations of the layers, which a point
/// exceeds by half.
double varianceWithoutSide(const Matrix& means, std::size_t row, std::size_t column,
                           const std::vector<double>& publishedDeviations)
{
    const double alongX = (means[row][column + 1] - means[row][column - 1]) / (2.0 * stepX);
    const double alongY = (means[row + 1][column] - means[row - 1][column]) / (2.0 * stepY);
    double variance = 0.1 * 0.1 * (alongX * alongX + alongY * alongY);
    for (const double deviation : publishedDeviations) {
        variance += 1.5 * 1.5 * deviation * deviation;
    }
    return variance;
}

/// Distances that begin at the ILM hold the nerve fibres, which differ most between the sides.
struct OuterRing
{
    const char* lower;
    double nasal; ///< published mean thickness
    double temporal;
    std::vector<double> deviations; ///< published, of each layer
};

const OuterRing ringsBelowILM[] = {
    {"GCL", 46.1, 19.2, {5.5}},
    {"INL", 46.1 + 71.7, 19.2 + 69.5, {5.5, 6.2}},
    {"ONL", 46.1 + 71.7 + 63.3, 19.2 + 69.5 + 60.3, {5.5, 6.2, 5.3}},
};
constexpr double outerRing = 2.25; // mm

TEST_F(Model, CountsAQuarterOfTheDifferenceOfNasalAndTemporalAsADeviation)
{
    const auto step = static_cast<std::size_t>(std::lround(outerRing / stepX));
    for (const OuterRing& ring : ringsBelowILM) {
        const Entry& pair = entry("ILM", ring.lower);
        for (const std::size_t column : {foveaColumn - step, foveaColumn + step}) {
            const double deviation = pair.variances[foveaRow][column] / 3.0;
            const double ofSide =
                deviation * deviation -
                varianceWithoutSide(pair.means, foveaRow, column, ring.deviations);
            ASSERT_GT(ofSide, 0.0) << ring.lower;
            // The grid misses the middle of the ring by 4 micrometres, hence the tolerance.
            EXPECT_NEAR(std::sqrt(ofSide) / (ring.nasal - ring.temporal), 0.25, 0.003)
                << ring.lower << " " << column;
        }
    }
}

TEST_F(Model, KnowsOfNoSideAboveAndBelowTheFovea)
{
    const auto step = static_cast<std::size_t>(std::lround(outerRing / stepY));
    for (const OuterRing& ring : ringsBelowILM) {
        const Entry& pair = entry("ILM", ring.lower);
        for (const std::size_t row : {foveaRow - step, foveaRow + step}) {
            EXPECT_NEAR(
                pair.variances[row][foveaColumn] / 3.0,
                std::sqrt(varianceWithoutSide(pair.means, row, foveaColumn, ring.deviations)), 0.01)
                << ring.lower << " " << row;
        }
    }
}

TEST_F(Model, AgreesWithTheMeasuredSectorsOnTheRings)
{
    // Superior and inferior of the inner ring, 1 mm above and below the fovea.
    const std::size_t step = 35;
    const Matrix& fibres = entry("ILM", "GCL").means;
    EXPECT_NEAR(fibres[foveaRow - step][foveaColumn], 23.4, 0.2);
    EXPECT_NEAR(fibres[foveaRow + step][foveaColumn], 24.5, 0.2);
    const Matrix& nuclear = entry("ONL", "ISe").means;
    EXPECT_NEAR(nuclear[foveaRow - step][foveaColumn], 95.5, 0.5);
    EXPECT_NEAR(nuclear[foveaRow + step][foveaColumn], 88.5, 0.5);
    // Nasal and temporal, each the mean of both.
    EXPECT_NEAR(fibres[foveaRow][foveaColumn + 24], (20.1 + 16.8) / 2.0, 0.2);
    EXPECT_NEAR(fibres[foveaRow][foveaColumn - 24], (20.1 + 16.8) / 2.0, 0.2);
}

TEST_F(Model, GathersTheFibresOnTheNasalSideOfARightEye)
{
    const Matrix& fibres = entry("ILM", "GCL").means;
    EXPECT_GT(fibres[foveaRow][columns - 1], 90.0);
    EXPECT_LT(fibres[foveaRow][0], 40.0);
}

TEST(ModelText, HasTheElementsThatItsReaderExpectsAndThoseForPeople)
{
    // The head up to the first matrix, closed by hand, as a tree of the whole takes seconds.
    QByteArray head = kelp::oct::LayerDistributionUtils::modelXML();
    head.truncate(head.indexOf("<Mean_matrix"));
    head += "</Distribution></Distributions></Model>";
    QDomDocument document;
    ASSERT_TRUE(document.setContent(head));
    const QDomElement model = document.documentElement();
    EXPECT_EQ(model.tagName(), "Model");
    EXPECT_FALSE(model.attribute("Description").isEmpty());
    EXPECT_EQ(model.firstChildElement("Fovea_position").firstChildElement("x").text(), "126");
    EXPECT_EQ(model.firstChildElement("Fovea_position").firstChildElement("y").text(), "141");
    EXPECT_EQ(model.firstChildElement("Optic_disc_direction").firstChildElement("x").text(), "1");
    EXPECT_EQ(model.firstChildElement("Optic_disc_direction").firstChildElement("y").text(), "0");
    EXPECT_EQ(model.firstChildElement("Laterality").text(), "OD");
    const QDomElement distributions = model.firstChildElement("Distributions");
    EXPECT_FALSE(distributions.attribute("Description").isEmpty());
    const QDomElement first = distributions.firstChildElement("Distribution");
    EXPECT_FALSE(first.attribute("Description").isEmpty());
    EXPECT_FALSE(first.firstChildElement("Spacing").attribute("Description").isEmpty());
    EXPECT_FALSE(first.firstChildElement("Dimension").attribute("Description").isEmpty());
}

} // namespace
