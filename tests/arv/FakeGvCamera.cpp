#include "FakeGvCamera.h"

#include <QByteArray>
#include <QDir>
#include <QElapsedTimer>
#include <QFile>
#include <QFileInfo>
#include <QProcessEnvironment>
#include <QStandardPaths>
#include <QtGlobal>

#include <arpa/inet.h>
#include <fcntl.h>
#include <netinet/in.h>
#include <poll.h>
#include <signal.h>
#include <sys/file.h>
#include <sys/prctl.h>
#include <sys/socket.h>
#include <sys/wait.h>
#include <unistd.h>

#include <atomic>
#include <cerrno>
#include <cstring>
#include <string>
#include <vector>

namespace {

const char kBinary[] = "arv-fake-gv-camera-0.8";
const quint16 kGvcpPort = 3956;
// Discovery acknowledge: 8 bytes header, then the first 0xf8 bytes of the
// bootstrap registers; the serial number sits at 0xd8 (16 bytes).
const int kAckHeaderSize = 8;
const int kSerialOffset = 0xd8;
const int kSerialSize = 16;
const int kDiscoveryPayloadSize = 0xf8;

std::atomic<bool> g_LockHeldInProcess{false};
std::atomic<int> g_SerialCounter{0};

class FileDescriptor {
public:
    explicit FileDescriptor(int fd) : m_Fd(fd) {}
    ~FileDescriptor()
    {
        if (m_Fd >= 0)
            ::close(m_Fd);
    }
    FileDescriptor(const FileDescriptor&) = delete;
    FileDescriptor& operator=(const FileDescriptor&) = delete;
    int Get() const { return m_Fd; }

private:
    int m_Fd;
};

void SleepMs(int ms)
{
    struct timespec pause = {ms / 1000, (ms % 1000) * 1000000L};
    while (::nanosleep(&pause, &pause) != 0 && errno == EINTR) {
    }
}

}  // namespace

const char* const FakeGvCamera::Gen1Line = "gen1-line.xml";
const char* const FakeGvCamera::Gen1Sfnc = "gen1-sfnc.xml";
const char* const FakeGvCamera::Gen2SyncOut = "gen2-syncout.xml";
const char* const FakeGvCamera::Gen3LineOut = "gen3-lineout.xml";

bool FakeGvCamera::BinaryAvailable()
{
    return !QStandardPaths::findExecutable(QString::fromLatin1(kBinary)).isEmpty();
}

QString FakeGvCamera::GenicamFile(const QString& fileName)
{
    QString dir = qEnvironmentVariable("PKO_GENICAM_DIR");
#ifdef PKO_GENICAM_DIR
    if (dir.isEmpty())
        dir = QString::fromUtf8(PKO_GENICAM_DIR);
#endif
    if (dir.isEmpty())
        dir = QFileInfo(QString::fromUtf8(__FILE__)).absolutePath() + QStringLiteral("/../../PelkoSDK/genicam");
    return QDir::cleanPath(QDir(dir).absoluteFilePath(fileName));
}

QString FakeGvCamera::LockFilePath()
{
    return QStringLiteral("/tmp/pko-fake-gv-127.0.0.1.lock");
}

FakeGvCamera::FakeGvCamera(const QString& xmlFile, const QString& tag) : m_XmlFile(xmlFile)
{
    // The bootstrap register holds 16 bytes with the terminating zero.
    m_Serial = QStringLiteral("%1-%2-%3")
                   .arg(tag.left(4))
                   .arg(static_cast<qint64>(::getpid()))
                   .arg(g_SerialCounter.fetch_add(1) % 100);
    m_LogPath = QDir::tempPath() + QStringLiteral("/pko-fakegv-") + m_Serial + QStringLiteral(".log");
}

FakeGvCamera::~FakeGvCamera()
{
    Kill();
    QFile::remove(m_LogPath);
}

bool FakeGvCamera::Fail(const QString& reason)
{
    m_Error = reason;
    Kill();
    return false;
}

