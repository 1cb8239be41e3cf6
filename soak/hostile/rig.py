"""What the hostile cases share: the real programs with the probe in them, their devices, measurements."""
import contextlib, os, pty, select, shutil, signal, socket, subprocess, sys, tempfile, termios, threading
import time, tty

BIN = sys.argv[1]
IMAGE = 'VORN_PLATINA-1.0.bin'
signal.signal(signal.SIGINT, signal.default_int_handler)  # which a shell's background jobs ignore
RATE = ['--baud', '500000']  # an update with an image of 3 MB then takes a minute


class Fault(Exception):
    """What a case found wrong."""


def expect(holds, what):
    if not holds:
        raise Fault(what)


def wait_for(condition, limit, what):
    end = time.monotonic() + limit
    while not (value := condition()):
        expect(time.monotonic() < end, f'not within {limit} s: {what}')
        time.sleep(0.01)
    return value


class Home:
    """A user's folders: devices that are plugged in, caches, settings."""

    def __enter__(self):
        self.path = tempfile.mkdtemp(prefix='hostile-')
        for name in ('caches', 'devices', 'config', 'runtime', 'home'):
            os.mkdir(f'{self.path}/{name}', 0o700)
        self.caches, self.devices = self.path + '/caches', self.path + '/devices'
        self.firmware = self.caches + '/VornUpdate2'
        return self

    def add_firmware(self, size=3_000_000):
        os.makedirs(self.firmware, exist_ok=True)
        with open(f'{self.firmware}/{IMAGE}', 'wb') as file:
            file.write(os.urandom(size))
        return file.name

    def leftovers(self):
        """What lies beside the firmware folder and the saved package."""
        return [name for name in os.listdir(self.caches) if not name.startswith('VornUpdate2')]

    def __exit__(self, *_):
        shutil.rmtree(self.path, ignore_errors=True)


