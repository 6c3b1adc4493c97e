#include <memory>

#include "tests/lists/steplist.h"
#include "tests/support/testbase.h"

namespace {

struct Both {
    FrequencySteps list{3};
    PatternSteps pattern{3};
    IListConfig& of(bool isPattern) {
        return isPattern ? static_cast<IListConfig&>(pattern.config) : static_cast<IListConfig&>(list.config);
    }
};

} // namespace

/// Both kinds of list as tables: what cells show, what an editor is given, what an edit does.
class TestListModels : public TestBase {
    Q_OBJECT

private slots:
    void columns_data() {
        QTest::addColumn<bool>("isPattern");
        QTest::addColumn<QString>("described"); // title/kind/editable
        QTest::newRow("list") << false << "Step/0/0 Frequency/1/1 Power/2/1 Dwell Time/3/0 Adv./5/1";
        QTest::newRow("pattern") << true << "Step/0/0 On Time/3/1 Off Time/3/1 Repetition/4/1";
    }

    void columns() {
        QFETCH(bool, isPattern);
        QFETCH(QString, described);
        Both both;
        const IListConfig& model = both.of(isPattern);
        QStringList found;
        for (int i = 0; i < model.columnCount(); ++i) {
            const ListColumn column = model.column(i);
            found << QString("%1/%2/%3").arg(column.title).arg(int(column.kind)).arg(int(column.editable));
            QCOMPARE(model.isCellEditable(2, i), column.editable);
            QVERIFY(!model.isCellEditable(3, i) && !model.isCellEditable(-1, i));
        }
        QCOMPARE(found.join(' '), described);
        for (int i : {-1, model.columnCount()}) {
            QVERIFY(model.column(i).title.isEmpty() && model.column(i).kind == ListColumnKind::Step);
            QVERIFY(!model.isCellEditable(0, i));
            QVERIFY(model.cellText(0, i).isEmpty());
        }
        QVERIFY(model.cellText(3, 0).isEmpty() && model.cellText(-1, 0).isEmpty());
        QCOMPARE(model.kind(), isPattern ? 1 : 0);
        QCOMPARE(model.jsonRootName(), QString(isPattern ? "VeldaPattern" : "VeldaList"));
    }

    void cellTexts_data() {
        // clang-format off
        QTest::addColumn<QString>("shown");
        QTest::addColumn<QString>("expected");
        const auto list = [](const char* name, const list_point& point, const char* expected) {
            FrequencySteps steps;
            *steps.points[0] = point;
            QTest::newRow(name) << steps.text() << QString(expected);
        };
        list("list, best units", {7, 2400000, "KHz", -10.5, "dBm", 1500, "\u00B5s", "Wait", false}, "7,2.4 GHz,-10.5 dBm,1.5 ms,Wait");
        list("list, the power's unit is not shown", {1, 0, "Hz", 13.01029996, "mV", 2000, "s", "Go", false}, "1,0 Hz,13.0103 dBm,2000 s,Go");
        const auto pattern = [](const char* name, const pattern_point& point, const char* expected) {
            PatternSteps steps;
            *steps.points[0] = point;
            QTest::newRow(name) << steps.text() << QString(expected);
        };
        pattern("pattern", {2, 999, "ns", 1000, "ns", 4000000000U, false}, "2,999 ns,1 \u00B5s,4000000000");
        // clang-format on
    }

    void cellTexts() {
        QFETCH(QString, shown);
        QFETCH(QString, expected);
        QCOMPARE(shown, expected);
    }

