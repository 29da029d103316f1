#include "CutPlans.h"

#include "CostFunctionBM.h"
#include "CostFunctionILM.h"
#include "CostFunctionISe.h"
#include "CostFunctionInner.h"
#include "TestRetina.h"

#include <gmock/gmock.h>

#include <limits>

namespace kelp::oct {
namespace {

using testing::Each;

constexpr unsigned aScans = 6;
constexpr unsigned rows = 200;
constexpr unsigned bScans = 2;
const CutSize size(aScans, rows, bScans);

MaskMatrixPtr noMask()
{
    return MaskMatrixPtr::create(bScans, aScans);
}

void expectConstant(const VolumeLayerPtr& layer, int row)
{
    ASSERT_FALSE(layer.isNull());
    EXPECT_EQ(layer->rows, bScans);
    EXPECT_EQ(layer->columns, aScans);
    EXPECT_THAT(std::vector<int>(layer->begin(), layer->end()), Each(row));
}

void expectRange(const CutPlan& plan, const LayerNamePtr& name, int top, int bottom)
{
    expectConstant(plan.properties.getSearchRangeTop(name), top);
    expectConstant(plan.properties.getSearchRangeBottom(name), bottom);
}

void expectShape(const CutPlan& plan, const LayerNamePtr& name, double weightZ, double weightX,
                 unsigned stepZ, unsigned stepX)
{
    EXPECT_EQ(plan.properties.getShapeRegWeightZ(name), weightZ);
    EXPECT_EQ(plan.properties.getShapeRegWeightX(name), weightX);
    EXPECT_EQ(plan.properties.getShapeRegStepZ(name), stepZ);
    EXPECT_EQ(plan.properties.getShapeRegStepX(name), stepX);
}

void expectDistance(const CutPlan& plan, const LayerNamePtr& top, const LayerNamePtr& bottom,
                    int minimum, int maximum)
{
    expectConstant(plan.properties.getInterSurfDistanceMin(top, bottom), minimum);
    expectConstant(plan.properties.getInterSurfDistanceMax(top, bottom), maximum);
}

template <typename Cost>
void expectCost(const CutPlan& plan, const LayerNamePtr& name)
{
    EXPECT_TRUE(plan.properties.getCostFunction(name).dynamicCast<Cost>());
}

TEST(CoarsePlan, SeeksBothSurfacesInTheWholeColumnButTheLastRow)
{
    const CoarseNames names{LayerNameILMCoarse::create(), LayerNameISeCoarse::create()};
    const CutPlan plan = planCoarse(names, CutSize(aScans, 62, bScans), 2, 10, noMask());
    EXPECT_EQ(plan.edgeFactor, 8.0);
    EXPECT_EQ(plan.properties.getDimensions(), (std::pair<unsigned, unsigned>(bScans, aScans)));
    EXPECT_EQ(plan.properties.getLayerNames(), (QList<LayerNamePtr>{names.ilm, names.ise}));
    expectCost<CostFunctionILM>(plan, names.ilm);
    expectCost<CostFunctionISe>(plan, names.ise);
    for (const LayerNamePtr& name : {names.ilm, names.ise}) {
        expectRange(plan, name, 0, 61);
        expectShape(plan, name, 200.0, 600.0, 1, 1);
    }
    expectDistance(plan, names.ilm, names.ise, 2, 10);
}

TEST(CoarsePlan, ASingleBScanGivesOneRowOfColumns)
{
    const CoarseNames names{LayerNameILMCoarse::create(), LayerNameISeCoarse::create()};
    const CutPlan plan = planCoarse(names, CutSize(4, 62, 1), 2, 10, MaskMatrixPtr::create(1U, 4U));
    EXPECT_EQ(plan.properties.getDimensions(), (std::pair<unsigned, unsigned>(1, 4)));
}

TEST(CoarsePlan, WidensARangeThatTwoCoarseRowsWouldLeaveTooSmall)
{
    const CoarseNames names{LayerNameILMCoarse::create(), LayerNameISeCoarse::create()};
    const CutPlan plan = planCoarse(names, CutSize(aScans, 2, bScans), 2, 10, noMask());
    expectRange(plan, names.ilm, 0, 2);
}

TEST(ILMPlan, SeeksTheSurfaceInABandAroundTheCoarseOne)
{
    const LayerNamePtr ilm = LayerNameILM::create();
    const CutPlan plan = planILM(ilm, constantLayer(size, 100), size, ilmParams(noMask()));
    EXPECT_EQ(plan.edgeFactor, 7.0);
    EXPECT_EQ(plan.properties.getLayerNames(), QList<LayerNamePtr>{ilm});
    expectCost<CostFunctionILM>(plan, ilm);
    expectRange(plan, ilm, 88, 130);
    expectShape(plan, ilm, 800.0, 4000.0, 1, 1);
}

TEST(ILMPlan, KeepsTheBandInsideTheImage)
{
    const LayerNamePtr ilm = LayerNameILM::create();
    expectRange(planILM(ilm, constantLayer(size, 11), size, ilmParams(noMask())), ilm, 0, 41);
    expectRange(planILM(ilm, constantLayer(size, rows - 30), size, ilmParams(noMask())), ilm,
                rows - 42, rows - 1);
}

TEST(ILMPlan, WithoutShapeNeedsFewerEdges)
{
    const LayerNamePtr ilm = LayerNameILM::create();
    ILMSegParams params = ilmParams(noMask());
    params.shapeRegOn = false;
    const CutPlan plan = planILM(ilm, constantLayer(size, 100), size, params);
    EXPECT_EQ(plan.edgeFactor, 5.0);
    expectShape(plan, ilm, 0.0, 0.0, 1, 1);
}

struct OuterPlan : testing::Test
{
    OuterNames names{LayerNameISe::create(), LayerNameBM::create()};
    VolumeLayerPtr iseCoarse = constantLayer(size, 100);
};

TEST_F(OuterPlan, HealthySurfacesAreHeldApartByTheSoftTermAlone)
{
    const CutPlan plan = planOuter(names, iseCoarse, size, healthyOuterParams(noMask()));
    EXPECT_EQ(plan.edgeFactor, 8.0);
    EXPECT_EQ(plan.properties.getLayerNames(), (QList<LayerNamePtr>{names.ise, names.bm}));
    expectCost<CostFunctionISe>(plan, names.ise);
    expectCost<CostFunctionBM>(plan, names.bm);
    expectRange(plan, names.ise, 85, 115);
    expectRange(plan, names.bm, 100, 130);
    expectShape(plan, names.ise, 900.0, 5000.0, 2, 1);
    expectShape(plan, names.bm, 0.0, 1260.0, 2, 1);
    EXPECT_TRUE(plan.properties.getInterSurfDistanceMin(names.ise, names.bm).isNull());
}

TEST_F(OuterPlan, ConstantSurfacesShareRangesAndStepsWithTheHealthyOnes)
{
    const CutPlan plan = planOuter(names, iseCoarse, size, constantOuterParams(noMask(), 0.2F));
    EXPECT_EQ(plan.edgeFactor, 8.0);
    expectRange(plan, names.ise, 85, 115);
    expectRange(plan, names.bm, 100, 130);
    expectShape(plan, names.ise, 900.0, 5000.0, 2, 1);
    expectShape(plan, names.bm, 900.0, 5000.0, 2, 1);
}

TEST_F(OuterPlan, ASwitchedOffShapeStillSetsItsWeightsAndOnlyLowersTheEdgeFactor)
{
    OuterSegParams params = healthyOuterParams(noMask());
    params.iseShapeOn = false;
    const CutPlan plan = planOuter(names, iseCoarse, size, params);
    EXPECT_EQ(plan.edgeFactor, 7.0);
    expectShape(plan, names.ise, 900.0, 5000.0, 2, 1);
}

TEST_F(OuterPlan, ASurfaceOnTheLastRowStillLeavesTwoRows)
{
    const CutPlan plan =
        planOuter(names, constantLayer(size, rows - 1), size, healthyOuterParams(noMask()));
    expectRange(plan, names.bm, rows - 3, rows - 1);
}

TEST_F(OuterPlan, ConstantDistancesAreOneSidedToTheILMAndSoftToTheBM)
{
    const VolumeLayerPtr ilm = constantLayer(size, 10);
    const OuterSegParams params = constantOuterParams(noMask(), 0.2F);
    const CutPlan plan = planOuter(names, iseCoarse, size, params);
    const QList<SoftDistance> terms =
        constantOuterDistances(names, plan, ilm, params, 30, 0.1F, 20);
    ASSERT_EQ(terms.size(), 2);
    EXPECT_FALSE(plan.properties.hasLayer(terms[0].top));
    EXPECT_EQ(terms[0].top->getIdentifier(), LayerNameILM::create()->getIdentifier());
    EXPECT_EQ(terms[0].bottom, names.ise);
    EXPECT_EQ(terms[0].offsets, ilm);
    EXPECT_EQ(terms[0].rows, 30U);
    EXPECT_EQ(terms[0].weight, 0.1F) << "from the argument";
    EXPECT_EQ(terms[1].top, names.ise);
    EXPECT_EQ(terms[1].bottom, names.bm);
    EXPECT_EQ(terms[1].offsets, plan.properties.getSearchRangeTop(names.ise));
    EXPECT_EQ(terms[1].rows, 20U);
    EXPECT_EQ(terms[1].weight, 0.2F) << "from the record";
}

TEST_F(OuterPlan, AWeightOfZeroKeepsBothConstantDistances)
{
    const OuterSegParams params = constantOuterParams(noMask(), 0.0F);
    const CutPlan plan = planOuter(names, iseCoarse, size, params);
    const QList<SoftDistance> terms =
        constantOuterDistances(names, plan, constantLayer(size, 10), params, 30, 0.1F, 20);
    ASSERT_EQ(terms.size(), 2);
    EXPECT_EQ(terms[1].weight, 0.0F);
}

TEST(ConstantDistances, MicrometresBecomeRowsToTheNearestAndTiesToEven)
{
    EXPECT_EQ(micrometresToRows(78.0F, 0.0039), 20);
    EXPECT_EQ(micrometresToRows(10.0F, 0.004), 2); // 2.5
    EXPECT_EQ(micrometresToRows(14.0F, 0.004), 4); // 3.5
    EXPECT_EQ(micrometresToRows(0.0F, 0.004), 0);
}

TEST(ConstantDistances, TruncationStaysInsideTheType)
{
    EXPECT_EQ(truncatedToInt(1.99), 1);
    EXPECT_EQ(truncatedToInt(-1.99), -1);
    EXPECT_EQ(truncatedToInt(1e30), std::numeric_limits<int>::max());
    EXPECT_EQ(truncatedToInt(-1e30), std::numeric_limits<int>::min());
    EXPECT_EQ(truncatedToInt(std::numeric_limits<double>::quiet_NaN()), 0);
}

TEST(BMPlan, SeeksBelowTheCoarseLine)
{
    const LayerNamePtr bm = LayerNameBM::create();
    const CutPlan plan = planBM(bm, constantLayer(size, 100), size, bmParams(noMask()));
    EXPECT_EQ(plan.edgeFactor, 5.0);
    EXPECT_EQ(plan.properties.getLayerNames(), QList<LayerNamePtr>{bm});
    expectCost<CostFunctionBM>(plan, bm);
    expectRange(plan, bm, 100, 150);
    expectShape(plan, bm, 800.0, 4000.0, 1, 1);
}

TEST(BMPlan, WithoutShapeHasTheSameEdgeFactorAndNoWeights)
{
    const LayerNamePtr bm = LayerNameBM::create();
    OuterSegParams params = bmParams(noMask());
    params.bmShapeOn = false;
    const CutPlan plan = planBM(bm, constantLayer(size, 100), size, params);
    EXPECT_EQ(plan.edgeFactor, 5.0);
    expectShape(plan, bm, 0.0, 0.0, 1, 1);
}

struct DrusenPlan : testing::Test
{
    CutPlan plan(int ilmRow, int bmRow, const OuterSegParams& params)
    {
        return planDrusen(names, constantLayer(size, static_cast<unsigned short>(ilmRow)),
                          constantLayer(size, static_cast<unsigned short>(bmRow)), size, params);
    }

