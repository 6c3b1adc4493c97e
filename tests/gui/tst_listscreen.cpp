#include "lists/table/list_files.h"
#include "lists/table/list_table.h"
#include "lists/table/list_table_delegate.h"
#include "portable/widgets/ToastOverlay.h"
#include "portable/widgets/styles/styles.h"
#include "sim/step_decoding.h"
#include "tests/gui/paneltest.h"

#include <QApplication>
#include <QCheckBox>
#include <QDir>
#include <QFileInfo>
#include <QLabel>
#include <QScrollBar>

using namespace Kavor::HandheldGui;

namespace {

const char OneStep[] = "1,1 GHz,-10 dBm,1 ms,Run";
const char OnePatternStep[] = "1,1 ms,1 ms,1";

} // namespace

/// The list screen and, where the two are alike, the pattern screen, on a simulated module.
class ListScreenTest : public PanelTest {
    Q_OBJECT

    QString m_prefix = "list";

    void open(const QString& prefix) {
        m_prefix = prefix;
        QVERIFY(panel().press(prefix == "list" ? "funcList" : "funcCw"));
        if (prefix == "pattern")
            QVERIFY(panel().press("tabPattern"));
    }

    void openFetched() {
        QFETCH(QString, prefix);
        open(prefix);
    }

    QString name(const char* part) const { return m_prefix + part; }
    bool isList() const { return m_prefix == "list"; }
    ListTable* table() { return panel().widget<ListTable>(name("Table")); }
    ListFiles* browser() { return panel().widget<ListFiles>(name("Files")); }
    QString folder() { return panel().home() + "/kavor/" + m_prefix + "/1/"; }

    QString shown(int row, int column) { return table()->model()->index(row, column).data().toString(); }
    QString shown() {
        QStringList rows;
        for (int row = 0; row < table()->rowCount(); ++row) {
            QStringList cells;
            for (int column = 0; column < table()->columnCount(); ++column)
                cells << shown(row, column);
            rows << cells.join(',');
        }
        return rows.join(';');
    }

    void touchCell(int row, int column) {
        table()->scrollTo(table()->model()->index(row, column));
        const QRect cell = table()->visualRect(table()->model()->index(row, column));
        QTest::mouseClick(table()->viewport(), Qt::LeftButton, Qt::NoModifier, cell.center());
    }

    void edit(int row, int column, const QString& number, const QString& key) {
        if (number.isEmpty())
            panel().dialogs().expectKeys(QString(), key.split(' '));
        else
            panel().dialogs().expectNumber(QString(), number, key);
        touchCell(row, column);
    }

    void touchFile(const char* button, const QString& file) {
        if (!browser()->isVisible())
            QVERIFY(panel().press(name(button)));
        const QList<QTableWidgetItem*> items = browser()->findItems(file, Qt::MatchExactly);
        QCOMPARE(items.size(), 1);
        browser()->scrollToItem(items.first());
        QTest::mouseClick(browser()->viewport(), Qt::LeftButton, Qt::NoModifier,
                          browser()->visualItemRect(items.first()).center());
    }

    void saveAs(const QString& text, QMessageBox::StandardButton overwrite = QMessageBox::NoButton,
                const QString& endKey = "keyEnter") {
        QStringList keys;
        for (const QChar c : text)
            keys << "key" + QString(c).toUpper();
        panel().dialogs().expectKeys(isList() ? "List filename" : "Pattern filename", keys << endKey);
        if (overwrite != QMessageBox::NoButton)
            answer("Overwrite " + text, overwrite);
        touchFile("Save", "new file");
    }

    void answer(const QString& question, QMessageBox::StandardButton button) {
        panel().dialogs().expectButton(DialogKind::Question, question, button);
    }

    void load(const QByteArray& content) {
        write(folder() + "hop.json", content);
        touchFile("Load", "hop.json");
    }

    static QByteArray contentOf(const QString& path) {
        QFile file(path);
        return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray("(no such file)");
    }

    static void write(const QString& path, const QByteArray& content) {
        QVERIFY(QDir().mkpath(QFileInfo(path).path()));
        QFile file(path);
        QVERIFY(file.open(QIODevice::WriteOnly));
        QCOMPARE(file.write(content), qint64(content.size()));
    }

