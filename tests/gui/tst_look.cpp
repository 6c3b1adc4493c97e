#include "tests/gui/lookrules.h"
#include "tests/gui/panelfixture.h"
#include "tests/support/testbase.h"

#include <QApplication>
#include <QPushButton>

using namespace Kavor::HandheldGui;

/// Every screen, tab and keyboard under the rules of touch and legibility.
class LookTest : public TestBase {
    Q_OBJECT

    std::unique_ptr<PanelFixture> m_panel;

private slots:
    void initTestCase() { m_panel = std::make_unique<PanelFixture>(); }
    void cleanupTestCase() { m_panel.reset(); }

    /// The rules find what they are for.
    void findsOffenders() {
        QWidget window;
        window.resize(300, 200);
        auto* small = new QPushButton("a text that does not fit", &window);
        small->setGeometry(0, 0, 50, 50);
        auto* near = new QPushButton("b", &window);
        near->setGeometry(52, 0, 60, 60);
        window.show();
        const QString all = LookRules::violations(window).join("\n");
        QVERIFY2(all.contains("too small to touch"), qPrintable(all));
        QVERIFY2(all.contains("2 px apart"), qPrintable(all));
        QVERIFY2(all.contains("text needs"), qPrintable(all));
    }

    void screens_data() {
        QTest::addColumn<QStringList>("presses");
        QTest::newRow("CW, AM") << QStringList{"funcCw", "tabAM"};
        QTest::newRow("CW, FM") << QStringList{"funcCw", "tabFM"};
        QTest::newRow("CW, PM") << QStringList{"funcCw", "tabPM"};
        QTest::newRow("CW, pulse") << QStringList{"funcCw", "tabPulse"};
        QTest::newRow("pattern") << QStringList{"funcCw", "tabPattern"};
        QTest::newRow("sweep") << QStringList{"funcSweep"};
        QTest::newRow("list") << QStringList{"funcList"};
        QTest::newRow("list, fixed dwell") << QStringList{"funcList", "listDwellFixed"};
        QTest::newRow("list, files") << QStringList{"funcList", "listSave"};
        QTest::newRow("pattern, files") << QStringList{"funcCw", "tabPattern", "patternLoad"};
        QTest::newRow("run mode") << QStringList{"funcRunMode"};
        QTest::newRow("system") << QStringList{"funcSystem"};
        QTest::newRow("system, store") << QStringList{"funcSystem", "sysStore"};
        QTest::newRow("system, recall") << QStringList{"funcSystem", "sysRecall"};
        QTest::newRow("system, LAN") << QStringList{"funcSystem", "sysLan"};
        QTest::newRow("about") << QStringList{"funcAbout"};
    }
    void screens() {
        QFETCH(QStringList, presses);
        for (const QString& name : presses)
            QVERIFY(m_panel->press(name));
        const QStringList found = LookRules::violations(m_panel->window());
        QVERIFY2(found.isEmpty(), qPrintable(found.join("\n")));
    }

    void keyboards_data() {
        QTest::addColumn<QString>("tab");
        QTest::addColumn<QString>("editor");
        for (const char* editor : {"cwFrequency", "cwPower", "cwPhase"})
            QTest::newRow(editor) << "" << editor;
        QTest::newRow("amDepth") << "tabAM"
                                 << "amDepth";
        QTest::newRow("pulseWidth") << "tabPulse"
                                    << "pulseWidth";
    }
    void keyboards() {
        QFETCH(QString, tab);
        QFETCH(QString, editor);
        QVERIFY(m_panel->press("funcCw"));
        if (!tab.isEmpty())
            QVERIFY(m_panel->press(tab));
        QStringList found;
        m_panel->dialogs().expect(DialogKind::Keyboard, QString(), [&found](QDialog& dialog) {
            found = LookRules::violations(dialog);
            for (const QPushButton* key : dialog.findChildren<QPushButton*>()) {
                if (key->isVisible() && qMin(key->width(), key->height()) < LookRules::SmallestKeySide)
                    found << key->objectName() + ": a key this small is missed";
            }
            dialog.reject();
        });
        QVERIFY(m_panel->press(editor));
        QVERIFY2(found.isEmpty(), qPrintable(found.join("\n")));
        QCOMPARE(m_panel->dialogs().problems(), QStringList());
    }
};

VELDA_TEST_MAIN(QApplication, LookTest)
#include "tst_look.moc"
