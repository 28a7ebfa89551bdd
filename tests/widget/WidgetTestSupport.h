#ifndef WIDGETTESTSUPPORT_H
#define WIDGETTESTSUPPORT_H

#include "IOTriggerWidget.h"
#include "SimTestSupport.h"

#include <PkoAPI/PkoAPI.h>
#include <PkoAPI/Sim/CameraBuilder.h>
#include <PkoAPI/Sim/SimCamera.h>

#include <QCheckBox>
#include <QComboBox>
#include <QEvent>
#include <QHash>
#include <QMutexLocker>
#include <QSharedPointer>
#include <QStringList>
#include <QTimer>
#include <QVBoxLayout>
#include <QVector>
#include <QtTest>

#include <memory>
#include <string>
#include <utility>
#include <vector>

// One "Trigger IO" tab on one simulated camera, inside a page as the viewer
// hands it out, with what the widget tests need around it: cameras made to
// measure, the camera's write journal as text, choices made in combo boxes
// with the real mouse, and recorders of debug messages and enabled states.
// Header-only, so that every test executable of this folder can use it.
class WidgetTestSupport {
public:
    typedef TestSupport::FeatureList FeatureList;

    // The tab with its protected members in reach of the tests.
    class Tab : public IOTriggerWidget {
    public:
        // Throws what IOTriggerWidget throws.
        Tab(const FeatureList& features, QWidget* parent) : IOTriggerWidget(features, parent) {}

        const QStringList& ObservedFeatures() const { return m_ObservedFeatures; }
        // Names queued as changed and not yet handed to the refresh.
        QStringList ChangedFeatures() const
        {
            QMutexLocker lock(m_Mutex);
            return *m_ChangedFeatures;
        }
        void ClearChangedFeatures()
        {
            QMutexLocker lock(m_Mutex);
            m_ChangedFeatures->clear();
        }
        // Leaves the re-reading of the controls to the test alone.
        void StopRefreshTimer() { m_UpdateTimer->stop(); }
    };

    // Records every change of the enabled state of the widgets it watches,
    // as "enabled"/"disabled" per widget in the order they happened.
    class EnabledChanges : public QObject {
    public:
        explicit EnabledChanges(const QList<QWidget*>& widgets)
        {
            for (QWidget* widget : widgets)
                widget->installEventFilter(this);
        }
        QStringList Of(const QWidget* widget) const { return m_Changes.value(widget); }

    protected:
        bool eventFilter(QObject* watched, QEvent* event) override
        {
            QWidget* widget = qobject_cast<QWidget*>(watched);
            if (widget != nullptr && event->type() == QEvent::EnabledChange)
                m_Changes[widget].append(widget->isEnabled() ? "enabled" : "disabled");
            return QObject::eventFilter(watched, event);
        }

    private:
        QHash<const QWidget*, QStringList> m_Changes;
    };

    // A camera made to measure by Build. An empty entry list leaves that
    // feature out.
    struct CameraParts {
        std::vector<std::string> selectors{"FrameStart", "AcquisitionStart"};
        std::vector<std::string> modes{"Off", "On"};
        std::vector<std::string> sources{"Line0", "Line1", "Software"};
        std::string source;  // "": the first entry
        std::vector<std::string> activations{"RisingEdge", "FallingEdge"};
        std::vector<std::string> acquisitionModes{"Continuous", "SingleFrame", "MultiFrame"};
        bool acquisitionModeReadOnly = false;
        bool frameCountReadOnly = false;
        std::vector<std::string> exposureModes;
        bool exposureModeReadOnly = false;
        std::vector<std::string> exposureAutos;
        // "LineSelector" entries with their "LineMode"; empty: no line selector.
        std::vector<std::pair<std::string, std::string>> lines{{"Line0", "Input"}, {"Line1", "Output"}};
        bool routing = false;
        // Further integer features (0..15), such as "LineOutLevels".
        std::vector<std::string> integers;
    };

    // A closed camera of those parts; null, with the builder's reason in
    // error, when the builder refuses them.
    static ZMT::PkoAPI::Sim::SimCameraPtr Build(const std::string& id, const CameraParts& parts, std::string& error)
    {
        using ZMT::PkoAPI::Sim::FeatureBuilder;
        ZMT::PkoAPI::Sim::CameraBuilder builder(id, id);
        if (!parts.selectors.empty())
            builder.AddEnumeration("TriggerSelector", parts.selectors, parts.selectors.front())
                .Selects({"TriggerMode", "TriggerSource", "TriggerActivation"});
        if (!parts.modes.empty())
            builder.AddEnumeration("TriggerMode", parts.modes, parts.modes.front());
        if (!parts.sources.empty())
            builder.AddEnumeration("TriggerSource", parts.sources,
                                   parts.source.empty() ? parts.sources.front() : parts.source);
        if (!parts.activations.empty())
            builder.AddEnumeration("TriggerActivation", parts.activations, parts.activations.front());
        builder.AddCommand("TriggerSoftware");
        if (!parts.acquisitionModes.empty()) {
            FeatureBuilder mode =
                builder.AddEnumeration("AcquisitionMode", parts.acquisitionModes, parts.acquisitionModes.front());
            if (parts.acquisitionModeReadOnly)
                mode.ReadOnly();
        }
        FeatureBuilder count = builder.AddInteger("AcquisitionFrameCount", 1, 1, 1000);
        if (parts.frameCountReadOnly)
            count.ReadOnly();
        if (!parts.exposureModes.empty()) {
            FeatureBuilder mode =
                builder.AddEnumeration("ExposureMode", parts.exposureModes, parts.exposureModes.front());
            if (parts.exposureModeReadOnly)
                mode.ReadOnly();
        }
        if (!parts.exposureAutos.empty())
            builder.AddEnumeration("ExposureAuto", parts.exposureAutos, parts.exposureAutos.front());
        if (!parts.lines.empty()) {
            std::vector<std::string> names;
            for (const auto& line : parts.lines)
                names.push_back(line.first);
            std::vector<std::string> perLine{"LineMode"};
            if (parts.routing)
                perLine.push_back("LineRouting");
            builder.AddEnumeration("LineSelector", names, names.front()).Selects(perLine);
            FeatureBuilder mode = builder.AddEnumeration("LineMode", {"Input", "Output"}, "Input");
            for (const auto& line : parts.lines) {
                if (line.second != "Input")
                    mode.ValueAt(line.first, line.second);
            }
            if (parts.routing)
                builder.AddEnumeration("LineRouting", {"Off", "Trigger"}, "Off");
        }
        for (const std::string& name : parts.integers)
            builder.AddInteger(name, 0, 0, 15);
        ZMT::PkoAPI::Sim::SimCameraPtr camera = builder.Build();
        error = builder.Error();
        return camera;
    }

