#include "sim/module_simulator.h"
#include "tests/support/testbase.h"
#include "tests/support/tool_run.h"

/// The last resort: it must work beside whatever else is broken.
class RfOffTest : public TestBase {
    Q_OBJECT

private slots:
    void everyChannel_data() {
        addColumns<unsigned, QByteArray, int>("channels", "refused", "stillOn");
        addRow("one channel", 1U, QByteArray(), 0);
        addRow("four channels", 4U, QByteArray(), 0);
        addRow("one channel cannot be selected", 4U, QByteArray("INST:SEL 2"), 1);
        addRow("the module refuses", 2U, QByteArray("OUTP"), 2);
    }

    void everyChannel() {
        QFETCH(unsigned, channels);
        QFETCH(QByteArray, refused);
        QFETCH(int, stillOn);
        Sim::Options options;
        options.channels = channels;
        options.regionName = "/rf_off_" + std::to_string(QCoreApplication::applicationPid());
        Sim::ModuleSimulator module(options);
        QVERIFY(module.start());
        for (unsigned channel = 0; channel < channels; ++channel)
            module.modify(channel, [](ChannelRecord& record) { record.rfOutput = 1; });
        if (!refused.isEmpty())
            module.addFault({Sim::Fault::Refuse, refused, -1, 0, QByteArray()});
        qputenv("VELDA_REGION", QByteArray::fromStdString(options.regionName));
        const ToolRun run = runTool("velda-rf-off", {});
        int on = 0;
        for (unsigned channel = 0; channel < channels; ++channel)
            on += module.record(channel).rfOutput == 1 ? 1 : 0;
        QCOMPARE(on, stillOn);
        QCOMPARE(run.code, refused.isEmpty() ? 0 : 1);
        QCOMPARE(run.output.count(" off\n"), refused.isEmpty() ? int(channels) : refused == "OUTP" ? 0 : 3);
    }

    void withoutAModule() {
        qputenv("VELDA_REGION", "/rf_off_none");
        const ToolRun run = runTool("velda-rf-off", {});
        QCOMPARE(run.code, 1);
        QVERIFY(run.error.contains("no module"));
    }
};

VELDA_TEST_MAIN(QCoreApplication, RfOffTest)
#include "tst_rf_off.moc"
