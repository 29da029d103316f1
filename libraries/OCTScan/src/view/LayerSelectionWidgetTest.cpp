#include "LayerSelectionWidget.h"

#include "LayerVisibilityCheckBox.h"
#include "SegmentationScene.h"
#include "Waiting.h"
#include "kelpException.h"

#include <QCheckBox>
#include <QSignalSpy>
#include <QtTest>

#include <gmock/gmock.h>

using kelp::oct::LayerNameBM;
using kelp::oct::LayerNameILM;
using kelp::oct::LayerNameILMCoarse;
using kelp::oct::LayerNamePtr;
using kelp::oct::LayerSelectionWidget;
using kelp::oct::LayerVisibilityCheckBox;
using kelp::oct::test::SegmentationScene;
using testing::HasSubstr;

namespace {

QStringList captions(const LayerSelectionWidget& selection)
{
    QStringList texts;
    for (const QCheckBox* box : selection.findChildren<QCheckBox*>()) {
        texts.append(box->text());
    }
    return texts;
}

TEST(LayerBox, RefusesNoName)
{
    try {
        const LayerVisibilityCheckBox box{LayerNamePtr()};
        FAIL() << "a box without a name is made";
    } catch (const kelp::Assertion& failure) {
        EXPECT_THAT(failure.what(), HasSubstr("Layer name is null."));
    }
}

TEST(LayerBox, HasItsNamesTextAndVisibility)
{
    const LayerVisibilityCheckBox fine(LayerNameILM::create());
    EXPECT_EQ(fine.findChild<QCheckBox*>()->text(), QStringLiteral("ILM"));
    EXPECT_TRUE(fine.findChild<QCheckBox*>()->isChecked());
    const LayerVisibilityCheckBox coarse(LayerNameILMCoarse::create());
    EXPECT_EQ(coarse.findChild<QCheckBox*>()->text(), QStringLiteral("ILM coarse"));
    EXPECT_FALSE(coarse.findChild<QCheckBox*>()->isChecked());
}

TEST(LayerBox, FadesItsNamesColourOutBehindTheText)
{
    const LayerVisibilityCheckBox box(LayerNameBM::create());
    EXPECT_EQ(box.findChild<QCheckBox*>()->styleSheet(),
              QStringLiteral("background-color: qlineargradient(x1: 0, y1: 0, x2: 1, y2: 0, "
                             "stop: 0 #80f2ff, stop: 0.777778 transparent);border-radius: 5px;"));
    const LayerVisibilityCheckBox coarse(LayerNameILMCoarse::create());
    EXPECT_EQ(coarse.findChild<QCheckBox*>()->styleSheet(),
              QStringLiteral("background-color: qlineargradient(x1: 0, y1: 0, x2: 1, y2: 0, "
                             "stop: 0 #00ff00, stop: 0.28 transparent);border-radius: 5px;"));
}

TEST(LayerBox, TellsWhatTheMouseAndTheKeyboardDoToIt)
{
    const LayerNamePtr name = LayerNameILM::create();
    LayerVisibilityCheckBox box(name);
    box.show();
    ASSERT_TRUE(waiting::untilExposed(box));
    QSignalSpy changed(&box, SIGNAL(visibilityChanged(LayerNamePtr, bool)));
    auto* const checkBox = box.findChild<QCheckBox*>();
    QTest::mouseClick(checkBox, Qt::LeftButton, {}, {8, checkBox->height() / 2});
    ASSERT_EQ(changed.count(), 1);
    EXPECT_EQ(changed[0][0].value<LayerNamePtr>(), name);
    EXPECT_FALSE(changed[0][1].toBool());
    QTest::keyClick(checkBox, Qt::Key_Space);
    ASSERT_EQ(changed.count(), 2);
    EXPECT_TRUE(changed[1][1].toBool());
}

class LayerSelection : public testing::Test
{
protected:
    LayerSelection()
    {
        for (const char* identifier : {"ILMcoarse", "BM", "IRPE", "ISe", "ILM"}) {
            scene.addLevelLayer(SegmentationScene::name(identifier), 10);
        }
    }

    SegmentationScene scene;
    LayerSelectionWidget selection;
};

TEST_F(LayerSelection, ListsTheLayersFromTheInnerToTheOuterRetina)
{
    EXPECT_EQ(selection.title(), QStringLiteral("Segmented Layers"));
    selection.updateLayers(scene.segmentation);
    // IRPE and ISe share their place and keep the order in which they were made.
    EXPECT_EQ(captions(selection),
              QStringList({QStringLiteral("ILM"), QStringLiteral("IRPE"), QStringLiteral("ISe"),
                           QStringLiteral("BM"), QStringLiteral("ILM coarse")}));
}

TEST_F(LayerSelection, TellsHowVisibleEachLayerIsAtFirst)
{
    QSignalSpy changed(&selection, SIGNAL(visibilityChanged(LayerNamePtr, bool)));
    selection.updateLayers(scene.segmentation);
    ASSERT_EQ(changed.count(), 5);
    EXPECT_EQ(changed[0][0].value<LayerNamePtr>(), SegmentationScene::name("ILM"));
    EXPECT_TRUE(changed[0][1].toBool());
    EXPECT_EQ(changed[4][0].value<LayerNamePtr>(), SegmentationScene::name("ILMcoarse"));
    EXPECT_FALSE(changed[4][1].toBool());
}

TEST_F(LayerSelection, PassesOnWhatTheUserChecks)
{
    selection.updateLayers(scene.segmentation);
    selection.show();
    ASSERT_TRUE(waiting::untilExposed(selection));
    QSignalSpy changed(&selection, SIGNAL(visibilityChanged(LayerNamePtr, bool)));
    QTest::keyClick(selection.findChild<QCheckBox*>(QStringLiteral("BM")), Qt::Key_Space);
    ASSERT_EQ(changed.count(), 1);
    EXPECT_EQ(changed[0][0].value<LayerNamePtr>(), SegmentationScene::name("BM"));
    EXPECT_FALSE(changed[0][1].toBool());
}

TEST_F(LayerSelection, ReplacesItsBoxesAtTheNextUpdate)
{
    selection.updateLayers(scene.segmentation);
    SegmentationScene other;
    other.addLevelLayer(SegmentationScene::name("ONL"), 10);
    selection.updateLayers(other.segmentation);
    EXPECT_EQ(captions(selection), QStringList{QStringLiteral("ONL")});
    selection.updateLayers(OCTScanSegPtr());
    EXPECT_TRUE(captions(selection).isEmpty());
}

} // namespace
