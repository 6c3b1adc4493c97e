#include "common/wire/step_encoding.h"

#include "common/wire/scpi_words.h"

#include <QtEndian>
#include <algorithm>
#include <array>
#include <charconv>
#include <cmath>
#include <cstring>
#include <limits>
#include <locale>
#include <sstream>

namespace {

// A text of at most three bytes as one number; longer ones differ in the length. No branch depends on the text.
constexpr std::size_t LongestUnit = 3;
constexpr quint64 unitKey(const char* text, std::size_t size) {
    const auto byte = [text](std::size_t i) {
        return quint64{static_cast<unsigned char>(text[i])};
    };
    return quint64{size} << 24 | byte(size - (size != 0 ? 1 : 0)) << 16 | byte(size / 2) << 8 | byte(0);
}

struct UnitFactor {
    const char* unit = nullptr;
    double factor = 0;
};

// Finds the factor of a unit without a branch that depends on which unit it is: the low three bits of the first
// character tell the units of one quantity apart.
class FactorTable {
public:
    constexpr FactorTable(std::initializer_list<UnitFactor> rows, double otherwise) : m_otherwise(otherwise) {
        for (Slot& slot : m_slots)
            slot.factor = otherwise; // an empty unit finds an unused slot
        for (const UnitFactor& row : rows) {
            std::size_t size = 0;
            while (row.unit[size] != '\0')
                ++size;
            Slot& slot = m_slots[index(row.unit[0])];
            m_isExact = m_isExact && slot.key == 0 && size <= LongestUnit;
            slot = {unitKey(row.unit, size), row.factor};
        }
    }

    double of(const std::string& unit) const {
        const Slot& slot = m_slots[index(unit.c_str()[0])];
        return slot.key == unitKey(unit.c_str(), unit.size()) ? slot.factor : m_otherwise;
    }

    constexpr bool isExact() const { return m_isExact; }

private:
    struct Slot {
        quint64 key = 0;
        double factor = 0;
    };

    static constexpr std::size_t index(char first) { return static_cast<unsigned char>(first) & 7U; }

    std::array<Slot, 8> m_slots{};
    double m_otherwise;
    bool m_isExact = true;
};

constexpr FactorTable Millihertz({{"GHz", 1e12}, {"MHz", 1e9}, {"KHz", 1e6}, {"Hz", 1e3}}, 1e3);
constexpr FactorTable Microseconds({{"ns", 0.001}, {"\u00B5s", 1}, {"ms", 1e3}, {"s", 1e6}}, 0.001);
constexpr FactorTable Nanoseconds({{"ns", 1}, {"\u00B5s", 1e3}, {"ms", 1e6}, {"s", 1e9}}, 1);
constexpr FactorTable TextHertz({{"GHz", 1e9}, {"MHz", 1e6}, {"Kz", 1e3}}, 1);
constexpr FactorTable TextSeconds({{"ns", 1e-9}, {"\u00B5s", 1e-6}, {"ms", 1e-3}, {"s", 1}}, 1e-9);
static_assert(Millihertz.isExact() && Microseconds.isExact() && Nanoseconds.isExact() && TextHertz.isExact() &&
              TextSeconds.isExact());

constexpr double Hundredths = 100;

// From here on a double no longer tells every decimal number of so many digits from its neighbours.
constexpr double ManyDigits = 1e15;

// The same by the digits of the shortest decimal number that reads as the value; not negative, below 2^64.
quint64 digitsOfProduct(double value, double factor) {
    std::array<char, 32> text{};
    const auto end = std::to_chars(text.data(), text.data() + text.size(), value, std::chars_format::scientific).ptr;
    const QByteArray number(text.data(), static_cast<int>(end - text.data()));
    const int exponentAt = number.indexOf('e');
    const int whole = 1 + number.mid(exponentAt + 1).toInt() + static_cast<int>(std::lround(std::log10(factor)));
    const QByteArray digits = number.left(exponentAt).replace('.', "").leftJustified(whole, '0', true);
    bool fits = false;
    const quint64 result = digits.toULongLong(&fits);
    return fits ? result : std::numeric_limits<quint64>::max();
}

// The product of a decimal number, as a user or a file gives it, with a power of ten, truncated toward zero: 4.35 times
// 100 is 435, whatever the nearest binary fraction makes of it. Of the integers around the product the nearest one
// counts in full when its quotient reads as the value or as less. A file can hold any number: what the integer cannot
// hold becomes its nearest bound, as the board's processor converts it.
template <typename Integer>
quint64 truncated(double value, double factor) {
    using Limits = std::numeric_limits<Integer>;
    constexpr double Bound = Limits::is_signed ? 0x1p63 : 0x1p64;
    constexpr double NoFraction = 0x1p52; // added and taken away again, it rounds
    const double size = std::abs(value);
    const double product = size * factor;
    if (product < ManyDigits) {
        const double nearest = product + NoFraction - NoFraction;
        const qint64 whole = static_cast<qint64>(nearest) - static_cast<qint64>(size < nearest / factor);
        const qint64 below = -static_cast<qint64>(value < 0); // all ones for a minus: no branch depends on the numbers
        return static_cast<quint64>(Limits::is_signed ? (whole ^ below) - below : whole & ~below);
    }
    if (std::isnan(value) || (value < 0 && !Limits::is_signed))
        return 0;
    if (product >= Bound)
        return static_cast<quint64>(value > 0 ? Limits::max() : Limits::min());
    const quint64 whole = std::min(digitsOfProduct(size, factor), static_cast<quint64>(Limits::max()));
    return value > 0 ? whole : -whole;
}

inline void put(char* record, StepWire::Field field, quint64 value) {
    value = qToLittleEndian(value);
    std::memcpy(record + field.offset, &value, static_cast<std::size_t>(field.size));
}

inline void encode(const list_point& step, bool last, bool notRun, char* record) {
    using namespace StepWire;
    put(record, ListNumber, step.stepNumber);
    put(record, ListFrequency, truncated<quint64>(step.frequency, Millihertz.of(step.frequencyUnit)));
    put(record, ListPower, truncated<qint64>(step.power, Hundredths));
    put(record, ListFlags, (last ? LastStepFlag : 0U) | (notRun ? WaitFlag : 0U));
    put(record, ListDwell, truncated<quint64>(step.dwell, Microseconds.of(step.dwellUnit)));
}

inline void encode(const pattern_point& step, char* record) {
    using namespace StepWire;
    put(record, PatternNumber, step.stepNumber);
    put(record, PatternLoops, step.loops);
    put(record, PatternOffTime, truncated<qint64>(step.offTime, Nanoseconds.of(step.offTimeUnit)));
    put(record, PatternOnTime, truncated<qint64>(step.onTime, Nanoseconds.of(step.onTimeUnit)));
}

inline bool waits(const list_point& step) {
    constexpr quint64 Run = unitKey(StepWire::RunAdvance, sizeof StepWire::RunAdvance - 1);
    return unitKey(step.advance.c_str(), step.advance.size()) != Run;
}

// IEEE 488.2 definite-length block. encodeStep(index, record) writes one record.
template <typename EncodeStep>
QByteArray blockMessage(const char* header, std::size_t steps, int stepSize, EncodeStep encodeStep) {
    const int blockSize = static_cast<int>(steps) * stepSize;
    QByteArray message =
        QByteArray(header) + " #" + QByteArray::number(countDigit(blockSize)) + QByteArray::number(blockSize);
    const int start = message.size();
    message.resize(start + blockSize);
    char* record = message.data() + start;
    for (std::size_t i = 0; i < steps; ++i, record += stepSize)
        encodeStep(i, record);
    return message.append(Scpi::LineEnd);
}

std::ostringstream plainStream() {
    std::ostringstream stream;
    stream.imbue(std::locale::classic());
    return stream;
}

} // namespace

