// Descriptions the GenICam backend refuses at open: one cut off, one whose
// pointers form a cycle; and one with shared pointers that it must not
// refuse. Each case serves its description from an in-process fake camera
// on 127.0.0.1 (run inside a loopback-only network namespace).
#include "InProcessGvCamera.h"

#include "FakeGvCamera.h"

#include <PkoAPI/PkoAPI.h>

#include <QFile>
#include <QTemporaryDir>
#include <QtTest>

#include <memory>
#include <string>

using namespace ZMT::PkoAPI;

namespace {

// Nodes added to a real description just before its end.
const char* const kTwoNodeCycle = R"(
	<Integer Name="CycleIndexUser">
		<pValue>CycleIndexedRegister</pValue>
	</Integer>
	<IntReg Name="CycleIndexedRegister">
		<Address>0x0</Address>
		<pIndex Offset="4">CycleIndexUser</pIndex>
		<Length>4</Length>
		<AccessMode>RO</AccessMode>
		<pPort>Device</pPort>
		<Sign>Unsigned</Sign>
		<Endianess>BigEndian</Endianess>
	</IntReg>
)";

// Through an enumeration entry's pIsAvailable and a SwissKnife's pVariable.
const char* const kLongCycle = R"(
	<Enumeration Name="CycleMode">
		<EnumEntry Name="CycleModeOn">
			<pIsAvailable>CycleAvailable</pIsAvailable>
			<Value>1</Value>
		</EnumEntry>
		<pValue>CycleModeValue</pValue>
	</Enumeration>
	<IntSwissKnife Name="CycleAvailable">
		<pVariable Name="LIMIT">CycleLimit</pVariable>
		<Formula>LIMIT &gt; 0</Formula>
	</IntSwissKnife>
	<Integer Name="CycleLimit">
		<Value>1</Value>
		<pMax>CycleModeValue</pMax>
	</Integer>
	<Integer Name="CycleModeValue">
		<pValue>CycleMode</pValue>
	</Integer>
)";

// Two ways from the top to the bottom node, and pointers back up that read
// nothing (an invalidator, a selected feature): no cycle.
const char* const kDiamond = R"(
	<Integer Name="DiamondTop">
		<pValue>DiamondLeft</pValue>
		<pMax>DiamondRight</pMax>
	</Integer>
	<Integer Name="DiamondLeft">
		<pValue>DiamondBottom</pValue>
	</Integer>
	<Integer Name="DiamondRight">
		<pValue>DiamondBottom</pValue>
		<pIsAvailable>DiamondBottom</pIsAvailable>
	</Integer>
	<Integer Name="DiamondBottom">
		<pSelected>DiamondTop</pSelected>
		<pInvalidator>DiamondTop</pInvalidator>
		<Value>3</Value>
	</Integer>
)";

}  // namespace

class tst_ArvBackendDescriptions : public QObject {
    Q_OBJECT

private:
    QTemporaryDir m_Dir;
    std::unique_ptr<InProcessGvCamera> m_Fake;
    CameraPtr m_Camera;

    static QByteArray Description(const char* file)
    {
        QFile source(FakeGvCamera::GenicamFile(QLatin1String(file)));
        if (!source.open(QIODevice::ReadOnly))
            return QByteArray();
        return source.readAll();
    }

    static QByteArray WithNodes(const char* file, const char* nodes)
    {
        QByteArray xml = Description(file);
        const int end = xml.lastIndexOf("</RegisterDescription>");
        if (end >= 0)
            xml.insert(end, nodes);
        return xml;
    }

    // Serves xml from an in-process camera and opens it; returns Open's code.
    int Open(const QByteArray& xml)
    {
        const QString path = m_Dir.filePath(QStringLiteral("description.xml"));
        QFile file(path);
        if (!file.open(QIODevice::WriteOnly | QIODevice::Truncate) || file.write(xml) != xml.size())
            return PkoErrorInternal;
        file.close();
        m_Fake = std::make_unique<InProcessGvCamera>(path);
        QString error;
        if (!m_Fake->Start(error)) {
            qWarning("%s", qPrintable(error));
            return PkoErrorInternal;
        }
        if (PkoSystem::GetInstance().GetCameraByID(InProcessGvCamera::Id(), m_Camera) != PkoErrorSuccess)
            return PkoErrorInternal;
        return m_Camera->Open();
    }

