#include "portable/update/update_boxes.h"
#include "portable/widgets/boxes.h"
#include "portable/widgets/combobox.h"
#include "portable/widgets/vkeyboard.h"
#include "portable/widgets/vklineedit.h"
#include "tests/gui/paneltest.h"

#include <QAbstractItemView>
#include <QApplication>
#include <QPushButton>
#include <QTouchDevice>
#include <QWindow>

using namespace Kavor::HandheldGui;

namespace {

const QString Long = QString("/media/stick/") + QString(900, 'x') + "/end";

} // namespace

/// Keyboards, questions, boxes and unit lists inside the window, and what works beside them. Taps go to the window, at
/// a place, as a finger's do.
class DialogsTest : public PanelTest {
    Q_OBJECT

    MainWindow& window() { return panel().window(); }

    QPoint middleOf(const QString& name) {
        const auto* widget = panel().widget<QWidget>(name);
        return widget->mapTo(&window(), widget->rect().center());
    }

    void tap(const QPoint& place) { QTest::mouseClick(window().windowHandle(), Qt::LeftButton, {}, place); }

    QTest::QTouchEventSequence fingers() {
        static QTouchDevice* screen = QTest::createTouchDevice();
        return QTest::touchEvent(window().windowHandle(), screen);
    }

    /// Opens what the row names, looks at it from within, and closes it.
    void inside(const QString& what, const std::function<void(QWidget&)>& look) {
        if (what == "unit list") {
            auto* box = panel().widget<ComboBox>("cwFrequencyUnit");
            box->showPopup();
            look(*box->view());
            box->hidePopup();
            return;
        }
        const DialogKind kind = what == "keyboard"   ? DialogKind::Keyboard
                                : what == "question" ? DialogKind::Question
                                : what == "progress" ? DialogKind::Progress
                                                     : DialogKind::Critical;
        panel().dialogs().expect(kind, QString(), [&look](QDialog& dialog) {
            look(dialog);
            dialog.done(0);
        });
        if (what == "keyboard")
            panel().press("cwFrequency");
        else if (what == "question")
            confirmAction(&window(), "Delete everything?", QString(), Answer::Destroys);
        else if (what == "box")
            window().reportError("Something");
        else {
            QDialog dialog(&window());
            DialogRunner::current().run(dialog, DialogKind::Progress, "Wait");
        }
    }

private slots:
    /// RF Off is one tap away beside everything but an update; On and the rest of the window are not.
    void rfOffBesideDialogs_data() {
        QTest::addColumn<bool>("live");
        for (const char* what : {"keyboard", "question", "box", "unit list"})
            addRow(what, true);
        addRow("progress", false);
    }
    void rfOffBesideDialogs() {
        QFETCH(bool, live);
        QVERIFY(panel().press("rfOn"));
        inside(QTest::currentDataTag(), [&](QWidget& open) {
            panel().sent();
            if (!open.window()->windowFlags().testFlag(Qt::Popup)) {
                for (const char* name : {"rfOn", "modOn", "funcSweep"})
                    tap(middleOf(name));
            }
            QCOMPARE(panel().sent(), QStringList());
            QVERIFY(window().currentState() == STATE_CW);
            // An open list gets every press of the window.
            if (open.window()->windowFlags().testFlag(Qt::Popup))
                QTest::mouseClick(open.window(), Qt::LeftButton, {},
                                  open.window()->mapFromGlobal(window().mapToGlobal(middleOf("rfOff"))));
            else
                tap(middleOf("rfOff"));
            QCOMPARE(panel().record().rfOutput == 0, live);
            QVERIFY(open.isVisible());
        });
    }

    void secondFingerReachesRfOff() {
        QVERIFY(panel().press("rfOn"));
        inside("keyboard", [&](QWidget& keyboard) {
            auto* key = keyboard.findChild<QWidget*>("key5");
            const QPoint rest = key->mapTo(&window(), key->rect().center());
            fingers().press(0, rest, window().windowHandle());
            fingers().stationary(0).press(1, middleOf("rfOff"), window().windowHandle());
            fingers().stationary(0).release(1, middleOf("rfOff"), window().windowHandle());
            QTRY_COMPARE(panel().record().rfOutput, 0U);
            fingers().release(0, rest, window().windowHandle());
            QCOMPARE(keyboard.findChild<QLineEdit*>("keyboardEntry")->text(), QString("5"));
        });
    }

