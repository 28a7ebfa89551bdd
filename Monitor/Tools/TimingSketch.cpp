#include "TimingSketch.h"

#include <QRegularExpression>

#include <cmath>

namespace {

// Exposure drawn when the camera reports none that makes sense.
constexpr double kFallbackExposureUs = 1000.0;

double Sane(double us, double fallback)
{
    return std::isfinite(us) && us > 0.0 ? us : fallback;
}

bool ActiveHigh(const QString& activation)
{
    return !(activation == "FallingEdge" || activation == "LevelLow" || activation == "LowLevel");
}

bool LevelActivation(const QString& activation)
{
    return activation == "LevelHigh" || activation == "HighLevel" || activation == "LevelLow" ||
           activation == "LowLevel";
}

// Whether an output source is the trigger's input line: the same name, or
// input K of the bit-mask namings ("SyncInK", "LineInK") that the trigger
// calls "LineK".
bool PassesTrigger(const QString& source, const QString& triggerSource)
{
    if (source.isEmpty())
        return false;
    if (source == triggerSource)
        return true;
    const QString input = QRegularExpression("^(?:Sync|Line)In(\\d+)$").match(source).captured(1);
    return !input.isEmpty() && "Line" + input == triggerSource;
}

TimingSketch::Track Pulse(TimingSketch::TrackKind kind, double from, double to)
{
    TimingSketch::Track track;
    track.kind = kind;
    if (to > from)
        track.edges = {from, to};
    return track;
}

}  // namespace

bool TimingSketch::Track::LevelAt(double us) const
{
    bool level = startLevel;
    for (double edge : edges) {
        if (edge > us)
            break;
        level = !level;
    }
    return level;
}

bool TimingSketch::Track::operator==(const Track& other) const
{
    return kind == other.kind && line == other.line && source == other.source && inverted == other.inverted &&
           known == other.known && startLevel == other.startLevel && edges == other.edges;
}

TimingSketch::TimingSketch(const TimingSettings& settings) : m_Settings(settings)
{
    const QString source = settings.triggerSource;
    if (!settings.triggerOn || source.isEmpty() || source == "Freerun" || source == "FixedRate")
        m_Trigger = TriggerKind::FreeRun;
    else if (source == "Software")
        m_Trigger = TriggerKind::Software;
    else
        m_Trigger = TriggerKind::Line;
    m_WidthExposure = m_Trigger == TriggerKind::Line &&
                      (settings.exposureMode == "TriggerWidth" || settings.exposureAuto == "other" ||
                       settings.triggerSelector == "ExposureActive");

    const double exposure = Sane(settings.exposureUs, kFallbackExposureUs);
    const double delay = m_Trigger == TriggerKind::FreeRun ? 0.0 : Sane(settings.triggerDelayUs, 0.0);
    const double readout = ReadoutKnown() ? Sane(settings.readoutUs, 0.0) : 0.0;
    // Room before the trigger and after the readout, so that both edges show.
    const double margin = 0.15 * (delay + exposure + readout);

    m_TriggerUs = margin;
    m_ExposureStartUs = m_TriggerUs + delay;
    m_ExposureEndUs = m_ExposureStartUs + exposure;
    m_ReadoutEndUs = m_ExposureEndUs + readout;
    m_CycleUs = m_ReadoutEndUs + margin;

    // The trigger input: idle at the inactive level, active from the
    // trigger on; a pulse that lasts the exposure in width exposure, a level
    // held until the exposure ends, a short pulse for an edge.
    Track trigger;
    trigger.kind = TrackKind::Trigger;
    trigger.line = source;
    if (m_Trigger == TriggerKind::Line) {
        const QString activation = settings.triggerActivation;
        double end = m_TriggerUs + exposure / 4.0;
        if (m_WidthExposure)
            end = m_TriggerUs + exposure;
        else if (LevelActivation(activation))
            end = m_ExposureEndUs;
        trigger.startLevel = !ActiveHigh(activation);
        trigger.edges = {m_TriggerUs, end};
        m_SecondEdgeMissed = activation == "AnyEdge" && !m_WidthExposure && end < m_ReadoutEndUs;
    }
    m_Tracks << trigger;
    m_Tracks << Pulse(TrackKind::Exposure, m_ExposureStartUs, m_ExposureEndUs);
    Track readoutTrack = Pulse(TrackKind::Readout, m_ExposureEndUs, m_ReadoutEndUs);
    readoutTrack.known = ReadoutKnown();
    m_Tracks << readoutTrack;
    for (const TimingSettings::Output& output : settings.outputs)
        m_Tracks << OutputTrack(output, trigger);
}

TimingSketch::Track TimingSketch::OutputTrack(const TimingSettings::Output& output, const Track& trigger) const
{
    const QString source = output.source;
    Track track;
    if (source == "ExposureActive" || source == "Exposing") {
        track = Pulse(TrackKind::Output, m_ExposureStartUs, m_ExposureEndUs);
    } else if (source == "FrameReadout") {
        track = Pulse(TrackKind::Output, m_ExposureEndUs, m_ReadoutEndUs);
        track.known = ReadoutKnown();
    } else if (source == "FrameTriggerWait" || source == "FrameTriggerReady") {
        // Ready for the next trigger until it comes and again after the readout.
        if (m_Trigger != TriggerKind::FreeRun) {
            track = Pulse(TrackKind::Output, m_TriggerUs, m_ReadoutEndUs);
            track.startLevel = true;
        }
    } else if (source == "AcquisitionActive" || source == "Acquiring") {
        track.startLevel = true;
    } else if (source == "FrameTrigger") {
        if (m_Trigger == TriggerKind::Line) {
            track.edges = trigger.edges;
            track.startLevel = false;
        }
    } else if (source.startsWith("UserOutput") || source == "GPO") {
        track.startLevel = output.userValue;
    } else if (source == "Off" || source == "AcquisitionTriggerWait" || source == "AcquisitionTriggerReady") {
        // Low: the acquisition has started before the cycle.
    } else if (m_Trigger == TriggerKind::Line && PassesTrigger(source, m_Settings.triggerSource)) {
        // An output passing the trigger input on.
        track.startLevel = trigger.startLevel;
        track.edges = trigger.edges;
    } else {
        track.known = false;
    }
    track.kind = TrackKind::Output;
    track.line = output.line;
    track.source = source;
    track.inverted = output.inverted;
    if (output.inverted)
        track.startLevel = !track.startLevel;
    return track;
}
