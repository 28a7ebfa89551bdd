#ifndef SIMTESTSUPPORT_H
#define SIMTESTSUPPORT_H

// What the tests of several folders do alike with simulated cameras: open
// one, hand its features over as the host does, read its write journal as
// text, capture Qt's message stream and act on controls as a user.
// Header-only, so that any test executable can use it.

#include <PkoAPI/PkoAPI.h>
#include <PkoAPI/Sim/SimCamera.h>

#include <QAbstractItemView>
#include <QApplication>
#include <QCheckBox>
#include <QComboBox>
#include <QCoreApplication>
#include <QMutex>
#include <QMutexLocker>
#include <QPair>
#include <QSet>
#include <QSharedPointer>
#include <QStringList>
#include <QStyle>
#include <QStyleOptionButton>
#include <QVector>
#include <QtTest>

#include <string>
#include <vector>

namespace TestSupport {

using ZMT::PkoAPI::FeaturePtr;
using ZMT::PkoAPI::Sim::JournalEntry;
using ZMT::PkoAPI::Sim::SimCameraPtr;

typedef QSharedPointer<QVector<FeaturePtr>> FeatureList;

// What Opened gives for a camera that refuses to open.
enum class WhenOpenFails { Keep, Null };

// The camera opened; null stays null.
inline SimCameraPtr Opened(const SimCameraPtr& camera, WhenOpenFails failed = WhenOpenFails::Keep)
{
    if (camera && camera->Open() != ZMT::PkoAPI::PkoErrorSuccess && failed == WhenOpenFails::Null)
        return SimCameraPtr();
    return camera;
}

// A new, open camera of that model; null for an unknown model.
inline SimCameraPtr OpenModel(const QString& id)
{
    return Opened(ZMT::PkoAPI::Sim::CreateModel(id.toStdString()));
}

// The ready-made models with trigger features, each with the name its rows
// of a data table get.
inline const QVector<QPair<QString, QString>>& TriggerModels()
{
    static const QVector<QPair<QString, QString>> models = {{"line routing", "SIM-LINE-ROUTING"},
                                                            {"line sfnc", "SIM-LINE-SFNC"},
                                                            {"sync out", "SIM-SYNCOUT"},
                                                            {"line out", "SIM-LINEOUT"}};
    return models;
}

// One row of a data table per model with trigger features, its ID in the
// column modelColumn; when flag is given, a bool column of that name too,
// true for the models in flagged.
inline void AddTriggerModels(const char* modelColumn = "model", const char* flag = nullptr,
                             const QStringList& flagged = QStringList())
{
    QTest::addColumn<QString>(modelColumn);
    if (flag != nullptr)
        QTest::addColumn<bool>(flag);
    for (const auto& model : TriggerModels()) {
        QTestData& row = QTest::newRow(qPrintable(model.first)) << model.second;
        if (flag != nullptr)
            row << flagged.contains(model.second);
    }
}

// What FeaturesOf gives when the camera lists nothing (null or not open).
enum class WhenUnlisted { Empty, Null };

// The feature of that name of any camera, simulated or not; null when the
// camera has none or cannot say.
template <class CameraPointer>
inline FeaturePtr FeatureNamed(const CameraPointer& camera, const char* name)
{
    FeaturePtr feature;
    if (!camera || camera->GetFeatureByName(name, feature) != ZMT::PkoAPI::PkoErrorSuccess)
        return FeaturePtr();
    return feature;
}

// The feature list as the host hands it to a tab.
inline FeatureList FeaturesOf(const SimCameraPtr& camera, WhenUnlisted unlisted = WhenUnlisted::Empty)
{
    std::vector<FeaturePtr> features;
    const bool listed = camera && camera->GetFeatures(features) == ZMT::PkoAPI::PkoErrorSuccess;
    if (!listed && unlisted == WhenUnlisted::Null)
        return FeatureList();
    return FeatureList(new QVector<FeaturePtr>(features.begin(), features.end()));
}

// Lets the SDK deliver every notification queued so far and the GUI thread
// take the queued signals; false when the SDK did not finish in time.
inline bool DeliverNotifications(const SimCameraPtr& camera, int timeoutMs = 3000)
{
    const bool delivered = camera->WaitForNotifications(timeoutMs);
    QCoreApplication::processEvents();
    return delivered;
}

// One value of a feature, written "Feature=value" or, at an entry of the
// feature's selector, "Feature[entry]=value".
struct FeatureValue {
    std::string feature;
    std::string entry;  // "": the feature has no selector
    std::string value;
};

// The text split in its three parts. Cannot fail: a text without "=" is a
// feature with an empty value.
inline FeatureValue ParseFeatureValue(const QString& text)
{
    const int equals = text.indexOf('=');
    QString name = equals < 0 ? text : text.left(equals);
    const QString value = equals < 0 ? QString() : text.mid(equals + 1);
    QString entry;
    const int bracket = name.indexOf('[');
    if (bracket >= 0) {
        entry = name.mid(bracket + 1, name.size() - bracket - 2);
        name = name.left(bracket);
    }
    return FeatureValue{name.toStdString(), entry.toStdString(), value.toStdString()};
}

// A change made by the camera itself, written as for ParseFeatureValue.
// Returns the SDK's code.
inline int ChangeFromCamera(const SimCameraPtr& camera, const QString& change)
{
    const FeatureValue parsed = ParseFeatureValue(change);
    return camera->ChangeFromCamera(parsed.feature, parsed.value, parsed.entry);
}

// "Feature=value" or "Feature[entry]=value" with the value the camera holds
// now, for comparing with what a test expects it to hold. Cannot fail.
inline QString HeldValue(const SimCameraPtr& camera, const QString& expected)
{
    const FeatureValue parsed = ParseFeatureValue(expected);
    return expected.section('=', 0, 0) + "=" + QString::fromStdString(camera->ValueText(parsed.feature, parsed.entry));
}

// The selectors that a tab's round trips write and restore, in this order.
inline const QStringList& SelectorNames()
{
    static const QStringList names = {"LineSelector", "SyncOutSelector", "LineOutSelector", "UserOutputSelector"};
    return names;
}

inline bool IsSelector(const QString& feature)
{
    static const QSet<QString> selectors(SelectorNames().cbegin(), SelectorNames().cend());
    return selectors.contains(feature);
}

// One journal line: "Feature=value", and " refused <code>" after it.
inline QString WriteLine(const QString& feature, const QString& value)
{
    return feature + "=" + value;
}
inline QString RefusedLine(const QString& feature, const QString& value, int errorCode)
{
    return WriteLine(feature, value) + " refused " + QString::number(errorCode);
}

// How JournalText writes each entry.
enum class JournalStyle {
    Plain,       // "Feature=value"
    WithResult,  // "Feature=value -> code"
    Attributed,  // "Feature=value", " refused <code>" when refused, "[writer] " first unless the client wrote
};

// The journal one line per write, oldest first; only that writer's writes
// when writer is not empty.
inline QStringList JournalText(const std::vector<JournalEntry>& journal, JournalStyle style = JournalStyle::Plain,
                               const std::string& writer = std::string())
{
    QStringList lines;
    for (const JournalEntry& entry : journal) {
        if (!writer.empty() && entry.writer != writer)
            continue;
        const QString feature = QString::fromStdString(entry.feature);
        const QString value = QString::fromStdString(entry.value);
        QString line = WriteLine(feature, value);
        if (style == JournalStyle::WithResult) {
            line += " -> " + QString::number(entry.result);
        } else if (style == JournalStyle::Attributed) {
            if (entry.result != 0)
                line = RefusedLine(feature, value, entry.result);
            if (entry.writer != "client")
                line.prepend("[" + QString::fromStdString(entry.writer) + "] ");
        }
        lines << line;
    }
    return lines;
}

// Collects what is written to Qt's message stream while it lives, then puts
// back the handler it replaced. A tab constructed meanwhile installs its own
// handler, so make this after the tab, or put it back with Reassert(). One
// at a time.
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

