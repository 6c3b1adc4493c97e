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
    handler.setStatePulseM(OnOff::off);
    handler.setStatePatternM(OnOff::off);
}

} // namespace

void EventHandler::switchOnAgain(bool pulseToo) {
    if (pulseToo && mayResume())
        setStatePulseM(OnOff::on);
    if (mayResume())
        setStatePatternM(OnOff::on);
}

int EventHandler::sendSteps(const QByteArray& message, const char* failure, bool pulseToo) {
    const bool pulseRan = snapshot().pulseState == 1;
    if (pulseRan)
        switchOff(*this);
    const int result = veldaScpiTransData(message);
    if (result != 0) {
        VELDA_LOG(Log, QtWarningMsg, "%s", failure);
        VELDA_LOG(Log, QtDebugMsg, "Size: %d, bytes: %s", message.size(), message.left(LoggedData).toHex());
    }
    if (pulseRan)
        switchOnAgain(pulseToo);
    return result;
}

int EventHandler::sendListDATAX(std::vector<list_point*>* steps) {
    return markLast(steps) ? sendSteps(StepWire::listMessage(*steps), "Failed to send frequencies list", true) : -1;
}

int EventHandler::sendPatternListDATAX(std::vector<pattern_point*>* steps) {
    return markLast(steps) ? sendSteps(StepWire::patternMessage(*steps), "Failed to send patterns list", false) : -1;
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
    switchOnAgain(true);
    return refused ? -1 : 0;
}
