#include <cmath>
#include <deque>
#include <functional>
#include <limits>
#include <random>

#include "common/instrument/step_encoding.h"
#include "tests/common/instrument/handlerfixture.h"
#include "tests/support/testbase.h"

using Upload = std::function<int(EventHandler&)>;
Q_DECLARE_METATYPE(Upload)

namespace {

constexpr double kHuge = std::numeric_limits<double>::max();
constexpr double kNan = std::numeric_limits<double>::quiet_NaN();

// A list that owns its steps.
template <typename Point>
struct Steps {
    Steps(std::initializer_list<Point> all) {
        for (const Point& point : all)
            add(point);
    }
    void add(const Point& point) {
        points.push_back(point);
        steps.push_back(&points.back());
        steps.back()->stepNumber = static_cast<std::uint32_t>(steps.size());
    }

    std::deque<Point> points;
    std::vector<Point*> steps;
};

list_point listStep(double frequency, const char* frequencyUnit, double power, double dwell, const char* dwellUnit,
                    const char* advance = "Run", bool last = false) {
    return {1, frequency, frequencyUnit, power, "dBm", dwell, dwellUnit, advance, last};
}

pattern_point patternStep(double on, const char* onUnit, double off, const char* offUnit, std::uint32_t loops = 1,
                          bool last = false) {
    return {1, on, onUnit, off, offUnit, loops, last};
}

// A second encoder, in other words: decimal powers by unit, bytes by division.
QByteArray lowBytes(quint64 value, int count) {
    QByteArray bytes;
    for (int i = 0; i < count; ++i, value /= 256)
        bytes += static_cast<char>(value % 256);
    return bytes;
}

quint64 scaled(double value, const std::string& unit, std::initializer_list<std::pair<const char*, double>> factors) {
    for (const auto& [name, factor] : factors) {
        if (unit == name)
            return static_cast<quint64>(std::trunc(value * factor));
    }
    qFatal("no such unit");
}

QByteArray referenceRecord(const list_point& s, bool last) {
    return lowBytes(s.stepNumber, 2) +
           lowBytes(scaled(s.frequency, s.frequencyUnit, {{"GHz", 1e12}, {"MHz", 1e9}, {"KHz", 1e6}, {"Hz", 1000}}),
                    6) +
           lowBytes(static_cast<quint64>(static_cast<qint64>(s.power * 100)), 2) +
           lowBytes((last ? 1 : 0) + (s.advance == "Run" ? 0 : 2), 1) +
           lowBytes(scaled(s.dwell, s.dwellUnit, {{"ns", 0.001}, {"\u00B5s", 1}, {"ms", 1000}, {"s", 1e6}}), 5);
}

QByteArray referenceRecord(const pattern_point& s, bool) {
    const auto nanos = [](double value, const std::string& unit) {
        return lowBytes(scaled(value, unit, {{"ns", 1}, {"\u00B5s", 1000}, {"ms", 1e6}, {"s", 1e9}}), 8);
    };
    return lowBytes(s.stepNumber, 2) + lowBytes(s.loops, 2) + nanos(s.offTime, s.offTimeUnit) +
           nanos(s.onTime, s.onTimeUnit);
}

template <typename Point>
QByteArray referenceMessage(const char* header, const std::vector<Point*>& steps) {
    QByteArray records;
    for (const Point* step : steps)
        records += referenceRecord(*step, step == steps.back());
    const QByteArray length = QByteArray::number(records.size());
    return header + QByteArray(" #") + QByteArray::number(length.size()) + length + records + "\r\n";
}

Steps<list_point> theList{listStep(100, "MHz", 5, 500, "\u00B5s"), listStep(1, "GHz", 0, 1, "ms", "Wait")};
Steps<pattern_point> thePattern{patternStep(800, "ns", 1, "\u00B5s"), patternStep(1, "ms", 1, "s", 9)};
const Upload binaryList = [](EventHandler& h) {
    return h.sendListDATAX(&theList.steps);
};
const Upload binaryPattern = [](EventHandler& h) {
    return h.sendPatternListDATAX(&thePattern.steps);
};
const Upload textList = [](EventHandler& h) {
    return h.sendStepsList(&theList.steps);
};
const Upload textPattern = [](EventHandler& h) {
    return h.sendPatternList(&thePattern.steps);
};

} // namespace

