#pragma once

#include "rig/panelfixture.h"
#include "tests/support/testbase.h"

/// A test class whose functions each get a panel of their own, on a simulated module of its own. A dialog that was not
/// scripted fails the function, and so does a screen that shows something else than the module holds at its end.
class PanelTest : public TestBase {
    Q_OBJECT

protected:
    PanelFixture& panel() { return *m_panel; }

    /// A new panel in the place of the present one.
    void start(const PanelFixture::Setup& setup = PanelFixture::Setup());

    /// What the module received because of pressing a widget.
    QStringList sentAfter(const QString& widget);

    /// Lets requests that begin with the header go wrong.
    void fail(Sim::Fault::Kind kind, const QByteArray& header = QByteArray(), int milliseconds = 0);

    void setUp() override { start(); }
    void tearDown() override;

private:
    std::unique_ptr<PanelFixture> m_panel;
};
