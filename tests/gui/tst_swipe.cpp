#include "lists/table/list_files.h"
#include "lists/table/list_table.h"
#include "portable/widgets/combobox.h"
#include "portable/widgets/scrollhandle.h"
#include "portable/widgets/swipe.h"
#include "tests/gui/paneltest.h"

#include <QApplication>
#include <QDir>
#include <QMouseEvent>
#include <QScroller>
#include <QSignalSpy>

using namespace Kavor::HandheldGui;

namespace {

/// A finger that tells its times itself, so that no test waits for it.
class Finger {
public:
    explicit Finger(QAbstractItemView& view) : m_view(view), m_at(view.viewport()->rect().center()) {}

    void press() { send(QEvent::MouseButtonPress, Qt::LeftButton); }
    void move(int dy, int ms) {
        m_at.ry() += dy;
        s_time += static_cast<ulong>(ms);
        send(QEvent::MouseMove, Qt::LeftButton);
    }
    void lift() { send(QEvent::MouseButtonRelease, Qt::NoButton); }
    void swipe(int dy) {
        press();
        for (int i = 0; i < 10; ++i)
            move(dy / 10, 10);
    }

private:
    void send(QEvent::Type type, Qt::MouseButtons buttons) {
        QWidget* port = m_view.viewport();
        QMouseEvent event(type, m_at, port->mapTo(port->window(), m_at), port->mapToGlobal(m_at),
                          type == QEvent::MouseMove ? Qt::NoButton : Qt::LeftButton, buttons, Qt::NoModifier);
        event.setTimestamp(++s_time);
        QCoreApplication::sendEvent(port, &event);
    }

    static ulong s_time;
    QAbstractItemView& m_view;
    QPoint m_at;
};
ulong Finger::s_time = 1000000;

} // namespace

/// A finger on the panel's tables and lists.
class SwipeTest : public PanelTest {
    Q_OBJECT

    /// One of the panel's tables, with more rows than it shows.
    QAbstractItemView* shown(const QString& name) {
        const auto fill = [this](const QString& folder, const QString& file, const QByteArray& content) {
            QDir().mkpath(panel().home() + folder);
            for (int i = 1; i <= 60; ++i) {
                QFile out(panel().home() + folder + file.arg(i));
                if (!out.open(QIODevice::WriteOnly) || out.write(content) < 0)
                    qFatal("A file cannot be written.");
            }
        };
        if (name == "cfgList") {
            fill("/kavor/preset/preset/", "preset-%1.json", "");
            return panel().press("funcSystem") && panel().press("sysRecall") ? panel().widget<QAbstractItemView>(name)
                                                                             : nullptr;
        }
        fill("/kavor/list/1/", "scan %1.json", "{\"VeldaList\": [" + QByteArray("{},").repeated(59) + "{}]}");
        if (!panel().press("funcList") || !panel().press("listLoad"))
            return nullptr;
        if (name == "listTable")
            panel().widget<ListFiles>("listFiles")->onCellActivated(0, 1);
        return panel().widget<QAbstractItemView>(name);
    }

private slots:
    void swipes_data() {
        QTest::addColumn<QString>("name");
        for (const char* name : {"listTable", "listFiles", "cfgList"})
            addRow(name, name);
    }