/// The bytes and texts that lists and patterns become, and the conversation in which they are sent.
class TestStepUpload : public TestBase {
    Q_OBJECT

private slots:
    void encoded_data() {
        // clang-format off
        QTest::addColumn<QByteArray>("encoded");
        QTest::addColumn<QByteArray>("expected");
        const auto list = [](const char* name, list_point step, const char* hex) {
            addRow(name, SetListData(&step, step.last, step.advance != "Run").toHex(), QByteArray(hex).replace(' ', ""));
        };
        list("a new step", list_point(), "0100 00e876481700 f401 00 f401000000");
        list("waits, last", listStep(100, "MHz", 5, 500, "\u00B5s", "Wait", true), "0100 00e876481700 f401 03 f401000000");
        list("GHz, negative power, ms", listStep(2.4, "GHz", -10.5, 1.5, "ms"), "0100 00c025cb2e02 e6fb 00 dc05000000");
        list("power and ns truncated", listStep(1, "KHz", -0.019, 999, "ns"), "0100 40420f000000 ffff 00 0000000000");
        list("unknown units are the smallest", listStep(7, "kHz", 0, 2000, "us"), "0100 581b00000000 0000 00 0200000000");
        list("empty units", listStep(7, "", 0, 2000, ""), "0100 581b00000000 0000 00 0200000000");
        list("units with a tail", listStep(7, "GHzz", 0, 2000, "sss"), "0100 581b00000000 0000 00 0200000000");
        list("beyond any integer", listStep(kHuge, "GHz", kHuge, kHuge, "s"), "0100 ffffffffffff ffff 00 ffffffffff");
        list("below any integer", listStep(-kHuge, "GHz", -kHuge, -1, "s"), "0100 000000000000 0000 00 0000000000");
        list("no numbers", listStep(kNan, "GHz", kNan, kNan, "s"), "0100 000000000000 0000 00 0000000000");
        const auto pattern = [](const char* name, pattern_point step, const char* hex) {
            addRow(name, SetPattData(&step).toHex(), QByteArray(hex).replace(' ', ""));
        };
        pattern("off time first", patternStep(800, "ns", 1, "\u00B5s"), "0100 0100 e803000000000000 2003000000000000");
        pattern("ms, s, loops cut", patternStep(1.5, "ms", 2, "s", 65536 + 258), "0100 0201 0094357700000000 60e3160000000000");
        pattern("signed, truncated", patternStep(-1.9, "ns", 0.9999, "\u00B5s"), "0100 0100 e703000000000000 ffffffffffffffff");
        pattern("out of range", patternStep(kHuge, "s", -kHuge, "s"), "0100 0100 0000000000000080 ffffffffffffff7f");
        const auto text = [](const std::string& encoded, const char* expected) {
            addRow(expected, QByteArray::fromStdString(encoded), QByteArray(expected));
        };
        text(StepWire::listCommand(listStep(2.4, "GHz", -10.25, 500, "\u00B5s", "Wait", true)), ":SOUR:LIST:DEF 1,2.4e+09,-10.25,1,1,0.0005");
        text(StepWire::listCommand(listStep(150, "KHz", 0, 20, "ms")), ":SOUR:LIST:DEF 1,150,0,0,0,0.02"); // as it stands
        text(StepWire::listCommand(listStep(150, "Kz", 0, 20, "ns")), ":SOUR:LIST:DEF 1,150000,0,0,0,2e-08");
        text(StepWire::listCommand(listStep(123456789, "Hz", 1.23456789, 1, "s")), ":SOUR:LIST:DEF 1,1.23457e+08,1.23457,0,0,1");
        text(StepWire::patternCommand(patternStep(800, "ns", 1, "\u00B5s", 7)), ":PATT:DEF 1,8e-07,1e-06,7,0");
        text(StepWire::patternCommand(patternStep(3, "ms", 2, "s", 4000000000U, true)), ":PATT:DEF 1,0.003,2,4000000000,1");
        for (const auto& [number, digits] : {std::pair(0LL, "1"), {9LL, "1"}, {10LL, "2"}, {-100LL, "3"}, {std::numeric_limits<long long>::min(), "19"}})
            QTest::addRow("digits of %lld", number) << QByteArray::number(countDigit(number)) << QByteArray(digits);
        // clang-format on
    }

