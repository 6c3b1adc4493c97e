#pragma once

#include "sim/options.h"
#include "sim/shared_region.h"

#include <QByteArray>
#include <functional>
#include <mutex>
#include <vector>

namespace Sim {

/// Everything that the module remembers.
struct ModuleData {
    Records records;
    unsigned selected = 0;             ///< channel that commands without one are for
    unsigned triggers = 0;             ///< software triggers received
    bool restoreOutput = true;         ///< a configuration stored from now on brings its output and modulations back
    std::vector<QByteArray> lists;     ///< raw step records of the last upload, one per channel
    std::vector<QByteArray> patterns;  ///< as lists
    std::vector<QByteArray> listSteps; ///< steps defined one by one, the arguments as they came
    std::vector<QByteArray> patternSteps;
};

/// The module's memory and the region that shows it. Any thread; what is published is written before change() returns.
class ModuleState {
public:
    explicit ModuleState(const Options& options);

    const Options& options() const { return m_options; }

    /// Creates the region, or replaces it by a new one (another inode). channels of 1 to 4 also changes their number;
    /// new ones have factory values. False with a sentence when the system refuses.
    [[nodiscard]] bool publishAnew(unsigned channels, QString& error);

    ModuleData data() const;

    /// The channel's record as it is published, zeros for a channel that is not there.
    ChannelRecord published(unsigned channel) const;

    /// Changes the memory and publishes it. The function must not call back into this object.
    void change(const std::function<void(ModuleData&)>& changer);

    /// While frozen the memory changes and the region does not; it catches up when that ends.
    void setFrozen(bool frozen);

    /// While held, changes are not published; they appear with the first change after that.
    void setHeld(bool held);

private:
    void publishLocked();

    const Options m_options;
    mutable std::mutex m_mutex;
    ModuleData m_data;
    Records m_published;
    SharedRegion m_region;
    bool m_frozen = false;
    bool m_held = false;
};

} // namespace Sim
