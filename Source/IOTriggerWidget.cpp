#include "IOTriggerWidget.h"

#include "FeatureManager.h"
#include "TENotSupported.h"
#include "ui_IOTriggerWidget.h"

#include <QCheckBox>
#include <QColor>
#include <QComboBox>
#include <QCoreApplication>
#include <QDebug>
#include <QElapsedTimer>
#include <QGridLayout>
#include <QGroupBox>
#include <QIcon>
#include <QLabel>
#include <QMutex>
#include <QPalette>
#include <QPushButton>
#include <QSignalBlocker>
#include <QSizePolicy>
#include <QSpacerItem>
#include <QSpinBox>
#include <QTimer>
#include <QTranslator>

#include <algorithm>
#include <cmath>
#include <limits>
#include <vector>

namespace {

// Columns of the trigger group's grid: a spacer row spans all of them.
const int kTriggerGridColumns = 9;

QLabel* NewLabel(const QString& text, const QString& objectName, QWidget* parent)
{
    QLabel* label = new QLabel(text, parent);
    label->setObjectName(objectName);
    return label;
}

QComboBox* NewInputCombo(const QString& objectName, QWidget* parent)
{
    QComboBox* combo = new QComboBox(parent);
    combo->setObjectName(objectName);
    combo->setMinimumSize(90, 25);
    return combo;
}

QPushButton* NewPresetButton(const QString& text, const QString& iconPath, const QString& objectName, QWidget* parent)
{
    QPushButton* button = new QPushButton(text, parent);
    button->setObjectName(objectName);
    button->setFixedHeight(28);
    button->setIconSize(QSize(28, 28));
    button->setIcon(QIcon(iconPath));
    return button;
}

// Kept at the indicator's size, so that a click anywhere on the box toggles it.
QCheckBox* NewCheckBox(const QString& objectName, QWidget* parent)
{
    QCheckBox* checkBox = new QCheckBox(parent);
    checkBox->setObjectName(objectName);
    checkBox->setSizePolicy(QSizePolicy::Fixed, QSizePolicy::Fixed);
    return checkBox;
}

QSpacerItem* NewRowSpacer()
{
    return new QSpacerItem(10, 17);
}

// Truncates like a plain cast, but keeps values the spin box cannot hold in range.
int ToInt(double value)
{
    if (std::isnan(value))
        return 0;
    if (value <= static_cast<double>(std::numeric_limits<int>::min()))
        return std::numeric_limits<int>::min();
    if (value >= static_cast<double>(std::numeric_limits<int>::max()))
        return std::numeric_limits<int>::max();
    return static_cast<int>(value);
}

long long ToLongLong(double value)
{
    if (std::isnan(value))
        return 0;
    if (value <= static_cast<double>(std::numeric_limits<long long>::min()))
        return std::numeric_limits<long long>::min();
    if (value >= static_cast<double>(std::numeric_limits<long long>::max()))
        return std::numeric_limits<long long>::max();
    return static_cast<long long>(value);
}

}  // namespace

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

// ---------------------------------------------------------------------------
// Trigger input controls

