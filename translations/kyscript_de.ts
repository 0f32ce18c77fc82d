<?xml version="1.0" encoding="utf-8"?>
<!DOCTYPE TS>
<TS version="2.1" language="de" sourcelanguage="en">
<context>
    <name>KyFileMenu</name>
    <message>
        <source>&amp;File</source>
        <translation>&amp;Datei</translation>
    </message>
    <message>
        <source>&amp;Open Folder…</source>
        <translation>Ordner ö&amp;ffnen …</translation>
    </message>
    <message>
        <source>Open the studies below a folder</source>
        <translation>Die Untersuchungen in einem Ordner öffnen</translation>
    </message>
    <message>
        <source>Open &amp;Additional Folder…</source>
        <translation>&amp;Weiteren Ordner öffnen …</translation>
    </message>
    <message>
        <source>Open the studies below a folder beside the primary ones, such as priors</source>
        <translation>Die Untersuchungen in einem Ordner neben den primären öffnen, etwa Voraufnahmen</translation>
    </message>
    <message>
        <source>&amp;Close All Studies</source>
        <translation>Alle Untersuchungen s&amp;chließen</translation>
    </message>
    <message>
        <source>Empty the study list</source>
        <translation>Die Liste der Untersuchungen leeren</translation>
    </message>
    <message>
        <source>&amp;Settings…</source>
        <translation>&amp;Einstellungen …</translation>
    </message>
    <message>
        <source>Change the settings of the application</source>
        <translation>Die Einstellungen der Anwendung ändern</translation>
    </message>
    <message>
        <source>&amp;Quit</source>
        <translation>&amp;Beenden</translation>
    </message>
    <message>
        <source>End the program</source>
        <translation>Das Programm beenden</translation>
    </message>
    <message>
        <source>Open Folder</source>
        <translation>Ordner öffnen</translation>
    </message>
</context>
<context>
    <name>KyHelpMenu</name>
    <message>
        <source>&amp;Help</source>
        <translation>&amp;Hilfe</translation>
    </message>
    <message>
        <source>&amp;About Ky Workstation</source>
        <translation>Ü&amp;ber Ky Workstation</translation>
    </message>
    <message>
        <source>About Ky Workstation</source>
        <translation>Über Ky Workstation</translation>
    </message>
    <message>
        <source>&lt;b&gt;Ky Workstation&lt;/b&gt; %1</source>
        <translation>&lt;b&gt;Ky Workstation&lt;/b&gt; %1</translation>
    </message>
    <message>
        <source>A workstation for DICOM studies that scripts can extend. Not for diagnosis.</source>
        <translation>Ein Arbeitsplatz für DICOM-Untersuchungen, den Skripte erweitern können. Nicht zur Befundung.</translation>
    </message>
</context>
<context>
    <name>KyImageViewer</name>
    <message>
        <source>Reading the series…</source>
        <translation>Die Serie wird gelesen …</translation>
    </message>
    <message>
        <source>This image cannot be shown: %1.</source>
        <translation>Dieses Bild kann nicht gezeigt werden: %1.</translation>
    </message>
    <message>
        <source>Second series: %1</source>
        <translation>Zweite Serie: %1</translation>
    </message>
    <message>
        <source>No fusion: %1</source>
        <translation>Keine Fusion: %1</translation>
    </message>
</context>
<context>
    <name>KyImageViewerWidget</name>
    <message>
        <source>Viewer %1</source>
        <translation>Bildfenster %1</translation>
    </message>
    <message>
        <source>Weight of the second series</source>
        <translation>Gewicht der zweiten Serie</translation>
    </message>
    <message>
        <source>Double-click a series, or drag it here</source>
        <translation>Eine Serie doppelt anklicken oder hierher ziehen</translation>
    </message>
</context>
<context>
    <name>KyLoadHelper</name>
    <message>
        <source>none</source>
        <translation>keine</translation>
    </message>
    <message>
        <source>The studies on the screen are not those of the other program.</source>
        <translation>Die Untersuchungen auf dem Bildschirm sind nicht die des anderen Programms.</translation>
    </message>
    <message>
        <source>Accession numbers there: %1
Accession numbers here: %2</source>
        <translation>Auftragsnummern dort: %1
Auftragsnummern hier: %2</translation>
    </message>
