#include "portable/update/update_packages.h"

#include "common/instrument/handlerscpi.h"
#include "portable/host/panelhost.h"
#include "portable/host/screentexts.h"
#include "portable/update/listfirmware.h"
#include "portable/widgets/boxes.h"

#include <array>

namespace Kavor::HandheldGui {

namespace {

struct Flow {
    PackageType type;
    const char* question;
    const char* note;
    QString (*run)(MANIFEST_DATA*, PanelHost&, const UpdateSettings&);
};

const std::array<Flow, 3> Flows{
    {{PackageType::Software, "Continue to update Firmware to version %1?", "The device will reboot when done.",
      [](MANIFEST_DATA* package, PanelHost& host, const UpdateSettings& settings) {
          return doFWUpdate(package, &host, settings);
      }},
     {PackageType::Fpga, "Continue to update FPGA to version %1?", "Device power off/on will be required when done.",
      [](MANIFEST_DATA* package, PanelHost& host, const UpdateSettings& settings) {
          return doFpgaUpdate(package, &host, &host.handler(), settings);
      }},
     {PackageType::Module, "Continue to update NMX module to version %1?", "The device will reboot when done.",
      [](MANIFEST_DATA* package, PanelHost& host, const UpdateSettings& settings) {
          return doNMXUpdate(package, &host, &host.handler(), settings);
      }}}};

constexpr int LowestCharge = 10; ///< percent; at it or below, an update may not live to its end

bool radiates(EventHandler& handler) {
    return handler.publishedChannels() > 0 && handler.snapshot().rfOutput == 1;
}

/// Whether the instrument is in a state to be updated, made so if the user wants that; otherwise the user has been
/// told.
bool isReady(PanelHost& host) {
    EventHandler& handler = host.handler();
    if (handler.publishedChannels() > 0)
        handler.revert_preset(static_cast<int>(handler.currentChannel()));
    const ChannelRecord& record = handler.snapshot();
    if (record.batteryCurrent < 0 && record.batteryCharge >= 0 && record.batteryCharge <= LowestCharge) {
        host.reportError(
            QStringLiteral("The battery is at %1 %: connect the charger before an update.").arg(record.batteryCharge));
        return false;
    }
    if (!radiates(handler))
        return true;
    if (!confirmAction(&host, QStringLiteral("RF output is on"), QStringLiteral("Switch RF off and go on?")))
        return false;
    const bool off = handler.set_rf_onoff(OnOff::off) == 0 && !radiates(handler);
    host.switchModulationsOff();
    host.UpdateStatusBar();
    if (!off)
        showCommandFailure(host);
    return off;
}

} // namespace

UpdatePackages::UpdatePackages(const UpdateSettings& settings) : m_settings(settings) {}

QTableWidget* UpdatePackages::makeList(QWidget* parent, PanelHost& host) {
    m_list = new fwList(parent, m_settings.look);
    connect(m_list, &fwList::loadList, this, &UpdateEntry::chosen);
    connect(m_list, &fwList::noteChanged, this, &UpdateEntry::noteChanged);
    // Whoever has left the page is not told that a look at the media failed.
    connect(m_list, &fwList::failed, &host, [list = m_list, &host](const QString& message) {
        if (list->isVisible())
            host.reportWhenFree(message);
    });
    return m_list;
}

void UpdatePackages::tellUnfinished(PanelHost& host) const {
    const QString what = unfinishedInstallation(m_settings.install);
    if (!what.isEmpty())
        host.reportWhenFree(
            QStringLiteral("The installation of %1 was cut off. Please install it again.").arg(shortened(what)));
}

void UpdatePackages::refresh() {
    m_list->update_view(0, QStringLiteral("load"));
}

void UpdatePackages::install(MANIFEST_DATA& package, PanelHost& host) {
    const PackageType type = packageType(package.name);
    for (const Flow& flow : Flows) {
        if (flow.type != type)
            continue;
        const QString question = QString::fromLatin1(flow.question).arg(shortened(package.version));
        if (!confirmAction(&host, question, QString::fromLatin1(flow.note)) || !isReady(host))
            return;
        const QString outcome = flow.run(&package, host, m_settings);
        emit outcomeChanged(outcome);
        if (!outcome.isEmpty())
            showToast(host, outcome);
        return;
    }
    host.reportError(QStringLiteral("Unknown package type"));
}

} // namespace Kavor::HandheldGui
