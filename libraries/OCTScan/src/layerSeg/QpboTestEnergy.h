#pragma once

#include "QpboGraph.h"

#include <algorithm>
#include <cstdint>
#include <random>
#include <vector>

namespace kelp::oct::test {

/// A small energy with integer terms, whose minima are found by trying all labellings.
class RandomEnergy
{
public:
    static RandomEnergy submodular(std::mt19937& random) { return make(random, true); }
    static RandomEnergy any(std::mt19937& random) { return make(random, false); }

    /// Adds nodes up to the energy's number and then all terms.
    void addTo(QpboGraph<int>& graph) const
    {
        while (graph.GetNodeNum() < m_nodes) {
            graph.AddNode();
        }
        for (const Unary& term : m_unary) {
            graph.AddUnaryTerm(term.i, term.E0, term.E1);
        }
        for (const Pairwise& term : m_pairwise) {
            graph.AddPairwiseTerm(term.i, term.j, term.E[0], term.E[1], term.E[2], term.E[3]);
        }
    }

    std::int64_t minimum() const
    {
        std::int64_t best = energyOf(0);
        for (unsigned labels = 1; labels < 1U << m_nodes; ++labels) {
            best = std::min(best, energyOf(labels));
        }
        return best;
    }

    std::vector<std::vector<int>> minima() const
    {
        const std::int64_t best = minimum();
        std::vector<std::vector<int>> result;
        for (unsigned labels = 0; labels < 1U << m_nodes; ++labels) {
            if (energyOf(labels) == best) {
                result.push_back(expand(labels));
            }
        }
        return result;
    }

    /// The minima of a submodular energy are closed under intersection, so there is one.
    std::vector<int> minimumWithFewestOnes() const
    {
        std::vector<std::vector<int>> all = minima();
        return *std::min_element(all.begin(), all.end(), [](const auto& a, const auto& b) {
            return std::count(a.begin(), a.end(), 1) < std::count(b.begin(), b.end(), 1);
        });
    }

    /// Whether one minimum has all labels of this partial labelling (-1 = open).
    bool hasMinimumLike(const std::vector<int>& partial) const
    {
        const std::vector<std::vector<int>> all = minima();
        return std::any_of(all.begin(), all.end(), [&](const std::vector<int>& minimum) {
            return std::equal(partial.begin(), partial.end(), minimum.begin(),
                              [](int wanted, int label) { return wanted < 0 || wanted == label; });
        });
    }

    RandomEnergy operator+(const RandomEnergy& other) const
    {
        RandomEnergy sum = *this;
        sum.m_nodes = std::max(m_nodes, other.m_nodes);
        sum.m_unary.insert(sum.m_unary.end(), other.m_unary.begin(), other.m_unary.end());
        sum.m_pairwise.insert(sum.m_pairwise.end(), other.m_pairwise.begin(),
                              other.m_pairwise.end());
        return sum;
    }

private:
    struct Unary
    {
        int i;
        int E0;
        int E1;
    };
    struct Pairwise
    {
        int i;
        int j;
        int E[4];
    };

    static RandomEnergy make(std::mt19937& random, bool submodular)
    {
        const auto draw = [&](int low, int high) {
            return std::uniform_int_distribution<int>(low, high)(random);
        };
        RandomEnergy energy;
        energy.m_nodes = draw(1, 10);
        // Small numbers make ties, which are what tells a right cut from a wrong one.
        const int range = draw(1, 4);
        for (int k = draw(0, energy.m_nodes); k > 0; --k) {
            energy.m_unary.push_back(
                {draw(0, energy.m_nodes - 1), draw(-range, range), draw(-range, range)});
        }
        for (int k = energy.m_nodes > 1 ? draw(0, 2 * energy.m_nodes) : 0; k > 0; --k) {
            const int i = draw(0, energy.m_nodes - 1);
            const int j = (i + draw(1, energy.m_nodes - 1)) % energy.m_nodes;
            Pairwise term{i, j, {}};
            for (int& value : term.E) {
                value = draw(-range, range);
            }
            if (submodular && term.E[0] + term.E[3] > term.E[1] + term.E[2]) {
                std::swap(term.E[0], term.E[1]);
                std::swap(term.E[2], term.E[3]);
            }
            energy.m_pairwise.push_back(term);
        }
        return energy;
    }

    std::int64_t energyOf(unsigned labels) const
    {
        const auto label = [labels](int i) { return labels >> i & 1U; };
        std::int64_t energy = 0;
        for (const Unary& term : m_unary) {
            energy += label(term.i) ? term.E1 : term.E0;
        }
        for (const Pairwise& term : m_pairwise) {
            energy += term.E[2 * label(term.i) + label(term.j)];
        }
        return energy;
    }

    std::vector<int> expand(unsigned labels) const
    {
        std::vector<int> result;
        result.reserve(static_cast<std::size_t>(m_nodes));
        for (int i = 0; i < m_nodes; ++i) {
            result.push_back(static_cast<int>(labels >> i & 1U));
        }
        return result;
    }

    int m_nodes = 1;
    std::vector<Unary> m_unary;
    std::vector<Pairwise> m_pairwise;
};

} // namespace kelp::oct::test
