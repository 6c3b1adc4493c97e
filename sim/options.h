#pragma once

#include "common/wire/channel_record.h"
#include "sim/battery_curve.h"

#include <QByteArrayList>
#include <QString>
#include <functional>
#include <string>

namespace Sim {

/// What a simulated module is when it starts.
struct Options {
    unsigned channels = 1;                                 ///< 1 to 4
    quint16 port = 0;                                      ///< of the SCPI service on 127.0.0.1; 0: any free one
    std::string regionName = RegionName;                   ///< of the shared memory, with its leading slash
    unsigned disconnectedChannels = 0;                     ///< bit n: the module of channel n does not answer
    BatteryCurve battery = BatteryCurve::steady(80, -420); ///< runs from the moment of start
    QString configurationFolder;  ///< of the stored configurations; empty: they are kept in memory
    QByteArrayList startCommands; ///< carried out before anybody can see the module; not counted

    /// Called on the service's thread with the header (no colon before it) and the decoded steps of each list or
    /// pattern that came.
    std::function<void(const QByteArray& header, const QByteArrayList& steps)> onUpload;
};

} // namespace Sim