void IOTriggerWidget::BuildTriggerInputGroup()
{
    if (m_FeatureManager->GetAvailableValues("TriggerSource").contains("InputLines")) {
        m_Ui->gb_TriggerInput->setMinimumHeight(470);
        m_Ui->gb_TriggerInput->setMaximumHeight(470);
    }

    m_GroupTrigger = new QGroupBox(tr("Trigger"), m_Ui->gb_TriggerInput);
    m_GroupTrigger->setObjectName("gb_Trigger");
    m_GroupAcquisition = new QGroupBox(tr("Acquisition"), m_Ui->gb_TriggerInput);
    m_GroupAcquisition->setObjectName("gb_Acquisition");
    m_GroupQuickSettings = new QGroupBox(tr("Quick Settings: Trigger Mode"), m_Ui->gb_TriggerInput);
    m_GroupQuickSettings->setObjectName("gb_QuickSettings");

    m_LabelTriggerSource = NewLabel(tr("Source:"), "l_TriggerSource", m_GroupTrigger);
    m_LabelTriggerActivation = NewLabel(tr("Activ.:"), "l_TriggerActivation", m_GroupTrigger);
    m_LabelTriggerSelector = NewLabel(tr("Selector:"), "l_TriggerSelector", m_GroupTrigger);
    m_LabelTriggerMode = NewLabel(tr("Mode:"), "l_TriggerMode", m_GroupTrigger);
    m_ComboTriggerSource = NewInputCombo("combo_TriggerSource", m_GroupTrigger);
    m_ComboTriggerActivation = NewInputCombo("combo_TriggerActivation", m_GroupTrigger);
    m_ComboTriggerSelector = NewInputCombo("combo_TriggerSelector", m_GroupTrigger);
    m_ComboTriggerMode = NewInputCombo("combo_TriggerMode", m_GroupTrigger);

    // A camera offers one of the two; automatic exposure wins.
    if (m_FeatureManager->GetAvailableValues("ExposureAuto").contains("other"))
        m_ComboExposureAuto = NewInputCombo("combo_ExposureAuto", m_GroupAcquisition);
    else if (m_FeatureManager->GetAvailableValues("ExposureMode").contains("Timed"))
        m_ComboExposureMode = NewInputCombo("combo_ExposureMode", m_GroupAcquisition);

    m_LabelAcquisitionMode = NewLabel(tr("Mode:"), "l_AcquisitionMode", m_GroupAcquisition);
    m_ComboAcquisitionMode = NewInputCombo("combo_AcquisitionMode", m_GroupAcquisition);
    m_LabelAcquisitionFrameCount = NewLabel(tr("FrameCount:"), "l_AcquisitionFrameCount", m_GroupAcquisition);
    m_SpinAcquisitionFrameCount = new QSpinBox(m_GroupAcquisition);
    m_SpinAcquisitionFrameCount->setObjectName("spin_AcquisitionFrameCount");

    m_ButtonSWTrigger = new QPushButton(tr("SW Trigger"), m_GroupTrigger);
    m_ButtonSWTrigger->setObjectName("pb_SWTrigger");
    m_ButtonSWTrigger->setMinimumSize(90, 25);
    m_ButtonSWTrigger->setMaximumHeight(25);

    m_ButtonEdge =
        NewPresetButton(tr("Edge"), ":/PelkoViewer/Images/triggering_edge_256.png", "pb_Edge", m_GroupQuickSettings);
    m_ButtonLevel =
        NewPresetButton(tr("Level"), ":/PelkoViewer/Images/triggering_level_256.png", "pb_Level", m_GroupQuickSettings);
    m_ButtonBulk =
        NewPresetButton(tr("Bulk"), ":/PelkoViewer/Images/triggering_bulk_256.png", "pb_Bulk", m_GroupQuickSettings);

    if (m_FeatureManager->IsAvailable("LineRouting")) {
        m_LabelInputLineSelector = NewLabel(tr("Line Sel.:"), "l_InputLineSelector", m_GroupTrigger);
        m_ComboInputLineSelector = NewInputCombo("combo_InputLineSelector", m_GroupTrigger);
        m_LabelLineRouting = NewLabel(tr("Rout.:"), "l_LineRouting", m_GroupTrigger);
        m_CBLineRouting = NewCheckBox("cb_LineRouting", m_GroupTrigger);
    }

    // A label exists only together with its combo. Not translated, on purpose.
    if (m_ComboExposureAuto != nullptr && m_FeatureManager->GetAvailableValues("ExposureAuto").contains("other"))
        m_LabelExposureAuto = NewLabel(QString("Exp. Auto:"), "l_ExposureAuto", m_GroupAcquisition);
    if (m_ComboExposureMode != nullptr && m_FeatureManager->GetAvailableValues("ExposureMode").contains("Timed"))
        m_LabelExposureMode = NewLabel(QString("Exp. Mode:"), "l_ExposureMode", m_GroupAcquisition);

    // "Trigger" group.
    m_GroupTrigger->setFixedHeight(m_CBLineRouting != nullptr ? 220 : 170);
    m_GroupTrigger->setSizePolicy(QSizePolicy::Expanding, QSizePolicy::Fixed);
    QGridLayout* triggerGrid = new QGridLayout(m_GroupTrigger);
    triggerGrid->setObjectName("grid_Trigger");
    triggerGrid->addWidget(m_LabelTriggerSource, 0, 1, 1, 2);
    triggerGrid->addWidget(m_ComboTriggerSource, 0, 3, 1, 2);
    triggerGrid->addWidget(m_LabelTriggerActivation, 0, 5, 1, 2);
    triggerGrid->addWidget(m_ComboTriggerActivation, 0, 7, 1, 2);
    triggerGrid->addItem(NewRowSpacer(), 1, 0, 1, kTriggerGridColumns);
    triggerGrid->addWidget(m_LabelTriggerSelector, 2, 1, 1, 2);
    triggerGrid->addWidget(m_ComboTriggerSelector, 2, 3, 1, 2);
    triggerGrid->addWidget(m_LabelTriggerMode, 2, 5, 1, 2);
    triggerGrid->addWidget(m_ComboTriggerMode, 2, 7, 1, 2);
    triggerGrid->addItem(NewRowSpacer(), 3, 0, 1, kTriggerGridColumns);
    if (m_CBLineRouting != nullptr) {
        triggerGrid->addWidget(m_LabelInputLineSelector, 4, 1, 1, 2);
        triggerGrid->addWidget(m_ComboInputLineSelector, 4, 3, 1, 2);
        triggerGrid->addWidget(m_LabelLineRouting, 4, 5, 1, 2);
        triggerGrid->addWidget(m_CBLineRouting, 4, 7, 1, 2);
        triggerGrid->addItem(NewRowSpacer(), 5, 0, 1, kTriggerGridColumns);
        triggerGrid->addWidget(m_ButtonSWTrigger, 6, 3, 1, 5, Qt::AlignCenter);
    } else {
        triggerGrid->addWidget(m_ButtonSWTrigger, 4, 3, 1, 5, Qt::AlignCenter);
    }

    // "Acquisition" group.
    m_GroupAcquisition->setFixedHeight(125);
    QGridLayout* acquisitionGrid = new QGridLayout(m_GroupAcquisition);
    acquisitionGrid->setObjectName("grid_Acquisition");
    acquisitionGrid->addWidget(m_LabelAcquisitionMode, 0, 1, 1, 2);
    acquisitionGrid->addWidget(m_ComboAcquisitionMode, 0, 3, 1, 2);
    acquisitionGrid->addWidget(m_LabelAcquisitionFrameCount, 0, 5, 1, 2);
    acquisitionGrid->addWidget(m_SpinAcquisitionFrameCount, 0, 7, 1, 2);
    if (m_ComboExposureMode != nullptr && m_LabelExposureMode != nullptr) {
        acquisitionGrid->addWidget(m_LabelExposureMode, 1, 1, 1, 2);
        acquisitionGrid->addWidget(m_ComboExposureMode, 1, 3, 1, 2);
    } else if (m_ComboExposureAuto != nullptr && m_LabelExposureAuto != nullptr) {
        acquisitionGrid->addWidget(m_LabelExposureAuto, 1, 1, 1, 2);
        acquisitionGrid->addWidget(m_ComboExposureAuto, 1, 3, 1, 2);
    }

    // "Quick Settings: Trigger Mode" group.
    m_GroupQuickSettings->setFixedHeight(75);
    QGridLayout* quickGrid = new QGridLayout(m_GroupQuickSettings);
    quickGrid->setObjectName("grid_QuickSettings");
    quickGrid->addWidget(m_ButtonEdge, 0, 0, 1, 3);
    quickGrid->addWidget(m_ButtonLevel, 0, 4, 1, 3);
    quickGrid->addWidget(m_ButtonBulk, 0, 8, 1, 3);

    m_Ui->grid_TriggerInput->addWidget(m_GroupTrigger, 0, 1, 1, 9);
    m_Ui->grid_TriggerInput->addWidget(m_GroupAcquisition, 2, 1, 1, 9);
    m_Ui->grid_TriggerInput->addWidget(m_GroupQuickSettings, 3, 1, 1, 9);

    // Fill before connecting, so that filling writes nothing.
    m_ButtonSWTrigger->setEnabled(false);
    UpdateTriggerSource();
    FillComboFromFeature("TriggerActivation", m_ComboTriggerActivation, false);
    FillComboFromFeature("TriggerMode", m_ComboTriggerMode, false);
    UpdatePresetButtons(!FillComboFromFeature("AcquisitionMode", m_ComboAcquisitionMode, false));
    UpdateAcquisitionFrameCount();
    UpdateTriggerSource();
    UpdateTriggerSelector();

    if (m_CBLineRouting != nullptr) {
        UpdateInputLineSelector();
        m_OutputLineIndexes = GetOutputLineIndexes();
        UpdateInputLineSelector();
        UpdateLineRouting();
        connect(m_ComboInputLineSelector, SIGNAL(currentIndexChanged(QString)), this,
                SLOT(OnComboInputLineSelectorChanged(QString)));
        connect(m_CBLineRouting, SIGNAL(stateChanged(int)), this, SLOT(OnCBLineRoutingChanged(int)));
        // Ends on "Line0" where it exists; each selection writes through its slot.
        SelectComboEntry("Line1", m_ComboInputLineSelector);
        SelectComboEntry("Line0", m_ComboInputLineSelector);
    }

    if (m_ComboExposureMode != nullptr) {
        UpdateExposureMode();
        connect(m_ComboExposureMode, SIGNAL(currentIndexChanged(QString)), this,
                SLOT(OnComboExposureModeChanged(QString)));
    }
    if (m_ComboExposureAuto != nullptr) {
        FillComboFromFeature("ExposureAuto", m_ComboExposureAuto, false);
        connect(m_ComboExposureAuto, SIGNAL(currentIndexChanged(QString)), this,
                SLOT(OnComboExposureAutoChanged(QString)));
    }

    connect(m_ComboTriggerSource, SIGNAL(currentIndexChanged(QString)), this,
            SLOT(OnComboTriggerSourceChanged(QString)));
    connect(m_ComboTriggerActivation, SIGNAL(currentIndexChanged(QString)), this,
            SLOT(OnComboTriggerActivationChanged(QString)));
    connect(m_ComboTriggerSelector, SIGNAL(currentIndexChanged(QString)), this,
            SLOT(OnComboTriggerSelectorChanged(QString)));
    connect(m_ComboTriggerMode, SIGNAL(currentIndexChanged(QString)), this, SLOT(OnComboTriggerModeChanged(QString)));
    connect(m_ComboAcquisitionMode, SIGNAL(currentIndexChanged(QString)), this,
            SLOT(OnComboAcquisitionModeChanged(QString)));
    connect(m_SpinAcquisitionFrameCount, SIGNAL(valueChanged(int)), this,
            SLOT(OnSpinAcquisitionFrameCountChanged(int)));
    connect(m_ButtonSWTrigger, SIGNAL(clicked()), this, SLOT(OnSWTrigger()));
    connect(m_ButtonEdge, SIGNAL(clicked()), this, SLOT(OnEdgeMode()));
    connect(m_ButtonLevel, SIGNAL(clicked()), this, SLOT(OnLevelMode()));
    connect(m_ButtonBulk, SIGNAL(clicked()), this, SLOT(OnBulkMode()));
}

void IOTriggerWidget::SelectComboEntry(const QString& text, QComboBox* combo)
{
    if (combo == nullptr)
        return;
    // The last item of that text; signals stay live so the combo's slot writes.
    int found = -1;
    for (int i = 0; i < combo->count(); ++i) {
        if (combo->itemText(i) == text)
            found = i;
    }
    if (found >= 0)
        combo->setCurrentIndex(found);
}

