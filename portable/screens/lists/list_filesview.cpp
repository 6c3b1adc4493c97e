#include "portable/screens/lists/list_filesview.h"

#include "common/instrument/handlerscpi.h"
#include "lists/list_config.h"
#include "platform/veldapath.h"
#include "portable/host/panelhost.h"
#include "portable/host/screentexts.h"
#include "portable/screens/lists/list_look.h"
#include "portable/screens/lists/placetabs.h"
#include "portable/widgets/actiongate.h"
#include "portable/widgets/boxes.h"
#include "portable/widgets/listpage.h"
#include "portable/widgets/pagegroup.h"
#include "portable/widgets/scrollreadout.h"
#include "portable/widgets/swipe.h"
#include "portable/widgets/vkeyboard.h"

#include <QLabel>

namespace Kavor::HandheldGui {

namespace {

constexpr int Rows = 6;
constexpr int NumberWidth = 96;
constexpr int DoingX = 700;
constexpr int LookEveryMs = 1000;
constexpr QPoint Place(16, SubPageRowsTop - TableHeaderHeight);

static_assert(sizeof(ChannelRecord::listName) - 1 == ListFilesView::LongestTypedName + sizeof(".json") - 1);

} // namespace

ListFilesView::ListFilesView(PanelHost& host, const StepListKind& kind, PageGroup& group,
                             std::function<IListConfig&()> list)
    : QObject(&group),
      m_host(host),
      m_kind(kind),
      m_list(std::move(list)),
      m_files(CVeldaPath(QString::fromLatin1(kind.folder)).get_path()),
      m_browser(new ListFiles(&group)),
      m_places(new PlaceTabs(group, QString::fromLatin1(kind.prefix))),
      m_doing(group.addLabel(DoingX, 0, group.width() - DoingX - 24, Place.y(), QString())),
      m_work(new BackgroundWork(this)) {
    addSubPageTitle(group, QString::fromLatin1(kind.filesCaption));
    m_doing->setObjectName(QString::fromLatin1(kind.prefix) + QStringLiteral("Doing"));
    m_doing->setAlignment(Qt::AlignRight | Qt::AlignVCenter);
    m_browser->setObjectName(QString::fromLatin1(kind.prefix) + QStringLiteral("Files"));
    m_browser->setListsOps(&m_files);
    m_browser->applyViewConfig(listLook(Place.x(), Place.y(), group.width() - 2 * Place.x(), Rows, NumberWidth));
    Swipe::install(*m_browser);
    new ScrollReadout(*m_browser);
    m_second.setInterval(LookEveryMs);
    connect(&m_second, &QTimer::timeout, this, &ListFilesView::lookForSticks);
    connect(m_places, &PlaceTabs::asked, this, &ListFilesView::goTo);
    connect(m_browser, &ListFiles::fileSelected, this, &ListFilesView::onFileSelected);
    connect(m_browser, &ListFiles::escapeRequested, this, &ListFilesView::cancelled);
}

bool ListFilesView::open(ListFileMode mode) {
    m_browser->setChannel(m_host.handler().currentChannel());
    m_browser->setMode(mode);
    m_browser->setNewFiles({QStringLiteral("new file")});
    QString error;
    if (!m_browser->refresh(error)) {
        showToast(m_host, error);
        return false;
    }
    moveOn();
    m_places->choose(std::nullopt);
    // A list on a stick is deleted where it was made.
    const bool offersSticks = mode != ListFileMode::Delete;
    if (offersSticks) {
        m_second.start();
        lookForSticks();
    } else {
        m_second.stop();
        static_cast<void>(m_places->setSticks({})); // the device is chosen already
    }
    return true;
}

void ListFilesView::leave() {
    moveOn();
    m_second.stop();
}

void ListFilesView::moveOn() {
    ++m_turn;
    m_doing->clear();
}

ListFilesView::Turn ListFilesView::turn() const {
    return {m_turn, m_host.handler().currentChannel()};
}

bool ListFilesView::isStill(const Turn& turn) const {
    return turn.number == m_turn && turn.channel == m_host.handler().currentChannel();
}

void ListFilesView::inBackground(const QString& doing, const BackgroundWork::Work& work) {
    m_busy = m_turn;
    m_doing->setText(doing);
    m_work->start([this, work, started = m_turn]() -> BackgroundWork::Outcome {
        const BackgroundWork::Outcome outcome = work();
        return [this, outcome, started] {
            if (m_busy == started)
                m_busy = 0;
            if (m_turn == started)
                m_doing->clear();
            outcome();
        };
    });
}

void ListFilesView::lookForSticks() {
    if (m_work->isBusy())
        return;
    m_work->start([this, now = turn()]() -> BackgroundWork::Outcome {
        return [this, now, sticks = Sticks::present()] {
            const std::optional<Stick> before = m_places->chosen();
            if (!isStill(now) || m_places->setSticks(sticks))
                return;
            showToast(m_host, QStringLiteral("%1 was removed").arg(shortened(before->name)));
            goTo(std::nullopt);
        };
    });
}

void ListFilesView::goTo(const std::optional<Stick>& place) {
    moveOn();
    m_places->choose(place);
    if (place) {
        listStick(*place);
        return;
    }
    m_browser->setNewFiles({QStringLiteral("new file")});
    QString error;
    if (!m_browser->refresh(error))
        showToast(m_host, error);
}

void ListFilesView::listStick(const Stick& stick) {
    m_stickFiles.clear();
    m_browser->setNewFiles({});
    m_browser->rebuild({});
    inBackground(QStringLiteral("Reading..."), [this, stick, now = turn()]() -> BackgroundWork::Outcome {
        QStringList names;
        QString error;
        const bool done = Sticks::enumerate(stick, names, error);
        return [=] {
            if (!isStill(now))
                return;
            if (!done) // the next look finds out that it has gone
                return showToast(m_host, error);
            m_stickFiles = names;
            m_browser->setNewFiles({QStringLiteral("new .csv file"), QStringLiteral("new .json file")});
            m_browser->rebuild(names);
        };
    });
}

void ListFilesView::onFileSelected(ListFileMode mode, const QString& name, bool isNewFile) {
    if (m_busy == m_turn)
        return;
    switch (mode) {
    case ListFileMode::Load:
        return load(name);
    case ListFileMode::Save:
        return ActionGate::panel().ask(m_browser, [this, name, isNewFile] { save(name, isNewFile); });
    case ListFileMode::Delete:
        return ActionGate::panel().ask(m_browser, [this, name] { erase(name); });
    }
}

bool ListFilesView::askForName(QString& name) {
    VirtKeyboard keyboard(&m_host, QString::fromLatin1(m_kind.filenameTitle), QString(), QString());
    keyboard.setTextMode(LongestTypedName);
    keyboard.setEnterText(QStringLiteral("ENTER"));
    const bool entered = keyboard.ask();
    name = keyboard.text();
    return entered;
}

bool ListFilesView::mayOverwrite(const QString& file, bool isThere) {
    return !isThere ||
           confirmAction(&m_host, QStringLiteral("Overwrite %1").arg(shortened(file)), {}, Answer::Destroys);
}

void ListFilesView::save(QString name, bool isNewFile) {
    if (const std::optional<Stick> stick = m_places->chosen())
        return saveTo(*stick, name, isNewFile);
    if (isNewFile && !askForName(name))
        return;
    const unsigned channel = m_browser->channel();
    const QString file = m_files.normalizedFilename(name);
    if (!mayOverwrite(file, m_files.exists(file, channel)))
        return;
    QString error;
    if (m_files.save(name, channel, m_list(), error))
        emit saved(file);
    else
        showToast(m_host, error);
}

void ListFilesView::saveTo(const Stick& stick, QString name, bool isNewFile) {
    if (isNewFile) {
        const QString ending = m_browser->currentRow() == 0 ? QStringLiteral(".csv") : QStringLiteral(".json");
        if (!askForName(name))
            return;
        name = name.trimmed();
        if (name.isEmpty())
            return showToast(m_host, QStringLiteral("Filename is empty"));
        name += ending;
    }
    if (!mayOverwrite(name, m_stickFiles.contains(name, Qt::CaseInsensitive))) // as most sticks compare names
        return;
    const IListConfig& list = m_list();
    inBackground(QStringLiteral("Saving..."),
                 [this, stick, name, now = turn(), steps = list.toJson(),
                  root = list.jsonRootName()]() -> BackgroundWork::Outcome {
                     QString error;
                     const bool done = Sticks::save(stick, name, root, steps, error);
                     return [=] {
                         const QString said =
                             QStringLiteral("Saved %1 to %2").arg(shortened(name), shortened(stick.name));
                         showToast(m_host, done ? said : error); // the page may be left meanwhile
                         if (done && isStill(now))
                             emit saved(name);
                     };
                 });
}

void ListFilesView::load(const QString& name) {
    if (const std::optional<Stick> stick = m_places->chosen())
        return loadFrom(*stick, name);
    QString error;
    if (m_files.load(name, m_browser->channel(), m_list(), error))
        emit loaded(name);
    else
        showToast(m_host, error);
}

void ListFilesView::loadFrom(const Stick& stick, const QString& name) {
    inBackground(QStringLiteral("Reading..."),
                 [this, stick, name, now = turn(), root = m_list().jsonRootName()]() -> BackgroundWork::Outcome {
                     QJsonArray steps;
                     QString error;
                     const bool read = Sticks::load(stick, name, root, steps, error);
                     return [=] {
                         if (!isStill(now))
                             return;
                         QString problem = error;
                         if (read && m_list().fromJson(steps, problem))
                             emit loaded(name);
                         else
                             showToast(m_host, problem);
                     };
                 });
}

void ListFilesView::erase(const QString& name) {
    if (!confirmAction(&m_host, QStringLiteral("Delete %1").arg(shortened(name)), {}, Answer::Destroys))
        return;
    QString error;
    // Shown anew after a failure too: the file may have gone by itself.
    const bool erased = m_files.erase(name, m_browser->channel(), error);
    QString refreshError;
    if (!m_browser->refresh(refreshError) && erased)
        error = refreshError;
    if (!error.isEmpty())
        showToast(m_host, error);
}

} // namespace Kavor::HandheldGui
