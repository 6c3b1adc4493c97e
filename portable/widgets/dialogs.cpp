#include "portable/widgets/dialogs.h"

#include "portable/widgets/scrim.h"
#include "portable/widgets/styles/styles.h"

#include <QDialog>
#include <QMessageBox>

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

bool confirmAction(QWidget* parent, const QString& question, const QString& note) {
    QMessageBox box(parent);
    box.setWindowFlag(Qt::FramelessWindowHint);
    box.setObjectName(QStringLiteral("question"));
    box.setText(question);
    box.setInformativeText(note);
    box.setStandardButtons(QMessageBox::Yes | QMessageBox::No);
    box.setDefaultButton(QMessageBox::No);
    box.setStyleSheet(MESSAGE_BOX_STYLE);
    return DialogRunner::current().run(box, DialogKind::Question, question) == QMessageBox::Yes;
}

} // namespace Kavor::HandheldGui
