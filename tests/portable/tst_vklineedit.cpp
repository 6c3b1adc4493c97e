#include "portable/widgets/combobox.h"
#include "portable/widgets/dialogs.h"
#include "portable/widgets/entry.h"
#include "portable/widgets/vkbutton.h"
#include "portable/widgets/vkeditors.h"
#include "portable/widgets/vkeyboard.h"
#include "tests/support/testbase.h"
#include "values/messagesink.h"

#include <QApplication>
#include <QLabel>
#include <QSignalSpy>
#include <QTimer>
#include <QTouchDevice>

#include <functional>
#include <memory>

using namespace Kavor::HandheldGui;

namespace {

const QString kMicroVolt = QString::fromUtf8("\xC2\xB5V");

class RecordingSink : public MessageSink {
public:
    void showMessage(const QString& text, float) override { texts << text; }
    QStringList texts;
};

// Runs each dialog for real and presses keys in it once it is up.
class Typist : public DialogRunner {
public:
    Typist() { install(this); }
    ~Typist() override { install(nullptr); }

    QString keys;
    std::function<void(VirtKeyboard&)> look;
    int runs = 0;
    QStringList titles;
    QStringList units;

protected:
    int execute(QDialog& dialog, DialogKind kind, const QString& text) override {
        ++runs;
        titles << text;
        auto& keyboard = dynamic_cast<VirtKeyboard&>(dialog);
        if (kind != DialogKind::Keyboard)
            qFatal("not a keyboard");
        QTimer::singleShot(0, &dialog, [this, &keyboard] {
            for (int i = 0; i < 4; ++i) {
                const auto* key = keyboard.findChild<VKButton*>(QStringLiteral("keyUnit%1").arg(i));
                if (key)
                    units << (key->isChosen() ? "*" : "") + key->text();
            }
            if (look)
                look(keyboard);
            for (const QString& name : keys.split(' ', Qt::SkipEmptyParts)) {
                auto* key = keyboard.findChild<VKButton*>("key" + name);
                QVERIFY2(key && key->isVisible(), qPrintable(name));
                QTest::mouseClick(key, Qt::LeftButton);
            }
        });
        return dialog.exec();
    }
};

struct Page {
    QWidget window;
    ComboBox* box;
    RecordingSink sink;

    Page() : box(new ComboBox(&window)) {
        window.resize(1280, 800);
        window.setFocusPolicy(Qt::NoFocus);
        window.show();
    }

    template <class Edit>
    Edit* add(const QString& text) {
        auto* edit = new Edit(&window);
        edit->setGeometry(20, 20, 300, 64);
        edit->setTitle("What");
        edit->setMessageSink(&sink);
        edit->setText(text);
        edit->show();
        return edit;
    }
};

ValueEdit* make(Page& page, const QString& kind, const QString& text) {
    // clang-format off
    if (kind == "frequency") return page.add<vkFreqEdit>(text);
    if (kind == "time")      return page.add<vkTimeEdit>(text);
    if (kind == "power")     return page.add<vkPowerEdit>(text);
    if (kind == "percent")   return page.add<vkPercentEdit>(text);
    if (kind == "phase")     return page.add<vkPhaseEdit>(text);
    if (kind == "address")   return page.add<vkIPEdit>(text);
    // clang-format on
    return page.add<vkNoUnitsEdit>(text);
}

} // namespace

