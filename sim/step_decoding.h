#pragma once

#include <QByteArray>
#include <QByteArrayList>

namespace Sim {

// What an upload says, a line a step, as the module understands it: "3: 433920000.000 Hz, -3.50 dBm, 250 us, Wait,
// last" and "2: on 800 ns, off 1000 ns, 5 times". Pure functions, any thread; bytes behind the last whole record are
// left out.

/// Steps of the records of a binary upload.
QByteArrayList decodedList(const QByteArray& records);
QByteArrayList decodedPattern(const QByteArray& records);

/// Steps that were defined one by one: the arguments of the commands, a line each.
QByteArrayList decodedListDefinitions(const QByteArray& arguments);
QByteArrayList decodedPatternDefinitions(const QByteArray& arguments);

} // namespace Sim