    void edits_data() {
        // clang-format off
        QTest::addColumn<bool>("isPattern");
        QTest::addColumn<int>("row");
        QTest::addColumn<int>("column");
        QTest::addColumn<QString>("text");
        QTest::addColumn<QString>("unit");
        QTest::addColumn<QString>("result"); // what the cell shows, or the sentence behind a "!"
        int number = 0;
        const auto row = [&](bool isPattern, int cellRow, int column, const char* text, const char* unit,
                             const char* result) {
            QTest::addRow("%d %s %s -> %s", ++number, text, unit, result) << isPattern << cellRow << column << text << unit << result;
        };
        const auto list = [&](int column, const char* text, const char* unit, const char* result) {
            row(false, 1, column, text, unit, result);
        };
        const auto pattern = [&](int column, const char* text, const char* unit, const char* result) {
            row(true, 1, column, text, unit, result);
        };
        row(false, 3, 1, "1", "MHz", "!Invalid list cell");
        row(false, -1, 1, "1", "MHz", "!Invalid list cell");
        list(0, "1", "", "!Invalid list cell");
        list(5, "1", "", "!Invalid list cell");
        list(-1, "1", "", "!Invalid list cell");
        list(1, "2400", "MHz", "2.4 GHz");
        list(1, " 9 ", "KHz", "9 KHz");
        list(1, "8.999", "KHz", "!Frequency is outside the valid range");
        list(1, "6", "GHz", "6 GHz");
        list(1, "6.000000001", "GHz", "!Frequency is outside the valid range");
        list(1, "1,5", "GHz", "!Invalid numeric value");
        list(2, "20", "dBm", "20 dBm");
        list(2, "20.01", "dBm", "!Power is outside the valid range");
        list(2, "-120.01", "dBm", "!Power is outside the valid range");
        list(2, "1000", "mV", "13.0103 dBm");
        list(2, "0", "mV", "!Power is outside the valid range");
        list(2, "1", "W", "!Power is outside the valid range");
        list(2, "nan", "dBm", "!Power is outside the valid range");
        list(3, "1", "\u00B5s", "1 \u00B5s");
        list(3, "999", "ns", "!Dwell time is outside the valid range");
        list(3, "10", "s", "10 s");
        list(3, "10001", "ms", "!Dwell time is outside the valid range");
        list(4, "Wait", "", "Wait");
        list(4, "Run", "Wait", "Run");
        list(4, "run", "", "!Advance must be Run or Wait");
        row(true, 3, 1, "1", "s", "!Invalid pattern cell");
        pattern(0, "1", "", "!Invalid pattern cell");
        pattern(4, "1", "", "!Invalid pattern cell");
        pattern(1, "x", "s", "!Invalid numeric value");
        pattern(1, "10", "ns", "10 ns");
        pattern(1, "9.9", "ns", "!Pattern time is outside the valid range");
        pattern(2, "2500", "\u00B5s", "2.5 ms");
        pattern(2, "10.1", "s", "!Pattern time is outside the valid range");
        pattern(3, "2.5", "K", "2500");
        pattern(3, "2.9", "", "2");
        pattern(3, "0.9", "", "!Repetition count is outside the valid range");
        pattern(3, "10", "K", "10000");
        pattern(3, "10001", "", "!Repetition count is outside the valid range");
        pattern(3, "4294967297", "", "!Repetition count is outside the valid range"); // 1, were it cut to 32 bits
        pattern(3, "nan", "", "!Repetition count is outside the valid range");
        pattern(3, "1e300", "K", "!Repetition count is outside the valid range");
        // clang-format on
    }

    void edits() {
        QFETCH(bool, isPattern);
        QFETCH(int, row);
        QFETCH(int, column);
        QFETCH(QString, text);
        QFETCH(QString, unit);
        QFETCH(QString, result);
        Both both;
        IListConfig& model = both.of(isPattern);
        ListEditRequest request;
        request.row = row;
        request.column = column;
        const QString listBefore = both.list.text();
        const QString patternBefore = both.pattern.text();
        QString error;
        if (model.applyEdit(request, {text, unit}, error)) {
            QCOMPARE(model.cellText(row, column), result);
            QCOMPARE(error, QString());
        } else {
            QCOMPARE('!' + error, result);
            QCOMPARE(both.list.text(), listBefore);
            QCOMPARE(both.pattern.text(), patternBefore);
        }
    }

