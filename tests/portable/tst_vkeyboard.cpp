#include "portable/widgets/dialogs.h"
#include "portable/widgets/styles/styles.h"
#include "portable/widgets/vkbutton.h"
#include "portable/widgets/vkeyboard.h"
#include "tests/support/testbase.h"

#include <QApplication>
#include <QLabel>
#include <QLineEdit>
#include <QSignalSpy>
#include <QTouchDevice>

#include <memory>

using namespace Kavor::HandheldGui;

namespace {

enum class Mode { Number, Address, Text };

struct Board {
    QWidget window;
    std::unique_ptr<VirtKeyboard> dialog;

    explicit Board(const QString& value, Mode mode = Mode::Number, const QStringList& units = {}, int maxLength = 12) {
        window.setWindowFlag(Qt::FramelessWindowHint);
        window.setGeometry(0, 0, 1280, 800);
        window.show();
        dialog = std::make_unique<VirtKeyboard>(&window, "Title", units.value(0), value);
        if (mode == Mode::Address)
            dialog->setIPMask();
        if (mode == Mode::Text)
            dialog->setTextMode(maxLength);
        for (int i = 0; i < units.size(); ++i)
            dialog->setUnitsButtons(i, units.at(i));
        dialog->show();
    }

    VKButton* key(const QString& name) const { return dialog->findChild<VKButton*>("key" + name); }
    QLineEdit* entry() const { return dialog->findChild<QLineEdit*>("keyboardEntry"); }

    void press(const QString& keys) const {
        for (const QString& name : keys.split(' ', Qt::SkipEmptyParts)) {
            VKButton* target = key(name);
            QVERIFY2(target && target->isVisible(), qPrintable(name));
            QTest::mouseClick(target, Qt::LeftButton);
        }
    }
};

} // namespace

Q_DECLARE_METATYPE(Mode)

