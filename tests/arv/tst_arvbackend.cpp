// The GenICam backend against Aravis's in-process fake camera, described by
// a node map of our own: types, ranges and increments, locks, availability,
// selectors, notifications, polling, frames and concurrent use.

// Before any Qt header: GLib's headers use the name "signals".
#include <arv.h>

#include "SimTestSupport.h"
#include "TestTime.h"

#include <PkoAPI/PkoAPI.h>

#include <QDir>
#include <QElapsedTimer>
#include <QFile>
#include <QTemporaryDir>
#include <QTest>

#include <atomic>
#include <cmath>
#include <map>
#include <mutex>
#include <string>
#include <thread>
#include <vector>

using namespace ZMT::PkoAPI;

namespace {

// The fake camera's own description plus a category of test features at
// free addresses (0x4000 and up). ShadowInteger reads StepInteger's register
// through a node of its own, so the node map does not link the two: a write
// of StepInteger changes ShadowInteger "behind the backend's back".
const char* const kNodeMap =
    "<?xml version=\"1.0\" encoding=\"utf-8\"?>\n"
    "\n"
    "<RegisterDescription\n"
    "  ModelName=\"Fake\"\n"
    "  VendorName=\"Aravis\"\n"
    "  StandardNameSpace=\"None\"\n"
    "  SchemaMajorVersion=\"1\"\n"
    "  SchemaMinorVersion=\"0\"\n"
    "  SchemaSubMinorVersion=\"1\"\n"
    "  MajorVersion=\"1\"\n"
    "  MinorVersion=\"0\"\n"
    "  SubMinorVersion=\"0\"\n"
    "  ToolTip=\"Fake camera\"\n"
    "  ProductGuid=\"0\"\n"
    "  VersionGuid=\"0\"\n"
    "  xmlns=\"http://www.genicam.org/GenApi/Version_1_0\"\n"
    "  xmlns:xsi=\"http://www.w3.org/2001/XMLSchema-instance\"\n"
    "  xsi:schemaLocation=\"http://www.genicam.org/GenApi/Version_1_0 GenApiSchema.xsd\">\n"
    "\n"
    "  <Category Name=\"Root\" NameSpace=\"Standard\">\n"
    "    <pFeature>DeviceControl</pFeature>\n"
    "    <pFeature>ImageFormatControl</pFeature>\n"
    "    <pFeature>AcquisitionControl</pFeature>\n"
    "    <pFeature>TransportLayerControl</pFeature>\n"
    "    <pFeature>Debug</pFeature>\n"
    "    <pFeature>TestControl</pFeature>\n"
    "  </Category>\n"
    "\n"
    "  <!-- Device control -->\n"
    "\n"
    "  <Category Name=\"DeviceControl\" NameSpace=\"Standard\">\n"
    "    <pFeature>DeviceVendorName</pFeature>\n"
    "    <pFeature>DeviceModelName</pFeature>\n"
    "    <pFeature>DeviceManufacturerInfo</pFeature>\n"
    "    <pFeature>DeviceID</pFeature>\n"
    "    <pFeature>DeviceVersion</pFeature>\n"
    "  </Category>\n"
    "\n"
    "  <StringReg Name=\"DeviceVendorName\" NameSpace=\"Standard\">\n"
    "    <DisplayName>Vendor Name</DisplayName>\n"
    "    <Address>0x48</Address>\n"
    "    <Length>32</Length>\n"
    "    <AccessMode>RO</AccessMode>\n"
    "    <pPort>Device</pPort>\n"
    "  </StringReg>\n"
    "\n"
    "  <StringReg Name=\"DeviceModelName\" NameSpace=\"Standard\">\n"
    "    <DisplayName>Model Name</DisplayName>\n"
    "    <Address>0x68</Address>\n"
    "    <Length>32</Length>\n"
    "    <AccessMode>RO</AccessMode>\n"
    "    <pPort>Device</pPort>\n"
    "  </StringReg>\n"
    "\n"
    "  <StringReg Name=\"DeviceManufacturerInfo\" NameSpace=\"Standard\">\n"
    "    <DisplayName>Manufacturer Info</DisplayName>\n"
    "    <Address>0xa8</Address>\n"
    "    <Length>48</Length>\n"
    "    <AccessMode>RO</AccessMode>\n"
    "    <pPort>Device</pPort>\n"
    "  </StringReg>\n"
    "\n"
    "  <StringReg Name=\"DeviceID\" NameSpace=\"Standard\">\n"
    "    <DisplayName>Device ID</DisplayName>\n"
    "    <Address>0xd8</Address>\n"
    "    <Length>16</Length>\n"
    "    <AccessMode>RO</AccessMode>\n"
    "    <pPort>Device</pPort>\n"
    "  </StringReg>\n"
    "\n"
    "  <StringReg Name=\"DeviceVersion\" NameSpace=\"Standard\">\n"
    "    <DisplayName>Device Version</DisplayName>\n"
    "    <Address>0x88</Address>\n"
    "    <Length>32</Length>\n"
    "    <AccessMode>RO</AccessMode>\n"
    "    <pPort>Device</pPort>\n"
    "  </StringReg>\n"
    "\n"
    "  <!-- Image format control -->\n"
    "\n"
    "  <Category Name=\"ImageFormatControl\" NameSpace=\"Standard\">\n"
    "    <pFeature>SensorHeight</pFeature>\n"
    "    <pFeature>SensorWidth</pFeature>\n"
    "    <pFeature>OffsetX</pFeature>\n"
    "    <pFeature>OffsetY</pFeature>\n"
    "    <pFeature>Width</pFeature>\n"
    "    <pFeature>Height</pFeature>\n"
    "    <pFeature>BinningHorizontal</pFeature>\n"
    "    <pFeature>BinningVertical</pFeature>\n"
    "    <pFeature>PixelFormat</pFeature>\n"
    "  </Category>\n"
    "\n"
    "  <Integer Name=\"SensorHeight\" NameSpace=\"Standard\">\n"
    "    <Description>Full height of image sensor.</Description>\n"
    "    <pValue>SensorHeightRegister</pValue>\n"
    "  </Integer>\n"
    "\n"
    "  <IntReg Name=\"SensorHeightRegister\" NameSpace=\"Custom\">\n"
    "    <Address>0x118</Address>\n"
    "    <Length>4</Length>\n"
    "    <AccessMode>RO</AccessMode>\n"
    "    <pPort>Device</pPort>\n"
    "    <Sign>Unsigned</Sign>\n"
    "    <Endianess>BigEndian</Endianess>\n"
    "  </IntReg>\n"
    "\n"
    "  <Integer Name=\"SensorWidth\" NameSpace=\"Standard\">\n"
    "    <Description>Full height of image sensor.</Description>\n"
    "    <pValue>SensorWidthRegister</pValue>\n"
    "  </Integer>\n"
    "\n"
    "  <IntReg Name=\"SensorWidthRegister\" NameSpace=\"Custom\">\n"
    "    <Address>0x11c</Address>\n"
    "    <Length>4</Length>\n"
    "    <AccessMode>RO</AccessMode>\n"
    "    <pPort>Device</pPort>\n"
    "    <Sign>Unsigned</Sign>\n"
    "    <Endianess>BigEndian</Endianess>\n"
    "  </IntReg>\n"
    "\n"
    "  <Integer Name=\"OffsetX\" NameSpace=\"Standard\">\n"
    "    <Description>X offset of image, in pixels.</Description>\n"
    "    <pValue>OffsetXRegister</pValue>\n"
    "    <Min>0</Min>\n"
    "    <pMax>SensorWidth</pMax>\n"
    "    <Inc>1</Inc>\n"
    "  </Integer>\n"
    "\n"
    "  <IntReg Name=\"OffsetXRegister\" NameSpace=\"Custom\">\n"
    "    <Address>0x130</Address>\n"
    "    <Length>4</Length>\n"
    "    <AccessMode>RW</AccessMode>\n"
    "    <pPort>Device</pPort>\n"
    "    <Sign>Unsigned</Sign>\n"
    "    <Endianess>BigEndian</Endianess>\n"
    "  </IntReg>\n"
    "\n"
    "  <Integer Name=\"OffsetY\" NameSpace=\"Standard\">\n"
    "    <Description>Y offset of image, in pixels.</Description>\n"
    "    <pValue>OffsetYRegister</pValue>\n"
    "    <Min>0</Min>\n"
    "    <pMax>SensorHeight</pMax>\n"
    "    <Inc>1</Inc>\n"
    "  </Integer>\n"
    "\n"
    "  <IntReg Name=\"OffsetYRegister\" NameSpace=\"Custom\">\n"
    "    <Address>0x134</Address>\n"
    "    <Length>4</Length>\n"
    "    <AccessMode>RW</AccessMode>\n"
    "    <pPort>Device</pPort>\n"
    "    <Sign>Unsigned</Sign>\n"
    "    <Endianess>BigEndian</Endianess>\n"
    "  </IntReg>\n"
    "\n"
    "  <Integer Name=\"Width\" NameSpace=\"Standard\">\n"
    "    <Description>Width of image, in pixels.</Description>\n"
    "    <pValue>WidthRegister</pValue>\n"
    "    <Min>1</Min>\n"
    "    <pMax>SensorWidth</pMax>\n"
    "    <Inc>1</Inc>\n"
    "  </Integer>\n"
    "\n"
    "  <IntReg Name=\"WidthRegister\" NameSpace=\"Custom\">\n"
    "    <Address>0x100</Address>\n"
    "    <Length>4</Length>\n"
    "    <AccessMode>RW</AccessMode>\n"
    "    <pPort>Device</pPort>\n"
    "    <Sign>Unsigned</Sign>\n"
    "    <Endianess>BigEndian</Endianess>\n"
    "  </IntReg>\n"
    "\n"
    "  <Integer Name=\"Height\" NameSpace=\"Standard\">\n"
    "    <Description>Height of image, in pixels.</Description>\n"
    "    <pValue>HeightRegister</pValue>\n"
    "    <Min>1</Min>\n"
    "    <pMax>SensorHeight</pMax>\n"
    "    <Inc>1</Inc>\n"
    "  </Integer>\n"
    "\n"
    "  <IntReg Name=\"HeightRegister\" NameSpace=\"Custom\">\n"
    "    <Address>0x104</Address>\n"
    "    <Length>4</Length>\n"
    "    <AccessMode>RW</AccessMode>\n"
    "    <pPort>Device</pPort>\n"
    "    <Sign>Unsigned</Sign>\n"
    "    <Endianess>BigEndian</Endianess>\n"
    "  </IntReg>\n"
    "\n"
    "  <Integer Name=\"BinningHorizontal\" NameSpace=\"Standard\">\n"
    "    <Description>Binning in horizontal direction.</Description>\n"
    "    <pValue>BinningHorizontalRegister</pValue>\n"
    "    <Min>1</Min>\n"
    "    <Max>16</Max>\n"
    "  </Integer>\n"
    "\n"
    "  <IntReg Name=\"BinningHorizontalRegister\" NameSpace=\"Custom\">\n"
    "    <Address>0x108</Address>\n"
    "    <Length>4</Length>\n"
    "    <AccessMode>RW</AccessMode>\n"
    "    <pPort>Device</pPort>\n"
    "    <Sign>Unsigned</Sign>\n"
    "    <Endianess>BigEndian</Endianess>\n"
    "  </IntReg>\n"
    "\n"
    "  <Integer Name=\"BinningVertical\" NameSpace=\"Standard\">\n"
    "    <Description>Binning in vertical direction.</Description>\n"
    "    <pValue>BinningVerticalRegister</pValue>\n"
    "    <Min>1</Min>\n"
    "    <Max>16</Max>\n"
    "  </Integer>\n"
    "\n"
    "  <IntReg Name=\"BinningVerticalRegister\" NameSpace=\"Custom\">\n"
    "    <Address>0x10c</Address>\n"
    "    <Length>4</Length>\n"
    "    <AccessMode>RW</AccessMode>\n"
    "    <pPort>Device</pPort>\n"
    "    <Sign>Unsigned</Sign>\n"
    "    <Endianess>BigEndian</Endianess>\n"
    "  </IntReg>\n"
    "\n"
    "  <Enumeration Name=\"PixelFormat\" NameSpace=\"Standard\">\n"
    "    <DisplayName>Pixel format</DisplayName>\n"
    "    <EnumEntry Name=\"BayerBG8\" NameSpace=\"Standard\">\n"
    "      <Value>17301515</Value>\n"
    "    </EnumEntry>\n"
    "    <EnumEntry Name=\"BayerGB8\" NameSpace=\"Standard\">\n"
    "      <Value>17301514</Value>\n"
    "    </EnumEntry>\n"
    "    <EnumEntry Name=\"BayerGR8\" NameSpace=\"Standard\">\n"
    "      <Value>17301512</Value>\n"
    "    </EnumEntry>\n"
    "    <EnumEntry Name=\"BayerRG8\" NameSpace=\"Standard\">\n"
    "      <Value>17301513</Value>\n"
    "    </EnumEntry>\n"
    "    <EnumEntry Name=\"Mono8\" NameSpace=\"Standard\">\n"
    "      <Value>17301505</Value>\n"
    "    </EnumEntry>\n"
    "    <EnumEntry Name=\"RGB8\" NameSpace=\"Standard\">\n"
    "      <Value>35127316</Value>\n"
    "    </EnumEntry>\n"
    "    <EnumEntry Name=\"Mono16\" NameSpace=\"Standard\">\n"
    "      <Value>17825799</Value>\n"
    "    </EnumEntry>\n"
    "    <pValue>PixelFormatRegister</pValue>\n"
    "  </Enumeration>\n"
    "\n"
    "  <IntReg Name=\"PixelFormatRegister\" NameSpace=\"Custom\">\n"
    "    <Address>0x128</Address>\n"
    "    <Length>4</Length>\n"
    "    <AccessMode>RW</AccessMode>\n"
    "    <pPort>Device</pPort>\n"
    "    <Sign>Unsigned</Sign>\n"
    "    <Endianess>BigEndian</Endianess>\n"
    "  </IntReg>\n"
    "\n"
    "  <!-- Acquisition control -->\n"
    "\n"
    "  <Category Name=\"AcquisitionControl\" NameSpace=\"Custom\">\n"
    "    <pFeature>AcquisitionMode</pFeature>\n"
    "    <pFeature>AcquisitionStart</pFeature>\n"
    "    <pFeature>AcquisitionStop</pFeature>\n"
    "    <pFeature>TriggerSelector</pFeature>\n"
    "    <pFeature>TriggerMode</pFeature>\n"
    "    <pFeature>TriggerSoftware</pFeature>\n"
    "    <pFeature>TriggerSource</pFeature>\n"
    "    <pFeature>TriggerActivation</pFeature>\n"
    "    <pFeature>ExposureTimeAbs</pFeature>\n"
    "  </Category>\n"
    "\n"
    "  <Command Name=\"AcquisitionStart\" NameSpace=\"Standard\">\n"
    "    <Description>Start acquisition.</Description>\n"
    "    <pValue>AcquisitionCommandRegister</pValue>\n"
    "    <CommandValue>1</CommandValue>\n"
    "  </Command>\n"
    "\n"
    "  <Command Name=\"AcquisitionStop\" NameSpace=\"Standard\">\n"
    "    <Description>Stop acquisition.</Description>\n"
    "    <pValue>AcquisitionCommandRegister</pValue>\n"
    "    <CommandValue>0</CommandValue>\n"
    "  </Command>\n"
    "\n"
    "  <IntReg Name=\"AcquisitionCommandRegister\" NameSpace=\"Custom\">\n"
    "    <Address>0x124</Address>\n"
    "    <Length>4</Length>\n"
    "    <AccessMode>WO</AccessMode>\n"
    "    <pPort>Device</pPort>\n"
    "    <Sign>Unsigned</Sign>\n"
    "    <Endianess>BigEndian</Endianess>\n"
    "  </IntReg>\n"
    "\n"
    "  <Enumeration Name=\"AcquisitionMode\" NameSpace=\"Standard\">\n"
    "    <DisplayName>Acquisition mode</DisplayName>\n"
    "    <EnumEntry Name=\"Continuous\" NameSpace=\"Standard\">\n"
    "      <Value>1</Value>\n"
    "    </EnumEntry>\n"
    "    <EnumEntry Name=\"SingleFrame\" NameSpace=\"Standard\">\n"
    "      <Value>2</Value>\n"
    "    </EnumEntry>\n"
    "    <EnumEntry Name=\"MultiFrame\" NameSpace=\"Standard\">\n"
    "      <Value>3</Value>\n"
    "    </EnumEntry>\n"
    "    <pValue>AcquisitionModeRegister</pValue>\n"
    "  </Enumeration>\n"
    "\n"
    "  <IntReg Name=\"AcquisitionModeRegister\" NameSpace=\"Custom\">\n"
    "    <Address>0x12c</Address>\n"
    "    <Length>4</Length>\n"
    "    <AccessMode>RW</AccessMode>\n"
    "    <pPort>Device</pPort>\n"
    "    <Sign>Unsigned</Sign>\n"
    "    <Endianess>BigEndian</Endianess>\n"
    "  </IntReg>\n"
    "\n"
    "  <Float Name=\"AcquisitionFrameRate\">\n"
    "    <pValue>AcquisitionFrameRateConverter</pValue>\n"
    "  </Float>\n"
    "\n"
    "  <Converter Name=\"AcquisitionFrameRateConverter\">\n"
    "    <Description>Frame rate, in frames per second.</Description>\n"
    "    <FormulaTo>(1000000 / FROM)</FormulaTo>\n"
    "    <FormulaFrom>(1000000 / TO)</FormulaFrom>\n"
    "    <pValue>AcquisitionFramePeriod</pValue>\n"
    "  </Converter>\n"
    "\n"
    "  <Integer Name=\"AcquisitionFramePeriod\" NameSpace=\"Custom\">\n"
    "    <pValue>AcquisitionFramePeriodRegister</pValue>\n"
    "    <Min>1000</Min>\n"
    "    <Max>10000000</Max>\n"
    "  </Integer>\n"
    "\n"
    "  <IntReg Name=\"AcquisitionFramePeriodRegister\" NameSpace=\"Custom\">\n"
    "    <Address>0x138</Address>\n"
    "    <Length>4</Length>\n"
    "    <AccessMode>RW</AccessMode>\n"
    "    <pPort>Device</pPort>\n"
    "    <Sign>Unsigned</Sign>\n"
    "    <Endianess>BigEndian</Endianess>\n"
    "  </IntReg>\n"
    "\n"
    "  <Enumeration Name=\"TriggerSelector\" NameSpace=\"Standard\">\n"
    "    <EnumEntry Name=\"FrameStart\" NameSpace=\"Standard\">\n"
    "      <Value>0</Value>\n"
    "    </EnumEntry>\n"
    "    <EnumEntry Name=\"AcquisitionStart\" NameSpace=\"Standard\">\n"
    "      <Value>1</Value>\n"
    "    </EnumEntry>\n"
    "    <pValue>TriggerSelectorInteger</pValue>\n"
    "  </Enumeration>\n"
    "\n"
    "  <Integer Name=\"TriggerSelectorInteger\" NameSpace=\"Custom\">\n"
    "    <Value>0</Value>\n"
    "  </Integer>\n"
    "\n"
    "  <Enumeration Name=\"TriggerMode\" NameSpace=\"Standard\">\n"
    "    <DisplayName>Trigger mode</DisplayName>\n"
    "    <EnumEntry Name=\"Off\" NameSpace=\"Standard\">\n"
    "      <Value>0</Value>\n"
    "    </EnumEntry>\n"
    "    <EnumEntry Name=\"On\" NameSpace=\"Standard\">\n"
    "      <Value>1</Value>\n"
    "    </EnumEntry>\n"
    "    <pValue>TriggerModeRegister</pValue>\n"
    "  </Enumeration>\n"
    "\n"
    "  <IntReg Name=\"TriggerModeRegister\" NameSpace=\"Custom\">\n"
    "    <Address>0x300</Address>\n"
    "    <pIndex Offset=\"0x20\">TriggerSelectorInteger</pIndex>\n"
    "    <Length>4</Length>\n"
    "    <AccessMode>RW</AccessMode>\n"
    "    <pPort>Device</pPort>\n"
    "    <Sign>Unsigned</Sign>\n"
    "    <Endianess>BigEndian</Endianess>\n"
    "  </IntReg>\n"
    "\n"
    "  <Enumeration Name=\"TriggerSource\" NameSpace=\"Standard\">\n"
    "    <DisplayName>Trigger source</DisplayName>\n"
    "    <EnumEntry Name=\"Line0\" NameSpace=\"Standard\">\n"
    "      <Value>0</Value>\n"
    "    </EnumEntry>\n"
    "    <EnumEntry Name=\"Software\" NameSpace=\"Standard\">\n"
    "      <Value>1</Value>\n"
    "    </EnumEntry>\n"
    "    <pValue>TriggerSourceRegister</pValue>\n"
    "  </Enumeration>\n"
    "\n"
    "  <IntReg Name=\"TriggerSourceRegister\" NameSpace=\"Custom\">\n"
    "    <Address>0x304</Address>\n"
    "    <pIndex Offset=\"0x20\">TriggerSelectorInteger</pIndex>\n"
    "    <Length>4</Length>\n"
    "    <AccessMode>RW</AccessMode>\n"
    "    <pPort>Device</pPort>\n"
    "    <Sign>Unsigned</Sign>\n"
    "    <Endianess>BigEndian</Endianess>\n"
    "  </IntReg>\n"
    "\n"
    "  <Enumeration Name=\"TriggerActivation\" NameSpace=\"Standard\">\n"
    "    <DisplayName>Trigger activation</DisplayName>\n"
    "    <EnumEntry Name=\"RisingEdge\" NameSpace=\"Standard\">\n"
    "      <Value>0</Value>\n"
    "    </EnumEntry>\n"
    "    <pValue>TriggerActivationRegister</pValue>\n"
    "  </Enumeration>\n"
    "\n"
    "  <IntReg Name=\"TriggerActivationRegister\" NameSpace=\"Custom\">\n"
    "    <Address>0x308</Address>\n"
    "    <pIndex Offset=\"0x20\">TriggerSelectorInteger</pIndex>\n"
    "    <Length>4</Length>\n"
    "    <AccessMode>RW</AccessMode>\n"
    "    <pPort>Device</pPort>\n"
    "    <Sign>Unsigned</Sign>\n"
    "    <Endianess>BigEndian</Endianess>\n"
    "  </IntReg>\n"
    "\n"
    "  <Command Name=\"TriggerSoftware\" NameSpace=\"Standard\">\n"
    "    <Description>Generates an internal trigger. TriggerSource must be set to Software.</Description>\n"
    "    <pValue>TriggerSoftwareCommandRegister</pValue>\n"
    "    <CommandValue>1</CommandValue>\n"
    "  </Command>\n"
    "\n"
    "  <IntReg Name=\"TriggerSoftwareCommandRegister\" NameSpace=\"Custom\">\n"
    "    <Address>0x30c</Address>\n"
    "    <Length>4</Length>\n"
    "    <AccessMode>WO</AccessMode>\n"
    "    <pPort>Device</pPort>\n"
    "    <Sign>Unsigned</Sign>\n"
    "    <Endianess>BigEndian</Endianess>\n"
    "  </IntReg>\n"
    "\n"
    "  <Float Name=\"ExposureTimeAbs\" NameSpace=\"Standard\">\n"
    "    <Description>Exposure duration, in microseconds.</Description>\n"
    "    <pValue>ExposureTimeAbsConverter</pValue>\n"
    "    <Min>10.0</Min>\n"
    "    <Max>10000000.0</Max>\n"
    "  </Float>\n"
    "\n"
    "  <Converter Name=\"ExposureTimeAbsConverter\" NameSpace=\"Custom\">\n"
    "    <FormulaTo>FROM</FormulaTo>\n"
    "    <FormulaFrom>TO</FormulaFrom>\n"
    "    <pValue>ExposureTimeAbsRegister</pValue>\n"
    "  </Converter>\n"
    "\n"
    "  <IntReg Name=\"ExposureTimeAbsRegister\" NameSpace=\"Custom\">\n"
    "    <Address>0x120</Address>\n"
    "    <Length>4</Length>\n"
    "    <AccessMode>RW</AccessMode>\n"
    "    <pPort>Device</pPort>\n"
    "    <Sign>Unsigned</Sign>\n"
    "    <Endianess>BigEndian</Endianess>\n"
    "  </IntReg>\n"
    "\n"
    "  <!-- Analog control -->\n"
    "\n"
    "  <Category Name=\"AnalogControl\" NameSpace=\"Custom\">\n"
    "    <pFeature>GainRaw</pFeature>\n"
    "    <pFeature>GainAuto</pFeature>\n"
    "  </Category>\n"
    "\n"
    "  <Integer Name=\"GainRaw\" NameSpace=\"Standard\">\n"
    "    <Description>Raw gain.</Description>\n"
    "    <pValue>GainRawRegister</pValue>\n"
    "    <Min>0</Min>\n"
    "    <Max>10</Max>\n"
    "  </Integer>\n"
    "\n"
    "  <IntReg Name=\"GainRawRegister\" NameSpace=\"Custom\">\n"
    "    <Address>0x110</Address>\n"
    "    <Length>4</Length>\n"
    "    <AccessMode>RW</AccessMode>\n"
    "    <pPort>Device</pPort>\n"
    "    <Sign>Unsigned</Sign>\n"
    "    <Endianess>BigEndian</Endianess>\n"
    "  </IntReg>\n"
    "\n"
    "  <Enumeration Name=\"GainAuto\" NameSpace=\"Standard\">\n"
    "    <Description>Automatic gain mode.</Description>\n"
    "    <EnumEntry Name=\"Off\" NameSpace=\"Standard\">\n"
    "      <Value>1</Value>\n"
    "    </EnumEntry>\n"
    "    <EnumEntry Name=\"Once\" NameSpace=\"Standard\">\n"
    "      <Value>3</Value>\n"
    "    </EnumEntry>\n"
    "    <EnumEntry Name=\"Continuous\" NameSpace=\"Standard\">\n"
    "      <Value>2</Value>\n"
    "    </EnumEntry>\n"
    "    <pValue>GainAutoRegister</pValue>\n"
    "  </Enumeration>\n"
    "\n"
    "  <IntReg Name=\"GainAutoRegister\" NameSpace=\"Custom\">\n"
    "    <Address>0x114</Address>\n"
    "    <Length>4</Length>\n"
    "    <AccessMode>RW</AccessMode>\n"
    "    <pPort>Device</pPort>\n"
    "    <Sign>Unsigned</Sign>\n"
    "    <Endianess>BigEndian</Endianess>\n"
    "  </IntReg>\n"
    "\n"
    "  <!-- Transport layer control -->\n"
    "\n"
    "  <Category Name=\"TransportLayerControl\" NameSpace=\"Standard\">\n"
    "    <pFeature>PayloadSize</pFeature>\n"
    "  </Category>\n"
    "\n"
    "  <IntSwissKnife Name=\"PayloadSize\" NameSpace=\"Standard\">\n"
    "    <pVariable Name=\"WIDTH\">Width</pVariable>\n"
    "    <pVariable Name=\"HEIGHT\">Height</pVariable>\n"
    "    <pVariable Name=\"PIXELFORMAT\">PixelFormat</pVariable>\n"
    "    <Formula>WIDTH * HEIGHT * ((PIXELFORMAT>>16)&amp;0xFF) / 8</Formula>\n"
    "  </IntSwissKnife>\n"
    "\n"
    "  <Integer Name=\"TLParamsLocked\">\n"
    "    <ToolTip> Indicates whether a live grab is under way</ToolTip>\n"
    "    <Visibility>Invisible</Visibility>\n"
    "    <Value>0</Value>\n"
    "    <Min>0</Min>\n"
    "    <Max>1</Max>\n"
    "  </Integer>\n"
    "\n"
    "  <!-- Debug -->\n"
    "\n"
    "  <Category Name=\"Debug\" NameSpace=\"Standard\">\n"
    "    <pFeature>TestRegister</pFeature>\n"
    "  </Category>\n"
    "\n"
    "  <Boolean Name=\"TestBoolean\" NameSpace=\"Custom\">\n"
    "    <pValue>TestRegister</pValue>\n"
    "    <OnValue>321</OnValue>\n"
    "    <OffValue>123</OffValue>\n"
    "  </Boolean>\n"
    "\n"
    "  <IntReg Name=\"TestRegister\" NameSpace=\"Custom\">\n"
    "    <Address>0x1f0</Address>\n"
    "    <Length>4</Length>\n"
    "    <AccessMode>RW</AccessMode>\n"
    "    <pPort>Device</pPort>\n"
    "    <Sign>Unsigned</Sign>\n"
    "    <Endianess>BigEndian</Endianess>\n"
    "  </IntReg>\n"
    "\n"
    "  <StructReg Comment=\"TestStructReg\">\n"
    "    <Address>0x1f0</Address>\n"
    "    <Length>4</Length>\n"
    "    <AccessMode>RW</AccessMode>\n"
    "    <pPort>Device</pPort>\n"
    "    <Endianess>BigEndian</Endianess>\n"
    "\n"
    "    <StructEntry Name=\"StructEntry_16_31\" NameSpace=\"Custom\">\n"
    "      <LSB>31</LSB>\n"
    "      <MSB>16</MSB>\n"
    "      <Sign>Signed</Sign>\n"
    "    </StructEntry>\n"
    "\n"
    "    <StructEntry Name=\"StructEntry_0_15\" NameSpace=\"Custom\">\n"
    "      <LSB>15</LSB>\n"
    "      <MSB>0</MSB>\n"
    "      <Sign>Unsigned</Sign>\n"
    "    </StructEntry>\n"
    "\n"
    "    <StructEntry Name=\"StructEntry_15\" NameSpace=\"Custom\">\n"
    "      <Bit>15</Bit>\n"
    "    </StructEntry>\n"
    "\n"
    "    <StructEntry Name=\"StructEntry_0_31\" NameSpace=\"Custom\">\n"
    "      <LSB>31</LSB>\n"
    "      <MSB>0</MSB>\n"
    "      <Sign>Unsigned</Sign>\n"
    "    </StructEntry>\n"
    "  </StructReg>\n"
    "\n"
    "  <StringReg Name=\"TestStringReg\" NameSpace=\"Custom\">\n"
    "    <Address>0x200</Address>\n"
    "    <Length>32</Length>\n"
    "    <AccessMode>RW</AccessMode>\n"
    "    <pPort>Device</pPort>\n"
    "  </StringReg>\n"
    "\n"
    "  <Category Name=\"TestControl\" NameSpace=\"Custom\">\n"
    "    <pFeature>StepInteger</pFeature>\n"
    "    <pFeature>ShadowInteger</pFeature>\n"
    "    <pFeature>LockSwitch</pFeature>\n"
    "    <pFeature>GuardedInteger</pFeature>\n"
    "    <pFeature>AvailSwitch</pFeature>\n"
    "    <pFeature>ModeSelect</pFeature>\n"
    "    <pFeature>OptionalFloat</pFeature>\n"
    "    <pFeature>ChannelSelector</pFeature>\n"
    "    <pFeature>ChannelGain</pFeature>\n"
    "    <pFeature>Label</pFeature>\n"
    "    <pFeature>RawBlock</pFeature>\n"
    "    <pFeature>ReadOnlyInteger</pFeature>\n"
    "  </Category>\n"
    "  <Integer Name=\"StepInteger\" NameSpace=\"Custom\">\n"
    "    <DisplayName>Step Integer</DisplayName>\n"
    "    <pValue>StepIntegerReg</pValue>\n"
    "    <Min>0</Min>\n"
    "    <Max>100</Max>\n"
    "    <Inc>4</Inc>\n"
    "  </Integer>\n"
    "  <IntReg Name=\"StepIntegerReg\" NameSpace=\"Custom\">\n"
    "    <Address>0x4000</Address>\n"
    "    <Length>4</Length>\n"
    "    <AccessMode>RW</AccessMode>\n"
    "    <pPort>Device</pPort>\n"
    "    <Sign>Unsigned</Sign>\n"
    "    <Endianess>BigEndian</Endianess>\n"
    "  </IntReg>\n"
    "  <Integer Name=\"ShadowInteger\" NameSpace=\"Custom\">\n"
    "    <pValue>ShadowReg</pValue>\n"
    "  </Integer>\n"
    "  <IntReg Name=\"ShadowReg\" NameSpace=\"Custom\">\n"
    "    <Address>0x4000</Address>\n"
    "    <Length>4</Length>\n"
    "    <AccessMode>RO</AccessMode>\n"
    "    <pPort>Device</pPort>\n"
    "    <Sign>Unsigned</Sign>\n"
    "    <Endianess>BigEndian</Endianess>\n"
    "  </IntReg>\n"
    "  <Boolean Name=\"LockSwitch\" NameSpace=\"Custom\">\n"
    "    <pValue>LockSwitchReg</pValue>\n"
    "    <OnValue>1</OnValue>\n"
    "    <OffValue>0</OffValue>\n"
    "  </Boolean>\n"
    "  <IntReg Name=\"LockSwitchReg\" NameSpace=\"Custom\">\n"
    "    <Address>0x4008</Address>\n"
    "    <Length>4</Length>\n"
    "    <AccessMode>RW</AccessMode>\n"
    "    <pPort>Device</pPort>\n"
    "    <Sign>Unsigned</Sign>\n"
    "    <Endianess>BigEndian</Endianess>\n"
    "  </IntReg>\n"
    "  <Integer Name=\"GuardedInteger\" NameSpace=\"Custom\">\n"
    "    <pIsLocked>LockSwitchReg</pIsLocked>\n"
    "    <pValue>GuardedReg</pValue>\n"
    "    <Min>0</Min>\n"
    "    <Max>1000</Max>\n"
    "  </Integer>\n"
    "  <IntReg Name=\"GuardedReg\" NameSpace=\"Custom\">\n"
    "    <Address>0x400c</Address>\n"
    "    <Length>4</Length>\n"
    "    <AccessMode>RW</AccessMode>\n"
    "    <pPort>Device</pPort>\n"
    "    <Sign>Unsigned</Sign>\n"
    "    <Endianess>BigEndian</Endianess>\n"
    "  </IntReg>\n"
    "  <Boolean Name=\"AvailSwitch\" NameSpace=\"Custom\">\n"
    "    <pValue>AvailSwitchReg</pValue>\n"
    "    <OnValue>1</OnValue>\n"
    "    <OffValue>0</OffValue>\n"
    "  </Boolean>\n"
    "  <IntReg Name=\"AvailSwitchReg\" NameSpace=\"Custom\">\n"
    "    <Address>0x4010</Address>\n"
    "    <Length>4</Length>\n"
    "    <AccessMode>RW</AccessMode>\n"
    "    <pPort>Device</pPort>\n"
    "    <Sign>Unsigned</Sign>\n"
    "    <Endianess>BigEndian</Endianess>\n"
    "  </IntReg>\n"
    "  <IntSwissKnife Name=\"ExtendedAvailable\" NameSpace=\"Custom\">\n"
    "    <pVariable Name=\"A\">AvailSwitchReg</pVariable>\n"
    "    <Formula>A = 1</Formula>\n"
    "  </IntSwissKnife>\n"
    "  <Enumeration Name=\"ModeSelect\" NameSpace=\"Custom\">\n"
    "    <EnumEntry Name=\"Basic\" NameSpace=\"Custom\">\n"
    "      <Value>0</Value>\n"
    "    </EnumEntry>\n"
    "    <EnumEntry Name=\"Extended\" NameSpace=\"Custom\">\n"
    "      <pIsAvailable>ExtendedAvailable</pIsAvailable>\n"
    "      <Value>1</Value>\n"
    "    </EnumEntry>\n"
    "    <EnumEntry Name=\"Legacy\" NameSpace=\"Custom\">\n"
    "      <Value>2</Value>\n"
    "    </EnumEntry>\n"
    "    <pValue>ModeSelectReg</pValue>\n"
    "  </Enumeration>\n"
    "  <IntReg Name=\"ModeSelectReg\" NameSpace=\"Custom\">\n"
    "    <Address>0x4014</Address>\n"
    "    <Length>4</Length>\n"
    "    <AccessMode>RW</AccessMode>\n"
    "    <pPort>Device</pPort>\n"
    "    <Sign>Unsigned</Sign>\n"
    "    <Endianess>BigEndian</Endianess>\n"
    "  </IntReg>\n"
    "  <Float Name=\"OptionalFloat\" NameSpace=\"Custom\">\n"
    "    <pIsAvailable>ExtendedAvailable</pIsAvailable>\n"
    "    <pValue>OptionalFloatReg</pValue>\n"
    "    <Min>0</Min>\n"
    "    <Max>10</Max>\n"
    "    <Inc>0.5</Inc>\n"
    "  </Float>\n"
    "  <FloatReg Name=\"OptionalFloatReg\" NameSpace=\"Custom\">\n"
    "    <Address>0x4018</Address>\n"
    "    <Length>4</Length>\n"
    "    <AccessMode>RW</AccessMode>\n"
    "    <pPort>Device</pPort>\n"
    "    <Endianess>BigEndian</Endianess>\n"
    "  </FloatReg>\n"
    "  <Enumeration Name=\"ChannelSelector\" NameSpace=\"Custom\">\n"
    "    <pSelected>ChannelGain</pSelected>\n"
    "    <EnumEntry Name=\"Channel0\" NameSpace=\"Custom\">\n"
    "      <Value>0</Value>\n"
    "    </EnumEntry>\n"
    "    <EnumEntry Name=\"Channel1\" NameSpace=\"Custom\">\n"
    "      <Value>1</Value>\n"
    "    </EnumEntry>\n"
    "    <EnumEntry Name=\"Channel2\" NameSpace=\"Custom\">\n"
    "      <Value>2</Value>\n"
    "    </EnumEntry>\n"
    "    <pValue>ChannelSelectorReg</pValue>\n"
    "  </Enumeration>\n"
    "  <IntReg Name=\"ChannelSelectorReg\" NameSpace=\"Custom\">\n"
    "    <Address>0x4020</Address>\n"
    "    <Length>4</Length>\n"
    "    <AccessMode>RW</AccessMode>\n"
    "    <pPort>Device</pPort>\n"
    "    <Sign>Unsigned</Sign>\n"
    "    <Endianess>BigEndian</Endianess>\n"
    "  </IntReg>\n"
    "  <Integer Name=\"ChannelGain\" NameSpace=\"Custom\">\n"
    "    <pValue>ChannelGainReg</pValue>\n"
    "    <Min>0</Min>\n"
    "    <Max>1000</Max>\n"
    "  </Integer>\n"
    "  <IntReg Name=\"ChannelGainReg\" NameSpace=\"Custom\">\n"
    "    <Address>0x4040</Address>\n"
    "    <pIndex Offset=\"4\">ChannelSelectorReg</pIndex>\n"
    "    <Length>4</Length>\n"
    "    <AccessMode>RW</AccessMode>\n"
    "    <pPort>Device</pPort>\n"
    "    <Sign>Unsigned</Sign>\n"
    "    <Endianess>BigEndian</Endianess>\n"
    "  </IntReg>\n"
    "  <StringReg Name=\"Label\" NameSpace=\"Custom\">\n"
    "    <Address>0x4100</Address>\n"
    "    <Length>16</Length>\n"
    "    <AccessMode>RW</AccessMode>\n"
    "    <pPort>Device</pPort>\n"
    "  </StringReg>\n"
    "  <Register Name=\"RawBlock\" NameSpace=\"Custom\">\n"
    "    <Address>0x4200</Address>\n"
    "    <Length>8</Length>\n"
    "    <AccessMode>RW</AccessMode>\n"
    "    <pPort>Device</pPort>\n"
    "  </Register>\n"
    "  <Integer Name=\"ReadOnlyInteger\" NameSpace=\"Custom\">\n"
    "    <pValue>ReadOnlyReg</pValue>\n"
    "  </Integer>\n"
    "  <IntReg Name=\"ReadOnlyReg\" NameSpace=\"Custom\">\n"
    "    <Address>0x4300</Address>\n"
    "    <Length>4</Length>\n"
    "    <AccessMode>RO</AccessMode>\n"
    "    <pPort>Device</pPort>\n"
    "    <Sign>Unsigned</Sign>\n"
    "    <Endianess>BigEndian</Endianess>\n"
    "  </IntReg>\n"
    "\n"
    "  <!-- Port -->\n"
    "\n"
    "  <Port Name=\"Device\" NameSpace=\"Standard\">\n"
    "  </Port>\n"
    "\n"
    "</RegisterDescription>\n"
    "\n"
    "\n";

const char* const kCameraId = "ARV:Fake_1";

class CountingObserver : public IFeatureObserver {
public:
    void FeatureChanged(const FeaturePtr& feature) override
    {
        char name[128] = {};
        unsigned int length = sizeof name - 1;
        const int result = feature->GetName(name, length);
        std::lock_guard<std::mutex> lock(m_Mutex);
        ++m_Counts[result == PkoErrorSuccess ? std::string(name, length) : std::string("?")];
        if (std::this_thread::get_id() == m_TestThread)
            m_OnTestThread = true;
    }
    int CountFor(const std::string& name) const
    {
        std::lock_guard<std::mutex> lock(m_Mutex);
        const auto found = m_Counts.find(name);
        return found == m_Counts.end() ? 0 : found->second;
    }
    bool CalledOnTestThread() const
    {
        std::lock_guard<std::mutex> lock(m_Mutex);
        return m_OnTestThread;
    }
    void Clear()
    {
        std::lock_guard<std::mutex> lock(m_Mutex);
        m_Counts.clear();
    }

private:
    mutable std::mutex m_Mutex;
    std::map<std::string, int> m_Counts;
    const std::thread::id m_TestThread = std::this_thread::get_id();
    bool m_OnTestThread = false;
};

std::string NameOf(const FeaturePtr& feature)
{
    unsigned int length = 0;
    if (feature->GetName(nullptr, length) != PkoErrorSuccess)
        return std::string();
    std::string name(length, '\0');
    if (feature->GetName(name.data(), length) != PkoErrorSuccess)
        return std::string();
    return name;
}

std::string TextOf(const FeaturePtr& feature)
{
    unsigned int length = 0;
    if (feature->GetValue(nullptr, length) != PkoErrorSuccess)
        return std::string("<unreadable>");
    std::string text(length, '\0');
    if (length > 0 && feature->GetValue(text.data(), length) != PkoErrorSuccess)
        return std::string("<unreadable>");
    return text;
}

// Reads the changed feature back from inside the callback, as the tab's
// observer does; a lock held around the callback would deadlock here.
class ReadingObserver : public IFeatureObserver {
public:
    void FeatureChanged(const FeaturePtr& feature) override
    {
        long long value = -1;
        bool writable = false;
        const int result = feature->GetValue(value) == PkoErrorSuccess ? feature->IsWritable(writable) : -1;
        std::lock_guard<std::mutex> lock(m_Mutex);
        m_Seen.push_back(result == PkoErrorSuccess ? value : -1);
    }
    std::vector<long long> Seen() const
    {
        std::lock_guard<std::mutex> lock(m_Mutex);
        return m_Seen;
    }

private:
    mutable std::mutex m_Mutex;
    std::vector<long long> m_Seen;
};

long long IntegerOf(const FeaturePtr& feature)
{
    long long value = -12345;
    feature->GetValue(value);
    return value;
}

}  // namespace