</context>
<context>
    <name>KyLoadingStatus</name>
    <message>
        <source>Progress of loading</source>
        <translation>Fortschritt des Ladens</translation>
    </message>
    <message>
        <source>Cancel</source>
        <translation>Abbrechen</translation>
    </message>
    <message>
        <source>Stop loading (Esc)</source>
        <translation>Das Laden abbrechen (Esc)</translation>
    </message>
    <message>
        <source>Studies: %1   Images: %2</source>
        <translation>Untersuchungen: %1   Bilder: %2</translation>
    </message>
    <message>
        <source>Reading %1</source>
        <translation>%1 wird gelesen</translation>
    </message>
    <message>
        <source>There is no DICOM study below %1</source>
        <translation>In %1 ist keine DICOM-Untersuchung</translation>
    </message>
    <message>
        <source>further folders that failed: %1</source>
        <translation>weitere Ordner mit Fehlern: %1</translation>
    </message>
    <message>
        <source>Opened %1 (images: %2)</source>
        <translation>%1 ist geöffnet (Bilder: %2)</translation>
    </message>
    <message>
        <source>Opened folders: %1 (images: %2)</source>
        <translation>Geöffnete Ordner: %1 (Bilder: %2)</translation>
    </message>
    <message>
        <source>files skipped: %1, see the log</source>
        <translation>übergangene Dateien: %1, siehe Protokoll</translation>
    </message>
    <message>
        <source>Loading was cancelled</source>
        <translation>Das Laden wurde abgebrochen</translation>
    </message>
</context>
<context>
    <name>KyLogModel</name>
    <message>
        <source>Operation</source>
        <translation>Vorgang</translation>
    </message>
    <message>
        <source>Detail</source>
        <translation>Einzelheit</translation>
    </message>
    <message>
        <source>Warning</source>
        <translation>Warnung</translation>
    </message>
    <message>
        <source>Error</source>
        <translation>Fehler</translation>
    </message>
    <message>
        <source>Time</source>
        <translation>Zeit</translation>
    </message>
    <message>
        <source>Level</source>
        <translation>Stufe</translation>
    </message>
    <message>
        <source>Context</source>
        <translation>Bereich</translation>
    </message>
    <message>
        <source>Text</source>
        <translation>Text</translation>
    </message>
</context>
<context>
    <name>KyLogPane</name>
    <message>
        <source>All levels</source>
        <translation>Alle Stufen</translation>
    </message>
    <message>
        <source>Errors</source>
        <translation>Fehler</translation>
    </message>
    <message>
        <source>%1 and above</source>
        <translation>%1 und höher</translation>
    </message>
    <message>
        <source>Least level on view</source>
        <translation>Niedrigste gezeigte Stufe</translation>
    </message>
    <message>
        <source>Search the log</source>
        <translation>Im Protokoll suchen</translation>
    </message>
    <message>
        <source>Log</source>
        <translation>Protokoll</translation>
    </message>
    <message>
        <source>&amp;Copy</source>
        <translation>&amp;Kopieren</translation>
    </message>
    <message>
        <source>&amp;Clear</source>
        <translation>&amp;Leeren</translation>
    </message>
    <message>
        <source>&amp;Level:</source>
        <translation>Stu&amp;fe:</translation>
    </message>
</context>
<context>
    <name>KyMainWindow</name>
    <message>
        <source>&amp;View</source>
        <translation>&amp;Ansicht</translation>
    </message>
    <message>
        <source>Ky Workstation</source>
        <translation>Ky Workstation</translation>
    </message>
    <message>
        <source>&amp;Log</source>
        <translation>&amp;Protokoll</translation>
    </message>
    <message>
        <source>Script &amp;Output</source>
        <translation>Skript&amp;ausgabe</translation>
    </message>
    <message>
        <source>&amp;Tool Bar</source>
        <translation>&amp;Werkzeugleiste</translation>
    </message>
    <message>
        <source>&amp;Session Log</source>
        <translation>&amp;Sitzungsprotokoll</translation>
    </message>
</context>
<context>
    <name>KyPropertyEditor</name>
    <message>
        <source>Reset</source>
        <translation>Zurücksetzen</translation>
    </message>
    <message>
        <source>Back to the default</source>
        <translation>Auf die Vorgabe zurücksetzen</translation>
    </message>
    <message>
        <source>Reset %1</source>
        <translation>%1 zurücksetzen</translation>
    </message>
    <message>
        <source>%1 (set by a script)</source>
        <translation>%1 (von einem Skript gesetzt)</translation>
    </message>
    <message>
        <source>Texts with commas between them</source>
        <translation>Texte mit Kommas dazwischen</translation>
    </message>
    <message>
        <source>Not set</source>
        <translation>Nicht gesetzt</translation>
    </message>
