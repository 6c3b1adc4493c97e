#pragma once

#include "values/messagesink.h"

#include <QStringList>

/// Keeps what the user would be told, and for how many seconds (0: the usual time).
class RecordingSink : public MessageSink {
public:
    void showMessage(const QString& text, float seconds) override {
        texts << text;
        times << seconds;
    }

    QStringList texts;
    QList<float> times;
};
