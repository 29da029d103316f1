#include "kelpTransferFunctionWidget.h"

#include "Waiting.h"
#include "kelpException.h"
#include "kelpImageWidget.h"

#include <QFrame>
#include <QLabel>
#include <QTest>
#include <QVBoxLayout>

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>

namespace {

using kelp::ColorMaps;
using kelp::PredefinedTransferfunctions;
using kelp::TransferFunctionWidget;

QSharedPointer<PredefinedTransferfunctions> makeFunction(ColorMaps map, double low, double high)
{
    auto function = QSharedPointer<PredefinedTransferfunctions>::create(map);
    function->setInputRange(low, high);
    return function;
}

QList<QLabel*> numbersFromTheTop(const QWidget& widget)
{
    QList<QLabel*> numbers = widget.findChildren<QLabel*>();
    std::sort(numbers.begin(), numbers.end(),
              [](const QLabel* a, const QLabel* b) { return a->y() < b->y(); });
    return numbers;
}

QStringList textsFromTheTop(const QWidget& widget)
{
    QStringList texts;
    for (const QLabel* const number : numbersFromTheTop(widget)) {
        texts.append(number->text());
    }
    return texts;
}

void show(QWidget& widget)
{
    widget.resize(120, 320);
    widget.show();
    ASSERT_TRUE(waiting::untilExposed(widget));
}

TEST(TransferFunctionWidget, NumbersTheEndsAndPlacesBetweenWithTheUpperEndOnTop)
{
    TransferFunctionWidget widget;
    widget.setTransferFunction(makeFunction(ColorMaps::Rainbow, 200.0, 400.0));
    show(widget);
    EXPECT_EQ(textsFromTheTop(widget),
              (QStringList{QStringLiteral("400"), QStringLiteral("350"), QStringLiteral("300"),
                           QStringLiteral("250"), QStringLiteral("200")}));
}

TEST(TransferFunctionWidget, TicksStandAtTheColorsOfTheirNumbers)
{
    TransferFunctionWidget widget;
    const auto function = makeFunction(ColorMaps::Gray, 0.0, 400.0);
    widget.setTransferFunction(function);
    show(widget);
    const QImage picture = widget.grab().toImage();
    const auto* const strip = widget.findChild<kelp::ImageWidget*>();
    ASSERT_TRUE(strip);
    const QList<QLabel*> numbers = numbersFromTheTop(widget);
    for (int i = 1; i < numbers.size() - 1; ++i) {
        const int y = numbers[i]->geometry().center().y();
        const double shown = qRed(picture.pixel(strip->geometry().center().x(), y));
        const double wanted = 255.0 * function->getChannel(0)(numbers[i]->text().toDouble());
        // Half a pixel of 320 and the rounding of a label's middle.
        EXPECT_NEAR(shown, wanted, 2.0) << i;
    }
    EXPECT_EQ(numbers.first()->y(), strip->y());
    EXPECT_EQ(numbers.last()->geometry().bottom(), strip->geometry().bottom());
    EXPECT_GE(qRed(picture.pixel(strip->geometry().center().x(), strip->y())), 254);
    EXPECT_LE(qRed(picture.pixel(strip->geometry().center().x(), strip->geometry().bottom())), 1);
}

TEST(TransferFunctionWidget, FollowsAFunctionSetAnew)
{
    TransferFunctionWidget widget;
    const auto function = makeFunction(ColorMaps::Gray, 0.0, 400.0);
    widget.setTransferFunction(function);
    show(widget);
    function->setInputRange(-1.5, 0.5);
    widget.setTransferFunction(function);
    // The layout places the new labels with the next events.
    const QStringList wanted{QStringLiteral("0.5"), QStringLiteral("0"), QStringLiteral("-0.5"),
                             QStringLiteral("-1"), QStringLiteral("-1.5")};
    EXPECT_TRUE(waiting::until([&] { return textsFromTheTop(widget) == wanted; }));
}

TEST(TransferFunctionWidget, ShowsNothingWithoutAFunction)
{
    TransferFunctionWidget widget;
    widget.setTransferFunction(makeFunction(ColorMaps::Glow, 0.0, 1.0));
    widget.setTransferFunction({});
    EXPECT_TRUE(widget.findChildren<QLabel*>().isEmpty());
    show(widget);
    const QImage picture = widget.grab().toImage();
    const QRgb background = picture.pixel(0, 0);
    for (int y = 0; y < picture.height(); ++y) {
        for (int x = 0; x < picture.width(); ++x) {
            ASSERT_EQ(picture.pixel(x, y), background) << x << ' ' << y;
        }
    }
}

TEST(TransferFunctionWidget, NeedsItsGridForTheTicks)
{
    TransferFunctionWidget widget;
    delete widget.layout();
    widget.setLayout(new QVBoxLayout);
    try {
        widget.setTransferFunction(makeFunction(ColorMaps::Glow, 0.0, 1.0));
        FAIL();
    } catch (const kelp::Assertion& failure) {
        EXPECT_TRUE(failure.getMessage().endsWith(
            QStringLiteral("kelp::TranferFunctionWidget::resetLabelTicks: could not cast layout "
                           "to QGridLayout")))
            << failure.what();
    }
}

} // namespace
