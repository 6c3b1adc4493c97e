#include "portable/host/iguiscreen.h"

#include "portable/host/panelhost.h"
#include "portable/widgets/styles/tokens.h"

#include <utility>

namespace Kavor::HandheldGui {

IGuiScreen::IGuiScreen(QWidget* parent, std::vector<STATE> states)
    : m_states(std::move(states)), m_host(qobject_cast<PanelHost*>(parent)) {
    Q_ASSERT(m_host);
}

EventHandler& IGuiScreen::handler() const {
    return m_host->handler();
}

QWidget* IGuiScreen::makePage(const QString& name) {
    auto* page = new QWidget(m_host->contentArea());
    page->setObjectName(name);
    page->setGeometry(0, 0, Style::WindowWidth, Style::PageHeight);
    page->hide();
    return page;
}

} // namespace Kavor::HandheldGui