    void encoded() {
        QFETCH(QByteArray, encoded);
        QTEST(encoded, "expected");
    }

    // Lengths of the block just below and above a further digit, and step numbers beyond 16 bits.
    void messagesOfRandomLists() {
        std::mt19937 random(1);
        std::uniform_real_distribution<double> number(0, 1000);
        const auto oneOf = [&random](std::initializer_list<const char*> words) {
            return words.begin()[random() % words.size()];
        };
        const auto time = {"ns", "\u00B5s", "ms", "s"};
        for (const int count : {1, 6, 7, 62, 63, 624, 625, 70000}) {
            Steps<list_point> list({});
            Steps<pattern_point> pattern({});
            for (int i = 0; i < count; ++i) {
                list.add(listStep(number(random), oneOf({"GHz", "MHz", "KHz", "Hz"}), number(random) - 500,
                                  number(random), oneOf(time), oneOf({"Run", "Wait", "run"})));
                pattern.add(patternStep(number(random), oneOf(time), number(random), oneOf(time), random()));
            }
            QVERIFY(StepWire::listMessage(list.steps) == referenceMessage(":LIST:DATA", list.steps));
            QVERIFY(StepWire::patternMessage(pattern.steps) == referenceMessage(":PATT:DATA", pattern.steps));
        }
    }

    // The records packed bit by bit are those that are built byte by byte.
    void bitPacking() {
        list_point step = listStep(2.4, "GHz", -10.5, 1.5, "ms", "Wait");
        QBitArray bits(8 * StepWire::ListStepSize);
        long position = 0;
        for (const auto& [value, width] :
             {std::pair(1L, 16), {2400000000000L, 48}, {-1050L, 16}, {1L, 1}, {1L, 7}, {1500L, 40}})
            setBit(value, bits, position, width);
        QCOMPARE(position, 128L);
        QCOMPARE(convertBitArrayToByteArray(bits).toHex(), SetListData(&step, 1, 1).toHex());
        QBitArray grown;
        position = 0;
        setBit(0x1FF, grown, position, 9);
        QCOMPARE(convertBitArrayToByteArray(grown).toHex(), QByteArray("ff01"));
        setBit(-1, grown, position, 70); // the sign goes on beyond the number's own bits
        QCOMPARE(grown.count(true), 79);
    }

    void conversations_data() {
        QTest::addColumn<Upload>("upload");
        QTest::addColumn<bool>("pulseRuns");
        QTest::addColumn<QByteArray>("refused"); // the beginning of what the module does not take
        QTest::addColumn<QString>("warning");
        QTest::addColumn<QByteArrayList>("lines");
        const QByteArray list = referenceMessage(":LIST:DATA", theList.steps).chopped(2);
        const QByteArray pattern = referenceMessage(":PATT:DATA", thePattern.steps).chopped(2);
        const QByteArrayList off{":PULS:STAT OFF", ":PATT:STAT OFF"};
        const QByteArrayList on{":PULS:STAT ON", ":PATT:STAT ON"};
        const QByteArrayList listLines{":SOUR:LIST:DEF 1,1e+08,5,0,0,0.0005", ":SOUR:LIST:DEF 2,1e+09,0,1,1,0.001"};
        const QByteArrayList patternLines{":PATT:DEF 1,8e-07,1e-06,1,0", ":PATT:DEF 2,0.001,1,9,1"};
        const auto row = [](const char* name, const Upload& upload, bool pulseRuns, const QByteArrayList& lines,
                            const char* refused = "", const char* warning = "") {
            addRow(name, upload, pulseRuns, QByteArray(refused), QString(warning), lines);
        };
        row("list", binaryList, false, {list});
        row("list, pulse runs", binaryList, true, off + QByteArrayList{list} + on);
        row("list, refused", binaryList, true, off + QByteArrayList{list} + on, ":LIST:DATA",
            "^Failed to send frequencies list$");
        row("pattern", binaryPattern, false, {pattern});
        row("pattern, pulse runs", binaryPattern, true, off + QByteArrayList{pattern, on.last()});
        row("pattern, refused", binaryPattern, true, off + QByteArrayList{pattern, on.last()}, ":PATT:DATA",
            "^Failed to send patterns list$");
        row("text list, pulse runs", textList, true, listLines);
        row("text list, first refused", textList, true, listLines.mid(0, 1), ":SOUR:LIST:DEF 1,",
            "^Failed to send frequency 0 in list$");
        row("text list, second refused", textList, true, listLines, ":SOUR:LIST:DEF 2,",
            "^Failed to send frequency 1 in list$");
        row("text pattern", textPattern, false, off + patternLines + on);
        row("text pattern, first refused", textPattern, false, off + patternLines.mid(0, 1) + on, ":PATT:DEF 1,",
            "^Failed to send pattern 0 list$");
    }

