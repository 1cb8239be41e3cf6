<?xml version="1.0" encoding="utf-8"?>
<!DOCTYPE TS>
<TS version="2.1" language="de" sourcelanguage="en">
<context>
    <name>Causes</name>
    <message>
        <source>No device is plugged in.</source>
        <translation>Es ist kein Gerät angeschlossen.</translation>
    </message>
    <message>
        <source>Plug in the device&apos;s USB-serial adapter; it appears here by itself.</source>
        <translation>Schließen Sie den USB-Seriell-Adapter des Geräts an; er erscheint hier von selbst.</translation>
    </message>
    <message>
        <source>Plug in the device&apos;s own USB-serial adapter.</source>
        <translation>Schließen Sie den zum Gerät gehörenden USB-Seriell-Adapter an.</translation>
    </message>
    <message>
        <source>%1 is plugged in, too, but only one device can be chosen.</source>
        <translation>%1 ist ebenfalls angeschlossen, aber es kann nur ein Gerät ausgewählt werden.</translation>
    </message>
    <message>
        <source>To use it, unplug %2.</source>
        <translation>Um es zu verwenden, ziehen Sie %2 ab.</translation>
    </message>
    <message>
        <source>The list offers one device only, %1.</source>
        <translation>Die Liste bietet nur ein Gerät an: %1.</translation>
    </message>
    <message>
        <source>To use another one, unplug this one first.</source>
        <translation>Um ein anderes zu verwenden, ziehen Sie zuerst dieses ab.</translation>
    </message>
    <message>
        <source>The port is closed, although the button reads “Close”.</source>
        <translation>Der Port ist geschlossen, obwohl auf der Schaltfläche „Close“ steht.</translation>
    </message>
    <message>
        <source>Unplug all devices, then plug this one in again.</source>
        <translation>Ziehen Sie alle Geräte ab und schließen Sie dann dieses wieder an.</translation>
    </message>
    <message>
        <source>%1 was gone %2 s after it was plugged in.</source>
        <translation>%1 ist %2 s nach dem Anschließen wieder verschwunden.</translation>
    </message>
    <message>
        <source>Check the cable, and try another USB port.</source>
        <translation>Prüfen Sie das Kabel und versuchen Sie es an einem anderen USB-Anschluss.</translation>
    </message>
    <message>
        <source>Plug the device in again.</source>
        <translation>Schließen Sie das Gerät wieder an.</translation>
    </message>
    <message>
        <source>You have no access to %1, which belongs to the group %2.</source>
        <translation>Sie haben keinen Zugriff auf %1; es gehört der Gruppe %2.</translation>
    </message>
    <message>
        <source>Run “sudo usermod -aG %2 $USER”, then log out and in again.</source>
        <translation>Führen Sie „sudo usermod -aG %2 $USER“ aus, melden Sie sich dann ab und wieder an.</translation>
    </message>
    <message>
        <source>You have no access to %1 (mode %2).</source>
        <translation>Sie haben keinen Zugriff auf %1 (Modus %2).</translation>
    </message>
    <message>
        <source>Run “sudo chmod a+rw %1”; this holds until the device is unplugged.</source>
        <translation>Führen Sie „sudo chmod a+rw %1“ aus; das gilt, bis das Gerät abgezogen wird.</translation>
    </message>
    <message>
        <source>%1 is in use by %2 (process %3).</source>
        <translation>%1 wird von %2 (Prozess %3) verwendet.</translation>
    </message>
    <message>
        <source>Close that program, then press “Open” again.</source>
        <translation>Schließen Sie dieses Programm und drücken Sie dann erneut „Open“.</translation>
    </message>
    <message>
        <source>%1 is in use by brltty (process %2), the driver for braille displays.</source>
        <translation>%1 wird von brltty (Prozess %2) verwendet, dem Treiber für Braillezeilen.</translation>
    </message>
    <message>
        <source>“sudo fuser -v %1” shows which. End it, then press “Open” again.</source>
        <translation>„sudo fuser -v %1“ zeigt, von welchem. Beenden Sie es und drücken Sie dann erneut „Open“.</translation>
    </message>
    <message>
        <source>%1 is not a serial port.</source>
        <translation>%1 ist kein serieller Port.</translation>
    </message>
    <message>
        <source>%1 cannot be opened: %2.</source>
        <translation>%1 kann nicht geöffnet werden: %2.</translation>
    </message>
    <message>
        <source>Unplug the device, plug it in again, then press “Open”.</source>
        <translation>Ziehen Sie das Gerät ab, schließen Sie es wieder an und drücken Sie dann „Open“.</translation>
    </message>
    <message>
        <source>The adapter at %1 cannot run at %2 baud, which the device needs.</source>
        <translation>Der Adapter an %1 unterstützt die %2 Baud nicht, die das Gerät benötigt.</translation>
    </message>
    <message>
        <source>Use another USB-serial adapter.</source>
        <translation>Verwenden Sie einen anderen USB-Seriell-Adapter.</translation>
    </message>
    <message>
        <source>The connection to %1 was lost.</source>
        <translation>Die Verbindung zu %1 ist abgebrochen.</translation>
    </message>
    <message>
        <source>If the device is still plugged in, press “Open”.</source>
        <translation>Falls das Gerät noch angeschlossen ist, drücken Sie „Open“.</translation>
    </message>
    <message>
        <source>The device is not open.</source>
        <translation>Das Gerät ist nicht geöffnet.</translation>
    </message>
    <message>
        <source>Press “Open” first.</source>
        <translation>Drücken Sie zuerst „Open“.</translation>
    </message>
    <message>
        <source>No firmware file is chosen.</source>
        <translation>Es ist keine Firmware-Datei ausgewählt.</translation>
    </message>
    <message>
        <source>Choose one in the list of firmware files.</source>
        <translation>Wählen Sie eine in der Liste der Firmware-Dateien aus.</translation>
    </message>
    <message>
        <source>The firmware file %1 cannot be read: %2.</source>
        <translation>Die Firmware-Datei %1 kann nicht gelesen werden: %2.</translation>
    </message>
    <message>
        <source>The device was not changed. Choose another file, or download it again.</source>
        <translation>Das Gerät wurde nicht verändert. Wählen Sie eine andere Datei oder laden Sie diese erneut herunter.</translation>
    </message>
    <message>
        <source>The firmware file %1 is empty.</source>
        <translation>Die Firmware-Datei %1 ist leer.</translation>
    </message>
    <message>
        <source>The firmware file %1 is too large for a device.</source>
        <translation>Die Firmware-Datei %1 ist zu groß für ein Gerät.</translation>
    </message>
    <message>
        <source>No answer to %1 within %2 s.</source>
        <translation>Keine Antwort auf %1 binnen %2 s.</translation>
    </message>
    <message>
        <source>The device still holds its old firmware. Check its power and cable, then press “Update firmware” again.</source>
        <translation>Das Gerät hat noch seine alte Firmware. Prüfen Sie Strom und Kabel, drücken Sie dann erneut „Firmware aktualisieren“.</translation>
    </message>
    <message>
        <source>The device must be updated again before it can be used: check its power and cable, then press “Update firmware”.</source>
        <translation>Das Gerät ist erst nach erneutem Update benutzbar: Prüfen Sie Strom und Kabel, drücken Sie dann „Firmware aktualisieren“.</translation>
    </message>
    <message>
        <source>The device refused %1 after %2 s.</source>
        <translation>Das Gerät hat %1 nach %2 s abgelehnt.</translation>
    </message>
    <message>
        <source>It still holds its old firmware. Unplug it, plug it in, press “Open”, then “Update firmware”.</source>
        <translation>Es hat noch seine alte Firmware. Ziehen Sie es ab, stecken Sie es ein, drücken Sie „Open“, dann „Firmware aktualisieren“.</translation>
    </message>
    <message>
        <source>It must be updated again before it can be used: check that the file is meant for it, then press “Update firmware”.</source>
        <translation>Es ist erst nach erneutem Update benutzbar: Prüfen Sie, ob die Datei zum Gerät passt, drücken Sie dann „Firmware aktualisieren“.</translation>
    </message>
    <message>
        <source>Check its power and cable, then close and open it.</source>
        <translation>Prüfen Sie Strom und Kabel, drücken Sie dann „Close“ und „Open“.</translation>
    </message>
    <message>
        <source>Close and open it to ask again.</source>
        <translation>Drücken Sie „Close“ und „Open“, um erneut abzufragen.</translation>
    </message>
    <message>
        <source>There is no firmware file yet.</source>
        <translation>Es ist noch keine Firmware-Datei vorhanden.</translation>
    </message>
    <message>
        <source>Press “Download latest”, or put files that end in .bin into %1.</source>
        <translation>Drücken Sie „Neueste herunterladen“ oder legen Sie Dateien mit der Endung .bin in %1 ab.</translation>
    </message>
    <message>
        <source>There is no firmware file yet, and no package server is configured.</source>
        <translation>Es ist noch keine Firmware-Datei vorhanden und kein Paketserver eingerichtet.</translation>
    </message>
    <message>
        <source>Put files that end in .bin into %1.</source>
        <translation>Legen Sie Dateien mit der Endung .bin in %1 ab.</translation>
    </message>
    <message>
        <source>No firmware file is for this device (model code %1).</source>
        <translation>Für dieses Gerät (Modellcode %1) ist keine Firmware-Datei vorhanden.</translation>
    </message>
    <message>
        <source>This computer is not connected to a network.</source>
        <translation>Dieser Computer ist mit keinem Netzwerk verbunden.</translation>
    </message>
    <message>
        <source>Connect it, then press “Download latest” again.</source>
        <translation>Verbinden Sie ihn und drücken Sie dann erneut „Neueste herunterladen“.</translation>
    </message>
    <message>
        <source>The address of the server %1 cannot be found.</source>
        <translation>Die Adresse des Servers %1 wurde nicht gefunden.</translation>
    </message>
    <message>
        <source>Check the network connection, then press “Download latest” again.</source>
        <translation>Prüfen Sie die Netzwerkverbindung und drücken Sie dann erneut „Neueste herunterladen“.</translation>
    </message>
    <message>
        <source>The server %1 cannot be reached (network error %2).</source>
        <translation>Der Server %1 ist nicht erreichbar (Netzwerkfehler %2).</translation>
    </message>
    <message>
        <source>Check the network connection and firewall, then press “Download latest” again.</source>
        <translation>Prüfen Sie Netzwerkverbindung und Firewall und drücken Sie dann erneut „Neueste herunterladen“.</translation>
    </message>
    <message>
        <source>The proxy on the way to %1 failed (network error %2).</source>
        <translation>Der Zugriff auf %1 über den Proxy ist fehlgeschlagen (Netzwerkfehler %2).</translation>
    </message>
    <message>
        <source>Check the proxy settings (https_proxy), then start the program again.</source>
        <translation>Prüfen Sie die Proxy-Einstellungen (https_proxy) und starten Sie das Programm dann neu.</translation>
    </message>
    <message>
        <source>The connection to %1 was lost before the package was complete.</source>
        <translation>Die Verbindung zu %1 ist abgebrochen, bevor das Paket vollständig war.</translation>
    </message>
    <message>
        <source>Press “Download latest” again.</source>
        <translation>Drücken Sie erneut „Neueste herunterladen“.</translation>
    </message>
    <message>
        <source>Try again later.</source>
        <translation>Versuchen Sie es später erneut.</translation>
    </message>
    <message>
        <source>No encrypted connection to %1 could be made.</source>
        <translation>Zu %1 konnte keine verschlüsselte Verbindung hergestellt werden.</translation>
    </message>
    <message>
        <source>Check proxy and firewall, or try another network.</source>
        <translation>Prüfen Sie Proxy und Firewall oder versuchen Sie es in einem anderen Netzwerk.</translation>
    </message>
    <message>
        <source>The server %1 leads to an address without encryption.</source>
        <translation>Der Server %1 verweist auf eine Adresse ohne Verschlüsselung.</translation>
    </message>
    <message>
        <source>Tell the server&apos;s operator. Nothing was downloaded.</source>
        <translation>Informieren Sie den Betreiber des Servers. Es wurde nichts heruntergeladen.</translation>
    </message>
    <message>
        <source>The response of %1 is not valid (network error %2).</source>
        <translation>Die Antwort von %1 ist ungültig (Netzwerkfehler %2).</translation>
    </message>
    <message>
        <source>The server %1 answered with HTTP status %2.</source>
        <translation>Der Server %1 hat mit dem HTTP-Status %2 geantwortet.</translation>
    </message>
    <message>
        <source>The server names the package %1, which cannot be a folder&apos;s name.</source>
        <translation>Der Server nennt das Paket %1; so kann kein Ordner heißen.</translation>
    </message>
    <message>
        <source>Tell the server&apos;s operator.</source>
        <translation>Informieren Sie den Betreiber des Servers.</translation>
    </message>
    <message>
        <source>The package is too large (%1).</source>
        <translation>Das Paket ist zu groß (%1).</translation>
    </message>
    <message>
        <source>The package %1 is not a zip archive.</source>
        <translation>Das Paket %1 ist kein ZIP-Archiv.</translation>
    </message>
    <message>
        <source>The package&apos;s entry %1 would be written outside its folder.</source>
        <translation>Der Paketeintrag %1 würde außerhalb des Paketordners gespeichert.</translation>
    </message>
    <message>
        <source>%1 is in the way, and does not belong to this program.</source>
        <translation>%1 steht im Weg und gehört nicht zu diesem Programm.</translation>
    </message>
    <message>
        <source>Move it away, then press “Download latest” again.</source>
        <translation>Verschieben Sie es an einen anderen Ort und drücken Sie dann erneut „Neueste herunterladen“.</translation>
    </message>
    <message>
        <source>Free some disk space, then press “Download latest” again.</source>
        <translation>Geben Sie Speicherplatz frei und drücken Sie dann erneut „Neueste herunterladen“.</translation>
    </message>
    <message>
        <source>Correct its access rights, then press “Download latest” again.</source>
        <translation>Berichtigen Sie die Zugriffsrechte und drücken Sie dann erneut „Neueste herunterladen“.</translation>
    </message>
    <message>
        <source>%1: %2.</source>
        <translation>%1: %2.</translation>
    </message>
    <message>
        <source>%1 is in use by a program that you cannot see.</source>
        <translation>%1 wird von einem Programm benutzt, das Sie nicht sehen können.</translation>
    </message>
    <message>
        <source>The certificate of %1 cannot be trusted: %2.</source>
        <translation>Das Zertifikat von %1 ist nicht vertrauenswürdig: %2.</translation>
    </message>
    <message>
        <source>If nobody needs it, run “sudo apt remove brltty”, then plug the device in again.</source>
        <translation>Wenn niemand ihn braucht, führen Sie „sudo apt remove brltty“ aus und stecken Sie das Gerät neu ein.</translation>
    </message>
    <message>
        <source>%1 is in use by ModemManager (process %2).</source>
        <translation>%1 wird von ModemManager (Prozess %2) benutzt.</translation>
    </message>
    <message>
        <source>Press “Open” again in half a minute, or run “sudo systemctl stop ModemManager”.</source>
        <translation>Drücken Sie in einer halben Minute erneut „Open“ oder führen Sie „sudo systemctl stop ModemManager“ aus.</translation>
    </message>
    <message>
        <source>Check this computer&apos;s date and network. Nothing was downloaded.</source>
        <translation>Prüfen Sie Datum und Netzwerk dieses Computers. Es wurde nichts heruntergeladen.</translation>
    </message>
    <message>
        <source>Do not use this package; tell the server&apos;s operator.</source>
        <translation>Verwenden Sie dieses Paket nicht; informieren Sie den Betreiber des Servers.</translation>
    </message>
    <message>
        <source>Plug in the device&apos;s USB-serial adapter, then run the command again.</source>
        <translation>Schließen Sie den USB-Seriell-Adapter des Geräts an und führen Sie den Befehl dann erneut aus.</translation>
    </message>
    <message>
        <source>%1 is a serial device, but its name does not begin with “usbserial-”.</source>
        <translation>%1 ist ein serielles Gerät, aber sein Name beginnt nicht mit „usbserial-“.</translation>
    </message>
    <message>
        <source>Plug in the device&apos;s own USB-serial adapter, or name this one in the command.</source>
        <translation>Schließen Sie den zum Gerät gehörenden USB-Seriell-Adapter an oder nennen Sie diesen im Befehl.</translation>
    </message>
    <message>
        <source>There is no serial device %1.</source>
        <translation>Es gibt kein serielles Gerät %1.</translation>
    </message>
    <message>
        <source>“vornupdater-cli list” shows the ones there are.</source>
        <translation>„vornupdater-cli list“ zeigt die vorhandenen.</translation>
    </message>
    <message>
        <source>Several devices are plugged in: %1.</source>
        <translation>Es sind mehrere Geräte angeschlossen: %1.</translation>
    </message>
    <message>
        <source>Name one of them in the command, or give --all.</source>
        <translation>Nennen Sie eines davon im Befehl oder geben Sie --all an.</translation>
    </message>
    <message>
        <source>%1 was gone after %2 s: brltty, a braille driver, is running and takes some adapters.</source>
        <translation>%1 war nach %2 s verschwunden: brltty, ein Braille-Treiber, läuft und belegt manche Adapter.</translation>
    </message>
    <message>
        <source>%1 no longer exists.</source>
        <translation>%1 existiert nicht mehr.</translation>
    </message>
    <message>
        <source>Close that program, then run the command again.</source>
        <translation>Beenden Sie dieses Programm und führen Sie den Befehl dann erneut aus.</translation>
    </message>
    <message>
        <source>Run the command again in half a minute, or run “sudo systemctl stop ModemManager”.</source>
        <translation>Führen Sie den Befehl in einer halben Minute erneut aus oder führen Sie „sudo systemctl stop ModemManager“ aus.</translation>
    </message>
    <message>
        <source>%1 is in use by a system program; ModemManager is running and may hold it.</source>
        <translation>%1 wird von einem Systemprogramm benutzt; ModemManager läuft und könnte es belegen.</translation>
    </message>
    <message>
        <source>%1 is in use by a system program; brltty, a braille driver, is running and may hold it.</source>
        <translation>%1 wird von einem Systemprogramm benutzt; brltty, ein Braille-Treiber, läuft und könnte es belegen.</translation>
    </message>
    <message>
        <source>“sudo fuser -v %1” shows which. End it, then run the command again.</source>
        <translation>„sudo fuser -v %1“ zeigt, welches. Beenden Sie es und führen Sie den Befehl dann erneut aus.</translation>
    </message>
    <message>
        <source>Correct the entry in the device directory.</source>
        <translation>Berichtigen Sie den Eintrag im Geräteverzeichnis.</translation>
    </message>
    <message>
        <source>Name another device; “vornupdater-cli list” shows them.</source>
        <translation>Nennen Sie ein anderes Gerät; „vornupdater-cli list“ zeigt sie.</translation>
    </message>
    <message>
        <source>Unplug the device, plug it in again, then run the command again.</source>
        <translation>Ziehen Sie das Gerät ab, schließen Sie es wieder an und führen Sie den Befehl dann erneut aus.</translation>
    </message>
    <message>
        <source>The device was not changed. Name another file, or download it again.</source>
        <translation>Das Gerät wurde nicht verändert. Nennen Sie eine andere Datei oder laden Sie diese erneut herunter.</translation>
    </message>
    <message>
        <source>The file %1 is meant for another model than this device (model code %2).</source>
        <translation>Die Datei %1 ist für ein anderes Modell als dieses Gerät (Modellcode %2) bestimmt.</translation>
    </message>
    <message>
        <source>The device was not changed. Name a file for its model, or give --force.</source>
        <translation>Das Gerät wurde nicht verändert. Nennen Sie eine Datei für sein Modell oder geben Sie --force an.</translation>
    </message>
    <message>
        <source>The device still holds its old firmware. Check its power and cable, then update it again.</source>
        <translation>Das Gerät hat noch seine alte Firmware. Prüfen Sie Stromversorgung und Kabel und aktualisieren Sie es dann erneut.</translation>
    </message>
    <message>
        <source>The device must be updated again before it can be used: check its power and cable first.</source>
        <translation>Das Gerät muss erneut aktualisiert werden, bevor es verwendet werden kann: Prüfen Sie zuerst Stromversorgung und Kabel.</translation>
    </message>
    <message>
        <source>It still holds its old firmware. Unplug it, plug it in, then update it again.</source>
        <translation>Es hat noch seine alte Firmware. Ziehen Sie es ab, schließen Sie es wieder an und aktualisieren Sie es dann erneut.</translation>
    </message>
    <message>
        <source>It must be updated again before it can be used: check that the file is meant for it first.</source>
        <translation>Es muss erneut aktualisiert werden, bevor es verwendet werden kann: Prüfen Sie zuerst, ob die Datei für das Gerät bestimmt ist.</translation>
    </message>
    <message>
        <source>The port closed %2 s into the wait for the answer to %1.</source>
        <translation>Der Port wurde nach %2 s Warten auf die Antwort auf %1 geschlossen.</translation>
    </message>
    <message>
        <source>The device still holds its old firmware. Check that it is plugged in, press “Open”, then “Update firmware”.</source>
        <translation>Das Gerät hat noch seine alte Firmware. Prüfen Sie, ob es eingesteckt ist, drücken Sie „Open“, dann „Firmware aktualisieren“.</translation>
    </message>
    <message>
        <source>The device still holds its old firmware. Plug it in, then update it again.</source>
        <translation>Das Gerät hat noch seine alte Firmware. Schließen Sie es an und aktualisieren Sie es dann erneut.</translation>
    </message>
    <message>
        <source>The device must be updated again before it can be used: check that it is plugged in, press “Open”, then “Update firmware”.</source>
        <translation>Das Gerät ist erst nach erneutem Update benutzbar: Prüfen Sie, ob es eingesteckt ist, drücken Sie „Open“, dann „Firmware aktualisieren“.</translation>
    </message>
    <message>
        <source>The device must be updated again before it can be used: plug it in first.</source>
        <translation>Das Gerät muss erneut aktualisiert werden, bevor es verwendet werden kann: Schließen Sie es zuerst an.</translation>
    </message>
    <message>
        <source>Interrupted before the device was changed.</source>
        <translation>Abgebrochen, bevor das Gerät verändert wurde.</translation>
    </message>
    <message>
        <source>It still holds its old firmware.</source>
        <translation>Es hat noch seine alte Firmware.</translation>
    </message>
    <message>
        <source>Interrupted during the wait for the answer to %1.</source>
        <translation>Abgebrochen während des Wartens auf die Antwort auf %1.</translation>
    </message>
    <message>
        <source>The device must be updated again before it can be used.</source>
        <translation>Das Gerät muss erneut aktualisiert werden, bevor es verwendet werden kann.</translation>
    </message>
    <message>
        <source>The device did not report its model: no answer to %1 within %2 s.</source>
        <translation>Das Gerät hat sein Modell nicht gemeldet: keine Antwort auf %1 binnen %2 s.</translation>
    </message>
    <message>
        <source>Check its power and cable, then run the command again.</source>
        <translation>Prüfen Sie Stromversorgung und Kabel und führen Sie den Befehl dann erneut aus.</translation>
    </message>
    <message>
        <source>The device did not report its model: it refused %1 after %2 s.</source>
        <translation>Das Gerät hat sein Modell nicht gemeldet: Es hat %1 nach %2 s abgelehnt.</translation>
    </message>
    <message>
        <source>Run the command again.</source>
        <translation>Führen Sie den Befehl erneut aus.</translation>
    </message>
    <message>
        <source>The device did not report its model: the port closed.</source>
        <translation>Das Gerät hat sein Modell nicht gemeldet: Der Port wurde geschlossen.</translation>
    </message>
    <message>
        <source>Check that it is plugged in, then press “Open”.</source>
        <translation>Prüfen Sie, ob es eingesteckt ist, und drücken Sie dann „Open“.</translation>
    </message>
    <message>
        <source>Plug it in, then run the command again.</source>
        <translation>Schließen Sie es an und führen Sie den Befehl dann erneut aus.</translation>
    </message>
    <message>
        <source>Run “vornupdater-cli download”, or put files that end in .bin into %1.</source>
        <translation>Führen Sie „vornupdater-cli download“ aus oder legen Sie Dateien, die auf .bin enden, in %1 ab.</translation>
    </message>
    <message>
        <source>Add a firmware file for it, or check that it is the right device.</source>
        <translation>Legen Sie eine Firmware-Datei für das Gerät ab, oder prüfen Sie, ob es das richtige ist.</translation>
    </message>
    <message>
        <source>Connect it, then run the command again.</source>
        <translation>Verbinden Sie ihn und führen Sie den Befehl dann erneut aus.</translation>
    </message>
    <message>
        <source>Check the network connection, then run the command again.</source>
        <translation>Prüfen Sie die Netzwerkverbindung und führen Sie den Befehl dann erneut aus.</translation>
    </message>
    <message>
        <source>Check the network connection and firewall, then run the command again.</source>
        <translation>Prüfen Sie Netzwerkverbindung und Firewall und führen Sie den Befehl dann erneut aus.</translation>
    </message>
    <message>
        <source>Check the proxy settings (https_proxy), then run the command again.</source>
        <translation>Prüfen Sie die Proxy-Einstellungen (https_proxy) und führen Sie den Befehl dann erneut aus.</translation>
    </message>
    <message>
        <source>The server %1 sent nothing for %2 s.</source>
        <translation>Der Server %1 hat %2 s lang nichts gesendet.</translation>
    </message>
    <message>
        <source>The package from %1 was not complete after %2 s.</source>
        <translation>Das Paket von %1 war nach %2 s nicht vollständig.</translation>
    </message>
    <message>
        <source>Use a faster network connection, or try again later.</source>
        <translation>Verwenden Sie eine schnellere Netzwerkverbindung, oder versuchen Sie es später erneut.</translation>
    </message>
    <message>
        <source>Try again later; if it persists, tell the server&apos;s operator.</source>
        <translation>Versuchen Sie es später erneut; wenn es dabei bleibt, informieren Sie den Betreiber des Servers.</translation>
    </message>
    <message>
        <source>Tell the server&apos;s operator. Nothing was replaced.</source>
        <translation>Informieren Sie den Betreiber des Servers. Es wurde nichts ersetzt.</translation>
    </message>
    <message>
        <source>The package&apos;s entry %1 is damaged, encrypted or of an unknown kind.</source>
        <translation>Der Eintrag %1 des Pakets ist beschädigt, verschlüsselt oder von unbekannter Art.</translation>
    </message>
    <message>
        <source>Press “Download latest” again. Nothing was replaced.</source>
        <translation>Drücken Sie erneut „Neueste herunterladen“. Es wurde nichts ersetzt.</translation>
    </message>
    <message>
        <source>Run the command again. Nothing was replaced.</source>
        <translation>Führen Sie den Befehl erneut aus. Es wurde nichts ersetzt.</translation>
    </message>
    <message>
        <source>The package has a file and a folder with the same name, %1.</source>
        <translation>Das Paket enthält eine Datei und einen Ordner mit demselben Namen, %1.</translation>
    </message>
    <message>
        <source>Move it away, then run the command again.</source>
        <translation>Verschieben Sie es und führen Sie den Befehl dann erneut aus.</translation>
    </message>
    <message>
        <source>Not enough disk space for the package in %1.</source>
        <translation>Zu wenig Speicherplatz für das Paket in %1.</translation>
    </message>
    <message>
        <source>Free some disk space, then run the command again.</source>
        <translation>Schaffen Sie Platz auf dem Datenträger und führen Sie den Befehl dann erneut aus.</translation>
    </message>
    <message>
        <source>No permission to write to %1.</source>
        <translation>Keine Berechtigung, in %1 zu schreiben.</translation>
    </message>
    <message>
        <source>Correct its access rights, then run the command again.</source>
        <translation>Korrigieren Sie die Zugriffsrechte und führen Sie den Befehl dann erneut aus.</translation>
    </message>
    <message>
        <source>Check the disk. Nothing was replaced.</source>
        <translation>Prüfen Sie den Datenträger. Es wurde nichts ersetzt.</translation>
    </message>
    <message>
        <source>Use a file that holds certificates in PEM format.</source>
        <translation>Verwenden Sie eine Datei mit Zertifikaten im PEM-Format.</translation>
    </message>
    <message>
        <source>The download was interrupted.</source>
        <translation>Der Download wurde abgebrochen.</translation>
    </message>
    <message>
        <source>Nothing was replaced.</source>
        <translation>Es wurde nichts ersetzt.</translation>
    </message>
    <message>
        <source>No package server is configured.</source>
        <translation>Es ist kein Paketserver eingerichtet.</translation>
    </message>
    <message>
        <source>Name one with --package-host.</source>
        <translation>Geben Sie mit --package-host einen an.</translation>
    </message>
    <message>
        <source>The kernel still holds the port %1.</source>
        <translation>Der Kernel gibt den Port %1 noch nicht frei.</translation>
    </message>
    <message>
        <source>Unplug the device; if that does not help, restart the computer.</source>
        <translation>Ziehen Sie das Gerät ab; hilft das nicht, starten Sie den Computer neu.</translation>
    </message>
    <message>
        <source>The folder of firmware files, %1, cannot be read: %2.</source>
        <translation>Der Firmware-Ordner %1 kann nicht gelesen werden: %2.</translation>
    </message>
    <message>
        <source>Correct its access rights, or check the disk.</source>
        <translation>Korrigieren Sie seine Zugriffsrechte oder prüfen Sie den Datenträger.</translation>
    </message>
    <message>
        <source>%1 is not a file that holds certificates in PEM format.</source>
        <translation>%1 ist keine Datei mit Zertifikaten im PEM-Format.</translation>
    </message>
    <message>
        <source>The program runs as root: it unpacks downloads with all rights, into root&apos;s folder.</source>
        <translation>Das Programm läuft als root: Es entpackt Downloads mit allen Rechten, in den Ordner von root.</translation>
    </message>
    <message>
        <source>Start it as an ordinary user; the group dialout or the package gives access to the device.</source>
        <translation>Starten Sie es als normaler Benutzer; die Gruppe dialout oder das Paket gibt Zugriff.</translation>
    </message>
    <message>
        <source>Communication with the device failed: %1.</source>
        <translation>Die Verbindung zum Gerät ist gestört: %1.</translation>
    </message>
    <message>
        <source>Sending %1 failed: %3.</source>
        <translation>Konnte %1 nicht senden: %3.</translation>
    </message>
    <message>
        <source>The device still holds its old firmware. Unplug it, plug it in, press “Open”, then “Update firmware”.</source>
        <translation>Das Gerät hat noch seine alte Firmware. Stecken Sie es neu ein, drücken Sie „Open“, dann „Firmware aktualisieren“.</translation>
    </message>
    <message>
        <source>The device still holds its old firmware. Unplug it, plug it in, then update it again.</source>
        <translation>Das Gerät hat noch seine alte Firmware. Ziehen Sie es ab, schließen Sie es wieder an und aktualisieren Sie es dann erneut.</translation>
    </message>
    <message>
        <source>The device must be updated again before it can be used: unplug it, plug it in, press “Open”, then “Update firmware”.</source>
        <translation>Das Gerät braucht ein erneutes Update: Stecken Sie es neu ein, drücken Sie „Open“, dann „Firmware aktualisieren“.</translation>
    </message>
    <message>
        <source>The device must be updated again before it can be used: unplug it and plug it in first.</source>
        <translation>Das Gerät muss erneut aktualisiert werden, bevor es verwendet werden kann: Ziehen Sie es zuerst ab und schließen Sie es wieder an.</translation>
    </message>
