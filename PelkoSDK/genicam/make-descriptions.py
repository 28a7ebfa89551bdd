#!/usr/bin/env python3
# Writes the four GenICam descriptions of this folder:
#   python3 PelkoSDK/genicam/make-descriptions.py PelkoSDK/genicam
# The files are committed; edit this script and run it again rather than
# editing them by hand, so that the four stay consistent.
import re
import sys

HEADER = '''<?xml version="1.0" encoding="utf-8"?>
<!-- {title}
     Served by: arv-fake-gv-camera-0.8 -i 127.0.0.1 -s SERIAL -g {file}
     Registers below 0x4000 are the fake camera's own (image, acquisition,
     trigger). Everything we add lives at 0x4000 and up. The fake camera starts
     these at 0, so every added register is encoded such that 0 reads as the
     factory default (see README.md); no start-up write is needed. -->
<RegisterDescription
	ModelName="{model}"
	VendorName="Pelko"
	StandardNameSpace="None"
	SchemaMajorVersion="1"
	SchemaMinorVersion="0"
	SchemaSubMinorVersion="1"
	MajorVersion="1"
	MinorVersion="0"
	SubMinorVersion="0"
	ToolTip="{title}"
	ProductGuid="0"
	VersionGuid="0"
	xmlns="http://www.genicam.org/GenApi/Version_1_0"
	xmlns:xsi="http://www.w3.org/2001/XMLSchema-instance"
	xsi:schemaLocation="http://www.genicam.org/GenApi/Version_1_0 GenApiSchema.xsd">
'''

out = []
def w(s=''):
    out.append(s)

def category(name, feats):
    w(f'\t<Category Name="{name}" NameSpace="Standard">')
    for f in feats:
        w(f'\t\t<pFeature>{f}</pFeature>')
    w('\t</Category>')
    w()

def common_head(display=None, desc=None, avail=None, locked=None, ns='Standard'):
    s = []
    if desc: s.append(f'\t\t<Description>{desc}</Description>')
    if display: s.append(f'\t\t<DisplayName>{display}</DisplayName>')
    if avail: s.append(f'\t\t<pIsAvailable>{avail}</pIsAvailable>')
    if locked: s.append(f'\t\t<pIsLocked>{locked}</pIsLocked>')
    return s

def intreg(name, addr, access='RW', index=None, entries=0, stride=4, comment=None, signed=False, volatile=False,
           invalidators=(), length=4):
    """A register. Registers hold configuration and are cached (WriteThrough) unless volatile: those the
    camera changes by itself are read every time and polled.

    With an index (a selector's value node), name is an Integer that picks one of entries registers,
    entry i at addr + i * stride, named like name with the entry's number before "Register"
    (LineModeRegister: LineMode0Register, ...), through pValueIndexed. Aravis caches one value per
    register node, so one node per entry keeps every entry cached across selector changes, and
    whoever reads all entries at once (the level formulas) reads the same nodes."""
    if index:
        if comment: w(f'\t<!-- {comment} -->')
        w(f'\t<Integer Name="{name}" NameSpace="Custom">')
        w(f'\t\t<pIndex>{index}</pIndex>')
        names = [entry_register(name, i) for i in range(entries)]
        for i, n in enumerate(names):
            w(f'\t\t<pValueIndexed Index="{i}">{n}</pValueIndexed>')
        w(f'\t\t<pValueDefault>{names[0]}</pValueDefault>')
        bits = 8 * length
        # The range of the registers, so that converters derive theirs from it (see intconv).
        w(f'\t\t<Min>{-(1 << (bits - 1)) if signed else 0}</Min>')
        w(f'\t\t<Max>{(1 << (bits - 1)) - 1 if signed or bits == 64 else (1 << bits) - 1}</Max>')
        w('\t</Integer>')
        w()
        for i, n in enumerate(names):
            intreg(n, addr + i * stride, access, signed=signed, volatile=volatile,
                   invalidators=[entry_register(v, i) for v in invalidators], length=length)
        return
    if comment: w(f'\t<!-- {comment} -->')
    w(f'\t<IntReg Name="{name}" NameSpace="Custom">')
    for i in invalidators:
        w(f'\t\t<pInvalidator>{i}</pInvalidator>')
    w(f'\t\t<Address>{addr:#x}</Address>')
    w(f'\t\t<Length>{length}</Length>')
    w(f'\t\t<AccessMode>{access}</AccessMode>')
    w('\t\t<pPort>Device</pPort>')
    w(f'\t\t<Cachable>{"NoCache" if volatile or access == "WO" else "WriteThrough"}</Cachable>')
    if volatile:
        w('\t\t<IsVolatile>Yes</IsVolatile>')
    w(f'\t\t<Sign>{"Signed" if signed else "Unsigned"}</Sign>')
    w('\t\t<Endianess>BigEndian</Endianess>')
    w('\t</IntReg>')
    w()

def entry_register(name, i):
    """The register of selector entry i behind the selector-indexed node name."""
    return name[:-len('Register')] + f'{i}Register'

