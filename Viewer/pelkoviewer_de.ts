<?xml version="1.0" encoding="utf-8"?>
<!DOCTYPE TS>
<TS version="2.1" language="de_DE">
<context>
    <name>CameraListDialog</name>
    <message>
        <source>Open Camera</source>
        <translation>Kamera öffnen</translation>
    </message>
    <message>
        <source>Cameras the SDK can reach:</source>
        <translation>Kameras, die das SDK erreicht:</translation>
    </message>
</context>
<context>
    <name>FeatureTableModel</name>
    <message>
        <source>Feature %1 will not update live: registering the observer failed with %2</source>
        <translation>Feature %1 wird nicht live aktualisiert: Registrieren des Beobachters schlug fehl mit %2</translation>
    </message>
    <message>
        <source>read/write</source>
        <translation>lesen/schreiben</translation>
    </message>
    <message>
        <source>read-only</source>
        <translation>nur lesen</translation>
    </message>
    <message>
        <source>Available now: </source>
        <translation>Jetzt verfügbar: </translation>
    </message>
    <message>
        <source>Feature</source>
        <translation>Feature</translation>
    </message>
    <message>
        <source>Type</source>
        <translation>Typ</translation>
    </message>
    <message>
        <source>Value</source>
        <translation>Wert</translation>
    </message>
    <message>
        <source>Access</source>
        <translation>Zugriff</translation>
    </message>
    <message>
        <source>Feature %1 of type %2 cannot be edited</source>
        <translation>Feature %1 vom Typ %2 kann nicht bearbeitet werden</translation>
    </message>
    <message>
        <source>&quot;%1&quot; is no value for %2 (%3)</source>
        <translation>„%1“ ist kein Wert für %2 (%3)</translation>
    </message>
    <message>
        <source>Could not set %1 to &quot;%2&quot;: %3</source>
        <translation>%1 konnte nicht auf „%2“ gesetzt werden: %3</translation>
    </message>
</context>
<context>
    <name>FeaturesTab</name>
    <message>
        <source>Filter by feature name</source>
        <translation>Nach Feature-Namen filtern</translation>
    </message>
</context>
<context>
    <name>LiveImageView</name>
    <message>
        <source>Frames the camera delivered since it was opened</source>
        <translation>Bilder, die die Kamera seit dem Öffnen geliefert hat</translation>
    </message>
    <message>
        <source>Frames per second over the last second</source>
        <translation>Bilder pro Sekunde in der letzten Sekunde</translation>
    </message>
    <message>
        <source>Frames: %1</source>
        <translation>Bilder: %1</translation>
    </message>
    <message>
        <source>No frame yet</source>
        <translation>Noch kein Bild</translation>
    </message>
    <message>
        <source>No camera open</source>
        <translation>Keine Kamera geöffnet</translation>
    </message>
