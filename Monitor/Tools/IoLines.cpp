#include "IoLines.h"

#include "FeatureManager.h"
#include "SelectorRoundTrip.h"

#include <cmath>

namespace {

long long ToMask(double value)
{
    if (!std::isfinite(value) || value < 0.0 || value > 9.0e15)
        return -1;
    return static_cast<long long>(value);
}

}  // namespace

IoLines::IoLines(FeatureManager& manager) : m_Manager(manager)
{
    if (m_Manager.IsAvailable("LineSelector") && m_Manager.IsAvailable("LineSource"))
        m_Naming = Naming::Lines;
    else if (m_Manager.IsAvailable("SyncOutSelector") && m_Manager.IsAvailable("SyncOutSource"))
        m_Naming = Naming::SyncOut;
    else if (m_Manager.IsAvailable("LineOutSelector") && m_Manager.IsAvailable("LineOutSource"))
        m_Naming = Naming::LineOut;
}

QString IoLines::SelectorName() const
{
    switch (m_Naming) {
        case Naming::Lines:
            return "LineSelector";
        case Naming::SyncOut:
            return "SyncOutSelector";
        case Naming::LineOut:
            return "LineOutSelector";
        case Naming::None:
            break;
    }
    return QString();
}

QString IoLines::SourceName() const
{
    switch (m_Naming) {
        case Naming::Lines:
            return "LineSource";
        case Naming::SyncOut:
            return "SyncOutSource";
        case Naming::LineOut:
            return "LineOutSource";
        case Naming::None:
            break;
    }
    return QString();
}

QString IoLines::InverterName() const
{
    switch (m_Naming) {
        case Naming::Lines:
            return "LineInverter";
        case Naming::SyncOut:
            return "SyncOutPolarity";
        case Naming::LineOut:
            return "LineOutPolarity";
        case Naming::None:
            break;
    }
    return QString();
}

QString IoLines::MaskName() const
{
    return m_Naming == Naming::SyncOut ? "SyncOutLevels" : m_Naming == Naming::LineOut ? "LineOutLevels" : QString();
}

QString IoLines::InputMaskName() const
{
    return m_Naming == Naming::SyncOut ? "SyncInLevels" : m_Naming == Naming::LineOut ? "LineInLevels" : QString();
}

QStringList IoLines::Outputs() const
{
    if (m_Naming != Naming::Lines)
        return m_Manager.GetAvailableValues(SelectorName());
    QStringList outputs;
    SelectorRoundTrip selector(m_Manager, "LineSelector");
    for (const QString& line : m_Manager.GetAvailableValues("LineSelector")) {
        if (selector.Select(line) && m_Manager.GetStringValue("LineMode") == "Output")
            outputs << line;
    }
    return outputs;
}

QStringList IoLines::Inputs() const
{
    QStringList inputs;
    if (m_Naming == Naming::Lines) {
        SelectorRoundTrip selector(m_Manager, "LineSelector");
        for (const QString& line : m_Manager.GetAvailableValues("LineSelector")) {
            if (selector.Select(line) && m_Manager.GetStringValue("LineMode") == "Input")
                inputs << line;
        }
    } else if (m_Naming != Naming::None) {
        // The inputs are named like the outputs with "In" for "Out", one bit
        // of the input mask each.
        double minimum = 0.0;
        double maximum = 0.0;
        m_Manager.GetRange(InputMaskName(), minimum, maximum);
        QString prefix = SelectorName().remove("Selector").replace("Out", "In");
        long long bits = ToMask(maximum);
        for (int k = 1; bits > 0 && k <= 62; ++k, bits >>= 1)
            inputs << prefix + QString::number(k);
    }
    return inputs;
}

bool IoLines::ReadSource(const QString& output, QString& source) const
{
    SelectorRoundTrip selector(m_Manager, SelectorName());
    if (!selector.Select(output))
        return false;
    const QString value = m_Manager.GetStringValue(SourceName());
    if (value.isEmpty())
        return false;
    source = value;
    return true;
}

bool IoLines::ReadInverted(const QString& output, bool& inverted) const
{
    SelectorRoundTrip selector(m_Manager, SelectorName());
    if (!selector.Select(output))
        return false;
    if (m_Naming == Naming::Lines) {
        if (!m_Manager.IsAvailable("LineInverter")) {
            inverted = false;
            return true;
        }
        inverted = m_Manager.GetValue("LineInverter") != 0.0;
        return true;
    }
    const QString polarity = m_Manager.GetStringValue(InverterName());
    if (polarity.isEmpty())
        return false;
    inverted = polarity == "Invert";
    return true;
}

bool IoLines::IsUserSource(const QString& source)
{
    return source.startsWith("UserOutput") || source == "GPO";
}

