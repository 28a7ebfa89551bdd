#ifndef IOTRIGGERWIDGETHELPERS_H
#define IOTRIGGERWIDGETHELPERS_H

// Control factories shared by the source files of IOTriggerWidget; internal to
// the tab, not part of its interface.

#include <QCheckBox>
#include <QLabel>
#include <QSizePolicy>
#include <QString>
#include <QWidget>

namespace IOTriggerWidgetHelpers {

inline QLabel* NewLabel(const QString& text, const QString& objectName, QWidget* parent)
{
    QLabel* label = new QLabel(text, parent);
    label->setObjectName(objectName);
    return label;
}

// Kept at the indicator's size, so that a click anywhere on the box toggles it.
inline QCheckBox* NewCheckBox(const QString& objectName, QWidget* parent)
{
    QCheckBox* checkBox = new QCheckBox(parent);
    checkBox->setObjectName(objectName);
    checkBox->setSizePolicy(QSizePolicy::Fixed, QSizePolicy::Fixed);
    return checkBox;
}

}  // namespace IOTriggerWidgetHelpers

#endif