class tst_ArvBackend : public QObject {
    Q_OBJECT

private:
    QTemporaryDir m_Dir;
    CameraPtr m_Camera;

    FeaturePtr Feature(const char* name) { return TestSupport::FeatureNamed(m_Camera, name); }

private slots:
    void initTestCase()
    {
        QVERIFY(m_Dir.isValid());
        const QString path = m_Dir.filePath(QStringLiteral("backend-test.xml"));
        QFile file(path);
        QVERIFY(file.open(QIODevice::WriteOnly));
        QVERIFY(file.write(kNodeMap) > 0);
        file.close();
        arv_set_fake_camera_genicam_filename(QFile::encodeName(path).constData());
        arv_enable_interface("Fake");
        QCOMPARE(PkoSystem::GetInstance().GetCameraByID(kCameraId, m_Camera), int(PkoErrorSuccess));
    }

    void init()
    {
        // Every test starts from a freshly opened camera (registers at 0).
        QCOMPARE(m_Camera->Open(), int(PkoErrorSuccess));
    }

    void cleanup() { QCOMPARE(m_Camera->Close(), int(PkoErrorSuccess)); }

    void cleanupTestCase() { m_Camera = CameraPtr(); }

    void shouldListTheCameraAfterTheSimulatedModels()
    {
        std::vector<CameraPtr> cameras;
        QCOMPARE(PkoSystem::GetInstance().GetCameras(cameras), int(PkoErrorSuccess));
        std::vector<std::string> ids;
        for (const CameraPtr& camera : cameras) {
            std::string id;
            QCOMPARE(camera->GetID(id), int(PkoErrorSuccess));
            ids.push_back(id);
        }
        QVERIFY(ids.size() >= 6);
        QCOMPARE(ids.front(), std::string("SIM-LINE-ROUTING"));
        const auto fake = std::find(ids.begin(), ids.end(), std::string(kCameraId));
        QVERIFY(fake != ids.end());
        for (auto it = ids.begin(); it != fake; ++it)
            QVERIFY2(it->rfind("SIM-", 0) == 0, it->c_str());
        // One object per id for the whole process.
        QVERIFY(cameras[fake - ids.begin()] == m_Camera);
        CameraPtr missing;
        QCOMPARE(PkoSystem::GetInstance().GetCameraByID("ARV:No-Such-Camera-4711", missing), int(PkoErrorNotFound));
        QVERIFY(!missing);
    }