class TestVirtKeyboard : public TestBase {
    Q_OBJECT

private slots:
    void keys_data() {
        QTest::addColumn<Mode>("mode");
        QTest::addColumn<QString>("value");
        QTest::addColumn<QString>("keys");
        QTest::addColumn<QString>("text");
        QTest::addColumn<int>("cursor");
        QTest::addColumn<QString>("selected");
        Mode mode = Mode::Number;
        const auto row = [&mode](const char* tag, const QString& value, const QString& keys, const QString& text,
                                 int cursor, const QString& selected = QString()) {
            addRow(tag, mode, value, keys, text, cursor, selected);
        };
        row("opens with the value", "1.5", "", "1.5", 3);
        row("first digit replaces", "1.5", "7", "7", 1);
        row("first zero replaces", "0.5", "0", "0", 1);
        row("first point replaces", "1.5", "Dot", "0.", 2);
        row("first sign replaces", "1.5", "Sign", "-", 1);
        row("back keeps the value", "1.5", "Back 7", "1.7", 3);
        row("left keeps the value", "1.5", "Left 7", "175", 3, "5");
        row("right keeps the value", "1.5", "Right 7", "1.57", 4);

        row("point on empty", "", "Dot", "0.", 2);
        row("point on minus", "", "Sign Dot", "-0.", 3);
        row("point moves to the end", "", "1 2 Dot 3 4 Dot", "1234.", 5);
        row("point twice", "", "1 Dot Dot", "1.", 2);
        row("point moves to the cursor", "12.34", "Left Left Left Left Dot", "1.234", 3, "2");
        row("point moves right", "1.234", "Left Dot", "123.4", 5, "4");
        row("point on itself", "1.5", "Left Dot", "1.5", 3, "5");
        row("point at the end while overwriting", "1.2", "Left Right Dot", "12.", 3);

        row("digits are overwritten", "12.34", "Left Left Left Left 9", "92.34", 2, "2");
        row("append after the last", "12", "Left 7 8 9", "789", 3);
        row("digit over minus", "-12", "Left Left 5", "512", 2, "1");
        row("digit over point", "1.2", "Left 5", "152", 3, "2");

        row("second leading zero", "0.5", "Left Left Left 0 Left Left 0", "0.5", 2, ".");
        row("zero behind the point", "0.5", "Back 0 0", "0.00", 4);
        row("zero before a point", "10.5", "Left Left Left 0", "00.5", 2, "0");

        row("sign on and off", "", "5 Sign Sign", "5", 1);
        row("sign appended digits", "", "5 Sign 6", "-56", 3);
        row("sign off while overwriting", "-12", "Left Sign", "12", 1, "1");
        row("sign off on the sign", "-12", "Left Left Sign", "12", 1, "1");

        row("back to nothing", "", "1 Back Back", "", 0);
        row("back while overwriting", "1234", "Left Back", "124", 2, "2");
        row("back on the first", "1234", "Left Left Left Back", "234", 1, "2");
        row("back on the only one", "5", "Left Back", "", 0);
        row("clear", "12.5", "Clear", "", 0);
        row("clear while overwriting", "12.5", "Left Left Clear 4 5", "45", 2);

        row("left stays at the first", "12", "Left Left Left Left", "12", 1, "1");
        row("right leaves the last", "12", "Left Right Right Right", "12", 2);
        row("left and right on empty", "", "Left Right 3", "3", 1);

        mode = Mode::Address;
        row("address", "", "1 9 2 Dot 1 6 8 Dot 1 Dot 1 0", "192.168.1.10", 12);
        row("part above 255", "", "2 5 6", "25", 2);
        row("fourth digit", "", "1 0 0 0", "100", 3);
        row("leading zeros", "", "0 0 1", "001", 3);
        row("point first", "", "Dot", "", 0);
        row("point twice in an address", "", "1 Dot Dot", "1.", 2);
        row("fifth part", "", "1 Dot 1 Dot 1 Dot 1 Dot", "1.1.1.1", 7);
        row("first digit replaces the address", "10.0.0.1", "7", "7", 1);
        row("point does not", "10.0.0.1", "Dot", "10.0.0.1", 8);
        row("ip closes a part", "", "1 0 IP 5", "10.5", 4);
        row("ip leaves an empty part alone", "", "1 0 IP IP", "10.", 3);
        row("ip selects the part", "10.0.0.17", "IP", "10.0.0.17", 9, "17");
        row("ip replaces the part", "10.0.0.17", "IP 2 5", "10.0.0.25", 9);
        row("ip goes round", "10.20.0.17", "IP IP IP", "10.20.0.17", 5, "20");
        row("point steps over", "10.2.0.17", "IP IP 9 Dot 8", "9.82.0.17", 3);
        row("nothing that makes a part too large", "10.20.0.17", "IP IP 9 Dot 8", "9.20.0.17", 2);
        row("part replaced, next one too", "10.20.0.17", "IP IP 9 IP IP 8", "9.8.0.17", 3);
        row("back removes the selected part", "10.0.0.17", "IP Back", "10.0.0.", 7);

        mode = Mode::Text;
        row("text", "", "Shift L I", "Li", 2);
        row("shift is for one letter", "", "Shift A A 1 Minus Underscore Space B", "Aa1-_ b", 7);
        row("shift outlasts a digit", "", "Shift 1 A", "1A", 2);
        row("shift twice", "", "Shift Shift A", "a", 1);
        row("text is inserted at the cursor", "", "A B C Left Left X", "axbc", 2);
        row("back at the cursor", "", "A B C Left Back", "ac", 1);
        row("back at the start", "", "A Left Left Back", "a", 0);
        row("longest text", "", "A B C D E F G H I J K L M N", "abcdefghijkl", 12);
    }

    void keys() {
        QFETCH(Mode, mode);
        QFETCH(QString, value);
        QFETCH(QString, keys);
        const Board board(value, mode);
        board.press(keys);
        QTEST(board.entry()->text(), "text");
        QTEST(board.entry()->cursorPosition(), "cursor");
        QTEST(board.entry()->selectedText(), "selected");
    }

