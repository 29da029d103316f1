#pragma once

#include <algorithm>
#include <cstdint>
#include <utility>
#include <vector>

namespace kelp::compare {

/// Values with how often each occurs. Positions in whole rows have few different differences, so
/// that those of many scans take hardly more room than those of one.
template <typename Value>
class Tally
{
public:
    struct Entry
    {
        Value value;
        std::int64_t count = 0;
    };

    Tally() = default;
    explicit Tally(const std::vector<Value>& values) { add(values); }

    void add(const std::vector<Value>& values)
    {
        std::vector<Entry> entries;
        entries.reserve(values.size());
        for (const Value& value : values) {
            entries.push_back({value, 1});
        }
        add(std::move(entries));
    }

    /// In any order.
    void add(std::vector<Entry> entries)
    {
        entries.insert(entries.end(), m_entries.begin(), m_entries.end());
        std::sort(entries.begin(), entries.end(),
                  [](const Entry& a, const Entry& b) { return a.value < b.value; });
        m_entries.clear();
        for (const Entry& entry : entries) {
            if (!m_entries.empty() && m_entries.back().value == entry.value) {
                m_entries.back().count += entry.count;
            } else {
                m_entries.push_back(entry);
            }
        }
    }

    /// Each value once, the lowest first.
    const std::vector<Entry>& entries() const { return m_entries; }
    bool isEmpty() const { return m_entries.empty(); }

    /// Of all values, however often they occur.
    std::int64_t total() const
    {
        std::int64_t sum = 0;
        for (const Entry& entry : m_entries) {
            sum += entry.count;
        }
        return sum;
    }

    /// What the measure makes of the values.
    template <typename Measure>
    Tally<double> measured(const Measure& measure) const
    {
        std::vector<Tally<double>::Entry> entries;
        entries.reserve(m_entries.size());
        for (const Entry& entry : m_entries) {
            entries.push_back({measure(entry.value), entry.count});
        }
        Tally<double> tally;
        tally.add(std::move(entries));
        return tally;
    }

private:
    std::vector<Entry> m_entries;
};

} // namespace kelp::compare
