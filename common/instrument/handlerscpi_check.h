#pragma once

#include "common/instrument/handlerscpi.h"

/// Sends a command and reads back whether the module took it; a failed send shows in what the module holds. Only for
/// the files that implement EventHandler.
template <typename Check>
int EventHandler::sendChecked(const char* header, const std::string& argument, Check isTaken) {
    sendOnly(header, argument);
    const bool taken = isTaken();
    return holdsCurrentChannel() && taken ? 0 : -1;
}
