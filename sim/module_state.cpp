#include "sim/module_state.h"

#include "sim/factory_values.h"

#include <algorithm>

namespace Sim {
namespace {

void resizeChannels(ModuleData& data, unsigned channels, const Options& options) {
    const std::string port = data.records.empty() ? std::string() : recordText(data.records.front().scpiPort);
    for (auto channel = static_cast<unsigned>(data.records.size()); channel < channels; ++channel) {
        data.records.push_back(factoryRecord(channel, options));
        setRecordText(data.records.back().scpiPort, port);
    }
    data.records.resize(channels);
    for (auto* perChannel : {&data.lists, &data.patterns, &data.listSteps, &data.patternSteps})
        perChannel->resize(channels);
    data.selected = std::min(data.selected, channels - 1);
}

} // namespace

ModuleState::ModuleState(const Options& options) : m_options(options), m_region(options.regionName) {
    resizeChannels(m_data, std::clamp(options.channels, 1U, MaxChannels), options);
    m_published = m_data.records;
}

bool ModuleState::publishAnew(unsigned channels, QString& error) {
    std::lock_guard<std::mutex> lock(m_mutex);
    if (channels >= 1 && channels <= MaxChannels)
        resizeChannels(m_data, channels, m_options);
    if (!m_region.replace(m_data.records, error))
        return false;
    m_published = m_data.records;
    return true;
}

ModuleData ModuleState::data() const {
    std::lock_guard<std::mutex> lock(m_mutex);
    return m_data;
}

ChannelRecord ModuleState::published(unsigned channel) const {
    std::lock_guard<std::mutex> lock(m_mutex);
    return channel < m_published.size() ? m_published[channel] : ChannelRecord{};
}

void ModuleState::change(const std::function<void(ModuleData&)>& changer) {
    std::lock_guard<std::mutex> lock(m_mutex);
    changer(m_data);
    publishLocked();
}

void ModuleState::setFrozen(bool frozen) {
    std::lock_guard<std::mutex> lock(m_mutex);
    m_frozen = frozen;
    publishLocked();
}

void ModuleState::setHeld(bool held) {
    std::lock_guard<std::mutex> lock(m_mutex);
    m_held = held;
}

void ModuleState::publishLocked() {
    if (m_frozen || m_held)
        return;
    m_published = m_data.records;
    m_region.write(m_data.records);
}

} // namespace Sim
