#include "tests/lists/steplist.h"
#include "tests/support/testbase.h"

#include <QJsonDocument>

namespace {

QJsonArray parsed(const char* text) {
    const QJsonDocument document = QJsonDocument::fromJson(QByteArray(text).replace('\'', '"'));
    if (!document.isArray())
        qFatal("no JSON array: %s", text);
    return document.array();
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
    }

    void reading_data() {
        // clang-format off
        QTest::addColumn<bool>("isPattern");
        QTest::addColumn<QJsonArray>("steps");
        QTest::addColumn<QString>("result"); // all cells, or the sentence behind a "!"
        const auto list = [](const char* name, const char* steps, const char* result) {
            addRow(name, false, parsed(steps), QString(result));
        };
        list("empty", "[]", "!List file contains no steps");
        list("strangers are skipped", "[1,{'Frequency':7},'x']", "1,7 Hz,0 dBm,0 ns,Run");
        list("renumbered", "[{'Comment':[1],'StepNumber':7,'Last':1},{'StepNumber':3,'Last':true},{'StepNumber':9}]",
             "1,0 Hz,0 dBm,0 ns,Run;2,0 Hz,0 dBm,0 ns,Run;3,0 Hz,0 dBm,0 ns,Run");
        list("power to dBm", "[{'Power':1000,'PowerUnits':'mV'}]", "1,0 Hz,13.0103 dBm,0 ns,Run");
        list("one power of 0 mV refuses all", "[{'Power':1},{'Power':0,'PowerUnits':'mV'},{}]", "!List file contains an invalid power value");
        list("members of other types", "[{'Frequency':'x','DwellTime':[],'FreqUnits':7,'Advance':{}}]", "1,0 Hz,0 dBm,0 ns,");
        const auto pattern = [](const char* name, const char* steps, const char* result) {
            addRow(name, true, parsed(steps), QString(result));
        };
        pattern("pattern", "[{'OnTime':1,'OnTimeTimeUnits':'ms','OffTime':2,'OffTimeTimeUnits':'s','Loops':9}]", "1,1 ms,2 s,9");
        pattern("loops of no count",
                "[{'Loops':0},{'Loops':-5},{'Loops':1.5},{'Loops':'7'},{'Loops':2147483647},{'Loops':2147483648}]",
                "1,0 ns,0 ns,0;2,0 ns,0 ns,0;3,0 ns,0 ns,1;4,0 ns,0 ns,1;5,0 ns,0 ns,2147483647;6,0 ns,0 ns,1");
        // clang-format on
    }

    void reading() {
        QFETCH(bool, isPattern);
        QFETCH(QJsonArray, steps);
        QFETCH(QString, result);
        BothSteps both(2);
        IListConfig& model = both.of(isPattern);
        const QString before = both.text(isPattern);
        QString error;
        if (model.fromJson(steps, error)) {
            QCOMPARE(both.text(isPattern), result);
            QVERIFY(both.isNumbered());
            for (const list_point* point : both.list.points)
                QCOMPARE(point->powerUnit, std::string("dBm"));
        } else {
            QCOMPARE('!' + error, result);
            QCOMPARE(both.text(isPattern), before);
        }
    }
};

VELDA_TEST_MAIN(QCoreApplication, TestListJson)

#include "tst_list_json.moc"
