#include "common/link/reply_text.h"
#include "common/link/scpireply.h"
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
        row("write: other lines skipped", write, "\r\n1.5\r\n+OKAY\r\n+OK\r\n", Progress::Answered);
        row("write: refused", write, "-ERR 12, out of range \r\n", Progress::Failed, {}, "-ERR 12, out of range");

        row("query: after an acknowledgement and empty lines", query, "+OK\r\n\r\n \r\n1\r\n", Progress::Answered, "1");

        row("block", query, "#15hello\n", Progress::Answered, "hello");
        row("block: one byte short", query, "#15hell", Progress::Waiting);
        row("block: line ends and refusals inside", query, "#210-ERR\r\n+OK\n", Progress::Answered, "-ERR\r\n+OK\n");
        row("block: up to the first NUL", query, QByteArray("#15he\0lo\n", 9), Progress::Answered, "he");
        row("block: not Latin", query, "#14\xC2\xB5s!\n", Progress::Answered, "\xC2\xB5s!");
        row("block: no UTF-8", query, "#13a\xFFz\n", Progress::Answered, "a\xEF\xBF\xBDz");
        row("block: zero digits is a line", query, "#0abc\r\n", Progress::Answered, "#0abc");
        row("block: no digit count", query, "#x\r\n", Progress::Failed, {}, "invalid-block-format(nd)");
        row("block: longest and one", query, "#816777217", Progress::Failed, {}, "block-len-out-of-range");
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

    void sizeLimits() {
        const int most = ScpiReply::MaximumSize;
        for (const auto& [bytes, expected] : {std::pair(QByteArray(most, 'x'), Progress::Waiting),
                                              {QByteArray(most - 1, 'x') + '\n', Progress::Answered},
                                              {QByteArray(most + 1, 'x'), Progress::Failed},
                                              {QByteArray(most, 'x') + '\n', Progress::Failed},
                                              {"#816777216" + QByteArray(most, 'x'), Progress::Answered}}) {
            for (int chunk : {0x10000, 0x2000000}) {
                ScpiReply reply;
                QString failure;
                Progress reached = Progress::Waiting;
                for (int at = 0; at < bytes.size() && reached == Progress::Waiting; at += chunk) {
                    reply.append(bytes.mid(at, chunk));
                    reached = reply.advance(true, failure);
                }
                QCOMPARE(reached, expected);
                QCOMPARE(failure, expected == Progress::Failed ? QString("reply-too-large") : QString());
            }
        }
    }

    void cleaning() {
        for (const auto& [text, cleaned] : {std::pair(" \t1 0.5 \r\n", "1 0.5"), {"1;2\n", "1"}, {" ;2", ""}}) {
            QCOMPARE(cleanResponse(text), std::string(cleaned));
            QCOMPARE(cleanedReply(text), std::string(cleaned));
        }
    }
};

VELDA_TEST_MAIN(QCoreApplication, TestScpiReply)
#include "tst_scpireply.moc"