    /// Nothing is chosen or opened by it (a dialog that was not expected fails the test), however it begins, and a
    /// press on running rows only stops them.
    void swipes() {
        QFETCH(QString, name);
        QAbstractItemView* view = shown(name);
        QVERIFY(view && view->isVisible());
        const QModelIndex before = view->currentIndex();
        const QScrollBar* bar = view->verticalScrollBar();
        const auto state = [view] {
            return QScroller::scroller(view->viewport())->state();
        };
        Finger finger(*view);
        finger.swipe(-200);
        QTRY_VERIFY2(bar->value() >= 180 && bar->value() <= 200, qPrintable(QString::number(bar->value())));
        finger.lift();
        QTRY_VERIFY2(bar->value() > 300, qPrintable(QString::number(bar->value())));
        QCOMPARE(state(), QScroller::Scrolling);
        finger.press();
        QCOMPARE(state(), QScroller::Pressed);
        const int stopped = bar->value();
        finger.lift();
        QCOMPARE(bar->value(), stopped);
        finger.press();
        finger.move(0, 3000); // rests first
        finger.move(Swipe::TapTravel, 10);
        finger.lift();
        QCOMPARE(view->currentIndex(), before);
        // The lower end of the track, which stands apart from the table of steps: a page.
        const int at = bar->value();
        for (ScrollHandle* handle : panel().window().findChildren<ScrollHandle*>()) {
            if (handle->isVisible())
                QTest::mouseClick(handle, Qt::LeftButton, Qt::NoModifier,
                                  QPoint(handle->width() / 2, handle->height() - 3));
        }
        QTRY_COMPARE(bar->value(), at + bar->pageStep());
    }

    /// As the touch screen reports it, whose first finger Qt makes a mouse of.
    void byTouch() {
        QAbstractItemView* view = shown("cfgList");
        QVERIFY(view);
        QTouchDevice* screen = QTest::createTouchDevice();
        QWindow* window = panel().window().windowHandle();
        QPoint at = view->viewport()->mapTo(&panel().window(), view->viewport()->rect().center());
        QTest::touchEvent(window, screen).press(0, at, window);
        for (int i = 0; i < 10; ++i)
            QTest::touchEvent(window, screen).move(0, at -= QPoint(0, 20), window);
        QTRY_VERIFY2(view->verticalScrollBar()->value() >= 180,
                     qPrintable(QString::number(view->verticalScrollBar()->value())));
        QTest::touchEvent(window, screen).release(0, at, window); // no question is asked
        QTRY_COMPARE(QScroller::scroller(view->viewport())->state(), QScroller::Inactive);
        panel().dialogs().expectButton(DialogKind::Question, QString(), QMessageBox::No);
        QTest::touchEvent(window, screen).press(0, at, window);
        QTest::touchEvent(window, screen).release(0, at, window);
    }

    /// A tap that rolls by less than the way of a swipe is one, on the row where it began.
    void rollingTap() {
        auto* table = qobject_cast<ListTable*>(shown("listTable"));
        QVERIFY(table);
        QSignalSpy asked(table, &ListTable::editRequested);
        const QModelIndex pressed = table->indexAt(table->viewport()->rect().center());
        panel().dialogs().expectKeys(QString(), {"keyEsc"});
        Finger finger(*table);
        finger.press();
        QVERIFY(table->viewport()->findChild<QWidget*>("pressedRow")->isVisible());
        finger.move(1 - Swipe::TapTravel, 200);
        finger.lift();
        QCOMPARE(asked.size(), 1);
        QCOMPARE(table->currentIndex(), pressed);
    }

    /// What a button scrolls to stays in sight.
    void aStepAddedToRunningRows() {
        auto* table = qobject_cast<ListTable*>(shown("listTable"));
        QVERIFY(table);
        Finger finger(*table);
        finger.swipe(-200);
        finger.lift();
        QVERIFY(panel().press("listAdd"));
        QCOMPARE(QScroller::scroller(table->viewport())->state(), QScroller::Inactive);
        QCOMPARE(table->verticalScrollBar()->value(), table->verticalScrollBar()->maximum());
    }

    /// The list of a unit box is worked by the same finger.
    void unitList() {
        auto* box = panel().widget<ComboBox>("cwFrequencyUnit");
        box->showPopup();
        Finger finger(*box->view());
        finger.swipe(-30);
        finger.lift();
        QVERIFY(box->isOpen());
        QTest::mouseClick(box->view()->viewport(), Qt::LeftButton, Qt::NoModifier,
                          box->view()->visualRect(box->model()->index(1, 0)).center());
        QTRY_VERIFY(!box->isOpen());
        QCOMPARE(box->currentIndex(), 1);
    }
};

VELDA_TEST_MAIN(QApplication, SwipeTest)
#include "tst_swipe.moc"
