#pragma once

#include <QProcess>

/// Puts a gzip-compressed tar archive together member by member, so that a test can write what no honest tar would.
class TarFile {
public:
    enum Kind : char { Plain = '0', HardLink = '1', SymLink = '2', Folder = '5', Pipe = '6' };

    TarFile& add(const QByteArray& name, const QByteArray& content = {}, Kind kind = Plain,
                 const QByteArray& linkTarget = {}) {
        QByteArray header(512, '\0');
        const auto put = [&header](int at, const QByteArray& text) {
            header.replace(at, text.size(), text);
        };
        put(0, name.left(100));
        put(100, kind == Folder ? "0000755" : "0000644");
        put(124, QByteArray::number(content.size(), 8).rightJustified(11, '0'));
        put(148, "        ");
        header[156] = kind;
        put(157, linkTarget.left(100));
        put(257, QByteArray("ustar\00000", 8));
        unsigned sum = 0;
        for (const char c : qAsConst(header))
            sum += static_cast<unsigned char>(c);
        put(148, QByteArray::number(sum, 8).rightJustified(6, '0') + '\0');
        m_bytes += header + content + QByteArray((512 - content.size() % 512) % 512, '\0');
        return *this;
    }

    TarFile& link(const QByteArray& name, const QByteArray& target) { return add(name, {}, SymLink, target); }

    QByteArray gzip() const {
        QProcess program;
        program.start("gzip", {"-n"});
        program.write(m_bytes + QByteArray(1024, '\0'));
        program.closeWriteChannel();
        program.waitForFinished();
        return program.readAllStandardOutput();
    }

private:
    QByteArray m_bytes;
};
