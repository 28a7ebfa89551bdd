#include "FeatureLayout.h"

#include "FeatureIo.h"

using namespace ZMT::PkoAPI;

namespace {

const QLatin1String kSelectorSuffix("Selector");

}  // namespace

int FeatureLayout::Build(const CameraPtr& camera)
{
    m_Items.clear();
    m_Index.clear();
    if (!camera)
        return PkoErrorBadHandle;
    std::vector<FeaturePtr> features;
    const int code = camera->GetFeatures(features);
    if (code != PkoErrorSuccess)
        return code;
    Build(features);
    return PkoErrorSuccess;
}

void FeatureLayout::Build(const std::vector<FeaturePtr>& features)
{
    m_Items.clear();
    m_Index.clear();
    QStringList selectors;
    for (const FeaturePtr& feature : features) {
        Item item;
        item.name = FeatureIo::Name(feature);
        if (item.name.isEmpty() || m_Index.contains(item.name) || feature->GetDataType(item.type) != PkoErrorSuccess)
            continue;
        item.feature = feature;
        if (item.type == PkoFeatureDataEnum && IsSelectorName(item.name))
            selectors.append(item.name);
        m_Index.insert(item.name, m_Items.size());
        m_Items.append(item);
    }
    for (Item& item : m_Items)
        item.selector = SelectorFor(item.name, selectors);
}

const FeatureLayout::Item* FeatureLayout::Find(const QString& name) const
{
    const auto found = m_Index.constFind(name);
    return found == m_Index.constEnd() ? nullptr : &m_Items.at(found.value());
}

FeaturePtr FeatureLayout::Feature(const QString& name) const
{
    const Item* item = Find(name);
    return item != nullptr ? item->feature : FeaturePtr();
}

PkoFeatureDataType FeatureLayout::Type(const QString& name) const
{
    const Item* item = Find(name);
    return item != nullptr ? item->type : PkoFeatureDataUnknown;
}

QString FeatureLayout::SelectorOf(const QString& name) const
{
    const Item* item = Find(name);
    return item != nullptr ? item->selector : QString();
}

QStringList FeatureLayout::SelectedBy(const QString& selector) const
{
    QStringList selected;
    for (const Item& item : m_Items) {
        if (item.selector == selector && !selector.isEmpty())
            selected.append(item.name);
    }
    return selected;
}

bool FeatureLayout::IsSelector(const QString& name) const
{
    return Type(name) == PkoFeatureDataEnum && IsSelectorName(name);
}

QVector<FeatureLayout::Group> FeatureLayout::WriteOrder() const
{
    QVector<Group> order;
    for (const Item& item : m_Items) {
        // A selected feature is written with its selector; only one whose
        // selector the camera lacks stands alone (which the rule never
        // makes, as it only picks the camera's own selectors).
        if (!item.selector.isEmpty() && Has(item.selector))
            continue;
        Group group;
        group.feature = item.name;
        if (IsSelector(item.name))
            group.selected = SelectedBy(item.name);
        order.append(group);
    }
    return order;
}

bool FeatureLayout::IsSelectorName(const QString& name)
{
    return name.size() > kSelectorSuffix.size() && name.endsWith(kSelectorSuffix);
}

QString FeatureLayout::SelectorFor(const QString& feature, const QStringList& selectors)
{
    if (IsSelectorName(feature) || feature.endsWith(QLatin1String("All")) ||
        feature.endsWith(QLatin1String("Levels"))) {
        return QString();
    }
    QString best;
    int bestLength = 0;
    for (const QString& selector : selectors) {
        const int prefixLength = selector.size() - kSelectorSuffix.size();
        if (prefixLength <= bestLength || feature.size() <= prefixLength)
            continue;
        if (!feature.startsWith(selector.leftRef(prefixLength)))
            continue;
        // "Line" selects "LineMode", not "Linear".
        const QChar next = feature.at(prefixLength);
        if (!next.isUpper() && !next.isDigit())
            continue;
        best = selector;
        bestLength = prefixLength;
    }
    return best;
}
