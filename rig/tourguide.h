#pragma once

#include "rig/panelfixture.h"
#include "rig/paneltour.h"

/// Leads the panel to a state and shows it to the visitor. A way that cannot be gone is a fault of the tour or of the
/// panel, and ends the program.
class Guide {
public:
    Guide(const PanelTour::Visit& visit, int& count) : m_visit(visit), m_count(count) {}

    /// A new panel in the place of the present one.
    void start(const PanelFixture::Setup& setup = PanelFixture::Setup());

    PanelFixture& panel() { return *m_panel; }

    void press(const QString& name);

    /// Changes the first channel's record and lets the panel look at it.
    void module(const std::function<void(ChannelRecord&)>& change);

    /// The screen as it is, with a dialog that stands above it.
    void shot(const QString& name, QWidget* above = nullptr);

    /// A button under the finger.
    void pressedShot(const QString& name);

    void visit(const PanelTour::Stop& stop);

    /// Opens a dialog by pressing, shows it and rejects it.
    void dialogShot(const QString& name, Kavor::HandheldGui::DialogKind kind, const std::function<void()>& open);

private:
    const PanelTour::Visit& m_visit;
    int& m_count;
    std::unique_ptr<PanelFixture> m_panel;
};

/// The stops of the updates: a stick with packages of each kind, what is asked about them, how their installation shows
/// and ends.
void updateStops(Guide& guide);