void IOTriggerWidget::BlockControlSignals(bool block)
{
    QObject* controls[] = {m_ComboTriggerSource,     m_ComboTriggerActivation, m_ComboTriggerSelector,
                           m_ComboTriggerMode,       m_ComboAcquisitionMode,   m_SpinAcquisitionFrameCount,
                           m_ComboInputLineSelector, m_CBLineRouting,          m_ComboExposureAuto,
                           m_ComboExposureMode};
    for (QObject* control : controls) {
        if (control != nullptr)
            control->blockSignals(block);
    }
    for (const OutputRow& row : m_OutputRows) {
        QObject* rowControls[] = {row.source, row.userSelector, row.userValue, row.invert, row.status};
        for (QObject* control : rowControls) {
            if (control != nullptr)
                control->blockSignals(block);
        }
    }
}

void IOTriggerWidget::UpdateTriggerSource()
{
    FillComboFromFeature("TriggerSource", m_ComboTriggerSource, false);
    if (m_ButtonSWTrigger != nullptr && m_ComboTriggerSource != nullptr) {
        const QString source = m_ComboTriggerSource->currentText();
        m_ButtonSWTrigger->setEnabled(source == "Software" || source.contains("SoftwareSignal"));
    }
    if (m_ComboTriggerMode != nullptr)
        FillComboFromFeature("TriggerMode", m_ComboTriggerMode, false);
}

void IOTriggerWidget::UpdateTriggerSelector()
{
    const QStringList entries = m_FeatureManager->GetAvailableValues("TriggerSelector");
    const QString current = m_FeatureManager->GetStringValue("TriggerSelector");
    // A camera with a single selector entry gets it chosen for the user.
    if (!entries.contains(current) && entries.size() == 1)
        m_FeatureManager->SetStringValue("TriggerSelector", entries.first());
    FillComboFromFeature("TriggerSelector", m_ComboTriggerSelector, false);
}

void IOTriggerWidget::UpdateAcquisitionMode()
{
    UpdatePresetButtons(!FillComboFromFeature("AcquisitionMode", m_ComboAcquisitionMode, false));
}

void IOTriggerWidget::UpdateAcquisitionFrameCount()
{
    if (m_SpinAcquisitionFrameCount == nullptr)
        return;
    bool writable = false;
    double minimum = 0.0;
    double maximum = 0.0;
    double increment = 0.0;
    const double value =
        m_FeatureManager->GetValueWithRange("AcquisitionFrameCount", writable, minimum, maximum, increment);
    m_SpinAcquisitionFrameCount->setRange(ToInt(minimum), ToInt(maximum));
    m_SpinAcquisitionFrameCount->setSingleStep(ToInt(increment));
    m_SpinAcquisitionFrameCount->setValue(ToInt(value));
    m_SpinAcquisitionFrameCount->setVisible(writable);
    if (m_LabelAcquisitionFrameCount != nullptr)
        m_LabelAcquisitionFrameCount->setVisible(writable);
}

void IOTriggerWidget::UpdateExposureMode()
{
    const bool writable = FillComboFromFeature("ExposureMode", m_ComboExposureMode, false);
    if (m_Ui->gb_TriggerInput->isEnabled())
        m_Ui->l_notAcquireHint->setVisible(!writable);
    m_Ui->l_notAcquireHint->update();
    m_Ui->l_notAcquireHint->repaint();
    update();
    repaint();
}

void IOTriggerWidget::UpdatePresetButtons(bool disable)
{
    if (m_ButtonEdge == nullptr || m_ButtonLevel == nullptr || m_ButtonBulk == nullptr)
        return;
    m_ButtonEdge->setEnabled(!disable);
    if (m_ComboExposureMode == nullptr) {
        m_ButtonLevel->setEnabled(!disable);
        m_ButtonBulk->setEnabled(!disable);
    } else {
        // A level trigger needs the exposure to follow the trigger pulse.
        m_ButtonLevel->setEnabled(!disable && m_ComboExposureMode->findText("TriggerWidth") >= 0);
        m_ButtonBulk->setEnabled(!disable);
    }
}

void IOTriggerWidget::UpdateLineRouting()
{
    if (m_CBLineRouting == nullptr)
        return;
    m_CBLineRouting->setChecked(m_FeatureManager->GetStringValue("LineRouting") == "Trigger");
    m_CBLineRouting->setEnabled(m_FeatureManager->IsWritable("LineRouting"));
}

void IOTriggerWidget::UpdateInputLineSelector()
{
    if (m_ComboInputLineSelector == nullptr)
        return;
    FillComboFromFeature("LineSelector", m_ComboInputLineSelector, false);
    const QString current = m_ComboInputLineSelector->currentText();
    // Output lines cannot trigger; highest index first keeps the others in place.
    QList<int> indexes = m_OutputLineIndexes;
    std::sort(indexes.begin(), indexes.end(), std::greater<int>());
    for (int index : indexes) {
        if (index < m_ComboInputLineSelector->count())
            m_ComboInputLineSelector->removeItem(index);
    }
    m_ComboInputLineSelector->setCurrentIndex(m_ComboInputLineSelector->findText(current));
}

QList<int> IOTriggerWidget::GetOutputLineIndexes()
{
    QList<int> indexes;
    const QString kept = m_FeatureManager->GetStringValue("LineSelector");
    const QStringList lines = m_FeatureManager->GetAvailableValues("LineSelector");
    for (int i = 0; i < lines.size(); ++i) {
        const QString selected = m_FeatureManager->SetStringValue("LineSelector", lines.at(i));
        if (selected.isEmpty()) {
            qDebug() << "GetOutputs Pelko Error: " << selected;
            continue;
        }
        if (m_FeatureManager->GetStringValue("LineMode") == "Output")
            indexes.append(i);
    }
    const QString restored = m_FeatureManager->SetStringValue("LineSelector", kept);
    if (restored.isEmpty())
        qDebug() << "GetOutputs Pelko Error: " << restored;
    return indexes;
}

QString IOTriggerWidget::GetFirstInputLine()
{
    QString firstInput;
    const QString kept = m_FeatureManager->GetStringValue("LineSelector");
    const QStringList lines = m_FeatureManager->GetAvailableValues("LineSelector");
    for (const QString& line : lines) {
        const QString selected = m_FeatureManager->SetStringValue("LineSelector", line);
        if (selected.isEmpty()) {
            qDebug() << "GetOutputs Pelko Error: " << selected;
            continue;
        }
        if (firstInput.isEmpty() && m_FeatureManager->GetStringValue("LineMode") == "Input")
            firstInput = line;
    }
    const QString restored = m_FeatureManager->SetStringValue("LineSelector", kept);
    if (restored.isEmpty())
        qDebug() << "GetOutputs Pelko Error: " << restored;
    return firstInput;
}

void IOTriggerWidget::OnComboChanged(const QString& featureName, const QString& currentVal)
{
    // Fire and forget: the next refresh shows what the camera took.
    m_FeatureManager->SetStringValue(featureName, currentVal);
}

void IOTriggerWidget::OnComboTriggerSourceChanged(const QString& text)
{
    OnComboChanged("TriggerSource", text);
}

void IOTriggerWidget::OnComboTriggerActivationChanged(const QString& text)
{
    OnComboChanged("TriggerActivation", text);
}

void IOTriggerWidget::OnComboTriggerSelectorChanged(const QString& text)
{
    const bool modeWasOn = m_ComboTriggerMode != nullptr && m_ComboTriggerMode->currentText() == "On";
    // Cameras with the line selector row keep one trigger mode per selector:
    // switch the old one off and the new one on. Other families keep the mode.
    const bool moveMode = m_ComboInputLineSelector != nullptr && modeWasOn;
    if (moveMode)
        SelectComboEntry("Off", m_ComboTriggerMode);
    OnComboChanged("TriggerSelector", text);
    if (moveMode)
        SelectComboEntry("On", m_ComboTriggerMode);
}

void IOTriggerWidget::OnComboAcquisitionModeChanged(const QString& text)
{
    OnComboChanged("AcquisitionMode", text);
}