def enumeration(name, entries, pvalue, display=None, avail=None, locked=None, selected=(), desc=None):
    """entries: list of (name, value) or (name, value, pIsAvailable)"""
    w(f'\t<Enumeration Name="{name}" NameSpace="Standard">')
    for l in common_head(display, desc, avail, locked): w(l)
    for e in entries:
        w(f'\t\t<EnumEntry Name="{e[0]}" NameSpace="Standard">')
        if len(e) > 2 and e[2]:
            w(f'\t\t\t<pIsAvailable>{e[2]}</pIsAvailable>')
        w(f'\t\t\t<Value>{e[1]}</Value>')
        w('\t\t</EnumEntry>')
    w(f'\t\t<pValue>{pvalue}</pValue>')
    for s in selected:
        w(f'\t\t<pSelected>{s}</pSelected>')
    w('\t</Enumeration>')
    w()

def integer(name, pvalue=None, value=None, mn=None, mx=None, inc=None, display=None, avail=None, locked=None,
            selected=(), ns='Standard', visibility=None, desc=None, pmax=None, access=None):
    w(f'\t<Integer Name="{name}" NameSpace="{ns}">')
    for l in common_head(display, desc, avail, locked): w(l)
    if visibility: w(f'\t\t<Visibility>{visibility}</Visibility>')
    if access: w(f'\t\t<ImposedAccessMode>{access}</ImposedAccessMode>')
    if pvalue: w(f'\t\t<pValue>{pvalue}</pValue>')
    if value is not None: w(f'\t\t<Value>{value}</Value>')
    if mn is not None: w(f'\t\t<Min>{mn}</Min>')
    if mx is not None: w(f'\t\t<Max>{mx}</Max>')
    if pmax: w(f'\t\t<pMax>{pmax}</pMax>')
    if inc is not None: w(f'\t\t<Inc>{inc}</Inc>')
    for s in selected:
        w(f'\t\t<pSelected>{s}</pSelected>')
    w('\t</Integer>')
    w()

def boolean(name, pvalue, display=None, avail=None, locked=None, desc=None):
    w(f'\t<Boolean Name="{name}" NameSpace="Standard">')
    for l in common_head(display, desc, avail, locked): w(l)
    w(f'\t\t<pValue>{pvalue}</pValue>')
    w('\t\t<OnValue>1</OnValue>')
    w('\t\t<OffValue>0</OffValue>')
    w('\t</Boolean>')
    w()

def command(name, pvalue, value, display=None, desc=None, avail=None, locked=None):
    w(f'\t<Command Name="{name}" NameSpace="Standard">')
    for l in common_head(display, desc, avail, locked): w(l)
    w(f'\t\t<pValue>{pvalue}</pValue>')
    w(f'\t\t<CommandValue>{value}</CommandValue>')
    w('\t</Command>')
    w()

def knife(name, variables, formula, comment=None):
    if comment: w(f'\t<!-- {comment} -->')
    w(f'\t<IntSwissKnife Name="{name}" NameSpace="Custom">')
    for k, v in variables:
        w(f'\t\t<pVariable Name="{k}">{v}</pVariable>')
    w(f'\t\t<Formula>{esc(formula)}</Formula>')
    w('\t</IntSwissKnife>')
    w()

def intconv(name, variables, frm, to, pvalue, comment=None, passthrough=True):
    """frm: register (TO) -> feature value; to: feature value (FROM) -> register."""
    if passthrough:
        frm = f'((TO < 0) || (TO > 65535)) ? TO : ({frm})'
    if comment: w(f'\t<!-- {comment} -->')
    w(f'\t<IntConverter Name="{name}" NameSpace="Custom">')
    for k, v in variables:
        w(f'\t\t<pVariable Name="{k}">{v}</pVariable>')
    w(f'\t\t<FormulaTo>{esc(to)}</FormulaTo>')
    w(f'\t\t<FormulaFrom>{esc(frm)}</FormulaFrom>')
    w(f'\t\t<pValue>{pvalue}</pValue>')
    w('\t</IntConverter>')
    w()

def esc(s):
    return s.replace('&', '&amp;').replace('<', '&lt;').replace('>', '&gt;')

def xor_default(name, reg, sel, defaults, comment):
    """An enumeration value stored as (value XOR default of the selected index),
    so that a register at 0 reads as that index's default."""
    if not any(defaults):
        return reg
    expr = ' : '.join(f'(SEL = {i}) ? {d}' for i, d in enumerate(defaults) if d) + ' : 0'
    intconv(name, [('SEL', sel)], f'TO ^ ({expr})', f'FROM ^ ({expr})', reg, comment)
    return name

