#pragma once

#include "common/instrument/handlerscpi.h"
#include "tests/common/link/scriptedservice.h"
#include "tests/common/link/testregion.h"

#include <QDebug>
#include <cstring>
#include <memory>

/// A module with its published region, and a handler that is connected to it.
class HandlerFixture {
public:
    explicit HandlerFixture(unsigned channels = 1) : region(channels) {
        for (unsigned channel = 0; channel < channels; ++channel) {
            region.record(channel).connected = 1;
            publishPort(service.port(), channel);
        }
    }

    InstrumentSettings settings() const {
        InstrumentSettings s;
        s.regionName = region.name();
        s.commandTimeoutMs = timeoutMs;
        s.connectSettleMs = 0;
        s.waitMarginMs = 50;
        s.retryFirstMs = 10;
        s.retryMs = 50;
        s.linkWatchMs = 20;
        return s;
    }

    void start() {
        handler = std::make_unique<EventHandler>(settings());
        handler->InitChannels();
    }

    void publishPort(const std::string& text, unsigned channel = 0) {
        auto& field = region.record(channel).scpiPort;
        std::memset(field, 0, sizeof field);
        std::memcpy(field, text.data(), std::min(text.size(), sizeof field));
    }
    void publishPort(quint16 port, unsigned channel = 0) { publishPort(std::to_string(port), channel); }

    /// Makes every field of the record something that no setter asks for; texts then have no end.
    void fillWithNonsense(unsigned channel = 0) {
        std::memset(&region.record(channel), 1, sizeof(ChannelRecord));
        publishPort(service.port(), channel);
    }

    /// An answer that acknowledges, of a module that then holds what `change` says.
    std::function<QByteArray(const QByteArray&)> taking(std::function<void(ChannelRecord&)> change) {
        return [this, change = std::move(change)](const QByteArray&) {
            change(region.record());
            return QByteArray("+OK\r\n");
        };
    }

    int timeoutMs = 5000;
    TestRegion region;
    ScriptedService service;
    std::unique_ptr<EventHandler> handler;
};
