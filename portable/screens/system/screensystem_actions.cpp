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

namespace {
constexpr unsigned HighestNumber = 99999; ///< of a new configuration
}

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
    if (end(doPreset(&handler(), m_page, handler().channelCount()), true))
        showToast(host(), QStringLiteral("Factory defaults recalled"));
}

/// The name of the configuration in a file; empty, and the user has been told, when the module cannot be asked for it.
QString systemScreen::nameToUse(const QString& file) {
    QString name = cfgList::bareName(file);
    if (cfgList::canBeUsed(name))
        return name;
    showToast(host(), name == QLatin1String("0") ? QStringLiteral("Configuration 0 is the factory preset")
                      : cfgList::isOddNumber(name)
                          ? QStringLiteral("A number has no sign, point or leading zero")
                          : QStringLiteral("A name is letters, digits, \".\", \"-\" and \"_\" only"));
    return QString();
}

void systemScreen::onMsgLoadCfgList(const QString& file) {
    const QString name = nameToUse(file);
    if (name.isEmpty() || !confirmAction(&host(), QStringLiteral("Recall configuration %1?").arg(shortened(name))))
        return;
    if (end(doRecall(&handler(), m_page, handler().channelCount(), name), true))
        showToast(host(), QStringLiteral("Configuration %1 recalled").arg(shortened(name)));
}

void systemScreen::onMsgDeleteCfgList(const QString& file) {
    const QString name = nameToUse(file);
    if (name.isEmpty() ||
        !confirmAction(&host(), QStringLiteral("Delete configuration %1?").arg(shortened(name)), {}, Answer::Destroys))
        return;
    if (end(doErase(&handler(), m_page, name), false))
        showToast(host(), QStringLiteral("Configuration %1 deleted").arg(shortened(name)));
}

void systemScreen::onMsgSaveCfgList(const QString& file) {
    const QString name = file == cfgList::NewFile ? askForName() : nameToUse(file);
    if (name.isEmpty())
        return;
    const bool disableOutput = confirmAction(&host(), QStringLiteral("Disable output in saved configuration?"),
                                             QStringLiteral("Prevent active modulations auto-start..."));
    if (!confirmAction(&host(), QStringLiteral("Store configuration as %1?").arg(shortened(name))))
        return;
    if (end(handler().takePowerOnRestore(!disableOutput) == 0 && doStore(&handler(), m_page, name), false))
        showToast(host(), QStringLiteral("Configuration %1 stored").arg(shortened(name)));
}

/// Empty when the user thinks better of it, or has been told why there is none of that number.
QString systemScreen::askForName() {
    VirtKeyboard keyboard(&host(), QStringLiteral("Enter numeric recall file name"), QString(), QString());
    keyboard.setSignEnabled(false);
    keyboard.setPointEnabled(false);
    if (!keyboard.ask())
        return QString();
    bool isNumber = false;
    const unsigned number = keyboard.text().toUInt(&isNumber);
    if (isNumber && number >= 1 && number <= HighestNumber)
        return QString::number(number);
    showToast(host(), QStringLiteral("Range 1 to %1").arg(HighestNumber));
    return QString();
}

/// reload: the module's settings are other ones now. Returns taken.
bool systemScreen::end(bool taken, bool reload) {
    if (!taken) {
        showCommandFailure(host());
        return false;
    }
    if (reload)
        host().update_from_config(STATE_SYSTEM);
    // Unless the user has gone elsewhere while the command was waiting.
    if (host().currentState() == STATE_SYSTEM && (m_subState == Configurations || m_subState == Main))
        show();
    return true;
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