def device_control():
    category('DeviceControl', ['DeviceVendorName', 'DeviceModelName', 'DeviceManufacturerInfo', 'DeviceID',
                               'DeviceVersion'])
    for name, disp, addr, length in [('DeviceVendorName', 'Vendor Name', 0x48, 32),
                                     ('DeviceModelName', 'Model Name', 0x68, 32),
                                     ('DeviceManufacturerInfo', 'Manufacturer Info', 0xa8, 48),
                                     ('DeviceID', 'Device ID', 0xd8, 16),
                                     ('DeviceVersion', 'Device Version', 0x88, 32)]:
        w(f'\t<StringReg Name="{name}" NameSpace="Standard">')
        w(f'\t\t<DisplayName>{disp}</DisplayName>')
        w(f'\t\t<Address>{addr:#x}</Address>')
        w(f'\t\t<Length>{length}</Length>')
        w('\t\t<AccessMode>RO</AccessMode>')
        w('\t\t<pPort>Device</pPort>')
        w('\t\t<Cachable>WriteThrough</Cachable>')
        w('\t</StringReg>')
        w()

def image_format():
    category('ImageFormatControl', ['SensorWidth', 'SensorHeight', 'Width', 'Height', 'OffsetX', 'OffsetY',
                                    'BinningHorizontal', 'BinningVertical', 'PixelFormat'])
    integer('SensorHeight', 'SensorHeightRegister', display='Sensor Height')
    intreg('SensorHeightRegister', 0x118, 'RO')
    integer('SensorWidth', 'SensorWidthRegister', display='Sensor Width')
    intreg('SensorWidthRegister', 0x11c, 'RO')
    integer('OffsetX', 'OffsetXRegister', mn=0, pmax='SensorWidth', inc=1, display='Offset X')
    intreg('OffsetXRegister', 0x130)
    integer('OffsetY', 'OffsetYRegister', mn=0, pmax='SensorHeight', inc=1, display='Offset Y')
    intreg('OffsetYRegister', 0x134)
    integer('Width', 'WidthRegister', mn=1, pmax='SensorWidth', inc=1, locked='TLParamsLocked')
    intreg('WidthRegister', 0x100)
    integer('Height', 'HeightRegister', mn=1, pmax='SensorHeight', inc=1, locked='TLParamsLocked')
    intreg('HeightRegister', 0x104)
    integer('BinningHorizontal', 'BinningHorizontalRegister', mn=1, mx=16, display='Binning Horizontal')
    intreg('BinningHorizontalRegister', 0x108)
    integer('BinningVertical', 'BinningVerticalRegister', mn=1, mx=16, display='Binning Vertical')
    intreg('BinningVerticalRegister', 0x10c)
    enumeration('PixelFormat', [('Mono8', 17301505), ('Mono16', 17825799), ('RGB8', 35127316),
                                ('BayerRG8', 17301513)], 'PixelFormatRegister', display='Pixel Format',
                locked='TLParamsLocked')
    intreg('PixelFormatRegister', 0x128)

