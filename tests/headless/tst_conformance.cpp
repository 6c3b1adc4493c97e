#include "headless/conformance.h"
#include "sim/module_simulator.h"
#include "tests/support/testbase.h"
#include "tests/support/tool_run.h"

#include <QCoreApplication>
#include <algorithm>
#include <cstring>
#include <sys/mman.h>

class ConformanceTest : public TestBase {
    Q_OBJECT

private:
    static Sim::Options options(unsigned channels = 1) {
        Sim::Options options;
        options.channels = channels;
        options.regionName = "/conformance_" + std::to_string(QCoreApplication::applicationPid());
        return options;
    }

    static QByteArray findings(const std::string& region, int timeoutMs = 250, int slowMs = 100) {
        Conformance::Settings settings;
        settings.regionName = region;
        settings.timeoutMs = timeoutMs;
        settings.slowMs = slowMs;
        settings.radiates = settings.restarts = true;
        QByteArray all;
        for (const Conformance::Row& row : Conformance(settings).run()) {
            if (!row.skipped && !row.findings.isEmpty())
                all += row.what + ": " + row.findings.join("; ") + '\n';
        }
        return all;
    }

private slots:
    /// Nothing is wrong with the simulator, and all that was changed is as it was.
    void simulatorPasses() {
        Sim::ModuleSimulator module(options(2));
        QVERIFY(module.start());
        const ChannelRecord before = module.record(1);
        QCOMPARE(findings(module.regionName(), 10000, 5000), QByteArray());
        const ChannelRecord after = module.record(1);
        QCOMPARE(QByteArray(reinterpret_cast<const char*>(&after), sizeof after),
                 QByteArray(reinterpret_cast<const char*>(&before), sizeof before));
        QCOMPARE(module.data().selected, std::size_t{0});
        QVERIFY(module.received().contains(":SYST:SET:STOR 99999")); // the name as the panel sends it
    }

    /// What must not be sent when something has gone wrong before.
    void leavesAlone_data() {
        addColumns<QByteArray, QByteArray>("fault", "command");
        addRow("more power than the lowest", QByteArray("KEEP,FOR=PRSW:STOP"), QByteArray(":OUTP ON"));
        addRow("a list of another's", QByteArray("REF,FOR=LIST:DATA,TEXT=no"), QByteArray(":LIST:STAT ON"));
        addRow("reset, not stored", QByteArray("REF,FOR=SYST:SET:STOR,TEXT=no"), QByteArray("*RST"));
        addRow("erased, not recalled", QByteArray("REF,FOR=SYST:SET:REC,TEXT=no"), QByteArray(":SYST:SET:CLE"));
        addRow("another channel", QByteArray("REF,FOR=INST:SEL,TEXT=no,COUN=1"), QByteArray(":PHAS 360.000"));
        addRow("while it radiates", QByteArray("KEEP,FOR=OUTP"), QByteArray(":PHAS 360.000"));
        addRow("without a record", QByteArray(), QByteArray(":SYST:COMM:LAN:IPAD"));
        addRow("after Ctrl-C", QByteArray(), QByteArray(":PM:STAT ON"));
    }

    void leavesAlone() {
        QFETCH(QByteArray, fault);
        QFETCH(QByteArray, command);
        const QByteArray tag = QTest::currentDataTag();
        Sim::ModuleSimulator module(options(tag == "another channel" ? 2 : 1));
        QVERIFY(module.start());
        module.modify(0, [&](ChannelRecord& r) { r.rfOutput = tag == "while it radiates"; });
        const ChannelRecord before = module.record(0);
        ServiceProbe control(module.port(), 1000, 0);
        QVERIFY(control.connectAnew());
        if (!fault.isEmpty())
            QCOMPARE(control.ask(":SIM:FAUL " + fault + "\r\n").line, QByteArray("+OK"));
        Conformance::Settings settings;
        settings.regionName = module.regionName();
        settings.radiates = settings.restarts = true;
        settings.quietMs = 0;
        int rf = 0;
        Conformance* running = nullptr;
        Conformance conformance(settings, [&](const Conformance::Row& row) {
            if (tag == "without a record" && row.what == ":FREQ")
                shm_unlink(module.regionName().c_str());
            if (tag == "after Ctrl-C" && row.what == ":AM:STAT on")
                running->stop();
            rf += row.what == "RF on" ? 1 : 0;
        });
        running = &conformance;
        conformance.run();
        const QByteArrayList received = module.received();
        const auto sent = std::count_if(received.begin(), received.end(),
                                        [&](const QByteArray& line) { return line.startsWith(command); });
        QCOMPARE(int(sent), tag == "another channel" ? 1 : 0);
        const ChannelRecord after = module.record(0);
        if (tag == "after Ctrl-C")
            QVERIFY(rf == 1 && std::memcmp(&before, &after, sizeof after) == 0);
    }

