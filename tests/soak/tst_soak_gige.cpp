// Soak on a GenICam camera that keeps going away: a fake GigE Vision camera
// on 127.0.0.1 is killed while every tab plug-in of the build shows it and
// two threads write its features, then started again and opened anew, over
// and over. No crash, no hang, no use of a freed connection (the sanitizer
// passes see that); after each restart the camera opens and answers again.
//
//   tst_soak_gige [--restarts N] [--seconds N] [Qt Test options]
//
// The suite runs three restarts; long runs are by hand.

#include "FakeGvCamera.h"
#include "PluginLoader.h"
#include "SoakSupport.h"
#include "TestTime.h"
#include "ViewerLog.h"

#include <PkoAPI/PkoAPI.h>

#include <QApplication>
#include <QElapsedTimer>
#include <QFile>
#include <QSharedPointer>
#include <QVector>
#include <QWidget>
#include <QtTest>

#include <atomic>
#include <cstdio>
#include <cstring>
#include <memory>
#include <thread>
#include <vector>

using namespace ZMT::PkoAPI;
using SoakSupport::FeaturesOf;
using SoakSupport::ResidentKiB;

namespace {

int g_Restarts = 3;
int g_Seconds = 0;

// Writes trigger and output features until told to stop. Every call may fail
// once the camera is gone; only the calls made count.
void WriteUntilStopped(const CameraPtr& camera, int seed, const std::atomic<bool>& stop, std::atomic<long>& calls)
{
    static const char* const kEntries[][2] = {{"TriggerActivation", "FallingEdge"},
                                              {"TriggerActivation", "RisingEdge"},
                                              {"LineSelector", "Line1"},
                                              {"LineSelector", "Line2"}};
    for (int i = seed; !stop.load(); ++i) {
        FeaturePtr feature;
        const auto& entry = kEntries[i % 4];
        if (camera->GetFeatureByName(entry[0], feature) == PkoErrorSuccess)
            feature->SetValue(entry[1]);
        ++calls;
        std::this_thread::sleep_for(std::chrono::milliseconds(5));
    }
}

}  // namespace

class TestSoakGige : public QObject {
    Q_OBJECT

private slots:
    void shouldSurviveACameraKilledAndRestartedUnderTheTabs()
    {
        if (!FakeGvCamera::BinaryAvailable())
            QSKIP("arv-fake-gv-camera-0.8 is not installed (package aravis-tools)");
        ViewerLog log;
        PluginLoader plugins(log);
        QVERIFY2(plugins.LoadDirectory(QStringLiteral("plugins")) >= 1, qPrintable(log.Problems().join("; ")));

        FakeGvCamera fake(FakeGvCamera::GenicamFile(QString::fromLatin1(FakeGvCamera::Gen1Sfnc)),
                          QStringLiteral("SOAK"));
        const QByteArray id = "ARV:Aravis-Fake-" + fake.Serial().toLatin1();
        const long start = ResidentKiB();
        QElapsedTimer clock;
        clock.start();
        int restarts = 0;
        long calls = 0;
        while (g_Seconds > 0 ? clock.elapsed() < g_Seconds * 1000LL : restarts < g_Restarts) {
            QVERIFY2(fake.Start(TestSupport::Scaled(10000), 60000), qPrintable(fake.ErrorString()));
            CameraPtr camera;
            QCOMPARE(PkoSystem::GetInstance().GetCameraByID(id.constData(), camera), int(PkoErrorSuccess));
            QCOMPARE(camera->Open(), int(PkoErrorSuccess));
            // The camera answers after every restart.
            FeaturePtr model;
            char text[256];
            unsigned int length = sizeof(text);
            QCOMPARE(camera->GetFeatureByName("DeviceModelName", model), int(PkoErrorSuccess));
            QCOMPARE(model->GetValue(text, length), int(PkoErrorSuccess));

            std::vector<std::unique_ptr<QWidget>> pages;
            for (const std::unique_ptr<PluginLoader::Plugin>& plugin : plugins.Plugins()) {
                pages.emplace_back(new QWidget);
                const int code = plugin->tabExtension->CreateTabWidget(FeaturesOf(camera), pages.back().get());
                QVERIFY2(code == 0 || code == 4, qPrintable(QString::number(code)));
                pages.back()->show();
            }
            std::atomic<bool> stop{false};
            std::atomic<long> written{0};
            std::vector<std::thread> writers;
            for (int i = 0; i < 2; ++i)
                writers.emplace_back([&, i] { WriteUntilStopped(camera, i, stop, written); });
            // The tabs tick on the live camera, then on the dead one.
            QTest::qWait(1200);
            fake.Kill();
            QTest::qWait(1500);
            plugins.SetStreaming(restarts % 2 == 0);
            QTest::qWait(300);
            stop = true;
            for (std::thread& writer : writers)
                writer.join();
            calls += written.load();
            pages.clear();
            camera->Close();
            ++restarts;
        }
        const long end = ResidentKiB();
        std::printf(
            "soak: %d restarts of the camera under %d tab(s) in %.1f s, %ld calls; resident %ld KiB at "
            "start, %ld at the end\n",
            restarts, int(plugins.Plugins().size()), clock.elapsed() / 1000.0, calls, start, end);
        QVERIFY(calls > 0);
    }
};

int main(int argc, char** argv)
{
    // Our own options first; the rest goes to Qt Test.
    std::vector<char*> rest;
    for (int i = 0; i < argc; ++i) {
        if ((std::strcmp(argv[i], "--restarts") == 0 || std::strcmp(argv[i], "--seconds") == 0) && i + 1 < argc) {
            (std::strcmp(argv[i], "--restarts") == 0 ? g_Restarts : g_Seconds) = std::atoi(argv[i + 1]);
            ++i;
            continue;
        }
        rest.push_back(argv[i]);
    }
    int restCount = int(rest.size());
    QApplication app(restCount, rest.data());
    TestSoakGige test;
    return QTest::qExec(&test, restCount, rest.data());
}

#include "tst_soak_gige.moc"
