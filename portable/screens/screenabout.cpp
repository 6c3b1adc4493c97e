#include "portable/screens/screenabout.h"

#include <QtGlobal>

namespace Kavor::HandheldGui {

aboutScreen::aboutScreen(QWidget* parent, std::vector<STATE> states)
    : ReadoutScreen(parent, std::move(states), QStringLiteral("pageAbout"), QString(), QStringLiteral("About"),
                    {
                        {QStringLiteral("Model"),
                         [](const ChannelRecord& r) {
                             return recordQText(r.model);
                         }},
                        {QStringLiteral("Panel Version"),
                         [](const ChannelRecord&) {
                             return QStringLiteral(VELDA_VERSION);
                         }},
                        {QStringLiteral("FW/FPGA Version"),
                         [](const ChannelRecord& r) {
                             return recordQText(r.firmwareVersion);
                         }},
                        {QStringLiteral("Qt Version"),
                         [](const ChannelRecord&) {
                             return QString::fromLatin1(qVersion());
                         }},
                    }) {}

} // namespace Kavor::HandheldGui
