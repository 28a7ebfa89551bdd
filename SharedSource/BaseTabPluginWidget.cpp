#include "BaseTabPluginWidget.h"

#include "FeatureText.h"

#include "PluginFeatureObserver.h"

#include <QComboBox>
#include <QDebug>
#include <QLocale>
#include <QMutexLocker>
#include <QTranslator>

#include <limits>
#include <new>
#include <string>

using ZMT::PkoAPI::FeaturePtr;

namespace {

// Drops every message. Installed by each tab and never removed, so that the
// viewer's console stays quiet once a tab exists; kept on purpose.
void DiscardMessage(QtMsgType, const QMessageLogContext&, const QString&) {}

}  // namespace

BaseTabPluginWidget::BaseTabPluginWidget(
    QSharedPointer<QVector<ZMT::PkoAPI::shared_ptr<ZMT::PkoAPI::Feature>>> features, QWidget* parent)
    : QWidget(parent, Qt::WindowFlags()),
      m_FeatureManager(nullptr),
      m_ChangedFeatures(nullptr),
      m_UpdateTimer(nullptr),
      m_Mutex(nullptr)
{
    qInstallMessageHandler(DiscardMessage);

    m_Features = features;
    m_FeatureManager = new FeatureManager(features);

    ZMT::PkoAPI::shared_ptr<PluginFeatureObserver> observer(new PluginFeatureObserver());
    m_FeatureObserver = observer;
    PluginFeatureObserver* pluginObserver = dynamic_cast<PluginFeatureObserver*>(m_FeatureObserver.get());
    connect(pluginObserver, SIGNAL(setChangedFeature(const QString&, const QString&)), this,
            SLOT(OnFeatureChanged(const QString&, const QString&)));

    setFocusPolicy(Qt::StrongFocus);
    // The run of 44 blanks is part of the style sheet text, kept on purpose.
    const QString blanks(44, QLatin1Char(' '));
    setStyleSheet("QPushButton:disabled, QLineEdit:disabled, QComboBox:disabled, QDoubleSpinBox:disabled," + blanks +
                  "QSpinBox:disabled, QwtSlider:disabled, QGroupBox:disabled, QLabel:disabled { color: gray }");

    m_Mutex = new QMutex();  // non-recursive

    m_UpdateTimer = new QTimer();
    connect(m_UpdateTimer, SIGNAL(timeout()), this, SLOT(updateTimer()));

    m_ChangedFeatures = new QStringList();
}

BaseTabPluginWidget::~BaseTabPluginWidget()
{
    UnregisterObservers();
    // The camera's notification thread may hold the observer's last
    // reference and delete it there at any moment once ours is gone: cut the
    // connection first, so that nothing of this widget refers to it then.
    if (QObject* observer = dynamic_cast<QObject*>(m_FeatureObserver.get()))
        QObject::disconnect(observer, nullptr, this, nullptr);
    m_FeatureObserver.reset();
    m_Features.clear();
    // m_UpdateTimer, m_Mutex, m_ChangedFeatures and m_FeatureManager are left
    // to the subclass on purpose.
}

QTranslator* BaseTabPluginWidget::LoadTranslator(const QString& baseName)
{
    QTranslator* translator = new QTranslator();
    const QString locale = QLocale::system().name();
    if (!translator->load("plugins/" + baseName + "_" + locale))
        translator->load("plugins/" + baseName + "_" + locale.left(2));
    return translator;
}

bool BaseTabPluginWidget::FillComboFromFeature(const QString& featureName, QComboBox* combo, bool withToolTips)
{
    if (combo == nullptr)
        return false;

    const QString current = m_FeatureManager->GetStringValue(featureName);
    const QStringList entries = m_FeatureManager->GetAvailableValues(featureName);

    combo->clear();
    for (const QString& entry : entries)
        combo->insertItem(combo->count(), entry);
    if (withToolTips) {
        for (int i = 0; i < combo->count(); ++i)
            combo->setItemData(i, combo->itemText(i), Qt::ToolTipRole);
    }
    combo->setCurrentIndex(entries.indexOf(current));

    const bool writable = m_FeatureManager->IsWritable(featureName);
    combo->setEnabled(writable);
    return writable;
}

