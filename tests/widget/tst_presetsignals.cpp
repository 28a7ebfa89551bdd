// What the "Edge", "Level" and "Bulk" presets make a camera do: the frames
// that pulses on the chosen input produce, on every model with triggers.
// The cameras run on the manual clock, so the pulse timing is exact.

#include "OutputTestSupport.h"

#include <PkoAPI/PkoAPI.h>

#include <QPushButton>
#include <QtTest>

using namespace OutputTest;
using ZMT::PkoAPI::Frame;

namespace {

// The input line behind a trigger source as the camera names it: the routed
// line for "InputLines", the K-th input for "LineK" on the mask families.
std::string InputFor(const SimCameraPtr& camera, const std::string& source)
{
    const std::vector<std::string> lines = camera->Lines();
    if (source == "InputLines")
        return "Line0";  // the presets route Line0
    if (std::find(lines.begin(), lines.end(), source) != lines.end())
        return source;
    if (source.rfind("Line", 0) == 0) {
        const int k = std::atoi(source.c_str() + 4);
        if (k >= 1 && k <= static_cast<int>(lines.size()))
            return lines[k - 1];
    }
    return std::string();
}

// The trigger source of the first frame trigger that is on.
std::string FrameTriggerInput(const SimCameraPtr& camera)
{
    for (const char* entry : {"FrameStart", "ExposureStart", "ExposureActive"}) {
        if (camera->ValueText("TriggerMode", entry) == "On")
            return InputFor(camera, camera->ValueText("TriggerSource", entry));
    }
    return std::string();
}

long long Counter(const SimCameraPtr& camera, const std::string& counter)
{
    return QString::fromStdString(camera->ValueText("CounterValue", counter)).toLongLong();
}

}  // namespace

class TestPresetSignals : public QObject {
    Q_OBJECT

private:
    SimCameraPtr m_Camera;
    std::unique_ptr<Tab> m_Tab;

    // The tab on a camera of that model, on the manual clock, after a click
    // on a preset.
    bool Preset(const QString& model, const QString& preset)
    {
        m_Camera = OpenModel(model);
        if (!m_Camera)
            return false;
        m_Camera->UseManualClock();
        m_Tab.reset(new Tab(m_Camera));
        if (!m_Tab->Show())
            return false;
        QPushButton* button = m_Tab->Find<QPushButton>("pb_" + preset);
        if (button == nullptr)
            return false;
        QTest::mouseClick(button, Qt::LeftButton);
        return true;
    }

    // Preset, then the camera acquiring; the input whose pulses trigger
    // frames, "" when any of that failed.
    std::string AcquiringAfterPreset(const QString& model, const QString& preset)
    {
        if (!Preset(model, preset))
            return std::string();
        const std::string input = FrameTriggerInput(m_Camera);
        if (input.empty() || m_Camera->StartAcquisition() != 0)
            return std::string();
        return input;
    }

private slots:
    void cleanup()
    {
        m_Tab.reset();
        m_Camera.reset();
    }

    void shouldMakeOneFramePerEdgeAfterTheEdgePreset_data() { TestSupport::AddTriggerModels(); }

    void shouldMakeOneFramePerEdgeAfterTheEdgePreset()
    {
        QFETCH(QString, model);
        const std::string input = AcquiringAfterPreset(model, "Edge");
        QVERIFY2(!input.empty(), "no frame trigger is on, or the acquisition did not start");
        QCOMPARE(m_Camera->AdvanceClock(200.0), 0);
        QCOMPARE(m_Camera->FramesDelivered(), 0ULL);
        QCOMPARE(m_Camera->StartPulses(input, 50.0, 20.0, 10), 0);
        QCOMPARE(m_Camera->AdvanceClock(600.0), 0);
        QCOMPARE(m_Camera->FramesDelivered(), 10ULL);
        QCOMPARE(Counter(m_Camera, "Counter0"), 10LL);
        QCOMPARE(Counter(m_Camera, "Counter1"), 0LL);
    }

    void shouldExposeAsLongAsThePulseAfterTheLevelPreset_data() { TestSupport::AddTriggerModels(); }

