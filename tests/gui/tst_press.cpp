#include "rig/lookrules.h"
#include "tests/gui/paneltest.h"

#include <QAbstractButton>
#include <QApplication>
#include <QMouseEvent>

using namespace Kavor::HandheldGui;

/// Every button of every screen answers the finger at once, and not when it slides off.
class PressTest : public PanelTest {
    Q_OBJECT

    /// What is wrong with a press on a button that slides off; empty when nothing is.
    QString pressAndSlideOff(QAbstractButton& button) {
        panel().sent();
        const QImage before = button.grab().toImage();
        QTest::mousePress(&button, Qt::LeftButton, Qt::NoModifier, button.rect().center());
        const bool changed = button.grab().toImage() != before; // at once: no timer has run since the press
        const QPoint outside(button.width() / 2, -200);
        QMouseEvent slide(QEvent::MouseMove, outside, button.mapToGlobal(outside), Qt::NoButton, Qt::LeftButton,
                          Qt::NoModifier);
        QCoreApplication::sendEvent(&button, &slide);
        QTest::mouseRelease(&button, Qt::LeftButton, Qt::NoModifier, outside);
        QCoreApplication::processEvents();
        if (!changed)
            return QStringLiteral("looks the same");
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
};

VELDA_TEST_MAIN(QApplication, PressTest)
#include "tst_press.moc"
