#ifndef OUTPUTTESTSUPPORT_H
#define OUTPUTTESTSUPPORT_H

// Helpers of the output-side tests of the "Trigger IO" tab: a tab on a
// simulated camera, the camera's journal as text, a capture of Qt's message
// stream and user input on the row controls.

#include "IOTriggerWidget.h"

#include <PkoAPI/PkoAPI.h>
#include <PkoAPI/Sim/CameraBuilder.h>

#include <QAbstractItemView>
#include <QCheckBox>
#include <QComboBox>
#include <QCoreApplication>
#include <QGridLayout>
#include <QGroupBox>
#include <QLabel>
#include <QMutex>
#include <QMutexLocker>
#include <QPair>
#include <QSignalSpy>
#include <QStringList>
#include <QStyle>
#include <QStyleOptionButton>
#include <QVBoxLayout>
#include <QVector>
#include <QtTest>

#include <memory>
#include <optional>
#include <string>
#include <utility>
#include <vector>

namespace OutputTest {

using ZMT::PkoAPI::FeaturePtr;
using ZMT::PkoAPI::Sim::JournalEntry;
using ZMT::PkoAPI::Sim::SimCameraPtr;

typedef QSharedPointer<QVector<FeaturePtr>> FeatureList;

// The camera opened; null stays null.
inline SimCameraPtr Opened(const SimCameraPtr& camera)
{
    if (camera)
        camera->Open();
    return camera;
}

inline SimCameraPtr OpenModel(const QString& id)
{
    return Opened(ZMT::PkoAPI::Sim::CreateModel(id.toStdString()));
}

// The feature list as the host hands it to the tab; empty for a closed camera.
inline FeatureList FeaturesOf(const SimCameraPtr& camera)
{
    std::vector<FeaturePtr> features;
    camera->GetFeatures(features);
    FeatureList list(new QVector<FeaturePtr>());
    for (const FeaturePtr& feature : features)
        list->append(feature);
    return list;
}

// A camera with "Line*" outputs, declared line by line.
struct LineCamera {
    std::vector<std::string> lines;    // entries of "LineSelector", the first one selected
    std::vector<std::string> outputs;  // lines whose "LineMode" is "Output"; the others are inputs
    std::vector<std::string> sources{"Off", "ExposureActive", "UserOutput0", "UserOutput1", "Direct"};
    std::vector<std::pair<std::string, std::string>> sourceAt;  // line, "LineSource" (default: the first source)
    std::vector<std::string> userOutputs;  // entries of "UserOutputSelector"; none: no such feature
    std::string userOutput;                // its current entry (default: the first)
    bool floatLevels = false;              // "LineInverter" and "LineStatus" as floats, not booleans
    bool statusReadOnly = false;
    bool withSyncOutLevels = false;  // a "SyncOutLevels" mask beside the lines
    // Every read of "LineMode" puts a living MessageCapture back in place, so
    // that what the tab writes while it is being built is seen.
    bool captureOnModeRead = false;

    // The camera built and opened; null when the builder refuses the declaration.
    SimCameraPtr Open() const;
};

// A camera with bit-mask outputs: "SyncOut*" names, or "LineOut*" ones.
struct MaskCamera {
    std::string prefix = "SyncOut";  // "SyncOut" or "LineOut"
    int outputs = 4;
    std::vector<std::string> sources{"GPO", "Exposing"};
    std::string source = "GPO";  // of every output
    bool levelsReadOnly = false;
    long long levelsMaximum = 15;

    std::string Selector() const { return prefix + "Selector"; }
    std::string Source() const { return prefix + "Source"; }
    std::string Polarity() const { return prefix + "Polarity"; }
    std::string Levels() const { return prefix + "Levels"; }
    std::string Output(int i) const { return prefix + std::to_string(i + 1); }

    // The camera built and opened; null when the builder refuses the declaration.
    SimCameraPtr Open() const;
};

// Every write the camera received since the journal was cleared, as
// "Feature=value", oldest first.
inline QStringList Writes(const SimCameraPtr& camera)
{
    QStringList writes;
    for (const JournalEntry& entry : camera->Journal())
        writes << QString::fromStdString(entry.feature + "=" + entry.value);
    return writes;
}

// The same with each write's result code: "Feature=value -> code".
inline QStringList WritesWithResults(const SimCameraPtr& camera)
{
    QStringList writes;
    for (const JournalEntry& entry : camera->Journal())
        writes << QString::fromStdString(entry.feature + "=" + entry.value + " -> " + std::to_string(entry.result));
    return writes;
}

// The value the camera holds, at one entry of the feature's selector.
inline QString CameraValue(const SimCameraPtr& camera, const char* feature, const char* selectorEntry = "")
{
    return QString::fromStdString(camera->ValueText(feature, selectorEntry));
}

// Collects what is written to Qt's message stream while it lives. The tab's
// base silences the stream when it is constructed, so a capture is made after
// the tab, or put back with Reassert().
class MessageCapture {
public:
    MessageCapture()
    {
        {
            QMutexLocker lock(&State().mutex);
            State().messages.clear();
            State().active = true;
        }
        m_Previous = qInstallMessageHandler(&MessageCapture::Record);
    }
    ~MessageCapture()
    {
        qInstallMessageHandler(m_Previous);
        QMutexLocker lock(&State().mutex);
        State().active = false;
    }
    MessageCapture(const MessageCapture&) = delete;
    MessageCapture& operator=(const MessageCapture&) = delete;

