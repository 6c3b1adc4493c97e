#include "portable/update/update_packages.h"
#include "portable/widgets/actiongate.h"
#include "portable/widgets/dialogs.h"
#include "portable/widgets/vklineedit.h"
#include "rig/agreement.h"
#include "rig/panelfixture.h"
#include "rig/updatestick.h"
#include "sim/fpga_boards.h"

#include <QAbstractButton>
#include <QAbstractItemView>
#include <QApplication>
#include <QComboBox>
#include <QCommandLineParser>
#include <QDir>
#include <QElapsedTimer>
#include <QMap>
#include <QMessageBox>
#include <QMouseEvent>
#include <QRandomGenerator>
#include <QScrollBar>
#include <QTest>
#include <QTimer>
#include <QUdpSocket>
#include <cstdio>

using namespace Kavor::HandheldGui;

namespace {

constexpr unsigned Channels = 3;
constexpr int StallMs = 500;      // an event loop that stands this long is a finding
constexpr int TapsInDialog = 500; // a dialog that outlives this many taps on it cannot be left
constexpr int TapsPerFault = 40;
constexpr int PatientMs = 300;   // how long every other tap waits for what the former ones have asked for
constexpr int TapsPerErrand = 3; // of these one goes where chance alone comes seldom: to the updates
const QStringList Errands{"funcSystem", "sysUpdate", "fwList"};
constexpr int AgreedMs = 1300; // the longest that the screen may differ from the module while nothing is under way

int s_findings = 0;

void finding(const QString& what) {
    ++s_findings;
    std::printf("finding: %s\n", qPrintable(what));
    std::fflush(stdout);
}

/// Qt complains about how it is used. What the panel's own categories say of refused and lost commands is the faults'
/// doing, and the offscreen platform has no windows to raise.
void listen(QtMsgType type, const QMessageLogContext& context, const QString& text) {
    const QLatin1String category(context.category ? context.category : "default");
    const bool qts = category == QLatin1String("default") || category.startsWith(QLatin1String("qt."));
    const bool platform = text.startsWith(QLatin1String("This plugin does not support"));
    if (type != QtDebugMsg && type != QtInfoMsg && qts && !platform)
        finding(text);
}

/// Taps whatever is on top, at random, while the module goes wrong at random.
class Soak : public QObject {
public:
    Soak(quint32 seed, qint64 taps, int minutes) : m_random(seed), m_tapsWanted(taps), m_minutes(minutes) {
        DialogRunner::install(nullptr); // nobody answers here but the taps
        m_stick.addFpga("1-fpga", "1.4", QByteArray(64 * 1024 + 7, 'x'));
        m_stick.addModule("2-module", "5.0", "module software");
        m_stick.addSoftware("3-software", "2.1", {"file|app|copy|%D/installed"});
        m_stick.addSoftware("4-spoilt", "2.2", {"file|app|copy|%D/installed"});
        m_stick.spoil("4-spoilt", "FW-2.2.tar.gz", "no archive");
        m_stick.put("media/tester/hop.csv", "frequency,power,dwell,advance\n1 GHz,-10 dBm,1 ms,Run\n");
        m_time.start();
        m_beat.start();
        m_sinceTap.start();
        m_disagreeing.start();
        auto* heart = new QTimer(this);
        connect(heart, &QTimer::timeout, this, &Soak::beat);
        heart->start(20);
        auto* eye = new QTimer(this);
        connect(eye, &QTimer::timeout, this, &Soak::compare);
        eye->start(100);
    }

    void run() {
        next();
        QApplication::exec();
        std::printf("taps %lld\nfaults %lld\nlongest stall %lld ms\nfindings %d\n", m_taps, m_faults, m_longestMs,
                    s_findings);
        for (auto dialog = m_dialogsSeen.constBegin(); dialog != m_dialogsSeen.constEnd(); ++dialog)
            std::printf("dialog %d %s\n", dialog.value(), qPrintable(dialog.key()));
        std::printf("software installed %d\nservice gone in a command %d\n", static_cast<int>(m_stick.sudoed().size()),
                    m_gone);
    }

private:
    // A timer does not fire again inside its own slot, and dialogs run in there: every tap has a timer of its own.
    void next() {
        QTimer::singleShot(m_hasTarget && !m_patient ? 0 : 1, this, [this] {
            beat();
            if (m_taps >= m_tapsWanted || m_time.elapsed() > m_minutes * qint64{60000}) {
                finish();
                return;
            }
            if (m_patient && m_sinceTap.elapsed() < PatientMs && !ActionGate::panel().isIdle() &&
                !DialogRunner::anyOpen()) {
                next();
                return;
            }
            m_patient = m_random.bounded(2) == 0;
            m_sinceTap.start();
            next();
            if (m_hasTarget && m_taps % TapsPerFault == 0)
                goWrong();
            tap();
        });
    }

