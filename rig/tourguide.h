#pragma once

#include "rig/panelfixture.h"
#include "rig/paneltour.h"

#include <functional>
#include <memory>

/// Leads the panel to a state and shows it to the visitor of a tour. A way that cannot be gone is a fault of the tour
/// or of the panel, and ends the process. GUI thread.
class TourGuide {
public:
    TourGuide(const PanelTour::Visit& visit, int& count) : m_visit(visit), m_count(count) {}

    /// Another panel on a module of its own, at 1.5 GHz and -7.5 dBm with a battery of 78 %.
    void start(const PanelFixture::Setup& setup = PanelFixture::Setup());

    PanelFixture& panel() { return *m_panel; }

    void press(const QString& name);

    /// Changes the module's record and lets the panel look at it.
    void module(const std::function<void(ChannelRecord&)>& change);

    /// Shows the window, or a widget above it, with the message that stands there.
    void shot(const QString& name, QWidget* above = nullptr);

    /// Shows a button under the finger.
    void pressedShot(const QString& name);

    /// Opens a dialog by pressing, shows it and rejects it.
    void dialogShot(const QString& name, Kavor::HandheldGui::DialogKind kind, const std::function<void()>& open);

    void visit(const PanelTour::Stop& stop);

private:
    const PanelTour::Visit& m_visit;
    int& m_count;
    std::unique_ptr<PanelFixture> m_panel;
};

// The tour's parts that stand in files of their own.

/// The table page with some steps, the edit of a cell, the refusals, and the file browser of one of the list screens.
void stepListStops(TourGuide& g, const QString& prefix, const QStringList& way);

/// A stick with packages of each kind, what is asked about them, and how their installation shows and ends.
void updateStops(TourGuide& g);

/// The overview of four channels, one of them without a module, and the header row with them.
void channelStops(TourGuide& g);

/// The licences, and diagnostics to a stick.
void aboutStops(TourGuide& g);

/// One frame of the animation that covers the start.
void splashStop(TourGuide& g);