</context>
<context>
    <name>CliOptions</name>
    <message>
        <source>List the serial devices: name, node, adapter&apos;s maker and serial number.</source>
        <translation>Die seriellen Geräte auflisten: Name, Gerätedatei, Hersteller und Seriennummer des Adapters.</translation>
    </message>
    <message>
        <source>Ask devices for their model code.</source>
        <translation>Geräte nach ihrem Modellcode fragen.</translation>
    </message>
    <message>
        <source>List the files of the firmware folder.</source>
        <translation>Die Dateien des Firmware-Ordners auflisten.</translation>
    </message>
    <message>
        <source>Fetch the latest firmware package, unless it is the one that was fetched last.</source>
        <translation>Das neueste Firmware-Paket holen, sofern es nicht das zuletzt geholte ist.</translation>
    </message>
    <message>
        <source>Update devices, side by side.</source>
        <translation>Geräte aktualisieren, mehrere gleichzeitig.</translation>
    </message>
    <message>
        <source>Update each device that is plugged in, until Ctrl-C.</source>
        <translation>Jedes angeschlossene Gerät aktualisieren, bis Strg+C gedrückt wird.</translation>
    </message>
    <message>
        <source>Commands:</source>
        <translation>Befehle:</translation>
    </message>
    <message>
        <source>“%1 COMMAND --help” describes a command&apos;s options.</source>
        <translation>„%1 COMMAND --help“ beschreibt die Optionen eines Befehls.</translation>
    </message>
    <message>
        <source>A device&apos;s name or node; without one, the only device there is.</source>
        <translation>Name oder Gerätedatei eines Geräts; ohne Angabe das einzige vorhandene Gerät.</translation>
    </message>
    <message>
        <source>Name devices or give --all, not both.</source>
        <translation>Nennen Sie Geräte oder geben Sie --all an, nicht beides.</translation>
    </message>
    <message>
        <source>Give either --firmware FILE or --newest.</source>
        <translation>Geben Sie entweder --firmware FILE oder --newest an.</translation>
    </message>
    <message>
        <source>--%1 takes a number from 0 to %2.</source>
        <translation>--%1 verlangt eine Zahl von 0 bis %2.</translation>
    </message>
    <message>
        <source>Take every USB-serial adapter.</source>
        <translation>Alle USB-Seriell-Adapter nehmen.</translation>
    </message>
    <message>
        <source>Only the files for the model code N.</source>
        <translation>Nur die Dateien für den Modellcode N.</translation>
    </message>
    <message>
        <source>Update with this file.</source>
        <translation>Mit dieser Datei aktualisieren.</translation>
    </message>
    <message>
        <source>Update with the file in the firmware folder that has the highest version in its name for the device&apos;s model.</source>
        <translation>Mit der Datei im Firmware-Ordner aktualisieren, die für das Modell des Geräts die höchste Version im Namen trägt.</translation>
    </message>
    <message>
        <source>Accept a file whose name says another model than the device&apos;s.</source>
        <translation>Auch eine Datei annehmen, deren Name ein anderes Modell als das des Geräts nennt.</translation>
    </message>
    <message>
        <source>Begin a failed update again, up to N times (0).</source>
        <translation>Eine fehlgeschlagene Aktualisierung neu beginnen, bis zu N-mal (0).</translation>
    </message>
    <message>
        <source>Append a JSON line for each update to FILE.</source>
        <translation>Für jede Aktualisierung eine JSON-Zeile an FILE anhängen.</translation>
    </message>
    <message>
        <source>--timeout-scale takes a number above 0, up to %1.</source>
        <translation>--timeout-scale verlangt eine Zahl über 0, höchstens %1.</translation>
    </message>
    <message>
        <source>Updates devices&apos; firmware over their USB-serial links, and fetches firmware packages. Options come before the command.</source>
        <translation>Aktualisiert die Firmware von Geräten über ihre USB-Seriell-Verbindungen und holt Firmware-Pakete. Optionen stehen vor dem Befehl.</translation>
    </message>
    <message>
        <source>Write a JSON object a line instead of text to standard output.</source>
        <translation>Statt Text je Zeile ein JSON-Objekt auf die Standardausgabe schreiben.</translation>
    </message>
    <message>
        <source>Tell each step, and what the system reports.</source>
        <translation>Jeden Schritt und die Meldungen des Systems ausgeben.</translation>
    </message>
    <message>
        <source>Wait X times as long as usual for a slow device&apos;s answers.</source>
        <translation>X-mal so lange wie üblich auf die Antworten eines langsamen Geräts warten.</translation>
    </message>
    <message>
        <source>What to do; see below.</source>
        <translation>Was zu tun ist; siehe unten.</translation>
    </message>
    <message>
        <source>No command was given.</source>
        <translation>Es wurde kein Befehl angegeben.</translation>
    </message>
    <message>
        <source>Unknown command: %1</source>
        <translation>Unbekannter Befehl: %1</translation>
    </message>
