#include "WiringSelfTest.h"

#include "FeatureManager.h"
#include "IoLines.h"
#include "SelectorRoundTrip.h"

WiringSelfTest::WiringSelfTest(FeatureManager* manager, QObject* parent) : QObject(parent), m_FeatureManager(manager) {}

WiringSelfTest::~WiringSelfTest()
{
    // Nothing the test changed may stay behind, not even when its owner goes.
    if (IsRunning())
        Cancel();
}

void WiringSelfTest::SetAcquiring(bool acquiring)
{
    m_Acquiring = acquiring;
    if (acquiring && IsRunning()) {
        const bool restored = !m_HaveSaved || RestoreSaved();
        Finish(restored ? State::Cancelled : State::Failed,
               tr("The camera started to acquire; the test was stopped and the output restored."));
    }
}

bool WiringSelfTest::IsCameraAcquiring() const
{
    if (m_FeatureManager == nullptr || !m_FeatureManager->IsAvailable("AcquisitionStatus"))
        return false;
    SelectorRoundTrip selector(*m_FeatureManager, "AcquisitionStatusSelector");
    if (m_FeatureManager->IsAvailable("AcquisitionStatusSelector") && !selector.Select("AcquisitionActive"))
        return false;
    return m_FeatureManager->GetValue("AcquisitionStatus") > 0.0;
}

bool WiringSelfTest::Start()
{
    if (IsRunning()) {
        m_Error = tr("A wiring test is running already.");
        return false;
    }
    if (m_FeatureManager == nullptr) {
        m_Error = tr("There is no camera.");
        return false;
    }
    if (m_Acquiring || IsCameraAcquiring()) {
        m_Error = tr("The camera acquires: stop the acquisition before testing the wiring.");
        return false;
    }
    const IoLines lines(*m_FeatureManager);
    m_Outputs = lines.Outputs();
    m_Inputs = lines.Inputs();
    if (m_Outputs.isEmpty()) {
        m_Error = tr("The camera has no output lines to test.");
        return false;
    }
    m_Error.clear();
    m_Findings.clear();
    m_OutputIndex = 0;
    m_Phase = 0;
    m_StepsDone = 0;
    m_HaveSaved = false;
    m_State = State::Running;
    emit Progress(m_StepsDone, StepsTotal());
    return true;
}

int WiringSelfTest::StepsTotal() const
{
    return m_Outputs.size() * (kToggles + 2);
}

bool WiringSelfTest::Step()
{
    if (!IsRunning())
        return false;
    if (m_Acquiring) {
        SetAcquiring(true);
        return false;
    }
    if (m_Phase == 0) {
        if (!PrepareOutput())
            return false;
    } else {
        if (!SampleInputs())
            return false;
        const QString output = m_Outputs.at(m_OutputIndex);
        if (m_Phase <= kToggles) {
            const bool value = m_Phase % 2 == 1;
            if (!IoLines(*m_FeatureManager).WriteUserValue(output, m_Saved.userSource, value)) {
                const bool restored = RestoreSaved();
                Finish(State::Failed,
                       tr("Writing the user output of %1 failed; %2")
                           .arg(output)
                           .arg(restored ? tr("the output was restored.") : tr("not everything could be restored.")));
                return false;
            }
            m_Written << value;
            ++m_Phase;
        } else {
            Finding finding;
            finding.output = output;
            finding.tested = true;
            for (int i = 0; i < m_Inputs.size(); ++i) {
                const QVector<bool>& samples = m_InputSamples.at(i);
                if (samples == m_Written) {
                    finding.inputs << m_Inputs.at(i);
                    finding.inverted << false;
                    continue;
                }
                bool opposite = samples.size() == m_Written.size();
                for (int k = 0; opposite && k < samples.size(); ++k)
                    opposite = samples.at(k) != m_Written.at(k);
                if (opposite) {
                    finding.inputs << m_Inputs.at(i);
                    finding.inverted << true;
                }
            }
            m_Findings << finding;
            if (!RestoreSaved()) {
                Finish(State::Failed, tr("%1 could not be restored.").arg(output));
                return false;
            }
            m_HaveSaved = false;
            ++m_OutputIndex;
            m_Phase = 0;
        }
    }
    ++m_StepsDone;
    emit Progress(m_StepsDone, StepsTotal());
    if (m_OutputIndex >= m_Outputs.size()) {
        Finish(State::Finished, QString());
        return false;
    }
    return true;
}

QString WiringSelfTest::ChooseUserSource(const QString& output, const QStringList& candidates) const
{
    // A user output that no other output follows, so that only this one toggles.
    const IoLines lines(*m_FeatureManager);
    QStringList taken;
    for (const QString& other : m_Outputs) {
        QString source;
        if (other != output && lines.ReadSource(other, source))
            taken << source;
    }
    for (const QString& candidate : candidates) {
        if (candidate == "GPO" || !taken.contains(candidate))
            return candidate;
    }
    return candidates.value(0);
}