bool BaseTabPluginWidget::BuildFeatureVector(std::vector<ZMT::PkoAPI::shared_ptr<ZMT::PkoAPI::Feature>>& features)
{
    features.clear();
    const int count = m_Features ? m_Features->size() : 0;
    if (count == 0) {
        qDebug() << "Could not get features. Error code: " << static_cast<int>(ZMT::PkoAPI::PkoErrorNotFound) << "\n";
        return false;
    }
    features.resize(static_cast<std::size_t>(count));
    for (int i = 0; i < count; ++i)
        features[static_cast<std::size_t>(i)] = m_Features->at(i);
    return true;
}

int BaseTabPluginWidget::RegisterObservers(bool queueAll)
{
    std::vector<FeaturePtr> features;
    if (!BuildFeatureVector(features))
        return ZMT::PkoAPI::PkoErrorNotFound;

    int result = ZMT::PkoAPI::PkoErrorSuccess;
    for (const FeaturePtr& feature : features) {
        QString name;
        if (!feature || !FeatureText::ReadName(*feature, name))
            continue;
        if (!m_ObservedFeatures.contains(name, Qt::CaseSensitive))
            continue;
        result = feature->RegisterObserver(m_FeatureObserver);
        if (result != ZMT::PkoAPI::PkoErrorSuccess) {
            qDebug() << "Could not register feature observer. Error code: " << result << "\n";
            continue;
        }
        // Neither locked nor deduplicated, on purpose: the queue is normally
        // empty here, having been cleared on hide.
        if (queueAll)
            m_ChangedFeatures->append(name);
    }
    return result;
}

int BaseTabPluginWidget::UnregisterObservers()
{
    std::vector<FeaturePtr> features;
    if (!BuildFeatureVector(features))
        return ZMT::PkoAPI::PkoErrorNotFound;

    int result = ZMT::PkoAPI::PkoErrorSuccess;
    for (const FeaturePtr& feature : features) {
        QString name;
        if (!feature || !FeatureText::ReadName(*feature, name))
            continue;
        if (!m_ObservedFeatures.contains(name, Qt::CaseSensitive))
            continue;
        result = feature->UnregisterObserver(m_FeatureObserver);
        if (result != ZMT::PkoAPI::PkoErrorSuccess)
            qDebug() << "Could not unregister feature observer. Error code: " << result << "\n";
    }
    return result;
}

void BaseTabPluginWidget::showEvent(QShowEvent*)
{
    m_UpdateTimer->start(1000);
    RegisterObservers(true);
    // The queue is not cleared here: the first tick hands the same names over again.
    QMutexLocker locker(m_Mutex);
    UpdateFromChangedFeatures();
}

void BaseTabPluginWidget::hideEvent(QHideEvent*)
{
    m_UpdateTimer->stop();
    // Unlocked: a change lost here is made good by the next show, which queues everything.
    m_ChangedFeatures->clear();
    UnregisterObservers();
}

void BaseTabPluginWidget::updateTimer()
{
    // No observers while the subclass runs, so its own writes are not queued.
    UnregisterObservers();
    QMutexLocker locker(m_Mutex);
    UpdateFromChangedFeatures();
    RegisterObservers(false);
    m_ChangedFeatures->clear();
}

void BaseTabPluginWidget::OnFeatureChanged(const QString& name, const QString& value)
{
    Q_UNUSED(value);
    QMutexLocker locker(m_Mutex);
    if (!m_ChangedFeatures->contains(name, Qt::CaseSensitive))
        m_ChangedFeatures->append(name);
}
