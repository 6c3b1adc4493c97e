#include "lists/list_files.h"
#include "lists/list_table.h"
#include "portable/widgets/ToastOverlay.h"
#include "portable/widgets/styles/styles.h"
#include "tests/gui/paneltest.h"

#include <QApplication>
#include <QCheckBox>
#include <QComboBox>
#include <QDir>
#include <QFileInfo>
#include <QLineEdit>
#include <QScrollBar>
#include <QTimer>
#include <csignal>
#include <sys/resource.h>
#include <sys/stat.h>
#include <unistd.h>

using namespace Kavor::HandheldGui;

namespace {

const char kOneStep[] = "1,1 GHz,-10 dBm,1 ms,Run";
const char kOnePatternStep[] = "1,1 ms,1 ms,1";

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

    QString name(const char* part) const { return m_prefix + part; }
    ListTable* table() { return panel().widget<ListTable>(name("Table")); }
    ListFiles* browser() { return panel().widget<ListFiles>(name("Files")); }
    QString folder(const QString& prefix) { return panel().home() + "/kavor/" + prefix + "/1/"; }
    QString folder() { return folder(m_prefix); }

    QString shown() {
        QStringList rows;
        for (int row = 0; row < table()->rowCount(); ++row) {
            QStringList cells;
            for (int column = 0; column < table()->columnCount(); ++column)
                cells << table()->model()->index(row, column).data().toString();
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
        panel().dialogs().expectNumber(QString(), number, key);
        touchCell(row, column);
    }

    void touchFile(const QString& file) {
        const QList<QTableWidgetItem*> items = browser()->findItems(file, Qt::MatchExactly);
        QCOMPARE(items.size(), 1);
        QVERIFY(browser()->isVisible());
        browser()->scrollToItem(items.first());
        QTest::mouseClick(browser()->viewport(), Qt::LeftButton, Qt::NoModifier,
                          browser()->visualItemRect(items.first()).center());
    }

    void typeName(const QString& text, const QString& endKey = "keyEnter") {
        QStringList keys;
        for (const QChar c : text)
            keys << "key" + QString(c).toUpper();
        panel().dialogs().expectKeys(m_prefix == "list" ? "List filename" : "Pattern filename", keys << endKey);
    }

    void saveAs(const QString& text) {
        QVERIFY(panel().press(name("Save")));
        typeName(text);
        touchFile("new file");
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
        QTest::newRow("list") << "list";
        QTest::newRow("pattern") << "pattern";
    }

private slots:
    void startsWithADefaultStep_data() { both(); }
    void startsWithADefaultStep() {
        QFETCH(QString, prefix);
        open(prefix);
        QCOMPARE(shown(), QString(prefix == "list" ? kOneStep : kOnePatternStep));
        QCOMPARE(panel().text("header"),
                 QString(prefix == "list" ? "   List Mode - Configure and upload frequency list"
                                          : "   Pattern Mode - Create an on/off timing pattern"));
        QVERIFY(!table()->verticalScrollBar()->isVisible());
        for (int i = 0; i < 9; ++i)
            QVERIFY(panel().press(name("Add")));
        QCOMPARE(table()->rowCount(), 10);
        QCoreApplication::processEvents();
        QVERIFY(table()->rowHeight(0) >= 68);
        QVERIFY(table()->verticalScrollBar()->width() >= 56);
        QVERIFY(table()->verticalScrollBar()->height() >= 56);
        QCOMPARE(table()->currentRow(), 9);
        QVERIFY(panel().press(name("DeleteStep")));
        QCOMPARE(table()->rowCount(), 9);
        QCOMPARE(panel().sent(), QStringList());
    }

    void edits_data() {
        QTest::addColumn<QString>("prefix");
        QTest::addColumn<int>("column");
        QTest::addColumn<QString>("number");
        QTest::addColumn<QString>("key");
        QTest::addColumn<QString>("shown");
        QTest::addColumn<QString>("toast");
        const auto list = [](const char* row, int column, const char* number, const char* key, const char* shown,
                             const char* toast = "") {
            QTest::newRow(row) << "list" << column << number << key << shown << toast;
        };
        list("frequency", 1, "2400", "keyUnit1", "2.4 GHz");
        list("frequency by Enter", 1, "0.5", "keyEnter", "0.5 Hz", "Frequency is outside the valid range");
        list("frequency too high", 1, "6.1", "keyUnit0", "", "Frequency is outside the valid range");
        list("power", 2, "-3.5", "keyUnit0", "-3.5 dBm");
        list("power too high", 2, "20.01", "keyUnit0", "", "Power is outside the valid range");
        list("power of no voltage", 2, "0", "keyUnit3", "", "Power is outside the valid range");
        list("dwell", 3, "250", "keyUnit1", "250 µs");
        list("dwell too short", 3, "9", "keyUnit1", "", "Dwell time is outside the valid range");
        list("no number", 1, "", "keyClear keyUnit0", "", "Invalid numeric value");
        const auto pattern = [](const char* row, int column, const char* number, const char* key, const char* shown,
                                const char* toast = "") {
            QTest::newRow(row) << "pattern" << column << number << key << shown << toast;
        };
        pattern("on time", 1, "800", "keyUnit0", "800 ns");
        pattern("on time too short", 1, "99", "keyUnit0", "", "Pattern time is outside the valid range");
        pattern("off time", 2, "1.5", "keyUnit3", "1.5 s");
        pattern("repetition", 3, "7", "keyEnter", "7");
        pattern("repetition by x1", 3, "8", "keyUnit0", "8");
        pattern("thousands of repetitions", 3, "2", "keyUnit1", "2000");
        pattern("no repetition", 3, "0", "keyEnter", "", "Repetition count is outside the valid range");
        pattern("too many repetitions", 3, "66", "keyUnit1", "", "Repetition count is outside the valid range");
    }
    void edits() {
        QFETCH(QString, prefix);
        QFETCH(int, column);
        QFETCH(QString, number);
        QFETCH(QString, key);
        QFETCH(QString, toast);
        open(prefix);
        const QString before = table()->model()->index(0, column).data().toString();
        if (number.isEmpty())
            panel().dialogs().expectKeys(QString(), key.split(' '));
        else
            panel().dialogs().expectNumber(QString(), number, key);
        touchCell(0, column);
        QFETCH(QString, shown);
        QCOMPARE(table()->model()->index(0, column).data().toString(), toast.isEmpty() ? shown : before);
        QCOMPARE(panel().toast(), toast);
    }

    void cancelledEdit() {
        open("list");
        panel().dialogs().expectKeys("Frequency", {"key5", "keyEsc"});
        touchCell(0, 1);
        QCOMPARE(shown(), QString(kOneStep));
    }

    /// A list takes its limits from the record as it is at the edit.
    void limitsFollowTheModule() {
        open("list");
        panel().module().modify(0, [](ChannelRecord& r) { r.frequency.maximum = 3e9; });
        panel().window().refreshFromModule();
        edit(0, 1, "4", "keyUnit0");
        QCOMPARE(panel().toast(), QString("Frequency is outside the valid range"));
        panel().module().modify(0, [](ChannelRecord& r) { r.frequency = {1e9, 0, 0, 0}; });
        panel().window().refreshFromModule();
        edit(0, 1, "40", "keyUnit0");
        QCOMPARE(table()->model()->index(0, 1).data().toString(), QString("40 GHz"));
    }

    void advanceIsToggled() {
        open("list");
        touchCell(0, 4);
        QCOMPARE(shown(), QString("1,1 GHz,-10 dBm,1 ms,Wait"));
        touchCell(0, 4);
        QCOMPARE(shown(), QString(kOneStep));
    }

    void theStepColumnOpensNothing() {
        open("list");
        touchCell(0, 0);
        QCOMPARE(panel().dialogs().asked(), QStringList());
    }

    void runType() {
        open("list");
        QVERIFY(panel().hasStyle("listRunList", PRESSED_WIDGET_BTN_STYLE));
        QCOMPARE(sentAfter("listRunSelection"), QStringList());
        QVERIFY(panel().hasStyle("listRunSelection", PRESSED_WIDGET_BTN_STYLE));
        QVERIFY(panel().hasStyle("listRunList", UNPRESSED_WIDGET_BTN_STYLE));
    }

    void fixedDwell() {
        open("list");
        QVERIFY(panel().press("listAdd"));
        QVERIFY(!panel().widget<QWidget>("listFixedDwell")->isEnabled());
        QVERIFY(panel().press("listDwellFixed"));
        QVERIFY(panel().widget<QWidget>("listFixedDwell")->isEnabled());
        QVERIFY(panel().enter("listFixedDwell", "250", "keyUnit1"));
        const QString fixed("1,1 GHz,-10 dBm,250 µs,Run;2,1 GHz,-10 dBm,250 µs,Run");
        QCOMPARE(shown(), fixed);
        touchCell(0, 3); // read-only now: no keyboard
        QVERIFY(panel().enter("listFixedDwell", "101", "keyUnit3"));
        QCOMPARE(panel().toast(), QString("Valid  range: 10 µs to 100 s"));
        QCOMPARE(shown(), fixed);
        panel().window().toast()->hideImmediate();
        QCOMPARE(panel().text("listFixedDwell"), QString("250.000"));
        QCOMPARE(panel().text("listFixedDwellUnit"), QString("µs"));
        panel().widget<QComboBox>("listFixedDwellUnit")->setCurrentIndex(2);
        QCOMPARE(shown(), QString("1,1 GHz,-10 dBm,250 ms,Run;2,1 GHz,-10 dBm,250 ms,Run"));
        QVERIFY(panel().press("listAdd"));
        QVERIFY(shown().endsWith("3,1 GHz,-10 dBm,250 ms,Run")); // as the others
        QVERIFY(panel().press("listDwellStep"));
        QVERIFY(!panel().widget<QWidget>("listFixedDwell")->isEnabled());
        edit(1, 3, "3", "keyUnit3");
        QVERIFY(shown().contains("2,1 GHz,-10 dBm,3 s,Run"));
        QCOMPARE(panel().sent(), QStringList());
    }

    /// The module's limits moved while the mode was "Step": switching to "Fixed" finds the entry out of range.
    void fixedDwellOutOfRangeFromTheStart() {
        open("list");
        panel().module().modify(0, [](ChannelRecord& r) { r.listDwell.minimum = 0.01; });
        panel().window().refreshFromModule();
        QVERIFY(panel().press("listDwellFixed"));
        QCOMPARE(panel().toast(), QString("Valid  range: 10 ms to 100 s"));
        QCOMPARE(shown(), QString(kOneStep));
        panel().window().toast()->hideImmediate();
        QCOMPARE(panel().text("listFixedDwell"), QString("1.000"));
    }

    void newList() {
        open("list");
        for (int i = 0; i < 3; ++i)
            QVERIFY(panel().press("listAdd"));
        panel().dialogs().expectButton(DialogKind::Question, "Create new list", QMessageBox::No);
        QVERIFY(panel().press("listNew"));
        QCOMPARE(table()->rowCount(), 4);
        panel().dialogs().expectButton(DialogKind::Question, "Create new list", QMessageBox::Yes);
        QVERIFY(panel().press("listNew"));
        QCOMPARE(shown(), QString(kOneStep));
        open("pattern");
        QVERIFY(panel().press("patternAdd"));
        QVERIFY(panel().press("patternNew")); // without a question
        QCOMPARE(shown(), QString(kOnePatternStep));
    }

    void theOnlyStepStays_data() { both(); }
    void theOnlyStepStays() {
        QFETCH(QString, prefix);
        open(prefix);
        QVERIFY(panel().press(name("DeleteStep")));
        QCOMPARE(panel().toast(), QString(prefix == "list" ? "A list must contain at least one step"
                                                           : "A pattern must contain at least one step"));
        QCOMPARE(table()->rowCount(), 1);
    }

    /// Seven steps by hand, and what of them reaches the module.
    void sevenStepsOnTheWire() {
        open("list");
        for (int row = 0; row < 7; ++row) {
            if (row > 0)
                QVERIFY(panel().press("listAdd"));
            edit(row, 1, QString::number(100 * (row + 1)) + ".5", "keyUnit1");
            edit(row, 2, QString::number(-row) + ".25", "keyUnit0");
            edit(row, 3, QString::number(20 + row), "keyUnit1");
            if (row % 2 == 1)
                touchCell(row, 4);
        }
        panel().sent();
        panel().dialogs().expectButton(DialogKind::Information, "Upload List to Device\nSucceeded!", QMessageBox::Ok);
        QVERIFY(panel().press("listUpload"));
        const QByteArrayList received = panel().module().received();
        QCOMPARE(received.size(), 1);
        QCOMPARE(received.first().left(16), QByteArray(":LIST:DATA #3112"));
        QCOMPARE(received.first().size(), 16 + 112);
        // Little-endian: number, millihertz in 6 bytes, hundredths of a dBm, flags, microseconds in 5 bytes.
        const auto* bytes = reinterpret_cast<const unsigned char*>(received.first().constData()) + 16;
        for (int row = 0; row < 7; ++row, bytes += 16) {
            quint64 millihertz = 0;
            for (int i = 7; i >= 2; --i)
                millihertz = millihertz * 256 + bytes[i];
            QCOMPARE(int(bytes[0]), row + 1);
            QCOMPARE(millihertz, quint64(100500000000ULL + 100000000000ULL * unsigned(row)));
            const int power = row == 0 ? 25 : -(100 * row + 25);
            QCOMPARE(int(qint16(bytes[8] | bytes[9] << 8)), power);
            QCOMPARE(int(bytes[10]), (row == 6 ? 1 : 0) + (row % 2 == 1 ? 2 : 0));
            QCOMPARE(int(bytes[11]), 20 + row);
        }
    }

    /// Whatever runs by pulses is off while the steps are sent and on afterwards, in every outcome.
    void pulseAndPatternAroundAnUpload_data() {
        QTest::addColumn<QString>("prefix");
        QTest::addColumn<bool>("refused");
        for (const bool refused : {false, true}) {
            QTest::addRow("list%s", refused ? ", refused" : "") << "list" << refused;
            QTest::addRow("pattern%s", refused ? ", refused" : "") << "pattern" << refused;
        }
    }
    void pulseAndPatternAroundAnUpload() {
        QFETCH(QString, prefix);
        QFETCH(bool, refused);
        open(prefix);
        panel().module().modify(0, [](ChannelRecord& r) { r.pulseState = 1; });
        panel().window().refreshFromModule();
        const QString header = prefix == "list" ? ":LIST:DATA" : ":PATT:DATA";
        allowMessages("\\[SCPI\\]"); // the simulator does not run a pulse and a pattern at the same time
        if (refused) {
            fail(Sim::Fault::Refuse, header.toLatin1());
            expectMessage(prefix == "list" ? "Failed to send frequencies list" : "Failed to send patterns list");
        } else {
            panel().dialogs().expectButton(DialogKind::Information, "Succeeded!", QMessageBox::Ok);
        }
        QStringList sent = sentAfter(name("Upload"));
        QCOMPARE(panel().toast(), QString(refused ? "command send failure" : ""));
        for (QString& line : sent)
            line = line.section(" #", 0, 0);
        QStringList expected{":PULS:STAT OFF", ":PATT:STAT OFF", header};
        if (prefix == "list")
            expected << ":PULS:STAT ON";
        expected << ":PATT:STAT ON";
        QCOMPARE(sent, expected);
    }

    void aSecondTapOnUploadWhileTheFirstWaits() {
        open("list");
        fail(Sim::Fault::Late, ":LIST:DATA", 300);
        panel().dialogs().expectButton(DialogKind::Information, "Succeeded!", QMessageBox::Ok);
        panel().sent();
        QTimer::singleShot(50, &panel().window(), [this] { panel().press("listUpload"); });
        QVERIFY(panel().press("listUpload"));
        QCOMPARE(panel().sent().size(), 1);
    }

    void runsAndStops_data() { both(); }
    void runsAndStops() {
        QFETCH(QString, prefix);
        open(prefix);
        const bool list = prefix == "list";
        QCOMPARE(sentAfter(name("Enable")),
                 QStringList{list ? ":MODulation:ENABle:MASK 64" : ":MODulation:ENABle:MASK 128"});
        QVERIFY(panel().press("rfOn"));
        QCOMPARE(sentAfter("modOn"), QStringList{list ? ":LIST:STAT ON" : ":PATT:STAT ON"});
        QVERIFY(!panel().widget<QWidget>(name("Enable"))->isEnabled());
        QCOMPARE(panel().text("statusModulation"), QString(list ? "Mode: List" : "Mode: Pattern"));
        QCOMPARE(sentAfter("modOff"), QStringList{list ? ":LIST:STAT OFF" : ":PATT:STAT OFF"});
        QVERIFY(panel().widget<QWidget>(name("Enable"))->isEnabled());
        QVERIFY(panel().widget<QCheckBox>(name("Enable"))->isChecked());
        QCOMPARE(panel().text("statusModulation"), QString("Mode: CW"));
        QCOMPARE(sentAfter(name("Enable")), QStringList{":MODulation:ENABle:MASK 0"});
        QVERIFY(!sentAfter("modOn").join(' ').contains(":STAT ON"));
    }

    void forbiddenCombination_data() { both(); }
    void forbiddenCombination() {
        QFETCH(QString, prefix);
        QVERIFY(panel().press("enableAM"));
        open(prefix);
        QVERIFY(panel().press(name("Enable")));
        QVERIFY(panel().toast().startsWith("cannot enable"));
        QTRY_VERIFY(!panel().widget<QCheckBox>(name("Enable"))->isChecked());
    }

    /// Save, change, overwrite, load, delete: by hand from one end to the other.
    void files_data() { both(); }
    void files() {
        QFETCH(QString, prefix);
        open(prefix);
        QVERIFY(panel().press(name("Add")));
        edit(0, 1, "5", "keyUnit1");
        const QString two = shown();
        saveAs("hop");
        QVERIFY(table()->isVisible());
        QVERIFY(QFileInfo::exists(folder() + "hop.json"));
        QCOMPARE(panel().text(name("Name")), QString("hop.json"));
        const ChannelRecord& cached = panel().handler().snapshot();
        QCOMPARE(recordText(prefix == "list" ? cached.listName : cached.patternName), std::string("hop.json"));

        QVERIFY(panel().press(name("DeleteStep")));
        const QString one = shown();
        const QByteArray saved = contentOf(folder() + "hop.json");
        QVERIFY(panel().press(name("Save")));
        panel().dialogs().expectButton(DialogKind::Question, "Overwrite hop.json", QMessageBox::No);
        touchFile("hop.json");
        QCOMPARE(contentOf(folder() + "hop.json"), saved);
        typeName("hop"); // typed, but there already
        panel().dialogs().expectButton(DialogKind::Question, "Overwrite hop.json", QMessageBox::No);
        touchFile("new file");
        QCOMPARE(contentOf(folder() + "hop.json"), saved);
        QVERIFY(panel().press(name("Cancel")));
        saveAs("one");

        QVERIFY(panel().press(name("Load")));
        touchFile("hop.json");
        QVERIFY(table()->isVisible());
        QCOMPARE(shown(), two);
        QVERIFY(panel().press(name("Load")));
        touchFile("one.json");
        QCOMPARE(shown(), one);

        QVERIFY(panel().press(name("Delete")));
        panel().dialogs().expectButton(DialogKind::Question, "Delete one.json", QMessageBox::No);
        touchFile("one.json");
        QVERIFY(QFileInfo::exists(folder() + "one.json"));
        panel().dialogs().expectButton(DialogKind::Question, "Delete one.json", QMessageBox::Yes);
        touchFile("one.json");
        QVERIFY(!QFileInfo::exists(folder() + "one.json"));
        QCOMPARE(browser()->rowCount(), 1);
        QVERIFY(browser()->isVisible());
        QVERIFY(panel().press(prefix == "list" ? "funcList" : "funcCw"));
        QCOMPARE(panel().sent(), QStringList());
    }

    void cancelledName() {
        open("list");
        QVERIFY(panel().press("listSave"));
        typeName("x", "keyEsc");
        touchFile("new file");
        QVERIFY(browser()->isVisible());
        typeName("");
        touchFile("new file");
        QCOMPARE(panel().toast(), QString("Filename is empty"));
        QCOMPARE(QDir(folder()).entryList(QDir::Files), QStringList());
    }

    /// The longest name that can be typed still fits the record with its ending.
    void longestTypedName() {
        open("list");
        saveAs(QString(40, 'a'));
        const QString name = QString(26, 'a') + ".json";
        QVERIFY(QFileInfo::exists(folder() + name));
        QCOMPARE(recordText(panel().handler().snapshot().listName), name.toStdString());
    }

    /// A file from elsewhere may be named anything; the record takes whole characters up to 31 bytes.
    void strangeFileNames_data() {
        QTest::addColumn<QString>("file");
        QTest::addColumn<QString>("recorded");
        QTest::newRow("blanks and dots") << " a..b .JSON"
                                         << "a..b .JSON";
        QTest::newRow("mark-up") << "<b>x<i>.json"
                                 << "<b>x<i>.json";
        QTest::newRow("place-holder") << "%1 %2.json"
                                      << "%1 %2.json";
        QTest::newRow("letters of two bytes") << QString(40, QChar(0xE4)) + ".json" << QString(15, QChar(0xE4));
        QTest::newRow("very long") << QString(240, 'n') + ".json" << QString(31, 'n');
    }
    void strangeFileNames() {
        QFETCH(QString, file);
        QFETCH(QString, recorded);
        open("list");
        saveAs("hop");
        const QString stored = file.trimmed(); // the store takes no blanks around a name
        QVERIFY(QFile::copy(folder() + "hop.json", folder() + stored));
        QVERIFY(panel().press("listAdd"));
        QVERIFY(panel().press("listLoad"));
        touchFile(stored);
        QCOMPARE(shown(), QString(kOneStep));
        QCOMPARE(recordText(panel().handler().snapshot().listName), recorded.toStdString());
        QVERIFY(panel().press("listDelete"));
        panel().dialogs().expect(DialogKind::Question, "Delete " + stored.left(10), [](QDialog& box) {
            QVERIFY(box.width() <= 1280);
            QTest::mouseClick(static_cast<QMessageBox&>(box).button(QMessageBox::Yes), Qt::LeftButton);
        });
        touchFile(stored);
        QVERIFY(!QFileInfo::exists(folder() + stored));
    }

    void badFiles_data() {
        QTest::addColumn<QString>("prefix");
        QTest::addColumn<QByteArray>("content");
        QTest::addColumn<QString>("toast");
        for (const QString prefix : {"list", "pattern"}) {
            const bool list = prefix == "list";
            const QByteArray root = list ? "VeldaList" : "VeldaPattern";
            const auto row = [&](const char* name, const QByteArray& content, const char* toast) {
                QTest::newRow(qPrintable(prefix + ", " + name)) << prefix << content << toast;
            };
            row("empty", "", "Invalid list JSON file");
            row("torn", "{\"" + root + "\": [{\"steps\":", "Invalid list JSON file");
            row("no JSON", QByteArray(100000, '['), "Invalid list JSON file");
            row("zeros", QByteArray(4096, '\0'), "Invalid list JSON file");
            row("other kind", list ? "{\"VeldaPattern\": [{}]}" : "{\"VeldaList\": [{}]}", "List JSON root is missing");
            row("root no array", "{\"" + root + "\": 5}", "List JSON root is missing");
            row("array at the top", "[1]", "List JSON root is missing");
        }
    }
    void badFiles() {
        QFETCH(QString, prefix);
        QFETCH(QByteArray, content);
        open(prefix);
        QVERIFY(panel().press(name("Add")));
        const QString before = shown();
        write(folder() + "bad.json", content);
        QVERIFY(panel().press(name("Load")));
        touchFile("bad.json");
        QTEST(panel().toast(), "toast");
        QCOMPARE(shown(), before);
        QCOMPARE(contentOf(folder() + "bad.json"), content);
        QVERIFY(panel().press(name("Cancel")));
        QVERIFY(table()->isVisible());
    }

    /// A file that goes while the browser shows it.
    void fileThatIsGone() {
        open("list");
        saveAs("hop");
        for (const char* button : {"listLoad", "listDelete"}) {
            if (!QFileInfo::exists(folder() + "hop.json"))
                write(folder() + "hop.json", "x");
            QVERIFY(panel().press(button));
            QVERIFY(QFile::remove(folder() + "hop.json"));
            if (QString(button) == "listDelete")
                panel().dialogs().expectButton(DialogKind::Question, "Delete hop.json", QMessageBox::Yes);
            touchFile("hop.json");
            QCOMPARE(panel().toast(),
                     QString(QString(button) == "listLoad" ? "Failed to open list file" : "List file does not exist"));
            panel().window().toast()->hideImmediate();
            QVERIFY(panel().press("listCancel"));
        }
    }

    void folderThatCannotBeMade() {
        write(panel().home() + "/kavor/list", "in the way");
        open("list");
        for (const char* button : {"listLoad", "listSave", "listDelete"}) {
            QVERIFY(panel().press(button));
            QCOMPARE(panel().toast(), QString("Failed to create list directory"));
            QVERIFY(table()->isVisible());
            panel().window().toast()->hideImmediate();
        }
    }

    /// A save that fails leaves the old file, the list on screen and the browser as they were.
    void failedSaves_data() {
        QTest::addColumn<QString>("hindrance");
        QTest::addColumn<QString>("toast");
        QTest::newRow("read-only folder") << "folder"
                                          << "Failed to open list file for writing";
        QTest::newRow("folder of that name") << "name"
                                             << "Failed to open list file for writing";
        QTest::newRow("full disk") << "disk"
                                   << "Failed to write list file";
    }
    void failedSaves() {
        QFETCH(QString, hindrance);
        if (hindrance == "folder" && ::geteuid() == 0)
            QSKIP("root writes everywhere");
        open("list");
        saveAs("hop");
        const QByteArray before = contentOf(folder() + "hop.json");
        QVERIFY(QDir().mkpath(folder() + "taken.json"));
        QVERIFY(panel().press("listAdd"));
        QVERIFY(panel().press("listSave"));
        if (hindrance == "name")
            typeName("taken");
        panel().dialogs().expectButton(DialogKind::Question, "Overwrite", QMessageBox::Yes);
        struct rlimit unlimited {};
        QCOMPARE(::getrlimit(RLIMIT_FSIZE, &unlimited), 0);
        if (hindrance == "disk") {
            std::signal(SIGXFSZ, SIG_IGN);
            const struct rlimit few { 100, unlimited.rlim_max };
            QCOMPARE(::setrlimit(RLIMIT_FSIZE, &few), 0);
        }
        ::chmod(qPrintable(folder()), hindrance == "folder" ? 0500 : 0700);
        touchFile(hindrance == "name" ? "new file" : "hop.json");
        ::chmod(qPrintable(folder()), 0700);
        ::setrlimit(RLIMIT_FSIZE, &unlimited);
        QTEST(panel().toast(), "toast");
        QVERIFY(browser()->isVisible());
        QCOMPARE(table()->rowCount(), 2);
        QCOMPARE(contentOf(folder() + "hop.json"), before);
        QCOMPARE(QDir(folder()).entryList(QDir::Files), QStringList{"hop.json"});
    }

    /// What one panel saves another one loads.
    void filesGoFromPanelToPanel_data() { both(); }
    void filesGoFromPanelToPanel() {
        QFETCH(QString, prefix);
        open(prefix);
        QVERIFY(panel().press(name("Add")));
        edit(1, 1, "123.456789", "keyUnit1");
        edit(0, 2, "7", "keyUnit0");
        const QString before = shown();
        saveAs("hop");
        const QByteArray content = contentOf(folder() + "hop.json");
        start();
        open(prefix);
        write(folder() + "hop.json", content);
        QVERIFY(panel().press(name("Load")));
        touchFile("hop.json");
        QCOMPARE(shown(), before);
    }

    void pagesGoBackToTheTable() {
        open("list");
        QVERIFY(panel().press("listLoad"));
        QVERIFY(!panel().widget<QWidget>("listAdd")->isVisible());
        QVERIFY(panel().press("funcSweep"));
        QVERIFY(panel().press("funcList"));
        QVERIFY(table()->isVisible());
        QVERIFY(!browser()->isVisible());
        QVERIFY(panel().press("listLoad"));
        panel().module().modify(0, [](ChannelRecord& r) { r.power.value = 3; });
        panel().window().refreshFromModule(); // leaves the page alone
        QVERIFY(browser()->isVisible());
        QTest::keyClick(browser(), Qt::Key_Escape);
        QVERIFY(table()->isVisible());
    }

    void eachChannelHasItsList() {
        PanelFixture::Setup setup;
        setup.channels = 2;
        start(setup);
        open("list");
        QVERIFY(panel().press("listAdd"));
        QCOMPARE(panel().handler().set_channel(1), 0);
        panel().window().update_from_config(STATE_NONE);
        QCOMPARE(table()->rowCount(), 1);
        saveAs("hop");
        QVERIFY(QFileInfo::exists(panel().home() + "/kavor/list/2/hop.json"));
        QCOMPARE(panel().handler().set_channel(0), 0);
        panel().window().update_from_config(STATE_NONE);
        QCOMPARE(table()->rowCount(), 2);
        QCOMPARE(panel().text("listName"), QString());
    }

    /// Without a module there are no limits and no upload, but a list can be made and saved.
    void withoutAModule() {
        allowMessages(".*");
        PanelFixture::Setup setup;
        setup.startModule = false;
        setup.commandTimeoutMs = 50;
        start(setup);
        panel().dialogs().expect(DialogKind::Critical, QString(), [](QDialog& box) { box.accept(); });
        panel().window().reportError("No connection");
        open("list");
        QCOMPARE(shown(), QString("1,100 MHz,5 dBm,500 µs,Run"));
        edit(0, 1, "7", "keyUnit0");
        QCOMPARE(panel().toast(), QString());
        QVERIFY(panel().press("listUpload"));
        QCOMPARE(panel().toast(), QString("command send failure"));
        saveAs("hop");
        QVERIFY(QFileInfo::exists(folder() + "hop.json"));
    }
};

VELDA_TEST_MAIN(QApplication, ListScreenTest)
#include "tst_listscreen.moc"