bool WiringSelfTest::PrepareOutput()
{
    const IoLines lines(*m_FeatureManager);
    const QString output = m_Outputs.at(m_OutputIndex);
    const QStringList candidates = lines.UserSources(output);
    if (candidates.isEmpty()) {
        Finding finding;
        finding.output = output;
        m_Findings << finding;
        m_StepsDone += kToggles + 1;
        ++m_OutputIndex;
        return true;
    }

    Saved saved;
    saved.output = output;
    saved.userSource = ChooseUserSource(output, candidates);
    if (!lines.ReadSource(output, saved.source) || !lines.ReadInverted(output, saved.inverted) ||
        !lines.ReadUserValue(output, saved.userSource, saved.userValue)) {
        Finish(State::Failed, tr("The settings of %1 could not be read; nothing was changed.").arg(output));
        return false;
    }
    m_Saved = saved;
    m_HaveSaved = true;

    // The value last: a "GPO" bit reads back only once the output follows it.
    QString failed;
    if (!lines.WriteSource(output, saved.userSource))
        failed = lines.SourceName();
    else if (!lines.WriteInverted(output, false))
        failed = lines.InverterName();
    else if (!lines.WriteUserValue(output, saved.userSource, false))
        failed = tr("the user output");
    if (!failed.isEmpty()) {
        const bool restored = RestoreSaved();
        Finish(State::Failed,
               tr("Writing %1 of %2 failed; %3")
                   .arg(failed, output,
                        restored ? tr("the output was restored.") : tr("not everything could be restored.")));
        return false;
    }
    // The first sample shows the inputs with the user output low.
    m_Written = {false};
    m_InputSamples = QVector<QVector<bool>>(m_Inputs.size());
    m_Phase = 1;
    return true;
}

bool WiringSelfTest::SampleInputs()
{
    const IoLines lines(*m_FeatureManager);
    for (int i = 0; i < m_Inputs.size(); ++i) {
        bool high = false;
        if (!lines.ReadInputLevel(m_Inputs.at(i), high)) {
            const bool restored = RestoreSaved();
            Finish(State::Failed, tr("The level of %1 could not be read; %2")
                                      .arg(m_Inputs.at(i), restored ? tr("the output was restored.")
                                                                    : tr("not everything could be restored.")));
            return false;
        }
        m_InputSamples[i] << high;
    }
    return true;
}

bool WiringSelfTest::RestoreSaved()
{
    if (!m_HaveSaved)
        return true;
    const IoLines lines(*m_FeatureManager);
    // The value first: the output still follows the user output with its
    // inversion off, which is what the value is written for.
    if (!m_Saved.userValueDone)
        m_Saved.userValueDone = lines.WriteUserValue(m_Saved.output, m_Saved.userSource, m_Saved.userValue);
    if (!m_Saved.sourceDone)
        m_Saved.sourceDone = lines.WriteSource(m_Saved.output, m_Saved.source);
    if (!m_Saved.invertedDone)
        m_Saved.invertedDone = lines.WriteInverted(m_Saved.output, m_Saved.inverted);
    const bool done = m_Saved.userValueDone && m_Saved.sourceDone && m_Saved.invertedDone;
    if (done)
        m_HaveSaved = false;
    return done;
}

bool WiringSelfTest::RetryRestore()
{
    return RestoreSaved();
}

void WiringSelfTest::Cancel()
{
    if (!IsRunning())
        return;
    if (RestoreSaved())
        Finish(State::Cancelled, tr("The test was cancelled; the outputs were restored."));
    else
        Finish(State::Failed, tr("The test was cancelled; not everything could be restored."));
}

void WiringSelfTest::Finish(State state, const QString& error)
{
    m_State = state;
    m_Error = error;
    emit Ended();
}

QStringList WiringSelfTest::ResultTexts() const
{
    QStringList texts;
    for (const Finding& finding : m_Findings) {
        if (!finding.tested) {
            texts << tr("%1 → (not tested: no user output)").arg(finding.output);
            continue;
        }
        if (finding.inputs.isEmpty())
            texts << tr("%1 → (nothing)").arg(finding.output);
        for (int i = 0; i < finding.inputs.size(); ++i) {
            texts << (finding.inverted.value(i) ? tr("%1 → %2 (inverted)") : tr("%1 → %2"))
                         .arg(finding.output, finding.inputs.at(i));
        }
    }
    return texts;
}

QStringList WiringSelfTest::Unrestored() const
{
    QStringList left;
    if (!m_HaveSaved || m_FeatureManager == nullptr)
        return left;
    const IoLines lines(*m_FeatureManager);
    if (!m_Saved.userValueDone)
        left << tr("%1 of %2: %3")
                    .arg(m_Saved.userSource, m_Saved.output, m_Saved.userValue ? QString("1") : QString("0"));
    if (!m_Saved.sourceDone)
        left << tr("%1 of %2: %3").arg(lines.SourceName(), m_Saved.output, m_Saved.source);
    if (!m_Saved.invertedDone)
        left << tr("%1 of %2: %3")
                    .arg(lines.InverterName(), m_Saved.output, m_Saved.inverted ? QString("true") : QString("false"));
    return left;
}
