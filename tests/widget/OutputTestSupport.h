#ifndef OUTPUTTESTSUPPORT_H
#define OUTPUTTESTSUPPORT_H

// Helpers of the output-side tests of the "Trigger IO" tab: a tab on a
// simulated camera, the camera's journal as text, a capture of Qt's message
// stream and user input on the row controls.

#include "IOTriggerWidget.h"
#include "SimTestSupport.h"

#include <PkoAPI/PkoAPI.h>
#include <PkoAPI/Sim/CameraBuilder.h>

#include <QCheckBox>
#include <QComboBox>
#include <QCoreApplication>
#include <QGridLayout>
#include <QGroupBox>
#include <QLabel>
#include <QSignalSpy>
#include <QStringList>
#include <QVBoxLayout>
#include <QVector>
#include <QtTest>

#include <memory>
#include <optional>
#include <string>
#include <utility>
#include <vector>

namespace OutputTest {

using TestSupport::ChangeFromCamera;
using TestSupport::ChooseWithKeys;
using TestSupport::FeatureList;
using TestSupport::FeaturePtr;
using TestSupport::FeaturesOf;
using TestSupport::HeldValue;
using TestSupport::ItemTexts;
using TestSupport::JournalEntry;
using TestSupport::MessageCapture;
using TestSupport::Opened;
using TestSupport::OpenModel;
using TestSupport::SimCameraPtr;

// The generation-1 line models, as the "model" column of a data table.
inline void AddLineModels()
{
    QTest::addColumn<QString>("model");
    QTest::newRow("line routing") << "SIM-LINE-ROUTING";
    QTest::newRow("line sfnc") << "SIM-LINE-SFNC";
}

// The generation-2 and -3 models, as the "model" column of a data table,
// with the prefix of their output features ("SyncOut", "LineOut").
inline void AddMaskModels()
{
    QTest::addColumn<QString>("model");
    QTest::addColumn<QString>("prefix");
    QTest::newRow("sync out") << "SIM-SYNCOUT"
                              << "SyncOut";
    QTest::newRow("line out") << "SIM-LINEOUT"
                              << "LineOut";
}

// A generation-1 model, open, with "Line3" driven by source; null when the
// camera takes no such source.
inline SimCameraPtr LineModelWithLine3Source(const QString& model, const std::string& source)
{
    SimCameraPtr camera = OpenModel(model);
    if (camera && camera->ChangeFromCamera("LineSource", source, "Line3") != 0)
        return SimCameraPtr();
    return camera;
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
    return TestSupport::JournalText(camera->Journal());
}

// The same with each write's result code: "Feature=value -> code".
inline QStringList WritesWithResults(const SimCameraPtr& camera)
{
    return TestSupport::JournalText(camera->Journal(), TestSupport::JournalStyle::WithResult);
}

// The value the camera holds, at one entry of the feature's selector.
inline QString CameraValue(const SimCameraPtr& camera, const char* feature, const char* selectorEntry = "")
{
    return QString::fromStdString(camera->ValueText(feature, selectorEntry));
}

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

// Ticks the check box where a user clicks it.
inline void ClickCheckBox(QCheckBox* box)
{
    TestSupport::ClickCheckBox(box, TestSupport::CheckBoxSpot::ClickArea);
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
