#include "tests/lists/steplist.h"
#include "tests/support/testbase.h"

/// Both kinds of list as tables: what cells show, what an editor is given, what an edit does.
class TestListModels : public TestBase {
    Q_OBJECT

private slots:
    void columns_data() {
        // clang-format off
        QTest::addColumn<bool>("isPattern");
        QTest::addColumn<int>("column");
        QTest::addColumn<QString>("described"); // title|kind, and where it can be edited |text|unit|options|min|max|power range
        addRow("step", false, 0, "Step|0");
        addRow("frequency", false, 1, "Frequency|1|1.500000000|MHz|GHz MHz KHz Hz|0|0|0");
        addRow("power", false, 2, "Power|2|-10.1235|dBm|dBm dB\u00B5V \u00B5V mV|-120|20|1");
        addRow("dwell", false, 3, "Dwell Time|3|1.500|\u00B5s|ns \u00B5s ms s|1000|1e+10|0");
        addRow("advance", false, 4, "Adv.|5|Wait|Wait|Run Wait|0|0|0");
        addRow("pattern step", true, 0, "Step|0");
        addRow("on time", true, 1, "On Time|3|1.23457|ms|ns \u00B5s ms s|0|0|0");
        addRow("off time", true, 2, "Off Time|3|250|ns|ns \u00B5s ms s|0|0|0");
        addRow("repetition", true, 3, "Repetition|4|7|| K|0|0|0");
        // clang-format on
    }

    void columns() {
        QFETCH(bool, isPattern);
        QFETCH(int, column);
        QFETCH(QString, described);
        BothSteps both{3};
        both.list.config.setDwellEditable(true);
        *both.list.points[1] = {2, 1.5, "MHz", -10.12345, "dBm", 1.5, "\u00B5s", "Wait", false};
        *both.pattern.points[1] = {2, 1.234567, "ms", 250, "ns", 7, false};
        const IListConfig& model = both.of(isPattern);
        const ListColumn shown = model.column(column);
        QStringList found{shown.title, QString::number(int(shown.kind))};
        ListEditRequest r;
        if (model.getEditRequest(1, column, r)) {
            QVERIFY(r.title == shown.title && r.kind == shown.kind && r.row == 1 && r.column == column && r.enabled);
            found << r.text << r.unit << r.options.join(' ') << QString::number(r.min) << QString::number(r.max)
                  << QString::number(int(r.powerRange));
        }
        QCOMPARE(found.join('|'), described);
        QCOMPARE(r.row, shown.editable ? 1 : -1);
        QCOMPARE(model.isCellEditable(2, column), shown.editable);
        both.list.config.setDwellEditable(false);
        QCOMPARE(model.isCellEditable(2, column), shown.editable && shown.title != "Dwell Time");
    }

    void outsideTheTable() {
        BothSteps both{3};
        for (const bool isPattern : {false, true}) {
            const IListConfig& model = both.of(isPattern);
            const int columns = isPattern ? 4 : 5;
            QCOMPARE(model.columnCount(), columns);
            for (const auto& [row, column] : {std::pair(-1, 1), {3, 1}, {0, -1}, {0, columns}})
                QVERIFY(!model.isCellEditable(row, column) && model.cellText(row, column).isEmpty());
            for (const int column : {-1, columns})
                QVERIFY(model.column(column).title.isEmpty() && model.column(column).kind == ListColumnKind::Step);
            QCOMPARE(model.kind(), isPattern ? 1 : 0);
            QCOMPARE(model.jsonRootName(), QString(isPattern ? "VeldaPattern" : "VeldaList"));
        }
    }

