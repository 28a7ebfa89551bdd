#ifndef INPROCESSGVCAMERA_H
#define INPROCESSGVCAMERA_H

// Before any Qt header: GLib's headers use the name "signals".
#include <arv.h>

#include "FakeGvCamera.h"

#include <QElapsedTimer>
#include <QFile>
#include <QString>

#include <fcntl.h>
#include <sys/file.h>
#include <unistd.h>

// Aravis's fake GigE Vision camera run inside the test process on
// 127.0.0.1, so that a test can change its registers behind the back of the
// connection that controls it, as the camera's own signals and counters
// would (a second connection may read but not write). Takes the same
// machine-wide lock as FakeGvCamera, which it excludes while it runs.
// Header-only, for the executables of this folder.
class InProcessGvCamera {
public:
    // Serves xmlFile (a path); nothing runs before Start.
    explicit InProcessGvCamera(const QString& xmlFile) : m_XmlFile(xmlFile) {}
    ~InProcessGvCamera()
    {
        if (m_Camera != nullptr)
            g_object_unref(m_Camera);
        if (m_LockFd >= 0) {
            ::flock(m_LockFd, LOCK_UN);
            ::close(m_LockFd);
        }
    }
    InProcessGvCamera(const InProcessGvCamera&) = delete;
    InProcessGvCamera& operator=(const InProcessGvCamera&) = delete;

    // Takes the lock (waiting up to two minutes for another fake camera) and
    // starts the camera; false with the reason in error.
    bool Start(QString& error)
    {
        if (!QFile::exists(m_XmlFile)) {
            error = "no description " + m_XmlFile;
            return false;
        }
        m_LockFd = ::open(FakeGvCamera::LockFilePath().toLocal8Bit().constData(), O_RDWR | O_CREAT | O_CLOEXEC, 0666);
        if (m_LockFd < 0) {
            error = "cannot open " + FakeGvCamera::LockFilePath();
            return false;
        }
        QElapsedTimer waited;
        waited.start();
        while (::flock(m_LockFd, LOCK_EX | LOCK_NB) != 0) {
            if (waited.elapsed() > 120000) {
                error = "another fake camera holds " + FakeGvCamera::LockFilePath();
                return false;
            }
            ::usleep(50000);
        }
        m_Camera = arv_gv_fake_camera_new_full("lo", "PKO-INPROC", QFile::encodeName(m_XmlFile).constData());
        if (m_Camera == nullptr || !arv_gv_fake_camera_is_running(m_Camera)) {
            error = "the fake camera does not run on lo";
            return false;
        }
        return true;
    }

    // Stores value in the 32-bit big-endian register at address, as the
    // camera itself would.
    void WriteRegister(quint32 address, quint32 value)
    {
        arv_fake_camera_write_register(arv_gv_fake_camera_get_fake_camera(m_Camera), address, value);
    }

    static const char* Id() { return "ARV:127.0.0.1"; }

private:
    QString m_XmlFile;
    ArvGvFakeCamera* m_Camera = nullptr;
    int m_LockFd = -1;
};

#endif  // INPROCESSGVCAMERA_H
