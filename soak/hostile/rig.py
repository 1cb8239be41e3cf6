"""What the hostile cases share: the real programs with the probe in them, and measurements."""
import contextlib, fcntl, os, pty, select, shutil, signal, socket, subprocess, tempfile, termios
import threading, time, tty

BIN = os.path.join(os.path.dirname(os.path.abspath(__file__)), '../../build/bin')
MODEL_PREFIX = 'VORN_PLATINA-'


class Fault(Exception):
    """What a case found wrong."""


def expect(holds, what):
    if not holds:
        raise Fault(what)


def wait_for(condition, limit, what):
    end = time.monotonic() + limit
    while not (value := condition()):
        expect(time.monotonic() < end, f'{what}: not within {limit} s')
        time.sleep(0.02)
    return value


class Home:
    """A user's folders: devices that are plugged in, caches, settings."""

    def __init__(self):
        self.path = tempfile.mkdtemp(prefix='hostile-')
        self.caches = self.sub('caches')
        self.devices = self.sub('devices')
        self.firmware = self.caches + '/VornUpdate2'

    def sub(self, name):
        os.makedirs(path := f'{self.path}/{name}', exist_ok=True)
        return path

    def add_firmware(self, name=MODEL_PREFIX + '1.0.bin', size=100_000):
        os.makedirs(self.firmware, exist_ok=True)
        with open(path := f'{self.firmware}/{name}', 'wb') as file:
            file.write(os.urandom(size))
        return path

    def leftovers(self):
        """What the program left beside the firmware folder."""
        return [name for name in os.listdir(self.caches) if name != 'VornUpdate2']

    def close(self):
        shutil.rmtree(self.path, ignore_errors=True)


class Program:
    """The window (or the command line program) with the probe in it."""

    def __init__(self, home, *arguments, cli=False, environment=None, output=subprocess.DEVNULL):
        self.home, self.cli, self.worst = home, cli, 0.0
        self.probe, theirs = socket.socketpair()
        self.lines = home.path + '/lines'
        with open(self.lines, 'w', encoding='ascii') as file:
            file.write('00')
        names = {'QT_QPA_PLATFORM': 'offscreen', 'LC_ALL': 'C.UTF-8', 'VORN_PROBE_LINES': self.lines,
                 'VORN_PROBE': str(theirs.fileno()), 'LD_PRELOAD': f'{BIN}/hostileprobe.so',
                 'XDG_CACHE_HOME': home.caches, 'XDG_CONFIG_HOME': home.sub('config'),
                 'XDG_RUNTIME_DIR': home.sub('runtime'), 'HOME': home.sub('home')}
        names = {**os.environ, **names, **(environment or {})}
        for name in ('DBUS_SESSION_BUS_ADDRESS', 'DISPLAY', 'https_proxy', 'HTTPS_PROXY'):
            if name not in (environment or {}):
                names.pop(name, None)
        self.log = open(home.path + '/log', 'wb')
        self.process = subprocess.Popen(
            [f'{BIN}/vornupdater' + ('-cli' if cli else ''), '--device-dir', home.devices, *arguments],
            env=names, pass_fds=[theirs.fileno()], stdout=output, stderr=self.log)
        theirs.close()
        self.pid = self.process.pid
        self.answers = self.probe.makefile()

    def ask(self, command, limit=20):
        self.probe.settimeout(limit)
        try:
            self.probe.sendall(command.encode() + b'\n')
            return self.answers.readline().strip()
        except TimeoutError:
            raise Fault(f'no answer to "{command}" within {limit} s') from None
        except OSError:
            return ''

    def text(self, control):
        return self.ask('text ' + control)

    def said(self):
        """The command line's errors."""
        with open(self.log.name, 'rb') as file:
            return file.read().decode(errors='replace')

    def stall(self):
        """The longest time since the last call that the main thread kept its events waiting by its
        own doing, and with what other programs' load added, in ms."""
        own, wall = (int(part) / 1000 for part in (self.ask('stall', 60) or '0 0').split())
        self.worst = max(self.worst, own)
        return own, wall

    def await_text(self, control, part, limit=20):
        return wait_for(lambda: part in (text := self.text(control)) and text, limit,
                        f'{control} says "{part}" ({self.text(control)})')

    def open_device(self):
        self.await_text('connectText_1001', 'not opened')
        self.ask('press openButton_1011')
        self.await_text('connectText_1001', 'opened successfully')

    def start_update(self, name=MODEL_PREFIX + '1.0.bin'):
        self.open_device()
        time.sleep(0.8)  # the list is filled again
        self.ask('pick firmwareList_1002 ' + name)
        self.ask('press updateButton_2001')
        self.await_text('updateText_1015', 'Prompt:')

    def status(self, name):
        with open(f'/proc/{self.pid}/status', encoding='ascii') as file:
            return next(int(line.split()[1]) for line in file if line.startswith(name + ':'))

    def peak(self):
        return self.status('VmHWM') / 1024

    def memory(self):
        return self.status('VmRSS') / 1024

    def descriptors(self):
        return len(os.listdir(f'/proc/{self.pid}/fd'))

    def processor(self):
        """Seconds of processor time so far."""
        with open(f'/proc/{self.pid}/stat', encoding='ascii') as file:
            fields = file.read().rsplit(')', 1)[1].split()
        return (int(fields[11]) + int(fields[12])) / os.sysconf('SC_CLK_TCK')

    def rts(self):
        with open(self.lines, encoding='ascii') as file:
            return file.read(1)

    def hang_driver(self, hangs):
        with open(self.lines, 'r+b') as file:
            file.seek(1)
            file.write(b'1' if hangs else b'0')

    def end(self, how=signal.SIGTERM, limit=30):
        """Ends the program; returns the seconds that took and its exit code."""
        began = time.monotonic()
        if isinstance(how, str):
            self.ask(how, 2)
        else:
            self.process.send_signal(how)
        try:
            return time.monotonic() - began if self.process.wait(limit) is None else (
                time.monotonic() - began, self.process.returncode)
        except subprocess.TimeoutExpired:
            raise Fault(f'does not end within {limit} s') from None

    def close(self):
        self.process.kill()
        self.process.wait()
        self.probe.close()
        self.log.close()