void IOTriggerWidget::OnComboInputLineSelectorChanged(const QString& text)
{
    // Routing applies to the selected line: take it off the old line, put it on the new one.
    const bool wasRouted = m_CBLineRouting != nullptr && m_CBLineRouting->isChecked();
    if (wasRouted)
        m_CBLineRouting->setChecked(false);
    OnComboChanged("LineSelector", text);
    if (wasRouted)
        m_CBLineRouting->setChecked(true);
}

void IOTriggerWidget::OnCBLineRoutingChanged(int state)
{
    m_FeatureManager->SetStringValue("LineRouting", state < 1 ? QString("Off") : QString("Trigger"));
}

void IOTriggerWidget::OnComboExposureModeChanged(const QString& text)
{
    OnComboChanged("ExposureMode", text);
}

void IOTriggerWidget::OnComboExposureAutoChanged(const QString& text)
{
    OnComboChanged("ExposureAuto", text);
}

void IOTriggerWidget::OnComboTriggerModeChanged(const QString& mode)
{
    m_FeatureManager->SetStringValue("TriggerMode", mode);
}

void IOTriggerWidget::OnSWTrigger()
{
    m_FeatureManager->RunCommand("TriggerSoftware");
}

void IOTriggerWidget::OnSpinAcquisitionFrameCountChanged(int value)
{
    m_FeatureManager->SetValue("AcquisitionFrameCount", static_cast<double>(value));
}

// ---------------------------------------------------------------------------
// Presets. They only select entries; the controls' own slots do the writes.

void IOTriggerWidget::PumpEvents()
{
    QCoreApplication::processEvents();
}

void IOTriggerWidget::Wait200ms()
{
    // Gives the camera time to settle while the event loop keeps running.
    QElapsedTimer timer;
    timer.start();
    while (timer.elapsed() <= 199)
        QCoreApplication::processEvents();
}

void IOTriggerWidget::SwitchOffEverySelector()
{
    if (m_ComboTriggerSelector == nullptr)
        return;
    for (int i = 0; i < m_ComboTriggerSelector->count(); ++i) {
        SelectComboEntry(m_ComboTriggerSelector->itemText(i), m_ComboTriggerSelector);
        PumpEvents();
        SelectComboEntry("Off", m_ComboTriggerMode);
    }
}

void IOTriggerWidget::SetRoutingChecked()
{
    if (m_CBLineRouting != nullptr)
        m_CBLineRouting->setChecked(true);
}

void IOTriggerWidget::SetFrameCount(int value)
{
    if (m_SpinAcquisitionFrameCount != nullptr)
        m_SpinAcquisitionFrameCount->setValue(value);
}

void IOTriggerWidget::OnEdgeMode()
{
    UpdatePresetButtons(true);
    UnregisterObservers();

    if (m_ComboExposureMode != nullptr && m_ComboInputLineSelector != nullptr) {
        SelectComboEntry("Timed", m_ComboExposureMode);
        // Refilled with its signal live on purpose: on a camera that moved its
        // selector by itself, the selector slot carries the trigger mode over.
        UpdateTriggerSelector();
        SelectComboEntry("ExposureStart", m_ComboTriggerSelector);
        Wait200ms();
        SelectComboEntry("Off", m_ComboTriggerMode);
        SelectComboEntry("ExposureStart", m_ComboTriggerSelector);
        SelectComboEntry("InputLines", m_ComboTriggerSource);
        SelectComboEntry("FallingEdge", m_ComboTriggerActivation);
        SelectComboEntry("Line0", m_ComboInputLineSelector);
        SetRoutingChecked();
        SelectComboEntry("Continuous", m_ComboAcquisitionMode);
        SelectComboEntry("On", m_ComboTriggerMode);
    }
    if (m_ComboExposureAuto != nullptr) {
        SwitchOffEverySelector();
        SelectComboEntry("FrameStart", m_ComboTriggerSelector);
        SelectComboEntry("FallingEdge", m_ComboTriggerActivation);
        SelectComboEntry("Line1", m_ComboTriggerSource);
        SelectComboEntry("Continuous", m_ComboAcquisitionMode);
        SelectComboEntry("Off", m_ComboExposureAuto);
        PumpEvents();
        SelectComboEntry("Line1", m_ComboTriggerSource);
        SelectComboEntry("On", m_ComboTriggerMode);
    }
    if (m_ComboExposureMode != nullptr && m_ComboInputLineSelector == nullptr) {
        SelectComboEntry("Timed", m_ComboExposureMode);
        SelectComboEntry("AcquisitionStart", m_ComboTriggerSelector);
        PumpEvents();
        SelectComboEntry("Off", m_ComboTriggerMode);
        SelectComboEntry("FrameStart", m_ComboTriggerSelector);
        PumpEvents();
        SelectComboEntry("Off", m_ComboTriggerMode);
        SelectComboEntry(GetFirstInputLine(), m_ComboTriggerSource);
        SelectComboEntry("FallingEdge", m_ComboTriggerActivation);
        SelectComboEntry("Continuous", m_ComboAcquisitionMode);
        SelectComboEntry("On", m_ComboTriggerMode);
    }

    UpdatePresetButtons(!m_ComboAcquisitionMode->isEnabled());
    RegisterObservers(false);
}

void IOTriggerWidget::OnLevelMode()
{
    // Level keeps the observers registered, unlike Edge and Bulk; kept on purpose.
    UpdatePresetButtons(true);

    if (m_ComboExposureMode != nullptr && m_ComboInputLineSelector != nullptr) {
        // Mode "On" first and never "Off"; "LowLevel" as this family spells it.
        SelectComboEntry("InputLines", m_ComboTriggerSource);
        SelectComboEntry("On", m_ComboTriggerMode);
        SelectComboEntry("TriggerWidth", m_ComboExposureMode);
        // Refilled with its signal live on purpose: on a camera that moved its
        // selector by itself, the selector slot carries the trigger mode over.
        UpdateTriggerSelector();
        SelectComboEntry("ExposureActive", m_ComboTriggerSelector);
        SelectComboEntry("InputLines", m_ComboTriggerSource);
        SelectComboEntry("LowLevel", m_ComboTriggerActivation);
        SetRoutingChecked();
        SelectComboEntry("Line0", m_ComboInputLineSelector);
        SelectComboEntry("Continuous", m_ComboAcquisitionMode);
    }
    if (m_ComboExposureAuto != nullptr) {
        SwitchOffEverySelector();
        SelectComboEntry("FrameStart", m_ComboTriggerSelector);
        SelectComboEntry("Line1", m_ComboTriggerSource);
        SelectComboEntry("Continuous", m_ComboAcquisitionMode);
        SelectComboEntry("other", m_ComboExposureAuto);
        PumpEvents();
        SelectComboEntry("Line1", m_ComboTriggerSource);
        SelectComboEntry("LevelLow", m_ComboTriggerActivation);
        SelectComboEntry("On", m_ComboTriggerMode);
    }
    if (m_ComboExposureMode != nullptr && m_ComboInputLineSelector == nullptr) {
        // Ends with "FallingEdge" on purpose.
        SelectComboEntry("TriggerWidth", m_ComboExposureMode);
        SelectComboEntry("AcquisitionStart", m_ComboTriggerSelector);
        PumpEvents();
        SelectComboEntry("Off", m_ComboTriggerMode);
        SelectComboEntry("FrameStart", m_ComboTriggerSelector);
        PumpEvents();
        SelectComboEntry("Off", m_ComboTriggerMode);
        SelectComboEntry(GetFirstInputLine(), m_ComboTriggerSource);
        SelectComboEntry("FallingEdge", m_ComboTriggerActivation);
        SelectComboEntry("Continuous", m_ComboAcquisitionMode);
        SelectComboEntry("On", m_ComboTriggerMode);
    }

    UpdatePresetButtons(!m_ComboAcquisitionMode->isEnabled());
}

