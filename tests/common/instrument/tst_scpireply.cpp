#include "common/instrument/reply_text.h"
#include "common/instrument/scpireply.h"
#include "tests/support/testbase.h"

using Progress = ScpiReply::Progress;
Q_DECLARE_METATYPE(ScpiReply::Progress)

class TestScpiReply : public TestBase {
    Q_OBJECT

private slots:
    void answers_data() {
        QTest::addColumn<bool>("isQuery");
        QTest::addColumn<QByteArray>("bytes");
        QTest::addColumn<Progress>("progress");
        QTest::addColumn<QByteArray>("payload");
        QTest::addColumn<QString>("error");

        const auto row = [](const char* name, bool isQuery, const QByteArray& bytes, Progress progress,
                            const QByteArray& payload = {}, const QString& error = {}) {
            addRow(name, isQuery, bytes, progress, payload, error);
        };
        constexpr bool write = false;
        constexpr bool query = true;

        row("write: acknowledged", write, "+OK\r\n", Progress::Answered);
        row("write: blanks around, line feed alone", write, " +OK \n", Progress::Answered);
        row("write: not ended", write, "+OK", Progress::Waiting);
        row("write: other lines skipped", write, "\r\n1.5\r\n+OKAY\r\n+OK\r\n", Progress::Answered);
        row("write: no block", write, "#0\r\n#15hello\n", Progress::Waiting);
        row("write: refused", write, "-ERR 12, out of range \r\n", Progress::Failed, {}, "-ERR 12, out of range");

        row("query: line", query, "1.5\r\n", Progress::Answered, "1.5");
        row("query: after an acknowledgement and empty lines", query, "+OK\r\n\r\n \r\n1\r\n", Progress::Answered, "1");
        row("query: only an acknowledgement", query, "+OK\r\n", Progress::Waiting);
        row("query: line not ended", query, "1.5\r", Progress::Waiting);
        row("query: refused", query, "-ERR no\r\n", Progress::Failed, {}, "-ERR no");
        row("query: up to the first NUL", query, QByteArray("1\0002\n", 4), Progress::Answered, "1");

        row("block", query, "#15hello\n", Progress::Answered, "hello");
        row("block: without line feed", query, "#15hello", Progress::Answered, "hello");
        row("block: one byte short", query, "#15hell", Progress::Waiting);
        row("block: empty", query, "#10", Progress::Answered, "");
        row("block: nine digits", query, "#9000000005hello", Progress::Answered, "hello");
        row("block: line ends and refusals inside", query, "#210-ERR\r\n+OK\n", Progress::Answered, "-ERR\r\n+OK\n");
        row("block: after an acknowledgement", query, "+OK\r\n#15hello\n", Progress::Answered, "hello");
        row("block: up to the first NUL", query, QByteArray("#15he\0lo\n", 9), Progress::Answered, "he");
        row("block: not Latin", query, "#14\xC2\xB5s!\n", Progress::Answered, "\xC2\xB5s!");
        row("block: no UTF-8", query, "#13a\xFFz\n", Progress::Answered, "a\xEF\xBF\xBDz");
        const QByteArray longText(200, 'x');
        for (const int at : {0, 64, 127, 199}) { // wherever it stands in a long one
            row(qPrintable(QString("block: NUL at %1").arg(at)), query,
                "#3200" + QByteArray(longText).replace(at, 1, "\0", 1), Progress::Answered, longText.left(at));
            row(qPrintable(QString("block: no ASCII at %1").arg(at)), query,
                "#3200" + QByteArray(longText).replace(at, 1, "\x80", 1), Progress::Answered,
                QByteArray(longText).replace(at, 1, "\xEF\xBF\xBD", 3));
        }
        row("block: zero digits is a line", query, "#0abc\r\n", Progress::Answered, "#0abc");
        row("block: no digit count", query, "#x\r\n", Progress::Failed, {}, "invalid-block-format(nd)");
        row("block: letter among the digits", query, "#2a", Progress::Failed, {}, "invalid-block-format(len-digit)");
        row("block: last digit no digit", query, "#21-", Progress::Failed, {}, "invalid-block-format(len-digit)");
        row("block: longest and one", query, "#816777217", Progress::Failed, {}, "block-len-out-of-range");
        row("block: longest", query, "#816777216", Progress::Waiting);
        row("block: header alone", query, "#2", Progress::Waiting);
    }

