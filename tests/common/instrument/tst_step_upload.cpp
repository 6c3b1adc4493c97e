#include <cmath>
#include <functional>
#include <limits>
#include <memory>
#include <random>

#include "common/instrument/step_encoding.h"
#include "tests/common/instrument/handlerfixture.h"
#include "tests/support/testbase.h"

using Upload = std::function<int(EventHandler&)>;
Q_DECLARE_METATYPE(list_point)
Q_DECLARE_METATYPE(pattern_point)
Q_DECLARE_METATYPE(Upload)

namespace {

constexpr double kHuge = std::numeric_limits<double>::max();
constexpr double kNan = std::numeric_limits<double>::quiet_NaN();

// A list that owns its steps.
template <typename Point>
class Steps {
public:
    explicit Steps(std::initializer_list<Point> points) {
        for (const Point& point : points)
            add(point);
    }

    void add(const Point& point) {
        m_owned.push_back(std::make_unique<Point>(point));
        steps.push_back(m_owned.back().get());
        steps.back()->stepNumber = static_cast<std::uint32_t>(steps.size());
    }

    std::vector<Point*> steps;

private:
    std::vector<std::unique_ptr<Point>> m_owned;
};

list_point listStep(double frequency, const char* frequencyUnit, double power, double dwell, const char* dwellUnit,
                    const char* advance = "Run") {
    return {1, frequency, frequencyUnit, power, "dBm", dwell, dwellUnit, advance, false};
}

pattern_point patternStep(double on, const char* onUnit, double off, const char* offUnit, std::uint32_t loops = 1) {
    return {1, on, onUnit, off, offUnit, loops, false};
}

// A second encoder, in other words: decimal powers by unit, bytes by division.
QByteArray lowBytes(quint64 value, int count) {
    QByteArray bytes;
    for (int i = 0; i < count; ++i, value /= 256)
        bytes += static_cast<char>(value % 256);
    return bytes;
}

double scaled(double value, const std::string& unit, std::initializer_list<std::pair<const char*, double>> factors) {
    for (const auto& [name, factor] : factors) {
        if (unit == name)
            return std::trunc(value * factor);
    }
    qFatal("no such unit");
}

QByteArray referenceRecord(const list_point& s, bool last) {
    const double millihertz =
        scaled(s.frequency, s.frequencyUnit, {{"GHz", 1e12}, {"MHz", 1e9}, {"KHz", 1e6}, {"Hz", 1000}});
    const double micros = scaled(s.dwell, s.dwellUnit, {{"ns", 0.001}, {"\u00B5s", 1}, {"ms", 1000}, {"s", 1e6}});
    const auto hundredths = static_cast<qint64>(s.power * 100);
    return lowBytes(s.stepNumber, 2) + lowBytes(static_cast<quint64>(millihertz), 6) +
           lowBytes(static_cast<quint64>(hundredths), 2) + lowBytes((last ? 1 : 0) + (s.advance == "Run" ? 0 : 2), 1) +
           lowBytes(static_cast<quint64>(micros), 5);
}

QByteArray referenceRecord(const pattern_point& s, bool) {
    const auto nanos = [](double value, const std::string& unit) {
        return static_cast<quint64>(scaled(value, unit, {{"ns", 1}, {"\u00B5s", 1000}, {"ms", 1e6}, {"s", 1e9}}));
    };
    return lowBytes(s.stepNumber, 2) + lowBytes(s.loops, 2) + lowBytes(nanos(s.offTime, s.offTimeUnit), 8) +
           lowBytes(nanos(s.onTime, s.onTimeUnit), 8);
}

template <typename Point>
QByteArray referenceMessage(const char* header, const std::vector<Point*>& steps) {
    QByteArray records;
    for (const Point* step : steps)
        records += referenceRecord(*step, step == steps.back());
    const QByteArray length = QByteArray::number(records.size());
    return header + QByteArray(" #") + QByteArray::number(length.size()) + length + records + "\r\n";
}

const char* oneOf(std::mt19937& random, std::initializer_list<const char*> words) {
    return words.begin()[random() % words.size()];
}

} // namespace