    // Every message so far, of any type, oldest first.
    QStringList Messages() const
    {
        QMutexLocker lock(&State().mutex);
        QStringList texts;
        for (const auto& message : State().messages)
            texts << message.second;
        return texts;
    }
    // The messages that contain text, oldest first.
    QStringList MessagesWith(const QString& text) const { return Messages().filter(text, Qt::CaseSensitive); }
    // Only the debug stream, where a tab reports its errors (the platform's
    // own warnings, e.g. about popups, stay out).
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

// Where ClickCheckBox clicks: the indicator alone, or the whole area that
// takes a click (indicator and text).
enum class CheckBoxSpot { Indicator, ClickArea };

inline void ClickCheckBox(QCheckBox* box, CheckBoxSpot spot)
{
    QStyleOptionButton option;
    option.initFrom(box);
    QStyle::SubElement element = QStyle::SE_CheckBoxIndicator;
    if (spot == CheckBoxSpot::ClickArea) {
        option.text = box->text();
        element = QStyle::SE_CheckBoxClickRect;
    }
    const QRect area = box->style()->subElementRect(element, &option, box);
    QTest::mouseClick(box, Qt::LeftButton, Qt::NoModifier, area.center());
}

// Opens the combo's list with a click and clicks the entry in it, as a user
// does. The combo must be shown. False when the combo has no such entry or
// the list did not take the click.
inline bool ChooseWithMouse(QComboBox* combo, const QString& text)
{
    const int row = combo->findText(text, Qt::MatchExactly | Qt::MatchCaseSensitive);
    if (row < 0)
        return false;
    QTest::mouseClick(combo, Qt::LeftButton);
    QAbstractItemView* view = combo->view();
    if (!QTest::qWaitFor([view] { return view->isVisible(); }))
        return false;
    // The open list ignores a release that comes within a double-click
    // interval of the click that opened it.
    QTest::qWait(QApplication::doubleClickInterval() + 100);
    const QRect item = view->visualRect(combo->model()->index(row, combo->modelColumn()));
    const QPoint where = item.intersected(view->viewport()->rect()).center();
    QTest::mouseClick(view->viewport(), Qt::LeftButton, Qt::NoModifier, where);
    return QTest::qWaitFor([view] { return !view->isVisible(); }) && combo->currentIndex() == row;
}

// Picks an entry as a user does with the keyboard: open the list, walk to
// the entry, press Return. The combo changes once, whatever lies in between.
// False when the entry does not exist or the combo did not take it.
inline bool ChooseWithKeys(QComboBox* combo, const QString& text)
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

}  // namespace TestSupport

#endif