</context>
<context>
    <name>CommandLine</name>
    <message>
        <source>The device directory %1 cannot be used: %2</source>
        <translation>Das Geräteverzeichnis %1 kann nicht verwendet werden: %2</translation>
    </message>
    <message>
        <source>The program cannot start: %1</source>
        <translation>Das Programm kann nicht starten: %1</translation>
    </message>
    <message>
        <source>The package host is not of the form HOST[:PORT]: %1</source>
        <translation>Der Paketserver ist nicht in der Form HOST[:PORT] angegeben: %1</translation>
    </message>
    <message>
        <source>Updates a device&apos;s firmware over its USB-serial link, and fetches firmware packages.</source>
        <translation>Aktualisiert die Firmware eines Geräts über dessen USB-Seriell-Verbindung und lädt Firmware-Pakete herunter.</translation>
    </message>
    <message>
        <source>Show this help and exit.</source>
        <translation>Zeigt diese Hilfe an und beendet das Programm.</translation>
    </message>
    <message>
        <source>Besides the system&apos;s devices, offer every entry of DIR (a link to a terminal) as a serial device named like the entry.</source>
        <translation>Bietet neben den Geräten des Systems jeden Eintrag von DIR (einen Link auf ein Terminal) als serielles Gerät an, das wie der Eintrag heißt.</translation>
    </message>
    <message>
        <source>Fetch packages from this server, over HTTPS.</source>
        <translation>Lädt Pakete über HTTPS von diesem Server herunter.</translation>
    </message>
    <message>
        <source>Trust the certificates in FILE (PEM) besides the system&apos;s for the package server.</source>
        <translation>Vertraut beim Paketserver neben den Zertifikaten des Systems auch denen in FILE (PEM).</translation>
    </message>
    <message>
        <source>Unexpected argument: %1</source>
        <translation>Unerwartetes Argument: %1</translation>
    </message>
    <message>
        <source>Try --help.</source>
        <translation>Hilfe erhalten Sie mit --help.</translation>
    </message>
    <message>
        <source>There is no display for the window (DISPLAY and WAYLAND_DISPLAY are not set).</source>
        <translation>Es gibt keine Anzeige für das Fenster (DISPLAY und WAYLAND_DISPLAY sind nicht gesetzt).</translation>
    </message>
