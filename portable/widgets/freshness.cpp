#include "portable/widgets/freshness.h"

namespace Kavor::HandheldGui {

Freshness& Freshness::panel() {
    static Freshness freshness;
    return freshness;
}

void Freshness::set(State state) {
    if (state == m_state)
        return;
    m_state = state;
    emit changed();
}

QString Freshness::shown(const QString& text) const {
    return isKnown() ? text : QStringLiteral("---");
}

} // namespace Kavor::HandheldGui
