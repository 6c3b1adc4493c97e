#include "common/instrument/handlerscpi.h"
#include "common/wire/step_encoding.h"
#include "platform/logger.h"

#include <optional>

// Lists and patterns on their way to the module. What is sent is made before the first command: while a command waits,
// taps come in, and one of them may change or shorten the list. A text upload ends with the first refusal: with the
// service gone, each further step would cost a whole time-out.

namespace {

constexpr char Log[] = "upload";

template <typename Point>
bool markLast(std::vector<Point*>* steps) {
    if (steps == nullptr || steps->empty())
        return false;
    steps->back()->last = true;
    return true;
}

template <typename Point>
std::vector<std::string> commandsOf(const std::vector<Point*>& steps, std::string (*command)(const Point&)) {
    std::vector<std::string> commands;
    commands.reserve(steps.size());
    for (const Point* step : steps)
        commands.push_back(command(*step));
    return commands;
}

// The index of the first command that is refused.
std::optional<int> sendEach(EventHandler& handler, const std::vector<std::string>& commands) {
    for (std::size_t i = 0; i < commands.size(); ++i) {
        std::string reply;
        if (handler.veldaScpiTrans(commands[i], std::string(), reply) != 0)
            return static_cast<int>(i);
    }
    return std::nullopt;
}

void switchOff(EventHandler& handler) {
    handler.setStatePulseM(off);
    handler.setStatePatternM(off);
}

// Whether pulse modulation ran and was switched off.
bool pausePulse(EventHandler& handler) {
    if (handler.snapshot().pulseState != 1)
        return false;
    switchOff(handler);
    return true;
}

} // namespace

int EventHandler::sendListDATAX(std::vector<list_point*>* steps) {
    if (!markLast(steps))
        return -1;
    const QByteArray message = StepWire::listMessage(*steps);
    const bool paused = pausePulse(*this);
    const int result = veldaScpiTransData(message);
    if (result != 0) {
        VELDA_LOG(Log, QtWarningMsg, "Failed to send frequencies list");
        VELDA_LOG(Log, QtDebugMsg, "Size: %d, bytes: %s", message.size(), message.toHex());
    }
    if (paused && mayResume())
        setStatePulseM(on);
    if (paused && mayResume())
        setStatePatternM(on);
    return result;
}

int EventHandler::sendPatternListDATAX(std::vector<pattern_point*>* steps) {
    if (!markLast(steps))
        return -1;
    const QByteArray message = StepWire::patternMessage(*steps);
    const bool paused = pausePulse(*this);
    const int result = veldaScpiTransData(message);
    if (result != 0) {
        VELDA_LOG(Log, QtWarningMsg, "Failed to send patterns list");
        VELDA_LOG(Log, QtDebugMsg, "Size: %d, bytes: %s", message.size(), message.toHex());
    }
    if (paused && mayResume())
        setStatePatternM(on);
    return result;
}

int EventHandler::sendStepsList(std::vector<list_point*>* steps) {
    if (!markLast(steps))
        return -1;
    const std::optional<int> refused = sendEach(*this, commandsOf(*steps, StepWire::listCommand));
    if (refused)
        VELDA_LOG(Log, QtWarningMsg, "Failed to send frequency %d in list", *refused);
    return refused ? -1 : 0;
}

int EventHandler::sendPatternList(std::vector<pattern_point*>* steps) {
    if (!markLast(steps))
        return -1;
    const std::vector<std::string> commands = commandsOf(*steps, StepWire::patternCommand);
    switchOff(*this);
    const std::optional<int> refused = sendEach(*this, commands);
    if (refused)
        VELDA_LOG(Log, QtWarningMsg, "Failed to send pattern %d list", *refused);
    if (mayResume())
        setStatePulseM(on);
    if (mayResume())
        setStatePatternM(on);
    return refused ? -1 : 0;
}
