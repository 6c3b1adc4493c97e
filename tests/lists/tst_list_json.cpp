#include <QJsonDocument>
#include <random>

#include "tests/lists/steplist.h"
#include "tests/support/testbase.h"

namespace {

QJsonArray parsed(const char* text) {
    const QJsonDocument document = QJsonDocument::fromJson(QByteArray(text).replace('\'', '"'));
    if (!document.isArray())
        qFatal("no JSON array: %s", text);
    return document.array();
}

// A file as some other program lays it out: the members in another order, others between them.
QJsonArray withStrangers(const QJsonArray& steps) {
    QJsonArray changed;
    for (const QJsonValue step : steps) {
        if (!step.isObject()) {
            changed.append(step);
            continue;
        }
        QJsonObject object = step.toObject();
        for (const char* key : {"", "A", "Comment", "Offset", "Zero", "\u00E9"})
            object.insert(QString(key), QJsonArray{1, "x"});
        changed.append(object);
    }
    return changed;
}

} // namespace

/// Steps on their way to JSON and back.
class TestListJson : public TestBase {
    Q_OBJECT

private slots:
    void written() {
        FrequencySteps list(2);
        *list.points[0] = {1, 2.4, "GHz", 5, "dBm", 500, "\u00B5s", "Run", false};
        *list.points[1] = {2, 100, "MHz", -10, "dBm", 1, "ms", "Wait", true};
        QCOMPARE(
            list.config.toJson(),
            parsed("[{'StepNumber':1,'Frequency':2.4,'FreqUnits':'GHz','Power':5,'PowerUnits':'dBm','DwellTime':500,"
                   "'DwellUnits':'\u00B5s','Advance':'Run','Last':0},"
                   "{'StepNumber':2,'Frequency':100,'FreqUnits':'MHz','Power':-10,'PowerUnits':'dBm','DwellTime':1,"
                   "'DwellUnits':'ms','Advance':'Wait','Last':1}]"));
        PatternSteps pattern;
        *pattern.points[0] = {1, 800, "ns", 1.5, "ms", 4294967295U, true};
        QCOMPARE(pattern.config.toJson(), parsed("[{'StepNumber':1,'OnTime':800,'OnTimeTimeUnits':'ns','OffTime':1.5,"
                                                 "'OffTimeTimeUnits':'ms','Loops':4294967295,'Last':1}]"));
        QCOMPARE(
            QJsonDocument(pattern.config.toJson()).toJson(QJsonDocument::Compact),
            QByteArray("[{\"Last\":1,\"Loops\":4294967295,\"OffTime\":1.5,\"OffTimeTimeUnits\":\"ms\",\"OnTime\":800,"
                       "\"OnTimeTimeUnits\":\"ns\",\"StepNumber\":1}]"));
    }

    void reading_data() {
        // clang-format off
        QTest::addColumn<bool>("isPattern");
        QTest::addColumn<QJsonArray>("steps");
        QTest::addColumn<QString>("result"); // all cells, or the sentence behind a "!"
        const auto list = [](const char* name, const char* steps, const char* result) {
            QTest::newRow(name) << false << parsed(steps) << QString(result);
        };
        list("empty", "[]", "!List file contains no steps");
        list("numbers only", "[1,2,[],null,'x']", "!List file contains no valid steps");
        list("strangers are skipped", "[1,{'Frequency':7},'x']", "1,7 Hz,0 dBm,0 ns,Run");
        list("a step without members", "[{}]", "1,0 Hz,0 dBm,0 ns,Run");
        list("renumbered", "[{'StepNumber':7,'Last':1},{'StepNumber':3,'Last':true},{'StepNumber':9}]",
             "1,0 Hz,0 dBm,0 ns,Run;2,0 Hz,0 dBm,0 ns,Run;3,0 Hz,0 dBm,0 ns,Run");
        list("power to dBm", "[{'Power':1000,'PowerUnits':'mV'}]", "1,0 Hz,13.0103 dBm,0 ns,Run");
        list("one power of 0 mV refuses all", "[{'Power':1},{'Power':0,'PowerUnits':'mV'},{}]", "!List file contains an invalid power value");
        list("power without a known unit", "[{'Power':1,'PowerUnits':'W'}]", "!List file contains an invalid power value");
        list("power with a number for a unit", "[{'PowerUnits':5}]", "!List file contains an invalid power value");
        list("members of other types", "[{'Frequency':'x','DwellTime':[],'FreqUnits':7,'Advance':{}}]", "1,0 Hz,0 dBm,0 ns,");
        list("beyond the limits of edits", "[{'Frequency':9,'FreqUnits':'GHz','Power':99,'DwellTime':1,'DwellUnits':'ns'}]",
             "1,9 GHz,99 dBm,1 ns,Run");
        list("whole numbers and the second of two members", "[{'Frequency':1,'Frequency':3}]", "1,3 Hz,0 dBm,0 ns,Run");
        const auto pattern = [](const char* name, const char* steps, const char* result) {
            QTest::newRow(name) << true << parsed(steps) << QString(result);
        };
        pattern("pattern, empty", "[]", "!Pattern file contains no steps");
        pattern("pattern, numbers only", "[1]", "!Pattern file contains no valid steps");
        pattern("pattern, a step without members", "[{}]", "1,0 ns,0 ns,1");
        pattern("pattern", "[{'OnTime':1,'OnTimeTimeUnits':'ms','OffTime':2,'OffTimeTimeUnits':'s','Loops':9}]", "1,1 ms,2 s,9");
        pattern("loops of no count",
                "[{'Loops':0},{'Loops':-5},{'Loops':1.5},{'Loops':'7'},{'Loops':4294967295},{'Loops':4294967296}]",
                "1,0 ns,0 ns,0;2,0 ns,0 ns,0;3,0 ns,0 ns,1;4,0 ns,0 ns,1;5,0 ns,0 ns,4294967295;6,0 ns,0 ns,1");
        // clang-format on
    }

