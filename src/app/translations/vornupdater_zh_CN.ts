<?xml version="1.0" encoding="utf-8"?>
<!DOCTYPE TS>
<TS version="2.1" language="zh_CN" sourcelanguage="en">
<context>
    <name>Causes</name>
    <message>
        <source>No device is plugged in.</source>
        <translation>未插入设备。</translation>
    </message>
    <message>
        <source>Plug in the device&apos;s USB-serial adapter; it appears here by itself.</source>
        <translation>请插入设备的 USB 转串口适配器，它会自动显示在此处。</translation>
    </message>
    <message>
        <source>Plug in the device&apos;s own USB-serial adapter.</source>
        <translation>请插入设备自带的 USB 转串口适配器。</translation>
    </message>
    <message>
        <source>%1 is plugged in, too, but only one device can be chosen.</source>
        <translation>%1 也已插入，但只能选择一个设备。</translation>
    </message>
    <message>
        <source>To use it, unplug %2.</source>
        <translation>如需使用该设备，请拔下 %2。</translation>
    </message>
    <message>
        <source>The list offers one device only, %1.</source>
        <translation>列表中只有一个设备可选：%1。</translation>
    </message>
    <message>
        <source>To use another one, unplug this one first.</source>
        <translation>如需使用其他设备，请先拔下此设备。</translation>
    </message>
    <message>
        <source>The port is closed, although the button reads “Close”.</source>
        <translation>串口已关闭，但按钮仍显示“Close”。</translation>
    </message>
    <message>
        <source>Unplug all devices, then plug this one in again.</source>
        <translation>请拔下所有设备，然后重新插入此设备。</translation>
    </message>
    <message>
        <source>%1 was gone %2 s after it was plugged in.</source>
        <translation>%1 在插入 %2 秒后消失。</translation>
    </message>
    <message>
        <source>Check the cable, and try another USB port.</source>
        <translation>请检查连接线，并换一个 USB 接口再试。</translation>
    </message>
    <message>
        <source>Plug the device in again.</source>
        <translation>请重新插入设备。</translation>
    </message>
    <message>
        <source>You have no access to %1, which belongs to the group %2.</source>
        <translation>您无权访问 %1，它属于用户组 %2。</translation>
    </message>
    <message>
        <source>Run “sudo usermod -aG %2 $USER”, then log out and in again.</source>
        <translation>请运行“sudo usermod -aG %2 $USER”，然后注销并重新登录。</translation>
    </message>
    <message>
        <source>You have no access to %1 (mode %2).</source>
        <translation>您无权访问 %1（权限 %2）。</translation>
    </message>
    <message>
        <source>Run “sudo chmod a+rw %1”; this holds until the device is unplugged.</source>
        <translation>请运行“sudo chmod a+rw %1”；此设置在拔下设备前有效。</translation>
    </message>
    <message>
        <source>%1 is in use by %2 (process %3).</source>
        <translation>%1 正被 %2（进程 %3）占用。</translation>
    </message>
    <message>
        <source>Close that program, then press “Open” again.</source>
        <translation>请关闭该程序，然后再次点击“Open”。</translation>
    </message>
    <message>
        <source>%1 is in use by brltty (process %2), the driver for braille displays.</source>
        <translation>%1 正被盲文点显器驱动程序 brltty（进程 %2）占用。</translation>
    </message>
    <message>
        <source>“sudo fuser -v %1” shows which. End it, then press “Open” again.</source>
        <translation>运行“sudo fuser -v %1”可查看是哪个程序。请结束该程序，然后再次点击“Open”。</translation>
    </message>
    <message>
        <source>%1 is not a serial port.</source>
        <translation>%1 不是串口。</translation>
    </message>
    <message>
        <source>%1 cannot be opened: %2.</source>
        <translation>无法打开 %1：%2。</translation>
    </message>
    <message>
        <source>Unplug the device, plug it in again, then press “Open”.</source>
        <translation>请拔下设备并重新插入，然后点击“Open”。</translation>
    </message>
    <message>
        <source>The adapter at %1 cannot run at %2 baud, which the device needs.</source>
        <translation>%1 处的适配器不支持设备所需的波特率 %2。</translation>
    </message>
    <message>
        <source>Use another USB-serial adapter.</source>
        <translation>请使用其他 USB 转串口适配器。</translation>
    </message>
    <message>
        <source>The connection to %1 was lost.</source>
        <translation>与 %1 的连接已断开。</translation>
    </message>
    <message>
        <source>If the device is still plugged in, press “Open”.</source>
        <translation>如果设备仍插在计算机上，请点击“Open”。</translation>
    </message>
    <message>
        <source>The device is not open.</source>
        <translation>设备连接尚未打开。</translation>
    </message>
    <message>
        <source>Press “Open” first.</source>
        <translation>请先点击“Open”。</translation>
    </message>
    <message>
        <source>No firmware file is chosen.</source>
        <translation>尚未选择固件文件。</translation>
    </message>
    <message>
        <source>Choose one in the list of firmware files.</source>
        <translation>请在固件文件列表中选择一个。</translation>
    </message>
    <message>
        <source>The firmware file %1 cannot be read: %2.</source>
        <translation>无法读取固件文件 %1：%2。</translation>
    </message>
    <message>
        <source>The device was not changed. Choose another file, or download it again.</source>
        <translation>设备未被更改。请选择其他文件，或重新下载该文件。</translation>
    </message>
    <message>
        <source>The firmware file %1 is empty.</source>
        <translation>固件文件 %1 为空。</translation>
    </message>
    <message>
        <source>The firmware file %1 is too large for a device.</source>
        <translation>固件文件 %1 过大，设备无法容纳。</translation>
    </message>
    <message>
        <source>No answer to %1 within %2 s.</source>
        <translation>%2 秒内未收到设备对%1的应答。</translation>
    </message>
    <message>
        <source>The device still holds its old firmware. Check its power and cable, then press “Update firmware” again.</source>
        <translation>设备仍保留旧固件。请检查设备的电源和连接线，然后再次点击“更新固件”。</translation>
    </message>
    <message>
        <source>The device must be updated again before it can be used: check its power and cable, then press “Update firmware”.</source>
        <translation>设备必须重新更新后才能使用：请检查设备的电源和连接线，然后点击“更新固件”。</translation>
    </message>
    <message>
        <source>The device refused %1 after %2 s.</source>
        <translation>设备在 %2 秒后拒绝了%1。</translation>
    </message>
    <message>
        <source>It still holds its old firmware. Unplug it, plug it in, press “Open”, then “Update firmware”.</source>
        <translation>设备仍保留旧固件。请拔出后重新插入，点击“Open”，再点击“更新固件”。</translation>
    </message>
    <message>
        <source>It must be updated again before it can be used: check that the file is meant for it, then press “Update firmware”.</source>
        <translation>设备必须重新更新后才能使用：请确认该文件适用于此设备，然后点击“更新固件”。</translation>
    </message>
    <message>
        <source>Check its power and cable, then close and open it.</source>
        <translation>请检查设备的电源和连接线，然后依次点击“Close”和“Open”。</translation>
    </message>
    <message>
        <source>Close and open it to ask again.</source>
        <translation>请依次点击“Close”和“Open”以重新查询。</translation>
    </message>
    <message>
        <source>There is no firmware file yet.</source>
        <translation>尚无固件文件。</translation>
    </message>
    <message>
        <source>Press “Download latest”, or put files that end in .bin into %1.</source>
        <translation>请点击“下载最新固件”，或将扩展名为 .bin 的文件放入 %1。</translation>
    </message>
    <message>
        <source>There is no firmware file yet, and no package server is configured.</source>
        <translation>尚无固件文件，且未配置固件包服务器。</translation>
    </message>
    <message>
        <source>Put files that end in .bin into %1.</source>
        <translation>请将扩展名为 .bin 的文件放入 %1。</translation>
    </message>
    <message>
        <source>No firmware file is for this device (model code %1).</source>
        <translation>没有适用于此设备的固件文件（型号代码 %1）。</translation>
    </message>
    <message>
        <source>This computer is not connected to a network.</source>
        <translation>此计算机未连接到网络。</translation>
    </message>
    <message>
        <source>Connect it, then press “Download latest” again.</source>
        <translation>请连接网络，然后再次点击“下载最新固件”。</translation>
    </message>
    <message>
        <source>The address of the server %1 cannot be found.</source>
        <translation>找不到服务器 %1 的地址。</translation>
    </message>
    <message>
        <source>Check the network connection, then press “Download latest” again.</source>
        <translation>请检查网络连接，然后再次点击“下载最新固件”。</translation>
    </message>
    <message>
        <source>The server %1 cannot be reached (network error %2).</source>
        <translation>无法连接到服务器 %1（网络错误 %2）。</translation>
    </message>
    <message>
        <source>Check the network connection and firewall, then press “Download latest” again.</source>
        <translation>请检查网络连接和防火墙，然后再次点击“下载最新固件”。</translation>
    </message>
    <message>
        <source>The proxy on the way to %1 failed (network error %2).</source>
        <translation>连接 %1 所用的代理出错（网络错误 %2）。</translation>
    </message>
    <message>
        <source>Check the proxy settings (https_proxy), then start the program again.</source>
        <translation>请检查代理设置（https_proxy），然后重新启动本程序。</translation>
    </message>
    <message>
        <source>The connection to %1 was lost before the package was complete.</source>
        <translation>固件包尚未接收完整，与 %1 的连接就已断开。</translation>
    </message>
    <message>
        <source>Press “Download latest” again.</source>
        <translation>请再次点击“下载最新固件”。</translation>
    </message>
    <message>
        <source>Try again later.</source>
        <translation>请稍后重试。</translation>
    </message>
    <message>
        <source>No encrypted connection to %1 could be made.</source>
        <translation>无法与 %1 建立加密连接。</translation>
    </message>
    <message>
        <source>Check proxy and firewall, or try another network.</source>
        <translation>请检查代理和防火墙，或换用其他网络。</translation>
    </message>
    <message>
        <source>The server %1 leads to an address without encryption.</source>
        <translation>服务器 %1 重定向到未加密的地址。</translation>
    </message>
    <message>
        <source>Tell the server&apos;s operator. Nothing was downloaded.</source>
        <translation>请告知服务器管理员。未下载任何内容。</translation>
    </message>
    <message>
        <source>The response of %1 is not valid (network error %2).</source>
        <translation>%1 的响应无效（网络错误 %2）。</translation>
    </message>
    <message>
        <source>The server %1 answered with HTTP status %2.</source>
        <translation>服务器 %1 返回 HTTP 状态码 %2。</translation>
    </message>
    <message>
        <source>The server names the package %1, which cannot be a folder&apos;s name.</source>
        <translation>服务器给出的固件包名称 %1 不能用作文件夹名称。</translation>
    </message>
    <message>
        <source>Tell the server&apos;s operator.</source>
        <translation>请告知服务器管理员。</translation>
    </message>
    <message>
        <source>The package is too large (%1).</source>
        <translation>固件包过大（%1）。</translation>
    </message>
    <message>
        <source>The package %1 is not a zip archive.</source>
        <translation>固件包 %1 不是 zip 压缩文件。</translation>
    </message>
    <message>
        <source>The package&apos;s entry %1 would be written outside its folder.</source>
        <translation>固件包中的条目 %1 会被写到固件包文件夹之外。</translation>
    </message>
    <message>
        <source>%1 is in the way, and does not belong to this program.</source>
        <translation>%1 占用了所需位置，且不属于本程序。</translation>
    </message>
    <message>
        <source>Move it away, then press “Download latest” again.</source>
        <translation>请将其移到别处，然后再次点击“下载最新固件”。</translation>
    </message>
    <message>
        <source>Free some disk space, then press “Download latest” again.</source>
        <translation>请释放一些磁盘空间，然后再次点击“下载最新固件”。</translation>
    </message>
    <message>
        <source>Correct its access rights, then press “Download latest” again.</source>
        <translation>请更正其访问权限，然后再次点击“下载最新固件”。</translation>
    </message>
    <message>
        <source>%1: %2.</source>
        <translation>%1：%2。</translation>
    </message>
    <message>
        <source>%1 is in use by a program that you cannot see.</source>
        <translation>%1 正被一个您无权查看的程序使用。</translation>
    </message>
    <message>
        <source>The certificate of %1 cannot be trusted: %2.</source>
        <translation>无法信任 %1 的证书：%2。</translation>
    </message>
    <message>
        <source>If nobody needs it, run “sudo apt remove brltty”, then plug the device in again.</source>
        <translation>如果无人需要它，请运行“sudo apt remove brltty”，然后重新插入设备。</translation>
    </message>
    <message>
        <source>%1 is in use by ModemManager (process %2).</source>
        <translation>ModemManager（进程 %2）正在使用 %1。</translation>
    </message>
    <message>
        <source>Press “Open” again in half a minute, or run “sudo systemctl stop ModemManager”.</source>
        <translation>请在半分钟后再次点击“Open”，或运行“sudo systemctl stop ModemManager”。</translation>
    </message>
    <message>
        <source>Check this computer&apos;s date and network. Nothing was downloaded.</source>
        <translation>请检查本计算机的日期和网络。未下载任何内容。</translation>
    </message>
    <message>
        <source>Do not use this package; tell the server&apos;s operator.</source>
        <translation>请勿使用此固件包，并告知服务器管理员。</translation>
    </message>
    <message>
        <source>Plug in the device&apos;s USB-serial adapter, then run the command again.</source>
        <translation>请接上设备的 USB 串口适配器，然后重新运行该命令。</translation>
    </message>
    <message>
        <source>%1 is a serial device, but its name does not begin with “usbserial-”.</source>
        <translation>%1 是串行设备，但其名称不以“usbserial-”开头。</translation>
    </message>
    <message>
        <source>Plug in the device&apos;s own USB-serial adapter, or name this one in the command.</source>
        <translation>请接上设备自带的 USB 串口适配器，或在命令中指定此设备。</translation>
    </message>
    <message>
        <source>There is no serial device %1.</source>
        <translation>没有名为 %1 的串口设备。</translation>
    </message>
    <message>
        <source>“vornupdater-cli list” shows the ones there are.</source>
        <translation>运行“vornupdater-cli list”可查看现有设备。</translation>
    </message>
    <message>
        <source>Several devices are plugged in: %1.</source>
        <translation>已接上多个设备：%1。</translation>
    </message>
    <message>
        <source>Name one of them in the command, or give --all.</source>
        <translation>请在命令中指定其中一个，或使用 --all。</translation>
    </message>
    <message>
        <source>%1 was gone after %2 s: brltty, a braille driver, is running and takes some adapters.</source>
        <translation>%1 在 %2 秒后消失：盲文驱动程序 brltty 正在运行，它会占用某些适配器。</translation>
    </message>
    <message>
        <source>%1 no longer exists.</source>
        <translation>%1 已不存在。</translation>
    </message>
    <message>
        <source>Close that program, then run the command again.</source>
        <translation>请关闭该程序，然后重新运行该命令。</translation>
    </message>
    <message>
        <source>Run the command again in half a minute, or run “sudo systemctl stop ModemManager”.</source>
        <translation>请半分钟后重新运行该命令，或运行“sudo systemctl stop ModemManager”。</translation>
    </message>
    <message>
        <source>%1 is in use by a system program; ModemManager is running and may hold it.</source>
        <translation>%1 正被系统程序使用；ModemManager 正在运行，可能占用了它。</translation>
    </message>
    <message>
        <source>%1 is in use by a system program; brltty, a braille driver, is running and may hold it.</source>
        <translation>%1 正被系统程序使用；盲文驱动程序 brltty 正在运行，可能占用了它。</translation>
    </message>
    <message>
        <source>“sudo fuser -v %1” shows which. End it, then run the command again.</source>
        <translation>运行“sudo fuser -v %1”可查看是哪个程序。请结束它，然后重新运行该命令。</translation>
    </message>
    <message>
        <source>Correct the entry in the device directory.</source>
        <translation>请更正设备目录中的条目。</translation>
    </message>
    <message>
        <source>Name another device; “vornupdater-cli list” shows them.</source>
        <translation>请指定其他设备；运行“vornupdater-cli list”可查看设备。</translation>
    </message>
    <message>
        <source>Unplug the device, plug it in again, then run the command again.</source>
        <translation>请拔下设备并重新接上，然后重新运行该命令。</translation>
    </message>
    <message>
        <source>The device was not changed. Name another file, or download it again.</source>
        <translation>设备未被更改。请指定其他文件，或重新下载该文件。</translation>
    </message>
    <message>
        <source>The file %1 is meant for another model than this device (model code %2).</source>
        <translation>文件 %1 适用于其他型号，而不是此设备（型号代码 %2）。</translation>
    </message>
    <message>
        <source>The device was not changed. Name a file for its model, or give --force.</source>
        <translation>设备未被更改。请指定适用于其型号的文件，或使用 --force。</translation>
    </message>
    <message>
        <source>The device still holds its old firmware. Check its power and cable, then update it again.</source>
        <translation>设备仍保留旧固件。请检查其电源和线缆，然后重新更新。</translation>
    </message>
    <message>
        <source>The device must be updated again before it can be used: check its power and cable first.</source>
        <translation>设备必须重新更新后才能使用：请先检查其电源和线缆。</translation>
    </message>
    <message>
        <source>It still holds its old firmware. Unplug it, plug it in, then update it again.</source>
        <translation>设备仍保留旧固件。请拔下设备并重新接上，然后重新更新。</translation>
    </message>
    <message>
        <source>It must be updated again before it can be used: check that the file is meant for it first.</source>
        <translation>设备必须重新更新后才能使用：请先确认该文件适用于此设备。</translation>
    </message>
    <message>
        <source>The port closed %2 s into the wait for the answer to %1.</source>
        <translation>等待设备应答%1 %2 秒后，端口关闭。</translation>
    </message>
    <message>
        <source>The device still holds its old firmware. Check that it is plugged in, press “Open”, then “Update firmware”.</source>
        <translation>设备仍保留旧固件。请确认设备已插好，点击“Open”，再点击“更新固件”。</translation>
    </message>
    <message>
        <source>The device still holds its old firmware. Plug it in, then update it again.</source>
        <translation>设备仍保留旧固件。请接上设备，然后重新更新。</translation>
    </message>
    <message>
        <source>The device must be updated again before it can be used: check that it is plugged in, press “Open”, then “Update firmware”.</source>
        <translation>设备必须重新更新后才能使用：请确认设备已插好，点击“Open”，再点击“更新固件”。</translation>
    </message>
    <message>
        <source>The device must be updated again before it can be used: plug it in first.</source>
        <translation>设备必须重新更新后才能使用：请先接上设备。</translation>
    </message>
    <message>
        <source>Interrupted before the device was changed.</source>
        <translation>在更改设备之前已中断。</translation>
    </message>
    <message>
        <source>It still holds its old firmware.</source>
        <translation>设备仍保留旧固件。</translation>
    </message>
    <message>
        <source>Interrupted during the wait for the answer to %1.</source>
        <translation>在等待设备应答“%1”时中断。</translation>
    </message>
    <message>
        <source>The device must be updated again before it can be used.</source>
        <translation>设备必须重新更新后才能使用。</translation>
    </message>
    <message>
        <source>The device did not report its model: no answer to %1 within %2 s.</source>
        <translation>设备未报告其型号：%2 秒内未应答%1。</translation>
    </message>
    <message>
        <source>Check its power and cable, then run the command again.</source>
        <translation>请检查其电源和线缆，然后重新运行该命令。</translation>
    </message>
    <message>
        <source>The device did not report its model: it refused %1 after %2 s.</source>
        <translation>设备未报告其型号：%2 秒后拒绝了%1。</translation>
    </message>
    <message>
        <source>Run the command again.</source>
        <translation>请重新运行该命令。</translation>
    </message>
    <message>
        <source>The device did not report its model: the port closed.</source>
        <translation>设备未报告其型号：端口已关闭。</translation>
    </message>
    <message>
        <source>Check that it is plugged in, then press “Open”.</source>
        <translation>请确认设备已插好，然后点击“Open”。</translation>
    </message>
    <message>
        <source>Plug it in, then run the command again.</source>
        <translation>请接上设备，然后重新运行该命令。</translation>
    </message>
    <message>
        <source>Run “vornupdater-cli download”, or put files that end in .bin into %1.</source>
        <translation>请运行“vornupdater-cli download”，或将以 .bin 结尾的文件放入 %1。</translation>
    </message>
    <message>
        <source>Add a firmware file for it, or check that it is the right device.</source>
        <translation>请添加适用于它的固件文件，或确认设备是否正确。</translation>
    </message>
    <message>
        <source>Connect it, then run the command again.</source>
        <translation>请连接网络，然后重新运行该命令。</translation>
    </message>
    <message>
        <source>Check the network connection, then run the command again.</source>
        <translation>请检查网络连接，然后重新运行该命令。</translation>
    </message>
    <message>
        <source>Check the network connection and firewall, then run the command again.</source>
        <translation>请检查网络连接和防火墙，然后重新运行该命令。</translation>
    </message>
    <message>
        <source>Check the proxy settings (https_proxy), then run the command again.</source>
        <translation>请检查代理设置 (https_proxy)，然后重新运行该命令。</translation>
    </message>
    <message>
        <source>The server %1 sent nothing for %2 s.</source>
        <translation>服务器 %1 在 %2 秒内未发送任何数据。</translation>
    </message>
    <message>
        <source>The package from %1 was not complete after %2 s.</source>
        <translation>来自 %1 的软件包在 %2 秒后仍未下载完整。</translation>
    </message>
    <message>
        <source>Use a faster network connection, or try again later.</source>
        <translation>请使用更快的网络连接，或稍后再试。</translation>
    </message>
    <message>
        <source>Try again later; if it persists, tell the server&apos;s operator.</source>
        <translation>请稍后再试；如果问题持续，请告知服务器管理员。</translation>
    </message>
    <message>
        <source>Tell the server&apos;s operator. Nothing was replaced.</source>
        <translation>请告知服务器管理员。未替换任何文件。</translation>
    </message>
    <message>
        <source>The package&apos;s entry %1 is damaged, encrypted or of an unknown kind.</source>
        <translation>固件包的条目 %1 已损坏、已加密或类型未知。</translation>
    </message>
    <message>
        <source>Press “Download latest” again. Nothing was replaced.</source>
        <translation>请再次点击“下载最新固件”。未替换任何文件。</translation>
    </message>
    <message>
        <source>Run the command again. Nothing was replaced.</source>
        <translation>请再次运行该命令。未替换任何文件。</translation>
    </message>
    <message>
        <source>The package has a file and a folder with the same name, %1.</source>
        <translation>固件包中有同名的文件和文件夹：%1。</translation>
    </message>
    <message>
        <source>Move it away, then run the command again.</source>
        <translation>请将其移走，然后重新运行该命令。</translation>
    </message>
    <message>
        <source>Not enough disk space for the package in %1.</source>
        <translation>%1 的磁盘空间不足，无法存放固件包。</translation>
    </message>
    <message>
        <source>Free some disk space, then run the command again.</source>
        <translation>请释放一些磁盘空间，然后重新运行该命令。</translation>
    </message>
    <message>
        <source>No permission to write to %1.</source>
        <translation>没有写入 %1 的权限。</translation>
    </message>
    <message>
        <source>Correct its access rights, then run the command again.</source>
        <translation>请更正其访问权限，然后重新运行该命令。</translation>
    </message>
    <message>
        <source>Check the disk. Nothing was replaced.</source>
        <translation>请检查磁盘。未替换任何文件。</translation>
    </message>
    <message>
        <source>Use a file that holds certificates in PEM format.</source>
        <translation>请使用包含 PEM 格式证书的文件。</translation>
    </message>
    <message>
        <source>The download was interrupted.</source>
        <translation>下载已中断。</translation>
    </message>
    <message>
        <source>Nothing was replaced.</source>
        <translation>未替换任何文件。</translation>
    </message>
    <message>
        <source>No package server is configured.</source>
        <translation>未配置软件包服务器。</translation>
    </message>
    <message>
        <source>Name one with --package-host.</source>
        <translation>请用 --package-host 指定一个。</translation>
    </message>
    <message>
        <source>The kernel still holds the port %1.</source>
        <translation>内核仍占用串口 %1。</translation>
    </message>
    <message>
        <source>Unplug the device; if that does not help, restart the computer.</source>
        <translation>请拔下设备；如果仍未解决，请重新启动计算机。</translation>
    </message>
    <message>
        <source>The folder of firmware files, %1, cannot be read: %2.</source>
        <translation>无法读取固件文件夹 %1：%2。</translation>
    </message>
    <message>
        <source>Correct its access rights, or check the disk.</source>
        <translation>请更正其访问权限，或检查磁盘。</translation>
    </message>
    <message>
        <source>%1 is not a file that holds certificates in PEM format.</source>
        <translation>%1 不是包含 PEM 格式证书的文件。</translation>
    </message>
    <message>
        <source>The program runs as root: it unpacks downloads with all rights, into root&apos;s folder.</source>
        <translation>程序正以 root 身份运行：下载的文件会以全部权限解压到 root 的文件夹中。</translation>
    </message>
    <message>
        <source>Start it as an ordinary user; the group dialout or the package gives access to the device.</source>
        <translation>请以普通用户身份启动；dialout 组或软件包会授予设备访问权限。</translation>
    </message>
    <message>
        <source>Communication with the device failed: %1.</source>
        <translation>与设备通信失败：%1。</translation>
    </message>
    <message>
        <source>Sending %1 failed: %3.</source>
        <translation>发送%1失败：%3。</translation>
    </message>
    <message>
        <source>The device still holds its old firmware. Unplug it, plug it in, press “Open”, then “Update firmware”.</source>
        <translation>设备仍保留旧固件。请拔出后重新插入，点击“Open”，再点击“更新固件”。</translation>
    </message>
    <message>
        <source>The device still holds its old firmware. Unplug it, plug it in, then update it again.</source>
        <translation>设备仍保留旧固件。请拔下设备并重新接上，然后重新更新。</translation>
    </message>
    <message>
        <source>The device must be updated again before it can be used: unplug it, plug it in, press “Open”, then “Update firmware”.</source>
        <translation>设备必须重新更新后才能使用：请拔出后重新插入，点击“Open”，再点击“更新固件”。</translation>
    </message>
    <message>
        <source>The device must be updated again before it can be used: unplug it and plug it in first.</source>
        <translation>设备必须重新更新后才能使用：请先拔下设备并重新接上。</translation>
    </message>