</context>
<context>
    <name>KyReportPanel</name>
    <message>
        <source>Report</source>
        <translation>Befund</translation>
    </message>
    <message>
        <source>The report</source>
        <translation>Der Befund</translation>
    </message>
    <message>
        <source>B</source>
        <comment>bold</comment>
        <translation>F</translation>
    </message>
    <message>
        <source>Bold</source>
        <translation>Fett</translation>
    </message>
    <message>
        <source>I</source>
        <comment>italic</comment>
        <translation>K</translation>
    </message>
    <message>
        <source>Italic</source>
        <translation>Kursiv</translation>
    </message>
    <message>
        <source>U</source>
        <comment>underlined</comment>
        <translation>U</translation>
    </message>
    <message>
        <source>Underlined</source>
        <translation>Unterstrichen</translation>
    </message>
    <message>
        <source>Undo</source>
        <translation>Rückgängig</translation>
    </message>
    <message>
        <source>Take the last change back</source>
        <translation>Die letzte Änderung zurücknehmen</translation>
    </message>
    <message>
        <source>Redo</source>
        <translation>Wiederholen</translation>
    </message>
    <message>
        <source>Make the change again that was taken back</source>
        <translation>Die zurückgenommene Änderung noch einmal vornehmen</translation>
    </message>
    <message>
        <source>Read Only</source>
        <translation>Schreibschutz</translation>
    </message>
    <message>
        <source>Guard the report against changes, also those of scripts</source>
        <translation>Den Befund vor Änderungen schützen, auch vor denen von Skripten</translation>
    </message>
</context>
<context>
    <name>KyScriptDialog</name>
    <message>
        <source>Text</source>
        <translation>Text</translation>
    </message>
    <message>
        <source>Input</source>
        <translation>Eingabe</translation>
    </message>
</context>
<context>
    <name>KyScriptFileDialog</name>
    <message>
        <source>Save as...</source>
        <translation>Speichern unter …</translation>
    </message>
</context>
<context>
    <name>KyScriptOutputPane</name>
    <message>
        <source>Script output</source>
        <translation>Skriptausgabe</translation>
    </message>
    <message>
        <source>Cle&amp;ar</source>
        <translation>L&amp;eeren</translation>
    </message>
    <message>
        <source>Empty the script output</source>
        <translation>Die Skriptausgabe leeren</translation>
    </message>
    <message>
        <source>it is not UTF-8</source>
        <translation>es ist kein UTF-8</translation>
    </message>
    <message>
        <source>Cannot read the script %1: %2</source>
        <translation>Das Skript %1 ist nicht lesbar: %2</translation>
    </message>
    <message>
        <source>Running %1</source>
        <translation>%1 läuft</translation>
    </message>
</context>
<context>
    <name>KyScriptingMenu</name>
    <message>
        <source>&amp;Scripting</source>
        <translation>&amp;Skripte</translation>
    </message>
    <message>
        <source>Re&amp;cent Scripts</source>
        <translation>&amp;Zuletzt ausgeführte Skripte</translation>
    </message>
    <message>
        <source>&amp;Run Script…</source>
        <translation>Skript aus&amp;führen …</translation>
    </message>
    <message>
        <source>Run a JavaScript file on the default engine</source>
        <translation>Eine JavaScript-Datei auf der Standard-Engine ausführen</translation>
    </message>
    <message>
        <source>Consoles</source>
        <translation>Konsolen</translation>
    </message>
    <message>
        <source>&amp;New Console…</source>
        <translation>&amp;Neue Konsole …</translation>
    </message>
    <message>
        <source>Open the console of an engine with another name</source>
        <translation>Die Konsole einer Engine mit anderem Namen öffnen</translation>
    </message>
    <message>
        <source>Run Script</source>
        <translation>Skript ausführen</translation>
    </message>
    <message>
        <source>Scripts (*.js);;All files (*)</source>
        <translation>Skripte (*.js);;Alle Dateien (*)</translation>
    </message>
    <message>
        <source>&amp;Clear List</source>
        <translation>Liste &amp;leeren</translation>
    </message>
    <message>
        <source>&amp;Default Console</source>
        <translation>&amp;Standardkonsole</translation>
    </message>
    <message>
        <source>Console “%1”</source>
        <translation>Konsole „%1“</translation>
    </message>
    <message>
        <source>New Console</source>
        <translation>Neue Konsole</translation>
    </message>
    <message>
        <source>&amp;Name of the engine:</source>
        <translation>&amp;Name der Engine:</translation>
    </message>