    void reading() {
        QFETCH(bool, isPattern);
        QFETCH(QJsonArray, steps);
        QFETCH(QString, result);
        FrequencySteps list(2);
        PatternSteps pattern(2);
        IListConfig& model = isPattern ? static_cast<IListConfig&>(pattern.config) : list.config;
        const auto text = [&] {
            return isPattern ? pattern.text() : list.text();
        };
        const QString before = text();
        QString error;
        if (model.fromJson(steps, error)) {
            QCOMPARE(text(), result);
            QVERIFY(list.isNumbered() && pattern.isNumbered());
            for (const list_point* point : list.points)
                QCOMPARE(point->powerUnit, std::string("dBm"));
            QVERIFY(model.fromJson(withStrangers(steps), error));
            QCOMPARE(text(), result);
        } else {
            QCOMPARE('!' + error, result);
            QCOMPARE(text(), before);
        }
    }

    void randomStepsComeBack() {
        std::mt19937 random(4);
        std::uniform_real_distribution<double> number(-1e6, 1e6);
        FrequencySteps list(600);
        PatternSteps pattern(600);
        for (list_point* point : list.points) {
            point->frequency = number(random);
            point->power = number(random);
            point->dwell = random() % 3 == 0 ? 0 : number(random);
            // More combinations of texts than are kept at a time.
            point->dwellUnit = random() % 2 == 0 ? "\u00B5s" : "unit " + std::to_string(random() % 400);
            point->frequencyUnit = random() % 2 == 0 ? "GHz" : "";
            point->advance = random() % 2 == 0 ? "Run" : "Wait";
        }
        for (pattern_point* point : pattern.points) {
            point->onTime = number(random);
            point->offTime = number(random);
            point->offTimeUnit = random() % 2 == 0 ? "s" : "ms";
            point->loops = static_cast<std::uint32_t>(random());
        }
        FrequencySteps list2;
        PatternSteps pattern2;
        QString error;
        const auto reparsed = [](const QJsonArray& steps) {
            return QJsonDocument::fromJson(QJsonDocument(steps).toJson()).array();
        };
        QVERIFY(list2.config.fromJson(reparsed(list.config.toJson()), error));
        QVERIFY(pattern2.config.fromJson(reparsed(pattern.config.toJson()), error));
        QCOMPARE(list2.points.size(), list.points.size());
        for (std::size_t i = 0; i < list.points.size(); ++i) {
            const list_point& a = *list.points[i];
            const list_point& b = *list2.points[i];
            QVERIFY(a.frequency == b.frequency && a.power == b.power && a.dwell == b.dwell && a.last == b.last &&
                    a.stepNumber == b.stepNumber);
            QCOMPARE(b.frequencyUnit, a.frequencyUnit);
            QCOMPARE(b.dwellUnit, a.dwellUnit);
            QCOMPARE(b.advance, a.advance);
        }
        QCOMPARE(pattern2.points.size(), pattern.points.size());
        for (std::size_t i = 0; i < pattern.points.size(); ++i) {
            const pattern_point& a = *pattern.points[i];
            const pattern_point& b = *pattern2.points[i];
            QVERIFY(a.onTime == b.onTime && a.offTime == b.offTime && a.loops == b.loops && a.last == b.last);
            QCOMPARE(b.onTimeUnit, a.onTimeUnit);
            QCOMPARE(b.offTimeUnit, a.offTimeUnit);
        }
    }
};

VELDA_TEST_MAIN(QCoreApplication, TestListJson)

#include "tst_list_json.moc"