/// The bytes and texts that lists and patterns become, and the conversation in which they are sent.
class TestStepUpload : public TestBase {
    Q_OBJECT

private slots:
    void listRecords_data() {
        // clang-format off
        QTest::addColumn<list_point>("step");
        QTest::addColumn<bool>("last");
        QTest::addColumn<QByteArray>("hex");
        const auto row = [](const char* name, const list_point& step, bool last, const char* hex) {
            QTest::newRow(name) << step << last << QByteArray(hex);
        };
        row("a new step, last", list_point(), true, "0100 00e876481700 f401 01 f401000000");
        row("waits", listStep(100, "MHz", 5, 500, "\u00B5s", "Wait"), false, "0100 00e876481700 f401 02 f401000000");
        row("waits, last", listStep(100, "MHz", 5, 500, "\u00B5s", "Wait"), true, "0100 00e876481700 f401 03 f401000000");
        row("an unknown advance waits", listStep(1, "Hz", 0, 1, "s", "run"), false, "0100 e80300000000 0000 02 40420f0000");
        row("GHz, negative power, ms", listStep(2.4, "GHz", -10.5, 1.5, "ms"), false, "0100 00c025cb2e02 e6fb 00 dc05000000");
        row("KHz, ns truncated", listStep(1, "KHz", 0, 999, "ns"), false, "0100 40420f000000 0000 00 0000000000");
        row("power truncated toward zero", listStep(0, "Hz", -0.019, 1000, "ns"), false, "0100 000000000000 ffff 00 0100000000");
        row("unknown units are the smallest", listStep(7, "kHz", 0, 2000, "us"), false, "0100 581b00000000 0000 00 0200000000");
        row("empty units", listStep(7, "", 0, 2000, ""), false, "0100 581b00000000 0000 00 0200000000");
        row("units with a tail", listStep(7, "GHzz", 0, 2000, "sss"), false, "0100 581b00000000 0000 00 0200000000");
        row("beyond any integer", listStep(kHuge, "GHz", kHuge, kHuge, "s"), false, "0100 ffffffffffff ffff 00 ffffffffff");
        row("below any integer", listStep(-kHuge, "GHz", -kHuge, -1, "s"), false, "0100 000000000000 0000 00 0000000000");
        row("no numbers", listStep(kNan, "GHz", kNan, kNan, "s"), false, "0100 000000000000 0000 00 0000000000");
        // clang-format on
    }

    void listRecords() {
        QFETCH(list_point, step);
        QFETCH(bool, last);
        QFETCH(QByteArray, hex);
        QCOMPARE(SetListData(&step, last, step.advance != "Run").toHex(), hex.replace(' ', ""));
    }

    void patternRecords_data() {
        // clang-format off
        QTest::addColumn<pattern_point>("step");
        QTest::addColumn<QByteArray>("hex");
        QTest::newRow("off time first") << patternStep(800, "ns", 1, "\u00B5s") << QByteArray("0100 0100 e803000000000000 2003000000000000");
        QTest::newRow("ms, s, loops cut") << patternStep(1.5, "ms", 2, "s", 65536 + 258) << QByteArray("0100 0201 0094357700000000 60e3160000000000");
        QTest::newRow("signed, truncated") << patternStep(-1.9, "ns", 0.9999, "\u00B5s") << QByteArray("0100 0100 e703000000000000 ffffffffffffffff");
        QTest::newRow("out of range") << patternStep(kHuge, "s", -kHuge, "s") << QByteArray("0100 0100 0000000000000080 ffffffffffffff7f");
        // clang-format on
    }

    void patternRecords() {
        QFETCH(pattern_point, step);
        QFETCH(QByteArray, hex);
        QCOMPARE(SetPattData(&step).toHex(), hex.replace(' ', ""));
    }

    void messagesOfRandomLists_data() {
        QTest::addColumn<int>("count");
        // Lengths of the block just below and above a further digit, and step numbers beyond 16 bits.
        for (int count : {1, 6, 7, 62, 63, 624, 625, 5000, 70000})
            QTest::addRow("%d steps", count) << count;
    }