    void shouldWalkTheNodeMapInCategoryOrderWithTypes()
    {
        std::vector<FeaturePtr> features;
        QCOMPARE(m_Camera->GetFeatures(features), int(PkoErrorSuccess));
        std::vector<std::string> names;
        for (const FeaturePtr& feature : features)
            names.push_back(NameOf(feature));
        QCOMPARE(names.front(), std::string("DeviceVendorName"));
        const auto at = [&](const char* name) { return std::find(names.begin(), names.end(), name) - names.begin(); };
        QVERIFY(at("DeviceVersion") < at("SensorHeight"));
        QVERIFY(at("PixelFormat") < at("AcquisitionMode"));
        QVERIFY(at("TestRegister") < at("StepInteger"));
        QVERIFY(at("StepInteger") < at("ReadOnlyInteger"));
        QCOMPARE(names.back(), std::string("ReadOnlyInteger"));
        // Not in any category: not a feature of the camera.
        QCOMPARE(at("TestBoolean"), static_cast<long>(names.size()));

        const std::vector<std::pair<const char*, PkoFeatureDataType>> expected = {
            {"Width", PkoFeatureDataInt},          {"ExposureTimeAbs", PkoFeatureDataFloat},
            {"PixelFormat", PkoFeatureDataEnum},   {"DeviceVendorName", PkoFeatureDataString},
            {"LockSwitch", PkoFeatureDataBool},    {"AcquisitionStart", PkoFeatureDataCommand},
            {"RawBlock", PkoFeatureDataRaw},       {"Label", PkoFeatureDataString},
            {"OptionalFloat", PkoFeatureDataFloat}};
        for (const auto& [name, type] : expected) {
            PkoFeatureDataType dataType = PkoFeatureDataUnknown;
            QCOMPARE(Feature(name)->GetDataType(dataType), int(PkoErrorSuccess));
            QVERIFY2(dataType == type, name);
        }

        char text[64] = {};
        unsigned int length = sizeof text;
        QCOMPARE(Feature("StepInteger")->GetDisplayName(text, length), int(PkoErrorSuccess));
        QCOMPARE(std::string(text, length), std::string("Step Integer"));
        length = sizeof text;
        QCOMPARE(Feature("GuardedInteger")->GetDisplayName(text, length), int(PkoErrorSuccess));
        QCOMPARE(std::string(text, length), std::string("GuardedInteger"));
        length = sizeof text;
        QCOMPARE(Feature("StepInteger")->GetCategory(text, length), int(PkoErrorSuccess));
        QCOMPARE(std::string(text, length), std::string("/TestControl"));
        length = 3;
        QCOMPARE(Feature("StepInteger")->GetCategory(text, length), int(PkoErrorMoreData));
        FeaturePtr none;
        QCOMPARE(m_Camera->GetFeatureByName("stepinteger", none), int(PkoErrorNotFound));
    }