</context>
<context>
    <name>DeviceRun</name>
    <message>
        <source>Model code %1</source>
        <translation>Modellcode %1</translation>
    </message>
    <message>
        <source>%1: %2 Beginning again with the reset pulse (%3 of %4).</source>
        <translation>%1: %2 Neubeginn mit dem Reset-Impuls (%3 von %4).</translation>
    </message>
    <message>
        <source>Updated with %1 in %2 s</source>
        <translation>Mit %1 in %2 s aktualisiert</translation>
    </message>
</context>
<context>
    <name>DeviceRuns</name>
    <message>
        <source>The update goes on. Pressing Ctrl-C again would leave the device half written.</source>
        <translation>Die Aktualisierung läuft weiter. Erneutes Strg+C ließe das Gerät halb beschrieben zurück.</translation>
    </message>
</context>
<context>
    <name>Download</name>
    <message>
        <source>Receive the package</source>
        <translation>Paket empfangen</translation>
    </message>
    <message>
        <source>Unpack the package</source>
        <translation>Paket entpacken</translation>
    </message>
    <message>
        <source>The latest package is installed already.</source>
        <translation>Das neueste Paket ist bereits installiert.</translation>
    </message>
    <message>
        <source>The latest package is installed.</source>
        <translation>Das neueste Paket ist installiert.</translation>
    </message>
