#ifndef FEATUREVALUEDELEGATE_H
#define FEATUREVALUEDELEGATE_H

#include <QStyledItemDelegate>

// Editors of the Features table's value column: a combo box of the entries
// available now for enumerations, a checked line edit for numbers and text,
// and a push button drawn in the cell for commands (a click runs it).
class FeatureValueDelegate : public QStyledItemDelegate {
    Q_OBJECT

public:
    explicit FeatureValueDelegate(QObject* parent = nullptr);

    // The editor for the index's data type; a plain line edit for anything
    // else. Never returns null for an editable index.
    QWidget* createEditor(QWidget* parent, const QStyleOptionViewItem& option, const QModelIndex& index) const override;
    void setEditorData(QWidget* editor, const QModelIndex& index) const override;
    // Hands the editor's text to the model, which writes and reports failures.
    void setModelData(QWidget* editor, QAbstractItemModel* model, const QModelIndex& index) const override;
    void paint(QPainter* painter, const QStyleOptionViewItem& option, const QModelIndex& index) const override;
    // A left click released on a command cell runs the command.
    bool editorEvent(QEvent* event, QAbstractItemModel* model, const QStyleOptionViewItem& option,
                     const QModelIndex& index) override;

private:
    static bool IsCommand(const QModelIndex& index);
    // Where the button of a command cell is drawn (and can be clicked).
    static QRect ButtonRect(const QStyleOptionViewItem& option, const QString& text);
};

#endif