    /// The second press of a double tap, by the times of the events.
    void doubleTap_data() {
        QTest::addColumn<int>("pauseMs");
        QTest::addColumn<int>("pixels");
        QTest::addColumn<QString>("typed");
        addRow("at once", 120, 10, "");
        addRow("later", 450, 10, "5");
        addRow("elsewhere", 120, 60, "5");
    }
    void doubleTap() {
        QFETCH(int, pauseMs);
        QFETCH(int, pixels);
        const QPoint global = window().mapToGlobal(QPoint(200, 348));
        const auto press = [&](QWidget& widget, QEvent::Type type, const QPoint& at, ulong time) {
            QMouseEvent event(type, widget.mapFromGlobal(at), at, Qt::LeftButton, Qt::LeftButton, {});
            event.setTimestamp(time);
            QCoreApplication::sendEvent(&widget, &event);
        };
        VirtKeyboard keyboard(&window(), "Title", QString(), QString());
        panel().dialogs().expect(DialogKind::Keyboard, "Title", [&](QDialog& dialog) {
            auto* key = dialog.findChild<QWidget*>("key5");
            const ulong later = 10000 + ulong(pauseMs);
            press(*key, QEvent::MouseButtonPress, global + QPoint(pixels, 0), later);
            press(*key, QEvent::MouseButtonRelease, global + QPoint(pixels, 0), later + 30);
            QTEST(keyboard.text(), "typed");
            dialog.reject();
        });
        press(*window().contentArea(), QEvent::MouseButtonPress, global, 10000);
        QVERIFY(!keyboard.ask());
    }

    /// A keyboard opened and left where Off is pressed at once: the press counts.
    void doubleTapOnAnOffActs() {
        QVERIFY(panel().press("rfOn"));
        auto* off = panel().widget<QWidget>("rfOff");
        const QPoint global = off->mapToGlobal(off->rect().center());
        const auto send = [&](QEvent::Type type, ulong time) {
            QMouseEvent event(type, off->mapFromGlobal(global), global, Qt::LeftButton, Qt::LeftButton, {});
            event.setTimestamp(time);
            QCoreApplication::sendEvent(off, &event);
        };
        send(QEvent::MouseButtonPress, 20000);
        inside("box", [](QWidget&) {});
        send(QEvent::MouseButtonPress, 20100);
        send(QEvent::MouseButtonRelease, 20130);
        QCOMPARE(panel().record().rfOutput, 0U);
    }

    /// However long the text, the box stays clear of the control row with its buttons inside.
    void boxesFit_data() {
        QTest::addColumn<QString>("text");
        QTest::addColumn<QString>("note");
        addRow("a word", Long, "");
        addRow("words", QString("some words ").repeated(200), "");
        addRow("markup", "<h1>" + QString("<br>").repeated(200), "");
        addRow("lines", QString("line\n").repeated(100), Long);
    }
    void boxesFit() {
        QFETCH(QString, text);
        QFETCH(QString, note);
        const auto look = [this](QDialog& dialog) {
            const QRect free(0, 0, 1280, middleOf("rfOff").y() - 30);
            QVERIFY(free.contains(dialog.geometry()));
            for (const auto* button : dialog.findChildren<QPushButton*>())
                QVERIFY(dialog.rect().contains(QRect(button->mapTo(&dialog, QPoint()), button->size())));
            dialog.done(0);
        };
        panel().dialogs().expect(DialogKind::Question, text, look);
        confirmAction(&window(), text, note);
        panel().dialogs().expect(DialogKind::Critical, text, look);
        window().reportError(text);
        panel().dialogs().expect(DialogKind::Critical, text, look);
        UpdateBoxes(&window(), "FW Update", 1).failure(text);
    }

    /// Return and Esc answer no, and neither answer is recommended.
    void questionsDefaultIsNo() {
        for (const Qt::Key key : {Qt::Key_Return, Qt::Key_Escape}) {
            panel().dialogs().expect(DialogKind::Question, "Sure?", [key](QDialog& dialog) {
                const auto buttons = dialog.findChildren<QPushButton*>();
                QCOMPARE(buttons.size(), 2);
                QCOMPARE(buttons[0]->styleSheet(), buttons[1]->styleSheet());
                QTest::keyClick(dialog.window()->windowHandle(), key);
            });
            QVERIFY(!confirmAction(&window(), "Sure?"));
        }
    }
};

VELDA_TEST_MAIN(QApplication, DialogsTest)
#include "tst_dialogs.moc"
