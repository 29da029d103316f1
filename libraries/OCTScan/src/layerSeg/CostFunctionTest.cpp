#include "CostFunctionBM.h"
#include "CostFunctionILM.h"
#include "CostFunctionISe.h"
#include "CostFunctionInner.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <cmath>
#include <functional>
#include <memory>
#include <random>
#include <thread>
#include <vector>

namespace {

using namespace kelp::oct;
using Column = kelp::DynamicVector<unsigned short>;
using Costs = std::vector<float>;

/// The formulas once more, one row and one tap at a time.
namespace literal {

Costs kernel(int taps, bool second)
{
    Costs result;
    for (int i = 0; i < taps; ++i) {
        const int offset = i - taps / 2;
        const float x = static_cast<float>(offset);
        const float xx = x * x;
        const double e = std::exp(-0.5 * static_cast<double>(xx));
        const double root = std::sqrt(2.0 * M_PI);
        result.push_back(
            static_cast<float>(second ? (x - 1.0) * (x + 1.0) * e / root : -(x * e) / root));
    }
    float largest = 0.0F;
    for (const float tap : result) {
        largest = std::max(largest, std::abs(tap));
    }
    for (float& tap : result) {
        tap = tap / largest;
    }
    return result;
}

Costs convolve(const Costs& in, const Costs& taps)
{
    const int n = static_cast<int>(in.size());
    const int k = static_cast<int>(taps.size());
    Costs out(in.size(), 0.0F);
    for (int i = k / 2; i <= n - k / 2 - 1; ++i) {
        float sum = 0.0F;
        for (int j = 0; j < k; ++j) {
            const int place = i - k / 2 + j;
            const float product =
                taps[static_cast<std::size_t>(j)] * in[static_cast<std::size_t>(place)];
            sum = sum + product;
        }
        out[static_cast<std::size_t>(i)] =
            static_cast<float>(static_cast<double>(sum) / (k * -1.0));
    }
    return out;
}

std::vector<double> mixed(const Costs& in, int taps, float balance)
{
    const Costs g1 = convolve(in, kernel(taps, false));
    const Costs g2 = convolve(in, kernel(taps, true));
    std::vector<double> m;
    for (std::size_t i = 0; i < in.size(); ++i) {
        const float second = balance * g2[i];
        m.push_back((1.0 - std::abs(static_cast<double>(balance))) * static_cast<double>(g1[i]) +
                    static_cast<double>(second));
    }
    return m;
}

Costs bruch(const std::vector<double>& m)
{
    const int n = static_cast<int>(m.size());
    const int k = 9;
    std::vector<float> out(m.size(), 0.0F);
    if (n - k - 1 < k + 1) {
        return out;
    }
    const auto at = [&out](int i) -> float& { return out[static_cast<std::size_t>(i)]; };
    for (int i = k; i <= n - k - 1; ++i) {
        at(i) = static_cast<float>(1.0F * m[static_cast<std::size_t>(i)]);
    }
    for (int j = 0; j <= k - 1; ++j) {
        at(j) = at(k + 1);
        at(n - 1 - j) = at(n - k - 1);
    }
    return out;
}

Costs padded(const Column& column, int top, int bottom, int half)
{
    Costs in;
    for (int row = top - half; row <= bottom + half - 1; ++row) {
        const int last = static_cast<int>(column.size()) - 1;
        const int source = row < 0 ? 0 : (row > last ? last : row);
        in.push_back(static_cast<float>(column[static_cast<std::size_t>(source)]));
    }
    return in;
}

} // namespace literal

struct Surface
{
    std::string name;
    std::shared_ptr<CostFunction> function;
    int taps;
    float balance;
    std::function<Costs(const std::vector<double>&)> costs;
};

Costs rowByRow(const std::vector<double>& m, const std::function<double(double)>& cost)
{
    Costs result;
    for (const double value : m) {
        result.push_back(static_cast<float>(cost(value)));
    }
    return result;
}

std::vector<Surface> allSurfaces()
{
    const auto each = [](const std::function<double(double)>& cost) {
        return [cost](const std::vector<double>& m) { return rowByRow(m, cost); };
    };
    return {{"ILM", std::make_shared<CostFunctionILM>(), 7, 0.0F,
             each([](double m) { return 1.0 * (0.0 - 1.0 * m); })},
            {"IRPE", std::make_shared<CostFunctionIRPE>(), 7, 0.0F,
             each([](double m) { return 0.5 * (0.0 - 1.0 * m); })},
            {"ISe", std::make_shared<CostFunctionISe>(), 9, 0.03F,
             each([](double m) { return 0.0 - m; })},
            {"ISePatho", std::make_shared<CostFunctionISePatho>(), 9, 0.03F,
             each([](double m) { return 0.0 - m; })},
            {"BM", std::make_shared<CostFunctionBM>(), 9, 0.03F, literal::bruch},
            {"GCL", std::make_shared<CostFunctionGCL>(), 9, 0.03F,
             each([](double m) { return 1.3 * m; })},
            {"INL", std::make_shared<CostFunctionINL>(), 9, 0.03F,
             each([](double m) { return 2.0 * m - 0.0; })},
            {"ONL", std::make_shared<CostFunctionONL>(), 9, 0.03F,
             each([](double m) { return 1.3 * m - 0.0; })}};
}

Costs literalColumnCost(const Surface& surface, const Column& column, int top, int bottom)
{
    const int half = surface.taps / 2;
    const Costs in = literal::padded(column, top, bottom, half);
    const Costs all = surface.costs(literal::mixed(in, surface.taps, surface.balance));
    return Costs(all.begin() + half, all.begin() + half + (bottom - top));
}

Column randomColumn(std::mt19937& random, std::size_t rows, int largest)
{
    Column column(rows);
    std::uniform_int_distribution<int> grey(0, largest);
    for (std::size_t row = 0; row < rows; ++row) {
        column[row] = static_cast<unsigned short>(grey(random));
    }
    return column;
}

Costs costsOf(const CostFunction& function, const Column& column, int top, int bottom)
{
    CostFunction::Values out;
    function.computeColumnCost(column, top, bottom, out);
    return Costs(out.data(), out.data() + out.size());
}

Column step(std::size_t rows, std::size_t edge)
{
    Column column(rows);
    std::fill(column.data() + edge, column.data() + rows, static_cast<unsigned short>(100));
    return column;
}

TEST(CostFunction, IsTheFormulaBitForBitOnRandomColumns)
{
    std::mt19937 random(7);
    for (const Surface& surface : allSurfaces()) {
        for (int round = 0; round < 300; ++round) {
            const std::size_t rows = 1 + random() % 500;
            const Column column = randomColumn(random, rows, round % 2 ? 255 : 65535);
            const int top = static_cast<int>(random() % (rows + 10)) - 5;
            const int bottom = top + 1 + static_cast<int>(random() % 90);
            ASSERT_EQ(costsOf(*surface.function, column, top, bottom),
                      literalColumnCost(surface, column, top, bottom))
                << surface.name << " rows " << rows << " from " << top << " to " << bottom;
        }
    }
}

TEST(CostFunction, GivesThreadsThatShareItTheSameAsOne)
{
    std::mt19937 random(8);
    const Column column = randomColumn(random, 496, 255);
    for (const Surface& surface : allSurfaces()) {
        const Costs expected = costsOf(*surface.function, column, 100, 190);
        std::array<int, 4> different{};
        std::vector<std::thread> threads;
        threads.reserve(different.size());
        for (int& count : different) {
            threads.emplace_back([&] {
                for (int round = 0; round < 200; ++round) {
                    count += costsOf(*surface.function, column, 100, 190) != expected ? 1 : 0;
                }
            });
        }
        for (std::thread& thread : threads) {
            thread.join();
        }
        EXPECT_EQ(different, (std::array<int, 4>{})) << surface.name;
    }
}

TEST(CostFunction, RepeatsTheEdgePixelsOfARangeThatTouchesTheImage)
{
    std::mt19937 random(9);
    const Column column = randomColumn(random, 60, 255);
    Column framed(80);
    for (std::size_t row = 0; row < 80; ++row) {
        framed[row] = column[std::min<std::size_t>(row < 10 ? 0 : row - 10, 59)];
    }
    for (const Surface& surface : allSurfaces()) {
        EXPECT_EQ(costsOf(*surface.function, column, 0, 60),
                  costsOf(*surface.function, framed, 10, 70))
            << surface.name;
    }
}

TEST(CostFunction, IsExactlyZeroForABlackColumn)
{
    for (const Surface& surface : allSurfaces()) {
        for (const float cost : costsOf(*surface.function, Column(100), 0, 100)) {
            EXPECT_EQ(cost, 0.0F) << surface.name;
        }
    }
}

TEST(CostFunction, IsZeroForAConstantColumnUpToRounding)
{
    Column column(100);
    std::fill_n(column.data(), 100, static_cast<unsigned short>(128));
    // The taps of the first derivative cancel up to the rounding of the sum.
    for (const float cost : costsOf(CostFunctionILM(), column, 0, 100)) {
        EXPECT_NEAR(cost, 0.0F, 1e-5F);
    }
    // The second derivative of a Gaussian, cut at four sigma, leaves 2e-4 of the grey value.
    for (const Surface& surface : allSurfaces()) {
        for (const float cost : costsOf(*surface.function, column, 0, 100)) {
            EXPECT_NEAR(cost, 0.0F, 5e-4F) << surface.name;
        }
    }
}

TEST(CostFunction, FindsARiseWithILMAndAFallWithGCL)
{
    const Column column = step(100, 50);
    const Costs ilm = costsOf(CostFunctionILM(), column, 20, 80);
    const auto least = std::min_element(ilm.begin(), ilm.end()) - ilm.begin() + 20;
    EXPECT_TRUE(least == 49 || least == 50) << least;
    EXPECT_EQ(*std::min_element(ilm.begin(), ilm.end()), ilm[50 - 20]);
    const Costs gcl = costsOf(CostFunctionGCL(), column, 20, 80);
    EXPECT_EQ(std::max_element(gcl.begin(), gcl.end()) - gcl.begin() + 20, 50);
}

TEST(CostFunctionBM, IsFlatInItsFirstAndLastFiveEntries)
{
    std::mt19937 random(10);
    const Column column = randomColumn(random, 200, 255);
    const Costs costs = costsOf(CostFunctionBM(), column, 50, 110);
    for (std::size_t i = 1; i < 5; ++i) {
        EXPECT_EQ(costs[i], costs[0]);
        EXPECT_EQ(costs[costs.size() - 1 - i], costs.back());
    }
    EXPECT_NE(costs[5], costs[0]);
    EXPECT_EQ(costs[6], costs[0]);
    EXPECT_NE(costs[costs.size() - 7], costs.back());
}

TEST(CostFunctionBM, CostsNothingInAColumnTooShortForItsEnds)
{
    std::mt19937 random(11);
    const Column column = randomColumn(random, 200, 255);
    for (int rows = 1; rows <= 11; ++rows) {
        EXPECT_EQ(costsOf(CostFunctionBM(), column, 50, 50 + rows),
                  Costs(static_cast<std::size_t>(rows), 0.0F));
    }
    const Costs longEnough = costsOf(CostFunctionBM(), column, 50, 62);
    EXPECT_NE(longEnough, Costs(12, 0.0F));
}

TEST(CostFunction, GivesNothingForNothing)
{
    const Column column = step(20, 10);
    for (const Surface& surface : allSurfaces()) {
        EXPECT_TRUE(costsOf(*surface.function, column, 5, 5).empty()) << surface.name;
        EXPECT_TRUE(costsOf(*surface.function, column, 5, 4).empty()) << surface.name;
        EXPECT_TRUE(costsOf(*surface.function, Column(), 0, 9).empty()) << surface.name;
        const CostFunction::Values none;
        CostFunction::Values out(3);
        surface.function->computeCost(none, out);
        EXPECT_EQ(out.size(), 0U) << surface.name;
    }
}

/// Opens what steps leave alone.
template <typename Function>
class Opened : public Function
{
public:
    using Function::balance;
    using Function::intensityScale;
    using Function::kernelSize;
    using Function::scale;
};

template <typename Function>
void expectDefaults(int kernelSize, int maxDeltaX, int maxDeltaZ, float scale, float balance)
{
    const Opened<Function> function;
    EXPECT_EQ(function.kernelSize, kernelSize);
    EXPECT_EQ(function.maxDeltaX, maxDeltaX);
    EXPECT_EQ(function.maxDeltaZ, maxDeltaZ);
    EXPECT_EQ(function.scale, scale);
    EXPECT_EQ(function.balance, balance);
    EXPECT_TRUE(function.isValid());
}

TEST(CostFunction, StartsWithTheValuesOfItsSurface)
{
    expectDefaults<CostFunctionILM>(7, 2, 15, 1.0F, 0.0F);
    expectDefaults<CostFunctionIRPE>(7, 3, 15, 0.5F, 0.0F);
    expectDefaults<CostFunctionISe>(9, 1, 2, 1.0F, 0.03F);
    expectDefaults<CostFunctionISePatho>(9, 3, 15, 1.0F, 0.03F);
    expectDefaults<CostFunctionBM>(9, 1, 2, 1.0F, 0.03F);
    expectDefaults<CostFunctionGCL>(9, 1, 10, 1.0F, 0.03F);
    expectDefaults<CostFunctionINL>(9, 1, 10, 1.0F, 0.03F);
    expectDefaults<CostFunctionONL>(9, 1, 10, 1.0F, 0.03F);
    EXPECT_EQ(CostFunctionILM().getIntensityScale(), 1.0F / 255.0F);
    EXPECT_EQ(CostFunctionBM().getIntensityScale(), 0.00392156F);
    EXPECT_LT(CostFunctionBM().getIntensityScale(), 1.0F / 255.0F);
}

template <typename Function>
void expectClamped()
{
    Opened<Function> function;
    function.setBalance(5.0F);
    EXPECT_EQ(function.balance, 1.0F);
    function.setBalance(-5.0F);
    EXPECT_EQ(function.balance, -1.0F);
    function.setBalance(0.25F);
    EXPECT_EQ(function.balance, 0.25F);
}

TEST(CostFunction, ClampsItsBalance)
{
    expectClamped<CostFunctionILM>();
    expectClamped<CostFunctionIRPE>();
    expectClamped<CostFunctionISe>();
    expectClamped<CostFunctionISePatho>();
    expectClamped<CostFunctionBM>();
    expectClamped<CostFunctionGCL>();
    expectClamped<CostFunctionINL>();
    expectClamped<CostFunctionONL>();
}

class AccumulatingILM : public CostFunctionILM
{
public:
    AccumulatingILM() { useAccumulation = true; }
};

TEST(CostFunctionILM, AccumulatesFromTheSumOfTheWholeColumnOn)
{
    CostFunction::Values in(20);
    for (std::size_t i = 0; i < 20; ++i) {
        in[i] = static_cast<float>(i * i % 17);
    }
    CostFunction::Values plain;
    CostFunction::Values accumulated;
    CostFunctionILM().computeCost(in, plain);
    AccumulatingILM().computeCost(in, accumulated);
    float sum = 0.0F;
    for (std::size_t i = 7; i <= 20 - 7 - 1; ++i) {
        sum += in[i];
    }
    for (std::size_t i = 0; i < 20; ++i) {
        sum += in[i];
        EXPECT_NEAR(accumulated[i] - plain[i], sum * 0.002F, 1e-5) << i;
    }
}

template <typename Function>
class WithRowTerm : public Function
{
public:
    WithRowTerm() { this->useRowTerm = true; }
};

template <typename Function>
float rowTermAt(std::size_t row, std::size_t rows)
{
    const CostFunction::Values in(rows);
    CostFunction::Values plain;
    CostFunction::Values out;
    Function().computeCost(in, plain);
    WithRowTerm<Function>().computeCost(in, out);
    return out[row] - plain[row];
}

TEST(CostFunctionInner, FavoursDeepRowsInINLAndONLButNeverInGCL)
{
    EXPECT_EQ(rowTermAt<CostFunctionINL>(3, 30), -33.0F);
    EXPECT_EQ(rowTermAt<CostFunctionONL>(3, 30), -33.0F);
    EXPECT_EQ(rowTermAt<CostFunctionGCL>(3, 30), 0.0F);
}

class PlateauISe : public CostFunctionISe
{
public:
    PlateauISe() { usePlateauTerm = true; }
};

TEST(CostFunctionISe, AsksForTwoHomogeneousBandsOnlyWhereBothFit)
{
    CostFunction::Values in(40);
    std::fill_n(in.data() + 20, 20, 100.0F);
    in[12] = 3.0F;
    CostFunction::Values plain;
    CostFunction::Values out;
    CostFunctionISe().computeCost(in, plain);
    PlateauISe().computeCost(in, out);
    // Row 20: above it 10 to 19 with mean 0.3, below it 21 to 30 with mean 100.
    const float deviations = 9.0F * 0.09F + 2.7F * 2.7F;
    EXPECT_NEAR(out[20] - plain[20], 0.05F * deviations, 1e-4);
    EXPECT_EQ(out[9], plain[9]);
    EXPECT_EQ(out[29], plain[29]);
    EXPECT_NEAR(out[28] - plain[28], 5000.0F, 0.01F) << "the bands differ by no more than 20";
}

} // namespace
