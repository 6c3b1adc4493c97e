#pragma once

#include "portable/widgets/lineicons.h"
#include "portable/widgets/styles/tokens.h"

#include <QRect>

class QPushButton;
class QWidget;

namespace Kavor::HandheldGui {

/// The column of buttons at the right of a page with a table, and the room that it leaves. Pixels; x from the window's
/// left, y from the top of the page.
namespace ActionColumn {

constexpr int X = 1024;
constexpr int Width = 232;
constexpr int Height = Style::ContentHeight;
constexpr int Places = 7;
constexpr int ButtonHeight = 68;
constexpr int MainWidth = 984; ///< of the group beside it

/// One of the places, 0 the uppermost.
QRect place(int index);

/// A button in one of the places, with a sign before its words.
QPushButton* addButton(QWidget* page, int index, LineIcon icon, const QString& text, const QString& name);

/// Lights the button (what it does is due) or not.
void setLit(QPushButton* button, LineIcon icon, bool lit);

} // namespace ActionColumn

} // namespace Kavor::HandheldGui
