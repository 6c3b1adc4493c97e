#pragma once

#include <QString>

class QApplication;
class QWidget;

/// The named style sheets that the widgets share. A widget shows a state by carrying the constant of that state, not by
/// a checked flag. All name the family "Segoe UI", for which "Open Sans" stands in where the device has no such font.
namespace Kavor::HandheldGui {

extern const QString MAIN_WINDOW_STYLE;
extern const QString CONTENT_BAR_STYLE;
extern const QString STATUS_BAR_STYLE;
extern const QString STATUS_VALUE_STYLE;
extern const QString STATUS_RUNNING_STYLE; ///< what runs
extern const QString STATUS_STALE_STYLE;   ///< the module cannot be reached

// Tabs: the function row (2), the modulation tabs (3), and the plain and small ones.
extern const QString PRESSED_TAB_BTN_STYLE;
extern const QString UNPRESSED_TAB_BTN_STYLE;
extern const QString PRESSED_TAB_BTN_STYLE_SMALL;
extern const QString PRESSED_TAB_BTN_STYLE2;
extern const QString UNPRESSED_TAB_BTN_STYLE2;
extern const QString PRESSED_TAB_BTN_STYLE3;
extern const QString UNPRESSED_TAB_BTN_STYLE3;

// Buttons read the dynamic properties "side" ("left": words behind a sign), "card" and "quiet" (an outline only).
// Choices of two or three buttons. The pressed style reads the dynamic property "tone" of the button: "rf" is amber and
// belongs to the RF output alone, "off" is neutral, "stale" grey, anything else takes the accent.
extern const QString PRESSED_MOD_BTN_STYLE;
extern const QString UNPRESSED_MOD_BTN_STYLE;
extern const QString PRESSED_WIDGET_BTN_STYLE;
extern const QString UNPRESSED_WIDGET_BTN_STYLE;
extern const QString PUSH_BN_STYLE;
extern const QString PUSH_BN_SEL_STYLE;

extern const QString BORDER_LBL_STYLE;
extern const QString MOD_WIDGET_STYLE;
extern const QString WIDGET_LBL_STYLE;
extern const QString WIDGET_COMM_STYLE;
extern const QString WIDGET_LBL_BOLD_STYLE;
extern const QString WIDGET_LBL_BRIGHT_STYLE;
extern const QString DYN_LABEL_STYLE;
extern const QString DYN_VALUE_STYLE;
extern const QString DYN_LABEL_STYLE2;
extern const QString DYN_VALUE_STYLE2;
extern const QString LINK_LOST_STYLE;

extern const QString WIDGET_GROUP_STYLE;
extern const QString WIDGET_GROUP_STYLE_HIDDEN_BORDER;
extern const QString WIDGET_GROUP_STYLE_MISC;

// The dynamic property "compact" of an entry or a unit box saves room at its sides, and in the entry's figures.
extern const QString WIDGET_COMBO_STYLE;
extern const QString WIDGET_COMBO_STYLE_BIG;
extern const QString WIDGET_COMBO_LIST_STYLE; ///< the list of a combo box, rows to be touched
extern const QString WIDGET_EDIT_STYLE;
extern const QString WIDGET_EDIT_STYLE_RED; ///< the entry shows a value that is out of range
extern const QString WIDGET_EDIT_STYLE_GRAY;
extern const QString WIDGET_EDIT_PENDING_STYLE; ///< entered, and not applied yet
extern const QString WIDGET_NO_EDIT_STYLE_GRAY; ///< a calculated value
extern const QString WIDGET_EDIT_LARGE_STYLE;
extern const QString WIDGET_EDIT_LARGE_STYLE_RED;

extern const QString WIDGET_CHKBOX_STYLE;
extern const QString WIDGET_CHECKBOX_BLUE_ICON;
extern const QString PROGRESS_BAR_STYLE;
extern const QString LIST_STYLE;
extern const QString LIST_SCROLL_STYLE;
extern const QString PATTERN_SCROLL_STYLE;
extern const QString LIST_STEPS_STYLE;
extern const QString MESSAGE_BOX_STYLE;

/// Prepares an application for the panel's look: the widget style that the sheets build on, and the families that stand
/// in for the fonts they name. Once, before the first widget.
void applyApplicationStyle(QApplication& application);

/// Gives the widget the sheet unless it has it already: setting a sheet polishes the widget's whole subtree again.
void applySheet(QWidget* widget, const QString& sheet);

} // namespace Kavor::HandheldGui