    static void both() {
        QTest::addColumn<QString>("prefix");
        addRow("list", "list");
        addRow("pattern", "pattern");
    }

private slots:
    void stepsComeAndGo_data() { both(); }
    void stepsComeAndGo() {
        openFetched();
        const QString one = isList() ? OneStep : OnePatternStep;
        QCOMPARE(shown(), one);
        for (int i = 0; i < 9; ++i)
            QVERIFY(panel().press(name("Add")));
        QVERIFY(panel().press(name("DeleteStep")));
        QCOMPARE(table()->rowCount(), 9);
        if (isList()) { // all steps of a pattern go without a question
            answer("Create new list", QMessageBox::No);
            QVERIFY(panel().press("listNew"));
            QCOMPARE(table()->rowCount(), 9);
            panel().dialogs().expect(DialogKind::Question, "Create new list", [](QDialog& box) {
                QCOMPARE(static_cast<QMessageBox&>(box).informativeText(), QString("Delete last list?"));
                box.done(QMessageBox::Yes);
            });
        }
        QVERIFY(panel().press(name("New")));
        QVERIFY(panel().press(name("DeleteStep")));
        QCOMPARE(panel().toast(), QString(isList() ? "A list must contain at least one step"
                                                   : "A pattern must contain at least one step"));
        QCOMPARE(shown(), one);
        QCOMPARE(panel().sent(), QStringList());
    }

    void edits_data() {
        QTest::addColumn<int>("column");
        QTest::addColumn<QString>("number");
        QTest::addColumn<QString>("key");
        QTest::addColumn<QString>("result"); // what the cell shows, or the toast behind a "!"
        addRow("list: frequency", 1, "2400", "keyUnit1", "2.4 GHz");
        addRow("list: frequency by Enter, in hertz", 1, "2", "keyEnter", "!Frequency is outside the valid range");
        addRow("list: cancelled", 1, "", "key5 keyEsc", "1 GHz");
        addRow("pattern: off time", 2, "1.5", "keyUnit3", "1.5 s");
        addRow("pattern: thousands of repetitions", 3, "2", "keyUnit1", "2000");
        addRow("pattern: too many repetitions", 3, "66", "keyUnit1", "!Repetition count is outside the valid range");
    }
    void edits() {
        QFETCH(int, column);
        QFETCH(QString, number);
        QFETCH(QString, key);
        QFETCH(QString, result);
        open(QString(QTest::currentDataTag()).section(':', 0, 0));
        const QString before = shown(0, column);
        edit(0, column, number, key);
        const bool refused = result.startsWith('!');
        QCOMPARE(shown(0, column), refused ? before : result);
        QCOMPARE(panel().toast(), refused ? result.mid(1) : QString());
    }

    void settings() {
        open("list");
        QVERIFY(panel().press("listAdd"));
        QVERIFY(!panel().widget<QWidget>("listFixedDwell")->isEnabled());
        QVERIFY(panel().press("listDwellFixed"));
        QVERIFY(panel().enter("listFixedDwell", "250", "keyUnit1"));
        const QString fixed("1,1 GHz,-10 dBm,250 µs,Run;2,1 GHz,-10 dBm,250 µs,Run");
        QCOMPARE(shown(), fixed);
        touchCell(0, 3); // read-only now: no keyboard
        QVERIFY(panel().enter("listFixedDwell", "101", "keyUnit3"));
        QCOMPARE(panel().toast(), QString("Valid  range: 10 µs to 100 s"));
        QCOMPARE(shown(), fixed);
        QVERIFY(panel().press("listAdd")); // as the others
        QCOMPARE(shown(), fixed + ";3,1 GHz,-10 dBm,250 µs,Run");
        // What takes a refused one's place is the very number.
        QVERIFY(panel().enter("listFixedDwell", "1.234567", "keyUnit2"));
        QVERIFY(panel().enter("listFixedDwell", "101", "keyUnit3"));
        panel().window().toast()->hideImmediate();
        QTRY_COMPARE(panel().text("listFixedDwell"), QString("1.234567"));
        QVERIFY(panel().press("listDwellStep") && panel().press("listDwellFixed"));
        QCOMPARE(shown(2, 3), QString("1.234567 ms"));
    }

