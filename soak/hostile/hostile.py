#!/usr/bin/env python3
"""hostile.py BIN [NAME]: attacks the programs in the folder BIN in every way below, or in those whose names
contain NAME. Each ends as it should, within its limit, in bounded memory, and does not stall the window."""
import io, re, zipfile
from peers import *
from rig import *

MOST_STALL = 100  # ms
CLI_CODES = 9, 10  # the download had failed already, or was interrupted
WAITING = re.compile(r'elapsed|remaining|Unpacking|^$')
PEERS = {  # behaviour, the limit of the download in s, what it says, whether it is a proxy
    'a byte a second': (drip(SIZED % 9 + bytes(9)), 20, 'sent nothing for 5 s'),
    'headers without end': (pour(b'X: y\r\n' * 999, OK), 8, 'not valid'),
    'a header without end': (pour(bytes(65536), OK + b'X: '), 8, 'not valid'),
    'a chunk size without end': (pour(b'0' * 65536, CHUNKED), 8, 'not valid'),
    'a body without end': (pour(bytes(65536), OK + b'\r\n'), 30, 'too large'),
    'less than announced': (send(SIZED % 999 + b'PK'), 5, 'was lost'),
    'more than announced': (send(SIZED % 9 + bytes(999)), 5, 'not a zip archive'),
    'a huge length': (send(SIZED % 10**18), 5, 'too large'),
    'redirects without end': (redirect('SELF/*'), 30, 'not valid'),
    'a redirect to itself': (redirect('SELF/software/VornUpdate2.zip'), 30, 'not valid'),
    'a redirect to http:': (redirect('http://127.0.0.1:9/'), 5, 'without encryption'),
    'a redirect to file:': (redirect('file:///etc/passwd'), 5, 'not valid'),
    'silence': (send(b'', 99), 8, 'sent nothing for 5 s'),
    'half a handshake': (send(HELLO, 99), 65, 'No encrypted connection', 'server'),
    'a proxy that closes': (send(b''), 65, 'No encrypted connection', 'proxy'),
    'a proxy without end': (pour(bytes(65536), OK + b'X: '), 8, 'not valid', 'proxy'),
}


@contextlib.contextmanager
def downloading(home, behave, plain=None, cli=False):
    server = Server(home.path, behave, plain is not None)
    arguments = ['--package-host', server.address, '--package-ca', server.authority]
    environment = {}
    if plain == 'proxy':
        arguments, environment = ['--package-host', 'packages.invalid'], {'https_proxy': 'http://' + server.address}
    with Program(home, *arguments, *(['download'] if cli else []), cli=cli, environment=environment) as program:
        if not cli:
            program.start(device=False)
            program.ask('press downloadButton_2002')
        yield program
    server.listener.close()


def peer(behave, limit, says, plain=None):
    with Home() as home, downloading(home, behave, plain) as program:
        said = wait_for(lambda: not WAITING.search(text := program.ask('text firmwareDetails')) and text, limit, 'end')
        expect(says in said, said)
        yield program, 250 if 'too large' not in says else 900
        program.end()
        expect(not home.leftovers(), home.leftovers())
    for how in (signal.SIGINT, signal.SIGTERM):
        with Home() as home, downloading(home, behave, plain, cli=True) as program:
            time.sleep(0.4)
            program.end(how, CLI_CODES)
            expect(not home.leftovers(), home.leftovers())


def package(megabytes):
    file = io.BytesIO()
    with zipfile.ZipFile(file, 'w', zipfile.ZIP_DEFLATED, compresslevel=1) as archive:
        for number in range(4):
            archive.writestr(f'{number}.bin', os.urandom(1024) * (megabytes << 8))
    return file.getvalue()


def unpacking(megabytes, quits):
    archive = package(megabytes)
    with Home() as home, downloading(home, send(SIZED % len(archive) + archive, 5)) as program:
        program.await_text('firmwareDetails', 'Unpacking')
        if not quits:
            program.await_text('perText_1012', 'Success', 60)
        yield program, 250
        program.end()


def garbage(bytes_):
    with Home() as home:
        home.add_firmware()
        line = Line(home)
        with line.streaming(bytes_), Program(home) as program:
            program.start()
            program.open_device()
            began, before = time.monotonic(), program.processor()
            time.sleep(20)
            print(f'    {line.sent >> 20} MiB, {(program.processor() - before) / 20:.0%} of a processor')
            program.ask('pick firmwareList_1002 ' + IMAGE)
            program.ask('press updateButton_2001')
            program.await_text('updateDetails', 'No answer to the sync byte within 5.0 s', 7)
            time.sleep(max(0.0, 60 - (time.monotonic() - began)))
            yield program, 150
            program.end()


