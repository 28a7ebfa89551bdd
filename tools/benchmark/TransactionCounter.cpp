#include "TransactionCounter.h"

#include "FakeGvCamera.h"

#include <QElapsedTimer>

#include <arpa/inet.h>
#include <netinet/in.h>
#include <poll.h>
#include <sys/socket.h>
#include <unistd.h>

#include <cerrno>
#include <cstring>

namespace {

const quint16 kGvcpPort = 3956;
const int kAnswerTimeoutMs = 500;

}  // namespace

void TransactionCounter::Prepare(FakeGvCamera& camera)
{
    // Level 2 of the "device" domain logs one line per command handled,
    // without dumping the packets.
    camera.SetEnvironment(QStringLiteral("ARV_DEBUG"), QStringLiteral("device:2"));
}

TransactionCounter::TransactionCounter(const FakeGvCamera& camera) : m_Camera(camera) {}

long long TransactionCounter::Count() const
{
    return Log().Count();
}

long long TransactionCounter::Writes() const
{
    return Log().Writes();
}

TransactionLog TransactionCounter::Log() const
{
    // Discovery and packet-resend requests are not register transactions.
    return TransactionLog(m_Camera.Log());
}

int TransactionCounter::ReadDirectly(int count, QString& error)
{
    const int sock = ::socket(AF_INET, SOCK_DGRAM | SOCK_CLOEXEC, 0);
    if (sock < 0) {
        error = QStringLiteral("socket: %1").arg(QString::fromLocal8Bit(strerror(errno)));
        return 0;
    }
    struct sockaddr_in peer;
    std::memset(&peer, 0, sizeof(peer));
    peer.sin_family = AF_INET;
    peer.sin_port = htons(kGvcpPort);
    peer.sin_addr.s_addr = htonl(INADDR_LOOPBACK);

    int acknowledged = 0;
    for (int i = 0; i < count; ++i) {
        const quint16 id = static_cast<quint16>(0x7000 + i);
        // Key 0x42, acknowledge required, READREG_CMD (0x80), 4 bytes: the
        // bootstrap version register at address 0.
        const unsigned char command[12] = {0x42,
                                           0x01,
                                           0x00,
                                           0x80,
                                           0x00,
                                           0x04,
                                           static_cast<unsigned char>(id >> 8),
                                           static_cast<unsigned char>(id & 0xff),
                                           0,
                                           0,
                                           0,
                                           0};
        if (::sendto(sock, command, sizeof(command), 0, reinterpret_cast<const sockaddr*>(&peer), sizeof(peer)) < 0) {
            error = QStringLiteral("sendto: %1").arg(QString::fromLocal8Bit(strerror(errno)));
            break;
        }
        bool answered = false;
        QElapsedTimer elapsed;
        elapsed.start();
        while (!answered && elapsed.elapsed() < kAnswerTimeoutMs) {
            struct pollfd readable = {sock, POLLIN, 0};
            if (::poll(&readable, 1, kAnswerTimeoutMs - static_cast<int>(elapsed.elapsed())) <= 0)
                continue;
            unsigned char answer[64];
            const ssize_t size = ::recv(sock, answer, sizeof(answer), 0);
            // READREG_ACK (0x81) with our id.
            answered = size >= 12 && answer[2] == 0x00 && answer[3] == 0x81 && answer[6] == command[6] &&
                       answer[7] == command[7];
        }
        if (!answered) {
            error = QStringLiteral("no acknowledge for read %1 within %2 ms").arg(i).arg(kAnswerTimeoutMs);
            break;
        }
        ++acknowledged;
    }
    ::close(sock);
    return acknowledged;
}