</context>
<context>
    <name>Output</name>
    <message>
        <source>The output cannot be written: %1.</source>
        <translation>Die Ausgabe kann nicht geschrieben werden: %1.</translation>
    </message>
</context>
<context>
    <name>Progress</name>
    <message>
        <source>%1 elapsed, about %2 left.</source>
        <translation>%1 vergangen, noch etwa %2.</translation>
    </message>
    <message>
        <source>%1 elapsed.</source>
        <translation>%1 vergangen.</translation>
    </message>
    <message>
        <source>Waiting for the device to erase, %1 of at most %2.</source>
        <translation>Warten auf das Ende des Löschens: %1 von höchstens %2.</translation>
    </message>
    <message>
        <source>Waiting for the device to take the next data, %1 of at most %2.</source>
        <translation>Warten, bis das Gerät die nächsten Daten annimmt: %1 von höchstens %2.</translation>
    </message>
    <message>
        <source>Waiting for the answer to %1, %2 of at most %3.</source>
        <translation>Warten auf die Antwort auf %1: %2 von höchstens %3.</translation>
    </message>
    <message>
        <source>The update took %1 s; the image was sent at %2 KiB/s.</source>
        <translation>Das Update hat %1 s gedauert; das Abbild wurde mit %2 KiB/s gesendet.</translation>
    </message>
    <message>
        <source>Waiting for the server, %1 of at most %2.</source>
        <translation>Warten auf den Server: %1 von höchstens %2.</translation>
    </message>
    <message>
        <source>%1 of %2.</source>
        <translation>%1 von %2.</translation>
    </message>
    <message>
        <source>%1 so far.</source>
        <translation>Bisher %1.</translation>
    </message>
    <message>
        <source>%1 in %2 s, %3 KiB/s.</source>
        <translation>%1 in %2 s, %3 KiB/s.</translation>
    </message>
    <message>
        <source>%1 s</source>
        <translation>%1 s</translation>
    </message>
    <message>
        <source>%1 min %2 s</source>
        <translation>%1 min %2 s</translation>
    </message>
    <message>
        <source>Waiting for the server, %1.</source>
        <translation>Warten auf den Server, %1.</translation>
    </message>