    // 0.5 with the cursor before the zero cannot be reached by keys that select.
    void noSecondLeadingZeroAtTheStart() {
        for (const char* value : {"0.5", "-0.5"}) {
            const Board board(value);
            board.press("Right");
            board.entry()->setCursorPosition(0);
            board.press("0");
            QCOMPARE(board.entry()->text(), QString(value));
        }
    }

    void showsWhatIsEdited() {
        const Board board("1.5", Mode::Number, {"GHz", "MHz", "KHz", "Hz"});
        board.dialog->setHighliteButton(2);
        QCOMPARE(board.dialog->findChild<QLabel*>("keyboardTitle")->text(), QString("Title"));
        QCOMPARE(board.dialog->findChild<QLabel*>("keyboardUnit")->text(), QString("GHz"));
        QVERIFY(!board.key("Unit1")->isChosen());
        QVERIFY(board.key("Unit2")->isChosen());
        QCOMPARE(board.dialog->geometry(), QRect(244, 24, 792, 752));

        const Board longest("-1500000000.123456789012", Mode::Number, {"GHz"});
        const QLineEdit* entry = longest.entry();
        QVERIFY(entry->fontMetrics().horizontalAdvance(entry->text()) < entry->width());
        QVERIFY(entry->fontMetrics().capHeight() >= 28);
    }

    void ends_data() {
        // clang-format off
        QTest::addColumn<QString>("keys");
        QTest::addColumn<int>("result");
        QTest::addColumn<QString>("target");
        QTest::addColumn<QString>("unit");
        addRow("enter", "7 Enter", int(QDialog::Accepted), "7", "MHz");
        addRow("enter at once", "Enter", int(QDialog::Accepted), "1.5", "MHz");
        addRow("unit", "7 Unit1", int(QDialog::Accepted), "7", "KHz");
        addRow("blank unit", "7 Unit2", int(QDialog::Accepted), "7", "MHz");
        addRow("esc", "7 Esc", int(QDialog::Rejected), "before", "MHz");
        // clang-format on
    }

    void ends() {
        QFETCH(QString, keys);
        QFETCH(int, result);
        Board board("1.5", Mode::Number, {"MHz", "KHz", ""});
        board.dialog->setUnitsButtons(4, "THz");
        board.dialog->setUnitsButtons(-1, "THz");
        QVERIFY(!board.key("Unit3"));
        QLineEdit target("before");
        board.dialog->setLineEdit(&target);
        board.press(keys);
        QCOMPARE(board.dialog->result(), result);
        QCOMPARE(board.dialog->isCancelled(), result == QDialog::Rejected);
        QVERIFY(board.dialog->isHidden());
        QTEST(target.text(), "target");
        QTEST(board.dialog->chosenUnit(), "unit");
    }

    void targetMayGoFirst() {
        Board board("1.5");
        auto target = std::make_unique<QLineEdit>();
        board.dialog->setLineEdit(target.get());
        target.reset();
        board.press("Enter");
        QCOMPARE(board.dialog->result(), int(QDialog::Accepted));
    }

    void closingTheWindowCancels() {
        Board board("1.5");
        board.dialog->close();
        QVERIFY(board.dialog->isCancelled());
    }

    void addressWaitsForItsParts() {
        const Board board("", Mode::Address);
        board.press("1 Dot 2 Dot 3 Dot");
        QVERIFY(!board.key("Enter")->isEnabled());
        board.press("Enter");
        QVERIFY(board.dialog->isVisible());
        board.press("4");
        QVERIFY(board.key("Enter")->isEnabled());
        QVERIFY(!board.key("Sign") || board.key("Sign")->isHidden());
    }

    void keysThatAFieldHasNoUseFor() {
        Board board("");
        board.dialog->setSignEnabled(false);
        board.dialog->setPointEnabled(false);
        board.dialog->setEnterText("ENTER");
        board.press("Sign Dot 5");
        QCOMPARE(board.entry()->text(), QString("5"));
        QCOMPARE(board.key("Enter")->text(), QString("ENTER"));
    }

