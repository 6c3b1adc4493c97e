#pragma once

#include "lists/list_config.h"

class QWidget;

namespace Kavor::HandheldGui {

/// Gets the new value of a cell of a list: a choice goes over to the other one, anything else is asked for by the
/// on-screen keyboard. False when the user cancelled or changed nothing. GUI thread.
[[nodiscard]] bool askForCellValue(QWidget& window, const ListEditRequest& request, ListEditValue& value);

} // namespace Kavor::HandheldGui
