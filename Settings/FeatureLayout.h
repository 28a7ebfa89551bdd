#ifndef FEATURELAYOUT_H
#define FEATURELAYOUT_H

#include <PkoAPI/Camera.h>

#include <QHash>
#include <QString>
#include <QStringList>
#include <QVector>

#include <vector>

// The one place that knows which feature a selector selects and in which
// order settings are written.
//
// The SDK does not say which features a selector selects, so the names do,
// as the GenICam standard names them: an enumeration named "<P>Selector"
// selects the features whose names start with <P> ("TriggerSelector":
// "TriggerMode", "TriggerSource" ...), the longest such prefix winning
// ("LineOutSource" belongs to "LineOutSelector", not "LineSelector").
// Selectors select no selector, nor the bit masks over all of a selector's
// entries (names ending in "All" or "Levels"). Where a camera keeps one
// value for all entries of a feature the rule counts as selected, the value
// is read and written once per entry and always the same: that costs
// writes, never correctness. A selected feature the rule missed would be
// written under one entry only.
//
// Write order: the camera's feature order, except that a selector's
// selected features follow the selector, entry by entry.
class FeatureLayout {
public:
    struct Item {
        QString name;
        ZMT::PkoAPI::FeaturePtr feature;
        ZMT::PkoAPI::PkoFeatureDataType type = ZMT::PkoAPI::PkoFeatureDataUnknown;
        QString selector;  // the selector this feature has one value per entry of; empty for none
    };
    // A unit of the write order: a feature without selector, or a selector
    // with the features it selects.
    struct Group {
        QString feature;
        QStringList selected;  // camera order; empty when feature is no selector or selects nothing
    };

    // Reads the name and type of every feature of the open camera (nothing
    // is written, no value read). On failure returns the SDK's code and
    // leaves the layout empty; features whose name or type cannot be read
    // are left out.
    int Build(const ZMT::PkoAPI::CameraPtr& camera);
    void Build(const std::vector<ZMT::PkoAPI::FeaturePtr>& features);

    bool Has(const QString& name) const { return m_Index.contains(name); }
    // The first feature of that name; null when the camera has none.
    const Item* Find(const QString& name) const;
    ZMT::PkoAPI::FeaturePtr Feature(const QString& name) const;
    ZMT::PkoAPI::PkoFeatureDataType Type(const QString& name) const;
    // Camera order; a repeated name appears once (its first feature).
    const QVector<Item>& Items() const { return m_Items; }
    QString SelectorOf(const QString& name) const;
    QStringList SelectedBy(const QString& selector) const;
    bool IsSelector(const QString& name) const;

    QVector<Group> WriteOrder() const;

    // The naming rule by itself, for files read without a camera at hand.
    static bool IsSelectorName(const QString& name);
    // The selector among selectors that selects feature; empty for none.
    static QString SelectorFor(const QString& feature, const QStringList& selectors);

private:
    QVector<Item> m_Items;
    QHash<QString, int> m_Index;
};

#endif  // FEATURELAYOUT_H
