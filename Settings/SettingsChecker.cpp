#include "SettingsChecker.h"

#include "FeatureIo.h"
#include "SettingsValue.h"

#include <QHash>
#include <QStringList>

using namespace ZMT::PkoAPI;

namespace {

struct Range {
    int code = PkoErrorSuccess;
    QVariant minimum;
    QVariant maximum;
    QVariant increment;
};

bool Less(const QVariant& a, const QVariant& b)
{
    if (a.userType() == QMetaType::LongLong)
        return a.toLongLong() < b.toLongLong();
    return a.toDouble() < b.toDouble();
}

// Reads of the camera's lists and ranges, once each.
class CameraFacts {
public:
    explicit CameraFacts(const FeatureLayout& layout) : m_Layout(layout) {}

    int Entries(const QString& name, QStringList& entries)
    {
        if (!m_Entries.contains(name)) {
            QStringList list;
            const int code = FeatureIo::Entries(m_Layout.Feature(name), list);
            if (code != PkoErrorSuccess)
                return code;
            m_Entries.insert(name, list);
        }
        entries = m_Entries.value(name);
        return PkoErrorSuccess;
    }

    const Range& RangeOf(const QString& name)
    {
        if (!m_Ranges.contains(name)) {
            Range range;
            range.code = FeatureIo::Range(m_Layout.Feature(name), m_Layout.Type(name), range.minimum, range.maximum,
                                          range.increment);
            m_Ranges.insert(name, range);
        }
        return m_Ranges[name];
    }

private:
    const FeatureLayout& m_Layout;
    QHash<QString, QStringList> m_Entries;
    QHash<QString, Range> m_Ranges;
};

}  // namespace

