#include "portable/host/channels.h"

#include "common/instrument/handlerscpi.h"
#include "portable/host/panelhost.h"
#include "portable/host/screentexts.h"

#include <QStringList>
#include <algorithm>

namespace Kavor::HandheldGui {

Channels radiatingChannels(EventHandler& handler) {
    Channels radiating;
    const std::vector<ChannelRecord> records = handler.publishedRecords();
    for (unsigned channel = 0; channel < records.size(); ++channel) {
        if (records[channel].rfOutput == 1)
            radiating.push_back(channel);
    }
    return radiating;
}

/// A channel that does not answer keeps none of the others radiating.
Channels switchOff(PanelHost& host, const Channels& channels) {
    EventHandler& handler = host.handler();
    const unsigned former = handler.currentChannel();
    Channels failed;
    for (const unsigned channel : channels) {
        if (channel != handler.currentChannel() && handler.chooseChannel(channel) != 0) {
            failed.push_back(channel);
            continue;
        }
        const bool off = handler.set_rf_onoff(OnOff::off) == 0;
        host.switchModulationsOff();
        if (!off)
            failed.push_back(channel);
    }
    if (handler.currentChannel() != former && handler.chooseChannel(former) != 0)
        showCommandFailure(host);
    host.refreshFromModule();
    host.UpdateStatusBar();
    for (const unsigned channel : radiatingChannels(handler)) {
        const bool asked = std::find(channels.begin(), channels.end(), channel) != channels.end();
        if (asked && std::find(failed.begin(), failed.end(), channel) == failed.end())
            failed.push_back(channel);
    }
    std::sort(failed.begin(), failed.end());
    return failed;
}

QString channelNumbers(const Channels& channels) {
    QStringList numbers;
    for (const unsigned channel : channels)
        numbers << QString::number(channel + 1);
    return numbers.join(QStringLiteral(", "));
}

} // namespace Kavor::HandheldGui