void FakeGvCamera::ReleaseLock()
{
    if (m_LockFd < 0)
        return;
    ::flock(m_LockFd, LOCK_UN);
    ::close(m_LockFd);
    m_LockFd = -1;
    g_LockHeldInProcess = false;
}

bool FakeGvCamera::Start(int answerTimeoutMs, int lockTimeoutMs)
{
    if (m_Pid > 0 && IsRunning())
        return true;
    m_Error.clear();
    if (!BinaryAvailable())
        return Fail(QStringLiteral("%1 not found on PATH").arg(QString::fromLatin1(kBinary)));
    if (!m_XmlFile.isEmpty() && !QFileInfo::exists(m_XmlFile))
        return Fail(QStringLiteral("description %1 does not exist").arg(m_XmlFile));

    bool expected = false;
    if (!g_LockHeldInProcess.compare_exchange_strong(expected, true))
        return Fail(QStringLiteral("this process already runs a fake camera on 127.0.0.1; one at a time"));
    m_LockFd = ::open(LockFilePath().toLocal8Bit().constData(), O_RDWR | O_CREAT | O_CLOEXEC, 0666);
    if (m_LockFd < 0) {
        g_LockHeldInProcess = false;
        return Fail(QStringLiteral("cannot open %1: %2").arg(LockFilePath(), QString::fromLocal8Bit(strerror(errno))));
    }
    QElapsedTimer waited;
    waited.start();
    while (::flock(m_LockFd, LOCK_EX | LOCK_NB) != 0) {
        if (waited.elapsed() > lockTimeoutMs)
            return Fail(QStringLiteral("another fake camera held %1 for more than %2 ms")
                            .arg(LockFilePath())
                            .arg(lockTimeoutMs));
        SleepMs(50);
    }
    // A camera started by hand (not through the lock) would take our place
    // on the port silently.
    const QString stranger = DiscoverSerial(200);
    if (!stranger.isEmpty())
        return Fail(QStringLiteral("a GigE Vision device with serial \"%1\" already answers on 127.0.0.1:3956 "
                                   "(tools/fake-cameras.sh stop)")
                        .arg(stranger));

    std::vector<std::string> args{kBinary, "-i", "127.0.0.1", "-s", m_Serial.toStdString()};
    if (!m_XmlFile.isEmpty()) {
        args.push_back("-g");
        args.push_back(QFile::encodeName(m_XmlFile).toStdString());
    }
    std::vector<char*> argv;
    for (std::string& arg : args)
        argv.push_back(&arg[0]);
    argv.push_back(nullptr);
    // Built before the fork: the child may only make async-signal-safe calls.
    std::vector<std::string> environment;
    std::vector<char*> envp;
    if (!m_Environment.isEmpty()) {
        QProcessEnvironment merged = QProcessEnvironment::systemEnvironment();
        for (const QString& entry : m_Environment) {
            const int equals = entry.indexOf(QLatin1Char('='));
            merged.insert(entry.left(equals), entry.mid(equals + 1));
        }
        for (const QString& entry : merged.toStringList())
            environment.push_back(entry.toLocal8Bit().toStdString());
        for (std::string& entry : environment)
            envp.push_back(&entry[0]);
        envp.push_back(nullptr);
    }
    const QByteArray logPath = QFile::encodeName(m_LogPath);
    const pid_t parent = ::getpid();

    m_Pid = ::fork();
    if (m_Pid < 0) {
        m_Pid = -1;
        return Fail(QStringLiteral("fork failed: %1").arg(QString::fromLocal8Bit(strerror(errno))));
    }
    if (m_Pid == 0) {
        // Only async-signal-safe calls from here on. The camera dies with the
        // test so that a crashed test leaves no camera on the port.
        ::prctl(PR_SET_PDEATHSIG, SIGKILL);
        if (::getppid() != parent)
            ::_exit(127);
        const int log = ::open(logPath.constData(), O_WRONLY | O_CREAT | O_TRUNC, 0644);
        const int null = ::open("/dev/null", O_RDONLY);
        if (log >= 0) {
            ::dup2(log, STDOUT_FILENO);
            ::dup2(log, STDERR_FILENO);
        }
        if (null >= 0)
            ::dup2(null, STDIN_FILENO);
        // No socket or file of the test lives on in the camera.
        for (int fd = STDERR_FILENO + 1; fd < 1024; ++fd)
            ::close(fd);
        if (envp.empty())
            ::execvp(argv[0], argv.data());
        else
            ::execvpe(argv[0], argv.data(), envp.data());
        ::_exit(127);
    }

    QElapsedTimer answered;
    answered.start();
    while (answered.elapsed() <= answerTimeoutMs) {
        if (!IsRunning())
            return Fail(QStringLiteral("the fake camera exited before answering: %1").arg(Log().trimmed()));
        if (DiscoverSerial(100) == m_Serial)
            return true;
    }
    return Fail(
        QStringLiteral("the fake camera did not answer within %1 ms: %2").arg(answerTimeoutMs).arg(Log().trimmed()));
}