def acquisition_common(selectors, sources, activations, exposure_mode, exposure_autos, readout_us):
    feats = ['AcquisitionMode', 'AcquisitionStart', 'AcquisitionStop', 'AcquisitionFrameCount',
             'AcquisitionFrameRate', 'SensorReadoutTime', 'AcquisitionStatusSelector', 'AcquisitionStatus',
             'TriggerSelector', 'TriggerMode', 'TriggerSource', 'TriggerActivation',
             'TriggerSoftware']
    if exposure_mode:
        feats.append('ExposureMode')
    feats += ['ExposureTime', 'ExposureAuto']
    category('AcquisitionControl', feats)
    enumeration('AcquisitionMode', [('Continuous', 1), ('SingleFrame', 2), ('MultiFrame', 3)],
                'AcquisitionModeRegister', display='Acquisition Mode', locked='TLParamsLocked')
    intreg('AcquisitionModeRegister', 0x12c, comment='The fake camera starts it at 1 (Continuous).')
    command('AcquisitionStart', 'AcquisitionCommandRegister', 1, display='Acquisition Start')
    command('AcquisitionStop', 'AcquisitionCommandRegister', 0, display='Acquisition Stop')
    intreg('AcquisitionCommandRegister', 0x124, 'RW',
           comment='The fake camera keeps 1 here while it acquires. Only writes change it: it streams until '
                   'stopped, whatever the acquisition mode (the SDK stops single and multi-frame acquisitions).')
    integer('AcquisitionFrameCount', 'AcquisitionFrameCountConverter', mn=1, mx=65535, inc=1,
            display='Acquisition Frame Count', locked='TLParamsLocked')
    intconv('AcquisitionFrameCountConverter', [], 'TO + 1', 'FROM - 1', 'AcquisitionFrameCountRegister',
            'Stored as count - 1, so that the register at 0 reads 1.', passthrough=False)
    intreg('AcquisitionFrameCountRegister', 0x4000)
    w('\t<Float Name="AcquisitionFrameRate" NameSpace="Standard">')
    w('\t\t<DisplayName>Acquisition Frame Rate</DisplayName>')
    w('\t\t<pValue>AcquisitionFrameRateConverter</pValue>')
    w('\t\t<Min>0.1</Min>')
    w('\t\t<Max>1000</Max>')
    w('\t\t<Unit>Hz</Unit>')
    w('\t</Float>')
    w()
    w('\t<Converter Name="AcquisitionFrameRateConverter" NameSpace="Custom">')
    w('\t\t<FormulaTo>(1000000 / FROM)</FormulaTo>')
    w('\t\t<FormulaFrom>(1000000 / TO)</FormulaFrom>')
    w('\t\t<pValue>AcquisitionFramePeriodRegister</pValue>')
    w('\t</Converter>')
    w()
    intreg('AcquisitionFramePeriodRegister', 0x138, comment='Frame period in microseconds; the fake camera starts it at 40000.')
    w('\t<Float Name="SensorReadoutTime" NameSpace="Standard">')
    w('\t\t<DisplayName>Sensor Readout Time</DisplayName>')
    w('\t\t<ImposedAccessMode>RO</ImposedAccessMode>')
    w(f'\t\t<Value>{readout_us:.1f}</Value>')
    w(f'\t\t<Min>{readout_us:.1f}</Min>')
    w(f'\t\t<Max>{readout_us:.1f}</Max>')
    w('\t\t<Unit>us</Unit>')
    w('\t</Float>')
    w()
    status = ['AcquisitionActive', 'AcquisitionTriggerWait', 'FrameTriggerWait', 'ExposureActive']
    enumeration('AcquisitionStatusSelector', [(e, i) for i, e in enumerate(status)], 'AcquisitionStatusSelectorValue',
                display='Acquisition Status Selector', selected=['AcquisitionStatus'])
    integer('AcquisitionStatusSelectorValue', value=0, mn=0, mx=len(status) - 1, ns='Custom')
    boolean('AcquisitionStatus', 'AcquisitionStatusKnife', display='Acquisition Status')
    knife('AcquisitionStatusKnife',
          [('SEL', 'AcquisitionStatusSelectorValue'), ('ACQ', 'AcquisitionCommandRegister'),
           ('REG', 'AcquisitionStatusRegister')],
          '(SEL = 0) ? (ACQ <> 0) : (REG <> 0)',
          '"AcquisitionActive" is the fake camera\'s own acquisition state; the waits and the exposure are '
          'written to the register behind the camera\'s back, as its signals would set them.')
    intreg('AcquisitionStatusRegister', 0x4460, 'RO', index='AcquisitionStatusSelectorValue', entries=len(status),
           volatile=True)

    sel_entries = []
    for i, s in enumerate(selectors):
        sel_entries.append((s[0], i, s[1] if len(s) > 1 else None))
    enumeration('TriggerSelector', sel_entries, 'TriggerSelectorValue', display='Trigger Selector',
                selected=['TriggerMode', 'TriggerSource', 'TriggerActivation'])
    integer('TriggerSelectorValue', value=0, mn=0, mx=len(selectors) - 1, ns='Custom')
    enumeration('TriggerMode', [('Off', 0), ('On', 1)], 'TriggerModeRegister', display='Trigger Mode',
                locked='TLParamsLocked')
    intreg('TriggerModeRegister', 0x300, index='TriggerSelectorValue', entries=len(selectors), stride=0x20)
    enumeration('TriggerSource', sources, 'TriggerSourceRegister', display='Trigger Source',
                locked='TLParamsLocked')
    intreg('TriggerSourceRegister', 0x304, index='TriggerSelectorValue', entries=len(selectors), stride=0x20,
           comment='The fake camera waits for TriggerSoftware when FrameStart has mode 1 and source 1.')
    enumeration('TriggerActivation', [(a, i) for i, a in enumerate(activations)], 'TriggerActivationRegister',
                display='Trigger Activation', locked='TLParamsLocked')
    intreg('TriggerActivationRegister', 0x308, index='TriggerSelectorValue', entries=len(selectors), stride=0x20)
    command('TriggerSoftware', 'TriggerSoftwareRegister', 1, display='Trigger Software')
    intreg('TriggerSoftwareRegister', 0x30c, 'WO')

    if exposure_mode:
        enumeration('ExposureMode', [('Timed', 0), ('TriggerWidth', 1)], 'ExposureModeRegister',
                    display='Exposure Mode', locked='TLParamsLocked')
        intreg('ExposureModeRegister', 0x4004)
    w('\t<Float Name="ExposureTime" NameSpace="Standard">')
    w('\t\t<DisplayName>Exposure Time</DisplayName>')
    w('\t\t<pIsLocked>ExposureTimeLocked</pIsLocked>')
    w('\t\t<pValue>ExposureTimeConverter</pValue>')
    w('\t\t<Min>10.0</Min>')
    w('\t\t<Max>1000000.0</Max>')
    w('\t\t<Unit>us</Unit>')
    w('\t</Float>')
    w()
    w('\t<Converter Name="ExposureTimeConverter" NameSpace="Custom">')
    w('\t\t<FormulaTo>FROM</FormulaTo>')
    w('\t\t<FormulaFrom>TO</FormulaFrom>')
    w('\t\t<pValue>ExposureTimeRegister</pValue>')
    w('\t</Converter>')
    w()
    intreg('ExposureTimeRegister', 0x120, comment='The fake camera starts it at 10000.')
    if exposure_mode:
        knife('ExposureTimeLocked', [('AUTO', 'ExposureAuto'), ('MODE', 'ExposureMode')],
              '(AUTO <> 0) || (MODE <> 0)',
              'Set by hand only while neither the automatic nor the trigger pulse decides it.')
    else:
        knife('ExposureTimeLocked', [('AUTO', 'ExposureAuto')], 'AUTO <> 0',
              'Set by hand only while the automatic does not decide it.')
    enumeration('ExposureAuto', [(a, i) for i, a in enumerate(exposure_autos)], 'ExposureAutoRegister',
                display='Exposure Auto')
    intreg('ExposureAutoRegister', 0x4008)

