#include <QApplication>
#include <QElapsedTimer>
#include <QHeaderView>
#include <QPainter>
#include <QScrollBar>
#include <QSignalSpy>
#include <QTemporaryDir>
#include <algorithm>
#include <cstdio>
#include <functional>

#include "lists/list_files.h"
#include "lists/list_table.h"
#include "lists/lists_ops.h"
#include "tests/lists/steplist.h"
#include "tests/support/testbase.h"

namespace {

constexpr int kRowHeight = 68;

ListTableViewConfig look() {
    ListTableViewConfig config;
    config.geometry = QRect(0, 0, 900, 40 + 5 * kRowHeight);
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

// Counts the paintings of a widget, and the rows that they cover.
class PaintCounter : public QObject {
public:
    explicit PaintCounter(QWidget* widget) { widget->installEventFilter(this); }
    int count = 0;

protected:
    bool eventFilter(QObject* watched, QEvent* event) override {
        count += event->type() == QEvent::Paint ? 1 : 0;
        return QObject::eventFilter(watched, event);
    }
};

} // namespace

/// The table over a list model, and the file browser over a folder.
class ListTableTest : public TestBase {
    Q_OBJECT

private slots:
    void showsTheList() {
        Shown<PatternSteps> pattern(3);
        QVERIFY(pattern.agrees());
        QCOMPARE(pattern.table.columnCount(), 4);
        Shown<FrequencySteps> list(7);
        QVERIFY(list.agrees());
        QStringList titles;
        for (int i = 0; i < list.table.columnCount(); ++i)
            titles << list.table.model()->headerData(i, Qt::Horizontal).toString();
        QCOMPARE(titles, QStringList({"Step", "Frequency", "Power", "Dwell Time", "Adv."}));
        for (int row = 0; row < 7; ++row)
            QCOMPARE(list.table.rowHeight(row), kRowHeight);
        QCOMPARE(list.table.columnWidth(0), 96);
        int width = 0;
        for (int i = 0; i < list.table.columnCount(); ++i)
            width += list.table.columnWidth(i);
        QCOMPARE(width, list.table.viewport()->width());
    }

    void withoutAList() {
        ListTable table;
        QString error;
        const QString expected("List configuration is not set");
        QVERIFY(!table.addStep(error));
        QCOMPARE(error, expected);
        error.clear();
        QVERIFY(!table.deleteCurrentStep(error));
        QCOMPARE(error, expected);
        error.clear();
        QVERIFY(!table.newList(error));
        QCOMPARE(error, expected);
        error.clear();
        QVERIFY(!table.applyEdit(ListEditRequest(), ListEditValue(), error));
        QCOMPARE(error, expected);
        QVERIFY(!table.requestEdit(0, 1));
        table.refresh();
        QCOMPARE(table.rowCount(), 0);
    }

    void changes() {
        Shown<FrequencySteps> list(3);
        QSignalSpy changed(&list.table, &ListTable::listChanged);
        QString error;
        list.table.setCurrentCell(2, 3);
        QVERIFY(list.table.deleteCurrentStep(error)); // the last row
        QCOMPARE(QPoint(list.table.currentColumn(), list.table.currentRow()), QPoint(3, 1));
        QVERIFY(list.agrees());
        list.table.setCurrentCell(0, 0);
        QVERIFY(list.table.deleteCurrentStep(error));
        QVERIFY(list.agrees());
        QCOMPARE(list.shown(0, 0), QString("1"));
        QVERIFY(!list.table.deleteCurrentStep(error));
        QCOMPARE(error, QString("A list must contain at least one step"));
        for (int i = 0; i < 8; ++i)
            QVERIFY(list.table.addStep(error));
        QCOMPARE(QPoint(list.table.currentColumn(), list.table.currentRow()), QPoint(1, 8));
        QVERIFY(list.table.visualRect(list.table.currentIndex()).bottom() <= list.table.viewport()->height());
        ListEditRequest request;
        QVERIFY(list.steps.config.getEditRequest(4, 1, request));
        QVERIFY(list.table.applyEdit(request, {"2400", "MHz"}, error));
        QCOMPARE(list.shown(4, 1), QString("2.4 GHz"));
        QCOMPARE(QPoint(list.table.currentColumn(), list.table.currentRow()), QPoint(1, 4));
        QVERIFY(!list.table.applyEdit(request, {"7", "GHz"}, error));
        QCOMPARE(error, QString("Frequency is outside the valid range"));
        QCOMPARE(list.shown(4, 1), QString("2.4 GHz"));
        QVERIFY(list.agrees());
        QCOMPARE(changed.count(), 0); // emitted while the table's signals are blocked
        QVERIFY(list.table.newList(error));
        QCOMPARE(changed.count(), 1);
        QVERIFY(list.agrees());
        QCOMPARE(QPoint(list.table.currentColumn(), list.table.currentRow()), QPoint(1, 0));
    }

