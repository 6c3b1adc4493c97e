#include "fuzz/mutator.h"

#include <algorithm>

namespace {
constexpr int LongestInput = 1 << 16;
constexpr int MostChanges = 6;
} // namespace

// Steele, Lea, Flood: "Fast Splittable Pseudorandom Number Generators", 2014 (splitmix64).
int Mutator::below(int limit) {
    m_state += 0x9E3779B97F4A7C15;
    std::uint64_t z = m_state;
    z = (z ^ (z >> 30)) * 0xBF58476D1CE4E5B9;
    z = (z ^ (z >> 27)) * 0x94D049BB133111EB;
    z ^= z >> 31;
    return limit > 0 ? static_cast<int>(z % static_cast<std::uint64_t>(limit)) : 0;
}

QByteArray Mutator::input(std::uint64_t index) {
    m_state = m_seed * 0xD1B54A32D192ED03 + index * 0x9E3779B97F4A7C15;
    QByteArray bytes = m_seeds[static_cast<std::size_t>(below(static_cast<int>(m_seeds.size())))];
    if (index < m_seeds.size())
        return m_seeds[index];
    for (int i = 1 + below(1 + below(MostChanges)); i > 0; --i) // mostly few: what is all wrong is refused at once
        mutate(bytes);
    return bytes.left(LongestInput);
}

void Mutator::mutate(QByteArray& bytes) {
    static constexpr unsigned char Edges[] = {0x00, 0x01, 0x7F, 0x80, 0xFF, '0', '9', '-', '"', '\n'};
    const int at = below(bytes.size() + 1);
    const int length = below(std::min(64, bytes.size() - at + 1));
    switch (below(9)) {
    case 0:
        if (at < bytes.size())
            bytes[at] = static_cast<char>(bytes.at(at) ^ (1 << below(8)));
        break;
    case 1:
        if (at < bytes.size())
            bytes[at] = static_cast<char>(Edges[below(static_cast<int>(sizeof Edges))]);
        break;
    case 2:
        bytes.insert(at, static_cast<char>(below(256)));
        break;
    case 3:
        bytes.remove(at, length);
        break;
    case 4:
        bytes.insert(at, bytes.mid(at, length));
        break;
    case 5:
        bytes.truncate(below(3) == 0 ? at : std::max(0, bytes.size() - 1));
        break;
    case 6:
        if (!m_words.empty())
            bytes.insert(at, m_words[static_cast<std::size_t>(below(static_cast<int>(m_words.size())))]);
        break;
    case 7: {
        const QByteArray& other = m_seeds[static_cast<std::size_t>(below(static_cast<int>(m_seeds.size())))];
        bytes = bytes.left(at) + other.mid(below(other.size() + 1));
        break;
    }
    default:
        std::reverse(bytes.begin() + at, bytes.begin() + at + length);
    }
}