    void messagesOfRandomLists() {
        QFETCH(int, count);
        std::mt19937 random(static_cast<unsigned>(count));
        std::uniform_real_distribution<double> number(0, 1000);
        Steps<list_point> list({});
        Steps<pattern_point> pattern({});
        for (int i = 0; i < count; ++i) {
            list.add(listStep(number(random), oneOf(random, {"GHz", "MHz", "KHz", "Hz"}), number(random) - 500,
                              number(random), oneOf(random, {"ns", "\u00B5s", "ms", "s"}),
                              oneOf(random, {"Run", "Wait"})));
            pattern.add(patternStep(number(random), oneOf(random, {"ns", "\u00B5s", "ms", "s"}), number(random),
                                    oneOf(random, {"ns", "\u00B5s", "ms", "s"}), random()));
        }
        QVERIFY(StepWire::listMessage(list.steps) == referenceMessage(":LIST:DATA", list.steps));
        QVERIFY(StepWire::patternMessage(pattern.steps) == referenceMessage(":PATT:DATA", pattern.steps));
    }

    void textCommands_data() {
        // clang-format off
        QTest::addColumn<QByteArray>("command");
        QTest::addColumn<QByteArray>("expected");
        const auto list = [](const char* name, list_point step, const char* expected, bool last = false) {
            step.last = last;
            QTest::newRow(name) << QByteArray::fromStdString(StepWire::listCommand(step)) << QByteArray(expected);
        };
        list("MHz", listStep(100, "MHz", 5, 500, "\u00B5s"), ":SOUR:LIST:DEF 1,1e+08,5,0,0,0.0005");
        list("GHz, last, waits", listStep(2.4, "GHz", -10.25, 2, "s", "Wait"), ":SOUR:LIST:DEF 1,2.4e+09,-10.25,1,1,2", true);
        list("KHz goes out as it stands", listStep(150, "KHz", 0, 20, "ms"), ":SOUR:LIST:DEF 1,150,0,0,0,0.02");
        list("Kz", listStep(150, "Kz", 0, 20, "ns"), ":SOUR:LIST:DEF 1,150000,0,0,0,2e-08");
        list("six digits", listStep(123456789, "Hz", 1.23456789, 1, "s"), ":SOUR:LIST:DEF 1,1.23457e+08,1.23457,0,0,1");
        const auto pattern = [](const char* name, pattern_point step, const char* expected, bool last = false) {
            step.last = last;
            QTest::newRow(name) << QByteArray::fromStdString(StepWire::patternCommand(step)) << QByteArray(expected);
        };
        pattern("on time first", patternStep(800, "ns", 1, "\u00B5s", 7), ":PATT:DEF 1,8e-07,1e-06,7,0");
        pattern("last", patternStep(3, "ms", 2, "s", 4000000000U), ":PATT:DEF 1,0.003,2,4000000000,1", true);
        // clang-format on
    }

    void textCommands() {
        QFETCH(QByteArray, command);
        QFETCH(QByteArray, expected);
        QCOMPARE(command, expected);
    }

    void digits_data() {
        QTest::addColumn<qlonglong>("number");
        QTest::addColumn<qlonglong>("count");
        QTest::newRow("0") << 0LL << 1LL;
        QTest::newRow("9") << 9LL << 1LL;
        QTest::newRow("10") << 10LL << 2LL;
        QTest::newRow("-100") << -100LL << 3LL;
        QTest::newRow("least") << std::numeric_limits<qlonglong>::min() << 19LL;
        QTest::newRow("most") << std::numeric_limits<qlonglong>::max() << 19LL;
    }

    void digits() {
        QFETCH(qlonglong, number);
        QFETCH(qlonglong, count);
        QCOMPARE(qlonglong{countDigit(number)}, count);
    }

