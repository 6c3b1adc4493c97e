#pragma once

#include <QObject>
#include <QRegularExpression>
#include <QTest>

/// Base of every test class: a message of warning level or above that the running test function does not expect fails
/// it. Derive, put Q_OBJECT in, list the test functions as private slots and end the file with VELDA_TEST_MAIN.
class TestBase : public QObject {
    Q_OBJECT

public:
    TestBase() = default;

protected:
    /// Expects one message of warning level or above that matches, in this test function; it fails when none comes.
    void expectMessage(const QString& pattern);

    /// Allows any number of matching messages, none included, where their count depends on timing.
    void allowMessages(const QString& pattern);

    /// Columns of the running function's table.
    template <typename... Types, typename... Names>
    static void addColumns(Names... names) {
        (QTest::addColumn<Types>(names), ...);
    }

    /// A row of the running function's table; the values stand in the order of its columns, texts as QString.
    template <typename... Values>
    static void addRow(const char* tag, const Values&... values) {
        (QTest::newRow(tag) << ... << values);
    }

protected slots:
    void init();
    void cleanup();

protected:
    virtual void setUp() {}
    virtual void tearDown() {}
};

int runTest(QObject& test, int argc, char** argv);

#define VELDA_TEST_MAIN(Application, Class)                                                                            \
    int main(int argc, char** argv) {                                                                                  \
        Application app(argc, argv);                                                                                   \
        Class test;                                                                                                    \
        return runTest(test, argc, argv);                                                                              \
    }