SettingsCheck SettingsChecker::Check(SettingsDocument& document, const FeatureLayout& layout,
                                     const QString& cameraModel)
{
    SettingsCheck check;
    check.usable.fill(false, document.entries.size());
    check.toWrite.resize(document.entries.size());
    check.reasons.resize(document.entries.size());
    if (!document.cameraModel.isEmpty() && !cameraModel.isEmpty() && document.cameraModel != cameraModel) {
        SettingsProblem note;
        note.file = document.fileName;
        note.message = QStringLiteral("the file was saved from a camera of model %1, this one is %2")
                           .arg(document.cameraModel, cameraModel);
        check.problems.append(note);
    }
    CameraFacts facts(layout);
    bool lost = false;
    for (int i = 0; i < document.entries.size(); ++i) {
        SettingsEntry& entry = document.entries[i];
        SettingsProblem problem;
        problem.file = document.fileName;
        problem.line = entry.line;
        problem.entry = entry.Key();
        auto error = [&](SettingsProblem::Kind kind, const QString& message) {
            problem.kind = kind;
            problem.message = message;
            check.problems.append(problem);
            check.reasons[i] = message;
        };
        auto lostHere = [&](int code) {
            if (!FeatureIo::IsLost(code))
                return false;
            lost = true;
            return true;
        };
        if (lost) {
            error(SettingsProblem::Kind::File, QStringLiteral("not checked: the camera stopped answering"));
            continue;
        }
        const FeatureLayout::Item* item = layout.Find(entry.feature);
        if (item == nullptr) {
            error(SettingsProblem::Kind::UnknownFeature,
                  QStringLiteral("the camera has no feature %1").arg(entry.feature));
            continue;
        }
        if (!SettingsValue::IsSettable(item->type)) {
            error(SettingsProblem::Kind::NotSettable, QStringLiteral("%1 is a %2 feature, which holds no setting")
                                                          .arg(entry.feature, SettingsValue::TypeName(item->type)));
            continue;
        }
        if (entry.IsSelected()) {
            if (!layout.Has(entry.selector)) {
                error(SettingsProblem::Kind::UnknownFeature,
                      QStringLiteral("the camera has no selector %1").arg(entry.selector));
                continue;
            }
            if (layout.Type(entry.selector) != PkoFeatureDataEnum) {
                error(SettingsProblem::Kind::WrongType,
                      QStringLiteral("%1 is no enumeration, so it selects nothing").arg(entry.selector));
                continue;
            }
            QStringList entries;
            const int code = facts.Entries(entry.selector, entries);
            if (code != PkoErrorSuccess) {
                error(lostHere(code) ? SettingsProblem::Kind::File : SettingsProblem::Kind::UnknownEntry,
                      QStringLiteral("the entries of %1 cannot be read: %2")
                          .arg(entry.selector, FeatureIo::ErrorName(code)));
                continue;
            }
            if (!entries.contains(entry.selectorEntry)) {
                error(SettingsProblem::Kind::UnknownEntry,
                      QStringLiteral("the camera's %1 has no entry %2 (it has %3)")
                          .arg(entry.selector, entry.selectorEntry, entries.join(QStringLiteral(", "))));
                continue;
            }
        }

        // The value in the camera's type.
        QVariant value;
        QString expected;
        if (entry.fromText) {
            if (!SettingsValue::FromText(item->type, entry.value.toString(), value, expected)) {
                error(SettingsProblem::Kind::WrongType,
                      QStringLiteral("expected %1 (%2 is %3), found \"%4\"")
                          .arg(expected, entry.feature, SettingsValue::TypeName(item->type), entry.value.toString()));
                continue;
            }
        } else {
            value = SettingsValue::As(item->type, entry.value);
            if (!value.isValid()) {
                error(SettingsProblem::Kind::WrongType,
                      QStringLiteral("expected a value of type %1, found %2 %3")
                          .arg(SettingsValue::TypeName(item->type),
                               entry.value.userType() == QMetaType::QString ? QStringLiteral("the text")
                               : QString::fromLatin1(entry.value.typeName()) == QLatin1String("bool")
                                   ? QStringLiteral("the boolean")
                                   : QStringLiteral("the number"),
                               SettingsValue::ToText(entry.value)));
                continue;
            }
            if (entry.type != PkoFeatureDataUnknown && entry.type != item->type) {
                SettingsProblem note = problem;
                note.message = QStringLiteral("the file says %1, the camera's feature is %2; the value fits")
                                   .arg(SettingsValue::TypeName(entry.type), SettingsValue::TypeName(item->type));
                check.problems.append(note);
            }
        }

        if (item->type == PkoFeatureDataEnum) {
            QStringList entries;
            const int code = facts.Entries(entry.feature, entries);
            if (code != PkoErrorSuccess) {
                error(lostHere(code) ? SettingsProblem::Kind::File : SettingsProblem::Kind::UnknownEntry,
                      QStringLiteral("the entries of %1 cannot be read: %2")
                          .arg(entry.feature, FeatureIo::ErrorName(code)));
                continue;
            }
            if (!entries.contains(value.toString())) {
                error(SettingsProblem::Kind::UnknownEntry,
                      QStringLiteral("the camera's %1 has no entry %2 (it has %3)")
                          .arg(entry.feature, value.toString(), entries.join(QStringLiteral(", "))));
                continue;
            }
        } else if (item->type == PkoFeatureDataInt || item->type == PkoFeatureDataFloat) {
            const Range& range = facts.RangeOf(entry.feature);
            if (range.code != PkoErrorSuccess) {
                if (lostHere(range.code)) {
                    error(SettingsProblem::Kind::File, QStringLiteral("the range of %1 cannot be read: %2")
                                                           .arg(entry.feature, FeatureIo::ErrorName(range.code)));
                    continue;
                }
            } else {
                if (Less(value, range.minimum) || Less(range.maximum, value)) {
                    error(SettingsProblem::Kind::OutOfRange,
                          QStringLiteral("%1 is outside the range %2 to %3")
                              .arg(SettingsValue::ToText(value), SettingsValue::ToText(range.minimum),
                                   SettingsValue::ToText(range.maximum)));
                    continue;
                }
                const QVariant snapped = FeatureIo::Snap(value, range.minimum, range.increment);
                if (!SettingsValue::Equal(snapped, value)) {
                    SettingsProblem note = problem;
                    note.message = QStringLiteral("%1 is off the increment %2; it will be written as %3")
                                       .arg(SettingsValue::ToText(value), SettingsValue::ToText(range.increment),
                                            SettingsValue::ToText(snapped));
                    check.problems.append(note);
                }
            }
        }
        check.toWrite[i] = value;
        if (item->type == PkoFeatureDataInt || item->type == PkoFeatureDataFloat) {
            const Range& range = facts.RangeOf(entry.feature);
            if (range.code == PkoErrorSuccess)
                check.toWrite[i] = FeatureIo::Snap(value, range.minimum, range.increment);
        }
        entry.value = value;
        entry.type = item->type;
        entry.fromText = false;
        check.usable[i] = true;
    }
    check.cameraLost = lost;
    return check;
}
