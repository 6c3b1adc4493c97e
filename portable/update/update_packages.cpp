#include "portable/update/update_packages.h"

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
    void (*run)(MANIFEST_DATA*, PanelHost&, const UpdateSettings&);
};

const std::array<Flow, 3> Flows{
    {{PackageType::Software, "Continue to update Firmware to version %1?", "The device will reboot when done.",
      [](MANIFEST_DATA* package, PanelHost& host, const UpdateSettings& settings) {
          doFWUpdate(package, &host, settings);
      }},
     {PackageType::Fpga, "Continue to update FPGA to version %1?", "Device power off/on will be required when done.",
      [](MANIFEST_DATA* package, PanelHost& host, const UpdateSettings& settings) {
          doFpgaUpdate(package, &host, &host.handler(), settings);
      }},
     {PackageType::Module, "Continue to update NMX module to version %1?", "The device will reboot when done.",
      [](MANIFEST_DATA* package, PanelHost& host, const UpdateSettings& settings) {
          doNMXUpdate(package, &host, &host.handler(), settings);
      }}}};

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

void UpdatePackages::refresh() {
    m_list->update_view(0, QStringLiteral("load"));
}

void UpdatePackages::install(MANIFEST_DATA& package, PanelHost& host) {
    const PackageType type = packageType(package.name);
    for (const Flow& flow : Flows) {
        if (flow.type != type)
            continue;
        const QString question = QString::fromLatin1(flow.question).arg(shortened(package.version));
        if (confirmAction(&host, question, QString::fromLatin1(flow.note)))
            flow.run(&package, host, m_settings);
        return;
    }
    host.reportError(QStringLiteral("Unknown package type"));
}

} // namespace Kavor::HandheldGui
