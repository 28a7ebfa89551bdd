#include "IOTriggerWidget.h"

#include "FeatureManager.h"
#include "IOTriggerWidgetHelpers.h"
#include "ui_IOTriggerWidget.h"

#include <QCheckBox>
#include <QComboBox>
#include <QDebug>
#include <QGridLayout>
#include <QGroupBox>
#include <QIcon>
#include <QLabel>
#include <QPushButton>
#include <QSizePolicy>
#include <QSpacerItem>
#include <QSpinBox>

#include <algorithm>
#include <cmath>
#include <limits>

using IOTriggerWidgetHelpers::NewCheckBox;
using IOTriggerWidgetHelpers::NewLabel;

namespace {

// Columns of the trigger group's grid: a spacer row spans all of them.
const int kTriggerGridColumns = 9;

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

}  // namespace

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
