#ifndef RANDOM_SOURCE_H
#define RANDOM_SOURCE_H

#include <cstddef>
#include <cstdint>
#include <vector>

/// SplitMix64: the same numbers for a seed with every compiler and library.
class RandomSource
{
public:
    explicit RandomSource(std::uint64_t seed) : m_state(seed) {}

    std::uint64_t next()
    {
        m_state += 0x9E3779B97F4A7C15u;
        std::uint64_t mixed = m_state;
        mixed = (mixed ^ (mixed >> 30)) * 0xBF58476D1CE4E5B9u;
        mixed = (mixed ^ (mixed >> 27)) * 0x94D049BB133111EBu;
        return mixed ^ (mixed >> 31);
    }

    /// 0 to n - 1
    int below(int n)
    {
        return static_cast<int>(next() % static_cast<std::uint64_t>(n));
    }

    int between(int lowest, int highest)
    {
        return lowest + below(highest - lowest + 1);
    }

    bool oneIn(int n)
    {
        return below(n) == 0;
    }

    template <typename Value> const Value& pick(const std::vector<Value>& values)
    {
        return values[static_cast<std::size_t>(below(static_cast<int>(values.size())))];
    }

    /// Position in `weights`, as often as its weight says.
    std::size_t weighted(const std::vector<int>& weights)
    {
        int total = 0;
        for (int weight : weights)
            total += weight;
        int left = below(total);
        std::size_t position = 0;
        while (left >= weights[position])
            left -= weights[position++];
        return position;
    }

private:
    std::uint64_t m_state;
};

#endif
