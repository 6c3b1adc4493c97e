#pragma once

#include <QColor>
#include <QRectF>

class QPainter;

namespace Kavor::HandheldGui {

/// States as shapes, so that nobody needs their colours.
enum class Mark { Check, Cross, Clock, ShieldCheck, ShieldDash, ShieldCross };

/// Draws a mark that fills a square of that place.
void drawMark(QPainter& painter, Mark mark, const QRectF& place, const QColor& colour);

} // namespace Kavor::HandheldGui
