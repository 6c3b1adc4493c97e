#include "portable/screens/system/system_ops.h"

#include "common/instrument/handlerscpi.h"

#include <QString>
#include <QWidget>

namespace Kavor::HandheldGui {

namespace {

bool ended(int result, QWidget* focus) {
    if (result == 0 && focus)
        focus->setFocus();
    return result == 0;
}

} // namespace

bool doStore(EventHandler* handler, QWidget* focus, const QString& name) {
    return ended(handler->setStorePath(name.toStdString()), focus);
}

bool doErase(EventHandler* handler, QWidget* focus, const QString& name) {
    return ended(handler->setClearPath(name.toStdString()), focus);
}

bool doRecall(EventHandler* handler, QWidget* focus, unsigned channels, const QString& name) {
    const int result = handler->setRecallPath(name.toStdString());
    if (result == 0) {
        for (unsigned channel = 0; channel < channels; ++channel)
            handler->revert_preset(static_cast<int>(channel));
        handler->clearRunningModulations();
    }
    return ended(result, focus);
}

bool doPreset(EventHandler* handler, QWidget* focus, unsigned channels) {
    return doRecall(handler, focus, channels, QStringLiteral("0"));
}

} // namespace Kavor::HandheldGui
