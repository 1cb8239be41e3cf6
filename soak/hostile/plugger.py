"""Runs in umockdev-wrapper. Plugs a thousand USB-serial adapters into a mocked /sys, one for each line on
its standard input, and unplugs each 50 lines later. Answers each line, and the start, with the test
bed's folder."""
import ctypes, os, shutil, sys

STAY = 50
DEVICES = '''P: /devices/pci0/1-{0}
E: SUBSYSTEM=usb
E: DEVTYPE=usb_device

P: {1}
E: SUBSYSTEM=tty
E: DEVNAME=/dev/ttyUSB{0}
E: ID_BUS=usb
E: ID_SERIAL=Adapter_{0}
E: ID_SERIAL_SHORT={0}
'''
library = ctypes.CDLL('libumockdev.so.0')
library.umockdev_testbed_new.restype = library.umockdev_testbed_get_root_dir.restype = ctypes.c_void_p
bed = ctypes.c_void_p(library.umockdev_testbed_new())
root = ctypes.string_at(library.umockdev_testbed_get_root_dir(bed)).decode()


def tty(number):
    return f'/devices/pci0/1-{number}/1-{number}:1.0/ttyUSB{number}/tty/ttyUSB{number}'


def unplug(number):
    # By hand, since umockdev_testbed_remove_device() starts a process for each.
    os.unlink(f'{root}/sys/class/tty/ttyUSB{number}')
    os.unlink(f'{root}/sys/bus/usb/devices/1-{number}')
    library.umockdev_testbed_uevent(bed, f'/sys{tty(number)}'.encode(), b'remove')
    shutil.rmtree(f'{root}/sys/devices/pci0/1-{number}')


print(root, flush=True)
for number, _ in enumerate(sys.stdin):
    if number < 1000:
        library.umockdev_testbed_add_from_string(bed, DEVICES.format(number, tty(number)).encode(), None)
    if number >= STAY:
        unplug(number - STAY)
    print(root, flush=True)
shutil.rmtree(root)
