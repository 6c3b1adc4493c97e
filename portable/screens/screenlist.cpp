#include "portable/screens/screenlist.h"

namespace Kavor::HandheldGui {

listScreen::listScreen(QWidget* parent, std::vector<STATE> states)
    : ReadoutScreen(parent, std::move(states), QStringLiteral("pageList"),
                    QStringLiteral("   List Mode - Configure and upload frequency list"),
                    QStringLiteral("List Settings"),
                    {
                        {QStringLiteral("List in the module"),
                         [](const ChannelRecord& r) {
                             return recordQText(r.listName);
                         }},
                    }) {}

} // namespace Kavor::HandheldGui