    void shouldRefuseIntegersOffTheIncrementOrOutOfRange()
    {
        const FeaturePtr step = Feature("StepInteger");
        long long minimum = -1, maximum = -1, increment = -1;
        QCOMPARE(step->GetRange(minimum, maximum), int(PkoErrorSuccess));
        QCOMPARE(step->GetIncrement(increment), int(PkoErrorSuccess));
        QCOMPARE(minimum, 0LL);
        QCOMPARE(maximum, 100LL);
        QCOMPARE(increment, 4LL);

        QCOMPARE(step->SetValue(8LL), int(PkoErrorSuccess));
        QCOMPARE(IntegerOf(step), 8LL);
        QCOMPARE(step->SetValue(6LL), int(PkoErrorInvalidValue));
        QCOMPARE(step->SetValue(104LL), int(PkoErrorInvalidValue));
        QCOMPARE(step->SetValue(-4LL), int(PkoErrorInvalidValue));
        QCOMPARE(IntegerOf(step), 8LL);
        QCOMPARE(step->SetValue(100LL), int(PkoErrorSuccess));
        QCOMPARE(IntegerOf(step), 100LL);
    }

    void shouldRefuseFloatsOffTheIncrementAndReportNoIncrementAsZero()
    {
        double increment = -1.0;
        QCOMPARE(Feature("ExposureTimeAbs")->GetIncrement(increment), int(PkoErrorSuccess));
        QCOMPARE(increment, 0.0);

        QCOMPARE(Feature("AvailSwitch")->SetValue(true), int(PkoErrorSuccess));
        const FeaturePtr optional = Feature("OptionalFloat");
        QCOMPARE(optional->GetIncrement(increment), int(PkoErrorSuccess));
        QCOMPARE(increment, 0.5);
        QCOMPARE(optional->SetValue(0.75), int(PkoErrorInvalidValue));
        QCOMPARE(optional->SetValue(10.5), int(PkoErrorInvalidValue));
        QCOMPARE(optional->SetValue(2.5), int(PkoErrorSuccess));
        double value = 0.0;
        QCOMPARE(optional->GetValue(value), int(PkoErrorSuccess));
        QCOMPARE(value, 2.5);
    }

