#include "common/link/instrument_settings.h"

#include <QtGlobal>

InstrumentSettings InstrumentSettings::fromEnvironment() {
    InstrumentSettings settings;
    const QByteArray region = qgetenv("VELDA_REGION");
    if (!region.isEmpty())
        settings.regionName = (region.startsWith('/') ? region : '/' + region).toStdString();
    return settings;
}