</context>
<context>
    <name>KyScriptingWindow</name>
    <message>
        <source>A script of this engine is still running. The new engine comes when it has ended.</source>
        <translation>Ein Skript dieser Engine läuft noch. Die neue Engine kommt, wenn es geendet hat.</translation>
    </message>
    <message>
        <source>Ends this engine and starts a fresh one. Modules that hold the engine of this name lose it until the next start.</source>
        <translation>Beendet diese Engine und startet eine frische. Module, die die Engine dieses Namens halten, verlieren sie bis zum nächsten Start.</translation>
    </message>
    <message>
        <source>Output (the oldest lines are left out)</source>
        <translation>Ausgabe (ohne die ältesten Zeilen)</translation>
    </message>
    <message>
        <source>Run the selection, or else all of the input (F5)</source>
        <translation>Die Auswahl ausführen, sonst die ganze Eingabe (F5)</translation>
    </message>
    <message>
        <source>The script of this console is still running.</source>
        <translation>Das Skript dieser Konsole läuft noch.</translation>
    </message>
    <message>
        <source>Error (Line: %1): %2</source>
        <translation>Fehler (Zeile: %1): %2</translation>
    </message>
</context>
<context>
    <name>KyScriptingWindowBase</name>
    <message>
        <source>Console</source>
        <translation>Konsole</translation>
    </message>
    <message>
        <source>Input</source>
        <translation>Eingabe</translation>
    </message>
    <message>
        <source>Output</source>
        <translation>Ausgabe</translation>
    </message>
    <message>
        <source>New Engine</source>
        <translation>Neue Engine</translation>
    </message>
    <message>
        <source>Evaluate</source>
        <translation>Auswerten</translation>
    </message>
</context>
<context>
    <name>KySessionLogPane</name>
    <message>
        <source>There is no session log.</source>
        <translation>Es gibt kein Sitzungsprotokoll.</translation>
    </message>
    <message>
        <source>These lines are not kept in a file.</source>
        <translation>Diese Zeilen werden in keiner Datei aufbewahrt.</translation>
    </message>
    <message>
        <source>Open Fil&amp;e</source>
        <translation>Dat&amp;ei öffnen</translation>
    </message>
    <message>
        <source>Open the file that keeps the session log</source>
        <translation>Die Datei öffnen, die das Sitzungsprotokoll aufbewahrt</translation>
    </message>
</context>
<context>
    <name>KySettingsDialog</name>
    <message>
        <source>Settings</source>
        <translation>Einstellungen</translation>
    </message>
    <message>
        <source>Search the settings</source>
        <translation>In den Einstellungen suchen</translation>
    </message>
</context>
<context>
    <name>KySettingsTree</name>
    <message>
        <source>Settings</source>
        <translation>Einstellungen</translation>
    </message>
    <message>
        <source>Setting</source>
        <translation>Einstellung</translation>
    </message>
    <message>
        <source>Value</source>
        <translation>Wert</translation>
    </message>
</context>
<context>
    <name>KyStudyListModel</name>
    <message>
        <source>Additional study, loaded beside the primary ones</source>
        <translation>Weitere Untersuchung, neben den primären geladen</translation>
    </message>
    <message>
        <source>Patient</source>
        <translation>Patient</translation>
    </message>
    <message>
        <source>ID</source>
        <translation>ID</translation>
    </message>
    <message>
        <source>Birth date</source>
        <translation>Geburtsdatum</translation>
    </message>
    <message>
        <source>Study date</source>
        <translation>Untersuchungsdatum</translation>
    </message>
    <message>
        <source>Description</source>
        <translation>Beschreibung</translation>
    </message>
    <message>
        <source>Modalities</source>
        <translation>Modalitäten</translation>
    </message>
    <message>
        <source>Images</source>
        <translation>Bilder</translation>
    </message>
    <message>
        <source>Series %1</source>
        <translation>Serie %1</translation>
    </message>
</context>
<context>
    <name>KyStudyListView</name>
    <message>
        <source>Studies</source>
        <translation>Untersuchungen</translation>
    </message>
    <message>
        <source>No studies are open.
Open a folder of DICOM files with Ctrl+O, or drop it here.</source>
        <translation>Es sind keine Untersuchungen geöffnet.
Öffnen Sie einen Ordner mit DICOM-Dateien mit Strg+O oder legen Sie ihn hier ab.</translation>
    </message>
</context>
<context>
    <name>KyToolBarPanel</name>
    <message>
        <source>Tools</source>
        <translation>Werkzeuge</translation>
    </message>