</context>
<context>
    <name>CliOptions</name>
    <message>
        <source>List the serial devices: name, node, adapter&apos;s maker and serial number.</source>
        <translation>列出串口设备：名称、设备节点、适配器的制造商和序列号。</translation>
    </message>
    <message>
        <source>Ask devices for their model code.</source>
        <translation>查询设备的型号代码。</translation>
    </message>
    <message>
        <source>List the files of the firmware folder.</source>
        <translation>列出固件文件夹中的文件。</translation>
    </message>
    <message>
        <source>Fetch the latest firmware package, unless it is the one that was fetched last.</source>
        <translation>获取最新的固件软件包，除非它就是上次获取的那个。</translation>
    </message>
    <message>
        <source>Update devices, side by side.</source>
        <translation>更新设备，多个设备同时进行。</translation>
    </message>
    <message>
        <source>Update each device that is plugged in, until Ctrl-C.</source>
        <translation>更新每个接上的设备，直到按下 Ctrl-C。</translation>
    </message>
    <message>
        <source>Commands:</source>
        <translation>命令：</translation>
    </message>
    <message>
        <source>“%1 COMMAND --help” describes a command&apos;s options.</source>
        <translation>“%1 COMMAND --help”说明某个命令的选项。</translation>
    </message>
    <message>
        <source>A device&apos;s name or node; without one, the only device there is.</source>
        <translation>设备的名称或节点；不指定时为唯一的设备。</translation>
    </message>
    <message>
        <source>Name devices or give --all, not both.</source>
        <translation>请指定设备或使用 --all，不要同时使用。</translation>
    </message>
    <message>
        <source>Give either --firmware FILE or --newest.</source>
        <translation>请使用 --firmware FILE 或 --newest 其中之一。</translation>
    </message>
    <message>
        <source>--%1 takes a number from 0 to %2.</source>
        <translation>--%1 需要 0 到 %2 之间的数字。</translation>
    </message>
    <message>
        <source>Take every USB-serial adapter.</source>
        <translation>使用每个 USB 串口适配器。</translation>
    </message>
    <message>
        <source>Only the files for the model code N.</source>
        <translation>仅列出适用于型号代码 N 的文件。</translation>
    </message>
    <message>
        <source>Update with this file.</source>
        <translation>用此文件更新。</translation>
    </message>
    <message>
        <source>Update with the file in the firmware folder that has the highest version in its name for the device&apos;s model.</source>
        <translation>用固件文件夹中适用于设备型号且名称中版本最高的文件更新。</translation>
    </message>
    <message>
        <source>Accept a file whose name says another model than the device&apos;s.</source>
        <translation>接受名称中型号与设备不符的文件。</translation>
    </message>
    <message>
        <source>Begin a failed update again, up to N times (0).</source>
        <translation>更新失败后重新开始，最多 N 次 (0)。</translation>
    </message>
    <message>
        <source>Append a JSON line for each update to FILE.</source>
        <translation>为每次更新向 FILE 追加一行 JSON。</translation>
    </message>
    <message>
        <source>--timeout-scale takes a number above 0, up to %1.</source>
        <translation>--timeout-scale 需要大于 0 且不超过 %1 的数字。</translation>
    </message>
    <message>
        <source>Updates devices&apos; firmware over their USB-serial links, and fetches firmware packages. Options come before the command.</source>
        <translation>通过 USB 串口连接更新设备的固件，并获取固件软件包。选项位于命令之前。</translation>
    </message>
    <message>
        <source>Write a JSON object a line instead of text to standard output.</source>
        <translation>在标准输出中每行写一个 JSON 对象，而不是文本。</translation>
    </message>
    <message>
        <source>Tell each step, and what the system reports.</source>
        <translation>显示每个步骤以及系统报告的信息。</translation>
    </message>
    <message>
        <source>Wait X times as long as usual for a slow device&apos;s answers.</source>
        <translation>等待较慢设备应答的时间为平常的 X 倍。</translation>
    </message>
    <message>
        <source>What to do; see below.</source>
        <translation>要做什么；见下文。</translation>
    </message>
    <message>
        <source>No command was given.</source>
        <translation>未指定命令。</translation>
    </message>
    <message>
        <source>Unknown command: %1</source>
        <translation>未知命令：%1</translation>
    </message>
