#include "rig/lookrules.h"
#include "tests/support/testbase.h"

#include <QApplication>
#include <QLabel>
#include <QPushButton>
#include <cstdio>

/// Everything that the panel can show, under the rules of touch and legibility.
class LookTest : public TestBase {
    Q_OBJECT

private slots:
    /// The rules find what they are for.
    void findsOffenders() {
        QWidget window;
        window.resize(300, 200);
        window.setStyleSheet("QWidget { background: #222; } QLabel { color: #555; }");
        auto* small = new QPushButton("a text that does not fit", &window);
        small->setGeometry(0, 0, 50, 50);
        auto* near = new QPushButton("b", &window);
        near->setGeometry(52, 0, 60, 60);
        auto* pale = new QLabel("pale", &window);
        pale->setGeometry(100, 10, 100, 40);
        auto* lost = new QLabel("lost", &window);
        lost->setGeometry(250, 150, 100, 40);
        window.show();
        LookRules rules;
        rules.look({"window", &window, QPoint(), window.grab(), QRect()});
        const QString all = rules.violations().join("\n");
        for (const char* rule :
             {"touched: QPushButton \"a text", "gap", "room left", "contrast of text: QLabel \"pale",
              "distance of contents", "window's edge: QLabel \"lost", "button's edge: QPushButton \"b"})
            QVERIFY2(all.contains(rule), qPrintable(all));
    }

    void everything() {
        allowMessages("\\[SCPI\\]"); // some stops are a lost link and a silent module
        LookRules rules({
            {LookRules::TextRoom, "", "Files row 1 column 1", "a file name of 186 letters shows its beginning and end"},
            {LookRules::TextRoom, "list-long", "listTable row 999",
             "a number of many decimals is written smaller, with its unit below"},
        });
        PanelTour tour([&rules](const PanelTour::Stop& stop) { rules.look(stop); });
        tour.run();
        const QStringList violations = rules.violations();
        std::printf("%d stops\n%s%s\n", tour.count(), qPrintable(rules.report()), qPrintable(violations.join("\n")));
        QVERIFY(tour.count() > 100);    // a way that ends early proves nothing
        QCOMPARE(violations.size(), 0); // listed above
        QCOMPARE(rules.unusedExceptions(), QStringList());
    }
};

VELDA_TEST_MAIN(QApplication, LookTest)
#include "tst_look.moc"
