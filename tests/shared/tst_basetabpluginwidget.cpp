#include "BaseTabPluginWidget.h"
#include "GateObserver.h"
#include "PluginFeatureObserver.h"
#include "RecordingTabWidget.h"
#include "SimTestSupport.h"
#include "TestTime.h"

#include <PkoAPI/PkoAPI.h>
#include <PkoAPI/Sim/CameraBuilder.h>

#include <QApplication>
#include <QComboBox>
#include <QDir>
#include <QFile>
#include <QLocale>
#include <QMetaMethod>
#include <QPointer>
#include <QTranslator>
#include <QWeakPointer>
#include <QtTest>

#include <memory>
#include <vector>

namespace Pko = ZMT::PkoAPI;
namespace Sim = ZMT::PkoAPI::Sim;
using TestSupport::MessageCapture;

namespace {

const int kFault = Pko::PkoErrorOther;
const QString kNoFeatures("Could not get features. Error code:  -3 \n");

QString RegisterFailed(int code)
{
    return QString("Could not register feature observer. Error code:  %1 \n").arg(code);
}

QString UnregisterFailed(int code)
{
    return QString("Could not unregister feature observer. Error code:  %1 \n").arg(code);
}

bool Never(const Sim::Context&)
{
    return false;
}

Sim::SimCameraPtr BuildCamera()
{
    Sim::CameraBuilder builder("TEST-TAB", "Tab test camera");
    builder.AddInteger("Alpha", 1, 0, 100);
    builder.AddInteger("Unwatched", 0, 0, 100);
    builder.AddInteger("Beta", 1, 0, 100);
    builder.AddEnumeration("Gamma", {"X", "Y", "Z"}, "Y").EntryAvailableWhen("Z", Never);
    builder.AddEnumeration("Fixed", {"P", "Q"}, "Q").ReadOnly();
    builder.AddEnumeration("Orphan", {"M", "N"}, "N").EntryAvailableWhen("N", Never);
    return TestSupport::Opened(builder.Build(), TestSupport::WhenOpenFails::Null);
}

FeatureVectorPtr ListFeatures(const Sim::SimCameraPtr& camera)
{
    return TestSupport::FeaturesOf(camera, TestSupport::WhenUnlisted::Null);
}

// Watched names in camera order, plus one the camera does not have.
QStringList Watched()
{
    return QStringList() << "Alpha"
                         << "Beta"
                         << "Gamma"
                         << "NotOnThisCamera";
}

QStringList AllWatchedOnCamera()
{
    return QStringList() << "Alpha"
                         << "Beta"
                         << "Gamma";
}

// A write by someone else than the tab, as the viewer or the camera would make it.
bool Write(const Sim::SimCameraPtr& camera, const char* name, long long value)
{
    Pko::FeaturePtr feature;
    if (camera->GetFeatureByName(name, feature) != Pko::PkoErrorSuccess)
        return false;
    return feature->SetValue(value) == Pko::PkoErrorSuccess;
}

bool Tick(BaseTabPluginWidget& widget)
{
    return QMetaObject::invokeMethod(&widget, "updateTimer");
}

// Lets every callback of earlier writes reach the widget's queue.
bool Settle(const Sim::SimCameraPtr& camera)
{
    const bool delivered = camera->WaitForNotifications(3000);
    QCoreApplication::processEvents();
    return delivered;
}

QString PlaceTranslation(const QString& fileName)
{
    const QString path = "plugins/" + fileName;
    QDir().mkpath("plugins");
    QFile::remove(path);
    if (!QFile::copy(QStringLiteral(TEST_QM_FILE), path))
        return QString();
    return path;
}

}  // namespace

class TestBaseTabPluginWidget : public QObject {
    Q_OBJECT

private slots:
    void shouldDiscardEveryMessageOnceAWidgetExists();
    void shouldStartStoppedUnregisteredAndWithAnEmptyQueue();
    void shouldUseTheExactDisabledStyleSheetAndStrongFocus();
    void shouldDeclareResetFpsUpdateTimerAndOnFeatureChangedInThatOrder();
    void shouldHoldOneParentlessObserverConnectedToTheQueue();
    void shouldUseANonRecursiveMutex();

