#include "IOTriggerWidget.h"

#include "FeatureManager.h"
#include "TENotSupported.h"
#include "ui_IOTriggerWidget.h"

#include <QCheckBox>
#include <QComboBox>
#include <QCoreApplication>
#include <QGroupBox>
#include <QLabel>
#include <QMutex>
#include <QPushButton>
#include <QSpinBox>
#include <QTimer>
#include <QTranslator>

// ---------------------------------------------------------------------------
// Construction and lifecycle

IOTriggerWidget::IOTriggerWidget(QSharedPointer<QVector<ZMT::PkoAPI::shared_ptr<ZMT::PkoAPI::Feature>>> features,
                                 QWidget* parent)
    : BaseTabPluginWidget(features, parent),
      m_OwnedFeatureManager(m_FeatureManager),
      m_OwnedChangedFeatures(m_ChangedFeatures),
      m_OwnedUpdateTimer(m_UpdateTimer),
      m_OwnedMutex(m_Mutex),
      m_Ui(new Ui::IOTriggerWidget)
{
    const bool available = m_FeatureManager->IsAvailable("LineOutLevels", "SyncOutLevels") ||
                           m_FeatureManager->IsAvailable("LineSelector");

    const QString tabName = available ? tr("Trigger IO") : QString("");
    if (parent != nullptr)
        parent->setAccessibleName(tabName);
    // The name also marks a fully built widget for the destructor.
    setAccessibleName(tabName);

    if (tabName.isEmpty())
        throw TENotSupported("IOTriggerWidget", "Trigger functionality not available, widget not constructed");

    m_Translator.reset(LoadTranslator("tabextensiontriggerio"));
    if (m_Translator && !m_Translator->isEmpty())
        QCoreApplication::installTranslator(m_Translator.get());

    m_HasUserOutputSelector =
        m_FeatureManager->GetFeatureName(QStringList() << "UserOutputSelector") == "UserOutputSelector";

    m_OutputCount = GetOutputs().size();

    // "UserOutSelector" rather than "UserOutputSelector" is kept on purpose.
    m_ObservedFeatures << "ExposureAuto"
                       << "ExposureMode"
                       << "LineOutLevels"
                       << "LineOutPolarity"
                       << "LineOutSource"
                       << "LineMode"
                       << "UserOutputValue"
                       << "UserOutSelector"
                       << "SyncOutLevels"
                       << "LineStatus"
                       << "SyncOutPolarity"
                       << "LineInverter"
                       << "SyncOutSource"
                       << "LineSource"
                       << "LineSelector"
                       << "LineRouting"
                       << "AcquisitionMode"
                       << "AcquisitionFrameCount"
                       << "TriggerSelector"
                       << "TriggerMode"
                       << "TriggerSource"
                       << "TriggerActivation";

    m_Ui->setupUi(this);

    // Overrides the form's palette colour.
    m_Ui->l_notAcquireHint->setStyleSheet("color : rgb(64,94,127);");
    m_Ui->l_notAcquireHint->hide();

    BuildTriggerInputGroup();
    BuildOutputHeader();
    BuildOutputGroup();
    UpdatePresetButtons(false);

    if (m_OutputCount > 0) {
        m_SelectableLines = GetSelectableLines();
        BuildSelectableOutputGroup();
    } else {
        m_Ui->gb_SelectOutput->hide();
    }

    RegisterObservers(true);
}

IOTriggerWidget::~IOTriggerWidget()
{
    if (!accessibleName().isEmpty()) {
        QWidget* controls[] = {m_LabelTriggerSource,
                               m_LabelTriggerActivation,
                               m_LabelTriggerSelector,
                               m_LabelTriggerMode,
                               m_LabelAcquisitionMode,
                               m_LabelAcquisitionFrameCount,
                               m_LabelExposureAuto,
                               m_LabelExposureMode,
                               m_LabelInputLineSelector,
                               m_LabelLineRouting,
                               m_ComboTriggerSource,
                               m_ComboTriggerActivation,
                               m_ComboTriggerSelector,
                               m_ComboTriggerMode,
                               m_ComboAcquisitionMode,
                               m_SpinAcquisitionFrameCount,
                               m_ButtonSWTrigger,
                               m_ComboExposureAuto,
                               m_ComboExposureMode,
                               m_ComboInputLineSelector,
                               m_CBLineRouting,
                               m_ButtonEdge,
                               m_ButtonLevel,
                               m_ButtonBulk,
                               m_GroupTrigger,
                               m_GroupAcquisition,
                               m_GroupQuickSettings};
        for (QWidget* control : controls)
            delete control;

        DeleteOutputRows();
        qDeleteAll(m_HeaderLabels);
        m_HeaderLabels.clear();
        qDeleteAll(m_OptionalOutLabels);
        m_OptionalOutLabels.clear();
        qDeleteAll(m_OptionalOutCombos);
        m_OptionalOutCombos.clear();

        m_Ui.reset();
    }

    // The base leaves these to its subclass; its own destructor only needs the
    // feature list and the observer.
    m_OwnedUpdateTimer.reset();
    m_UpdateTimer = nullptr;
    m_OwnedMutex.reset();
    m_Mutex = nullptr;
    m_OwnedChangedFeatures.reset();
    m_ChangedFeatures = nullptr;
    m_OwnedFeatureManager.reset();
    m_FeatureManager = nullptr;
}

void IOTriggerWidget::camIsStreaming(bool streaming)
{
    if (!m_FeatureManager->IsAvailable("LineOutLevels", "SyncOutLevels"))
        return;

    UpdatePresetButtons(streaming);
    // "SW Trigger" stays usable while streaming on purpose.
    QWidget* locked[] = {m_ComboTriggerSelector,     m_ComboTriggerSource, m_ComboExposureAuto,
                         m_ComboTriggerActivation,   m_ComboTriggerMode,   m_ComboAcquisitionMode,
                         m_SpinAcquisitionFrameCount};
    for (QWidget* control : locked) {
        if (control != nullptr)
            control->setEnabled(!streaming);
    }
    m_Ui->l_notAcquireHint->setVisible(streaming);
}
