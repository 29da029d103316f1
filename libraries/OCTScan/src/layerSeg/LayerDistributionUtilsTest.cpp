#include "LayerDistributionUtils.h"
#include "ExpectFailure.h"
#include "TraceCapture.h"

#include <gtest/gtest.h>

namespace {

using namespace kelp::oct;
using test::failure;
using test::TraceCapture;

/// A model of one pair on a grid of two rows and three columns.
QByteArray smallModel()
{
    return "<Model Description='small'>"
           "<Fovea_position><x>1</x><y>0</y></Fovea_position>"
           "<Optic_disc_direction><x>1</x><y>0</y></Optic_disc_direction>"
           "<Laterality>OD</Laterality>"
           "<Distributions Description='all'><Distribution Description='one'>"
           "<Top_Layer_Name>ILM</Top_Layer_Name><Bottom_Layer_Name>GCL</Bottom_Layer_Name>"
           "<Spacing Description='s'><x>40.5</x><y>20</y></Spacing>"
           "<Dimension Description='d'><x>3</x><y>2</y></Dimension>"
           "<Mean_matrix Description='m'><row>10  20.5 -3e1 </row><row>1 2 3</row></Mean_matrix>"
           "<Variance_matrix Description='v'><row>30 3 6</row><row>9 12 15</row></Variance_matrix>"
           "</Distribution></Distributions></Model>";
}

QByteArray changed(const char* from, const char* to)
{
    QByteArray model = smallModel();
    EXPECT_TRUE(model.contains(from));
    return model.replace(from, to);
}

QList<LayerDistributionPtr> load(const QByteArray& content)
{
    QList<LayerDistributionPtr> distributions{nullptr, nullptr};
    LayerDistributionUtils::loadFromXMLContent(content, "model.xml", distributions);
    return distributions;
}

std::string assertionOf(const QByteArray& content)
{
    return failure<kelp::Assertion>([&] { load(content); });
}

std::string located(const char* text)
{
    return std::string("OCTScan/src/layerSeg/LayerDistributionUtils::"
                       "kelp::oct::LayerDistributionUtils::loadFromXML: ") +
           text;
}

TEST(LoadModel, ReplacesTheListByWhatTheTextHolds)
{
    const QList<LayerDistributionPtr> distributions = load(smallModel());
    ASSERT_EQ(distributions.size(), 1);
    const LayerDistributionPtr& pair = distributions.front();
    EXPECT_EQ(pair->getUpperLayerName(), "ILM");
    EXPECT_EQ(pair->getLowerLayerName(), "GCL");
    // Column 1, row 0 is the fovea; steps are 0.0405 and 0.02 mm.
    EXPECT_EQ(pair->getMean(0.0F, 0.0F), static_cast<float>(20.5 / 1000.0));
    EXPECT_EQ(pair->getMean(-0.0405F, 0.0F), static_cast<float>(10.0 / 1000.0));
    EXPECT_EQ(pair->getMean(0.0405F, 0.0F), static_cast<float>(-30.0 / 1000.0));
    EXPECT_EQ(pair->getMean(0.0F, 0.02F), static_cast<float>(2.0 / 1000.0));
}

TEST(LoadModel, ReadsSpreadsAsThreeStandardDeviations)
{
    const LayerDistributionPtr pair = load(smallModel()).front();
    EXPECT_EQ(pair->getVariance(-0.0405F, 0.0F), 0.0001F);
    EXPECT_EQ(pair->getVariance(0.0F, 0.0F), 1e-6F);
}

TEST(LoadModel, TakesWhatIsNoNumberForZero)
{
    const LayerDistributionPtr pair = load(changed("20.5", "2x")).front();
    EXPECT_EQ(pair->getMean(0.0F, 0.0F), 0.0F);
}

TEST(LoadModel, ReadsNumbersInEveryFormThatQtReads)
{
    for (const char* form : {"+20.5", "2.05e1", "2050E-2", "020.50", "20.5\n"}) {
        const LayerDistributionPtr pair = load(changed("20.5", form)).front();
        EXPECT_EQ(pair->getMean(0.0F, 0.0F), static_cast<float>(20.5 / 1000.0)) << form;
    }
}

TEST(LoadModel, RefusesWhatIsNotWellFormedWhateverElseIsWrong)
{
    const QByteArray wrongRows = changed("<row>1 2 3</row></Mean_matrix>", "</Mean_matrix>");
    for (const QByteArray& content :
         {QByteArray(), QByteArray("text"), QByteArray("<Model>"), smallModel() + "<more/>",
          wrongRows.left(wrongRows.size() - 3), QByteArray("<Other><x></Other>")}) {
        TraceCapture trace;
        EXPECT_EQ(failure<kelp::Exception>([&] { load(content); }),
                  "Error setting doc content from file model.xml");
        EXPECT_EQ(trace.lines(), QStringList{"Error setting doc content from file: model.xml!"});
    }
}

TEST(LoadModel, RefusesAnotherDocumentElement)
{
    TraceCapture trace;
    EXPECT_EQ(failure<kelp::Exception>([] { load("<Muddle/>"); }), "XML main node is not Model");
    EXPECT_EQ(trace.lines(), QStringList{"XML main node is not 'Model', but Muddle"});
}

TEST(LoadModel, GivesNothingForAModelWithoutDistributions)
{
    EXPECT_TRUE(load("<Model/>").isEmpty());
    EXPECT_TRUE(load("<Model><Distributions/></Model>").isEmpty());
}

TEST(LoadModel, ChecksItsMatricesInOrder)
{
    EXPECT_EQ(assertionOf(changed("<row>1 2 3</row></Mean_matrix>", "</Mean_matrix>")),
              located("Mismatch between mean row length and var row length."));
    EXPECT_EQ(assertionOf(changed("<y>2</y>", "<y>5</y>")),
              located("Mismatch between mean row length and y-dimension."));
    EXPECT_EQ(assertionOf(changed("<row>1 2 3</row>", "<row>1 2</row>")),
              located("Mismatch between parsed mean row and parsed var row length."));
    EXPECT_EQ(assertionOf(changed("<x>3</x>", "<x>4</x>")),
              located("Mismatch between parsed mean row length and y-dimension."));
    // Of two failures the earlier check speaks.
    QByteArray twice = changed("<x>3</x>", "<x>4</x>");
    twice.replace("<y>2</y>", "<y>5</y>");
    EXPECT_EQ(assertionOf(twice), located("Mismatch between mean row length and y-dimension."));
}

TEST(LoadModel, LeavesTheChecksOfSpacingToTheDistribution)
{
    EXPECT_EQ(assertionOf(changed("<x>40.5</x>", "<x>0</x>")),
              "OCTScan/src/layerSeg/LayerDistribution::kelp::oct::LayerDistribution::"
              "LayerDistribution: X-Spacing <= 0.");
}

TEST(LoadModel, NamesAResourceThatIsMissingOrCannotBeOpened)
{
    TraceCapture trace;
    QList<LayerDistributionPtr> list;
    EXPECT_EQ(failure<kelp::Exception>(
                  [&] { LayerDistributionUtils::loadFromXMLResource(":/nothing.xml", list); }),
              "Resource :/nothing.xml is not valid.");
    EXPECT_TRUE(trace.lines().isEmpty());
    // A folder of the resources is valid but no file. The model's text brings it in.
    EXPECT_FALSE(LayerDistributionUtils::modelXML().isEmpty());
    const std::string text = failure<kelp::Exception>(
        [&] { LayerDistributionUtils::loadFromXMLResource(":/layerDistribution", list); });
    EXPECT_EQ(text.find("Error opening file :/layerDistribution from resource system. The "
                        "following are accessible resources:\n"),
              0U);
    EXPECT_NE(text.find("\nlayerDistribution"), std::string::npos);
    EXPECT_EQ(trace.lines().last(), "Error opening file: :/layerDistribution!");
}

TEST(LoadModel, LoadsTheCompiledInModel)
{
    TraceCapture trace;
    QList<LayerDistributionPtr> distributions;
    LayerDistributionUtils::loadFromXML(distributions);
    ASSERT_EQ(distributions.size(), 15);
    EXPECT_EQ(distributions[0]->getMean(0.0F, 0.0F), 0.016F);
    EXPECT_EQ(distributions[14]->getMean(0.0F, 0.0F), 0.2289F);
    EXPECT_EQ(trace.lines(), QStringList{"loading XML distribution file "
                                         ":/layerDistribution/distributionsXML.xml"});
}

} // namespace
