#include "rig/panelfixture.h"
#include "rig/tourguide.h"

#include <QTest>

void channelStops(TourGuide& g) {
    PanelFixture::Setup setup;
    setup.channels = 4;
    setup.disconnected = 0b0100;
    g.start(setup);
    g.panel().module().modify(1, [](ChannelRecord& record) {
        record.frequency.value = 2.4e9;
        record.power.value = -30;
        record.rfOutput = 1;
        record.amState = 1;
        record.pulseState = 1;
    });
    g.panel().module().modify(3, [](ChannelRecord& record) { record.frequency.value = 433.92e6; });
    g.press("funcChannel");
    g.shot("channels");
    g.press("channel2");
    g.shot("channels-second");
    g.press("funcCw");
    g.shot("channels-cw");
    g.press("funcChannel");
    g.press("channel3");
    g.shot("channels-no-module");
    g.press("channel1");
    g.panel().module().stop();
    if (!QTest::qWaitFor([&g] { return !g.panel().handler().isLinkUp(); }, 5000))
        qFatal("The lost link is not noticed.");
    g.shot("channels-link-lost");
}
