#pragma once

#include <QElapsedTimer>
#include <algorithm>
#include <cstdio>
#include <string>
#include <vector>

/// Two ways of the same work, one after the other in each round, so that what else the machine does hits both.
class PairedTimes {
public:
    /// Milliseconds, or whatever else is compared.
    void add(double ours, double peer) {
        m_ours.push_back(ours);
        m_peer.push_back(peer);
    }

    template <typename Ours, typename Peer>
    void round(Ours ours, Peer peer) {
        // Who comes first finds the caches as the other has left them: by turns.
        const bool oursFirst = m_ours.size() % 2 == 0;
        const double before = oursFirst ? 0 : milliseconds(peer);
        const double mine = milliseconds(ours);
        add(mine, oursFirst ? milliseconds(peer) : before);
    }

    double ours(int percent = 50) const { return percentile(m_ours, percent); }
    double peer(int percent = 50) const { return percentile(m_peer, percent); }

    /// The median of the ratios of blocks of that many rounds, each the ratio of the two percentiles within it.
    double ratio(int percent = 50, std::size_t block = 1) const {
        std::vector<double> ratios;
        for (std::size_t i = 0; i + block <= m_ours.size(); i += block) {
            const auto part = [i, block, percent](const std::vector<double>& all) {
                const auto first = all.begin() + static_cast<std::ptrdiff_t>(i);
                return percentile({first, first + static_cast<std::ptrdiff_t>(block)}, percent);
            };
            ratios.push_back(part(m_ours) / part(m_peer));
        }
        return percentile(ratios, 50);
    }

    template <typename Work>
    static double milliseconds(Work work) {
        QElapsedTimer timer;
        timer.start();
        work();
        return static_cast<double>(timer.nsecsElapsed()) * 1e-6;
    }

    static double percentile(std::vector<double> values, int percent) {
        std::sort(values.begin(), values.end());
        return values[std::min(values.size() - 1, values.size() * static_cast<std::size_t>(percent) / 100)];
    }

private:
    std::vector<double> m_ours;
    std::vector<double> m_peer;
};

/// What a benchmark found: "name value unit" a line, and the ratios to its peers behind all of them.
class BenchReport {
public:
    ~BenchReport() {
        for (const std::string& line : m_ratios)
            std::printf("%s\n", line.c_str());
    }

    void value(const std::string& name, double value, const char* unit) {
        std::printf("%s %.4g %s\n", name.c_str(), value, unit);
        std::fflush(stdout);
    }

    /// Above 1 is more time than the peer's, or more rate, as the name says.
    void ratio(const std::string& name, double ratio) {
        char line[160];
        std::snprintf(line, sizeof line, "ratio %s %.3f x", name.c_str(), ratio);
        m_ratios.emplace_back(line);
    }

    /// Both in milliseconds; the peer's name gets "_peer".
    template <typename Ours, typename Peer>
    void compare(const std::string& name, int rounds, Ours ours, Peer peer) {
        PairedTimes times;
        for (int i = 0; i < rounds; ++i)
            times.round(ours, peer);
        value(name, times.ours(), "ms");
        value(name + "_peer", times.peer(), "ms");
        ratio(name, times.ratio());
    }

    template <typename Work>
    static double milliseconds(Work work) {
        return PairedTimes::milliseconds(work);
    }

    static double percentile(const std::vector<double>& values, int percent) {
        return PairedTimes::percentile(values, percent);
    }

private:
    std::vector<std::string> m_ratios;
};
