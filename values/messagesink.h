#pragma once

#include <QString>

/// Where a value check tells the user what is wrong. The toast of the panel implements it; a test records it.
class MessageSink {
public:
    virtual ~MessageSink() = default;

    /// Shows a text briefly. seconds of 0 or less means the sink's own default.
    virtual void showMessage(const QString& text, float seconds) = 0;
};

/// Shows a text for the sink's own default time; nothing without a sink.
inline void tell(MessageSink* sink, const QString& text) {
    if (sink)
        sink->showMessage(text, 0);
}