def analog():
    category('AnalogControl', ['GainRaw', 'GainAuto'])
    integer('GainRaw', 'GainRawRegister', mn=0, mx=10, display='Gain Raw', locked='GainLocked')
    intreg('GainRawRegister', 0x110)
    knife('GainLocked', [('AUTO', 'GainAuto')], 'AUTO <> 1')
    enumeration('GainAuto', [('Off', 1), ('Once', 3), ('Continuous', 2)], 'GainAutoRegister', display='Gain Auto')
    intreg('GainAutoRegister', 0x114, comment='The fake camera starts it at 1 (Off).')

def transport():
    category('TransportLayerControl', ['PayloadSize'])
    w('\t<IntSwissKnife Name="PayloadSize" NameSpace="Standard">')
    w('\t\t<pVariable Name="WIDTH">Width</pVariable>')
    w('\t\t<pVariable Name="HEIGHT">Height</pVariable>')
    w('\t\t<pVariable Name="PIXELFORMAT">PixelFormat</pVariable>')
    w('\t\t<Formula>WIDTH * HEIGHT * ((PIXELFORMAT&gt;&gt;16)&amp;0xFF) / 8</Formula>')
    w('\t</IntSwissKnife>')
    w()
    integer('TLParamsLocked', value=0, mn=0, mx=1, ns='Standard', visibility='Invisible',
            desc='Set by the host while a live grab is under way.')

def counters():
    """Three event counters. The fake camera counts nothing: tests write the counter registers behind the
    camera's back, as its events would."""
    category('CounterAndTimerControl', ['CounterSelector', 'CounterEventSource', 'CounterValue', 'CounterReset'])
    names = ['Counter0', 'Counter1', 'Counter2']
    enumeration('CounterSelector', [(c, i) for i, c in enumerate(names)], 'CounterSelectorValue',
                display='Counter Selector', selected=['CounterEventSource', 'CounterValue'])
    integer('CounterSelectorValue', value=0, mn=0, mx=len(names) - 1, ns='Custom')
    sources = ['Off', 'AcquisitionTrigger', 'FrameTrigger', 'FrameTriggerMissed', 'ExposureStart', 'ExposureEnd',
               'FrameEnd']
    defaults = ['FrameTrigger', 'FrameTriggerMissed', 'FrameEnd']
    enumeration('CounterEventSource', [(e, i) for i, e in enumerate(sources)],
                xor_default('CounterEventSourceConverter', 'CounterEventSourceRegister', 'CounterSelectorValue',
                            [sources.index(d) for d in defaults],
                            'With the register at 0: ' + ', '.join(f'{c} "{d}"' for c, d in zip(names, defaults)) +
                            '.'),
                display='Counter Event Source')
    intreg('CounterEventSourceRegister', 0x4400, index='CounterSelectorValue', entries=len(names), signed=True)
    integer('CounterValue', 'CounterValueRegister', mn=0, mx=0x7fffffffffffffff, display='Counter Value', access='RO')
    intreg('CounterValueRegister', 0x4420, 'RO', index='CounterSelectorValue', entries=len(names), stride=8, length=8,
           volatile=True,
           invalidators=['CounterResetRegister'],
           comment='64 bits per counter. A reset changes it: the reset register invalidates it.')
    command('CounterReset', 'CounterResetRegister', 1, display='Counter Reset')
    intreg('CounterResetRegister', 0x4440, 'WO', index='CounterSelectorValue', entries=len(names),
           comment='The fake camera only stores the write; it keeps no counters.')

def footer():
    w('\t<Port Name="Device" NameSpace="Standard">')
    w('\t</Port>')
    w()
    w('</RegisterDescription>')

def root(extra):
    category('Root', ['DeviceControl', 'ImageFormatControl', 'AcquisitionControl', 'AnalogControl'] + extra +
             ['CounterAndTimerControl', 'TransportLayerControl'])

# ---------------------------------------------------------------- generation 1
# Register values that read as each line's factory default (see xor_default).
MODE_DEFAULTS = [0, 1, 0, 1]    # Line1 and Line3 are outputs
SOURCE_DEFAULTS = [0, 1, 0, 0]  # Line1 follows ExposureActive

