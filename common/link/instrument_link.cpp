#include "common/link/instrument_link.h"

#include "common/link/record_texts.h"
#include "common/link/scpi_log.h"
#include "common/link/scpiclient.h"
#include "platform/logger.h"

#include <QCoreApplication>
#include <QDebug>
#include <QElapsedTimer>
#include <QEventLoop>
#include <QMetaObject>
#include <QThread>
#include <cstdlib>
#include <cstring>

InstrumentLink::InstrumentLink(const InstrumentSettings& settings, QObject* parent)
    : QObject(parent), m_settings(settings), m_address(settings.address), m_region(settings.regionName) {
    connect(&m_linkWatch, &QTimer::timeout, this, &InstrumentLink::followService);
}

InstrumentLink::~InstrumentLink() {
    stopClient();
}

void InstrumentLink::InitChannels() {
    followRegion();
    initScpi(m_settings.address);
    if (init_channel() != 0)
        VELDA_LOG(lcScpi().categoryName(), QtCriticalMsg, "*************Channels initializarion failure **********");
    m_linkWatch.start(m_settings.linkWatchMs);
    updateLink();
}

void InstrumentLink::initScpi(const QHostAddress& address) {
    if (m_clientThread != nullptr)
        return;
    m_address = address;
    m_scpiStarted = true;
    followService();
    if (m_client == nullptr)
        return;
    QElapsedTimer waited;
    waited.start();
    while (!m_client->isConnected() && waited.elapsed() < m_settings.connectWaitMs) {
        QEventLoop pass;
        connect(m_client, &ScpiClient::connected, &pass, &QEventLoop::quit);
        QTimer::singleShot(50, &pass, &QEventLoop::quit);
        if (!m_client->isConnected())
            pass.exec();
    }
    QThread::msleep(static_cast<unsigned long>(m_settings.connectSettleMs));
}

int InstrumentLink::init_channel() {
    followRegion();
    if (!m_region.isUsable()) {
        logUnusableRegion("init_channel");
        return -1;
    }
    takeSnapshot();
    m_moduleConnected = isModuleConnected(); // at the start it is the panel that says so
    return 0;
}

void InstrumentLink::refresh() {
    followRegion();
    if (m_region.isUsable())
        m_region.read(0, 0, &m_snapshot[0], m_region.channelCount());
}

int InstrumentLink::revert_preset(int channel) {
    followRegion();
    if (!m_region.isUsable()) {
        // Called once a second, so said once for each time that the region is lost.
        if (!m_lossReported)
            logUnusableRegion("revert_preset");
        m_lossReported = true;
        return -1;
    }
    m_lossReported = false;
    const auto index = static_cast<unsigned>(channel);
    // Of a region that is cut meanwhile the last record stays.
    ChannelRecord record;
    if (m_region.read(index, 0, &record, sizeof record)) {
        terminateTexts(record);
        m_snapshot[index] = record;
        noteModule();
    }
    return 0;
}

unsigned InstrumentLink::getDisconnectedChannels() {
    followRegion();
    unsigned disconnected = 0;
    for (unsigned channel = 0; channel < channelCount(); ++channel) {
        std::int32_t connected = 0;
        m_region.read(channel, offsetof(ChannelRecord, connected), &connected, sizeof connected);
        if (connected == 0)
            disconnected |= 1U << channel;
    }
    return disconnected;
}

unsigned InstrumentLink::channelCount() const {
    return m_region.isUsable() ? m_region.channelCount() : 1;
}

unsigned InstrumentLink::publishedChannels() const {
    return m_region.isUsable() && m_region.isPresent() ? m_region.channelCount() : 0;
}

bool InstrumentLink::isLinkUp() const {
    return m_region.isUsable() && m_region.isPresent() && m_client != nullptr && m_client->isConnected();
}

void InstrumentLink::logUnusableRegion(const char* function) const {
    VELDA_LOG(lcScpi().categoryName(), QtCriticalMsg, "%s: invalid input ldshmem, channel_no = %u", function,
              m_region.channelCount());
}