</context>
<context>
    <name>CommandLine</name>
    <message>
        <source>The device directory %1 cannot be used: %2</source>
        <translation>无法使用设备目录 %1：%2</translation>
    </message>
    <message>
        <source>The program cannot start: %1</source>
        <translation>程序无法启动：%1</translation>
    </message>
    <message>
        <source>The package host is not of the form HOST[:PORT]: %1</source>
        <translation>固件包主机不符合 HOST[:PORT] 格式：%1</translation>
    </message>
    <message>
        <source>Updates a device&apos;s firmware over its USB-serial link, and fetches firmware packages.</source>
        <translation>通过 USB 转串口连接更新设备固件，并获取固件包。</translation>
    </message>
    <message>
        <source>Show this help and exit.</source>
        <translation>显示此帮助并退出。</translation>
    </message>
    <message>
        <source>Besides the system&apos;s devices, offer every entry of DIR (a link to a terminal) as a serial device named like the entry.</source>
        <translation>除系统的设备外，还将 DIR 中的每个条目（指向终端的链接）作为与条目同名的串口设备提供。</translation>
    </message>
    <message>
        <source>Fetch packages from this server, over HTTPS.</source>
        <translation>通过 HTTPS 从此服务器获取固件包。</translation>
    </message>
    <message>
        <source>Trust the certificates in FILE (PEM) besides the system&apos;s for the package server.</source>
        <translation>连接固件包服务器时，除系统的证书外，还信任 FILE（PEM 格式）中的证书。</translation>
    </message>
    <message>
        <source>Unexpected argument: %1</source>
        <translation>意外的参数：%1</translation>
    </message>
    <message>
        <source>Try --help.</source>
        <translation>请尝试 --help。</translation>
    </message>
    <message>
        <source>There is no display for the window (DISPLAY and WAYLAND_DISPLAY are not set).</source>
        <translation>没有可显示窗口的图形环境（未设置 DISPLAY 和 WAYLAND_DISPLAY）。</translation>
    </message>
