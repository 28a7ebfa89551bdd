#ifndef FAKEGVCAMERA_H
#define FAKEGVCAMERA_H

#include <QString>
#include <QStringList>

#include <sys/types.h>

// One fake GigE Vision camera process (arv-fake-gv-camera-0.8) on 127.0.0.1,
// owned by a test. The GigE Vision control port 3956 admits one camera per
// address, so only one such camera runs at a time on the machine: the
// fixture holds an exclusive lock on LockFilePath() from start until it is
// destroyed or killed (tools/fake-cameras.sh takes the same lock), and a
// second fixture in the same process fails to start.
class FakeGvCamera {
public:
    // The description files written for the three naming generations.
    static const char* const Gen1Line;  // "Line*" with LineRouting
    static const char* const Gen1Sfnc;  // "Line*" without LineRouting
    static const char* const Gen2SyncOut;
    static const char* const Gen3LineOut;

    // True when the fake camera binary can be found on PATH.
    static bool BinaryAvailable();
    // Absolute path of a file in PelkoSDK/genicam (env PKO_GENICAM_DIR
    // overrides the folder); the path is returned even if the file is missing.
    static QString GenicamFile(const QString& fileName);
    static QString LockFilePath();
    static QString Address() { return QStringLiteral("127.0.0.1"); }

    // Prepares a camera serving xmlFile (empty: the stock description) with a
    // unique serial that starts with the first four characters of tag. Does
    // not start anything yet.
    explicit FakeGvCamera(const QString& xmlFile, const QString& tag = QStringLiteral("PKO"));
    // Kills the process (SIGKILL by pid), reaps it and releases the lock.
    ~FakeGvCamera();
    FakeGvCamera(const FakeGvCamera&) = delete;
    FakeGvCamera& operator=(const FakeGvCamera&) = delete;

    // Starts the camera and waits until it answers a GigE Vision discovery on
    // 127.0.0.1:3956 with its own serial. Waits at most lockTimeoutMs for the
    // machine-wide lock and answerTimeoutMs for the answer. On failure returns
    // false, leaves no process behind, holds no lock, and ErrorString() says
    // why. Calling it on a running camera returns true.
    bool Start(int answerTimeoutMs = 5000, int lockTimeoutMs = 120000);
    // Sets a variable in the environment of the camera process started by the
    // next Start (ARV_DEBUG=device:2 makes it log every command it handles).
    void SetEnvironment(const QString& name, const QString& value);
    // Kills the process by pid at once and reaps it (no-op if not running);
    // the lock is released. A test of a lost camera calls this.
    void Kill();
    // Process alive (not yet reaped and not exited).
    bool IsRunning();

    QString Serial() const { return m_Serial; }
    QString XmlFile() const { return m_XmlFile; }
    pid_t Pid() const { return m_Pid; }
    QString ErrorString() const { return m_Error; }
    // The camera's own output (stdout and stderr) so far.
    QString Log() const;

    // Serial of the device answering a discovery on 127.0.0.1:3956 within
    // timeoutMs; empty when nothing answers.
    static QString DiscoverSerial(int timeoutMs);

private:
    bool Fail(const QString& reason);
    void ReleaseLock();

    QString m_XmlFile;
    QString m_Serial;
    QString m_LogPath;
    QString m_Error;
    QStringList m_Environment;  // "NAME=VALUE" added to the inherited one
    pid_t m_Pid = -1;
    int m_LockFd = -1;
};

#endif  // FAKEGVCAMERA_H