def storm():
    with Home() as home, Program(home) as program:
        program.start(device=False)
        before, began = program.resources(), time.monotonic()
        ends = [pty.openpty() for _ in range(8)]
        paths = [f'{home.devices}/usbserial-{number}' for number in range(1000)]
        for number, path in enumerate(paths):
            time.sleep(max(0.0, began + number / 100 - time.monotonic()))
            os.symlink(os.ttyname(ends[number % 8][1]), path)
            if number >= 50:
                os.unlink(paths[number - 50])
        program.await_text('connectText_1001', 'usbserial-95')
        for path in paths[-50:]:
            os.unlink(path)
        program.await_text('connectText_1001', 'No device')
        yield program, 150
        expect(program.resources() < before + 8, 'descriptors or threads are left')
        program.end()


def udev_storm():
    plugger = subprocess.Popen(['umockdev-wrapper', sys.executable, os.path.dirname(__file__) + '/plugger.py'],
                               stdin=subprocess.PIPE, stdout=subprocess.PIPE, text=True)
    with plugger, Home() as home:
        def plug(steps):
            began = time.monotonic()
            for number in range(steps):
                time.sleep(max(0.0, began + number / 100 - time.monotonic()))
                print(file=plugger.stdin, flush=True)
                plugger.stdout.readline()
                program.ask('text connectText_1001')  # the mocked monitor holds ten events and no more
        mocked = {'UMOCKDEV_DIR': plugger.stdout.readline().strip(),
                  'LD_PRELOAD': f'{BIN}/hostileprobe.so libumockdev-preload.so.0'}
        with Program(home, environment=mocked) as program:
            program.start(device=False)
            before = program.resources()
            plug(1000)
            program.await_text('connectText_1001', 'usbserial-95')
            plug(50)
            program.await_text('connectText_1001', 'No device')
            yield program, 150
            expect(program.resources() < before + 8, 'descriptors or threads are left')
            program.end()


def many_files():
    names = ['a\nb', '\x1b[31mred', '\u202egnp', '\udcff\udcfe', 'x' * 251, '<b>', '-rf', '\x9b31m', ' ', 'folder', 'loop']
    with Home() as home, simulator(home):
        home.add_firmware()
        for name in names + [f'VORN_PLATINA-0.{number}' for number in range(100_000)]:
            path = f'{home.firmware}/{name}.bin'
            if name == 'folder':
                os.mkdir(path)
            elif name == 'loop':
                os.symlink(path, path)
            else:
                os.close(os.open(path, os.O_CREAT, 0o600))
        with Program(home) as program:
            program.start()
            wait_for(lambda: program.ask('popup firmwareList_1002') == str(100_001 + len(names)), 20, 'all are listed')
            program.ask('hide firmwareList_1002')
            program.press_update()
            program.await_text('updateText_1015', 'progress')
            yield program, 250
            program.end()
        for command in (['firmware'], ['--json', 'firmware'], ['update', '--newest']):
            with Program(home, *command, cli=True) as program:
                expect(program.process.wait(10) == 0, program.said())
                expect(not re.search('[\x00-\x09\x0b\x0c\x0e-\x1f\x7f-\x9f\u202e]', program.said()), command)


def hung_caches():
    with Home() as home, simulator(home):
        shutil.move(home.add_firmware(), home.path)
        shutil.rmtree(home.firmware)
        with contextlib.closing(HungFileSystem(home.caches)):
            with Program(home, 'update', '--firmware', f'{home.path}/{IMAGE}', cli=True) as program:
                expect(program.process.wait(10) == 0, program.said())
            with Program(home, 'update', '--newest', cli=True) as program:
                time.sleep(0.5)
                program.end(signal.SIGINT, (-signal.SIGINT,))
            with Program(home) as program:
                program.start()
                program.open_device()
                yield program, 150
                program.end()


def hung_image():
    with Home() as home, simulator(home, *RATE), Program(home) as program:
        home.add_firmware()
        shutil.copy(home.add_firmware(200_000), f'{home.firmware}/VORN_PLATINA-2.0.bin')
        program.start()
        program.open_device()
        program.ask('pick firmwareList_1002 VORN_PLATINA-2.0.bin')
        with contextlib.closing(HungFileSystem(home.caches)) as hung:
            program.ask('press updateButton_2001')
            expect(hung.asked.wait(10), 'the image is not looked at')
            hung.detach()
            program.ask('pick firmwareList_1002 ' + IMAGE)
            program.await_text('updateDetails', 'Checking')
            program.ask('press updateButton_2001')
            program.await_text('updateText_1015', 'progress')
            yield program, 150
            program.end()
    # A device that is plugged in while the image hangs does not stop the others.
    with Home() as home, simulator(home, *RATE):
        image = home.add_firmware(200_000)
        with Program(home, 'watch', '--firmware', image, cli=True) as program:
            wait_for(lambda: '10 %' in program.said(), 10, 'the update runs')
            with contextlib.closing(HungFileSystem(home.caches)) as hung:
                Line(home)
                expect(hung.asked.wait(10), 'the image is not looked at')
                wait_for(lambda: 'sim: Updated' in program.said(), 20, 'the update goes on')
                program.end(signal.SIGINT)
    for cli, options in ((True, ['update', '--firmware', '*']), (True, ['watch', '--firmware', '*']),
                         (False, ['--package-ca', '*'])):
        with Home() as home, contextlib.closing(HungFileSystem(home.caches)) as hung:
            options[-1] = home.firmware
            with Program(home, *options, cli=cli) as program:
                expect(hung.asked.wait(10), 'the file is not looked at')
                program.end(signal.SIGTERM, (-signal.SIGTERM,))