</context>
<context>
    <name>DeviceRun</name>
    <message>
        <source>Model code %1</source>
        <translation>型号代码 %1</translation>
    </message>
    <message>
        <source>%1: %2 Beginning again with the reset pulse (%3 of %4).</source>
        <translation>%1：%2 从复位脉冲重新开始（第 %3 次，共 %4 次）。</translation>
    </message>
    <message>
        <source>Updated with %1 in %2 s</source>
        <translation>已用 %1 更新，耗时 %2 秒</translation>
    </message>
</context>
<context>
    <name>DeviceRuns</name>
    <message>
        <source>The update goes on. Pressing Ctrl-C again would leave the device half written.</source>
        <translation>更新仍在继续。再次按下 Ctrl-C 会使设备只写入一半。</translation>
    </message>
</context>
<context>
    <name>Download</name>
    <message>
        <source>Receive the package</source>
        <translation>接收软件包</translation>
    </message>
    <message>
        <source>Unpack the package</source>
        <translation>解压软件包</translation>
    </message>
    <message>
        <source>The latest package is installed already.</source>
        <translation>最新的软件包已经安装。</translation>
    </message>
    <message>
        <source>The latest package is installed.</source>
        <translation>已安装最新的软件包。</translation>
    </message>
</context>
<context>
    <name>Output</name>
    <message>
        <source>The output cannot be written: %1.</source>
        <translation>无法写入输出：%1。</translation>
    </message>
