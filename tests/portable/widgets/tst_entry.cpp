#include "portable/widgets/entry.h"
#include "tests/support/testbase.h"
#include "tests/values/recordingsink.h"

#include <QApplication>
#include <QComboBox>
#include <QLineEdit>
#include <cmath>

class TestEntry : public TestBase {
    Q_OBJECT

private slots:
    void aBoxWithoutTheBestUnitShowsItsLargest() {
        QLineEdit edit;
        QComboBox combo;
        combo.addItems(unitNames(UnitQuantity::Time).mid(0, 3));
        QCOMPARE(normalizeTime(&edit, &combo, 1e9, true), 1e9);
        QCOMPARE(edit.text() + combo.currentText(), QString("1000.000000ms"));
    }

    void whatIsNoNumberIsOutOfRange() {
        QLineEdit edit;
        QComboBox combo;
        combo.addItems(unitNames(UnitQuantity::Frequency));
        RecordingSink sink;
        double out = -1;
        QVERIFY(
            !normalizeFreq(&edit, &combo, double(NAN), false, translations::GHzToHz, 9e3, 6e9, &sink, &out, "Start"));
        QCOMPARE(edit.text(), QString("nan"));
        QCOMPARE(sink.texts, QStringList("Valid Start  range: 9 KHz to 6 GHz"));
    }
};

VELDA_TEST_MAIN(QApplication, TestEntry)
#include "tst_entry.moc"