    std::string Problem() const
    {
        std::string problem;
        m_Camera->GetOpenProblem(problem);
        return problem;
    }

private slots:
    void init()
    {
        if (!FakeGvCamera::BinaryAvailable())
            QSKIP("arv-fake-gv-camera-0.8 is not installed (Debian: aravis-tools-cli)");
        QVERIFY(m_Dir.isValid());
    }

    void cleanup()
    {
        if (m_Camera)
            m_Camera->Close();
        m_Camera = CameraPtr();
        m_Fake.reset();
    }

    void shouldRefuseADescriptionWhosePointersFormACycleNamingItsNodes_data()
    {
        QTest::addColumn<QByteArray>("xml");
        QTest::addColumn<QString>("cycle");
        QTest::newRow("pIndex of a register back to its user")
            << WithNodes(FakeGvCamera::Gen1Line, kTwoNodeCycle)
            << QStringLiteral("CycleIndexUser -> CycleIndexedRegister -> CycleIndexUser");
        QTest::newRow("four nodes through an entry and a formula")
            << WithNodes(FakeGvCamera::Gen3LineOut, kLongCycle)
            << QStringLiteral("CycleMode -> CycleAvailable -> CycleLimit -> CycleModeValue -> CycleMode");
    }

    void shouldRefuseADescriptionWhosePointersFormACycleNamingItsNodes()
    {
        QFETCH(QByteArray, xml);
        QFETCH(QString, cycle);
        QCOMPARE(Open(xml), int(PkoErrorBadDescription));
        QVERIFY(!m_Camera->IsOpen());
        const QString problem = QString::fromStdString(Problem());
        QVERIFY2(problem.contains(QLatin1String("cycle")) && problem.contains(cycle), qPrintable(problem));
    }

    void shouldOpenADescriptionWithSharedPointersButNoCycle()
    {
        QCOMPARE(Open(WithNodes(FakeGvCamera::Gen1Line, kDiamond)), int(PkoErrorSuccess));
        QCOMPARE(Problem(), std::string());
        QVERIFY(m_Camera->IsOpen());
    }

    void shouldRefuseADescriptionThatIsCutOff_data()
    {
        QTest::addColumn<QByteArray>("xml");
        for (const char* file : {FakeGvCamera::Gen1Line, FakeGvCamera::Gen2SyncOut, FakeGvCamera::Gen3LineOut}) {
            const QByteArray whole = Description(file);
            // Cut shorter, Aravis finds no description at all and refuses
            // the camera itself.
            for (int percent : {10, 30, 70, 99}) {
                QTest::addRow("%s cut at %d%%", file, percent) << whole.left(whole.size() * percent / 100);
            }
            // All but the closing tag of the root.
            QTest::addRow("%s without its last tag", file) << whole.left(whole.lastIndexOf("</RegisterDescription>"));
        }
    }

    void shouldRefuseADescriptionThatIsCutOff()
    {
        QFETCH(QByteArray, xml);
        QCOMPARE(Open(xml), int(PkoErrorBadDescription));
        QVERIFY(!m_Camera->IsOpen());
        const QString problem = QString::fromStdString(Problem());
        QVERIFY2(problem.contains(QLatin1String("does not parse completely")), qPrintable(problem));
    }

    void shouldOpenTheWholeDescriptionsAndForgetAnEarlierProblem()
    {
        const QByteArray whole = Description(FakeGvCamera::Gen2SyncOut);
        QCOMPARE(Open(whole.left(whole.size() / 2)), int(PkoErrorBadDescription));
        m_Fake.reset();
        QCOMPARE(Open(whole), int(PkoErrorSuccess));
        QCOMPARE(Problem(), std::string());
    }
};

QTEST_GUILESS_MAIN(tst_ArvBackendDescriptions)
#include "tst_arvbackend_descriptions.moc"
