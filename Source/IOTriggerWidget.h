#ifndef IOTRIGGERWIDGET_H
#define IOTRIGGERWIDGET_H

#include "BaseTabPluginWidget.h"

#include <PkoAPI/PkoAPI.h>

#include <QList>
#include <QSharedPointer>
#include <QString>
#include <QStringList>
#include <QVector>

#include <memory>

class FeatureManager;
class QCheckBox;
class QComboBox;
class QGroupBox;
class QLabel;
class QMutex;
class QPushButton;
class QSpinBox;
class QTimer;
class QTranslator;

namespace Ui {
class IOTriggerWidget;
}

// The "Trigger IO" tab: trigger input, acquisition and exposure modes, three
// trigger presets, the camera's output lines with their user outputs and the
// direction of the selectable lines. Every control is created only when the
// camera offers the feature behind it; a control that does not exist is a
// null pointer. Changes reported by the camera reach the controls through
// UpdateFromChangedFeatures() once a second while the tab is shown.
//
// Object names of the controls (tests find them by these):
//   groups "gb_Trigger", "gb_Acquisition", "gb_QuickSettings";
//   combos "combo_TriggerSource", "combo_TriggerActivation", "combo_TriggerSelector", "combo_TriggerMode",
//   "combo_AcquisitionMode", "combo_ExposureAuto", "combo_ExposureMode", "combo_InputLineSelector";
//   spin box "spin_AcquisitionFrameCount"; check box "cb_LineRouting";
//   buttons "pb_SWTrigger", "pb_Edge", "pb_Level", "pb_Bulk";
//   labels "l_TriggerSource", "l_TriggerActivation", "l_TriggerSelector", "l_TriggerMode", "l_AcquisitionMode",
//   "l_AcquisitionFrameCount", "l_ExposureAuto", "l_ExposureMode", "l_InputLineSelector", "l_LineRouting";
//   output row i (from 0): "l_Out_<i>", "combo_OutSource_<i>", "cb_OutInvert_<i>", "cb_OutStatus_<i>",
//   "combo_OutUserSelector_<i>", "cb_OutUserValue_<i>"; output headers "l_HeaderSource", "l_HeaderInvert",
//   "l_HeaderStatus", "l_HeaderUserOutSel", "l_HeaderUserValue";
//   selectable line i (from 0): "l_OptionalOut_<i>", "combo_OptionalOut_<i>";
//   the form's own objects ("l_notAcquireHint", "gb_TriggerInput", "grid_TriggerInput", "gb_Output",
//   "grid_Output", "gb_SelectOutput", "grid_SelectableOut", "scrollArea", ...).
class IOTriggerWidget : public BaseTabPluginWidget {
    Q_OBJECT

public:
    // Builds the tab for the camera whose features are given, inside parent
    // (may be null). Throws TENotSupported (error code 4) when the camera has
    // neither "LineOutLevels"/"SyncOutLevels" nor "LineSelector"; everything
    // allocated so far is freed while the exception unwinds. Missing optional
    // features never fail the construction: their controls are not built.
    IOTriggerWidget(QSharedPointer<QVector<ZMT::PkoAPI::shared_ptr<ZMT::PkoAPI::Feature>>> features, QWidget* parent);
    // Deletes the dynamic controls (only when the widget was fully built) and
    // the base's timer, mutex, change queue and feature manager. Cannot fail.
    ~IOTriggerWidget() override;

    // Output line names of the output rows, in row order (empty: no outputs).
    const QStringList& Outputs() const { return m_Outputs; }
    // Lines of the "Selectable Output" group, in row order (empty: group not built).
    const QStringList& SelectableLines() const { return m_SelectableLines; }

protected:
    // Refreshes the controls of every name queued in m_ChangedFeatures, with
    // the controls' signals blocked. Called by the base with m_Mutex held; it
    // must not lock it. Failures only leave a control as it was.
    void UpdateFromChangedFeatures() override;

    // The slots below write camera features through m_FeatureManager. None of
    // them throws; a refused write leaves the control showing the user's
    // choice until the next refresh re-reads the camera (failures of selector
    // round trips go to the debug stream).
private slots:
    void OnComboTriggerSourceChanged(const QString& text);
    void OnComboTriggerActivationChanged(const QString& text);
    void OnComboTriggerSelectorChanged(const QString& text);
    void OnComboAcquisitionModeChanged(const QString& text);
    void OnComboInputLineSelectorChanged(const QString& text);
    void OnCBLineRoutingChanged(int state);
    void OnComboOutSourceChanged(const QString& text);
    void OnComboExposureModeChanged(const QString& text);
    void OnComboExposureAutoChanged(const QString& text);
    void OnComboChanged(const QString& featureName, const QString& currentVal);
    void OnComboTriggerModeChanged(const QString& mode);
    void OnSWTrigger();
    void OnSpinAcquisitionFrameCountChanged(int value);
    void OnEdgeMode();
    void OnLevelMode();
    void OnBulkMode();
    void OnCBOutInvertChanged(int state);
    void OnCBOutStatusChanged(int state);
    void OnCBOutUserValueChanged1(int state);
    void OnCBOutUserValueChanged2(int state);
    void OnCBOutUserValueChanged3(int state);
    void OnCBOutUserValueChanged4(int state);
    void OnCBOutUserValueChanged5(int state);
    void OnComboOptionalOutChanged(const QString& text);

public slots:
    // Locks the trigger input controls and shows the hint while streaming;
    // does nothing on a camera without "LineOutLevels"/"SyncOutLevels".
    void camIsStreaming(bool streaming);

private:
    // The controls of one output line.
    struct OutputRow {
        QComboBox* source = nullptr;
        QComboBox* userSelector = nullptr;
        QCheckBox* userValue = nullptr;
        QCheckBox* invert = nullptr;
        QCheckBox* status = nullptr;
        QLabel* label = nullptr;
    };

