#include "portable/widgets/combobox.h"
#include "portable/widgets/dialogs.h"
#include "portable/widgets/vkbutton.h"
#include "portable/widgets/vkeditors.h"
#include "portable/widgets/vkeyboard.h"
#include "tests/support/testbase.h"
#include "tests/values/recordingsink.h"

#include <QApplication>
#include <QSignalSpy>
#include <QTimer>
#include <functional>

using namespace Kavor::HandheldGui;

namespace {

const QString MicroVolt = QString::fromUtf8("\xC2\xB5V");

// Runs each dialog for real and presses keys in it once it is up.
class Typist : public DialogRunner {
public:
    Typist() { install(this); }
    ~Typist() override { install(nullptr); }

    QString keys;
    std::function<void(VirtKeyboard&)> look;
    int runs = 0;
    QStringList titles;

protected:
    int execute(QDialog& dialog, DialogKind kind, const QString& text) override {
        ++runs;
        titles << text;
        auto& keyboard = dynamic_cast<VirtKeyboard&>(dialog);
        if (kind != DialogKind::Keyboard)
            qFatal("not a keyboard");
        QTimer::singleShot(0, &dialog, [this, &keyboard] {
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
    if (kind == "power")     return page.add<vkPowerEdit>(text);
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
        addRow("enter keeps the unit", "frequency", hertz, 1, "1.5", "7 5 Enter", "75", 1, 1);
        addRow("unit key alone", "frequency", hertz, 1, "1.5", "Unit3", "1.5", 3, 1);
        addRow("esc", "frequency", hertz, 1, "1.5", "7 5 Esc", "1.5", 1, 0);
        addRow("power", "power", QStringList(), -1, "-7.50", "Sign 1 0 Enter", "-10", -1, 1);
        addRow("power in mV", "power", QStringList(), -1, "-7.50", "1 0 0 0 Unit3", "13.0103", -1, 1);
        addRow("power not above zero", "power", QStringList(), -1, "-7.50", "0 Unit2", "-7.50", -1, 0);
        addRow("number", "number", QStringList(), -1, "10", "2 Dot 9 Enter", "2.9", -1, 1);
        addRow("address", "address", QStringList(), -1, "10.0.0.1", "IP 7 Enter", "10.0.0.7", -1, 1);
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
};

VELDA_TEST_MAIN(QApplication, TestValueEdits)
#include "tst_vklineedit.moc"
