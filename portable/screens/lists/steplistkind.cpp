#include "portable/screens/lists/steplistkind.h"

#include "common/instrument/handlerscpi.h"

namespace Kavor::HandheldGui {

const StepListKind FrequencyList{modulation(LIST_MOD_BIT),
                                 "pageList",
                                 "list",
                                 STATE_LIST,
                                 STATE_LIST_FILES,
                                 "   List Mode - Configure and upload frequency list",
                                 "Edit List",
                                 "List Files",
                                 "List Settings",
                                 "Enable:",
                                 100,
                                 "New List",
                                 "Load File",
                                 "Save File",
                                 "Delete File",
                                 "Create new list",
                                 "Delete last list?",
                                 "Upload List to Device",
                                 "List filename",
                                 "/kavor/list/",
                                 "listScreen::",
                                 &EventHandler::setCachedListName};

const StepListKind TimingPattern{modulation(PATTERN_MOD_BIT),
                                 "pagePattern",
                                 "pattern",
                                 STATE_PATTERN,
                                 STATE_PATTERN_FILES,
                                 "   Pattern Mode - Create an on/off timing pattern",
                                 "Edit Pattern",
                                 "Pattern Files",
                                 "Pattern Settings",
                                 "Enable Pattern:",
                                 206,
                                 "New",
                                 "Load",
                                 "Save",
                                 "Delete",
                                 nullptr,
                                 nullptr,
                                 "Upload Pattern to Device",
                                 "Pattern filename",
                                 "/kavor/pattern/",
                                 "patternScreen::",
                                 &EventHandler::setCachedPatternName};

} // namespace Kavor::HandheldGui