class Terminal:
    """A device of our own on a pseudo-terminal."""

    def __init__(self, home, name='usbserial-hostile'):
        self.master, slave = pty.openpty()
        tty.setraw(slave)
        attributes = termios.tcgetattr(slave)
        attributes[4] = attributes[5] = termios.B1200
        termios.tcsetattr(slave, termios.TCSANOW, attributes)
        self.settings = termios.tcgetattr(slave)
        self.path, self.link = os.ttyname(slave), f'{home.devices}/{name}'
        os.close(slave)
        os.symlink(self.path, self.link)
        self.sent = 0

    def is_restored(self):
        return termios.tcgetattr(self.master) == self.settings

    def is_closed(self):
        """Whether no program has the terminal open."""
        return bool(select.poll_hup(self.master)) if hasattr(select, 'poll_hup') else hup(self.master)

    def stream(self, bytes_, until):
        """Sends as fast as the line takes it, and reads what comes."""
        os.set_blocking(self.master, False)
        while not until():
            ready = select.select([self.master], [self.master], [], 0.05)
            with contextlib.suppress(OSError):
                if ready[0]:
                    os.read(self.master, 65536)
                if ready[1]:
                    self.sent += os.write(self.master, bytes_)

    def close(self):
        with contextlib.suppress(OSError):
            os.unlink(self.link)
        os.close(self.master)


def hup(descriptor):
    poll = select.poll()
    poll.register(descriptor, 0)
    return bool(poll.poll(0) and poll.poll(0)[0][1] & select.POLLHUP)


@contextlib.contextmanager
def simulator(home, *options):
    """A device that answers properly, by vornsim."""
    name = 'usbserial-sim'
    process = subprocess.Popen([f'{BIN}/vornsim', 'device', '--dir', home.devices, '--name', name, *options],
                               stdout=subprocess.PIPE, text=True)
    try:
        process.stdout.readline()
        yield process
    finally:
        process.terminate()
        process.wait()


@contextlib.contextmanager
def background(work, *arguments):
    """Runs work(until, *arguments) beside the block, until its end."""
    ended = threading.Event()
    thread = threading.Thread(target=work, args=(ended.is_set, *arguments), daemon=True)
    thread.start()
    try:
        yield
    finally:
        ended.set()
        thread.join(10)