</context>
<context>
    <name>Progress</name>
    <message>
        <source>%1 elapsed, about %2 left.</source>
        <translation>已用时 %1，剩余约 %2。</translation>
    </message>
    <message>
        <source>%1 elapsed.</source>
        <translation>已用时 %1。</translation>
    </message>
    <message>
        <source>Waiting for the device to erase, %1 of at most %2.</source>
        <translation>正在等待设备擦除，已等待 %1，最长 %2。</translation>
    </message>
    <message>
        <source>Waiting for the device to take the next data, %1 of at most %2.</source>
        <translation>正在等待设备接收后续数据，已等待 %1，最长 %2。</translation>
    </message>
    <message>
        <source>Waiting for the answer to %1, %2 of at most %3.</source>
        <translation>正在等待设备对%1的应答，已等待 %2，最长 %3。</translation>
    </message>
    <message>
        <source>The update took %1 s; the image was sent at %2 KiB/s.</source>
        <translation>更新用时 %1 秒；镜像发送速度为 %2 KiB/s。</translation>
    </message>
    <message>
        <source>Waiting for the server, %1 of at most %2.</source>
        <translation>正在等待服务器，已等待 %1，最长 %2。</translation>
    </message>
    <message>
        <source>%1 of %2.</source>
        <translation>已下载 %1，共 %2。</translation>
    </message>
    <message>
        <source>%1 so far.</source>
        <translation>已下载 %1。</translation>
    </message>
    <message>
        <source>%1 in %2 s, %3 KiB/s.</source>
        <translation>已下载 %1，用时 %2 秒，速度 %3 KiB/s。</translation>
    </message>
    <message>
        <source>%1 s</source>
        <translation>%1 秒</translation>
    </message>
    <message>
        <source>%1 min %2 s</source>
        <translation>%1 分 %2 秒</translation>
    </message>
    <message>
        <source>Waiting for the server, %1.</source>
        <translation>正在等待服务器，%1。</translation>
    </message>