    void shouldQueueAReportedNameOnlyOnce();
    void shouldHandANameReportedTwiceBetweenTicksOverOnce();
    void shouldHandEveryWatchedFeatureOverOnShowAndAgainAtTheFirstTick();
    void shouldCallTheSubclassOnEveryTickEvenWithNothingQueued();
    void shouldNotHandOverChangesMadeWhileHidden();
    void shouldIgnoreAWatchedNameTheCameraDoesNotHave();
    void shouldOnlyLogCouldNotGetFeaturesForAnEmptyList();
    void shouldCallTheSdkAgainWhenRegisteringTwice();
    void shouldLogAFailedUnregistrationAndGoOn();
    void shouldGoOnRegisteringAfterOneFeatureFails();
    void shouldReturnTheResultOfTheLastRegistration();
    void shouldQueueAllWithoutADuplicateTest();
    void shouldSkipAWatchedFeatureWhoseNameCannotBeRead();
    void shouldNotQueueTheSubclassOwnWritesDuringATick();
    void shouldHoldTheMutexAroundEverySubclassCall();
    void shouldQueueSdkChangesOnlyWhenTheGuiThreadRuns();
    void shouldTickEverySecondWhileShown();

    void shouldUnregisterAndReleaseTheObserverOnDestruction();
    void shouldLeaveTimerMutexQueueAndFeatureManagerAlive();

    void shouldFillAComboWithTheAvailableEntries();
    void shouldGiveEachItemItsTextAsToolTip();
    void shouldSelectNothingWhenTheCurrentEntryIsNotAvailable();
    void shouldDisableTheComboOfAReadOnlyFeature();
    void shouldRefuseANullCombo();

    void shouldLoadTheTranslationOfTheFullLocaleName();
    void shouldFallBackToTheLanguageTranslation();
    void shouldReturnAnEmptyTranslatorWhenNoFileExists();
};

void TestBaseTabPluginWidget::shouldDiscardEveryMessageOnceAWidgetExists()
{
    Sim::SimCameraPtr camera = BuildCamera();
    QVERIFY(camera);
    MessageCapture capture;
    qDebug() << "before";
    QCOMPARE(capture.Messages(), QStringList() << "before");

    RecordingTabWidget widget(ListFeatures(camera), Watched());
    qDebug() << "after";
    qWarning() << "after";
    widget.UnregisterObservers();  // writes three messages of its own
    QCOMPARE(capture.Messages(), QStringList() << "before");
}

void TestBaseTabPluginWidget::shouldStartStoppedUnregisteredAndWithAnEmptyQueue()
{
    Sim::SimCameraPtr camera = BuildCamera();
    QVERIFY(camera);
    RecordingTabWidget widget(ListFeatures(camera), QStringList());

    QVERIFY(widget.m_ObservedFeatures.isEmpty());
    QVERIFY(widget.m_ChangedFeatures != nullptr);
    QVERIFY(widget.m_ChangedFeatures->isEmpty());
    QVERIFY(widget.m_FeatureManager != nullptr);
    QVERIFY(widget.m_FeatureManager->IsAvailable("Alpha"));
    QVERIFY(widget.m_Features);
    QCOMPARE(widget.m_Features->size(), 6);
    QVERIFY(widget.m_UpdateTimer != nullptr);
    QVERIFY(!widget.m_UpdateTimer->isActive());
    QVERIFY(!widget.m_UpdateTimer->isSingleShot());
    QVERIFY(widget.m_UpdateTimer->parent() == nullptr);
    QVERIFY(widget.m_Calls.isEmpty());
    QVERIFY(widget.parentWidget() == nullptr);

    // Not registered yet: unregistering is refused for every watched feature.
    widget.m_ObservedFeatures = Watched();
    MessageCapture capture;
    QCOMPARE(widget.UnregisterObservers(), int(Pko::PkoErrorNotRegistered));
    QCOMPARE(capture.Messages().size(), 3);
}

void TestBaseTabPluginWidget::shouldUseTheExactDisabledStyleSheetAndStrongFocus()
{
    Sim::SimCameraPtr camera = BuildCamera();
    QVERIFY(camera);
    RecordingTabWidget widget(ListFeatures(camera), Watched());

    const QString expected =
        "QPushButton:disabled, QLineEdit:disabled, QComboBox:disabled, QDoubleSpinBox:disabled," +
        QString(44, QLatin1Char(' ')) +
        "QSpinBox:disabled, QwtSlider:disabled, QGroupBox:disabled, QLabel:disabled { color: gray }";
    QCOMPARE(widget.styleSheet(), expected);
    QCOMPARE(widget.focusPolicy(), Qt::StrongFocus);
}

