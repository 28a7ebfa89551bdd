<?xml version="1.0" encoding="utf-8"?>
<!DOCTYPE TS>
<TS version="2.1" language="de_DE">
<context>
    <name>IOMonitorWidget</name>
    <message>
        <source>I/O Monitor</source>
        <translation>E/A-Monitor</translation>
    </message>
    <message>
        <source>Lines</source>
        <translation>Leitungen</translation>
    </message>
    <message>
        <source>Line</source>
        <translation>Leitung</translation>
    </message>
    <message>
        <source>Direction</source>
        <translation>Richtung</translation>
    </message>
    <message>
        <source>Source</source>
        <translation>Quelle</translation>
    </message>
    <message>
        <source>Inverted</source>
        <translation>Invertiert</translation>
    </message>
    <message>
        <source>Level</source>
        <translation>Pegel</translation>
    </message>
    <message>
        <source>Counters</source>
        <translation>Zähler</translation>
    </message>
    <message>
        <source>Frames</source>
        <translation>Bilder</translation>
    </message>
    <message>
        <source>Frame triggers</source>
        <translation>Bild-Trigger</translation>
    </message>
    <message>
        <source>Missed triggers</source>
        <translation>Verpasste Trigger</translation>
    </message>
    <message>
        <source>Software triggers</source>
        <translation>Software-Trigger</translation>
    </message>
    <message>
        <source>Reset</source>
        <translation>Zurücksetzen</translation>
    </message>
    <message>
        <source>Not streaming</source>
        <translation>Keine Aufnahme</translation>
    </message>
    <message>
        <source>Signals</source>
        <translation>Signale</translation>
    </message>
    <message>
        <source>Pulses shorter than the poll period show in the counters, not in the strip.</source>
        <translation>Pulse, die kürzer als die Abfrageperiode sind, erscheinen in den Zählern, nicht im Streifen.</translation>
    </message>
    <message>
        <source>Poll rate</source>
        <translation>Abfragerate</translation>
    </message>
    <message>
        <source> Hz</source>
        <translation> Hz</translation>
    </message>
    <message>
        <source>Window</source>
        <translation>Fenster</translation>
    </message>
    <message>
        <source> s</source>
        <translation> s</translation>
    </message>
    <message>
        <source>Freeze</source>
        <translation>Anhalten</translation>
    </message>
    <message>
        <source>Click the strip to place the cursor.</source>
        <translation>In den Streifen klicken, um den Cursor zu setzen.</translation>
    </message>
    <message>
        <source>Output</source>
        <translation>Ausgang</translation>
    </message>
    <message>
        <source>Input</source>
        <translation>Eingang</translation>
    </message>
    <message>
        <source>yes</source>
        <translation>ja</translation>
    </message>
    <message>
        <source>no</source>
        <translation>nein</translation>
    </message>
    <message>
        <source>The camera has no counter for this.</source>
        <translation>Die Kamera hat dafür keinen Zähler.</translation>
    </message>
    <message>
        <source>Counted by this tab while it is shown.</source>
        <translation>Gezählt von diesem Tab, solange er sichtbar ist.</translation>
    </message>
    <message>
        <source>The camera has no software trigger.</source>
        <translation>Die Kamera hat keinen Software-Trigger.</translation>
    </message>
    <message>
        <source>Streaming</source>
        <translation>Aufnahme läuft</translation>
    </message>
    <message>
        <source>Run</source>
        <translation>Weiter</translation>
    </message>
</context>
<context>
    <name>SignalStripView</name>
    <message>
        <source>t = %1 s</source>
        <translation>t = %1 s</translation>
    </message>
    <message>
        <source>Frames</source>
        <translation>Bilder</translation>
    </message>
</context>
</TS>
