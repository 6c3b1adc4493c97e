#pragma once

#include <vector>

class QTableWidget;
class QWidget;

namespace Kavor::HandheldGui {

/// A component of what runs on the instrument, with the terms under which it may be passed on. UTF-8.
struct Licence {
    const char* component;
    const char* licence;
    const char* holder;
    const char* libraries; ///< beginnings of the names of its shared libraries, separated by blanks; may be empty
};

/// The panel itself and all that it is linked with or shows.
const std::vector<Licence>& licences();

/// A table of them. GUI thread.
QTableWidget* makeLicenceTable(QWidget* parent);

} // namespace Kavor::HandheldGui