void TestBaseTabPluginWidget::shouldDeclareResetFpsUpdateTimerAndOnFeatureChangedInThatOrder()
{
    const QMetaObject& meta = BaseTabPluginWidget::staticMetaObject;
    const int offset = meta.methodOffset();
    QCOMPARE(meta.methodCount() - offset, 3);

    QCOMPARE(QString::fromLatin1(meta.method(offset).methodSignature()), QString("resetFPS()"));
    QCOMPARE(meta.method(offset).methodType(), QMetaMethod::Signal);
    QCOMPARE(QString::fromLatin1(meta.method(offset + 1).methodSignature()), QString("updateTimer()"));
    QCOMPARE(meta.method(offset + 1).methodType(), QMetaMethod::Slot);
    QCOMPARE(meta.method(offset + 1).access(), QMetaMethod::Protected);
    QCOMPARE(QString::fromLatin1(meta.method(offset + 2).methodSignature()),
             QString("OnFeatureChanged(QString,QString)"));
    QCOMPARE(meta.method(offset + 2).methodType(), QMetaMethod::Slot);
    QCOMPARE(meta.method(offset + 2).access(), QMetaMethod::Private);
}

void TestBaseTabPluginWidget::shouldHoldOneParentlessObserverConnectedToTheQueue()
{
    Sim::SimCameraPtr camera = BuildCamera();
    QVERIFY(camera);
    RecordingTabWidget widget(ListFeatures(camera), Watched());

    QVERIFY(widget.m_FeatureObserver);
    PluginFeatureObserver* observer = dynamic_cast<PluginFeatureObserver*>(widget.m_FeatureObserver.get());
    QVERIFY(observer != nullptr);
    QVERIFY(observer->parent() == nullptr);
    QVERIFY(observer->thread() == widget.thread());

    // value is not used; the same name twice is queued once.
    emit observer->setChangedFeature("Beta", "1");
    emit observer->setChangedFeature("Beta", "2");
    emit observer->setChangedFeature("beta", "3");
    QCOMPARE(*widget.m_ChangedFeatures, QStringList() << "Beta"
                                                      << "beta");
}

void TestBaseTabPluginWidget::shouldUseANonRecursiveMutex()
{
    Sim::SimCameraPtr camera = BuildCamera();
    QVERIFY(camera);
    RecordingTabWidget widget(ListFeatures(camera), Watched());

    QVERIFY(widget.m_Mutex != nullptr);
    QVERIFY(!widget.m_Mutex->isRecursive());
    widget.m_Mutex->lock();
    const bool again = widget.m_Mutex->tryLock();
    widget.m_Mutex->unlock();
    if (again)
        widget.m_Mutex->unlock();
    QVERIFY(!again);
}

void TestBaseTabPluginWidget::shouldQueueAReportedNameOnlyOnce()
{
    Sim::SimCameraPtr camera = BuildCamera();
    QVERIFY(camera);
    RecordingTabWidget widget(ListFeatures(camera), Watched());
    widget.show();
    QVERIFY(Tick(widget));
    QVERIFY(widget.m_ChangedFeatures->isEmpty());

    Pko::FeaturePtr gamma;
    camera->GetFeatureByName("Gamma", gamma);
    QCOMPARE(gamma->SetValue("X"), int(Pko::PkoErrorSuccess));
    QVERIFY(Settle(camera));
    QCOMPARE(gamma->SetValue("Y"), int(Pko::PkoErrorSuccess));
    QCOMPARE(gamma->SetValue("X"), int(Pko::PkoErrorSuccess));
    QVERIFY(Settle(camera));
    QCOMPARE(*widget.m_ChangedFeatures, QStringList() << "Gamma");
}

void TestBaseTabPluginWidget::shouldHandANameReportedTwiceBetweenTicksOverOnce()
{
    Sim::SimCameraPtr camera = BuildCamera();
    QVERIFY(camera);
    RecordingTabWidget widget(ListFeatures(camera), Watched());
    widget.show();
    QVERIFY(Tick(widget));

    QVERIFY(Write(camera, "Alpha", 5));
    QVERIFY(Settle(camera));
    QVERIFY(Write(camera, "Alpha", 6));
    QVERIFY(Write(camera, "Unwatched", 6));
    QVERIFY(Settle(camera));
    QVERIFY(Tick(widget));

    QCOMPARE(widget.m_Calls.size(), 3);
    QCOMPARE(widget.m_Calls.last(), QStringList() << "Alpha");
    QVERIFY(widget.m_ChangedFeatures->isEmpty());
}

void TestBaseTabPluginWidget::shouldHandEveryWatchedFeatureOverOnShowAndAgainAtTheFirstTick()
{
    Sim::SimCameraPtr camera = BuildCamera();
    QVERIFY(camera);
    RecordingTabWidget widget(ListFeatures(camera), Watched());

    widget.show();
    QVERIFY(widget.m_UpdateTimer->isActive());
    QCOMPARE(widget.m_UpdateTimer->interval(), 1000);
    QCOMPARE(widget.m_Calls, QList<QStringList>() << AllWatchedOnCamera());
    QCOMPARE(*widget.m_ChangedFeatures, AllWatchedOnCamera());

    QVERIFY(Tick(widget));
    QCOMPARE(widget.m_Calls, QList<QStringList>() << AllWatchedOnCamera() << AllWatchedOnCamera());
    QVERIFY(widget.m_ChangedFeatures->isEmpty());
}

