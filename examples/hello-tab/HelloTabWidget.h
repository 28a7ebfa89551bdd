#ifndef HELLOTABWIDGET_H
#define HELLOTABWIDGET_H

#include <BaseTabPluginWidget.h>

#include <memory>

class QLabel;

// Shows the camera's exposure time and follows its changes. The base class
// watches m_ObservedFeatures and, once a second while the tab is shown, calls
// UpdateFromChangedFeatures() with the names that changed.
class HelloTabWidget : public BaseTabPluginWidget {
    Q_OBJECT

public:
    // Throws TENotSupported when the camera has no ExposureTime.
    HelloTabWidget(FeatureVectorPtr features, QWidget* parent);

protected:
    void UpdateFromChangedFeatures() override;

private:
    void ShowValue();

    // The base class leaves these to its subclass to delete.
    std::unique_ptr<FeatureManager> m_OwnedFeatureManager;
    std::unique_ptr<QStringList> m_OwnedChangedFeatures;
    std::unique_ptr<QTimer> m_OwnedUpdateTimer;
    std::unique_ptr<QMutex> m_OwnedMutex;
    QLabel* m_Value;
};

#endif
