#include "MeasurementWidgetFixture.h"

#include "DialogDriver.h"
#include "kelpTransferFunctionWidget.h"

#include <QValidator>

using namespace kelp::oct;
using namespace kelp::oct::test;
using kelp::Settings;

namespace {

class MeasurementOptions : public Measurement
{
protected:
    QSlider& slider(const char* name) const { return find<QSlider>(name); }
    QLineEdit& edit(const char* name) const { return find<QLineEdit>(name); }
    QComboBox& box(const char* name) const { return find<QComboBox>(name); }

    void type(QLineEdit& target, const QString& text, bool enter = true)
    {
        focus(target);
        target.selectAll();
        QTest::keyClick(&target, Qt::Key_Delete);
        QTest::keyClicks(&target, text);
        if (enter) {
            QTest::keyClick(&target, Qt::Key_Return);
        }
    }

    void expectLimits(int lower, int upper) const
    {
        EXPECT_EQ(slider("lowerLimitSlider").value(), lower);
        EXPECT_EQ(edit("lowerLimitEdit").text(), QString::number(lower));
        EXPECT_EQ(slider("upperLimitSlider").value(), upper);
        EXPECT_EQ(edit("upperLimitEdit").text(), QString::number(upper));
        EXPECT_EQ(Settings::get("Gui/thicknessMap/colorTransferMin", 200.0), lower);
        EXPECT_EQ(Settings::get("Gui/thicknessMap/colorTransferMax", 400.0), upper);
        EXPECT_EQ(legendEnds(), (QStringList{QString::number(lower), QString::number(upper)}));
    }

    /// The smallest and largest number of the legend.
    QStringList legendEnds() const
    {
        QList<double> numbers;
        for (const QLabel* const label :
             find<kelp::TransferFunctionWidget>("thicknessLegend").findChildren<QLabel*>()) {
            bool isNumber = false;
            const double number = label->text().toDouble(&isNumber);
            if (isNumber) {
                numbers.append(number);
            }
        }
        std::sort(numbers.begin(), numbers.end());
        return numbers.isEmpty()
                   ? QStringList()
                   : QStringList{QString::number(numbers.first()), QString::number(numbers.last())};
    }

