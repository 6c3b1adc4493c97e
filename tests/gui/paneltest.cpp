#include "tests/gui/paneltest.h"

namespace {
constexpr int AgreedMs = 1300; // the longest that the screen may differ from the module
}

void PanelTest::start(const PanelFixture::Setup& setup) {
    m_panel.reset();
    m_panel = std::make_unique<PanelFixture>(setup);
}

QStringList PanelTest::sentAfter(const QString& widget) {
    panel().sent();
    return panel().press(widget) ? panel().sent() : QStringList{QStringLiteral("(could not press) ") + widget};
}

void PanelTest::fail(Sim::Fault::Kind kind, const QByteArray& header, int milliseconds) {
    Sim::Fault fault;
    fault.kind = kind;
    fault.header = header;
    fault.milliseconds = milliseconds;
    panel().module().addFault(fault);
}

void PanelTest::tearDown() {
    QStringList problems = m_panel ? panel().dialogs().problems() : QStringList();
    if (m_panel && !QTest::qWaitFor([this] { return panel().disagreements().isEmpty(); }, AgreedMs))
        problems << panel().disagreements();
    m_panel.reset();
    if (!problems.isEmpty())
        QFAIL(qPrintable(problems.join(QStringLiteral("; "))));
}