    void cellTexts() {
        FrequencySteps list;
        *list.points[0] = {7, 2400000, "KHz", -10.5, "mV", 1500, "\u00B5s", "Go", false};
        QCOMPARE(list.text(), QString("7,2.4 GHz,-10.5 dBm,1.5 ms,Go")); // the power's unit is not shown
        *list.points[0] = {1, 0, "Hz", 13.01029996, "dBm", 2000, "s", "Wait", false};
        QCOMPARE(list.text(), QString("1,0 Hz,13.0103 dBm,2000 s,Wait"));
        PatternSteps pattern;
        *pattern.points[0] = {2, 999, "ns", 1000, "ns", 4000000000U, false};
        QCOMPARE(pattern.text(), QString("2,999 ns,1 \u00B5s,4000000000"));
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
            QTest::addRow("%d %s %s", ++number, text, unit) << isPattern << cellRow << column << text << unit << result;
        };
        const auto list = [&](auto... cell) { row(false, 1, cell...); };
        const auto pattern = [&](auto... cell) { row(true, 1, cell...); };
        row(false, 3, 1, "1", "MHz", "!Invalid list cell");
        list(0, "1", "", "!Invalid list cell");
        list(5, "1", "", "!Invalid list cell");
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
        list(4, "run", "", "!Advance must be Run or Wait");
        row(true, 3, 1, "1", "s", "!Invalid pattern cell");
        pattern(4, "1", "", "!Invalid pattern cell");
        pattern(1, "x", "s", "!Invalid numeric value");
        pattern(1, "9.9", "ns", "!Pattern time is outside the valid range");
        pattern(2, "2500", "\u00B5s", "2.5 ms");
        pattern(2, "10.1", "s", "!Pattern time is outside the valid range");
        pattern(3, "2.5", "K", "2500");
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

    void limitsOfNothingLetZeroPass() {
        std::vector<list_point*> points{new list_point};
        FrequencyListConfig config(&points, {});
        config.setDwellEditable(true);
        ListEditRequest request;
        QString error;
        for (int column : {1, 2, 3}) {
            QVERIFY(config.getEditRequest(0, column, request));
            QVERIFY(!config.applyEdit(request, {"1", request.unit}, error));
            QVERIFY(config.applyEdit(request, {"0", request.unit}, error));
        }
        config.destroyPoints();
        QVERIFY(points.empty());
    }

    void sequence() {
        for (const bool isPattern : {false, true}) {
            BothSteps both{3};
            IListConfig& model = both.of(isPattern);
            const auto cell = [&](int row) {
                return model.cellText(row, isPattern ? 3 : 2);
            };
            QString error;
            for (int row : {-1, 3}) {
                QVERIFY(!model.deleteRow(row, error));
                QCOMPARE(error, QString(isPattern ? "Select a valid pattern row" : "Select a valid list row"));
            }
            both.list.points[1]->power = -7;
            both.pattern.points[1]->loops = 9;
            QVERIFY(model.deleteRow(0, error));
            QVERIFY(model.rowCount() == 2 && both.isNumbered());
            QCOMPARE(cell(0), QString(isPattern ? "9" : "-7 dBm"));
            QVERIFY(model.addDefault(error) && both.isNumbered());
            QVERIFY(model.deleteRow(2, error) && model.deleteRow(1, error) && both.isNumbered());
            QVERIFY(!model.deleteRow(0, error));
            QCOMPARE(error, QString(isPattern ? "A pattern must contain at least one step"
                                              : "A list must contain at least one step"));
            QCOMPARE(model.rowCount(), 1);
            QVERIFY(model.addDefault(error) && model.clearAndCreateDefault(error));
            QCOMPARE(both.text(isPattern),
                     QString(isPattern ? "1,800 ns,800 ns,3" : "1,100 MHz,5 dBm,500 \u00B5s,Run"));
            QVERIFY(both.isNumbered());
            QCOMPARE(both.list.points.back()->frequencyUnit + both.list.points.back()->dwellUnit +
                         both.pattern.points.back()->onTimeUnit,
                     std::string("Hznsns"));
        }
    }

    void withoutStorage() {
        FrequencyListConfig list(nullptr, kListLimits);
        PatternListConfig pattern(nullptr, kPatternLimits);
        QString error;
        for (IListConfig* model : {static_cast<IListConfig*>(&list), static_cast<IListConfig*>(&pattern)}) {
            QString errors[3];
            QVERIFY(!model->addDefault(errors[0]) && !model->clearAndCreateDefault(errors[1]) &&
                    !model->fromJson({QJsonObject()}, errors[2]) && !model->deleteRow(0, error));
            for (const QString& each : errors)
                QCOMPARE(each, QString(model->kind() == 0 ? "Frequency list storage is not available"
                                                          : "Pattern list storage is not available"));
            QVERIFY(model->rowCount() == 0 && model->toJson().isEmpty() && model->cellText(0, 0).isEmpty());
        }
        list.destroyPoints();
        list.setFixedDwell(1, "s");
        QVERIFY(list.pointAt(0) == nullptr && list.points() == nullptr);
    }

    void aRequestTravelsInASignal() { QVERIFY(QMetaType::type("ListEditRequest") != QMetaType::UnknownType); }
};

VELDA_TEST_MAIN(QCoreApplication, TestListModels)

#include "tst_list_models.moc"
