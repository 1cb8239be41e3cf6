<?xml version="1.0" encoding="utf-8"?>
<!DOCTYPE TS>
<TS version="2.1" language="zh_CN" sourcelanguage="en">
<context>
    <name>Causes</name>
    <message>
        <source>No device is plugged in.</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Plug in the device&apos;s USB-serial adapter; it appears here by itself.</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>%1 is a serial device, but not a USB-serial adapter.</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Plug in the device&apos;s own USB-serial adapter.</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>%1 is plugged in, too, but only one device can be chosen.</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>To use it, unplug %2.</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>The list offers one device only, %1.</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>To use another one, unplug this one first.</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>The port is closed, although the button reads “Close”.</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Unplug all devices, then plug this one in again.</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>%1 was gone %2 s after it was plugged in.</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Check the cable, and try another USB port.</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>%1 was gone %2 s after it was plugged in, and brltty, the driver for braille displays, is running: it takes some adapters for itself.</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>If nobody here needs a braille display, run “sudo apt remove brltty”, then plug the device in again.</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>%1 is not there any more.</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Plug the device in again.</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>You have no access to %1, which belongs to the group %2.</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Run “sudo usermod -aG %2 $USER”, then log out and in again.</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>You have no access to %1 (mode %2).</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Run “sudo chmod a+rw %1”; this holds until the device is unplugged.</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>%1 is in use by %2 (process %3).</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Close that program, then press “Open” again.</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>%1 is in use by ModemManager (process %2), which examines each new serial device.</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Press “Open” again in half a minute, or keep it away with “sudo systemctl stop ModemManager”.</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>%1 is in use by brltty (process %2), the driver for braille displays.</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>%1 is in use by a program of another user.</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>“sudo fuser -v %1” shows which. End it, then press “Open” again.</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>%1 is not a serial port.</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Choose another device.</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>%1 cannot be opened: %2.</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Unplug the device, plug it in again, then press “Open”.</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>The adapter at %1 cannot run at %2 baud, which the device needs.</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Use another USB-serial adapter.</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>The system does not let go of %1.</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Unplug the device.</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>The connection to %1 was lost.</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>If the device is still plugged in, press “Open”.</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>The device is not open.</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Press “Open” first.</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>No firmware file is chosen.</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Choose one in the list of firmware files.</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>The firmware file %1 cannot be read: %2.</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>The device was not changed. Choose another file, or download it again.</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>The firmware file %1 is empty.</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>The firmware file %1 is too large for a device.</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>No answer to %1 within %2 s.</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>The device still holds its old firmware. Check its power and cable, then press “Update firmware” again.</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>The device must be updated again before it can be used: check its power and cable, then press “Update firmware”.</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>The device refused %1 after %2 s.</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>It still holds its old firmware. Check that the file is meant for it, then press “Update firmware” again.</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>It must be updated again before it can be used: check that the file is meant for it, then press “Update firmware”.</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>The port closed during the wait for the answer to %1, after %2 s.</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>The device still holds its old firmware. Plug it in, press “Open”, then “Update firmware”.</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>The device must be updated again before it can be used: plug it in, press “Open”, then “Update firmware”.</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>The device did not tell its model: no answer to %1 within %2 s.</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Check its power and cable, then close and open it.</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>The device did not tell its model: it refused %1 after %2 s.</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Close and open it to ask again.</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>The device did not tell its model: the port closed during the wait for the answer to %1, after %2 s.</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Plug it in and press “Open” to ask again.</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>There is no firmware file yet.</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Press “Download latest”, or put files that end in .bin into %1.</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>There is no firmware file yet, and no package server is configured.</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Put files that end in .bin into %1.</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>No firmware file is for this device (model code %1).</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Press “Download latest”, or check that it is the right device.</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>This computer is not connected to a network.</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Connect it, then press “Download latest” again.</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>The address of the server %1 cannot be found.</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Check the network connection, then press “Download latest” again.</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>The server %1 cannot be reached (network error %2).</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Check the network connection and firewall, then press “Download latest” again.</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>The proxy on the way to %1 failed (network error %2).</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Check the proxy settings (https_proxy), then start the program again.</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>The connection to %1 was lost before the package was complete.</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Press “Download latest” again.</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>The server %1 did not go on within %2 s.</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Try again later.</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>The certificate of %1 cannot be trusted: %2</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Check this computer&apos;s date and time; else somebody may be listening on this network. Nothing was downloaded.</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>No encrypted connection to %1 could be made.</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Check proxy and firewall, or try another network.</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>The server %1 leads to an address without encryption.</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Tell the server&apos;s operator. Nothing was downloaded.</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>The response of %1 is not valid (network error %2).</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>The server %1 answered with HTTP status %2.</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Try again later; if it stays so, tell the server&apos;s operator.</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>The server names the package %1, which cannot be a folder&apos;s name.</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Tell the server&apos;s operator.</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>The package is too large (%1).</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Tell the server&apos;s operator. The old firmware files are still there.</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>The package %1 is not a zip archive.</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>The package is damaged at the entry %1.</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Press “Download latest” again. The old firmware files are still there.</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>The package&apos;s entry %1 would be written outside its folder.</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Do not use this package; tell the server&apos;s operator. The old firmware files are still there.</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>The package has a file and a folder of one name, %1.</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>%1 is in the way, and does not belong to this program.</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Move it away, then press “Download latest” again.</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>There is no room for the package at %1.</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Free some disk space, then press “Download latest” again.</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>You may not write to %1.</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Correct its access rights, then press “Download latest” again.</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>%1: %2.</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Check the disk. The old firmware files are still there.</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>%1 holds no certificate in PEM format.</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Name a file that does.</source>
        <translation type="unfinished"></translation>
    </message>
