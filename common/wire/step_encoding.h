#pragma once

#include "common/wire/step_points.h"

#include <QBitArray>
#include <QByteArray>
#include <string>
#include <vector>

/// The wire forms of lists and patterns, written once for the panel that sends and the simulator that reads. Pure
/// functions, any thread. Steps handed in must not be null.
namespace StepWire {

constexpr char ListData[] = ":LIST:DATA";
constexpr char PatternData[] = ":PATT:DATA";
constexpr char ListDefine[] = ":SOUR:LIST:DEF ";
constexpr char PatternDefine[] = ":PATT:DEF ";
constexpr char RunAdvance[] = "Run"; ///< every other advance waits for a trigger

/// A little-endian field of a binary step record, in bytes.
struct Field {
    int offset;
    int size;
    constexpr int end() const { return offset + size; }
};

/// Record of a list step. Frequency, power and dwell are truncated toward zero to what the field counts, as decimal
/// numbers: 4.35 dBm is 435.
constexpr Field ListNumber{0, 2};    ///< low bits of the step number
constexpr Field ListFrequency{2, 6}; ///< millihertz, unsigned
constexpr Field ListPower{8, 2};     ///< hundredths of a dBm, signed
constexpr Field ListFlags{10, 1};    ///< LastStepFlag, WaitFlag
constexpr Field ListDwell{11, 5};    ///< microseconds, unsigned
constexpr int ListStepSize = 16;

constexpr unsigned LastStepFlag = 1;
constexpr unsigned WaitFlag = 2;

/// Record of a pattern step. The off time comes first here; in the text form the on time does.
constexpr Field PatternNumber{0, 2};
constexpr Field PatternLoops{2, 2};
constexpr Field PatternOffTime{4, 8}; ///< nanoseconds, signed
constexpr Field PatternOnTime{12, 8}; ///< nanoseconds, signed
constexpr int PatternStepSize = 20;

static_assert(ListNumber.end() == ListFrequency.offset && ListFrequency.end() == ListPower.offset &&
              ListPower.end() == ListFlags.offset && ListFlags.end() == ListDwell.offset &&
              ListDwell.end() == ListStepSize);
static_assert(PatternNumber.end() == PatternLoops.offset && PatternLoops.end() == PatternOffTime.offset &&
              PatternOffTime.end() == PatternOnTime.offset && PatternOnTime.end() == PatternStepSize);

/// The whole binary command: header, definite-length block of one record a step, line end. The last record carries
/// LastStepFlag, whatever the steps' own `last` says. Lists of up to 62 million steps, patterns of up to 49 million.
QByteArray listMessage(const std::vector<list_point*>& steps);
QByteArray patternMessage(const std::vector<pattern_point*>& steps);

/// The command that defines one step in text; numbers have at most six significant digits. A frequency in "KHz" goes
/// out with its number as it stands: the module reads it so.
std::string listCommand(const list_point& step);
std::string patternCommand(const pattern_point& step);

} // namespace StepWire

/// The 16-byte record of a list step, its flags from `last` and `notRun` (0 or not).
QByteArray SetListData(list_point* step, int last, int notRun);

/// The 20-byte record of a pattern step.
QByteArray SetPattData(pattern_point* step);

/// Decimal digits of n, the sign not counted; 1 for 0.
long long countDigit(long long n);

/// Puts the low `width` bits of value into bits from `position` on, lowest bit first, and moves position behind them.
/// The array grows where it is too short.
void setBit(long value, QBitArray& bits, long& position, int width);

/// Bit i of the array becomes bit i % 8 of byte i / 8; the last byte is filled up with zeros.
QByteArray convertBitArrayToByteArray(const QBitArray& bits);