    QImage map() const
    {
        const auto pixmaps = visibleItems<QGraphicsPixmapItem>(viewer());
        return pixmaps.size() == 2 ? pixmaps.last()->pixmap().toImage() : QImage();
    }
};

TEST_F(MeasurementOptions, HaveTheirCaptionsRangesAndDefaults)
{
    QStringList captions;
    for (const QLabel* const label : m_widget.findChildren<QLabel*>()) {
        if (label->buddy()) {
            captions.append(label->text());
        }
    }
    EXPECT_EQ(captions,
              (QStringList{"Top Layer:", "Bottom Layer:", "Color Table:", "Lower Limit (\u00b5m):",
                           "Upper Limit (\u00b5m):", "Transparency:"}));
    EXPECT_EQ(slider("lowerLimitSlider").minimum(), 0);
    EXPECT_EQ(slider("lowerLimitSlider").maximum(), 499);
    EXPECT_EQ(slider("upperLimitSlider").minimum(), 1);
    EXPECT_EQ(slider("upperLimitSlider").maximum(), 500);
    EXPECT_EQ(slider("transparencySlider").minimum(), 0);
    EXPECT_EQ(slider("transparencySlider").maximum(), 100);
    EXPECT_EQ(slider("transparencySlider").value(), 50);
    for (const char* const name : {"lowerLimitSlider", "upperLimitSlider", "transparencySlider"}) {
        EXPECT_EQ(slider(name).maximumWidth(), 150);
    }
    for (const char* const name : {"lowerLimitEdit", "upperLimitEdit"}) {
        EXPECT_EQ(edit(name).maximumWidth(), 40);
    }
    expectLimits(200, 400);
    EXPECT_EQ(box("colorTableBox").currentText(), QStringLiteral("Rainbow"));
    QStringList names;
    for (int i = 0; i < box("colorTableBox").count(); ++i) {
        names.append(box("colorTableBox").itemText(i));
    }
    EXPECT_EQ(names, (QStringList{"Blue-Red", "Gray", "Glow", "Rainbow", "Rainbow Inverted",
                                  "Rainbow Light", "Temperature"}));
}

TEST_F(MeasurementOptions, TakeOnlyNumbersOfTheirRange)
{
    int position = 0;
    const auto isAcceptable = [&](const char* name, QString text) {
        return edit(name).validator()->validate(text, position) == QValidator::Acceptable;
    };
    EXPECT_TRUE(isAcceptable("lowerLimitEdit", "0"));
    EXPECT_TRUE(isAcceptable("lowerLimitEdit", "499"));
    EXPECT_FALSE(isAcceptable("lowerLimitEdit", "500"));
    EXPECT_FALSE(isAcceptable("upperLimitEdit", "0"));
    EXPECT_TRUE(isAcceptable("upperLimitEdit", "500"));
    EXPECT_FALSE(isAcceptable("upperLimitEdit", "501"));
    EXPECT_FALSE(isAcceptable("upperLimitEdit", "x"));
}

TEST_F(MeasurementOptions, KeepSliderEditLegendAndSettingsInStep)
{
    focus(slider("lowerLimitSlider"));
    QTest::keyClick(&slider("lowerLimitSlider"), Qt::Key_Right);
    expectLimits(201, 400);
    QTest::keyClick(&slider("upperLimitSlider"), Qt::Key_End);
    expectLimits(201, 500);
    type(edit("lowerLimitEdit"), QStringLiteral("150"));
    expectLimits(150, 500);
    type(edit("upperLimitEdit"), QStringLiteral("350"));
    expectLimits(150, 350);
}

TEST_F(MeasurementOptions, LetNumbersBeTypedWithoutDraggingTheOtherLimitAlong)
{
    // 3 and 35 lie on the way to 350.
    type(edit("upperLimitEdit"), QStringLiteral("35"), false);
    EXPECT_EQ(slider("lowerLimitSlider").value(), 200);
    QTest::keyClicks(&edit("upperLimitEdit"), QStringLiteral("0"));
    expectLimits(200, 350);
}

TEST_F(MeasurementOptions, TakeTheOtherLimitAlongWhereTheyWouldMeet)
{
    QTest::keyClick(&slider("lowerLimitSlider"), Qt::Key_End);
    expectLimits(499, 500);
    QTest::keyClick(&slider("upperLimitSlider"), Qt::Key_Home);
    expectLimits(0, 1);
    type(edit("lowerLimitEdit"), QStringLiteral("300"));
    expectLimits(300, 301);
    type(edit("upperLimitEdit"), QStringLiteral("300"));
    expectLimits(299, 300);
}

TEST_F(MeasurementOptions, NeverLeaveANumberInAnEditThatDoesNotHold)
{
    type(edit("upperLimitEdit"), QStringLiteral("0"));
    expectLimits(200, 400);
    type(edit("lowerLimitEdit"), QString());
    expectLimits(200, 400);
    type(edit("lowerLimitEdit"), QString(), false);
    focus(slider("upperLimitSlider"));
    expectLimits(200, 400);
}

TEST_F(MeasurementOptions, AreThereAgainAtTheNextStart)
{
    QTest::keyClick(&slider("transparencySlider"), Qt::Key_End);
    focus(box("colorTableBox"));
    QTest::keyClick(&box("colorTableBox"), Qt::Key_End);
    type(edit("lowerLimitEdit"), QStringLiteral("123"));
    EXPECT_EQ(Settings::get("Gui/thicknessMap/colorTransferAlpha", 0.5), 1.0);
    EXPECT_EQ(Settings::get("Gui/thicknessMap/colorTransferMap", 3), 6);
    const MeasurementWidget next;
    EXPECT_EQ(find<QSlider>(next, "transparencySlider").value(), 100);
    EXPECT_EQ(find<QSlider>(next, "lowerLimitSlider").value(), 123);
    EXPECT_EQ(find<QLineEdit>(next, "lowerLimitEdit").text(), QStringLiteral("123"));
    EXPECT_EQ(find<QComboBox>(next, "colorTableBox").currentText(), QStringLiteral("Temperature"));
}

TEST_F(MeasurementOptions, ChangeTheMapAtOnce)
{
    MeasuredScan measured;
    measured.addLayers();
    show(measured);
    QImage before = map();
    ASSERT_FALSE(before.isNull());
    const auto expectChange = [&](const char* what) {
        EXPECT_NE(map(), before) << what;
        before = map();
    };
    QTest::keyClick(&slider("transparencySlider"), Qt::Key_End);
    expectChange("transparency");
    QTest::keyClick(&box("colorTableBox"), Qt::Key_Home);
    expectChange("color table");
    QTest::keyClick(&slider("lowerLimitSlider"), Qt::Key_Home);
    expectChange("lower limit");
    QTest::keyClick(&slider("upperLimitSlider"), Qt::Key_PageUp);
    expectChange("upper limit");
    QTest::keyClick(&box("topLayerBox"), Qt::Key_Down);
    expectChange("top layer");
    QTest::keyClick(&box("bottomLayerBox"), Qt::Key_Up);
    expectChange("bottom layer");
}

TEST_F(MeasurementOptions, OfferTheFinalLayersFromTopToBottom)
{
    MeasuredScan measured;
    QStringList shuffled{"BM", "ONL", "ILM", "ISe", "GCL", "INL"};
    measured.addLayers(shuffled);
    measured.segmentation->setVolumeLayer(
        makeFlatSurface(MeasuredScan::bScans, MeasuredScan::aScans, 9),
        LayerNameILMCoarse::create());
    show(measured);
    for (const char* const name : {"topLayerBox", "bottomLayerBox"}) {
        QStringList identifiers;
        for (int i = 0; i < box(name).count(); ++i) {
            identifiers.append(box(name).itemData(i).value<LayerNamePtr>()->getIdentifier());
        }
        EXPECT_EQ(identifiers, MeasuredScan::layerNames());
    }
    EXPECT_EQ(box("topLayerBox").currentText(), QStringLiteral("ILM"));
    EXPECT_EQ(box("bottomLayerBox").currentText(), QStringLiteral("BM"));
}

TEST_F(MeasurementOptions, RememberTheChosenLayersButNotThoseTakenForLackOfThem)
{
    MeasuredScan measured;
    measured.addLayers();
    show(measured);
    QTest::keyClick(&box("topLayerBox"), Qt::Key_Down);
    QTest::keyClick(&box("bottomLayerBox"), Qt::Key_Up);
    EXPECT_EQ(Settings::get("Gui/thicknessMap/topLayerId", QString()), QStringLiteral("GCL"));
    EXPECT_EQ(Settings::get("Gui/thicknessMap/bottomLayerId", QString()), QStringLiteral("ISe"));

    MeasuredScan outer;
    outer.addLayers({QStringLiteral("ILM"), QStringLiteral("BM")});
    EXPECT_THROW(show(outer), kelp::Assertion);
    EXPECT_EQ(box("topLayerBox").currentText(), QStringLiteral("ILM"));
    EXPECT_EQ(box("bottomLayerBox").currentText(), QStringLiteral("BM"));

    show(measured);
    EXPECT_EQ(box("topLayerBox").currentText(), QStringLiteral("GCL"));
    EXPECT_EQ(box("bottomLayerBox").currentText(), QStringLiteral("ISe"));
}

TEST_F(MeasurementOptions, TellOfALayerThatIsNotOnEveryBScan)
{
    MeasuredScan measured;
    measured.addLayers();
    BScanSegmentationLayer::LayerData rows(MeasuredScan::aScans);
    std::fill(rows.data(), rows.data() + MeasuredScan::aScans, static_cast<unsigned short>(20));
    measured.segmentation->getBScanSegmentation(0)->addLayer(
        QSharedPointer<BScanSegmentationLayer>::create(rows, LayerNameIRPE::create()));
    show(measured);
    DialogDriver dialogs;
    dialogs.expectMessageContaining(QStringLiteral("Error Drawing the Thickness Map"),
                                    QStringLiteral("Drawing the thickness map failed:\n"));
    const int index = box("topLayerBox").findText(QStringLiteral("IRPE"));
    ASSERT_GE(index, 0);
    focus(box("topLayerBox"));
    QTest::keyClicks(&box("topLayerBox"), QStringLiteral("IRPE"));
    EXPECT_EQ(box("topLayerBox").currentIndex(), index);
}

} // namespace