void IOTriggerWidget::OnBulkMode()
{
    UnregisterObservers();
    UpdatePresetButtons(true);

    // "FallinEdge" below matches no entry, so the activation stays as it was; kept on purpose.
    if (m_ComboExposureMode != nullptr && m_ComboInputLineSelector != nullptr) {
        // A level set-up is turned into an edge one first; Edge re-registers the
        // observers and Bulk carries on with them registered.
        if (m_ComboExposureMode->currentText().contains("TriggerWidth"))
            OnEdgeMode();
        SelectComboEntry("Timed", m_ComboExposureMode);
        // Refilled with its signal live on purpose: on a camera that moved its
        // selector by itself, the selector slot carries the trigger mode over.
        UpdateTriggerSelector();
        SelectComboEntry("ExposureStart", m_ComboTriggerSelector);
        Wait200ms();
        SelectComboEntry("Off", m_ComboTriggerMode);
        SelectComboEntry("InputLines", m_ComboTriggerSource);
        SelectComboEntry("FallinEdge", m_ComboTriggerActivation);
        SelectComboEntry("AcquisitionStart", m_ComboTriggerSelector);
        SetRoutingChecked();
        SelectComboEntry("Line0", m_ComboInputLineSelector);
        SetFrameCount(10);
        SelectComboEntry("MultiFrame", m_ComboAcquisitionMode);
        SetRoutingChecked();
        SelectComboEntry("On", m_ComboTriggerMode);
    }
    if (m_ComboExposureAuto != nullptr) {
        SwitchOffEverySelector();
        SelectComboEntry("AcquisitionStart", m_ComboTriggerSelector);
        SelectComboEntry("Line1", m_ComboTriggerSource);
        SelectComboEntry("MultiFrame", m_ComboAcquisitionMode);
        SelectComboEntry("Off", m_ComboExposureAuto);
        SetFrameCount(10);
        PumpEvents();
        SelectComboEntry("Line1", m_ComboTriggerSource);
        SelectComboEntry("FallinEdge", m_ComboTriggerActivation);
        SelectComboEntry("On", m_ComboTriggerMode);
    }
    if (m_ComboExposureMode != nullptr && m_ComboInputLineSelector == nullptr) {
        SelectComboEntry("Timed", m_ComboExposureMode);
        SelectComboEntry("FrameStart", m_ComboTriggerSelector);
        PumpEvents();
        SelectComboEntry("Off", m_ComboTriggerMode);
        SelectComboEntry("AcquisitionStart", m_ComboTriggerSelector);
        Wait200ms();
        SelectComboEntry("Off", m_ComboTriggerMode);
        SelectComboEntry(GetFirstInputLine(), m_ComboTriggerSource);
        SelectComboEntry("FallingEdge", m_ComboTriggerActivation);
        SelectComboEntry("MultiFrame", m_ComboAcquisitionMode);
        SetFrameCount(10);
        SelectComboEntry("On", m_ComboTriggerMode);
    }

    UpdatePresetButtons(!m_ComboAcquisitionMode->isEnabled());
    RegisterObservers(false);
}

// ---------------------------------------------------------------------------
// Output lines. Generation 1 names its lines "Line*" and has a per-line
// direction; generations 2 ("SyncOut*") and 3 ("LineOut*") share one code path
// through fallback names, every selector entry being an output.

bool IOTriggerWidget::IsLineGeneration()
{
    return !m_FeatureManager->GetStringValue("LineSelector").isEmpty();
}

QStringList IOTriggerWidget::GetOutputs()
{
    QStringList outputs;
    const QStringList lines = m_FeatureManager->GetAvailableValues("LineSelector");
    if (lines.isEmpty())
        return m_FeatureManager->GetAvailableValues("SyncOutSelector", "LineOutSelector");

    const QString kept = m_FeatureManager->GetStringValue("LineSelector");
    for (const QString& line : lines) {
        if (!m_FeatureManager->SetStringValue("LineSelector", line).isEmpty()) {
            const QString mode = m_FeatureManager->GetStringValue("LineMode");
            if (!mode.isEmpty() && mode == "Output")
                outputs.append(line);
        }
        const QString restored = m_FeatureManager->SetStringValue("LineSelector", kept);
        if (restored.isEmpty())
            qDebug() << "GetOutputs Pelko Error: " << restored;
    }
    return outputs;
}

void IOTriggerWidget::BuildOutputHeader()
{
    // "SynOutSource"/"SynOutPolarity" without the c are tested on purpose: a
    // camera with only "SyncOutSource" gets the "LineSource:" header.
    QString sourceText;
    if (m_FeatureManager->IsAvailable("SynOutSource", "LineOutSource"))
        sourceText = m_FeatureManager->IsAvailable("LineOutSource") ? tr("LineOutSource:") : tr("SyncOutSource:");
    else
        sourceText = tr("LineSource:");
    const QString invertText =
        m_FeatureManager->IsAvailable("LineOutPolarity", "SynOutPolarity") ? tr("Polarity:") : tr("Invert:");

    QLabel* source = NewLabel(sourceText, "l_HeaderSource", m_Ui->gb_Output);
    QLabel* invert = NewLabel(invertText, "l_HeaderInvert", m_Ui->gb_Output);
    QLabel* status = NewLabel(tr("Status:"), "l_HeaderStatus", m_Ui->gb_Output);
    QLabel* userOutSel = NewLabel(tr("UserOutSel.:"), "l_HeaderUserOutSel", m_Ui->gb_Output);
    QLabel* userValue = NewLabel(tr("User Value:"), "l_HeaderUserValue", m_Ui->gb_Output);
    m_HeaderLabels << source << invert << status << userOutSel << userValue;

    // Text in the background colour, two pixels high: the header row is kept
    // practically invisible on purpose.
    const QColor background = palette().brush(QPalette::Current, QPalette::Window).color();
    const QString styleSheet = QString("QLabel { color : rgb( ") + QString::number(background.red()) + ", " +
                               QString::number(background.green()) + ", " + QString::number(background.blue()) + "); }";
    for (QLabel* label : m_HeaderLabels) {
        label->setStyleSheet(styleSheet);
        label->setMaximumHeight(2);
    }

    QGridLayout* grid = m_Ui->grid_Output;
    grid->addWidget(source, 0, 1, 1, 1, Qt::AlignLeft);
    grid->addWidget(invert, 0, 2, 1, 1, Qt::AlignHCenter | Qt::AlignVCenter);
    grid->addWidget(status, 0, 3, 1, 1, Qt::AlignHCenter | Qt::AlignVCenter);
    grid->addWidget(userOutSel, 0, 4, 1, 1, Qt::AlignLeft);
    grid->addWidget(userValue, 0, 5, 1, 1);
}

