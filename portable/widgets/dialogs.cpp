#include "portable/widgets/dialogs.h"

#include "portable/widgets/scrim.h"
#include "portable/widgets/styles/styles.h"

#include <QDialog>
#include <QGridLayout>
#include <QLabel>
#include <QMessageBox>
#include <QPushButton>

namespace Kavor::HandheldGui {

namespace {

DialogRunner* installedRunner = nullptr;
int openDialogs = 0;

} // namespace

int DialogRunner::run(QDialog& dialog, DialogKind kind, const QString& text) {
    ++openDialogs;
    Scrim scrim(dialog.parentWidget() ? dialog.parentWidget()->window() : nullptr);
    const int result = execute(dialog, kind, text);
    --openDialogs;
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

bool DialogRunner::anyOpen() {
    return openDialogs > 0;
}

void dressBox(QMessageBox& box) {
    constexpr int Margin = 32;
    constexpr int NarrowestText = 480;
    constexpr double Enlarged = 1.5;
    box.setWindowFlag(Qt::FramelessWindowHint);
    box.setStyleSheet(MESSAGE_BOX_STYLE);
    if (QLayout* layout = box.layout()) {
        layout->setContentsMargins(Margin, Margin, Margin, Margin);
        if (auto* grid = qobject_cast<QGridLayout*>(layout))
            grid->setVerticalSpacing(Margin);
    }
    if (auto* text = box.findChild<QLabel*>(QStringLiteral("qt_msgbox_label")))
        text->setMinimumWidth(NarrowestText);
    for (QPushButton* button : box.findChildren<QPushButton*>()) {
        button->setFont(QFont(QStringLiteral("Segoe UI"), 18));
        button->setIcon(QIcon());
        const QSize hint = button->sizeHint();
        button->setMinimumSize(static_cast<int>(hint.width() * Enlarged), static_cast<int>(hint.height() * Enlarged));
        button->setFocusPolicy(Qt::NoFocus);
    }
}

bool confirmAction(QWidget* parent, const QString& question, const QString& note) {
    QMessageBox box(parent);
    box.setObjectName(QStringLiteral("question"));
    box.setText(question);
    box.setInformativeText(note);
    box.setStandardButtons(QMessageBox::Yes | QMessageBox::No);
    box.setDefaultButton(QMessageBox::No);
    dressBox(box);
    return DialogRunner::current().run(box, DialogKind::Question, question) == QMessageBox::Yes;
}

} // namespace Kavor::HandheldGui