</context>
<context>
    <name>KyViewerLayout</name>
    <message>
        <source>One Viewer</source>
        <translation>Ein Bildfenster</translation>
    </message>
    <message>
        <source>Two Viewers Side by Side</source>
        <translation>Zwei Bildfenster nebeneinander</translation>
    </message>
    <message>
        <source>Four Viewers</source>
        <translation>Vier Bildfenster</translation>
    </message>
</context>
<context>
    <name>KyViewerMenu</name>
    <message>
        <source>&amp;Soft Tissue</source>
        <translation>&amp;Weichteile</translation>
    </message>
    <message>
        <source>&amp;Lung</source>
        <translation>&amp;Lunge</translation>
    </message>
    <message>
        <source>&amp;Bone</source>
        <translation>&amp;Knochen</translation>
    </message>
    <message>
        <source>B&amp;rain</source>
        <translation>&amp;Gehirn</translation>
    </message>
    <message>
        <source>&amp;Vessels</source>
        <translation>Ge&amp;fäße</translation>
    </message>
    <message>
        <source>&amp;Images</source>
        <translation>&amp;Bilder</translation>
    </message>
    <message>
        <source>&amp;Window</source>
        <translation>&amp;Fenster</translation>
    </message>
    <message>
        <source>&amp;Fuse With</source>
        <translation>F&amp;usion mit</translation>
    </message>
    <message>
        <source>&amp;Reset</source>
        <translation>&amp;Zurücksetzen</translation>
    </message>
    <message>
        <source>Show the images as at first (R)</source>
        <translation>Die Bilder wie zu Anfang zeigen (R)</translation>
    </message>
    <message>
        <source>&amp;Empty the Viewer</source>
        <translation>Bildfenster &amp;leeren</translation>
    </message>
    <message>
        <source>Show nothing in the active viewer</source>
        <translation>Im aktiven Bildfenster nichts zeigen</translation>
    </message>
    <message>
        <source>&amp;One Viewer</source>
        <translation>&amp;Ein Bildfenster</translation>
    </message>
    <message>
        <source>&amp;Two Viewers</source>
        <translation>Z&amp;wei Bildfenster</translation>
    </message>
    <message>
        <source>Fo&amp;ur Viewers</source>
        <translation>&amp;Vier Bildfenster</translation>
    </message>
    <message>
        <source>&amp;Axial</source>
        <translation>&amp;Axial</translation>
    </message>
    <message>
        <source>Planes across the body (A)</source>
        <translation>Ebenen quer durch den Körper (A)</translation>
    </message>
    <message>
        <source>&amp;Sagittal</source>
        <translation>&amp;Sagittal</translation>
    </message>
    <message>
        <source>Planes between right and left (S)</source>
        <translation>Ebenen zwischen rechts und links (S)</translation>
    </message>
    <message>
        <source>&amp;Coronal</source>
        <translation>&amp;Koronal</translation>
    </message>
    <message>
        <source>Planes between front and back (C)</source>
        <translation>Ebenen zwischen vorn und hinten (C)</translation>
    </message>
    <message>
        <source>&amp;Of the Image</source>
        <translation>&amp;Des Bildes</translation>
    </message>
    <message>
        <source>&amp;All Values</source>
        <translation>&amp;Alle Werte</translation>
    </message>
    <message>
        <source>&amp;Invert</source>
        <translation>&amp;Invertieren</translation>
    </message>
    <message>
        <source>Swap black and white (I)</source>
        <translation>Schwarz und Weiß vertauschen (I)</translation>
    </message>
    <message>
        <source>&amp;Nothing</source>
        <translation>&amp;Nichts</translation>
    </message>
    <message>
        <source>%1 %2 of %3</source>
        <translation>%1 %2 vom %3</translation>
    </message>
</context>
<context>
    <name>KyViewerTexts</name>
    <message>
        <source>axial</source>
        <translation>axial</translation>
    </message>
    <message>
        <source>sagittal</source>
        <translation>sagittal</translation>
    </message>
    <message>
        <source>coronal</source>
        <translation>koronal</translation>
    </message>
    <message>
        <source>oblique</source>
        <translation>schräg</translation>
    </message>
    <message>
        <source>Slice %1 / %2</source>
        <translation>Schicht %1 / %2</translation>
    </message>
    <message>
        <source>Image %1 / %2</source>
        <translation>Bild %1 / %2</translation>
    </message>
    <message>
        <source>C %1  W %2</source>
        <translation>C %1  W %2</translation>
    </message>
    <message>
        <source>Fusion %1 %</source>
        <translation>Fusion %1 %</translation>
    </message>
    <message>
        <source>Reading %1 of %2</source>
        <translation>%1 von %2 gelesen</translation>
    </message>
