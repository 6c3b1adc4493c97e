#pragma once

#include <QHostAddress>
#include <QMetaType>
#include <QVector>

/// How one board stands in an update, for whoever watches it.
struct FpgaBoardState {
    enum Phase {
        Waiting,      ///< its answer is awaited
        Acknowledged, ///< has answered what was sent last
        Programming,
        Done ///< has burnt and verified the image
    };

    QHostAddress address;
    Phase phase = Waiting;
    int percent = 0;       ///< of the phase: of what was sent to it, or of what it has burnt and verified
    int quietMs = 0;       ///< since it was last heard, or since its answer was first awaited; 0 when done
    bool isSilent = false; ///< for so long that it is to be named, whatever goes on with the others
};

using FpgaBoardStates = QVector<FpgaBoardState>;

Q_DECLARE_METATYPE(FpgaBoardStates)