    // The stream is cut in every way that matters: the outcome must be the same.
    void answers() {
        QFETCH(bool, isQuery);
        QFETCH(QByteArray, bytes);
        QFETCH(QByteArray, payload);
        QFETCH(QString, error);
        for (int chunk : {1, 2, 3, 7, 1000}) {
            ScpiReply reply;
            Progress progress = Progress::Waiting;
            QString failure;
            for (int at = 0; at < bytes.size() && progress == Progress::Waiting; at += chunk) {
                reply.append(bytes.mid(at, chunk));
                progress = reply.advance(isQuery, failure);
            }
            QTEST(progress, "progress");
            QCOMPARE(failure, error);
            if (isQuery && progress == Progress::Answered)
                QCOMPARE(QByteArray::fromStdString(reply.takePayload()), payload);
        }
    }

    void sizeLimits_data() {
        QTest::addColumn<QByteArray>("head");
        QTest::addColumn<int>("filling");
        QTest::addColumn<QByteArray>("tail");
        QTest::addColumn<Progress>("progress");

        const int most = ScpiReply::kMaximumSize;
        addRow("longest line yet", QByteArray(), most, QByteArray(), Progress::Waiting);
        addRow("longest line", QByteArray(), most - 1, QByteArray("\n"), Progress::Answered);
        addRow("endless line", QByteArray(), most + 1, QByteArray(), Progress::Failed);
        addRow("too long a line, ended", QByteArray(), most, QByteArray("\n"), Progress::Failed);
        addRow("longest block", QByteArray("#816777216"), most, QByteArray("\n"), Progress::Answered);
    }

    void sizeLimits() {
        QFETCH(QByteArray, head);
        QFETCH(int, filling);
        QFETCH(QByteArray, tail);
        QFETCH(Progress, progress);
        const QByteArray bytes = head + QByteArray(filling, 'x') + tail;
        for (int chunk : {0x10000, 0x2000000}) {
            ScpiReply reply;
            Progress reached = Progress::Waiting;
            QString failure;
            for (int at = 0; at < bytes.size() && reached == Progress::Waiting; at += chunk) {
                reply.append(bytes.mid(at, chunk));
                reached = reply.advance(true, failure);
            }
            QCOMPARE(reached, progress);
            QCOMPARE(failure, progress == Progress::Failed ? QString("reply-too-large") : QString());
            if (progress == Progress::Answered)
                QCOMPARE(reply.takePayload().size(), static_cast<std::size_t>(filling));
        }
    }

    // Taking lines off the front one by one would move the rest of the buffer four million times.
    void endlessAcknowledgementsStayCheap() {
        ScpiReply reply;
        QString failure;
        reply.append(QByteArray("+OK\n").repeated(4000000));
        QElapsedTimer took;
        took.start();
        QCOMPARE(reply.advance(true, failure), Progress::Waiting);
        QVERIFY2(took.elapsed() < 10000, qPrintable(QString::number(took.elapsed())));
    }

    void cleaning_data() {
        // clang-format off
        QTest::addColumn<QString>("text");
        QTest::addColumn<QString>("cleaned");
        addRow("blanks and line ends", " \t1 0.5 \r\n", "1 0.5");
        addRow("only blanks", " \t\r\n", "");
        addRow("first of two", "1;2\n", "1");
        addRow("blank before the semicolon stays", "1 ;2", "1 ");
        addRow("starts with a semicolon", " ;2", "");
        addRow("vertical tab is no blank", "\v1", "\v1");
        // clang-format on
    }

    void cleaning() {
        QFETCH(QString, text);
        QTEST(QString::fromStdString(cleanResponse(text.toStdString())), "cleaned");
        QTEST(QString::fromStdString(cleanedReply(text.toStdString())), "cleaned");
    }
};

VELDA_TEST_MAIN(QCoreApplication, TestScpiReply)
#include "tst_scpireply.moc"