class TestValueEdits : public TestBase {
    Q_OBJECT

private slots:
    void entry_data() {
        QTest::addColumn<QString>("kind");
        QTest::addColumn<QStringList>("boxUnits");
        QTest::addColumn<int>("boxIndex");
        QTest::addColumn<QString>("before");
        QTest::addColumn<QString>("keys");
        QTest::addColumn<QString>("after");
        QTest::addColumn<int>("boxAfter");
        QTest::addColumn<int>("emitted");
        const QStringList hertz{"GHz", "MHz", "KHz", "Hz"};
        const QStringList seconds = unitNames(UnitQuantity::Time);
        const auto row = [](const char* tag, const QString& kind, const QStringList& units, int index,
                            const QString& before, const QString& keys, const QString& after, int boxAfter,
                            int emitted) {
            addRow(tag, kind, units, index, before, keys, after, boxAfter, emitted);
        };
        row("enter keeps the unit", "frequency", hertz, 1, "1.5", "7 5 Enter", "75", 1, 1);
        row("unit key", "frequency", hertz, 1, "1.5", "7 5 Unit0", "75", 0, 1);
        row("unit key alone", "frequency", hertz, 1, "1.5", "Unit3", "1.5", 3, 1);
        row("esc", "frequency", hertz, 1, "1.5", "7 5 Esc", "1.5", 1, 0);
        row("nothing entered", "frequency", hertz, 1, "1.5", "Clear Unit3", "", 1, 1);
        row("minus alone", "frequency", hertz, 1, "1.5", "Sign Unit3", "-", 1, 1);
        row("time", "time", seconds, 2, "20", "5 Dot 5 Unit1", "5.5", 1, 1);
        row("power", "power", {}, -1, "-7.50", "Sign 1 0 Enter", "-10", -1, 1);
        row("power in dBm", "power", {}, -1, "-7.50", "3 Unit0", "3", -1, 1);
        row("power in mV", "power", {}, -1, "-7.50", "1 0 0 0 Unit3", "13.0103", -1, 1);
        row("power not above zero", "power", {}, -1, "-7.50", "0 Unit2", "-7.50", -1, 0);
        row("power below zero", "power", {}, -1, "-7.50", "Sign 5 Unit3", "-7.50", -1, 0);
        row("power of nothing", "power", {}, -1, "-7.50", "Clear Unit3", "", -1, 1);
        row("percent", "percent", {}, -1, "30.0", "4 0 Enter", "40", -1, 1);
        row("phase", "phase", {}, -1, "0.0", "Sign 9 0 Enter", "-90", -1, 1);
        row("number", "number", {}, -1, "10", "2 Dot 9 Enter", "2.9", -1, 1);
        row("address", "address", {}, -1, "10.0.0.1", "IP 7 Enter", "10.0.0.7", -1, 1);
    }

    void entry() {
        QFETCH(QString, kind);
        QFETCH(QStringList, boxUnits);
        QFETCH(QString, before);
        Page page;
        page.box->addItems(boxUnits);
        QFETCH(int, boxIndex);
        page.box->setCurrentIndex(boxIndex);
        ValueEdit* edit = make(page, kind, before);
        if (!boxUnits.isEmpty())
            edit->setUnitBox(page.box);
        const QSignalSpy changed(edit, &ValueEdit::valueChanged);
        const QSignalSpy boxChanged(page.box, &ComboBox::indexChanged);
        Typist typist;
        QFETCH(QString, keys);
        typist.keys = keys;
        QTest::mouseClick(edit, Qt::LeftButton);
        QCOMPARE(typist.titles, QStringList("What"));
        QTEST(edit->text(), "after");
        QTEST(page.box->currentIndex(), "boxAfter");
        QTEST(changed.count(), "emitted");
        QCOMPARE(boxChanged.count(), 0);
        QVERIFY(!edit->isEditing());
        QVERIFY(!edit->hasFocus());
        QVERIFY(!DialogRunner::anyOpen());
        QVERIFY(!page.window.findChild<VirtKeyboard*>());
    }

    void powerSaysWhyItWasNotTaken() {
        Page page;
        auto* edit = page.add<vkPowerEdit>("-7.50");
        Typist typist;
        typist.keys = "0 Unit3";
        QTest::mouseClick(edit, Qt::LeftButton);
        QCOMPARE(page.sink.texts, QStringList("mV and " + kMicroVolt + " values must be greater than zero"));
        edit->setMessageSink(nullptr);
        QTest::mouseClick(edit, Qt::LeftButton);
        QCOMPARE(edit->text(), QString("-7.50"));
        typist.keys = "0 Dot 2 Unit3";
        QTest::mouseClick(edit, Qt::LeftButton);
        QCOMPARE(edit->chosenUnit(), QString("mV"));
        QCOMPARE(page.sink.texts.size(), 1);
    }

    void keyboardShowsTheField_data() {
        // clang-format off
        QTest::addColumn<QString>("kind");
        QTest::addColumn<QString>("unit");
        QTest::addColumn<QStringList>("keys");
        addRow("frequency", "frequency", "KHz", QStringList{"MHz", "*KHz", "Hz"});
        addRow("power", "power", "dBm", QStringList{"*dBm", QString("dB%1").arg(kMicroVolt), kMicroVolt, "mV"});
        addRow("percent", "percent", "%", QStringList());
        addRow("phase", "phase", QString(QChar(0xB0)), QStringList());
        addRow("number", "number", "", QStringList());
        // clang-format on
    }

    void keyboardShowsTheField() {
        QFETCH(QString, kind);
        Page page;
        page.box->addItems({"MHz", "KHz", "Hz"});
        page.box->setCurrentIndex(1);
        ValueEdit* edit = make(page, kind, "1.500");
        if (kind == "frequency")
            edit->setUnitBox(page.box);
        Typist typist;
        QString unit;
        QString value;
        bool editing = false;
        typist.look = [&](VirtKeyboard& keyboard) {
            unit = keyboard.findChild<QLabel*>("keyboardUnit")->text();
            value = keyboard.text();
            editing = edit->isEditing() && DialogRunner::anyOpen() && keyboard.parentWidget() == &page.window;
        };
        typist.keys = "Esc";
        QTest::mouseClick(edit, Qt::LeftButton);
        QTEST(unit, "unit");
        QTEST(typist.units, "keys");
        QCOMPARE(value, QString("1.500"));
        QVERIFY(editing);
    }