</context>
<context>
    <name>KyViewerTools</name>
    <message>
        <source>One viewer</source>
        <translation>Ein Bildfenster</translation>
    </message>
    <message>
        <source>Two viewers</source>
        <translation>Zwei Bildfenster</translation>
    </message>
    <message>
        <source>Four viewers</source>
        <translation>Vier Bildfenster</translation>
    </message>
</context>
<context>
    <name>KyWorkstationOptions</name>
    <message>
        <source>Open the DICOM files below DIR (repeatable).</source>
        <translation>Die DICOM-Dateien in DIR öffnen (mehrfach möglich).</translation>
    </message>
    <message>
        <source>Open those below DIR as additional studies (repeatable).</source>
        <translation>Die in DIR als weitere Untersuchungen öffnen (mehrfach möglich).</translation>
    </message>
    <message>
        <source>Take the studies of --patient from the DICOMweb archive at URL (default: that of the profile&apos;s site.json).</source>
        <translation>Die Untersuchungen von --patient aus dem DICOMweb-Archiv unter URL nehmen (sonst aus dem in site.json des Profils).</translation>
    </message>
    <message>
        <source>Open the archive&apos;s studies of that patient (repeatable).</source>
        <translation>Die Untersuchungen dieses Patienten aus dem Archiv öffnen (mehrfach möglich).</translation>
    </message>
    <message>
        <source>Set an application property for this session (repeatable).</source>
        <translation>Eine Eigenschaft der Anwendung für diese Sitzung setzen (mehrfach möglich).</translation>
    </message>
    <message>
        <source>Keep settings and data below DIR instead of the user&apos;s configuration folder.</source>
        <translation>Einstellungen und Daten in DIR statt im Konfigurationsordner des Benutzers halten.</translation>
    </message>
    <message>
        <source>The configured HTTP proxy of the client.</source>
        <translation>Der eingestellte HTTP-Proxy des Clients.</translation>
    </message>
    <message>
        <source>Run the script FILE once the window is shown (repeatable).</source>
        <translation>Das Skript FILE ausführen, sobald das Fenster zu sehen ist (mehrfach möglich).</translation>
    </message>
    <message>
        <source>Write the log also to FILE, &quot;-&quot; for standard error.</source>
        <translation>Das Protokoll auch in FILE schreiben, &quot;-&quot; steht für die Fehlerausgabe.</translation>
    </message>
    <message>
        <source>--property needs ID=TEXT, not &quot;%1&quot;</source>
        <translation>--property braucht ID=TEXT, nicht &quot;%1&quot;</translation>
    </message>
    <message>
        <source>--proxy needs HOST:PORT, not &quot;%1&quot;</source>
        <translation>--proxy braucht HOST:PORT, nicht &quot;%1&quot;</translation>
    </message>
    <message>
        <source>A workstation for DICOM studies that scripts can extend.</source>
        <translation>Ein Arbeitsplatz für DICOM-Untersuchungen, den Skripte erweitern können.</translation>
    </message>
    <message>
        <source>Folders of studies to open; a file stands for its folder.</source>
        <translation>Ordner mit Untersuchungen; eine Datei steht für ihren Ordner.</translation>
    </message>
    <message>
        <source>Cannot write the log %1: %2</source>
        <translation>Das Protokoll %1 ist nicht schreibbar: %2</translation>
    </message>
    <message>
        <source>There is no property %1 that takes this text</source>
        <translation>Keine Eigenschaft %1 nimmt diesen Text an</translation>
    </message>
    <message>
        <source>Load a tool configuration file (repeatable).</source>
        <translation>Eine Werkzeugdatei laden (mehrfach möglich).</translation>
    </message>
</context>
<context>
    <name>KyWorkstationTools</name>
    <message>
        <source>&amp;Report</source>
        <translation>&amp;Befund</translation>
    </message>
    <message>
        <source>Report</source>
        <translation>Befund</translation>
    </message>
    <message>
        <source>Show the report editor</source>
        <translation>Den Befundeditor zeigen</translation>
    </message>
