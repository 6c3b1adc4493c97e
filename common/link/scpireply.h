#pragma once

#include <QByteArray>
#include <QIODevice>
#include <QString>
#include <string>

/// The bytes received so far for the request on the wire, and whether they amount to its answer yet. A query is
/// answered by one line, or by an IEEE 488.2 definite-length block; a write by an acknowledging or a refusing line.
/// Acknowledging and empty lines ahead of a query's answer belong to earlier requests and are skipped.
///
/// How the bytes were cut on their way makes no difference: every byte is copied once and looked at once. A block, of
/// megabytes perhaps, is read into the place in which takePayload() hands it over.
class ScpiReply {
public:
    static constexpr int MaximumSize = 0x1000000;

    enum class Progress { Waiting, Answered, Failed };

    /// Forgets everything: for the next request.
    void reset();

    /// Takes all that the device has.
    void append(QIODevice& device);
    void append(const QByteArray& bytes);

    /// Looks at what has come. When Failed, `error` says why. When Answered, takePayload() gives a query's answer.
    [[nodiscard]] Progress advance(bool isQuery, QString& error);

    /// A query's answer up to its first NUL, in UTF-8: what is none has become replacement characters.
    std::string takePayload();

private:
    enum LineClass { Acknowledged = 0, Refused = 1, Other = 2 };
    enum BlockState { BlockIncomplete = 0, BlockComplete = 1, NoBlock = 2 };

    void dropConsumed();
    int remaining() const { return m_bytes.size() - m_begin; }
    bool tryExtractLine(QByteArray& line);
    static LineClass classifyLine(const QByteArray& line);
    BlockState parseBlock(QString& error);
    BlockState blockState();
    void notePayload(std::size_t from);

    QByteArray m_bytes;
    int m_begin = 0;        ///< bytes before it are dealt with
    int m_scanned = 0;      ///< no line feed from m_begin up to here
    int m_blockLength = -1; ///< while a block comes in; its bytes are in m_payload, what follows it in m_bytes
    std::string m_payload;
    bool m_payloadIsPlain = true; ///< ASCII without a NUL as far as it has come: looked at while it is in the cache
};
