#include "IOTriggerWidget.h"

#include <QCheckBox>
#include <QComboBox>
#include <QCoreApplication>
#include <QElapsedTimer>
#include <QSpinBox>

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
