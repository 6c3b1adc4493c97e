#pragma once

#include "common/wire/channel_record.h"

#include <QHostAddress>
#include <string>

/// Where the module's local service is found and how long the panel waits for it. The defaults are the instrument's;
/// tests, demonstrations and development give their own.
struct InstrumentSettings {
    std::string regionName = RegionName;
    QHostAddress address{QHostAddress::LocalHost};
    int commandTimeoutMs = 2000; ///< from the writing of a command to its answer
    int connectWaitMs = 1000;    ///< longest wait for the connection at start
    int connectSettleMs = 50;    ///< pause after that wait
    int waitMarginMs = 250;      ///< what a caller waits longer than the time-outs it depends on
    int retryFirstMs = 250;      ///< pause after a first failed connection attempt
    int retryMs = 1000;          ///< pause after each further one
    int linkWatchMs = 1000;      ///< period of looking for a replaced region or a changed port

    /// The defaults, with the region name taken from VELDA_REGION when that is set.
    static InstrumentSettings fromEnvironment();
};
