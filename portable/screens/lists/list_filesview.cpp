#include "portable/screens/lists/list_filesview.h"

#include "common/instrument/handlerscpi.h"
#include "lists/list_config.h"
#include "platform/veldapath.h"
#include "portable/host/panelhost.h"
#include "portable/host/screentexts.h"
#include "portable/screens/lists/list_look.h"
#include "portable/widgets/actiongate.h"
#include "portable/widgets/boxes.h"
#include "portable/widgets/pagegroup.h"
#include "portable/widgets/swipe.h"
#include "portable/widgets/vkeyboard.h"

namespace Kavor::HandheldGui {

namespace {

constexpr int Rows = 6;
constexpr int NumberWidth = 96;
constexpr QPoint Place(16, 52);

static_assert(sizeof(ChannelRecord::listName) - 1 == ListFilesView::LongestTypedName + sizeof(".json") - 1);

} // namespace

ListFilesView::ListFilesView(PanelHost& host, const StepListKind& kind, PageGroup& group,
                             std::function<IListConfig&()> list)
    : QObject(&group),
      m_host(host),
      m_kind(kind),
      m_list(std::move(list)),
      m_files(CVeldaPath(QString::fromLatin1(kind.folder)).get_path()),
      m_browser(new ListFiles(&group)) {
    m_browser->setObjectName(QString::fromLatin1(kind.prefix) + QStringLiteral("Files"));
    m_browser->setListsOps(&m_files);
    m_browser->applyViewConfig(listLook(Place.x(), Place.y(), group.width() - 2 * Place.x(), Rows, NumberWidth));
    Swipe::install(*m_browser);
    connect(m_browser, &ListFiles::fileSelected, this, &ListFilesView::onFileSelected);
    connect(m_browser, &ListFiles::escapeRequested, this, &ListFilesView::cancelled);
}

bool ListFilesView::open(ListFileMode mode) {
    m_browser->setChannel(m_host.handler().currentChannel());
    m_browser->setMode(mode);
    QString error;
    if (m_browser->refresh(error))
        return true;
    showToast(m_host, error);
    return false;
}

void ListFilesView::onFileSelected(ListFileMode mode, const QString& name, bool isNewFile) {
    switch (mode) {
    case ListFileMode::Load:
        return load(name);
    case ListFileMode::Save:
        return ActionGate::panel().ask(m_browser, [this, name, isNewFile] { save(name, isNewFile); });
    case ListFileMode::Delete:
        return ActionGate::panel().ask(m_browser, [this, name] { erase(name); });
    }
}

void ListFilesView::save(QString name, bool isNewFile) {
    if (isNewFile) {
        VirtKeyboard keyboard(&m_host, QString::fromLatin1(m_kind.filenameTitle), QString(), QString());
        keyboard.setTextMode(LongestTypedName);
        keyboard.setEnterText(QStringLiteral("ENTER"));
        if (!keyboard.ask())
            return;
        name = keyboard.text();
    }
    const unsigned channel = m_browser->channel();
    const QString file = m_files.normalizedFilename(name);
    if (m_files.exists(file, channel) &&
        !confirmAction(&m_host, QStringLiteral("Overwrite %1").arg(shortened(file)), {}, Answer::Destroys))
        return;
    QString error;
    if (m_files.save(name, channel, m_list(), error))
        emit saved(file);
    else
        showToast(m_host, error);
}

void ListFilesView::load(const QString& name) {
    QString error;
    if (m_files.load(name, m_browser->channel(), m_list(), error))
        emit loaded(name);
    else
        showToast(m_host, error);
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
