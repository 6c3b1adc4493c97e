#pragma once

#include "common/instrument/handlerscpi.h"

/// Sends a command and reads back whether the module took it; a failed send shows in what the module holds. A tap that
/// came in while this command waited may have sent another one with the same header: the record then tells of that one,
/// and this one counts as taken when it was acknowledged. Only for the files that implement EventHandler.
template <typename Check>
int EventHandler::sendChecked(const char* header, const std::string& argument, Check isTaken) {
    const unsigned turn = ++m_turns[header];
    const int sent = sendOnly(header, argument);
    const bool taken = isTaken();
    if (m_turns[header] != turn)
        return sent;
    return holdsCurrentChannel() && taken ? 0 : -1;
}
