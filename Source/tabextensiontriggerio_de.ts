<?xml version="1.0" encoding="utf-8"?>
<!DOCTYPE TS>
<TS version="2.1" language="de_DE" sourcelanguage="en_US">
<context>
    <name>IOTriggerWidget</name>
    <message>
        <source>Form</source>
        <translation>Formular</translation>
    </message>
    <message>
        <source>Trigger IO</source>
        <translation>Trigger-E/A</translation>
    </message>
    <message>
        <source>Full Input configuration only if camera is not acquiring!</source>
        <translation>Volle Eingangskonfiguration nur, wenn die Kamera nicht aufnimmt!</translation>
    </message>
    <message>
        <source>Trigger - Input</source>
        <translation>Trigger - Eingang</translation>
    </message>
    <message>
        <source>Output</source>
        <translation>Ausgang</translation>
    </message>
    <message>
        <source>Selectable Output</source>
        <translation>Wählbarer Ausgang</translation>
    </message>
    <message>
        <source>Trigger</source>
        <translation>Trigger</translation>
    </message>
    <message>
        <source>Acquisition</source>
        <translation>Aufnahme</translation>
    </message>
    <message>
        <source>Quick Settings: Trigger Mode</source>
        <translation>Schnelleinstellungen: Triggermodus</translation>
    </message>
    <message>
        <source>Source:</source>
        <translation>Quelle:</translation>
    </message>
    <message>
        <source>Activ.:</source>
        <translation>Aktiv.:</translation>
    </message>
    <message>
        <source>Selector:</source>
        <translation>Auswahl:</translation>
    </message>
    <message>
        <source>Mode:</source>
        <translation>Modus:</translation>
    </message>
    <message>
        <source>FrameCount:</source>
        <translation>Bildanzahl:</translation>
    </message>
    <message>
        <source>SW Trigger</source>
        <translation>SW-Trigger</translation>
    </message>
    <message>
        <source>Line Sel.:</source>
        <translation>Leitung:</translation>
    </message>
    <message>
        <source>Rout.:</source>
        <translation>Weiterl.:</translation>
    </message>
    <message>
        <source>Edge</source>
        <translation>Flanke</translation>
    </message>
    <message>
        <source>Level</source>
        <translation>Pegel</translation>
    </message>
    <message>
        <source>Bulk</source>
        <translation>Serie</translation>
    </message>
    <message>
        <source>LineOutSource:</source>
        <translation>LineOutSource:</translation>
    </message>
    <message>
        <source>SyncOutSource:</source>
        <translation>SyncOutSource:</translation>
    </message>
    <message>
        <source>LineSource:</source>
        <translation>LineSource:</translation>
    </message>
    <message>
        <source>Polarity:</source>
        <translation>Polarität:</translation>
    </message>
    <message>
        <source>Invert:</source>
        <translation>Invertiert:</translation>
    </message>
    <message>
        <source>Status:</source>
        <translation>Status:</translation>
    </message>
    <message>
        <source>UserOutSel.:</source>
        <translation>Benutzerausg.:</translation>
    </message>
    <message>
        <source>User Value:</source>
        <translation>Benutzerwert:</translation>
    </message>
</context>
</TS>
