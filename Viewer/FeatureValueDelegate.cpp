#include "FeatureValueDelegate.h"

#include "FeatureTableModel.h"

#include <PkoAPI/PkoCommonTypes.h>

#include <QApplication>
#include <QComboBox>
#include <QDoubleValidator>
#include <QLineEdit>
#include <QMouseEvent>
#include <QPainter>
#include <QRegularExpressionValidator>
#include <QStyle>

FeatureValueDelegate::FeatureValueDelegate(QObject* parent) : QStyledItemDelegate(parent) {}

bool FeatureValueDelegate::IsCommand(const QModelIndex& index)
{
    return index.column() == FeatureTableModel::ValueColumn &&
           index.data(FeatureTableModel::DataTypeRole).toInt() == ZMT::PkoAPI::PkoFeatureDataCommand;
}

QRect FeatureValueDelegate::ButtonRect(const QStyleOptionViewItem& option, const QString& text)
{
    // A button of its own size at the left, not a bar across the column.
    const int width = qMin(option.rect.width() - 4, option.fontMetrics.horizontalAdvance(text) + 40);
    return QRect(option.rect.left() + 2, option.rect.top() + 1, width, option.rect.height() - 2);
}

QWidget* FeatureValueDelegate::createEditor(QWidget* parent, const QStyleOptionViewItem& option,
                                            const QModelIndex& index) const
{
    const int dataType = index.data(FeatureTableModel::DataTypeRole).toInt();
    if (dataType == ZMT::PkoAPI::PkoFeatureDataEnum) {
        QComboBox* combo = new QComboBox(parent);
        combo->setObjectName(QStringLiteral("featureValueCombo"));
        combo->addItems(index.data(FeatureTableModel::EntriesRole).toStringList());
        return combo;
    }
    QLineEdit* edit = new QLineEdit(parent);
    edit->setObjectName(QStringLiteral("featureValueEdit"));
    if (dataType == ZMT::PkoAPI::PkoFeatureDataInt) {
        edit->setValidator(new QRegularExpressionValidator(QRegularExpression(QStringLiteral("-?\\d+")), edit));
    } else if (dataType == ZMT::PkoAPI::PkoFeatureDataFloat) {
        QDoubleValidator* validator = new QDoubleValidator(edit);
        validator->setLocale(QLocale::c());
        edit->setValidator(validator);
    }
    Q_UNUSED(option);
    return edit;
}

void FeatureValueDelegate::setEditorData(QWidget* editor, const QModelIndex& index) const
{
    const QString value = index.data(Qt::EditRole).toString();
    if (QComboBox* combo = qobject_cast<QComboBox*>(editor)) {
        combo->setCurrentIndex(combo->findText(value));
    } else if (QLineEdit* edit = qobject_cast<QLineEdit*>(editor)) {
        edit->setText(value);
    }
}

void FeatureValueDelegate::setModelData(QWidget* editor, QAbstractItemModel* model, const QModelIndex& index) const
{
    QString text;
    if (QComboBox* combo = qobject_cast<QComboBox*>(editor)) {
        text = combo->currentText();
    } else if (QLineEdit* edit = qobject_cast<QLineEdit*>(editor)) {
        text = edit->text();
    } else {
        return;
    }
    // Writing an unchanged value would only fill the journal.
    if (text != index.data(Qt::EditRole).toString()) {
        model->setData(index, text, Qt::EditRole);
    }
}

void FeatureValueDelegate::paint(QPainter* painter, const QStyleOptionViewItem& option, const QModelIndex& index) const
{
    if (!IsCommand(index)) {
        QStyledItemDelegate::paint(painter, option, index);
        return;
    }
    QStyleOptionButton button;
    button.text = index.data(Qt::DisplayRole).toString();
    button.rect = ButtonRect(option, button.text);
    button.state = QStyle::State_Raised;
    if (index.flags() & Qt::ItemIsEnabled) {
        button.state |= QStyle::State_Enabled;
    }
    const QWidget* widget = option.widget;
    QStyle* style = widget != nullptr ? widget->style() : QApplication::style();
    style->drawControl(QStyle::CE_PushButton, &button, painter, widget);
}

bool FeatureValueDelegate::editorEvent(QEvent* event, QAbstractItemModel* model, const QStyleOptionViewItem& option,
                                       const QModelIndex& index)
{
    if (IsCommand(index) && event->type() == QEvent::MouseButtonRelease) {
        const QMouseEvent* mouse = static_cast<const QMouseEvent*>(event);
        if (mouse->button() == Qt::LeftButton &&
            ButtonRect(option, index.data(Qt::DisplayRole).toString()).contains(mouse->pos())) {
            model->setData(index, true, FeatureTableModel::ExecuteRole);
            return true;
        }
    }
    return QStyledItemDelegate::editorEvent(event, model, option, index);
}