def line_level(levels, line, mode, src, inv):
    """The status of one line: an output shows what drives it, an input its stored (applied) level."""
    stored = levels if line is None else f'(({levels} >> {line}) & 1)'
    return (f'(({mode} = 1) ? (({src} = 7) ? {stored} : ({src} = 4) ? U0 : ({src} = 5) ? U1 : ({src} = 6) ? U2 : 0) '
            f': {stored}) ^ {inv}')

def gen1(routing):
    lines = ['Line0', 'Line1', 'Line2', 'Line3']
    per_line = ['LineMode', 'LineSource', 'LineInverter', 'LineStatus'] + (['LineRouting'] if routing else [])
    root(['DigitalIOControl'])
    device_control()
    image_format()
    if routing:
        selectors = [('FrameStart', 'NotTriggerWidth'), ('AcquisitionStart', 'NotTriggerWidth'),
                     ('ExposureStart', 'NotTriggerWidth'), ('ExposureActive', 'TriggerWidth')]
        sources = [('InputLines', 2), ('Line0', 0), ('Line1', 3), ('Line2', 4), ('Line3', 5), ('Software', 1)]
        activations = ['RisingEdge', 'FallingEdge', 'AnyEdge', 'HighLevel', 'LowLevel']
    else:
        selectors = [('FrameStart',), ('AcquisitionStart',)]
        sources = [('Line0', 0), ('Line1', 2), ('Line2', 3), ('Line3', 4), ('Software', 1)]
        activations = ['RisingEdge', 'FallingEdge', 'AnyEdge', 'LevelHigh', 'LevelLow']
    acquisition_common(selectors, sources, activations, True, ['Off', 'Once', 'Continuous'],
                       2000.0 if routing else 3000.0)
    transport()
    if routing:
        knife('TriggerWidth', [('MODE', 'ExposureMode')], 'MODE = 1',
              'In "TriggerWidth" exposure the pulse width is the exposure: only "ExposureActive" applies.')
        knife('NotTriggerWidth', [('MODE', 'ExposureMode')], 'MODE <> 1')
    analog()
    counters()

    category('DigitalIOControl', ['LineSelector'] + per_line + ['LineStatusAll', 'UserOutputSelector', 'UserOutputValue'])
    enumeration('LineSelector', [(l, i) for i, l in enumerate(lines)], 'LineSelectorValue',
                display='Line Selector', selected=per_line)
    integer('LineSelectorValue', value=0, mn=0, mx=3, ns='Custom')
    # Line0 is wired as an input and Line1 as an output; Line2 and Line3 are bidirectional.
    enumeration('LineMode', [('Input', 0, 'LineInputPossible'), ('Output', 1, 'LineOutputPossible')],
                xor_default('LineModeConverter', 'LineModeRegister', 'LineSelectorValue', MODE_DEFAULTS,
                            'Line1 and Line3 read "Output" with the register at 0.'),
                display='Line Mode', locked='LineModeFixed')
    intreg('LineModeRegister', 0x4100, index='LineSelectorValue', entries=len(lines), signed=True,
           comment='Signed, and the converter passes values beyond 65535 through, so that the range it derives from this register spans every value.')
    knife('LineModeFixed', [('SEL', 'LineSelectorValue')], 'SEL < 2',
          'Line0 is wired as an input and Line1 as an output; only Line2 and Line3 switch.')
    knife('LineInputPossible', [('SEL', 'LineSelectorValue')], 'SEL <> 1')
    knife('LineOutputPossible', [('SEL', 'LineSelectorValue')], 'SEL <> 0')
    knife('LineIsNotOutput', [('MODE', 'LineMode')], 'MODE <> 1')
    enumeration('LineSource', [('Off', 0), ('ExposureActive', 1), ('FrameTriggerWait', 2), ('Timer0Active', 3),
                               ('UserOutput0', 4), ('UserOutput1', 5), ('UserOutput2', 6), ('Direct', 7)],
                xor_default('LineSourceConverter', 'LineSourceRegister', 'LineSelectorValue', SOURCE_DEFAULTS,
                            'Line1 reads "ExposureActive" with the register at 0.'),
                display='Line Source', locked='LineIsNotOutput')
    intreg('LineSourceRegister', 0x4120, index='LineSelectorValue', entries=len(lines), signed=True)
    boolean('LineInverter', 'LineInverterRegister', display='Line Inverter')
    intreg('LineInverterRegister', 0x4140, index='LineSelectorValue', entries=len(lines))
    boolean('LineStatus', 'LineStatusConverter', display='Line Status', locked='LineStatusFixed')
    user = [('U0', 'UserOutputValue0Register'), ('U1', 'UserOutputValue1Register'), ('U2', 'UserOutputValue2Register')]
    intconv('LineStatusConverter',
            [('MODE', 'LineMode'), ('SRC', 'LineSource'), ('INV', 'LineInverterRegister')] + user,
            line_level('TO', None, 'MODE', 'SRC', 'INV'), 'FROM', 'LineStoredLevel',
            'The level on the connector: an output shows what drives it (its stored level only when driven '
            '"Direct"), an input the level applied to it; the inverter inverts either.')
    w('\t<!-- The selected line\'s bit of LineLevelsRegister. The wide range lets the converter above derive a '
      'range that spans every value (see intconv). -->')
    w('\t<Integer Name="LineStoredLevel" NameSpace="Custom">')
    w('\t\t<pIndex>LineSelectorValue</pIndex>')
    for i in range(len(lines)):
        w(f'\t\t<pValueIndexed Index="{i}">LineLevel{i}Bit</pValueIndexed>')
    w('\t\t<pValueDefault>LineLevel0Bit</pValueDefault>')
    w('\t\t<Min>-2147483648</Min>')
    w('\t\t<Max>2147483647</Max>')
    w('\t</Integer>')
    w()
    for i in range(len(lines)):
        w(f'\t<MaskedIntReg Name="LineLevel{i}Bit" NameSpace="Custom">')
        w('\t\t<Address>0x4160</Address>')
        w('\t\t<Length>4</Length>')
        w('\t\t<AccessMode>RW</AccessMode>')
        w('\t\t<pPort>Device</pPort>')
        w('\t\t<Cachable>NoCache</Cachable>')
        w('\t\t<IsVolatile>Yes</IsVolatile>')
        # Big-endian registers number their bits from the most significant one.
        w(f'\t\t<Bit>{31 - i}</Bit>')
        w('\t\t<Sign>Unsigned</Sign>')
        w('\t\t<Endianess>BigEndian</Endianess>')
        w('\t</MaskedIntReg>')
        w()
    intreg('LineLevelsRegister', 0x4160, 'RO', volatile=True,
           comment='Stored levels, bit i for Line i: written by hand on a "Direct" output, or the level applied '
                   'to an input (written behind the camera\'s back, as a signal would).')
    knife('LineStatusFixed', [('MODE', 'LineMode'), ('SRC', 'LineSource')], '(MODE <> 1) || (SRC <> 7)')
    variables = [('LEVELS', 'LineLevelsRegister')] + user
    bits = []
    for i in range(len(lines)):
        variables += [(f'M{i}', f'LineMode{i}Register'), (f'S{i}', f'LineSource{i}Register'),
                      (f'I{i}', f'LineInverter{i}Register')]
        mode = f'(M{i} ^ {MODE_DEFAULTS[i]})' if MODE_DEFAULTS[i] else f'M{i}'
        src = f'(S{i} ^ {SOURCE_DEFAULTS[i]})' if SOURCE_DEFAULTS[i] else f'S{i}'
        bits.append(f'({line_level("LEVELS", str(i), mode, src, f"I{i}")}) * {1 << i}')
    integer('LineStatusAll', 'LineStatusAllKnife', mn=0, mx=(1 << len(lines)) - 1, display='Line Status All')
    knife('LineStatusAllKnife', variables, ' + '.join(bits), 'Bit i is the status of Line i.')
    if routing:
        enumeration('LineRouting', [('Off', 0), ('Trigger', 1)], 'LineRoutingRegister', display='Line Routing',
                    locked='LineIsNotInput')
        intreg('LineRoutingRegister', 0x4180, index='LineSelectorValue', entries=len(lines))
        knife('LineIsNotInput', [('MODE', 'LineMode')], 'MODE <> 0')
    enumeration('UserOutputSelector', [('UserOutput0', 0), ('UserOutput1', 1), ('UserOutput2', 2)],
                'UserOutputSelectorValue', display='User Output Selector', selected=['UserOutputValue'])
    integer('UserOutputSelectorValue', value=0, mn=0, mx=2, ns='Custom')
    boolean('UserOutputValue', 'UserOutputValueRegister', display='User Output Value')
    intreg('UserOutputValueRegister', 0x4200, index='UserOutputSelectorValue', entries=3)

