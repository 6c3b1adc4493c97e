// A window of the screen's size with as many labels and buttons as it is told, and nothing else: what bench_process
// measures the panel against.
// usage: bench_plain_window WIDGETS

#include <QApplication>
#include <QEvent>
#include <QGridLayout>
#include <QLabel>
#include <QPushButton>
#include <QTimer>
#include <cstdio>
#include <systemd/sd-daemon.h>

namespace {

constexpr int Columns = 20;
constexpr int TellMs = 20;

/// Says READY=1 after the window's first paint, then WATCHDOG=1 all the time.
class Window : public QWidget {
protected:
    bool event(QEvent* event) override {
        const bool done = QWidget::event(event);
        if (event->type() == QEvent::Paint && !m_tells.isActive()) {
            m_tells.callOnTimeout([] { sd_notify(0, "WATCHDOG=1"); });
            m_tells.start(TellMs);
            QTimer::singleShot(0, [] { sd_notify(0, "READY=1"); });
        }
        return done;
    }

private:
    QTimer m_tells;
};

} // namespace

int main(int argc, char** argv) {
    const QApplication application(argc, argv);
    const int widgets = argc == 2 ? QByteArray(argv[1]).toInt() : 0;
    if (widgets <= 0) {
        std::fprintf(stderr, "usage: bench_plain_window WIDGETS\n");
        return 2;
    }
    Window window;
    window.setFixedSize(1280, 800);
    auto* grid = new QGridLayout(&window);
    for (int i = 0; i < widgets; ++i) {
        const QString text = QString::number(i);
        QWidget* widget = i % 2 != 0 ? static_cast<QWidget*>(new QPushButton(text)) : new QLabel(text);
        grid->addWidget(widget, i / Columns, i % Columns);
    }
    window.show();
    return QApplication::exec();
}