</context>
<context>
    <name>Station</name>
    <message>
        <source>The record %1 cannot be written: %2.</source>
        <translation>Das Protokoll %1 kann nicht geschrieben werden: %2.</translation>
    </message>
    <message>
        <source>Plug in a device to update it; Ctrl-C ends.</source>
        <translation>Schließen Sie ein Gerät an, um es zu aktualisieren; Strg+C beendet.</translation>
    </message>
    <message>
        <source>To try again, unplug it and plug it in again.</source>
        <translation>Um es erneut zu versuchen, ziehen Sie es ab und schließen Sie es wieder an.</translation>
    </message>
</context>
<context>
    <name>Steps</name>
    <message>
        <source>the sync byte</source>
        <translation>das Sync-Byte</translation>
    </message>
    <message>
        <source>the connect command</source>
        <translation>den Verbindungsbefehl</translation>
    </message>
    <message>
        <source>the version query</source>
        <translation>die Versionsabfrage</translation>
    </message>
    <message>
        <source>the download command</source>
        <translation>den Download-Befehl</translation>
    </message>
    <message>
        <source>the download header</source>
        <translation>den Download-Header</translation>
    </message>
    <message>
        <source>data frame %1 of %2</source>
        <translation>Datenblock %1 von %2</translation>
    </message>
    <message>
        <source>the last frame</source>
        <translation>den letzten Block</translation>
    </message>
    <message>
        <source>the erase command</source>
        <translation>den Löschbefehl</translation>
    </message>
    <message>
        <source>Synchronize</source>
        <translation>Synchronisieren</translation>
    </message>
    <message>
        <source>Connect</source>
        <translation>Verbinden</translation>
    </message>
    <message>
        <source>Ask for the version</source>
        <translation>Version abfragen</translation>
    </message>
    <message>
        <source>Read the file</source>
        <translation>Datei lesen</translation>
    </message>
    <message>
        <source>Begin the download</source>
        <translation>Download einleiten</translation>
    </message>
    <message>
        <source>Erase</source>
        <translation>Löschen</translation>
    </message>
    <message>
        <source>Wait for the release</source>
        <translation>Auf die Freigabe warten</translation>
    </message>
    <message>
        <source>Send the image</source>
        <translation>Abbild senden</translation>
    </message>
    <message>
        <source>Confirm the image</source>
        <translation>Abbild bestätigen</translation>
    </message>