void TestBaseTabPluginWidget::shouldCallTheSubclassOnEveryTickEvenWithNothingQueued()
{
    Sim::SimCameraPtr camera = BuildCamera();
    QVERIFY(camera);
    RecordingTabWidget widget(ListFeatures(camera), Watched());
    widget.show();
    QVERIFY(Tick(widget));
    QVERIFY(Tick(widget));
    QVERIFY(Tick(widget));
    QCOMPARE(widget.m_Calls.size(), 4);
    QCOMPARE(widget.m_Calls.at(2), QStringList());
    QCOMPARE(widget.m_Calls.at(3), QStringList());

    // Still registered after the ticks: a change is queued.
    QVERIFY(Write(camera, "Beta", 9));
    QVERIFY(Settle(camera));
    QCOMPARE(*widget.m_ChangedFeatures, QStringList() << "Beta");
}

void TestBaseTabPluginWidget::shouldNotHandOverChangesMadeWhileHidden()
{
    Sim::SimCameraPtr camera = BuildCamera();
    QVERIFY(camera);
    RecordingTabWidget widget(ListFeatures(camera), Watched());
    widget.show();
    widget.hide();
    QVERIFY(!widget.m_UpdateTimer->isActive());
    QVERIFY(widget.m_ChangedFeatures->isEmpty());

    QVERIFY(Write(camera, "Alpha", 7));
    QVERIFY(Settle(camera));
    QVERIFY(widget.m_ChangedFeatures->isEmpty());
    QCOMPARE(widget.m_Calls.size(), 1);

    widget.show();
    QCOMPARE(widget.m_Calls.size(), 2);
    QCOMPARE(widget.m_Calls.last(), AllWatchedOnCamera());
}

void TestBaseTabPluginWidget::shouldIgnoreAWatchedNameTheCameraDoesNotHave()
{
    Sim::SimCameraPtr camera = BuildCamera();
    QVERIFY(camera);
    RecordingTabWidget widget(ListFeatures(camera), QStringList() << "NotOnThisCamera"
                                                                  << "Beta");
    MessageCapture capture;

    widget.show();
    QCOMPARE(widget.m_Calls.last(), QStringList() << "Beta");
    QVERIFY(Tick(widget));
    widget.hide();
    QCOMPARE(capture.Messages(), QStringList());

    RecordingTabWidget nothing(ListFeatures(camera), QStringList() << "NotOnThisCamera");
    QCOMPARE(nothing.RegisterObservers(true), int(Pko::PkoErrorSuccess));
    QVERIFY(nothing.m_ChangedFeatures->isEmpty());
    QCOMPARE(nothing.UnregisterObservers(), int(Pko::PkoErrorSuccess));
}

void TestBaseTabPluginWidget::shouldOnlyLogCouldNotGetFeaturesForAnEmptyList()
{
    RecordingTabWidget widget(FeatureVectorPtr::create(), Watched());
    MessageCapture capture;

    widget.show();
    QCOMPARE(capture.Messages(), QStringList() << kNoFeatures);
    QCOMPARE(widget.m_Calls, QList<QStringList>() << QStringList());
    QVERIFY(widget.m_ChangedFeatures->isEmpty());

    QVERIFY(Tick(widget));
    QCOMPARE(capture.Messages(), QStringList() << kNoFeatures << kNoFeatures << kNoFeatures);
    QCOMPARE(widget.m_Calls.size(), 2);

    widget.hide();
    QCOMPARE(capture.Messages(), QStringList() << kNoFeatures << kNoFeatures << kNoFeatures << kNoFeatures);

    QCOMPARE(widget.RegisterObservers(true), int(Pko::PkoErrorNotFound));
    QCOMPARE(widget.UnregisterObservers(), int(Pko::PkoErrorNotFound));
    QVERIFY(widget.m_ChangedFeatures->isEmpty());

    RecordingTabWidget nullList{FeatureVectorPtr(), Watched()};
    QCOMPARE(nullList.RegisterObservers(true), int(Pko::PkoErrorNotFound));
}

