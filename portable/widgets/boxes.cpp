#include "portable/widgets/boxes.h"

#include "portable/widgets/breakable.h"
#include "portable/widgets/styles/styles.h"
#include "portable/widgets/styles/tokens.h"

#include <QDialogButtonBox>
#include <QFontMetrics>
#include <QGridLayout>
#include <QLabel>
#include <QMessageBox>
#include <QPushButton>
#include <QRegularExpression>

namespace Kavor::HandheldGui {

namespace {

constexpr int SideMargin = 56;
constexpr int Margin = 40;
constexpr int Spacing = 16;
constexpr QSize ButtonSize(280, 80);
constexpr int TextWidths[] = {576, 960}; // the second where the first is not enough
constexpr int LeastTextHeight = 40;
constexpr int MostTextHeight = 340; // of text and note together
constexpr int MostNoteHeight = 120;
constexpr int LongestWord = 40;

struct BoxFont {
    int pixels;
    bool strong;

    QFont font() const {
        QFont font(QStringLiteral("Segoe UI"));
        font.setPixelSize(pixels);
        font.setWeight(strong ? QFont::DemiBold : QFont::Normal);
        return font;
    }

    // Qt 5 divides the weight of a style sheet by eight.
    QString css() const {
        return QStringLiteral("font-size: %1px; font-weight: %2;")
            .arg(pixels)
            .arg(strong ? QStringLiteral("504") : QStringLiteral("normal"));
    }
};

constexpr BoxFont QuestionFont{30, true};
constexpr BoxFont TextFont{24, false};
constexpr BoxFont NoteFont{26, false};
constexpr BoxFont HeadingFont{26, true};

/// A path or name of many letters has no blanks to wrap at.
QString wrappable(const QString& text) {
    static const QRegularExpression longWord(QStringLiteral("\\S{%1}").arg(LongestWord));
    return longWord.match(text).hasMatch() ? breakable(text, LongestWord) : text;
}

int heightOf(const QString& text, const QFont& font, int width) {
    return QFontMetrics(font)
        .boundingRect(QRect(0, 0, width, 1 << 20), Qt::AlignCenter | Qt::TextWordWrap, text)
        .height();
}

/// As much of the beginning and the end as fits.
QString fitted(const QString& text, const QFont& font, int width, int height) {
    if (heightOf(wrappable(text), font, width) <= height)
        return wrappable(text);
    const auto shortened = [&text](int kept) {
        return wrappable(text.left((kept + 1) / 2)) + QStringLiteral(" \u2026 ") + wrappable(text.right(kept / 2));
    };
    int fits = 0;
    for (int tooMuch = text.size(); tooMuch - fits > 1;) {
        const int kept = (fits + tooMuch) / 2;
        (heightOf(shortened(kept), font, width) <= height ? fits : tooMuch) = kept;
    }
    return shortened(fits);
}

QLabel* labelOf(QMessageBox& box, const char* name) {
    return box.findChild<QLabel*>(QLatin1String(name));
}

void placeText(QLabel& label, const BoxFont& font, int width, int mostHeight, int below) {
    label.setText(fitted(label.text(), font.font(), width, mostHeight));
    label.setAlignment(Qt::AlignHCenter | Qt::AlignTop);
    label.setFixedSize(width, qMax(heightOf(label.text(), font.font(), width), LeastTextHeight) + below);
}

int run(QMessageBox& box, DialogKind kind, const BoxTexts& texts, Answer yes, const QString& asked) {
    box.setObjectName(texts.name);
    box.setTextFormat(Qt::PlainText);
    box.setText(texts.text);
    box.setInformativeText(texts.note);
    dressBox(box);
    if (yes == Answer::Destroys)
        box.button(QMessageBox::Yes)
            ->setStyleSheet(PUSH_BN_STYLE +
                            QStringLiteral("QPushButton { border: 3px solid %1; }").arg(Style::css(Style::Wrong)));
    if (!texts.heading.isEmpty()) {
        // A frameless box shows no title of its own. The place of a menu bar is the one above a layout.
        box.setWindowTitle(texts.heading);
        auto* heading = new QLabel(texts.heading, &box);
        heading->setTextFormat(Qt::PlainText);
        heading->setAlignment(Qt::AlignHCenter | Qt::AlignBottom);
        heading->setFixedHeight(64);
        const QRgb colour = kind == DialogKind::Critical ? Style::Wrong : Style::Label;
        heading->setStyleSheet(QStringLiteral("QLabel { color: %1; %2 }").arg(Style::css(colour), HeadingFont.css()));
        box.layout()->setMenuBar(heading);
    }
    return DialogRunner::current().run(box, kind, asked);
}

} // namespace

void dressBox(QMessageBox& box) {
    const bool asks = box.button(QMessageBox::No) != nullptr;
    QLabel* text = labelOf(box, "qt_msgbox_label");
    QLabel* note = labelOf(box, "qt_msgbox_informativelabel");
    const BoxFont textFont = asks || note ? QuestionFont : TextFont;
    box.setWindowFlag(Qt::FramelessWindowHint);
    box.setFont(textFont.font());
    box.setStyleSheet(MESSAGE_BOX_STYLE + QStringLiteral("QLabel#qt_msgbox_label { %1 }"
                                                         "QLabel#qt_msgbox_informativelabel { %2 }")
                                              .arg(textFont.css(), NoteFont.css()));
    if (auto* grid = qobject_cast<QGridLayout*>(box.layout())) {
        grid->setContentsMargins(SideMargin, Margin, SideMargin, Margin);
        grid->setVerticalSpacing(Spacing);
        grid->setHorizontalSpacing(0);
        // Where there is no icon, its place would push the text out of the middle.
        QLayoutItem* indent = grid->itemAtPosition(0, 0);
        if (indent && indent->spacerItem())
            indent->spacerItem()->changeSize(0, 0);
    }
    const int mostText = MostTextHeight - (note ? MostNoteHeight : 0);
    const bool narrow = heightOf(wrappable(text->text()), textFont.font(), TextWidths[0]) <= mostText;
    const int width = TextWidths[narrow ? 0 : 1];
    const int aboveButtons = Margin - Spacing;
    placeText(*text, textFont, width, mostText, note ? 0 : aboveButtons);
    if (note)
        placeText(*note, NoteFont, width, MostNoteHeight, aboveButtons);

    if (auto* buttons = box.findChild<QDialogButtonBox*>()) {
        box.layout()->setAlignment(buttons, Qt::AlignHCenter);
        buttons->layout()->setSpacing(Spacing);
    }
    // The default is set last, and no button takes the focus: what Return answers must not move by itself.
    for (QPushButton* button : box.findChildren<QPushButton*>()) {
        button->setAutoDefault(false);
        button->setFocusPolicy(Qt::NoFocus);
        button->setFont(QFont(QStringLiteral("Segoe UI"), 18));
        button->setStyleSheet(PUSH_BN_STYLE);
        button->setIcon(QIcon());
        button->setFixedSize(ButtonSize);
        button->setText(button->text().remove(QLatin1Char('&'))); // there are no keys to press it with
    }
    if (asks) {
        box.setDefaultButton(QMessageBox::No);
        box.setEscapeButton(QMessageBox::No);
    } else if (box.button(QMessageBox::Ok)) {
        box.setDefaultButton(QMessageBox::Ok);
    }
}

void tellInBox(QWidget* parent, DialogKind kind, const BoxTexts& texts) {
    QMessageBox box(parent);
    box.setStandardButtons(QMessageBox::Ok);
    run(box, kind, texts, Answer::Harmless,
        texts.note.isEmpty() ? texts.text : texts.text + QLatin1Char('\n') + texts.note);
}

void showInformation(QWidget* parent, const QString& title, const QString& text) {
    tellInBox(parent, DialogKind::Information, {QStringLiteral("information"), QString(), title, text});
}

bool confirmAction(QWidget* parent, const QString& question, const QString& note, Answer yes) {
    QMessageBox box(parent);
    box.setStandardButtons(QMessageBox::Yes | QMessageBox::No);
    return run(box, DialogKind::Question, {QStringLiteral("question"), QString(), question, note}, yes, question) ==
           QMessageBox::Yes;
}

} // namespace Kavor::HandheldGui
