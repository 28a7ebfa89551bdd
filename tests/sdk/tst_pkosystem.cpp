#include "SdkTestSupport.h"

#include <PkoAPI/PkoAPI.h>
#include <PkoAPI/Sim/SimCamera.h>

#include <QtTest>

using namespace ZMT::PkoAPI;

class TestPkoSystem : public QObject {
    Q_OBJECT

private slots:
    void shouldListTheSimulatedCamerasFirstClosedAndInModelOrder()
    {
        std::vector<CameraPtr> cameras{CameraPtr()};
        QCOMPARE(PkoSystem::GetInstance().GetCameras(cameras), int(PkoErrorSuccess));
        // Cameras found on the machine (a fake GigE camera of another test)
        // follow the simulated models.
        const std::size_t models = Sim::ModelIds().size();
        QVERIFY(cameras.size() >= models);
        cameras.resize(models);
        std::vector<std::string> ids;
        for (const CameraPtr& camera : cameras) {
            std::string id;
            QCOMPARE(camera->GetID(id), int(PkoErrorSuccess));
            ids.push_back(id);
            QVERIFY(!camera->IsOpen());
            QVERIFY(dynamic_pointer_cast<Sim::SimCamera>(camera) != nullptr);
        }
        QCOMPARE(ids, Sim::ModelIds());
    }

    void shouldHandOutTheSameCameraObjectForAnId()
    {
        CameraPtr first, second;
        QCOMPARE(PkoSystem::GetInstance().GetCameraByID("SIM-SYNCOUT", first), int(PkoErrorSuccess));
        QCOMPARE(PkoSystem::GetInstance().GetCameraByID("SIM-SYNCOUT", second), int(PkoErrorSuccess));
        QVERIFY(first != nullptr);
        QVERIFY(first == second);
        std::vector<CameraPtr> cameras;
        QCOMPARE(PkoSystem::GetInstance().GetCameras(cameras), int(PkoErrorSuccess));
        QVERIFY(cameras[2] == first);
        QVERIFY(&PkoSystem::GetInstance() == &PkoSystem::GetInstance());
    }

    void shouldRefuseUnknownAndNullIdsLeavingTheOutputAlone()
    {
        CameraPtr camera;
        QCOMPARE(PkoSystem::GetInstance().GetCameraByID("SIM-LINE-SFNC", camera), int(PkoErrorSuccess));
        CameraPtr kept = camera;
        QCOMPARE(PkoSystem::GetInstance().GetCameraByID("sim-line-sfnc", camera), int(PkoErrorNotFound));
        QVERIFY(camera == kept);
        QCOMPARE(PkoSystem::GetInstance().GetCameraByID(nullptr, camera), int(PkoErrorBadParameter));
        QVERIFY(camera == kept);
    }

    void shouldShareStateBetweenClientsOfOneCamera()
    {
        CameraPtr camera;
        QCOMPARE(PkoSystem::GetInstance().GetCameraByID("SIM-LINE-ROUTING", camera), int(PkoErrorSuccess));
        std::vector<FeaturePtr> features;
        QCOMPARE(camera->GetFeatures(features), int(PkoErrorDeviceNotOpen));
        QCOMPARE(camera->Open(), int(PkoErrorSuccess));
        QCOMPARE(camera->GetFeatures(features), int(PkoErrorSuccess));
        QVERIFY(features.size() >= 30);
        QCOMPARE(NameOf(features.front()), std::string("DeviceVendorName"));

        CameraPtr again;
        QCOMPARE(PkoSystem::GetInstance().GetCameraByID("SIM-LINE-ROUTING", again), int(PkoErrorSuccess));
        QVERIFY(again->IsOpen());
        QCOMPARE(FeatureOf(camera, "TriggerMode")->SetValue("On"), int(PkoErrorSuccess));
        QCOMPARE(TextOf(FeatureOf(again, "TriggerMode")), std::string("On"));
        QCOMPARE(camera->Close(), int(PkoErrorSuccess));
        QVERIFY(!again->IsOpen());
    }

    void shouldNameEachCameraByModelAndId()
    {
        CameraPtr camera;
        QCOMPARE(PkoSystem::GetInstance().GetCameraByID("SIM-NO-TRIGGER", camera), int(PkoErrorSuccess));
        std::string model, name;
        QCOMPARE(camera->GetModel(model), int(PkoErrorSuccess));
        QCOMPARE(camera->GetName(name), int(PkoErrorSuccess));
        QVERIFY(!model.empty());
        QCOMPARE(name, model + " (SIM-NO-TRIGGER)");
    }
};

QTEST_GUILESS_MAIN(TestPkoSystem)
#include "tst_pkosystem.moc"