    void shouldAnswerMismatchedFormsWithWrongType()
    {
        const FeaturePtr width = Feature("Width");
        double asDouble = 0.0;
        bool asBool = false;
        unsigned int length = 0;
        const char* entries[4] = {};
        unsigned int count = 4;
        QCOMPARE(width->GetValue(asDouble), int(PkoErrorWrongType));
        QCOMPARE(width->GetValue(asBool), int(PkoErrorWrongType));
        QCOMPARE(width->GetValue(nullptr, length), int(PkoErrorWrongType));
        QCOMPARE(width->SetValue("64"), int(PkoErrorWrongType));
        QCOMPARE(width->SetValue(1.0), int(PkoErrorWrongType));
        QCOMPARE(width->RunCommand(), int(PkoErrorWrongType));
        QCOMPARE(width->GetValues(entries, count), int(PkoErrorWrongType));
        long long asInteger = 0;
        QCOMPARE(Feature("PixelFormat")->GetValue(asInteger), int(PkoErrorWrongType));
        QCOMPARE(Feature("RawBlock")->GetValue(asInteger), int(PkoErrorWrongType));
        QCOMPARE(Feature("RawBlock")->SetValue("x"), int(PkoErrorWrongType));
        QCOMPARE(Feature("AcquisitionStart")->GetValue(asInteger), int(PkoErrorWrongType));
        QCOMPARE(Feature("PixelFormat")->SetValue(static_cast<const char*>(nullptr)), int(PkoErrorBadParameter));
    }

