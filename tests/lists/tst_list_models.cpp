#include "tests/lists/steplist.h"
#include "tests/support/testbase.h"

/// Both kinds of list as tables: what cells show, what an editor is given, what an edit does.
class TestListModels : public TestBase {
    Q_OBJECT

private slots:
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
            QTest::addRow("%d %s %s", ++number, text, unit) << isPattern << cellRow << column << text << unit << result;
        };
        const auto list = [&](auto... cell) { row(false, 1, cell...); };
        const auto pattern = [&](auto... cell) { row(true, 1, cell...); };
        row(false, 3, 1, "1", "MHz", "!Invalid list cell");
        list(1, "2400", "MHz", "2.4 GHz");
        list(1, "8.999", "KHz", "!Frequency is outside the valid range");
        list(1, "6", "GHz", "6 GHz");
        list(1, "6.000000001", "GHz", "!Frequency is outside the valid range");
        list(1, "1,5", "GHz", "!Invalid numeric value");
        list(2, "20.01", "dBm", "!Power is outside the valid range");
        list(2, "0", "mV", "!Power is outside the valid range");
        list(2, "nan", "dBm", "!Power is outside the valid range");
        list(3, "999", "ns", "!Dwell time is outside the valid range");
        list(3, "10001", "ms", "!Dwell time is outside the valid range");
        list(4, "Wait", "", "Wait");
        pattern(2, "2500", "\u00B5s", "2.5 ms");
        pattern(2, "10.1", "s", "!Pattern time is outside the valid range");
        pattern(3, "2.5", "K", "2500");
        pattern(3, "0.9", "", "!Repetition count is outside the valid range");
        pattern(3, "10001", "", "!Repetition count is outside the valid range");
        pattern(3, "4294967297", "", "!Repetition count is outside the valid range"); // 1, were it cut to 32 bits
        // clang-format on
    }

    void edits() {
        QFETCH(bool, isPattern);
        QFETCH(int, row);
        QFETCH(int, column);
        QFETCH(QString, text);
        QFETCH(QString, unit);
        QFETCH(QString, result);
        BothSteps both{3};
        IListConfig& model = both.of(isPattern);
        ListEditRequest request;
        request.row = row;
        request.column = column;
        QStringList rows = both.text(isPattern).split(';');
        QString error;
        if (model.applyEdit(request, {text, unit}, error)) {
            QStringList cells = rows.at(1).split(',');
            cells[column] = result;
            rows[1] = cells.join(',');
            QCOMPARE(both.list.points[1]->powerUnit, std::string("dBm"));
        } else {
            QCOMPARE('!' + error, result);
        }
        QCOMPARE(both.text(isPattern), rows.join(';'));
    }

    // What the keyboard opens with: the very number, in its unit, never with an exponent.
    void requests_data() {
        QTest::addColumn<bool>("isPattern");
        QTest::addColumn<int>("column");
        QTest::addColumn<double>("value");
        QTest::addColumn<QString>("unit");
        QTest::addColumn<QString>("text");
        addRow("frequency", false, 1, 2.4, "GHz", "2.400000000000");
        addRow("frequency of many digits", false, 1, 1.2345678901234567, "GHz", "1.2345678901234567");
        addRow("power", false, 2, -10.5, "dBm", "-10.5");
        addRow("power of many digits", false, 2, 13.010299956639813, "dBm", "13.010299956639813");
        addRow("pattern time", true, 1, 12.345678, "ms", "12.345678");
        addRow("long pattern time", true, 2, 1234567.0, "ns", "1234567");
        addRow("short pattern time", true, 2, 0.00000125, "s", "0.00000125");
    }

    void requests() {
        QFETCH(bool, isPattern);
        QFETCH(int, column);
        QFETCH(double, value);
        QFETCH(QString, unit);
        BothSteps both{1};
        *both.list.points[0] = {1, value, unit.toStdString(), value, "dBm", value, "s", "Run", true};
        *both.pattern.points[0] = {1, value, unit.toStdString(), value, unit.toStdString(), 1, true};
        ListEditRequest request;
        QVERIFY(both.of(isPattern).getEditRequest(0, column, request));
        QTEST(request.text, "text");
        QCOMPARE(request.unit, unit);
        QCOMPARE(request.text.toDouble(), value);
    }

    // Steps as a file can bring them in, against the limits of the module.
    void problems() {
        FrequencySteps list(3);
        QCOMPARE(list.config.firstProblem(), QString());
        *list.points[1] = {2, 6000.001, "MHz", 20.001, "dBm", 0.9, "\u00B5s", "Run", false};
        QCOMPARE(list.config.firstProblem(), QString("Step 2: Frequency is outside the valid range"));
        QCOMPARE(list.config.cellProblem(1, 2), QString("Power is outside the valid range"));
        QCOMPARE(list.config.cellProblem(1, 3), QString("Dwell time is outside the valid range"));
        *list.points[1] = {2, 6, "GHz", -120, "dBm", 10, "s", "Go", false};
        QCOMPARE(list.config.firstProblem(), QString());
        *list.points[2] = {3, -5, "GHz", 300, "dBm", -1, "s", "Run", true};
        // Neither a pair of zeros nor one the wrong way round limits anything.
        list.config.setLimits({0, 0, 0, 20, -120, 0, 0, 0, 0});
        QCOMPARE(list.config.firstProblem(), QString());
        PatternSteps pattern;
        *pattern.points[0] = {1, 10, "ns", 10.1, "s", 10001, true};
        QCOMPARE(pattern.config.firstProblem(), QString("Step 1: Pattern time is outside the valid range"));
        QCOMPARE(pattern.config.cellProblem(0, 3), QString("Repetition count is outside the valid range"));
        QCOMPARE(pattern.config.cellProblem(0, 1) + pattern.config.cellProblem(0, 0), QString());
    }

    void sequence() {
        for (const bool isPattern : {false, true}) {
            BothSteps both{3};
            IListConfig& model = both.of(isPattern);
            QString error;
            for (int row : {-1, 3}) {
                QVERIFY(!model.deleteRow(row, error));
                QCOMPARE(error, QString(isPattern ? "Select a valid pattern row" : "Select a valid list row"));
            }
            both.list.points[1]->power = -7;
            both.pattern.points[1]->loops = 9;
            QVERIFY(model.deleteRow(0, error) && model.addDefault(error) && both.isNumbered());
            QCOMPARE(model.cellText(0, isPattern ? 3 : 2), QString(isPattern ? "9" : "-7 dBm"));
            QVERIFY(model.deleteRow(2, error) && model.deleteRow(1, error) && both.isNumbered());
            QVERIFY(!model.deleteRow(0, error));
            QCOMPARE(error, QString(isPattern ? "A pattern must contain at least one step"
                                              : "A list must contain at least one step"));
            QVERIFY(model.addDefault(error) && model.clearAndCreateDefault(error) && both.isNumbered());
            QCOMPARE(both.text(isPattern),
                     QString(isPattern ? "1,800 ns,800 ns,3" : "1,100 MHz,5 dBm,500 \u00B5s,Run"));
        }
    }
};

VELDA_TEST_MAIN(QCoreApplication, TestListModels)

#include "tst_list_models.moc"
