#include "portable/screens/lists/placetabs.h"

#include "portable/host/screentexts.h"
#include "portable/widgets/lineicons.h"
#include "portable/widgets/pagegroup.h"
#include "portable/widgets/styles/styles.h"
#include "portable/widgets/styles/tokens.h"

#include <QPushButton>

namespace Kavor::HandheldGui {

namespace {

constexpr int Left = 192;
constexpr int Top = 12;
constexpr int SideRoom = 18;
constexpr int MostWords = 200; ///< pixels
constexpr int Right = 968;

} // namespace

PlaceTabs::PlaceTabs(PageGroup& group, const QString& prefix) : QObject(&group), m_group(group), m_prefix(prefix) {}

QPushButton* PlaceTabs::tab(std::size_t place) {
    while (m_tabs.size() <= place) {
        const std::size_t index = m_tabs.size();
        auto* button = new QPushButton(&m_group);
        button->setObjectName(m_prefix + QStringLiteral("Place%1").arg(index));
        button->setFocusPolicy(Qt::NoFocus);
        button->setIconSize(LineIconRoom);
        connect(button, &QPushButton::clicked, this,
                [this, index] { emit asked(index == 0 ? std::nullopt : std::make_optional(m_sticks[index - 1])); });
        m_tabs.push_back(button);
    }
    return m_tabs[place];
}

bool PlaceTabs::setSticks(const std::vector<Stick>& sticks) {
    m_sticks = sticks;
    bool isThere = !m_chosen;
    for (const Stick& stick : sticks)
        isThere = isThere || stick == *m_chosen;
    if (!isThere)
        m_chosen.reset();
    show();
    return isThere;
}

void PlaceTabs::choose(const std::optional<Stick>& stick) {
    m_chosen = stick;
    show();
}

void PlaceTabs::show() {
    const std::size_t places = m_sticks.empty() ? 0 : m_sticks.size() + 1;
    int x = Left;
    for (std::size_t place = 0; place < qMax(places, m_tabs.size()); ++place) {
        QPushButton* button = tab(place);
        const bool fits = place < places && x < Right;
        button->setVisible(fits);
        if (!fits)
            continue;
        const bool isChosen = place == 0 ? !m_chosen : m_chosen && *m_chosen == m_sticks[place - 1];
        applySheet(button, isChosen ? PRESSED_TAB_BTN_STYLE : UNPRESSED_TAB_BTN_STYLE);
        button->setIcon(
            lineIcon(place == 0 ? LineIcon::Device : LineIcon::Stick, isChosen ? Style::Text : Style::Label));
        button->ensurePolished();
        const QString name = place == 0 ? QStringLiteral("Device") : onOneLine(m_sticks[place - 1].name);
        QFont font = button->font();
        font.setWeight(QFont::DemiBold); // the chosen one's
        const QFontMetrics metrics(font);
        QString words = metrics.elidedText(name, Qt::ElideMiddle, MostWords);
        const int width = metrics.horizontalAdvance(words) + LineIconSize + 8 + 2 * SideRoom;
        button->setText(words.replace(QLatin1Char('&'), QLatin1String("&&")));
        button->setGeometry(x, Top, qMin(width, Right - x), Style::ButtonHeight);
        x += width + Style::Gap;
    }
}

} // namespace Kavor::HandheldGui
