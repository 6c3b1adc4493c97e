#include "portable/widgets/choicegroup.h"

#include "portable/widgets/actiongate.h"
#include "portable/widgets/freshness.h"
#include "portable/widgets/pressfilter.h"
#include "portable/widgets/styles/styles.h"
#include "portable/widgets/styles/tokens.h"

#include <QMetaMethod>
#include <QPushButton>
#include <QVariant>

namespace Kavor::HandheldGui {

ChoiceGroup::ChoiceGroup(QWidget* parent, const QString& pressedStyle, const QString& unpressedStyle,
                         const std::vector<Button>& buttons)
    : QObject(parent), m_pressedStyle(pressedStyle), m_unpressedStyle(unpressedStyle) {
    for (const Button& description : buttons) {
        auto* button = new QPushButton(description.text, parent);
        button->setObjectName(description.name);
        button->setProperty("tone", description.tone);
        button->setFocusPolicy(Qt::NoFocus);
        if (description.tone == QLatin1String("off"))
            PressFilter::takeEveryPress(button);
        const int index = static_cast<int>(m_buttons.size());
        connect(button, &QPushButton::clicked, this, [this, button, index] {
            emit clicked(index);
            if (isSignalConnected(QMetaMethod::fromSignal(&ChoiceGroup::asked)))
                ActionGate::panel().ask(button, [this, index] { emit asked(index); });
        });
        button->setStyleSheet(m_unpressedStyle);
        m_buttons.push_back(button);
        m_tones.push_back(description.tone);
        m_pictures.push_back(description.picture);
    }
    showPictures();
}

void ChoiceGroup::showPictures() {
    for (int i = 0; i < static_cast<int>(m_buttons.size()); ++i) {
        const Picture& picture = m_pictures[static_cast<std::size_t>(i)];
        if (!picture)
            continue;
        const QPixmap drawn = picture(i == m_chosen && !m_isGrey ? Style::OnActive : Style::Text);
        button(i)->setIconSize(drawn.size());
        button(i)->setIcon(drawn);
    }
}

void ChoiceGroup::followModule() {
    connect(&Freshness::panel(), &Freshness::changed, this, &ChoiceGroup::takeTones);
    takeTones();
}

// The property is read when a sheet is applied.
void ChoiceGroup::takeTones() {
    if (m_isGrey == Freshness::panel().isStale())
        return;
    m_isGrey = !m_isGrey;
    for (std::size_t i = 0; i < m_buttons.size(); ++i) {
        m_buttons[i]->setProperty("tone", m_isGrey ? QStringLiteral("stale") : m_tones[i]);
        m_buttons[i]->setStyleSheet(QString());
    }
    choose(m_chosen);
    showPictures();
}

void ChoiceGroup::choose(int index) {
    const bool moves = index != m_chosen;
    m_chosen = index;
    if (moves)
        showPictures();
    for (int i = 0; i < static_cast<int>(m_buttons.size()); ++i)
        applySheet(button(i), i == index ? m_pressedStyle : m_unpressedStyle);
}

void ChoiceGroup::setEnabled(bool enabled) {
    for (QPushButton* button : m_buttons)
        button->setEnabled(enabled);
}

void ChoiceGroup::setVisible(bool visible) {
    for (QPushButton* button : m_buttons)
        button->setVisible(visible);
}

void ChoiceGroup::place(int x, int y, int width, int height) {
    for (QPushButton* button : m_buttons) {
        button->setGeometry(x, y, width, height);
        x += width + Style::Gap;
    }
}

} // namespace Kavor::HandheldGui
