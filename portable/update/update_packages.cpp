#include "portable/update/update_packages.h"

#include "common/instrument/handlerscpi.h"
#include "common/update/package_trust.h"
#include "common/update/update_texts.h"
#include "platform/durable_file.h"
#include "portable/host/panelhost.h"
#include "portable/host/screentexts.h"
#include "portable/update/listfirmware.h"
#include "portable/update/package_words.h"
#include "portable/update/update_history.h"
#include "portable/update/update_readiness.h"
#include "portable/update/update_staging.h"
#include "portable/widgets/boxes.h"

#include <algorithm>
#include <array>

namespace Kavor::HandheldGui {

namespace {

struct Flow {
    PackageType type;
    const char* title;
    const char* question;
    const char* note;
    QString (*notFound)(const QString& path);
    UpdateOutcome (*run)(MANIFEST_DATA*, PanelHost&, const UpdateSettings&);
};

const std::array<Flow, 3> Flows{{{PackageType::Software, "FW Update", "Continue to update Firmware to version %1?",
                                  "The device will reboot when done.", UpdateTexts::packageNotFound,
                                  [](MANIFEST_DATA* package, PanelHost& host, const UpdateSettings& settings) {
                                      return doFWUpdate(package, &host, settings);
                                  }},
                                 {PackageType::Fpga, "FPGA Update", "Continue to update FPGA to version %1?",
                                  "Device power off/on will be required when done.", UpdateTexts::cannotOpenImage,
                                  [](MANIFEST_DATA* package, PanelHost& host, const UpdateSettings& settings) {
                                      return doFpgaUpdate(package, &host, &host.handler(), settings);
                                  }},
                                 {PackageType::Module, "NMX Update", "Continue to update NMX module to version %1?",
                                  "The device will reboot when done.", UpdateTexts::packageNotFound,
                                  [](MANIFEST_DATA* package, PanelHost& host, const UpdateSettings& settings) {
                                      return doNMXUpdate(package, &host, &host.handler(), settings);
                                  }}}};

const QString CutOff = QStringLiteral("cut off");

} // namespace

UpdatePackages::UpdatePackages(const UpdateSettings& settings) : m_settings(settings) {}

QTableWidget* UpdatePackages::makeList(QWidget* parent, PanelHost& host) {
    m_list = new fwList(parent, m_settings);
    connect(m_list, &fwList::loadList, this, &UpdateEntry::chosen);
    connect(m_list, &fwList::noteChanged, this, &UpdateEntry::noteChanged);
    // Whoever has left the page is not told that a look at the media failed.
    connect(m_list, &fwList::failed, &host, [list = m_list, &host](const QString& message) {
        if (list->isVisible())
            host.reportWhenFree(message);
    });
    return m_list;
}

QWidget* UpdatePackages::makeHistory(QWidget* parent) {
    return new UpdateHistory(parent, m_settings.memory);
}

void UpdatePackages::clearUp(PanelHost& host) const {
    DurableFile::sweep(m_settings.stagingParent);
    PackageStaging::sweep(m_settings.stagingParent);
    if (!m_settings.memory.remember(readTrust(m_settings.trust))) // before anybody takes its file away
        host.reportWhenFree(m_settings.memory.notWritten());
    const QString what = InstallationMarker(m_settings.install.markerFile).what();
    if (!what.isEmpty())
        host.reportWhenFree(
            QStringLiteral("The installation of %1 was cut off. Please install it again.").arg(shortened(what)));
}

void UpdatePackages::refresh() {
    m_list->update_view(0, QStringLiteral("load"));
}

/// What is offered beside what is there, and what follows.
QString UpdatePackages::noteOf(const MANIFEST_DATA& package, const char* after) const {
    const PackageType kind = packageType(package.name);
    const QString installed = installedVersion(m_settings.memory, kind);
    return QStringLiteral("%1, %2. Installed: %3.\n%4")
        .arg(kindName(kind), sealWord(package.seal).toLower(),
             installed.isEmpty() ? QStringLiteral("not known") : shortened(installed), QString::fromLatin1(after));
}

void UpdatePackages::install(MANIFEST_DATA& package, PanelHost& host) {
    const PackageType type = packageType(package.name);
    const auto* const flow =
        std::find_if(Flows.begin(), Flows.end(), [type](const Flow& row) { return row.type == type; });
    if (flow == Flows.end()) {
        host.reportError(QStringLiteral("Unknown package type"));
        return;
    }
    const QString question = QString::fromLatin1(flow->question).arg(shortened(package.version));
    if (!confirmAction(&host, question, noteOf(package, flow->note)) || !isReadyForUpdate(host, type))
        return;
    const UpdateMemory& memory = m_settings.memory;
    const UpdateBoxes boxes(&host, QString::fromLatin1(flow->title), m_settings.patienceMs);
    StagedPackage staged = stagePackage(package, QString::fromStdString(host.handler().getSysModel()),
                                        flow->notFound(package.package_path), &host, boxes, m_settings);
    if (!staged.copies) {
        if (!staged.end.isEmpty() && !memory.note(package, false, staged.end))
            host.reportWhenFree(memory.notWritten());
        return;
    }
    // Copying takes its time: a battery goes down, another client switches on.
    if (!isReadyForUpdate(host, type))
        return;
    MANIFEST_DATA& copy = staged.copies->manifest();
    UpdateSettings settings = m_settings;
    settings.install.ending = [&memory, &copy](const InstallEnd& end) {
        memory.note(copy, end.code == 0, endOfInstallation(end, static_cast<int>(copy.components.size())));
    };
    // Until something better can be said. Told at once: the instrument may reboot before there is another chance.
    const bool isKept = memory.note(copy, false, CutOff);
    if (!isKept)
        boxes.failure(memory.notWritten());
    const UpdateOutcome outcome = flow->run(&copy, host, settings);
    if (!memory.note(copy, outcome.ok, outcome.end) && isKept)
        host.reportWhenFree(memory.notWritten());
    if (!outcome.line.isEmpty())
        showToast(host, outcome.line);
}

} // namespace Kavor::HandheldGui
