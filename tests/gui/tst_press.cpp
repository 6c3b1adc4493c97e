#include "rig/lookrules.h"
#include "tests/gui/paneltest.h"

#include <QAbstractButton>
#include <QApplication>
#include <QElapsedTimer>
#include <QMouseEvent>
#include <algorithm>
#include <cstdio>

using namespace Kavor::HandheldGui;

namespace {

constexpr double MustMs = 100; // from a press to changed pixels

/// The time of a press until a widget's next paint is over.
class PaintWatch : public QObject {
public:
    explicit PaintWatch(QWidget& widget) : m_widget(widget) {
        m_timer.start();
        widget.installEventFilter(this);
    }
    bool isPainted() const { return m_painted; }
    double milliseconds() const { return m_nanoseconds / 1e6; }

protected:
    bool eventFilter(QObject*, QEvent* event) override {
        if (event->type() != QEvent::Paint || m_painted)
            return false;
        m_painted = true;
        m_widget.removeEventFilter(this);
        QCoreApplication::sendEvent(&m_widget, event);
        m_nanoseconds = m_timer.nsecsElapsed();
        return true;
    }

private:
    QWidget& m_widget;
    QElapsedTimer m_timer;
    bool m_painted = false;
    qint64 m_nanoseconds = 0;
};

} // namespace

/// Every button of every screen answers the finger at once, and not when it slides off.
class PressTest : public PanelTest {
    Q_OBJECT

    std::vector<double> m_times;

    /// What is wrong with a press on a button that slides off; empty when nothing is.
    QString pressAndSlideOff(QAbstractButton& button) {
        panel().sent();
        const QImage before = button.grab().toImage();
        PaintWatch watch(button);
        QTest::mousePress(&button, Qt::LeftButton, Qt::NoModifier, button.rect().center());
        if (!QTest::qWaitFor([&watch] { return watch.isPainted(); }, 1000))
            return QStringLiteral("shows nothing");
        m_times.push_back(watch.milliseconds());
        const bool changed = button.grab().toImage() != before;
        const QPoint outside(button.width() / 2, -200);
        QMouseEvent slide(QEvent::MouseMove, outside, button.mapToGlobal(outside), Qt::NoButton, Qt::LeftButton,
                          Qt::NoModifier);
        QCoreApplication::sendEvent(&button, &slide);
        QTest::mouseRelease(&button, Qt::LeftButton, Qt::NoModifier, outside);
        QCoreApplication::processEvents();
        if (!changed)
            return QStringLiteral("looks the same");
        if (watch.milliseconds() > MustMs)
            return QStringLiteral("took %1 ms").arg(watch.milliseconds());
        if (button.grab().toImage() != before)
            return QStringLiteral("stays changed");
        return panel().sent().join(QLatin1Char(' '));
    }

    QStringList pressAll(const QWidget& window) {
        QStringList wrong;
        for (QAbstractButton* button : window.findChildren<QAbstractButton*>()) {
            if (!button->isVisible() || !button->isEnabled() || !LookRules::canBeTouched(*button))
                continue;
            const QString what = pressAndSlideOff(*button);
            if (!what.isEmpty())
                wrong << button->objectName() + QStringLiteral(": ") + what;
        }
        return wrong;
    }

private slots:
    void screens_data() {
        QTest::addColumn<QStringList>("presses");
        for (const char* tab : {"tabAM", "tabFM", "tabPM", "tabPulse", "tabPattern"})
            addRow(tab, QStringList{"funcCw", tab});
        for (const char* page : {"funcSweep", "funcList", "funcRunMode", "funcSystem", "funcAbout"})
            addRow(page, QStringList{page});
        addRow("trigger", QStringList{"funcRunMode", "runTrigger"});
        addRow("files", QStringList{"funcList", "listLoad"});
        addRow("LAN", QStringList{"funcSystem", "sysLan"});
        addRow("store", QStringList{"funcSystem", "sysStore"});
    }
    void screens() {
        QFETCH(QStringList, presses);
        for (const QString& name : presses)
            QVERIFY2(panel().press(name), qPrintable(name));
        const QStringList wrong = pressAll(panel().window());
        QVERIFY2(wrong.isEmpty(), qPrintable(wrong.join('\n')));
    }

    void keys() {
        QStringList wrong;
        panel().dialogs().expect(DialogKind::Keyboard, QString(), [&](QDialog& dialog) {
            wrong = pressAll(dialog);
            dialog.reject();
        });
        QVERIFY(panel().press("cwFrequency"));
        QVERIFY2(wrong.isEmpty(), qPrintable(wrong.join('\n')));
    }

    void cleanupTestCase() {
        if (m_times.empty())
            return;
        std::sort(m_times.begin(), m_times.end());
        std::printf("press to painted: %zu buttons, median %.1f ms, worst %.1f ms (must 100, aim 50)\n", m_times.size(),
                    m_times[m_times.size() / 2], m_times.back());
    }
};

VELDA_TEST_MAIN(QApplication, PressTest)
#include "tst_press.moc"