    void conversations() {
        QFETCH(Upload, upload);
        QFETCH(bool, pulseRuns);
        QFETCH(QByteArray, refused);
        QFETCH(QString, warning);
        HandlerFixture fixture;
        fixture.region.record().pulseState = pulseRuns ? 1 : 0;
        if (!refused.isEmpty()) {
            fixture.service.answer = [&](const QByteArray& line) -> QByteArray {
                return line.startsWith(refused) ? "-ERR 7\r\n" : "+OK\r\n";
            };
            expectMessage("write failed: -ERR 7");
            expectMessage(warning);
        }
        fixture.start();
        QCOMPARE(upload(*fixture.handler), refused.isEmpty() ? 0 : -1);
        QTEST(QByteArrayList(fixture.service.lines), "lines");
    }

    void nothingToSend() {
        std::vector<list_point*> list;
        std::vector<pattern_point*> pattern;
        HandlerFixture fixture;
        fixture.region.record().pulseState = 1;
        fixture.start();
        for (std::vector<list_point*>* steps : {&list, static_cast<std::vector<list_point*>*>(nullptr)})
            QVERIFY(fixture.handler->sendListDATAX(steps) == -1 && fixture.handler->sendStepsList(steps) == -1);
        for (std::vector<pattern_point*>* steps : {&pattern, static_cast<std::vector<pattern_point*>*>(nullptr)})
            QVERIFY(fixture.handler->sendPatternListDATAX(steps) == -1 &&
                    fixture.handler->sendPatternList(steps) == -1);
        QVERIFY(fixture.service.lines.isEmpty());
    }

    // A tap comes in while the module is asked to switch the pulse off, and deletes what is about to be sent.
    void stepsMayGoWhileTheUploadWaits() {
        for (const bool binary : {true, false}) {
            auto pattern = std::make_unique<Steps<pattern_point>>(Steps<pattern_point>{pattern_point(), {}});
            std::vector<pattern_point*> steps;
            for (pattern_point& point : pattern->points)
                steps.push_back(&point);
            const QByteArray block = referenceMessage(":PATT:DATA", steps).chopped(2);
            HandlerFixture fixture;
            fixture.region.record().pulseState = 1;
            fixture.service.answer = [&](const QByteArray&) -> QByteArray {
                steps.clear();
                pattern.reset();
                return "+OK\r\n";
            };
            fixture.start();
            EventHandler& handler = *fixture.handler;
            QCOMPARE(binary ? handler.sendPatternListDATAX(&steps) : handler.sendPatternList(&steps), 0);
            QCOMPARE(fixture.service.lines.at(2), binary ? block : QByteArray(":PATT:DEF 1,8e-07,8e-07,1,0"));
        }
    }
};

VELDA_TEST_MAIN(QCoreApplication, TestStepUpload)

#include "tst_step_upload.moc"