void TestBaseTabPluginWidget::shouldCallTheSdkAgainWhenRegisteringTwice()
{
    Sim::SimCameraPtr camera = BuildCamera();
    QVERIFY(camera);
    RecordingTabWidget widget(ListFeatures(camera), Watched());
    QCOMPARE(widget.RegisterObservers(false), int(Pko::PkoErrorSuccess));
    MessageCapture capture;

    QCOMPARE(widget.RegisterObservers(true), int(Pko::PkoErrorAlreadyRegistered));
    const QString refused = RegisterFailed(Pko::PkoErrorAlreadyRegistered);
    QCOMPARE(capture.Messages(), QStringList() << refused << refused << refused);
    // Only successful registrations are queued.
    QVERIFY(widget.m_ChangedFeatures->isEmpty());

    // Registered once only: one unregistration each succeeds, the next is refused.
    QCOMPARE(widget.UnregisterObservers(), int(Pko::PkoErrorSuccess));
    QCOMPARE(widget.UnregisterObservers(), int(Pko::PkoErrorNotRegistered));
}

void TestBaseTabPluginWidget::shouldLogAFailedUnregistrationAndGoOn()
{
    Sim::SimCameraPtr camera = BuildCamera();
    QVERIFY(camera);
    RecordingTabWidget widget(ListFeatures(camera), Watched());
    QCOMPARE(widget.RegisterObservers(false), int(Pko::PkoErrorSuccess));
    camera->InjectFault("Alpha", Sim::Operation::UnregisterObserver, kFault);
    MessageCapture capture;

    QCOMPARE(widget.UnregisterObservers(), int(Pko::PkoErrorSuccess));
    QCOMPARE(capture.Messages(), QStringList() << UnregisterFailed(kFault));
    QVERIFY(widget.m_ChangedFeatures->isEmpty());

    // Beta and Gamma are off; Alpha still reports.
    QVERIFY(Write(camera, "Beta", 3));
    QVERIFY(Write(camera, "Alpha", 3));
    QVERIFY(Settle(camera));
    QCOMPARE(*widget.m_ChangedFeatures, QStringList() << "Alpha");
    camera->ClearFaults();
}

void TestBaseTabPluginWidget::shouldGoOnRegisteringAfterOneFeatureFails()
{
    Sim::SimCameraPtr camera = BuildCamera();
    QVERIFY(camera);
    RecordingTabWidget widget(ListFeatures(camera), Watched());
    camera->InjectFault("Alpha", Sim::Operation::RegisterObserver, kFault);
    MessageCapture capture;

    QCOMPARE(widget.RegisterObservers(true), int(Pko::PkoErrorSuccess));
    QCOMPARE(capture.Messages(), QStringList() << RegisterFailed(kFault));
    QCOMPARE(*widget.m_ChangedFeatures, QStringList() << "Beta"
                                                      << "Gamma");

    widget.m_ChangedFeatures->clear();
    QVERIFY(Write(camera, "Alpha", 2));
    QVERIFY(Write(camera, "Beta", 2));
    QVERIFY(Settle(camera));
    QCOMPARE(*widget.m_ChangedFeatures, QStringList() << "Beta");
}

void TestBaseTabPluginWidget::shouldReturnTheResultOfTheLastRegistration()
{
    Sim::SimCameraPtr camera = BuildCamera();
    QVERIFY(camera);
    RecordingTabWidget widget(ListFeatures(camera), Watched());
    camera->InjectFault("Gamma", Sim::Operation::RegisterObserver, Pko::PkoErrorTimeout);
    MessageCapture capture;

    QCOMPARE(widget.RegisterObservers(false), int(Pko::PkoErrorTimeout));
    QCOMPARE(capture.Messages(), QStringList() << RegisterFailed(Pko::PkoErrorTimeout));
}

void TestBaseTabPluginWidget::shouldQueueAllWithoutADuplicateTest()
{
    Sim::SimCameraPtr camera = BuildCamera();
    QVERIFY(camera);
    RecordingTabWidget widget(ListFeatures(camera), Watched());

    QCOMPARE(widget.RegisterObservers(true), int(Pko::PkoErrorSuccess));
    QCOMPARE(widget.UnregisterObservers(), int(Pko::PkoErrorSuccess));
    QCOMPARE(widget.RegisterObservers(true), int(Pko::PkoErrorSuccess));
    QCOMPARE(*widget.m_ChangedFeatures, AllWatchedOnCamera() + AllWatchedOnCamera());

    // Appending is done without the mutex.
    widget.m_Mutex->lock();
    QCOMPARE(widget.UnregisterObservers(), int(Pko::PkoErrorSuccess));
    QCOMPARE(widget.RegisterObservers(true), int(Pko::PkoErrorSuccess));
    widget.m_Mutex->unlock();
    QCOMPARE(widget.m_ChangedFeatures->size(), 9);
}