    // The records packed bit by bit are those that are built byte by byte.
    void bitPacking() {
        list_point step = listStep(2.4, "GHz", -10.5, 1.5, "ms", "Wait");
        QBitArray bits(8 * StepWire::ListStepSize);
        long position = 0;
        setBit(1, bits, position, 16);
        setBit(2400000000000L, bits, position, 48);
        setBit(-1050, bits, position, 16);
        setBit(1, bits, position, 1);
        setBit(1, bits, position, 7);
        setBit(1500, bits, position, 40);
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
        // clang-format off
        QTest::addColumn<Upload>("upload");
        QTest::addColumn<bool>("pulseRuns");
        QTest::addColumn<QList<QByteArray>>("lines");
        static Steps<list_point> list{listStep(100, "MHz", 5, 500, "\u00B5s"), listStep(1, "GHz", 0, 1, "ms", "Wait")};
        static Steps<pattern_point> pattern{patternStep(800, "ns", 1, "\u00B5s"), patternStep(1, "ms", 1, "s", 9)};
        const Upload binaryList = [](EventHandler& h) {
            return h.sendListDATAX(&list.steps);
        };
        const Upload binaryPattern = [](EventHandler& h) {
            return h.sendPatternListDATAX(&pattern.steps);
        };
        const Upload textList = [](EventHandler& h) {
            return h.sendStepsList(&list.steps);
        };
        const Upload textPattern = [](EventHandler& h) {
            return h.sendPatternList(&pattern.steps);
        };
        const QByteArray listBlock = referenceMessage(":LIST:DATA", list.steps).chopped(2);
        const QByteArray patternBlock = referenceMessage(":PATT:DATA", pattern.steps).chopped(2);
        const QByteArray pulseOff = ":PULS:STAT OFF", pulseOn = ":PULS:STAT ON";
        const QByteArray patternOff = ":PATT:STAT OFF", patternOn = ":PATT:STAT ON";
        using Lines = QList<QByteArray>;
        QTest::newRow("binary list") << binaryList << false << Lines{listBlock};
        QTest::newRow("binary list, pulse runs") << binaryList << true << Lines{pulseOff, patternOff, listBlock, pulseOn, patternOn};
        QTest::newRow("binary pattern") << binaryPattern << false << Lines{patternBlock};
        QTest::newRow("binary pattern, pulse runs") << binaryPattern << true << Lines{pulseOff, patternOff, patternBlock, patternOn};
        const Lines listLines{":SOUR:LIST:DEF 1,1e+08,5,0,0,0.0005", ":SOUR:LIST:DEF 2,1e+09,0,1,1,0.001"};
        QTest::newRow("text list") << textList << false << listLines;
        QTest::newRow("text list, pulse runs") << textList << true << listLines;
        const Lines patternLines{pulseOff, patternOff, ":PATT:DEF 1,8e-07,1e-06,1,0", ":PATT:DEF 2,0.001,1,9,1",
                                 pulseOn,  patternOn};
        QTest::newRow("text pattern") << textPattern << false << patternLines;
        QTest::newRow("text pattern, pulse runs") << textPattern << true << patternLines;
        // clang-format on
    }

    void conversations() {
        QFETCH(Upload, upload);
        QFETCH(bool, pulseRuns);
        QFETCH(QList<QByteArray>, lines);
        HandlerFixture fixture;
        fixture.region.record().pulseState = pulseRuns ? 1 : 0;
        fixture.start();
        QCOMPARE(upload(*fixture.handler), 0);
        QCOMPARE(fixture.service.lines, lines);
    }

    void aRefusalIsLoggedAndEndsTheUpload_data() {
        QTest::addColumn<Upload>("upload");
        QTest::addColumn<QByteArray>("refused");
        QTest::addColumn<QString>("warning");
        QTest::addColumn<int>("steps");
        static Steps<list_point> list{list_point(), list_point(), list_point()};
        static Steps<pattern_point> pattern{pattern_point(), pattern_point(), pattern_point()};
        QTest::newRow("binary list") << Upload([](EventHandler& h) { return h.sendListDATAX(&list.steps); })
                                     << QByteArray(":LIST:DATA") << "^Failed to send frequencies list$" << 1;
        QTest::newRow("binary pattern") << Upload(
                                               [](EventHandler& h) { return h.sendPatternListDATAX(&pattern.steps); })
                                        << QByteArray(":PATT:DATA") << "^Failed to send patterns list$" << 1;
        QTest::newRow("text list") << Upload([](EventHandler& h) { return h.sendStepsList(&list.steps); })
                                   << QByteArray(":SOUR:LIST:DEF 2,") << "^Failed to send frequency 1 in list$" << 2;
        QTest::newRow("text pattern") << Upload([](EventHandler& h) { return h.sendPatternList(&pattern.steps); })
                                      << QByteArray(":PATT:DEF 2,") << "^Failed to send pattern 1 list$" << 2;
    }