    void shouldRefuseWritesWhileLockedWithInvalidAccess()
    {
        const FeaturePtr guarded = Feature("GuardedInteger");
        bool writable = false;
        QCOMPARE(guarded->IsWritable(writable), int(PkoErrorSuccess));
        QVERIFY(writable);
        QCOMPARE(guarded->SetValue(5LL), int(PkoErrorSuccess));

        QCOMPARE(Feature("LockSwitch")->SetValue(true), int(PkoErrorSuccess));
        QCOMPARE(guarded->IsWritable(writable), int(PkoErrorSuccess));
        QVERIFY(!writable);
        QCOMPARE(guarded->SetValue(7LL), int(PkoErrorInvalidAccess));
        QCOMPARE(IntegerOf(guarded), 5LL);

        QCOMPARE(Feature("LockSwitch")->SetValue(false), int(PkoErrorSuccess));
        QCOMPARE(guarded->SetValue(7LL), int(PkoErrorSuccess));
        QCOMPARE(IntegerOf(guarded), 7LL);
    }

    void shouldRefuseWritesToReadOnlyFeatures()
    {
        for (const char* name : {"ReadOnlyInteger", "SensorWidth"}) {
            const FeaturePtr feature = Feature(name);
            bool writable = true;
            QCOMPARE(feature->IsWritable(writable), int(PkoErrorSuccess));
            QVERIFY2(!writable, name);
            QCOMPARE(feature->SetValue(1LL), int(PkoErrorInvalidAccess));
        }
        bool writable = false;
        QCOMPARE(Feature("AcquisitionStop")->IsWritable(writable), int(PkoErrorSuccess));
        QVERIFY(writable);  // write-only counts as writable
    }