void TestBaseTabPluginWidget::shouldSkipAWatchedFeatureWhoseNameCannotBeRead()
{
    Sim::SimCameraPtr camera = BuildCamera();
    QVERIFY(camera);
    RecordingTabWidget widget(ListFeatures(camera), Watched());
    camera->InjectFault("Beta", Sim::Operation::GetName, kFault);
    MessageCapture capture;

    QCOMPARE(widget.RegisterObservers(true), int(Pko::PkoErrorSuccess));
    QCOMPARE(*widget.m_ChangedFeatures, QStringList() << "Alpha"
                                                      << "Gamma");
    QCOMPARE(capture.Messages(), QStringList());

    camera->ClearFaults();
    widget.m_ChangedFeatures->clear();
    QVERIFY(Write(camera, "Beta", 4));
    QVERIFY(Settle(camera));
    QVERIFY(widget.m_ChangedFeatures->isEmpty());
}

void TestBaseTabPluginWidget::shouldNotQueueTheSubclassOwnWritesDuringATick()
{
    Sim::SimCameraPtr camera = BuildCamera();
    QVERIFY(camera);
    RecordingTabWidget widget(ListFeatures(camera), Watched());
    widget.show();
    QVERIFY(Tick(widget));

    // Hold the SDK's notification thread, so that the change written during
    // the tick is delivered only after the tick has re-registered.
    Pko::shared_ptr<GateObserver> gate(new GateObserver());
    Pko::FeaturePtr unwatched;
    QCOMPARE(camera->GetFeatureByName("Unwatched", unwatched), int(Pko::PkoErrorSuccess));
    QCOMPARE(unwatched->RegisterObserver(gate), int(Pko::PkoErrorSuccess));
    QVERIFY(Write(camera, "Unwatched", 1));
    QVERIFY(gate->WaitUntilHeld(3000));

    bool written = false;
    widget.m_DuringUpdate = [&]() { written = Write(camera, "Beta", 42); };
    QVERIFY(Tick(widget));
    gate->Open();
    QVERIFY(written);
    QVERIFY(Settle(camera));
    QCOMPARE(*widget.m_ChangedFeatures, QStringList());

    // Outside a tick the same write is queued.
    widget.m_DuringUpdate = nullptr;
    QVERIFY(Write(camera, "Beta", 43));
    QVERIFY(Settle(camera));
    QCOMPARE(*widget.m_ChangedFeatures, QStringList() << "Beta");
    QCOMPARE(unwatched->UnregisterObserver(gate), int(Pko::PkoErrorSuccess));
}

void TestBaseTabPluginWidget::shouldHoldTheMutexAroundEverySubclassCall()
{
    Sim::SimCameraPtr camera = BuildCamera();
    QVERIFY(camera);
    RecordingTabWidget widget(ListFeatures(camera), Watched());
    widget.show();
    QVERIFY(Tick(widget));
    QCOMPARE(widget.m_MutexHeld, QList<bool>() << true << true);

    QVERIFY(widget.m_Mutex->tryLock());
    widget.m_Mutex->unlock();
}

void TestBaseTabPluginWidget::shouldQueueSdkChangesOnlyWhenTheGuiThreadRuns()
{
    Sim::SimCameraPtr camera = BuildCamera();
    QVERIFY(camera);
    RecordingTabWidget widget(ListFeatures(camera), Watched());
    widget.show();
    QVERIFY(Tick(widget));

    QVERIFY(Write(camera, "Alpha", 11));
    QVERIFY(camera->WaitForNotifications(3000));
    // The callback ran on the SDK's thread; the slot waits for this thread's event loop.
    QVERIFY(widget.m_ChangedFeatures->isEmpty());
    QCoreApplication::processEvents();
    QCOMPARE(*widget.m_ChangedFeatures, QStringList() << "Alpha");
}

void TestBaseTabPluginWidget::shouldTickEverySecondWhileShown()
{
    Sim::SimCameraPtr camera = BuildCamera();
    QVERIFY(camera);
    RecordingTabWidget widget(ListFeatures(camera), Watched());
    widget.show();
    QCOMPARE(widget.m_Calls.size(), 1);

    QTRY_COMPARE_WITH_TIMEOUT(widget.m_Calls.size(), 2, TestSupport::Scaled(3000));
    QCOMPARE(widget.m_Calls.at(1), AllWatchedOnCamera());
    widget.hide();
    QVERIFY(!widget.m_UpdateTimer->isActive());
}

