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
<context>
    <name>TimingSketchView</name>
    <message>
        <source>Trigger</source>
        <translation>Trigger</translation>
    </message>
    <message>
        <source>Exposure</source>
        <translation>Belichtung</translation>
    </message>
    <message>
        <source>Readout</source>
        <translation>Auslesen</translation>
    </message>
    <message>
        <source>free run</source>
        <translation>Freilauf</translation>
    </message>
    <message>
        <source>software trigger</source>
        <translation>Software-Trigger</translation>
    </message>
    <message>
        <source>%1, %2 (second edge missed)</source>
        <translation>%1, %2 (zweite Flanke verpasst)</translation>
    </message>
    <message>
        <source>%1, %2</source>
        <translation>%1, %2</translation>
    </message>
    <message>
        <source>as long as the trigger</source>
        <translation>so lange wie der Trigger</translation>
    </message>
    <message>
        <source>%1 µs</source>
        <translation>%1 µs</translation>
    </message>
    <message>
        <source>, delay %1 µs</source>
        <translation>, Verzögerung %1 µs</translation>
    </message>
    <message>
        <source>unknown</source>
        <translation>unbekannt</translation>
    </message>
    <message>
        <source>(unknown)</source>
        <translation>(unbekannt)</translation>
    </message>
    <message>
        <source>(inverted)</source>
        <translation>(invertiert)</translation>
    </message>
    <message>
        <source>one cycle: %1 µs</source>
        <translation>ein Zyklus: %1 µs</translation>
    </message>
</context>
<context>
    <name>WiringSelfTest</name>
    <message>
        <source>The camera started to acquire; the test was stopped and the output restored.</source>
        <translation>Die Kamera hat die Aufnahme begonnen; der Test wurde abgebrochen und der Ausgang wiederhergestellt.</translation>
    </message>
    <message>
        <source>A wiring test is running already.</source>
        <translation>Ein Verdrahtungstest läuft bereits.</translation>
    </message>
    <message>
        <source>There is no camera.</source>
        <translation>Es ist keine Kamera da.</translation>
    </message>
    <message>
        <source>The camera acquires: stop the acquisition before testing the wiring.</source>
        <translation>Die Kamera nimmt auf: Beenden Sie die Aufnahme, bevor Sie die Verdrahtung testen.</translation>
    </message>
    <message>
        <source>The camera has no output lines to test.</source>
        <translation>Die Kamera hat keine Ausgänge zum Testen.</translation>
    </message>
    <message>
        <source>Writing the user output of %1 failed; %2</source>
        <translation>Das Schreiben des Benutzerausgangs von %1 ist fehlgeschlagen; %2</translation>
    </message>
    <message>
        <source>the output was restored.</source>
        <translation>der Ausgang wurde wiederhergestellt.</translation>
    </message>
    <message>
        <source>not everything could be restored.</source>
        <translation>nicht alles konnte wiederhergestellt werden.</translation>
    </message>
    <message>
        <source>%1 could not be restored.</source>
        <translation>%1 konnte nicht wiederhergestellt werden.</translation>
    </message>
    <message>
        <source>The settings of %1 could not be read; nothing was changed.</source>
        <translation>Die Einstellungen von %1 konnten nicht gelesen werden; nichts wurde geändert.</translation>
    </message>
    <message>
        <source>the user output</source>
        <translation>der Benutzerausgang</translation>
    </message>
    <message>
        <source>Writing %1 of %2 failed; %3</source>
        <translation>Das Schreiben von %1 für %2 ist fehlgeschlagen; %3</translation>
    </message>
    <message>
        <source>The level of %1 could not be read; %2</source>
        <translation>Der Pegel von %1 konnte nicht gelesen werden; %2</translation>
    </message>
    <message>
        <source>The test was cancelled; the outputs were restored.</source>
        <translation>Der Test wurde abgebrochen; die Ausgänge wurden wiederhergestellt.</translation>
    </message>
    <message>
        <source>The test was cancelled; not everything could be restored.</source>
        <translation>Der Test wurde abgebrochen; nicht alles konnte wiederhergestellt werden.</translation>
    </message>
    <message>
        <source>%1 → (not tested: no user output)</source>
        <translation>%1 → (nicht getestet: kein Benutzerausgang)</translation>
    </message>
    <message>
        <source>%1 → (nothing)</source>
        <translation>%1 → (nichts)</translation>
    </message>
    <message>
        <source>%1 → %2 (inverted)</source>
        <translation>%1 → %2 (invertiert)</translation>
    </message>
    <message>
        <source>%1 → %2</source>
        <translation>%1 → %2</translation>
    </message>
    <message>
        <source>%1 of %2: %3</source>
        <translation>%1 von %2: %3</translation>
    </message>
</context>
<context>
    <name>WiringSelfTestPanel</name>
    <message>
        <source>Test wiring…</source>
        <translation>Verdrahtung testen…</translation>
    </message>
    <message>
        <source>Cancel</source>
        <translation>Abbrechen</translation>
    </message>
    <message>
        <source>Restore outputs</source>
        <translation>Ausgänge wiederherstellen</translation>
    </message>
    <message>
        <source>Output → input</source>
        <translation>Ausgang → Eingang</translation>
    </message>
    <message>
        <source>The camera acquires: stop the acquisition before testing the wiring.</source>
        <translation>Die Kamera nimmt auf: Beenden Sie die Aufnahme, bevor Sie die Verdrahtung testen.</translation>
    </message>
    <message>
        <source>Test wiring</source>
        <translation>Verdrahtung testen</translation>
    </message>
    <message>
        <source>The test switches every output line to a user output and toggles it several times. Strobes, lights and actuators connected to the outputs may fire. The outputs&apos; settings are restored afterwards.

Start the test?</source>
        <translation>Der Test schaltet jeden Ausgang auf einen Benutzerausgang und schaltet ihn mehrmals um. An die Ausgänge angeschlossene Blitze, Leuchten und Aktoren können auslösen. Die Einstellungen der Ausgänge werden danach wiederhergestellt.

Test starten?</translation>
    </message>
    <message>
        <source>Testing the wiring…</source>
        <translation>Die Verdrahtung wird getestet…</translation>
    </message>
    <message>
        <source>The outputs were restored.</source>
        <translation>Die Ausgänge wurden wiederhergestellt.</translation>
    </message>
    <message>
        <source>Still not restored: %1</source>
        <translation>Noch nicht wiederhergestellt: %1</translation>
    </message>
    <message>
        <source>The wiring test is done.</source>
        <translation>Der Verdrahtungstest ist abgeschlossen.</translation>
    </message>
    <message>
        <source>Not restored: %1</source>
        <translation>Nicht wiederhergestellt: %1</translation>
    </message>
</context>
</TS>