</context>
<context>
    <name>Station</name>
    <message>
        <source>The record %1 cannot be written: %2.</source>
        <translation>无法写入记录 %1：%2。</translation>
    </message>
    <message>
        <source>Plug in a device to update it; Ctrl-C ends.</source>
        <translation>接上设备即可更新；按 Ctrl-C 结束。</translation>
    </message>
    <message>
        <source>To try again, unplug it and plug it in again.</source>
        <translation>要重试，请拔下设备并重新接上。</translation>
    </message>
</context>
<context>
    <name>Steps</name>
    <message>
        <source>the sync byte</source>
        <translation>同步字节</translation>
    </message>
    <message>
        <source>the connect command</source>
        <translation>连接命令</translation>
    </message>
    <message>
        <source>the version query</source>
        <translation>版本查询</translation>
    </message>
    <message>
        <source>the download command</source>
        <translation>下载命令</translation>
    </message>
    <message>
        <source>the download header</source>
        <translation>下载报头</translation>
    </message>
    <message>
        <source>data frame %1 of %2</source>
        <translation>第 %1 个数据帧（共 %2 个）</translation>
    </message>
    <message>
        <source>the last frame</source>
        <translation>最后一帧</translation>
    </message>
    <message>
        <source>the erase command</source>
        <translation>擦除命令</translation>
    </message>
    <message>
        <source>Synchronize</source>
        <translation>同步</translation>
    </message>
    <message>
        <source>Connect</source>
        <translation>连接</translation>
    </message>
    <message>
        <source>Ask for the version</source>
        <translation>查询版本</translation>
    </message>
    <message>
        <source>Read the file</source>
        <translation>读取文件</translation>
    </message>
    <message>
        <source>Begin the download</source>
        <translation>开始下载</translation>
    </message>
    <message>
        <source>Erase</source>
        <translation>擦除</translation>
    </message>
    <message>
        <source>Wait for the release</source>
        <translation>等待设备就绪</translation>
    </message>
    <message>
        <source>Send the image</source>
        <translation>发送镜像</translation>
    </message>
    <message>
        <source>Confirm the image</source>
        <translation>确认镜像</translation>
    </message>