</context>
<context>
    <name>MainWindow</name>
    <message>
        <source>Open Camera…</source>
        <translation>Kamera öffnen…</translation>
    </message>
    <message>
        <source>Start Acquisition</source>
        <translation>Aufnahme starten</translation>
    </message>
    <message>
        <source>Frames the camera delivered since it was opened</source>
        <translation>Bilder, die die Kamera seit dem Öffnen geliefert hat</translation>
    </message>
    <message>
        <source>Features</source>
        <translation>Features</translation>
    </message>
    <message>
        <source>Viewer messages</source>
        <translation>Meldungen des Viewers</translation>
    </message>
    <message>
        <source>Frames:</source>
        <translation>Bilder:</translation>
    </message>
    <message>
        <source>&amp;Camera</source>
        <translation>&amp;Kamera</translation>
    </message>
    <message>
        <source>&amp;Open Camera…</source>
        <translation>Kamera ö&amp;ffnen…</translation>
    </message>
    <message>
        <source>Start/Stop &amp;Acquisition</source>
        <translation>&amp;Aufnahme starten/stoppen</translation>
    </message>
    <message>
        <source>&amp;Save Settings…</source>
        <translation>Einstellungen &amp;speichern…</translation>
    </message>
    <message>
        <source>&amp;Load Settings…</source>
        <translation>Einstellungen &amp;laden…</translation>
    </message>
    <message>
        <source>Compare &amp;With File…</source>
        <translation>Mit &amp;Datei vergleichen…</translation>
    </message>
    <message>
        <source>&amp;Quit</source>
        <translation>&amp;Beenden</translation>
    </message>
    <message>
        <source>%1 tab plug-in(s) loaded</source>
        <translation>%1 Tab-Plug-in(s) geladen</translation>
    </message>
    <message>
        <source>No camera with ID %1 (%2); known cameras: %3</source>
        <translation>Keine Kamera mit der ID %1 (%2); bekannte Kameras: %3</translation>
    </message>
    <message>
        <source>Could not open camera %1: %2</source>
        <translation>Kamera %1 konnte nicht geöffnet werden: %2</translation>
    </message>
    <message>
        <source>Could not open camera %1: %2: %3</source>
        <translation>Kamera %1 konnte nicht geöffnet werden: %2: %3</translation>
    </message>
    <message>
        <source>Could not read the features of camera %1: %2</source>
        <translation>Die Features der Kamera %1 konnten nicht gelesen werden: %2</translation>
    </message>
    <message>
        <source>Opened camera %1 with %2 features</source>
        <translation>Kamera %1 mit %2 Features geöffnet</translation>
    </message>
    <message>
        <source>Could not stop acquisition of camera %1: %2</source>
        <translation>Die Aufnahme der Kamera %1 konnte nicht gestoppt werden: %2</translation>
    </message>
    <message>
        <source>Could not close camera %1: %2</source>
        <translation>Kamera %1 konnte nicht geschlossen werden: %2</translation>
    </message>
    <message>
        <source>threw %1</source>
        <translation>warf %1</translation>
    </message>
    <message>
        <source>threw an exception</source>
        <translation>warf eine Ausnahme</translation>
    </message>
    <message>
        <source>does not support the camera (code 4)</source>
        <translation>unterstützt die Kamera nicht (Code 4)</translation>
    </message>
    <message>
        <source>failed with code %1</source>
        <translation>schlug mit Code %1 fehl</translation>
    </message>
    <message>
        <source>Camera %1 does not support the %2 tab; tab removed</source>
        <translation>Kamera %1 unterstützt den Tab %2 nicht; Tab entfernt</translation>
    </message>
    <message>
        <source>Plug-in %1 could not make its tab for camera %2: it %3; tab removed</source>
        <translation>Plug-in %1 konnte seinen Tab für Kamera %2 nicht anlegen: es %3; Tab entfernt</translation>
    </message>
    <message>
        <source>No camera is open</source>
        <translation>Keine Kamera ist geöffnet</translation>
    </message>
    <message>
        <source>Camera %1 was lost; open it again to retry</source>
        <translation>Kamera %1 ging verloren; zum erneuten Versuch wieder öffnen</translation>
    </message>
    <message>
        <source>Could not start acquisition of camera %1: %2</source>
        <translation>Die Aufnahme der Kamera %1 konnte nicht gestartet werden: %2</translation>
    </message>
    <message>
        <source>Acquisition started</source>
        <translation>Aufnahme gestartet</translation>
    </message>
    <message>
        <source>Acquisition stopped</source>
        <translation>Aufnahme gestoppt</translation>
    </message>
    <message>
        <source>Camera %1 is no longer open; it was closed or lost</source>
        <translation>Kamera %1 ist nicht mehr geöffnet; sie wurde geschlossen oder ging verloren</translation>
    </message>
    <message>
        <source>Camera %1 was lost</source>
        <translation>Kamera %1 ging verloren</translation>
    </message>
    <message>
        <source>&lt;b&gt;No camera open&lt;/b&gt;</source>
        <translation>&lt;b&gt;Keine Kamera geöffnet&lt;/b&gt;</translation>
    </message>
    <message>
        <source>○ Closed</source>
        <translation>○ Geschlossen</translation>
    </message>
    <message>
        <source>ID %1, model %2</source>
        <translation>ID %1, Modell %2</translation>
    </message>
    <message>
        <source>&lt;span style=&quot;color:#1a7f37&quot;&gt;●&lt;/span&gt; Acquiring</source>
        <translation>&lt;span style=&quot;color:#1a7f37&quot;&gt;●&lt;/span&gt; Nimmt auf</translation>
    </message>
    <message>
        <source>&lt;span style=&quot;color:#888888&quot;&gt;●&lt;/span&gt; Idle</source>
        <translation>&lt;span style=&quot;color:#888888&quot;&gt;●&lt;/span&gt; Bereit</translation>
    </message>
    <message>
        <source>&lt;span style=&quot;color:#cf222e&quot;&gt;●&lt;/span&gt; Lost</source>
        <translation>&lt;span style=&quot;color:#cf222e&quot;&gt;●&lt;/span&gt; Verloren</translation>
    </message>
    <message>
        <source>PelkoViewer — %1 (lost)</source>
        <translation>PelkoViewer — %1 (verloren)</translation>
    </message>
    <message>
        <source>Stop Acquisition</source>
        <translation>Aufnahme stoppen</translation>
    </message>
    <message>
        <source>Could not save the settings of camera %1: %2; %3 not written</source>
        <translation>Die Einstellungen der Kamera %1 konnten nicht gespeichert werden: %2; %3 nicht geschrieben</translation>
    </message>
    <message>
        <source>Could not save the settings: %1</source>
        <translation>Die Einstellungen konnten nicht gespeichert werden: %1</translation>
    </message>
    <message>
        <source>Saved %1 values of camera %2 to %3</source>
        <translation>%1 Werte der Kamera %2 in %3 gespeichert</translation>
    </message>
    <message>
        <source>A load of settings is running already</source>
        <translation>Es werden bereits Einstellungen geladen</translation>
    </message>
    <message>
        <source>Could not load the settings: %1</source>
        <translation>Die Einstellungen konnten nicht geladen werden: %1</translation>
    </message>
    <message>
        <source>Load Settings</source>
        <translation>Einstellungen laden</translation>
    </message>
    <message numerus="yes">
        <source>The file has %n error(s); nothing has been written.</source>
        <translation>
            <numerusform>Die Datei hat %n Fehler; nichts wurde geschrieben.</numerusform>
            <numerusform>Die Datei hat %n Fehler; nichts wurde geschrieben.</numerusform>
        </translation>
    </message>
    <message>
        <source>Write the entries without errors?</source>
        <translation>Die Einträge ohne Fehler schreiben?</translation>
    </message>
    <message>
        <source>Load the Rest</source>
        <translation>Den Rest laden</translation>
    </message>
    <message>
        <source>Loading %1 into camera %2</source>
        <translation>%1 wird in Kamera %2 geladen</translation>
    </message>
    <message>
        <source>Could not compare with the file: %1</source>
        <translation>Vergleich mit der Datei nicht möglich: %1</translation>
    </message>
    <message>
        <source>Compare With File</source>
        <translation>Mit Datei vergleichen</translation>
    </message>
    <message>
        <source>Could not compare camera %1 with %2: %3</source>
        <translation>Kamera %1 konnte nicht mit %2 verglichen werden: %3</translation>
    </message>
    <message>
        <source>%1: camera %2, file %3</source>
        <translation>%1: Kamera %2, Datei %3</translation>
    </message>
    <message>
        <source>%1: %2</source>
        <translation>%1: %2</translation>
    </message>
    <message>
        <source>The camera holds every value of %1 (%2 values).</source>
        <translation>Die Kamera hat jeden Wert aus %1 (%2 Werte).</translation>
    </message>
    <message numerus="yes">
        <source>%n value(s) of the camera differ from %1</source>
        <translation>
            <numerusform>%n Wert der Kamera weicht von %1 ab</numerusform>
            <numerusform>%n Werte der Kamera weichen von %1 ab</numerusform>
        </translation>
    </message>
    <message>
        <source>Settings (*.json)</source>
        <translation>Einstellungen (*.json)</translation>
    </message>
    <message>
        <source>GenICam persistence text (*.txt *.pfs)</source>
        <translation>GenICam-Persistenztext (*.txt *.pfs)</translation>
    </message>
    <message>
        <source>Only trigger and I/O, settings (*.json)</source>
        <translation>Nur Trigger und I/O, Einstellungen (*.json)</translation>
    </message>
    <message>
        <source>Save Settings</source>
        <translation>Einstellungen speichern</translation>
    </message>
    <message>
        <source>Settings (*.json *.txt *.pfs);;All files (*)</source>
        <translation>Einstellungen (*.json *.txt *.pfs);;Alle Dateien (*)</translation>
    </message>