    // A new camera of a ready-made model; null for an unknown ID.
    static ZMT::PkoAPI::Sim::SimCameraPtr Model(const std::string& id) { return ZMT::PkoAPI::Sim::CreateModel(id); }

    // The names of the open camera's features, in the camera's order.
    static QStringList FeatureNamesOf(const ZMT::PkoAPI::Sim::SimCameraPtr& camera)
    {
        QStringList names;
        const FeatureList features = TestSupport::FeaturesOf(camera);
        for (const ZMT::PkoAPI::FeaturePtr& feature : *features) {
            unsigned int length = 0;
            if (feature->GetName(nullptr, length) != 0)
                continue;
            std::string name(length + 1, '\0');
            if (feature->GetName(&name[0], length) == 0)
                names << QString::fromLatin1(name.c_str());
        }
        return names;
    }

    // For QVERIFY2 when two write lists differ: both in full.
    static QString Difference(const QStringList& actual, const QStringList& expected)
    {
        return "\n   actual:\n      " + actual.join("\n      ") + "\n   expected:\n      " + expected.join("\n      ");
    }

    // Opens the camera and builds the tab on it in a new page (not shown).
    // Throws what the tab's constructor throws; nothing is left behind then.
    explicit WidgetTestSupport(const ZMT::PkoAPI::Sim::SimCameraPtr& camera) : m_Camera(camera), m_Page(new QWidget)
    {
        m_Camera->Open();
        m_Tab = new Tab(TestSupport::FeaturesOf(m_Camera), m_Page.get());
        QVBoxLayout* layout = new QVBoxLayout(m_Page.get());
        layout->addWidget(m_Tab);
        m_Page->resize(760, 1000);
    }
    WidgetTestSupport(const WidgetTestSupport&) = delete;
    WidgetTestSupport& operator=(const WidgetTestSupport&) = delete;

    const ZMT::PkoAPI::Sim::SimCameraPtr& Camera() const { return m_Camera; }
    Tab* TabWidget() const { return m_Tab; }
    QWidget* Page() const { return m_Page.get(); }

    // The tab's child of that object name, null when it was not built.
    template <class T>
    T* Find(const QString& objectName) const
    {
        return m_Tab->findChild<T*>(objectName);
    }

    // Shows the page as the viewer does (the tab re-reads every control),
    // then stops the refresh timer. False when the window was never exposed.
    bool Show()
    {
        m_Page->show();
        const bool exposed = QTest::qWaitForWindowExposed(m_Page.get());
        m_Tab->StopRefreshTimer();
        return exposed;
    }

    // One tick of the refresh timer, after the camera's reports so far have
    // reached the tab.
    void Refresh()
    {
        TestSupport::DeliverNotifications(m_Camera, 5000);
        QMetaObject::invokeMethod(m_Tab, "updateTimer", Qt::DirectConnection);
    }

    void ClearJournal() { m_Camera->ClearJournal(); }

    // The writes that reached the camera since the last ClearJournal, one
    // line each: "Feature=value", " refused <code>" appended when the camera
    // refused it, the writer in brackets in front when it is not the client.
    QStringList Writes() const
    {
        return TestSupport::JournalText(m_Camera->Journal(), TestSupport::JournalStyle::Attributed);
    }

    // Value of a feature in the camera, at a selector entry when given.
    QString CameraValue(const std::string& feature, const std::string& selectorEntry = std::string()) const
    {
        return QString::fromStdString(m_Camera->ValueText(feature, selectorEntry));
    }

    // The names the tab watches, in its order ("UserOutSelector", not
    // "UserOutputSelector", on purpose).
    static QStringList WatchedFeatureNames()
    {
        return QStringList{
            "ExposureAuto",    "ExposureMode",     "LineOutLevels",         "LineOutPolarity", "LineOutSource",
            "LineMode",        "UserOutputValue",  "UserOutSelector",       "SyncOutLevels",   "LineStatus",
            "SyncOutPolarity", "LineInverter",     "SyncOutSource",         "LineSource",      "LineSelector",
            "LineRouting",     "AcquisitionMode",  "AcquisitionFrameCount", "TriggerSelector", "TriggerMode",
            "TriggerSource",   "TriggerActivation"};
    }

private:
    ZMT::PkoAPI::Sim::SimCameraPtr m_Camera;
    std::unique_ptr<QWidget> m_Page;  // owns the tab
    Tab* m_Tab = nullptr;
};

#endif
