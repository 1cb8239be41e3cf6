"""Runs in umockdev-wrapper. Plugs a thousand USB-serial adapters into a mocked /sys within 10 s, each
unplugged 50 adapters later, then unplugs the last 50. Before each step and at the end it prints the
test bed's folder and waits for a line on its standard input."""
import ctypes, os, shutil, sys, time

LIBRARY = ctypes.CDLL('libumockdev.so.0')
LIBRARY.umockdev_testbed_new.restype = LIBRARY.umockdev_testbed_get_sys_dir.restype = ctypes.c_void_p
BED = ctypes.c_void_p(LIBRARY.umockdev_testbed_new())
SYS = ctypes.string_at(LIBRARY.umockdev_testbed_get_sys_dir(BED)).decode()
STAY = 50


def place_of(number):
    usb = f'/devices/pci0/1-{number}'
    return usb, f'{usb}/1-{number}:1.0/ttyUSB{number}'


def plug(number):
    usb, port = place_of(number)
    LIBRARY.umockdev_testbed_add_from_string(BED, f'''P: {usb}
E: SUBSYSTEM=usb
E: DEVTYPE=usb_device

P: {port}
E: SUBSYSTEM=usb-serial

P: {port}/tty/ttyUSB{number}
E: SUBSYSTEM=tty
E: DEVNAME=/dev/ttyUSB{number}
E: ID_BUS=usb
E: ID_SERIAL=Adapter_{number}
E: ID_SERIAL_SHORT={number}
'''.encode(), None)


def unplug(number):
    usb, port = place_of(number)
    # By hand, since umockdev_testbed_remove_device() starts a process for each.
    for bus in ('class/tty', 'bus/usb-serial/devices'):
        os.unlink(f'{SYS}/{bus}/ttyUSB{number}')
    os.unlink(f'{SYS}/bus/usb/devices/1-{number}')
    LIBRARY.umockdev_testbed_uevent(BED, f'/sys{port}/tty/ttyUSB{number}'.encode(), b'remove')
    shutil.rmtree(SYS + usb)


def turn():
    print(os.path.dirname(SYS), flush=True)
    sys.stdin.readline()


turn()
began = time.monotonic()
for number in range(1000):
    time.sleep(max(0.0, began + number / 100 - time.monotonic()))
    plug(number)
    if number >= STAY:
        unplug(number - STAY)
turn()
for number in range(1000 - STAY, 1000):
    unplug(number)
turn()
shutil.rmtree(os.path.dirname(SYS))
