#pragma once

#include <QColor>
#include <QString>

/// The visual language of the panel as numbers: every style sheet and every painted widget takes its colours, sizes
/// and distances from here. Sizes are pixels of the 1280 x 800 screen, on a grid of eight.
namespace Kavor::HandheldGui::Style {

constexpr QRgb Black = 0xFF05080B; ///< status bar
constexpr QRgb Ground = 0xFF0D1218;
constexpr QRgb Panel = 0xFF151C24;
constexpr QRgb Field = 0xFF1E2731;
constexpr QRgb Raised = 0xFF2A3540;
constexpr QRgb RaisedDown = 0xFF3A4856; ///< a raised button under the finger
constexpr QRgb Edge = 0xFF6B7B8B;
constexpr QRgb FaintEdge = 0xFF4B5967;
constexpr QRgb PanelEdge = 0xFF232D37;
constexpr QRgb Text = 0xFFF3F6F9;
constexpr QRgb Label = 0xFFB9C4CF;
constexpr QRgb Disabled = 0xFF8492A0;
constexpr QRgb Stale = 0xFF97A3AF; ///< a readout of a module out of reach
constexpr QRgb Active = 0xFF35B8F1;
constexpr QRgb ActiveDown = 0xFF7FD3F8;
constexpr QRgb OnActive = 0xFF04202E;
constexpr QRgb RfOn = 0xFFFFB224;
constexpr QRgb RfOnDown = 0xFFFFCF70;
constexpr QRgb OnRfOn = 0xFF2B1B00;
constexpr QRgb Neutral = 0xFFDCE3EA; ///< the chosen half of a pair that is off
constexpr QRgb OnNeutral = 0xFF0D1218;
constexpr QRgb Progress = 0xFF14587B; ///< the part that is done: dark, its percentage is read on it
constexpr QRgb Wrong = 0xFFFF6B61;
constexpr QRgb WrongText = 0xFFFF8F87;
constexpr QRgb OnWrong = 0xFF2B0805;

constexpr int TextGroup = 24;  ///< header text, status bar, headings of tables
constexpr int TextLabel = 26;  ///< labels, buttons, captions of groups
constexpr int TextValue = 30;  ///< what an entry holds
constexpr int TextOutput = 30; ///< "On" of a radiating RF output
constexpr int TextFrequency = 54;
constexpr int TextEntry = 54; ///< the entry on a keyboard

constexpr int WindowWidth = 1280;
constexpr int WindowHeight = 800;
constexpr int HeaderRowHeight = 60;
constexpr int HeaderLabelHeight = 40;
constexpr int ControlRowHeight = 87;
constexpr int StatusBarHeight = 45;
constexpr int PageTop = HeaderRowHeight + HeaderLabelHeight;
constexpr int PageHeight = WindowHeight - PageTop - ControlRowHeight - StatusBarHeight;
constexpr int ContentHeight = 552; ///< of what stands on a page, from its top
constexpr int PageMargin = 24;
constexpr int ContentWidth = WindowWidth - 2 * PageMargin;
constexpr int EntryHeight = 72;
constexpr int ButtonHeight = 72;
constexpr int FrequencyHeight = 96;
constexpr int TableRowHeight = 72;
constexpr int Gap = 12;
constexpr int RowPitch = EntryHeight + Gap;
constexpr int CaptionHeight = 40; ///< of a group's caption, at its top
constexpr int Radius = 8;

/// The colour as a style sheet writes it.
QString css(QRgb colour);

} // namespace Kavor::HandheldGui::Style