</context>
<context>
    <name>OvTexts</name>
    <message>
        <source>There are no images to fuse.</source>
        <translation>Es gibt keine Bilder für eine Fusion.</translation>
    </message>
    <message>
        <source>The images of the second series make up no volume.</source>
        <translation>Die Bilder der zweiten Serie bilden kein Volumen.</translation>
    </message>
    <message>
        <source>Colour images cannot be fused into others.</source>
        <translation>Farbbilder können nicht in andere fusioniert werden.</translation>
    </message>
    <message>
        <source>The images of the first series do not say where they lie.</source>
        <translation>Die Bilder der ersten Serie sagen nicht, wo sie liegen.</translation>
    </message>
    <message>
        <source>The two series have no common frame of reference.</source>
        <translation>Die beiden Serien haben kein gemeinsames Bezugssystem.</translation>
    </message>
    <message>
        <source>The file has no image (%1)</source>
        <translation>Die Datei hat kein Bild (%1)</translation>
    </message>
    <message>
        <source>no modality</source>
        <translation>ohne Modalität</translation>
    </message>
    <message>
        <source>The image has no sensible size (%1 x %2)</source>
        <translation>Das Bild hat keine sinnvolle Größe (%1 x %2)</translation>
    </message>
    <message>
        <source>The pixels are coded in an unknown way (%1 samples, %2 bits allocated, %3 stored, high bit %4)</source>
        <translation>Die Pixel sind auf unbekannte Weise kodiert (%1 Werte je Pixel, %2 Bits belegt, %3 gespeichert, höchstes Bit %4)</translation>
    </message>
    <message>
        <source>The look-up table of the values is malformed and not used</source>
        <translation>Die Umsetzungstabelle der Werte ist fehlerhaft und wird nicht verwendet</translation>
    </message>
    <message>
        <source>The rescale slope or intercept makes no sense: values are as stored</source>
        <translation>Steigung oder Achsenabschnitt der Werte ergeben keinen Sinn: Werte wie gespeichert</translation>
    </message>
    <message>
        <source>The number of frames makes no sense: only the first is shown</source>
        <translation>Die Zahl der Einzelbilder ergibt keinen Sinn: Nur das erste wird gezeigt</translation>
    </message>
    <message>
        <source>The image has %1 frames, more than can be shown</source>
        <translation>Das Bild hat %1 Einzelbilder, mehr als gezeigt werden können</translation>
    </message>
    <message>
        <source>its pixels describe another image than its header</source>
        <translation>seine Pixel beschreiben ein anderes Bild als sein Kopf</translation>
    </message>
    <message>
        <source>its pixels cannot be decoded (damaged)</source>
        <translation>seine Pixel sind nicht dekodierbar (beschädigt)</translation>
    </message>
    <message>
        <source>it ends in the midst of its pixels</source>
        <translation>es endet mitten in seinen Pixeln</translation>
    </message>
    <message>
        <source>its pixels cannot be decoded (%1)</source>
        <translation>seine Pixel sind nicht dekodierbar (%1)</translation>
    </message>
    <message>
        <source>its colours cannot be converted</source>
        <translation>seine Farben sind nicht umrechenbar</translation>
    </message>
    <message>
        <source>its file cannot be read (%1)</source>
        <translation>seine Datei ist nicht lesbar (%1)</translation>
    </message>
    <message>
        <source>it has no pixels</source>
        <translation>es hat keine Pixel</translation>
    </message>
    <message>
        <source>its pixels are coded in an unknown way</source>
        <translation>seine Pixel sind auf unbekannte Weise kodiert</translation>
    </message>
    <message>
        <source>its pixels cannot be decoded (%1: %2)</source>
        <translation>seine Pixel sind nicht dekodierbar (%1: %2)</translation>
    </message>
    <message>
        <source>The pixel spacing makes no sense</source>
        <translation>Der Pixelabstand ergibt keinen Sinn</translation>
    </message>
    <message>
        <source>The orientation makes no sense</source>
        <translation>Die Lage ergibt keinen Sinn</translation>
    </message>
    <message>
        <source>The position makes no sense</source>
        <translation>Der Ort ergibt keinen Sinn</translation>
    </message>
    <message>
        <source> (%1 of %2 images)</source>
        <translation> (%1 von %2 Bildern)</translation>
    </message>
    <message>
        <source>The file is no image</source>
        <translation>Die Datei ist kein Bild</translation>
    </message>
    <message>
        <source>The file is not a DICOM file</source>
        <translation>Die Datei ist keine DICOM-Datei</translation>
    </message>
    <message>
        <source>The file is damaged: %1</source>
        <translation>Die Datei ist beschädigt: %1</translation>
    </message>
    <message>
        <source>The file cannot be read: %1</source>
        <translation>Die Datei ist nicht lesbar: %1</translation>
    </message>
    <message>
        <source>The file is unreadable: %1</source>
        <translation>Die Datei ist nicht lesbar: %1</translation>
    </message>
    <message>
        <source>The image is not in a file</source>
        <translation>Das Bild liegt in keiner Datei</translation>
    </message>
    <message>
        <source>1 file is not shown: %1</source>
        <translation>1 Datei wird nicht gezeigt: %1</translation>
    </message>
    <message>
        <source>%1 files are not shown: %2</source>
        <translation>%1 Dateien werden nicht gezeigt: %2</translation>
    </message>
    <message>
        <source>None of the %1 files can be shown: %2</source>
        <translation>Keine der %1 Dateien kann gezeigt werden: %2</translation>
    </message>
    <message>
        <source>There are no images</source>
        <translation>Es gibt keine Bilder</translation>
    </message>
    <message>
        <source>The images need %1 GiB of memory, and only %2 GiB may be used</source>
        <translation>Die Bilder brauchen %1 GiB Speicher, und nur %2 GiB dürfen benutzt werden</translation>
    </message>
    <message>
        <source>it needs too much memory</source>
        <translation>es braucht zu viel Speicher</translation>
    </message>
    <message>
        <source>there is not enough memory for it</source>
        <translation>der Speicher reicht dafür nicht</translation>
    </message>
    <message>
        <source>The images are not all of one size and kind</source>
        <translation>Die Bilder sind nicht alle von gleicher Größe und Art</translation>
    </message>
    <message>
        <source>The images are not parallel</source>
        <translation>Die Bilder sind nicht parallel</translation>
    </message>
    <message>
        <source>The pixel spacings of the images differ</source>
        <translation>Die Pixelabstände der Bilder sind verschieden</translation>
    </message>
    <message>
        <source>The images have different frames of reference</source>
        <translation>Die Bilder haben verschiedene Bezugssysteme</translation>
    </message>
    <message>
        <source>: no other orientations</source>
        <translation>: keine anderen Ebenen</translation>
    </message>
    <message>
        <source>Some images do not say where they lie: no other orientations</source>
        <translation>Manche Bilder sagen nicht, wo sie liegen: keine anderen Ebenen</translation>
    </message>
    <message>
        <source>1 image is missing between the others</source>
        <translation>1 Bild fehlt zwischen den anderen</translation>
    </message>
    <message>
        <source>%1 images are missing between the others</source>
        <translation>%1 Bilder fehlen zwischen den anderen</translation>
    </message>
    <message>
        <source>The images lie aslant behind each other, as with a tilted gantry</source>
        <translation>Die Bilder liegen schräg hintereinander, wie bei gekippter Gantry</translation>
    </message>
    <message>
        <source>Several images lie at the same place</source>
        <translation>Mehrere Bilder liegen am selben Ort</translation>
    </message>
    <message>
        <source>The images lie too far from each other</source>
        <translation>Die Bilder liegen zu weit auseinander</translation>
    </message>
    <message>
        <source>The distances between the images differ</source>
        <translation>Die Abstände zwischen den Bildern sind verschieden</translation>
    </message>
