#include "SelectorCursor.h"

#include "FeatureIo.h"

using namespace ZMT::PkoAPI;

int SelectorCursor::Current(const QString& selector, QString& entry)
{
    const auto known = m_Current.constFind(selector);
    if (known != m_Current.constEnd()) {
        entry = known.value();
        return PkoErrorSuccess;
    }
    const FeatureLayout::Item* item = m_Layout.Find(selector);
    if (item == nullptr)
        return PkoErrorNotFound;
    QVariant value;
    const int code = FeatureIo::Read(item->feature, item->type, value);
    if (code != PkoErrorSuccess)
        return code;
    entry = value.toString();
    m_Current.insert(selector, entry);
    if (!m_Home.contains(selector)) {
        m_Home.insert(selector, entry);
        m_Used.append(selector);
    }
    return PkoErrorSuccess;
}

int SelectorCursor::Select(const QString& selector, const QString& entry)
{
    QString current;
    int code = Current(selector, current);
    if (code != PkoErrorSuccess)
        return code;
    if (current == entry)
        return PkoErrorSuccess;
    const FeatureLayout::Item* item = m_Layout.Find(selector);
    ++m_Moves;
    code = FeatureIo::Write(item->feature, item->type, QVariant(entry));
    if (code == PkoErrorSuccess)
        m_Current.insert(selector, entry);
    return code;
}

int SelectorCursor::Home(const QString& selector, QString& entry)
{
    const auto home = m_Home.constFind(selector);
    if (home != m_Home.constEnd()) {
        entry = home.value();
        return PkoErrorSuccess;
    }
    QString current;
    const int code = Current(selector, current);
    if (code == PkoErrorSuccess)
        entry = m_Home.value(selector);
    return code;
}

void SelectorCursor::Written(const QString& selector, const QString& entry)
{
    m_Current.insert(selector, entry);
    if (!m_Home.contains(selector))
        m_Used.append(selector);
    m_Home.insert(selector, entry);
}

void SelectorCursor::Forget(const QString& selector)
{
    m_Current.remove(selector);
}

int SelectorCursor::Restore(const QString& selector)
{
    const auto home = m_Home.constFind(selector);
    if (home == m_Home.constEnd())
        return PkoErrorSuccess;
    return Select(selector, home.value());
}

int SelectorCursor::RestoreAll()
{
    int first = PkoErrorSuccess;
    for (int i = m_Used.size() - 1; i >= 0; --i) {
        const int code = Restore(m_Used.at(i));
        if (first == PkoErrorSuccess)
            first = code;
        if (FeatureIo::IsLost(code))
            break;
    }
    return first;
}
