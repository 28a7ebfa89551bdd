#include "IOTriggerWidget.h"

#include "FeatureManager.h"
#include "IOTriggerWidgetHelpers.h"
#include "ui_IOTriggerWidget.h"

#include <QCheckBox>
#include <QColor>
#include <QComboBox>
#include <QDebug>
#include <QGridLayout>
#include <QLabel>
#include <QPalette>
#include <QSignalBlocker>

#include <cmath>
#include <limits>
#include <vector>

using IOTriggerWidgetHelpers::NewCheckBox;
using IOTriggerWidgetHelpers::NewLabel;

namespace {

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
