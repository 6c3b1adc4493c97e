#include "common/wire/step_encoding.h"
#include "tests/common/instrument/handlerfixture.h"
#include "tests/support/testbase.h"

#include <deque>
#include <functional>
#include <limits>

using Upload = std::function<int(EventHandler&)>;
Q_DECLARE_METATYPE(Upload)

namespace {

constexpr double Huge = std::numeric_limits<double>::max();
constexpr double Nan = std::numeric_limits<double>::quiet_NaN();

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
        addColumns<QByteArray, QByteArray>("encoded", "expected");
        const auto list = [](const char* name, list_point step, const char* hex) {
            addRow(name, SetListData(&step, step.last, step.advance != "Run").toHex(), QByteArray(hex).replace(' ', ""));
        };
        list("waits, last", listStep(100, "MHz", 5.008, 500, "\u00B5s", "Wait", true), "0100 00e876481700 f401 03 f401000000");
        list("power and ns truncated", listStep(1, "KHz", -0.019, 999, "ns"), "0100 40420f000000 ffff 00 0000000000");
        list("decimal numbers", listStep(4.35, "KHz", 4.35, 1.001, "ms"), "0100 306042000000 b301 00 e903000000");
        list("decimal numbers below 0", listStep(0.001, "Hz", -0.29, 0.000001, "s"), "0100 010000000000 e3ff 00 0100000000");
        list("a little less", listStep(1.0009999999999997, "Hz", 0.28999999999999998, 1999.9999999999998, "ns"), "0100 e80300000000 1d00 00 0100000000");
        list("unknown units are the smallest", listStep(7, "kHz", 0, 2000, "us"), "0100 581b00000000 0000 00 0200000000");
        list("beyond any integer", listStep(Huge, "GHz", Huge, Huge, "s"), "0100 ffffffffffff ffff 00 ffffffffff");
        list("below any integer", listStep(-Huge, "GHz", -Huge, -1, "s"), "0100 000000000000 0000 00 0000000000");
        list("no numbers", listStep(Nan, "GHz", Nan, Nan, "s"), "0100 000000000000 0000 00 0000000000");
        const auto pattern = [](const char* name, pattern_point step, const char* hex) {
            addRow(name, SetPattData(&step).toHex(), QByteArray(hex).replace(' ', ""));
        };
        pattern("off time first", patternStep(800, "ns", 1, "\u00B5s"), "0100 0100 e803000000000000 2003000000000000");
        pattern("many digits", patternStep(12345678.123456789, "s", 9007199254.740993, "s"), "0100 0100 e80300000000007d 16590f2f54dc2b00");
        pattern("out of range", patternStep(Huge, "s", -Huge, "s"), "0100 0100 0000000000000080 ffffffffffffff7f");
        const auto text = [](const std::string& encoded, const char* expected) {
            addRow(expected, QByteArray::fromStdString(encoded), QByteArray(expected));
        };
        text(StepWire::listCommand(listStep(2.4, "GHz", -10.25, 500, "\u00B5s", "Wait", true)), ":SOUR:LIST:DEF 1,2.4e+09,-10.25,1,1,0.0005");
        text(StepWire::listCommand(listStep(150, "KHz", 0, 20, "ms")), ":SOUR:LIST:DEF 1,150,0,0,0,0.02"); // as it stands
        text(StepWire::listCommand(listStep(123456789, "Hz", 1.23456789, 1, "s")), ":SOUR:LIST:DEF 1,1.23457e+08,1.23457,0,0,1");
        text(StepWire::patternCommand(patternStep(800, "ns", 1, "\u00B5s", 7)), ":PATT:DEF 1,8e-07,1e-06,7,0");
        text(StepWire::patternCommand(patternStep(3, "ms", 2, "s", 4000000000U, true)), ":PATT:DEF 1,0.003,2,4000000000,1");
        // clang-format on
    }

    void encoded() {
        QFETCH(QByteArray, encoded);
        QTEST(encoded, "expected");
    }

    // Lengths of the block just below and above a further digit, and step numbers beyond 16 bits.
    void messagesOfManySteps() {
        for (const unsigned count : {1U, 6U, 7U, 62U, 63U, 624U, 625U, 70000U}) {
            Steps<list_point> list({});
            QByteArray records;
            for (unsigned i = 0; i < count; ++i) {
                list.add(listStep(i, "MHz", -0.5 * i, i, "ms", i % 3 == 0 ? "Run" : "Wait"));
                records += SetListData(list.steps.back(), i == count - 1, i % 3 != 0);
            }
            const QByteArray length = QByteArray::number(records.size());
            const QByteArray head = ":LIST:DATA #" + QByteArray::number(length.size()) + length;
            QVERIFY(StepWire::listMessage(list.steps) == head + records + "\r\n");
        }
        QCOMPARE(StepWire::patternMessage(thePattern.steps),
                 ":PATT:DATA #240" + SetPattData(thePattern.steps[0]) + SetPattData(thePattern.steps[1]) + "\r\n");
    }

    void conversations_data() {
        // "refused" is the beginning of what the module does not take
        addColumns<Upload, bool, QByteArray>("upload", "pulseRuns", "refused");
        addColumns<QString, QByteArrayList>("warning", "lines");
        const QByteArray list = StepWire::listMessage(theList.steps).chopped(2);
        const QByteArray pattern = StepWire::patternMessage(thePattern.steps).chopped(2);
        const QByteArrayList off{":PULS:STAT OFF", ":PATT:STAT OFF"};
        const QByteArrayList on{":PULS:STAT ON", ":PATT:STAT ON"};
        const QByteArrayList listLines{":SOUR:LIST:DEF 1,1e+08,5,0,0,0.0005", ":SOUR:LIST:DEF 2,1e+09,0,1,1,0.001"};
        const QByteArrayList patternLines{":PATT:DEF 1,8e-07,1e-06,1,0", ":PATT:DEF 2,0.001,1,9,1"};
        const auto row = [](const char* name, const Upload& upload, bool pulseRuns, const QByteArrayList& lines,
                            const char* refused = "", const char* warning = "") {
            addRow(name, upload, pulseRuns, QByteArray(refused), QString(warning), lines);
        };
        row("list, pulse runs", binaryList, true, off + QByteArrayList{list} + on);
        row("list, refused", binaryList, true, off + QByteArrayList{list} + on, ":LIST:DATA",
            "^Failed to send frequencies list$");
        row("pattern, pulse runs", binaryPattern, true, off + QByteArrayList{pattern, on.last()});
        row("text list, pulse runs", textList, true, listLines);
        row("text list, second refused", textList, true, listLines, ":SOUR:LIST:DEF 2,",
            "^Failed to send frequency 1 in list$");
        row("text pattern", textPattern, false, off + patternLines + on);
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

    // A tap comes in while the module is asked to switch the pulse off, and deletes what is about to be sent.
    void stepsMayGoWhileTheUploadWaits() {
        auto pattern = std::make_unique<Steps<pattern_point>>(Steps<pattern_point>{pattern_point(), {}});
        std::vector<pattern_point*> steps;
        for (pattern_point& point : pattern->points)
            steps.push_back(&point);
        const QByteArray block = StepWire::patternMessage(steps).chopped(2);
        HandlerFixture fixture;
        fixture.region.record().pulseState = 1;
        fixture.service.answer = [&](const QByteArray&) -> QByteArray {
            steps.clear();
            pattern.reset();
            return "+OK\r\n";
        };
        fixture.start();
        QCOMPARE(fixture.handler->sendPatternListDATAX(&steps), 0);
        QCOMPARE(fixture.service.lines.at(2), block);
    }
};

VELDA_TEST_MAIN(QCoreApplication, TestStepUpload)

#include "tst_step_upload.moc"
