#include "portable/widgets/dialogs.h"

#include "portable/widgets/actiongate.h"
#include "portable/widgets/pressfilter.h"
#include "portable/widgets/scrim.h"

#include <QDialog>
#include <QEvent>
#include <QPointer>
#include <algorithm>
#include <memory>
#include <vector>

namespace Kavor::HandheldGui {

namespace {

/// What the control row and part of the status bar take from the height in which a box has its middle.
constexpr int BelowMiddle = 72;

DialogRunner* installedRunner = nullptr;
std::vector<QDialog*> openDialogs; // the topmost last

/// A dialog as a child of its window, above a scrim, for as long as this object lives. A box finds its size only when
/// it is shown. What had the focus gets it back.
class InWindow : public QObject {
public:
    InWindow(QDialog& dialog, DialogKind kind) : m_dialog(&dialog), m_opened(&dialog), m_kind(kind) {
        m_window = dialog.parentWidget() ? dialog.parentWidget()->window() : nullptr;
        if (!m_window || !m_window->isVisible())
            return;
        m_focused = m_window->focusWidget();
        m_scrim = std::make_unique<Scrim>(*m_window, kind != DialogKind::Progress);
        dialog.setParent(m_window, Qt::Widget);
        dialog.setAttribute(Qt::WA_StyledBackground);
        dialog.installEventFilter(this);
    }

    ~InWindow() override { leave(); }

protected:
    bool eventFilter(QObject* watched, QEvent* event) override {
        if (event->type() == QEvent::Show || event->type() == QEvent::Resize)
            place();
        if (event->type() == QEvent::Show) {
            m_dialog->raise();
            QWidget* inside = m_dialog->focusWidget();
            (inside ? inside : m_dialog.data())->setFocus();
        }
        // Its loop may end later, below a command that an Off beside it waits for: nothing stands in the way by then.
        if (event->type() == QEvent::Hide)
            leave();
        return QObject::eventFilter(watched, event);
    }

private:
    void leave() {
        openDialogs.erase(std::remove(openDialogs.begin(), openDialogs.end(), m_opened), openDialogs.end());
        if (m_scrim && m_focused)
            m_focused->setFocus();
        m_scrim.reset();
    }

    void place() {
        const QSize room = m_window->size() - m_dialog->size() - QSize(0, BelowMiddle);
        const QPoint middle(room.width() / 2, std::max(room.height() / 2, 0));
        m_dialog->move(m_kind == DialogKind::Keyboard ? QPoint() : middle);
    }

    QPointer<QDialog> m_dialog;
    const QDialog* const m_opened; ///< the same, also when it has gone
    const DialogKind m_kind;
    QWidget* m_window;
    QPointer<QWidget> m_focused;
    std::unique_ptr<Scrim> m_scrim;
};

} // namespace

int DialogRunner::run(QDialog& dialog, DialogKind kind, const QString& text) {
    openDialogs.push_back(&dialog);
    PressFilter::noteChange();
    const ActionGate::DialogTime beside;
    int result = 0;
    {
        const InWindow inWindow(dialog, kind);
        result = execute(dialog, kind, text);
    }
    PressFilter::noteChange();
    return result;
}

int DialogRunner::execute(QDialog& dialog, DialogKind, const QString&) {
    return dialog.exec();
}

DialogRunner& DialogRunner::current() {
    static DialogRunner own;
    return installedRunner ? *installedRunner : own;
}

void DialogRunner::install(DialogRunner* runner) {
    installedRunner = runner;
}

QDialog* DialogRunner::topmost() {
    return openDialogs.empty() ? nullptr : openDialogs.back();
}

} // namespace Kavor::HandheldGui
