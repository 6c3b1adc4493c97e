#include "portable/widgets/entry.h"
#include "tests/support/testbase.h"
#include "values/messagesink.h"

#include <QApplication>
#include <QComboBox>
#include <QLineEdit>
#include <QSignalSpy>
#include <cmath>

namespace {

constexpr int Time = -1;

class RecordingSink : public MessageSink {
public:
    void showMessage(const QString& text, float) override { texts << text; }
    QStringList texts;
};

QStringList unitsOf(int row) {
    return unitNames(row == Time ? UnitQuantity::Time : UnitQuantity::Frequency).mid(row == Time ? 0 : row);
}

} // namespace

class TestEntry : public TestBase {
    Q_OBJECT

private slots:
    void normalizes_data() {
        QTest::addColumn<int>("row");
        QTest::addColumn<int>("offered"); // units in the box, 4 for all
        QTest::addColumn<bool>("isCanonical");
        QTest::addColumn<double>("value");
        QTest::addColumn<int>("index");
        QTest::addColumn<double>("canonical");
        QTest::addColumn<QString>("text");
        QTest::addColumn<int>("shown");
        addRow("1500 MHz", 0, 4, false, 1500.0, 1, 1.5e9, QString("1.500000000000"), 0);
        addRow("canonical ignores the box", 0, 4, true, 1500.0, 0, 1500.0, QString("1.500000"), 2);
        addRow("rate of 2 GHz", 1, 4, true, 2e9, 2, 2e9, QString("2000.000000000"), 0);
        addRow("0 in row 1", 1, 4, false, 0.0, 0, 0.0, QString("0.000"), 2);
        addRow("999 µs", Time, 4, false, 999.0, 1, 999e3, QString("999.000"), 1);
        addRow("1000 µs", Time, 4, false, 1000.0, 1, 1e6, QString("1.000000"), 2);
        addRow("0 s", Time, 4, false, 0.0, 3, 0.0, QString("0"), 0);
        addRow("1 s without seconds", Time, 3, true, 1e9, 0, 1e9, QString("1000.000000"), 2);
        addRow("box of one unit", Time, 1, true, 1e6, 0, 1e6, QString("1000000"), 0);
    }

    void normalizes() {
        QFETCH(int, row);
        QFETCH(int, offered);
        QFETCH(bool, isCanonical);
        QFETCH(double, value);
        QFETCH(int, index);
        QFETCH(double, canonical);
        QFETCH(QString, text);
        QLineEdit edit;
        QComboBox combo;
        combo.addItems(unitsOf(row).mid(0, offered));
        combo.setCurrentIndex(index);
        const QSignalSpy edited(&edit, &QLineEdit::textChanged);
        const QSignalSpy chosen(&combo, QOverload<int>::of(&QComboBox::currentIndexChanged));
        QCOMPARE(plain(row, &edit, &combo, value, isCanonical), canonical);
        QCOMPARE(edit.text(), text);
        QTEST(combo.currentIndex(), "shown");
        QCOMPARE(edited.count() + chosen.count(), 0);

        RecordingSink sink;
        double out = -1;
        combo.setCurrentIndex(index);
        edit.clear();
        QVERIFY(check(row, &edit, &combo, value, isCanonical, canonical, canonical, &sink, &out));
        QCOMPARE(out, canonical);
        QCOMPARE(edit.text(), text);
        QVERIFY(sink.texts.isEmpty());
    }

    void outOfRangeStaysVisibleBesideItsMessage_data() {
        QTest::addColumn<int>("row");
        QTest::addColumn<double>("value"); // in the second unit of the box
        QTest::addColumn<QString>("text");
        QTest::addColumn<int>("shown");
        QTest::addColumn<QString>("message");
        addRow("frequency high", 0, 7000.0, "7.000000000000", 0, "Valid Start  range: 9 KHz to 6 GHz");
        addRow("frequency low", 0, 0.001, "1.000000", 2, "Valid Start  range: 9 KHz to 6 GHz");
        addRow("time high", Time, 7e6, "7.000000000", 3, QString("Valid Start  range: 9 %1s to 6 s").arg(QChar(0xB5)));
        addRow("not a number", 0, double(NAN), "nan", 0, "Valid Start  range: 9 KHz to 6 GHz");
    }

    void outOfRangeStaysVisibleBesideItsMessage() {
        QFETCH(int, row);
        QFETCH(double, value);
        QFETCH(QString, message);
        QLineEdit edit;
        QComboBox combo;
        combo.addItems(unitsOf(row));
        combo.setCurrentIndex(1);
        RecordingSink sink;
        double out = -1;
        QVERIFY(!check(row, &edit, &combo, value, false, 9e3, 6e9, &sink, &out));
        QTEST(edit.text(), "text");
        QTEST(combo.currentIndex(), "shown");
        QCOMPARE(sink.texts, QStringList(message));
        QCOMPARE(out, value * (row == Time ? 1e3 : 1e6));
    }

private:
    static double plain(int row, QLineEdit* edit, QComboBox* combo, double value, bool isCanonical) {
        return row == Time ? normalizeTime(edit, combo, value, isCanonical)
                           : normalizeFreq(edit, combo, value, isCanonical, static_cast<translations>(row));
    }

    static bool check(int row, QLineEdit* edit, QComboBox* combo, double value, bool isCanonical, double min,
                      double max, MessageSink* sink, double* out) {
        return row == Time ? normalizeTime(edit, combo, value, isCanonical, min, max, sink, out, "Start")
                           : normalizeFreq(edit, combo, value, isCanonical, static_cast<translations>(row), min, max,
                                           sink, out, "Start");
    }
};

VELDA_TEST_MAIN(QApplication, TestEntry)
#include "tst_entry.moc"