    /// Seven steps by hand, and what of them reaches the module.
    void sevenStepsOnTheWire() {
        open("list");
        touchCell(0, 0); // its number cannot be edited
        QByteArrayList expected;
        for (int i = 1; i <= 7; ++i) {
            const QString n = QString::number(i);
            if (i > 1)
                QVERIFY(panel().press("listAdd"));
            edit(i - 1, 1, n + "00.5", "keyUnit1");
            edit(i - 1, 2, "-" + n + ".25", "keyUnit0");
            edit(i - 1, 3, "2" + n, "keyUnit1");
            for (int touches = i; touches > 1; --touches)
                touchCell(i - 1, 4); // to and fro, without a keyboard
            const char* end = i % 2 == 0 ? "Wait" : i == 7 ? "Run, last" : "Run";
            expected << (n + ": " + n + "00500000.000 Hz, -" + n + ".25 dBm, 2" + n + " us, " + end).toUtf8();
        }
        panel().dialogs().expectButton(DialogKind::Information, "Upload List to Device\nSucceeded!", QMessageBox::Ok);
        const QStringList sent = sentAfter("listUpload");
        QCOMPARE(sent.size(), 1);
        QVERIFY(sent.first().startsWith(":LIST:DATA #3112"));
        QCOMPARE(Sim::textsOf(Sim::listSteps(panel().module().data().lists.at(0))), expected);
    }

    /// A file may hold steps that the module does not take: they stand out, nothing is sent, and the user is told.
    void stepsOutsideTheLimits_data() { both(); }
    void stepsOutsideTheLimits() {
        openFetched();
        load(isList() ? "{\"VeldaList\": [{\"Frequency\": 1e9, \"DwellTime\": 1e6},"
                        " {\"Frequency\": 1e9, \"Power\": 300, \"DwellTime\": 1e6}]}"
                      : "{\"VeldaPattern\": [{\"OnTime\": 800, \"OffTime\": 800}, {\"OnTime\": 800, \"Loops\": 2}]}");
        QString wrong;
        for (int row = 0; row < 2; ++row)
            for (int column = 0; column < table()->columnCount(); ++column)
                if (table()->model()->index(row, column).data(ListCellDelegate::WrongRole).toBool())
                    wrong += QString("%1,%2 ").arg(row).arg(column);
        QCOMPARE(wrong, QString("1,2 "));
        QVERIFY(panel().press(name("Upload")));
        QCOMPARE(panel().toast(), QString(isList() ? "Step 2: Power is outside the valid range"
                                                   : "Step 2: Pattern time is outside the valid range"));
        QCOMPARE(panel().sent(), QStringList());
    }

    void refusedUpload_data() { both(); }
    void refusedUpload() {
        openFetched();
        QVERIFY(panel().press(name("Add")));
        const QString before = shown();
        fail(Sim::Fault::Refuse);
        expectMessage("write failed: -ERR");
        expectMessage(isList() ? "Failed to send frequencies list" : "Failed to send patterns list");
        QVERIFY(panel().press(name("Upload")));
        QCOMPARE(panel().toast(), QString("command send failure"));
        QCOMPARE(shown(), before);
    }

    void runsAndStops_data() { both(); }
    void runsAndStops() {
        openFetched();
        const auto* box = panel().widget<QCheckBox>(name("Enable"));
        QCOMPARE(sentAfter(name("Enable")),
                 QStringList{isList() ? ":MODulation:ENABle:MASK 64" : ":MODulation:ENABle:MASK 128"});
        QVERIFY(panel().press("rfOn"));
        QCOMPARE(sentAfter("modOn"), QStringList{isList() ? ":LIST:STAT ON" : ":PATT:STAT ON"});
        QVERIFY(!box->isEnabled());
        QCOMPARE(panel().text("statusModulation"), QString(isList() ? "Mode: List" : "Mode: Pattern"));
        QCOMPARE(sentAfter("modOff"), QStringList{isList() ? ":LIST:STAT OFF" : ":PATT:STAT OFF"});
        QVERIFY(box->isEnabled() && box->isChecked());
        QCOMPARE(sentAfter(name("Enable")), QStringList{":MODulation:ENABle:MASK 0"});
    }

