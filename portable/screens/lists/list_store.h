#pragma once

#include <map>
#include <memory>
#include <vector>

namespace Kavor::HandheldGui {

/// The lists of one kind that are being edited: one for each channel, each with its model. A list begins with one
/// default step and lasts as long as this object. GUI thread.
template <typename Config, typename Limits, typename Point>
class ListStore {
public:
    /// The list of a channel, with these limits for its next edits and new steps.
    Config& at(unsigned channel, const Limits& limits) {
        std::unique_ptr<Entry>& entry = m_lists[channel];
        if (!entry) {
            entry = std::make_unique<Entry>(limits);
            QString error;
            if (!entry->config.addDefault(error))
                qFatal("%s", qPrintable(error));
        }
        entry->config.setLimits(limits);
        return entry->config;
    }

private:
    struct Entry {
        explicit Entry(const Limits& limits) : config(&points, limits) {}
        ~Entry() { config.destroyPoints(); }
        Entry(const Entry&) = delete;
        Entry& operator=(const Entry&) = delete;

        std::vector<Point*> points;
        Config config;
    };

    std::map<unsigned, std::unique_ptr<Entry>> m_lists;
};

} // namespace Kavor::HandheldGui