</context>
<context>
    <name>TextOutput</name>
    <message>
        <source>Model code %1</source>
        <translation>Modellcode %1</translation>
    </message>
    <message>
        <source>%1 %</source>
        <translation>%1 %</translation>
    </message>
    <message>
        <source>Good: %1. Failed: %2.</source>
        <translation>Erfolgreich: %1. Fehlgeschlagen: %2.</translation>
    </message>
</context>
<context>
    <name>ViewController</name>
    <message>
        <source>Package server: %1</source>
        <translation>Paketserver: %1</translation>
    </message>
    <message>
        <source>none</source>
        <translation>keiner</translation>
    </message>
    <message>
        <source>Line: %1 baud; limits: %2 s, %3 s while erasing</source>
        <translation>Leitung: %1 Baud; Zeitlimits: %2 s, beim Löschen %3 s</translation>
    </message>
    <message>
        <source>Serial Port Connected</source>
        <translation>Serieller Port verbunden</translation>
    </message>
    <message>
        <source>Serial Port %1 was connected to your Mac.</source>
        <translation>Der serielle Port %1 wurde mit Ihrem Computer verbunden.</translation>
    </message>
    <message>
        <source>Serial Port Disconnected</source>
        <translation>Serieller Port getrennt</translation>
    </message>
    <message>
        <source>Serial Port %1 was disconnected from your Mac.</source>
        <translation>Der serielle Port %1 wurde von Ihrem Computer getrennt.</translation>
    </message>
    <message>
        <source>Checking the firmware file.</source>
        <translation>Die Firmware-Datei wird geprüft.</translation>
    </message>
</context>
<context>
    <name>vorn::CloseQuestion</name>
    <message>
        <source>Update Running</source>
        <translation>Update läuft</translation>
    </message>
    <message>
        <source>The device is being updated.</source>
        <translation>Das Gerät wird gerade aktualisiert.</translation>
    </message>
    <message>
        <source>Closing the window stops the update, and the device cannot be used until it has been updated again.</source>
        <translation>Wenn Sie das Fenster schließen, wird das Update abgebrochen, und das Gerät ist erst nach einem erneuten Update wieder benutzbar.</translation>
    </message>
    <message>
        <source>Closing the device stops the update, and it cannot be used until it has been updated again.</source>
        <translation>Wenn Sie das Gerät schließen, wird das Update abgebrochen, und das Gerät ist erst nach einem erneuten Update wieder benutzbar.</translation>
    </message>
    <message>
        <source>&amp;Keep Updating</source>
        <translation>&amp;Weiter aktualisieren</translation>
    </message>
    <message>
        <source>Close &amp;Anyway</source>
        <translation>&amp;Trotzdem schließen</translation>
    </message>
    <message>
        <source>The update has ended.</source>
        <translation>Das Update ist beendet.</translation>
    </message>
    <message>
        <source>The window shows the result.</source>
        <translation>Das Fenster zeigt das Ergebnis.</translation>
    </message>
    <message>
        <source>&amp;Keep Open</source>
        <translation>&amp;Geöffnet lassen</translation>
    </message>
    <message>
        <source>Close &amp;Window</source>
        <translation>&amp;Fenster schließen</translation>
    </message>
    <message>
        <source>Close &amp;Device</source>
        <translation>Gerät &amp;schließen</translation>
    </message>
</context>
<context>
    <name>vorn::ConnectionSection</name>
    <message>
        <source>%1 (%2): open</source>
        <translation>%1 (%2): geöffnet</translation>
    </message>
    <message>
        <source>%1: closed</source>
        <translation>%1: geschlossen</translation>
    </message>
    <message>
        <source>%1 (%2): plugged in</source>
        <translation>%1 (%2): angeschlossen</translation>
    </message>
    <message>
        <source>%1: unplugged</source>
        <translation>%1: abgezogen</translation>
    </message>