void TestBaseTabPluginWidget::shouldUnregisterAndReleaseTheObserverOnDestruction()
{
    Sim::SimCameraPtr camera = BuildCamera();
    QVERIFY(camera);
    Pko::IFeatureObserverPtr observer;
    QWeakPointer<QVector<Pko::FeaturePtr>> features;
    {
        RecordingTabWidget widget(ListFeatures(camera), Watched());
        widget.show();
        observer = widget.m_FeatureObserver;
        features = widget.m_Features;
        QVERIFY(observer.use_count() > 2);  // the widget, this test and the SDK's registrations
        QVERIFY(!features.isNull());
    }
    QVERIFY(camera->WaitForNotifications(3000));
    QCOMPARE(observer.use_count(), 1L);
    QVERIFY(features.isNull());

    QVERIFY(Write(camera, "Alpha", 12));
    QVERIFY(camera->WaitForNotifications(3000));
    QCOMPARE(observer.use_count(), 1L);
}

void TestBaseTabPluginWidget::shouldLeaveTimerMutexQueueAndFeatureManagerAlive()
{
    Sim::SimCameraPtr camera = BuildCamera();
    QVERIFY(camera);
    std::unique_ptr<RecordingTabWidget> widget(new RecordingTabWidget(ListFeatures(camera), Watched()));
    // Only the base destructor runs on them; each is watched in a way that
    // shows its deletion without touching freed memory.
    widget->m_FreeOnDestruction = false;
    QPointer<QTimer> timer(widget->m_UpdateTimer);
    QMutex* mutex = widget->m_Mutex;
    QStringList* queue = widget->m_ChangedFeatures;
    FeatureManager* manager = widget->m_FeatureManager;
    queue->append("kept");
    // Shares the queue's data: detached only once the queue is gone.
    const QStringList sharedQueue = *queue;
    QVERIFY(!sharedQueue.isDetached());
    // After the widget only the manager holds the feature list.
    const QWeakPointer<QVector<Pko::FeaturePtr>> features = widget->m_Features;
    // Deleting a locked mutex warns.
    mutex->lock();

    {
        MessageCapture capture;
        widget.reset();
        QCOMPARE(capture.MessagesWith("mutex"), QStringList());
    }

    QVERIFY(!timer.isNull());
    QVERIFY(!sharedQueue.isDetached());
    QVERIFY(!features.isNull());
    // Still usable, and now the test's to free.
    std::unique_ptr<QTimer> ownedTimer(timer.data());
    std::unique_ptr<QMutex> ownedMutex(mutex);
    std::unique_ptr<QStringList> ownedQueue(queue);
    std::unique_ptr<FeatureManager> ownedManager(manager);
    ownedMutex->unlock();
    QCOMPARE(*ownedQueue, QStringList() << "kept");
    QCOMPARE(ownedManager->GetValue("Alpha"), 1.0);
}

void TestBaseTabPluginWidget::shouldFillAComboWithTheAvailableEntries()
{
    Sim::SimCameraPtr camera = BuildCamera();
    QVERIFY(camera);
    RecordingTabWidget widget(ListFeatures(camera), Watched());
    QComboBox combo;
    combo.addItems(QStringList() << "old1"
                                 << "old2"
                                 << "old3");
    combo.setEnabled(false);

    QCOMPARE(widget.FillComboFromFeature("Gamma", &combo, false), true);
    QCOMPARE(combo.count(), 2);
    QCOMPARE(combo.itemText(0), QString("X"));
    QCOMPARE(combo.itemText(1), QString("Y"));
    QCOMPARE(combo.currentIndex(), 1);
    QVERIFY(combo.isEnabled());
    QVERIFY(!combo.itemData(0, Qt::ToolTipRole).isValid());

    QCOMPARE(widget.FillComboFromFeature("NotOnThisCamera", &combo, true), false);
    QCOMPARE(combo.count(), 0);
    QCOMPARE(combo.currentIndex(), -1);
    QVERIFY(!combo.isEnabled());
}

void TestBaseTabPluginWidget::shouldGiveEachItemItsTextAsToolTip()
{
    Sim::SimCameraPtr camera = BuildCamera();
    QVERIFY(camera);
    RecordingTabWidget widget(ListFeatures(camera), Watched());
    QComboBox combo;

    QCOMPARE(widget.FillComboFromFeature("Gamma", &combo, true), true);
    QCOMPARE(combo.count(), 2);
    QCOMPARE(combo.itemData(0, Qt::ToolTipRole).toString(), QString("X"));
    QCOMPARE(combo.itemData(1, Qt::ToolTipRole).toString(), QString("Y"));
}