    void noRowToDelete() {
        Shown<FrequencySteps> list(3);
        QString error;
        list.table.setCurrentIndex(QModelIndex());
        QVERIFY(!list.table.deleteCurrentStep(error));
        QCOMPARE(error, QString("Select a valid list row"));
        QVERIFY(list.agrees());
    }

    void refreshKeepsItsPlace() {
        Shown<FrequencySteps> list(100);
        list.table.setCurrentCell(60, 2);
        const int scrolled = list.table.verticalScrollBar()->value();
        QVERIFY(scrolled > 0);
        list.steps.config.setFixedDwell(7, "ms");
        list.table.refresh();
        QCOMPARE(list.table.verticalScrollBar()->value(), scrolled);
        QCOMPARE(QPoint(list.table.currentColumn(), list.table.currentRow()), QPoint(2, 60));
        QCOMPARE(list.shown(60, 3), QString("7 ms"));
        QString error;
        QVERIFY(list.steps.config.clearAndCreateDefault(error));
        list.table.refresh();
        QCOMPARE(QPoint(list.table.currentColumn(), list.table.currentRow()), QPoint(2, 0));
        QVERIFY(list.agrees());
    }

    void keysAndTouch_data() {
        QTest::addColumn<int>("column");
        QTest::addColumn<bool>("editable");
        QTest::newRow("step") << 0 << false;
        QTest::newRow("frequency") << 1 << true;
        QTest::newRow("dwell, read-only") << 3 << false;
        QTest::newRow("advance") << 4 << true;
    }
    void keysAndTouch() {
        QFETCH(int, column);
        QFETCH(bool, editable);
        Shown<FrequencySteps> list(3);
        QSignalSpy requests(&list.table, &ListTable::editRequested);
        QSignalSpy escapes(&list.table, &ListTable::escapeRequested);
        list.table.setCurrentCell(1, column);
        QTest::keyClick(&list.table, Qt::Key_Return);
        QTest::keyClick(&list.table, Qt::Key_Enter);
        QCOMPARE(requests.count(), editable ? 2 : 0);
        const QRect cell = list.table.visualRect(list.table.model()->index(2, column));
        QTest::mouseClick(list.table.viewport(), Qt::LeftButton, Qt::NoModifier, cell.center());
        QCOMPARE(list.table.currentRow(), 2);
        QCOMPARE(requests.count(), editable ? 3 : 0);
        if (editable) {
            const auto request = requests.last().first().value<ListEditRequest>();
            QCOMPARE(QPoint(request.column, request.row), QPoint(column, 2));
        }
        QTest::keyClick(&list.table, Qt::Key_Escape);
        QCOMPARE(escapes.count(), 1);
        QTest::keyClick(&list.table, Qt::Key_Up);
        QCOMPARE(list.table.currentRow(), 1);
    }