</context>
<context>
    <name>TextOutput</name>
    <message>
        <source>Model code %1</source>
        <translation>型号代码 %1</translation>
    </message>
    <message>
        <source>%1 %</source>
        <translation>%1 %</translation>
    </message>
    <message>
        <source>Good: %1. Failed: %2.</source>
        <translation>成功：%1。失败：%2。</translation>
    </message>
</context>
<context>
    <name>ViewController</name>
    <message>
        <source>Package server: %1</source>
        <translation>固件包服务器：%1</translation>
    </message>
    <message>
        <source>none</source>
        <translation>无</translation>
    </message>
    <message>
        <source>Line: %1 baud; limits: %2 s, %3 s while erasing</source>
        <translation>线路：%1 波特；时限：%2 秒，擦除时 %3 秒</translation>
    </message>
    <message>
        <source>Serial Port Connected</source>
        <translation>串口已连接</translation>
    </message>
    <message>
        <source>Serial Port %1 was connected to your Mac.</source>
        <translation>串口 %1 已连接到您的计算机。</translation>
    </message>
    <message>
        <source>Serial Port Disconnected</source>
        <translation>串口已断开</translation>
    </message>
    <message>
        <source>Serial Port %1 was disconnected from your Mac.</source>
        <translation>串口 %1 已与您的计算机断开。</translation>
    </message>
    <message>
        <source>Checking the firmware file.</source>
        <translation>正在检查固件文件。</translation>
    </message>
</context>
<context>
    <name>vorn::CloseQuestion</name>
    <message>
        <source>Update Running</source>
        <translation>正在更新</translation>
    </message>
    <message>
        <source>The device is being updated.</source>
        <translation>正在更新设备。</translation>
    </message>
    <message>
        <source>Closing the window stops the update, and the device cannot be used until it has been updated again.</source>
        <translation>关闭窗口会中止更新，设备必须重新更新后才能使用。</translation>
    </message>
    <message>
        <source>Closing the device stops the update, and it cannot be used until it has been updated again.</source>
        <translation>关闭设备连接会中止更新，设备必须重新更新后才能使用。</translation>
    </message>
    <message>
        <source>&amp;Keep Updating</source>
        <translation>继续更新(&amp;K)</translation>
    </message>
    <message>
        <source>Close &amp;Anyway</source>
        <translation>仍要关闭(&amp;A)</translation>
    </message>
    <message>
        <source>The update has ended.</source>
        <translation>更新已结束。</translation>
    </message>
    <message>
        <source>The window shows the result.</source>
        <translation>结果显示在窗口中。</translation>
    </message>
    <message>
        <source>&amp;Keep Open</source>
        <translation>保持打开(&amp;K)</translation>
    </message>
    <message>
        <source>Close &amp;Window</source>
        <translation>关闭窗口(&amp;W)</translation>
    </message>
    <message>
        <source>Close &amp;Device</source>
        <translation>关闭设备连接(&amp;D)</translation>
    </message>
</context>
<context>
    <name>vorn::ConnectionSection</name>
    <message>
        <source>%1 (%2): open</source>
        <translation>%1（%2）：已打开</translation>
    </message>
    <message>
        <source>%1: closed</source>
        <translation>%1：已关闭</translation>
    </message>
    <message>
        <source>%1 (%2): plugged in</source>
        <translation>%1（%2）：已插入</translation>
    </message>
    <message>
        <source>%1: unplugged</source>
        <translation>%1：已拔下</translation>
    </message>