void InstrumentLink::takeSnapshot() {
    m_snapshot = {};
    for (unsigned channel = 0; channel < channelCount(); ++channel) {
        m_region.read(channel, 0, &m_snapshot[channel], ChannelRecordSize);
        terminateTexts(m_snapshot[channel]);
    }
}

void InstrumentLink::noteModule() {
    const bool connected = isModuleConnected();
    if (connected == m_moduleConnected)
        return;
    m_moduleConnected = connected;
    if (!connected)
        qCWarning(lcScpi) << "[SCPI] the module of channel" << m_channel << "is not connected any more";
    emit moduleConnectedChanged(connected);
}

void InstrumentLink::selectChannel(unsigned channel) {
    const bool changes = channel != m_channel;
    m_channel = channel;
    m_otherSelected = m_otherSelected || channel != 0;
    greet();
    if (changes)
        emit channelChanged();
}

void InstrumentLink::keepChannelInside() {
    if (publishedChannels() == 0 || m_region.holds(m_channel))
        return;
    qCWarning(lcScpi) << "[SCPI] the region holds no channel" << m_channel << "any more: the first is selected";
    selectChannel(0);
    renewConnection();
}

void InstrumentLink::renewConnection() {
    stopClient(); // and forgets the port that it was made for
    followService();
}

void InstrumentLink::fetchBytes(void* cachedField, std::size_t size) {
    followRegion();
    const auto offset = static_cast<char*>(cachedField) - reinterpret_cast<char*>(&m_snapshot[m_channel]);
    m_region.read(m_channel, static_cast<std::size_t>(offset), cachedField, size);
}

ChannelRecord InstrumentLink::peekRecord() {
    followRegion();
    ChannelRecord record{};
    m_region.read(m_channel, 0, &record, sizeof record);
    return record;
}

std::vector<ChannelRecord> InstrumentLink::publishedRecords() {
    followRegion();
    std::vector<ChannelRecord> records(publishedChannels());
    for (std::size_t channel = 0; channel < records.size(); ++channel)
        m_region.read(static_cast<unsigned>(channel), 0, &records[channel], sizeof(ChannelRecord));
    return records;
}

// A region that was made anew is another state of the module, so the whole snapshot is taken again.
void InstrumentLink::followRegion() {
    const auto isThere = [this] {
        return m_region.isUsable() && m_region.isPresent();
    };
    const bool wasThere = isThere();
    const bool changed = m_region.follow();
    if (wasThere && !isThere())
        qCWarning(lcScpi) << "[SCPI] the module's region is gone, or of no usable size any more";
    if (!changed)
        return;
    if (wasThere && isThere())
        qCWarning(lcScpi) << "[SCPI] the module's region was made anew or resized";
    if (m_region.isUsable())
        takeSnapshot();
    noteModule();
    QMetaObject::invokeMethod(this, &InstrumentLink::updateLink, Qt::QueuedConnection);
}

// A service that has come back may listen elsewhere.
void InstrumentLink::followService() {
    followRegion();
    if (m_scpiStarted && m_region.isUsable()) {
        const quint16 port = publishedPort();
        if (port != m_port) {
            stopClient();
            m_port = port;
            if (port != 0)
                startClient(port);
        }
    }
    updateLink();
}

// The current channel's port, 0 when its text is none. An empty text says nothing while there is a client: a region
// that has just been made is filled a moment later.
quint16 InstrumentLink::publishedPort() {
    char field[sizeof ChannelRecord::scpiPort];
    m_region.read(m_channel, offsetof(ChannelRecord, scpiPort), field, sizeof field);
    const std::string text = recordText(field);
    if (text.empty() && m_client != nullptr)
        return m_port;
    char* end = nullptr;
    const long port = std::strtol(text.c_str(), &end, 10);
    if (end != text.c_str() && port >= 1 && port <= 65535) {
        m_reportedPortText.clear();
        return static_cast<quint16>(port);
    }
    if (m_reportedPortText != '"' + text) {
        m_reportedPortText = '"' + text;
        qCWarning(lcScpi) << "[SCPI] no connection, the channel record holds no port number:" << text.c_str();
    }
    return 0;
}
