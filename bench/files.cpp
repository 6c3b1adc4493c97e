// Encoding, loading and saving of steps, and the check of an image, each against the least that the work can be.

#include "bench/report.h"
#include "common/update/fpga_image.h"
#include "common/update/fpga_trailer.h"
#include "common/wire/step_encoding.h"
#include "lists/frequency_list_config.h"
#include "lists/lists_ops.h"

#include <QFile>
#include <QJsonDocument>
#include <QSaveFile>
#include <QTemporaryDir>
#include <cstring>
#include <memory>
#include <random>
#include <zlib.h>

namespace {

/// A step whose units are enumerators: what a switch can do.
struct PlainStep {
    enum Unit { Giga, Mega, Kilo, One };
    std::uint32_t number;
    double frequency;
    Unit frequencyUnit;
    double power;
    double dwell;
    Unit dwellUnit; ///< s, ms, us, ns
    bool waits;
};

double toMillihertz(PlainStep::Unit unit) {
    switch (unit) {
    case PlainStep::Giga:
        return 1e12;
    case PlainStep::Mega:
        return 1e9;
    case PlainStep::Kilo:
        return 1e6;
    case PlainStep::One:
        break;
    }
    return 1e3;
}

double toMicroseconds(PlainStep::Unit unit) {
    switch (unit) {
    case PlainStep::Giga:
        return 1e6;
    case PlainStep::Mega:
        return 1e3;
    case PlainStep::Kilo:
        return 1;
    case PlainStep::One:
        break;
    }
    return 1e-3;
}

QByteArray plainMessage(const std::vector<std::unique_ptr<PlainStep>>& steps) {
    const QByteArray length = QByteArray::number(static_cast<int>(steps.size()) * StepWire::ListStepSize);
    QByteArray message = StepWire::ListData + (" #" + QByteArray::number(length.size())) + length;
    const int at = message.size();
    message.resize(at + static_cast<int>(steps.size()) * StepWire::ListStepSize);
    char* record = message.data() + at;
    for (std::size_t i = 0; i < steps.size(); ++i, record += StepWire::ListStepSize) {
        const PlainStep& step = *steps[i];
        const auto frequency = static_cast<std::uint64_t>(step.frequency * toMillihertz(step.frequencyUnit));
        const auto power = static_cast<std::int64_t>(step.power * 100);
        const auto dwell = static_cast<std::uint64_t>(step.dwell * toMicroseconds(step.dwellUnit));
        std::memcpy(record, &step.number, 2);
        std::memcpy(record + 2, &frequency, 6);
        std::memcpy(record + 8, &power, 2);
        record[10] = static_cast<char>((i + 1 == steps.size() ? 1 : 0) | (step.waits ? 2 : 0));
        std::memcpy(record + 11, &dwell, 5);
    }
    return message + "\r\n";
}

bool encoding(BenchReport& report, int count) {
    const char* const frequencyUnits[] = {"GHz", "MHz", "KHz", "Hz"};
    const char* const timeUnits[] = {"s", "ms", "\xC2\xB5s", "ns"};
    std::mt19937 random(1);
    const auto below = [&random](int limit) {
        return static_cast<int>(random() % static_cast<unsigned>(limit));
    };
    std::vector<std::unique_ptr<list_point>> owned;
    std::vector<list_point*> steps;
    std::vector<std::unique_ptr<PlainStep>> plain;
    for (int i = 0; i < count; ++i) {
        const int f = below(4), t = below(4);
        const bool waits = below(2) == 0;
        const PlainStep step{static_cast<std::uint32_t>(i + 1),
                             below(8000) / 8.0, // a binary fraction: the peer knows no others
                             static_cast<PlainStep::Unit>(f),
                             below(240) / 8.0 - 20,
                             below(1000) + 0.0,
                             static_cast<PlainStep::Unit>(t),
                             waits};
        plain.push_back(std::make_unique<PlainStep>(step));
        owned.push_back(
            std::make_unique<list_point>(list_point{step.number, step.frequency, frequencyUnits[f], step.power, "dBm",
                                                    step.dwell, timeUnits[t], waits ? "Wait" : "Run", i + 1 == count}));
        steps.push_back(owned.back().get());
    }
    if (StepWire::listMessage(steps) != plainMessage(plain))
        return false;
    int bytes = 0;
    report.compare(
        "encode_" + std::to_string(count) + "_steps", 101, [&] { bytes += StepWire::listMessage(steps).size(); },
        [&] { bytes += plainMessage(plain).size(); });
    return bytes > 0;
}

bool files(BenchReport& report) {
    const QTemporaryDir folder;
    const ListsOps store(folder.path());
    std::vector<list_point*> points;
    FrequencyListConfig list(&points, {9e3, 6e9, 1e9, -60, 20, -10, 1e4, 1e11, 1e6});
    std::mt19937 random(1);
    while (points.size() < 5000)
        points.push_back(new list_point{
            1, static_cast<double>(random() % 1000000) / 1000, "MHz", static_cast<double>(random() % 3000) / 100 - 20,
            "dBm", static_cast<double>(random() % 1000), "ms", random() % 2 ? "Run" : "Wait", false});
    list.renumber();
    QString error;
    if (!store.save("bench", 0, list, error))
        return false;
    const QString path = store.filePath("bench", 0);
    const auto parse = [&path] {
        QFile file(path);
        return file.open(QIODevice::ReadOnly) ? QJsonDocument::fromJson(file.readAll()) : QJsonDocument();
    };
    const QJsonDocument document = parse();
    bool ok = !document.isNull();
    report.compare(
        "load_5000_steps", 31, [&] { ok = store.load("bench", 0, list, error) && ok; },
        [&] { ok = !parse().isNull() && ok; });
    report.compare(
        "save_5000_steps", 31, [&] { ok = store.save("bench", 0, list, error) && ok; },
        [&] {
            QSaveFile file(folder.filePath("peer.json"));
            ok = file.open(QIODevice::WriteOnly) && file.write(document.toJson()) > 0 && file.commit() && ok;
        });
    qDeleteAll(points);
    return ok;
}

bool image(BenchReport& report) {
    FpgaTrailer trailer;
    trailer.design = FpgaDesign;
    const QByteArray file = withFpgaTrailer(QByteArray(64 << 20, 'x'), trailer);
    bool ok = true;
    unsigned long sum = 0;
    report.compare(
        "image_check_64_MiB", 9, [&] { ok = checkFpgaImage(file).ok && ok; },
        [&] {
            sum += crc32_z(0, reinterpret_cast<const Bytef*>(file.constData()), static_cast<z_size_t>(file.size() - 4));
        });
    return ok && sum != 0;
}

} // namespace

int main() {
    BenchReport report;
    const bool ok = encoding(report, 5000) && encoding(report, 100000) && files(report) && image(report);
    if (!ok)
        std::fprintf(stderr, "A measured operation failed or gave other bytes than its peer.\n");
    return ok ? 0 : 1;
}
