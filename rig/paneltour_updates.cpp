#include "common/update/fwUpdater.h"
#include "common/update/signature.h"
#include "common/update/update_texts.h"
#include "portable/update/update_boxes.h"
#include "portable/update/update_dialog.h"
#include "portable/update/update_packages.h"
#include "portable/widgets/boxes.h"
#include "rig/tourguide.h"
#include "rig/updatestick.h"

#include <QAbstractButton>
#include <QLabel>
#include <QTableWidget>
#include <QTest>
#include <algorithm>
#include <tuple>

using namespace Kavor::HandheldGui;

namespace {

/// The list of the packages, as a user comes to it.
class PackageList {
public:
    explicit PackageList(TourGuide& guide) : m_guide(guide) {}

    void open(int packages) {
        m_guide.press("funcSystem");
        m_guide.press("sysUpdate");
        if (!QTest::qWaitFor([&] { return table().rowCount() == packages; }, 5000))
            qFatal("The packages are not found.");
    }

    void choose(int row) {
        QTest::mouseClick(table().viewport(), Qt::LeftButton, Qt::NoModifier,
                          table().visualItemRect(table().item(row, 1)).center());
    }

    void waitForNote(const QString& note) {
        const auto labels = m_guide.panel().widget<QWidget>("pagePackages")->findChildren<QLabel*>();
        const auto saysSo = [&] {
            return std::any_of(labels.begin(), labels.end(),
                               [&note](const QLabel* label) { return label->text() == note; });
        };
        if (!QTest::qWaitFor(saysSo, 5000))
            qFatal("The look for packages does not end.");
    }

private:
    QTableWidget& table() { return *m_guide.panel().widget<QTableWidget>("fwList"); }

    TourGuide& m_guide;
};

FpgaBoardStates boards(std::initializer_list<std::tuple<FpgaBoardState::Phase, int, int>> rows) {
    FpgaBoardStates states;
    for (const auto& [phase, percent, quietMs] : rows) {
        FpgaBoardState state;
        state.phase = phase;
        state.percent = percent;
        state.quietMs = quietMs;
        state.isSilent = quietMs >= FpgaUpdater::SilentAfterMs;
        states << state;
    }
    return states;
}

void progressStops(TourGuide& g, QWidget* window) {
    const auto show = [&g](const QString& name, UpdateDialog& dialog) {
        g.dialogShot(name, DialogKind::Progress,
                     [&dialog] { DialogRunner::current().run(dialog, DialogKind::Progress, dialog.text()); });
    };
    UpdateDialog copying(window, "asideProgress", "Copying the package...");
    copying.setAdvice("Leave the stick in its place");
    copying.showPercent(37);
    show("update-copying", copying);
    UpdateDialog installing(window, "installProgress", "Wait until upgrade process finished");
    installing.freeStick();
    show("update-installing", installing);
    using S = FpgaBoardState;
    const FpgaBoardStates answering =
        boards({{S::Acknowledged, 37, 4}, {S::Acknowledged, 37, 9}, {S::Acknowledged, 37, 2}, {S::Waiting, 36, 900}});
    const FpgaBoardStates silent =
        boards({{S::Acknowledged, 37, 4}, {S::Acknowledged, 37, 9}, {S::Acknowledged, 37, 2}, {S::Waiting, 36, 12400}});
    const FpgaBoardStates burning =
        boards({{S::Programming, 29, 40}, {S::Programming, 31, 60}, {S::Done, 100, 0}, {S::Programming, 44, 80}});
    for (const auto& [name, phase, percent, states] :
         {std::make_tuple("begin", -1, 0, FpgaBoardStates()), std::make_tuple("transfer", 0, 37, answering),
          std::make_tuple("silent-board", 0, 37, silent), std::make_tuple("programming", 1, 29, burning),
          std::make_tuple("verifying", 1, 83, burning)}) {
        FpgaProgressDialog dialog(window, FpgaUpdateSettings::forChannels(4).boards);
        const FpgaProgressDialog::Display display = FpgaProgressDialog::displayOf(phase, percent);
        if (phase >= 0) {
            dialog.setInfoText(display.text);
            dialog.setProgress(display.percent);
        }
        dialog.setBoards(states);
        show(QString("update-fpga-") + name, dialog);
    }
}

void outcomeStops(TourGuide& g, QWidget* window, const QString& package) {
    const UpdateBoxes boxes(window, "FPGA Update", 1000);
    g.dialogShot("update-fpga-done", DialogKind::Information, [&] { boxes.information(UpdateTexts::fpgaDone()); });
    int number = 0;
    const QString drop = "/home/velda/kavor/upgrade/veldax/module-software-5.0.bin";
    for (const auto& [title, text] :
         {std::make_tuple("FPGA", UpdateTexts::imageRefused()),
          std::make_tuple("FPGA", UpdateTexts::fpgaFailed({"192.168.8.1", "192.168.10.1"}, "Start of the transfer")),
          std::make_tuple("FPGA", UpdateTexts::cannotOpenImage(package)),
          std::make_tuple("FW", QString("Upgrade failed. Error code: -5\nStep 3 of 7: sudo ldconfig")),
          std::make_tuple("NMX", QString("Failed to copy %1 to %2").arg(package, drop))}) {
        const UpdateBoxes failed(window, QString(title) + " Update", 1000);
        g.dialogShot(QString("update-failure-%1").arg(++number), DialogKind::Critical,
                     [&failed, text = text] { failed.failure(text); });
    }
}

} // namespace

