#include "portable/screens/lists/rowtools.h"

#include "lists/table/list_table.h"
#include "portable/host/panelhost.h"
#include "portable/host/screentexts.h"
#include "portable/widgets/actiongate.h"
#include "portable/widgets/pagegroup.h"
#include "portable/widgets/scrollhandle.h"
#include "portable/widgets/styles/styles.h"
#include "portable/widgets/styles/tokens.h"
#include "portable/widgets/toolkey.h"
#include "portable/widgets/vkeyboard.h"

#include <QItemSelectionModel>
#include <QLocale>
#include <QScrollBar>

namespace Kavor::HandheldGui {

namespace {

constexpr QRect PositionPlace(RowTools::X, 8, 184, 68);
constexpr int KeysTop = 88;
constexpr int KeysHeight = 332;
constexpr int KeyWidth = 116;
constexpr int KeyHeight = 72;
constexpr int HandleX = RowTools::X + KeyWidth + Style::Gap;
constexpr int HandleWidth = 56;

QString counted(int number) {
    return QLocale(QLocale::English).toString(number);
}

} // namespace

RowTools::RowTools(PanelHost& host, PageGroup& group, ListTable& table, const QString& prefix,
                   std::function<void(bool done, const QString& error)> changed)
    : QObject(&group),
      m_host(host),
      m_table(table),
      m_changed(std::move(changed)),
      m_position(new QPushButton(&group)) {
    m_position->setObjectName(prefix + QStringLiteral("Position"));
    m_position->setGeometry(PositionPlace);
    m_position->setFocusPolicy(Qt::NoFocus);
    m_position->setStyleSheet(PUSH_BN_STYLE + QStringLiteral("QPushButton { font-size: %1px; }").arg(Style::TextGroup));
    connect(m_position, &QPushButton::clicked, this,
            [this] { ActionGate::panel().ask(m_position, [this] { goTo(); }); });

    using Change = std::function<bool(QString&)>;
    const struct {
        LineIcon icon;
        const char* word;
        Change change;
    } keys[] = {{LineIcon::InsertBelow, "Insert",
                 [&table](QString& error) {
                     return table.insertStep(error);
                 }},
                {LineIcon::Copy, "Repeat",
                 [&table](QString& error) {
                     return table.repeatCurrentStep(error);
                 }},
                {LineIcon::Up, "Up",
                 [&table](QString& error) {
                     return table.moveCurrentStep(-1, error);
                 }},
                {LineIcon::Down, "Down", [&table](QString& error) {
                     return table.moveCurrentStep(1, error);
                 }}};
    int place = 0;
    for (const auto& described : keys) {
        const QString word = QString::fromLatin1(described.word);
        auto* key = new ToolKey(&group, described.icon, word, prefix + word);
        key->setGeometry(X, KeysTop + place++ * (KeysHeight - KeyHeight) / 3, KeyWidth, KeyHeight);
        connect(key, &QPushButton::clicked, this, [this, change = described.change] {
            QString error;
            const bool done = change(error);
            m_changed(done, error);
        });
        m_keys.push_back(key);
    }

    auto* handle = new ScrollHandle(&group);
    handle->setGeometry(HandleX, KeysTop, HandleWidth, KeysHeight);
    handle->follow(*table.verticalScrollBar());
    connect(handle, &QScrollBar::valueChanged, this, &RowTools::refresh);
    connect(table.selectionModel(), &QItemSelectionModel::currentRowChanged, this, &RowTools::refresh);
}

void RowTools::refresh() {
    const int count = m_table.rowCount();
    int row = m_table.currentRow();
    m_keys[2]->setEnabled(row > 0);
    m_keys[3]->setEnabled(row >= 0 && row + 1 < count);
    const QRect shown = m_table.visualRect(m_table.currentIndex());
    const bool inSight = row >= 0 && m_table.viewport()->rect().contains(shown.center());
    if (!inSight) // of rows that were scrolled away, where the table stands
        row = qMax(m_table.rowAt(0), 0);
    m_position->setText(QStringLiteral("%1 / %2").arg(counted(row + 1), counted(count)));
}

void RowTools::goTo() {
    const int count = m_table.rowCount();
    VirtKeyboard keyboard(&m_host, QStringLiteral("Go to step"), QString(), QString::number(m_table.currentRow() + 1));
    keyboard.setSignEnabled(false);
    keyboard.setPointEnabled(false);
    keyboard.setRange(QStringLiteral("1 to %1").arg(counted(count)));
    if (!keyboard.ask())
        return;
    const int step = keyboard.text().toInt();
    if (step < 1 || step > m_table.rowCount()) {
        showToast(m_host, QStringLiteral("Valid Step range: 1 to %1").arg(counted(m_table.rowCount())));
        return;
    }
    m_table.setCurrentCell(step - 1, qMax(m_table.currentColumn(), 1));
    m_table.scrollTo(m_table.currentIndex(), QAbstractItemView::PositionAtCenter);
}

} // namespace Kavor::HandheldGui
