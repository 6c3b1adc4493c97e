#include "common/instrument/handlerscpi.h"
#include "portable/host/panelhost.h"
#include "portable/host/screentexts.h"
#include "portable/host/updateentry.h"
#include "portable/screens/system/listcfg.h"
#include "portable/screens/system/screensystem.h"
#include "portable/screens/system/system_ops.h"
#include "portable/widgets/boxes.h"
#include "portable/widgets/listpage.h"
#include "portable/widgets/vkeyboard.h"

// What the buttons of the system screen and the rows of its lists do.

namespace Kavor::HandheldGui {

void systemScreen::onStoreButton() {
    openConfigurations(QStringLiteral("save"));
}

void systemScreen::onRecallButton() {
    openConfigurations(QStringLiteral("load"));
}

void systemScreen::onEraseButton() {
    openConfigurations(QStringLiteral("delete"));
}

void systemScreen::openConfigurations(const QString& mode) {
    m_configurations->update_view(mode);
    showSubPage(Configurations);
}

void systemScreen::onLanButton() {
    showSubPage(Lan);
}

void systemScreen::onUpdButton() {
    UpdateEntry* update = host().settings().updateEntry;
    if (!update)
        return;
    update->refresh();
    showSubPage(Packages);
}

void systemScreen::onMsgLoadFWList(MANIFEST_DATA* package) {
    UpdateEntry* update = host().settings().updateEntry;
    if (package && update)
        update->install(*package, host());
    else
        host().reportError(QStringLiteral("Upgrade failed to start"));
    host().change_state(STATE_SYSTEM);
}

void systemScreen::onPresetButton() {
    if (!confirmAction(&host(), QStringLiteral("Reset system settings to factory defaults?"), {}, Answer::Destroys))
        return;
    end(doPreset(&handler(), m_page, handler().channelCount()), true);
}

void systemScreen::onMsgLoadCfgList(const QString& file) {
    const QString name = cfgList::bareName(file);
    if (!confirmAction(&host(), QStringLiteral("Recall configuration %1?").arg(name)))
        return;
    end(doRecall(&handler(), m_page, handler().channelCount(), name), true);
}

void systemScreen::onMsgDeleteCfgList(const QString& file) {
    const QString name = cfgList::bareName(file);
    if (!confirmAction(&host(), QStringLiteral("Delete configuration %1?").arg(name), {}, Answer::Destroys))
        return;
    end(doErase(&handler(), m_page, name), false);
}

void systemScreen::onMsgSaveCfgList(const QString& file) {
    const QString name = file == cfgList::NewFile ? askForName() : cfgList::bareName(file);
    if (name.isEmpty())
        return;
    const bool disableOutput = confirmAction(&host(), QStringLiteral("Disable output in saved configuration?"),
                                             QStringLiteral("Prevent active modulations auto-start..."));
    if (!confirmAction(&host(), QStringLiteral("Store configuration as %1?").arg(name)))
        return;
    end(handler().set_power_on_restore(!disableOutput) == 0 && doStore(&handler(), m_page, name), false);
}

/// Empty when the user thinks better of it.
QString systemScreen::askForName() {
    VirtKeyboard keyboard(&host(), QStringLiteral("Enter numeric recall file name"), QString(), QString());
    keyboard.setSignEnabled(false);
    keyboard.setPointEnabled(false);
    return keyboard.ask() ? keyboard.text() : QString();
}

/// reload: the module's settings are other ones now.
void systemScreen::end(bool taken, bool reload) {
    if (!taken) {
        showCommandFailure(host());
        return;
    }
    if (reload)
        host().update_from_config(STATE_SYSTEM);
    // Unless the user has gone elsewhere while the command was waiting.
    if (host().currentState() == STATE_SYSTEM)
        show();
}

void systemScreen::chooseReference(int index) {
    const char* word = ReferenceOscillatorToString[static_cast<std::size_t>(index)];
    const auto held = [this, word] {
        return recordText(handler().snapshot().referenceOscillator) == word;
    };
    int result = handler().setRefOscMode(!held());
    // A word that the panel does not know is followed by the first one.
    if (result == 0 && !held())
        result = handler().setRefOscMode(true);
    if (result != 0)
        showCommandFailure(host());
    showReference();
}

} // namespace Kavor::HandheldGui