void IOTriggerWidget::BuildOutputGroup()
{
    m_Outputs = GetOutputs();

    int height = 35 * m_Outputs.size() + 85;
    if (!m_FeatureManager->IsAvailable("LineOutLevels", "SyncOutLevels"))
        height -= 35;
    m_Ui->gb_Output->setMinimumHeight(height);
    m_Ui->gb_Output->setMaximumHeight(height);

    QGridLayout* grid = m_Ui->grid_Output;
    QWidget* group = m_Ui->gb_Output;
    const int firstNew = m_OutputRows.size();
    for (int i = 0; i < m_Outputs.size(); ++i) {
        const QString index = QString::number(i);
        OutputRow row;
        row.label = NewLabel(m_Outputs.at(i) + ": ", "l_Out_" + index, group);
        row.source = new QComboBox(group);
        row.source->setObjectName("combo_OutSource_" + index);
        row.source->setMaximumWidth(95);
        row.invert = NewCheckBox("cb_OutInvert_" + index, group);
        row.status = NewCheckBox("cb_OutStatus_" + index, group);
        row.userSelector = new QComboBox(group);
        row.userSelector->setObjectName("combo_OutUserSelector_" + index);
        row.userSelector->setLayoutDirection(Qt::RightToLeft);
        row.userValue = NewCheckBox("cb_OutUserValue_" + index, group);

        grid->addWidget(row.label, i + 1, 0, 1, 1);
        grid->addWidget(row.source, i + 1, 1, 1, 1);
        grid->addWidget(row.invert, i + 1, 2, 1, 1);
        grid->addWidget(row.status, i + 1, 3, 1, 1);
        grid->addWidget(row.userSelector, i + 1, 4, 1, 1);
        grid->addWidget(row.userValue, i + 1, 5, 1, 1);
        m_OutputRows.append(row);
    }

    const char* userValueSlots[] = {SLOT(OnCBOutUserValueChanged1(int)), SLOT(OnCBOutUserValueChanged2(int)),
                                    SLOT(OnCBOutUserValueChanged3(int)), SLOT(OnCBOutUserValueChanged4(int)),
                                    SLOT(OnCBOutUserValueChanged5(int))};
    const int userValueSlotCount = static_cast<int>(sizeof(userValueSlots) / sizeof(userValueSlots[0]));
    for (int i = 0; i < m_OutputRows.size(); ++i) {
        const OutputRow& row = m_OutputRows.at(i);
        connect(row.source, SIGNAL(currentIndexChanged(QString)), this, SLOT(OnComboOutSourceChanged(QString)));
        connect(row.invert, SIGNAL(stateChanged(int)), this, SLOT(OnCBOutInvertChanged(int)));
        connect(row.status, SIGNAL(stateChanged(int)), this, SLOT(OnCBOutStatusChanged(int)));
        // No such slot exists: this connection fails every time and is kept on purpose.
        connect(row.userValue, SIGNAL(stateChanged(int)), this, SLOT(OnCBOutUserValueChanged(int)));
        // Only the first five rows get a working user value box.
        if (i < userValueSlotCount)
            connect(row.userValue, SIGNAL(stateChanged(int)), this, userValueSlots[i]);
    }

    grid->setColumnStretch(0, 1);
    grid->setColumnStretch(1, 3);
    for (int column = 2; column <= 5; ++column)
        grid->setColumnStretch(column, 1);

    // The new rows are already connected: showing the camera's values must not
    // write them back.
    std::vector<QSignalBlocker> blockers;
    for (int i = firstNew; i < m_OutputRows.size(); ++i) {
        const OutputRow& row = m_OutputRows.at(i);
        blockers.emplace_back(row.source);
        blockers.emplace_back(row.userSelector);
        blockers.emplace_back(row.userValue);
        blockers.emplace_back(row.invert);
        blockers.emplace_back(row.status);
    }
    updateOutSource();
    updateOutInvert();
    UpdateOutStatus();
    UpdateOutLevels();
    UpdateUserOutSelectors();
    updateUserOutValue();
}

void IOTriggerWidget::DeleteOutputRows()
{
    for (const OutputRow& row : m_OutputRows) {
        QWidget* widgets[] = {row.label, row.source, row.invert, row.status, row.userSelector, row.userValue};
        for (QWidget* widget : widgets) {
            if (widget == nullptr)
                continue;
            if (m_Ui)
                m_Ui->grid_Output->removeWidget(widget);
            delete widget;
        }
    }
    m_OutputRows.clear();
}

void IOTriggerWidget::updateOutSource()
{
    const bool lineGeneration = IsLineGeneration();
    const QString kept = lineGeneration ? m_FeatureManager->GetStringValue("LineSelector")
                                        : m_FeatureManager->GetStringValue("SyncOutSelector", "LineOutSelector");
    for (int i = 0; i < m_Outputs.size() && i < m_OutputRows.size(); ++i) {
        const OutputRow& row = m_OutputRows.at(i);
        if (lineGeneration) {
            if (m_FeatureManager->SetStringValue("LineSelector", m_Outputs.at(i)).isEmpty())
                continue;
            FillComboFromFeature("LineSource", row.source, false);
            const QString source = row.source->currentText();
            row.status->setEnabled(m_FeatureManager->IsWritable("LineStatus") && source == "Direct");
            row.userValue->setEnabled(source.contains("UserOutput"));
        } else {
            if (m_FeatureManager->SetStringValue("SyncOutSelector", "LineOutSelector", m_Outputs.at(i)).isEmpty())
                continue;
            FillComboFromFeature(m_FeatureManager->IsAvailable("LineOutSource") ? "LineOutSource" : "SyncOutSource",
                                 row.source, false);
            row.status->setEnabled(m_FeatureManager->IsWritable("SyncOutLevels", "LineOutLevels") &&
                                   row.source->currentText() == "GPO");
        }
    }
    const QString restored = lineGeneration
                                 ? m_FeatureManager->SetStringValue("LineSelector", kept)
                                 : m_FeatureManager->SetStringValue("SyncOutSelector", "LineOutSelector", kept);
    if (restored.isEmpty())
        qDebug() << "Pelko Error updateOutSource: " << restored;

    UpdateUserOutSelectors();
}

void IOTriggerWidget::updateOutInvert()
{
    const bool lineGeneration = IsLineGeneration();
    const QString kept = lineGeneration ? m_FeatureManager->GetStringValue("LineSelector")
                                        : m_FeatureManager->GetStringValue("SyncOutSelector", "LineOutSelector");
    for (int i = 0; i < m_Outputs.size() && i < m_OutputRows.size(); ++i) {
        const OutputRow& row = m_OutputRows.at(i);
        if (lineGeneration) {
            if (m_FeatureManager->SetStringValue("LineSelector", m_Outputs.at(i)).isEmpty())
                continue;
            // NaN counts as set.
            row.invert->setChecked(m_FeatureManager->GetValue("LineInverter") != 0.0);
        } else {
            if (m_FeatureManager->SetStringValue("SyncOutSelector", "LineOutSelector", m_Outputs.at(i)).isEmpty())
                continue;
            row.invert->setChecked(m_FeatureManager->GetStringValue("SyncOutPolarity", "LineOutPolarity") == "Invert");
        }
    }
    const QString restored = lineGeneration
                                 ? m_FeatureManager->SetStringValue("LineSelector", kept)
                                 : m_FeatureManager->SetStringValue("SyncOutSelector", "LineOutSelector", kept);
    if (restored.isEmpty())
        qDebug() << "Pelko Error updateOutSource: " << restored;
}

void IOTriggerWidget::UpdateOutStatus()
{
    // Generation 1 only: one "LineStatus" per line.
    const QString kept = m_FeatureManager->GetStringValue("LineSelector");
    if (kept.isEmpty())
        return;
    for (int i = 0; i < m_Outputs.size() && i < m_OutputRows.size(); ++i) {
        const OutputRow& row = m_OutputRows.at(i);
        if (m_FeatureManager->SetStringValue("LineSelector", m_Outputs.at(i)).isEmpty())
            continue;
        row.status->setChecked(m_FeatureManager->GetValue("LineStatus") != 0.0);
        row.status->setEnabled(m_FeatureManager->IsWritable("LineStatus") && row.source->currentText() == "Direct");
    }
    const QString restored = m_FeatureManager->SetStringValue("LineSelector", kept);
    if (restored.isEmpty())
        qDebug() << "Pelko Error updateOutSource: " << restored;
}

void IOTriggerWidget::UpdateOutLevels()
{
    // Generations 2/3 only: one bit mask for all outputs.
    if (IsLineGeneration())
        return;
    const long long mask = ToLongLong(m_FeatureManager->GetValue("SyncOutLevels", "LineOutLevels"));
    const bool writable = m_FeatureManager->IsWritable("SyncOutLevels", "LineOutLevels");
    for (int i = 0; i < m_OutputRows.size(); ++i) {
        const OutputRow& row = m_OutputRows.at(i);
        const int bit = i % 64;
        row.status->setChecked(((mask >> bit) & 1) != 0);
        row.status->setEnabled(writable && row.source->currentText() == "GPO");
    }
}

