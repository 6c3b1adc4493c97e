#pragma once

#include <QByteArray>
#include <cstdint>
#include <vector>

/// Makes inputs from seeds, the same for the same seed and index: whole ones, flipped bits, cut and doubled parts,
/// words that mean something to the format, parts of other seeds.
class Mutator {
public:
    /// words: what the format is made of; may be empty.
    Mutator(std::vector<QByteArray> seeds, std::vector<QByteArray> words, std::uint64_t seed)
        : m_seeds(std::move(seeds)), m_words(std::move(words)), m_seed(seed) {}

    QByteArray input(std::uint64_t index);

    /// The next number below a limit; 0 for a limit of 0.
    int below(int limit);

private:
    void mutate(QByteArray& bytes);

    std::vector<QByteArray> m_seeds;
    std::vector<QByteArray> m_words;
    std::uint64_t m_seed;
    std::uint64_t m_state = 1;
};
