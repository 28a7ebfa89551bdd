#ifndef ARVTABFIXTURE_H
#define ARVTABFIXTURE_H

#include "CameraPeer.h"
#include "FakeGvCamera.h"
#include "IOTriggerWidget.h"

#include <PkoAPI/PkoAPI.h>
#include <PkoAPI/Sim/SimCamera.h>

#include <QAbstractItemView>
#include <QApplication>
#include <QCheckBox>
#include <QComboBox>
#include <QGroupBox>
#include <QLabel>
#include <QMetaObject>
#include <QMutex>
#include <QMutexLocker>
#include <QPushButton>
#include <QSharedPointer>
#include <QSpinBox>
#include <QStringList>
#include <QStyle>
#include <QStyleOptionButton>
#include <QVBoxLayout>
#include <QVector>
#include <QtTest>

#include <algorithm>
#include <exception>
#include <memory>
#include <string>
#include <vector>

// The "Trigger IO" tab on a GenICam camera: a fake GigE Vision camera on
// 127.0.0.1 serving one of our descriptions, opened through the SDK's
// GenICam backend, with the tab built on it inside a page as the viewer
// hands it out. Beside it the same tab on a simulated model, and helpers
// that describe what a user sees so that both can be compared.
// Header-only, for the executables of this folder.
class ArvTabFixture {
public:
    typedef QSharedPointer<QVector<ZMT::PkoAPI::FeaturePtr>> FeatureList;

    // The tab with its change queue in reach of the tests.
    class Tab : public IOTriggerWidget {
    public:
        // Throws what IOTriggerWidget throws.
        Tab(const FeatureList& features, QWidget* parent) : IOTriggerWidget(features, parent) {}

        // Names queued as changed and not yet handed to the refresh.
        bool HasChangesQueued() const
        {
            QMutexLocker lock(m_Mutex);
            return !m_ChangedFeatures->isEmpty();
        }
        // Refreshes the queued controls now instead of at the next tick.
        void RefreshNow() { QMetaObject::invokeMethod(this, "updateTimer", Qt::DirectConnection); }
    };

    // Lets the camera's reports of the tab's own writes arrive and be shown,
    // until a quarter second passes without one (at most about five
    // seconds). The refresh may build the output rows anew: find row
    // controls again afterwards.
    static void Settle(Tab* tab)
    {
        for (int round = 0; round < 20; ++round) {
            QTest::qWait(250);
            if (!tab->HasChangesQueued())
                return;
            tab->RefreshNow();
        }
    }

    template <class T>
    T* Find(const QString& objectName) const
    {
        return m_Tab == nullptr ? nullptr : m_Tab->findChild<T*>(objectName);
    }

    // The feature list the viewer hands to the plug-in; empty when the
    // camera is closed.
    static FeatureList FeaturesOf(const ZMT::PkoAPI::CameraPtr& camera)
    {
        std::vector<ZMT::PkoAPI::FeaturePtr> features;
        camera->GetFeatures(features);
        FeatureList list(new QVector<ZMT::PkoAPI::FeaturePtr>());
        for (const ZMT::PkoAPI::FeaturePtr& feature : features)
            list->append(feature);
        return list;
    }

    // The SDK's camera for the fake camera of that serial; null, with the
    // reason in error, when the SDK does not know it.
    static ZMT::PkoAPI::CameraPtr FindCamera(const QString& serial, QString& error)
    {
        ZMT::PkoAPI::PkoSystem& system = ZMT::PkoAPI::PkoSystem::GetInstance();
        const QStringList ids{"ARV:Aravis-Fake-" + serial, "ARV:127.0.0.1"};
        for (const QString& id : ids) {
            ZMT::PkoAPI::CameraPtr camera;
            if (system.GetCameraByID(id.toLatin1().constData(), camera) == 0 && camera)
                return camera;
        }
        error = "the SDK knows none of " + ids.join(", ");
        return ZMT::PkoAPI::CameraPtr();
    }

    // Starts the fake camera with the description file (a name in
    // PelkoSDK/genicam) and, unless open is false, runs Open(). Check Error()
    // afterwards: empty when all went well.
    explicit ArvTabFixture(const QString& descriptionFile, bool open = true)
        : m_Fake(FakeGvCamera::GenicamFile(descriptionFile), QStringLiteral("TAB"))
    {
        if (!m_Fake.Start())
            m_Error = "fake camera: " + m_Fake.ErrorString();
        else if (open)
            Open();
    }
    // Tab first, then the SDK's connection, then the camera process.
    ~ArvTabFixture() { Close(); }
    ArvTabFixture(const ArvTabFixture&) = delete;
    ArvTabFixture& operator=(const ArvTabFixture&) = delete;