</context>
<context>
    <name>vorn::FirmwareSection</name>
    <message>
        <source>Fetch the latest firmware package</source>
        <translation>Das neueste Firmware-Paket herunterladen</translation>
    </message>
    <message>
        <source>No package server is configured</source>
        <translation>Es ist kein Paketserver eingerichtet</translation>
    </message>
    <message>
        <source>Download</source>
        <translation>Download</translation>
    </message>
    <message>
        <source>Unpacking the package.</source>
        <translation>Das Paket wird entpackt.</translation>
    </message>
    <message>
        <source>Unpacking</source>
        <translation>Entpacken</translation>
    </message>
</context>
<context>
    <name>vorn::LogSection</name>
    <message>
        <source>Device: %1, %2, %3</source>
        <translation>Gerät: %1, %2, %3</translation>
    </message>
    <message>
        <source>Its node: group %1, mode %2</source>
        <translation>Geräteknoten: Gruppe %1, Modus %2</translation>
    </message>
    <message>
        <source>Its node: gone</source>
        <translation>Geräteknoten: nicht mehr vorhanden</translation>
    </message>
    <message>
        <source>%1: START</source>
        <translation>%1: START</translation>
    </message>
    <message>
        <source>%1: OK, %2 s</source>
        <translation>%1: OK, %2 s</translation>
    </message>
    <message>
        <source>%1: FAILED, %2 s</source>
        <translation>%1: FAILED, %2 s</translation>
    </message>
    <message>
        <source>Copied.</source>
        <translation>Kopiert.</translation>
    </message>
    <message>
        <source>Saved to %1.</source>
        <translation>Gespeichert unter %1.</translation>
    </message>
    <message>
        <source>Not saved: %1.</source>
        <translation>Nicht gespeichert: %1.</translation>
    </message>
    <message>
        <source>Language: %1</source>
        <translation>Sprache: %1</translation>
    </message>
    <message>
        <source>Device: none</source>
        <translation>Gerät: keines</translation>
    </message>
    <message>
        <source>The last exchange with the device:</source>
        <translation>Der letzte Datenaustausch mit dem Gerät:</translation>
    </message>
    <message>
        <source>Adapter: %1, %2, serial number %3</source>
        <translation>Adapter: %1, %2, Seriennummer %3</translation>
    </message>
</context>
<context>
    <name>vorn::MainWindow</name>
    <message>
        <source>Vorn Firmware Updater</source>
        <translation>Vorn Firmware Updater</translation>
    </message>
    <message>
        <source>De&amp;vice</source>
        <translation>&amp;Gerät</translation>
    </message>
    <message>
        <source>Device</source>
        <translation>Gerät</translation>
    </message>
    <message>
        <source>Connection status</source>
        <translation>Verbindungsstatus</translation>
    </message>
    <message>
        <source>Connection details</source>
        <translation>Verbindungsdetails</translation>
    </message>
    <message>
        <source>&amp;Firmware</source>
        <translation>&amp;Firmware</translation>
    </message>
    <message>
        <source>Firmware</source>
        <translation>Firmware</translation>
    </message>
    <message>
        <source>&amp;Download latest</source>
        <translation>&amp;Neueste herunterladen</translation>
    </message>
    <message>
        <source>Firmware status</source>
        <translation>Firmware-Status</translation>
    </message>
    <message>
        <source>Firmware details</source>
        <translation>Firmware-Details</translation>
    </message>
    <message>
        <source>Download progress</source>
        <translation>Download-Fortschritt</translation>
    </message>
    <message>
        <source>Update</source>
        <translation>Update</translation>
    </message>
    <message>
        <source>Update status</source>
        <translation>Update-Status</translation>
    </message>
    <message>
        <source>&amp;Update firmware</source>
        <translation>Firmware &amp;aktualisieren</translation>
    </message>
    <message>
        <source>Update details</source>
        <translation>Update-Details</translation>
    </message>
    <message>
        <source>Update progress</source>
        <translation>Update-Fortschritt</translation>
    </message>
    <message>
        <source>&amp;Log</source>
        <translation>&amp;Protokoll</translation>
    </message>
    <message>
        <source>Log</source>
        <translation>Protokoll</translation>
    </message>
    <message>
        <source>Show what happened since the start</source>
        <translation>Anzeigen, was seit dem Start geschehen ist</translation>
    </message>
    <message>
        <source>Copy the log, with the versions and the last exchange with the device</source>
        <translation>Das Protokoll samt Versionen und letztem Datenaustausch mit dem Gerät kopieren</translation>
    </message>
    <message>
        <source>&amp;Save…</source>
        <translation>&amp;Speichern&#xa0;…</translation>
    </message>
    <message>
        <source>Save the log, with the versions and the last exchange with the device</source>
        <translation>Das Protokoll samt Versionen und letztem Datenaustausch mit dem Gerät speichern</translation>
    </message>
    <message>
        <source>Not possible while an update is running</source>
        <translation>Nicht möglich, während ein Update läuft</translation>
    </message>
    <message>
        <source>Save the log</source>
        <translation>Protokoll speichern</translation>
    </message>
    <message>
        <source>Log notice</source>
        <translation>Hinweis zum Protokoll</translation>
    </message>
    <message>
        <source>Co&amp;py</source>
        <translation>&amp;Kopieren</translation>
    </message>
    <message>
        <source>Hide the log</source>
        <translation>Das Protokoll ausblenden</translation>
    </message>
</context>
<context>
    <name>vorn::PowerEvents</name>
    <message>
        <source>Serial ports are closed before sleep</source>
        <translation>Serielle Ports werden vor dem Energiesparmodus geschlossen</translation>
    </message>
</context>
<context>
    <name>vorn::UpdateSection</name>
    <message>
        <source>Update not started: %1</source>
        <translation>Update nicht gestartet: %1</translation>
    </message>
    <message>
        <source>A device&apos;s firmware is being updated</source>
        <translation>Die Firmware eines Geräts wird aktualisiert</translation>
    </message>
    <message>
        <source>Update of %1 with %2</source>
        <translation>Update von %1 mit %2</translation>
    </message>
    <message>
        <source>Update</source>
        <translation>Update</translation>
    </message>
    <message>
        <source>Version query</source>
        <translation>Versionsabfrage</translation>
    </message>
    <message>
        <source>Firmware updated</source>
        <translation>Firmware aktualisiert</translation>
    </message>
    <message>
        <source>%1 has its new firmware.</source>
        <translation>%1 hat die neue Firmware.</translation>
    </message>
    <message>
        <source>Firmware update failed</source>
        <translation>Firmware-Update fehlgeschlagen</translation>
    </message>
    <message>
        <source>%1: %2</source>
        <translation>%1: %2</translation>
    </message>
</context>
</TS>
