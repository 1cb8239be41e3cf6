"""Runs in umockdev-wrapper. Plugs a thousand USB-serial adapters into a mocked /sys within 10 s, each
unplugged 50 adapters later, then unplugs the last 50. Before each step and at the end it prints the
test bed's folder and waits for a line on its standard input."""
import ctypes, os, shutil, sys, time

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


def end_step():
    print(root, flush=True)
    sys.stdin.readline()


end_step()
began = time.monotonic()
for number in range(1000):
    time.sleep(max(0.0, began + number / 100 - time.monotonic()))
    library.umockdev_testbed_add_from_string(bed, DEVICES.format(number, tty(number)).encode(), None)
    if number >= STAY:
        unplug(number - STAY)
end_step()
for number in range(1000 - STAY, 1000):
    unplug(number)
end_step()
shutil.rmtree(root)