# ----------------------------------------------------------- generations 2, 3
def gen_bitmask(prefix, outputs, inputs, sources, defaults, trig_sources, exposure_mode, exposure_autos, readout_us):
    sel, src, pol, lev, inl = (f'{prefix}Selector', f'{prefix}Source', f'{prefix}Polarity', f'{prefix}Levels',
                               f'{inputs[0][:-1]}Levels')
    root(['DigitalIOControl'])
    device_control()
    image_format()
    acquisition_common([('FrameStart',), ('AcquisitionStart',)], trig_sources,
                       ['RisingEdge', 'FallingEdge', 'AnyEdge', 'LevelHigh', 'LevelLow'], exposure_mode,
                       exposure_autos, readout_us)
    transport()
    analog()
    counters()
    category('DigitalIOControl', [inl, sel, src, pol, lev])
    integer(inl, f'{inl}Register', mn=0, mx=3, display=' '.join(split_camel(inl)))
    intreg(f'{inl}Register', 0x4010, 'RO', volatile=True,
           comment='Levels applied to the inputs, bit k for input k + 1 (written behind the camera\'s back, as the '
                   'signals would).')
    enumeration(sel, [(o, i) for i, o in enumerate(outputs)], f'{sel}Value', display=' '.join(split_camel(sel)),
                selected=[src, pol])
    integer(f'{sel}Value', value=0, mn=0, mx=len(outputs) - 1, ns='Custom')
    dvals = [sources.index(d) for d in defaults]
    enumeration(src, [(s, i) for i, s in enumerate(sources)],
                xor_default(f'{src}Converter', f'{src}Register', f'{sel}Value', dvals,
                            'With the register at 0: ' + ', '.join(f'{o} "{d}"' for o, d in zip(outputs, defaults)) +
                            '.'),
                display=' '.join(split_camel(src)))
    intreg(f'{src}Register', 0x4100, index=f'{sel}Value', entries=len(outputs), signed=True,
           comment='Signed, and the converter passes values beyond 65535 through, so that the range it derives from this register spans every value.')
    enumeration(pol, [('Normal', 0), ('Invert', 1)], f'{pol}Register', display=' '.join(split_camel(pol)))
    intreg(f'{pol}Register', 0x4140, index=f'{sel}Value', entries=len(outputs))
    variables = [('IN', f'{inl}Register'), ('ACQ', 'AcquisitionCommandRegister')]
    bits = []
    gpo, acq = sources.index('GPO'), sources.index('Acquiring')
    in1, in2 = sources.index(inputs[0]), sources.index(inputs[1])
    for i, o in enumerate(outputs):
        variables += [(f'S{i}', entry_register(f'{src}Register', i)), (f'P{i}', entry_register(f'{pol}Register', i))]
        s = f'(S{i} ^ {dvals[i]})' if dvals[i] else f'S{i}'
        bits.append(f'((({s} = {gpo}) ? ((TO >> {i}) & 1) : ({s} = {acq}) ? (ACQ <> 0) : ({s} = {in1}) ? (IN & 1) : '
                    f'({s} = {in2}) ? ((IN >> 1) & 1) : 0) ^ P{i}) * {1 << i}')
    integer(lev, f'{lev}Converter', mn=0, mx=(1 << len(outputs)) - 1, display=' '.join(split_camel(lev)))
    intconv(f'{lev}Converter', variables, ' + '.join(bits), 'FROM', f'{lev}Register',
            'Bit i belongs to output i: a "GPO" output shows its stored bit, one following "Acquiring" the '
            'acquisition state, one following an input that input\'s level, any other 0 (idle); "Invert" '
            'inverts the bit.')
    intreg(f'{lev}Register', 0x4160, signed=True, comment='The bits written; only "GPO" outputs show them.')