    /// Whether the list is still that of its file and that of the module, and where it is shown from after a load.
    void origin_data() { both(); }
    void origin() {
        openFetched();
        const auto state = [this] {
            const bool unsaved = panel().widget<QWidget>(name("Unsaved"))->isVisible();
            const bool due = panel().widget<QWidget>(name("Upload"))->property("lit").toBool();
            return panel().text(name("Name")) + (unsaved ? " *" : "") + (due ? "|due" : "|");
        };
        for (int i = 0; i < 9; ++i)
            QVERIFY(panel().press(name("Add")));
        QCOMPARE(state(), QString("|due"));
        saveAs("hop");
        QCOMPARE(state(), QString("hop.json|due"));
        panel().dialogs().expectButton(DialogKind::Information, "Succeeded!", QMessageBox::Ok);
        QVERIFY(panel().press(name("Upload")));
        QCOMPARE(state(), QString("hop.json|"));
        edit(9, 1, QString(), "keyEnter"); // untouched
        QCOMPARE(state(), QString("hop.json|"));
        edit(9, 1, "5", "keyUnit1");
        QCOMPARE(state(), QString("hop.json *|due"));
        if (isList())
            QVERIFY(panel().press("listDwellFixed"));
        touchFile("Load", "hop.json");
        QCOMPARE(state(), QString("hop.json|"));
        QCOMPARE(table()->currentRow(), 0);
        QCOMPARE(table()->rowAt(0), 0);
        QVERIFY(!isList() || panel().hasStyle("listDwellStep", PRESSED_WIDGET_BTN_STYLE));
    }

    /// What is done with a row as a whole, and the way to a row.
    void rowTools_data() { both(); }
    void rowTools() {
        openFetched();
        edit(0, 1, "5", "keyUnit1");
        const QString first = shown(0, 1);
        const auto rows = [this, &first] {
            QString all;
            for (int row = 0; row < table()->rowCount(); ++row)
                all += shown(row, 1) == first ? 'a' : 'd';
            return all + QString::number(table()->currentRow()) + ' ' + panel().text(name("Position"));
        };
        QCOMPARE(rows(), QString("a0 1 / 1"));
        QVERIFY(!panel().press(name("Up")) && !panel().press(name("Down")));
        QVERIFY(panel().press(name("Insert")) && panel().press(name("Insert")));
        QCOMPARE(rows(), QString("add2 3 / 3"));
        touchCell(0, 0);
        QVERIFY(panel().press(name("Repeat")) && panel().press(name("Down")));
        QCOMPARE(rows(), QString("adad2 3 / 4"));
        QVERIFY(panel().press(name("Up")) && panel().press(name("Up")) && !panel().press(name("Up")));
        QCOMPARE(rows(), QString("aadd0 1 / 4"));
        QCOMPARE(shown(3, 0), QString("4"));
        QVERIFY(panel().widget<QWidget>(name("Upload"))->property("lit").toBool());
        panel().dialogs().expectNumber("Go to step", "5", "keyEnter");
        QVERIFY(panel().press(name("Position")));
        QCOMPARE(panel().toast(), QString("Valid Step range: 1 to 4"));
        for (int i = 0; i < 1200; ++i) {
            QString error;
            QVERIFY(table()->addStep(error));
        }
        panel().dialogs().expectNumber("Go to step", "1100", "keyEnter");
        QVERIFY(panel().press(name("Position")));
        QCOMPARE(table()->currentRow(), 1099);
        QVERIFY(table()->viewport()->rect().contains(table()->visualRect(table()->currentIndex())));
        QCOMPARE(panel().text(name("Position")), QString("1,100 / 1,204"));
        table()->verticalScrollBar()->setValue(0); // the readout goes with the rows
        QCOMPARE(panel().text(name("Position")), QString("1 / 1,204"));
    }

    /// Save, change, overwrite, load, delete: by hand from one end to the other.
    void files_data() { both(); }
    void files() {
        openFetched();
        QVERIFY(panel().press(name("Add")));
        edit(0, 1, "5", "keyUnit1");
        const QString two = shown();
        saveAs("hop");
        QVERIFY(table()->isVisible());
        QCOMPARE(panel().text(name("Name")), QString("hop.json"));
        const ChannelRecord& cached = panel().handler().snapshot();
        QCOMPARE(recordText(isList() ? cached.listName : cached.patternName), std::string("hop.json"));
        const QByteArray saved = contentOf(folder() + "hop.json");

        QVERIFY(panel().press(name("DeleteStep")));
        answer("Overwrite hop.json", QMessageBox::No);
        touchFile("Save", "hop.json");
        saveAs("hop", QMessageBox::No); // typed, but there already
        QCOMPARE(contentOf(folder() + "hop.json"), saved);
        QVERIFY(panel().press(name("Cancel")));
        saveAs("one");
        touchFile("Load", "hop.json");
        QVERIFY(table()->isVisible());
        QCOMPARE(shown(), two);
        answer("Overwrite one.json", QMessageBox::Yes);
        touchFile("Save", "one.json");
        QCOMPARE(contentOf(folder() + "one.json"), saved);

        answer("Delete one.json", QMessageBox::No);
        touchFile("Delete", "one.json");
        QVERIFY(QFileInfo::exists(folder() + "one.json"));
        answer("Delete one.json", QMessageBox::Yes);
        touchFile("Delete", "one.json");
        QVERIFY(!QFileInfo::exists(folder() + "one.json"));
        QCOMPARE(panel().sent(), QStringList());

        start(); // another panel
        openFetched();
        load(saved);
        QCOMPARE(shown(), two);
    }