void FakeGvCamera::SetEnvironment(const QString& name, const QString& value)
{
    const QString prefix = name + QLatin1Char('=');
    for (int i = m_Environment.size() - 1; i >= 0; --i) {
        if (m_Environment.at(i).startsWith(prefix))
            m_Environment.removeAt(i);
    }
    m_Environment << prefix + value;
}

void FakeGvCamera::Kill()
{
    if (m_Pid > 0) {
        ::kill(m_Pid, SIGKILL);
        while (::waitpid(m_Pid, nullptr, 0) < 0 && errno == EINTR) {
        }
        m_Pid = -1;
    }
    ReleaseLock();
}

bool FakeGvCamera::IsRunning()
{
    if (m_Pid <= 0)
        return false;
    const pid_t result = ::waitpid(m_Pid, nullptr, WNOHANG);
    if (result == 0)
        return true;
    m_Pid = -1;  // reaped (or not ours any more)
    return false;
}

QString FakeGvCamera::Log() const
{
    QFile file(m_LogPath);
    if (!file.open(QIODevice::ReadOnly))
        return QString();
    return QString::fromLocal8Bit(file.readAll());
}

QString FakeGvCamera::DiscoverSerial(int timeoutMs)
{
    FileDescriptor sock(::socket(AF_INET, SOCK_DGRAM | SOCK_CLOEXEC, 0));
    if (sock.Get() < 0)
        return QString();
    struct sockaddr_in peer;
    std::memset(&peer, 0, sizeof(peer));
    peer.sin_family = AF_INET;
    peer.sin_port = htons(kGvcpPort);
    peer.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
    static std::atomic<quint16> requestId{1};
    const quint16 id = requestId.fetch_add(1);
    // Key 0x42, flags: acknowledge required; DISCOVERY_CMD (2), no payload.
    const unsigned char command[8] = {
        0x42, 0x01, 0x00, 0x02, 0x00, 0x00, static_cast<unsigned char>(id >> 8), static_cast<unsigned char>(id & 0xff)};
    if (::sendto(sock.Get(), command, sizeof(command), 0, reinterpret_cast<const sockaddr*>(&peer), sizeof(peer)) < 0)
        return QString();

    QElapsedTimer elapsed;
    elapsed.start();
    unsigned char answer[1024];
    for (;;) {
        const int left = timeoutMs - static_cast<int>(elapsed.elapsed());
        if (left <= 0)
            return QString();
        struct pollfd readable = {sock.Get(), POLLIN, 0};
        if (::poll(&readable, 1, left) <= 0)
            continue;
        const ssize_t size = ::recv(sock.Get(), answer, sizeof(answer), 0);
        // DISCOVERY_ACK (3) with our request id and a whole bootstrap block.
        if (size < kAckHeaderSize + kDiscoveryPayloadSize || answer[2] != 0x00 || answer[3] != 0x03 ||
            answer[6] != command[6] || answer[7] != command[7])
            continue;
        const char* serial = reinterpret_cast<const char*>(answer + kAckHeaderSize + kSerialOffset);
        return QString::fromLatin1(serial, static_cast<int>(strnlen(serial, kSerialSize)));
    }
}
