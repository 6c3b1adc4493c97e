#include "portable/screens/screenpatterns.h"

namespace Kavor::HandheldGui {

patternScreen::patternScreen(QWidget* parent, std::vector<STATE> states)
    : ReadoutScreen(parent, std::move(states), QStringLiteral("pagePattern"),
                    QStringLiteral("   Pattern Mode - Create an on/off timing pattern"),
                    QStringLiteral("Pattern Settings"),
                    {
                        {QStringLiteral("Pattern in the module"),
                         [](const ChannelRecord& r) {
                             return recordQText(r.patternName);
                         }},
                    }) {}

} // namespace Kavor::HandheldGui