void IOTriggerWidget::OnComboOutSourceChanged(const QString& text)
{
    BlockControlSignals(true);

    const bool lineGeneration = IsLineGeneration();
    const QString kept = lineGeneration ? m_FeatureManager->GetStringValue("LineSelector")
                                        : m_FeatureManager->GetStringValue("SyncOutSelector", "LineOutSelector");
    for (int i = 0; i < m_Outputs.size() && i < m_OutputRows.size(); ++i) {
        const OutputRow& row = m_OutputRows.at(i);
        const QString source = row.source->currentText();
        if (lineGeneration) {
            if (m_FeatureManager->SetStringValue("LineSelector", m_Outputs.at(i)).isEmpty())
                continue;
            // The sender is not known: every row showing the text gets it.
            if (source == text)
                m_FeatureManager->SetStringValue("LineSource", text);
            row.status->setEnabled(m_FeatureManager->IsWritable("LineStatus") && source == "Direct");
        } else {
            if (m_FeatureManager->SetStringValue("SyncOutSelector", "LineOutSelector", m_Outputs.at(i)).isEmpty())
                continue;
            if (source == text)
                m_FeatureManager->SetStringValue("SyncOutSource", "LineOutSource", text);
            row.status->setEnabled(m_FeatureManager->IsWritable("SyncOutLevels", "LineOutLevels") && source == "GPO");
        }
    }
    if (lineGeneration) {
        const QString restored = m_FeatureManager->SetStringValue("LineSelector", kept);
        if (restored.isEmpty())
            qDebug() << "Pelko Error OnComboOutSourceChanged: " << restored;
    } else {
        const QString restored = m_FeatureManager->SetStringValue("SyncOutSelector", "LineOutSelector", kept);
        // Two blanks and no colon, kept as it is.
        if (restored.isEmpty())
            qDebug() << "Pelko Error  OnComboOutSourceChanged" << restored;
    }

    UpdateUserOutSelectors();
    updateUserOutValue();
    BlockControlSignals(false);
}

void IOTriggerWidget::OnCBOutInvertChanged(int state)
{
    Q_UNUSED(state);  // every row is written, whichever box changed
    BlockControlSignals(true);
    UnregisterObservers();

    const bool lineGeneration = IsLineGeneration();
    const QString kept = lineGeneration ? m_FeatureManager->GetStringValue("LineSelector")
                                        : m_FeatureManager->GetStringValue("SyncOutSelector", "LineOutSelector");
    for (int i = 0; i < m_Outputs.size() && i < m_OutputRows.size(); ++i) {
        const OutputRow& row = m_OutputRows.at(i);
        if (lineGeneration) {
            if (m_FeatureManager->SetStringValue("LineSelector", m_Outputs.at(i)).isEmpty())
                continue;
            const double wanted = row.invert->isChecked() ? 1.0 : 0.0;
            const double readBack = m_FeatureManager->SetValue("LineInverter", wanted);
            if (readBack != wanted)
                qDebug() << "Pelko Error updateOutSource: " << QString::number(readBack);
        } else {
            if (m_FeatureManager->SetStringValue("SyncOutSelector", "LineOutSelector", m_Outputs.at(i)).isEmpty())
                continue;
            const QString written = m_FeatureManager->SetStringValue(
                "SyncOutPolarity", "LineOutPolarity", row.invert->isChecked() ? QString("Invert") : QString("Normal"));
            if (written.isEmpty())
                qDebug() << "Pelko Error updateOutSource: " << written;
        }
    }
    const QString restored = lineGeneration
                                 ? m_FeatureManager->SetStringValue("LineSelector", kept)
                                 : m_FeatureManager->SetStringValue("SyncOutSelector", "LineOutSelector", kept);
    if (restored.isEmpty())
        qDebug() << "Pelko Error updateOutInvertChanged: " << restored;

    UpdateOutStatus();
    UpdateOutLevels();
    BlockControlSignals(false);
    RegisterObservers(false);
}

void IOTriggerWidget::OnCBOutStatusChanged(int state)
{
    Q_UNUSED(state);  // every row is written, whichever box changed
    BlockControlSignals(true);
    UnregisterObservers();

    const QString kept = m_FeatureManager->GetStringValue("LineSelector");
    if (!kept.isEmpty()) {
        for (int i = 0; i < m_Outputs.size() && i < m_OutputRows.size(); ++i) {
            const OutputRow& row = m_OutputRows.at(i);
            if (m_FeatureManager->SetStringValue("LineSelector", m_Outputs.at(i)).isEmpty())
                continue;
            const double wanted = row.status->isChecked() ? 1.0 : 0.0;
            const double readBack = m_FeatureManager->SetValue("LineStatus", wanted);
            if (readBack != wanted)
                qDebug() << "Pelko Error OnCBOutStatusChanged: " << QString::number(readBack);
        }
        const QString restored = m_FeatureManager->SetStringValue("LineSelector", kept);
        if (restored.isEmpty())
            qDebug() << "Pelko Error OnCBOutStatusChanged: " << restored;
    } else if (m_FeatureManager->IsAvailable("SyncOutLevels", "LineOutLevels")) {
        quint32 mask = 0;
        for (int i = 0; i < m_OutputRows.size(); ++i) {
            // Bit numbers wrap at 32, as the camera's mask is 32 bits wide.
            if (m_OutputRows.at(i).status->isChecked())
                mask |= quint32(1) << (i % 32);
        }
        const double wanted = static_cast<double>(mask);
        const double readBack = m_FeatureManager->SetValue("SyncOutLevels", "LineOutLevels", wanted);
        if (readBack != wanted)
            qDebug() << "Pelko Error OnCBOutStatusChanged: " << QString::number(readBack);
    }

    BlockControlSignals(false);
    RegisterObservers(false);
}

// ---------------------------------------------------------------------------
// User outputs and the selectable output

void IOTriggerWidget::UpdateUserOutSelectors()
{
    const QStringList userOutputs = m_FeatureManager->GetAvailableValues("UserOutputSelector");
    for (const OutputRow& row : m_OutputRows) {
        row.userSelector->clear();
        row.userSelector->insertItems(0, userOutputs);
    }
    // Display only: the row's source names the user output it follows.
    for (const OutputRow& row : m_OutputRows) {
        const QString source = row.source->currentText();
        if (source.contains("UserOutput"))
            row.userSelector->setCurrentIndex(row.userSelector->findText(source));
        else
            row.userSelector->setCurrentIndex(-1);
        row.userSelector->setEnabled(false);
    }
}

void IOTriggerWidget::updateUserOutValue()
{
    const QString kept = m_FeatureManager->GetStringValue("UserOutputSelector");
    for (const OutputRow& row : m_OutputRows) {
        const QString source = row.source->currentText();
        if (!source.contains("UserOutput"))
            continue;
        if (!m_FeatureManager->SetStringValue("UserOutputSelector", source).isEmpty())
            row.userValue->setChecked(m_FeatureManager->GetValue("UserOutputValue") != 0.0);
    }
    const QString restored = m_FeatureManager->SetStringValue("UserOutputSelector", kept);
    if (restored.isEmpty())
        qDebug() << "Error updateUserOutValue: " << restored;

    for (const OutputRow& row : m_OutputRows)
        row.userValue->setEnabled(row.source->currentText().contains("UserOutput"));
}

void IOTriggerWidget::OnCBOutUserValueChanged1(int state)
{
    HandleUserOutValueChanged(0, state);
}

void IOTriggerWidget::OnCBOutUserValueChanged2(int state)
{
    HandleUserOutValueChanged(1, state);
}

void IOTriggerWidget::OnCBOutUserValueChanged3(int state)
{
    HandleUserOutValueChanged(2, state);
}

void IOTriggerWidget::OnCBOutUserValueChanged4(int state)
{
    HandleUserOutValueChanged(3, state);
}

void IOTriggerWidget::OnCBOutUserValueChanged5(int state)
{
    HandleUserOutValueChanged(4, state);
}