    void editRequests_data() {
        QTest::addColumn<bool>("isPattern");
        QTest::addColumn<int>("column");
        QTest::addColumn<QString>("described"); // title|kind|text|unit|options|min|max|power range
        QTest::newRow("frequency") << false << 1 << "Frequency|1|1.500000000|MHz|GHz MHz KHz Hz|0|0|0";
        QTest::newRow("power") << false << 2 << "Power|2|-10.1235|dBm|dBm dB\u00B5V \u00B5V mV|-120|20|1";
        QTest::newRow("dwell") << false << 3 << "Dwell Time|3|1.500|\u00B5s|ns \u00B5s ms s|1000|1e+10|0";
        QTest::newRow("advance") << false << 4 << "Adv.|5|Wait|Wait|Run Wait|0|0|0";
        QTest::newRow("on time") << true << 1 << "On Time|3|1.23457|ms|ns \u00B5s ms s|0|0|0";
        QTest::newRow("off time") << true << 2 << "Off Time|3|250|ns|ns \u00B5s ms s|0|0|0";
        QTest::newRow("repetition") << true << 3 << "Repetition|4|7|| K|0|0|0";
    }

    void editRequests() {
        QFETCH(bool, isPattern);
        QFETCH(int, column);
        QFETCH(QString, described);
        Both both;
        both.list.config.setDwellEditable(true);
        *both.list.points[1] = {2, 1.5, "MHz", -10.12345, "dBm", 1.5, "\u00B5s", "Wait", false};
        *both.pattern.points[1] = {2, 1.234567, "ms", 250, "ns", 7, false};
        ListEditRequest r;
        QVERIFY(both.of(isPattern).getEditRequest(1, column, r));
        QCOMPARE(r.row, 1);
        QCOMPARE(r.column, column);
        QVERIFY(r.enabled);
        const QString text("%1|%2|%3|%4|%5|%6|%7|%8");
        QCOMPARE(text.arg(r.title)
                     .arg(int(r.kind))
                     .arg(r.text, r.unit, r.options.join(' '))
                     .arg(r.min)
                     .arg(r.max)
                     .arg(int(r.powerRange)),
                 described);
    }

    void requestsThatAreNotGranted() {
        struct Cell {
            bool isPattern;
            int row, column;
        };
        Both both; // a step's number, the fixed dwell, and no cell at all
        for (const auto& [isPattern, row, column] :
             {Cell{false, 0, 0}, {false, 0, 3}, {false, 3, 1}, {false, 0, 5}, {true, 0, 0}, {true, -1, 1}}) {
            ListEditRequest request;
            QVERIFY(!both.of(isPattern).getEditRequest(row, column, request));
            QCOMPARE(request.row, -1);
            QVERIFY(request.title.isEmpty());
        }
    }

    void anEditKeepsTheOtherCells() {
        FrequencySteps steps(2);
        ListEditRequest request;
        request.row = 1;
        request.column = 1;
        QString error;
        QVERIFY(steps.config.applyEdit(request, {"1", "GHz"}, error));
        QCOMPARE(steps.text(), QString("1,100 MHz,5 dBm,500 \u00B5s,Run;2,1 GHz,5 dBm,500 \u00B5s,Run"));
    }

    void limitsOfNothingLetZeroPass() {
        std::vector<list_point*> points{new list_point};
        FrequencyListConfig config(&points, {});
        config.setDwellEditable(true);
        for (int column : {1, 2, 3}) {
            ListEditRequest request;
            QVERIFY(config.getEditRequest(0, column, request));
            QString error;
            QVERIFY(!config.applyEdit(request, {"1", request.unit}, error));
            QVERIFY(config.applyEdit(request, {"0", request.unit}, error));
        }
        config.setLimits(kListLimits);
        QString error;
        ListEditRequest request;
        QVERIFY(config.getEditRequest(0, 1, request));
        QVERIFY(config.applyEdit(request, {"1", "GHz"}, error));
        config.destroyPoints();
        QVERIFY(points.empty());
    }

    void sequence_data() {
        QTest::addColumn<bool>("isPattern");
        QTest::newRow("list") << false;
        QTest::newRow("pattern") << true;
    }