    // Opens the running fake camera through the SDK and builds the tab on
    // it. False, with the reason in Error(), on failure.
    bool Open()
    {
        m_Camera = FindCamera(m_Fake.Serial(), m_Error);
        if (!m_Camera)
            return false;
        const int opened = m_Camera->Open();
        if (opened != 0) {
            m_Error = "Open failed with " + QString::number(opened);
            m_Camera = ZMT::PkoAPI::CameraPtr();
            return false;
        }
        m_Page = BuildPage(FeaturesOf(m_Camera), m_Tab, m_Error);
        return m_Page != nullptr;
    }

    // Destroys the tab and closes the SDK's connection; the fake camera keeps
    // running with the values it holds (for CameraPeer). Cannot fail.
    void Close()
    {
        m_Page.reset();
        m_Tab = nullptr;
        if (m_Camera)
            m_Camera->Close();
        m_Camera = ZMT::PkoAPI::CameraPtr();
    }

    QString Error() const { return m_Error; }
    const ZMT::PkoAPI::CameraPtr& Camera() const { return m_Camera; }
    Tab* TabWidget() const { return m_Tab; }
    QWidget* Page() const { return m_Page.get(); }
    FakeGvCamera& Fake() { return m_Fake; }

    // The tab in a new page of the viewer's size, not shown; null, with the
    // reason in error, when the tab's constructor throws.
    static std::unique_ptr<QWidget> BuildPage(const FeatureList& features, Tab*& tab, QString& error)
    {
        std::unique_ptr<QWidget> page(new QWidget);
        try {
            tab = new Tab(features, page.get());
        } catch (const std::exception& failure) {
            error = QString("the tab's constructor threw: ") + failure.what();
            tab = nullptr;
            return std::unique_ptr<QWidget>();
        }
        QVBoxLayout* layout = new QVBoxLayout(page.get());
        layout->addWidget(tab);
        page->resize(760, 1000);
        return page;
    }

    // Shows the page as the viewer does. False when it was never exposed.
    static bool Show(QWidget* page)
    {
        page->show();
        return QTest::qWaitForWindowExposed(page);
    }

    // What a user sees of every named control of the tab, one line per
    // control, sorted by object name.
    static QStringList Snapshot(const QWidget* tab)
    {
        QStringList lines;
        for (const QWidget* widget : tab->findChildren<QWidget*>()) {
            const QString name = widget->objectName();
            if (name.isEmpty() || name.startsWith("qt_"))
                continue;
            QString line =
                name + QString(" enabled=%1 shown=%2").arg(widget->isEnabled()).arg(widget->isVisibleTo(tab));
            if (const QComboBox* combo = qobject_cast<const QComboBox*>(widget)) {
                QStringList items;
                for (int i = 0; i < combo->count(); ++i)
                    items << combo->itemText(i);
                line += " items=" + items.join('|') + " current=" + combo->currentText();
            } else if (const QCheckBox* box = qobject_cast<const QCheckBox*>(widget)) {
                line += QString(" checked=%1").arg(box->isChecked());
            } else if (const QSpinBox* spin = qobject_cast<const QSpinBox*>(widget)) {
                line += QString(" range=%1..%2 step=%3 value=%4")
                            .arg(spin->minimum())
                            .arg(spin->maximum())
                            .arg(spin->singleStep())
                            .arg(spin->value());
            } else if (const QLabel* label = qobject_cast<const QLabel*>(widget)) {
                line += " text=" + label->text();
            } else if (const QGroupBox* group = qobject_cast<const QGroupBox*>(widget)) {
                line += QString(" height=%1..%2").arg(group->minimumHeight()).arg(group->maximumHeight());
            }
            lines << line;
        }
        std::sort(lines.begin(), lines.end());
        return lines;
    }

    // Both lists in full, for QVERIFY2 when they differ.
    static QString Difference(const QStringList& actual, const QStringList& expected)
    {
        QStringList onlyActual;
        QStringList onlyExpected;
        for (const QString& line : actual) {
            if (!expected.contains(line))
                onlyActual << line;
        }
        for (const QString& line : expected) {
            if (!actual.contains(line))
                onlyExpected << line;
        }
        return "\n   only on GenICam:\n      " + onlyActual.join("\n      ") + "\n   only simulated:\n      " +
               onlyExpected.join("\n      ");
    }

    // Opens the combo's list with a click and clicks the entry in it, as a
    // user does. The page must be shown. False when the combo has no such
    // entry or the list did not take the click.
    static bool ChooseWithMouse(QComboBox* combo, const QString& text)
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

    // Clicks where a user clicks a check box.
    static void ClickCheckBox(QCheckBox* box)
    {
        QStyleOptionButton option;
        option.initFrom(box);
        const QRect clickable = box->style()->subElementRect(QStyle::SE_CheckBoxIndicator, &option, box);
        QTest::mouseClick(box, Qt::LeftButton, Qt::NoModifier, clickable.center());
    }

private:
    FakeGvCamera m_Fake;
    QString m_Error;
    ZMT::PkoAPI::CameraPtr m_Camera;
    Tab* m_Tab = nullptr;  // owned by m_Page
    std::unique_ptr<QWidget> m_Page;
};

#endif  // ARVTABFIXTURE_H