    void beat() {
        const qint64 stood = m_beat.restart();
        m_longestMs = qMax(m_longestMs, stood);
        if (stood > StallMs)
            finding(
                QStringLiteral("the event loop stood for %1 ms after tap %2 on %3").arg(stood).arg(m_taps).arg(m_last));
    }

    /// What is shown against what the module holds, whenever nothing is under way or open.
    void compare() {
        const bool atRest =
            ActionGate::panel().isIdle() && !DialogRunner::anyOpen() && !QApplication::activePopupWidget();
        const QStringList now = atRest ? disagreements(m_panel.window(), m_panel.record()) : QStringList();
        if (now.isEmpty() || m_disagreed != now)
            m_disagreeing.start();
        m_disagreed = now;
        if (m_disagreeing.elapsed() < AgreedMs)
            return;
        finding(QStringLiteral("after tap %1 on %2: ").arg(m_taps).arg(m_last) + now.join(QStringLiteral("; ")));
        m_disagreeing.start();
    }

    QWidget* onTop() {
        if (QWidget* popup = QApplication::activePopupWidget())
            return popup;
        QWidget* modal = DialogRunner::topmost();
        if (modal != m_dialog) {
            m_dialog = modal;
            m_tapsInDialog = 0;
            if (modal)
                seen(*modal);
        }
        if (modal && m_hasTarget && ++m_tapsInDialog > TapsInDialog) {
            finding(QStringLiteral("%1 cannot be left").arg(modal->objectName()));
            m_tapsInDialog = 0;
            modal->close();
        }
        return modal ? modal : &m_panel.window();
    }

    void seen(const QWidget& dialog) {
        const auto* box = qobject_cast<const QMessageBox*>(&dialog);
        const QString text = box ? QStringLiteral(": ") + box->text().section(QLatin1Char('\n'), 0, 0) : QString();
        ++m_dialogsSeen[dialog.objectName() + text];
    }

    void tap() {
        QWidget* window = onTop();
        QList<QWidget*> targets, errands;
        for (QWidget* widget : window->findChildren<QWidget*>()) {
            const bool viewport = widget->parentWidget() && qobject_cast<QAbstractItemView*>(widget->parentWidget()) &&
                                  !qobject_cast<QScrollBar*>(widget);
            if (widget->isVisible() && widget->isEnabled() && widget->window() == window->window() &&
                (viewport || qobject_cast<QAbstractButton*>(widget) || qobject_cast<ValueEdit*>(widget) ||
                 qobject_cast<QComboBox*>(widget)))
                targets << widget;
            if (!targets.isEmpty() && targets.last() == widget &&
                (Errands.contains(widget->objectName()) ||
                 (viewport && Errands.contains(widget->parentWidget()->objectName()))))
                errands << widget;
        }
        if (!errands.isEmpty() && m_random.bounded(TapsPerErrand) == 0)
            targets = errands;
        m_hasTarget = !targets.isEmpty(); // a progress dialog has nothing to touch and ends by itself
        if (!m_hasTarget)
            return;
        ++m_taps;
        QWidget* target = targets.at(m_random.bounded(targets.size()));
        m_last = target->objectName();
        const QPoint place(m_random.bounded(target->width()), m_random.bounded(target->height()));
        const QPointer<QWidget> alive(target);
        QTest::mousePress(target, Qt::LeftButton, Qt::NoModifier, place);
        if (!alive)
            return;
        const bool slides = m_random.bounded(10) == 0;
        const QPoint end = slides ? QPoint(-50, -50) : place;
        if (slides) {
            QMouseEvent slide(QEvent::MouseMove, end, target->mapToGlobal(end), Qt::NoButton, Qt::LeftButton,
                              Qt::NoModifier);
            QApplication::sendEvent(target, &slide);
        }
        if (alive)
            QTest::mouseRelease(target, Qt::LeftButton, Qt::NoModifier, end);
    }

