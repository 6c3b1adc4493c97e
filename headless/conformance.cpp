#include "headless/conformance.h"

#include "common/link/record_texts.h"
#include "common/wire/scpi_words.h"

#include <algorithm>
#include <cctype>
#include <utility>

namespace {

constexpr int MutesUntilGivenUp = 3;
constexpr int LongestFinding = 200; // characters
constexpr char Configuration[] = "99999";

Conformance::Settings checked(Conformance::Settings settings) {
    if (!settings.regionName.empty() && settings.regionName.front() != '/')
        settings.regionName.insert(0, "/");
    return settings;
}

} // namespace

Conformance::Conformance(const Settings& settings, RowSeen seen)
    : m_settings(checked(settings)), m_seen(std::move(seen)), m_region(m_settings.regionName) {}

std::vector<Conformance::Row> Conformance::run() {
    if (lookAtRegion()) {
        m_channels = m_region.channelCount();
        for (unsigned channel = m_channels; channel-- > 0 && goesOn();) // the first stays selected
            lookAtChannel(channel);
        using Step = void (Conformance::*)();
        for (const Step step : {&Conformance::network, &Conformance::configurations, &Conformance::connections}) {
            if (goesOn())
                (this->*step)();
        }
        if (!goesOn()) {
            row("the rest");
            find(m_stopped
                     ? QByteArray("stopped from outside")
                     : "given up: " + (m_lost ? QByteArray("there is no record any more")
                                              : "no answer to " + QByteArray::number(m_mute) +
                                                    " commands in a row; what was sent last may not be set back"));
        }
        leaveOff();
    }
    finishRow();
    return m_rows;
}

bool Conformance::goesOn() const {
    return m_mute < MutesUntilGivenUp && !m_lost && !m_stopped;
}

std::vector<double> Conformance::times() const {
    std::vector<double> sorted = m_times;
    std::sort(sorted.begin(), sorted.end());
    return sorted;
}

bool Conformance::lookAtRegion() {
    row("region " + QByteArray::fromStdString(m_settings.regionName));
    m_region.follow();
    if (!m_region.isUsable() || !m_region.isPresent()) {
        find("is not there, or does not hold one to four records of " + QByteArray::number(int(ChannelRecordSize)) +
             " bytes");
        return false;
    }
    const QByteArray port = QByteArray::fromStdString(recordText(record().scpiPort));
    m_port = port.toUShort();
    if (m_port == 0)
        find("the record's port is no port: \"" + port + '"');
    m_probe = std::make_unique<ServiceProbe>(m_port, m_settings.timeoutMs, m_settings.quietMs);
    row("service on port " + QByteArray::number(m_port));
    if (m_port == 0 || !m_probe->connectAnew()) {
        find("nothing listens there");
        return false;
    }
    const QByteArray unasked = m_probe->listen();
    if (!unasked.isEmpty())
        find("speaks before it is asked: \"" + unasked.trimmed() + '"');
    return true;
}

/// What is there already is sent again: nothing of the network changes.
void Conformance::network() {
    using R = ChannelRecord;
    const R r = record();
    row("network, as it is");
    send(Scpi::LanDhcp + QByteArray(OnOffToString[r.dhcp == 1]), [&](const ChannelRecord& now) {
        return QByteArray((now.dhcp == 1) == (r.dhcp == 1) ? "" : "the record shows the other mode");
    });
    for (const auto& [header, field] : std::initializer_list<std::pair<const char*, char(R::*)[32]>>{
             {Scpi::LanAddress, &R::ipAddress}, {Scpi::LanMask, &R::networkMask}, {Scpi::LanGateway, &R::gateway}}) {
        if (r.dhcp != 1 && recordText(r.*field).empty())
            find(QByteArray(header) + "not sent: the record holds none");
        else if (r.dhcp != 1)
            send(header + ('"' + QByteArray::fromStdString(recordText(r.*field)) + '"'));
    }
    send(Scpi::LanPort + QByteArray::fromStdString(recordText(r.scpiPort)));
    row("architecture");
    const ServiceProbe::Answer answer =
        exchange(QByteArray(Scpi::DeviceArchitectureQuery) + Scpi::LineEnd, Scpi::DeviceArchitectureQuery);
    if (answer.ended && answer.line.isEmpty())
        find("an empty answer");
    skip(QByteArray(Scpi::GuiUpdateSoftware).trimmed(), "it starts an update of the module");
}

/// Nothing is reset that could not be stored.
void Conformance::configurations() {
    if (!m_settings.restarts) {
        skip("store, preset, recall, erase", "only with --reset");
        return;
    }
    const ChannelRecord before = record();
    row("store, preset, recall, erase");
    for (const char* mode : {"AUTO", "MANUAL"})
        send(QByteArray(Scpi::PowerOnRestore) + mode);
    if (!send(QByteArray(Scpi::Store) + Configuration)) {
        find("nothing is reset: it could not be recalled");
        return;
    }
    bool recalled = true;
    for (const QByteArray& reset : {QByteArray(Scpi::Recall) + "0", QByteArray(Scpi::Reset)}) {
        if (!recalled)
            break;
        send(reset);
        recalled = send(QByteArray(Scpi::Recall) + Configuration, [&](const ChannelRecord& r) {
            return r.frequency.value == before.frequency.value && r.power.value == before.power.value
                       ? QByteArray()
                       : QByteArray("frequency or power is not what was stored");
        });
        sendOff();
    }
    if (recalled)
        send(QByteArray(Scpi::Clear) + Configuration);
    else
        find("the settings are the factory's now; configuration 99999 is left for another try");
}

