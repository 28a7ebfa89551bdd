#ifndef FEATURESTAB_H
#define FEATURESTAB_H

#include "FeatureTableModel.h"

#include <QWidget>

class QLineEdit;
class QSortFilterProxyModel;
class QTableView;
class ViewerLog;

// The "Features" page: every feature of the camera with its live value, a
// name filter, and in-place editing of the values.
class FeaturesTab : public QWidget {
    Q_OBJECT

public:
    explicit FeaturesTab(ViewerLog& log, QWidget* parent = nullptr);

    // Shows the features of the camera just opened (null: none). Cannot fail;
    // features that cannot be observed are logged by the model.
    void SetFeatures(const FeatureTableModel::FeatureList& features);

    FeatureTableModel* Model() const { return m_Model; }
    QTableView* View() const { return m_View; }

private slots:
    void OnFilterChanged(const QString& text);

private:
    FeatureTableModel* m_Model;
    QSortFilterProxyModel* m_Proxy;
    QLineEdit* m_Filter;
    QTableView* m_View;
};

#endif