    void goWrong() {
        ++m_faults;
        Sim::ModuleSimulator& module = m_panel.module();
        switch (m_random.bounded(9)) {
        case 0:
            module.clearFaults();
            break;
        case 1:
            module.modify(m_random.bounded(Channels), [this](ChannelRecord& r) {
                r.batteryCharge = static_cast<std::int16_t>(m_random.bounded(-1, 101));
                r.batteryCurrent = static_cast<std::int16_t>(m_random.bounded(-500, 500));
            });
            break;
        case 2:
            module.modify(m_random.bounded(Channels), [this](ChannelRecord& r) {
                auto* bytes = reinterpret_cast<unsigned char*>(&r);
                bytes[m_random.bounded(static_cast<int>(sizeof r))] = static_cast<unsigned char>(m_random.bounded(256));
            });
            break;
        case 3: // the stick is pulled, or comes back
            if (!QDir().rename(m_stick.at("media/tester"), m_stick.at("pulled")))
                QDir().rename(m_stick.at("pulled"), m_stick.at("media/tester"));
            break;
        default:
            Sim::Fault fault;
            fault.kind = static_cast<Sim::Fault::Kind>(m_random.bounded(int(Sim::Fault::Gone) + 1));
            fault.count = 1 + m_random.bounded(3);
            fault.milliseconds = m_random.bounded(150);
            fault.text = "1";
            m_gone += fault.kind == Sim::Fault::Gone ? 1 : 0;
            module.addFault(fault);
        }
    }

    /// All is left by its own means before the end: dialogs by their buttons, waits by their time-outs.
    void finish() {
        m_panel.module().clearFaults();
        if (!DialogRunner::anyOpen() && !m_panel.handler().isWaiting()) {
            QApplication::quit();
            return;
        }
        if (DialogRunner::anyOpen())
            tap();
        QTimer::singleShot(5, this, &Soak::finish);
    }

    /// Boards that answer at once, and are given up soon.
    UpdateSettings updateSettings() {
        Sim::FpgaBoardsOptions boards;
        for (unsigned i = 0; i < Channels; ++i)
            boards.addresses << QHostAddress(QStringLiteral("127.0.0.%1").arg(2 + i));
        QUdpSocket free;
        QString error;
        if (free.bind(boards.addresses.first(), 0))
            boards.board.port = free.localPort();
        free.close();
        boards.board.burnMs = 60;
        boards.board.statusMs = 5;
        if (!m_boards.start(boards, error))
            qFatal("%s", qPrintable(error));
        UpdateSettings settings;
        settings.trust = m_stick.trustSettings();
        settings.watchMs = 50;
        settings.fpga = [boards](int count) {
            FpgaUpdateSettings fpga = FpgaUpdateSettings::forChannels(count);
            fpga.boards = boards.addresses.mid(0, count);
            fpga.port = boards.board.port;
            fpga.ackTimeoutMs = 300;
            fpga.burnPollMs = 5;
            return fpga;
        };
        return settings;
    }

    PanelFixture::Setup setup() {
        PanelFixture::Setup setup;
        setup.updateEntry = &m_updates;
        setup.channels = Channels;
        setup.commandTimeoutMs = 100;
        setup.readNetwork = [] {
            return NetworkFacts();
        };
        return setup;
    }

    UpdateStick m_stick;
    Sim::FpgaBoards m_boards;
    UpdatePackages m_updates{updateSettings()};
    PanelFixture m_panel{setup()};
    QRandomGenerator m_random;
    const qint64 m_tapsWanted;
    const int m_minutes;
    QElapsedTimer m_time;
    QElapsedTimer m_beat;
    QString m_last;
    QElapsedTimer m_disagreeing; ///< since when the screen has differed as it does
    QStringList m_disagreed;
    QPointer<QWidget> m_dialog;
    int m_tapsInDialog = 0;
    bool m_patient = false; ///< the next tap waits for what the former ones have asked for
    QElapsedTimer m_sinceTap;
    bool m_hasTarget = true;          ///< the last tap found something to touch
    QMap<QString, int> m_dialogsSeen; ///< how often, by name and first line
    qint64 m_taps = 0;
    qint64 m_faults = 0;
    int m_gone = 0; ///< of the faults those that close the service's port and connections
    qint64 m_longestMs = 0;
};

} // namespace

int main(int argc, char** argv) {
    QApplication application(argc, argv);
    QCommandLineParser parser;
    parser.setApplicationDescription("Taps the panel at random while its module goes wrong at random.");
    parser.addHelpOption();
    parser.addOptions({{"minutes", "Ends after this time, 10 by default.", "N", "10"},
                       {"taps", "Ends after this many taps, 100000 by default.", "N", "100000"},
                       {"seed", "What the random numbers come from, 1 by default.", "N", "1"}});
    parser.process(application);
    for (const char* option : {"minutes", "taps", "seed"}) {
        if (parser.value(option).toUInt() == 0) {
            std::fprintf(stderr, "--%s takes a number from 1.\n", option);
            return 2;
        }
    }
    qInstallMessageHandler(listen);
    Soak(parser.value("seed").toUInt(), parser.value("taps").toLongLong(), parser.value("minutes").toInt()).run();
    return s_findings == 0 ? 0 : 1;
}
