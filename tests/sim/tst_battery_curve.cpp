#include "sim/battery_curve.h"
#include "tests/support/testbase.h"

#include <QCoreApplication>

class TestBatteryCurve : public TestBase {
    Q_OBJECT

private slots:
    void value_data() {
        QTest::addColumn<QString>("points");
        QTest::addColumn<double>("seconds");
        QTest::addColumn<double>("charge");
        QTest::addColumn<double>("current");
        addRow("steady", "0:80:-420", 1e6, 80.0, -420.0);
        addRow("before the first", "10:80:-400,20:60:-200", 0.0, 80.0, -400.0);
        addRow("at a point", "10:80:-400,20:60:-200", 10.0, 80.0, -400.0);
        addRow("between", "10:80:-400,20:60:-200", 15.0, 70.0, -300.0);
        addRow("behind the last", "10:80:-400, 20:60:-200", 21.0, 60.0, -200.0);
        addRow("a step", "0:80:-400,5:80:-400,5:10:900,9:10:900", 5.0, 10.0, 900.0);
    }

    void value() {
        QFETCH(QString, points);
        QFETCH(double, seconds);
        QString error;
        const auto curve = Sim::BatteryCurve::parse(points, error);
        QVERIFY2(curve, qPrintable(error));
        QTEST(curve->at(seconds).charge, "charge");
        QTEST(curve->at(seconds).current, "current");
    }

    void refused_data() {
        QTest::addColumn<QString>("points");
        for (const char* points : {"", "80", "0:80", "0:80:1:2", "0:101:0", "0:-1:0", "-1:50:0", "0:50:40000", "0:x:0",
                                   "0:nan:0", "0:50:0,", "5:50:0,4:40:0"})
            addRow(points, QString(points));
    }

    void refused() {
        QFETCH(QString, points);
        QString error;
        QVERIFY(!Sim::BatteryCurve::parse(points, error));
        QVERIFY(!error.isEmpty());
    }
};

VELDA_TEST_MAIN(QCoreApplication, TestBatteryCurve)
#include "tst_battery_curve.moc"
