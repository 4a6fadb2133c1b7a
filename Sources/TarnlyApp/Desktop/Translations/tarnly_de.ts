<?xml version="1.0" encoding="utf-8"?>
<!DOCTYPE TS>
<TS version="2.1" language="de" sourcelanguage="en">
<context>
    <name>Companion</name>
    <message>
        <source>the DNS-SD daemon (Avahi) cannot be reached: %1; install or start avahi-daemon</source>
        <translation>der DNS-SD-Dienst (Avahi) ist nicht zu erreichen: %1; installieren oder starten Sie avahi-daemon</translation>
    </message>
    <message>
        <source>the DNS-SD daemon (Avahi) refuses the service: %1; look into its log, or restart avahi-daemon</source>
        <translation>der DNS-SD-Dienst (Avahi) lehnt den Eintrag ab: %1; sehen Sie in sein Protokoll, oder starten Sie avahi-daemon neu</translation>
    </message>
    <message>
        <source>Simulator: silent</source>
        <translation>Simulator: stumm</translation>
    </message>
    <message>
        <source>Simulator: silent for %1 s</source>
        <translation>Simulator: seit %1 s stumm</translation>
    </message>
    <message>
        <source>Simulator: not running</source>
        <translation>Simulator: läuft nicht</translation>
    </message>
    <message>
        <source>Simulator: refuses connections</source>
        <translation>Simulator: lehnt Verbindungen ab</translation>
    </message>
    <message>
        <source>Simulator: too old</source>
        <translation>Simulator: zu alt</translation>
    </message>
    <message>
        <source>Simulator: at the main menu</source>
        <translation>Simulator: im Hauptmenü</translation>
    </message>
    <message>
        <source>Simulator: flight loaded</source>
        <translation>Simulator: Flug geladen</translation>
    </message>
    <message>
        <source>%1 (%2)</source>
        <translation>%1 (%2)</translation>
    </message>
    <message>
        <source>start X-Plane 12.1.4 or later</source>
        <translation>starten Sie X-Plane ab Version 12.1.4</translation>
    </message>
    <message>
        <source>allow incoming traffic in the simulator&apos;s network settings</source>
        <translation>erlauben Sie eingehende Verbindungen in den Netzwerkeinstellungen des Simulators</translation>
    </message>
    <message>
        <source>X-Plane 12.1.4 or later is needed</source>
        <translation>nötig ist X-Plane ab Version 12.1.4</translation>
    </message>
    <message>
        <source>load a flight</source>
        <translation>laden Sie einen Flug</translation>
    </message>
    <message>
        <source>look at the simulator, and restart it if it does not react</source>
        <translation>sehen Sie nach dem Simulator, und starten Sie ihn neu, wenn er nicht reagiert</translation>
    </message>
    <message>
        <source>The navigation database %1 has not opened within %2 milliseconds; until it has, its fixes count as not found. Give --nav-db a file on a disk that answers, or load the script again later.</source>
        <translation>Die Navigationsdatenbank %1 war nach %2 Millisekunden noch nicht geöffnet; bis dahin gelten ihre Fixes als nicht gefunden. Geben Sie mit --nav-db eine Datei auf einem Datenträger an, der antwortet, oder laden Sie das Skript später noch einmal.</translation>
    </message>
    <message>
        <source>The navigation database %1 took more than 2 seconds for the fixes of a script, of which the rest counts as not found; give --nav-db one with plain tables and indexes, on a disk that answers.</source>
        <translation>Die Navigationsdatenbank %1 hat für die Fixes eines Skripts länger als 2 Sekunden gebraucht; die übrigen gelten als nicht gefunden. Geben Sie mit --nav-db eine mit einfachen Tabellen und Indizes an, auf einem Datenträger, der antwortet.</translation>
    </message>
    <message>
        <source>The navigation database %1 cannot be read (%2): fixes of a script that were not found may be there. See that --nav-db names the right file and that its disk is well, then load the script again.</source>
        <translation>Die Navigationsdatenbank %1 ist nicht lesbar (%2): Fixes eines Skripts, die nicht gefunden wurden, stehen vielleicht doch darin. Prüfen Sie, ob --nav-db die richtige Datei nennt und ihr Datenträger in Ordnung ist, und laden Sie das Skript dann noch einmal.</translation>
    </message>
    <message>
        <source>Published by DNS-SD as &quot;%1&quot;.</source>
        <translation>Über DNS-SD bekannt als „%1“.</translation>
    </message>
    <message>
        <source>Not published by DNS-SD: %1.</source>
        <translation>Nicht über DNS-SD bekannt: %1.</translation>
    </message>
    <message>
        <source>Being published by DNS-SD.</source>
        <translation>Wird über DNS-SD bekannt gemacht.</translation>
    </message>
    <message>
        <source>Not published by DNS-SD.</source>
        <translation>Nicht über DNS-SD bekannt.</translation>
    </message>
    <message>
        <source>No client is paired.</source>
        <translation>Kein Gerät ist gekoppelt.</translation>
    </message>
    <message numerus="yes">
        <source>%n clients are paired.</source>
        <comment>%n client is paired.</comment>
        <translation>
            <numerusform>%n Gerät ist gekoppelt.</numerusform>
            <numerusform>%n Geräte sind gekoppelt.</numerusform>
        </translation>
    </message>
    <message>
        <source>No recording is running.</source>
        <translation>Keine Aufzeichnung läuft.</translation>
    </message>
    <message>
        <source>Recording for %1, no samples yet.</source>
        <translation>Aufzeichnung seit %1, noch ohne Messpunkte.</translation>
    </message>
    <message>
        <source>Recording for %1.</source>
        <translation>Aufzeichnung seit %1.</translation>
    </message>
    <message numerus="yes">
        <source>%n samples, the last one taken %1 s ago.</source>
        <comment>%n sample, taken %1 s ago.</comment>
        <translation>
            <numerusform>%n Messpunkt, vor %1 s.</numerusform>
            <numerusform>%n Messpunkte, der letzte vor %1 s.</numerusform>
        </translation>
    </message>
    <message>
        <source>%1 has reached this computer, and has paired.</source>
        <translation>%1 hat diesen Computer erreicht und ist gekoppelt.</translation>
    </message>
    <message>
        <source>%1 has reached this computer, and its password was refused.</source>
        <translation>%1 hat diesen Computer erreicht, aber das Passwort wurde abgelehnt.</translation>
    </message>
    <message>
        <source>Enter the password that stands in the companion&apos;s settings; upper and lower case count.</source>
        <translation>Geben Sie das Passwort ein, das hier in den Einstellungen steht; Groß- und Kleinschreibung zählt.</translation>
    </message>
    <message>
        <source>%1 has reached this computer, and was shown the page.</source>
        <translation>%1 hat diesen Computer erreicht und die Seite angezeigt bekommen.</translation>
    </message>
    <message>
        <source>Nobody has reached this computer yet.</source>
        <translation>Noch kein Gerät hat diesen Computer erreicht.</translation>
    </message>
    <message>
        <source>TCP port %1</source>
        <translation>TCP-Port %1</translation>
    </message>
    <message>
        <source>its TCP port</source>
        <translation>seinen TCP-Port</translation>
    </message>
    <message>
        <source>Nobody has reached this computer: what the device sent never arrived.</source>
        <translation>Kein Gerät hat diesen Computer erreicht: Was es gesendet hat, ist nie angekommen.</translation>
    </message>
    <message>
        <source>Let the firewall of this computer accept %1. Look whether the device is in the same network: a Wi-Fi for guests, or one with &quot;client isolation&quot;, keeps its devices apart; use another one, or switch that off in the router.</source>
        <translation>Lassen Sie in der Firewall dieses Computers %1 zu. Prüfen Sie, ob das Gerät im selben Netz ist: Ein WLAN für Gäste oder eines mit „Client-Isolation“ trennt seine Geräte voneinander; nehmen Sie ein anderes, oder schalten Sie das im Router ab.</translation>
    </message>
    <message>
        <source>there is no room in %1 (%2)</source>
        <translation>in %1 ist kein Platz (%2)</translation>
    </message>
    <message>
        <source>Free some space there</source>
        <translation>Schaffen Sie dort Platz</translation>
    </message>
    <message>
        <source>there is no folder %1</source>
        <translation>es gibt keinen Ordner %1</translation>
    </message>
    <message>
        <source>Make it again, as the next recording does</source>
        <translation>Legen Sie ihn wieder an, wie es die nächste Aufzeichnung tut</translation>
    </message>
    <message>
        <source>%1 may not be written to (%2)</source>
        <translation>in %1 darf nicht geschrieben werden (%2)</translation>
    </message>
    <message>
        <source>Make it writable</source>
        <translation>Erlauben Sie das Schreiben</translation>
    </message>
    <message>
        <source>Look after the disk</source>
        <translation>Sehen Sie nach dem Datenträger</translation>
    </message>
    <message>
        <source>%1 has been moved or removed</source>
        <translation>%1 wurde verschoben oder gelöscht</translation>
    </message>
    <message>
        <source>It is made anew within a second</source>
        <translation>Sie wird innerhalb einer Sekunde neu angelegt</translation>
    </message>
    <message>
        <source>The log %1 is not being written: %2. %3; the flight is kept in memory meanwhile, and the log is completed from it.</source>
        <translation>Die Flugdatei %1 wird nicht geschrieben: %2. %3; der Flug bleibt so lange im Speicher, und die Datei wird daraus vervollständigt.</translation>
    </message>
    <message>
        <source>the disk does not answer</source>
        <translation>der Datenträger antwortet nicht</translation>
    </message>
    <message>
        <source>something else answers on its port</source>
        <translation>auf seinem Port antwortet etwas anderes</translation>
    </message>
    <message>
        <source>Saved flights in %1 whose names are not UTF-8 are left out (%2); give them other names.</source>
        <translation>Gespeicherte Situationen in %1, deren Namen nicht in UTF-8 sind, fehlen in der Liste (%2); geben Sie ihnen andere Namen.</translation>
    </message>
    <message>
        <source>The saved flights in %1 cannot be listed: %2. See that you may read the folder and what is in it, and that its disk is well.</source>
        <translation>Die gespeicherten Situationen in %1 lassen sich nicht auflisten: %2. Prüfen Sie, ob Sie den Ordner und seinen Inhalt lesen dürfen und sein Datenträger in Ordnung ist.</translation>
    </message>
    <message>
        <source>not advertised</source>
        <translation>nicht bekannt gemacht</translation>
    </message>
    <message>
        <source>advertising as &quot;%1&quot;</source>
        <translation>bekannt als „%1“</translation>
    </message>
    <message>
        <source>not advertised yet</source>
        <translation>noch nicht bekannt gemacht</translation>
    </message>
    <message>
        <source>not advertised: no DNS-SD daemon</source>
        <translation>nicht bekannt gemacht: kein DNS-SD-Dienst</translation>
    </message>
    <message>
        <source>not advertised: refused by the DNS-SD daemon</source>
        <translation>nicht bekannt gemacht: vom DNS-SD-Dienst abgelehnt</translation>
    </message>
    <message>
        <source>Starting…</source>
        <translation>Startet …</translation>
    </message>
    <message>
        <source>The navigation database of the settings cannot be used, so no fix of a script is found: %1. Name another file in the settings.</source>
        <translation>Die Navigationsdatenbank aus den Einstellungen ist nicht verwendbar, daher wird kein Fix eines Skripts gefunden: %1. Wählen Sie in den Einstellungen eine andere Datei.</translation>
    </message>
    <message>
        <source>Tarnly has ended.</source>
        <translation>Tarnly ist beendet.</translation>
    </message>
    <message>
        <source>The ports %1 to %2 are all in use, so this start listens on port %3, which a firewall may keep shut. End what uses them and start again, or choose another one by --port.</source>
        <translation>Die Ports %1 bis %2 sind alle belegt; erreichbar ist Tarnly diesmal auf Port %3, den eine Firewall sperren kann. Beenden Sie, was sie belegt, und starten Sie neu, oder wählen Sie mit --port einen anderen.</translation>
    </message>
    <message>
        <source>Listening on port %1, %2, pairing password required.</source>
        <translation>Erreichbar auf Port %1, %2, Kopplung mit Passwort.</translation>
    </message>
    <message>
        <source>Listening on port %1, %2, pairing open.</source>
        <translation>Erreichbar auf Port %1, %2, Kopplung ohne Passwort.</translation>
    </message>
    <message>
        <source>Failed to start: %1</source>
        <translation>Start fehlgeschlagen: %1</translation>
    </message>
    <message>
        <source>The data folder %1 cannot be locked against a second companion: %2. Make it a folder that you may write to, or name another by --data-dir.</source>
        <translation>Der Datenordner %1 lässt sich nicht gegen ein zweites Tarnly sperren: %2. Sorgen Sie dafür, dass Sie in ihn schreiben dürfen, oder wählen Sie mit --data-dir einen anderen.</translation>
    </message>
    <message>
        <source>A recording is running.</source>
        <translation>Eine Aufzeichnung läuft.</translation>
    </message>
    <message numerus="yes">
        <source>%n values</source>
        <comment>%n value</comment>
        <translation>
            <numerusform>%n Wert</numerusform>
            <numerusform>%n Werte</numerusform>
        </translation>
    </message>
    <message>
        <source>Not known yet.</source>
        <translation>Noch nicht bekannt.</translation>
    </message>
    <message numerus="yes">
        <source>%n devices have paired for the first time, the last one from %1. If you do not know them, set another password in the settings, and disconnect them in the panel.</source>
        <comment>%1 has paired for the first time. If you do not know it, set another password in the settings, and disconnect it in the panel.</comment>
        <translation>
            <numerusform>%1 ist zum ersten Mal gekoppelt. Wenn Sie das Gerät nicht kennen, setzen Sie in den Einstellungen ein anderes Passwort, und trennen Sie es im Fenster von Tarnly.</numerusform>
            <numerusform>%n Geräte sind zum ersten Mal gekoppelt, das letzte von %1. Wenn Sie sie nicht kennen, setzen Sie in den Einstellungen ein anderes Passwort, und trennen Sie sie im Fenster von Tarnly.</numerusform>
        </translation>
    </message>
    <message>
        <source>A new device is connected</source>
        <translation>Ein neues Gerät ist verbunden</translation>
    </message>
    <message>
        <source>A password was refused</source>
        <translation>Ein Passwort wurde abgelehnt</translation>
    </message>
    <message numerus="yes">
        <source>Refused %n times, last from %1. If that is your device, enter there the password that the settings show; if not, nothing has to be done.</source>
        <comment>Refused once, last from %1. If that is your device, enter there the password that the settings show; if not, nothing has to be done.</comment>
        <translation>
            <numerusform>Einmal abgelehnt, von %1. Wenn das Ihr Gerät ist, geben Sie dort das Passwort aus den Einstellungen ein; wenn nicht, ist nichts zu tun.</numerusform>
            <numerusform>%n-mal abgelehnt, zuletzt von %1. Wenn das Ihr Gerät ist, geben Sie dort das Passwort aus den Einstellungen ein; wenn nicht, ist nichts zu tun.</numerusform>
        </translation>
    </message>
    <message>
        <source>The recording cannot be written</source>
        <translation>Die Aufzeichnung wird nicht geschrieben</translation>
    </message>
    <message>
        <source>a name cannot be empty</source>
        <translation>ein Name darf nicht leer sein</translation>
    </message>
    <message>
        <source>a host name or an address without brackets is wanted</source>
        <translation>nötig ist ein Hostname oder eine Adresse ohne Klammern</translation>
    </message>
    <message>
        <source>a number from 1 to 65535 is wanted</source>
        <translation>nötig ist eine Zahl von 1 bis 65535</translation>
    </message>
    <message>
        <source>a number from 0 to 65535 is wanted</source>
        <translation>nötig ist eine Zahl von 0 bis 65535</translation>
    </message>
    <message>
        <source>an origin such as https://example.com is wanted, without a path</source>
        <translation>nötig ist eine Herkunft wie https://example.com, ohne Pfad</translation>
    </message>
    <message>
        <source>a path from the root on, such as /home/pilot, is wanted</source>
        <translation>nötig ist ein vollständiger Pfad wie /home/pilot</translation>
    </message>
    <message>
        <source>The settings could not be read, and no password is asked for: %1 cannot be read, or is not a settings file. Set the password anew, or mend the file and start again; the file is kept as %2 before anything is saved over it.</source>
        <translation>Die Einstellungen waren nicht lesbar, und es wird kein Passwort verlangt: %1 ist nicht lesbar oder keine Einstellungsdatei. Setzen Sie das Passwort neu, oder berichtigen Sie die Datei und starten Sie neu; sie wird als %2 aufbewahrt, bevor etwas sie überschreibt.</translation>
    </message>
    <message>
        <source>The settings could not be read, and no password is asked for: what stood in %1 is kept as %2. Set the password anew; where there is to be none, type one and clear it again.</source>
        <translation>Die Einstellungen waren nicht lesbar, und es wird kein Passwort verlangt: Der Inhalt von %1 ist als %2 aufbewahrt. Setzen Sie das Passwort neu; soll es keines geben, tippen Sie eines ein und löschen Sie es wieder.</translation>
    </message>
    <message>
        <source>The settings could not be saved: %1: %2. They hold until Tarnly ends; make the folder one that you may write to, with some space on its disk, and set them again.</source>
        <translation>Die Einstellungen konnten nicht gespeichert werden: %1: %2. Sie gelten, bis Tarnly endet; sorgen Sie dafür, dass Sie in den Ordner schreiben dürfen und auf seinem Datenträger Platz ist, und setzen Sie sie noch einmal.</translation>
    </message>
    <message>
        <source>The setting &quot;%1&quot; in %2 cannot be used, and it is as usual: %3. Set it anew, or mend the file and start again.</source>
        <translation>Die Einstellung „%1“ in %2 ist nicht verwendbar, es gilt das Übliche: %3. Setzen Sie sie neu, oder berichtigen Sie die Datei und starten Sie neu.</translation>
    </message>
    <message>
        <source>true or false is wanted</source>
        <translation>nötig ist true oder false</translation>
    </message>
    <message>
        <source>a number is wanted</source>
        <translation>nötig ist eine Zahl</translation>
    </message>
    <message>
        <source>a text in quotes is wanted</source>
        <translation>nötig ist ein Text in Anführungszeichen</translation>
    </message>
    <message>
        <source>a list of texts is wanted, such as [&quot;https://example.com&quot;]</source>
        <translation>nötig ist eine Liste von Texten wie [&quot;https://example.com&quot;]</translation>
    </message>
    <message>
        <source>The folder of saved situations, %1, is not there, so none is listed. Save a situation in the simulator, or name another folder in the settings.</source>
        <translation>Der Ordner der gespeicherten Situationen, %1, fehlt, daher wird keine aufgelistet. Speichern Sie im Simulator eine Situation, oder wählen Sie in den Einstellungen einen anderen Ordner.</translation>
    </message>
    <message>
        <source>The disk does not answer that has %1, by which the folder of saved situations is found. Mend that, or name another folder in the settings.</source>
        <translation>Der Datenträger mit %1, worüber der Ordner der gespeicherten Situationen gefunden wird, antwortet nicht. Beheben Sie das, oder wählen Sie in den Einstellungen einen anderen Ordner.</translation>
    </message>
    <message>
        <source>Changed settings are not followed any more, for lack of memory. Start Tarnly anew.</source>
        <translation>Aus Mangel an Speicher wirken geänderte Einstellungen nicht mehr. Starten Sie Tarnly neu.</translation>
    </message>
    <message>
        <source>A changed setting is not followed: %1. Start Tarnly anew to have it.</source>
        <translation>Eine geänderte Einstellung wirkt nicht: %1. Starten Sie Tarnly neu, damit sie gilt.</translation>
    </message>
    <message>
        <source>%1. End the program that has it, or choose another port in the settings, or by --port.</source>
        <translation>%1. Beenden Sie das Programm, das ihn belegt, oder wählen Sie in den Einstellungen oder mit --port einen anderen Port.</translation>
    </message>
    <message>
        <source>The navigation database %1 is not made within five minutes. See that the simulator&apos;s disk and this one answer, then start Tarnly anew, or name a database in the settings.</source>
        <translation>Die Navigationsdatenbank %1 ist nach fünf Minuten nicht fertig. Prüfen Sie, ob der Datenträger des Simulators und dieser antworten, und starten Sie Tarnly neu, oder wählen Sie in den Einstellungen eine Datenbank.</translation>
    </message>
    <message>
        <source>No navigation database can be made of the simulator&apos;s data: %1. Mend that and start Tarnly anew, or name a database in the settings.</source>
        <translation>Aus den Daten des Simulators lässt sich keine Navigationsdatenbank machen: %1. Beheben Sie das und starten Sie Tarnly neu, oder wählen Sie in den Einstellungen eine Datenbank.</translation>
    </message>
    <message>
        <source>No navigation database could be made of the data in %1, so scripts find the fixes of an older one at best: %2 Mend that and start Tarnly anew, or name a database in the settings.</source>
        <translation>Aus den Daten in %1 ließ sich keine Navigationsdatenbank machen, Skripte finden also bestenfalls die Fixes einer älteren: %2 Beheben Sie das und starten Sie Tarnly neu, oder wählen Sie in den Einstellungen eine Datenbank.</translation>
    </message>
    <message>
        <source>Open this address on the device, or scan it:</source>
        <translation>Öffnen Sie diese Adresse auf dem Gerät, oder scannen Sie sie:</translation>
    </message>
    <message>
        <source>Tarnly is not listening.</source>
        <translation>Tarnly ist nicht erreichbar.</translation>
    </message>
    <message>
        <source>The panel says why; mend that, and start Tarnly again.</source>
        <translation>Das Fenster sagt, warum; beheben Sie das, und starten Sie Tarnly neu.</translation>
    </message>
    <message>
        <source>This computer has no address in a network.</source>
        <translation>Dieser Computer hat keine Adresse in einem Netz.</translation>
    </message>
    <message>
        <source>Connect it to the one that the device is in.</source>
        <translation>Verbinden Sie ihn mit dem, in dem das Gerät ist.</translation>
    </message>
    <message>
        <source>listenFailed(&quot;port %1: %2&quot;)</source>
        <translation>Verbindungen können nicht angenommen werden (Port %1: %2)</translation>
    </message>
    <message>
        <source>openFailed(path: %1, message: %2)</source>
        <translation>%1 lässt sich nicht öffnen (%2)</translation>
    </message>
    <message>
        <source>has more entries than there are in the world</source>
        <translation>hat mehr Einträge, als es auf der Welt gibt</translation>
    </message>
    <message>
        <source>cannot be read to its end</source>
        <translation>lässt sich nicht bis zum Ende lesen</translation>
    </message>
    <message>
        <source>has no row that can be read</source>
        <translation>hat keine lesbare Zeile</translation>
    </message>
    <message>
        <source>%1 %2. Have the navigation data installed anew.</source>
        <translation>%1 %2. Lassen Sie die Navigationsdaten neu installieren.</translation>
    </message>
    <message>
        <source>%1 cannot be written: %2.</source>
        <translation>%1 lässt sich nicht schreiben: %2.</translation>
    </message>
    <message>
        <source>The simulator reads %1 in place of the text files, which cannot be read here: the fixes come from the text files, and may be others than the simulator&apos;s. Have your provider of navigation data install the text files (earth_fix.dat, earth_nav.dat) too.</source>
        <translation>Der Simulator liest %1 anstelle der Textdateien, was Tarnly nicht lesen kann: Die Fixes stammen aus den Textdateien und können andere sein als die des Simulators. Lassen Sie den Anbieter Ihrer Navigationsdaten auch die Textdateien (earth_fix.dat, earth_nav.dat) installieren.</translation>
    </message>
    <message>
        <source>%1 has %2 without %3, so neither is used: the two belong together. Have your provider of navigation data install both.</source>
        <translation>In %1 steht %2 ohne %3, daher wird keine von beiden benutzt: Sie gehören zusammen. Lassen Sie den Anbieter Ihrer Navigationsdaten beide installieren.</translation>
    </message>
    <message>
        <source>does not say in its second line which format it has</source>
        <translation>nennt in der zweiten Zeile kein Format</translation>
    </message>
    <message>
        <source>has the format %1, and those before %2 cannot be read</source>
        <translation>hat das Format %1; ältere als %2 sind nicht lesbar</translation>
    </message>
    <message>
        <source>%1 has the format %2, newer than %3, and is read as that one: fixes may be missing. Look for a newer version of Tarnly.</source>
        <translation>%1 hat das Format %2, neuer als %3, und wird wie dieses gelesen: Es können Fixes fehlen. Suchen Sie nach einer neueren Version von Tarnly.</translation>
    </message>
    <message>
        <source>%1 %2. Name the folder of X-Plane 11 or 12, or have it repaired by its installer.</source>
        <translation>%1 %2. Geben Sie den Ordner von X-Plane 11 oder 12 an, oder lassen Sie den Simulator von seinem Installationsprogramm reparieren.</translation>
    </message>
    <message>
        <source>is missing</source>
        <translation>fehlt</translation>
    </message>
    <message>
        <source>%1 %2, so it is left out. Make it anew, or remove it.</source>
        <translation>%1 %2. Die Datei wird daher ausgelassen: Erstellen Sie sie neu, oder entfernen Sie sie.</translation>
    </message>
    <message>
        <source>Fixes and navaids in %1 are of different cycles, %2 and %3. Have the navigation data installed anew.</source>
        <translation>Fixes und Funkfeuer in %1 stammen aus verschiedenen Zyklen, %2 und %3. Lassen Sie die Navigationsdaten neu installieren.</translation>
    </message>
</context>
<context>
    <name>tarnly::AddressesWindow</name>
    <message>
        <source>Tarnly is not listening.</source>
        <translation>Tarnly ist nicht erreichbar.</translation>
    </message>
    <message>
        <source>This computer is not connected to a network.</source>
        <translation>Dieser Computer ist mit keinem Netz verbunden.</translation>
    </message>
    <message>
        <source>Scan the code with a phone or tablet, or open one of these addresses in its browser: that is the lesson page. An application that does not find Tarnly by itself takes the address, too; some want ws:// in place of http://.</source>
        <translation>Scannen Sie den Code mit einem Telefon oder Tablet, oder öffnen Sie eine dieser Adressen in dessen Browser: das ist die Unterrichtsseite. Auch Anwendungen, die Tarnly nicht von selbst finden, nehmen die Adresse; manche erwarten ws:// statt http://.</translation>
    </message>
    <message>
        <source>Where a client does not find Tarnly by itself, enter one of these addresses there, or scan the code.</source>
        <translation>Findet ein Gerät Tarnly nicht von selbst, geben Sie dort eine dieser Adressen ein, oder scannen Sie den Code.</translation>
    </message>
    <message>
        <source>Copy</source>
        <translation>Kopieren</translation>
    </message>
    <message>
        <source>Tarnly Addresses</source>
        <translation>Tarnly – Adressen</translation>
    </message>
    <message>
        <source>Addresses</source>
        <translation>Adressen</translation>
    </message>
    <message>
        <source>Copied</source>
        <translation>Kopiert</translation>
    </message>
</context>
<context>
    <name>tarnly::ClientList</name>
    <message>
        <source>Connected clients</source>
        <translation>Verbundene Geräte</translation>
    </message>
    <message>
        <source>Disconnect</source>
        <translation>Trennen</translation>
    </message>
    <message>
        <source>this computer</source>
        <translation>dieser Computer</translation>
    </message>
    <message>
        <source>since %1, %2</source>
        <translation>seit %1, %2</translation>
    </message>
    <message>
        <source>Disconnect %1</source>
        <translation>%1 trennen</translation>
    </message>
    <message>
        <source>and %1 more</source>
        <translation>und %1 weitere</translation>
    </message>
    <message>
        <source>Ends its connection; it may come back and pair again.</source>
        <translation>Beendet seine Verbindung; es kann wiederkommen und sich neu koppeln.</translation>
    </message>
</context>
<context>
    <name>tarnly::Panel</name>
    <message>
        <source>Addresses…</source>
        <translation>Adressen …</translation>
    </message>
    <message>
        <source>Settings…</source>
        <translation>Einstellungen …</translation>
    </message>
    <message>
        <source>Quit Tarnly</source>
        <translation>Tarnly beenden</translation>
    </message>
    <message>
        <source>Can clients find it?</source>
        <translation>Ist Tarnly zu finden?</translation>
    </message>
    <message>
        <source>Is the simulator there?</source>
        <translation>Ist der Simulator da?</translation>
    </message>
    <message>
        <source>Who is connected?</source>
        <translation>Wer ist verbunden?</translation>
    </message>
    <message>
        <source>Is it recording?</source>
        <translation>Läuft eine Aufzeichnung?</translation>
    </message>
    <message>
        <source>Troubleshooting</source>
        <translation>Fehlersuche</translation>
    </message>
    <message>
        <source>Test from a phone…</source>
        <translation>Vom Smartphone testen …</translation>
    </message>
    <message>
        <source>Shows what to enter where a client does not find Tarnly.</source>
        <translation>Zeigt, was einzugeben ist, wo ein Gerät Tarnly nicht findet.</translation>
    </message>
    <message>
        <source>Finds out whether a phone or tablet gets to this computer.</source>
        <translation>Stellt fest, ob ein Smartphone oder Tablet diesen Computer erreicht.</translation>
    </message>
    <message>
        <source>Opens the settings.</source>
        <translation>Öffnet die Einstellungen.</translation>
    </message>
    <message>
        <source>Clients lose their connection, and a recording ends.</source>
        <translation>Geräte verlieren ihre Verbindung, und eine laufende Aufzeichnung endet.</translation>
    </message>
    <message>
        <source>Opens the page that says what to do about each trouble.</source>
        <translation>Öffnet die Seite, die zu jeder Störung sagt, was zu tun ist.</translation>
    </message>
    <message>
        <source>How it stands</source>
        <translation>Wie es steht</translation>
    </message>
</context>
<context>
    <name>tarnly::QrCodeWidget</name>
    <message>
        <source>QR code of %1</source>
        <translation>QR-Code von %1</translation>
    </message>
    <message>
        <source>For the camera of the device that is to connect.</source>
        <translation>Für die Kamera des Geräts, das sich verbinden soll.</translation>
    </message>
</context>
<context>
    <name>tarnly::ReachWindow</name>
    <message>
        <source>Waiting for a device…</source>
        <translation>Warten auf ein Gerät …</translation>
    </message>
    <message>
        <source>It arrived and was refused</source>
        <translation>Angekommen und abgelehnt</translation>
    </message>
    <message>
        <source>It is fine</source>
        <translation>Alles in Ordnung</translation>
    </message>
    <message>
        <source>Test again</source>
        <translation>Noch einmal testen</translation>
    </message>
    <message>
        <source>Tarnly Test from a Phone</source>
        <translation>Tarnly – Test vom Smartphone</translation>
    </message>
    <message>
        <source>Address</source>
        <translation>Adresse</translation>
    </message>
    <message>
        <source>Close</source>
        <translation>Schließen</translation>
    </message>
    <message>
        <source>Test</source>
        <translation>Test</translation>
    </message>
    <message>
        <source>It never arrived</source>
        <translation>Nie angekommen</translation>
    </message>
    <message>
        <source>It cannot be tested</source>
        <translation>Der Test ist nicht möglich</translation>
    </message>
</context>
<context>
    <name>tarnly::SettingField</name>
    <message>
        <source>Choose…</source>
        <translation>Wählen …</translation>
    </message>
    <message>
        <source>Not saved: %1.</source>
        <translation>Nicht gespeichert: %1.</translation>
    </message>
</context>
<context>
    <name>tarnly::SettingsWindow</name>
    <message>
        <source>For this run the command line says %1.</source>
        <translation>Diesmal sagt die Befehlszeile: %1.</translation>
    </message>
    <message>
        <source>Tarnly Settings</source>
        <translation>Tarnly – Einstellungen</translation>
    </message>
    <message>
        <source>Pairing</source>
        <translation>Kopplung</translation>
    </message>
    <message>
        <source>Password</source>
        <translation>Passwort</translation>
    </message>
    <message>
        <source>Network</source>
        <translation>Netzwerk</translation>
    </message>
    <message>
        <source>Name</source>
        <translation>Name</translation>
    </message>
    <message>
        <source>By which tablets find this computer.</source>
        <translation>Unter dem Tablets diesen Computer finden.</translation>
    </message>
    <message>
        <source>Let tablets find this computer</source>
        <translation>Von Tablets gefunden werden</translation>
    </message>
    <message>
        <source>Else its address has to be typed there.</source>
        <translation>Sonst ist dort die Adresse einzutippen.</translation>
    </message>
    <message>
        <source>For this run the command line says no.</source>
        <translation>Diesmal sagt die Befehlszeile nein.</translation>
    </message>
    <message>
        <source>Port</source>
        <translation>Port</translation>
    </message>
    <message>
        <source>Takes effect at the next start. Empty: 28086, or the next free one.</source>
        <translation>Gilt ab dem nächsten Start. Leer: 28086 oder der nächste freie.</translation>
    </message>
    <message>
        <source>Simulator</source>
        <translation>Simulator</translation>
    </message>
    <message>
        <source>Computer</source>
        <translation>Computer</translation>
    </message>
    <message>
        <source>On which it runs. Takes effect at the next start.</source>
        <translation>Auf dem er läuft. Gilt ab dem nächsten Start.</translation>
    </message>
    <message>
        <source>Web port</source>
        <translation>Web-Port</translation>
    </message>
    <message>
        <source>Of its web API. Takes effect at the next start.</source>
        <translation>Seiner Web-API. Gilt ab dem nächsten Start.</translation>
    </message>
    <message>
        <source>Saved flights</source>
        <translation>Situationen</translation>
    </message>
    <message>
        <source>Empty: those of the simulator on this computer.</source>
        <translation>Leer: die des Simulators auf diesem Computer.</translation>
    </message>
    <message>
        <source>Choose saved flights</source>
        <translation>Situationen wählen</translation>
    </message>
    <message>
        <source>Fixes</source>
        <translation>Fixes</translation>
    </message>
    <message>
        <source>The navigation database, for scripts that name fixes.</source>
        <translation>Die Navigationsdatenbank, für Skripte mit Fixes.</translation>
    </message>
    <message>
        <source>Choose fixes</source>
        <translation>Fixes wählen</translation>
    </message>
    <message>
        <source>Start Tarnly at login</source>
        <translation>Tarnly bei der Anmeldung starten</translation>
    </message>
    <message>
        <source>Start</source>
        <translation>Start</translation>
    </message>
    <message>
        <source>In the tray, with these settings.</source>
        <translation>Im Infobereich, mit diesen Einstellungen.</translation>
    </message>
    <message>
        <source>Which may connect, such as https://example.com; others are kept out.</source>
        <translation>Dürfen sich verbinden, etwa https://example.com; andere nicht.</translation>
    </message>
    <message>
        <source>For this run the command line says which may connect.</source>
        <translation>Diesmal sagt die Befehlszeile, welche sich verbinden dürfen.</translation>
    </message>
    <message>
        <source>Web pages</source>
        <translation>Webseiten</translation>
    </message>
    <message>
        <source>Not set — open pairing.</source>
        <translation>Keines – Kopplung ohne Passwort.</translation>
    </message>
    <message>
        <source>Set.</source>
        <translation>Gesetzt.</translation>
    </message>
    <message>
        <source>For this run the command line says yes.</source>
        <translation>Diesmal sagt die Befehlszeile ja.</translation>
    </message>
    <message>
        <source>Settings</source>
        <translation>Einstellungen</translation>
    </message>
</context>
<context>
    <name>tarnly::TrayIcon</name>
    <message>
        <source>Show Tarnly</source>
        <translation>Tarnly anzeigen</translation>
    </message>
    <message>
        <source>Addresses…</source>
        <translation>Adressen …</translation>
    </message>
    <message>
        <source>Settings…</source>
        <translation>Einstellungen …</translation>
    </message>
    <message>
        <source>Quit Tarnly</source>
        <translation>Tarnly beenden</translation>
    </message>
    <message>
        <source>Quit Tarnly?</source>
        <translation>Tarnly beenden?</translation>
    </message>
    <message>
        <source>Clients lose their connection, and a recording ends.</source>
        <translation>Geräte verlieren ihre Verbindung, und eine laufende Aufzeichnung endet.</translation>
    </message>
    <message>
        <source>Minimize</source>
        <translation>Minimieren</translation>
    </message>
    <message>
        <source>Test from a phone…</source>
        <translation>Vom Smartphone testen …</translation>
    </message>
</context>
</TS>
