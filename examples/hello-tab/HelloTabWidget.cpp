#include "HelloTabWidget.h"

#include <TENotSupported.h>

#include <QLabel>
#include <QVBoxLayout>

namespace {
const QString kFeature = QStringLiteral("ExposureTime");
}  // namespace

HelloTabWidget::HelloTabWidget(FeatureVectorPtr features, QWidget* parent)
    : BaseTabPluginWidget(features, parent),
      m_OwnedFeatureManager(m_FeatureManager),
      m_OwnedChangedFeatures(m_ChangedFeatures),
      m_OwnedUpdateTimer(m_UpdateTimer),
      m_OwnedMutex(m_Mutex),
      m_Value(new QLabel(this))
{
    if (!m_FeatureManager->IsAvailable(kFeature))
        throw TENotSupported("HelloTabWidget", "The camera has no ExposureTime");
    // The viewer titles the tab with the page's accessible name.
    parent->setAccessibleName(QStringLiteral("Hello"));

    QVBoxLayout* layout = new QVBoxLayout(this);
    layout->addWidget(m_Value);
    layout->addStretch();
    ShowValue();
    m_ObservedFeatures << kFeature;
}

void HelloTabWidget::UpdateFromChangedFeatures()
{
    if (m_ChangedFeatures->contains(kFeature))
        ShowValue();
}

void HelloTabWidget::ShowValue()
{
    m_Value->setText(QStringLiteral("%1: %2 µs")
                         .arg(m_FeatureManager->GetDisplayName(kFeature))
                         .arg(m_FeatureManager->GetValue(kFeature)));
}