void updateStops(TourGuide& g) {
    UpdateStick stick;
    UpdateSettings settings;
    settings.trust = stick.trustSettings();
    UpdatePackages updates(settings);
    PanelFixture::Setup setup;
    setup.channels = 4;
    setup.updateEntry = &updates;
    PackageList list(g);
    g.start(setup);
    list.open(0);
    list.waitForNote("No update package found");
    g.shot("update-list-empty");

    const auto ours = Signature::makeKeyPair();
    const auto theirs = Signature::makeKeyPair();
    if (!ours || !theirs)
        qFatal("No keys can be made.");
    stick.trust(ours->publicKey);
    stick.addFpga("2-fpga", "1.4", QByteArray(5000, 'x'));
    stick.signing = {theirs->seed, 4, "KV-6000"};
    stick.addModule("3-module", "5.0", "module software");
    stick.signing = {ours->seed, 7, "KV-6000"};
    stick.addSoftware("1-software", "2.1.0", {});
    for (const auto& [name, version, ok, end] :
         {std::make_tuple("FW", "2.0.4", true, "done, 1 of 3 steps failed: sudo rm app"),
          std::make_tuple("FPGA", "1.3", true, "done, 4 boards"),
          std::make_tuple("NMX", "4.9", false, "not begun: the package could not be copied")}) {
        MANIFEST_DATA package;
        package.name = name;
        package.version = version;
        settings.memory.note(package, ok, end);
    }
    list.open(3);
    g.shot("update-list");
    int row = 0;
    for (const auto& kind : {"software", "fpga", "module"}) {
        list.open(3);
        g.dialogShot(QString("update-question-") + kind, DialogKind::Question, [&] { list.choose(row); });
        ++row;
    }
    // What follows the "Yes": a broken package is asked about, or refused.
    const auto yes = [](QDialog& dialog) {
        QTest::mouseClick(qobject_cast<QMessageBox*>(&dialog)->button(QMessageBox::Yes), Qt::LeftButton);
    };
    for (const auto& [policy, name, kind] : {std::make_tuple("warn", "asked", DialogKind::Question),
                                             std::make_tuple("require", "refused", DialogKind::Critical)}) {
        stick.trust(ours->publicKey, policy);
        list.open(3);
        g.panel().dialogs().expect(DialogKind::Question, "NMX module to version 5.0", yes);
        g.dialogShot(QString("update-broken-") + name, kind, [&] { list.choose(2); });
    }
    g.panel().module().modify(1, [](ChannelRecord& r) { r.rfOutput = 1; });
    list.open(3);
    g.panel().dialogs().expect(DialogKind::Question, "Firmware to version 2.1.0", yes);
    g.dialogShot("update-question-rf", DialogKind::Question, [&] { list.choose(0); });
    progressStops(g, &g.panel().window());
    outcomeStops(g, &g.panel().window(),
                 stick.package("a-folder-with-quite-a-long-name/and-another-one-in-it") + "/image.fpga");
}