    // Trigger input side.
    void BuildTriggerInputGroup();
    void SelectComboEntry(const QString& text, QComboBox* combo);
    void BlockControlSignals(bool block);
    void UpdateTriggerSource();
    void UpdateTriggerSelector();
    void UpdateAcquisitionMode();
    void UpdateAcquisitionFrameCount();
    void UpdateExposureMode();
    void UpdateLineRouting();
    void UpdateInputLineSelector();
    void UpdatePresetButtons(bool disable);
    QList<int> GetOutputLineIndexes();
    QString GetFirstInputLine();

    // Preset steps.
    void PumpEvents();
    void Wait200ms();
    void SwitchOffEverySelector();
    void SetRoutingChecked();
    void SetFrameCount(int value);

    // Output side.
    bool IsLineGeneration();
    QStringList GetOutputs();
    void BuildOutputGroup();
    void BuildOutputHeader();
    void DeleteOutputRows();
    void updateOutSource();
    void updateOutInvert();
    void UpdateOutStatus();
    void UpdateOutLevels();
    void UpdateUserOutSelectors();
    void updateUserOutValue();
    void HandleUserOutValueChanged(int row, int state);
    QStringList GetSelectableLines();
    void BuildSelectableOutputGroup();
    void UpdateOptionalOutputs();

    // The base creates these and leaves freeing them to its subclass; held
    // here so that a refusing constructor frees them too.
    std::unique_ptr<FeatureManager> m_OwnedFeatureManager;
    std::unique_ptr<QStringList> m_OwnedChangedFeatures;
    std::unique_ptr<QTimer> m_OwnedUpdateTimer;
    std::unique_ptr<QMutex> m_OwnedMutex;

    std::unique_ptr<Ui::IOTriggerWidget> m_Ui;
    bool m_HasUserOutputSelector = false;
    int m_OutputCount = 0;

    QGroupBox* m_GroupTrigger = nullptr;
    QGroupBox* m_GroupAcquisition = nullptr;
    QGroupBox* m_GroupQuickSettings = nullptr;

    QLabel* m_LabelTriggerSource = nullptr;
    QLabel* m_LabelTriggerActivation = nullptr;
    QLabel* m_LabelTriggerSelector = nullptr;
    QLabel* m_LabelTriggerMode = nullptr;
    QLabel* m_LabelAcquisitionMode = nullptr;
    QLabel* m_LabelAcquisitionFrameCount = nullptr;
    QLabel* m_LabelExposureAuto = nullptr;
    QLabel* m_LabelExposureMode = nullptr;
    QLabel* m_LabelInputLineSelector = nullptr;
    QLabel* m_LabelLineRouting = nullptr;

    QComboBox* m_ComboTriggerSource = nullptr;
    QComboBox* m_ComboTriggerActivation = nullptr;
    QComboBox* m_ComboTriggerSelector = nullptr;
    QComboBox* m_ComboTriggerMode = nullptr;
    QComboBox* m_ComboAcquisitionMode = nullptr;
    QSpinBox* m_SpinAcquisitionFrameCount = nullptr;
    QPushButton* m_ButtonSWTrigger = nullptr;
    QComboBox* m_ComboExposureAuto = nullptr;
    QComboBox* m_ComboExposureMode = nullptr;
    QComboBox* m_ComboInputLineSelector = nullptr;
    QCheckBox* m_CBLineRouting = nullptr;
    QPushButton* m_ButtonEdge = nullptr;
    QPushButton* m_ButtonLevel = nullptr;
    QPushButton* m_ButtonBulk = nullptr;

    // Indexes (in the "LineSelector" entry list) of the output lines, which
    // the input line selector leaves out.
    QList<int> m_OutputLineIndexes;

    QStringList m_Outputs;
    QVector<OutputRow> m_OutputRows;
    QList<QLabel*> m_HeaderLabels;

    QStringList m_SelectableLines;
    QVector<QComboBox*> m_OptionalOutCombos;
    QVector<QLabel*> m_OptionalOutLabels;

    std::unique_ptr<QTranslator> m_Translator;
};

#endif
