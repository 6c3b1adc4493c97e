#include "portable/widgets/dialogs.h"

#include "portable/widgets/actiongate.h"
#include "portable/widgets/scrim.h"
#include "portable/widgets/styles/styles.h"
#include "portable/widgets/styles/tokens.h"

#include <QDialog>
#include <QDialogButtonBox>
#include <QEvent>
#include <QGridLayout>
#include <QLabel>
#include <QMessageBox>
#include <QPushButton>
#include <algorithm>
#include <vector>

namespace Kavor::HandheldGui {

namespace {

DialogRunner* installedRunner = nullptr;
std::vector<QDialog*> openDialogs; // the topmost last

/// Keeps a dialog in the middle of the window it belongs to: a box finds its size only when it is shown, and without a
/// window manager nobody else moves it.
class KeptInTheMiddle : public QObject {
public:
    explicit KeptInTheMiddle(QDialog& dialog) : m_dialog(dialog) { dialog.installEventFilter(this); }

protected:
    bool eventFilter(QObject* watched, QEvent* event) override {
        const QWidget* parent = m_dialog.parentWidget();
        if (parent && (event->type() == QEvent::Show || event->type() == QEvent::Resize)) {
            const QWidget* window = parent->window();
            const QSize room = window->size() - m_dialog.size();
            m_dialog.move(window->mapToGlobal(QPoint(room.width() / 2, room.height() / 2)));
        }
        return QObject::eventFilter(watched, event);
    }

private:
    QDialog& m_dialog;
};

} // namespace

int DialogRunner::run(QDialog& dialog, DialogKind kind, const QString& text) {
    openDialogs.push_back(&dialog);
    const ActionGate::DialogTime beside;
    const KeptInTheMiddle middle(dialog);
    Scrim scrim(dialog.parentWidget() ? dialog.parentWidget()->window() : nullptr);
    const int result = execute(dialog, kind, text);
    openDialogs.erase(std::find(openDialogs.begin(), openDialogs.end(), &dialog));
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

void dressBox(QMessageBox& box, int narrowestText) {
    constexpr int Margin = 32;
    constexpr double Enlarged = 1.5;
    constexpr QSize SmallestButton(144, 64);
    box.setWindowFlag(Qt::FramelessWindowHint);
    box.setStyleSheet(MESSAGE_BOX_STYLE);
    if (QLayout* layout = box.layout()) {
        layout->setContentsMargins(Margin, Margin, Margin, Margin);
        if (auto* grid = qobject_cast<QGridLayout*>(layout)) {
            grid->setVerticalSpacing(Margin);
            grid->setHorizontalSpacing(0);
            // Where there is no icon, its place would push the text out of the middle.
            QLayoutItem* indent = grid->itemAtPosition(0, 0);
            if (indent && indent->spacerItem())
                indent->spacerItem()->changeSize(0, 0);
        }
    }
    for (const char* name : {"qt_msgbox_label", "qt_msgbox_informativelabel"}) {
        if (auto* text = box.findChild<QLabel*>(QLatin1String(name))) {
            text->setMinimumWidth(narrowestText);
            text->setAlignment(Qt::AlignCenter);
        }
    }
    if (auto* buttons = box.findChild<QDialogButtonBox*>()) {
        buttons->setCenterButtons(true);
        buttons->layout()->setSpacing(Style::Gap);
    }
    for (QPushButton* button : box.findChildren<QPushButton*>()) {
        button->setFont(QFont(QStringLiteral("Segoe UI"), 18));
        button->setStyleSheet(button == box.defaultButton() ? PUSH_BN_SEL_STYLE : PUSH_BN_STYLE);
        button->setIcon(QIcon());
        const QSize enlarged(static_cast<int>(button->sizeHint().width() * Enlarged),
                             static_cast<int>(button->sizeHint().height() * Enlarged));
        button->setMinimumSize(enlarged.expandedTo(SmallestButton));
        button->setText(button->text().remove(QLatin1Char('&'))); // there are no keys to press it with
    }
}

void showInformation(QWidget* parent, const QString& title, const QString& text) {
    QMessageBox box(parent);
    box.setObjectName(QStringLiteral("information"));
    box.setWindowTitle(title);
    box.setText(title);
    box.setInformativeText(text);
    box.setStandardButtons(QMessageBox::Ok);
    box.setDefaultButton(QMessageBox::Ok);
    dressBox(box);
    DialogRunner::current().run(box, DialogKind::Information, title + QLatin1Char('\n') + text);
}

bool confirmAction(QWidget* parent, const QString& question, const QString& note) {
    QMessageBox box(parent);
    box.setObjectName(QStringLiteral("question"));
    box.setTextFormat(Qt::PlainText); // a question may name a file, and a file may be named anything
    box.setText(question);
    box.setInformativeText(note);
    box.setStandardButtons(QMessageBox::Yes | QMessageBox::No);
    box.setDefaultButton(QMessageBox::No);
    dressBox(box, WideBoxText);
    return DialogRunner::current().run(box, DialogKind::Question, question) == QMessageBox::Yes;
}

} // namespace Kavor::HandheldGui
