#include "LineProbe.h"

#include "FeatureManager.h"
#include "MonitorSelectorTrip.h"

#include <cmath>

namespace {

// Inputs of the older families have no selector: their mask's range says
// how many there are (bit k is input k + 1).
int BitsInRange(FeatureManager* manager, const QString& mask)
{
    double minimum = 0.0;
    double maximum = 0.0;
    manager->GetRange(mask, minimum, maximum);
    int bits = 0;
    while (bits < 32 && maximum >= std::ldexp(1.0, bits))
        ++bits;
    return bits;
}

// "Line3" is bit 3 of LineStatusAll; a name without a number keeps its
// place in the selector's list.
int StandardBit(const QString& line, int index)
{
    int digits = line.size();
    while (digits > 0 && line.at(digits - 1).isDigit())
        --digits;
    bool ok = false;
    const int number = line.mid(digits).toInt(&ok);
    return ok && number < 64 ? number : index;
}

}  // namespace

LineProbe::LineProbe(FeatureManager* manager) : m_Manager(manager) {}

bool LineProbe::Probe()
{
    m_Lines.clear();
    m_Masks.clear();
    m_Family = Family::None;
    m_Selector.clear();

    if (m_Manager->IsAvailable("LineSelector") &&
        (m_Manager->IsAvailable("LineStatusAll") || m_Manager->IsAvailable("LineStatus"))) {
        m_Family = Family::Standard;
        m_Selector = "LineSelector";
        if (m_Manager->IsAvailable("LineStatusAll"))
            m_Masks << "LineStatusAll";
        const QStringList names = m_Manager->GetAvailableValues("LineSelector");
        for (int i = 0; i < names.size(); ++i) {
            MonitorLine line;
            line.name = names.at(i);
            line.bit = StandardBit(line.name, i);
            m_Lines.append(line);
        }
    } else {
        struct Generation {
            Family family;
            const char* inputs;
            const char* inputPrefix;
            const char* outputs;
            const char* selector;
        };
        const Generation generations[] = {
            {Family::SyncOut, "SyncInLevels", "SyncIn", "SyncOutLevels", "SyncOutSelector"},
            {Family::LineOut, "LineInLevels", "LineIn", "LineOutLevels", "LineOutSelector"}};
        for (const Generation& generation : generations) {
            const bool hasInputs = m_Manager->IsAvailable(generation.inputs);
            const bool hasOutputs = m_Manager->IsAvailable(generation.outputs);
            if (!hasInputs && !hasOutputs)
                continue;
            m_Family = generation.family;
            m_Selector = generation.selector;
            if (hasInputs) {
                m_Masks << generation.inputs;
                const int inputs = BitsInRange(m_Manager, generation.inputs);
                for (int k = 0; k < inputs; ++k) {
                    MonitorLine line;
                    line.name = QString("%1%2").arg(generation.inputPrefix).arg(k + 1);
                    line.bit = k;
                    line.mask = m_Masks.size() - 1;
                    m_Lines.append(line);
                }
            }
            if (hasOutputs) {
                m_Masks << generation.outputs;
                const QStringList names = m_Manager->GetAvailableValues(generation.selector);
                for (int j = 0; j < names.size() && j < 64; ++j) {
                    MonitorLine line;
                    line.name = names.at(j);
                    line.output = true;
                    line.bit = j;
                    line.mask = m_Masks.size() - 1;
                    m_Lines.append(line);
                }
            }
            break;
        }
    }
    if (m_Family == Family::None)
        return false;
    ReadSetup();
    return true;
}

QStringList LineProbe::SetupFeatures() const
{
    switch (m_Family) {
        case Family::Standard:
            return {"LineMode", "LineSource", "LineInverter"};
        case Family::SyncOut:
            return {"SyncOutSource", "SyncOutPolarity"};
        case Family::LineOut:
            return {"LineOutSource", "LineOutPolarity"};
        case Family::None:
            break;
    }
    return {};
}

void LineProbe::ReadSetup()
{
    if (m_Family == Family::None || m_Lines.isEmpty())
        return;
    MonitorSelectorTrip trip(m_Manager, m_Selector);
    for (MonitorLine& line : m_Lines) {
        if (m_Family == Family::Standard) {
            if (!trip.Select(line.name))
                continue;
            line.output = m_Manager->GetStringValue("LineMode") == "Output";
            line.source = line.output ? m_Manager->GetStringValue("LineSource") : QString();
            line.inverted = m_Manager->IsAvailable("LineInverter") && m_Manager->GetValue("LineInverter") > 0.5;
        } else if (line.output) {
            if (!trip.Select(line.name))
                continue;
            const QString prefix = m_Family == Family::SyncOut ? "SyncOut" : "LineOut";
            line.source = m_Manager->GetStringValue(prefix + "Source");
            line.inverted = m_Manager->GetStringValue(prefix + "Polarity") == "Invert";
        }
    }
}

bool LineProbe::ReadLevels(unsigned long long& levels)
{
    if (m_Family == Family::None)
        return false;
    unsigned long long result = 0;
    if (HasStatusMask()) {
        QVector<long long> masks;
        for (const QString& mask : m_Masks) {
            const double value = m_Manager->GetValue(mask);
            if (!(value >= 0.0))
                return false;
            masks.append(static_cast<long long>(value));
        }
        for (int i = 0; i < m_Lines.size() && i < 64; ++i) {
            const MonitorLine& line = m_Lines.at(i);
            if (line.mask < masks.size() && line.bit < 63 && ((masks.at(line.mask) >> line.bit) & 1))
                result |= 1ULL << i;
        }
    } else {
        MonitorSelectorTrip trip(m_Manager, m_Selector);
        for (int i = 0; i < m_Lines.size() && i < 64; ++i) {
            if (!trip.Select(m_Lines.at(i).name))
                return false;
            // A boolean read that fails gives 0: the line shows low.
            if (m_Manager->GetValue("LineStatus") > 0.5)
                result |= 1ULL << i;
        }
    }
    levels = result;
    return true;
}