</context>
<context>
    <name>SettingsLoadDialog</name>
    <message>
        <source>applied</source>
        <translation>übernommen</translation>
    </message>
    <message>
        <source>adjusted</source>
        <translation>angepasst</translation>
    </message>
    <message>
        <source>refused</source>
        <translation>abgelehnt</translation>
    </message>
    <message>
        <source>not available now</source>
        <translation>derzeit nicht verfügbar</translation>
    </message>
    <message>
        <source>skipped</source>
        <translation>übersprungen</translation>
    </message>
    <message>
        <source>not written</source>
        <translation>nicht geschrieben</translation>
    </message>
    <message>
        <source>Only problems</source>
        <translation>Nur Probleme</translation>
    </message>
    <message>
        <source>Cancel</source>
        <translation>Abbrechen</translation>
    </message>
    <message>
        <source>Close</source>
        <translation>Schließen</translation>
    </message>
    <message>
        <source>Load Settings — %1</source>
        <translation>Einstellungen laden — %1</translation>
    </message>
    <message>
        <source>Loading %1 into the camera…</source>
        <translation>%1 wird in die Kamera geladen…</translation>
    </message>
    <message>
        <source>Result</source>
        <translation>Ergebnis</translation>
    </message>
    <message>
        <source>Feature</source>
        <translation>Feature</translation>
    </message>
    <message>
        <source>File</source>
        <translation>Datei</translation>
    </message>
    <message>
        <source>Camera</source>
        <translation>Kamera</translation>
    </message>
    <message>
        <source>Message</source>
        <translation>Meldung</translation>
    </message>
    <message>
        <source>Cancelling: the load stops before its next write…</source>
        <translation>Abbruch: Das Laden endet vor dem nächsten Schreiben…</translation>
    </message>
    <message>
        <source>All settings applied.</source>
        <translation>Alle Einstellungen übernommen.</translation>
    </message>
    <message>
        <source>Some settings were not applied.</source>
        <translation>Einige Einstellungen wurden nicht übernommen.</translation>
    </message>
    <message>
        <source>The file has errors; nothing was written.</source>
        <translation>Die Datei enthält Fehler; nichts wurde geschrieben.</translation>
    </message>
    <message>
        <source>The current values could not be kept; nothing was written.</source>
        <translation>Die aktuellen Werte konnten nicht gesichert werden; nichts wurde geschrieben.</translation>
    </message>
    <message>
        <source>Cancelled; the table shows what was written.</source>
        <translation>Abgebrochen; die Tabelle zeigt, was geschrieben wurde.</translation>
    </message>
    <message>
        <source>Stopped at the first error; the values written were put back.</source>
        <translation>Beim ersten Fehler angehalten; die geschriebenen Werte wurden zurückgesetzt.</translation>
    </message>
    <message>
        <source>Stopped at the first error.</source>
        <translation>Beim ersten Fehler angehalten.</translation>
    </message>
    <message>
        <source>The camera stopped answering; the table shows what was written.</source>
        <translation>Die Kamera antwortet nicht mehr; die Tabelle zeigt, was geschrieben wurde.</translation>
    </message>
</context>
<context>
    <name>SettingsLoadJob</name>
    <message>
        <source>The camera&apos;s features cannot be read (%1); nothing was written.</source>
        <translation>Die Features der Kamera können nicht gelesen werden (%1); nichts wurde geschrieben.</translation>
    </message>
</context>
</TS>