</context>
<context>
    <name>CommandLine</name>
    <message>
        <source>The device directory does not exist: %1</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>The device directory is not a directory: %1</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>The device directory cannot be read: %1</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>The package host is not of the form HOST[:PORT]: %1</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Updates a device&apos;s firmware over its USB-serial link, and fetches firmware packages.</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Show this help and exit.</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Besides the system&apos;s devices, offer every entry of DIR (a link to a terminal) as a serial device named like the entry.</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Fetch packages from this server, over HTTPS.</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Trust the certificates in FILE (PEM) besides the system&apos;s for the package server.</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Unexpected argument: %1</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Try --help.</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>There is no display for the window (DISPLAY and WAYLAND_DISPLAY are not set).</source>
        <translation type="unfinished"></translation>
    </message>
</context>
<context>
    <name>Progress</name>
    <message>
        <source>%1 elapsed, about %2 left.</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>%1 elapsed.</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Waiting for the device to erase, %1 of at most %2.</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Waiting for the device to take the next data, %1 of at most %2.</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Waiting for the answer to %1, %2 of at most %3.</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>The update took %1 s; the image was sent at %2 KiB/s.</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Waiting for the server, %1 of at most %2.</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>%1 of %2.</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>%1 so far.</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>%1 in %2 s, %3 KiB/s.</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>%1 s</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>%1 min %2 s</source>
        <translation type="unfinished"></translation>
    </message>
</context>
<context>
    <name>Steps</name>
    <message>
        <source>the sync byte</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>the connect command</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>the version query</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>the download command</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>the erase</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>the download header</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>data frame %1 of %2</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>the last frame</source>
        <translation type="unfinished"></translation>
    </message>
</context>
<context>
    <name>ViewController</name>
    <message>
        <source>Package server: %1</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>none</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Line: %1 baud; limits: %2 s, %3 s while erasing</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Serial Port Connected</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Serial Port %1 was connected to your Mac.</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Serial Port Disconnected</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Serial Port %1 was disconnected from your Mac.</source>
        <translation type="unfinished"></translation>
    </message>
</context>
<context>
    <name>vorn::CloseQuestion</name>
    <message>
        <source>Update Running</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>The device is being updated.</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Closing the window stops the update, and the device cannot be used until it has been updated again.</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Closing the device stops the update, and it cannot be used until it has been updated again.</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>&amp;Keep Updating</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Close &amp;Anyway</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>The update has ended.</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>The window shows the result.</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>&amp;Keep Open</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Close &amp;Window</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Close &amp;Device</source>
        <translation type="unfinished"></translation>
    </message>
</context>
<context>
    <name>vorn::ConnectionSection</name>
    <message>
        <source>%1 (%2): open</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>%1: closed</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>%1 (%2): plugged in</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>%1: unplugged</source>
        <translation type="unfinished"></translation>
    </message>
</context>
<context>
    <name>vorn::FirmwareSection</name>
    <message>
        <source>Fetch the latest firmware package</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>No package server is configured</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Download</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Unpacking the package.</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Unpacking</source>
        <translation type="unfinished"></translation>
    </message>
</context>
<context>
    <name>vorn::LogSection</name>
    <message>
        <source>Device: %1, %2, %3</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Its node: group %1, mode %2</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Its node: gone</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>%1: START</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>%1: OK, %2 s</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>%1: FAILED, %2 s</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Copied.</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Saved to %1.</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Not saved: %1.</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Language: %1</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Device: none</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>The last exchange with the device:</source>
        <translation type="unfinished"></translation>
    </message>
</context>
<context>
    <name>vorn::MainWindow</name>
    <message>
        <source>Vorn Firmware Updater</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>De&amp;vice</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Device</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Connection status</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Connection details</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>&amp;Firmware</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Firmware</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>&amp;Download latest</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Firmware status</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Firmware details</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Download progress</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Update</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Update status</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>&amp;Update firmware</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Update details</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Update progress</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>&amp;Log</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Log</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Show what happened since the start</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>&amp;Copy</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Copy the log, with the versions and the last exchange with the device</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>&amp;Save…</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Save the log, with the versions and the last exchange with the device</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Not possible while an update is running</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Save the log</source>
        <translation type="unfinished"></translation>
    </message>
</context>
<context>
    <name>vorn::PowerEvents</name>
    <message>
        <source>Serial ports are closed before sleep</source>
        <translation type="unfinished"></translation>
    </message>
</context>
<context>
    <name>vorn::UpdateSection</name>
    <message>
        <source>Synchronize</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Connect</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Ask for the version</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Read the file</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Begin the download</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Erase</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Wait for the release</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Send the image</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Confirm the image</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Update not started: %1</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>A device&apos;s firmware is being updated</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Update of %1 with %2</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Update</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Version query</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Firmware updated</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>%1 has its new firmware.</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Firmware update failed</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>%1: %2</source>
        <translation type="unfinished"></translation>
    </message>
</context>
</TS>
