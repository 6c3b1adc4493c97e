#pragma once

#include "common/instrument/modulations.h"
#include "portable/widgets/state.h"

namespace Kavor::HandheldGui {

/// What the list screen and the pattern screen differ in, apart from the controls that the list screen alone has.
struct StepListKind : Modulation {
    const char* pageName;
    const char* prefix; ///< of the object names
    STATE tableState;
    STATE filesState;
    const char* header;
    const char* editCaption;
    const char* filesCaption;
    const char* settingsCaption;
    const char* enableLabel;
    int enableBoxX;
    const char* newLabel;
    const char* loadLabel;
    const char* saveLabel;
    const char* deleteLabel;
    const char* newQuestion; ///< asked before all steps go; null: they go without a question
    const char* newNote;
    const char* uploadTitle;
    const char* filenameTitle;
    const char* folder;    ///< of the saved files, below the data root
    const char* logPrefix; ///< in the log lines of the enable box
    void (EventHandler::*setCachedName)(const char*);
};

extern const StepListKind FrequencyList;
extern const StepListKind TimingPattern;

} // namespace Kavor::HandheldGui