void TestBaseTabPluginWidget::shouldSelectNothingWhenTheCurrentEntryIsNotAvailable()
{
    Sim::SimCameraPtr camera = BuildCamera();
    QVERIFY(camera);
    RecordingTabWidget widget(ListFeatures(camera), Watched());
    QComboBox combo;

    QCOMPARE(widget.FillComboFromFeature("Orphan", &combo, false), true);
    QCOMPARE(combo.count(), 1);
    QCOMPARE(combo.itemText(0), QString("M"));
    QCOMPARE(combo.currentIndex(), -1);
}

void TestBaseTabPluginWidget::shouldDisableTheComboOfAReadOnlyFeature()
{
    Sim::SimCameraPtr camera = BuildCamera();
    QVERIFY(camera);
    RecordingTabWidget widget(ListFeatures(camera), Watched());
    QComboBox combo;

    QCOMPARE(widget.FillComboFromFeature("Fixed", &combo, false), false);
    QCOMPARE(combo.count(), 2);
    QCOMPARE(combo.currentText(), QString("Q"));
    QVERIFY(!combo.isEnabled());

    camera->InjectFault("Gamma", Sim::Operation::IsWritable, kFault);
    QCOMPARE(widget.FillComboFromFeature("Gamma", &combo, false), false);
    QCOMPARE(combo.currentText(), QString("Y"));
    QVERIFY(!combo.isEnabled());
}

void TestBaseTabPluginWidget::shouldRefuseANullCombo()
{
    Sim::SimCameraPtr camera = BuildCamera();
    QVERIFY(camera);
    RecordingTabWidget widget(ListFeatures(camera), Watched());
    QCOMPARE(widget.FillComboFromFeature("Gamma", nullptr, true), false);
}

void TestBaseTabPluginWidget::shouldLoadTheTranslationOfTheFullLocaleName()
{
    QCOMPARE(QLocale::system().name(), QString("de_AT"));
    Sim::SimCameraPtr camera = BuildCamera();
    QVERIFY(camera);
    RecordingTabWidget widget(ListFeatures(camera), Watched());
    const QString full = PlaceTranslation("tstbasetabfull_de_AT.qm");
    const QString language = PlaceTranslation("tstbasetabfull_de.qm");
    QVERIFY(!full.isEmpty() && !language.isEmpty());

    std::unique_ptr<QTranslator> translator(widget.LoadTranslator("tstbasetabfull"));
    QFile::remove(full);
    QFile::remove(language);
    QVERIFY(translator);
    QVERIFY(translator->parent() == nullptr);
    QVERIFY(translator->filePath().endsWith("plugins/tstbasetabfull_de_AT.qm"));
    QCOMPARE(translator->translate("TestBaseTabPluginWidget", "Hello"), QString("Servus"));
}

void TestBaseTabPluginWidget::shouldFallBackToTheLanguageTranslation()
{
    Sim::SimCameraPtr camera = BuildCamera();
    QVERIFY(camera);
    RecordingTabWidget widget(ListFeatures(camera), Watched());
    QFile::remove("plugins/tstbasetablang_de_AT.qm");
    const QString language = PlaceTranslation("tstbasetablang_de.qm");
    QVERIFY(!language.isEmpty());

    std::unique_ptr<QTranslator> translator(widget.LoadTranslator("tstbasetablang"));
    QFile::remove(language);
    QVERIFY(translator);
    QVERIFY(translator->filePath().endsWith("plugins/tstbasetablang_de.qm"));
    QCOMPARE(translator->translate("TestBaseTabPluginWidget", "Hello"), QString("Servus"));
}

void TestBaseTabPluginWidget::shouldReturnAnEmptyTranslatorWhenNoFileExists()
{
    Sim::SimCameraPtr camera = BuildCamera();
    QVERIFY(camera);
    RecordingTabWidget widget(ListFeatures(camera), Watched());

    std::unique_ptr<QTranslator> translator(widget.LoadTranslator("tstbasetabnone"));
    QVERIFY(translator);
    QVERIFY(translator->parent() == nullptr);
    QVERIFY(translator->isEmpty());
    QVERIFY(translator->filePath().isEmpty());
    QCOMPARE(translator->translate("TestBaseTabPluginWidget", "Hello"), QString());
}

int main(int argc, char* argv[])
{
    // The translator tests need a known system locale; it is read once, on first use.
    qputenv("LC_ALL", "de_AT.UTF-8");
    QApplication app(argc, argv);
    TestBaseTabPluginWidget test;
    QTEST_SET_MAIN_SOURCE_PATH
    return QTest::qExec(&test, argc, argv);
}

#include "tst_basetabpluginwidget.moc"
