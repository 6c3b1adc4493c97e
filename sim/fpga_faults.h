#pragma once

#include <QHostAddress>
#include <limits>

namespace Sim {

/// What a simulated FPGA board does wrong. Everything off: a board that answers at once and burns to the end.
struct FpgaFaults {
    static constexpr int Always = std::numeric_limits<int>::max();

    int silentFrom = -1;  ///< answers no datagram of this block or a later one; 0: none at all; negative: off
    int ignoredInits = 0; ///< this many INIT datagrams get no answer
    int ignoredData = 0;  ///< the same for data blocks
    int ignoredEofs = 0;
    int lossPercent = 0;            ///< of the datagrams of each direction, 0 to 100
    quint32 seed = 1;               ///< of the loss
    bool lossSparesMarkers = false; ///< INIT, EOF and their acknowledgements get through
    bool doubledAcks = false;
    bool staleAcks = false;      ///< each acknowledgement is followed by the one before it, out of order
    int lateAckMs = 0;           ///< acknowledgements come this much later
    int ackAhead = 0;            ///< acknowledges a block with a number this much higher
    bool shortDatagrams = false; ///< a datagram cut to 21 bytes instead of each acknowledgement and status
    bool wrongMagic = false;     ///< each acknowledgement and status starts with another magic
    QHostAddress strayAddress;   ///< when set, each acknowledgement is sent from there too, before the board's own
    bool silentBurn = false;     ///< no status at all
    bool neverEnds = false;      ///< statuses up to the image's size, but no end mark
    bool burnsBackwards = false; ///< the progress of a burn falls from the image's size to zero
    bool burnsPastSize = false;  ///< the progress claims the largest number there is
    bool endMarkInState = false; ///< the end mark stands at offset 14 and not at 6
};

} // namespace Sim
