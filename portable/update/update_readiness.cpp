#include "portable/update/update_readiness.h"

#include "common/instrument/handlerscpi.h"
#include "common/update/update_texts.h"
#include "portable/host/panelhost.h"
#include "portable/host/screentexts.h"
#include "portable/widgets/actiongate.h"
#include "portable/widgets/boxes.h"

#include <QStringList>
#include <vector>

namespace Kavor::HandheldGui {

namespace {

constexpr int LowestCharge = 10; ///< percent; at it or below, an update may not live to its end

using Channels = std::vector<unsigned>;

Channels radiatingChannels(EventHandler& handler) {
    Channels radiating;
    const unsigned channels = handler.publishedChannels();
    for (unsigned channel = 0; channel < channels; ++channel) {
        handler.revert_preset(static_cast<int>(channel));
        if (handler.snapshotOf(channel).rfOutput == 1)
            radiating.push_back(channel);
    }
    return radiating;
}

/// Whether none radiates any more. Each is made the current one for its Off, then the former one again.
bool switchOff(PanelHost& host, const Channels& channels) {
    EventHandler& handler = host.handler();
    const unsigned former = handler.currentChannel();
    bool off = true;
    for (const unsigned channel : channels) {
        if (channel != handler.currentChannel() && handler.set_channel(channel) != 0)
            off = false;
        else {
            off = handler.set_rf_onoff(OnOff::off) == 0 && off;
            host.switchModulationsOff();
        }
        if (!ActionGate::panel().mayGoOn())
            break;
    }
    if (handler.currentChannel() != former && handler.set_channel(former) != 0)
        off = false;
    host.refreshFromModule();
    host.UpdateStatusBar();
    return off && radiatingChannels(handler).empty();
}

QString whichRadiate(const Channels& channels, unsigned of) {
    if (of == 1)
        return QStringLiteral("RF output is on");
    QStringList numbers;
    for (const unsigned channel : channels)
        numbers << QString::number(channel + 1);
    return QStringLiteral("RF output is on: channel %1").arg(numbers.join(QStringLiteral(", ")));
}

} // namespace

bool isReadyForUpdate(PanelHost& host, PackageType kind) {
    EventHandler& handler = host.handler();
    const unsigned channels = handler.publishedChannels();
    if (channels == 0 && kind == PackageType::Fpga) {
        host.reportError(UpdateTexts::boardsNotKnown());
        return false;
    }
    const Channels radiating = radiatingChannels(handler);
    const ChannelRecord& record = handler.snapshot();
    if (record.batteryCurrent < 0 && record.batteryCharge >= 0 && record.batteryCharge <= LowestCharge) {
        host.reportError(
            QStringLiteral("The battery is at %1 %: connect the charger before an update.").arg(record.batteryCharge));
        return false;
    }
    if (radiating.empty())
        return true;
    if (!confirmAction(&host, whichRadiate(radiating, channels), QStringLiteral("Switch RF off and go on?")))
        return false;
    const bool off = switchOff(host, radiating);
    if (!off)
        showCommandFailure(host);
    return off;
}

} // namespace Kavor::HandheldGui