def split_camel(s):
    return re.findall(r'[A-Z][a-z]*|\d+', s)

def write(file, title, model, body):
    global out
    out = []
    body()
    footer()
    # Clients read the description over the link at every open, 512 bytes per transaction: the defaults
    # (custom name space, unsigned registers) are left out.
    text = '\n'.join(out) + '\n'
    text = text.replace(' NameSpace="Custom"', '').replace('\t\t<Sign>Unsigned</Sign>\n', '')
    with open(file, 'w') as f:
        f.write(HEADER.format(title=title, file=file.split('/')[-1], model=model))
        f.write(text)

d = sys.argv[1]
write(f'{d}/gen1-line.xml', 'Generation 1 (Line*) with input line routing', 'PKO-GEN1-LINE', lambda: gen1(True))
write(f'{d}/gen1-sfnc.xml', 'Generation 1 (Line*) without routing', 'PKO-GEN1-SFNC', lambda: gen1(False))
write(f'{d}/gen2-syncout.xml', 'Generation 2 (SyncOut*)', 'PKO-GEN2-SYNCOUT',
      lambda: gen_bitmask('SyncOut', ['SyncOut1', 'SyncOut2', 'SyncOut3', 'SyncOut4'], ['SyncIn1', 'SyncIn2'],
                          ['GPO', 'AcquisitionTriggerReady', 'FrameTriggerReady', 'FrameTrigger', 'Exposing',
                           'FrameReadout', 'Acquiring', 'SyncIn1', 'SyncIn2'],
                          ['Exposing', 'Acquiring', 'GPO', 'GPO'],
                          [('Freerun', 0), ('Line1', 2), ('Line2', 3), ('FixedRate', 4), ('Software', 1)], False,
                          ['Off', 'Once', 'Continuous', 'other'], 5000.0))
write(f'{d}/gen3-lineout.xml', 'Generation 3 (LineOut*)', 'PKO-GEN3-LINEOUT',
      lambda: gen_bitmask('LineOut', ['LineOut1', 'LineOut2', 'LineOut3', 'LineOut4'], ['LineIn1', 'LineIn2'],
                          ['GPO', 'AcquisitionTriggerReady', 'FrameTriggerReady', 'Exposing', 'FrameReadout',
                           'Acquiring', 'LineIn1', 'LineIn2'],
                          ['Exposing', 'FrameTriggerReady', 'GPO', 'GPO'],
                          [('Line1', 0), ('Line2', 2), ('Software', 1)], True, ['Off', 'Once', 'Continuous'],
                          4000.0))