    /// 10,000 steps, each change from the call to the painted pixels.
    void aLongListStaysQuick() {
        Shown<FrequencySteps> list(10000);
        QCoreApplication::processEvents();
        PaintCounter painted(list.table.viewport());
        QString error;
        ListEditRequest request;
        QVERIFY(list.steps.config.getEditRequest(5000, 1, request));
        const auto worst = [&](const std::function<bool()>& change) {
            std::vector<double> times;
            for (int i = 0; i < 21; ++i) {
                painted.count = 0;
                QElapsedTimer timer;
                timer.start();
                if (!change())
                    return 1e9;
                QCoreApplication::processEvents();
                times.push_back(static_cast<double>(timer.nsecsElapsed()) / 1e6);
                if (painted.count < 1 || painted.count > 3)
                    return -1.0 * painted.count;
            }
            std::sort(times.begin(), times.end());
            return times[times.size() / 2]; // others use the machine too
        };
        const double add = worst([&] { return list.table.addStep(error); });
        const double edit = worst([&] { return list.table.applyEdit(request, {"433.92", "MHz"}, error); });
        const double remove = worst([&] {
            list.table.setCurrentCell(5000, 1);
            return list.table.deleteCurrentStep(error);
        });
        std::printf("10,000 steps, medians to painted: add %.2f ms, edit %.2f ms, delete %.2f ms\n", add, edit, remove);
        for (const double time : {add, edit, remove}) {
            QVERIFY2(time > 0, "painted not at all, or more than once");
            QVERIFY2(time < kSlowdown * 16, qPrintable(QString::number(time)));
        }
        QVERIFY(list.agrees());
    }

    void aLongFileIsLoadedQuickly() {
        QTemporaryDir folder;
        const ListsOps files(folder.path());
        QString error;
        {
            const FrequencySteps steps(5000);
            QVERIFY(files.save("long", 0, steps.config, error));
        }
        Shown<FrequencySteps> list(1);
        QElapsedTimer timer;
        timer.start();
        QVERIFY(files.load("long", 0, list.steps.config, error));
        list.table.refresh();
        QCoreApplication::processEvents();
        const double time = static_cast<double>(timer.nsecsElapsed()) / 1e6;
        std::printf("5,000 steps loaded and painted in %.1f ms\n", time);
        QVERIFY2(time < kSlowdown * 100, qPrintable(QString::number(time)));
        QCOMPARE(list.table.rowCount(), 5000);
        QCOMPARE(list.shown(4999, 0), QString("5000"));
    }

    /// A text that does not fit is written smaller or elided, never cut by its neighbour.
    void aWideTextStaysInItsCell() {
        Shown<FrequencySteps> list(1);
        list.steps.points[0]->power = -59.123456789;
        list.steps.points[0]->frequency = 5999.999999999;
        list.steps.points[0]->frequencyUnit = "MHz";
        list.table.resize(620, list.table.height());
        list.table.refresh();
        QCoreApplication::processEvents();
        const QImage picture = list.table.viewport()->grab().toImage();
        for (int column = 1; column < 5; ++column) {
            const QRect cell = list.table.visualRect(list.table.model()->index(0, column));
            const QRgb ground = picture.pixel(cell.left() + 1, cell.center().y());
            int ink = 0;
            for (int y = cell.top() + 6; y < cell.bottom() - 6; ++y) {
                ink += picture.pixel(cell.left() + 8, y) != ground ? 1 : 0;
                ink += picture.pixel(cell.right() - 4, y) != ground ? 1 : 0;
            }
            QCOMPARE(ink, 0);
        }
    }

