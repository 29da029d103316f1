#pragma once

#include <QString>
#include <QStringList>

#include <functional>
#include <utility>
#include <vector>

namespace kelp {

/// Maps a scalar to the colour channels red, green, blue (0, 1, 2), each in 0 to 1, over an input
/// range. Values outside the range take the colour of its nearer end.
class ColorTransferFunction
{
public:
    using Channel = std::function<double(double)>;

    virtual ~ColorTransferFunction() = default;

    virtual Channel getChannel(int channel) const = 0;
    virtual std::pair<double, double> getInputRange() const = 0;
};

/// The colour tables of the system, in the order of the combo box that offers them.
enum class ColorMaps
{
    BlueRed,
    Gray,
    Glow,
    Rainbow,
    RainbowInverted,
    RainbowLight,
    Temperature
};

/// Piecewise linear between the table's colours; input range 0 to 1 until set.
class PredefinedTransferfunctions : public ColorTransferFunction
{
public:
    explicit PredefinedTransferfunctions(ColorMaps map);

    /// Throws Assertion unless low is below high.
    void setInputRange(double low, double high);

    Channel getChannel(int channel) const override;
    std::pair<double, double> getInputRange() const override;

    /// "Blue-Red", "Gray", "Glow", "Rainbow", "Rainbow Inverted", "Rainbow Light", "Temperature".
    static QStringList getNames();

private:
    ColorMaps m_map;
    double m_low = 0.0;
    double m_high = 1.0;
};

} // namespace kelp
