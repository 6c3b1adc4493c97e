#include "portable/screens/lists/list_edit.h"

#include "portable/widgets/vkeyboard.h"
#include "values/formatting.h"

namespace Kavor::HandheldGui {

bool askForCellValue(QWidget& window, const ListEditRequest& request, ListEditValue& value) {
    if (request.kind == ListColumnKind::Choice) {
        const bool runs = request.unit == QLatin1String("Run");
        value.text = runs ? QStringLiteral("Wait") : QStringLiteral("Run");
        return true;
    }
    VirtKeyboard keyboard(&window, request.title, request.unit, request.text);
    for (int i = 0; i < request.options.size(); ++i)
        keyboard.setUnitsButtons(i, request.options.at(i));
    keyboard.setHighliteButton(request.options.indexOf(request.unit));
    keyboard.setSignEnabled(request.powerRange);
    keyboard.setPointEnabled(request.enabled);
    if (request.min < request.max) {
        const auto limit = [&request](double value) {
            return request.powerRange ? formatNumber(value, 2) + QStringLiteral(" dBm") : formatTime(value, "ns");
        };
        keyboard.setRange(QStringLiteral("%1 to %2").arg(limit(request.min), limit(request.max)));
    }
    if (!keyboard.ask())
        return false;
    value.text = keyboard.text();
    value.unit = keyboard.chosenUnit();
    return value.text != request.text || value.unit != request.unit; // untouched, it stays what it is
}

} // namespace Kavor::HandheldGui
