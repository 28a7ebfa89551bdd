#include "IOTriggerWidget.h"

#include <QComboBox>
#include <QStringList>
#include <QWidget>

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
