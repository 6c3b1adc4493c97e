// Rate of the FPGA transfer against a QUdpSocket stop-and-wait written plainly, both to the same boards in one run. The
// boards are processes of their own with a bare socket, so that what is measured is the sender.

#include "bench/report.h"
#include "common/update/fwUpdater.h"

#include <QCoreApplication>
#include <QElapsedTimer>
#include <QUdpSocket>
#include <algorithm>
#include <arpa/inet.h>
#include <csignal>
#include <cstdio>
#include <sys/wait.h>
#include <unistd.h>
#include <vector>

namespace {

constexpr int ImageBytes = 8 * 1024 * 1024;
constexpr int Rounds = 7;

QHostAddress boardAddress(int board) {
    return QHostAddress(QStringLiteral("127.0.0.%1").arg(board + 2));
}

// Acknowledges whatever comes until the process that started it is gone.
[[noreturn]] void serveBoard(int socket) {
    char bytes[2048];
    sockaddr_in from{};
    for (;;) {
        socklen_t length = sizeof from;
        if (recvfrom(socket, bytes, sizeof bytes, 0, reinterpret_cast<sockaddr*>(&from), &length) < 0)
            _exit(1);
        sendto(socket, bytes, FpgaWire::HeaderSize, 0, reinterpret_cast<sockaddr*>(&from), length);
    }
}

pid_t startBoard(int board, quint16& port) {
    const int fd = socket(AF_INET, SOCK_DGRAM, 0);
    sockaddr_in address{};
    address.sin_family = AF_INET;
    address.sin_port = htons(port);
    address.sin_addr.s_addr = htonl(boardAddress(board).toIPv4Address());
    socklen_t length = sizeof address;
    if (bind(fd, reinterpret_cast<sockaddr*>(&address), length) != 0 ||
        getsockname(fd, reinterpret_cast<sockaddr*>(&address), &length) != 0)
        return -1;
    port = ntohs(address.sin_port);
    const pid_t child = fork();
    if (child == 0)
        serveBoard(fd);
    close(fd);
    return child;
}

double plainSeconds(const QByteArray& image, int boards, quint16 port) {
    QUdpSocket socket;
    socket.bind(QHostAddress(QHostAddress::AnyIPv4), 0);
    QElapsedTimer timer;
    timer.start();
    for (int block = 1; (block - 1) * 1024 < image.size(); ++block) {
        QByteArray datagram(22, '\0');
        datagram[4] = static_cast<char>(block >> 8);
        datagram[5] = static_cast<char>(block);
        datagram += image.mid((block - 1) * 1024, 1024);
        for (int board = 0; board < boards; ++board)
            socket.writeDatagram(datagram, boardAddress(board), port);
        int acks = 0;
        while (acks < boards && socket.waitForReadyRead(5000)) {
            while (socket.hasPendingDatagrams()) {
                QByteArray reply(static_cast<int>(socket.pendingDatagramSize()), '\0');
                QHostAddress from;
                socket.readDatagram(reply.data(), reply.size(), &from);
                acks += reply.size() >= 22 && reply.mid(4, 2) == datagram.mid(4, 2) ? 1 : 0;
            }
        }
        if (acks < boards)
            return -1;
    }
    return static_cast<double>(timer.nsecsElapsed()) * 1e-9;
}

double updaterSeconds(const QByteArray& image, int boards, quint16 port) {
    FpgaUpdater updater;
    QVector<QHostAddress> addresses;
    for (int board = 0; board < boards; ++board)
        addresses << boardAddress(board);
    updater.setImage(reinterpret_cast<const unsigned char*>(image.constData()), static_cast<quint32>(image.size()));
    updater.setTargets(addresses.constData(), boards, port);
    QElapsedTimer timer;
    timer.start();
    return updater.doTransfer(5000, 10) ? static_cast<double>(timer.nsecsElapsed()) * 1e-9 : -1;
}

bool measure(int boards, quint16 port, BenchReport& report) {
    const QByteArray image(ImageBytes, 'x');
    PairedTimes seconds; // rates are compared: the plain one's time stands above the line
    for (int round = 0; round < Rounds; ++round) {
        const double plain = plainSeconds(image, boards, port);
        const double ours = updaterSeconds(image, boards, port);
        if (plain < 0 || ours < 0)
            return false;
        seconds.add(plain, ours);
    }
    const double mebibytes = ImageBytes / 1048576.0;
    const std::string name = "fpga_transfer_" + std::to_string(boards) + "_boards";
    report.value(name, mebibytes / seconds.peer(), "MiB/s");
    report.value(name + "_plain", mebibytes / seconds.ours(), "MiB/s");
    report.ratio(name, seconds.ratio());
    return true;
}

} // namespace

int main(int argc, char** argv) {
    std::vector<pid_t> children;
    quint16 port = 0;
    for (int board = 0; board < 4; ++board)
        children.push_back(startBoard(board, port));
    bool ok = std::find(children.begin(), children.end(), -1) == children.end();
    QCoreApplication app(argc, argv);
    {
        BenchReport report;
        for (const int boards : {1, 2, 3, 4})
            ok = ok && measure(boards, port, report);
    }
    for (const pid_t child : children) {
        if (child > 0) {
            kill(child, SIGKILL);
            waitpid(child, nullptr, 0);
        }
    }
    return ok ? 0 : 1;
}