    void fileRows_data() {
        QTest::addColumn<ListFileMode>("mode");
        QTest::addColumn<QStringList>("files");
        QTest::addColumn<QString>("title");
        QTest::addColumn<QStringList>("rows");
        const QStringList two{"b.json", "a.json"};
        QTest::newRow("load") << ListFileMode::Load << two << "SELECT FILE TO LOAD"
                              << QStringList{"1 a.json", "2 b.json"};
        QTest::newRow("save") << ListFileMode::Save << two << "SELECT NEW FILE OR CHOOSE EXISTING"
                              << QStringList{"+ new file", "1 a.json", "2 b.json"};
        QTest::newRow("delete") << ListFileMode::Delete << two << "SELECT FILE TO DELETE"
                                << QStringList{"1 a.json", "2 b.json"};
        QTest::newRow("load, none") << ListFileMode::Load << QStringList() << "SELECT FILE TO LOAD" << QStringList();
        QTest::newRow("save, none") << ListFileMode::Save << QStringList() << "SELECT NEW FILE OR CHOOSE EXISTING"
                                    << QStringList{"+ new file"};
        QTest::newRow("strange names") << ListFileMode::Load
                                       << QStringList{"<b>x</b>.json", QString(200, 'n') + ".json", "..a b.JSON"}
                                       << "SELECT FILE TO LOAD"
                                       << QStringList{"1 ..a b.JSON", "2 <b>x<b>.json",
                                                      "3 " + QString(200, 'n') + ".json"};
    }
    void fileRows() {
        QFETCH(ListFileMode, mode);
        QFETCH(QStringList, files);
        QFETCH(QStringList, rows);
        QTemporaryDir folder;
        ListsOps ops(folder.path());
        QString error;
        QVERIFY(ops.ensureChannelDirectory(2, error));
        for (QString name : files) {
            QFile file(ops.channelDirectory(2) + '/' + name.remove('/'));
            QVERIFY(file.open(QIODevice::WriteOnly));
        }
        ListFiles browser;
        browser.applyViewConfig(look());
        QVERIFY(!browser.refresh(error));
        QCOMPARE(error, QString("List file operations are not configured"));
        browser.setListsOps(&ops);
        browser.setChannel(2);
        browser.setMode(mode);
        QVERIFY(browser.refresh(error));
        QTEST(browser.titleForMode(), "title");
        QCOMPARE(browser.horizontalHeaderItem(0)->text(), QString("#"));
        QCOMPARE(browser.horizontalHeaderItem(1)->text(), browser.titleForMode());
        QStringList shown;
        for (int row = 0; row < browser.rowCount(); ++row) {
            shown << browser.item(row, 0)->text() + ' ' + browser.item(row, 1)->text();
            for (int column : {0, 1})
                QCOMPARE(browser.item(row, column)->data(ListFiles::NewFileRole).toBool(),
                         row == 0 && mode == ListFileMode::Save);
        }
        QCOMPARE(shown, rows);
        QCOMPARE(browser.currentRow(), rows.isEmpty() ? -1 : 0);

        QSignalSpy chosen(&browser, &ListFiles::fileSelected);
        QTest::keyClick(&browser, Qt::Key_Return);
        QCOMPARE(chosen.count(), rows.isEmpty() ? 0 : 1);
        if (!rows.isEmpty()) {
            const bool isNew = mode == ListFileMode::Save;
            QCOMPARE(chosen.first().at(0).value<ListFileMode>(), mode);
            QCOMPARE(chosen.first().at(1).toString(), isNew ? QString() : rows.first().mid(2));
            QCOMPARE(chosen.first().at(2).toBool(), isNew);
        }
        QSignalSpy escapes(&browser, &ListFiles::escapeRequested);
        QTest::keyClick(&browser, Qt::Key_Escape);
        QCOMPARE(escapes.count(), 1);
    }

    void aFolderThatCannotBe() {
        QTemporaryDir folder;
        QFile inTheWay(folder.filePath("list"));
        QVERIFY(inTheWay.open(QIODevice::WriteOnly));
        ListsOps ops(folder.filePath("list"));
        ListFiles browser;
        browser.setListsOps(&ops);
        browser.rebuild({"a.json"});
        QString error;
        QVERIFY(!browser.refresh(error));
        QCOMPARE(error, QString("Failed to create list directory"));
        QCOMPARE(browser.rowCount(), 1);
    }

private:
    /// Under a sanitizer the figures say nothing; what they bound is checked all the same.
#if defined(__SANITIZE_ADDRESS__) || defined(__SANITIZE_THREAD__)
    static constexpr double kSlowdown = 20;
#else
    static constexpr double kSlowdown = 1;
#endif
};

VELDA_TEST_MAIN(QApplication, ListTableTest)
#include "tst_list_table.moc"
