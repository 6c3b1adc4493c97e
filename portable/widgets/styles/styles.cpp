#include "portable/widgets/styles/styles.h"

#include "portable/widgets/styles/tokens.h"

#include <QApplication>
#include <QFont>
#include <QPalette>
#include <QStyleFactory>
#include <QWidget>

// Resources of a static library are not registered by themselves; the macro wants the global namespace.
static void registerPictures() {
    Q_INIT_RESOURCE(resources);
}

namespace Kavor::HandheldGui {

namespace Style {

QString css(QRgb colour) {
    return QColor(colour).name();
}

} // namespace Style

namespace {

using namespace Style;

/// Under the finger a text sinks, so that a press is seen without colours too.
const QString Sunk = QStringLiteral("padding-top: 4px;");

/// Qt 5 divides the weight of a style sheet by eight: 504 is its demi-bold, 63.
QString font(int pixels, bool strong = false) {
    return QStringLiteral("font-family: \"Segoe UI\"; font-size: %1px; font-weight: %2;")
        .arg(pixels)
        .arg(strong ? QStringLiteral("504") : QStringLiteral("normal"));
}

QString colours(QRgb text, QRgb background) {
    return QStringLiteral("color: %1; background-color: %2;").arg(css(text), css(background));
}

QString border(int width, QRgb colour, int radius = Radius) {
    return QStringLiteral("border: %1px solid %2; border-radius: %3px;").arg(width).arg(css(colour)).arg(radius);
}

QString rule(const QString& selector, const QString& body) {
    return selector + QStringLiteral(" { ") + body + QStringLiteral(" }\n");
}

/// What the dynamic properties of a button change: "side" is "left" for words behind a sign, "card" is set on one that
/// fills a page with its picture, "quiet" leaves an outline only.
QString buttonVariants() {
    return rule(QStringLiteral("QPushButton[side=\"left\"]"), QStringLiteral("text-align: left; padding-left: 16px;")) +
           rule(QStringLiteral("QPushButton[card=\"true\"]"), font(TextValue, true)) +
           rule(QStringLiteral("QPushButton[quiet=\"true\"]"), colours(Label, Panel) + border(2, Edge));
}

QString disabledButton(bool strong = false) {
    return rule(QStringLiteral("QPushButton:disabled"),
                colours(Disabled, Panel) + border(2, PanelEdge) + (strong ? font(TextLabel, true) : QString()));
}

QString filledButton(QRgb text, QRgb fill, QRgb down, const QString& variant = QString(), int pixels = TextLabel) {
    const QString selector = QStringLiteral("QPushButton") + variant;
    return rule(selector, colours(text, fill) + border(2, fill) + font(pixels, true)) +
           rule(selector + QStringLiteral(":pressed"),
                QStringLiteral("background-color: %1;").arg(css(down)) + border(2, Text) + Sunk);
}

QString raisedButton() {
    return rule(QStringLiteral("QPushButton"), colours(Text, Raised) + border(2, Edge) + font(TextLabel)) +
           rule(QStringLiteral("QPushButton:pressed"),
                QStringLiteral("background-color: %1;").arg(css(RaisedDown)) + border(2, Active) + Sunk) +
           buttonVariants() + disabledButton();
}

QString chosenButton() {
    return filledButton(OnActive, Active, ActiveDown) +
           filledButton(OnRfOn, RfOn, RfOnDown, QStringLiteral("[tone=\"rf\"]"), TextOutput) +
           filledButton(OnNeutral, Neutral, Text, QStringLiteral("[tone=\"off\"]")) +
           filledButton(Text, RaisedDown, Raised, QStringLiteral("[tone=\"stale\"]")) +
           rule(QStringLiteral("QPushButton[tone=\"stale\"]"), border(2, Edge)) + buttonVariants() +
           disabledButton(true);
}

QString functionTab(bool pressed) {
    const QString edge = QStringLiteral("border: none; border-right: 1px solid %1; border-bottom: 4px solid %2;")
                             .arg(css(Ground), css(pressed ? Active : Panel));
    return rule(QStringLiteral("QPushButton"), colours(pressed ? Text : Label, pressed ? Raised : Panel) + edge +
                                                   font(TextLabel, pressed) + QStringLiteral("padding-top: 4px;")) +
           rule(QStringLiteral("QPushButton:pressed"),
                colours(Text, RaisedDown) + QStringLiteral("border-bottom: 4px solid %1;").arg(css(Text)));
}

QString pageTab(bool pressed, int pixels = TextLabel) {
    const QString edge = QStringLiteral("border: none; border-top: 4px solid %1; border-top-left-radius: %2px;"
                                        "border-top-right-radius: %2px;")
                             .arg(css(pressed ? Active : Field))
                             .arg(Radius);
    return rule(QStringLiteral("QPushButton"), colours(pressed ? Text : Label, pressed ? Raised : Field) + edge +
                                                   font(pixels, pressed) + QStringLiteral("padding-bottom: 2px;")) +
           rule(QStringLiteral("QPushButton:pressed"),
                colours(Text, RaisedDown) + QStringLiteral("border-top: 4px solid %1;").arg(css(Text))) +
           rule(QStringLiteral("QPushButton:disabled"), colours(Disabled, Panel));
}

QString label(int pixels, QRgb colour, bool strong = false) {
    return rule(QStringLiteral("QLabel"),
                QStringLiteral("color: %1; background: transparent; border: none;").arg(css(colour)) +
                    font(pixels, strong)) +
           rule(QStringLiteral("QLabel:disabled"), QStringLiteral("color: %1;").arg(css(Disabled)));
}

QString edit(int pixels, QRgb text, QRgb background, QRgb edge, bool strong = false) {
    return rule(QStringLiteral("QLineEdit"),
                colours(text, background) + border(2, edge) + font(pixels, strong) +
                    QStringLiteral("padding: 0 12px; selection-background-color: %1; selection-color: %2;")
                        .arg(css(Active), css(OnActive))) +
           rule(QStringLiteral("QLineEdit[compact=\"true\"]"), font(TextGroup) + QStringLiteral("padding: 0 4px;")) +
           rule(QStringLiteral("QLineEdit:disabled"),
                colours(Disabled, Panel) + QStringLiteral("border-color: %1;").arg(css(PanelEdge)));
}

QString combo(int pixels) {
    return rule(QStringLiteral("QComboBox"),
                colours(Text, Field) + border(2, Edge) + font(pixels) + QStringLiteral("padding-left: 12px;")) +
           rule(QStringLiteral("QComboBox[compact=\"true\"]"), QStringLiteral("padding-left: 10px;")) +
           rule(QStringLiteral("QComboBox:on"), QStringLiteral("border-color: %1;").arg(css(Active))) +
           rule(QStringLiteral("QComboBox:disabled"),
                colours(Disabled, Panel) + QStringLiteral("border-color: %1;").arg(css(PanelEdge))) +
           rule(QStringLiteral("QComboBox::drop-down"), QStringLiteral("border: none; width: 40px;")) +
           rule(QStringLiteral("QComboBox[compact=\"true\"]::drop-down"), QStringLiteral("width: 28px;")) +
           rule(QStringLiteral("QComboBox::down-arrow"),
                QStringLiteral("image: url(:/down_arrow.png); width: 22px; height: 14px;")) +
           rule(QStringLiteral("QComboBox::down-arrow:disabled"),
                QStringLiteral("image: url(:/down_arrow_disabled.png);"));
}

QString group(QRgb background, QRgb edge) {
    return QStringLiteral("QFrame#group { background-color: %1; border: 1px solid %2; border-radius: 12px; }\n")
        .arg(css(background), css(edge));
}

QString scrollBars() {
    return rule(QStringLiteral("QScrollBar:vertical"),
                QStringLiteral("background: %1; width: 56px; border: none; border-radius: 8px;").arg(css(Field))) +
           rule(QStringLiteral("QScrollBar::handle:vertical"),
                QStringLiteral("background: %1; min-height: 72px; border-radius: 8px;").arg(css(Edge))) +
           rule(QStringLiteral("QScrollBar::handle:vertical:pressed"),
                QStringLiteral("background: %1;").arg(css(Active))) +
           rule(QStringLiteral("QScrollBar::add-line, QScrollBar::sub-line"), QStringLiteral("height: 0;")) +
           rule(QStringLiteral("QScrollBar::add-page, QScrollBar::sub-page"), QStringLiteral("background: none;"));
}

QString table() {
    return rule(QStringLiteral("QTableView, QTableWidget"),
                colours(Text, Panel) +
                    QStringLiteral("border: none; gridline-color: %1; selection-background-color: %2;"
                                   "selection-color: %3; outline: none;")
                        .arg(css(PanelEdge), css(Field), css(Text)) +
                    font(TextLabel)) +
           rule(QStringLiteral("QHeaderView::section"), colours(Label, Panel) +
                                                            QStringLiteral("border: none; border-bottom: 1px solid %1;"
                                                                           "padding-left: 16px;")
                                                                .arg(css(PanelEdge)) +
                                                            font(TextGroup, true)) +
           scrollBars();
}

QString checkBox() {
    return rule(QStringLiteral("QCheckBox"),
                QStringLiteral("color: %1; background: transparent;").arg(css(Label)) + font(TextLabel)) +
           rule(QStringLiteral("QCheckBox:disabled"), QStringLiteral("color: %1;").arg(css(Disabled)));
}

} // namespace

const QString MAIN_WINDOW_STYLE =
    rule(QStringLiteral("QMainWindow"), QStringLiteral("background-color: %1;").arg(css(Ground)));
const QString CONTENT_BAR_STYLE = rule(
    QStringLiteral("QLabel"),
    QStringLiteral("color: %1; background-color: %2; border: none; padding-left: 24px;").arg(css(Label), css(Ground)) +
        font(TextGroup));
const QString STATUS_BAR_STYLE =
    rule(QStringLiteral("QStatusBar"), colours(Text, Black) + QStringLiteral("border: none;")) +
    rule(QStringLiteral("QStatusBar::item"), QStringLiteral("border: none;")) +
    rule(QStringLiteral("QStatusBar QLabel"),
         QStringLiteral("color: %1; background: transparent;").arg(css(Text)) + font(TextGroup));

const QString STATUS_VALUE_STYLE = label(TextGroup, Text);
const QString STATUS_RUNNING_STYLE = label(TextGroup, Active, true);
const QString STATUS_STALE_STYLE = label(TextGroup, Stale);

const QString PRESSED_TAB_BTN_STYLE = pageTab(true);
const QString UNPRESSED_TAB_BTN_STYLE = pageTab(false);
const QString PRESSED_TAB_BTN_STYLE_SMALL = pageTab(true, TextGroup);
const QString PRESSED_TAB_BTN_STYLE2 = functionTab(true);
const QString UNPRESSED_TAB_BTN_STYLE2 = functionTab(false);
const QString PRESSED_TAB_BTN_STYLE3 = pageTab(true);
const QString UNPRESSED_TAB_BTN_STYLE3 = pageTab(false);

const QString PRESSED_MOD_BTN_STYLE = chosenButton();
const QString UNPRESSED_MOD_BTN_STYLE = raisedButton();
const QString PRESSED_WIDGET_BTN_STYLE = chosenButton();
const QString UNPRESSED_WIDGET_BTN_STYLE = raisedButton();
const QString PUSH_BN_STYLE = raisedButton();
const QString PUSH_BN_SEL_STYLE = chosenButton();

const QString BORDER_LBL_STYLE =
    rule(QStringLiteral("QLabel"), colours(Label, Panel) + border(1, PanelEdge) + font(TextLabel));
const QString MOD_WIDGET_STYLE = QStringLiteral("background: transparent;");
const QString WIDGET_LBL_STYLE = label(TextLabel, Label);
const QString WIDGET_COMM_STYLE = label(TextGroup, Label);
const QString WIDGET_LBL_BOLD_STYLE = label(TextLabel, Text, true);
const QString WIDGET_LBL_BRIGHT_STYLE = label(TextLabel, Text);
const QString DYN_LABEL_STYLE = label(TextLabel, Label);
const QString DYN_VALUE_STYLE = label(TextValue, Text, true);
const QString DYN_LABEL_STYLE2 = label(TextGroup, Label);
const QString DYN_VALUE_STYLE2 = label(TextGroup, Text, true);
const QString LINK_LOST_STYLE =
    rule(QStringLiteral("QLabel"), QStringLiteral("color: %1; background: %2;").arg(css(OnWrong), css(Wrong)) +
                                       border(2, Wrong) + font(TextGroup, true));

const QString WIDGET_GROUP_STYLE = group(Panel, PanelEdge);
const QString WIDGET_GROUP_STYLE_HIDDEN_BORDER = group(Ground, Ground);
const QString WIDGET_GROUP_STYLE_MISC = group(Ground, PanelEdge);

const QString WIDGET_COMBO_STYLE = combo(TextLabel);
const QString WIDGET_COMBO_STYLE_BIG = combo(TextValue);
const QString WIDGET_COMBO_LIST_STYLE =
    rule(QStringLiteral("QListView"),
         colours(Text, Panel) + border(2, Edge, 0) + font(TextValue) + QStringLiteral("outline: none;")) +
    rule(QStringLiteral("QListView::item"),
         QStringLiteral("min-height: %1px; padding-left: 16px; border: none;").arg(TableRowHeight)) +
    rule(QStringLiteral("QListView::item:selected"), colours(OnActive, Active));
const QString WIDGET_EDIT_STYLE = edit(TextValue, Text, Field, Edge);
const QString WIDGET_EDIT_STYLE_RED = edit(TextValue, Wrong, Field, Wrong, true);
const QString WIDGET_EDIT_PENDING_STYLE = edit(TextValue, Text, Field, Active, true);
const QString WIDGET_EDIT_STYLE_GRAY = edit(TextValue, Label, Field, FaintEdge);
const QString WIDGET_NO_EDIT_STYLE_GRAY =
    edit(TextValue, Label, Panel, FaintEdge) +
    rule(QStringLiteral("QLineEdit:disabled"), colours(Label, Panel) + border(2, FaintEdge));
const QString WIDGET_EDIT_LARGE_STYLE = edit(TextFrequency, Text, Field, Edge, true);
const QString WIDGET_EDIT_LARGE_STYLE_RED = edit(TextFrequency, Wrong, Field, Wrong, true);

const QString WIDGET_CHKBOX_STYLE = checkBox();
const QString WIDGET_CHECKBOX_BLUE_ICON = checkBox();
const QString PROGRESS_BAR_STYLE =
    rule(QStringLiteral("QProgressBar"),
         colours(Text, Field) + border(2, FaintEdge) + font(TextGroup, true) + QStringLiteral("text-align: center;")) +
    rule(QStringLiteral("QProgressBar::chunk"),
         QStringLiteral("background-color: %1; border-radius: 6px;").arg(css(Progress)));
const QString LIST_STYLE = table();
const QString LIST_SCROLL_STYLE = scrollBars();
const QString PATTERN_SCROLL_STYLE = scrollBars();
const QString LIST_STEPS_STYLE = table();
const QString MESSAGE_BOX_STYLE =
    rule(
        QStringLiteral("QMessageBox, QDialog"),
        QStringLiteral("background-color: %1; border: 2px solid %2; border-radius: 12px;").arg(css(Panel), css(Edge))) +
    rule(QStringLiteral("QLabel"),
         QStringLiteral("color: %1; background: transparent; border: none;").arg(css(Text)) + font(TextLabel));

void applyApplicationStyle(QApplication& application) {
    registerPictures();
    application.setStyle(QStyleFactory::create(QStringLiteral("Fusion")));
    QFont::insertSubstitution(QStringLiteral("Segoe UI"), QStringLiteral("Open Sans"));
    QFont::insertSubstitution(QStringLiteral("Arial"), QStringLiteral("Liberation Sans"));
    QFont font(QStringLiteral("Segoe UI"));
    font.setPixelSize(TextLabel);
    application.setFont(font);
    QPalette palette;
    palette.setColor(QPalette::Window, QColor(Ground));
    palette.setColor(QPalette::WindowText, QColor(Text));
    palette.setColor(QPalette::Base, QColor(Field));
    palette.setColor(QPalette::Text, QColor(Text));
    palette.setColor(QPalette::Button, QColor(Raised));
    palette.setColor(QPalette::ButtonText, QColor(Text));
    palette.setColor(QPalette::Highlight, QColor(Active));
    palette.setColor(QPalette::HighlightedText, QColor(OnActive));
    application.setPalette(palette);
}

void applySheet(QWidget* widget, const QString& sheet) {
    if (widget->styleSheet() != sheet)
        widget->setStyleSheet(sheet);
}

} // namespace Kavor::HandheldGui