    void shouldListEntriesInDocumentOrderWithAvailability()
    {
        const FeaturePtr mode = Feature("ModeSelect");
        unsigned int count = 0;
        QCOMPARE(mode->GetValues(nullptr, count), int(PkoErrorSuccess));
        QCOMPARE(count, 3u);
        const char* entries[3] = {};
        unsigned int small = 2;
        QCOMPARE(mode->GetValues(entries, small), int(PkoErrorMoreData));
        QCOMPARE(mode->GetValues(entries, count), int(PkoErrorSuccess));
        QCOMPARE(std::string(entries[0]), std::string("Basic"));
        QCOMPARE(std::string(entries[1]), std::string("Extended"));
        QCOMPARE(std::string(entries[2]), std::string("Legacy"));

        bool available = true;
        QCOMPARE(mode->IsValueAvailable("Extended", available), int(PkoErrorSuccess));
        QVERIFY(!available);
        QCOMPARE(mode->SetValue("Extended"), int(PkoErrorInvalidValue));
        QCOMPARE(mode->SetValue("Bogus"), int(PkoErrorInvalidValue));
        QCOMPARE(mode->IsValueAvailable("Bogus", available), int(PkoErrorNotFound));
        QCOMPARE(mode->SetValue("Legacy"), int(PkoErrorSuccess));
        QCOMPARE(TextOf(mode), std::string("Legacy"));

        // The feature itself follows pIsAvailable too.
        bool writable = true;
        QCOMPARE(Feature("OptionalFloat")->IsWritable(writable), int(PkoErrorSuccess));
        QVERIFY(!writable);
        QCOMPARE(Feature("OptionalFloat")->SetValue(1.0), int(PkoErrorInvalidAccess));

        QCOMPARE(Feature("AvailSwitch")->SetValue(true), int(PkoErrorSuccess));
        QCOMPARE(mode->IsValueAvailable("Extended", available), int(PkoErrorSuccess));
        QVERIFY(available);
        QCOMPARE(mode->SetValue("Extended"), int(PkoErrorSuccess));
        QCOMPARE(TextOf(mode), std::string("Extended"));
    }

    void shouldKeepOneValuePerSelectorEntry()
    {
        const FeaturePtr selector = Feature("ChannelSelector");
        const FeaturePtr gain = Feature("ChannelGain");
        QCOMPARE(selector->SetValue("Channel0"), int(PkoErrorSuccess));
        QCOMPARE(gain->SetValue(10LL), int(PkoErrorSuccess));
        QCOMPARE(selector->SetValue("Channel2"), int(PkoErrorSuccess));
        QCOMPARE(IntegerOf(gain), 0LL);
        QCOMPARE(gain->SetValue(30LL), int(PkoErrorSuccess));
        QCOMPARE(selector->SetValue("Channel0"), int(PkoErrorSuccess));
        QCOMPARE(IntegerOf(gain), 10LL);
        QCOMPARE(selector->SetValue("Channel2"), int(PkoErrorSuccess));
        QCOMPARE(IntegerOf(gain), 30LL);
    }

    void shouldReadAndWriteStrings()
    {
        const FeaturePtr label = Feature("Label");
        QCOMPARE(label->SetValue("camera-7"), int(PkoErrorSuccess));
        QCOMPARE(TextOf(label), std::string("camera-7"));
        QCOMPARE(label->SetValue("this text is far too long for sixteen bytes"), int(PkoErrorInvalidValue));
        QCOMPARE(TextOf(label), std::string("camera-7"));
    }

    void shouldNotifyTheWrittenAndEveryDependentFeatureFromAnotherThread()
    {
        auto* raw = new CountingObserver;
        const IFeatureObserverPtr observer(raw);
        for (const char* name : {"AvailSwitch", "ModeSelect", "OptionalFloat", "ChannelGain", "StepInteger"})
            QCOMPARE(Feature(name)->RegisterObserver(observer), int(PkoErrorSuccess));
        QCOMPARE(Feature("StepInteger")->RegisterObserver(observer), int(PkoErrorAlreadyRegistered));

        QCOMPARE(Feature("AvailSwitch")->SetValue(true), int(PkoErrorSuccess));
        QTRY_COMPARE_WITH_TIMEOUT(raw->CountFor("AvailSwitch"), 1, TestSupport::Scaled(2000));
        QTRY_COMPARE_WITH_TIMEOUT(raw->CountFor("ModeSelect"), 1, TestSupport::Scaled(2000));
        QTRY_COMPARE_WITH_TIMEOUT(raw->CountFor("OptionalFloat"), 1, TestSupport::Scaled(2000));

        QCOMPARE(Feature("ChannelSelector")->SetValue("Channel1"), int(PkoErrorSuccess));
        QTRY_COMPARE_WITH_TIMEOUT(raw->CountFor("ChannelGain"), 1, TestSupport::Scaled(2000));

        // Unrelated features stay quiet, also through the following polls.
        QTest::qWait(500);
        QCOMPARE(raw->CountFor("StepInteger"), 0);
        QCOMPARE(raw->CountFor("AvailSwitch"), 1);
        QCOMPARE(raw->CountFor("ModeSelect"), 1);
        QVERIFY(!raw->CalledOnTestThread());

        // A refused write changes nothing and tells nobody.
        QCOMPARE(Feature("StepInteger")->SetValue(3LL), int(PkoErrorInvalidValue));
        QCOMPARE(Feature("StepInteger")->UnregisterObserver(observer), int(PkoErrorSuccess));
        QCOMPARE(Feature("StepInteger")->UnregisterObserver(observer), int(PkoErrorNotRegistered));
        QCOMPARE(Feature("StepInteger")->SetValue(4LL), int(PkoErrorSuccess));
        QTest::qWait(400);
        QCOMPARE(raw->CountFor("StepInteger"), 0);
    }