class Program:
    """The window, or the command line program, with the probe in it."""

    def __init__(self, home, *arguments, cli=False, environment=None, inside=()):
        self.probe, theirs = socket.socketpair()
        self.lines, self.stall, self.waited = home.path + '/lines', 0.0, 0.0
        with open(self.lines, 'w', encoding='ascii') as file:
            file.write('00')
        names = {**os.environ, 'QT_QPA_PLATFORM': 'offscreen', 'LC_ALL': 'C.UTF-8', 'HOME': home.path + '/home',
                 'XDG_CACHE_HOME': home.caches, 'XDG_CONFIG_HOME': home.path + '/config',
                 'XDG_RUNTIME_DIR': home.path + '/runtime', 'LD_PRELOAD': f'{BIN}/hostileprobe.so',
                 'VORN_PROBE': str(theirs.fileno()), 'VORN_PROBE_LINES': self.lines,
                 'DBUS_SESSION_BUS_ADDRESS': 'disabled:', 'https_proxy': '', **(environment or {})}
        self.log = open(home.path + '/log', 'w+b')
        name = f'{BIN}/vornupdater' + ('-cli' if cli else '')
        self.process = subprocess.Popen([*inside, name, '--device-dir', home.devices, *arguments], env=names,
                                        pass_fds=[theirs.fileno()], stdout=self.log, stderr=self.log)
        theirs.close()
        self.answers = self.probe.makefile()

    def __enter__(self):
        return self

    def ask(self, command, limit=20):
        self.probe.settimeout(limit)
        try:
            self.probe.sendall(command.encode() + b'\n')
            answer = self.answers.readline()
        except TimeoutError:
            raise Fault(f'no answer to "{command}" within {limit} s') from None
        except OSError:
            answer = ''
        if not answer and command != 'quit':
            raise Fault(f'ended before "{command}"')
        return answer.strip()

    def said(self):
        return os.pread(self.log.fileno(), 1 << 20, 0).decode(errors='replace')

    def measure(self, starts=False):
        """Takes note of the stalls since the last call: by the thread's own doing, and beside it while
        other programs had the processor. Those of the start are forgotten."""
        own, waited = (int(part) / 1000 for part in self.ask('stall', 60).split())
        if not starts:
            self.stall, self.waited = max(self.stall, own), max(self.waited, waited - own)

    def await_text(self, control, part, limit=20):
        return wait_for(lambda: part in (text := self.ask('text ' + control)) and text, limit,
                        f'{control} says "{part}"')

    def start(self, device=True):
        self.await_text('connectText_1001', 'not opened' if device else 'No device')
        time.sleep(0.3)
        self.measure(starts=True)

    def open_device(self):
        self.ask('press openButton_1011')
        self.await_text('connectText_1001', 'opened successfully')
        time.sleep(0.8)  # until the list has been filled again

    def press_update(self):
        self.open_device()
        self.ask('pick firmwareList_1002 ' + IMAGE)
        self.ask('press updateButton_2001')

    def status(self, name):
        with open(f'/proc/{self.process.pid}/status', encoding='ascii') as file:
            return next(int(line.split()[1]) for line in file if line.startswith(name + ':'))

    def resources(self):
        return len(os.listdir(f'/proc/{self.process.pid}/fd')) + self.status('Threads')

    def processor(self):
        """Seconds of processor time so far."""
        with open(f'/proc/{self.process.pid}/stat', encoding='ascii') as file:
            fields = file.read().rsplit(')', 1)[1].split()
        return (int(fields[11]) + int(fields[12])) / os.sysconf('SC_CLK_TCK')

    def rts(self):
        with open(self.lines, encoding='ascii') as file:
            return file.read(1)

    def hang_driver(self):
        with open(self.lines, 'r+b') as file:
            file.seek(1)
            file.write(b'1')

    def end(self, how=signal.SIGTERM, codes=(0,), limit=2.2):
        """Ends the program, which has to have one of these exit codes; the seconds that took."""
        began = time.monotonic()
        if isinstance(how, str):
            self.ask(how, 2)
        else:
            self.process.send_signal(how)
        try:
            self.process.wait(limit)
        except subprocess.TimeoutExpired:
            raise Fault(f'does not end within {limit} s') from None
        expect(self.process.returncode in codes, f'exit code {self.process.returncode}: {self.said()[-500:]}')
        return time.monotonic() - began

    def __exit__(self, *_):
        self.process.kill()
        self.process.wait()
        self.probe.close()
        self.log.close()


class Line:
    """Both ends of a pseudo-terminal that is plugged in as a device of our own."""

    def __init__(self, home):
        self.master, self.slave = pty.openpty()
        tty.setraw(self.slave)
        os.symlink(os.ttyname(self.slave), home.devices + '/usbserial-line')
        self.sent, self.ended = 0, threading.Event()

    @contextlib.contextmanager
    def streaming(self, bytes_):
        """Sends as fast as the line takes it, beside the block."""
        os.set_blocking(self.master, False)

        def stream():
            while not self.ended.is_set():
                readable, writable, _ = select.select([self.master], [self.master], [], 0.05)
                with contextlib.suppress(OSError):
                    if readable:
                        os.read(self.master, 65536)
                    if writable:
                        self.sent += os.write(self.master, bytes_)
        thread = threading.Thread(target=stream)
        thread.start()
        try:
            yield
        finally:
            self.ended.set()
            thread.join()


@contextlib.contextmanager
def simulator(home, *options):
    """A device that answers, by vornsim; its terminal has unusual settings, which are to come back."""
    process = subprocess.Popen([f'{BIN}/vornsim', 'device', '--dir', home.devices, '--name', 'usbserial-sim',
                                *options], stdout=subprocess.PIPE, text=True)
    process.stdout.readline()
    line = os.open(os.path.realpath(home.devices + '/usbserial-sim'), os.O_RDWR | os.O_NOCTTY)
    settings = termios.tcgetattr(line)
    settings[2] |= termios.CSTOPB
    settings[4] = settings[5] = termios.B1200
    termios.tcsetattr(line, termios.TCSANOW, settings)
    settings = termios.tcgetattr(line)
    try:
        yield lambda: termios.tcgetattr(line) == settings
    finally:
        os.close(line)
        process.terminate()
        process.wait()