    // The lines of the debug stream, where the tab reports its errors. (The
    // platform's own warnings, e.g. about popups, are left out.)
    QStringList Texts() const { return Of(QtDebugMsg); }
    QStringList Warnings() const { return Of(QtWarningMsg); }
    void Clear()
    {
        QMutexLocker lock(&State().mutex);
        State().messages.clear();
    }
    // Installs the capture again after someone replaced the handler; does
    // nothing while no capture lives. Safe on any thread.
    static void Reassert()
    {
        QMutexLocker lock(&State().mutex);
        if (State().active)
            qInstallMessageHandler(&MessageCapture::Record);
    }

private:
    struct Shared {
        QMutex mutex;
        QVector<QPair<QtMsgType, QString>> messages;
        bool active = false;
    };
    static Shared& State()
    {
        static Shared shared;
        return shared;
    }
    static void Record(QtMsgType type, const QMessageLogContext&, const QString& text)
    {
        QMutexLocker lock(&State().mutex);
        State().messages.append(qMakePair(type, text));
    }
    QStringList Of(QtMsgType type) const
    {
        QMutexLocker lock(&State().mutex);
        QStringList texts;
        for (const auto& message : State().messages) {
            if (message.first == type)
                texts << message.second;
        }
        return texts;
    }

    QtMessageHandler m_Previous = nullptr;
};

inline SimCameraPtr LineCamera::Open() const
{
    using namespace ZMT::PkoAPI::Sim;
    CameraBuilder builder("SIM-TEST-LINES", "Test Lines");
    builder.AddEnumeration("LineSelector", lines, lines.front())
        .Selects({"LineMode", "LineSource", "LineInverter", "LineStatus"});
    FeatureBuilder mode = builder.AddEnumeration("LineMode", {"Input", "Output"}, "Input");
    mode.ReadOnly();
    for (const std::string& line : outputs)
        mode.ValueAt(line, "Output");
    if (captureOnModeRead) {
        mode.ComputedBy([](const Context&) {
            MessageCapture::Reassert();
            return std::optional<std::string>();
        });
    }
    FeatureBuilder source = builder.AddEnumeration("LineSource", sources, sources.front());
    for (const auto& lineSource : sourceAt)
        source.ValueAt(lineSource.first, lineSource.second);
    if (floatLevels) {
        builder.AddFloat("LineInverter", 0.0, 0.0, 1.0);
        FeatureBuilder status = builder.AddFloat("LineStatus", 0.0, 0.0, 1.0);
        if (statusReadOnly)
            status.ReadOnly();
    } else {
        builder.AddBoolean("LineInverter", false);
        FeatureBuilder status = builder.AddBoolean("LineStatus", false);
        if (statusReadOnly)
            status.ReadOnly();
    }
    if (!userOutputs.empty()) {
        builder.AddEnumeration("UserOutputSelector", userOutputs, userOutput.empty() ? userOutputs.front() : userOutput)
            .Selects({"UserOutputValue"});
        builder.AddBoolean("UserOutputValue", false);
    }
    if (withSyncOutLevels)
        builder.AddInteger("SyncOutLevels", 0, 0, 15);
    return Opened(builder.Build());
}

inline SimCameraPtr MaskCamera::Open() const
{
    using namespace ZMT::PkoAPI::Sim;
    std::vector<std::string> names;
    for (int i = 0; i < outputs; ++i)
        names.push_back(Output(i));
    CameraBuilder builder("SIM-TEST-MASK", "Test Mask");
    builder.AddEnumeration(Selector(), names, names.front()).Selects({Source(), Polarity()});
    builder.AddEnumeration(Source(), sources, source);
    builder.AddEnumeration(Polarity(), {"Normal", "Invert"}, "Normal");
    FeatureBuilder levels = builder.AddInteger(Levels(), 0, 0, levelsMaximum);
    if (levelsReadOnly)
        levels.ReadOnly();
    return Opened(builder.Build());
}

// Ticks the check box where a user clicks it: on its indicator.
inline void ClickCheckBox(QCheckBox* box)
{
    QStyleOptionButton option;
    option.initFrom(box);
    option.text = box->text();
    const QRect area = box->style()->subElementRect(QStyle::SE_CheckBoxClickRect, &option, box);
    QTest::mouseClick(box, Qt::LeftButton, Qt::NoModifier, area.center());
}

// Picks an entry as a user does with the keyboard: open the list, walk to the
// entry, press Return. The combo changes once, whatever lies in between.
// False when the entry does not exist or the combo did not take it.
inline bool ChooseEntry(QComboBox* combo, const QString& text)
{
    const int target = combo->findText(text);
    if (target < 0)
        return false;
    combo->showPopup();
    QAbstractItemView* list = combo->view();
    QTest::keyClick(list, Qt::Key_Home);
    for (int i = 0; i < target; ++i)
        QTest::keyClick(list, Qt::Key_Down);
    QTest::keyClick(list, Qt::Key_Return);
    return combo->currentIndex() == target;
}

inline QStringList ItemTexts(const QComboBox* combo)
{
    QStringList texts;
    for (int i = 0; i < combo->count(); ++i)
        texts << combo->itemText(i);
    return texts;
}

// A "Trigger IO" tab on a camera, inside a page as the host gives it. The
// constructor throws what the tab throws (TENotSupported).
class Tab {
public:
    explicit Tab(const SimCameraPtr& camera) : m_Camera(camera)
    {
        m_Page.resize(760, 1000);
        m_Layout = new QVBoxLayout(&m_Page);
        m_Widget.reset(new IOTriggerWidget(FeaturesOf(camera), &m_Page));
        m_Layout->addWidget(m_Widget.get());
    }

