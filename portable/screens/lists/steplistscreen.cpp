#include "portable/screens/lists/steplistscreen.h"

#include "common/instrument/handlerscpi.h"
#include "portable/fields/enablebox.h"
#include "portable/host/panelhost.h"
#include "portable/host/screentexts.h"
#include "portable/screens/lists/list_edit.h"
#include "portable/screens/lists/list_look.h"
#include "portable/screens/lists/rowtools.h"
#include "portable/widgets/actioncolumn.h"
#include "portable/widgets/actiongate.h"
#include "portable/widgets/boxes.h"
#include "portable/widgets/checkrow.h"
#include "portable/widgets/pagegroup.h"
#include "portable/widgets/styles/styles.h"
#include "portable/widgets/styles/tokens.h"
#include "portable/widgets/swipe.h"

#include <QLabel>
#include <QPushButton>
#include <functional>

namespace Kavor::HandheldGui {

namespace {

constexpr int SettingsHeight = 112;
constexpr int TitleHeight = 36;
constexpr int TableRows = 5;
constexpr int TableInset = 16;
constexpr int TableWidth = RowTools::X - Style::Gap - TableInset;
constexpr int StepColumnWidth = 88; ///< for five figures
constexpr int NameX = 200;
constexpr int NameGap = 12;
constexpr int CaptionHeight = 36;

QRect mainPlace(int y, int height) {
    return {Style::PageMargin, y, ActionColumn::MainWidth, height};
}

} // namespace

StepListScreen::StepListScreen(QWidget* parent, std::vector<STATE> states, const StepListKind& kind)
    : IGuiScreen(parent, std::move(states)), m_kind(kind), m_page(makePage(QString::fromLatin1(kind.pageName))) {
    buildTable();
    buildSettings();
    m_filesGroup = new PageGroup(m_page, QString(), mainPlace(0, ActionColumn::Height));
    m_files = new ListFilesView(host(), kind, *m_filesGroup, [this]() -> IListConfig& { return list(); });
    connect(m_files, &ListFilesView::cancelled, this, &StepListScreen::onCancel);
    connect(m_files, &ListFilesView::saved, this, [this](const QString& name) {
        takeName(name);
        update_static_controls(m_kind.tableState);
    });
    connect(m_files, &ListFilesView::loaded, this, [this](const QString& name) {
        onLoaded();
        m_table->refresh();
        m_table->setCurrentCell(0, 1);
        m_table->scrollToTop();
        takeName(name);
        update_static_controls(m_kind.tableState);
    });
    buildButtons();
    update_static_controls(kind.tableState);
}

QString StepListScreen::named(const char* part) const {
    return QString::fromLatin1(m_kind.prefix) + QString::fromLatin1(part);
}

void StepListScreen::buildTable() {
    // Below the settings, so that a toast about an entry does not cover it.
    constexpr int Top = SettingsHeight + Style::Gap;
    m_tableGroup = new PageGroup(m_page, QString(), mainPlace(Top, ActionColumn::Height - Top));
    QLabel* title = m_tableGroup->addLabel(PageGroup::Left.labelX, 0, NameX - NameGap - PageGroup::Left.labelX,
                                           TitleHeight, QString::fromLatin1(m_kind.editCaption));
    applySheet(title, DYN_VALUE_STYLE2);
    m_name = m_tableGroup->addLabel(NameX, 0, 10, TitleHeight, QString());
    m_name->setObjectName(named("Name"));
    applySheet(m_name, WIDGET_COMM_STYLE);
    m_name->setTextFormat(Qt::PlainText);
    m_unsaved = m_tableGroup->addLabel(NameX, 0, TitleHeight, TitleHeight, QString(QChar(0x25CF)));
    m_unsaved->setObjectName(named("Unsaved"));
    applySheet(m_unsaved, WIDGET_LBL_STYLE + QStringLiteral("QLabel { color: %1; }").arg(Style::css(Style::Active)));
    m_table = new ListTable(m_tableGroup);
    m_table->setObjectName(named("Table"));
    ListTableViewConfig look = listLook(TableInset, TitleHeight, TableWidth, TableRows, StepColumnWidth);
    look.verticalScrollBar = false; // it stands beside the tools
    m_table->applyViewConfig(look);
    Swipe::install(*m_table);
    m_tools = new RowTools(host(), *m_tableGroup, *m_table, QString::fromLatin1(m_kind.prefix),
                           [this](bool done, const QString& error) { afterChange(done, error); });
    connect(m_table, &ListTable::editRequested, this, &StepListScreen::onEditRequested);
}

void StepListScreen::buildSettings() {
    m_settings = new PageGroup(m_page, QString(), mainPlace(0, SettingsHeight));
    addCaption(PageGroup::Left.labelX, QString::fromLatin1(m_kind.settingsCaption));
    auto* box = new CheckRow(m_settings, QString::fromLatin1(m_kind.enableLabel), m_kind.enableBoxX);
    box->setObjectName(named("Enable"));
    box->setGeometry(PageGroup::Left.labelX, SettingsRow, CheckRow::narrowWidth(m_kind.enableBoxX),
                     Style::ButtonHeight);
    m_enable = new EnableBox(host(), box, m_kind.bit, QString::fromLatin1(m_kind.logPrefix), QString());
}

void StepListScreen::addCaption(int x, const QString& text) {
    QLabel* caption = m_settings->addLabel(x, 0, 10, CaptionHeight, text);
    applySheet(caption, DYN_VALUE_STYLE2);
    caption->resize(caption->sizeHint().width(), CaptionHeight);
}

void StepListScreen::buildButtons() {
    const auto add = [&](LineIcon icon, const char* text, const char* name, int place,
                         const std::function<void()>& pressed, bool gated = false) {
        QPushButton* button = ActionColumn::addButton(m_page, place, icon, QString::fromLatin1(text), named(name));
        connect(button, &QPushButton::clicked, this,
                [button, pressed, gated] { gated ? ActionGate::panel().ask(button, pressed) : pressed(); });
        return button;
    };
    const auto files = [this](ListFileMode mode) {
        return [this, mode] {
            onFiles(mode);
        };
    };
    m_tableButtons = {
        add(LineIcon::Plus, "Add Step", "Add", 0, [this] { onAddStep(); }),
        add(LineIcon::Minus, "Delete Step", "DeleteStep", 1, [this] { onDeleteStep(); }),
        add(
            LineIcon::Page, m_kind.newLabel, "New", 2, [this] { onNew(); }, m_kind.newQuestion != nullptr),
        add(
            LineIcon::Upload, "Upload", "Upload", 3, [this] { onUpload(); }, true),
        add(LineIcon::Folder, m_kind.loadLabel, "Load", 4, files(ListFileMode::Load)),
        add(LineIcon::Save, m_kind.saveLabel, "Save", 5, files(ListFileMode::Save)),
        add(LineIcon::Bin, m_kind.deleteLabel, "Delete", 6, files(ListFileMode::Delete))};
    m_upload = m_tableButtons[3];
    m_cancel = add(LineIcon::Back, "Cancel", "Cancel", 0, [this] { onCancel(); });
}

void StepListScreen::update_static_controls(STATE state) {
    if (state != m_kind.tableState && state != m_kind.filesState)
        return;
    m_subState = state;
    const bool files = state == m_kind.filesState;
    if (!files)
        m_files->leave();
    m_tableGroup->setVisible(!files);
    m_settings->setVisible(!files);
    for (QPushButton* button : m_tableButtons)
        button->setVisible(!files);
    m_filesGroup->setVisible(files);
    m_cancel->setVisible(files);
}

void StepListScreen::update_from_config(STATE) {
    m_enable->setFromConfig();
    showList();
}

void StepListScreen::show() {
    host().setHeaderBar(QString::fromLatin1(m_kind.header));
    handler().isModulationsOn();
    update_from_config(m_kind.tableState);
    update_static_controls(m_kind.tableState);
    m_page->show();
}

void StepListScreen::hide() {
    m_files->leave();
    m_page->hide();
}

bool StepListScreen::isRunning() const {
    return handler().snapshot().*m_kind.running == 1;
}

bool StepListScreen::isEnabled() const {
    return (handler().snapshot().modulationEnable & m_kind.bit) != 0;
}

void StepListScreen::showList() {
    IListConfig& current = list();
    if (m_table->listConfig() == &current)
        return;
    m_table->setListConfig(&current);
    m_table->setCurrentCell(0, 1);
    showOrigin();
}

void StepListScreen::showOrigin() {
    const Origin& origin = m_origins[handler().currentChannel()];
    const quint64 steps = list().fingerprint();
    const QFontMetrics metrics = m_name->fontMetrics();
    const QString name = metrics.elidedText(origin.file, Qt::ElideMiddle, RowTools::X - NameX - 2 * TitleHeight);
    m_name->setText(name);
    m_name->resize(m_name->sizeHint().width(), TitleHeight);
    m_unsaved->move(NameX + m_name->width() + (name.isEmpty() ? 0 : NameGap), 0);
    m_unsaved->setVisible(!origin.file.isEmpty() && origin.kept != steps);
    m_tools->refresh();
    ActionColumn::setLit(m_upload, LineIcon::Upload, origin.given != steps);
}

void StepListScreen::takeName(const QString& name) {
    Origin& origin = m_origins[handler().currentChannel()];
    origin.file = name;
    origin.kept = list().fingerprint();
    showOrigin();
    // The record's field is counted in bytes: what does not fit goes, but no half of a character stays.
    const QByteArray bytes = name.toUtf8();
    int size = qMin(bytes.size(), static_cast<int>(sizeof(ChannelRecord::listName)) - 1);
    const auto insideCharacter = [&bytes](int at) {
        return at < bytes.size() && (static_cast<unsigned char>(bytes.at(at)) & 0xC0U) == 0x80U;
    };
    while (insideCharacter(size))
        --size;
    (handler().*m_kind.setCachedName)(bytes.left(size).constData());
}

void StepListScreen::afterChange(bool done, const QString& error) {
    if (done)
        showOrigin();
    else
        showToast(host(), error);
}

void StepListScreen::onAddStep() {
    update_static_controls(m_kind.tableState);
    QString error;
    showList(); // with the limits that hold now
    afterChange(m_table->addStep(error), error);
}

void StepListScreen::onDeleteStep() {
    update_static_controls(m_kind.tableState);
    QString error;
    afterChange(m_table->deleteCurrentStep(error), error);
}

void StepListScreen::onNew() {
    if (m_kind.newQuestion &&
        !confirmAction(&host(), QString::fromLatin1(m_kind.newQuestion), QString::fromLatin1(m_kind.newNote)))
        return;
    update_static_controls(m_kind.tableState);
    QString error;
    const bool done = m_table->newList(error);
    if (done)
        m_origins[handler().currentChannel()].file.clear();
    afterChange(done, error);
}

void StepListScreen::onUpload() {
    update_static_controls(m_kind.tableState);
    const QString problem = list().firstProblem();
    if (!problem.isEmpty()) {
        showToast(host(), problem);
        return;
    }
    // Taken now: the list can be edited, and another channel selected, while the command waits.
    Origin& origin = m_origins[handler().currentChannel()];
    const quint64 steps = list().fingerprint();
    const bool done = upload() == 0;
    origin.given = done ? std::make_optional(steps) : std::nullopt;
    showOrigin();
    host().UpdateStatusBar();
    if (done)
        showInformation(&host(), QString::fromLatin1(m_kind.uploadTitle), QStringLiteral("Succeeded!"));
    else
        showCommandFailure(host());
}

void StepListScreen::onFiles(ListFileMode mode) {
    if (m_files->open(mode))
        update_static_controls(m_kind.filesState);
}

void StepListScreen::onCancel() {
    update_static_controls(m_kind.tableState);
}

void StepListScreen::onEditRequested(const ListEditRequest& request) {
    const auto edit = [this, request] {
        // The list may have changed since the touch: then it was meant for another step.
        ListEditRequest now;
        ListEditValue value;
        const bool same = list().getEditRequest(request.row, request.column, now) && now.text == request.text;
        if (!same || !askForCellValue(host(), request, value))
            return;
        QString error;
        showList(); // with the limits that hold now
        afterChange(m_table->applyEdit(request, value, error), error);
    };
    // A choice opens nothing and sends nothing.
    if (request.kind == ListColumnKind::Choice)
        edit();
    else
        ActionGate::panel().ask(m_table, edit);
}

} // namespace Kavor::HandheldGui