    void findsEachFault_data() {
        addColumns<QByteArray, QByteArray>("command", "finding");
        addRow("silent", QByteArray("FAUL SIL,FOR=POW,COUN=1"), QByteArray("no answer in 250 ms"));
        addRow("mute", QByteArray("FAUL SIL"), QByteArray("given up"));
        addRow("lost", QByteArray("FAUL LOST,FOR=POW,COUN=1"), QByteArray("no answer in 250 ms"));
        addRow("late", QByteArray("FAUL LATE,FOR=POW,MS=150,COUN=1"), QByteArray(":POW -60.0000: answered after 1"));
        addRow("refused", QByteArray("FAUL REF,FOR=PHAS,TEXT=\"no\""), QByteArray("refused, -ERR no"));
        addRow("other answer", QByteArray("FAUL ANSW,FOR=POW,TEXT=\"OK\""), QByteArray("the answer is \"OK\""));
        addRow("in pieces", QByteArray("FAUL SPL,FOR=POW,MS=30,COUN=1"), QByteArray("answered after"));
        addRow("with the next", QByteArray("FAUL MERG,FOR=POW,COUN=1"), QByteArray("no answer in 250 ms"));
        addRow("twice", QByteArray("FAUL DOUB,FOR=AM"), QByteArray("more than one answer"));
        addRow("no line end", QByteArray("FAUL NOE,FOR=POW,COUN=1"), QByteArray("but a line without an end"));
        addRow("closed", QByteArray("FAUL DROP,FOR=POW,COUN=1"), QByteArray("the connection was closed"));
        addRow("kept", QByteArray("FAUL KEEP,FOR=FREQ"), QByteArray("the record shows 1000000000 for"));
        addRow("other value", QByteArray("FAUL OTH,FOR=FREQ,TEXT=\"2e9\""),
               QByteArray("the record shows 2000000000 for"));
        addRow("stale", QByteArray("FAUL STAL,FOR=POW,COUN=1"), QByteArray("the record shows"));
        addRow("gone", QByteArray("FAUL GONE,FOR=POW,MS=60000,COUN=1"), QByteArray("nothing listens any more"));
        addRow("frozen", QByteArray("FRE ON"), QByteArray("the record shows"));
        addRow("not connected", QByteArray("CONN 0,OFF"), QByteArray("the module is not connected"));
    }

    void findsEachFault() {
        QFETCH(QByteArray, command);
        QFETCH(QByteArray, finding);
        Sim::ModuleSimulator module(options());
        QVERIFY(module.start());
        ServiceProbe control(module.port(), 1000, 0);
        QVERIFY(control.connectAnew());
        QCOMPARE(control.ask(":SIM:" + command + "\r\n").line, QByteArray("+OK"));
        const QByteArray found = findings(module.regionName());
        QVERIFY2(found.contains(finding), found.constData());
    }

    /// What is wrong with the record itself.
    void looksAtTheRecord() {
        Sim::ModuleSimulator module(options());
        QVERIFY(module.start());
        module.modify(0, [](ChannelRecord& r) {
            std::fill(std::begin(r.model), std::end(r.model), 'x');
            std::swap(r.amRate.minimum, r.amRate.maximum);
            r.amDepth.value = 101;
            qstrncpy(r.triggerEdge, "UP", sizeof r.triggerEdge);
        });
        const QByteArray found = findings(module.regionName());
        for (const char* finding : {"a text at offset 1168 has no end", ":AM:INT:FREQ at offset 608: its minimum",
                                    ":AM:DEPT at offset 624: 101 is outside", "\"UP\", which is none of"})
            QVERIFY2(found.contains(finding), found.constData());
    }

    void program() {
        const ToolRun none = runTool("velda-conformance", {"--region", "/conformance_none"});
        QVERIFY(none.code == 1 && none.output.contains("is not there"));
        QCOMPARE(runTool("velda-conformance", {"--slow", "x"}).code, 2);
        Sim::ModuleSimulator module(options());
        QVERIFY(module.start());
        const ToolRun run =
            runTool("velda-conformance", {"--region", QString::fromStdString(module.regionName()), "--slow", "5000"});
        QVERIFY2(run.code == 0 && run.output.contains("Nothing is wrong."), qPrintable(run.output));
        const QByteArrayList received = module.received();
        QVERIFY(received.contains(":OUTP OFF") && !received.contains(":OUTP ON"));
    }
};

VELDA_TEST_MAIN(QCoreApplication, ConformanceTest)
#include "tst_conformance.moc"