</context>
<context>
    <name>vorn::FirmwareSection</name>
    <message>
        <source>Fetch the latest firmware package</source>
        <translation>获取最新的固件包</translation>
    </message>
    <message>
        <source>No package server is configured</source>
        <translation>未配置固件包服务器</translation>
    </message>
    <message>
        <source>Download</source>
        <translation>下载</translation>
    </message>
    <message>
        <source>Unpacking the package.</source>
        <translation>正在解压固件包。</translation>
    </message>
    <message>
        <source>Unpacking</source>
        <translation>解压</translation>
    </message>
</context>
<context>
    <name>vorn::LogSection</name>
    <message>
        <source>Device: %1, %2, %3</source>
        <translation>设备：%1，%2，%3</translation>
    </message>
    <message>
        <source>Its node: group %1, mode %2</source>
        <translation>设备节点：用户组 %1，权限 %2</translation>
    </message>
    <message>
        <source>Its node: gone</source>
        <translation>设备节点：已不存在</translation>
    </message>
    <message>
        <source>%1: START</source>
        <translation>%1：START</translation>
    </message>
    <message>
        <source>%1: OK, %2 s</source>
        <translation>%1：OK，%2 秒</translation>
    </message>
    <message>
        <source>%1: FAILED, %2 s</source>
        <translation>%1：FAILED，%2 秒</translation>
    </message>
    <message>
        <source>Copied.</source>
        <translation>已复制。</translation>
    </message>
    <message>
        <source>Saved to %1.</source>
        <translation>已保存到 %1。</translation>
    </message>
    <message>
        <source>Not saved: %1.</source>
        <translation>未保存：%1。</translation>
    </message>
    <message>
        <source>Language: %1</source>
        <translation>语言：%1</translation>
    </message>
    <message>
        <source>Device: none</source>
        <translation>设备：无</translation>
    </message>
    <message>
        <source>The last exchange with the device:</source>
        <translation>与设备的最近一次通信：</translation>
    </message>
    <message>
        <source>Adapter: %1, %2, serial number %3</source>
        <translation>适配器：%1，%2，序列号 %3</translation>
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
        <translation>设备(&amp;V)</translation>
    </message>
    <message>
        <source>Device</source>
        <translation>设备</translation>
    </message>
    <message>
        <source>Connection status</source>
        <translation>连接状态</translation>
    </message>
    <message>
        <source>Connection details</source>
        <translation>连接详情</translation>
    </message>
    <message>
        <source>&amp;Firmware</source>
        <translation>固件(&amp;F)</translation>
    </message>
    <message>
        <source>Firmware</source>
        <translation>固件</translation>
    </message>
    <message>
        <source>&amp;Download latest</source>
        <translation>下载最新固件(&amp;D)</translation>
    </message>
    <message>
        <source>Firmware status</source>
        <translation>固件状态</translation>
    </message>
    <message>
        <source>Firmware details</source>
        <translation>固件详情</translation>
    </message>
    <message>
        <source>Download progress</source>
        <translation>下载进度</translation>
    </message>
    <message>
        <source>Update</source>
        <translation>更新</translation>
    </message>
    <message>
        <source>Update status</source>
        <translation>更新状态</translation>
    </message>
    <message>
        <source>&amp;Update firmware</source>
        <translation>更新固件(&amp;U)</translation>
    </message>
    <message>
        <source>Update details</source>
        <translation>更新详情</translation>
    </message>
    <message>
        <source>Update progress</source>
        <translation>更新进度</translation>
    </message>
    <message>
        <source>&amp;Log</source>
        <translation>日志(&amp;L)</translation>
    </message>
    <message>
        <source>Log</source>
        <translation>日志</translation>
    </message>
    <message>
        <source>Show what happened since the start</source>
        <translation>显示自启动以来发生的事件</translation>
    </message>
    <message>
        <source>Copy the log, with the versions and the last exchange with the device</source>
        <translation>复制日志，包括版本信息和与设备的最近一次通信</translation>
    </message>
    <message>
        <source>&amp;Save…</source>
        <translation>保存(&amp;S)…</translation>
    </message>
    <message>
        <source>Save the log, with the versions and the last exchange with the device</source>
        <translation>保存日志，包括版本信息和与设备的最近一次通信</translation>
    </message>
    <message>
        <source>Not possible while an update is running</source>
        <translation>正在更新，此操作不可用</translation>
    </message>
    <message>
        <source>Save the log</source>
        <translation>保存日志</translation>
    </message>
    <message>
        <source>Log notice</source>
        <translation>日志提示</translation>
    </message>
    <message>
        <source>Co&amp;py</source>
        <translation>复制(&amp;P)</translation>
    </message>
    <message>
        <source>Hide the log</source>
        <translation>隐藏日志</translation>
    </message>
</context>
<context>
    <name>vorn::PowerEvents</name>
    <message>
        <source>Serial ports are closed before sleep</source>
        <translation>睡眠前关闭串口</translation>
    </message>
</context>
<context>
    <name>vorn::UpdateSection</name>
    <message>
        <source>Update not started: %1</source>
        <translation>更新未开始：%1</translation>
    </message>
    <message>
        <source>A device&apos;s firmware is being updated</source>
        <translation>正在更新设备固件</translation>
    </message>
    <message>
        <source>Update of %1 with %2</source>
        <translation>用 %2 更新 %1</translation>
    </message>
    <message>
        <source>Update</source>
        <translation>更新</translation>
    </message>
    <message>
        <source>Version query</source>
        <translation>版本查询</translation>
    </message>
    <message>
        <source>Firmware updated</source>
        <translation>固件已更新</translation>
    </message>
    <message>
        <source>%1 has its new firmware.</source>
        <translation>%1 已装入新固件。</translation>
    </message>
    <message>
        <source>Firmware update failed</source>
        <translation>固件更新失败</translation>
    </message>
    <message>
        <source>%1: %2</source>
        <translation>%1：%2</translation>
    </message>
</context>
</TS>