    void aRefusalIsLoggedAndEndsTheUpload() {
        QFETCH(Upload, upload);
        QFETCH(QByteArray, refused);
        QFETCH(QString, warning);
        QFETCH(int, steps);
        HandlerFixture fixture;
        fixture.region.record().pulseState = 1;
        fixture.service.answer = [&](const QByteArray& line) -> QByteArray {
            return line.startsWith(refused) ? "-ERR 7\r\n" : "+OK\r\n";
        };
        fixture.start();
        expectMessage("write failed: -ERR 7");
        expectMessage(warning);
        QCOMPARE(upload(*fixture.handler), -1);
        int sent = 0;
        for (const QByteArray& line : fixture.service.lines)
            sent += line.contains(":STAT") ? 0 : 1;
        QCOMPARE(sent, steps);
        if (fixture.service.lines.first().startsWith(":PULS"))
            QCOMPARE(fixture.service.lines.last(), QByteArray(":PATT:STAT ON"));
    }

    void nothingToSend_data() {
        // clang-format off
        QTest::addColumn<Upload>("upload");
        static std::vector<list_point*> noList;
        static std::vector<pattern_point*> noPattern;
        QTest::newRow("binary list, null") << Upload([](EventHandler& h) { return h.sendListDATAX(nullptr); });
        QTest::newRow("binary list, empty") << Upload([](EventHandler& h) { return h.sendListDATAX(&noList); });
        QTest::newRow("binary pattern, null") << Upload([](EventHandler& h) { return h.sendPatternListDATAX(nullptr); });
        QTest::newRow("binary pattern, empty") << Upload([](EventHandler& h) { return h.sendPatternListDATAX(&noPattern); });
        QTest::newRow("text list, null") << Upload([](EventHandler& h) { return h.sendStepsList(nullptr); });
        QTest::newRow("text list, empty") << Upload([](EventHandler& h) { return h.sendStepsList(&noList); });
        QTest::newRow("text pattern, null") << Upload([](EventHandler& h) { return h.sendPatternList(nullptr); });
        QTest::newRow("text pattern, empty") << Upload([](EventHandler& h) { return h.sendPatternList(&noPattern); });
        // clang-format on
    }

    void nothingToSend() {
        QFETCH(Upload, upload);
        HandlerFixture fixture;
        fixture.region.record().pulseState = 1;
        fixture.start();
        QCOMPARE(upload(*fixture.handler), -1);
        QVERIFY(fixture.service.lines.isEmpty());
    }

    void stepsMayGoWhileTheUploadWaits_data() {
        QTest::addColumn<bool>("binary");
        QTest::newRow("binary") << true;
        QTest::newRow("text") << false;
    }

    // A tap comes in while the module is asked to switch the pulse off, and deletes what is about to be sent.
    void stepsMayGoWhileTheUploadWaits() {
        QFETCH(bool, binary);
        auto pattern =
            std::make_unique<Steps<pattern_point>>(std::initializer_list<pattern_point>{pattern_point(), {}});
        const QByteArray block = referenceMessage(":PATT:DATA", pattern->steps).chopped(2);
        std::vector<pattern_point*> steps = pattern->steps;
        HandlerFixture fixture;
        fixture.region.record().pulseState = 1;
        fixture.service.answer = [&](const QByteArray&) -> QByteArray {
            steps.clear();
            pattern.reset();
            return "+OK\r\n";
        };
        fixture.start();
        QCOMPARE(binary ? fixture.handler->sendPatternListDATAX(&steps) : fixture.handler->sendPatternList(&steps), 0);
        QCOMPARE(fixture.service.lines.at(2), binary ? block : QByteArray(":PATT:DEF 1,8e-07,8e-07,1,0"));
    }
};

VELDA_TEST_MAIN(QCoreApplication, TestStepUpload)

#include "tst_step_upload.moc"
