// How times grow: with the length of a list, the number of channels and the size of a reply. One line each,
// "growth WHAT X MILLISECONDS", for the tables and plots of script/bench.

#include "bench/report.h"
#include "common/wire/step_encoding.h"
#include "lists/frequency_list_config.h"
#include "lists/lists_ops.h"
#include "rig/panelfixture.h"

#include <QApplication>
#include <QTemporaryDir>

namespace {

constexpr int Rounds = 15;
constexpr int LongestFile = 10000; ///< steps; a longer file is refused for its size

void print(const char* what, int x, std::vector<double> times) {
    std::printf("growth %s %d %.4g\n", what, x, BenchReport::percentile(times, 50));
    std::fflush(stdout);
}

/// The median of some rounds; false when the work failed once.
template <typename Work>
bool measure(const char* what, int x, Work work) {
    std::vector<double> times;
    bool ok = true;
    for (int i = 0; i < Rounds; ++i)
        times.push_back(BenchReport::milliseconds([&] { ok = work() && ok; }));
    print(what, x, times);
    return ok;
}

bool lists() {
    const QTemporaryDir folder;
    const ListsOps store(folder.path());
    bool ok = true;
    for (const int length : {10, 100, 1000, 10000, 100000}) {
        std::vector<list_point*> points;
        FrequencyListConfig list(&points, {9e3, 6e9, 1e9, -60, 20, -10, 1e4, 1e11, 1e6});
        for (int i = 0; i < length; ++i)
            points.push_back(new list_point);
        list.renumber();
        QString error;
        ok = measure("list_encode", length, [&] { return StepWire::listMessage(points).size() > 0; }) && ok;
        if (length <= LongestFile) {
            ok = measure("list_save", length, [&] { return store.save("growth", 0, list, error); }) && ok;
            ok = measure("list_load", length, [&] { return store.load("growth", 0, list, error); }) && ok;
        }
        qDeleteAll(points);
    }
    return ok;
}

bool channels() {
    bool ok = true;
    for (const unsigned channels : {1U, 2U, 3U, 4U}) {
        PanelFixture::Setup setup;
        setup.channels = channels;
        setup.refreshMs = 1 << 20; // only what is measured looks at the record
        PanelFixture panel(setup);
        const int x = static_cast<int>(channels);
        double power = -7;
        ok = measure("channels_set_round_trip", x, [&] { return panel.handler().set_power(power -= 0.5) == 0; }) && ok;
        ok = panel.settle() && ok;
        ok = measure("channels_screens_follow_record", x,
                     [&] {
                         panel.window().refreshFromModule();
                         return true;
                     }) &&
             ok;
    }
    return ok;
}

bool replies() {
    PanelFixture panel;
    bool ok = true;
    for (int size = 1 << 10; size <= 16 << 20; size *= 4) {
        const std::string query = "SIMulator:BLOCk? " + std::to_string(size);
        ok = measure("reply_bytes", size,
                     [&] {
                         std::string reply;
                         return panel.handler().send_scpi(query, reply, QByteArray(), false) == 0 &&
                                reply.size() == static_cast<std::size_t>(size);
                     }) &&
             ok;
    }
    return ok;
}

} // namespace

int main(int argc, char** argv) {
    const QApplication application(argc, argv);
    const bool ok = lists() && channels() && replies();
    if (!ok)
        std::fprintf(stderr, "A measured operation failed.\n");
    return ok ? 0 : 1;
}
