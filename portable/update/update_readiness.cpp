#include "portable/update/update_readiness.h"

#include "common/instrument/handlerscpi.h"
#include "common/update/update_texts.h"
#include "portable/host/channels.h"
#include "portable/host/panelhost.h"
#include "portable/host/screentexts.h"
#include "portable/widgets/actiongate.h"
#include "portable/widgets/boxes.h"

#include <QStringList>
#include <vector>

namespace Kavor::HandheldGui {

namespace {

constexpr int LowestCharge = 10; ///< percent; at it or below, an update may not live to its end

QString whichRadiate(const Channels& channels, unsigned of) {
    if (of == 1)
        return QStringLiteral("RF output is on");
    return QStringLiteral("RF output is on: channel %1").arg(channelNumbers(channels));
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
    const bool off = switchOff(host, radiating).empty();
    if (!off)
        showCommandFailure(host);
    return off;
}

} // namespace Kavor::HandheldGui