    IOTriggerWidget* Widget() const { return m_Widget.get(); }
    QWidget* Page() { return &m_Page; }

    // Shows the page and lets it settle; false when it never appeared.
    bool Show()
    {
        m_Page.show();
        const bool exposed = QTest::qWaitForWindowExposed(&m_Page);
        QCoreApplication::processEvents();
        return exposed;
    }

    // Leaves the tab and comes back, as a user switching tabs: the tab
    // re-reads every watched feature from the camera.
    void ShowAgain()
    {
        m_Page.hide();
        m_Page.show();
        QCoreApplication::processEvents();
    }

    // Hands one changed feature to the tab, as the camera's notification
    // does; false when the tab has no such slot.
    bool Report(const QString& feature)
    {
        return QMetaObject::invokeMethod(m_Widget.get(), "OnFeatureChanged", Qt::DirectConnection,
                                         Q_ARG(QString, feature), Q_ARG(QString, QString()));
    }
    // Runs one tick of the refresh timer; false when the tab has no such slot.
    bool Tick() { return QMetaObject::invokeMethod(m_Widget.get(), "updateTimer", Qt::DirectConnection); }

    template <class T>
    T* Find(const QString& name) const
    {
        return m_Widget->findChild<T*>(name);
    }
    QLabel* Label(int row) const { return Find<QLabel>(QString("l_Out_%1").arg(row)); }
    QComboBox* Source(int row) const { return Find<QComboBox>(QString("combo_OutSource_%1").arg(row)); }
    QCheckBox* Invert(int row) const { return Find<QCheckBox>(QString("cb_OutInvert_%1").arg(row)); }
    QCheckBox* Status(int row) const { return Find<QCheckBox>(QString("cb_OutStatus_%1").arg(row)); }
    QComboBox* UserSelector(int row) const { return Find<QComboBox>(QString("combo_OutUserSelector_%1").arg(row)); }
    QCheckBox* UserValue(int row) const { return Find<QCheckBox>(QString("cb_OutUserValue_%1").arg(row)); }
    QLabel* OptionalLabel(int row) const { return Find<QLabel>(QString("l_OptionalOut_%1").arg(row)); }
    QComboBox* OptionalCombo(int row) const { return Find<QComboBox>(QString("combo_OptionalOut_%1").arg(row)); }
    QGroupBox* OutputGroup() const { return Find<QGroupBox>("gb_Output"); }
    QGridLayout* OutputGrid() const { return Find<QGridLayout>("grid_Output"); }

private:
    SimCameraPtr m_Camera;
    QWidget m_Page;
    QVBoxLayout* m_Layout = nullptr;  // owned by the page
    std::unique_ptr<IOTriggerWidget> m_Widget;
};

}  // namespace OutputTest

#endif