    DrusenNames names{LayerNameISe::create(), LayerNameIRPE::create()};
};

TEST_F(DrusenPlan, SeeksBetweenTheFloorAndTheBM)
{
    const CutPlan drusen = plan(20, 100, drusenParams(noMask()));
    EXPECT_EQ(drusen.edgeFactor, 7.0);
    EXPECT_EQ(drusen.properties.getLayerNames(), (QList<LayerNamePtr>{names.ise, names.irpe}));
    expectCost<CostFunctionISePatho>(drusen, names.ise);
    expectCost<CostFunctionIRPE>(drusen, names.irpe);
    expectRange(drusen, names.ise, 40, 90);
    expectRange(drusen, names.irpe, 46, 92);
    expectShape(drusen, names.ise, 0.0, 900.0, 1, 1);
    expectShape(drusen, names.irpe, 0.0, 900.0, 1, 1);
    expectDistance(drusen, names.ise, names.irpe, 6, 16);
}

TEST_F(DrusenPlan, RangesOnTheFloorAreWidened)
{
    // All four ends sit on the floor, row 30; a range of at most 5 rows becomes 28 to 32.
    const CutPlan drusen = plan(20, 35, drusenParams(noMask()));
    expectRange(drusen, names.ise, 28, 32);
    expectRange(drusen, names.irpe, 28, 32);
}

TEST_F(DrusenPlan, MaskedColumnsKeepTheirRanges)
{
    const MaskMatrixPtr mask = noMask();
    (*mask)(1, 2) = 1;
    const CutPlan drusen = plan(20, 35, drusenParams(mask));
    EXPECT_EQ((*drusen.properties.getSearchRangeTop(names.ise))(1, 2), 30);
    EXPECT_EQ((*drusen.properties.getSearchRangeBottom(names.ise))(1, 2), 30);
    EXPECT_EQ((*drusen.properties.getSearchRangeTop(names.ise))(1, 3), 28);
}

TEST_F(DrusenPlan, TheSwitchesGovernTheShapes)
{
    OuterSegParams params = drusenParams(noMask());
    params.iseShapeOn = false;
    params.irpeShapeOn = false;
    const CutPlan drusen = plan(20, 100, params);
    EXPECT_EQ(drusen.edgeFactor, 5.0);
    EXPECT_EQ(drusen.properties.getShapeRegWeightX(names.ise), 0.0);
    EXPECT_EQ(drusen.properties.getShapeRegWeightX(names.irpe), 0.0);
}

TEST_F(DrusenPlan, SoftDistancesFollowTheirSwitches)
{
    OuterSegParams params = drusenParams(noMask());
    const CutPlan drusen = plan(20, 100, params);
    const QList<DrusenDistance> terms = drusenDistances(names, drusen, params);
    ASSERT_EQ(terms.size(), 2);
    EXPECT_STREQ(terms[0].between, "ISe and IRPE");
    EXPECT_EQ(terms[0].distance.top, names.ise);
    EXPECT_EQ(terms[0].distance.bottom, names.irpe);
    EXPECT_EQ(terms[0].distance.offsets, drusen.properties.getSearchRangeTop(names.ise));
    EXPECT_EQ(terms[0].distance.rows, 4U);
    EXPECT_EQ(terms[0].distance.weight, 1.0F);
    EXPECT_STREQ(terms[1].between, "IRPE and BM");
    EXPECT_EQ(terms[1].distance.top, names.irpe);
    EXPECT_FALSE(drusen.properties.hasLayer(terms[1].distance.bottom));
    EXPECT_EQ(terms[1].distance.offsets, drusen.properties.getSearchRangeTop(names.irpe));
    EXPECT_EQ(terms[1].distance.rows, 11U);
    EXPECT_EQ(terms[1].distance.weight, 0.35F);

    params.iseBmDistOn = true;
    const QList<DrusenDistance> all = drusenDistances(names, drusen, params);
    ASSERT_EQ(all.size(), 3);
    EXPECT_STREQ(all[1].between, "ISe and BM");
    EXPECT_EQ(all[1].distance.rows, 17U);
    EXPECT_EQ(all[1].distance.offsets, drusen.properties.getSearchRangeTop(names.ise));
}

TEST(ModelSpacing, HoldsSquaredDistances)
{
    const OCTScanPtr volume = test::makeTestScan(test::lineScan(4, 8, 3, 0.0125, 0.3));
    const std::array<double, 3> spacing = modelSpacing(volume);
    EXPECT_DOUBLE_EQ(spacing[0], 0.0125 * 0.0125);
    EXPECT_DOUBLE_EQ(spacing[1], 0.003872);
    EXPECT_DOUBLE_EQ(spacing[2], 0.3 * 0.3);
}

TEST(ModelSpacing, TakesOneForTheMissingNeighbourOfASingleBScan)
{
    test::TestScan contents = test::lineScan(4, 8, 1);
    contents.pattern = "Single BScan";
    EXPECT_EQ(modelSpacing(test::makeTestScan(contents))[2], 1.0);
}

} // namespace
} // namespace kelp::oct
