#include "tests/gui/paneltest.h"

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
    const QStringList problems = m_panel ? panel().dialogs().problems() : QStringList();
    m_panel.reset();
    if (!problems.isEmpty())
        QFAIL(qPrintable(problems.join(QStringLiteral("; "))));
}