</context>
<context>
    <name>OvTranslationProperty</name>
    <message>
        <source>Scripting Console</source>
        <translation>Skriptkonsole</translation>
    </message>
    <message>
        <source>Automatic Indentation</source>
        <translation>Automatische Einrückung</translation>
    </message>
    <message>
        <source>Advanced Settings</source>
        <translation>Erweiterte Einstellungen</translation>
    </message>
    <message>
        <source>Number of Logged Lines for Scripts</source>
        <translation>Zahl der protokollierten Skriptzeilen</translation>
    </message>
    <message>
        <source>Workstation</source>
        <translation>Arbeitsplatz</translation>
    </message>
    <message>
        <source>Recent Scripts</source>
        <translation>Zuletzt ausgeführte Skripte</translation>
    </message>
    <message>
        <source>Engines with a Console in the Menu</source>
        <translation>Engines mit einer Konsole im Menü</translation>
    </message>
    <message>
        <source>General</source>
        <translation>Allgemein</translation>
    </message>
    <message>
        <source>Date Format</source>
        <translation>Datumsformat</translation>
    </message>
    <message>
        <source>Time Format</source>
        <translation>Zeitformat</translation>
    </message>
    <message>
        <source>Layout</source>
        <translation>Aufteilung</translation>
    </message>
</context>
</TS>
