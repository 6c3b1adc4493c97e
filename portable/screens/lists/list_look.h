#pragma once

#include "lists/table/list_table_view_config.h"

namespace Kavor::HandheldGui {

/// The panel's look for the step table and the file browser: rows of Style::TableRowHeight at (x, y) of a group.
ListTableViewConfig listLook(int x, int y, int width, int rows, int firstColumnWidth);

/// Height that listLook() takes for so many rows.
int listLookHeight(int rows);

} // namespace Kavor::HandheldGui