    void shouldExposeAsLongAsThePulseAfterTheLevelPreset()
    {
        QFETCH(QString, model);
        const std::string input = AcquiringAfterPreset(model, "Level");
        QVERIFY2(!input.empty(), "no frame trigger is on, or the acquisition did not start");
        // Every family's Level preset triggers on a low input: idle is high.
        QCOMPARE(m_Camera->DriveInput(input, true), 0);
        QCOMPARE(m_Camera->AdvanceClock(100.0), 0);
        QCOMPARE(m_Camera->FramesDelivered(), 0ULL);
        for (const double pulseMs : {3.0, 7.0}) {
            QCOMPARE(m_Camera->DriveInput(input, false), 0);
            QCOMPARE(m_Camera->AdvanceClock(pulseMs), 0);
            QCOMPARE(m_Camera->DriveInput(input, true), 0);
            QCOMPARE(m_Camera->AdvanceClock(50.0), 0);
            Frame frame;
            QCOMPARE(m_Camera->GetLatestFrame(frame), 0);
            QCOMPARE(frame.exposureUs, pulseMs * 1000.0);
            QCOMPARE(frame.trigger, input);
        }
        QCOMPARE(m_Camera->FramesDelivered(), 2ULL);
    }

    void shouldTakeABurstOfTenFramesPerTriggerAfterTheBulkPreset_data() { TestSupport::AddTriggerModels(); }

    void shouldTakeABurstOfTenFramesPerTriggerAfterTheBulkPreset()
    {
        QFETCH(QString, model);
        QVERIFY(Preset(model, "Bulk"));
        QCOMPARE(m_Camera->ValueText("TriggerMode", "AcquisitionStart"), std::string("On"));
        const std::string input = InputFor(m_Camera, m_Camera->ValueText("TriggerSource", "AcquisitionStart"));
        QVERIFY(!input.empty());
        QCOMPARE(m_Camera->StartAcquisition(), 0);
        QCOMPARE(m_Camera->AdvanceClock(500.0), 0);
        QCOMPARE(m_Camera->FramesDelivered(), 0ULL);
        QCOMPARE(m_Camera->ValueText("AcquisitionStatus", "AcquisitionTriggerWait"), std::string("true"));
        QCOMPARE(m_Camera->StartPulses(input, 20.0, 10.0, 1), 0);
        QCOMPARE(m_Camera->AdvanceClock(2000.0), 0);
        QCOMPARE(m_Camera->FramesDelivered(), 10ULL);
        QVERIFY(!m_Camera->IsAcquiring());
    }

    void shouldMakeFramesFromAWiredUserOutputToggledInTheTab()
    {
        m_Camera = LineModelWithLine3Source("SIM-LINE-SFNC", "UserOutput1");
        QVERIFY(m_Camera);
        m_Camera->UseManualClock();
        QCOMPARE(m_Camera->Wire("Line3", "Line2"), 0);
        for (const auto& write :
             {std::make_pair("TriggerSelector", "FrameStart"), std::make_pair("TriggerMode", "On"),
              std::make_pair("TriggerSource", "Line2"), std::make_pair("TriggerActivation", "RisingEdge")}) {
            QCOMPARE(m_Camera->ChangeFromCamera(write.first, write.second), 0);
        }
        m_Tab.reset(new Tab(m_Camera));
        QVERIFY(m_Tab->Show());
        QCOMPARE(m_Camera->StartAcquisition(), 0);
        QCheckBox* userValue = m_Tab->UserValue(1);
        QVERIFY(userValue->isEnabled());
        for (int press = 1; press <= 3; ++press) {
            ClickCheckBox(userValue);
            QVERIFY(userValue->isChecked());
            ClickCheckBox(userValue);
            QVERIFY(!userValue->isChecked());
            QCOMPARE(m_Camera->AdvanceClock(50.0), 0);
            QCOMPARE(m_Camera->FramesDelivered(), static_cast<unsigned long long>(press));
        }
        Frame frame;
        QCOMPARE(m_Camera->GetLatestFrame(frame), 0);
        QCOMPARE(frame.trigger, std::string("Line2"));
    }
};

QTEST_MAIN(TestPresetSignals)
#include "tst_presetsignals.moc"