    void shouldLetObserversReadTheFeatureInsideTheCallback()
    {
        auto* raw = new ReadingObserver;
        const IFeatureObserverPtr observer(raw);
        const FeaturePtr step = Feature("StepInteger");
        QCOMPARE(step->RegisterObserver(observer), int(PkoErrorSuccess));
        QCOMPARE(step->SetValue(20LL), int(PkoErrorSuccess));
        QCOMPARE(step->SetValue(24LL), int(PkoErrorSuccess));
        QTRY_COMPARE_WITH_TIMEOUT(raw->Seen().size(), std::size_t(2), TestSupport::Scaled(2000));
        QCOMPARE(raw->Seen().back(), 24LL);
        QCOMPARE(step->UnregisterObserver(observer), int(PkoErrorSuccess));
    }

    void shouldNotifyChangesTheNodeMapCannotTellByPolling()
    {
        auto* raw = new CountingObserver;
        const IFeatureObserverPtr observer(raw);
        const FeaturePtr shadow = Feature("ShadowInteger");
        QCOMPARE(shadow->RegisterObserver(observer), int(PkoErrorSuccess));
        QTest::qWait(450);  // let the poller see the starting value
        QCOMPARE(raw->CountFor("ShadowInteger"), 0);

        QElapsedTimer timer;
        timer.start();
        QCOMPARE(Feature("StepInteger")->SetValue(12LL), int(PkoErrorSuccess));
        QTRY_COMPARE_WITH_TIMEOUT(raw->CountFor("ShadowInteger"), 1, TestSupport::Scaled(2000));
        QCOMPARE(IntegerOf(shadow), 12LL);
        // Once per change, not once per poll.
        QTest::qWait(600);
        QCOMPARE(raw->CountFor("ShadowInteger"), 1);
        QCOMPARE(shadow->UnregisterObserver(observer), int(PkoErrorSuccess));
    }

    void shouldFailOldFeaturesAfterCloseAndServeNewOnesAfterReopen()
    {
        const FeaturePtr old = Feature("StepInteger");
        QCOMPARE(m_Camera->Close(), int(PkoErrorSuccess));
        QVERIFY(!m_Camera->IsOpen());
        long long value = 0;
        QCOMPARE(old->GetValue(value), int(PkoErrorBadHandle));
        std::vector<FeaturePtr> features;
        QCOMPARE(m_Camera->GetFeatures(features), int(PkoErrorDeviceNotOpen));
        Frame frame;
        QCOMPARE(m_Camera->GetLatestFrame(frame), int(PkoErrorDeviceNotOpen));
        QVERIFY(!m_Camera->IsConnectionLost());
        QCOMPARE(m_Camera->Open(), int(PkoErrorSuccess));
        QCOMPARE(m_Camera->Open(), int(PkoErrorSuccess));
        QCOMPARE(old->GetValue(value), int(PkoErrorBadHandle));
        QCOMPARE(Feature("StepInteger")->SetValue(16LL), int(PkoErrorSuccess));
        QCOMPARE(IntegerOf(Feature("StepInteger")), 16LL);
    }

    void shouldDeliverFramesAsGreyAtTheCamerasSize()
    {
        Frame frame;
        QCOMPARE(m_Camera->GetLatestFrame(frame), int(PkoErrorNotFound));
        QCOMPARE(frame.id, 0ULL);
        QCOMPARE(Feature("Width")->SetValue(320LL), int(PkoErrorSuccess));
        QCOMPARE(Feature("Height")->SetValue(200LL), int(PkoErrorSuccess));
        QCOMPARE(Feature("PixelFormat")->SetValue("Mono8"), int(PkoErrorSuccess));
        QCOMPARE(m_Camera->StartAcquisition(), int(PkoErrorSuccess));
        QVERIFY(m_Camera->IsAcquiring());
        QTRY_VERIFY_WITH_TIMEOUT(m_Camera->FramesDelivered() >= 3, TestSupport::Scaled(5000));
        QCOMPARE(m_Camera->GetLatestFrame(frame), int(PkoErrorSuccess));
        QCOMPARE(frame.width, 320u);
        QCOMPARE(frame.height, 200u);
        QCOMPARE(frame.mono8.size(), std::size_t(320 * 200));
        QVERIFY(frame.id >= 3);
        const unsigned long long first = frame.id;
        QTRY_VERIFY_WITH_TIMEOUT(m_Camera->FramesDelivered() > first, TestSupport::Scaled(5000));
        Frame next;
        QCOMPARE(m_Camera->GetLatestFrame(next), int(PkoErrorSuccess));
        QVERIFY(next.id > first);
        QCOMPARE(m_Camera->StopAcquisition(), int(PkoErrorSuccess));
        QVERIFY(!m_Camera->IsAcquiring());
    }

    void shouldConvertTheOtherPixelFormatsToGrey_data()
    {
        QTest::addColumn<QString>("format");
        QTest::newRow("Mono16") << QStringLiteral("Mono16");
        QTest::newRow("RGB8") << QStringLiteral("RGB8");
        QTest::newRow("BayerRG8") << QStringLiteral("BayerRG8");
    }

    void shouldConvertTheOtherPixelFormatsToGrey()
    {
        QFETCH(QString, format);
        QCOMPARE(Feature("Width")->SetValue(160LL), int(PkoErrorSuccess));
        QCOMPARE(Feature("Height")->SetValue(90LL), int(PkoErrorSuccess));
        QCOMPARE(Feature("PixelFormat")->SetValue(format.toLatin1().constData()), int(PkoErrorSuccess));
        QCOMPARE(m_Camera->StartAcquisition(), int(PkoErrorSuccess));
        QTRY_VERIFY_WITH_TIMEOUT(m_Camera->FramesDelivered() >= 2, TestSupport::Scaled(5000));
        Frame frame;
        QCOMPARE(m_Camera->GetLatestFrame(frame), int(PkoErrorSuccess));
        QCOMPARE(frame.width, 160u);
        QCOMPARE(frame.height, 90u);
        QCOMPARE(frame.mono8.size(), std::size_t(160 * 90));
        QCOMPARE(m_Camera->StopAcquisition(), int(PkoErrorSuccess));
    }

    void shouldEndASingleFrameAcquisitionAfterOneFrame()
    {
        QCOMPARE(Feature("AcquisitionMode")->SetValue("SingleFrame"), int(PkoErrorSuccess));
        QCOMPARE(m_Camera->StartAcquisition(), int(PkoErrorSuccess));
        QTRY_VERIFY_WITH_TIMEOUT(!m_Camera->IsAcquiring(), TestSupport::Scaled(5000));
        QCOMPARE(m_Camera->FramesDelivered(), 1ULL);
    }

    void shouldStayConsistentUnderConcurrentUse()
    {
        auto* raw = new CountingObserver;
        const IFeatureObserverPtr observer(raw);
        for (const char* name : {"StepInteger", "GuardedInteger", "Label", "ChannelGain", "ShadowInteger"})
            QCOMPARE(Feature(name)->RegisterObserver(observer), int(PkoErrorSuccess));

        std::atomic<int> failures{0};
        std::vector<std::thread> threads;
        const auto writerOf = [&](const char* name, long long step, long long limit) {
            return [&failures, feature = Feature(name), step, limit] {
                for (int i = 0; i < 150; ++i) {
                    const long long value = (i * step) % limit;
                    long long read = -1;
                    if (feature->SetValue(value) != PkoErrorSuccess || feature->GetValue(read) != PkoErrorSuccess ||
                        read != value)
                        ++failures;
                }
            };
        };
        threads.emplace_back(writerOf("StepInteger", 4, 100));
        threads.emplace_back(writerOf("GuardedInteger", 7, 1000));
        threads.emplace_back([&failures, label = Feature("Label")] {
            for (int i = 0; i < 150; ++i) {
                const std::string text = "text-" + std::to_string(i);
                if (label->SetValue(text.c_str()) != PkoErrorSuccess || TextOf(label) != text)
                    ++failures;
            }
        });
        threads.emplace_back([&failures, camera = m_Camera] {
            for (int i = 0; i < 60; ++i) {
                std::vector<FeaturePtr> all;
                if (camera->GetFeatures(all) != PkoErrorSuccess)
                    ++failures;
                for (const FeaturePtr& feature : all) {
                    bool writable = false;
                    if (feature->IsWritable(writable) != PkoErrorSuccess)
                        ++failures;
                }
            }
        });
        for (std::thread& thread : threads)
            thread.join();
        QCOMPARE(failures.load(), 0);
        QVERIFY(raw->CountFor("StepInteger") > 0);
        for (const char* name : {"StepInteger", "GuardedInteger", "Label", "ChannelGain", "ShadowInteger"})
            QCOMPARE(Feature(name)->UnregisterObserver(observer), int(PkoErrorSuccess));
    }
};

QTEST_GUILESS_MAIN(tst_ArvBackend)
#include "tst_arvbackend.moc"