void IOTriggerWidget::HandleUserOutValueChanged(int row, int state)
{
    if (row < 0 || row >= m_OutputRows.size())
        return;
    BlockControlSignals(true);
    UnregisterObservers();

    const QString kept = m_FeatureManager->GetStringValue("UserOutputSelector");
    const QString userOutput = m_OutputRows.at(row).source->currentText();
    if (!m_FeatureManager->SetStringValue("UserOutputSelector", userOutput).isEmpty()) {
        const double wanted = state == Qt::Unchecked ? 0.0 : 1.0;
        const double readBack = m_FeatureManager->SetValue("UserOutputValue", wanted);
        if (readBack != wanted)
            qDebug() << "Pelko Error OnCBOutUserValueChanged: " << QString::number(readBack);
    }
    const QString restored = m_FeatureManager->SetStringValue("UserOutputSelector", kept);
    if (restored.isEmpty())
        qDebug() << "Pelko Error updateOutSource: " << restored;

    UpdateOutStatus();
    UpdateOutLevels();
    BlockControlSignals(false);
    RegisterObservers(false);
}

QStringList IOTriggerWidget::GetSelectableLines()
{
    // Selectable: every line whose direction the user may switch ("LineMode"
    // writable with more than one entry), in the camera's order.
    QStringList selectable;
    const QStringList lines = m_FeatureManager->GetAvailableValues("LineSelector");
    if (lines.isEmpty())
        return selectable;
    const QString kept = m_FeatureManager->GetStringValue("LineSelector");
    for (const QString& line : lines) {
        if (m_FeatureManager->SetStringValue("LineSelector", line).isEmpty())
            continue;
        if (m_FeatureManager->IsWritable("LineMode") && m_FeatureManager->GetAvailableValues("LineMode").size() > 1)
            selectable.append(line);
    }
    m_FeatureManager->SetStringValue("LineSelector", kept);
    return selectable;
}

void IOTriggerWidget::BuildSelectableOutputGroup()
{
    const int height = 55 * m_SelectableLines.size();
    m_Ui->gb_SelectOutput->setMinimumHeight(height);
    m_Ui->gb_SelectOutput->setMaximumHeight(height);

    for (int i = 0; i < m_SelectableLines.size(); ++i) {
        const QString index = QString::number(i);
        QLabel* label = NewLabel(m_SelectableLines.at(i), "l_OptionalOut_" + index, m_Ui->gb_SelectOutput);
        QComboBox* combo = new QComboBox(m_Ui->gb_SelectOutput);
        combo->setObjectName("combo_OptionalOut_" + index);
        m_Ui->grid_SelectableOut->addWidget(label, i, 0);
        m_Ui->grid_SelectableOut->addWidget(combo, i, 1);
        connect(combo, SIGNAL(currentIndexChanged(QString)), this, SLOT(OnComboOptionalOutChanged(QString)));
        m_OptionalOutLabels.append(label);
        m_OptionalOutCombos.append(combo);
    }

    // Filling the connected combos must not switch any line's direction.
    std::vector<QSignalBlocker> blockers;
    for (QComboBox* combo : m_OptionalOutCombos)
        blockers.emplace_back(combo);
    UpdateOptionalOutputs();
}

void IOTriggerWidget::UpdateOptionalOutputs()
{
    const QString kept = m_FeatureManager->GetStringValue("LineSelector");
    for (int i = 0; i < m_SelectableLines.size() && i < m_OptionalOutCombos.size(); ++i) {
        if (!m_FeatureManager->SetStringValue("LineSelector", m_SelectableLines.at(i)).isEmpty())
            FillComboFromFeature("LineMode", m_OptionalOutCombos.at(i), false);
    }
    const QString restored = m_FeatureManager->SetStringValue("LineSelector", kept);
    qDebug() << "RetValue updateOpt. Out" << restored;

    UpdateUserOutSelectors();
}

void IOTriggerWidget::OnComboOptionalOutChanged(const QString& text)
{
    const QString kept = m_FeatureManager->GetStringValue("LineSelector");
    for (int i = 0; i < m_SelectableLines.size() && i < m_OptionalOutCombos.size(); ++i) {
        if (m_FeatureManager->SetStringValue("LineSelector", m_SelectableLines.at(i)).isEmpty())
            continue;
        if (m_OptionalOutCombos.at(i)->currentText() == text)
            m_FeatureManager->SetStringValue("LineMode", text);
    }
    const QString restored = m_FeatureManager->SetStringValue("LineSelector", kept);
    // The source slot's message, used here too; kept as it is.
    if (restored.isEmpty())
        qDebug() << "Pelko Error OnComboOutSourceChanged: " << restored;
}

// ---------------------------------------------------------------------------
// Feature-change synchronisation

void IOTriggerWidget::UpdateFromChangedFeatures()
{
    const QStringList& changed = *m_ChangedFeatures;
    auto has = [&changed](const char* name) { return changed.contains(QString(name), Qt::CaseSensitive); };

    if (has("TriggerSource")) {
        BlockControlSignals(true);
        UpdateTriggerSource();
        BlockControlSignals(false);
    }
    if (has("TriggerActivation")) {
        BlockControlSignals(true);
        FillComboFromFeature("TriggerActivation", m_ComboTriggerActivation, false);
        BlockControlSignals(false);
    }
    if (has("TriggerMode")) {
        BlockControlSignals(true);
        FillComboFromFeature("TriggerMode", m_ComboTriggerMode, false);
        UpdateTriggerSelector();
        FillComboFromFeature("TriggerActivation", m_ComboTriggerActivation, false);
        BlockControlSignals(false);
    }
    if (has("TriggerSelector")) {
        BlockControlSignals(true);
        UpdateTriggerSelector();
        BlockControlSignals(false);
    }
    // Lower-case "c" never matches the camera's name: the spin box follows
    // "AcquisitionMode" only. Kept on purpose.
    if (has("AcquisitionFramecount")) {
        BlockControlSignals(true);
        UpdateAcquisitionFrameCount();
        BlockControlSignals(false);
    }
    if (has("AcquisitionMode")) {
        BlockControlSignals(true);
        UpdateAcquisitionMode();
        UpdateAcquisitionFrameCount();
        BlockControlSignals(false);
    }
    if (has("LineSelector")) {
        BlockControlSignals(true);
        UpdateInputLineSelector();
        BlockControlSignals(false);
    }
    if (has("LineRouting")) {
        BlockControlSignals(true);
        UpdateLineRouting();
        BlockControlSignals(false);
    }
    if (has("ExposureMode")) {
        BlockControlSignals(true);
        UpdateExposureMode();
        BlockControlSignals(false);
    }
    if (has("ExposureAuto")) {
        BlockControlSignals(true);
        FillComboFromFeature("ExposureAuto", m_ComboExposureAuto, false);
        BlockControlSignals(false);
    }
    if (has("LineSource") || has("SyncOutSource") || has("LineOutSource")) {
        BlockControlSignals(true);
        updateOutSource();
        BlockControlSignals(false);
    }
    if (has("LineInverter") || has("SyncOutPolarity") || has("LineOutPolarity")) {
        BlockControlSignals(true);
        updateOutInvert();
        BlockControlSignals(false);
    }
    if (has("LineStatus")) {
        BlockControlSignals(true);
        UpdateOutStatus();
        updateOutInvert();
        BlockControlSignals(false);
    }
    // "LineOutlevels" with a lower-case "l" never matches; kept on purpose.
    if (has("SyncOutLevels") || has("LineOutlevels")) {
        BlockControlSignals(true);
        UpdateOutLevels();
        BlockControlSignals(false);
    }
    // Only a camera naming it exactly "UserOutSelector" fires this; kept on purpose.
    if (has("UserOutSelector")) {
        BlockControlSignals(true);
        UpdateUserOutSelectors();
        BlockControlSignals(false);
    }
    if (has("UserOutputValue")) {
        BlockControlSignals(true);
        updateUserOutValue();
        BlockControlSignals(false);
    }
    // A line changed direction: the output rows are built anew.
    if (has("LineMode")) {
        BlockControlSignals(true);
        DeleteOutputRows();
        BuildOutputGroup();
        BlockControlSignals(false);
        for (const OutputRow& row : m_OutputRows)
            row.source->setMaximumWidth(QWIDGETSIZE_MAX);
        UpdateOutStatus();
        BlockControlSignals(false);
    }
}