/// As the panel meets the service when either of them was restarted.
void Conformance::connections() {
    const QByteArray harmless = QByteArray(Scpi::Output) + "OFF" + Scpi::LineEnd;
    row("two clients at a time");
    ServiceProbe second(m_port, m_settings.timeoutMs, m_settings.quietMs);
    if (!second.connectAnew())
        find("the second is not let in");
    else if (!second.ask(harmless).line.startsWith(Scpi::Acknowledge))
        find("the second is not answered");
    exchange(harmless, "the first");
    row("a client that goes in the midst of a command");
    second.write(":FRE");
    if (!second.connectAnew() || !second.ask(harmless).line.startsWith(Scpi::Acknowledge))
        find("the next command of a new connection fails");
    exchange(harmless, "the other client");
    row("two commands in one piece");
    const ServiceProbe::Answer both = m_probe->ask(harmless + harmless);
    if (!both.ended || (both.beyond.isEmpty() && !m_probe->ask(QByteArray()).ended))
        find("are not answered one after the other");
    if (!m_probe->connectAnew())
        find("the connection cannot be made anew");
}

/// Whatever has gone wrong before: nothing radiates when this program goes. Where it has radiated the record is not
/// believed, for a command that was given up may have been carried out since.
void Conformance::leaveOff() {
    row("RF off at the end");
    for (unsigned channel = m_channels; channel-- > 0;) {
        m_channel = channel;
        const bool shown = record().rfOutput == 1;
        if (shown || m_lost)
            find("channel " + QByteArray::number(channel) + (m_lost ? ": nobody knows" : " shows RF on"));
        else if (!m_settings.radiates)
            continue;
        select(channel);
        sendOff();
    }
    if (m_selected != 0)
        select(0);
}

bool Conformance::select(unsigned channel) {
    m_selected = channel;
    return m_channels == 1 || send(Scpi::SelectChannel + QByteArray::number(channel));
}

/// The last one that could be read, once there is none any more.
ChannelRecord Conformance::record() {
    ChannelRecord now{};
    m_region.follow();
    if (m_region.isPresent() && m_region.read(m_channel, 0, &now, sizeof now)) {
        m_last[m_channel] = now;
    } else if (!m_lost) {
        m_lost = true;
        find("the region has gone, or was cut");
    }
    return m_last[m_channel];
}

void Conformance::row(const QByteArray& what) {
    finishRow();
    m_rows.push_back({m_scope + what, {}, 0, false});
}

void Conformance::finishRow() {
    if (m_seen && !m_rows.empty())
        m_seen(m_rows.back());
}

void Conformance::skip(const QByteArray& what, const QByteArray& why) {
    row(what);
    m_rows.back().skipped = true;
    find("not sent: " + why);
}

/// Part of it may be what the service has sent: for a terminal, and one line.
void Conformance::find(const QByteArray& finding) {
    QByteArray shown = finding.left(LongestFinding);
    std::replace_if(
        shown.begin(), shown.end(), [](char c) { return std::isprint(static_cast<unsigned char>(c)) == 0; }, '.');
    if (!m_rows.back().findings.contains(shown))
        m_rows.back().findings << shown;
}

ServiceProbe::Answer Conformance::exchange(const QByteArray& message, const QByteArray& shown) {
    ServiceProbe::Answer answer = m_probe->ask(message);
    m_rows.back().slowestMs = std::max(m_rows.back().slowestMs, answer.ms);
    if (answer.ended)
        m_times.push_back(answer.ms);
    m_mute = answer.ended ? 0 : m_mute + 1;
    if (answer.closed) {
        find(shown + ": the connection was closed");
        if (!m_probe->connectAnew())
            find("and nothing listens any more");
    } else if (!answer.ended) {
        find(shown + ": no answer in " + QByteArray::number(m_settings.timeoutMs) + " ms" +
             (answer.beyond.isEmpty() ? "" : ", but a line without an end"));
        if (!m_probe->connectAnew()) // what comes late would answer the next one
            find("and nothing listens any more");
    } else if (!answer.beyond.isEmpty()) {
        find(shown + ": more than one answer");
    } else if (answer.ms > m_settings.slowMs) {
        find(shown + ": answered after " + QByteArray::number(answer.ms, 'f', 0) + " ms");
    }
    return answer;
}

bool Conformance::send(const QByteArray& command, const Check& check) {
    return sendMessage(command + Scpi::LineEnd, command.trimmed(), check);
}

bool Conformance::sendMessage(const QByteArray& message, const QByteArray& shown, const Check& check) {
    const ServiceProbe::Answer answer = exchange(message, shown);
    if (!answer.ended)
        return false;
    if (answer.line.startsWith(Scpi::Refusal)) {
        find(shown + ": refused, " + answer.line);
        return false;
    }
    if (answer.line != Scpi::Acknowledge)
        find(shown + ": the answer is \"" + answer.line + "\" and not " + Scpi::Acknowledge);
    const ChannelRecord now = record();
    const QByteArray wrong = check && !m_lost ? check(now) : QByteArray();
    if (!wrong.isEmpty())
        find(shown + ": " + wrong);
    return wrong.isEmpty() && !m_lost;
}