def silent_name_server():
    for how in (None, signal.SIGINT, signal.SIGTERM):
        with socket.socket(type=socket.SOCK_DGRAM) as server, Home() as home:
            server.bind(('127.9.9.9', 53))
            server.settimeout(20)
            with open(home.path + '/resolver', 'w', encoding='ascii') as file:
                file.write('nameserver 127.9.9.9\n')
            inside = ['unshare', '--mount', 'sh', '-c',
                      f'mount --bind {file.name} /etc/resolv.conf && exec "$@"', 'sh']
            arguments = ['--package-host', 'packages.invalid', *(['download'] if how else [])]
            with Program(home, *arguments, cli=bool(how), inside=inside) as program:
                if not how:
                    program.start(device=False)
                    program.ask('press downloadButton_2002')
                    program.await_text('firmwareDetails', 'cannot be found', 15)
                    program.ask('press downloadButton_2002')
                    program.await_text('firmwareDetails', 'elapsed')
                    yield program, 150
                server.recv(512)
                program.end(how or signal.SIGTERM, CLI_CODES if how else (0,))


def press_until_pulse(program):
    program.press_update()
    limit = time.monotonic() + 0.3  # the pulse takes 10 ms, and may be missed
    while program.rts() != '1' and time.monotonic() < limit:
        pass


ENDS = {  # what runs, the device's options, whether its driver hangs
    'an open device': (Program.open_device, [], False),
    'a version query': (Program.open_device, ['--fault', 'connect=silence'], False),
    'an update': (Program.press_update, RATE, False),
    'a reset pulse': (press_until_pulse, RATE, False),
    'an erase': (lambda program: (program.press_update(), time.sleep(0.7)), ['--erase-ms', '20000'], False),
    'a hung driver': (Program.press_update, RATE, True),
}


def ending(begin, options, hangs):
    # Closing the window during an update asks first.
    for how in (signal.SIGTERM, signal.SIGHUP, 'quit')[:3 if begin == Program.open_device else 2]:
        with Home() as home, simulator(home, *options) as is_restored:
            home.add_firmware()
            with Program(home) as program:
                program.start()
                begin(program)
                yield program, 150
                if hangs:
                    program.hang_driver()
                program.end(how)
                expect(program.rts() == '0', 'RTS is high')
                expect(hangs or is_restored(), 'the line is not as it was')


CASES = {
    'a device that streams zeros': lambda: garbage(bytes(65536)),
    'a thousand devices in 10 s': storm,
    'a thousand adapters through udev': udev_storm,
    '100,000 files': many_files,
    'unpacking 256 MiB': lambda: unpacking(256, False),
    'ended while unpacking 1.9 GiB': lambda: unpacking(1900, True),
    'caches that hang': hung_caches,
    'an image that hangs': hung_image,
    **{'ended during ' + what: lambda row=row: ending(*row) for what, row in ENDS.items()},
    'a name server that is silent': silent_name_server,
    **{'a server with ' + what: lambda row=row: peer(*row) for what, row in PEERS.items()},
}


def run(name, case):
    began, problem, stall, waited, most = time.monotonic(), '', 0.0, 0.0, 0
    try:
        for program, limit in case():
            program.measure()
            stall, waited = max(stall, program.stall), max(waited, program.waited)
            most = max(most, program.status('VmHWM') >> 10)
            expect(stall < MOST_STALL, f'the window stalled for {stall:.0f} ms')
            expect(most < limit, f'{most} MiB of memory')
    except (Fault, subprocess.TimeoutExpired) as fault:
        problem = str(fault)
    print(f'{name:38} {time.monotonic() - began:6.1f} s {stall:6.1f} ms (+{waited:.0f}) {most:5} MiB  {problem or "ok"}',
          flush=True)
    return not problem


print('case, time, longest stall of the window (+ while others had the processor), most memory')
results = [run(name, case) for name, case in CASES.items() if len(sys.argv) < 3 or sys.argv[2] in name]
print(f'{sum(results)} of {len(results)} ended as they should')
sys.exit(not results or not all(results))