QStringList IoLines::UserSources(const QString& output) const
{
    SelectorRoundTrip selector(m_Manager, SelectorName());
    if (!selector.Select(output))
        return QStringList();
    QStringList sources;
    for (const QString& source : m_Manager.GetAvailableValues(SourceName())) {
        if (IsUserSource(source))
            sources << source;
    }
    return sources;
}

int IoLines::OutputBit(const QString& output) const
{
    return m_Manager.GetAvailableValues(SelectorName()).indexOf(output);
}

bool IoLines::ReadWrittenMask(long long& mask) const
{
    const long long levels = ToMask(m_Manager.GetValue(MaskName()));
    if (levels < 0)
        return false;
    mask = levels;
    const QStringList outputs = m_Manager.GetAvailableValues(SelectorName());
    for (int bit = 0; bit < outputs.size() && bit < 62; ++bit) {
        QString source;
        bool inverted = false;
        if (!ReadSource(outputs.at(bit), source) || !ReadInverted(outputs.at(bit), inverted))
            return false;
        if (source == "GPO" && inverted)
            mask ^= 1LL << bit;
    }
    return true;
}

bool IoLines::ReadUserValue(const QString& output, const QString& source, bool& value) const
{
    if (m_Naming == Naming::Lines) {
        if (!source.startsWith("UserOutput"))
            return false;
        SelectorRoundTrip selector(m_Manager, "UserOutputSelector");
        if (!selector.Select(source))
            return false;
        value = m_Manager.GetValue("UserOutputValue") != 0.0;
        return true;
    }
    const int bit = OutputBit(output);
    long long mask = 0;
    if (bit < 0 || bit >= 62 || !ReadWrittenMask(mask))
        return false;
    value = ((mask >> bit) & 1) != 0;
    return true;
}

bool IoLines::ReadInputLevel(const QString& input, bool& high) const
{
    if (m_Naming == Naming::Lines) {
        SelectorRoundTrip selector(m_Manager, "LineSelector");
        if (!selector.Select(input))
            return false;
        high = m_Manager.GetValue("LineStatus") != 0.0;
        return true;
    }
    const int bit = Inputs().indexOf(input);
    const long long levels = ToMask(m_Manager.GetValue(InputMaskName()));
    if (bit < 0 || levels < 0)
        return false;
    high = ((levels >> bit) & 1) != 0;
    return true;
}

bool IoLines::WriteSource(const QString& output, const QString& source) const
{
    SelectorRoundTrip selector(m_Manager, SelectorName());
    if (!selector.Select(output))
        return false;
    if (m_Manager.GetStringValue(SourceName()) != source)
        m_Manager.SetStringValue(SourceName(), source);
    return m_Manager.GetStringValue(SourceName()) == source;
}

bool IoLines::WriteInverted(const QString& output, bool inverted) const
{
    SelectorRoundTrip selector(m_Manager, SelectorName());
    if (!selector.Select(output))
        return false;
    if (m_Naming == Naming::Lines) {
        if (!m_Manager.IsAvailable("LineInverter"))
            return !inverted;
        const double wanted = inverted ? 1.0 : 0.0;
        if ((m_Manager.GetValue("LineInverter") != 0.0) == inverted)
            return true;
        return m_Manager.SetValue("LineInverter", wanted) == wanted;
    }
    const QString wanted = inverted ? "Invert" : "Normal";
    if (m_Manager.GetStringValue(InverterName()) != wanted)
        m_Manager.SetStringValue(InverterName(), wanted);
    return m_Manager.GetStringValue(InverterName()) == wanted;
}

bool IoLines::WriteUserValue(const QString& output, const QString& source, bool value) const
{
    if (m_Naming == Naming::Lines) {
        if (!source.startsWith("UserOutput"))
            return false;
        SelectorRoundTrip selector(m_Manager, "UserOutputSelector");
        if (!selector.Select(source))
            return false;
        const double wanted = value ? 1.0 : 0.0;
        if ((m_Manager.GetValue("UserOutputValue") != 0.0) == value)
            return true;
        return m_Manager.SetValue("UserOutputValue", wanted) == wanted;
    }
    const int bit = OutputBit(output);
    long long mask = 0;
    if (bit < 0 || bit >= 62 || !ReadWrittenMask(mask))
        return false;
    if ((((mask >> bit) & 1) != 0) == value)
        return true;
    const long long wanted = value ? (mask | (1LL << bit)) : (mask & ~(1LL << bit));
    m_Manager.SetValue(MaskName(), static_cast<double>(wanted));
    bool shown = !value;
    return ReadUserValue(output, source, shown) && shown == value;
}
