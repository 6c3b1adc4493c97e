#include "tests/support/testbase.h"

#include <QMutex>
#include <QMutexLocker>
#include <QStringList>
#include <vector>

namespace {

struct Watch {
    QMutex mutex;
    std::vector<QRegularExpression> expected;
    std::vector<QRegularExpression> allowed;
    QStringList unexpected;
    QtMessageHandler next = nullptr;
};

Watch& watch() {
    static Watch instance;
    return instance;
}

// Called from any thread that logs.
void watchMessage(QtMsgType type, const QMessageLogContext& context, const QString& text) {
    Watch& w = watch();
    // The offscreen platform says of itself what it cannot do; that is no fault of the panel.
    if (type == QtDebugMsg || type == QtInfoMsg || text.startsWith(QLatin1String("This plugin does not support")))
        return;
    {
        QMutexLocker lock(&w.mutex);
        for (auto it = w.expected.begin(); it != w.expected.end(); ++it) {
            if (it->match(text).hasMatch()) {
                w.expected.erase(it);
                return;
            }
        }
        for (const QRegularExpression& pattern : w.allowed) {
            if (pattern.match(text).hasMatch())
                return;
        }
        w.unexpected << text;
    }
    if (w.next)
        w.next(type, context, text);
}

} // namespace

void TestBase::expectMessage(const QString& pattern) {
    QMutexLocker lock(&watch().mutex);
    watch().expected.emplace_back(pattern);
}

void TestBase::allowMessages(const QString& pattern) {
    QMutexLocker lock(&watch().mutex);
    watch().allowed.emplace_back(pattern);
}

void TestBase::init() {
    {
        QMutexLocker lock(&watch().mutex);
        watch().expected.clear();
        watch().allowed.clear();
        watch().unexpected.clear();
    }
    watch().next = qInstallMessageHandler(watchMessage);
    setUp();
}

void TestBase::cleanup() {
    tearDown();
    qInstallMessageHandler(watch().next);
    QMutexLocker lock(&watch().mutex);
    QStringList missing;
    for (const QRegularExpression& pattern : watch().expected)
        missing << pattern.pattern();
    if (!watch().unexpected.isEmpty())
        QFAIL(qPrintable("Unexpected messages: " + watch().unexpected.join(" | ")));
    if (!missing.isEmpty() && !QTest::currentTestFailed())
        QFAIL(qPrintable("Expected messages that did not come: " + missing.join(" | ")));
}

int runTest(QObject& test, int argc, char** argv) {
    return QTest::qExec(&test, argc, argv);
}
