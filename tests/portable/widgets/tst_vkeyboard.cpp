#include "portable/widgets/pressfilter.h"
#include "portable/widgets/styles/styles.h"
#include "portable/widgets/vkbutton.h"
#include "portable/widgets/vkeyboard.h"
#include "tests/support/testbase.h"

#include <QApplication>
#include <QLineEdit>
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
        row("opens with the value", "1.5", "", "1.5", 3, "1.5");
        row("an exponent is written out", "-1.234567e+06", "", "-1234567", 8, "-1234567");
        row("first digit replaces", "1.5", "7", "7", 1);
        row("back keeps the value", "1.5", "Back 7", "1.7", 3);
        row("left keeps the value", "1.5", "Left 7", "1.7", 3);

        row("point on minus", "", "Sign Dot", "-0.", 3);
        row("point moves to the cursor", "12.34", "Left Left Left Left Dot", "1.234", 3, "2");
        row("point moves right", "1.234", "Left Left Dot", "123.4", 5, "4");
        row("steps over the point to the left", "1.5", "Left Left", "1.5", 1, "1");
        row("steps over the point to the right", "1.5", "Left Left Right", "1.5", 3, "5");

        row("digits are overwritten", "12.34", "Left Left Left Left 9", "92.34", 2, "2");
        row("point is not overwritten", "1.500", "Left Left Left Left 2 4", "2.400", 4, "0");

        row("sign appended digits", "", "5 Sign 6", "-56", 3);
        row("sign off on the sign", "-12", "Left Left Sign", "12", 1, "1");

        row("back while overwriting", "1234", "Left Left Back", "124", 2, "2");
        row("back steps over the point", "1.5", "Left Back", "1.", 1, "1");
        row("clear while overwriting", "12.5", "Left Left Clear 4 5", "45", 2);

        row("left stays at the first", "12", "Left Left Left Left", "12", 1, "1");
        row("right leaves the last", "12", "Left Right Right Right", "12", 2);

        mode = Mode::Address;
        row("address", "", "1 9 2 Dot 1 6 8 Dot 1 Dot 1 0", "192.168.1.10", 12);
        row("part above 255", "", "2 5 6", "25", 2);
        row("leading zeros", "", "0 0 1", "001", 3);
        row("point first", "", "Dot", "", 0);
        row("fifth part", "", "1 Dot 1 Dot 1 Dot 1 Dot", "1.1.1.1", 7);
        row("point first on a value", "10.0.0.1", "Dot 7", "7", 1);
        row("ip closes a part", "", "1 0 IP 5", "10.5", 4);
        row("ip replaces the part", "10.0.0.17", "IP 2 5", "10.0.0.25", 9);
        row("ip goes round", "10.20.0.17", "IP IP IP", "10.20.0.17", 5, "20");
        row("nothing that makes a part too large", "10.20.0.17", "IP IP 9 Dot 8", "9.20.0.17", 2);

        mode = Mode::Text;
        row("shift is for one letter", "", "Shift A A 1 Minus Underscore Space B", "Aa1-_ b", 7);
        row("text is inserted at the cursor", "", "A B C Left Left X", "axbc", 2);
        row("back at the cursor", "", "A B C Left Back", "ac", 1);
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

    void enterWaitsForWhatCanBeTaken_data() {
        QTest::addColumn<Mode>("mode");
        QTest::addColumn<QString>("keys");
        QTest::addColumn<QString>("last");
        addRow("address", Mode::Address, "1 Dot 2 Dot 3 Dot", "4");
        addRow("number", Mode::Number, "", "7");
        addRow("sign", Mode::Number, "Sign", "Dot");
    }
    void enterWaitsForWhatCanBeTaken() {
        QFETCH(Mode, mode);
        QFETCH(QString, keys);
        QFETCH(QString, last);
        const Board board("", mode, mode == Mode::Number ? QStringList{"MHz"} : QStringList());
        board.press(keys);
        for (const char* key : {"Enter", "Unit0"})
            QVERIFY(!board.key(key) || !board.key(key)->isEnabled());
        board.press("Enter");
        QVERIFY(board.dialog->isVisible());
        board.press(last);
        QVERIFY(board.key("Enter")->isEnabled());
    }

    // By a red edge, for a moment.
    void refusedKeyShowsIt() {
        const Board board("", Mode::Address);
        board.press("2 5");
        const QImage before = board.dialog->grab().toImage();
        board.press("6");
        QVERIFY(board.dialog->grab().toImage() != before);
        QTRY_VERIFY(board.dialog->grab().toImage() == before);
    }

    void pressThatSlidesOffDoesNothing() {
        const Board board("");
        VKButton* key = board.key("5");
        const QPoint outside(-20, key->rect().center().y());
        down(key, true, key->rect().center());
        QVERIFY(key->isPressedLook());
        QTest::touchEvent(key, device()).move(1, outside, key);
        QVERIFY(!key->isPressedLook());
        up(key, true, outside);
        QCOMPARE(board.entry()->text(), QString());
    }

    // t, T touch down, up; m, M mouse.
    void actsOnceWhereTouchAndMouseReportTheSamePress() {
        for (const QString& order : QStringList{"tT", "mM", "tmTM", "mtTM", "tmMT", "mtMT", "tTmM", "mMtT"}) {
            const PressFilter filter(nullptr);
            const Board board("");
            VKButton* key = board.key("5");
            for (const QChar step : order)
                (step.isLower() ? down : up)(key, step.toLower() == 't', key->rect().center());
            QVERIFY2(board.entry()->text() == "5", qPrintable(order));
        }
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
