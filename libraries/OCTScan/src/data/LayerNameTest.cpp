#include "LayerName.h"

#include <gmock/gmock.h>

#include <atomic>
#include <thread>
#include <vector>

using namespace kelp::oct;

namespace {

struct Expected
{
    LayerNamePtr name;
    const char* identifier;
    const char* shortName;
    const char* longName;
    QColor color;
    float order;
    bool isVisible;
    bool isFinal;
};

std::vector<Expected> table()
{
    return {
        {LayerNameILM::create(), "ILM", "ILM", "Internal Limiting Membrane", QColor(128, 255, 140),
         1.0F, true, true},
        {LayerNameGCL::create(), "GCL", "GCL", "Ganglion Cell Layer", QColor(128, 242, 255), 2.0F,
         true, true},
        {LayerNameINL::create(), "INL", "INL", "Inner Nuclear Layer", QColor(242, 255, 128), 3.0F,
         true, true},
        {LayerNameONL::create(), "ONL", "ONL", "Outer Nuclear Layer", QColor(255, 180, 66), 4.0F,
         true, true},
        {LayerNameISe::create(), "ISe", "ISe", "Inner Segment Elipsoids", QColor(255, 128, 242),
         5.0F, true, true},
        {LayerNameIRPE::create(), "IRPE", "IRPE", "Inner RPE", QColor(140, 128, 255), 5.0F, true,
         true},
        {LayerNameBM::create(), "BM", "BM", "Bruch's Membrane", QColor(128, 242, 255), 6.0F, true,
         true},
        {LayerNameILMCoarse::create(), "ILMcoarse", "ILM coarse",
         "Internal Limiting Membrane (coarse)", QColor(Qt::green), 100.0F, false, false},
        {LayerNameISeCoarse::create(), "ISeCoarse", "ISe coarse",
         "Inner Segment Elipsoids (coarse)", QColor(Qt::magenta), 105.0F, false, false},
        {LayerNameInvalid::create(), "invalid", "Invalid", "Invalid Layer", QColor(Qt::white), 0.0F,
         true, true},
    };
}

class BareName : public LayerName
{
public:
    QString getIdentifier() const override { return "bare"; }
    QString getShortName() const override { return "bare"; }
    QString getLongName() const override { return "bare"; }
};

TEST(LayerName, AnswersAsItsClassSays)
{
    for (const Expected& expected : table()) {
        SCOPED_TRACE(expected.identifier);
        EXPECT_EQ(expected.name->getIdentifier(), expected.identifier);
        EXPECT_EQ(expected.name->getShortName(), expected.shortName);
        EXPECT_EQ(expected.name->getLongName(), expected.longName);
        EXPECT_EQ(expected.name->getColor(), expected.color);
        EXPECT_EQ(expected.name->getOrder(), expected.order);
        EXPECT_EQ(expected.name->isVisibleByDefault(), expected.isVisible);
        EXPECT_EQ(expected.name->isFinal(), expected.isFinal);
    }
}

TEST(LayerName, BaseIsWhiteVisibleAndFinal)
{
    const BareName name;
    EXPECT_EQ(name.getColor(), QColor(Qt::white));
    EXPECT_EQ(name.getOrder(), 0.0F);
    EXPECT_TRUE(name.isVisibleByDefault());
    EXPECT_TRUE(name.isFinal());
}

TEST(LayerName, InstancesAreEqualByIdentifierOnly)
{
    const auto one = LayerNameILM::create();
    const auto other = LayerNameILM::create();
    EXPECT_NE(one, other);
    EXPECT_TRUE(*one == *other);
    EXPECT_FALSE(*one != *other);
    EXPECT_TRUE(*LayerNameISe::create() != *LayerNameIRPE::create());
}

TEST(LayerName, SortsByOrderOnly)
{
    EXPECT_TRUE(*LayerNameILM::create() < *LayerNameBM::create());
    EXPECT_FALSE(*LayerNameBM::create() < *LayerNameILM::create());
    EXPECT_FALSE(*LayerNameISe::create() < *LayerNameIRPE::create());
    EXPECT_FALSE(*LayerNameIRPE::create() < *LayerNameISe::create());
}

TEST(LayerNameRegistry, HoldsOneInstanceOfEachClass)
{
    EXPECT_EQ(LayerNameRegistry::entries().size(), 10);
    for (const Expected& expected : table()) {
        SCOPED_TRACE(expected.identifier);
        const LayerNamePtr found = LayerName::fromIdentifier(expected.identifier);
        EXPECT_TRUE(*found == *expected.name);
        EXPECT_EQ(found, LayerName::fromIdentifier(expected.identifier));
        EXPECT_EQ(found, LayerNameRegistry::entries().value(expected.identifier));
        const LayerName& foundName = *found;
        const LayerName& expectedName = *expected.name;
        EXPECT_EQ(typeid(foundName), typeid(expectedName));
    }
}

TEST(LayerNameRegistry, TellsSmallFromCapitalLetters)
{
    EXPECT_EQ(LayerName::fromIdentifier("ILMcoarse")->getIdentifier(), "ILMcoarse");
    const LayerNamePtr unknown = LayerName::fromIdentifier("ILMCoarse");
    EXPECT_EQ(unknown->getIdentifier(), "invalid");
    EXPECT_NE(unknown, LayerName::fromIdentifier("invalid")) << "not a fresh instance";
}

TEST(LayerNameRegistry, KnowsTheInvalidLayer)
{
    const LayerNamePtr invalid = LayerName::fromIdentifier("invalid");
    EXPECT_EQ(invalid, LayerNameRegistry::entries().value("invalid"));
    EXPECT_TRUE(*invalid == *LayerNameInvalid::create());
}

TEST(LayerNameRegistry, GivesAllThreadsTheSameInstance)
{
    constexpr std::size_t nrThreads = 8;
    std::atomic<std::size_t> waiting{nrThreads};
    std::vector<LayerNamePtr> found(nrThreads);
    std::vector<std::thread> threads;
    for (std::size_t i = 0; i < nrThreads; ++i) {
        threads.emplace_back([&, i] {
            --waiting;
            while (waiting > 0) {
                std::this_thread::yield();
            }
            found[i] = LayerName::fromIdentifier("GCL");
        });
    }
    for (std::thread& thread : threads) {
        thread.join();
    }
    EXPECT_THAT(found, testing::Each(found.front()));
}

TEST(LayerName, TravelsThroughQueuedSignals)
{
    EXPECT_EQ(QMetaType::type("LayerNamePtr"), qMetaTypeId<LayerNamePtr>());
}

} // namespace