    void physicalKeysWorkTheKeysOnTheScreen() {
        {
            const Board board("7");
            QTest::keyClicks(board.entry(), "-1.25e3");
            QTest::keyClick(board.entry(), Qt::Key_Backspace);
            QTest::keyClick(board.entry(), Qt::Key_Left);
            QCOMPARE(board.entry()->text(), QString("-1.25"));
            QCOMPARE(board.entry()->selectedText(), QString("2"));
            QTest::keyClick(board.entry(), Qt::Key_Return);
            QCOMPARE(board.dialog->result(), int(QDialog::Accepted));
        }
        const Board board("", Mode::Text);
        QTest::keyClicks(board.entry(), "My List_1-b/?");
        QCOMPARE(board.entry()->text(), QString("My List_1-b"));
        QTest::keyClick(board.entry(), Qt::Key_Escape);
        QVERIFY(board.dialog->isCancelled());
    }

    void pressThatSlidesOffDoesNothing() {
        for (const bool touch : {false, true}) {
            const Board board("");
            VKButton* key = board.key("5");
            const QPoint inside = key->rect().center();
            const QPoint outside(-20, inside.y());
            down(key, touch, inside);
            QVERIFY(key->isPressedLook());
            drag(key, touch, outside);
            QVERIFY(!key->isPressedLook());
            up(key, touch, outside);
            QCOMPARE(board.entry()->text(), QString());
            QVERIFY(!key->isPressedLook());
        }
    }

    void actsOnceWhereTouchAndMouseReportTheSamePress_data() {
        QTest::addColumn<QString>("order"); // t, T touch down, up; m, M mouse
        for (const char* order : {"tT", "mM", "tmTM", "mtTM", "tmMT", "mtMT", "tTmM", "mMtT"})
            addRow(order, order);
    }

    void actsOnceWhereTouchAndMouseReportTheSamePress() {
        QFETCH(QString, order);
        const Board board("");
        VKButton* key = board.key("5");
        const QPoint centre = key->rect().center();
        for (const QChar step : order) {
            if (step.isLower())
                down(key, step == 't', centre);
            else
                up(key, step == 'T', centre);
        }
        QCOMPARE(board.entry()->text(), QString("5"));
    }

    void quickTapsAllAct() {
        const Board board("");
        VKButton* key = board.key("5");
        for (int i = 0; i < 3; ++i) {
            down(key, true, key->rect().center());
            up(key, true, key->rect().center());
        }
        QTest::mouseClick(board.key("6"), Qt::LeftButton);
        QTest::mouseDClick(board.key("6"), Qt::LeftButton);
        QTest::mouseRelease(board.key("6"), Qt::LeftButton);
        QCOMPARE(board.entry()->text(), QString("55566"));
    }

private:
    static void down(QWidget* widget, bool touch, const QPoint& at) {
        if (touch)
            QTest::touchEvent(widget, device()).press(1, at, widget);
        else
            QTest::mousePress(widget, Qt::LeftButton, {}, at);
    }

    static void drag(QWidget* widget, bool touch, const QPoint& at) {
        if (touch) {
            QTest::touchEvent(widget, device()).move(1, at, widget);
            return;
        }
        QMouseEvent move(QEvent::MouseMove, at, widget->mapToGlobal(at), Qt::NoButton, Qt::LeftButton, {});
        QApplication::sendEvent(widget, &move);
    }

    static void up(QWidget* widget, bool touch, const QPoint& at) {
        if (touch)
            QTest::touchEvent(widget, device()).release(1, at, widget);
        else
            QTest::mouseRelease(widget, Qt::LeftButton, {}, at);
    }

    static QTouchDevice* device() {
        static QTouchDevice* screen = QTest::createTouchDevice();
        return screen;
    }
};

int main(int argc, char** argv) {
    QApplication app(argc, argv);
    applyApplicationStyle(app);
    TestVirtKeyboard test;
    return runTest(test, argc, argv);
}
#include "tst_vkeyboard.moc"