    void sequence() {
        QFETCH(bool, isPattern);
        Both both;
        IListConfig& model = both.of(isPattern);
        const auto numbered = [&] {
            return both.list.isNumbered() && both.pattern.isNumbered();
        };
        const QString badRow = isPattern ? "Select a valid pattern row" : "Select a valid list row";
        QString error;
        QVERIFY(numbered());
        for (int row : {-1, 3}) {
            QVERIFY(!model.deleteRow(row, error));
            QCOMPARE(error, badRow);
        }
        both.list.points[1]->power = -7;
        both.pattern.points[1]->loops = 9;
        QVERIFY(model.deleteRow(0, error));
        QCOMPARE(model.rowCount(), 2);
        QVERIFY(numbered());
        QCOMPARE(model.cellText(0, isPattern ? 3 : 2), QString(isPattern ? "9" : "-7 dBm"));
        QVERIFY(model.addDefault(error));
        QVERIFY(numbered());
        QVERIFY(model.deleteRow(2, error) && model.deleteRow(1, error));
        QVERIFY(numbered());
        QVERIFY(!model.deleteRow(0, error));
        QCOMPARE(error, QString(isPattern ? "A pattern must contain at least one step"
                                          : "A list must contain at least one step"));
        QCOMPARE(model.rowCount(), 1);
        QVERIFY(model.addDefault(error) && model.clearAndCreateDefault(error));
        QCOMPARE(model.rowCount(), 1);
        QCOMPARE(model.cellText(0, isPattern ? 3 : 2), QString(isPattern ? "3" : "5 dBm"));
        QVERIFY(numbered());
    }

    void withoutStorage() {
        FrequencyListConfig list(nullptr, kListLimits);
        PatternListConfig pattern(nullptr, kPatternLimits);
        QString error;
        for (IListConfig* model : {static_cast<IListConfig*>(&list), static_cast<IListConfig*>(&pattern)}) {
            const QString sentence = model->kind() == 0 ? "Frequency list storage is not available"
                                                        : "Pattern list storage is not available";
            QString errors[3];
            QVERIFY(!model->addDefault(errors[0]));
            QVERIFY(!model->clearAndCreateDefault(errors[1]));
            QVERIFY(!model->fromJson({QJsonObject()}, errors[2]));
            for (const QString& each : errors)
                QCOMPARE(each, sentence);
            QVERIFY(!model->deleteRow(0, error));
            QCOMPARE(model->rowCount(), 0);
            QVERIFY(model->toJson().isEmpty());
            QVERIFY(model->cellText(0, 0).isEmpty());
        }
        list.destroyPoints();
        list.setFixedDwell(1, "s");
        QVERIFY(list.pointAt(0) == nullptr && list.points() == nullptr);
    }

    void newStepsAreTheFactorySteps() {
        FrequencySteps list;
        PatternSteps pattern;
        QCOMPARE(list.points[0]->frequency, 1e8);
        QCOMPARE(list.points[0]->frequencyUnit, std::string("Hz"));
        QCOMPARE(list.points[0]->dwellUnit, std::string("ns"));
        QCOMPARE(list.text(), QString("1,100 MHz,5 dBm,500 \u00B5s,Run"));
        QCOMPARE(pattern.points[0]->onTimeUnit, std::string("ns"));
        QCOMPARE(pattern.text(), QString("1,800 ns,800 ns,3"));
    }

    void fixedDwell() {
        FrequencySteps steps(3);
        steps.config.setFixedDwell(1500, "ms");
        for (const list_point* point : steps.points) {
            QCOMPARE(point->dwell, 1500.0);
            QCOMPARE(point->dwellUnit, std::string("ms"));
        }
        QVERIFY(!steps.config.dwellEditable());
        steps.config.setDwellEditable(true);
        QVERIFY(steps.config.isCellEditable(0, 3));
    }

    void aRequestTravelsInASignal() { QVERIFY(QMetaType::type("ListEditRequest") != QMetaType::UnknownType); }
};

VELDA_TEST_MAIN(QCoreApplication, TestListModels)

#include "tst_list_models.moc"
