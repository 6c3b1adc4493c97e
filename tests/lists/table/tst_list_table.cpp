#include "lists/table/list_table.h"
#include "tests/lists/steplist.h"
#include "tests/support/testbase.h"

#include <QApplication>
#include <QSignalSpy>

namespace {

constexpr int RowHeight = 68;

ListTableViewConfig look() {
    ListTableViewConfig config;
    config.geometry = QRect(0, 0, 900, 40 + 5 * RowHeight);
    config.rows = 5;
    config.firstColumnWidth = 96;
    config.headerHeight = 40;
    config.tableStyle = QStringLiteral("font-size: 26px;");
    return config;
}

// A table in a window on show.
template <typename Steps>
class Shown {
public:
    explicit Shown(int count) : steps(count), table(&window) {
        window.resize(900, 400);
        table.applyViewConfig(look());
        table.setListConfig(&steps.config);
        window.show();
        if (!QTest::qWaitForWindowExposed(&window))
            qFatal("The window does not come up.");
    }

    QString shown(int row, int column) { return table.model()->index(row, column).data().toString(); }

    QPoint current() const { return {table.currentColumn(), table.currentRow()}; }

    // The table says what the list says, cell by cell.
    bool agrees() {
        if (table.rowCount() != steps.config.rowCount() || table.columnCount() != steps.config.columnCount())
            return false;
        for (int row = 0; row < table.rowCount(); ++row) {
            for (int column = 0; column < table.columnCount(); ++column) {
                if (shown(row, column) != steps.config.cellText(row, column))
                    return false;
            }
        }
        return true;
    }

    QWidget window;
    Steps steps;
    ListTable table;
};

} // namespace

/// The table over a list model.
class ListTableTest : public TestBase {
    Q_OBJECT

private slots:
    void changes() {
        Shown<FrequencySteps> list(3);
        QSignalSpy changed(&list.table, &ListTable::listChanged);
        QString error;
        list.table.setCurrentIndex(QModelIndex());
        QVERIFY(!list.table.deleteCurrentStep(error));
        QCOMPARE(error, QString("Select a valid list row"));
        list.table.setCurrentCell(2, 3);
        QVERIFY(list.table.deleteCurrentStep(error)); // the last row
        QCOMPARE(list.current(), QPoint(3, 1));
        QVERIFY(list.agrees());
        for (int i = 0; i < 8; ++i)
            QVERIFY(list.table.addStep(error));
        QCOMPARE(list.current(), QPoint(1, 9));
        ListEditRequest request;
        QVERIFY(list.steps.config.getEditRequest(4, 1, request));
        QVERIFY(list.table.applyEdit(request, {"2400", "MHz"}, error));
        QCOMPARE(list.shown(4, 1), QString("2.4 GHz"));
        QCOMPARE(list.current(), QPoint(1, 4));
        QVERIFY(!list.table.applyEdit(request, {"7", "GHz"}, error));
        QCOMPARE(error, QString("Frequency is outside the valid range"));
        QVERIFY(list.agrees());
        QCOMPARE(changed.count(), 0); // emitted while the table's signals are blocked
        QVERIFY(list.table.newList(error));
        QCOMPARE(changed.count(), 1);
        QVERIFY(list.agrees());
        QCOMPARE(list.current(), QPoint(1, 0));
    }
};

VELDA_TEST_MAIN(QApplication, ListTableTest)
#include "tst_list_table.moc"
