#include "portable/widgets/dialogs.h"
#include "portable/widgets/msgbox.h"
#include "tests/support/testbase.h"

#include <QApplication>
#include <QElapsedTimer>
#include <QProgressBar>
#include <QSignalSpy>

using namespace Kavor::HandheldGui;

class MsgBoxTest : public TestBase {
    Q_OBJECT

private slots:
    /// Counts its ticks on the bar and closes as if rejected.
    void closesItself() {
        cMessageBox box(nullptr, "Wait", QMessageBox::Ok, QSize(480, 240), 3);
        box.setProgressBar(QRect(16, 100, 400, 48));
        QProgressBar& bar = *box.progressBar()->bar();
        QCOMPARE(bar.maximum(), 3);
        QSignalSpy values(&bar, &QProgressBar::valueChanged);
        QElapsedTimer time;
        time.start();
        QCOMPARE(DialogRunner::current().run(box, DialogKind::Progress, "Wait"), 0);
        QVERIFY(time.elapsed() >= 250);
        QCOMPARE(box.ticks(), 3);
        QCOMPARE(values.last().first().toInt(), 3);
        QCOMPARE(box.size(), QSize(480, 240));
        QVERIFY(!DialogRunner::anyOpen());
    }
};

VELDA_TEST_MAIN(QApplication, MsgBoxTest)
#include "tst_msgbox.moc"
