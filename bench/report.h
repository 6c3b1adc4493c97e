#pragma once

#include <QElapsedTimer>
#include <algorithm>
#include <cstdio>
#include <string>
#include <vector>

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

    /// Both in milliseconds, taking turns so that a busy machine hits both; the peer's name gets "_peer".
    template <typename Ours, typename Peer>
    void compare(const std::string& name, int rounds, Ours ours, Peer peer) {
        std::vector<double> a, b;
        for (int i = 0; i < rounds; ++i) {
            a.push_back(milliseconds(ours));
            b.push_back(milliseconds(peer));
        }
        value(name, percentile(a, 50), "ms");
        value(name + "_peer", percentile(b, 50), "ms");
        ratio(name, percentile(a, 50) / percentile(b, 50));
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
    std::vector<std::string> m_ratios;
};