    void opensByTouchOnce() {
        Page page;
        auto* edit = page.add<vkNoUnitsEdit>("1");
        Typist typist;
        typist.keys = "2 Enter";
        QTouchDevice* screen = QTest::createTouchDevice();
        QTest::touchEvent(edit, screen).press(1, edit->rect().center(), edit);
        QTest::touchEvent(edit, screen).release(1, edit->rect().center(), edit);
        QCoreApplication::processEvents();
        QCOMPARE(typist.runs, 1);
        QCOMPARE(edit->text(), QString("2"));
    }

    void secondTouchWhileEditingIsSwallowed() {
        Page page;
        auto* edit = page.add<vkNoUnitsEdit>("1");
        Typist typist;
        const auto touchAgain = [edit] {
            QMouseEvent press(QEvent::MouseButtonPress, QPointF(5, 5), Qt::LeftButton, Qt::LeftButton, {});
            QVERIFY(QCoreApplication::sendEvent(edit, &press));
            QVERIFY(press.isAccepted());
        };
        typist.look = [&](VirtKeyboard&) {
            touchAgain();
        };
        connect(edit, &ValueEdit::valueChanged, this, [&] {
            QVERIFY(edit->isEditing());
            touchAgain();
        });
        typist.keys = "2 Enter";
        QTest::mouseClick(edit, Qt::LeftButton);
        QCOMPARE(typist.runs, 1);
        QTest::mouseClick(edit, Qt::LeftButton);
        QCOMPARE(typist.runs, 2);
    }

    void doesNotOpen_data() {
        QTest::addColumn<QString>("kind");
        QTest::addColumn<bool>("enabled");
        addRow("frequency without box", "frequency", true);
        addRow("time without box", "time", true);
        addRow("disabled", "number", false);
    }

    void doesNotOpen() {
        QFETCH(QString, kind);
        QFETCH(bool, enabled);
        Page page;
        ValueEdit* edit = make(page, kind, "1");
        edit->setEnabled(enabled);
        const QSignalSpy changed(edit, &ValueEdit::valueChanged);
        Typist typist;
        QTest::mouseClick(edit, Qt::LeftButton);
        QCOMPARE(typist.runs, 0);
        QCOMPARE(changed.count(), 0);
        QVERIFY(!edit->isEditing());
    }

    void unitKeysOfItsOwn() {
        Page page;
        auto* edit = page.add<vkNoUnitsEdit>("1");
        edit->setUnitNames({"", "K"});
        Typist typist;
        typist.keys = "2 Unit1";
        QTest::mouseClick(edit, Qt::LeftButton);
        QCOMPARE(edit->chosenUnit(), QString("K"));
        typist.keys = "3 Unit0";
        QTest::mouseClick(edit, Qt::LeftButton);
        QCOMPARE(edit->chosenUnit(), QString());
        QCOMPARE(edit->text(), QString("3"));
    }

    // A receiver of valueChanged can take the screen down, and so can anything while the keyboard is open.
    void editorMayGoWhileItWaits_data() {
        QTest::addColumn<bool>("whileOpen");
        addRow("in valueChanged", false);
        addRow("while the keyboard is open", true);
    }

    void editorMayGoWhileItWaits() {
        QFETCH(bool, whileOpen);
        auto page = std::make_unique<Page>();
        QPointer<vkNoUnitsEdit> edit = page->add<vkNoUnitsEdit>("1");
        Typist typist;
        typist.keys = "2 Enter";
        if (whileOpen)
            typist.look = [&](VirtKeyboard&) {
                delete edit.data();
            };
        else
            connect(edit, &ValueEdit::valueChanged, this, [&] { delete edit.data(); });
        QMouseEvent press(QEvent::MouseButtonPress, QPointF(5, 5), Qt::LeftButton, Qt::LeftButton, {});
        QCoreApplication::sendEvent(edit, &press);
        QVERIFY(!edit);
        QCOMPARE(typist.runs, 1);
    }

    void comboBoxHandsItsChangesOn() {
        ComboBox box;
        box.addItems({"MHz", "KHz", "Hz"});
        QSignalSpy changed(&box, &ComboBox::indexChanged);
        box.setCurrentIndex(2);
        box.setCurrentIndex(2);
        QCOMPARE(changed.count(), 1);
        QCOMPARE(changed.first().first().toInt(), 2);
    }
};

VELDA_TEST_MAIN(QApplication, TestValueEdits)
#include "tst_vklineedit.moc"