QByteArray StepWire::listMessage(const std::vector<list_point*>& steps) {
    return blockMessage(ListData, steps.size(), ListStepSize, [&](std::size_t i, char* record) {
        encode(*steps[i], i + 1 == steps.size(), waits(*steps[i]), record);
    });
}

QByteArray StepWire::patternMessage(const std::vector<pattern_point*>& steps) {
    return blockMessage(PatternData, steps.size(), PatternStepSize,
                        [&](std::size_t i, char* record) { encode(*steps[i], record); });
}

std::string StepWire::listCommand(const list_point& step) {
    std::ostringstream text = plainStream();
    text << ListDefine << step.stepNumber << ',' << step.frequency * TextHertz.of(step.frequencyUnit) << ','
         << step.power << ',' << (step.last ? 1 : 0) << ',' << (waits(step) ? 1 : 0) << ','
         << step.dwell * TextSeconds.of(step.dwellUnit);
    return text.str();
}

std::string StepWire::patternCommand(const pattern_point& step) {
    std::ostringstream text = plainStream();
    text << PatternDefine << step.stepNumber << ',' << step.onTime * TextSeconds.of(step.onTimeUnit) << ','
         << step.offTime * TextSeconds.of(step.offTimeUnit) << ',' << step.loops << ',' << (step.last ? 1 : 0);
    return text.str();
}

QByteArray SetListData(list_point* step, int last, int notRun) {
    QByteArray record(StepWire::ListStepSize, Qt::Uninitialized);
    encode(*step, last != 0, notRun != 0, record.data());
    return record;
}

QByteArray SetPattData(pattern_point* step) {
    QByteArray record(StepWire::PatternStepSize, Qt::Uninitialized);
    encode(*step, record.data());
    return record;
}

long long countDigit(long long n) {
    long long digits = 1;
    while (n /= 10)
        ++digits;
    return digits;
}

void setBit(long value, QBitArray& bits, long& position, int width) {
    const auto word = static_cast<quint64>(qint64{value});
    if (bits.size() < position + width)
        bits.resize(static_cast<int>(position) + width);
    for (int i = 0; i < width; ++i)
        bits.setBit(static_cast<int>(position++), (word >> std::min(i, 63) & 1U) != 0);
}

QByteArray convertBitArrayToByteArray(const QBitArray& bits) {
    QByteArray bytes((bits.size() + 7) / 8, '\0');
    for (int i = 0; i < bits.size(); ++i) {
        if (bits.testBit(i))
            bytes[i / 8] = static_cast<char>(bytes[i / 8] | (1 << (i % 8)));
    }
    return bytes;
}