    /// The longest name that can be typed still fits the record with its ending.
    void typedNames() {
        open("list");
        saveAs("x", QMessageBox::NoButton, "keyEsc");
        QVERIFY(browser()->isVisible());
        saveAs("");
        QCOMPARE(panel().toast(), QString("Filename is empty"));
        saveAs(QString(40, 'a'));
        const QString name = QString(26, 'a') + ".json";
        QCOMPARE(QDir(folder()).entryList(QDir::Files), QStringList(name));
        QCOMPARE(recordText(panel().handler().snapshot().listName), name.toStdString());
        answer("Create new list", QMessageBox::Yes);
        QVERIFY(panel().press("listNew"));
        QCOMPARE(panel().text("listName"), QString());
    }

    /// A file from elsewhere may be named anything; the record takes whole characters up to 31 bytes.
    void aStrangeFileName() {
        open("list");
        const QString file = "<b>%1>" + QString(100, QChar(0xE4)) + ".JSON";
        write(folder() + file, "{\"VeldaList\": [{}]}");
        touchFile("Load", file);
        QCOMPARE(shown(), QString("1,0 Hz,0 dBm,0 ns,Run"));
        QCOMPARE(recordText(panel().handler().snapshot().listName), file.left(18).toStdString());
        panel().dialogs().expect(DialogKind::Question, "Delete <b>%1>", [](QDialog& box) {
            QVERIFY(box.width() <= 1280);
            auto* question = box.findChild<QLabel*>("qt_msgbox_label");
            const QImage asked = question->grab().toImage();
            question->setTextFormat(Qt::PlainText);
            QVERIFY(question->grab().toImage() == asked); // letter by letter, not as a bold one
            box.done(QMessageBox::Yes);
        });
        touchFile("Delete", file);
        QVERIFY(!QFileInfo::exists(folder() + file));
    }

    /// What goes wrong with a file is told, and list and browser stay as they are.
    void badFiles_data() { both(); }
    void badFiles() {
        openFetched();
        QVERIFY(panel().press(name("Add")));
        const QString before = shown();
        const auto told = [&](const char* sentence) {
            QCOMPARE(panel().toast(), QString(sentence));
            QVERIFY(browser()->isVisible());
            QCOMPARE(shown(), before);
            panel().window().toast()->hideImmediate();
        };
        write(folder().chopped(3), "in the way"); // where the folder belongs
        QVERIFY(panel().press(name("Load")));
        QCOMPARE(panel().toast(), QString("Failed to create list directory"));
        QVERIFY(table()->isVisible() && QFile::remove(folder().chopped(3)));
        load(isList() ? "{\"VeldaPattern\": [{}]}" : "{\"VeldaList\": [{}]}");
        told("List JSON root is missing");
        QVERIFY(panel().press(name("Cancel")));
        QVERIFY(panel().press(name("Delete")));
        QVERIFY(QFile::remove(folder() + "hop.json"));
        answer("Delete hop.json", QMessageBox::Yes);
        touchFile("Delete", "hop.json");
        told("List file does not exist");
        QVERIFY(panel().press(name("Cancel")));
        QVERIFY(QDir().mkpath(folder() + "one.json")); // no file can take its place
        saveAs("one", QMessageBox::Yes);
        told("Failed to open list file for writing");
    }

    void eachChannelHasItsList() {
        PanelFixture::Setup setup;
        setup.channels = 2;
        start(setup);
        open("list");
        QVERIFY(panel().press("listAdd"));
        const auto goTo = [this](unsigned channel) {
            QCOMPARE(panel().handler().set_channel(channel), 0);
            panel().window().update_from_config(STATE_NONE);
        };
        goTo(1);
        QCOMPARE(table()->rowCount(), 1);
        saveAs("hop");
        QVERIFY(QFileInfo::exists(panel().home() + "/kavor/list/2/hop.json"));
        goTo(0);
        QCOMPARE(table()->rowCount(), 2);
    }
};

VELDA_TEST_MAIN(QApplication, ListScreenTest)
#include "tst_listscreen.moc"
