#include "kelpTransferFunctionWidget.h"

#include "kelpCheck.h"
#include "kelpImageWidget.h"

#include <QFrame>
#include <QGridLayout>
#include <QLabel>

#include <array>
#include <cmath>

namespace kelp {

namespace {

constexpr int tickCount = 5;
// Each tick has half of its own row above and half below, so that it stands where its value does:
// two grid rows for every distance between ticks.
constexpr int gridRows = 2 * (tickCount - 1);
constexpr int stripColumn = 0;
constexpr int tickColumn = 1;
constexpr int numberColumn = 2;

constexpr int stripPixels = 256;

/// From the upper end of the range, on top, to the lower one.
ImagePtr makeStrip(const ColorTransferFunction& function)
{
    const std::array<ColorTransferFunction::Channel, 3> channels{
        function.getChannel(0), function.getChannel(1), function.getChannel(2)};
    const auto [low, high] = function.getInputRange();
    constexpr double brightest = 255.0;
    const ImagePtr strip = Image::create(ColorRGBA8, {1, stripPixels, 1});
    auto* pixel = strip->pixels<unsigned char>();
    for (int row = 0; row < stripPixels; ++row) {
        const double value = high - (high - low) * row / (stripPixels - 1);
        for (const auto& channel : channels) {
            *pixel++ = static_cast<unsigned char>(std::lround(channel(value) * brightest));
        }
        *pixel++ = static_cast<unsigned char>(brightest);
    }
    return strip;
}

Qt::Alignment verticalPlace(int index)
{
    if (index == 0) {
        return Qt::AlignTop;
    }
    return index == tickCount - 1 ? Qt::AlignBottom : Qt::AlignVCenter;
}

} // namespace

TransferFunctionWidget::TransferFunctionWidget(QWidget* parent)
    : QWidget(parent), m_strip(new ImageWidget)
{
    constexpr int stripWidth = 20;
    constexpr int leastHeight = 100;
    auto* const grid = new QGridLayout(this);
    grid->setContentsMargins(0, 0, 0, 0);
    grid->setHorizontalSpacing(2);
    grid->setVerticalSpacing(0);
    for (int row = 0; row < gridRows; ++row) {
        grid->setRowStretch(row, 1);
    }
    m_strip->setFixedWidth(stripWidth);
    m_strip->setMinimumHeight(leastHeight);
    m_strip->setScalingMode(ImageWidget::FillWidget);
    grid->addWidget(m_strip, 0, stripColumn, gridRows, 1);
    setSizePolicy(QSizePolicy::Maximum, QSizePolicy::Preferred);
}

void TransferFunctionWidget::setTransferFunction(
    const QSharedPointer<ColorTransferFunction>& function)
{
    m_function = function;
    resetStrip();
    resetLabelTicks();
}

void TransferFunctionWidget::resetStrip()
{
    m_strip->setImage(m_function ? makeStrip(*m_function) : ImagePtr());
}

void TransferFunctionWidget::resetLabelTicks()
{
    auto* const grid = qobject_cast<QGridLayout*>(layout());
    check(grid != nullptr,
          {"libraries/Gui/src/kelpTransferFunctionWidget",
           "kelp::TransferFunctionWidget::resetLabelTicks"},
          "kelp::TranferFunctionWidget::resetLabelTicks: could not cast layout to QGridLayout");
    qDeleteAll(m_labelTicks);
    m_labelTicks.clear();
    if (!m_function) {
        return;
    }
    const auto [low, high] = m_function->getInputRange();
    for (int index = 0; index < tickCount; ++index) {
        addLabelTick(*grid, index, high - (high - low) * index / (tickCount - 1));
    }
}

void TransferFunctionWidget::addLabelTick(QGridLayout& grid, int index, double value)
{
    constexpr int tickLength = 4;
    auto* const tick = new QFrame;
    tick->setFrameShape(QFrame::HLine);
    tick->setFrameShadow(QFrame::Plain);
    tick->setFixedSize(tickLength, 1);
    auto* const number = new QLabel(QString().setNum(value));
    const int row = index == 0 ? 0 : 2 * index - 1;
    const int rows = row == 0 || row == gridRows - 1 ? 1 : 2;
    grid.addWidget(tick, row, tickColumn, rows, 1, verticalPlace(index));
    grid.addWidget(number, row, numberColumn, rows, 1, Qt::AlignLeft | verticalPlace(index));
    m_labelTicks << tick << number;
}

} // namespace kelp

#include "moc_kelpTransferFunctionWidget.cpp"
